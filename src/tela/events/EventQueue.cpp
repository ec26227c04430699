#include "tela/events/EventQueue.h"

#include "tela/canvas/Canvas.h"
#include "tela/canvas/CanvasClient.h"
#include "tela/core/Clock.h"
#include "tela/core/Config.h"
#include "tela/core/CriticalSection.h"
#include "tela/core/NeverDestroyed.h"
#include "tela/events/Event.h"
#include "tela/events/EventHandler.h"
#include "tela/platform/iRootWindow.h"
#include "tela/state/TelaState.h"
#include "tela/vector/Matrix.h"

#include <atomic>
#include <climits>
#include <mutex>
#include <new>
#include <utility>

namespace {

// How many live queued events name each pointer, so that a handler can tell
// without walking the queue that nothing queued concerns it. Keys are compared,
// never followed: a send without a target check may name a handler that has
// already died, and its events must be counted all the same. Open addressing
// with linear probing; an entry whose count drops to 0 is removed by shifting
// its followers back, so lookups never meet tombstones. Guarded by the queue
// lock; grows, never shrinks, so after warm-up it allocates nothing.
class PointerCounts {
public:
    void add(const void* key)
    {
        if ((m_used + 1) * 2 > m_slots.size())
            grow();
        Slot& slot = m_slots[find(key)];
        if (slot.count++ == 0) {
            slot.key = key;
            ++m_used;
        }
    }

    void remove(const void* key)
    {
        if (m_slots.empty())
            return;
        std::size_t hole = find(key);
        if (m_slots[hole].count == 0 || --m_slots[hole].count != 0)
            return; // not there would be a miscount; never go below zero
        --m_used;
        // Pull back every follower of the probe run that may sit at the hole.
        const std::size_t mask = m_slots.size() - 1;
        for (std::size_t i = (hole + 1) & mask; m_slots[i].count != 0; i = (i + 1) & mask) {
            const std::size_t home = index(m_slots[i].key);
            if (((i - home) & mask) >= ((i - hole) & mask)) {
                m_slots[hole] = m_slots[i];
                hole = i;
            }
        }
        m_slots[hole] = Slot{};
    }

    std::size_t count(const void* key) const
    {
        return m_used == 0 ? 0 : m_slots[find(key)].count;
    }

    // Calls f(key) for each key with a non-zero count.
    template <typename F>
    void forEach(F&& f) const
    {
        if (m_used == 0)
            return;
        for (const Slot& slot : m_slots)
            if (slot.count != 0)
                f(slot.key);
    }

private:
    struct Slot {
        const void* key = nullptr;
        std::size_t count = 0;
    };

    std::size_t index(const void* key) const
    {
        // Records and objects are at least 8-aligned: drop the dead low bits,
        // then spread the rest by a multiplicative hash.
        const auto bits = reinterpret_cast<std::uintptr_t>(key) >> 3;
        return static_cast<std::size_t>(bits * 0x9E3779B97F4A7C15ull >> 32) & (m_slots.size() - 1);
    }

    // The slot holding key, or the empty slot where it would go.
    std::size_t find(const void* key) const
    {
        const std::size_t mask = m_slots.size() - 1;
        std::size_t i = index(key);
        while (m_slots[i].count != 0 && m_slots[i].key != key)
            i = (i + 1) & mask;
        return i;
    }

    void grow()
    {
        Qv::Vector<Slot> old(m_slots.empty() ? 16 : m_slots.size() * 2);
        old.swap(m_slots);
        for (const Slot& slot : old)
            if (slot.count != 0)
                m_slots[find(slot.key)] = slot;
    }

    Qv::Vector<Slot> m_slots;
    std::size_t m_used = 0;
};

// Blocks of OWNED_HANDLER_BLOCK bytes for the handlers queued events own. The
// free blocks are kept in an array rather than threaded through the blocks,
// so that taking one does not read the block, which was last touched by the
// thread that freed it. Its own lock, not the queue's: senders take a block
// before they send; and a cache line of its own, away from the queue's
// fields, which the queue lock's holder is writing. Like the pool of event
// records, it only grows: it holds at most as many blocks as were ever in use
// at once.
class alignas(64) HandlerBlocks {
public:
    HandlerBlocks() = default;
    HandlerBlocks(const HandlerBlocks&) = delete;
    HandlerBlocks& operator=(const HandlerBlocks&) = delete;
    ~HandlerBlocks()
    {
        for (void* block : m_free)
            Qv::release(block);
    }

    void* take()
    {
        {
            std::lock_guard<std::mutex> guard(m_lock);
            if (!m_free.empty()) {
                void* block = m_free.back();
                m_free.pop_back();
                return block;
            }
        }
        return Qv::allocate(OWNED_HANDLER_BLOCK);
    }

    void give(void* block) noexcept
    {
        std::lock_guard<std::mutex> guard(m_lock);
        try {
            m_free.push_back(block);
            return;
        } catch (const std::bad_alloc&) {
        }
        Qv::release(block); // no room to keep it: back to the heap
    }

private:
    std::mutex m_lock;
    Qv::Vector<void*> m_free;
};

// The queue is doubly linked: `next` runs towards the oldest event, `newer`
// back towards the head. Taking the oldest event and unlinking any event are
// therefore constant time; the walks that must look at every event (flush,
// pending, duplicate search) go newest first along `next`.
//
// Every live (type not 0) queued event is counted under the pointers a
// handler's flush looks for: its `handler` in `targets`, its `sender` in
// `senders`, and, when it goes to a canvas's client, its `canvas` in `routed`.
// Three tables rather than one, so that an empty one (few events carry a
// sender) costs no lookup at all. A cancelled or
// unlinked event is no longer counted. A handler whose pointers have no count,
// and which is the client of no counted canvas, has nothing queued: its flush
// need not walk, which keeps each delivered deferred action (whose wrapper
// dies with it) from walking the whole queue.
//
// An event whose payload is its own handler (a deferred action: the event
// owns its wrapper; its sender says so, and the event carries ownsHandler)
// is counted only in `owning`, not under its handler. Such an event keeps its
// handler alive, so a dying handler can have none queued; counting them under
// their handlers would put one entry per action in `targets`, and with many
// actions queued every send and receive would miss the cache on a table of
// that size. The one place that drops the payload of a queued event,
// event_replace_queued_data, counts the event under its handler first, so the
// death that follows still finds it. A flush for a live handler cannot rule
// them out by its pointers, and walks while any is queued.
struct Queue {
    CriticalSection eventQueueLock; // "event queue lock"
    Event* head = nullptr; // newest
    Event* tail = nullptr; // oldest
    PointerCounts targets;
    PointerCounts senders;
    PointerCounts routed;
    std::size_t owning = 0;  // live queued events whose payload is their handler
    std::uint64_t steps = 0; // events looked at by walks, for event_queue_steps
    HandlerBlocks ownedHandlerBlocks;
};

Queue& queue()
{
    // Never destroyed: handlers dying at exit still flush.
    static Qv::NeverDestroyed<Queue> instance;
    return *instance;
}

Canvas* kbdFocus = nullptr;
std::atomic<int> discardStaleMouseEvents{1};
std::atomic<bool> s_initialised{false};
std::uint32_t lastReceiveTime = 0; // main thread only

void ensure_initialised()
{
    if (!s_initialised.load(std::memory_order_acquire))
        event_queue_init();
}

// Called with the lock held, for an event that is or was live.
void count_in(Queue& q, const Event* event)
{
    if (event->ownsHandler)
        ++q.owning;
    else if (event->handler)
        q.targets.add(event->handler);
    else if (event->canvas)
        q.routed.add(event->canvas);
    if (event->sender)
        q.senders.add(event->sender);
}

void count_out(Queue& q, const Event* event)
{
    if (event->ownsHandler)
        --q.owning;
    else if (event->handler)
        q.targets.remove(event->handler);
    else if (event->canvas)
        q.routed.remove(event->canvas);
    if (event->sender)
        q.senders.remove(event->sender);
}

// Called with the lock held.
void link_at_head(Queue& q, Event* event)
{
    event->newer = nullptr;
    event->next = q.head;
    if (q.head)
        q.head->newer = event;
    else
        q.tail = event;
    q.head = event;
    if (event->type != 0)
        count_in(q, event);
}

// Called with the lock held.
void unlink(Queue& q, Event* event)
{
    if (event->newer)
        event->newer->next = event->next;
    else
        q.head = event->next;
    if (event->next)
        event->next->newer = event->newer;
    else
        q.tail = event->newer;
    event->next = nullptr;
    event->newer = nullptr;
    if (event->type != 0)
        count_out(q, event);
}

// Called with the lock held: the queued event becomes a cancelled one.
void cancel(Queue& q, Event* event)
{
    count_out(q, event);
    event->type = 0;
}

// Called with the lock held: the queued live event forgets its sender.
void clear_sender(Queue& q, Event* event)
{
    if (event->type != 0)
        q.senders.remove(event->sender);
    event->sender = nullptr;
}

// Called with the lock held. Whether anything live in the queue may name the
// handler as target or as sender; false means a flush for it has nothing to do.
// A dying handler is the payload of no queued event, so only a live one need
// think of the events that own their handlers.
bool may_name(const Queue& q, EventHandler* handler, bool dying)
{
    if (!dying && q.owning != 0)
        return true;
    if (q.targets.count(handler) != 0 || q.senders.count(static_cast<iObject*>(handler)) != 0)
        return true;
    bool found = false;
    q.routed.forEach([&](const void* canvas) {
        found = found || static_cast<const Canvas*>(canvas)->client == handler;
    });
    return found;
}

bool matches(const Event& event, int mask)
{
    const auto bits = static_cast<std::uint32_t>(mask);
    return (event.type & bits) == bits;
}

// Every send wakes the main thread once, also when it replaced an event: the
// receiver tolerates wakes that find nothing.
void wake_main_thread()
{
    if (Canvas* root = tela_rootcanvas())
        if (root->window)
            root->window->postWake();
}

} // namespace

void event_queue_init()
{
    discardStaleMouseEvents.store(config_int("discard_stale_mouse_events", 1, INT_MIN, INT_MAX));
    lastReceiveTime = 0;
    s_initialised.store(true, std::memory_order_release);
}

void event_queue_shutdown()
{
    s_initialised.store(false, std::memory_order_release);
}

bool event_queue_initialised()
{
    return s_initialised.load(std::memory_order_acquire);
}

namespace {

void send(Event* event, bool checkTarget, bool ownsHandler)
{
    if (!event || (!event->canvas && !event->handler))
        return;
    Queue& q = queue();
    CriticalSection::Guard guard(q.eventQueueLock);
    if (checkTarget && !EventHandler::valid(event->getEventHandlerObj(), IdStamp(0, 0, 0)))
        return;
    Event* copy = new Event(*event);
    if (mouse_move_or_hover_event(*event) && q.head && q.head->type == event->type && q.head->coalescable) {
        Event* replaced = q.head;
        unlink(q, replaced);
        delete replaced;
    }
    copy->coalescable = (copy->type & EventType::MOUSE_CLASS) != 0;
    copy->ownsHandler = ownsHandler;
    link_at_head(q, copy);
    wake_main_thread();
}

} // namespace

void event_send(Event* event, bool checkTarget)
{
    send(event, checkTarget, false);
}

void event_send_owning(Event* event, Qv::Ptr<EventHandler> handler, bool checkTarget)
{
    if (!event || !handler)
        return;
    // Both set here, so that the mark is true by construction.
    event->handler = handler.get();
    event->m_data = std::move(handler);
    send(event, checkTarget, true);
}

void event_send_idempotent(Event* event, bool replace)
{
    if (!event || (!event->canvas && !event->handler))
        return;
    if (mouse_event(*event)) {
        event_send(event, false);
        return;
    }
    Queue& q = queue();
    CriticalSection::Guard guard(q.eventQueueLock);
    if (event->type == EventType::MESSAGE || event->type == EventType::MESSAGE_RESERVED) {
        EventHandler* target = event->getEventHandlerObj();
        for (Event* queued = q.head; queued; queued = queued->next) {
            ++q.steps;
            if (queued->type != EventType::MESSAGE && queued->type != EventType::MESSAGE_RESERVED)
                continue;
            if (queued->msg().view() != event->msg().view()) // null and empty are alike
                continue;
            const bool same_target = (event->canvas && event->canvas == queued->canvas) ||
                                     target == queued->getEventHandlerObj();
            if (!same_target)
                continue;
            if (!replace)
                return; // the queued one stands, with its place and its data
            unlink(q, queued);
            delete queued;
            break;
        }
    }
    Event* copy = new Event(*event);
    copy->coalescable = false;
    copy->ownsHandler = false;
    link_at_head(q, copy);
    wake_main_thread();
}

Event* event_receive()
{
    ensure_initialised();
    if (discardStaleMouseEvents.load(std::memory_order_relaxed) != 0) {
        // A gap of three seconds between receives means the main thread
        // stalled: what the mouse did meanwhile is no longer wanted. A gap of
        // seconds needs no finer clock than the system's tick, which is far
        // cheaper to read, and this runs for every event.
        const auto now = static_cast<std::uint32_t>(msecsNowCoarse());
        if (now - lastReceiveTime > 3000)
            event_flush(static_cast<Canvas*>(nullptr), EventType::MOUSE_CLASS, true);
        lastReceiveTime = now;
    }

    Queue& q = queue();
    Event* event = nullptr;
    for (;;) {
        {
            CriticalSection::Guard guard(q.eventQueueLock);
            event = q.tail;
            if (event)
                unlink(q, event);
        }
        if (!event)
            return nullptr;
        if (event->type != 0 && (event->canvas || event->handler))
            break;
        event_free(event);
    }

    if (mouse_event(*event) && event->canvas) {
        // Projected now, so a canvas that moved while the event waited is honoured.
        double x, y;
        mat3_project(event->canvas->inverseMatrix, event->screenPos().x, event->screenPos().y, &x, &y);
        event->pos(XY<int>(static_cast<int>(x), static_cast<int>(y)));
        mat3_project(event->canvas->inverseMatrix, event->screenDownPos().x, event->screenDownPos().y, &x, &y);
        event->downPos(XY<int>(static_cast<int>(x), static_cast<int>(y)));
    }
    return event;
}

void event_free(Event* event)
{
    if (event && (event->type & EventType::TIMER_CLASS) && event->canvas)
        event->canvas->lastTimerEventTime = static_cast<std::uint32_t>(msecsNow());
    // Hold the payload past the record's end, so that its last release, and
    // any destructor of the application's, runs outside the queue lock.
    // The record is no longer linked, so nothing else can reach it: it goes
    // back to the pool without the queue lock.
    Qv::Ptr<iObject> payload = event ? std::move(event->m_data) : Qv::Ptr<iObject>();
    delete event;
}

void event_flush(Canvas* canvas, int mask, bool keepPairs)
{
    Queue& q = queue();
    CriticalSection::Guard guard(q.eventQueueLock);
    bool saw_right_down = false;
    bool saw_left_down = false;
    iObject* identity = canvas;
    for (Event* event = q.head; event; event = event->next) {
        ++q.steps;
        if (!matches(*event, mask))
            continue;
        if ((!canvas || canvas == event->canvas) && event->type != 0) {
            if (!keepPairs) {
                cancel(q, event);
            } else if (mouse_down_event(*event)) {
                if (mouse_right_event(*event))
                    saw_right_down = true;
                else
                    saw_left_down = true;
                cancel(q, event);
            } else if (!mouse_up_event(*event)) {
                cancel(q, event);
            } else {
                const bool spared = (mouse_right_event(*event) && saw_right_down) ||
                                    (mouse_left_event(*event) && saw_left_down);
                if (!spared)
                    cancel(q, event);
            }
        }
        if (identity && event->sender == identity)
            clear_sender(q, event);
    }
}

namespace {

void flush_handler(EventHandler* handler, int mask, bool keepPairs, bool dying)
{
    Queue& q = queue();
    CriticalSection::Guard guard(q.eventQueueLock);
    // Nothing live names it: the walk would change nothing. Both flushes of a
    // dying handler come here; each still takes the lock, so the second still
    // waits for a checked send that found the handler registered.
    if (handler && !may_name(q, handler, dying))
        return;
    bool spared = false;
    iObject* identity = handler;
    for (Event* event = q.head; event; event = event->next) {
        ++q.steps;
        if (event->type == 0 || !matches(*event, mask))
            continue;
        if (event->getEventHandlerObj() == handler) {
            // The low two bits of the subtype, not the up and down tests: one
            // release is spared after the first press found, newest first.
            bool cancel_it = true;
            if (keepPairs && !spared) {
                if (event->type & 2u) {
                    spared = true;
                } else if (event->type & 1u) {
                    spared = true;
                    cancel_it = false;
                }
            }
            if (!cancel_it)
                continue;
            cancel(q, event);
        }
        if (event->sender && event->sender == identity)
            clear_sender(q, event);
    }
}

} // namespace

void event_flush(EventHandler* handler, int mask, bool keepPairs)
{
    flush_handler(handler, mask, keepPairs, false);
}

void event_flush_and_leave(EventHandler* handler, void (*leave)(EventHandler*))
{
    Queue& q = queue();
    CriticalSection::Guard guard(q.eventQueueLock); // re-entrant: the flush takes it again
    flush_handler(handler, 0, false, true);
    leave(handler);
}

void* event_owned_handler_allocate(std::size_t bytes)
{
    void* block = bytes <= OWNED_HANDLER_BLOCK ? queue().ownedHandlerBlocks.take() : Qv::allocate(bytes);
    if (!block)
        throw std::bad_alloc();
    return block;
}

void event_owned_handler_release(void* block, std::size_t bytes)
{
    if (!block)
        return;
    if (bytes <= OWNED_HANDLER_BLOCK)
        queue().ownedHandlerBlocks.give(block);
    else
        Qv::release(block);
}

bool event_replace_queued_data(std::uint32_t type, const String& name, Canvas* canvas, const Qv::Ptr<iObject>& data)
{
    Queue& q = queue();
    CriticalSection::Guard guard(q.eventQueueLock);
    for (Event* queued = q.head; queued; queued = queued->next) {
        ++q.steps;
        if (queued->type == type && queued->canvas == canvas && queued->msg().view() == name.view()) {
            // Counted again under the new payload before the old one goes, so
            // that a handler the old one owned finds this event when it dies
            // of it. The old payload dies here, under the lock.
            const bool live = queued->type != 0;
            if (live)
                count_out(q, queued);
            Qv::Ptr<iObject> old = std::move(queued->m_data);
            queued->m_data = data;
            queued->ownsHandler = false;
            if (live)
                count_in(q, queued);
            return true;
        }
    }
    return false;
}

int event_pending(Canvas* canvas, int mask)
{
    Queue& q = queue();
    CriticalSection::Guard guard(q.eventQueueLock);
    for (const Event* event = q.head; event; event = event->next, ++q.steps)
        if ((!canvas || canvas == event->canvas) && event->type != 0 && matches(*event, mask))
            return 1;
    return 0;
}

Canvas* event_get_kbd_focus()
{
    return kbdFocus;
}

void event_set_kbd_focus(Canvas* canvas)
{
    kbdFocus = canvas;
}

std::uint64_t event_queue_steps()
{
    Queue& q = queue();
    CriticalSection::Guard guard(q.eventQueueLock);
    return q.steps;
}
