#pragma once
// RootWindowEventHandler: what the platform calls for one root window. It is
// the dispatcher of the library's queue (each wake takes one event off the
// queue and delivers it), and it turns the window's raw key and mouse
// reports into queue events: two-key chords, mouse capture, click counting.
// It also answers window changes, repaints, ticks, unhandled platform
// messages and dragged files.
//
// Everything runs on the main thread, except the file drag reports, which
// may come from a platform drag thread and are handed over under dropLock.

#include "tela/core/CriticalSection.h"
#include "tela/core/KeybindingManager.h"
#include "tela/core/Memory.h"
#include "tela/core/Ptr.h"
#include "tela/events/EventHandler.h"
#include "tela/platform/iEventHandler.h"
#include "tela/platform/iRootWindow.h"
#include "tela/platform/OSEvents.h"

#include <cstdint>

class Canvas;
class RootCanvas;

// Handles one platform message the library does not know.
class WinMsgHandler {
public:
    virtual ~WinMsgHandler() = default;
    virtual void handleMessage(std::uint32_t message, std::uint32_t param1, std::uint32_t param2) = 0;
};

namespace Tela {

// Where files dragged over the window go; which call is made follows the
// platform's action value of each report (0, 1, 2, 3).
class iExternalDragDropHandler : public virtual iObject {
public:
    virtual void onFileDragAction0(const FileDragDropEvent& event, const XY<int>& pos) = 0;
    virtual void onFileDragAction1(const FileDragDropEvent& event, const XY<int>& pos) = 0;
    virtual void onFileDragAction2(const FileDragDropEvent& event, const XY<int>& pos) = 0;
    virtual void onFileDragAction3() = 0;
};

// Queues the key that asks the application to close, to the keyboard focus.
void sendShutdownRequestMessage();

} // namespace Tela

class RootWindowEventHandler : public iEventHandler {
public:
    // The default key of "ExitApp", Alt+X, and the key code of the close
    // request: the same key with a bit above every modifier, which no keyboard
    // sets, so the request is told apart from a typed Alt+X.
    static constexpr std::uint32_t SHUTDOWN_REQUEST_BIT = 0x20000000;
    static constexpr std::uint32_t EXIT_APP_DEFAULT_KEY = eKeyAlt | 'x';
    static constexpr std::uint32_t SHUTDOWN_REQUEST_KEY = SHUTDOWN_REQUEST_BIT | EXIT_APP_DEFAULT_KEY;
    static_assert(EXIT_APP_DEFAULT_KEY == 0x4000078 && SHUTDOWN_REQUEST_KEY == 0x24000078);

    RootWindowEventHandler();

    // The arguments to make the window with, from the placement stored by an
    // earlier run; see WindowPlacement.h.
    static iRootWindow::InitArgs restoreWindowState(const LightweightString<wchar_t>& appName);

    eRC handleEvent(const UserEvent& event) override;
    eRC handleEvent(const CursorEvent& event) override;
    eRC handleEvent(const FileDragDropEvent& event) override;
    eRC handleEvent(const UnhandledOSEvent& event) override;
    eRC handleEvent(const InterProcessEvent& event) override;
    eRC handleEvent(const TimerEvent& event) override;
    eRC handleEvent(const WindowEvent& event) override;
    eRC handleEvent(const PaintEvent& event) override;
    eRC handleEvent(const KeyEvent& event) override;
    eRC handleEvent(const MouseEvent& event) override;

    // False when the message already has a handler. Handlers are not owned.
    bool addCustomEventHandler(std::uint32_t message, WinMsgHandler* handler);
    void removeCustomEventHandler(std::uint32_t message);
    void setExternalDragDropHandler(const Qv::Ptr<Tela::iExternalDragDropHandler>& handler);

    // Forgets the keys held: the next key starts afresh.
    void resetKeyboard();
    // Forgets the press and drag: the position of the last press, the
    // distance dragged since, and the position before the last report.
    // tela_resetMouse calls it for every root window's handler.
    void resetMouse();

    // Sends a key press to `target` (null: nothing is queued). With `complex`,
    // its three fields replace the event's held key, key and repeat flag.
    void sendKbdEvent(Canvas* target, std::uint32_t time, std::uint32_t key, std::int32_t extra,
                      const ComplexKeyboardEvent* complex);
    // Sends a mouse event of `type` to the capture canvas, or for a plain
    // wheel (0x106) to the canvas under the pointer.
    void sendMouseEvent(std::uint32_t type, std::uint32_t time, std::int32_t wheelDelta);

protected:
    // Called for the window's initialise event.
    virtual void init() {}
    // Delivers an event to its handler, or the client of its canvas.
    virtual EventHandler::eResult handleTelaEvent(const Event& event);
    // Asked before an exit key closes the application.
    virtual bool canExit() const { return true; }

    // The root canvas registered with this handler; null when none is.
    RootCanvas* getRootCanvas();

private:
    // The function of the "ExitApp" command, which never runs: the dispatcher
    // looks for keys bound to the command's name.
    static void exitFunction() {}

    bool asksToExit(const Event& event) const;
    void handleWindowClose();
    void handleFileDrop(const FileDragDropEvent&);
    void publishMouseState(const MouseEvent& libraryEvent);
    void handleMouseOverCanvas(const MouseEvent& m, std::uint32_t distanceFromDown);
    void handleMouseOverNothing(const MouseEvent& m);

    std::uint32_t lastMouseTime = 0;
    Qv::Map<std::uint32_t, WinMsgHandler*> customHandlers;
    XY<int> dragDistance;
    XY<int> lastPos;
    XY<int> downPos;
    Qv::Vector<FileDragDropEvent> pendingDrops;
    CriticalSection dropLock;
    Qv::Ptr<Tela::iExternalDragDropHandler> externalDragDropHandler;
    std::uint32_t firstKey = 0;
    std::uint32_t secondKey = 0;
};

// Feeds a key report to the handler of the first root window, for code that
// receives keys by other means.
void tela_handleKeyEvent(const KeyEvent& event);

// On the handler of the first root window; adding fails when that handler
// is not the library's.
bool tela_addWinMsgHandler(std::uint32_t message, WinMsgHandler* handler);
void tela_removeWinMsgHandler(std::uint32_t message);

// True while any root window has the focus.
bool tela_appHasFocus();
