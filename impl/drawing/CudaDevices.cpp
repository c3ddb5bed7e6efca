#include "drawing/CudaDevices.h"

#include <array>
#include <dlfcn.h>

namespace tavlo {

namespace {

constexpr int cudaSuccess = 0;

struct CloseLibrary
{
    void operator()(void* library) const { dlclose(library); }
};

template <class Function>
bool resolve(void* library, const char* name, Function*& function)
{
    function = reinterpret_cast<Function*>(dlsym(library, name));
    return function != nullptr;
}

} // namespace

struct CudaDevices::Driver
{
    std::unique_ptr<void, CloseLibrary> library;
    int (*init)(unsigned) = nullptr;
    int (*getCount)(int*) = nullptr;
    int (*get)(int*, int) = nullptr;
    int (*getName)(char*, int, int) = nullptr;
};

CudaDevices::CudaDevices() : _driver(std::make_unique<Driver>())
{
    Driver& driver = *_driver;
    driver.library.reset(dlopen("libcuda.so.1", RTLD_NOW | RTLD_LOCAL));
    void* const library = driver.library.get();
    if (!library || !resolve(library, "cuInit", driver.init) ||
        !resolve(library, "cuDeviceGetCount", driver.getCount) || !resolve(library, "cuDeviceGet", driver.get) ||
        !resolve(library, "cuDeviceGetName", driver.getName) || driver.init(0) != cudaSuccess)
        _driver.reset();
}

CudaDevices::~CudaDevices() = default;

// Both drivers list cards of one model in the order of the bus, and a renderer's name holds the model's.
std::optional<int> CudaDevices::find(const QString& adapterName, int ordinal) const
{
    int count = 0;
    if (!_driver || _driver->getCount(&count) != cudaSuccess)
        return {};
    for (int number = 0; number < count; ++number) {
        int device = 0;
        std::array<char, 256> name{};
        if (_driver->get(&device, number) != cudaSuccess ||
            _driver->getName(name.data(), static_cast<int>(name.size()), device) != cudaSuccess)
            continue;
        if (adapterName.contains(QString::fromUtf8(name.data())) && ordinal-- == 0)
            return number;
    }
    return {};
}

} // namespace tavlo
