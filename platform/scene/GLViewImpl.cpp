#include "scene/GLView.h"

#include "graphics/Log.h"

#include <cmath>
#include <optional>

namespace tavlo::scene {

using graphics::WindowInput;

namespace {

constexpr int failuresToLeave = 25; // frames in a row that the window did not take: it is not coming back

// Nothing for a size that the device cannot draw on.
std::optional<graphics::Window::Place> placeOf(const Rect& rect, std::uint32_t largestSide)
{
    const auto largest = static_cast<float>(largestSide);
    const auto fits = [largest](float side) { return side >= 0.5F && side < largest + 0.5F; };
    if (!fits(rect.width) || !fits(rect.height) || !std::isfinite(rect.x) || !std::isfinite(rect.y))
        return std::nullopt;
    const auto whole = [](float value) { return static_cast<int>(std::lround(value)); };
    return graphics::Window::Place{whole(rect.x), whole(rect.y), whole(rect.width), whole(rect.height)};
}

graphics::TexturePtr makeTarget(graphics::Device& device, const graphics::Window::Place& place)
{
    return device.createTexture({static_cast<std::uint32_t>(place.width), static_cast<std::uint32_t>(place.height),
                                 graphics::Format::R8G8B8A8_UNORM, graphics::Usage::Default, true});
}

Size sizeOf(const graphics::Window::Place& place)
{
    return {static_cast<float>(place.width), static_cast<float>(place.height)};
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
    RefPtr<GLViewImpl> view = RefPtr<GLViewImpl>::adopt(new GLViewImpl);
    view->_name = std::move(viewName);
    view->_device = graphics::Device::create({.adapter = deviceId});
    if (!view->_device || !view->context()->attach())
        return nullptr;
    const auto place = placeOf(rect, view->_device->maxTextureSize());
    if (!place) {
        graphics::logFailure("a view of no size, or of one too large");
        return nullptr;
    }
    if (window != 0 && !view->openWindow(window, *place))
        graphics::logFailure("the view is off screen: its window cannot be shown");
    if (!view->_target)
        view->_target = makeTarget(*view->_device, *place);
    view->_frameSize = sizeOf(*place);
    return view->_target ? view : nullptr;
}

GLViewImpl::~GLViewImpl()
{
    _chain.reset(); // before its window
    if (_device)
        context()->detach();
}

bool GLViewImpl::openWindow(graphics::NativeWindow host, const graphics::Window::Place& place)
{
    if (_device->hasDisplay())
        _window = graphics::ChildWindow::create(host, place);
    if (_window)
        _chain = _device->createSwapChain(_window->handle(), static_cast<std::uint32_t>(place.width),
                                          static_cast<std::uint32_t>(place.height));
    if (_chain)
        _target = _chain->backBuffer();
    else
        _window.reset();
    return _chain != nullptr;
}

// The back buffer stays: from here on it is a picture like others.
void GLViewImpl::leaveWindow()
{
    graphics::logFailure("the view is off screen from here on: its window is gone");
    _chain.reset(); // before its window
    _window.reset();
    cancelTouches();
}

bool GLViewImpl::setWindowPlacement(const Rect& rect)
{
    if (!setFrameSize(rect.width, rect.height))
        return false;
    if (const auto place = placeOf(rect, _device->maxTextureSize()); _window && place)
        _window->setPlace(*place);
    return true;
}

bool GLViewImpl::setFrameSize(float width, float height)
{
    const auto place = placeOf({0, 0, width, height}, _device->maxTextureSize());
    if (!place)
        return false;
    if (sizeOf(*place) == _frameSize)
        return true;
    graphics::TexturePtr made = makeTarget(*_device, *place);
    if (!made)
        return false;
    if (_chain)
        _chain->setBackBuffer(made);
    _target = std::move(made);
    _frameSize = sizeOf(*place);
    return true;
}

void GLViewImpl::beginFrame(std::uint64_t time, std::uint64_t frameId, std::uint64_t clockMicroseconds)
{
    const RefPtr<GLViewImpl> self(this); // a listener may let go of the view
    _stamp = {time, frameId, clockMicroseconds};
    if (_window)
        deliverWindowInput();
}

void GLViewImpl::endFrame()
{
    const RefPtr<GLViewImpl> self(this); // a listener may let go of the view
    if (_chain)
        present();
    context()->flush();
}

void GLViewImpl::present()
{
    const bool failed = _chain->present(*context()) == graphics::PresentResult::Failed;
    _failedPresents = failed ? _failedPresents + 1 : 0;
    if (_failedPresents >= failuresToLeave)
        leaveWindow();
}

void GLViewImpl::deliverWindowInput()
{
    WindowInput input;
    while (_window && _window->nextInput(input)) {
        // The left bottom of the pixel: it belongs to the rectangle that covers the pixel.
        const Vec2 location{std::floor(input.x), _frameSize.height - 1 - std::floor(input.y)};
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
    if (_window && _window->isGone())
        leaveWindow();
}

} // namespace tavlo::scene
