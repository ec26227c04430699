#pragma once
// Thread identity as a small integer: 0 on the main thread, which runs the
// user interface, and 1, 2, ... on other threads in the order they first ask.
//
// The main thread is the one that loaded the library, until co_init names
// another (the application calls it from the thread that runs the loop).

// Makes the calling thread the main thread.
void co_init();
int co_pid();

inline bool isMainThread()
{
    return co_pid() == 0;
}
