#pragma once

#include <tavlo/TavloEngineEvents.h>

#include <QMetaType>
#include <QVariant>

#include <functional>
#include <optional>
#include <vector>

namespace tavlo {

/// The arguments of one event, to be read and changed in place: the sink gets them as the handler leaves them.
struct EventArguments
{
    QVariant& a1;
    QVariant& a2;
    QVariant& a3;
    QVariant& a4;
};

/// Carries out one event on the frame thread. Nothing returned means that the event failed.
using EventHandler = std::function<std::optional<QVariant>(EventArguments)>;

struct EventRow
{
    TavloEngineEvent event;
    EventHandler handler;
};

/// The events that one engine answers. Engines share handlers by putting the same one in a row of each.
class EventTable
{
public:
    EventTable() = default;

    /// Rows in any order; a code that stands twice is a fault of the program.
    explicit EventTable(std::vector<EventRow> rows);

    /// Runs the handler of that code. The common end of a code without a handler and of a handler that failed: the
    /// log line "failed to handle event :" with the code, and -1. Frame thread.
    QVariant dispatch(qulonglong event, EventArguments arguments) const;

private:
    std::vector<EventRow> _rows; // fixed after construction, in order of the codes
};

/// Reads a payload. A variant of another type is converted where the wanted type is one of Qt's own; for a record it
/// gives the record's defaults. A wrong payload is never an error.
template <class T>
T payload(const QVariant& variant)
{
    const QMetaType wanted = QMetaType::fromType<T>();
    const bool builtIn = wanted.id() < QMetaType::User; // asking for the id registers the record under its name
    if (variant.metaType() == wanted || builtIn)
        return variant.value<T>();
    return T{};
}

} // namespace tavlo
