// A whole program's life on the headless platform: start-up on either road,
// a scripted session, and the shut-down that lets go of the library's state.
#include "app/Application.h"
#include "app/TelaState.h"
#include "canvas/Canvas.h"
#include "canvas/CanvasTree.h"
#include "core/Shutdown.h"
#include "core/Threads.h"

#include "headless/HeadlessRootWindow.h"
#include "support/ReportCapture.h"

#include <gtest/gtest.h>

#include <atomic>

namespace {

class ScriptedApp final : public Tela::Application {
public:
    explicit ScriptedApp(bool background, XY<int> size = {320, 200}) : Application(WString(u"Scripted"), WString(u"1"))
    {
        iRootWindow::InitArgs args;
        args.size = size;
        args.eventHandler = ownHandler;
        setWindowDescription(args);
        setBackgroundInitRequired(background);
    }

    const Qv::Ptr<RootWindowEventHandler> ownHandler = Qv::make<RootWindowEventHandler>();
    std::atomic<int> backgroundRuns { 0 };
    std::atomic<bool> backgroundOnMainThread { true };
    bool completeOnMainThread = false;
    Qv::Ptr<iEventHandler> dispatcherAtComplete;
    Qv::Ptr<iEventHandler> windowSinkAtComplete;

protected:
    void backgroundInit(Qv::Ptr<iTaskLog>) override
    {
        backgroundOnMainThread = isMainThread();
        ++backgroundRuns;
    }
    void initComplete() override
    {
        Application::initComplete();
        completeOnMainThread = isMainThread();
        RootWindowRec& first = tela_state().rootWindows.front();
        dispatcherAtComplete = first.eventHandler;
        const auto window = Qv::dynamicCast<Headless::RootWindow>(first.rootCanvas->window);
        windowSinkAtComplete = window->eventHandler();
        // The user closes the window.
        WindowEvent close;
        close.kind = WindowEvent::eCloseRequest;
        window->script(close);
    }
};

class ApplicationLife : public ::testing::Test {
protected:
    void TearDown() override { Shutdown::resetForTesting(); }
};

} // namespace

TEST_F(ApplicationLife, without_background_start_up_the_start_up_handler_stays_and_closing_ends_the_program)
{
    ScriptedApp app(false);
    app.run();
    EXPECT_TRUE(app.completeOnMainThread);
    EXPECT_EQ(app.backgroundRuns, 0);
    EXPECT_TRUE(Qv::dynamicCast<Tela::StartupEventHandler>(app.dispatcherAtComplete));
    EXPECT_EQ(app.windowSinkAtComplete, app.dispatcherAtComplete);
    // The library let go of its windows and its tick.
    EXPECT_TRUE(Shutdown::isExiting());
    EXPECT_TRUE(tela_state().rootWindows.empty());
    EXPECT_FALSE(tela_state().tickTimer);
}

TEST_F(ApplicationLife, background_start_up_runs_off_the_main_thread_then_installs_the_programs_handler)
{
    ScriptedApp app(true);
    app.run();
    EXPECT_EQ(app.backgroundRuns, 1);
    EXPECT_FALSE(app.backgroundOnMainThread);
    EXPECT_TRUE(app.completeOnMainThread);
    EXPECT_EQ(app.dispatcherAtComplete, Qv::Ptr<iEventHandler>(app.ownHandler));
    EXPECT_EQ(app.windowSinkAtComplete, Qv::Ptr<iEventHandler>(app.ownHandler));
    EXPECT_TRUE(tela_state().rootWindows.empty());
}

TEST_F(ApplicationLife, a_window_that_cannot_be_made_is_reported_and_run_returns_without_shutting_down)
{
    ReportCapture reports;
    ScriptedApp app(false, {1 << 20, 1 << 20});
    app.run();
    EXPECT_NE(reports.text().find("Unable to create main window"), std::string::npos);
    EXPECT_FALSE(app.completeOnMainThread);
    EXPECT_FALSE(Shutdown::isExiting());
}
