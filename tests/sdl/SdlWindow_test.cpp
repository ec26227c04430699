// The SDL platform under a virtual X display: what the library draws reaches
// the screen, and SDL's events reach the window's handler.

#include "tela/state/TelaState.h"
#include "tela/canvas/Canvas.h"
#include "tela/canvas/CanvasClient.h"
#include "tela/canvas/RootAppearance.h"
#include "tela/canvas/UpdateTracking.h"
#include "tela/core/Clock.h"
#include "tela/events/Event.h"
#include "tela/events/EventQueue.h"
#include "tela/input/RootWindowEventHandler.h"
#include "tela/vector/Regions.h"

#include "headless/HostImage.h"
#include "sdl/SdlFixture.h"
#include "sdl/SdlInput.h"
#include "support/LoopDeadline.h"
#include "support/WakeSink.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <thread>
#include <vector>

namespace {

// Counts what arrives and repaints the root on paint events.
class RecordingSink final : public WakeSink {
public:
    RootCanvas* root = nullptr;
    std::atomic<int> wakes { 0 };
    int paints = 0;
    std::vector<MouseEvent> mice;
    std::vector<KeyEvent> keys;
    std::vector<WindowEvent> changes;

    eRC handleEvent(const UserEvent&) override { ++wakes; return eNotHandled; }
    eRC handleEvent(const PaintEvent& event) override
    {
        ++paints;
        if (root)
            root->display(event.region);
        return eHandled;
    }
    eRC handleEvent(const MouseEvent& event) override { mice.push_back(event); return eHandled; }
    eRC handleEvent(const KeyEvent& event) override { keys.push_back(event); return eHandled; }
    eRC handleEvent(const WindowEvent& event) override { changes.push_back(event); return eHandled; }
    using WakeSink::handleEvent;
};

class SdlWindow : public SdlFixture {
protected:
    void SetUp() override
    {
        sink = Qv::make<RecordingSink>();
        open(sink);
        sink->root = root;
    }
    void TearDown() override
    {
        sink->root = nullptr;
        SdlFixture::TearDown();
    }

    // The colour the screen shows at a window point, as 0xRRGGBB.
    std::uint32_t onScreen(int x, int y) const
    {
        SDL_Surface* surface = SDL_GetWindowSurface(native());
        if (!surface || x >= surface->w || y >= surface->h)
            return 0xFFFFFFFF;
        const auto* row = static_cast<const std::uint8_t*>(surface->pixels) + y * surface->pitch;
        std::uint32_t pixel = 0;
        std::memcpy(&pixel, row + x * surface->format->BytesPerPixel, surface->format->BytesPerPixel);
        std::uint8_t r = 0, g = 0, b = 0;
        SDL_GetRGB(pixel, surface->format, &r, &g, &b);
        return static_cast<std::uint32_t>(r << 16 | g << 8 | b);
    }

    void pushToWindow(SDL_Event event) { SDL_PushEvent(&event); }

    Qv::Ptr<RecordingSink> sink;
};

} // namespace

TEST_F(SdlWindow, TheScreenShowsTheBackgroundAndACanvasDrawnOnTheHostRoad)
{
    tela_setRootColour(root, NormalisedRGB(0.0f, 0.0f, 0.5f));
    Canvas* c = tela_newcanvas(nullptr, root);
    c->shape(region_mkrect(TopDownRect{20, 30, 60, 50}));
    c->reshape({40, 20});
    Qv::dynamicCast<Headless::HostImage>(c->offscreenBuffer)->fill(0xFFFF8000);
    root->window->invalidate(nullptr);
    EXPECT_TRUE(pumpUntil([&] { return onScreen(25, 35) == 0xFF8000u; }));
    EXPECT_EQ(onScreen(5, 5), 0x000080u);
    EXPECT_EQ(onScreen(60, 50), 0x000080u);

    // Two requests before the loop runs are one paint.
    const int paints = sink->paints;
    root->window->invalidate(nullptr);
    root->window->invalidate(region_mkrect(TopDownRect{0, 0, 4, 4}));
    Sdl::services().windowing()->pumpPending();
    EXPECT_EQ(sink->paints, paints + 1);
    tela_deletecanvas(c);
}

TEST_F(SdlWindow, EveryWakeFromAnyThreadArrivesOnce)
{
    constexpr int THREADS = 4, WAKES_EACH = 5000;
    std::vector<std::thread> senders;
    for (int t = 0; t < THREADS; ++t)
        senders.emplace_back([&] {
            for (int i = 0; i < WAKES_EACH; ++i)
                root->window->postWake();
        });
    for (std::thread& sender : senders)
        sender.join();
    EXPECT_TRUE(pumpUntil([&] { return sink->wakes.load() == THREADS * WAKES_EACH; }));
    Sdl::services().windowing()->pumpPending();
    EXPECT_EQ(sink->wakes.load(), THREADS * WAKES_EACH);
}

TEST_F(SdlWindow, MouseKeysAndSizeChangesReachTheHandlerInThePlatformTerms)
{
    // Reports are stamped on the library's clock, whatever SDL's ticks say.
    constexpr std::uint32_t NOW = 5'000'000;
    const struct FakeClock {
        FakeClock() { Qv::setFakeClock(NOW); }
        ~FakeClock() { Qv::clearFakeClock(); }
    } clock;
    const std::uint32_t id = window->windowId();
    SDL_Event press {};
    press.type = SDL_MOUSEBUTTONDOWN;
    press.button.windowID = id;
    press.button.button = SDL_BUTTON_RIGHT;
    press.button.x = 12;
    press.button.y = 34;
    pushToWindow(press);
    SDL_Event key {};
    key.type = SDL_KEYDOWN;
    key.key.windowID = id;
    key.key.keysym.sym = SDLK_a;
    key.key.keysym.mod = KMOD_LCTRL | KMOD_LSHIFT;
    pushToWindow(key);
    ASSERT_TRUE(pumpUntil([&] { return !sink->mice.empty() && !sink->keys.empty(); }));
    EXPECT_EQ(sink->mice[0].action, MouseEvent::eRightDown);
    EXPECT_EQ(sink->mice[0].pos, (XY<int>{12, 34}));
    EXPECT_EQ(sink->keys[0].keyCode, static_cast<std::uint32_t>('a'));
    EXPECT_EQ(sink->keys[0].modifiers, 0x3000000u);
    EXPECT_EQ(sink->keys[0].action, KeyEvent::ePress);
    for (const std::uint32_t time : {sink->mice[0].time, sink->keys[0].time}) {
        EXPECT_LE(time, NOW);
        EXPECT_GE(time, NOW - 2000);
    }

    SDL_SetWindowSize(native(), 200, 90);
    ASSERT_TRUE(pumpUntil([&] {
        // The window manager may add focus and expose reports after it.
        return std::any_of(sink->changes.begin(), sink->changes.end(),
                           [](const WindowEvent& change) { return change.kind == WindowEvent::eSizeChanged; });
    }));
    XY<int> size;
    window->getSize(size);
    EXPECT_EQ(size, (XY<int>{200, 90}));
    XY<int> frame;
    window->frame()->getSize(frame);
    EXPECT_EQ(frame, size);
}

namespace {

class ClickRecorder final : public CanvasClient {
public:
    eResult handleEvent(const Event& event) override
    {
        types.push_back(event.type);
        return eNotHandled;
    }
    std::vector<std::uint32_t> types;
};

} // namespace

using SdlApplication = SdlFixture;

TEST(SdlInput, AModifierKeyIsAChangeOfTheModifiersAloneAndOtherKeysAreKeys)
{
    SDL_Event event {};
    event.type = SDL_KEYDOWN;
    event.key.keysym.sym = SDLK_LCTRL;
    event.key.keysym.mod = KMOD_LCTRL;
    KeyEvent key;
    ASSERT_TRUE(Sdl::toKeyEvent(event, key));
    EXPECT_EQ(key.keyCode, 0u);
    EXPECT_EQ(key.modifiers, Sdl::modifierBits(KMOD_LCTRL));
    EXPECT_NE(key.modifiers, 0u);
    event.type = SDL_KEYUP;
    event.key.keysym.sym = SDLK_RSHIFT;
    event.key.keysym.mod = KMOD_NONE;
    ASSERT_TRUE(Sdl::toKeyEvent(event, key));
    EXPECT_EQ(key.keyCode, 0u);
    EXPECT_EQ(key.action, KeyEvent::eRelease);
    // A key that is no character keeps its code, marked as such.
    event.type = SDL_KEYDOWN;
    event.key.keysym.sym = SDLK_F5;
    ASSERT_TRUE(Sdl::toKeyEvent(event, key));
    EXPECT_EQ(key.keyCode, (static_cast<std::uint32_t>(SDLK_F5) & 0xFFFFu) | eKeyNotCharacter);
}

TEST_F(SdlApplication, AClickReachesTheCanvasAndClosingTheWindowEndsTheLoop)
{
    open(Qv::make<RootWindowEventHandler>());
    const auto client = Qv::make<ClickRecorder>();
    Canvas* c = tela_newcanvas(client.get(), root);
    c->shape(region_mkrect(TopDownRect{20, 30, 60, 50}));

    // The queue drops mouse events that waited across three seconds without
    // a receive; a loop that has just asked for one is alive.
    event_free(event_receive());
    const std::uint32_t id = window->windowId();
    for (const std::uint32_t type : {SDL_MOUSEBUTTONDOWN, SDL_MOUSEBUTTONUP}) {
        SDL_Event click {};
        click.type = type;
        click.button.windowID = id;
        click.button.button = SDL_BUTTON_LEFT;
        click.button.x = 25;
        click.button.y = 35;
        SDL_PushEvent(&click);
    }
    SDL_Event close {};
    close.type = SDL_WINDOWEVENT;
    close.window.windowID = id;
    close.window.event = SDL_WINDOWEVENT_CLOSE;
    SDL_PushEvent(&close);

    // Should the close request be lost, the loop is ended from outside, and
    // the test fails rather than hangs.
    const bool forced = run_loop_with_deadline(*Sdl::services().windowing(), [] { return false; }, 10000, 0);
    EXPECT_FALSE(forced);
    EXPECT_EQ(client->types, (std::vector<std::uint32_t>{0x122, 0x121}));
    tela_deletecanvas(c);
}
