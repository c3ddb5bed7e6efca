#include "records/XmlText.h"

#include <QXmlStreamReader>

namespace tavlo {

XmlText::XmlText(const QString& text)
{
    if (isTooDeep(text))
        return;
    if (!_document.setContent(text, &_errorText, &_errorLine, &_errorColumn) && _errorText.isEmpty())
        _errorText = QStringLiteral("not well formed");
}

bool XmlText::isTooDeep(const QString& text)
{
    QXmlStreamReader reader(text);
    int depth = 0;
    while (!reader.atEnd()) {
        switch (reader.readNext()) {
        case QXmlStreamReader::StartElement:
            if (++depth > depthLimit) {
                _errorText = QStringLiteral("elements nest deeper than %1").arg(depthLimit);
                _errorLine = static_cast<int>(reader.lineNumber());
                _errorColumn = static_cast<int>(reader.columnNumber());
                return true;
            }
            break;
        case QXmlStreamReader::EndElement:
            --depth;
            break;
        default:
            break;
        }
    }
    return false; // what is not well formed is for the parser to tell
}

} // namespace tavlo
