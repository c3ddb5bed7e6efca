#include "records/ValueText.h"

#include <QDebug>
#include <QMetaType>
#include <QStringList>

#include <array>
#include <functional>

namespace tavlo {

namespace {

/// Whether XML 1.0 can carry the character at that place of a text, as itself or as a reference.
bool isXmlCharacter(QStringView text, qsizetype i)
{
    const QChar c = text[i];
    if (c.isHighSurrogate())
        return i + 1 < text.size() && text[i + 1].isLowSurrogate();
    if (c.isLowSurrogate())
        return i > 0 && text[i - 1].isHighSurrogate();
    return c >= u' ' ? c < u'\xfffe' : (c == u'\t' || c == u'\n' || c == u'\r');
}

template <class T>
T converted(const QString& text)
{
    return QVariant(text).value<T>();
}

template <class T>
QString complainAboutNumber(const QString& text, const char* kind)
{
    bool ok = false;
    if constexpr (std::is_same_v<T, float>)
        text.toFloat(&ok);
    else if constexpr (std::is_same_v<T, double>)
        text.toDouble(&ok);
    else if constexpr (std::is_signed_v<T>)
        ok = [&] {
            bool fits = false;
            const qint64 n = text.toLongLong(&fits);
            return fits && n == static_cast<T>(n);
        }();
    else
        ok = [&] {
            bool fits = false;
            const quint64 n = text.toULongLong(&fits);
            return fits && n == static_cast<T>(n);
        }();
    return ok ? QString()
              : QStringLiteral("\"%1\" is no %2 and counts as %3")
                    .arg(text, QLatin1String(kind), writeValue(converted<T>(text)));
}

// --- composite forms ---

template <class Number>
Number part(const QString& text)
{
    if constexpr (std::is_same_v<Number, int>)
        return text.toInt();
    else
        return text.toDouble();
}

/// Applies as many parts of the text as there are setters, and as the text has.
template <class Number, size_t count>
void readParts(const QString& text, const std::array<std::function<void(Number)>, count>& setters)
{
    const QStringList parts = text.split(QLatin1Char(','));
    for (size_t i = 0; i < count && static_cast<qsizetype>(i) < parts.size(); ++i)
        setters[i](part<Number>(parts[static_cast<qsizetype>(i)]));
}

template <class Number>
QString complainAboutParts(const QString& text, int count)
{
    const QStringList parts = text.split(QLatin1Char(','));
    if (parts.size() != count) {
        return QStringLiteral("\"%1\" has %2 parts where %3 belong, separated by commas")
            .arg(text, QString::number(parts.size()), QString::number(count));
    }
    for (const QString& one : parts) {
        const bool integer = std::is_same_v<Number, int>;
        QString complaint = complainAboutNumber<Number>(one, integer ? "integer" : "number");
        if (!complaint.isEmpty())
            return complaint;
    }
    return {};
}

// QRect keeps its edges and computes width and height without regard to overflow; a rectangle from outside may hold
// anything, so it is computed here, modulo 2^32: what is written reads back.

int extent(int nearEdge, int farEdge) { return static_cast<int>(qint64{farEdge} - nearEdge + 1); }

int farEdge(int nearEdge, int extent) { return static_cast<int>(qint64{nearEdge} + extent - 1); }

template <class... Numbers>
QString joined(Numbers... numbers)
{
    return QStringList{writeValue(numbers)...}.join(QLatin1Char(','));
}

} // namespace

// --- writing ---

QString writeValue(bool value) { return value ? QStringLiteral("1") : QStringLiteral("0"); }
QString writeValue(qint32 value) { return QString::number(value); }
QString writeValue(quint32 value) { return QString::number(value); }
QString writeValue(qint64 value) { return QString::number(value); }
QString writeValue(quint64 value) { return QString::number(value); }
QString writeValue(float value) { return QVariant(value).toString(); }
QString writeValue(double value) { return QVariant(value).toString(); }
QString writeValue(const QByteArray& value) { return QString::fromLatin1(value.toHex()); }
QString writeValue(const QUuid& value) { return value.toString(); }
QString writeValue(QPoint value) { return joined(value.x(), value.y()); }
QString writeValue(QPointF value) { return joined(value.x(), value.y()); }
QString writeValue(const QRect& value)
{
    return joined(value.left(), value.top(), extent(value.left(), value.right()), extent(value.top(), value.bottom()));
}
QString writeValue(const QRectF& value) { return joined(value.left(), value.top(), value.width(), value.height()); }

QString writeValue(const QString& value)
{
    QString text;
    text.reserve(value.size());
    for (qsizetype i = 0; i < value.size(); ++i) {
        if (isXmlCharacter(value, i))
            text.append(value[i]);
    }
    if (text.size() != value.size())
        qDebug() << "left out characters that XML cannot carry, in a text of length" << value.size();
    return text;
}

// --- reading ---

void readValue(const QString& text, bool& value) { value = converted<quint32>(text) != 0; }
void readValue(const QString& text, qint32& value) { value = converted<qint32>(text); }
void readValue(const QString& text, quint32& value) { value = converted<quint32>(text); }
void readValue(const QString& text, qint64& value) { value = converted<qint64>(text); }
void readValue(const QString& text, quint64& value) { value = converted<quint64>(text); }
void readValue(const QString& text, float& value) { value = converted<float>(text); }
void readValue(const QString& text, double& value) { value = converted<double>(text); }
void readValue(const QString& text, QString& value) { value = text; }
void readValue(const QString& text, QByteArray& value) { value = QByteArray::fromHex(text.toLatin1()); }
void readValue(const QString& text, QUuid& value) { value = QUuid::fromString(text); }

void readValue(const QString& text, QPoint& value)
{
    readParts<int, 2>(text, {[&](int x) { value.setX(x); }, [&](int y) { value.setY(y); }});
}

void readValue(const QString& text, QPointF& value)
{
    readParts<double, 2>(text, {[&](double x) { value.setX(x); }, [&](double y) { value.setY(y); }});
}

void readValue(const QString& text, QRect& value)
{
    readParts<int, 4>(text, {[&](int left) { value.setLeft(left); }, [&](int top) { value.setTop(top); },
                             [&](int width) { value.setRight(farEdge(value.left(), width)); },
                             [&](int height) { value.setBottom(farEdge(value.top(), height)); }});
}

void readValue(const QString& text, QRectF& value)
{
    readParts<double, 4>(text, {[&](double left) { value.setLeft(left); }, [&](double top) { value.setTop(top); },
                                [&](double width) { value.setWidth(width); },
                                [&](double height) { value.setHeight(height); }});
}

// --- complaining ---

QString complainAbout(const QString& text, bool)
{
    if (text == QLatin1String("0") || text == QLatin1String("1"))
        return {};
    bool read = false;
    readValue(text, read);
    return QStringLiteral("\"%1\" is neither 0 nor 1 and counts as %2").arg(text, writeValue(read));
}

QString complainAbout(const QString& text, qint32) { return complainAboutNumber<qint32>(text, "32 bit integer"); }
QString complainAbout(const QString& text, quint32)
{
    return complainAboutNumber<quint32>(text, "unsigned 32 bit integer");
}
QString complainAbout(const QString& text, qint64) { return complainAboutNumber<qint64>(text, "64 bit integer"); }
QString complainAbout(const QString& text, quint64)
{
    return complainAboutNumber<quint64>(text, "unsigned 64 bit integer");
}
QString complainAbout(const QString& text, float) { return complainAboutNumber<float>(text, "number"); }
QString complainAbout(const QString& text, double) { return complainAboutNumber<double>(text, "number"); }
QString complainAbout(const QString&, const QString&) { return {}; }
QString complainAbout(const QString& text, QPoint) { return complainAboutParts<int>(text, 2); }
QString complainAbout(const QString& text, QPointF) { return complainAboutParts<double>(text, 2); }
QString complainAbout(const QString& text, const QRect&) { return complainAboutParts<int>(text, 4); }
QString complainAbout(const QString& text, const QRectF&) { return complainAboutParts<double>(text, 4); }

QString complainAbout(const QString& text, const QByteArray&)
{
    const QString again = writeValue(QByteArray::fromHex(text.toLatin1()));
    return text.compare(again, Qt::CaseInsensitive) == 0
               ? QString()
               : QStringLiteral("\"%1\" is no row of bytes in hexadecimal; \"%2\" is what counts").arg(text, again);
}

QString complainAbout(const QString& text, const QUuid&)
{
    return text.isEmpty() || !QUuid::fromString(text).isNull() || text == QUuid().toString()
               ? QString()
               : QStringLiteral("\"%1\" is no UUID and counts as none").arg(text);
}

QString complainAboutRange(const QString& text, quint64 highest)
{
    const quint64 number = text.toULongLong();
    return number <= highest ? QString()
                             : QStringLiteral("%1 is above %2 and counts as %3")
                                   .arg(text, QString::number(highest), QString::number(number & highest));
}

// --- variants ---

namespace {

constexpr std::array savedVariantTypes{QMetaType::Bool,     QMetaType::Int,       QMetaType::UInt,
                                       QMetaType::LongLong, QMetaType::ULongLong, QMetaType::Double,
                                       QMetaType::Float,    QMetaType::QString,   QMetaType::QByteArray};

/// The type under which a variant of that type is saved: its own, or text.
QMetaType savedType(QMetaType type)
{
    for (const QMetaType::Type saved : savedVariantTypes) {
        if (type.id() == saved)
            return type;
    }
    return QMetaType(QMetaType::QString);
}

} // namespace

QString writeVariantType(const QVariant& value)
{
    return value.isValid() ? QString::fromLatin1(savedType(value.metaType()).name()) : QString();
}

QString writeVariantText(const QVariant& value)
{
    if (value.typeId() == QMetaType::QByteArray)
        return writeValue(value.toByteArray());
    if (value.isValid() && !value.canConvert<QString>())
        qDebug() << "a variant has no text and is saved empty:" << value.typeName();
    return writeValue(value.toString());
}

QVariant readVariant(const QString& type, const QString& text)
{
    if (type.isEmpty() && text.isEmpty())
        return {};
    const QMetaType saved = savedType(QMetaType::fromName(type.toLatin1()));
    if (saved.id() == QMetaType::QByteArray)
        return QByteArray::fromHex(text.toLatin1());
    QVariant value(text);
    value.convert(saved);
    return value;
}

QString complainAboutVariant(const QString& type, const QString& text)
{
    if (type.isEmpty())
        return {};
    const QMetaType saved = savedType(QMetaType::fromName(type.toLatin1()));
    if (saved.id() == QMetaType::QByteArray)
        return complainAbout(text, QByteArray());
    if (QLatin1String(saved.name()) != type)
        return QStringLiteral("type \"%1\" is not known and counts as text").arg(type);
    QVariant value(text);
    return value.convert(saved) ? QString() : QStringLiteral("\"%1\" is no %2").arg(text, type);
}

} // namespace tavlo
