#pragma once
// The event queue: one process-wide FIFO of pooled Event records. Any thread
// may send, flush and ask what is pending; the main thread receives.

class Canvas;
class EventHandler;

// Cancels queued events for a canvas (or a handler) whose type has every bit
// of `mask`; mask 0 cancels all of them.
void event_flush(Canvas* canvas, int mask, bool keepPairs);
void event_flush(EventHandler* handler, int mask, bool keepPairs);

Canvas* event_get_kbd_focus();
void event_set_kbd_focus(Canvas* canvas);
