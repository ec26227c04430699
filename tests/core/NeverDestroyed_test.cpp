#include "tela/core/NeverDestroyed.h"

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

namespace {

std::atomic<int> built { 0 };
std::atomic<int> destroyed { 0 };

struct Tracked {
    explicit Tracked(std::string text) : name(std::move(text)) { ++built; }
    ~Tracked() { ++destroyed; }
    std::string name;
};

Tracked& shared_tracked()
{
    static Qv::NeverDestroyed<Tracked> instance(std::string("first"));
    return *instance;
}

} // namespace

// No exit-time destructor is registered, which is what lets other statics'
// destructors still use the object.
static_assert(std::is_trivially_destructible_v<Qv::NeverDestroyed<std::string>>);

TEST(NeverDestroyedTest, BuildsOnceAcrossThreadsWithItsArguments)
{
    std::vector<std::thread> threads;
    std::atomic<Tracked*> seen[8] {};
    for (auto& slot : seen)
        threads.emplace_back([&slot] { slot = &shared_tracked(); });
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(built.load(), 1);
    for (auto& slot : seen)
        EXPECT_EQ(slot.load(), &shared_tracked());
    EXPECT_EQ(shared_tracked().name, "first");
}

TEST(NeverDestroyedTest, LeavingItsScopeDoesNotDestroyTheObject)
{
    const int before = destroyed.load();
    {
        // Short enough to stay inside the string: nothing on the heap to leak.
        Qv::NeverDestroyed<Tracked> local(std::string("scoped"));
        local->name += "!";
        EXPECT_EQ((*local).name, "scoped!");
    }
    EXPECT_EQ(destroyed.load(), before);
}
