#include "channels/TavloPresentChannelRich2.h"

#include "base/Log.h"
#include "drawing/PrivateUtil.h"

#include <tavlo/TavloPictureFilters.h>
#include <tavlo/records/EngineRecords.h>

#include <QDir>

#include <cmath>

using namespace tavlo;

bool TavloPresentChannelRich2::createChannel(const QSizeF& size)
{
    const LogMark mark{"impl\\TavloPresentChannel", "TavloPresentChannelRich2::createChannel"};
    if (!TavloPresentChannelRich::createChannel(size))
        return false;
    ITavloGraphicsRes* const graphicsRes = _site.engine->graphicsRes();
    for (TavloDrawDX11& painter : _workPainters) {
        if (!painter.create(graphicsRes, nullptr, _site.device, _site.context, _targetDesc, size))
            logFailure(mark, QStringLiteral("failed to TavloShowChannelPicture::update: create texture"));
    }
    _pictureSprite = scene::Sprite::create(director());
    _pictureSprite->setPosition(static_cast<float>(size.width()) / 2, static_cast<float>(size.height()) / 2);
    layer(LayerPicture).addChild(_pictureSprite);
    if (_workPainters[0].isMade())
        _pictureSprite->setTexture(_workPainters[0].targetResource());
    if (!_videoBlendLayer.createLayer(_site.engine, _site.device, _site.context, _targetDesc)) {
        logFailure(mark, QStringLiteral("failed to create _videoBlendLayer"));
        return false;
    }
    const QString models = QDir(_site.engine->engineInfo().resourcePath).filePath(QStringLiteral("CNN/"));
    if (!_faceLandmarkProcessor.createProcessor(graphicsRes, _site.device, _site.context, size, models)) {
        logFailure(mark, QStringLiteral("failed to create _faceLandmarkProcessor "));
        return false;
    }
    return true;
}

void TavloPresentChannelRich2::destroyChannel()
{
    _faceLandmarkProcessor.destroy();
    _videoBlendLayer.destroyLayer();
    _pictureSprite.reset();
    for (TavloDrawDX11& painter : _workPainters)
        painter.destroy();
    TavloPresentChannelRich::destroyChannel();
}

void TavloPresentChannelRich2::stepCommon(const FrameStamps& stamps, LevelBars::Side side, Meter& meter, quint32& time)
{
    TavloPresentChannelRich::stepFrame(stamps);
    _videoBlendLayer.stepFrame(stamps);
    _levelBars.show(_innerRect, _site.engine->gridLineWidth(), side, meter, time);
}

void TavloPresentChannelRich2::showPicture(graphics::TexturePtr picture, bool fit, scene::TextureAlpha alpha)
{
    if (!picture)
        return;
    placeFollowers(picture);
    std::size_t next = 1;
    const auto drawOver = [&](quint32 filter, const graphics::TexturePtr& over) {
        TavloDrawDX11& target = _workPainters[next];
        const QSizeF size(picture->desc().width, picture->desc().height);
        target.drawFilter(filter, picture, over, size, false, false);
        picture = target.targetResource();
        if (alpha == scene::TextureAlpha::Opaque)
            alpha = scene::TextureAlpha::Ignored;
        next = 0;
    };
    if (_channelFilter != 0)
        drawOver(_channelFilter, nullptr);
    if (const graphics::TexturePtr blend = _videoBlendLayer.picture())
        drawOver(TavloPresentPictureFilterType_ScreenBlend, blend);

    const QSizeF size(picture->desc().width, picture->desc().height);
    const bool sized = _pictureSprite->texture() && _pictureSprite->texture()->desc().width == picture->desc().width &&
                       _pictureSprite->texture()->desc().height == picture->desc().height;
    _pictureSprite->setTexture(std::move(picture));
    _pictureSprite->setTextureAlpha(alpha);
    const QRectF place = fit ? PrivateUtil::fitRect(_size, size) : QRectF(QPointF(), size);
    if (!sized || fit)
        _pictureSprite->setTextureRect(
            {0.0F, 0.0F, static_cast<float>(size.width()), static_cast<float>(size.height())},
            {static_cast<float>(place.width()), static_cast<float>(place.height())});
}

/// Items that follow a face stand on one landmark, as large as the distance of two others; without a face they hide.
void TavloPresentChannelRich2::placeFollowers(const graphics::TexturePtr& picture)
{
    bool looked = false;
    for (const ItemPtr& item : _items.group(ChannelItems::Presents)) {
        const FaceAnchor* const anchor = item->faceAnchor();
        if (!anchor)
            continue;
        if (!std::exchange(looked, true))
            _faceLandmarkProcessor.process(picture);
        item->setShown(_faceLandmarkProcessor.isFound());
        if (const auto at = _faceLandmarkProcessor.landmark(anchor->positionIndex))
            item->updateCanvasPosition({static_cast<float>(at->x()), static_cast<float>(_size.height() - at->y())});
        const auto from = _faceLandmarkProcessor.landmark(anchor->scaleIndex0);
        const auto to = _faceLandmarkProcessor.landmark(anchor->scaleIndex1);
        const float width = item->node() ? item->node()->contentSize().width : 0.0F;
        if (from && to && width != 0.0F) {
            const QPointF apart = *to - *from;
            const float scale = static_cast<float>(std::hypot(apart.x(), apart.y())) / width;
            item->setNodeScale(scale, scale, scale);
        }
    }
}
