// The commands that list what there is.

#include "Console.h"
#include "commands/Commands.h"

#include <tavlo/TavloPictureFilters.h>
#include <tavlo/TavloPresentUtil.h>

#include <QDir>
#include <QFile>
#include <QJsonObject>

#include <array>

namespace tavlo::host {
namespace {

bool wantsJson(const QStringList& arguments) { return arguments.contains(QLatin1String("--json")); }

QString firstLineOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readLine()).trimmed() : QString();
}

QJsonObject device(const char* kind, const QString& id, const QString& name)
{
    return {{QStringLiteral("kind"), QLatin1String(kind)}, {QStringLiteral("id"), id}, {QStringLiteral("name"), name}};
}

/// Capture devices of pictures, as the system lists them.
void addCameras(QJsonArray& rows)
{
    const QDir folder(QStringLiteral("/sys/class/video4linux"));
    for (const QString& entry : folder.entryList({QStringLiteral("video*")}, QDir::Dirs))
        rows.append(device("video", QStringLiteral("/dev/") + entry, firstLineOf(folder.filePath(entry + "/name"))));
}

/// Devices that record sound, as the system lists them: "00-00: name : name : playback 1 : capture 1".
void addSoundInputs(QJsonArray& rows)
{
    QFile list(QStringLiteral("/proc/asound/pcm"));
    if (!list.open(QIODevice::ReadOnly))
        return;
    const QStringList lines = QString::fromUtf8(list.readAll()).split(u'\n', Qt::SkipEmptyParts);
    for (const QString& line : lines) {
        const QStringList parts = line.split(u':');
        const QStringList numbers = parts.value(0).split(u'-');
        const QString id = QStringLiteral("hw:%1,%2").arg(numbers.value(0).toInt()).arg(numbers.value(1).toInt());
        const QString name = parts.value(1).trimmed();
        if (line.contains(QLatin1String("capture")))
            rows.append(device("sound in", id, name));
    }
}

struct FilterName
{
    TavloPresentPictureFilterType filter;
    const char* name;
};

constexpr std::array filterNames{
#define TAVLO_NAME(filter) FilterName{TavloPresentPictureFilterType_##filter, #filter}
    TAVLO_NAME(FAIRYTALE), TAVLO_NAME(SUNRISE),     TAVLO_NAME(SUNSET),  TAVLO_NAME(HEALTHY), TAVLO_NAME(SWEETS),
    TAVLO_NAME(ROMANCE),   TAVLO_NAME(WARM),        TAVLO_NAME(ANTIQUE), TAVLO_NAME(CALM),    TAVLO_NAME(LATTE),
    TAVLO_NAME(COOL),      TAVLO_NAME(CRAYON),      TAVLO_NAME(SKETCH),  TAVLO_NAME(AMARO),   TAVLO_NAME(BRANNAN),
    TAVLO_NAME(BROOKLYN),  TAVLO_NAME(EARLYBIRD),   TAVLO_NAME(HUDSON),  TAVLO_NAME(INKWELL), TAVLO_NAME(TOASTER2),
    TAVLO_NAME(DY),        TAVLO_NAME(ScreenBlend),
#undef TAVLO_NAME
};

QJsonObject numbered(int number, const QString& name)
{
    return {{QStringLiteral("number"), number}, {QStringLiteral("name"), name}};
}

} // namespace

int devicesCommand(const QStringList& arguments)
{
    QJsonArray rows;
    for (const tagTavloGraphicsDevInfo& adapter : TavloPresentUtil::enumGraphicsDevice())
        rows.append(device("graphics", QString::number(adapter.id), adapter.name));
    addCameras(rows);
    addSoundInputs(rows);
    for (const QString& name : TavloPresentUtil::soundDevices())
        rows.append(device("sound out", name, name));
    printRows(rows, {QStringLiteral("kind"), QStringLiteral("id"), QStringLiteral("name")}, wantsJson(arguments));
    return Done;
}

int effectsCommand(const QStringList& arguments)
{
    QJsonArray rows;
    for (const quint32 kind : TavloPresentUtil::transitionKinds())
        rows.append(numbered(static_cast<int>(kind), TavloPresentUtil::transitionName(kind)));
    printRows(rows, {QStringLiteral("number"), QStringLiteral("name")}, wantsJson(arguments));
    return Done;
}

int filtersCommand(const QStringList& arguments)
{
    QJsonArray rows;
    for (const FilterName& row : filterNames)
        rows.append(numbered(static_cast<int>(row.filter), QLatin1String(row.name)));
    printRows(rows, {QStringLiteral("number"), QStringLiteral("name")}, wantsJson(arguments));
    return Done;
}

int recordsCommand(const QStringList& arguments)
{
    QJsonArray rows;
    for (const QString& type : TavloPresentUtil::recordTypes())
        rows.append(QJsonObject{{QStringLiteral("type"), type}});
    printRows(rows, {QStringLiteral("type")}, wantsJson(arguments));
    return Done;
}

int versionCommand(const QStringList& arguments)
{
    QJsonArray rows;
    const auto add = [&rows](const QString& name, const QString& version) {
        rows.append(QJsonObject{{QStringLiteral("name"), name}, {QStringLiteral("version"), version}});
    };
    for (const auto& [name, version] : TavloPresentUtil::libraryVersions())
        add(name, version);
    QList<tagTavloGraphicsDevInfo> adapters = TavloPresentUtil::enumGraphicsDevice();
    const tagTavloGraphicsDevInfo chosen = TavloPresentUtil::getWorkGraphicsDeviceInfo(-1, adapters);
    add(QStringLiteral("graphics"), chosen.name.isEmpty() ? QStringLiteral("none") : chosen.name);
    printRows(rows, {QStringLiteral("name"), QStringLiteral("version")}, wantsJson(arguments));
    return Done;
}

} // namespace tavlo::host
