#include "tela/app/Application.h"

#include "tela/canvas/CanvasTree.h"
#include "tela/canvas/RootCanvas.h"
#include "tela/canvas/UpdateTracking.h"
#include "tela/colour/CurrentColour.h"
#include "tela/colour/Gamma.h"
#include "tela/core/Config.h"
#include "tela/core/Log.h"
#include "tela/core/Threads.h"
#include "tela/events/Event.h"
#include "tela/events/EventQueue.h"
#include "tela/events/UIThreadCallback.h"
#include "tela/input/SystemBusyMonitor.h"
#include "tela/platform/iFileSystemService.h"
#include "tela/platform/iImagingService.h"
#include "tela/platform/iShellService.h"
#include "tela/platform/iWindowingService.h"
#include "tela/platform/OS.h"
#include "tela/platform/Platforms.h"
#include "tela/render/RasterImage.h"
#include "tela/state/TelaState.h"
#include "tela/text/Fonts.h"
#include "tela/vector/GraphicsState.h"
#include "tela/vector/Path.h"
#include "tela/vector/ScanTable.h"

#include <algorithm>
#include <climits>

namespace {

constexpr int LIBRARY_SHUTDOWN_PRIORITY = 600;
constexpr int GPU_RELEASE_PRIORITY = 499;

constexpr std::uint32_t BACKGROUND_INIT_REQUIRED = 1;

// "use_multi_threaded_com", read once at start-up.
bool s_multi_threaded_com = false;

void release_gpu_resources(Shutdown::eExitType)
{
    OS()->imaging()->releaseGPUResources();
}

// The steps of start-up and shut-down whose subsystems are still to come.
// Each is filled in by the subsystem it names, in its place in the order.

// The process's paths object: the settings directory is still worked out on
// first use from the application's name, so there is nothing to make yet.
void init_paths() {}

// COM-style initialisation of the thread: there is no COM on the platforms
// this library runs on, so the kind is read and nothing is made.
void com_initialise(int /*kind*/) {}

// The gamma curve's exponent and the screen box the path API measures against.
void init_gamma_tables()
{
    vlib_init();
}
// The scan converter's first heap block, kept for the process.
void init_scan_converter()
{
    scan_heap_init();
}
// The current path's buffers, kept for the process.
void init_path()
{
    path_init();
}
// The font scale back to 1.0.
void reset_font_scale()
{
    Tela::resetFontScale();
}
// except_init(): the core's crash reporting, when it has one.
void init_exceptions() {}

// Shut-down: every loaded font released.
void release_all_fonts()
{
    Tela::releaseAllFonts();
}
// The gamma tables count as not set up, so a later application sets them anew.
void forget_gamma_tables()
{
    vlib_forget();
}

// A background task that calls a member of an object with a message and the
// task's log.
template <typename Object, typename Message>
class MethodTask final : public BackgroundTaskBase {
public:
    using Method = QvResult (Object::*)(const Message&, Qv::Ptr<iTaskLog>);
    MethodTask(Object* object, Method method, Message message)
        : m_object(object), m_method(method), m_message(std::move(message))
    {
    }
    void run() override { (m_object->*m_method)(m_message, log()); }

private:
    Object* m_object;
    Method m_method;
    Message m_message;
};

} // namespace

Tela::Application::Application(const WString& name, const WString& version) : Qv::Application(name, version)
{
    init();
}

void Tela::Application::init()
{
    // Real windows or the embedded platform, decided once before anything
    // reads the clock, the settings or the display.
    Tela::choosePlatform();
    init_paths();
    s_multi_threaded_com = config_int("use_multi_threaded_com", 0, INT_MIN, INT_MAX) != 0;
    // Until start-up is over, every report reaches its file before the next step.
    setSynchronousLogging(true);
    com_initialise(s_multi_threaded_com ? 1 : 2);
    // The thread that makes the application runs its user interface.
    co_init();
    event_queue_init();
    init_gamma_tables();
    RasterImage::flushCache();
    init_scan_converter();
    init_path();
    tela_setmatrix(1.0, 0.0, 0.0, 1.0, 0, 0);
    tela_setlinewidth(1.0);
    tela_setflatness(1.0);
    tela_setcanvas(nullptr);
    // Black, with the colour ring emptied to black.
    tela_reset_current_colour();
    reset_font_scale();
    init_exceptions();
    atShutdown(release_gpu_resources, GPU_RELEASE_PRIORITY);
}

void Tela::Application::setBackgroundInitRequired(bool required)
{
    appFlags = required ? (appFlags | BACKGROUND_INIT_REQUIRED) : (appFlags & ~BACKGROUND_INIT_REQUIRED);
}

void Tela::Application::run()
{
    iRootWindow::InitArgs args = windowDescription;
    args.eventHandler = Qv::make<StartupEventHandler>(Qv::makeCallback(this, &Application::init));
    args.wallpaper = wallpaper;
    tela_setmatrix(1.0, 0.0, 0.0, 1.0, 0, 0);
    RootCanvas* const root = tela_createRootCanvas(args);
    if (!root) {
        OS()->shell()->messageBox(OS()->fileSystem()->applicationName(), WString(u"Unable to create main window"), 1, 5);
        return;
    }
    // The library made this root and ends it in shutdown(); the program must not.
    root->canvasFlags |= Canvas::APPLICATION_ROOT;
    atShutdown(handleShutdown, LIBRARY_SHUTDOWN_PRIORITY);
    // The library stays up when the loop ends: the program still ends its
    // canvases, then calls shutdown().
    OS()->windowing()->runMessageLoop();
}

void Tela::Application::shutdown()
{
    Shutdown::beginShutdown();
    if ((appFlags & BACKGROUND_INIT_REQUIRED) && initTask)
        initTask->stop();
    endApplicationRoots();
    Qv::Application::shutdown();
}

void Tela::Application::endApplicationRoots()
{
    // A root the program deleted took its row with it; what is left here
    // is ours.
    TelaState& state = tela_state();
    for (;;) {
        const auto row = std::find_if(state.rootWindows.begin(), state.rootWindows.end(), [](const RootWindowRec& r) {
            return r.rootCanvas && (r.rootCanvas->canvasFlags & Canvas::APPLICATION_ROOT);
        });
        if (row == state.rootWindows.end())
            return;
        Canvas* const root = row->rootCanvas;
        root->canvasFlags &= ~Canvas::APPLICATION_ROOT;
        // Canvases the program has not ended yet stay its own: set loose,
        // not freed, so that its later tela_deletecanvas finds them whole.
        Tela::UpdateDeferrer deferrer(nullptr, false);
        while (Canvas* const child = root->youngestChild)
            canvas_disconnect(child);
        tela_deletecanvas(root);
    }
}

int Tela::Application::init(const NotifyMsg&)
{
    if (!(appFlags & BACKGROUND_INIT_REQUIRED)) {
        // The handler of the window description is left uninstalled on this
        // road: the start-up handler stays the window's dispatcher.
        initComplete();
        return 0;
    }
    using Task = MethodTask<Application, NotifyMsg>;
    const auto task = Qv::make<Task>(this, static_cast<Task::Method>(&Application::backgroundInit), NotifyMsg());
    initTask = task;
    prepareForBackgroundInit(task->log());
    UIBackgroundTasksQueue::instance().queue(initTask, false);
    return 0;
}

QvResult Tela::Application::backgroundInit(const NotifyMsg&, Qv::Ptr<iTaskLog> log)
{
    backgroundInit(std::move(log));
    const auto back_on_main_thread =
        Qv::make<UIThreadCallbackDupe<NotifyMsg>>(Qv::makeCallback(this, &Application::initComplete), false);
    back_on_main_thread->execute(NotifyMsg());
    return 1;
}

int Tela::Application::initComplete(const NotifyMsg&)
{
    SystemBusyMonitor::start(500);
    if (const Qv::Ptr<iEventHandler> handler = windowDescription.eventHandler) {
        TelaState& state = tela_state();
        if (!state.rootWindows.empty()) {
            RootWindowRec& first = state.rootWindows.front();
            first.eventHandler = handler;
            if (first.rootCanvas && first.rootCanvas->window)
                first.rootCanvas->window->setEventHandler(handler);
            if (state.tickTimer)
                tela_restart_tick();
        }
        windowDescription.eventHandler = nullptr;
    }
    initComplete();
    return 0;
}

void Tela::Application::initComplete()
{
    setSynchronousLogging(false);
}

void Tela::Application::handleShutdown(Shutdown::eExitType type)
{
    if (type != Shutdown::eNormalExit)
        return;
    release_all_fonts();
    forget_gamma_tables();
    event_queue_shutdown();
    // The rows name their roots and own nothing: a root still standing is
    // whoever made it to end.
    TelaState& state = tela_state();
    state.deferredReleases.clear();
    state.tickTimer = nullptr;
    state.rootWindows.clear();
    {
        CriticalSection::Guard guard(state.cursorLock);
        state.cursorCache.clear();
    }
    for (Qv::Ptr<iShaderEffect>& shader : state.shaders)
        shader = nullptr;
    OS()->windowing()->shutdownMessageLoop();
}

Tela::StartupEventHandler::eRC Tela::StartupEventHandler::handleEvent(const UserEvent&)
{
    Event* const ev = event_receive();
    int rc = 0;
    if (ev && !Shutdown::isExiting()) {
        SystemBusyMonitor::heartbeat();
        if (isKeyPressEvent(*ev) && ev->keyCode() == SHUTDOWN_REQUEST_KEY) {
            event_free(ev);
            return eHandled;
        }
        rc = handleTelaEvent(*ev);
    }
    event_free(ev);
    return rc == EventHandler::eCloseApp ? eHandled : eNotHandled;
}

void Tela::StartupEventHandler::init()
{
    // Once: a window may come up again after being hidden.
    if (const Qv::Ptr<iCallbackBase<int, NotifyMsg>> ready = std::move(onReady))
        ready->execute(NotifyMsg());
}

void tela_suspend()
{
    TelaState& state = tela_state();
    state.tickTimer = nullptr;
    if (Canvas* const root = tela_rootcanvas())
        if (root->window)
            root->window->setActive(false);
}

void tela_resume()
{
    // A mask that no event matches: nothing is dropped, but the queue is
    // walked once under its lock.
    event_flush(nullptr, EventType::MOUSE_CLASS | EventType::KEY_PRESS | EventType::TIMER_CLASS, false);
    if (Canvas* const root = tela_rootcanvas())
        if (root->window && !root->window->isActive()) {
            root->window->setActive(true);
            root->window->claimFocus();
        }
    tela_restart_tick();
}
