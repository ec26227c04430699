#include "core/Notifier.h"
#include "core/NotifyMsgTypeDictionary.h"

#include "support/LiveBlocks.h"

#include <gtest/gtest.h>

#include <set>
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

TEST(Notifier, listeners_hear_their_channel_and_the_all_types_channel_hears_everything)
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

TEST(Notifier, changes_made_during_an_issue_take_effect_after_it)
{
    Notifier notifier;
    int late_calls = 0, self_removing_calls = 0, survivor_calls = 0;
    Qv::Ptr<Qv::Guard> late_guard, self_guard;
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
            self_guard = nullptr; // removes itself mid-issue
            return 0;
        },
        1);
    auto survivor = notifier.addListener([&](const NotifyMsg&) { return ++survivor_calls; }, 1);

    notifier.issueNotification(NotifyMsg(), 1);
    EXPECT_EQ(late_calls, 0); // added during the issue: hears the next one
    EXPECT_EQ(self_removing_calls, 1);
    EXPECT_EQ(survivor_calls, 1); // the removal did not disturb the walk
    EXPECT_EQ(notifier.numClients(), 3);

    notifier.issueNotification(NotifyMsg(), 1);
    EXPECT_EQ(late_calls, 1);
    EXPECT_EQ(self_removing_calls, 1);
    EXPECT_EQ(survivor_calls, 2);
}

TEST(Notifier, a_guard_released_after_its_notifier_is_harmless_and_nothing_leaks)
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

TEST(Notifier, names_intern_to_one_id_per_name_across_threads)
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
