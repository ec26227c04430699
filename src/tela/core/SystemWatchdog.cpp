#include "tela/core/SystemWatchdog.h"

#include "tela/core/Clock.h"

#include <atomic>

namespace {
std::atomic<std::uint64_t> last_beat { 0 };
}

void SystemWatchdog::heartbeat()
{
    last_beat.store(msecsNow(), std::memory_order_relaxed);
}

std::uint64_t SystemWatchdog::lastHeartbeat()
{
    return last_beat.load(std::memory_order_relaxed);
}
