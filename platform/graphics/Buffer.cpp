#include "graphics/Buffer.h"

#include "graphics/gl/ObjectImpl.h"

namespace tavlo::graphics {

Buffer::Buffer(std::unique_ptr<Impl> impl) : _impl(std::move(impl)) {}
Buffer::~Buffer() = default;

const BufferDesc& Buffer::desc() const { return _impl->desc; }

} // namespace tavlo::graphics
