#pragma once

#include "scene/Ref.h"

#include <vector>

namespace tavlo::scene {

/// Keeps objects until the end of the frame: what somebody may still be inside of when its last holder lets go, such as
/// a node that its own listener removes. Each director has one and clears it at the end of `mainLoop`. Frame thread.
class AutoReleasePool
{
public:
    void add(RefPtr<Ref> object) { _objects.push_back(std::move(object)); }

    /// Lets go of everything, also of what is added meanwhile.
    void clear()
    {
        while (!_objects.empty()) {
            const RefPtr<Ref> last = std::move(_objects.back());
            _objects.pop_back();
        }
    }

private:
    std::vector<RefPtr<Ref>> _objects;
};

} // namespace tavlo::scene
