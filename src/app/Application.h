#pragma once
// Tela::Application: the base of a program on the library. The constructor
// starts the library on the thread that becomes the main thread; run() opens
// the root window and runs the platform's loop until the program ends. A
// program sets its window and wallpaper in its constructor and does its work
// in initComplete() and in the callbacks of its canvases.
//
//     class Viewer : public Tela::Application {
//     public:
//         Viewer() : Application(WString(u"Viewer"), WString(u"1.0")) { setWindowDescription(args); }
//         void initComplete() override { Application::initComplete(); build_panels(); }
//     };
//     int main() { Viewer viewer; viewer.run(); }
//
// Start-up runs in this order: the window comes up; without background
// initialisation, initComplete() runs at once and the start-up handler stays
// the window's dispatcher. With it, backgroundInit() runs on a worker thread,
// then, back on the main thread, the application's own event handler (from
// the window description) is installed and initComplete() runs.

#include "core/Application.h"
#include "core/BackgroundTasks.h"
#include "core/Callback.h"
#include "core/NotifyMsg.h"
#include "input/RootWindowEventHandler.h"
#include "platform/iRootWindow.h"

#include <cstdint>

namespace Tela {

class Application : public Qv::Application {
public:
    Application(const WString& name, const WString& version);

    // Opens the window and runs the loop; returns when the program ends.
    virtual void run();
    // Starts the shut-down: the loop ends and the library lets go of its state.
    virtual void shutdown() override;

protected:
    virtual void prepareForBackgroundInit(Qv::Ptr<iTaskLog>) {}
    // On a worker thread, while the window shows and handles events.
    virtual void backgroundInit(Qv::Ptr<iTaskLog>) {}
    // On the main thread, once start-up is over. Overrides must call it.
    virtual void initComplete();

    void setBackgroundInitRequired(bool required);
    void setWindowDescription(const iRootWindow::InitArgs& args) { m_windowDescription = args; }
    void setWallpaper(const Qv::Ptr<iWallpaperProvider>& wallpaper) { m_wallpaper = wallpaper; }

private:
    void init();
    int init(const NotifyMsg&);
    int backgroundInit(const NotifyMsg&, Qv::Ptr<iTaskLog> log);
    int initComplete(const NotifyMsg&);
    static void handleShutdown(Shutdown::eExitType type);

    Qv::Ptr<iBackgroundTask> m_initTask;
    iRootWindow::InitArgs m_windowDescription;
    Qv::Ptr<iWallpaperProvider> m_wallpaper;
    std::uint32_t m_appFlags = 0; // bit 0: background initialisation required
};

// The window's dispatcher during start-up, and for the whole run when the
// application installs no handler of its own: no intercept stacks and no key
// bindings, but the close-request key still ends the loop.
class StartupEventHandler : public RootWindowEventHandler {
public:
    explicit StartupEventHandler(Qv::Ptr<iCallbackBase<int, NotifyMsg>> onReady) : m_onReady(std::move(onReady)) {}

    eRC handleEvent(const UserEvent& event) override;
    using RootWindowEventHandler::handleEvent;

protected:
    void init() override;

private:
    Qv::Ptr<iCallbackBase<int, NotifyMsg>> m_onReady;
};

} // namespace Tela
