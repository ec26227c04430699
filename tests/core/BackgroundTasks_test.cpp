// Background tasks: off the main thread, one at a time, urgent ones first.
#include "tela/core/BackgroundTasks.h"
#include "tela/core/Shutdown.h"
#include "tela/core/Threads.h"

#include <gtest/gtest.h>

#include <atomic>
#include <mutex>
#include <string>
#include <thread>

namespace {

std::mutex s_mutex;
std::string s_ran;

class NamedTask final : public BackgroundTaskBase {
public:
    explicit NamedTask(char name, bool blockUntilStopped = false) : m_name(name), m_block(blockUntilStopped) {}
    void run() override
    {
        started = true;
        while (m_block && !isStopped())
            std::this_thread::yield();
        log()->log(String(isMainThread() ? "main" : "worker"));
        std::lock_guard lock(s_mutex);
        s_ran += m_name;
    }

    std::atomic<bool> started { false };

private:
    char m_name;
    bool m_block;
};

} // namespace

TEST(BackgroundTasks, RunInOrderOnAWorkerWithUrgentOnesFirst)
{
    Shutdown::resetForTesting();
    s_ran.clear();
    UIBackgroundTasksQueue& queue = UIBackgroundTasksQueue::instance();
    // The first task holds the worker until told to stop, so the rest queue up.
    const auto gate = Qv::make<NamedTask>('g', true);
    ASSERT_TRUE(queue.queue(gate, false));
    while (!gate->started)
        std::this_thread::yield();
    const auto a = Qv::make<NamedTask>('a');
    ASSERT_TRUE(queue.queue(a, false));
    ASSERT_TRUE(queue.queue(Qv::make<NamedTask>('b'), false));
    ASSERT_TRUE(queue.queue(Qv::make<NamedTask>('u'), true));
    EXPECT_FALSE(queue.queue(nullptr, false));
    gate->stop();
    queue.drain();
    EXPECT_EQ(s_ran, "guab");
    EXPECT_EQ(a->log()->lines(), (Qv::Vector<String>{String("worker")}));

    // A new worker starts after the last one ended; nothing once exiting.
    ASSERT_TRUE(queue.queue(Qv::make<NamedTask>('c'), false));
    queue.drain();
    EXPECT_EQ(s_ran, "guabc");
    Shutdown::beginShutdown();
    EXPECT_FALSE(queue.queue(Qv::make<NamedTask>('d'), false));
    Shutdown::resetForTesting();
}
