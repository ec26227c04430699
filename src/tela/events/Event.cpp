#include "tela/events/Event.h"

#include "tela/canvas/Canvas.h"
#include "tela/canvas/CanvasClient.h"
#include "tela/platform/iWindowingService.h"
#include "tela/platform/OS.h"
#include "tela/platform/OSEvents.h"

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
    for (unsigned mask : {eKeyShift, eKeyControl, eKeyAlt, eKeyMeta})
        if (windowing->isKeyDown(mask))
            held |= mask;
    return held;
}

namespace {

unsigned subtype(const Event& e)
{
    return e.type & EventType::SUBTYPE_MASK;
}

} // namespace

bool mouse_event(const Event& e) { return (e.type & EventType::MOUSE_CLASS) != 0; }
bool mouse_up_event(const Event& e) { return mouse_event(e) && subtype(e) == EventType::UP; }
bool mouse_down_event(const Event& e) { return mouse_event(e) && subtype(e) == EventType::DOWN; }
bool mouse_hover_event(const Event& e) { return mouse_event(e) && subtype(e) == EventType::HOVER; }
bool mouse_move_event(const Event& e) { return mouse_event(e) && subtype(e) == EventType::MOVE; }
bool mouse_chord_event(const Event& e) { return mouse_event(e) && subtype(e) == EventType::CHORD; }
bool mouse_wheel_event(const Event& e) { return mouse_event(e) && subtype(e) == EventType::WHEEL; }
bool mouse_left_event(const Event& e) { return mouse_event(e) && (e.type & EventType::LEFT); }
bool mouse_right_event(const Event& e) { return mouse_event(e) && (e.type & EventType::RIGHT); }
bool mouse_middle_event(const Event& e) { return mouse_event(e) && (e.type & EventType::MIDDLE); }
bool mouse_double_click_event(const Event& e) { return mouse_event(e) && (e.type & EventType::DOUBLE_CLICK); }
bool mouse_triple_click_event(const Event& e) { return mouse_event(e) && (e.type & EventType::TRIPLE_CLICK); }
bool mouse_zoom_event(const Event& e) { return mouse_wheel_event(e) && (e.key & (eKeyControl | eKeyMeta)); }
bool isMouseMoveSignificant(const Event& e) { return e.distance().x >= 4 || e.distance().y >= 4; }
bool isKeyPressEvent(const Event& e) { return e.type == EventType::KEY_PRESS; }
bool isKeyReleaseEvent(const Event& e) { return e.type == EventType::KEY_RELEASE; }

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
    return mouse_event(e) && (subtype(e) == EventType::HOVER || subtype(e) == EventType::MOVE);
}

bool Tela::isPlainKey(unsigned key)
{
    return key != 0 && (key & 0xFFFF0000u) == 0;
}
