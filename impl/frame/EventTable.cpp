#include "frame/EventTable.h"

#include <QDebug>

#include <algorithm>
#include <cassert>
#include <utility>

const char* TavloEngineEventName(qulonglong event)
{
    switch (event) {
#define TAVLO_EVENT(name, code)                                                                                        \
    case code:                                                                                                         \
        return #name;
        TAVLO_ENGINE_EVENTS(TAVLO_EVENT)
#undef TAVLO_EVENT
    default:
        return nullptr;
    }
}

namespace tavlo {

EventTable::EventTable(std::vector<EventRow> rows) : _rows(std::move(rows))
{
    std::ranges::stable_sort(_rows, {}, &EventRow::event);
    assert(std::ranges::adjacent_find(_rows, {}, &EventRow::event) == _rows.end());
}

QVariant EventTable::dispatch(qulonglong event, EventArguments arguments) const
{
    const auto row = std::ranges::lower_bound(_rows, event, {}, &EventRow::event);
    if (row != _rows.end() && row->event == event) {
        if (std::optional<QVariant> result = row->handler(arguments))
            return *std::move(result);
    }
    const char* const name = TavloEngineEventName(event);
    qDebug().noquote() << "failed to handle event :" << Qt::hex << Qt::showbase << event << (name ? name : "");
    return QVariant(-1);
}

} // namespace tavlo
