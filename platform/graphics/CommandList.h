#pragma once

#include "graphics/Fence.h"
#include "graphics/Texture.h"

#include <memory>

namespace tavlo::graphics {

/// What a deferred context has written since its last list: the textures that show it once the list is executed, and
/// the fence behind which the writing is done.
///
/// Owned by one holder, who gives it to `executeCommandList` or drops it: dropped, the textures keep what they show.
/// The lists are recycled.
class CommandList
{
public:
    struct Impl;

    explicit CommandList(std::unique_ptr<Impl> impl);
    ~CommandList();

    Impl& impl() { return *_impl; }

private:
    const std::unique_ptr<Impl> _impl;
};

struct RecycleCommandList
{
    void operator()(CommandList* list) const;
};

using CommandListPtr = std::unique_ptr<CommandList, RecycleCommandList>;

} // namespace tavlo::graphics
