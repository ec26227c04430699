#include "tela/core/IdStamp.h"

#include <atomic>

IdStamp IdStamp::fresh()
{
    // 64 bits of serial split over two words: a stamp never repeats within a run.
    static std::atomic<std::uint64_t> next_serial { 1 };
    const std::uint64_t serial = next_serial.fetch_add(1, std::memory_order_relaxed);
    constexpr std::uint32_t process = 1;   // keeps every fresh stamp valid, even at serial 0
    return IdStamp(process, static_cast<std::uint32_t>(serial), static_cast<std::uint32_t>(serial >> 32));
}
