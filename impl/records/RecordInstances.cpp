#include "records/RecordEquality.h"
#include "records/RecordReader.h"
#include "records/RecordWriter.h"
#include "records/fields/AllFields.h"

#include <tavlo/TavloPresentUtil.h>

// What the library exports for each record of the catalogue.

template <TavloRecord T>
bool operator==(const T& a, const T& b)
{
    tavlo::RecordEquality<T> equality(a, b);
    tavlo::RecordFields<T>::visit(equality);
    return equality.result();
}

template <TavloRecord T>
bool TavloPresentUtil::readDomElement(QDomElement& element, T& record)
{
    tavlo::readRecord(element, record);
    return true;
}

template <TavloListRecord T>
bool TavloPresentUtil::readDomElement(QDomElement& element, QList<T>& list)
{
    tavlo::readList(element, list);
    return true;
}

template <TavloRecord T>
bool TavloPresentUtil::writeXmlWriter(QXmlStreamWriter& writer, QString name, const T& record)
{
    tavlo::writeRecord(writer, name, record);
    return true;
}

template <TavloListRecord T>
bool TavloPresentUtil::writeXmlWriter(QXmlStreamWriter& writer, QString name, const QList<T>& list)
{
    tavlo::writeList(writer, name, list);
    return true;
}

#define TAVLO_INSTANTIATE(Record)                                                                                      \
    template TAVLO_EXPORT bool operator==(const Record&, const Record&);                                               \
    template TAVLO_EXPORT bool TavloPresentUtil::readDomElement(QDomElement&, Record&);                                \
    template TAVLO_EXPORT bool TavloPresentUtil::writeXmlWriter(QXmlStreamWriter&, QString, const Record&);
TAVLO_FOR_EACH_RECORD(TAVLO_INSTANTIATE)
#undef TAVLO_INSTANTIATE

#define TAVLO_INSTANTIATE(Record, tag)                                                                                 \
    template TAVLO_EXPORT bool TavloPresentUtil::readDomElement(QDomElement&, QList<Record>&);                         \
    template TAVLO_EXPORT bool TavloPresentUtil::writeXmlWriter(QXmlStreamWriter&, QString, const QList<Record>&);
TAVLO_FOR_EACH_LIST_RECORD(TAVLO_INSTANTIATE)
#undef TAVLO_INSTANTIATE
