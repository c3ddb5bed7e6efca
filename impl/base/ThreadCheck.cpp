#include "base/ThreadCheck.h"

#include <QDebug>

#include <cassert>

namespace tavlo {

bool ThreadCheck::passes(std::source_location where) const
{
    const std::thread::id owner = _thread.load();
    if (owner == std::thread::id{} || owner == std::this_thread::get_id())
        return true;
    qDebug().noquote() << "called on the wrong thread:" << where.function_name();
    assert(!"called on the wrong thread");
    return false;
}

} // namespace tavlo
