#include "base/ModuleLibrary.h"

#include "base/Log.h"

#include <QCoreApplication>
#include <QFileInfo>

#include <dlfcn.h>

namespace tavlo {

QString engineDirectory()
{
    Dl_info info{};
    if (dladdr(reinterpret_cast<void*>(&engineDirectory), &info) != 0 && info.dli_fname)
        return QFileInfo(QString::fromLocal8Bit(info.dli_fname)).absolutePath();
    return QCoreApplication::applicationDirPath();
}

ModuleLibrary::ModuleLibrary(QString path, const char* factoryName) : _library(path), _factoryName(factoryName) {}

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
    const auto factory = reinterpret_cast<Factory>(_library.resolve(_factoryName));
    if (!factory && !_failureTold) {
        _failureTold = true;
        logFailure({"impl\\ModuleLibrary", "ModuleLibrary::resolve"},
                   QStringLiteral("no %1 in %2: %3")
                       .arg(QLatin1String(_factoryName), _library.fileName(), _library.errorString()));
    }
    return factory;
}

} // namespace tavlo
