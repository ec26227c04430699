#include "app/Application.h"

#include "app/TelaState.h"
#include "canvas/CanvasTree.h"
#include "canvas/RootCanvas.h"
#include "core/Threads.h"
#include "events/Event.h"
#include "events/EventQueue.h"
#include "events/UIThreadCallback.h"
#include "input/SystemBusyMonitor.h"
#include "platform/OS.h"
#include "platform/iFileSystemService.h"
#include "platform/iImagingService.h"
#include "platform/iShellService.h"
#include "platform/iWindowingService.h"
#include "vector/GraphicsState.h"

namespace {

constexpr int kLibraryShutdownPriority = 600;
constexpr int kGPUReleasePriority = 499;

constexpr std::uint32_t kBackgroundInitRequired = 1;

void release_gpu_resources(Shutdown::eExitType)
{
    OS()->imaging()->releaseGPUResources();
}

// A background task that calls a member of an object with a message and the
// task's log.
template <typename Object, typename Message>
class MethodTask final : public BackgroundTaskBase {
public:
    using Method = int (Object::*)(const Message&, Qv::Ptr<iTaskLog>);
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
    // The thread that makes the application runs its user interface.
    co_init();
    event_queue_init();
    atShutdown(release_gpu_resources, kGPUReleasePriority);
}

void Tela::Application::setBackgroundInitRequired(bool required)
{
    m_appFlags = required ? (m_appFlags | kBackgroundInitRequired) : (m_appFlags & ~kBackgroundInitRequired);
}

void Tela::Application::run()
{
    iRootWindow::InitArgs args = m_windowDescription;
    args.eventHandler = Qv::make<StartupEventHandler>(Qv::makeCallback(this, &Application::init));
    args.wallpaper = m_wallpaper;
    tela_setmatrix(1.0, 0.0, 0.0, 1.0, 0, 0);
    if (!tela_createRootCanvas(args)) {
        OS()->shell()->messageBox(OS()->fileSystem()->applicationName(), WString(u"Unable to create main window"), 1, 5);
        return;
    }
    atShutdown(handleShutdown, kLibraryShutdownPriority);
    OS()->windowing()->runMessageLoop();
    // The loop also ends when the window closes; the shut-down is then still to do.
    if (!Shutdown::isExiting())
        shutdown();
}

void Tela::Application::shutdown()
{
    Shutdown::beginShutdown();
    if ((m_appFlags & kBackgroundInitRequired) && m_initTask)
        m_initTask->stop();
    Qv::Application::shutdown();
}

int Tela::Application::init(const NotifyMsg&)
{
    if (!(m_appFlags & kBackgroundInitRequired)) {
        // The handler of the window description is left uninstalled on this
        // road: the start-up handler stays the window's dispatcher.
        initComplete();
        return 0;
    }
    using Task = MethodTask<Application, NotifyMsg>;
    const auto task = Qv::make<Task>(this, static_cast<Task::Method>(&Application::backgroundInit), NotifyMsg());
    m_initTask = task;
    prepareForBackgroundInit(task->log());
    UIBackgroundTasksQueue::instance().queue(m_initTask, false);
    return 0;
}

int Tela::Application::backgroundInit(const NotifyMsg&, Qv::Ptr<iTaskLog> log)
{
    backgroundInit(std::move(log));
    const auto back_on_main_thread =
        Qv::make<UIThreadCallback<NotifyMsg>>(Qv::makeCallback(this, &Application::initComplete), false);
    back_on_main_thread->execute(NotifyMsg());
    return 1;
}

int Tela::Application::initComplete(const NotifyMsg&)
{
    SystemBusyMonitor::start(500);
    if (const Qv::Ptr<iEventHandler> handler = m_windowDescription.eventHandler) {
        TelaState& state = tela_state();
        if (!state.rootWindows.empty()) {
            RootWindowRec& first = state.rootWindows.front();
            first.eventHandler = handler;
            if (first.rootCanvas && first.rootCanvas->window)
                first.rootCanvas->window->setEventHandler(handler);
            if (state.tickTimer)
                tela_restart_tick();
        }
        m_windowDescription.eventHandler = nullptr;
    }
    initComplete();
    return 0;
}

void Tela::Application::initComplete() {}

void Tela::Application::handleShutdown(Shutdown::eExitType type)
{
    if (type != Shutdown::eNormalExit)
        return;
    TelaState& state = tela_state();
    state.deferredReleases.clear();
    state.tickTimer = nullptr;
    // Each root takes its row with it.
    event_set_kbd_focus(nullptr);
    while (!state.rootWindows.empty()) {
        Canvas* const root = state.rootWindows.back().rootCanvas;
        if (!root) {
            state.rootWindows.pop_back();
            continue;
        }
        tela_deletecanvas(root);
    }
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
        if (isKeyPressEvent(*ev) && ev->keyCode() == kShutdownRequestKey) {
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
    if (const Qv::Ptr<iCallbackBase<int, NotifyMsg>> ready = std::move(m_onReady))
        ready->execute(NotifyMsg());
}
