#pragma once

#include "graphics/ChildWindow.h"
#include "graphics/Device.h"
#include "scene/Director.h"
#include "scene/Event.h"
#include "scene/Geometry.h"
#include "scene/Ref.h"

#include <memory>
#include <string>
#include <vector>

namespace tavlo::scene {

/// What a director draws on, and where its events come from. Frame thread.
class GLView : public Ref
{
public:
    const std::string& viewName() const { return _name; }
    const graphics::DevicePtr& device() const { return _device; }
    const graphics::ContextPtr& context() const { return _device->immediateContext(); }

    /// Pixels. Scene coordinates are these pixels.
    Size frameSize() const { return _frameSize; }

    /// A back buffer of that size. False, and the old one stays, for a side below 1 or above what the device can draw on,
    /// or when it cannot be made.
    virtual bool setFrameSize(float width, float height) = 0;

    /// What the scene is drawn into.
    virtual const graphics::TexturePtr& backBuffer() const = 0;

    /// A window's back buffer keeps its bottom row first, a texture its top row, like all other pictures.
    virtual bool isBottomRowFirst() const = 0;

    /// Begins a frame: keeps the stamps, and delivers what mouse and fingers have done since the last one.
    virtual void beginFrame(std::uint64_t time, std::uint64_t frameId, std::uint64_t clockMicroseconds) = 0;

    /// Ends it: shows the back buffer where there is a window. Waits for nothing.
    virtual void endFrame() = 0;

    const FrameStamp& frameStamp() const { return _stamp; }

    /// Delivers an event to the director's listeners at once: what a host forwards, or a test makes up.
    void injectMouse(const EventMouse& event);

    /// The finger of that id goes down, moves or goes up, at a place in the view. A finger that is unknown, or down
    /// already, is let pass as what it must have been: moves of unknown fingers are dropped.
    void injectTouch(TouchPhase phase, int fingerId, Vec2 location);

protected:
    friend class Director;

    GLView() = default;

    /// Tells the listeners that whatever was down will not be heard of again.
    void cancelTouches();

    std::string _name;
    graphics::DevicePtr _device;
    Size _frameSize;
    FrameStamp _stamp;

private:
    Director* _director = nullptr; ///< set by the director while it has this view
    std::vector<Touch> _fingers;   ///< those that are down
};

/// A view on a part of the host's window, or off screen.
class GLViewImpl : public GLView
{
public:
    /// Opens the device and makes a back buffer of the rectangle's size. With a window that the device can show, the
    /// view is a child window of it, with the rectangle's left top at x, y in pixels from the window's left top; 0, or
    /// a window that cannot be shown, gives a view off screen and in the latter case a line in the log. Null, and the
    /// reason in the log, without a device or for a size that it cannot draw on. A view whose window goes, goes on off
    /// screen.
    /// \param deviceId  index into `graphics::enumerateAdapters`, -1 for the display's own
    /// \param window    lent by the host, who keeps it as long as the view lives or lets it go before
    static RefPtr<GLViewImpl> createWithRect(std::string viewName, const Rect& rect, int deviceId,
                                             graphics::NativeWindow window = 0);
    ~GLViewImpl() override;

    /// Moves the view in the host's window and gives it the rectangle's size, y counted from the window's top.
    /// Off screen only the size counts. False, and the view stays, where `setFrameSize` refuses the size.
    bool setWindowPlacement(const Rect& rect);

    bool setFrameSize(float width, float height) override;
    const graphics::TexturePtr& backBuffer() const override { return _target; }
    bool isBottomRowFirst() const override { return _chain != nullptr; }
    void beginFrame(std::uint64_t time, std::uint64_t frameId, std::uint64_t clockMicroseconds) override;
    void endFrame() override;

private:
    bool openWindow(graphics::NativeWindow host, const graphics::Window::Place& place);
    void leaveWindow();
    void deliverWindowInput();
    void present();

    std::unique_ptr<graphics::ChildWindow> _window; ///< null off screen
    graphics::SwapChainPtr _chain;                  ///< of the window
    graphics::TexturePtr _target;                   ///< the back buffer; the chain shows it
    int _failedPresents = 0;                        ///< in a row
};

} // namespace tavlo::scene
