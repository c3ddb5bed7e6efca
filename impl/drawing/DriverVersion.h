#pragma once

#include <QString>

namespace tavlo {

/// The four numbers of a graphics driver's version; what the driver doesn't tell is 0.
struct DriverVersion
{
    int product = 0;
    int version = 0;
    int subversion = 0;
    int build = 0;

    friend bool operator==(const DriverVersion&, const DriverVersion&) = default;
};

/// Reads the driver's own version text, such as "OpenGL ES 3.2 NVIDIA 535.54.03": the last dotted number in it,
/// brackets left out.
DriverVersion parseDriverVersion(const QString& text);

/// The maker behind a PCI vendor id, or "Unknown".
const char* pciVendorName(quint32 vendor);

} // namespace tavlo
