#include "AllocationCount.h"

#include <atomic>
#include <cstddef>

namespace {

std::atomic<bool> counting{false};
std::atomic<qint64> allocations{0};

void countAllocation()
{
    if (counting.load(std::memory_order_relaxed))
        allocations.fetch_add(1, std::memory_order_relaxed);
}

} // namespace

// In front of the C library's own, for the libraries and modules too: `new` ends here as well.
extern "C" {
void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* memory, size_t size);
void* __libc_memalign(size_t alignment, size_t size);

void* malloc(size_t size)
{
    countAllocation();
    return __libc_malloc(size);
}

void* calloc(size_t count, size_t size)
{
    countAllocation();
    return __libc_calloc(count, size);
}

void* realloc(void* memory, size_t size)
{
    countAllocation();
    return __libc_realloc(memory, size);
}

void* aligned_alloc(size_t alignment, size_t size)
{
    countAllocation();
    return __libc_memalign(alignment, size);
}

int posix_memalign(void** memory, size_t alignment, size_t size)
{
    *memory = aligned_alloc(alignment, size);
    return *memory ? 0 : 12; // ENOMEM
}
}

namespace tavlo::bench {

AllocationCount::AllocationCount()
{
    allocations = 0;
    counting = true;
}

AllocationCount::~AllocationCount() { counting = false; }

qint64 AllocationCount::count() const { return allocations; }

} // namespace tavlo::bench
