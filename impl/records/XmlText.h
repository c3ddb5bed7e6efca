#pragma once

#include <QDomDocument>
#include <QString>

namespace tavlo {

/// An XML text from outside, parsed. Depth is bounded, since the tree is walked and freed by recursion.
class XmlText
{
public:
    static constexpr int depthLimit = 64; ///< no record nests deeper than eight elements

    explicit XmlText(const QString& text);

    bool isParsed() const { return _errorText.isEmpty(); }

    /// The document's root element; null where the text isn't parsed.
    QDomElement root() const { return _document.documentElement(); }

    QDomDocument document() const { return _document; }

    QString errorText() const { return _errorText; }
    int errorLine() const { return _errorLine; }     ///< from 1
    int errorColumn() const { return _errorColumn; } ///< from 1

private:
    bool isTooDeep(const QString& text);

    QDomDocument _document;
    QString _errorText;
    int _errorLine = 0;
    int _errorColumn = 0;
};

} // namespace tavlo
