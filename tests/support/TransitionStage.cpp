#include "support/TransitionStage.h"

#include "drawing/PrivateUtil.h"
#include "drawing/TransitionTable.h"
#include "resources/ResourceTree.h"

#include <QFile>

#include <cstring>

namespace tavlo {

using namespace graphics;

namespace {

const QString root = QStringLiteral(":/res/Resources/TransitionEffect/");

} // namespace

TransitionStage::TransitionStage() : _device(Device::create())
{
    if (!_device) {
        _fault = QStringLiteral("no device");
        return;
    }
    _context = _device->immediateContext();
    _context->attach();
    initResourceTree();
    loadEffects();
    loadImages();

    constexpr std::array<float, 20> corners{-1, -1, -1, 0, 1, 1, -1, -1, 1, 1, 1, 1, -1, 1, 0, -1, 1, -1, 0, 0};
    constexpr std::array<std::uint16_t, 6> order{3, 1, 0, 2, 1, 3};
    _vertices = _device->createBuffer({sizeof corners, BufferKind::Vertex, false}, std::as_bytes(std::span(corners)));
    _indices = _device->createBuffer({sizeof order, BufferKind::Index, false}, std::as_bytes(std::span(order)));
    _layout = std::make_shared<InputLayout>(
        InputLayout{{Semantic::Position, Format::R32G32B32_FLOAT, 0}, {Semantic::TexCoord, Format::R32G32_FLOAT, 12}});
}

TransitionStage::~TransitionStage()
{
    if (_context)
        _context->detach();
}

void TransitionStage::loadEffects()
{
    constexpr std::array names{"", "erase", "fade", "glide", "stretch", "blur", "distortion", "color", "lumas"};
    for (std::size_t i = 1; i < names.size(); ++i) {
        QFile file(root + QStringLiteral("glsl/trans_%1.fx").arg(QLatin1String(names[i])));
        if (!file.open(QIODevice::ReadOnly)) {
            _fault += QStringLiteral("cannot read %1\n").arg(file.fileName());
            continue;
        }
        const QByteArray text = file.readAll();
        std::string errors;
        const effects::CompileJob job{std::string_view(text), file.fileName().toStdString(), {}};
        if (effects::failed(effects::D3DX11CompileEffectFromMemory(*_device, job, _effects[i], errors)))
            _fault += QString::fromStdString(errors);
    }
}

void TransitionStage::loadImages()
{
    loadImage(0, QStringLiteral("clouds.png"));
    loadImage(1, QStringLiteral("noise.png"));
    loadImage(2, QStringLiteral("sincosatan.png"));
    loadImage(3, QStringLiteral("checkerboard.png"));
    texture(transitionMaskSlot) =
        PrivateUtil::createImageRes(_device, 512, 512, Usage::Dynamic, Format::R8G8B8A8_UNORM);
    for (const TransitionRow& row : transitionRows()) {
        const QString name = QLatin1String(row.name);
        if (name.startsWith(QLatin1String("lumas_")))
            loadImage(row.imageSlot, QStringLiteral("lumas/%1.png").arg(name.mid(6)));
    }
}

void TransitionStage::loadImage(int slot, const QString& name)
{
    QImage image = QImage(root + QStringLiteral("images/") + name).convertToFormat(QImage::Format_RGBA8888);
    if (image.isNull())
        _fault += QStringLiteral("cannot read %1\n").arg(name);
    else
        texture(slot) = upload(image);
    _pictures[static_cast<std::size_t>(slot)] = std::move(image);
}

TexturePtr TransitionStage::upload(const QImage& picture)
{
    TexturePtr texture =
        PrivateUtil::createImageRes(_device, picture.width(), picture.height(), Usage::Dynamic, Format::R8G8B8A8_UNORM);
    if (texture)
        PrivateUtil::UpdateSubresource(*_context, texture, 0, 0, picture.constBits(),
                                       static_cast<int>(picture.bytesPerLine()), 0, picture.height());
    return texture;
}

effects::Effect* TransitionStage::effect(quint32 kind) { return _effects[transitionFamily(kind)].get(); }

QImage TransitionStage::draw(quint32 kind, float position, const TexturePtr& outgoing, const TexturePtr& incoming,
                             QSize size, bool topFirst)
{
    const TexturePtr target = makeTarget(size);
    if (!target || !drawInto(target, kind, position, outgoing, incoming, topFirst))
        return {};
    const QImage frame = readBack(target);
    return topFirst ? frame : frame.mirrored();
}

bool TransitionStage::drawInto(const TexturePtr& target, quint32 kind, float position, const TexturePtr& outgoing,
                               const TexturePtr& incoming, bool topFirst)
{
    if (!effect(kind))
        return false;
    const QSize size(static_cast<int>(target->desc().width), static_cast<int>(target->desc().height));
    _context->clearRenderTarget(target, {0, 0, 0, 0});
    _context->setRenderTarget(target);
    _context->setViewport({0, 0, size.width(), size.height()});
    const auto picture = [](const TexturePtr& texture) {
        return TransitionPicture{texture, texture ? QSizeF(texture->desc().width, texture->desc().height) : QSizeF()};
    };
    const TransitionInputs inputs{picture(outgoing), picture(incoming), _textures, size, topFirst, randomSeed};
    const bool applied = _draw.apply(*_context, *effect(kind), inputs, position, kind);
    if (applied)
        drawQuad();
    TransitionDraw::release(*effect(kind));
    _context->clearState();
    return applied;
}

TexturePtr TransitionStage::makeTarget(QSize size)
{
    return _device->createTexture({static_cast<quint32>(size.width()), static_cast<quint32>(size.height()),
                                   Format::R8G8B8A8_UNORM, Usage::Default, true});
}

void TransitionStage::drawQuad()
{
    _context->setInputLayout(_layout);
    _context->setVertexBuffer(_vertices, 20, 0);
    _context->setIndexBuffer(_indices);
    _context->drawIndexed(6, 0);
}

QImage TransitionStage::readBack(const TexturePtr& target)
{
    TextureDesc desc = target->desc();
    desc.usage = Usage::Staging;
    desc.renderTarget = false;
    const TexturePtr staging = _device->createTexture(desc);
    if (!staging || !_context->copyResource(*staging, target))
        return {};
    const auto mapped = staging->mapRead();
    if (!mapped)
        return {};
    QImage frame = QImage(reinterpret_cast<const uchar*>(mapped->data), static_cast<int>(desc.width),
                          static_cast<int>(desc.height), mapped->rowPitch, QImage::Format_RGBA8888)
                       .copy();
    staging->unmapRead();
    return frame;
}

} // namespace tavlo
