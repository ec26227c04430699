#include "tela/core/NotifyMsgTypeDictionary.h"

#include "tela/core/Memory.h"
#include "tela/core/NeverDestroyed.h"

#include <mutex>
#include <string>

namespace {

using Name = std::basic_string<char, std::char_traits<char>, Qv::Allocator<char>>;

// Interned names start far above the small fixed channel numbers the library
// and applications use directly (10 to 13 and the like).
constexpr int FIRST_INTERNED_ID = 1000;
constexpr int ALL_TYPES_ID = -1;

struct Names {
    std::mutex mutex;
    Qv::Map<Name, int> ids;
};

Names& names()
{
    static Qv::NeverDestroyed<Names> instance;
    return *instance;
}

} // namespace

int NotifyMsgTypeDictionary::Dictionary::intern(const char* name)
{
    Names& table = names();
    std::lock_guard lock(table.mutex);
    const Name key(name ? name : "");
    const auto [entry, inserted] = table.ids.emplace(key, FIRST_INTERNED_ID + static_cast<int>(table.ids.size()));
    (void)inserted;
    return entry->second;
}

NotifyMsgTypeDictionary::Dictionary& NotifyMsgTypeDictionary::instance()
{
    static Dictionary dictionary{ALL_TYPES_ID};
    return dictionary;
}
