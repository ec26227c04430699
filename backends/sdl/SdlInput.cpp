#include "sdl/SdlInput.h"

std::uint32_t Sdl::modifierBits(std::uint16_t sdlModifiers)
{
    std::uint32_t bits = 0;
    if (sdlModifiers & KMOD_SHIFT)
        bits |= 0x1000000;
    if (sdlModifiers & KMOD_CTRL)
        bits |= 0x2000000;
    if (sdlModifiers & KMOD_ALT)
        bits |= 0x4000000;
    if (sdlModifiers & KMOD_GUI)
        bits |= 0x100000;
    return bits;
}

namespace {

std::int32_t button_number(std::uint8_t sdlButton)
{
    switch (sdlButton) {
    case SDL_BUTTON_LEFT: return 1;
    case SDL_BUTTON_MIDDLE: return 2;
    case SDL_BUTTON_RIGHT: return 3;
    default: return 0;
    }
}

} // namespace

bool Sdl::toMouseEvent(const SDL_Event& event, MouseEvent& out)
{
    out = MouseEvent {};
    out.time = event.common.timestamp;
    out.modifiers = modifierBits(static_cast<std::uint16_t>(SDL_GetModState()));
    switch (event.type) {
    case SDL_MOUSEMOTION:
        out.type = 0;
        out.position = XY<int> { event.motion.x, event.motion.y };
        return true;
    case SDL_MOUSEBUTTONDOWN:
    case SDL_MOUSEBUTTONUP:
        out.type = event.type == SDL_MOUSEBUTTONDOWN ? 1 : 2;
        out.button = button_number(event.button.button);
        out.position = XY<int> { event.button.x, event.button.y };
        return true;
    case SDL_MOUSEWHEEL: {
        out.type = 3;
        int x = 0, y = 0;
        SDL_GetMouseState(&x, &y);
        out.position = XY<int> { x, y };
        const int steps = event.wheel.direction == SDL_MOUSEWHEEL_FLIPPED ? -event.wheel.y : event.wheel.y;
        out.wheelDelta = steps * 120; // one notch, as desktop wheels count it
        return true;
    }
    case SDL_WINDOWEVENT:
        if (event.window.event != SDL_WINDOWEVENT_LEAVE)
            return false;
        out.type = 4;
        return true;
    default:
        return false;
    }
}

bool Sdl::toKeyEvent(const SDL_Event& event, KeyEvent& out)
{
    if (event.type != SDL_KEYDOWN && event.type != SDL_KEYUP)
        return false;
    out = KeyEvent {};
    out.key = static_cast<std::uint32_t>(event.key.keysym.sym);
    out.modifiers = modifierBits(event.key.keysym.mod);
    out.pressed = event.type == SDL_KEYDOWN;
    out.repeat = event.key.repeat != 0;
    return true;
}
