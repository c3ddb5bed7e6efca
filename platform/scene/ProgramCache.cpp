#include "scene/ProgramCache.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QSaveFile>

namespace tavlo::scene {

ProgramCache::ProgramCache(graphics::Device& device, const std::string& folder)
    : _device(device), _folder(folder.empty() ? QString() : QString::fromLocal8Bit(folder) + QLatin1String("/shader"))
{}

QString ProgramCache::fileOf(const std::string& vertexSource, const std::string& fragmentSource) const
{
    QCryptographicHash hash(QCryptographicHash::Sha256);
    for (const std::string& part : {_device.driverIdentity(), vertexSource, fragmentSource}) {
        hash.addData(QByteArrayView(part));
        hash.addData(QByteArrayView("\0", 1));
    }
    return _folder + QLatin1String("/scene-") + QString::fromLatin1(hash.result().toHex()) + QLatin1String(".bin");
}

graphics::ProgramPtr ProgramCache::load(const std::string& vertexSource, const std::string& fragmentSource) const
{
    if (_folder.isEmpty())
        return nullptr;
    QFile file(fileOf(vertexSource, fragmentSource));
    if (!file.open(QIODevice::ReadOnly))
        return nullptr;
    const QByteArray bytes = file.readAll();
    return _device.createProgramFromBinary(
        std::as_bytes(std::span(bytes.constData(), static_cast<std::size_t>(bytes.size()))));
}

void ProgramCache::store(const graphics::Program& program, const std::string& vertexSource,
                         const std::string& fragmentSource) const
{
    const std::vector<std::byte> bytes = _folder.isEmpty() ? std::vector<std::byte>() : program.binary();
    if (bytes.empty() || !QDir().mkpath(_folder))
        return;
    QSaveFile file(fileOf(vertexSource, fragmentSource));
    if (file.open(QIODevice::WriteOnly) &&
        file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<qint64>(bytes.size())) >= 0)
        file.commit();
}

} // namespace tavlo::scene
