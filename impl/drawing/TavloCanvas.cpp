#include "drawing/TavloCanvas.h"

#include "base/Log.h"
#include "drawing/ShaderCache.h"

#include <tavlo/TavloPresentUtil.h>

#include <QDebug>

#include <utility>

using namespace tavlo;
using namespace tavlo::graphics;

namespace {

constexpr unsigned long deviceRemoved = 0x887a0005;

/// Logs a failure and gives the result that goes with it.
bool fail(const char* function, const char* text, std::source_location at = std::source_location::current())
{
    qDebug().noquote() << "failed to " << logHeader({"impl\\TavloCanvas", function, at}) << text;
    return false;
}

/// The device of an id, which `info` then tells; null, and the reason in the log, without one.
DevicePtr openDevice(int deviceId, bool forWindow, tagTavloGraphicsDevInfo& info)
{
    QList<tagTavloGraphicsDevInfo> list = TavloPresentUtil::enumGraphicsDevice();
    info = TavloPresentUtil::getWorkGraphicsDeviceInfo(deviceId, list);
    if (info.name.isEmpty()) {
        qDebug() << "no graphics device";
        return nullptr;
    }
    DevicePtr device = Device::create({info.id});
    const bool asked = deviceId >= 0 && deviceId < list.size();
    if (forWindow && !asked && (!device || !device->hasDisplay())) {
        device = Device::create(); // the display server's own
        if (device)
            info = list.value(device->adapter().id, info);
    }
    qDebug() << "TavloCanvas:: use graphics card: " << info.name << " , interop type: " << info.interopType;
    if (!device)
        fail("TavloCanvas::createCanvas", "");
    return device;
}

} // namespace

TavloCanvas::TavloCanvas(QObject* parent) : QObject(parent) {}

TavloCanvas::~TavloCanvas() { destroyCanvas(); }

bool TavloCanvas::createCanvas(quint32 resFlags, int deviceId, NativeWindow window, QSizeF size,
                               const QString& cachePath)
{
    destroyCanvas();
    tagTavloGraphicsDevInfo info;
    const DevicePtr device = openDevice(deviceId, window != 0, info);
    if (!device)
        return false;
    if (!createSwapChain(resFlags, device, device->immediateContext(), window, size, cachePath))
        return fail("TavloCanvas::createCanvas", "");
    _deviceInfo = info;
    _dxContext->detach();
    return true;
}

bool TavloCanvas::createSwapChain(quint32 resFlags, DevicePtr device, ContextPtr context, NativeWindow window,
                                  QSizeF size, const QString& cachePath)
{
    destroyCanvas();
    if (!device || !context)
        return fail("TavloCanvas::createSwapChain", " _dxContext == nullptr ");
    _dxDevice = std::move(device);
    _dxContext = std::move(context);
    _size = size;
    if (!createParts(resFlags, window, cachePath)) {
        destroyCanvas();
        return false;
    }
    return true;
}

bool TavloCanvas::createParts(quint32 resFlags, NativeWindow window, const QString& cachePath)
{
    constexpr auto here = "TavloCanvas::createSwapChain";
    _shaderCachePath = prepareShaderCache(cachePath);
    const auto width = static_cast<std::uint32_t>(qMax(0.0, _size.width()));
    const auto height = static_cast<std::uint32_t>(qMax(0.0, _size.height()));
    if (window != 0) {
        _dxgiswapChain = _dxDevice->createSwapChain(window, width, height);
        if (!_dxgiswapChain)
            return fail(here, " Could not create the SwapChain. ");
        _backBuffer = _dxgiswapChain->backBuffer();
    } else {
        _backBuffer = _dxDevice->createTexture({width, height, Format::R8G8B8A8_UNORM, Usage::Default, true});
        if (!_backBuffer)
            return fail(here, " CreateSwapChain ");
    }
    if (!_graphicsRes.create(resFlags, _dxDevice, _dxContext, _shaderCachePath))
        return false;
    const Rows rows = _dxgiswapChain ? Rows::BottomFirst : Rows::TopFirst;
    if (!_renderTargetDraw.create(&_graphicsRes, _backBuffer, _dxDevice, _dxContext, _backBuffer->desc(), _size, rows))
        return fail(here, " _renderTargetDraw.create ");
    return true;
}

void TavloCanvas::destroyCanvas()
{
    _renderTargetDraw.destroy();
    _graphicsRes.destroyRes();
    _backBuffer.reset();
    _dxgiswapChain.reset();
    _dxContext.reset();
    _dxDevice.reset();
    _deviceInfo = {};
    _shaderCachePath.clear();
    _size = {-1, -1};
    _lossTold = false;
}

void TavloCanvas::present()
{
    if (!isCreated())
        return;
    if (!_dxgiswapChain) {
        _dxContext->flush();
        return;
    }
    const PresentResult result = _dxgiswapChain->present(*_dxContext);
    if (result == PresentResult::DeviceLost && !_lossTold)
        qDebug("SwapChain Present failed. (hr=0x%lX)", deviceRemoved);
    _lossTold = result == PresentResult::DeviceLost;
}
