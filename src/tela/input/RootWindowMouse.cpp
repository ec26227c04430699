// Mouse reports into queue events: the capture during a press, click
// counting (a further left press within 400 ms and 3 pixels on the same
// canvas is a double, then a triple click), the chord of left and right,
// the distance dragged since the last press, and the cursor.
#include "tela/input/RootWindowEventHandler.h"

#include "tela/canvas/Coordinates.h"
#include "tela/canvas/MouseContainmentManager.h"
#include "tela/canvas/Picking.h"
#include "tela/canvas/RootCanvas.h"
#include "tela/core/WrappedData.h"
#include "tela/events/Event.h"
#include "tela/events/EventQueue.h"
#include "tela/input/Cursors.h"
#include "tela/input/MouseState.h"
#include "tela/state/TelaState.h"

#include <cmath>
#include <cstdlib>

namespace {

constexpr std::uint32_t DOUBLE_CLICK_MS = 400;
constexpr std::uint32_t CLICK_DISTANCE = 3;

constexpr std::uint32_t LEFT = EventType::LEFT, RIGHT = EventType::RIGHT, MIDDLE = EventType::MIDDLE;
constexpr std::uint32_t DOUBLE_CLICK = EventType::DOUBLE_CLICK, TRIPLE_CLICK = EventType::TRIPLE_CLICK;

// Whole pixels, rounded down; unsigned so that absurd positions wrap
// rather than overflow.
std::uint32_t distance(const XY<int>& a, const XY<int>& b)
{
    const auto dx = static_cast<std::uint32_t>(a.x - b.x);
    const auto dy = static_cast<std::uint32_t>(a.y - b.y);
    return static_cast<std::uint32_t>(std::pow(static_cast<double>(dx * dx + dy * dy), 0.5));
}

} // namespace

void RootWindowEventHandler::sendMouseEvent(std::uint32_t type, std::uint32_t time, std::int32_t wheelDelta)
{
    TelaState& state = tela_state();
    // A plain wheel goes where the pointer is; everything else to the holder
    // of the mouse, so a move without a capture never becomes an event.
    Canvas* const target = type == EventType::MOUSE_WHEEL ? state.currentMouseCanvas : state.captureCanvas;
    if (!target)
        return;
    Event ev(type);
    ev.canvas = target;
    ev.wheelDelta = wheelDelta;
    ev.keyCode(Event::getKeyboardModifiers());
    ev.time = time;
    ev.partOfChord = state.chordActive;
    ev.mouseButtons = state.clickState;
    ev.screenPos(tela_getMousePos());
    ev.screenDownPos(downPos);
    ev.distance(dragDistance);
    event_send(&ev, false);
}

void RootWindowEventHandler::publishMouseState(const MouseEvent& libraryEvent)
{
    TelaState& state = tela_state();
    state.lastMouseEvent = libraryEvent;
    state.issueNotification(NotifyMsg(String(), state.mouseStateChangeType,
                                      Qv::make<WrappedData<MouseEvent>>(libraryEvent)),
                            state.mouseStateChangeType);
}

iEventHandler::eRC RootWindowEventHandler::handleEvent(const MouseEvent& m)
{
    TelaState& state = tela_state();
    if (RootCanvas* const root = getRootCanvas()) {
        MouseEvent local = m;
        local.pos.y = telaScreenYTowin32ScreenY(root, m.pos.y);
        lastPos = tela_getMousePos();
        publishMouseState(local);
        state.currentMouseCanvas = state.captureCanvas ? state.captureCanvas : canvas_pick(root, local.pos);
        if (tela_isMouseContextLogicEnabled())
            Tela::MouseContainmentManager::instance().setCurrentCanvas(state.currentMouseCanvas);
        if (state.currentMouseCanvas && state.currentMouseCanvas->parent)
            handleMouseOverCanvas(local, distance(downPos, local.pos));
        else
            handleMouseOverNothing(local);
    }
    // The last up of a chord is still sent as part of it.
    if (state.clickState == 0)
        state.chordActive = false;
    return eNotHandled;
}

void RootWindowEventHandler::handleMouseOverCanvas(const MouseEvent& m, std::uint32_t distanceFromDown)
{
    TelaState& state = tela_state();
    const auto press = [&](std::uint32_t button) {
        downPos = m.pos;
        dragDistance = XY<int>(0, 0);
        state.captureCanvas = state.currentMouseCanvas;
        state.clickState |= button;
    };
    const auto chord = [&] {
        state.clickState = LEFT | RIGHT;
        sendMouseEvent(EventType::MOUSE_CHORD, m.time, 0);
        state.chordActive = true;
    };
    const auto release = [&](std::uint32_t type, std::uint32_t clear) {
        state.clickState &= ~clear;
        sendMouseEvent(type, m.time, 0);
        if (state.clickState == 0)
            state.captureCanvas = nullptr;
    };

    switch (m.action) {
    case MouseEvent::eLeftDown: {
        if (m.heldButtons & MouseEvent::eHeldRight) {
            chord();
            break;
        }
        const bool is_repeat = state.currentMouseCanvas == state.lastClickCanvas &&
                              m.time - state.lastClickTime < DOUBLE_CLICK_MS && distanceFromDown < CLICK_DISTANCE;
        press(LEFT);
        std::uint32_t type = EventType::LEFT_DOWN;
        if (is_repeat) {
            ++state.clickCount;
            if (state.clickCount == 1) {
                state.clickState |= DOUBLE_CLICK;
                type = EventType::LEFT_DOUBLE_DOWN;
            } else if (state.clickCount == 2) {
                state.clickState |= TRIPLE_CLICK;
                type = EventType::LEFT_TRIPLE_DOWN;
            } else {
                state.clickCount = 0; // the fourth is plain, the fifth a double again
            }
        } else {
            state.clickCount = 0;
        }
        sendMouseEvent(type, m.time, 0);
        state.lastClickTime = m.time;
        state.lastClickCanvas = state.currentMouseCanvas;
        break;
    }
    case MouseEvent::eRightDown:
        if (m.heldButtons & MouseEvent::eHeldLeft) {
            chord();
            break;
        }
        press(RIGHT);
        sendMouseEvent(EventType::RIGHT_DOWN, m.time, 0);
        break;
    case MouseEvent::eMiddleDown:
        press(MIDDLE);
        sendMouseEvent(EventType::MIDDLE_DOWN, m.time, 0);
        break;
    case MouseEvent::eLeftUp: {
        std::uint32_t type = EventType::LEFT_UP;
        // An up that has moved away from the press is a plain one.
        if (distanceFromDown < CLICK_DISTANCE) {
            if (state.clickState & DOUBLE_CLICK)
                type = EventType::LEFT_DOUBLE_UP;
            else if (state.clickState & TRIPLE_CLICK)
                type = EventType::LEFT_TRIPLE_UP;
        }
        release(type, LEFT | DOUBLE_CLICK | TRIPLE_CLICK);
        break;
    }
    case MouseEvent::eRightUp: release(EventType::RIGHT_UP, RIGHT); break;
    case MouseEvent::eMiddleUp: release(EventType::MIDDLE_UP, MIDDLE); break;
    case MouseEvent::eWheel: sendMouseEvent(EventType::MOUSE_WHEEL, m.time, m.wheelDelta); break;
    case MouseEvent::eMove:
        if (m.pos == lastPos)
            break;
        if (m.heldButtons & 7) {
            dragDistance.x += std::abs(m.pos.x - lastPos.x);
            dragDistance.y += std::abs(m.pos.y - lastPos.y);
            sendMouseEvent(state.clickState | EventType::MOUSE_DRAG, m.time, 0);
        }
        tela_updateMouseCursor();
        break;
    default:
        break;
    }
}

void RootWindowEventHandler::handleMouseOverNothing(const MouseEvent& m)
{
    TelaState& state = tela_state();
    const auto release = [&](std::uint32_t clear) {
        state.clickState &= ~clear;
        if (state.clickState == 0)
            state.captureCanvas = nullptr;
    };
    switch (m.action) {
    case MouseEvent::eLeftUp: release(LEFT); break;
    case MouseEvent::eRightUp: release(RIGHT); break;
    case MouseEvent::eWheel: sendMouseEvent(EventType::MOUSE_WHEEL, m.time, m.wheelDelta); break;
    default: break;
    }
    tela_updateMouseCursor();
}

void RootWindowEventHandler::resetMouse()
{
    dragDistance = XY<int>(0, 0);
    lastPos = XY<int>(0, 0);
    downPos = XY<int>(0, 0);
}
