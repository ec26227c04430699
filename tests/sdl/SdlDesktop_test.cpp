// The SDL window on a desktop under a virtual X display: the close button
// pressed the way a window manager presses it, files dropped on the window,
// the busy cursor of a stalled main thread, and the screen's density.

#include "tela/state/TelaState.h"
#include "tela/core/Clock.h"
#include "tela/input/RootWindowEventHandler.h"
#include "tela/input/SystemBusyMonitor.h"

#include "sdl/SdlFixture.h"
#include "support/LoopDeadline.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <vector>

// Last: Xlib's macros must not meet the headers above.
#include <SDL_syswm.h>
#include <X11/Xlib.h>

namespace {

// Asked when the close request comes round; answers as told.
class ClosingHandler final : public RootWindowEventHandler {
public:
    explicit ClosingHandler(bool allow) : m_allow(allow) {}
    mutable std::atomic<int> asked { 0 };

protected:
    bool canExit() const override
    {
        ++asked;
        return m_allow;
    }

private:
    bool m_allow;
};

class DropRecorder final : public Tela::iExternalDragDropHandler {
public:
    void onFileDragAction0(const FileDragDropEvent& e, const XY<int>&) override { drops.push_back({0, e}); }
    void onFileDragAction1(const FileDragDropEvent& e, const XY<int>&) override { drops.push_back({1, e}); }
    void onFileDragAction2(const FileDragDropEvent& e, const XY<int>&) override { drops.push_back({2, e}); }
    void onFileDragAction3() override { drops.push_back({3, {}}); }

    struct Call {
        int action;
        FileDragDropEvent event;
    };
    std::vector<Call> drops;
};

// A root window of the library's own handler on SDL.
class SdlDesktop : public SdlFixture {
protected:
    void open(const Qv::Ptr<RootWindowEventHandler>& handler)
    {
        SdlFixture::open(handler);
        Sdl::services().windowing()->pumpPending();
    }

    // What a window manager sends when the user presses the close button.
    void pressCloseButton() const
    {
        SDL_SysWMinfo info;
        SDL_VERSION(&info.version);
        ASSERT_TRUE(SDL_GetWindowWMInfo(native(), &info));
        ASSERT_EQ(info.subsystem, SDL_SYSWM_X11);
        Display* const display = XOpenDisplay(DisplayString(info.info.x11.display));
        ASSERT_NE(display, nullptr);
        XEvent close {};
        close.xclient.type = ClientMessage;
        close.xclient.window = info.info.x11.window;
        close.xclient.message_type = XInternAtom(display, "WM_PROTOCOLS", False);
        close.xclient.format = 32;
        close.xclient.data.l[0] = static_cast<long>(XInternAtom(display, "WM_DELETE_WINDOW", False));
        close.xclient.data.l[1] = CurrentTime;
        XSendEvent(display, info.info.x11.window, False, NoEventMask, &close);
        XCloseDisplay(display);
    }

    // Runs the main loop until the handler has been asked whether the
    // application may close and a moment more has passed; ends it from
    // outside if it is still running then. True when it had to be ended.
    bool runLoopAfterClose(const ClosingHandler& handler)
    {
        return run_loop_with_deadline(*Sdl::services().windowing(), [&handler] { return handler.asked != 0; }, 5000,
                                      300);
    }

    void push(SDL_EventType type, const char* file = nullptr, std::uint32_t windowId = 0)
    {
        SDL_Event event {};
        event.type = type;
        event.drop.windowID = windowId ? windowId : window->windowId();
        event.drop.file = file ? SDL_strdup(file) : nullptr;
        SDL_PushEvent(&event);
    }
};

} // namespace

TEST_F(SdlDesktop, ACloseButtonRefusedByTheApplicationKeepsTheWindowAndTheLoop)
{
    const auto handler = Qv::make<ClosingHandler>(false);
    open(handler);
    pressCloseButton();
    EXPECT_TRUE(runLoopAfterClose(*handler)) << "the loop ended by itself";
    EXPECT_EQ(handler->asked.load(), 1);
    EXPECT_NE(SDL_GetWindowFromID(window->windowId()), nullptr);
    EXPECT_FALSE(tela_state().rootWindows.empty());
}

TEST_F(SdlDesktop, ACloseButtonTheApplicationAcceptsEndsTheLoop)
{
    const auto handler = Qv::make<ClosingHandler>(true);
    open(handler);
    pressCloseButton();
    EXPECT_FALSE(runLoopAfterClose(*handler)) << "the close was lost";
    EXPECT_EQ(handler->asked.load(), 1);
}

TEST_F(SdlDesktop, FilesDroppedOnTheWindowReachTheDragHandlerWithTheirPathsAndThePointer)
{
    const auto handler = Qv::make<RootWindowEventHandler>();
    const auto recorder = Qv::make<DropRecorder>();
    handler->setExternalDragDropHandler(recorder);
    open(handler);
    SDL_WarpMouseInWindow(native(), 30, 40);

    // A lone file, as older systems report it.
    push(SDL_DROPFILE, "/tmp/tela drop/\xc3\xa4pfel.txt");
    ASSERT_TRUE(pumpUntil([&] { return recorder->drops.size() == 1; }));
    EXPECT_EQ(recorder->drops[0].action, static_cast<int>(Sdl::eFileDropped));
    ASSERT_EQ(recorder->drops[0].event.files.size(), 1u);
    EXPECT_EQ(recorder->drops[0].event.files[0], WString(u"/tmp/tela drop/\u00e4pfel.txt"));
    EXPECT_EQ(recorder->drops[0].event.pos, (XY<int>{30, 40}));
    const auto now = static_cast<std::uint32_t>(msecsNow());
    EXPECT_LE(now - recorder->drops[0].event.time, 2000u) << "not on the library's clock";

    // A drop of two files between its start and its end is one report; a
    // file for no window of ours is let go of.
    push(SDL_DROPBEGIN);
    push(SDL_DROPFILE, "/a");
    push(SDL_DROPFILE, "/b", 0xFFFF);
    push(SDL_DROPFILE, "/c");
    push(SDL_DROPCOMPLETE);
    ASSERT_TRUE(pumpUntil([&] { return recorder->drops.size() == 2; }));
    Sdl::services().windowing()->pumpPending();
    ASSERT_EQ(recorder->drops.size(), 2u);
    EXPECT_EQ(recorder->drops[1].event.files, (Qv::Vector<WString>{WString(u"/a"), WString(u"/c")}));

    // An empty drop reports nothing.
    push(SDL_DROPBEGIN);
    push(SDL_DROPCOMPLETE);
    Sdl::services().windowing()->pumpPending();
    EXPECT_EQ(recorder->drops.size(), 2u);
}

TEST_F(SdlDesktop, DraggingFilesOutIsRefusedWithAReason)
{
    open(Qv::make<RootWindowEventHandler>());
    EXPECT_FALSE(window->dragFiles(Qv::Vector<WString>{WString(u"/tmp/x")}));
}

TEST_F(SdlDesktop, AStalledMainThreadShowsTheBusyCursorFromTheMonitorThread)
{
    open(Qv::make<RootWindowEventHandler>());
    SDL_WarpMouseInWindow(native(), 50, 50);
    Sdl::services().windowing()->pumpPending();
    const int before = Sdl::services().windowing()->offThreadCursorsShown();
    ASSERT_TRUE(SystemBusyMonitor::start(20));
    // The main thread neither beats nor runs the loop.
    for (int waited = 0; waited < 100 && Sdl::services().windowing()->offThreadCursorsShown() == before; ++waited)
        SDL_Delay(10);
    EXPECT_GT(Sdl::services().windowing()->offThreadCursorsShown(), before);
    // It comes back: the monitor asks the main thread to put the cursor right.
    SystemBusyMonitor::heartbeat();
    SDL_Delay(30);
    Sdl::services().windowing()->pumpPending();
    EXPECT_TRUE(SystemBusyMonitor::stop());
    Sdl::services().windowing()->pumpPending();
}

TEST(SdlDensity, TheScaleFollowsTheDensityInQuarterStepsAndNeverShrinksCursors)
{
    // 101: a monitor's slightly-off report of 96.
    const float densities[] = { 96, 101, 120, 144, 192, 72, 5000, 0, std::nanf("") };
    const float scales[] = { 1, 1, 1.25f, 1.5f, 2, 1, 4, 1, 1 };
    for (std::size_t i = 0; i < std::size(densities); ++i)
        EXPECT_EQ(Sdl::scaleForDensity(densities[i]), scales[i]) << densities[i];
}
