#pragma once

#include <QString>

#include <memory>
#include <optional>

namespace tavlo {

/// The CUDA driver, opened at run time: a machine without it is a normal state.
class CudaDevices
{
public:
    CudaDevices();
    ~CudaDevices();
    CudaDevices(const CudaDevices&) = delete;
    CudaDevices& operator=(const CudaDevices&) = delete;

    /// The CUDA number of a graphics adapter.
    /// \param adapterName  as the renderer calls itself
    /// \param ordinal      0 for the first adapter of that name, 1 for the second
    std::optional<int> find(const QString& adapterName, int ordinal) const;

private:
    struct Driver;
    std::unique_ptr<Driver> _driver; ///< null without a driver that starts
};

} // namespace tavlo
