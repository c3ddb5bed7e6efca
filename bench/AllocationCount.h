#pragma once

#include <QtGlobal>

namespace tavlo::bench {

/// Counts what all threads of the program, its libraries and modules ask of the heap while it lives. One at a time.
///
/// The graphics driver's own are told apart by who asked: the library in which the innermost call lies, the C and C++
/// libraries left out of account.
class AllocationCount
{
public:
    AllocationCount();
    ~AllocationCount();
    AllocationCount(const AllocationCount&) = delete;
    AllocationCount& operator=(const AllocationCount&) = delete;

    qint64 count() const;       ///< all but the driver's
    qint64 driverCount() const; ///< of the graphics driver, of its compiler and of its threads
};

} // namespace tavlo::bench
