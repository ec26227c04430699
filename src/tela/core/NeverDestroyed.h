#pragma once
// NeverDestroyed<T>: an object built in static storage on first use and never
// destroyed.
//
// Why: the library's registries, queues and service tables are reached from
// destructors of other statics, from shut-down callbacks and from worker
// threads that may still be finishing while the process exits. The order in
// which statics of different files are destroyed is not ours to choose, so an
// ordinary function-local static could already be gone when the last of those
// callers reaches it. An object that is never destroyed is always there; the
// process hands its memory back to the system when it ends.
//
// Use it as a function-local static, so that it is built on first use and the
// language makes that first use thread-safe:
//
//     Registry& registry()
//     {
//         static NeverDestroyed<Registry> instance;
//         return *instance;
//     }
//
// NeverDestroyed is trivially destructible, so no exit-time destructor is
// registered for it at all.

#include <new>
#include <utility>

namespace Qv {

template <typename T>
class NeverDestroyed {
public:
    // Builds the object with these arguments, as `T(args...)` would.
    template <typename... Args>
    explicit NeverDestroyed(Args&&... args)
    {
        ::new (static_cast<void*>(m_storage)) T(std::forward<Args>(args)...);
    }
    ~NeverDestroyed() = default; // deliberately leaves the object alive
    NeverDestroyed(const NeverDestroyed&) = delete;
    NeverDestroyed& operator=(const NeverDestroyed&) = delete;

    T& get() { return *std::launder(reinterpret_cast<T*>(m_storage)); }
    const T& get() const { return *std::launder(reinterpret_cast<const T*>(m_storage)); }
    T& operator*() { return get(); }
    const T& operator*() const { return get(); }
    T* operator->() { return &get(); }
    const T* operator->() const { return &get(); }

private:
    alignas(T) unsigned char m_storage[sizeof(T)];
};

} // namespace Qv
