#include "support/WindowPixels.h"

#include <X11/Xlib.h>
#include <X11/Xutil.h>

#include <memory>

namespace tavlo::test {

QImage windowPixels(graphics::NativeWindow window)
{
    const std::unique_ptr<Display, decltype(&XCloseDisplay)> display(XOpenDisplay(nullptr), XCloseDisplay);
    XWindowAttributes place{};
    if (!display || !XGetWindowAttributes(display.get(), window, &place) || place.map_state != IsViewable)
        return {};
    XImage* const image = XGetImage(display.get(), window, 0, 0, static_cast<unsigned>(place.width),
                                    static_cast<unsigned>(place.height), AllPlanes, ZPixmap);
    if (!image || image->bits_per_pixel != 32)
        return {};
    const QImage pixels = QImage(reinterpret_cast<const uchar*>(image->data), image->width, image->height,
                                 image->bytes_per_line, QImage::Format_RGB32)
                              .copy();
    XDestroyImage(image);
    return pixels;
}

} // namespace tavlo::test
