#pragma once

#include <QByteArray>
#include <QPoint>
#include <QPointF>
#include <QRect>
#include <QRectF>
#include <QString>
#include <QUuid>
#include <QVariant>

#include <type_traits>

// How one value stands in the text of a `value` attribute. For each type of field:
//
//   writeValue(value)          the text; the same in every locale
//   readValue(text, value)     the tolerant way back: what is no number becomes 0, parts that are missing stay
//   complainAbout(text, value) what is lost on that way, in words; empty when nothing is. `value` only tells the type
//
// Numbers are written with as many digits as it takes to read the same number back.

namespace tavlo {

QString writeValue(bool value);
QString writeValue(qint32 value);
QString writeValue(quint32 value);
QString writeValue(qint64 value);
QString writeValue(quint64 value);
QString writeValue(float value);
QString writeValue(double value);
QString writeValue(const QString& value);    ///< without the characters that XML cannot carry
QString writeValue(const QByteArray& value); ///< hexadecimal
QString writeValue(const QUuid& value);
QString writeValue(QPoint value);        ///< "x,y"
QString writeValue(QPointF value);       ///< "x,y"
QString writeValue(const QRect& value);  ///< "left,top,width,height"
QString writeValue(const QRectF& value); ///< "left,top,width,height"

void readValue(const QString& text, bool& value);
void readValue(const QString& text, qint32& value);
void readValue(const QString& text, quint32& value);
void readValue(const QString& text, qint64& value);
void readValue(const QString& text, quint64& value);
void readValue(const QString& text, float& value);
void readValue(const QString& text, double& value);
void readValue(const QString& text, QString& value);
void readValue(const QString& text, QByteArray& value);
void readValue(const QString& text, QUuid& value);
void readValue(const QString& text, QPoint& value);
void readValue(const QString& text, QPointF& value);
void readValue(const QString& text, QRect& value);
void readValue(const QString& text, QRectF& value);

QString complainAbout(const QString& text, bool);
QString complainAbout(const QString& text, qint32);
QString complainAbout(const QString& text, quint32);
QString complainAbout(const QString& text, qint64);
QString complainAbout(const QString& text, quint64);
QString complainAbout(const QString& text, float);
QString complainAbout(const QString& text, double);
QString complainAbout(const QString& text, const QString&);
QString complainAbout(const QString& text, const QByteArray&);
QString complainAbout(const QString& text, const QUuid&);
QString complainAbout(const QString& text, QPoint);
QString complainAbout(const QString& text, QPointF);
QString complainAbout(const QString& text, const QRect&);
QString complainAbout(const QString& text, const QRectF&);

/// An integer of 8 or 16 bits, or an enumeration: travels as a number of 32 bits.
template <class T>
concept Widened = std::is_enum_v<T> ||(std::is_unsigned_v<T> && sizeof(T) < 4 && !std::is_same_v<T, bool>);

template <Widened T>
QString writeValue(T value)
{
    return writeValue(static_cast<quint32>(value));
}

template <Widened T>
void readValue(const QString& text, T& value)
{
    quint32 wide = 0;
    readValue(text, wide);
    value = static_cast<T>(wide);
}

/// Words for a number that is beyond the field.
QString complainAboutRange(const QString& text, quint64 highest);

template <Widened T>
QString complainAbout(const QString& text, T)
{
    if (QString complaint = complainAbout(text, quint32{}); !complaint.isEmpty())
        return complaint;
    return std::is_enum_v<T> ? QString() : complainAboutRange(text, (quint64{1} << (8 * sizeof(T))) - 1);
}

// A QVariant names its type beside its text.

/// The name under which a variant's type is saved: empty for an invalid one.
QString writeVariantType(const QVariant& value);
QString writeVariantText(const QVariant& value);

/// \param type  as saved; without one the value is a text
QVariant readVariant(const QString& type, const QString& text);
QString complainAboutVariant(const QString& type, const QString& text);

} // namespace tavlo
