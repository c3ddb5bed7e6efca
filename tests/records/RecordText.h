#pragma once

#include <tavlo/TavloPresentUtil.h>

#include <QDomDocument>
#include <QXmlStreamWriter>

namespace tavlo::test {

/// A record or a list as the text of a document.
template <class T>
QString toText(const T& value)
{
    QString text;
    QXmlStreamWriter writer(&text);
    writer.setAutoFormatting(true);
    writer.writeStartDocument();
    TavloPresentUtil::writeXmlWriter(writer, QStringLiteral("any"), value);
    writer.writeEndDocument();
    return text;
}

/// Reads such a text into a record or a list. False when it is no XML.
template <class T>
bool fromText(const QString& text, T& value)
{
    QDomDocument document;
    if (!document.setContent(text))
        return false;
    QDomElement root = document.documentElement();
    return TavloPresentUtil::readDomElement(root, value);
}

/// Reads the children of one element, given as text.
template <class T>
T readChildren(const char* children, T value = {})
{
    const bool parsed = fromText(QStringLiteral("<any>%1</any>").arg(QString::fromUtf8(children)), value);
    Q_ASSERT(parsed);
    return value;
}

} // namespace tavlo::test
