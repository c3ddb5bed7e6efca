#pragma once

#include <QUuid>
#include <QtGlobal>

/// Names an interface. Each interface class carries its own as `static constexpr TavloInterfaceId interfaceId`.
using TavloInterfaceId = QUuid;

/// The version that every caller of this release asks for: four bytes, major first.
inline constexpr quint32 TavloInterfaceVersion = 0x01010100;

/// Root of every interface that crosses a library's edge.
///
/// An object with several interfaces has several roots, one in each; any of them serves. The order of the three
/// operations is part of the binary contract.
class IUnknownEx
{
public:
    /// Whether the object can still be used. Any thread.
    virtual bool isValid() = 0;

    /// Deletes the object if it is valid. The caller must not touch any of its interfaces afterwards.
    virtual void destroy() = 0;

    /// The object's interface of that id, as its own root: `static_cast` it to the interface. Null when the object
    /// has no such interface or the version doesn't fit. The result is lent, not counted.
    virtual IUnknownEx* queryInterface(const TavloInterfaceId& id, quint32 version) = 0;

protected:
    ~IUnknownEx() = default;
};
