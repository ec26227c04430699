// Translation of SDL's input events into the platform's records.
#pragma once

#include "tela/platform/OSEvents.h"

#include <SDL.h>

namespace Sdl {

// The library's modifier bits (eKeyShift, eKeyControl, eKeyAlt, eKeyMeta)
// for SDL's.
std::uint32_t modifierBits(std::uint16_t sdlModifiers);

// The time of an SDL event, given in SDL's ticks, on the library's clock
// (msecsNow): now, less the age of the event.
std::uint32_t eventTime(std::uint32_t sdlTimestamp);

// Mouse motion, buttons and wheel; false for any other event, and for
// buttons beyond the third.
bool toMouseEvent(const SDL_Event& event, MouseEvent& out);

// Key presses and releases. Printable keys arrive as their character (SDL's
// key codes are the characters for those), the others as SDL's key value
// marked eKeyNotCharacter. Auto-repeat arrives as further presses. Modifier
// keys arrive with key code 0: a change of the modifier bits only.
bool toKeyEvent(const SDL_Event& event, KeyEvent& out);

} // namespace Sdl
