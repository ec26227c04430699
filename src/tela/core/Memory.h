// Memory.h: the library's side of the memory seam.
//
// Every heap block of the library comes from OS()->memory():
// - classes derive from Qv::HeapObject (or iObject, which does) for operator new/delete;
// - containers use Qv::Allocator<T>, or the aliases below;
// - raw blocks use Qv::allocate / Qv::release.
#pragma once

#include <cstddef>
#include <deque>
#include <list>
#include <map>
#include <new>
#include <set>
#include <vector>

namespace Qv {

void* allocate(std::size_t bytes);   // null when the service has no memory left
void release(void* block);           // null is ignored

// Class-level allocation through the seam. A failed allocation throws std::bad_alloc
// only because a new-expression must; callers that care use Qv::allocate and placement.
struct HeapObject {
    static void* operator new(std::size_t bytes);
    static void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept;
    static void* operator new(std::size_t, void* place) noexcept { return place; }
    static void operator delete(void* block) noexcept;
    static void operator delete(void* block, const std::nothrow_t&) noexcept;
    static void operator delete(void*, void*) noexcept {}
};

template <typename T>
struct Allocator {
    using value_type = T;

    Allocator() noexcept = default;
    template <typename U>
    Allocator(const Allocator<U>&) noexcept {}

    T* allocate(std::size_t count)
    {
        void* block = Qv::allocate(count * sizeof(T));
        if (!block)
            throw std::bad_alloc();
        return static_cast<T*>(block);
    }
    void deallocate(T* block, std::size_t) noexcept { Qv::release(block); }

    template <typename U>
    bool operator==(const Allocator<U>&) const noexcept { return true; }
};

template <typename T>
using Vector = std::vector<T, Allocator<T>>;
template <typename T>
using List = std::list<T, Allocator<T>>;
template <typename T>
using Deque = std::deque<T, Allocator<T>>;
template <typename T, typename Compare = std::less<T>>
using Set = std::set<T, Compare, Allocator<T>>;
template <typename K, typename V, typename Compare = std::less<K>>
using Map = std::map<K, V, Compare, Allocator<std::pair<const K, V>>>;

} // namespace Qv
