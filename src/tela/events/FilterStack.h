#pragma once
// FilterStack<T>: an ordered list of filters, each paired with its own context
// word, offered an item in turn until one takes it (returns non-zero). The
// event intercept stacks at the bottom of this file are the library's two.
//
// Invariants
// - m_entries is in the order filters are asked: the newest push first.
// - m_lock is held for the whole of run(), so a filter sees a stack no other
//   thread can change; pushes and removals from other threads wait.
// - A push or remove from inside a run (the same thread, since the lock is
//   re-entrant) must not disturb the walk: a removal only blanks its entry,
//   which the walk then skips, and a push waits in m_pending. Both are folded
//   in when the outermost run ends. So a filter removed mid-run is never asked
//   again, and one pushed mid-run is first asked on the next run.
// - m_count is the number of entries that are, or will be after the run,
//   on the stack.
//
// Locks: nothing in the library takes a stack's lock while it holds the queue
// lock or the handler registry's, so a filter may send, flush and destroy
// handlers, which take those inside it. Keep it so: never push or remove from
// code that can run under the queue lock, such as a payload's destructor. And
// a filter must not wait for the main thread, which may be waiting for it.

#include "tela/core/CriticalSection.h"
#include "tela/core/Log.h"
#include "tela/core/Memory.h"
#include "tela/core/ScopeGuard.h"
#include "tela/events/FilterStackable.h"

#include <algorithm>
#include <cstddef>

template <typename T>
class FilterStack : public Qv::HeapObject {
public:
    struct Entry {
        FilterStackable<T>* filter;
        void* context;
    };

    FilterStack() = default;
    FilterStack(const FilterStack&) = delete;
    FilterStack& operator=(const FilterStack&) = delete;

    // Puts the filter on top, asked before everything already there. A filter
    // may stand more than once, with different contexts. Null is refused.
    void push(FilterStackable<T>* filter, void* context);
    // Takes every entry of the filter off; a filter not on the stack is ignored.
    void remove(FilterStackable<T>* filter);

    // Asks each filter in order, under the lock, and returns the first non-zero
    // answer, or 0 when no filter takes the item (at once for an empty stack).
    int run(const T& item);
    // As run, on the stack's own copy of the item, made only when some filter
    // is there to see it: most items meet empty stacks, and a copy is not free.
    int runOnCopy(const T& item);

    std::size_t count() const;
    bool contains(const FilterStackable<T>* filter) const;

private:
    void fold_in_changes_made_while_running();

    mutable CriticalSection m_lock;
    Qv::Vector<Entry> m_entries;
    Qv::Vector<Entry> m_pending; // pushed during a run, newest last
    std::size_t m_count = 0;
    int m_running = 0;           // depth of nested runs on the thread holding m_lock
    bool m_blanked = false;      // some entry was removed during a run
};

template <typename T>
void FilterStack<T>::push(FilterStackable<T>* filter, void* context)
{
    if (!filter) {
        tela_splat("FilterStack::push: null filter");
        return;
    }
    CriticalSection::Guard guard(m_lock);
    if (m_running > 0)
        m_pending.push_back(Entry{filter, context});
    else
        m_entries.insert(m_entries.begin(), Entry{filter, context});
    ++m_count;
}

template <typename T>
void FilterStack<T>::remove(FilterStackable<T>* filter)
{
    if (!filter)
        return;
    CriticalSection::Guard guard(m_lock);
    const auto is_it = [filter](const Entry& entry) { return entry.filter == filter; };
    const auto pending_end = std::remove_if(m_pending.begin(), m_pending.end(), is_it);
    m_count -= static_cast<std::size_t>(m_pending.end() - pending_end);
    m_pending.erase(pending_end, m_pending.end());
    if (m_running > 0) {
        for (Entry& entry : m_entries) {
            if (entry.filter != filter)
                continue;
            entry.filter = nullptr;
            m_blanked = true;
            --m_count;
        }
        return;
    }
    const auto entries_end = std::remove_if(m_entries.begin(), m_entries.end(), is_it);
    m_count -= static_cast<std::size_t>(m_entries.end() - entries_end);
    m_entries.erase(entries_end, m_entries.end());
}

template <typename T>
int FilterStack<T>::run(const T& item)
{
    CriticalSection::Guard guard(m_lock);
    if (m_count == 0)
        return 0;
    ++m_running;
    ScopeGuard end_of_run{[this] {
        if (--m_running == 0)
            fold_in_changes_made_while_running();
    }};
    // m_entries keeps its length and order until the outermost run ends, so
    // the walk stays sound whatever the filters push, remove or run meanwhile.
    for (std::size_t index = 0; index < m_entries.size(); ++index) {
        const Entry entry = m_entries[index];
        if (!entry.filter)
            continue;
        if (const int result = entry.filter->fsFilterThis(item, entry.context))
            return result;
    }
    return 0;
}

template <typename T>
int FilterStack<T>::runOnCopy(const T& item)
{
    CriticalSection::Guard guard(m_lock); // re-entrant: run takes it again
    if (m_count == 0)
        return 0;
    T copy(item); // not const: a filter may write to its own copy
    return run(copy);
}

template <typename T>
std::size_t FilterStack<T>::count() const
{
    CriticalSection::Guard guard(m_lock);
    return m_count;
}

template <typename T>
bool FilterStack<T>::contains(const FilterStackable<T>* filter) const
{
    CriticalSection::Guard guard(m_lock);
    const auto is_it = [filter](const Entry& entry) { return entry.filter == filter; };
    return filter && (std::any_of(m_entries.begin(), m_entries.end(), is_it) ||
                      std::any_of(m_pending.begin(), m_pending.end(), is_it));
}

template <typename T>
void FilterStack<T>::fold_in_changes_made_while_running()
{
    if (m_blanked) {
        m_entries.erase(std::remove_if(m_entries.begin(), m_entries.end(),
                                       [](const Entry& entry) { return entry.filter == nullptr; }),
                        m_entries.end());
        m_blanked = false;
    }
    // m_pending holds the newest last, and the newest goes on top.
    m_entries.insert(m_entries.begin(), m_pending.rbegin(), m_pending.rend());
    m_pending.clear();
}

struct Event;

// 1 is offered each event before 0; any other value gives stack 0. A plain
// number, so that callers may pass 0 and 1 as they are.
using EventInterceptStackPriority = int;
constexpr EventInterceptStackPriority eInterceptNormal = 0;
constexpr EventInterceptStackPriority eInterceptFirst = 1;

// Made on first use, from any thread, and never destroyed.
FilterStack<Event>& getEventInterceptStack(EventInterceptStackPriority priority);

// What the dispatcher does before delivery: marks the event as intercepting,
// offers a copy to stack 1 and, if nobody took it, a fresh copy to stack 0,
// so no filter can change what another sees; then clears the mark. The result
// is the first non-zero answer, or 0.
int event_run_intercept_stacks(Event& event);
