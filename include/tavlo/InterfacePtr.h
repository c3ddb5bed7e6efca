#pragma once

#include <tavlo/IUnknownEx.h>

#include <memory>
#include <utility>

namespace tavlo {

struct DestroyInterface
{
    void operator()(IUnknownEx* object) const { object->destroy(); }
};

/// Owns an object through one of its interfaces and ends it with `destroy`.
template <class Interface>
using InterfacePtr = std::unique_ptr<Interface, DestroyInterface>;

/// A counted reference to an object whose interface has `addRef` and `release`.
template <class Interface>
class CountedPtr
{
public:
    CountedPtr() = default;

    /// Takes over a reference that the caller holds: the count stays.
    static CountedPtr adopt(Interface* object)
    {
        CountedPtr pointer;
        pointer._object = object;
        return pointer;
    }

    /// Adds a reference of its own.
    static CountedPtr share(Interface* object)
    {
        if (object)
            object->addRef();
        return adopt(object);
    }

    CountedPtr(const CountedPtr& other) : CountedPtr(share(other._object)) {}
    CountedPtr(CountedPtr&& other) noexcept : _object(std::exchange(other._object, nullptr)) {}
    CountedPtr& operator=(CountedPtr other) noexcept
    {
        std::swap(_object, other._object);
        return *this;
    }
    ~CountedPtr()
    {
        if (_object)
            _object->release();
    }

    /// Gives the reference away; the caller has to release it.
    Interface* take() { return std::exchange(_object, nullptr); }

    Interface* get() const { return _object; }
    Interface* operator->() const { return _object; }
    Interface& operator*() const { return *_object; }
    explicit operator bool() const { return _object != nullptr; }

private:
    Interface* _object = nullptr;
};

/// The interface of that class on any object, or null. Lent, not counted.
template <class Interface, class Object>
Interface* query(Object* object, quint32 version = TavloInterfaceVersion)
{
    return object ? static_cast<Interface*>(object->queryInterface(Interface::interfaceId, version)) : nullptr;
}

/// Whether an object answers for an interface at the version asked for. Major and second byte must be 1; the third
/// byte may be 0 or 1, and the last is free.
constexpr bool acceptsInterfaceVersion(quint32 version)
{
    return (version >> 16) == 0x0101 && ((version >> 8) & 0xff) <= 1;
}

/// Gives a class the three operations of `IUnknownEx` over all interfaces that it lists.
///
/// `class Player : public QObject, public Implements<Player, ISourcePlayer, ISourcePlayerSink>`
template <class Final, class... Interfaces>
class Implements : public Interfaces...
{
public:
    bool isValid() override { return true; }

    void destroy() override
    {
        if (isValid())
            delete static_cast<Final*>(this);
    }

    IUnknownEx* queryInterface(const TavloInterfaceId& id, quint32 version) override
    {
        IUnknownEx* found = nullptr;
        if (acceptsInterfaceVersion(version))
            ((found = id == Interfaces::interfaceId ? static_cast<Interfaces*>(this) : found), ...);
        return found;
    }

protected:
    ~Implements() = default;
};

} // namespace tavlo
