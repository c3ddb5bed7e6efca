#pragma once

#include <tavlo/IUnknownEx.h>

#include <memory>

namespace tavlo {

/// What every module's factory does: a new object if it has that interface at that version, else null. Nothing is
/// thrown. \tparam Object made by default, ended by `destroy`
template <class Object>
IUnknownEx* makeForModule(const TavloInterfaceId& id, quint32 version) noexcept
try {
    auto object = std::make_unique<Object>();
    IUnknownEx* const found = object->queryInterface(id, version);
    if (found)
        (void)object.release();
    return found;
} catch (...) {
    return nullptr;
}

} // namespace tavlo
