// Filter stacks: the order filters are asked in, changes made by filters while
// a run is under way, and the library's two event intercept stacks.

#include "EventSupport.h"

#include "support/ReportCapture.h"
#include "tela/events/FilterStack.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <thread>
#include <utility>
#include <vector>

namespace {

// Logs each time it is asked, may act on the stack while asked, and gives a
// fixed answer.
struct ScriptedFilter : FilterStackable<int> {
    ScriptedFilter(int filter_id, std::vector<int>& asked_log) : id(filter_id), log(asked_log) {}
    int fsFilterThis(const int&, void*) override
    {
        log.push_back(id);
        if (while_asked)
            while_asked();
        return answer;
    }
    int id;
    std::vector<int>& log;
    int answer = 0;
    std::function<void()> while_asked;
};

} // namespace

TEST(FilterStackTest, NestedRunsSeeRemovalsAtOnceButPushesOnlyAfterTheOutermostRun)
{
    FilterStack<int> stack;
    std::vector<int> log;
    ScriptedFilter lower(1, log), upper(2, log), newcomer(3, log);
    stack.push(&lower, nullptr);
    stack.push(&upper, nullptr);
    bool first_time = true;
    upper.while_asked = [&] {
        if (!std::exchange(first_time, false)) // act once only
            return;
        stack.remove(&lower);
        stack.push(&newcomer, nullptr);
        stack.run(0); // nested: sees the removal, not yet the push
    };

    EXPECT_EQ(stack.run(0), 0);
    EXPECT_EQ(log, (std::vector<int>{2, 2}));
    EXPECT_EQ(stack.count(), 2u);

    log.clear();
    EXPECT_EQ(stack.run(0), 0);
    EXPECT_EQ(log, (std::vector<int>{3, 2}));
}

TEST(FilterStackTest, PushingNullIsReportedAndLeavesTheStackAsItWas)
{
    ReportCapture reports;
    FilterStack<int> stack;
    std::vector<int> log;
    ScriptedFilter only(1, log);
    stack.push(&only, nullptr);
    stack.push(nullptr, nullptr);
    EXPECT_EQ(reports.text(), "FilterStack::push: null filter");
    EXPECT_EQ(stack.count(), 1u);
    EXPECT_EQ(stack.run(0), 0);
    EXPECT_EQ(log, (std::vector<int>{1}));
}

TEST(FilterStackTest, OtherThreadsEditWhileRunsAreUnderWay)
{
    // Edits from other threads wait for the run's lock; the race detector
    // watches the rest.
    FilterStack<int> stack;
    std::vector<int> log, visitor_log;
    ScriptedFilter resident(0, log), visitor(1, visitor_log);
    stack.push(&resident, nullptr);
    std::atomic<bool> stop{false};
    std::thread editor([&] {
        while (!stop.load()) {
            stack.push(&visitor, nullptr);
            stack.remove(&visitor);
        }
    });
    for (int run = 0; run < 20000; ++run)
        stack.run(0);
    stop = true;
    editor.join();
    EXPECT_EQ(log.size(), 20000u);
    EXPECT_EQ(stack.count(), 1u);
}

namespace {

constexpr std::uintptr_t EVERY_TYPE = 0xFFFF;

void* mask(std::uintptr_t bits)
{
    return reinterpret_cast<void*>(bits);
}

// Records what it saw through the stack, and may scribble on its copy.
struct WatchingHandler : EventHandler {
    eResult handleEvent(const Event& event) override
    {
        types.push_back(event.type);
        marked.push_back(event.intercepting);
        if (scribble)
            const_cast<Event&>(event).type = 0x1000;
        return result;
    }
    std::vector<unsigned> types;
    std::vector<bool> marked;
    bool scribble = false;
    eResult result = eNotHandled;
};

// The intercept stacks are process-wide: whatever a test puts on, it takes off.
class InterceptStackTest : public ::testing::Test {
protected:
    void TearDown() override
    {
        for (EventHandler* handler : {&early, &late}) {
            getEventInterceptStack(eInterceptFirst).remove(handler);
            getEventInterceptStack(eInterceptNormal).remove(handler);
        }
    }
    WatchingHandler early, late;
};

} // namespace

TEST_F(InterceptStackTest, StackOneGoesFirstAndEachStackSeesItsOwnMarkedCopy)
{
    FilterStack<Event>& normal = getEventInterceptStack(eInterceptNormal);
    FilterStack<Event>& first = getEventInterceptStack(eInterceptFirst);
    EXPECT_NE(&normal, &first);
    EXPECT_EQ(&getEventInterceptStack(7), &normal);
    first.push(&early, mask(0x200));
    normal.push(&late, mask(EVERY_TYPE));
    early.scribble = true; // on its own copy only

    Event press(0x200);
    EXPECT_EQ(event_run_intercept_stacks(press), 0);
    early.result = EventHandler::eCloseApp;
    EXPECT_EQ(event_run_intercept_stacks(press), EventHandler::eCloseApp); // stack 0 not asked
    Event message(0x4001);                                                  // outside the early mask
    EXPECT_EQ(event_run_intercept_stacks(message), 0);

    EXPECT_EQ(early.types, (std::vector<unsigned>{0x200, 0x200}));
    EXPECT_EQ(late.types, (std::vector<unsigned>{0x200, 0x4001})); // not what stack 1 scribbled
    EXPECT_EQ(early.marked, (std::vector<bool>{true, true}));
    EXPECT_EQ(late.marked, (std::vector<bool>{true, true}));
    EXPECT_EQ(press.type, 0x200u);
    EXPECT_FALSE(press.intercepting);
}
