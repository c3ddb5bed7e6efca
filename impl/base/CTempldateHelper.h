#pragma once

#include "base/ModuleLibrary.h"

#include <tavlo/InterfacePtr.h>

#include <QCoreApplication>

/// Holds one object of a module that lies beside the engine's library, and loads the module when it is first needed.
///
/// Owner's thread, unless the interface says that its operations may be called from elsewhere.
template <class Interface>
class CTempldateHelper
{
public:
    /// \param moduleName   such as "TavloCommonModule"
    /// \param factoryName  its `extern "C"` factory
    CTempldateHelper(const char* moduleName, const char* factoryName, quint32 version = TavloInterfaceVersion)
        : CTempldateHelper(tavlo::engineDirectory(), moduleName, factoryName, version)
    {}

    /// Makes the object, an earlier one destroyed first. False when the module or its factory is missing or fails.
    bool create()
    {
        _object.reset();
        _object.reset(static_cast<Interface*>(_module.make(Interface::interfaceId, _version)));
        return _object != nullptr;
    }

    void destroy() { _object.reset(); }

    /// Whether there is an object, and one that can be used.
    bool isReady() const { return _object && _object->isValid(); }

    /// The object, or null. Lent until the next `create` or `destroy`.
    Interface* get() const { return _object.get(); }
    Interface* operator->() const { return _object.get(); }

protected:
    CTempldateHelper(const QString& directory, const char* moduleName, const char* factoryName, quint32 version)
        : _module(directory + QLatin1Char('/') + QLatin1String(moduleName), factoryName), _version(version)
    {}

private:
    tavlo::ModuleLibrary _module;
    quint32 _version;
    tavlo::InterfacePtr<Interface> _object;
};

/// The same for a module that brings many files and has a folder of its own below the host program's.
template <class Interface>
class CTempldateHelper2 : public CTempldateHelper<Interface>
{
public:
    /// \param folder  below the folder of the host program, such as "plugins/browser"
    CTempldateHelper2(const QString& folder, const char* moduleName, const char* factoryName,
                      quint32 version = TavloInterfaceVersion)
        : CTempldateHelper<Interface>(QCoreApplication::applicationDirPath() + QLatin1Char('/') + folder, moduleName,
                                      factoryName, version)
    {}
};
