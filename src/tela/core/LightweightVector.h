#pragma once
// LightweightVector<T>: a shared vector. The handle is cheap to copy, and
// copies share their elements: a change made through one copy is seen through
// every other. That is the point of it: a layout pass can write results into
// elements that the caller's copy then reads.
//
// - The elements live in one counted body, made on the first append; an empty
//   handle holds none.
// - Not thread-safe: the body's elements are shared without a lock.

#include "tela/core/Memory.h"
#include "tela/core/Ptr.h"
#include "tela/core/RefCount.h"

#include <cstddef>
#include <utility>

template <typename T>
class LightweightVector {
public:
    using value_type = T;
    using iterator = T*;
    using const_iterator = const T*;

    LightweightVector() = default;
    LightweightVector(const LightweightVector&) = default;             // shares
    LightweightVector& operator=(const LightweightVector&) = default;  // shares
    LightweightVector(LightweightVector&&) noexcept = default;
    LightweightVector& operator=(LightweightVector&&) noexcept = default;
    virtual ~LightweightVector() = default;

    // Appends one element, seen by every copy of this handle.
    virtual void push_back(const T& item) { ensureBody().items.push_back(item); }
    void push_back(T&& item) { ensureBody().items.push_back(std::move(item)); }

    std::size_t size() const { return m_body ? m_body->items.size() : 0; }
    bool empty() const { return size() == 0; }
    // Index below size(), as with std::vector.
    T& operator[](std::size_t index) { return m_body->items[index]; }
    const T& operator[](std::size_t index) const { return m_body->items[index]; }
    T& back() { return m_body->items.back(); }
    const T& back() const { return m_body->items.back(); }

    iterator begin() { return m_body ? m_body->items.data() : nullptr; }
    iterator end() { return m_body ? m_body->items.data() + m_body->items.size() : nullptr; }
    const_iterator begin() const { return m_body ? m_body->items.data() : nullptr; }
    const_iterator end() const { return m_body ? m_body->items.data() + m_body->items.size() : nullptr; }

    // True when both handles share one body (a cheap test of a copy).
    bool sharesElementsWith(const LightweightVector& other) const { return m_body && m_body == other.m_body; }

private:
    struct Body : Qv::InternalRefCount {
        Qv::Vector<T> items;
    };

    Body& ensureBody()
    {
        if (!m_body)
            m_body = Qv::make<Body>();
        return *m_body;
    }

    Qv::Ptr<Body> m_body;
};
