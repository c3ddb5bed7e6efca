#include "channels/TavloPresentChannelPVM.h"

#include <tavlo/records/EngineRecords.h>

#include "scene/Director.h"
#include "scene/EventDispatcher.h"
#include "scene/TextureCache.h"

#include <QPainter>

using namespace tavlo;

TavloPresentChannelPVM::TavloPresentChannelPVM(const ChannelSite& site) : TavloPresentChannelRich2(site) {}

TavloPresentChannelPVM::~TavloPresentChannelPVM() = default;

bool TavloPresentChannelPVM::createChannel(const QSizeF& size)
{
    if (!TavloPresentChannelRich2::createChannel(size))
        return false;
    _target->setClearColor({0.0F, 0.0F, 0.0F, hasFlag(ChannelClearsBlack) ? 1.0F : 0.0F});
    _target->setClearFlags(scene::RenderTexture::clearColorBit);
    _target->setAutoDraw(true);
    if (hasFlag(ChannelBlackBackground))
        makeBackground();
    if (!hasFlag(ChannelWithoutChequer))
        makeChequer();
    _dragMark = scene::DrawNode::create(director());
    layer(LayerMarks).addChild(_dragMark);
    if (!hasFlag(ChannelWithoutTouch))
        listenToTouch();
    if (!hasFlag(ChannelWithoutMonitor)) {
        const tagTavloPresentEngineInfo& engine = _site.engine->engineInfo();
        _monitor.open(engine.pvmAudioDevName, engine.audioInfo);
    }
    return true;
}

void TavloPresentChannelPVM::destroyChannel()
{
    _monitor.close();
    if (_touchListener)
        director().eventDispatcher().removeEventListener(_touchListener.get());
    _touchListener.reset();
    _dragMark.reset();
    _chequer.reset();
    TavloPresentChannelRich2::destroyChannel();
}

void TavloPresentChannelPVM::makeChequer()
{
    constexpr int tilesDown = 48;
    QImage image(static_cast<int>(_size.width()), static_cast<int>(_size.height()), QImage::Format_ARGB32);
    const int edge = std::max(1, image.height() / tilesDown);
    QPainter painter(&image);
    for (int y = 0; y * edge < image.height(); ++y) {
        for (int x = 0; x * edge < image.width(); ++x)
            painter.fillRect(x * edge, y * edge, edge, edge, (x + y) % 2 == 0 ? Qt::white : Qt::lightGray);
    }
    painter.end();
    _chequer = scene::Sprite::createWithTexture(director(), director().textureCache().createTexture(image));
    if (!_chequer)
        return;
    _chequer->setTextureAlpha(scene::TextureAlpha::Opaque);
    _chequer->setPosition(static_cast<float>(_size.width()) / 2, static_cast<float>(_size.height()) / 2);
    layer(LayerChequer).addChild(_chequer);
}

void TavloPresentChannelPVM::stepFrame(const FrameStamps& stamps)
{
    tagTavloPresentAudioLevel& levels = _site.engine->audioLevel();
    stepCommon(stamps, LevelBars::Side::Left, levels.pvmLevel, levels.pvmTime);
    scene::RenderTexture* const shown = _engine2->channelTarget(_shownChannel, nullptr, nullptr);
    if (!shown)
        return;
    const bool fit = hasFlag(ChannelClearsBlack);
    const bool opaque = shown->isOpaque() && !drawsOver();
    if (_chequer)
        _chequer->setVisible(fit || !opaque);
    showPicture(shown->texture(), fit, opaque ? scene::TextureAlpha::Opaque : scene::TextureAlpha::Premultiplied);
}

void TavloPresentChannelPVM::pushAudio(int channelId, int, block_t* block, const tagTavloAudioInfo& format)
{
    if (!hasFlag(ChannelMonitorsAll) && channelId != _shownChannel)
        return;
    const double volume = _monitorVolume;
    _monitor.write(block->p_buffer, static_cast<int>(block->i_buffer), volume);
    tagTavloPresentAudioLevel& levels = _site.engine->audioLevel();
    measureBlock(levels.pvmLevel, levels.pvmTime, block->p_buffer, block->i_buffer, format, volume);
}
