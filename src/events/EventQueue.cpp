#include "events/EventQueue.h"

#include "app/TelaState.h"
#include "canvas/Canvas.h"
#include "core/Clock.h"
#include "core/Config.h"
#include "core/CriticalSection.h"
#include "events/Event.h"
#include "events/EventHandler.h"
#include "platform/iRootWindow.h"
#include "vector/Matrix.h"

#include <atomic>
#include <climits>

namespace {

constexpr unsigned kMouseClass = 0x100;
constexpr unsigned kTimerClass = 0x1000;

// The queue is doubly linked: `next` runs towards the oldest event, `newer`
// back towards the head. Taking the oldest event and unlinking any event are
// therefore constant time; the walks that must look at every event (flush,
// pending, duplicate search) go newest first along `next`.
struct Queue {
    CriticalSection lock; // "event queue lock"
    Event* head = nullptr; // newest
    Event* tail = nullptr; // oldest
};

Queue& queue()
{
    // Never destroyed: handlers dying at exit still flush.
    alignas(Queue) static unsigned char storage[sizeof(Queue)];
    static Queue* instance = ::new (storage) Queue();
    return *instance;
}

Canvas* s_keyboard_focus = nullptr;
std::atomic<int> s_discard_stale_mouse_events{1};
std::atomic<bool> s_initialised{false};
std::uint32_t s_last_receive_time = 0; // main thread only

void ensure_initialised()
{
    if (!s_initialised.load(std::memory_order_acquire))
        event_queue_init();
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
    s_discard_stale_mouse_events.store(config_int("discard_stale_mouse_events", 1, INT_MIN, INT_MAX));
    s_last_receive_time = 0;
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

void event_send(Event* event, bool checkTarget)
{
    if (!event || (!event->canvas && !event->handler))
        return;
    Queue& q = queue();
    CriticalSection::Guard guard(q.lock);
    if (checkTarget && !EventHandler::valid(event->getEventHandlerObj(), IdStamp(0, 0, 0)))
        return;
    Event* copy = new Event(*event);
    if (mouse_move_or_hover_event(*event) && q.head && q.head->type == event->type && q.head->coalescable) {
        Event* replaced = q.head;
        unlink(q, replaced);
        delete replaced;
    }
    copy->coalescable = (copy->type & kMouseClass) != 0;
    link_at_head(q, copy);
    wake_main_thread();
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
    CriticalSection::Guard guard(q.lock);
    if (event->type == 0x4001 || event->type == 0x4002) {
        EventHandler* target = event->getEventHandlerObj();
        for (Event* queued = q.head; queued; queued = queued->next) {
            if (queued->type != 0x4001 && queued->type != 0x4002)
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
    link_at_head(q, copy);
    wake_main_thread();
}

Event* event_receive()
{
    ensure_initialised();
    if (s_discard_stale_mouse_events.load(std::memory_order_relaxed) != 0) {
        // A gap of three seconds between receives means the main thread
        // stalled: what the mouse did meanwhile is no longer wanted.
        const auto now = static_cast<std::uint32_t>(msecsNow());
        if (now - s_last_receive_time > 3000)
            event_flush(static_cast<Canvas*>(nullptr), kMouseClass, true);
        s_last_receive_time = now;
    }

    Queue& q = queue();
    Event* event = nullptr;
    for (;;) {
        {
            CriticalSection::Guard guard(q.lock);
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
    if (event && (event->type & kTimerClass) && event->canvas)
        event->canvas->lastTimerEventTime = static_cast<std::uint32_t>(msecsNow());
    // Hold the payload past the record's end, so that its last release, and
    // any destructor of the application's, runs outside the queue lock.
    // The record is no longer linked, so nothing else can reach it: it goes
    // back to the pool without the queue lock.
    Qv::Ptr<iObject> payload = event ? event->data() : Qv::Ptr<iObject>();
    delete event;
}

void event_flush(Canvas* canvas, int mask, bool keepPairs)
{
    Queue& q = queue();
    CriticalSection::Guard guard(q.lock);
    bool saw_right_down = false;
    bool saw_left_down = false;
    iObject* identity = canvas;
    for (Event* event = q.head; event; event = event->next) {
        if (!matches(*event, mask))
            continue;
        if (!canvas || canvas == event->canvas) {
            if (!keepPairs) {
                event->type = 0;
            } else if (mouse_down_event(*event)) {
                if (mouse_right_event(*event))
                    saw_right_down = true;
                else
                    saw_left_down = true;
                event->type = 0;
            } else if (!mouse_up_event(*event)) {
                event->type = 0;
            } else {
                const bool spared = (mouse_right_event(*event) && saw_right_down) ||
                                    (mouse_left_event(*event) && saw_left_down);
                if (!spared)
                    event->type = 0;
            }
        }
        if (identity && event->sender == identity)
            event->sender = nullptr;
    }
}

void event_flush(EventHandler* handler, int mask, bool keepPairs)
{
    Queue& q = queue();
    CriticalSection::Guard guard(q.lock);
    bool spared = false;
    iObject* identity = handler;
    for (Event* event = q.head; event; event = event->next) {
        if (event->type == 0 || !matches(*event, mask))
            continue;
        if (event->getEventHandlerObj() == handler) {
            // The low two bits of the subtype, not the up and down tests: one
            // release is spared after the first press found, newest first.
            bool cancel = true;
            if (keepPairs && !spared) {
                if (event->type & 2u) {
                    spared = true;
                } else if (event->type & 1u) {
                    spared = true;
                    cancel = false;
                }
            }
            if (!cancel)
                continue;
            event->type = 0;
        }
        if (event->sender == identity)
            event->sender = nullptr;
    }
}

bool event_replace_queued_data(std::uint32_t type, const String& name, Canvas* canvas, const Qv::Ptr<iObject>& data)
{
    Queue& q = queue();
    CriticalSection::Guard guard(q.lock);
    for (Event* queued = q.head; queued; queued = queued->next) {
        if (queued->type == type && queued->canvas == canvas && queued->msg().view() == name.view()) {
            queued->data(data);
            return true;
        }
    }
    return false;
}

int event_pending(Canvas* canvas, int mask)
{
    Queue& q = queue();
    CriticalSection::Guard guard(q.lock);
    for (const Event* event = q.head; event; event = event->next)
        if ((!canvas || canvas == event->canvas) && event->type != 0 && matches(*event, mask))
            return 1;
    return 0;
}

Canvas* event_get_kbd_focus()
{
    return s_keyboard_focus;
}

void event_set_kbd_focus(Canvas* canvas)
{
    s_keyboard_focus = canvas;
}
