#include "tela/core/Notifier.h"
#include "tela/core/NotifyMsgTypeDictionary.h"

#include "support/LiveBlocks.h"
#include "support/ReportCapture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <atomic>
#include <thread>
#include <vector>

namespace {

struct Counter {
    int calls = 0;
    std::function<int(const NotifyMsg&)> function()
    {
        return [this](const NotifyMsg&) {
            ++calls;
            return 0;
        };
    }
};

} // namespace

TEST(Notifier, ListenersHearTheirChannelAndAllTypesListenersHearEverything)
{
    const int all = NotifyMsgTypeDictionary::instance().allTypesId;
    Notifier notifier;
    Counter eleven, twelve, everything;
    auto g1 = notifier.addListener(eleven.function(), 11);
    auto g2 = notifier.addListener(twelve.function(), 12);
    auto g3 = notifier.addListener(everything.function(), all);
    notifier.issueNotification(NotifyMsg(), 11);
    notifier.issueNotification(NotifyMsg(), 13);
    EXPECT_EQ(eleven.calls, 1);
    EXPECT_EQ(twelve.calls, 0);
    EXPECT_EQ(everything.calls, 2);
    notifier.issueNotification(NotifyMsg(), all); // reaches every listener
    EXPECT_EQ(twelve.calls, 1);
    EXPECT_TRUE(notifier.anyListeners(12));
    EXPECT_TRUE(notifier.anyListeners(99)); // the all-types listener hears 99 too
    g3 = nullptr;
    EXPECT_FALSE(notifier.anyListeners(99));
    EXPECT_EQ(notifier.numClients(), 2);
}

TEST(Notifier, ChangesMadeDuringAnIssueTakeEffectAfterIt)
{
    Notifier notifier;
    int late_calls = 0, self_removing_calls = 0, survivor_calls = 0, removed_calls = 0;
    Qv::Ptr<Qv::Guard> late_guard, self_guard, removed_guard;
    auto adder = notifier.addListener(
        [&](const NotifyMsg&) {
            if (!late_guard)
                late_guard = notifier.addListener([&](const NotifyMsg&) { return ++late_calls; }, 1);
            return 0;
        },
        1);
    self_guard = notifier.addListener(
        [&](const NotifyMsg&) {
            ++self_removing_calls;
            self_guard = nullptr;    // removes itself mid-issue
            removed_guard = nullptr; // and one further down the list, silenced at once
            return 0;
        },
        1);
    auto survivor = notifier.addListener([&](const NotifyMsg&) { return ++survivor_calls; }, 1);
    removed_guard = notifier.addListener([&](const NotifyMsg&) { return ++removed_calls; }, 1);

    notifier.issueNotification(NotifyMsg(), 1);
    EXPECT_EQ(late_calls, 0); // added during the issue: hears the next one
    EXPECT_EQ(self_removing_calls, 1);
    EXPECT_EQ(survivor_calls, 1); // the removals did not disturb the walk
    EXPECT_EQ(removed_calls, 0);
    EXPECT_EQ(notifier.numClients(), 3); // unlinked once the issue ended

    notifier.issueNotification(NotifyMsg(), 1);
    EXPECT_EQ(late_calls, 1);
    EXPECT_EQ(self_removing_calls, 1);
    EXPECT_EQ(survivor_calls, 2);
}

TEST(Notifier, AGuardReleasedAfterItsNotifierIsHarmlessAndNothingLeaks)
{
    const auto before = live_blocks();
    {
        Qv::Ptr<Qv::Guard> outliving;
        {
            Notifier notifier;
            outliving = notifier.addListener([](const NotifyMsg&) { return 0; }, 5);
            auto dropped = notifier.addListener([](const NotifyMsg&) { return 0; }, 5);
        }
        outliving = nullptr;
    }
    EXPECT_EQ(live_blocks(), before);
}

TEST(NotifyMsgTypeDictionary, NamesInternToOneIdPerNameAcrossThreads)
{
    std::vector<std::thread> threads;
    std::vector<std::vector<int>> ids(4);
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&, t] {
            for (int i = 0; i < 50; ++i)
                ids[t].push_back(NotifyMsgTypeDictionary::intern(("channel-" + std::to_string(i)).c_str()));
        });
    for (auto& thread : threads)
        thread.join();
    for (int t = 1; t < 4; ++t)
        EXPECT_EQ(ids[t], ids[0]);
    EXPECT_EQ(std::set<int>(ids[0].begin(), ids[0].end()).size(), 50u);
    EXPECT_EQ(std::count(ids[0].begin(), ids[0].end(), NotifyMsgTypeDictionary::instance().allTypesId), 0);
}

TEST(Notifier, NestedIssuesApplyChangesOnlyWhenTheOutermostEnds)
{
    Notifier notifier;
    int inner_issues = 0, added_calls = 0;
    Qv::Ptr<Qv::Guard> added, transient;
    auto nester = notifier.addListener(
        [&](const NotifyMsg&) {
            if (!added) {
                added = notifier.addListener([&](const NotifyMsg&) { return ++added_calls; }, 2);
                // Added and dropped within one issue: never heard, never kept.
                transient = notifier.addListener([&](const NotifyMsg&) { return ++added_calls; }, 2);
                transient = nullptr;
            }
            return 0;
        },
        1);
    auto relay = notifier.addListener(
        [&](const NotifyMsg&) {
            ++inner_issues;
            notifier.issueNotification(NotifyMsg(), 2); // the new listener is not live yet
            EXPECT_EQ(notifier.numClients(), 4);         // nor is anything unlinked
            return 0;
        },
        1);
    notifier.issueNotification(NotifyMsg(), 1);
    EXPECT_EQ(inner_issues, 1);
    EXPECT_EQ(added_calls, 0);
    EXPECT_EQ(notifier.numClients(), 3);
    notifier.issueNotification(NotifyMsg(), 2);
    EXPECT_EQ(added_calls, 1);
}

TEST(Notifier, AMissingCallbackIsReportedAndRefused)
{
    Notifier notifier;
    ReportCapture reports;
    const Qv::Ptr<Qv::Guard> guard = notifier.registerNotification(Qv::Ptr<iCallbackBase<int, NotifyMsg>>(), 1);
    EXPECT_FALSE(guard);
    EXPECT_EQ(reports.text(), "GenericNotifier::addListener: no callback given\n");
    EXPECT_EQ(notifier.numClients(), 0);
    notifier.issueNotification(NotifyMsg(), 1); // and issuing still works
}

TEST(Notifier, GuardsReleasedOnOtherThreadsDuringIssuesLeaveAConsistentList)
{
    Notifier notifier;
    std::atomic<int> heard{0};
    std::vector<Qv::Ptr<Qv::Guard>> guards;
    for (int i = 0; i < 64; ++i)
        guards.push_back(notifier.addListener([&](const NotifyMsg&) { return ++heard; }, 1));
    std::thread releaser([&] {
        for (auto& guard : guards)
            guard = nullptr;
    });
    for (int i = 0; i < 200; ++i)
        notifier.issueNotification(NotifyMsg(), 1);
    releaser.join();
    EXPECT_EQ(notifier.numClients(), 0);
    EXPECT_FALSE(notifier.anyListeners(1));
}

namespace {
struct Recorder {
    int last = 0;
    int record(const NotifyMsg& message)
    {
        last = message.type();
        return 7;
    }
};
} // namespace

TEST(Callback, MethodAndFunctionCallbacksRunThroughExecute)
{
    Recorder recorder;
    const auto method = Qv::makeCallback(&recorder, &Recorder::record);
    EXPECT_EQ(method->execute(NotifyMsg(String("m"), 42)), 7);
    EXPECT_EQ(recorder.last, 42);
    const auto empty = Qv::makeCallback<int, NotifyMsg>(std::function<int(const NotifyMsg&)>());
    EXPECT_EQ(empty->execute(NotifyMsg()), 0); // an empty function is a no-op, not a crash
}
