#pragma once
// The library's mouse state: where the pointer was last reported, which
// canvas holds the mouse (the capture), which is under the pointer, and the
// click state word (0x20 left, 0x40 right, 0x80 middle, 0x8000 a double
// click in progress, 0x2000 a triple). Main thread only.

#include "tela/platform/Geometry.h"

#include <cstdint>

class Canvas;

// Where the mouse was last reported, in the library's coordinates.
XY<int> tela_getMousePos();
int mouse_get_current_x();
int mouse_get_current_y();

std::uint32_t getMouseClickState();

// The canvas holding the mouse; null when none does.
Canvas* mouse_canvas();
Canvas* tela_getPickedCanvas();
// Gives `canvas` the mouse; the canvas that held it loses it first, with its
// queued mouse events.
void mouse_canvas_connect(Canvas* canvas);
// Takes the mouse from `canvas` if it holds it, and cancels the canvas's
// queued mouse events either way.
void mouse_canvas_disconnect(Canvas* canvas);

// The canvas under the pointer, or the capture canvas during a capture.
Canvas* tela_getCurrentMouseCanvas();

// Forgets everything the library believes about the mouse: the canvas under
// it, the capture, the chord and the click state. A way out when an
// application lost a button release.
void tela_resetMouse();

// Pointer enter and leave reports to canvases are on while every disable
// has been matched by an enable.
void tela_enableMouseContextLogic(bool enable);
bool tela_isMouseContextLogicEnabled();
