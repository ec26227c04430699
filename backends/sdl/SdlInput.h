// Translation of SDL's input events into the platform's records.
#pragma once

#include "tela/platform/OSEvents.h"

#include <SDL.h>

namespace Sdl {

// The library's modifier bits (0x1000000 shift, 0x2000000 control,
// 0x4000000 alt, 0x100000 meta) for SDL's.
std::uint32_t modifierBits(std::uint16_t sdlModifiers);

// The time of an SDL event, given in SDL's ticks, on the library's clock
// (msecsNow): now, less the age of the event.
std::uint32_t eventTime(std::uint32_t sdlTimestamp);

// Mouse motion, buttons and wheel; false for any other event, and for
// buttons beyond the third.
bool toMouseEvent(const SDL_Event& event, MouseEvent& out);

// Key presses and releases. Printable keys arrive as their character (SDL's
// key codes are the characters for those), the others as SDL's key value
// marked eKeyNotCharacter. Auto-repeat arrives as further presses.
bool toKeyEvent(const SDL_Event& event, KeyEvent& out);

} // namespace Sdl
