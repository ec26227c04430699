#include "tela/core/BackgroundTasks.h"

#include "tela/core/Log.h"
#include "tela/core/NeverDestroyed.h"
#include "tela/core/Shutdown.h"
#include "tela/platform/OS.h"

namespace {

class TaskLog final : public iTaskLog {
public:
    void log(const String& line) override
    {
        CriticalSection::Guard guard(m_lock);
        m_lines.push_back(line);
    }
    Qv::Vector<String> lines() const override
    {
        CriticalSection::Guard guard(m_lock);
        return m_lines;
    }

private:
    mutable CriticalSection m_lock;
    Qv::Vector<String> m_lines;
};

// Background work must be over before the library's state is torn down.
constexpr int DRAIN_PRIORITY = 700;

void drain_at_shutdown(Shutdown::eExitType)
{
    UIBackgroundTasksQueue::instance().drain();
}

} // namespace

BackgroundTaskBase::BackgroundTaskBase() : m_log(Qv::make<TaskLog>()) {}

UIBackgroundTasksQueue& UIBackgroundTasksQueue::instance()
{
    // Never destroyed: a worker may still be finishing when statics go.
    // The drain is registered first, so it is in place before anything is queued.
    static Qv::NeverDestroyed<UIBackgroundTasksQueue> queue = [] {
        Shutdown::addCallback(drain_at_shutdown, DRAIN_PRIORITY);
        return Qv::NeverDestroyed<UIBackgroundTasksQueue>();
    }();
    return *queue;
}

bool UIBackgroundTasksQueue::queue(const Qv::Ptr<iBackgroundTask>& task, bool urgent)
{
    if (!task || Shutdown::isExiting())
        return false;
    CriticalSection::Guard guard(m_lock);
    if (urgent)
        m_tasks.push_front(task);
    else
        m_tasks.push_back(task);
    if (m_working)
        return true;
    join_finished_worker();
    Qv::Ptr<iThread> thread;
    iThreadingService::ThreadStartArgs args;
    args.procedure = &UIBackgroundTasksQueue::work;
    args.argument = this;
    args.name = WString(u"UIBackgroundTasksQueue");
    m_working = true;
    if (!OS()->threading()->createThread(thread, args)) {
        m_working = false;
        m_tasks.pop_back();
        murl_printf("UIBackgroundTasksQueue: could not start a worker thread\n");
        return false;
    }
    m_worker = thread;
    return true;
}

iThread::eExecRC UIBackgroundTasksQueue::work(void* argument)
{
    auto* queue = static_cast<UIBackgroundTasksQueue*>(argument);
    for (;;) {
        Qv::Ptr<iBackgroundTask> task;
        {
            CriticalSection::Guard guard(queue->m_lock);
            if (queue->m_tasks.empty()) {
                queue->m_working = false;
                return iThread::eOK;
            }
            task = queue->m_tasks.front();
            queue->m_tasks.pop_front();
        }
        task->run();
    }
}

void UIBackgroundTasksQueue::join_finished_worker()
{
    if (const Qv::Ptr<iThread> finished = m_worker) {
        m_worker = nullptr;
        finished->join();
    }
}

void UIBackgroundTasksQueue::drain()
{
    for (;;) {
        Qv::Ptr<iThread> worker;
        {
            CriticalSection::Guard guard(m_lock);
            worker = m_worker;
            m_worker = nullptr;
        }
        if (!worker)
            return;
        // Joined outside the lock, which the worker needs to finish.
        worker->join();
    }
}
