#include "tela/input/MouseState.h"

#include "tela/canvas/MouseContainmentManager.h"
#include "tela/events/EventQueue.h"
#include "tela/events/EventTypes.h"
#include "tela/input/Cursors.h"
#include "tela/input/RootWindowEventHandler.h"
#include "tela/state/TelaState.h"

XY<int> tela_getMousePos()
{
    return tela_state().lastMouseEvent.pos;
}

int mouse_get_current_x()
{
    return tela_getMousePos().x;
}

int mouse_get_current_y()
{
    return tela_getMousePos().y;
}

std::uint32_t getMouseClickState()
{
    return tela_state().clickState;
}

Canvas* mouse_canvas()
{
    return tela_state().captureCanvas;
}

Canvas* tela_getPickedCanvas()
{
    return mouse_canvas();
}

void mouse_canvas_connect(Canvas* canvas)
{
    TelaState& state = tela_state();
    if (state.captureCanvas && state.captureCanvas != canvas)
        mouse_canvas_disconnect(state.captureCanvas);
    state.captureCanvas = canvas;
}

void mouse_canvas_disconnect(Canvas* canvas)
{
    if (!canvas)
        return;
    TelaState& state = tela_state();
    if (state.captureCanvas == canvas)
        state.captureCanvas = nullptr;
    event_flush(canvas, EventType::MOUSE_CLASS, false);
}

Canvas* tela_getCurrentMouseCanvas()
{
    return tela_state().currentMouseCanvas;
}

void tela_resetMouse()
{
    TelaState& state = tela_state();
    state.currentMouseCanvas = nullptr;
    state.captureCanvas = nullptr;
    state.chordActive = false;
    state.clickState = 0;
    // Without this a press soon after the reset, on the canvas pressed
    // before it, would still count as a double click.
    state.lastClickTime = 0;
    state.lastClickCanvas = nullptr;
    state.clickCount = 0;
    for (const RootWindowRec& row : state.rootWindows)
        if (auto* handler = dynamic_cast<RootWindowEventHandler*>(row.eventHandler.get()))
            handler->resetMouse();
    // Last, as it calls out: every canvas the pointer was in is told it left,
    // innermost first.
    Tela::MouseContainmentManager::instance().setCurrentCanvas(nullptr);
}

void tela_enableMouseContextLogic(bool enable)
{
    TelaState& state = tela_state();
    state.mouseContextDisableCount += enable ? -1 : 1;
    if (!tela_isMouseContextLogicEnabled())
        Tela::MouseContainmentManager::instance().setCurrentCanvas(nullptr);
    else
        tela_updateMouseCursor();
}

bool tela_isMouseContextLogicEnabled()
{
    return tela_state().mouseContextDisableCount == 0;
}
