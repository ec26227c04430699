#include "events/EventQueue.h"

namespace {
Canvas* s_keyboard_focus = nullptr;
} // namespace

// Nothing is queued yet: the queue itself arrives with event delivery.
void event_flush(Canvas*, int, bool)
{
}

void event_flush(EventHandler*, int, bool)
{
}

Canvas* event_get_kbd_focus()
{
    return s_keyboard_focus;
}

void event_set_kbd_focus(Canvas* canvas)
{
    s_keyboard_focus = canvas;
}
