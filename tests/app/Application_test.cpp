// A whole program's life on the headless platform: start-up on either road,
// a scripted session, the ways a run ends, and the shut-down that lets go of
// the library's state without touching what the program made.
#include "tela/app/Application.h"
#include "tela/canvas/Canvas.h"
#include "tela/canvas/CanvasClient.h"
#include "tela/canvas/CanvasTree.h"
#include "tela/canvas/RootCanvas.h"
#include "tela/core/BackgroundTasks.h"
#include "tela/core/Log.h"
#include "tela/core/Shutdown.h"
#include "tela/core/Threads.h"
#include "tela/events/Event.h"
#include "tela/events/EventQueue.h"
#include "tela/input/SystemBusyMonitor.h"
#include "tela/state/TelaState.h"
#include "tela/vector/Regions.h"

#include "headless/HeadlessRootWindow.h"
#include "support/LiveBlocks.h"
#include "support/ReportCapture.h"

#include <gtest/gtest.h>

#include <atomic>

namespace {

class Quiet final : public CanvasClient {
public:
    eResult handleEvent(const Event& event) override { return mouse_event(event) ? eHandled : eNotHandled; }
};

// How the scripted session ends.
enum class Ending {
    CloseButton,    // the user closes the window
    ShutdownInside, // the program calls shutdown() from a callback
    DeleteRoot,     // the program deletes the root canvas (a misuse)
};

class ScriptedApp final : public Tela::Application {
public:
    explicit ScriptedApp(bool background, Ending ending = Ending::CloseButton, XY<int> size = {320, 200})
        : Application(WString(u"Scripted"), WString(u"1")), m_ending(ending)
    {
        loggingAfterConstruction = synchronousLogging();
        iRootWindow::InitArgs args;
        args.size = size;
        args.eventHandler = ownHandler;
        setWindowDescription(args);
        setBackgroundInitRequired(background);
    }

    // What a program does after run(): its canvases, then the library.
    void end()
    {
        tela_deletecanvas(panel); // and the button on it
        panel = button = nullptr;
        shutdown();
    }

    const Qv::Ptr<RootWindowEventHandler> ownHandler = Qv::make<RootWindowEventHandler>();
    const Qv::Ptr<Quiet> client = Qv::make<Quiet>();
    std::atomic<int> backgroundRuns { 0 };
    std::atomic<bool> backgroundOnMainThread { true };
    bool completeOnMainThread = false;
    bool loggingAfterConstruction = false;
    bool loggingAfterComplete = true;
    Qv::Ptr<iEventHandler> dispatcherAtComplete;
    Qv::Ptr<iEventHandler> windowSinkAtComplete;
    Canvas* panel = nullptr;
    Canvas* button = nullptr;

protected:
    void backgroundInit(Qv::Ptr<iTaskLog>) override
    {
        backgroundOnMainThread = isMainThread();
        ++backgroundRuns;
    }
    void initComplete() override
    {
        Application::initComplete();
        loggingAfterComplete = synchronousLogging();
        completeOnMainThread = isMainThread();
        RootWindowRec& first = tela_state().rootWindows.front();
        dispatcherAtComplete = first.eventHandler;
        const auto window = Qv::dynamicCast<Headless::RootWindow>(first.rootCanvas->window);
        windowSinkAtComplete = window->eventHandler();

        panel = tela_newcanvas(client.get(), first.rootCanvas);
        panel->shape(region_mkrect(TopDownRect{10, 10, 200, 150}));
        panel->reshape({190, 140});
        button = tela_newcanvas(client.get(), panel);
        button->shape(region_mkrect(TopDownRect{20, 20, 80, 50}));
        button->reshape({60, 30});
        event_set_kbd_focus(button);

        MouseEvent click;
        click.pos = {30, 30};
        click.action = MouseEvent::eLeftDown;
        window->script(click);
        click.action = MouseEvent::eLeftUp;
        window->script(click);
        switch (m_ending) {
        case Ending::CloseButton: {
            WindowEvent close;
            close.kind = WindowEvent::eCloseRequest;
            window->script(close);
            break;
        }
        case Ending::ShutdownInside:
            shutdown();
            break;
        case Ending::DeleteRoot:
            tela_deletecanvas(first.rootCanvas); // and everything on it
            panel = button = nullptr;
            break;
        }
    }

private:
    Ending m_ending;
};

class ApplicationLife : public ::testing::Test {
protected:
    void TearDown() override
    {
        // Its shut-down callback is added once a process, and the reset
        // below forgets it: later runs stop the monitor by hand.
        SystemBusyMonitor::stop();
        Shutdown::resetForTesting();
    }
};

} // namespace

TEST_F(ApplicationLife, WithoutBackgroundStartUpTheStartUpHandlerStaysAndTheLibraryOutlivesTheLoop)
{
    ScriptedApp app(false);
    EXPECT_TRUE(app.loggingAfterConstruction);
    EXPECT_TRUE(event_queue_initialised());
    app.run();
    EXPECT_TRUE(app.completeOnMainThread);
    EXPECT_FALSE(app.loggingAfterComplete);
    EXPECT_EQ(app.backgroundRuns, 0);
    EXPECT_TRUE(Qv::dynamicCast<Tela::StartupEventHandler>(app.dispatcherAtComplete));
    EXPECT_EQ(app.windowSinkAtComplete, app.dispatcherAtComplete);

    // The window closed; the library is still up, and the program's canvases
    // are where it left them.
    EXPECT_FALSE(Shutdown::isExiting());
    ASSERT_EQ(tela_state().rootWindows.size(), 1u);
    EXPECT_TRUE(tela_state().tickTimer);
    EXPECT_EQ(tela_parentcanvas(app.panel), tela_rootcanvas());

    app.end();
    EXPECT_TRUE(Shutdown::isExiting());
    EXPECT_TRUE(tela_state().rootWindows.empty());
    EXPECT_FALSE(tela_state().tickTimer);
    EXPECT_FALSE(event_queue_initialised());
    EXPECT_EQ(event_get_kbd_focus(), nullptr);
}

TEST_F(ApplicationLife, ShutdownFromInsideTheLoopEndsItAndSetsTheProgramsCanvasesLoose)
{
    ScriptedApp app(false, Ending::ShutdownInside);
    app.run();
    EXPECT_TRUE(Shutdown::isExiting());
    EXPECT_TRUE(tela_state().rootWindows.empty());
    // Not freed: still the program's, whole, and deleted by it now.
    ASSERT_NE(app.panel, nullptr);
    EXPECT_EQ(tela_parentcanvas(app.panel), nullptr);
    EXPECT_EQ(tela_parentcanvas(app.button), app.panel);
    tela_deletecanvas(app.panel);
    app.panel = app.button = nullptr;
    app.shutdown(); // a second shut-down finds nothing left to do
}

TEST_F(ApplicationLife, DeletingTheRootIsReportedAndEndsTheLoop)
{
    ReportCapture reports;
    ScriptedApp app(false, Ending::DeleteRoot);
    app.run(); // would never return if the loop waited for a window that is gone
    EXPECT_EQ(reports.count("the application's root canvas was deleted"), 1);
    EXPECT_TRUE(tela_state().rootWindows.empty());
    app.end();
    EXPECT_EQ(reports.count("the application's root canvas was deleted"), 1);
}

TEST_F(ApplicationLife, BackgroundStartUpRunsOffTheMainThreadInstallsTheProgramsHandlerAndReturnsEveryBlock)
{
    const auto whole_run = [] {
        ScriptedApp app(true);
        app.run();
        EXPECT_EQ(app.backgroundRuns, 1);
        EXPECT_FALSE(app.backgroundOnMainThread);
        EXPECT_TRUE(app.completeOnMainThread);
        EXPECT_FALSE(app.loggingAfterComplete);
        EXPECT_EQ(app.dispatcherAtComplete, Qv::Ptr<iEventHandler>(app.ownHandler));
        EXPECT_EQ(app.windowSinkAtComplete, Qv::Ptr<iEventHandler>(app.ownHandler));
        app.end();
        EXPECT_TRUE(tela_state().rootWindows.empty());
        SystemBusyMonitor::stop();
        // The task queue adds its drain to the shut-down once a process, and
        // the reset forgets it: without this, the worker's thread of a later
        // run stays with the queue until the next task is queued.
        UIBackgroundTasksQueue::instance().drain();
    };
    // The first run also makes what the process keeps for good (the event
    // pool, the command map, ...).
    whole_run();
    Shutdown::resetForTesting();
    const std::int64_t before = live_blocks();
    whole_run();
    EXPECT_EQ(live_blocks(), before);
}

TEST_F(ApplicationLife, AWindowThatCannotBeMadeIsReportedAndRunReturnsWithoutShuttingDown)
{
    ReportCapture reports;
    ScriptedApp app(false, Ending::CloseButton, {1 << 20, 1 << 20});
    app.run();
    EXPECT_NE(reports.text().find("Unable to create main window"), std::string::npos);
    EXPECT_FALSE(app.completeOnMainThread);
    EXPECT_FALSE(Shutdown::isExiting());
}

TEST_F(ApplicationLife, SuspendStopsTheTickAndResumeBringsBackTickActivityAndFocus)
{
    iRootWindow::InitArgs args;
    args.size = {100, 80};
    RootCanvas* root = tela_createRootCanvas(args);
    ASSERT_NE(root, nullptr);
    const auto window = Qv::dynamicCast<Headless::RootWindow>(root->window);
    window->setActive(true);
    window->setFocus(false);
    ASSERT_TRUE(tela_state().tickTimer);

    tela_suspend();
    EXPECT_FALSE(tela_state().tickTimer);
    EXPECT_FALSE(window->isActive());

    // The flush on resume matches nothing: queued events stay.
    Event timer(0x1001);
    timer.canvas = root;
    event_send(&timer, false);
    tela_resume();
    EXPECT_TRUE(tela_state().tickTimer);
    EXPECT_TRUE(window->isActive());
    EXPECT_TRUE(window->hasFocus());
    EXPECT_EQ(event_pending(root, 0x1000), 1);

    // An active window is left as it is, focus included; the tick restarts.
    window->setFocus(false);
    tela_resume();
    EXPECT_TRUE(tela_state().tickTimer);
    EXPECT_FALSE(window->hasFocus());

    while (Event* ev = event_receive())
        event_free(ev);
    tela_deletecanvas(root);
    tela_state().tickTimer = nullptr;
}
