#pragma once
// msecsNow: a monotonic millisecond clock. Tests may replace it with a fake so
// that rules about elapsed time are checked without sleeping.

#include <cstdint>

std::uint64_t msecsNow();

namespace Qv {
// While set, msecsNow returns `milliseconds`. For tests.
void setFakeClock(std::uint64_t milliseconds);
void clearFakeClock();
} // namespace Qv
