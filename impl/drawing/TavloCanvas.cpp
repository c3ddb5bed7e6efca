#include "drawing/TavloCanvas.h"

#include "base/BuildStamp.h"
#include "base/Log.h"

#include <tavlo/TavloPresentUtil.h>

#include <QDebug>
#include <QDir>

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

/// The folder of this build's compiled effects, with its separator. One of another build is of no use to anybody: where
/// this build has none yet, all go.
QString prepareShaderCache(const QString& cachePath)
{
    if (cachePath.isEmpty())
        return {};
    const QString all = QDir(cachePath).filePath(QStringLiteral("hlslObj/"));
    QString own = all + QString::number(buildStamp()) + u'/';
    if (!QDir(own).exists()) {
        qDebug() << "reset shader bin cache : " << all;
        QDir(all).removeRecursively();
    }
    QDir().mkpath(own + QStringLiteral("shader/"));
    return own;
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
    if (forWindow && !asked && device && !device->hasDisplay()) {
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
    _context->detach();
    return true;
}

bool TavloCanvas::createSwapChain(quint32 resFlags, DevicePtr device, ContextPtr context, NativeWindow window,
                                  QSizeF size, const QString& cachePath)
{
    destroyCanvas();
    if (!device || !context)
        return fail("TavloCanvas::createSwapChain", " _dxContext == nullptr ");
    _device = std::move(device);
    _context = std::move(context);
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
        _swapChain = _device->createSwapChain(window, width, height);
        if (!_swapChain)
            return fail(here, " Could not create the SwapChain. ");
        _backBuffer = _swapChain->backBuffer();
    } else {
        _backBuffer = _device->createTexture({width, height, Format::R8G8B8A8_UNORM, Usage::Default, true});
        if (!_backBuffer)
            return fail(here, " CreateSwapChain ");
    }
    if (!_graphicsRes.create(resFlags, _device, _context, _shaderCachePath))
        return false;
    const Rows rows = _swapChain ? Rows::BottomFirst : Rows::TopFirst;
    if (!_renderTargetDraw.create(&_graphicsRes, _backBuffer, _device, _context, _backBuffer->desc(), _size, rows))
        return fail(here, " _renderTargetDraw.create ");
    return true;
}

void TavloCanvas::destroyCanvas()
{
    _renderTargetDraw.destroy();
    _graphicsRes.destroyRes();
    _backBuffer.reset();
    _swapChain.reset();
    _context.reset();
    _device.reset();
    _deviceInfo = {};
    _shaderCachePath.clear();
    _size = {-1, -1};
    _lossTold = false;
}

void TavloCanvas::present()
{
    if (!isCreated())
        return;
    if (!_swapChain) {
        _context->flush();
        return;
    }
    const PresentResult result = _swapChain->present(*_context);
    if (result == PresentResult::DeviceLost && !_lossTold)
        qDebug("SwapChain Present failed. (hr=0x%lX)", deviceRemoved);
    _lossTold = result == PresentResult::DeviceLost;
}
