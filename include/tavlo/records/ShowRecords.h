#pragma once

#include <tavlo/TavloPresentChannelID.h>
#include <tavlo/records/RecordTypes.h>

#include <QList>
#include <QPoint>
#include <QPointF>
#include <QRectF>
#include <QString>
#include <QStringList>

#include <array>

/// The animation with which an item enters or leaves.
struct tagPresentItemAnimationInfo
{
    quint32 type = 0;
    quint64 delay = 0;      ///< milliseconds
    quint64 duration = 400; ///< milliseconds
    qint32 count = 1;       ///< how often it runs
};

/// Where an item stands in its frame.
struct tagTavloShowDisplayItemInfo
{
    QPointF scale{1.0, 1.0};
    QPointF offset{0.5, 0.5}; ///< of the item's middle, in parts of the frame
    float rotation = 0.0F;    ///< degrees
    float alpha = 1.0F;       ///< 0 to 1
    QRectF finalRect;
};

/// Look of a text. Colours are 0xAARRGGBB.
struct tagTavloShowTextStyle
{
    quint32 fillType = 0; ///< 0 solid, 1 gradient, 2 texture
    quint32 solidColor = 0;
    quint32 gradientBeginColor = 0;
    quint32 gradientEndColor = 0;
    QString texPath;
    quint32 shadowColor = 0;
    QPoint shadowDistance; ///< pixels
    float shadowBlur = 0.0F;
    quint32 outlineColor = 0;
    quint32 outlineSize = 0; ///< pixels
    float outlineBlur = 0.0F;
    quint32 preset = 0;
};

struct tagTavloShowTextInfo
{
    QString uuid;
    QString text = QStringLiteral("Time: ${Time}");             ///< "${Time}" stands for the time of day
    QString timeFormat = QStringLiteral("yyyy-MM-dd hh:mm:ss"); ///< as QDateTime::toString takes it
    QRectF rect;                                                ///< parts of the canvas
    quint32 hAlignment = 0;
    quint32 vAlignment = 0;
    QPointF scrollEndPos;
    float scrollTime = 0.0F;                                                             ///< seconds
    qint32 styleValid = 0;                                                               ///< not 0: `style` counts
    QString fontName = QStringLiteral("Microsoft YaHei Bold & Microsoft YaHei UI Bold"); ///< a font's name or file
    float fontSize = 0.0F;
    tagPresentItemAnimationInfo enterAniInfo;
    tagPresentItemAnimationInfo exitAniInfo;
    tagTavloShowTextStyle style;
};

/// A picture on a channel: a logo, or an overlay.
struct tagTavloShowLogoInfo
{
    QString uuid;
    QString path;
    tagTavloShowDisplayItemInfo displayInfo;
    tagPresentItemAnimationInfo enterAniInfo;
    tagPresentItemAnimationInfo exitAniInfo;
};

struct tagTavloShowLayoutElement
{
    quint32 drawableId = TavloPresentChannelIDNone; ///< the channel to show
    quint32 audioEnable = 0;
    quint32 aspectMode = 0;
    tagTavloShowDisplayItemInfo displayInfo;
};

/// Up to twelve channels on one canvas, with texts, logos and backgrounds.
struct tagTavloShowLayoutInfo
{
    static constexpr int entries = 12;

    std::array<tagTavloShowTextInfo, entries> text;
    std::array<tagTavloShowLogoInfo, entries> logo;
    std::array<tagTavloShowLayoutElement, entries> element;
    std::array<tagTavloShowLogoInfo, entries> bgImage;
    tagTavloShowLogoInfo background;
};

/// A stretch of a scene's timeline. Frames.
struct tagTavloShowPresentTimelineInfo
{
    QString name;
    QString desc;
    qint32 valid = 0;
    qint32 startFrameIndex = 0;
    qint32 endFrameIndex = 0;
    qint32 loop = 0;
};

struct tagTavloShowViewportCamera
{
    QString name;
    QString desc;
    QList<tagTavloShowPresentTimelineInfo> timelines;
};

/// A value of a scene that the operator can change.
struct tagTavloShowObjectProperty
{
    QString name; ///< the scene object's
    qint32 enableEdit = 0;
    QString desc;
    QString countdownTextFormat;
    QStringList valueList;
    tagTavloShowTextInfo textInfo;
};

struct tagTavloShowComponentProperties
{
    QList<tagTavloShowObjectProperty> textProperties;
    QList<tagTavloShowObjectProperty> imageProperties;
    QList<tagTavloShowObjectProperty> videoProperties;
    QList<tagTavloShowPresentTimelineInfo> actionProperties;
    QList<tagTavloShowObjectProperty> countdownProperties;
};

/// A scene on a channel.
struct tagTavloShowPresentInfo
{
    QString uuid;
    QString resRootPath;
    QString resName = QStringLiteral("MainScene.csd");
    qint32 resDesignWidth = 0; ///< pixels
    qint32 resDesignHeight = 0;
    qint32 width = 0;
    qint32 height = 0;
    quint32 displayMode = 0;
    tagTavloShowDisplayItemInfo displayInfo;
    quint32 durationMode = 0; ///< read from a project, never saved
    qint32 positionFaceKandmarkIndex = 0;
    qint32 scaleFaceKandmarkIndex0 = 0;
    qint32 scaleFaceKandmarkIndex1 = 0;
    qint32 durationTime = 0;
};

struct tagTavloShowComponentInfo
{
    QString name;
    QString desc;
    tagTavloShowPresentInfo presentInfo;
    tagTavloShowComponentProperties properties;
    tagTavloShowPresentTimelineInfo enterTimeline;
    tagTavloShowPresentTimelineInfo exitTimeline;
    QList<tagTavloShowDisplayItemInfo> cameraList; ///< each camera position is a display record
};

/// Where the operator dragged an item. It has no XML form.
struct tagTavloShowPresentPlacement
{
    qint32 type = 0;     ///< the item's kind
    QString name;        ///< the item's name
    QRectF rect;         ///< pixels
    QRectF relativeRect; ///< parts of the frame

    friend bool operator==(const tagTavloShowPresentPlacement&, const tagTavloShowPresentPlacement&) = default;
};
