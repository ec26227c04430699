#include "tela/core/Threads.h"

#include <atomic>
#include <thread>

namespace {

std::atomic<std::thread::id> main_thread { std::this_thread::get_id() };
std::atomic<int> next_id { 1 };

} // namespace

void co_init()
{
    main_thread.store(std::this_thread::get_id());
}

int co_pid()
{
    if (std::this_thread::get_id() == main_thread.load())
        return 0;
    thread_local const int id = next_id.fetch_add(1);
    return id;
}
