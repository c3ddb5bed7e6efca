#include <tavlo/TavloPresentUtil.h>

#include "drawing/CudaDevices.h"
#include "drawing/DriverVersion.h"

#include "graphics/Adapter.h"

#include <QDebug>
#include <QMap>

#include <algorithm>

namespace {

constexpr int decoderDefault = 1;
constexpr int decoderNvidia = 3;
constexpr int vendorNvidia = 1;
constexpr int vendorIntel = 2;

/// Fills what follows from the adapter's name.
class AdapterRows
{
public:
    tagTavloGraphicsDevInfo row(int id, const QString& name)
    {
        tagTavloGraphicsDevInfo info;
        info.id = id;
        info.name = name;
        info.decoderType = decoderDefault;
        if (name.contains(QLatin1String("NVIDIA"))) {
            if (const std::optional<int> device = _cuda.find(name, _ofName[name]++)) {
                info.interopType = TavloInteropTypeCUDA;
                info.cudaDevice = *device;
            }
            info.vendor = vendorNvidia;
            info.nvidiaIndex = _nvidiaCount++;
            info.decoderType = decoderNvidia;
        } else if (name.contains(QLatin1String("Intel"))) {
            info.vendor = vendorIntel;
        }
        return info;
    }

private:
    tavlo::CudaDevices _cuda;
    QMap<QString, int> _ofName;
    int _nvidiaCount = 0;
};

void logAdapter(const tavlo::graphics::Adapter& adapter)
{
    const auto version = tavlo::parseDriverVersion(QString::fromStdString(adapter.driverVersion));
    qDebug() << "graphics device: " << adapter.id << " " << QString::fromStdString(adapter.name);
    qDebug().noquote() << "graphics driver:" << tavlo::pciVendorName(adapter.pciVendor)
                       << QStringLiteral("%1.%2.%3.%4")
                              .arg(version.product)
                              .arg(version.version)
                              .arg(version.subversion)
                              .arg(version.build);
}

} // namespace

QList<tagTavloGraphicsDevInfo> TavloPresentUtil::enumGraphicsDevice()
{
    QList<tagTavloGraphicsDevInfo> list;
    AdapterRows rows;
    for (const tavlo::graphics::Adapter& adapter : tavlo::graphics::enumerateAdapters()) {
        logAdapter(adapter);
        list.append(rows.row(static_cast<int>(list.size()), QString::fromStdString(adapter.name)));
    }
    qDebug() << "failed to enum adapters"; // the end of the list, which is no fault
    return list;
}

tagTavloGraphicsDevInfo TavloPresentUtil::prefGraphicsDevice(TavloInteropType type,
                                                             QList<tagTavloGraphicsDevInfo>& list)
{
    const auto found = std::ranges::find(list, type, &tagTavloGraphicsDevInfo::interopType);
    return found != list.end() ? *found : tagTavloGraphicsDevInfo();
}

tagTavloGraphicsDevInfo TavloPresentUtil::getWorkGraphicsDeviceInfo(int id, QList<tagTavloGraphicsDevInfo>& list)
{
    if (list.isEmpty())
        return {};
    qDebug() << "select graphicsDeviceId:" << id << " graphicsDevInfList-Size:" << list.size();
    if (id >= 0 && id < list.size())
        return list[id];
    tagTavloGraphicsDevInfo chosen = prefGraphicsDevice(TavloInteropTypeCUDA, list);
    if (chosen.name.isEmpty()) {
        chosen = prefGraphicsDevice(TavloInteropTypeSoftware, list);
        qDebug() << "can not find graph-cuda dev and select graph-software dev";
    }
    if (chosen.name.isEmpty())
        qDebug() << "no graphics device";
    return chosen;
}
