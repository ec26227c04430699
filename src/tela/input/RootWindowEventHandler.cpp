// The dispatcher and the window's non-input events. Key and mouse reports
// are in RootWindowKeyboard.cpp and RootWindowMouse.cpp.
#include "tela/input/RootWindowEventHandler.h"

#include "tela/canvas/Coordinates.h"
#include "tela/canvas/MouseContainmentManager.h"
#include "tela/canvas/RootCanvas.h"
#include "tela/canvas/UpdateTracking.h"
#include "tela/core/Commands.h"
#include "tela/core/Shutdown.h"
#include "tela/core/Threads.h"
#include "tela/events/Deferred.h"
#include "tela/events/Event.h"
#include "tela/events/EventQueue.h"
#include "tela/events/EventTimeServer.h"
#include "tela/events/FilterStack.h"
#include "tela/input/Cursors.h"
#include "tela/input/MouseState.h"
#include "tela/input/SystemBusyMonitor.h"
#include "tela/input/WindowPlacement.h"
#include "tela/state/TelaState.h"

namespace {

constexpr int FOCUS_CHANNEL = 12;
constexpr int WINDOW_STATE_CHANNEL = 13;

// The result of a handler or filter that asks the application to close.
constexpr int CLOSE_APPLICATION = 3;

} // namespace

RootWindowEventHandler::RootWindowEventHandler()
{
    CommandMapRec exit_app;
    exit_app.name = String("ExitApp");
    exit_app.function = Cmd::Function(exitFunction);
    exit_app.presentation = Cmd::Presentation(UIString(10307), UIString(10289), UIString(999999));
    exit_app.flags = 2;
    exit_app.mapItem = MapItem(EXIT_APP_DEFAULT_KEY);
    CommandMap::instance().registerCommand(exit_app);
}

RootCanvas* RootWindowEventHandler::getRootCanvas()
{
    for (const RootWindowRec& row : tela_state().rootWindows)
        if (row.eventHandler.get() == this)
            return static_cast<RootCanvas*>(row.rootCanvas);
    return nullptr;
}

bool RootWindowEventHandler::asksToExit(const Event& event) const
{
    if (event.keyCode() == SHUTDOWN_REQUEST_KEY)
        return true;
    ComplexKeyboardEvent key;
    key.key = event.keyCode();
    return KeybindingManager::instance().findCommandBoundToKey(key) == String("ExitApp");
}

iEventHandler::eRC RootWindowEventHandler::handleEvent(const UserEvent& u)
{
    Event* const ev = event_receive();
    if (!ev)
        return eNotHandled;
    // Too late to handle. The record is deliberately not freed: the
    // shut-down may already have taken down what its release would touch,
    // and the pool lets go of it with the process.
    if (Shutdown::isExiting())
        return eNotHandled;
    SystemBusyMonitor::heartbeat();
    if (isKeyPressEvent(*ev) && asksToExit(*ev)) {
        const bool may_exit = canExit();
        event_free(ev);
        if (!may_exit)
            return eNotHandled;
        handleWindowClose();
        return eHandled;
    }

    int result = event_run_intercept_stacks(*ev);
    if (result == 0)
        result = handleTelaEvent(*ev);
    if (result == 0 && (ev->type & (EventType::KEY_PRESS | EventType::KEY_RELEASE))) {
        // Nobody wanted the key: perhaps it is bound to a command.
        Tela::UpdateDeferrer deferrer(nullptr, Tela::isPresentationEnabled());
        const ComplexKeyboardEvent key { ev->heldKey, ev->key, ev->keyRepeat };
        KeybindingManager::instance().tryKey(key, isKeyPressEvent(*ev));
    } else if (mouse_event(*ev)) {
        lastMouseTime = u.time;
        // The release may have changed what is under the pointer.
        if (mouse_up_event(*ev))
            Tela::updateMouseCursor(false);
    }
    event_free(ev);
    if (result == CLOSE_APPLICATION) {
        handleWindowClose();
        return eHandled;
    }
    return eNotHandled;
}

EventHandler::eResult RootWindowEventHandler::handleTelaEvent(const Event& event)
{
    EventHandler* const target = event.getEventHandlerObj();
    if (!target || !EventHandler::valid(target, IdStamp(0, 0, 0)))
        return EventHandler::eNotHandled;
    // Repaints caused by one input or tick are gathered and done once, at the
    // end of the scope; messages and key releases are left outside.
    if (event.type & (EventType::MOUSE_CLASS | EventType::KEY_PRESS | EventType::TIMER_CLASS)) {
        Tela::UpdateDeferrer deferrer(nullptr, Tela::isPresentationEnabled());
        return target->handleEvent(event);
    }
    return target->handleEvent(event);
}

void RootWindowEventHandler::handleWindowClose()
{
    RootCanvas* const root = getRootCanvas();
    if (!root || !root->getWindow() || !root->getWindow()->isMinimized())
        Tela::saveRootWindowPlacement();
}

void Tela::sendShutdownRequestMessage()
{
    Event ev(EventType::KEY_PRESS);
    ev.keyCode(RootWindowEventHandler::SHUTDOWN_REQUEST_KEY);
    ev.canvas = event_get_kbd_focus();
    event_send(&ev, false);
}

iEventHandler::eRC RootWindowEventHandler::handleEvent(const WindowEvent& w)
{
    TelaState& state = tela_state();
    switch (w.kind) {
    case WindowEvent::eSizeChanged:
    case WindowEvent::ePositionChanged:
    case WindowEvent::eResized: {
        Tela::UpdateDeferrer deferrer(nullptr, Tela::isPresentationEnabled());
        RootCanvas* const root = getRootCanvas();
        if (!root || !root->getWindow() || root->getWindow()->isMinimized())
            break;
        if (w.kind != WindowEvent::ePositionChanged)
            root->reshapeToWindow();
        state.issueNotification(NotifyMsg(String(), WINDOW_STATE_CHANNEL), WINDOW_STATE_CHANNEL);
        Tela::saveRootWindowPlacement();
        root->display(nullptr);
        break;
    }
    case WindowEvent::eCloseRequest:
        Tela::saveRootWindowPlacement();
        Tela::sendShutdownRequestMessage();
        break;
    case WindowEvent::eFocusGained:
    case WindowEvent::eFocusLost:
        // The holder of the mouse hears that its buttons are gone.
        if (w.kind == WindowEvent::eFocusLost && state.captureCanvas)
            sendMouseEvent(state.clickState | EventType::MOUSE_LOST, w.time, 0);
        if (!tela_appHasFocus()) {
            resetKeyboard();
            tela_resetMouse();
        } else {
            tela_updateMouseCursor();
        }
        state.issueNotification(NotifyMsg(BoolAsString(w.kind == WindowEvent::eFocusGained), FOCUS_CHANNEL),
                                FOCUS_CHANNEL);
        break;
    case WindowEvent::eInitialise:
        init();
        break;
    case WindowEvent::ePointerLeft:
        Tela::MouseContainmentManager::instance().setCurrentCanvas(nullptr);
        break;
    default:
        break;
    }
    return eNotHandled;
}

iEventHandler::eRC RootWindowEventHandler::handleEvent(const PaintEvent& p)
{
    if (RootCanvas* const root = getRootCanvas())
        root->display(p.region);
    return eNotHandled;
}

iEventHandler::eRC RootWindowEventHandler::handleEvent(const TimerEvent&)
{
    SystemBusyMonitor::heartbeat();
    EventTimeServer::instance().tick();
    return eNotHandled;
}

iEventHandler::eRC RootWindowEventHandler::handleEvent(const UnhandledOSEvent& e)
{
    const auto found = customHandlers.find(e.message);
    if (found != customHandlers.end())
        found->second->handleMessage(e.message, e.param1, e.param2);
    return eNotHandled;
}

iEventHandler::eRC RootWindowEventHandler::handleEvent(const CursorEvent&)
{
    return eNotHandled;
}

iEventHandler::eRC RootWindowEventHandler::handleEvent(const InterProcessEvent&)
{
    return eNotHandled;
}

bool RootWindowEventHandler::addCustomEventHandler(std::uint32_t message, WinMsgHandler* handler)
{
    if (!handler)
        return false;
    return customHandlers.emplace(message, handler).second;
}

void RootWindowEventHandler::removeCustomEventHandler(std::uint32_t message)
{
    customHandlers.erase(message);
}

void RootWindowEventHandler::setExternalDragDropHandler(const Qv::Ptr<Tela::iExternalDragDropHandler>& handler)
{
    externalDragDropHandler = handler;
}

// Drag reports may come from the platform's drag thread, faster than the
// main thread takes them: while one delivery is pending, later reports
// overwrite the last one waiting, so only the latest position counts.
iEventHandler::eRC RootWindowEventHandler::handleEvent(const FileDragDropEvent& d)
{
    if (!externalDragDropHandler)
        return eNotHandled;
    CriticalSection::Guard guard(dropLock);
    if (!pendingDrops.empty()) {
        pendingDrops.back() = d;
        return eNotHandled;
    }
    pendingDrops.push_back(d);
    if (isMainThread()) {
        handleFileDrop(d);
    } else {
        using Delivery = DeferableMethodCallback<RootWindowEventHandler, FileDragDropEvent>;
        defer(Qv::Ptr<iExecutableAction>(Qv::make<Delivery>(this, &RootWindowEventHandler::handleFileDrop, d)));
    }
    return eNotHandled;
}

// Works from pendingDrops, which hold the report it was queued for, or a later
// one that overwrote it; the argument is only what it was queued with.
void RootWindowEventHandler::handleFileDrop(const FileDragDropEvent&)
{
    Qv::Vector<FileDragDropEvent> drops;
    {
        CriticalSection::Guard guard(dropLock);
        drops.swap(pendingDrops);
    }
    const Qv::Ptr<Tela::iExternalDragDropHandler> handler = externalDragDropHandler;
    if (drops.empty() || !handler)
        return;
    // The platform sends no mouse reports during a drag: the drag moves the
    // library's idea of the pointer instead.
    lastPos = tela_getMousePos();
    MouseEvent moved;
    moved.pos = drops.front().pos;
    if (RootCanvas* const root = getRootCanvas())
        moved.pos.y = telaScreenYTowin32ScreenY(root, moved.pos.y);
    moved.action = MouseEvent::eMove;
    publishMouseState(moved);
    for (const FileDragDropEvent& drop : drops) {
        switch (drop.action) {
        case 0: handler->onFileDragAction0(drop, moved.pos); break;
        case 1: handler->onFileDragAction1(drop, moved.pos); break;
        case 2: handler->onFileDragAction2(drop, moved.pos); break;
        case 3: handler->onFileDragAction3(); break;
        default: break;
        }
    }
}

void tela_handleKeyEvent(const KeyEvent& event)
{
    TelaState& state = tela_state();
    if (!state.rootWindows.empty() && state.rootWindows.front().eventHandler)
        state.rootWindows.front().eventHandler->handleEvent(event);
}

namespace {

RootWindowEventHandler* first_root_handler()
{
    TelaState& state = tela_state();
    if (state.rootWindows.empty())
        return nullptr;
    return dynamic_cast<RootWindowEventHandler*>(state.rootWindows.front().eventHandler.get());
}

} // namespace

bool tela_addWinMsgHandler(std::uint32_t message, WinMsgHandler* handler)
{
    RootWindowEventHandler* const root_handler = first_root_handler();
    return root_handler && root_handler->addCustomEventHandler(message, handler);
}

void tela_removeWinMsgHandler(std::uint32_t message)
{
    if (RootWindowEventHandler* const root_handler = first_root_handler())
        root_handler->removeCustomEventHandler(message);
}

bool tela_appHasFocus()
{
    for (const RootWindowRec& row : tela_state().rootWindows)
        if (row.rootCanvas && row.rootCanvas->getWindow() && row.rootCanvas->getWindow()->hasFocus())
            return true;
    return false;
}
