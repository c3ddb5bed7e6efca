#pragma once

#include <QtGlobal>

namespace tavlo::bench {

/// Counts what all threads of the program, its libraries and modules ask of the heap while it lives. One at a time.
class AllocationCount
{
public:
    AllocationCount();
    ~AllocationCount();
    AllocationCount(const AllocationCount&) = delete;
    AllocationCount& operator=(const AllocationCount&) = delete;

    qint64 count() const;
};

} // namespace tavlo::bench
