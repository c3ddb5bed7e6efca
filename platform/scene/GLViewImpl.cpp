#include "scene/GLView.h"

#include "graphics/Log.h"

#include <cmath>

namespace tavlo::scene {

using graphics::WindowInput;

namespace {

graphics::Window::Place placeOf(const Rect& rect)
{
    const auto whole = [](float value) { return static_cast<int>(std::lround(value)); };
    return {whole(rect.x), whole(rect.y), whole(rect.width), whole(rect.height)};
}

EventMouse mouseEvent(const WindowInput& input, Vec2 location)
{
    EventMouse event;
    event.location = location;
    event.button = static_cast<MouseButton>(input.button);
    event.heldButtons = input.held;
    event.modifiers = input.modifiers;
    event.scroll = {static_cast<float>(input.wheelX), static_cast<float>(input.wheelY)};
    switch (input.kind) {
    case WindowInput::Kind::ButtonDown:
        event.type = EventMouse::Type::Down;
        break;
    case WindowInput::Kind::ButtonUp:
        event.type = EventMouse::Type::Up;
        break;
    case WindowInput::Kind::Wheel:
        event.type = EventMouse::Type::Scroll;
        break;
    default:
        break;
    }
    return event;
}

} // namespace

RefPtr<GLViewImpl> GLViewImpl::createWithRect(std::string viewName, const Rect& rect, int deviceId,
                                              graphics::NativeWindow window)
{
    const graphics::Window::Place place = placeOf(rect);
    if (place.width <= 0 || place.height <= 0) {
        graphics::logFailure("a view of no size");
        return nullptr;
    }
    RefPtr<GLViewImpl> view = RefPtr<GLViewImpl>::adopt(new GLViewImpl);
    view->_name = std::move(viewName);
    view->_device = graphics::Device::create({.adapter = deviceId});
    if (!view->_device || !view->context()->attach())
        return nullptr;
    if (window != 0 && view->_device->hasDisplay())
        view->_window = graphics::ChildWindow::create(window, place);
    if (window != 0 && !view->_window)
        graphics::logFailure("the view is off screen: its window cannot be shown");
    return view->setFrameSize(rect.width, rect.height) ? view : nullptr;
}

GLViewImpl::~GLViewImpl()
{
    _chain.reset(); // before its window
    if (_device)
        context()->detach();
}

bool GLViewImpl::setWindowPlacement(const Rect& rect)
{
    const graphics::Window::Place place = placeOf(rect);
    if (place.width <= 0 || place.height <= 0)
        return false;
    if (_window)
        _window->setPlace(place);
    return setFrameSize(rect.width, rect.height);
}

bool GLViewImpl::setFrameSize(float width, float height)
{
    const graphics::Window::Place place = placeOf({0, 0, width, height});
    if (place.width <= 0 || place.height <= 0)
        return false;
    const Size size{static_cast<float>(place.width), static_cast<float>(place.height)};
    if (size == _frameSize)
        return true;
    if (!makeBackBuffer(static_cast<std::uint32_t>(place.width), static_cast<std::uint32_t>(place.height)))
        return false;
    _frameSize = size;
    return true;
}

bool GLViewImpl::makeBackBuffer(std::uint32_t width, std::uint32_t height)
{
    if (_window) {
        _chain.reset(); // one surface to a window
        _chain = _device->createSwapChain(_window->handle(), width, height);
        if (_chain) {
            _target.reset();
            return true;
        }
        graphics::logFailure("the view is off screen from here on: its window is gone");
        _window.reset();
    }
    graphics::TexturePtr made =
        _device->createTexture({width, height, graphics::Format::R8G8B8A8_UNORM, graphics::Usage::Default, true});
    if (!made)
        return false;
    _target = std::move(made);
    return true;
}

const graphics::TexturePtr& GLViewImpl::backBuffer() const { return _chain ? _chain->backBuffer() : _target; }

void GLViewImpl::beginFrame(std::uint64_t time, std::uint64_t frameId, std::uint64_t clockMicroseconds)
{
    _stamp = {time, frameId, clockMicroseconds};
    if (_window)
        deliverWindowInput();
}

void GLViewImpl::endFrame()
{
    if (_chain)
        _chain->present(*context());
    context()->flush();
}

void GLViewImpl::deliverWindowInput()
{
    const RefPtr<GLViewImpl> self(this); // a listener may let go of the view
    WindowInput input;
    while (_window && _window->nextInput(input)) {
        const Vec2 location{input.x, _frameSize.height - input.y};
        switch (input.kind) {
        case WindowInput::Kind::TouchBegin:
            injectTouch(TouchPhase::Began, input.touchId, location);
            break;
        case WindowInput::Kind::TouchMove:
            injectTouch(TouchPhase::Moved, input.touchId, location);
            break;
        case WindowInput::Kind::TouchEnd:
            injectTouch(TouchPhase::Ended, input.touchId, location);
            break;
        default:
            injectMouse(mouseEvent(input, location));
        }
    }
}

} // namespace tavlo::scene
