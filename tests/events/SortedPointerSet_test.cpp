#include "tela/core/SortedPointerSet.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <set>
#include <vector>

namespace {

int* key(std::uintptr_t n)
{
    return reinterpret_cast<int*>(n * 16);
}

std::vector<int*> contents(const SortedPointerSet<int*>& set)
{
    std::vector<int*> keys;
    set.forEach([&](int* k) { keys.push_back(k); });
    return keys;
}

} // namespace

// Random births and deaths, in bursts that fill and drain the set, against a
// tree-based set: same answers, same ascending contents, across many splits
// and merges of runs.
TEST(SortedPointerSet, AgreesWithATreeThroughBurstsOfInsertsAndErases)
{
    SortedPointerSet<int*> set;
    std::set<int*> model;
    std::mt19937 random(7);
    std::uniform_int_distribution<std::uintptr_t> pick(1, 5000);
    for (int burst = 0; burst < 8; ++burst) {
        const bool filling = burst % 2 == 0;
        for (int i = 0; i < 6000; ++i) {
            int* k = key(pick(random));
            if (filling == (random() % 4 != 0))
                ASSERT_EQ(set.insert(k), model.insert(k).second);
            else
                ASSERT_EQ(set.erase(k), model.erase(k) == 1);
            ASSERT_EQ(set.contains(k), model.count(k) == 1);
        }
        ASSERT_EQ(set.size(), model.size());
        ASSERT_EQ(contents(set), std::vector<int*>(model.begin(), model.end()));
    }
    for (int* k : std::vector<int*>(model.begin(), model.end()))
        ASSERT_TRUE(set.erase(k));
    EXPECT_TRUE(set.empty());
    EXPECT_FALSE(set.contains(key(1)));
    EXPECT_FALSE(set.erase(key(1)));
}

// Handlers made in address order and dropped oldest first, as a stream of
// deferred actions does: every lookup still finds exactly the live ones.
TEST(SortedPointerSet, AFirstInFirstOutStreamKeepsExactlyTheLiveKeys)
{
    SortedPointerSet<int*> set;
    constexpr std::uintptr_t LIVE = 1000;
    for (std::uintptr_t n = 1; n <= 20000; ++n) {
        ASSERT_TRUE(set.insert(key(n)));
        if (n > LIVE) {
            ASSERT_TRUE(set.erase(key(n - LIVE)));
            ASSERT_FALSE(set.contains(key(n - LIVE)));
        }
        ASSERT_TRUE(set.contains(key(n)));
    }
    EXPECT_EQ(set.size(), LIVE);
    EXPECT_TRUE(set.contains(key(20000 - LIVE + 1)));
}
