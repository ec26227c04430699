#pragma once
// Shutdown: the process's way out. Modules add callbacks with a priority; the
// application begins the shut-down (from then on isExiting() holds, and the
// dispatcher frees events without handling them) and runs the callbacks once,
// highest priority first, and in the order they were added within a priority.
//
// Any thread may ask isExiting(). A callback may add callbacks; those added
// while the callbacks run are run in the same pass, in their place.

namespace Shutdown {

enum eExitType : int {
    eNormalExit = 0,
    eAbnormalExit = 1,
};

using Callback = void (*)(eExitType);

void addCallback(Callback callback, int priority);
void beginShutdown();
bool isExiting();
// Begins the shut-down if need be, then runs and forgets every callback.
void runCallbacks(eExitType type);
// Forgets the callbacks and the exiting flag: a test's fresh start.
void resetForTesting();

} // namespace Shutdown
