// FontCache: a bounded map from a key to a counted value, kept in two generations.
//
// Invariants
// - New entries go into the young generation. When it holds `entry_limit` entries or
//   `byte_limit` bytes, the old generation is dropped and the young one becomes old.
//   A hit in the old generation moves the entry back into the young one.
// - So the cache never holds more than twice its limits (plus one entry bigger than
//   the byte limit, which is handed back but never kept), and whatever was used since
//   the last turn survives the next one: an approximation of least-recently-used at
//   the cost of two hash look-ups, with no list to maintain.
// - Values are Qv::Ptr: a caller keeps what it was given alive even after the cache
//   lets it go.
// Not locked: the owner serialises access.
#pragma once

#include "tela/core/Memory.h"
#include "tela/core/Ptr.h"

#include <cstddef>
#include <functional>
#include <unordered_map>
#include <utility>

namespace Headless {

template <typename Key, typename Value, typename Hash = std::hash<Key>>
class FontCache {
public:
    FontCache(std::size_t entry_limit, std::size_t byte_limit)
        : m_entry_limit(entry_limit)
        , m_byte_limit(byte_limit)
    {
    }

    // Null when absent.
    Qv::Ptr<Value> find(const Key& key)
    {
        if (const auto young = m_young.find(key); young != m_young.end())
            return young->second.value;
        const auto old = m_old.find(key);
        if (old == m_old.end())
            return nullptr;
        Entry entry = std::move(old->second);
        m_old.erase(old);
        const Qv::Ptr<Value> value = entry.value;
        keep(key, std::move(entry));
        return value;
    }

    void insert(const Key& key, const Qv::Ptr<Value>& value, std::size_t bytes)
    {
        if (bytes > m_byte_limit)
            return;
        keep(key, Entry { value, bytes });
    }

    std::size_t size() const { return m_young.size() + m_old.size(); }

private:
    struct Entry {
        Qv::Ptr<Value> value;
        std::size_t bytes = 0;
    };
    using Generation = std::unordered_map<Key, Entry, Hash, std::equal_to<Key>, Qv::Allocator<std::pair<const Key, Entry>>>;

    void keep(const Key& key, Entry entry)
    {
        if (m_young.size() >= m_entry_limit || m_young_bytes + entry.bytes > m_byte_limit) {
            m_old = std::move(m_young);
            m_young = Generation();
            m_young_bytes = 0;
        }
        m_young_bytes += entry.bytes;
        m_young.insert_or_assign(key, std::move(entry));
    }

    std::size_t m_entry_limit;
    std::size_t m_byte_limit;
    std::size_t m_young_bytes = 0;
    Generation m_young;
    Generation m_old;
};

} // namespace Headless
