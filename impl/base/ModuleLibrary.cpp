#include "base/ModuleLibrary.h"

#include "base/Log.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QLibrary>

#include <dlfcn.h>

#include <map>
#include <memory>
#include <mutex>

namespace tavlo {

namespace {

/// The modules of the process. Kept to its end, as what they made may live as long.
struct Modules
{
    std::mutex lock;
    std::map<QString, std::unique_ptr<QLibrary>> byPath; // guarded by lock, and so is every use of one

    static Modules& all()
    {
        static auto& modules = *new Modules;
        return modules;
    }
};

} // namespace

QString engineDirectory()
{
    Dl_info info{};
    if (dladdr(reinterpret_cast<void*>(&engineDirectory), &info) != 0 && info.dli_fname)
        return QFileInfo(QString::fromLocal8Bit(info.dli_fname)).absolutePath();
    return QCoreApplication::applicationDirPath();
}

ModuleLibrary::ModuleLibrary(QString path, const char* factoryName) : _path(std::move(path)), _factoryName(factoryName)
{}

IUnknownEx* ModuleLibrary::make(const TavloInterfaceId& id, quint32 version)
{
    const Factory factory = resolve();
    if (!factory)
        return nullptr;
    try {
        return factory(id, version);
    } catch (...) {
        logFailure({"impl\\ModuleLibrary", "ModuleLibrary::make"},
                   QStringLiteral("exception out of %1").arg(QLatin1String(_factoryName)));
        return nullptr;
    }
}

ModuleLibrary::Factory ModuleLibrary::resolve()
{
    Modules& modules = Modules::all();
    const std::lock_guard guard(modules.lock);
    auto& library = modules.byPath[_path];
    if (!library)
        library = std::make_unique<QLibrary>(_path);
    const auto factory = reinterpret_cast<Factory>(library->resolve(_factoryName));
    if (!factory && !_failureTold) {
        _failureTold = true;
        logFailure({"impl\\ModuleLibrary", "ModuleLibrary::resolve"},
                   QStringLiteral("no %1 in %2: %3")
                       .arg(QLatin1String(_factoryName), library->fileName(), library->errorString()));
    }
    return factory;
}

} // namespace tavlo
