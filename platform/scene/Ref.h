#pragma once

#include <cassert>
#include <cstdint>
#include <type_traits>
#include <utility>

namespace tavlo::scene {

/// What is held by counting.
///
/// Ownership: an object is born with one reference, its maker's. `create` functions hand that one over in a `RefPtr`;
/// who makes an object with `new` gives it back with `release`, or deletes the object when nobody else holds it. A
/// parent holds its children, a director its scene, a dispatcher its listeners; nobody below holds what is above it.
///
/// Frame thread: the count is not atomic.
class Ref
{
public:
    Ref(const Ref&) = delete;
    Ref& operator=(const Ref&) = delete;

    void retain() const { ++_references; }

    /// The last one deletes.
    void release() const
    {
        assert(_references > 0);
        if (--_references == 0)
            delete this;
    }

    std::uint32_t referenceCount() const { return _references; }

protected:
    Ref() = default;
    virtual ~Ref() { assert(_references <= 1 && "deleted while somebody else holds it"); }

private:
    mutable std::uint32_t _references = 1;
};

/// One reference to a counted object, or none.
template <class T>
class RefPtr
{
public:
    RefPtr() = default;
    RefPtr(std::nullptr_t) {}

    /// Shares.
    RefPtr(T* object) : _object(object)
    {
        if (_object)
            _object->retain();
    }

    /// Takes the reference that the caller has.
    static RefPtr adopt(T* object)
    {
        RefPtr holder;
        holder._object = object;
        return holder;
    }

    RefPtr(const RefPtr& other) : RefPtr(other._object) {}
    RefPtr(RefPtr&& other) noexcept : _object(std::exchange(other._object, nullptr)) {}

    template <class U>
    requires std::is_convertible_v<U*, T*> RefPtr(const RefPtr<U>& other) : RefPtr(static_cast<T*>(other.get())) {}

    template <class U>
    requires std::is_convertible_v<U*, T*> RefPtr(RefPtr<U>&& other)
    noexcept : _object(other.detach()) {}

    ~RefPtr() { reset(); }

    RefPtr& operator=(RefPtr other) noexcept
    {
        std::swap(_object, other._object);
        return *this;
    }

    /// Lets go.
    void reset()
    {
        if (T* const object = std::exchange(_object, nullptr))
            object->release();
    }

    /// Gives the reference to the caller.
    [[nodiscard]] T* detach() { return std::exchange(_object, nullptr); }

    T* get() const { return _object; }
    T& operator*() const { return *_object; }
    T* operator->() const { return _object; }
    explicit operator bool() const { return _object != nullptr; }

    friend bool operator==(const RefPtr& a, const RefPtr& b) { return a._object == b._object; }
    friend bool operator==(const RefPtr& a, const T* b) { return a._object == b; }

private:
    T* _object = nullptr;
};

/// A new object and its first reference.
template <class T, class... Arguments>
RefPtr<T> makeRef(Arguments&&... arguments)
{
    return RefPtr<T>::adopt(new T(std::forward<Arguments>(arguments)...));
}

} // namespace tavlo::scene
