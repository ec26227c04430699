#include "tela/core/Clock.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>
#include <unistd.h>

namespace {

// How long this process has run, in milliseconds, by the kernel's account:
// the system's uptime less the moment the process started.
double process_age_ms()
{
    std::ifstream uptime_file("/proc/uptime");
    double uptime_seconds = 0;
    uptime_file >> uptime_seconds;
    std::ifstream stat_file("/proc/self/stat");
    std::string stat;
    std::getline(stat_file, stat);
    // The command name may hold spaces; the fields after it are plain.
    std::istringstream fields(stat.substr(stat.rfind(')') + 2));
    std::string field;
    for (int index = 3; index < 22; ++index) // the start time is field 22
        fields >> field;
    unsigned long long start_ticks = 0;
    fields >> start_ticks;
    return (uptime_seconds - static_cast<double>(start_ticks) / static_cast<double>(::sysconf(_SC_CLK_TCK))) * 1000.0;
}

} // namespace

TEST(Clock, CountsFromTheStartOfTheProcessAndTestsMayFixIt)
{
    Qv::clearFakeClock();
    const std::uint64_t now = msecsNow();
    // Never more than the process's age (the kernel counts in ticks of 10 ms
    // or so), whatever the machine's uptime.
    EXPECT_LE(static_cast<double>(now), process_age_ms() + 50.0);
    EXPECT_GE(msecsNow(), now);
    // The coarse reading counts from the same start, a tick or so behind.
    EXPECT_LE(static_cast<double>(msecsNowCoarse()), process_age_ms() + 50.0);
    EXPECT_GE(msecsNowCoarse() + 50, now);

    Qv::setFakeClock(1'000'000);
    EXPECT_EQ(msecsNow(), 1'000'000u);
    Qv::clearFakeClock();
    EXPECT_GE(msecsNow(), now);
    EXPECT_LT(msecsNow(), 1'000'000u);
}
