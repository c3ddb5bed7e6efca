// Reads arbitrary text as a record. The first byte chooses the record, the rest is the XML.
//
// Whatever the text holds: nothing crashes, and what the reader made of it comes back equal once written.

#include "records/RecordText.h"

#include "records/XmlText.h"
#include "records/fields/AllFields.h"

#include <array>
#include <cstdlib>

namespace {

template <class T>
void readWriteRead(const QString& text)
{
    const tavlo::XmlText xml(text);
    if (!xml.isParsed())
        return;
    T record;
    QDomElement root = xml.root();
    TavloPresentUtil::readDomElement(root, record);
    if constexpr (std::is_same_v<T, tagTavloShowPresentInfo>)
        record.durationMode = 0; // is not written
    else if constexpr (std::is_same_v<T, tagTavloShowComponentInfo>)
        record.presentInfo.durationMode = 0;
    else if constexpr (std::is_same_v<T, tagTavloPresentSourceInfo>)
        record.stageInfo.presentInfo.durationMode = 0;

    T back;
    if (!tavlo::test::fromText(tavlo::test::toText(record), back) || !(back == record))
        std::abort();
    TavloPresentUtil::checkXml(text, QLatin1String(tavlo::recordName<T>));
}

constexpr std::array targets{
#define TAVLO_ROW(Record) &readWriteRead<Record>,
    TAVLO_FOR_EACH_RECORD(TAVLO_ROW)
#undef TAVLO_ROW
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size == 0)
        return 0;
    const auto* const text = reinterpret_cast<const char*>(data + 1);
    targets[data[0] % targets.size()](QString::fromUtf8(text, static_cast<qsizetype>(size - 1)));
    return 0;
}
