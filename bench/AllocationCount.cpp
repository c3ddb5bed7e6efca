#include "AllocationCount.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include <link.h>
#include <unwind.h>

namespace {

enum class Owner : std::uint8_t
{
    Program,
    Driver,
    Runtime ///< asks for others
};

struct LibraryKind
{
    std::string_view part; ///< of the file's path
    Owner owner;
};

constexpr LibraryKind libraryKinds[] = {
    {"/libc.so", Owner::Runtime},   {"/libstdc++", Owner::Runtime}, {"/libgcc_s", Owner::Runtime},
    {"/dri/", Owner::Driver},       {"/libEGL", Owner::Driver},     {"/libGL", Owner::Driver},
    {"/libgallium", Owner::Driver}, {"/libglapi", Owner::Driver},   {"/libLLVM", Owner::Driver},
    {"/libdrm", Owner::Driver},     {"/libnvidia", Owner::Driver},  {"/libvulkan", Owner::Driver},
};

/// The code of one library, from the first byte to behind the last.
struct Code
{
    std::uintptr_t begin = 0, end = 0;
    Owner owner = Owner::Program;
};

std::array<Code, 512> codes; // written before the counting begins
std::size_t codeCount = 0;

std::atomic<bool> counting{false};
std::atomic<qint64> programCount{0}, driverCount{0};
thread_local bool inside = false; ///< the thread is looking at its own calls

Owner kindOf(std::string_view path)
{
    const auto* const row = std::ranges::find_if(
        libraryKinds, [path](const LibraryKind& kind) { return path.find(kind.part) != path.npos; });
    return row != std::end(libraryKinds) ? row->owner : Owner::Program;
}

int noteLibrary(dl_phdr_info* info, size_t, void*)
{
    const Owner owner = kindOf(info->dlpi_name);
    for (int i = 0; i < info->dlpi_phnum && codeCount < codes.size(); ++i) {
        const auto& part = info->dlpi_phdr[i];
        if (part.p_type == PT_LOAD && (part.p_flags & PF_X) != 0)
            codes[codeCount++] = {info->dlpi_addr + part.p_vaddr, info->dlpi_addr + part.p_vaddr + part.p_memsz, owner};
    }
    return 0;
}

Owner ownerOf(std::uintptr_t address)
{
    const std::span known(codes.data(), codeCount);
    const auto code =
        std::ranges::find_if(known, [address](const Code& c) { return c.begin <= address && address < c.end; });
    return code != known.end() ? code->owner : Owner::Program;
}

struct Search
{
    std::uintptr_t caller; ///< where the walk begins to count
    bool begun = false;
    Owner found = Owner::Program;
};

_Unwind_Reason_Code lookAtCall(_Unwind_Context* context, void* data)
{
    auto& search = *static_cast<Search*>(data);
    const auto address = static_cast<std::uintptr_t>(_Unwind_GetIP(context));
    search.begun = search.begun || address == search.caller;
    if (!search.begun)
        return _URC_NO_REASON;
    const Owner owner = ownerOf(address);
    if (owner == Owner::Runtime)
        return _URC_NO_REASON;
    search.found = owner;
    return _URC_NORMAL_STOP;
}

void countAllocation(const void* caller)
{
    if (!counting.load(std::memory_order_relaxed) || inside)
        return;
    inside = true;
    Search search{reinterpret_cast<std::uintptr_t>(caller)};
    _Unwind_Backtrace(&lookAtCall, &search);
    (search.found == Owner::Driver ? driverCount : programCount).fetch_add(1, std::memory_order_relaxed);
    inside = false;
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
    countAllocation(__builtin_return_address(0));
    return __libc_malloc(size);
}

void* calloc(size_t count, size_t size)
{
    countAllocation(__builtin_return_address(0));
    return __libc_calloc(count, size);
}

void* realloc(void* memory, size_t size)
{
    countAllocation(__builtin_return_address(0));
    return __libc_realloc(memory, size);
}

void* aligned_alloc(size_t alignment, size_t size)
{
    countAllocation(__builtin_return_address(0));
    return __libc_memalign(alignment, size);
}

int posix_memalign(void** memory, size_t alignment, size_t size)
{
    countAllocation(__builtin_return_address(0));
    *memory = __libc_memalign(alignment, size);
    return *memory ? 0 : 12; // ENOMEM
}
}

namespace tavlo::bench {

AllocationCount::AllocationCount()
{
    codeCount = 0;
    dl_iterate_phdr(&noteLibrary, nullptr);
    programCount = 0;
    ::driverCount = 0;
    counting = true;
}

AllocationCount::~AllocationCount() { counting = false; }

qint64 AllocationCount::count() const { return programCount; }
qint64 AllocationCount::driverCount() const { return ::driverCount; }

} // namespace tavlo::bench
