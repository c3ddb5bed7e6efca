#pragma once

#include <QDebug>

#include <dlfcn.h>

namespace tavlo {

/// Looks up a function of a library that was opened at run time. False, and a line in the log, when it has none of that
/// name. Any thread.
/// \param owner  what the log calls the library
template <class Function>
bool resolveFunction(const char* owner, void* library, const char* name, Function*& function)
{
    function = reinterpret_cast<Function*>(dlsym(library, name));
    if (!function)
        qDebug().noquote() << QLatin1String(owner) + QLatin1String(": the library has no") << name;
    return function != nullptr;
}

} // namespace tavlo
