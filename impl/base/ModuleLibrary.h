#pragma once

#include <tavlo/IUnknownEx.h>

#include <QString>

namespace tavlo {

/// The folder of the engine's own library (of the program, where the engine is linked into it): modules lie beside it.
QString engineDirectory();

/// A module and one factory in it, loaded when first asked for and kept to the end of the process.
///
/// A module that is missing is a normal state: the log names the file and the reason once, and `make` gives null.
/// Several threads may have a `ModuleLibrary` of the same file.
class ModuleLibrary
{
public:
    /// Nothing is loaded yet. \param path the module's file, with or without its suffix
    ModuleLibrary(QString path, const char* factoryName);

    /// A new object of the factory, or null. An exception out of the factory counts as failure. Owner's thread.
    IUnknownEx* make(const TavloInterfaceId& id, quint32 version);

private:
    using Factory = IUnknownEx* (*)(const TavloInterfaceId&, quint32);

    Factory resolve();

    const QString _path;
    const char* _factoryName;
    bool _failureTold = false;
};

} // namespace tavlo
