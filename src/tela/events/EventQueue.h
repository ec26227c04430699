#pragma once
// The event queue: one process-wide FIFO of pooled Event records.
//
// Any thread may send, flush, free and ask what is pending; only the main
// thread receives. Senders keep their own Event: the queue copies it. What
// event_receive returns belongs to the caller until event_free.
//
// Rules that callers see:
// - First in, first out, with no priorities and no size limit.
// - A mouse move or hover replaces the newest queued event when that has the
//   identical type word; nothing older is ever merged.
// - A cancelled event (type 0) stays queued until it is the oldest, and is
//   then thrown away by event_receive.
// - Masks match when (type & mask) == mask: 0 matches everything.
// - Lock order: the queue lock, then the handler registry's lock.

#include "tela/core/LightweightString.h"
#include "tela/core/Ptr.h"

#include <cstddef>
#include <cstdint>

class Canvas;
class EventHandler;
struct Event;

// Copies the event onto the queue and wakes the main thread. Without a canvas
// and a handler, or (with checkTarget) for a target that is not alive, the
// event is dropped silently.
void event_send(Event* event, bool checkTarget);
// As event_send, with `handler` as both the event's handler and its payload:
// the queued event alone keeps the handler alive (a deferred action's
// wrapper), and the queue needs less bookkeeping for it.
void event_send_owning(Event* event, Qv::Ptr<EventHandler> handler, bool checkTarget);
// Storage for such handlers. One is made on any thread and dies on the main
// one, soon after its event: the general heap serves that pattern poorly, so
// the queue keeps their blocks for reuse, as the pool does event records.
// Blocks up to OWNED_HANDLER_BLOCK bytes are pooled; larger ones go to the heap.
constexpr std::size_t OWNED_HANDLER_BLOCK = 96;
void* event_owned_handler_allocate(std::size_t bytes); // throws std::bad_alloc
void event_owned_handler_release(void* block, std::size_t bytes);
// As event_send, but a message (0x4001, 0x4002) already queued for the same
// target with the same name is kept (replace false) or replaced and moved to
// the back of the line (replace true).
void event_send_idempotent(Event* event, bool replace);
// The oldest live event, its positions projected into its canvas now; null
// when nothing is queued. Mouse events queued across a stall of more than
// three seconds between calls are discarded.
Event* event_receive();
// Releases the event's payload outside the queue lock; null is accepted.
void event_free(Event* event);

// Cancels queued events for a canvas (null: any canvas) or for a handler.
// With keepPairs, an up is kept when a newer down of the same button was just
// cancelled, so that a pressed button is released.
void event_flush(Canvas* canvas, int mask, bool keepPairs);
void event_flush(EventHandler* handler, int mask, bool keepPairs);
// For a dying handler: cancels what is queued for it or names it as sender,
// as event_flush(handler, 0, false), then calls leave(handler) before the
// queue lock is let go. A checked send looks at the registry inside that
// lock, so if leave takes the handler out of the registry, no send can come
// between the flush and the leaving.
void event_flush_and_leave(EventHandler* handler, void (*leave)(EventHandler*));
// A plain null means every canvas.
inline void event_flush(std::nullptr_t, int mask, bool keepPairs)
{
    event_flush(static_cast<Canvas*>(nullptr), mask, keepPairs);
}
// Gives the newest queued event of exactly `type` with this name and canvas
// `data` in place of its payload; false when there is none. The old payload
// is released under the queue lock, which is re-entrant, so a payload whose
// death flushes the queue may be replaced.
bool event_replace_queued_data(std::uint32_t type, const String& name, Canvas* canvas, const Qv::Ptr<iObject>& data);

// 1 when a live event for the canvas (null: any) matching the mask is queued.
int event_pending(Canvas* canvas, int mask);

Canvas* event_get_kbd_focus();
void event_set_kbd_focus(Canvas* canvas);

// How many queued events the queue's walks (flushes, pending tests, searches
// for a duplicate or a named event) have looked at since start. Lets a test
// see that the work of a drain grows with the queue, not with its square.
std::uint64_t event_queue_steps();

// Reads the queue's configuration again ("discard_stale_mouse_events") and
// forgets the time of the last receive. Start-up calls it; so may tests.
void event_queue_init();
// Forgets that the queue was initialised: its next use reads the
// configuration again. The application's shut-down calls it.
void event_queue_shutdown();
bool event_queue_initialised();
