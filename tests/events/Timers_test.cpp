// The periodic tick: which clients it calls when, and the canvases' own
// timer events, on a fake clock.

#include "EventSupport.h"

#include "tela/canvas/Canvas.h"
#include "tela/canvas/CanvasTree.h"
#include "tela/events/EventTimeServer.h"
#include "tela/state/TelaState.h"

#include "headless/HeadlessRootWindow.h"
#include "headless/HeadlessServices.h"
#include "support/WakeSink.h"

#include <gtest/gtest.h>

#include <functional>
#include <utility>

namespace {

// Remembers when it was called; may act during the call.
struct Client : EventHandler {
    eResult handleEvent(const Event& event) override
    {
        calls.push_back(event.time);
        if (during_call)
            during_call();
        return eHandled;
    }
    std::vector<std::uint32_t> calls;
    std::function<void()> during_call;
};

class Ticks : public ::testing::Test {
protected:
    // Ticks every `step` ms from a fresh start, `count` times.
    void tick(std::uint32_t step, int count)
    {
        for (int i = 0; i < count; ++i) {
            now += step;
            Qv::setFakeClock(now);
            EventTimeServer::instance().tick();
        }
    }

    QueueScope scope; // fake clock at 1,000,000
    std::uint64_t now = 1'000'000;
};

} // namespace

TEST_F(Ticks, ClientsAreCalledWhenDueAndOneShotsOnce)
{
    ASSERT_EQ(tela_tick_interval(), 54u); // 1000 / 18.2, truncated
    Client every, hundred, soon, later;
    EventTimeServer& server = EventTimeServer::instance();
    server.registerForTimeEvents(&every, 0);
    server.registerForTimeEvents(&hundred, 100);
    server.registerForTimeEvents(&hundred, 5); // already there: unchanged
    server.registerForTimeEvent(&soon, 0);
    server.registerForTimeEvent(&later, 500);
    tick(54, 1);
    tick(20, 1); // faster than the tick interval: ignored
    tick(34, 4);
    // Ticks went out at +54, +108 and +176: each 34 ms step after one that
    // went out came too early.
    EXPECT_EQ(every.calls.size(), 3u);
    // Interval 100 on 54 ms ticks: every second tick, an effective 108 ms.
    ASSERT_EQ(hundred.calls.size(), 1u);
    EXPECT_EQ(hundred.calls[0], 1'000'108u);
    EXPECT_EQ(soon.calls, (std::vector<std::uint32_t>{1'000'054u}));
    EXPECT_TRUE(later.calls.empty());
    const std::size_t clients = server.clientCount();
    tick(54, 10);
    EXPECT_EQ(later.calls.size(), 1u);
    EXPECT_EQ(server.clientCount(), clients - 1); // the one-shot went once fired

    // A client leaving during its own call is gone at the end of that step; a
    // client deregistered by an earlier one is not called again.
    every.during_call = [&] { server.deRegisterForTimeEvents(&every); server.deRegisterForTimeEvents(&hundred); };
    const std::size_t hundred_calls = hundred.calls.size();
    tick(200, 1);
    EXPECT_EQ(hundred.calls.size(), hundred_calls);
    EXPECT_EQ(server.clientCount(), 0u);
}

TEST_F(Ticks, AClientRegisteredDuringAWalkWaitsItsIntervalFromThatTick)
{
    Client first, periodic, one_shot, every;
    EventTimeServer& server = EventTimeServer::instance();
    // The clock moves on while the walk runs, as a real one does.
    bool registered = false;
    first.during_call = [&] {
        if (std::exchange(registered, true))
            return;
        Qv::setFakeClock(now + 5);
        server.registerForTimeEvents(&periodic, 100);
        server.registerForTimeEvent(&one_shot, 60);
        server.registerForTimeEvents(&every, 0); // every tick: reached in this walk
    };
    server.registerForTimeEvents(&first, 0);
    tick(54, 1);
    const auto walk = static_cast<std::uint32_t>(now);
    EXPECT_TRUE(periodic.calls.empty());
    EXPECT_TRUE(one_shot.calls.empty());
    EXPECT_EQ(every.calls, (std::vector<std::uint32_t>{walk}));
    tick(54, 2);
    EXPECT_EQ(periodic.calls, (std::vector<std::uint32_t>{walk + 108})); // 100 on 54 ms ticks: 108
    EXPECT_EQ(one_shot.calls, (std::vector<std::uint32_t>{walk + 108})); // 54 is not above 60
    for (EventHandler* client : {static_cast<EventHandler*>(&first), static_cast<EventHandler*>(&periodic),
                                 static_cast<EventHandler*>(&every)})
        server.deRegisterForTimeEvents(client);
    EXPECT_EQ(server.clientCount(), 0u);
}

TEST_F(Ticks, ACanvasHasOneTimerEventAtATimeAndWaitsTwentyMsAfterTheLast)
{
    Canvas* root = tela_newcanvas(nullptr, nullptr);
    tela_state().rootWindows.push_back(RootWindowRec(root));
    Canvas* ticking = tela_newcanvas(nullptr, root);
    canvas_set_interest(ticking, 0x1000);
    tick(54, 1);
    tick(54, 1); // one already queued: no second
    ASSERT_EQ(event_pending(ticking, 0x1000), 1);
    EXPECT_EQ(event_pending(root, 0x1000), 0); // the root did not ask
    // Handled 34 ms after that tick: the next one, 20 ms after the canvas was
    // done with it, is too soon; the one after is not.
    now += 34;
    Qv::setFakeClock(now);
    Event* event = event_receive();
    ASSERT_NE(event, nullptr);
    EXPECT_EQ(event->time, 0u);
    event_free(event); // stamps the canvas with the time it was done
    tick(20, 1);
    EXPECT_EQ(event_pending(ticking, 0x1000), 0);
    tick(54, 1);
    EXPECT_EQ(event_pending(ticking, 0x1000), 1);
    tela_state().rootWindows.clear();
    tela_deletecanvas(root);
}

TEST_F(Ticks, AHeadlessWindowTimerTicksByTheClockUntilReleased)
{
    struct TickSink final : WakeSink {
        eRC handleEvent(const UserEvent&) override { return eNotHandled; }
        eRC handleEvent(const TimerEvent& event) override { times.push_back(event.time); return eHandled; }
        using WakeSink::handleEvent;
        std::vector<std::uint32_t> times;
    };
    Qv::Ptr<iRootWindow> window;
    Headless::services().windowing()->createRootWindow(window, 0);
    const auto sink = Qv::make<TickSink>();
    window->setEventHandler(sink);
    Qv::Ptr<iPeriodicTimer> timer;
    ASSERT_TRUE(window->createPeriodicTimer(timer, 54));
    Headless::MainLoop& loop = Headless::services().windowing()->mainLoop();
    loop.runPending();
    EXPECT_TRUE(sink->times.empty());
    Qv::setFakeClock(now + 54);
    loop.runPending();
    Qv::setFakeClock(now + 500); // a stall: the missed ticks are not made up
    loop.runPending();
    EXPECT_EQ(sink->times, (std::vector<std::uint32_t>{static_cast<std::uint32_t>(now + 54), static_cast<std::uint32_t>(now + 500)}));
    timer = nullptr;
    Qv::setFakeClock(now + 1000);
    loop.runPending();
    EXPECT_EQ(sink->times.size(), 2u);
}
