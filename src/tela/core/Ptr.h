// Ptr.h: Qv::Ptr, the counted pointer held to every shared object.
//
// Invariants
// - Two machine words: the key (address of the object's 32-bit counter) and the object.
//   The pair is what is copied, so a Ptr to a base keeps working through virtual bases.
// - Null when the object word is null; the key is then null too.
// - The counter moves only through OS()->atomics(); the last release destroys.
// - Comparison looks at the object words only.
#pragma once

#include "tela/core/RefCount.h"

#include <cstddef>
#include <cstdint>
#include <utility>

namespace Qv {

std::int32_t atomicIncrement(std::int32_t* counter);
std::int32_t atomicDecrement(std::int32_t* counter);

// Objects: destroyed through the most derived destructor, freed through the seam.
struct DtorTraits {
    template <typename T>
    static void destroy(T* object) { delete object; }
};

struct InternalRefCountTraits {
    template <typename T>
    static std::int32_t* key(T* object) { return static_cast<InternalRefCount*>(object)->refCountKey(); }
};

// Plain blocks (string bodies): the counter is the block's first field, and the last
// release hands the block back without running a destructor.
struct BlockDtorTraits {
    template <typename T>
    static void destroy(T* block) { Qv::release(block); }
};

struct BlockRefCountTraits {
    template <typename T>
    static std::int32_t* key(T* block) { return &block->refCount; }
};

template <typename T, typename Dtor = DtorTraits, typename RefCount = InternalRefCountTraits>
class Ptr {
public:
    using element_type = T;

    Ptr() noexcept = default;
    Ptr(std::nullptr_t) noexcept {}
    explicit Ptr(T* object)
        : m_key(object ? RefCount::key(object) : nullptr)
        , m_object(object)
    {
        retain();
    }

    Ptr(const Ptr& other) : m_key(other.m_key), m_object(other.m_object) { retain(); }
    Ptr(Ptr&& other) noexcept : m_key(std::exchange(other.m_key, nullptr)), m_object(std::exchange(other.m_object, nullptr)) {}

    template <typename U>
    Ptr(const Ptr<U, Dtor, RefCount>& other) : m_key(other.key()), m_object(other.get()) { retain(); }
    template <typename U>
    Ptr(Ptr<U, Dtor, RefCount>&& other) noexcept : m_key(other.key()), m_object(other.get()) { other.abandon(); }

    ~Ptr() { drop(m_key, m_object); }

    // Equal objects: nothing happens. Otherwise the old value is kept aside until the
    // new one is installed, so assigning from something the old object owns is safe.
    Ptr& operator=(const Ptr& other) { return assign(other.m_key, other.m_object); }
    template <typename U>
    Ptr& operator=(const Ptr<U, Dtor, RefCount>& other) { return assign(other.key(), other.get()); }
    Ptr& operator=(Ptr&& other) noexcept
    {
        if (m_object == other.m_object)
            return *this;
        std::int32_t* const old_key = std::exchange(m_key, std::exchange(other.m_key, nullptr));
        T* const old_object = std::exchange(m_object, std::exchange(other.m_object, nullptr));
        drop(old_key, old_object);
        return *this;
    }
    Ptr& operator=(std::nullptr_t) { reset(); return *this; }

    void reset()
    {
        std::int32_t* const old_key = std::exchange(m_key, nullptr);
        T* const old_object = std::exchange(m_object, nullptr);
        drop(old_key, old_object);
    }

    T* get() const { return m_object; }
    std::int32_t* key() const { return m_key; }
    T* operator->() const { return m_object; }
    T& operator*() const { return *m_object; }
    explicit operator bool() const { return m_object != nullptr; }

    template <typename U, typename D, typename R>
    bool operator==(const Ptr<U, D, R>& other) const { return m_object == other.get(); }
    bool operator==(std::nullptr_t) const { return m_object == nullptr; }

    // For conversions between Ptr types: forget the object without releasing it.
    void abandon() { m_key = nullptr; m_object = nullptr; }

    // Builds a Ptr from a key and object taken from another Ptr of the same object.
    static Ptr fromParts(std::int32_t* key, T* object)
    {
        Ptr result;
        result.m_key = object ? key : nullptr;
        result.m_object = object;
        result.retain();
        return result;
    }

private:
    void retain() const
    {
        if (m_object)
            atomicIncrement(m_key);
    }

    static void drop(std::int32_t* key, T* object)
    {
        if (object && atomicDecrement(key) == 0)
            Dtor::destroy(object);
    }

    Ptr& assign(std::int32_t* key, T* object)
    {
        if (m_object == object)
            return *this;
        std::int32_t* const old_key = m_key;
        T* const old_object = m_object;
        m_key = key;
        m_object = object;
        retain();
        drop(old_key, old_object);
        return *this;
    }

    std::int32_t* m_key = nullptr;
    T* m_object = nullptr;
};

// Makes a counted object through the memory seam.
template <typename T, typename... Args>
Ptr<T> make(Args&&... args)
{
    return Ptr<T>(new T(std::forward<Args>(args)...));
}

// dynamic_cast across a Ptr; the counter is shared with the source.
template <typename U, typename T>
Ptr<U> dynamicCast(const Ptr<T>& source)
{
    return Ptr<U>::fromParts(source.key(), dynamic_cast<U*>(source.get()));
}

} // namespace Qv
