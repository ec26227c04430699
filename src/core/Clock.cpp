#include "core/Clock.h"

#include <atomic>
#include <chrono>

namespace {

std::atomic<bool> s_fake_active{false};
std::atomic<std::uint64_t> s_fake_now{0};

std::chrono::steady_clock::time_point process_start()
{
    static const std::chrono::steady_clock::time_point start = std::chrono::steady_clock::now();
    return start;
}

// Taken while the library loads, so the clock counts from the process's
// start and not from whenever something first asks the time.
[[maybe_unused]] const std::chrono::steady_clock::time_point s_taken_at_load = process_start();

} // namespace

std::uint64_t msecsNow()
{
    if (s_fake_active.load(std::memory_order_acquire))
        return s_fake_now.load(std::memory_order_relaxed);
    const auto since_start = std::chrono::steady_clock::now() - process_start();
    return static_cast<std::uint64_t>(std::chrono::duration_cast<std::chrono::milliseconds>(since_start).count());
}

void Qv::setFakeClock(std::uint64_t milliseconds)
{
    s_fake_now.store(milliseconds, std::memory_order_relaxed);
    s_fake_active.store(true, std::memory_order_release);
}

void Qv::clearFakeClock()
{
    s_fake_active.store(false, std::memory_order_release);
}
