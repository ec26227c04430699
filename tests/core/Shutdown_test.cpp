// The way out: callbacks by priority, once, with the exiting flag set first.
#include "tela/core/Shutdown.h"

#include <gtest/gtest.h>

#include <string>

namespace {

std::string s_order;
bool s_exiting_seen = false;

void at_600(Shutdown::eExitType) { s_order += "600 "; s_exiting_seen = Shutdown::isExiting(); }
void at_499(Shutdown::eExitType) { s_order += "499 "; }
void at_499_too(Shutdown::eExitType) { s_order += "499b "; }
void late_300(Shutdown::eExitType) { s_order += "300 "; }
// Adds a callback while the callbacks run: it takes its turn by priority.
void at_100_adds(Shutdown::eExitType type) { s_order += std::to_string(type) + ":100 "; Shutdown::addCallback(late_300, 300); }
void at_50(Shutdown::eExitType) { s_order += "50 "; }

} // namespace

TEST(Shutdown, CallbacksRunOnceHighestPriorityFirstInTheOrderAdded)
{
    Shutdown::resetForTesting();
    s_order.clear();
    Shutdown::addCallback(at_499, 499);
    Shutdown::addCallback(at_100_adds, 100);
    Shutdown::addCallback(at_600, 600);
    Shutdown::addCallback(at_499_too, 499);
    Shutdown::addCallback(at_50, 50);
    Shutdown::addCallback(nullptr, 1000); // reported, ignored
    EXPECT_FALSE(Shutdown::isExiting());
    Shutdown::runCallbacks(Shutdown::eNormalExit);
    EXPECT_EQ(s_order, "600 499 499b 0:100 300 50 ");
    EXPECT_TRUE(s_exiting_seen);
    Shutdown::runCallbacks(Shutdown::eNormalExit);
    EXPECT_EQ(s_order, "600 499 499b 0:100 300 50 "); // nothing runs twice
    Shutdown::resetForTesting();
}
