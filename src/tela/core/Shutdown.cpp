#include "tela/core/Shutdown.h"

#include "tela/core/Log.h"
#include "tela/core/Memory.h"
#include "tela/core/NeverDestroyed.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <mutex>

namespace {

struct Entry {
    Shutdown::Callback callback;
    int priority;
    std::uint64_t order; // ties keep the order of adding
};

struct Callbacks {
    std::mutex mutex;
    Qv::Vector<Entry> entries;
    std::uint64_t added = 0;
};

// Never destroyed: callbacks may be added by statics of any module, during
// start-up or exit.
Callbacks& callbacks()
{
    static Qv::NeverDestroyed<Callbacks> list;
    return *list;
}

std::atomic<bool> exiting { false };

bool runs_before(const Entry& a, const Entry& b)
{
    return a.priority != b.priority ? a.priority > b.priority : a.order < b.order;
}

} // namespace

void Shutdown::addCallback(Callback callback, int priority)
{
    if (!callback) {
        murl_printf("Shutdown::addCallback: null callback ignored\n");
        return;
    }
    Callbacks& list = callbacks();
    std::lock_guard lock(list.mutex);
    list.entries.push_back(Entry { callback, priority, list.added++ });
}

void Shutdown::beginShutdown()
{
    exiting.store(true);
}

bool Shutdown::isExiting()
{
    return exiting.load();
}

void Shutdown::runCallbacks(eExitType type)
{
    beginShutdown();
    Callbacks& list = callbacks();
    // One at a time, outside the lock, so that a callback may add another,
    // which then takes its turn by priority among those still waiting.
    for (;;) {
        Entry next {};
        {
            std::lock_guard lock(list.mutex);
            if (list.entries.empty())
                return;
            const auto first = std::min_element(list.entries.begin(), list.entries.end(), runs_before);
            next = *first;
            list.entries.erase(first);
        }
        next.callback(type);
    }
}

void Shutdown::resetForTesting()
{
    Callbacks& list = callbacks();
    std::lock_guard lock(list.mutex);
    list.entries.clear();
    exiting.store(false);
}
