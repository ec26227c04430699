#pragma once
// Runs a platform's main loop in a test that expects it to end by itself,
// and ends it from outside if it does not, so that a lost quit fails the test
// instead of hanging it.

#include "tela/platform/iWindowingService.h"

#include <atomic>
#include <chrono>
#include <functional>
#include <thread>

// Waits up to `wait_ms` for `started` (polled every 10 ms), then `grace_ms`
// more, for the loop to end; past that ends it. True when it had to be ended.
inline bool run_loop_with_deadline(iWindowingService& windowing, const std::function<bool()>& started, int wait_ms,
                                   int grace_ms)
{
    std::atomic<bool> ended { false }, forced { false };
    std::thread watchdog([&] {
        const auto tick = std::chrono::milliseconds(10);
        for (int waited = 0; waited < wait_ms && !ended && !started(); waited += 10)
            std::this_thread::sleep_for(tick);
        for (int waited = 0; waited < grace_ms && !ended; waited += 10)
            std::this_thread::sleep_for(tick);
        if (!ended) {
            forced = true;
            windowing.shutdownMessageLoop();
        }
    });
    windowing.runMessageLoop();
    ended = true;
    watchdog.join();
    return forced;
}
