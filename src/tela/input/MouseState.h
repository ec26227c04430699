#pragma once
// The library's mouse state, all of it, and who resets it. Main thread only.
//
// In TelaState (tela/state/TelaState.h), process-wide:
//   captureCanvas        the canvas holding the mouse during a press
//                        (mouse_canvas, mouse_canvas_connect/_disconnect)
//   clickState           the button word: 0x20 left, 0x40 right, 0x80 middle,
//                        0x8000 a double click in progress, 0x2000 a triple
//   chordActive          from a left-and-right chord until every button is up
//   currentMouseCanvas   under the pointer, or the capture during a capture
//   lastMouseEvent       the last report, y already in library coordinates
//                        (tela_getMousePos)
//   mouseContextDisableCount  enter/leave reports are on while it is 0
//                        (tela_enableMouseContextLogic)
//   lastClickTime, lastClickCanvas, clickCount
//                        the click counter: the previous left press and how
//                        many quick ones came before it
// In each RootWindowEventHandler (tela/input/RootWindowEventHandler.h):
//   downPos              where the last press of any button was
//   dragDistance         the absolute movement added up since that press
//   lastPos              the position before the report being handled
//   lastMouseTime        when the handler last dispatched a mouse event
// In Tela::MouseContainmentManager::instance() (tela/canvas/
// MouseContainmentManager.h):
//   containers           the canvases the pointer is in, outermost first
// The cursor images (TelaState::cursorCache) are a cache, not state.
//
// tela_resetMouse below resets captureCanvas, clickState, chordActive,
// currentMouseCanvas, the click counter, downPos, dragDistance and lastPos of
// every root window's handler, and empties the containment chain, telling
// each canvas in it that the pointer left, innermost first. It keeps
// lastMouseEvent, which is where the pointer really is and is replaced by
// the next report; mouseContextDisableCount, whose disables belong to their
// callers and must still be matched; and lastMouseTime, a record of the past.
// A canvas going away (tela_deletecanvas) drops itself from the capture, the
// canvas under the pointer, the click counter and the containment chain.
// A handler updates its own fields and TelaState's on every report
// (RootWindowMouse.cpp).

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
// it, the capture, the chord, the click state and counter, the handlers'
// press and drag, and the containment chain (see the top of this file). A
// way out when an application lost a button release.
void tela_resetMouse();

// Pointer enter and leave reports to canvases are on while every disable
// has been matched by an enable.
void tela_enableMouseContextLogic(bool enable);
bool tela_isMouseContextLogicEnabled();
