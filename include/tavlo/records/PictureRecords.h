#pragma once

#include <tavlo/records/RecordTypes.h>

#include <QString>

#include <array>

struct tagTavloPresentPictureProcess
{
    quint32 vFlip = 0;   ///< not 0: top to bottom
    quint32 hMirror = 0; ///< not 0: left to right
};

struct tagTavloPresentPictureChromaKey
{
    quint32 enable = 0;
    quint32 color = 0; ///< 0xAARRGGBB
    float similarity = 0.0F;
    float smoothness = 0.0F;
    float spill = 0.0F;
    std::array<float, 2> chroma_key{}; ///< U and V of the colour, 0 to 1
};

/// Luma units, 0 to 1.
struct tagTavloPresentPictureLumaKey
{
    quint32 enable = 0;
    float threshold = 0.0F;
    float tolerance = 0.0F;
    float softness = 0.0F;
};

struct tagTavloPresentPictureCrop
{
    quint32 enable = 0;
    std::array<float, 4> cropRect{}; ///< left, top, right, bottom in parts of the picture, 0 to 1
};

struct tagTavloPresentPictureColorAdjust
{
    quint32 enable = 0;
    float contrast = 0.0F;   ///< -1 to 1
    float brightness = 0.0F; ///< -1 to 1
    float hue = 0.0F;        ///< degrees, 0 to 360
    float saturation = 1.0F; ///< 0 grey, 1 unchanged
};

struct tagTavloPresentPictureMisc
{
    QString name;                ///< the channel's label
    quint32 backgroundColor = 0; ///< 0xAARRGGBB
};

/// The picture process of a source channel.
struct tagTavloPresentPictureFilterParam
{
    tagTavloPresentPictureProcess processParam;
    tagTavloPresentPictureChromaKey chromaKeyParam;
    tagTavloPresentPictureLumaKey lumaKeyParam;
    tagTavloPresentPictureCrop rectCropParam;
    tagTavloPresentPictureColorAdjust colorAdjustParam;
    tagTavloPresentPictureMisc miscParam;
};

/// How a take runs. It has no XML form.
struct tagTavloPresentTransitionEffectParam
{
    qint32 effect = 22;    ///< number of the transition
    float duration = 0.8F; ///< seconds, 0 cuts
    qint32 easing = 0;     ///< a QEasingCurve::Type

    friend bool operator==(const tagTavloPresentTransitionEffectParam&,
                           const tagTavloPresentTransitionEffectParam&) = default;
};
