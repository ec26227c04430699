#pragma once
// Tela::Application: the base of a program on the library. The constructor
// starts the library on the thread that becomes the main thread; run() opens
// the root window and runs the platform's loop until the window closes (or
// shutdown() ends it); shutdown() then lets go of the library. A program
// sets its window and wallpaper in its constructor and does its work in
// initComplete() and in the callbacks of its canvases.
//
//     class Viewer : public Tela::Application {
//     public:
//         Viewer() : Application(WString(u"Viewer"), WString(u"1.0"))
//         {
//             setWindowDescription(args);
//             setBackgroundInitRequired(true); // else args.eventHandler is never installed
//         }
//         void initComplete() override
//         {
//             Application::initComplete();
//             m_panel = tela_newcanvas(m_client.get(), tela_rootcanvas());
//         }
//         void end() { tela_deletecanvas(m_panel); shutdown(); }
//     };
//     int main() { Viewer viewer; viewer.run(); viewer.end(); }
//
// Who ends what: the program ends the canvases it made, with
// tela_deletecanvas, best before shutdown(). If shutdown() ran inside the
// loop, canvases still on the window were set loose, not freed: the program
// deletes them after run() all the same. The library ends the root canvas it
// made for the window, in shutdown(); deleting that root from the program is
// reported and ends the loop, as closing the window would.
//
// Start-up runs in this order: the window comes up; without background
// initialisation, initComplete() runs at once and the start-up handler stays
// the window's dispatcher. With it, backgroundInit() runs on a worker thread,
// then, back on the main thread, the application's own event handler (from
// the window description) is installed and initComplete() runs.

#include "tela/core/BackgroundTasks.h"
#include "tela/core/Callback.h"
#include "tela/core/NotifyMsg.h"
#include "tela/core/QvApplication.h"
#include "tela/input/RootWindowEventHandler.h"
#include "tela/platform/iRootWindow.h"

#include <cstdint>

namespace Tela {

class Application : public Qv::Application {
public:
    Application(const WString& name, const WString& version);

    // Opens the window and runs the loop; returns when the loop ends (the
    // window closed, the close key, or shutdown() from a callback). The
    // library is still up then, unless shutdown() already ran.
    virtual void run();
    // The shut-down: ends the root canvas the library made (canvases the
    // program left on it are set loose, still the program's to delete), then
    // runs the shut-down callbacks; the library's own releases its state and
    // ends the loop if it still runs. Called by the program, after run() or
    // from a callback inside the loop.
    virtual void shutdown() override;

protected:
    virtual void prepareForBackgroundInit(Qv::Ptr<iTaskLog>) {}
    // On a worker thread, while the window shows and handles events.
    virtual void backgroundInit(Qv::Ptr<iTaskLog>) {}
    // On the main thread, once start-up is over; turns synchronous logging
    // off. Overrides must call it.
    virtual void initComplete();

    // With background initialisation, backgroundInit() runs on a worker
    // thread and the event handler of the window description is installed
    // when it is done. Without it, that handler is NEVER installed: the
    // start-up dispatcher stays for the whole run, and it knows no key
    // bindings and no intercept filters. A program that sets a handler in
    // its window description (for its key bindings, say) must ask for
    // background initialisation, even with nothing to do in backgroundInit().
    void setBackgroundInitRequired(bool required);
    // Copied for the window. Its eventHandler is the program's dispatcher,
    // installed at the end of start-up only with background initialisation
    // (see setBackgroundInitRequired).
    void setWindowDescription(const iRootWindow::InitArgs& args) { windowDescription = args; }
    void setWallpaper(const Qv::Ptr<iWallpaperProvider>& provider) { wallpaper = provider; }

private:
    void init();
    int init(const NotifyMsg&);
    QvResult backgroundInit(const NotifyMsg&, Qv::Ptr<iTaskLog> log);
    int initComplete(const NotifyMsg&);
    static void handleShutdown(Shutdown::eExitType type);
    // Deletes the roots run() made, setting loose what the program left on them.
    static void endApplicationRoots();

    Qv::Ptr<iBackgroundTask> initTask;
    iRootWindow::InitArgs windowDescription;
    Qv::Ptr<iWallpaperProvider> wallpaper;
    std::uint32_t appFlags = 0; // bit 0: background initialisation required
};

// The window's dispatcher during start-up, and for the whole run when the
// application installs no handler of its own: no intercept stacks and no key
// bindings, but the close-request key still ends the loop.
class StartupEventHandler : public RootWindowEventHandler {
public:
    explicit StartupEventHandler(Qv::Ptr<iCallbackBase<int, NotifyMsg>> ready) : onReady(std::move(ready)) {}

    eRC handleEvent(const UserEvent& event) override;
    using RootWindowEventHandler::handleEvent;

protected:
    void init() override;

private:
    Qv::Ptr<iCallbackBase<int, NotifyMsg>> onReady;
};

} // namespace Tela

// Pause and resume of the library's tick with the window's activity. Suspend
// releases the tick and makes the window inactive; resume makes it active and
// gives it the focus if it was not active, and starts the tick again in any
// case. Main thread.
void tela_suspend();
void tela_resume();
