#include "records/RecordCheck.h"

#include "records/XmlText.h"

#include "records/fields/AllFields.h"

#include <QDomDocument>

#include <array>

namespace tavlo {

void XmlFindings::reportExtras(const QDomElement& element, const QStringList& knownAttributes)
{
    const QDomNamedNodeMap attributes = element.attributes();
    for (int i = 0; i < attributes.count(); ++i) {
        const QString name = attributes.item(i).nodeName();
        if (!knownAttributes.contains(name))
            report(element, QStringLiteral("attribute \"%1\" is ignored").arg(name));
    }
    for (QDomNode node = element.firstChild(); !node.isNull(); node = node.nextSibling()) {
        if (node.isText() && !node.nodeValue().trimmed().isEmpty())
            report(element, QStringLiteral("text \"%1\" is ignored").arg(node.nodeValue().trimmed().left(40)));
    }
}

void XmlFindings::reportChildren(const QDomElement& element)
{
    forEachChild(element, [this](const QDomElement& child) {
        const Field field(*this, child.tagName());
        report(child, QStringLiteral("is ignored: the element around it carries a value only"));
    });
}

void checkStrings(const QDomElement& element, XmlFindings& findings)
{
    findings.reportExtras(element, {});
    forEachChild(element, [&findings](const QDomElement& child) {
        const XmlFindings::Field field(findings, child.tagName());
        if (child.tagName() != stringEntryTag) {
            findings.report(child, QStringLiteral("is no \"%1\" and is ignored").arg(stringEntryTag));
            return;
        }
        if (!child.hasAttribute(QStringLiteral("value")))
            findings.report(child, QStringLiteral("has no attribute \"value\" and counts as empty"));
        findings.reportExtras(child, {QStringLiteral("value")});
        findings.reportChildren(child);
    });
}

namespace {

struct CheckRow
{
    const char* record;
    void (*check)(const QDomElement&, XmlFindings&, const QStringList&);
};

constexpr std::array checks{
#define TAVLO_ROW(Record) CheckRow{#Record, &checkRecord<Record>},
    TAVLO_FOR_EACH_RECORD(TAVLO_ROW)
#undef TAVLO_ROW
};

} // namespace

} // namespace tavlo

QStringList TavloPresentUtil::recordTypes()
{
    QStringList names;
    for (const tavlo::CheckRow& row : tavlo::checks)
        names.append(QLatin1String(row.record));
    return names;
}

QList<TavloXmlFinding> TavloPresentUtil::checkDomElement(const QDomElement& element, const QString& recordType)
{
    const auto row =
        std::ranges::find(tavlo::checks, recordType, [](const tavlo::CheckRow& r) { return QLatin1String(r.record); });
    if (row == tavlo::checks.end())
        return {{0, 0, {}, QStringLiteral("\"%1\" is no type of record").arg(recordType)}};
    tavlo::XmlFindings findings;
    row->check(element, findings, {});
    return findings.take();
}

bool TavloPresentUtil::parseXml(const QString& text, QDomDocument& document, TavloXmlFinding& fault)
{
    const tavlo::XmlText xml(text);
    document = xml.isParsed() ? xml.document() : QDomDocument();
    if (!xml.isParsed())
        fault = {xml.errorLine(), xml.errorColumn(), {}, QStringLiteral("no XML: %1").arg(xml.errorText())};
    return xml.isParsed();
}

QList<TavloXmlFinding> TavloPresentUtil::checkXml(const QString& text, const QString& recordType)
{
    QDomDocument document;
    TavloXmlFinding fault;
    return parseXml(text, document, fault) ? checkDomElement(document.documentElement(), recordType)
                                           : QList<TavloXmlFinding>{fault};
}
