#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tavlo::graphics {

/// A graphics processor of the machine, or the software renderer.
struct Adapter
{
    int id = 0;                  ///< place in the list
    std::string name;            ///< as the renderer calls itself
    std::string vendor;          ///< as the driver's maker calls itself
    std::string driverVersion;   ///< text of the driver
    std::uint32_t pciVendor = 0; ///< 0 when it is no PCI device
    std::uint32_t pciDevice = 0;
    bool software = false;
};

/// All adapters that can be opened; the software renderer comes last. Opens each one for a moment: not for the frame
/// thread. Any thread.
std::vector<Adapter> enumerateAdapters();

} // namespace tavlo::graphics
