#pragma once
// SystemWatchdog: what the process knows about the main thread's progress.
// The busy monitor reports every heartbeat here, so that a stall can be told
// from the time of the last beat, whether or not the monitor's thread runs.
// Any thread may beat or ask.

#include <cstdint>

namespace SystemWatchdog {

void heartbeat();
// msecsNow() of the latest beat; 0 before the first.
std::uint64_t lastHeartbeat();

} // namespace SystemWatchdog
