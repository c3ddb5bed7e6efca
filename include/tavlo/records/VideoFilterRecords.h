#pragma once

#include <tavlo/records/RecordTypes.h>

#include <QPoint>
#include <QPointF>
#include <QString>
#include <QUuid>

/// Text burned into the picture of a single stream. Colours are 0xAARRGGBB.
struct tagTavloVideoProcessDrawText
{
    QString uuid = QUuid::createUuid().toString();
    quint32 enable = 0;
    QString text = QStringLiteral("Text");
    QPointF pos{0.05, 0.05}; ///< left top corner in parts of the frame
    QString fontName = QStringLiteral("Microsoft YaHei Bold & Microsoft YaHei UI Bold"); ///< a font's name or file
    float fontSize = 40.0F;                                                              ///< pixels
    quint32 fontColor = 0xFF000000;
    quint32 shadowColor = 0xFFA0A0A4;
    QPoint shadowDistance; ///< pixels
    quint32 outlineColor = 0xFFFF0000;
    quint32 outlineSize = 0; ///< pixels
};

/// A logo over the picture of a single stream.
struct tagTavloVideoProcessLogo
{
    QString uuid;
    quint32 enable = 0;
    QString path;
    QPointF pos; ///< left top corner in parts of the frame
};

/// Conversion between stereoscopic frame layouts.
struct tagTavloVideoProcess3dTrans
{
    quint32 mode = 0;  ///< 0 off, 1 to 9
    quint32 value = 0; ///< not 0: the second eye, or the eyes swapped
};

/// The picture filters of a single stream.
struct tagTavloVideoEffectParam
{
    tagTavloVideoProcessDrawText drawText;
    tagTavloVideoProcessLogo logo;
    tagTavloVideoProcess3dTrans trans;
};
