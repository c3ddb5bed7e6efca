#include "channels/TavloPresentChannelPGM.h"

#include <tavlo/TavloEngineEvents.h>
#include <tavlo/TavloPresentUtil.h>

#include <QEasingCurve>
#include <QRandomGenerator>

#include <algorithm>
#include <cmath>

using namespace tavlo;

namespace {

constexpr quint32 randomEffects = 80;   ///< the numbers that chance chooses from
constexpr float longestTake = 86400.0F; ///< seconds

} // namespace

TavloPresentChannelPGM::TavloPresentChannelPGM(const ChannelSite& site)
    : TavloPresentChannelRich2(site), _pgmIndex(site.channelId - static_cast<int>(TavloPresentChannelIDPGM)),
      _animation(this, "switchProcessPos", this)
{
    connect(&_animation, &QAbstractAnimation::finished, this, &TavloPresentChannelPGM::onTranAnimation_finished);
}

TavloPresentChannelPGM::~TavloPresentChannelPGM() = default;

bool TavloPresentChannelPGM::createChannel(const QSizeF& size)
{
    if (!TavloPresentChannelRich2::createChannel(size))
        return false;
    _target->setClearColor({0.0F, 0.0F, 0.0F, 1.0F});
    _target->setClearFlags(scene::RenderTexture::clearColorBit);
    _target->setAutoDraw(true);
    // A program is compiled as it is drawn first, which takes a few steps of a software renderer: the usual one before
    // there are any.
    painter(0).drawTransition(targetTexture(), _size, false, targetTexture(), _size, false, 0.5F, _effect);
    painter(0).clear();
    openMix();
    return true;
}

void TavloPresentChannelPGM::destroyChannel()
{
    stopAnimation();
    _audioPreview.reset();
    TavloPresentChannelRich2::destroyChannel();
}

void TavloPresentChannelPGM::startTransition(const tagTavloPresentTransitionEffectParam& param, int channelId)
{
    const bool byChance = param.effect == randomEffect;
    _nextChannel = channelId;
    _effect = byChance ? effectForDraw(QRandomGenerator::global()->bounded(randomEffects))
                       : static_cast<quint32>(param.effect);
    const bool runs = param.duration > 0.0F; // not a NaN either
    const int milliseconds = runs ? static_cast<int>(std::min(param.duration, longestTake) * 1000.0F) : 0;
    stopAnimation();
    if (_effect == 0 || milliseconds == 0) {
        finish();
        return;
    }
    _animation.setDuration(milliseconds);
    _animation.setStartValue(_switchProcessPos);
    _animation.setEndValue(1.0);
    const bool known = param.easing >= QEasingCurve::Linear && param.easing < QEasingCurve::BezierSpline;
    _animation.setEasingCurve(known ? static_cast<QEasingCurve::Type>(param.easing) : QEasingCurve::Linear);
    _animating = true;
    _animation.start();
}

void TavloPresentChannelPGM::stopAnimation()
{
    _animating = false;
    _animation.stop();
}

// An easing that comes near 1 only in its middle may have been seen on either side of it.
void TavloPresentChannelPGM::onTranAnimation_finished()
{
    if (_animating)
        finish();
}

quint32 TavloPresentChannelPGM::effectForDraw(quint32 number)
{
    const bool none = TavloPresentUtil::getEffectCatalog(number) == TavloPresentEffectKindCatalogNone;
    return number != 0 && (none || number == transitionKind::applyTextureMap) ? transitionKind::fadeNormal : number;
}

void TavloPresentChannelPGM::setFader(qreal position)
{
    if (std::isnan(position))
        return;
    stopAnimation();
    setPosition(position, false);
}

void TavloPresentChannelPGM::setPosition(qreal position, bool notify)
{
    _switchProcessPos = position;
    if (notify)
        _site.engine->notifySink(TavloEventSetTransitionPos, QVariant(0), QVariant(channelId()), QVariant(position), {},
                                 {});
    if (position >= 1.0)
        finish();
    else
        publishPicture();
}

// Some easings pass 1 before their end: the take is done there, and the animation with it.
void TavloPresentChannelPGM::finish()
{
    stopAnimation();
    _switchProcessPos = 0.0;
    std::swap(_programChannel, _nextChannel);
    publishPicture();
    const QVariant id(static_cast<quint32>(channelId()));
    _site.engine->notifySink(TavloEventSetTransitionPos, QVariant(0), QVariant(channelId()), QVariant(1.0), {}, {});
    _site.engine->notifySink(TavloEventSelectChannel, QVariant(0), id, QVariant(static_cast<quint32>(_programChannel)),
                             {}, {});
    _site.engine->postEvent(TavloEventSelectChannel, QVariant(TavloPresentChannelIDPVM), QVariant(_nextChannel), {},
                            {});
}

graphics::TexturePtr TavloPresentChannelPGM::picture(int channelId) const
{
    scene::RenderTexture* const target = _engine2->channelTarget(channelId, nullptr, nullptr);
    return target ? target->texture() : graphics::TexturePtr{};
}

void TavloPresentChannelPGM::stepFrame(const FrameStamps& stamps)
{
    const auto row = static_cast<std::size_t>(_pgmIndex);
    tagTavloPresentAudioLevel& levels = _site.engine->audioLevel();
    stepCommon(stamps, LevelBars::Side::Right, levels.pgmLevel[row], levels.pgmTime[row]);
    publishPicture();

    const scene::RenderTexture* const program = _engine2->channelTarget(_programChannel, nullptr, nullptr);
    graphics::TexturePtr shown = program ? program->texture() : graphics::TexturePtr{};
    bool opaque = program && program->isOpaque();
    if (_effect != 0 && _switchProcessPos > 0.0 && _switchProcessPos < 1.0) {
        TavloDrawDX11& target = painter(0);
        target.drawTransition(shown, _size, false, picture(_nextChannel), _size, false,
                              static_cast<float>(_switchProcessPos), _effect);
        shown = target.targetResource();
        opaque = target.isOpaque();
    }
    showPicture(std::move(shown), false, opaque ? scene::TextureAlpha::Opaque : scene::TextureAlpha::Ignored);
}

void TavloPresentChannelPGM::onChannelMouseDown(const scene::EventMouse& event, scene::Vec2)
{
    if (hasFlag(ChannelClickSelects) && event.button == scene::MouseButton::Left)
        _site.engine->postEvent(TavloEventSelectChannel, QVariant(TavloPresentChannelIDSelection),
                                QVariant(channelId()), {}, {});
}
