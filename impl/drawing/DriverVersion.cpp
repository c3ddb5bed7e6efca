#include "drawing/DriverVersion.h"

#include <QRegularExpression>
#include <QStringList>

#include <algorithm>
#include <array>

namespace tavlo {

namespace {

struct Vendor
{
    quint32 id;
    const char* name;
};

constexpr std::array vendors{Vendor{0x10DE, "NVIDIA"}, Vendor{0x1106, "VIA"}, Vendor{0x8086, "Intel"},
                             Vendor{0x5333, "S3 Graphics"}, Vendor{0x4D4F4351, "Qualcomm"}}; // the letters QCOM

} // namespace

DriverVersion parseDriverVersion(const QString& text)
{
    static const QRegularExpression brackets(QStringLiteral("\\([^)]*\\)"));
    static const QRegularExpression dotted(QStringLiteral("\\d+(?:\\.\\d+)+"));
    QString last;
    for (auto found = dotted.globalMatch(QString(text).remove(brackets)); found.hasNext();)
        last = found.next().captured();
    const QStringList numbers = last.split(QLatin1Char('.'));
    return {numbers.value(0).toInt(), numbers.value(1).toInt(), numbers.value(2).toInt(), numbers.value(3).toInt()};
}

const char* pciVendorName(quint32 vendor)
{
    const auto* const found = std::ranges::find(vendors, vendor, &Vendor::id);
    return found != vendors.end() ? found->name : "Unknown";
}

} // namespace tavlo
