#include <tavlo/TavloPresentUtil.h>

#include "records/XmlText.h"

#include <tavlo/records/ShowRecords.h>
#include <tavlo/records/SourceRecords.h>

#include <QDebug>
#include <QXmlStreamWriter>

bool TavloPresentUtil::fromXMLString(QString& text, tagTavloShowComponentInfo& record)
{
    const tavlo::XmlText xml(text);
    if (!xml.isParsed()) {
        qDebug().noquote().nospace() << "xml parse err: " << xml.errorLine() << ' ' << xml.errorColumn();
        return false;
    }
    QDomElement root = xml.root();
    return readDomElement(root, record);
}

QString TavloPresentUtil::toXMLString(const tagTavloShowComponentInfo& record)
{
    QString text;
    QXmlStreamWriter writer(&text);
    writer.setAutoFormatting(true);
    writer.writeStartDocument();
    writeXmlWriter(writer, QStringLiteral("param"), record);
    writer.writeEndDocument();
    return text;
}

bool TavloPresentUtil::isEmptySource(tagTavloPresentSourceInfo& record)
{
    const QLatin1String none("None");
    switch (record.type) {
    case TavloPresentSourceTypeNone:
        return true;
    case TavloPresentSourceTypeURL:
        return record.url.isEmpty() || record.url == QLatin1String("dummy");
    case TavloPresentSourceTypeDevice:
        return record.videoDeviceName == none && record.audioDeviceName == none;
    default:
        return false;
    }
}
