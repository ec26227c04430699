#include "tela/events/Event.h"

#include "tela/canvas/Canvas.h"
#include "tela/canvas/CanvasClient.h"
#include "tela/platform/OS.h"
#include "tela/platform/iWindowingService.h"

void Event::keyCode(unsigned code)
{
    key = code;
    heldKey = 0;
    keyRepeat = 0;
}

EventHandler* Event::getEventHandlerObj() const
{
    if (handler)
        return handler;
    return canvas ? canvas->client : nullptr;
}

unsigned Event::getKeyboardModifiers()
{
    iWindowingService* windowing = OS()->windowing();
    unsigned held = 0;
    for (unsigned mask : {0x1000000u, 0x2000000u, 0x4000000u, 0x100000u})
        if (windowing->isKeyDown(mask))
            held |= mask;
    return held;
}

namespace {

constexpr unsigned MOUSE = 0x100;

unsigned subtype(const Event& e)
{
    return e.type & 15u;
}

} // namespace

bool mouse_event(const Event& e) { return (e.type & MOUSE) != 0; }
bool mouse_up_event(const Event& e) { return mouse_event(e) && subtype(e) == 1; }
bool mouse_down_event(const Event& e) { return mouse_event(e) && subtype(e) == 2; }
bool mouse_hover_event(const Event& e) { return mouse_event(e) && subtype(e) == 3; }
bool mouse_move_event(const Event& e) { return mouse_event(e) && subtype(e) == 4; }
bool mouse_chord_event(const Event& e) { return mouse_event(e) && subtype(e) == 5; }
bool mouse_wheel_event(const Event& e) { return mouse_event(e) && subtype(e) == 6; }
bool mouse_left_event(const Event& e) { return mouse_event(e) && (e.type & 0x20u); }
bool mouse_right_event(const Event& e) { return mouse_event(e) && (e.type & 0x40u); }
bool mouse_middle_event(const Event& e) { return mouse_event(e) && (e.type & 0x80u); }
bool mouse_double_click_event(const Event& e) { return mouse_event(e) && (e.type & 0x8000u); }
bool mouse_triple_click_event(const Event& e) { return mouse_event(e) && (e.type & 0x2000u); }
bool mouse_zoom_event(const Event& e) { return mouse_wheel_event(e) && (e.key & (0x2000000u | 0x100000u)); }
bool isMouseMoveSignificant(const Event& e) { return e.distance().x >= 4 || e.distance().y >= 4; }
bool isKeyPressEvent(const Event& e) { return e.type == 512; }
bool isKeyReleaseEvent(const Event& e) { return e.type == 1024; }

bool mouse_event(const Event* e) { return e && mouse_event(*e); }
bool mouse_up_event(const Event* e) { return e && mouse_up_event(*e); }
bool mouse_down_event(const Event* e) { return e && mouse_down_event(*e); }
bool mouse_hover_event(const Event* e) { return e && mouse_hover_event(*e); }
bool mouse_move_event(const Event* e) { return e && mouse_move_event(*e); }
bool mouse_chord_event(const Event* e) { return e && mouse_chord_event(*e); }
bool mouse_wheel_event(const Event* e) { return e && mouse_wheel_event(*e); }
bool mouse_left_event(const Event* e) { return e && mouse_left_event(*e); }
bool mouse_right_event(const Event* e) { return e && mouse_right_event(*e); }
bool mouse_middle_event(const Event* e) { return e && mouse_middle_event(*e); }
bool mouse_double_click_event(const Event* e) { return e && mouse_double_click_event(*e); }
bool mouse_triple_click_event(const Event* e) { return e && mouse_triple_click_event(*e); }
bool mouse_zoom_event(const Event* e) { return e && mouse_zoom_event(*e); }
bool isMouseMoveSignificant(const Event* e) { return e && isMouseMoveSignificant(*e); }
bool isKeyPressEvent(const Event* e) { return e && isKeyPressEvent(*e); }
bool isKeyReleaseEvent(const Event* e) { return e && isKeyReleaseEvent(*e); }

bool eventWasChordEvent(const Event& e)
{
    return mouse_event(e) && e.partOfChord;
}

bool mouse_move_or_hover_event(const Event& e)
{
    return mouse_event(e) && (subtype(e) == 3 || subtype(e) == 4);
}

bool Tela::isPlainKey(unsigned key)
{
    return key != 0 && (key & 0xFFFF0000u) == 0;
}
