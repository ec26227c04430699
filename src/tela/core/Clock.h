#pragma once
// msecsNow: a monotonic millisecond clock that starts near 0 when the process
// starts. Times kept in 32 bits (event stamps, the last receive) thus wrap only
// after 49 days of running, and one that starts at 0 is never mistaken for a
// moment long past on a machine that has been up for weeks.
// Tests may replace it with a fake so that rules about elapsed time are
// checked without sleeping.

#include <cstdint>

std::uint64_t msecsNow();
// The same clock read at the system's tick resolution (a few milliseconds), at
// a fraction of the cost: for rules about gaps of seconds checked on hot
// paths. Follows the fake clock like msecsNow.
std::uint64_t msecsNowCoarse();

namespace Qv {
// While set, msecsNow returns `milliseconds`. For tests.
void setFakeClock(std::uint64_t milliseconds);
void clearFakeClock();
} // namespace Qv
