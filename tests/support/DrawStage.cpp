#include "support/DrawStage.h"

#include "drawing/GraphicsImages.h"
#include "drawing/PrivateUtil.h"
#include "drawing/TransitionTable.h"

namespace tavlo {

using namespace graphics;

bool StageStore::create(quint32 flags, DevicePtr device, ContextPtr context, const QString& path)
{
    const bool made = _store.create(flags, std::move(device), std::move(context), path);
    images = _store.imageTextures();
    return made;
}

DrawStage::DrawStage() : _device(Device::create())
{
    if (!_device) {
        _fault = QStringLiteral("no device");
        return;
    }
    _context = _device->immediateContext();
    _context->attach();
    if (!_store.create(0, _device, _context, QString()))
        _fault = QStringLiteral("no store");
}

DrawStage::~DrawStage()
{
    if (_context)
        _context->detach();
}

QImage DrawStage::image(int slot)
{
    const QString path = QStringLiteral(":/res/Resources/TransitionEffect/images/");
    return QImage(path + QLatin1String(graphicsImage(slot).file)).convertToFormat(QImage::Format_RGBA8888);
}

TexturePtr DrawStage::upload(const QImage& picture)
{
    TexturePtr texture =
        PrivateUtil::createImageRes(_device, picture.width(), picture.height(), Usage::Dynamic, Format::R8G8B8A8_UNORM);
    if (texture)
        PrivateUtil::UpdateSubresource(*_context, texture, 0, 0, picture.constBits(),
                                       static_cast<int>(picture.bytesPerLine()), 0, picture.height());
    return texture;
}

effects::Effect* DrawStage::effect(quint32 kind) { return _store.effect(transitionFamily(kind)); }

TavloDrawDX11* DrawStage::target(QSize size, Rows rows)
{
    if (_draw.size() != QSizeF(size) || rows != _rows || !_draw.isMade()) {
        _rows = rows;
        if (!_draw.create(&_store, nullptr, _device, _context, {}, size, rows))
            return nullptr;
    }
    return &_draw;
}

QImage DrawStage::drawTransition(quint32 kind, float position, const TexturePtr& outgoing, const TexturePtr& incoming,
                                 QSize size, bool topFirst)
{
    TavloDrawDX11* const draw = target(size, topFirst ? Rows::TopFirst : Rows::BottomFirst);
    if (!draw)
        return {};
    const auto sizeOf = [](const TexturePtr& texture) {
        return texture ? QSizeF(texture->desc().width, texture->desc().height) : QSizeF();
    };
    _draw.seed = randomSeed;
    draw->drawTransition(outgoing, sizeOf(outgoing), false, incoming, sizeOf(incoming), false, position, kind);
    const QImage frame = readBack();
    return topFirst ? frame : frame.mirrored();
}

QImage DrawStage::readBack()
{
    TextureDesc desc = _draw.targetResource()->desc();
    desc.usage = Usage::Staging;
    desc.renderTarget = false;
    const TexturePtr staging = _device->createTexture(desc);
    if (!staging || !_context->copyResource(*staging, _draw.targetResource()))
        return {};
    const auto mapped = staging->mapRead();
    if (!mapped)
        return {};
    QImage frame = QImage(reinterpret_cast<const uchar*>(mapped->data), static_cast<int>(desc.width),
                          static_cast<int>(desc.height), static_cast<int>(mapped->rowPitch), QImage::Format_RGBA8888)
                       .copy();
    staging->unmapRead();
    return frame;
}

} // namespace tavlo
