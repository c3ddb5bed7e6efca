#include "records/StringLists.h"
#include "records/RecordReader.h"
#include "records/RecordWriter.h"

// A list of strings is an element that holds one `item` element for each, its text in `value`.

namespace tavlo {

void readStrings(const QDomElement& element, QStringList& list)
{
    list.clear();
    forEachChild(element, [&list](const QDomElement& child) {
        if (child.tagName() == stringEntryTag)
            list.append(child.attribute(QStringLiteral("value")));
    });
}

void writeStrings(QXmlStreamWriter& writer, const QString& name, const QStringList& list)
{
    writer.writeStartElement(name);
    for (const QString& text : list) {
        writer.writeStartElement(stringEntryTag);
        writer.writeAttribute(QStringLiteral("value"), writeValue(text));
        writer.writeEndElement();
    }
    writer.writeEndElement();
}

} // namespace tavlo
