#include "tela/core/Clock.h"

#include <atomic>
#include <chrono>
#include <ctime>

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

std::uint64_t msecsNowCoarse()
{
    if (s_fake_active.load(std::memory_order_acquire))
        return s_fake_now.load(std::memory_order_relaxed);
#if defined(CLOCK_MONOTONIC_COARSE)
    // The clock steady_clock reads, as of the last tick, counted from the same
    // start as msecsNow: a reading from boot would make the first gap after
    // start-up look like minutes.
    static const std::uint64_t start = static_cast<std::uint64_t>(
        std::chrono::duration_cast<std::chrono::milliseconds>(process_start().time_since_epoch()).count());
    timespec now{};
    if (clock_gettime(CLOCK_MONOTONIC_COARSE, &now) == 0) {
        const std::uint64_t since_boot =
            static_cast<std::uint64_t>(now.tv_sec) * 1000u + static_cast<std::uint64_t>(now.tv_nsec) / 1'000'000u;
        // The coarse clock may lag the start by part of a tick.
        return since_boot > start ? since_boot - start : 0;
    }
#endif
    return msecsNow();
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
