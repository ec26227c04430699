#pragma once
// msecsNow: a monotonic millisecond clock. Tests may replace it with a fake so
// that rules about elapsed time are checked without sleeping.

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
