// Deferred work and main-thread callbacks: what runs, when, and what a flush
// or a repeated id cancels.

#include "EventSupport.h"

#include "tela/canvas/CanvasTree.h"
#include "tela/core/NotifyMsg.h"
#include "tela/core/Threads.h"
#include "tela/events/Deferred.h"
#include "tela/events/UIThreadCallback.h"

#include "support/LiveBlocks.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <thread>
#include <vector>

namespace {

// What the dispatcher does with each event: hand it to its handler.
int dispatch_all()
{
    int delivered = 0;
    while (Event* event = event_receive()) {
        if (EventHandler* target = event->getEventHandlerObj(); EventHandler::valid(target, IdStamp(0, 0, 0))) {
            target->handleEvent(*event);
            ++delivered;
        }
        event_free(event);
    }
    return delivered;
}

} // namespace

TEST(Deferred, WorkRunsLaterInQueueOrderUnlessItsCanvasIsFlushed)
{
    QueueScope scope;
    std::string log;
    Canvas* doomed = tela_newcanvas(nullptr, nullptr);
    defer([&] {
        log += "a";
        defer([&] { log += "c"; }); // queued behind everything already there
        log += "A";
    });
    defer([&] { log += "x"; }, doomed);
    defer([&] { log += "b"; });
    tela_deletecanvas(doomed);
    EXPECT_TRUE(log.empty());
    dispatch_all();
    EXPECT_EQ(log, "aAbc");
}

// Each delivered action's wrapper dies with its event. With nothing else
// queued for it, that death must not walk the queue, or a drain of n actions
// costs n squared; the handler and the canvas events queued alongside must
// still be found by their own flushes.
TEST(Deferred, DrainingActionsLooksAtNoQueuedEventOnTheirBehalf)
{
    QueueScope scope;
    constexpr int ACTIONS = 2000;
    RecordingHandler bystander;
    Canvas* canvas = tela_newcanvas(nullptr, nullptr);
    post(0x200, nullptr, canvas);
    int ran = 0;
    for (int i = 0; i < ACTIONS; ++i)
        defer([&] { ++ran; });
    post(0x4001, &bystander, nullptr, &bystander);

    const std::uint64_t steps = event_queue_steps();
    dispatch_all();
    EXPECT_EQ(ran, ACTIONS);
    EXPECT_EQ(bystander.types.size(), 1u);
    EXPECT_LT(event_queue_steps() - steps, static_cast<std::uint64_t>(ACTIONS));
    tela_deletecanvas(canvas);
}

// The blocks of delivered actions are kept for the next ones: a second burst
// as large as the first takes nothing more from the heap.
TEST(Deferred, ASecondBurstOfActionsReusesTheBlocksOfTheFirst)
{
    QueueScope scope;
    constexpr int ACTIONS = 500;
    std::vector<int> ran;
    const auto burst = [&] {
        for (int i = 0; i < ACTIONS; ++i)
            defer([&ran, i] { ran.push_back(i); });
        dispatch_all();
    };
    burst();
    const std::int64_t blocks = live_blocks();
    ran.clear();
    burst();
    EXPECT_EQ(live_blocks(), blocks);
    ASSERT_EQ(ran.size(), static_cast<std::size_t>(ACTIONS));
    for (int i = 0; i < ACTIONS; ++i)
        EXPECT_EQ(ran[static_cast<std::size_t>(i)], i);
}

// Threads defer while the main thread drains, so wrappers are made, queued,
// run and freed on all sides at once: each action runs once, in the order
// its thread deferred it.
TEST(Deferred, ActionsDeferredFromManyThreadsRunOnceInTheirThreadsOrder)
{
    QueueScope scope;
    constexpr int THREADS = 4;
    constexpr int EACH = 2000;
    std::vector<std::vector<int>> ran(THREADS);
    std::vector<std::thread> threads;
    for (int t = 0; t < THREADS; ++t)
        threads.emplace_back([&, t] {
            for (int i = 0; i < EACH; ++i)
                defer([&ran, t, i] { ran[static_cast<std::size_t>(t)].push_back(i); });
        });
    const auto all_ran = [&] {
        std::size_t total = 0;
        for (const auto& r : ran)
            total += r.size();
        return total == static_cast<std::size_t>(THREADS * EACH);
    };
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (!all_ran() && std::chrono::steady_clock::now() < deadline)
        if (dispatch_all() == 0)
            std::this_thread::yield();
    for (std::thread& thread : threads)
        thread.join();
    for (const auto& r : ran) {
        ASSERT_EQ(r.size(), static_cast<std::size_t>(EACH));
        for (int i = 0; i < EACH; ++i)
            EXPECT_EQ(r[static_cast<std::size_t>(i)], i);
    }
}

TEST(Deferred, ARepeatedUniqueIdCancelsThePendingOneAndAThirdStartsAfresh)
{
    QueueScope scope;
    Canvas* one = tela_newcanvas(nullptr, nullptr);
    Canvas* two = tela_newcanvas(nullptr, nullptr);
    std::string log;
    deferUnique([&] { log += "1"; }, String("layout"), one);
    deferUnique([&] { log += "2"; }, String("layout"), one);
    dispatch_all();
    EXPECT_EQ(log, "");

    deferUnique([&] { log += "1"; }, String("layout"), one);
    deferUnique([&] { log += "2"; }, String("layout"), one);
    deferUnique([&] { log += "3"; }, String("layout"), one);
    deferUnique([&] { log += "4"; }, String("layout"), two); // another canvas: its own
    dispatch_all();
    EXPECT_EQ(log, "34");
    tela_deletecanvas(one);
    tela_deletecanvas(two);
}

TEST(Deferred, MainThreadWorkRunsAtOnceAndOtherThreadsWorkWaitsForIt)
{
    QueueScope scope;
    bool ran = false;
    executeInMainThread([&] { ran = true; });
    EXPECT_TRUE(ran);
    EXPECT_EQ(event_pending(nullptr, 0), 0);

    int ran_on = -1;
    std::thread([&] { executeInMainThread([&] { ran_on = co_pid(); }); }).join();
    EXPECT_EQ(ran_on, -1);
    EXPECT_EQ(dispatch_all(), 1);
    EXPECT_EQ(ran_on, 0);

    // Requests with nothing to do send nothing.
    Tela::viewDocument(WString());
    Tela::revealFiles({WString(u"/"), WString(u"/tmp")});
    EXPECT_EQ(event_pending(nullptr, 0), 0);
    Tela::revealFiles({WString(u"/no/such/file"), WString(u"/no/such/file"), WString(u"/")});
    EXPECT_EQ(dispatch_all(), 1);
}

TEST(UIThreadCallback, RunsOnTheMainThreadChecksItsReceiverFirstAndItsConditionLast)
{
    QueueScope scope;
    std::vector<int> heard;
    const auto record = Qv::makeCallback<int, NotifyMsg>([&](const NotifyMsg& message) {
        heard.push_back(message.type() * 10 + co_pid());
        return 1;
    });
    auto now = Qv::make<UIThreadCallback<NotifyMsg>>(record, false);
    EXPECT_EQ(now->execute(NotifyMsg(String(), 1)), 1); // main thread: at once
    auto later = Qv::make<UIThreadCallback<NotifyMsg>>(record, true);
    EXPECT_EQ(later->execute(NotifyMsg(String(), 2)), 0); // always deferred
    std::thread([&] { now->execute(NotifyMsg(String(), 3)); }).join();
    EXPECT_EQ(heard, (std::vector<int>{10}));
    later = nullptr; // the queued message keeps it alive
    dispatch_all();
    EXPECT_EQ(heard, (std::vector<int>{10, 20, 30}));

    // A receiver that is gone: nothing is queued. A condition that fails at
    // delivery: dropped silently.
    Qv::Ptr<UIThreadCallback<NotifyMsg>> guarded;
    {
        RecordingHandler receiver;
        const Qv::Ptr<iCallbackBase<int, NotifyMsg>> check(Qv::make<EventHandlerExistenceCheck<NotifyMsg>>(&receiver));
        guarded = Qv::make<UIThreadCallback<NotifyMsg>>(record, check, true);
    }
    guarded->execute(NotifyMsg(String(), 4));
    EXPECT_EQ(event_pending(nullptr, 0), 0);
    auto conditional = Qv::make<UIThreadCallback<NotifyMsg>>(record, true);
    conditional->setDeliveryCondition(Qv::makeCallback<int, NotifyMsg>([](const NotifyMsg&) { return 0; }));
    conditional->execute(NotifyMsg(String(), 5));
    dispatch_all();
    EXPECT_EQ(heard.size(), 3u);
}
