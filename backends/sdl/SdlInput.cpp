#include "sdl/SdlInput.h"

#include "tela/core/Clock.h"

std::uint32_t Sdl::modifierBits(std::uint16_t sdlModifiers)
{
    std::uint32_t bits = 0;
    if (sdlModifiers & KMOD_SHIFT)
        bits |= eKeyShift;
    if (sdlModifiers & KMOD_CTRL)
        bits |= eKeyControl;
    if (sdlModifiers & KMOD_ALT)
        bits |= eKeyAlt;
    if (sdlModifiers & KMOD_GUI)
        bits |= eKeyMeta;
    return bits;
}

std::uint32_t Sdl::eventTime(std::uint32_t sdlTimestamp)
{
    const std::uint32_t ticks = SDL_GetTicks();
    // An event is never from the future; a stamp that says so is taken as now.
    const std::uint32_t age = ticks >= sdlTimestamp ? ticks - sdlTimestamp : 0;
    // Times are compared modulo 2^32, as the library compares them.
    return static_cast<std::uint32_t>(msecsNow()) - age;
}

namespace {

std::uint32_t button_bit(std::uint8_t sdlButton)
{
    switch (sdlButton) {
    case SDL_BUTTON_LEFT: return MouseEvent::eHeldLeft;
    case SDL_BUTTON_MIDDLE: return MouseEvent::eHeldMiddle;
    case SDL_BUTTON_RIGHT: return MouseEvent::eHeldRight;
    default: return 0;
    }
}

std::uint32_t held_buttons(std::uint32_t sdlState)
{
    return (sdlState & SDL_BUTTON_LMASK ? MouseEvent::eHeldLeft : 0u) |
           (sdlState & SDL_BUTTON_RMASK ? MouseEvent::eHeldRight : 0u) |
           (sdlState & SDL_BUTTON_MMASK ? MouseEvent::eHeldMiddle : 0u);
}

// The up and down actions of a button, as (up, down).
bool button_actions(std::uint8_t sdlButton, std::uint32_t& up, std::uint32_t& down)
{
    switch (sdlButton) {
    case SDL_BUTTON_LEFT: up = MouseEvent::eLeftUp; down = MouseEvent::eLeftDown; return true;
    case SDL_BUTTON_RIGHT: up = MouseEvent::eRightUp; down = MouseEvent::eRightDown; return true;
    case SDL_BUTTON_MIDDLE: up = MouseEvent::eMiddleUp; down = MouseEvent::eMiddleDown; return true;
    default: return false;
    }
}

bool is_modifier_key(SDL_Keycode key)
{
    switch (key) {
    case SDLK_LCTRL: case SDLK_RCTRL:
    case SDLK_LSHIFT: case SDLK_RSHIFT:
    case SDLK_LALT: case SDLK_RALT:
    case SDLK_LGUI: case SDLK_RGUI:
    case SDLK_MODE:
        return true;
    default:
        return false;
    }
}

} // namespace

bool Sdl::toMouseEvent(const SDL_Event& event, MouseEvent& out)
{
    out = MouseEvent {};
    out.time = eventTime(event.common.timestamp);
    switch (event.type) {
    case SDL_MOUSEMOTION:
        out.action = MouseEvent::eMove;
        out.pos = XY<int> { event.motion.x, event.motion.y };
        out.heldButtons = held_buttons(event.motion.state);
        return true;
    case SDL_MOUSEBUTTONDOWN:
    case SDL_MOUSEBUTTONUP: {
        std::uint32_t up = 0, down = 0;
        if (!button_actions(event.button.button, up, down))
            return false;
        out.action = event.type == SDL_MOUSEBUTTONDOWN ? down : up;
        out.pos = XY<int> { event.button.x, event.button.y };
        // SDL's state already counts the change; the record leaves it out.
        out.heldButtons = held_buttons(SDL_GetMouseState(nullptr, nullptr)) & ~button_bit(event.button.button);
        return true;
    }
    case SDL_MOUSEWHEEL: {
        out.action = MouseEvent::eWheel;
        int x = 0, y = 0;
        out.heldButtons = held_buttons(SDL_GetMouseState(&x, &y));
        out.pos = XY<int> { x, y };
        const int steps = event.wheel.direction == SDL_MOUSEWHEEL_FLIPPED ? -event.wheel.y : event.wheel.y;
        out.wheelDelta = steps * 120; // one notch, as desktop wheels count it
        return true;
    }
    default:
        return false;
    }
}

bool Sdl::toKeyEvent(const SDL_Event& event, KeyEvent& out)
{
    if (event.type != SDL_KEYDOWN && event.type != SDL_KEYUP)
        return false;
    out = KeyEvent {};
    out.time = eventTime(event.common.timestamp);
    const auto sym = static_cast<std::uint32_t>(event.key.keysym.sym);
    // SDL gives characters as themselves and other keys with its scan code
    // bit; the library wants those marked as no character. A modifier key is
    // no key of its own: it arrives as a change of the modifier bits alone, so
    // that Ctrl then S is one key, S, with Ctrl held.
    if (is_modifier_key(event.key.keysym.sym))
        out.keyCode = 0;
    else
        out.keyCode = (sym & SDLK_SCANCODE_MASK) ? ((sym & 0xFFFFu) | eKeyNotCharacter) : sym;
    out.modifiers = modifierBits(event.key.keysym.mod);
    out.action = event.type == SDL_KEYDOWN ? KeyEvent::ePress : KeyEvent::eRelease;
    return true;
}
