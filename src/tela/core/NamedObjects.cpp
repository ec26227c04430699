#include "tela/core/NamedObjects.h"

#include "tela/core/Memory.h"
#include "tela/core/NeverDestroyed.h"

#include <cstring>
#include <mutex>
#include <string>

namespace {

using Key = std::basic_string<char, std::char_traits<char>, Qv::Allocator<char>>;

struct Table {
    std::mutex mutex;
    Qv::Map<Key, void*> blocks;
};

Table& table()
{
    // Never destroyed: named objects outlive every static that may use them.
    static Qv::NeverDestroyed<Table> instance;
    return *instance;
}

} // namespace

Qv::NamedObjectsNamespace& Qv::NamedObjectsNamespace::global()
{
    static NamedObjectsNamespace instance;
    return instance;
}

void* Qv::NamedObjectsNamespace::findOrCreate(const char* name, std::size_t size)
{
    Table& t = table();
    std::lock_guard lock(t.mutex);
    const Key key(name ? name : "");
    auto found = t.blocks.find(key);
    if (found != t.blocks.end())
        return found->second;
    void* block = Qv::allocate(size);
    if (!block)
        return nullptr;
    std::memset(block, 0, size);
    t.blocks.emplace(key, block);
    return block;
}
