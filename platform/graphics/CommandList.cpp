#include "graphics/CommandList.h"

#include "graphics/gl/ObjectImpl.h"

#include <algorithm>

namespace tavlo::graphics {

void WrittenPicture::drop()
{
    Texture::Impl& t = texture->impl();
    if (picture.name != 0)
        t.giveSpare(std::move(picture));
    if (rows.capacity != 0)
        t.core->uploads->give(std::move(rows));
}

CommandList::CommandList(std::unique_ptr<Impl> impl) : _impl(std::move(impl)) {}
CommandList::~CommandList() = default;

void RecycleCommandList::operator()(CommandList* list) const
{
    CommandList::Impl& d = list->impl();
    std::ranges::for_each(d.pictures, &WrittenPicture::drop);
    d.pictures.clear();
    d.written = {};
    const std::shared_ptr<DeviceCore> core = std::move(d.core);
    core->giveCommandList(std::unique_ptr<CommandList>(list));
}

std::unique_ptr<CommandList> DeviceCore::takeCommandList()
{
    {
        const std::lock_guard guard(_listLock);
        if (!_lists.empty()) {
            std::unique_ptr<CommandList> list = std::move(_lists.back());
            _lists.pop_back();
            return list;
        }
    }
    return std::make_unique<CommandList>(std::make_unique<CommandList::Impl>());
}

void DeviceCore::giveCommandList(std::unique_ptr<CommandList> list)
{
    const std::lock_guard guard(_listLock);
    _lists.push_back(std::move(list));
}

} // namespace tavlo::graphics
