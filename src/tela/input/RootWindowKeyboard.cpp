// Key reports into queue events. The handler tracks up to two keys held at
// once: a key pressed while another is held is one event carrying both, so
// that an application can bind a chord of two keys.
//
//   state            input                 next             output
//   none             press A               first A          press A
//   first A          press A (repeat)      first A          press A
//   first A          press B               A, second B      complex (A, B)
//   A, second B      press B (repeat)      unchanged        complex (A, B), flagged
//                                                           only with repeats off
//   A, second B      press C               A, second C      complex (A, C)
//   A, second B      press A (repeat)      first A          press A
//   A, second B      release B             first A          complex release (A, B)
//   A, any           release other than B  none             release
#include "tela/input/RootWindowEventHandler.h"

#include "tela/core/Config.h"
#include "tela/core/WrappedData.h"
#include "tela/events/Event.h"
#include "tela/events/EventQueue.h"
#include "tela/input/MouseState.h"
#include "tela/state/TelaState.h"

#include <cwctype>

namespace {

constexpr std::uint32_t FOLDING_MODIFIERS = eKeyShift | eKeyControl | eKeyAlt | eKeyMeta;

// Whether the second key's auto-repeat comes as plain presses (the default)
// or flagged as repeats. Read once, and again after a configuration reload.
bool complex_key_repeats()
{
    static unsigned read_in = 0;
    static bool complexKeyRepeats = true;
    if (read_in != Qv::configurationGeneration()) {
        read_in = Qv::configurationGeneration();
        complexKeyRepeats = config_int("complex_key_repeats", 1) != 0;
    }
    return complexKeyRepeats;
}

// The key code with its modifiers, case-folded so that a binding need not
// care how the platform reported a letter: control or meta (or shift) make
// it upper case, alt lower case, and shift alone leaves no modifier bit.
std::uint32_t composed_code(const KeyEvent& k)
{
    std::uint32_t code = k.keyCode;
    const bool printable = code >= 32 && !(code & eKeyNotCharacter);
    if (printable) {
        if (k.modifiers & (eKeyControl | eKeyShift | eKeyMeta))
            code = static_cast<std::uint32_t>(std::towupper(static_cast<wint_t>(code & 0xFFFF)));
        if (k.modifiers & eKeyAlt)
            code = static_cast<std::uint32_t>(std::towlower(static_cast<wint_t>(code & 0xFFFF)));
    }
    std::uint32_t composed = code | k.modifiers;
    if (printable && (k.modifiers & FOLDING_MODIFIERS) == eKeyShift)
        composed &= ~static_cast<std::uint32_t>(eKeyShift);
    return composed;
}

} // namespace

void RootWindowEventHandler::resetKeyboard()
{
    firstKey = 0;
    secondKey = 0;
}

void RootWindowEventHandler::sendKbdEvent(Canvas* target, std::uint32_t time, std::uint32_t key, std::int32_t extra,
                                          const ComplexKeyboardEvent* complex)
{
    Event ev(EventType::KEY_PRESS);
    ev.canvas = target;
    ev.keyCode(key);
    ev.wheelDelta = extra;
    ev.time = time;
    ev.mouseButtons = getMouseClickState();
    if (complex) {
        ev.heldKey = complex->heldKey;
        ev.key = complex->key;
        ev.keyRepeat = complex->keyRepeat;
    }
    event_send(&ev, false);
}

iEventHandler::eRC RootWindowEventHandler::handleEvent(const KeyEvent& k)
{
    if (k.action == KeyEvent::eCompoundText || k.action == KeyEvent::eCompoundTextEnd) {
        Event ev(EventType::MESSAGE);
        ev.canvas = event_get_kbd_focus();
        ev.message(String("CompoundTextInput"));
        ev.data(Qv::make<WrappedData<KeyEvent>>(k));
        event_send(&ev, false);
        return eNotHandled;
    }
    if (k.action > KeyEvent::eCompoundTextEnd)
        return eNotHandled;
    if (k.keyCode == 0) {
        // A modifier changed alone: listeners of the mouse state see it.
        TelaState& state = tela_state();
        state.issueNotification(NotifyMsg(String(), state.mouseStateChangeType,
                                          Qv::make<WrappedData<MouseEvent>>(state.lastMouseEvent)),
                                state.mouseStateChangeType);
        return eNotHandled;
    }
    const std::uint32_t composed = composed_code(k);
    Canvas* const focus = event_get_kbd_focus();

    if (k.action == KeyEvent::ePress) {
        if (firstKey == composed)
            resetKeyboard(); // auto-repeat of the first key: a fresh simple press
        if (composed == 0)
            return eNotHandled;
        if (firstKey == 0) {
            firstKey = composed;
            sendKbdEvent(focus, k.time, composed, 0, nullptr);
            return eNotHandled;
        }
        ComplexKeyboardEvent complex;
        complex.heldKey = firstKey;
        if (secondKey == composed && !complex_key_repeats()) {
            complex.key = secondKey;
            complex.keyRepeat = 1;
        } else {
            secondKey = composed;
            complex.key = composed;
        }
        sendKbdEvent(focus, k.time, 0, 0, &complex);
        return eNotHandled;
    }

    Event ev(EventType::KEY_RELEASE);
    ev.canvas = focus;
    ev.time = k.time;
    ev.mouseButtons = getMouseClickState();
    if (composed != secondKey) {
        ev.keyCode(composed);
        firstKey = 0;
    } else {
        ev.heldKey = firstKey;
        ev.key = secondKey;
        ev.keyRepeat = 0;
    }
    secondKey = 0;
    event_send(&ev, false);
    return eNotHandled;
}
