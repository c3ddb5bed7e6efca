#include "channels/TavloPresentChannel.h"

#include "channels/NestedOutlines.h"

#include <tavlo/InterfacePtr.h>

#include "scene/GLView.h"
#include "scene/Sprite.h"

#include <QColor>
#include <QDebug>

using namespace tavlo;

namespace {

constexpr scene::Color4F frameColor{0.15F, 0.15F, 0.15F, 1.0F};

scene::Rect upwards(const QRectF& rect, const QRectF& area)
{
    return {static_cast<float>(rect.x()), static_cast<float>(area.height() - rect.y() - rect.height()),
            static_cast<float>(rect.width()), static_cast<float>(rect.height())};
}

scene::Rect shrunk(const scene::Rect& rect, float by)
{
    return {rect.x + by, rect.y + by, rect.width - 2 * by, rect.height - 2 * by};
}

} // namespace

TavloPresentChannel::TavloPresentChannel(const ChannelSite& site)
    : _site(site), _engine2(query<ITavloPresentEnginePrivate2>(site.engine))
{}

TavloPresentChannel::~TavloPresentChannel() = default;

bool TavloPresentChannel::createChannel(const QSizeF& size)
{
    _size = size;
    _target = scene::makeRef<scene::RenderTexture>(director());
    if (!_target->initWithWidthAndHeight(static_cast<int>(size.width()), static_cast<int>(size.height()))) {
        qDebug() << "failed to get render target texture";
        _target.reset();
        return false;
    }
    _targetDesc = _target->texture()->desc();
    _target->sprite().setTextureAlpha(scene::TextureAlpha::Ignored); // what is transparent was drawn over black
    _sound.create();
    if (!_site.parentLayer)
        return true;

    scene::Node& parent = *_site.parentLayer;
    parent.addChild(_target, renderOrder());
    _label = scene::Label::createWithSystemFont(director(), {}, {}, static_cast<float>(_site.engine->labelFontSize()));
    if (_site.channelId < TavloMixedChannelLimit)
        _label->enableBold();
    _label->setAnchorPoint({0.0F, 1.0F});
    parent.addChild(_label, CanvasOrderMarks);
    refreshLabel();
    QColor color;
    _site.engine->channelColor(color, _site.channelId);
    _label->setTextColor({static_cast<std::uint8_t>(color.red()), static_cast<std::uint8_t>(color.green()),
                          static_cast<std::uint8_t>(color.blue()), 255});
    if (!hasFlag(ChannelWithoutLevelBars))
        _levelBars.create(director(), parent);
    return true;
}

void TavloPresentChannel::destroyChannel()
{
    _sound.destroy();
    for (scene::Node* const node : {static_cast<scene::Node*>(_target.get()), static_cast<scene::Node*>(_label.get()),
                                    static_cast<scene::Node*>(_background.get())}) {
        if (node)
            node->removeFromParent();
    }
    _levelBars.destroy();
    _label.reset();
    _background.reset();
    _target.reset();
    _targetDesc = {};
}

void TavloPresentChannel::setViewRect(scene::DrawNode* frames, int lineWidth, const QRectF& rect, const QRectF& area)
{
    const auto width = static_cast<float>(lineWidth);
    _viewRect = upwards(rect, area);
    _innerRect = shrunk(_viewRect, width);
    if (frames)
        drawNestedOutlines(*frames, _viewRect, lineWidth, frameColor);
    if (_label)
        _label->setPosition(_innerRect.minX() + 2 * width, _innerRect.maxY() - width);
    if (_background) {
        _background->setPosition(_viewRect.minX(), _viewRect.minY());
        _background->setContentSize(_viewRect.size());
    }
    if (_target) {
        _target->setPosition(_innerRect.middle());
        _target->setScale(_innerRect.width / static_cast<float>(_size.width()),
                          _innerRect.height / static_cast<float>(_size.height()));
    }
}

QString TavloPresentChannel::channelLabel() const { return _site.name; }

void TavloPresentChannel::refreshLabel()
{
    if (_label)
        _label->setString(channelLabel().toStdString());
}

graphics::TexturePtr TavloPresentChannel::targetTexture() const
{
    return _target ? _target->texture() : graphics::TexturePtr{};
}

void TavloPresentChannel::makeBackground()
{
    if (!_site.parentLayer)
        return;
    _background = scene::LayerColor::create(director(), {0, 0, 0, 255}, {1.0F, 1.0F});
    _background->setAnchorPoint({0.0F, 1.0F});
    _site.parentLayer->addChild(_background, CanvasOrderBackground);
}
