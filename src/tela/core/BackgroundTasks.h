#pragma once
// Background tasks: work taken off the user-interface thread, run one at a
// time, in the order queued (urgent ones first), on a worker thread the
// queue starts when there is work and lets end when there is none.
//
// A task is asked to stop by stop(); it checks isStopped() at points of its
// choosing. Tasks report progress into their log, which any thread may read.

#include "tela/core/CriticalSection.h"
#include "tela/core/LightweightString.h"
#include "tela/core/Memory.h"
#include "tela/core/NeverDestroyed.h"
#include "tela/core/Ptr.h"
#include "tela/platform/iThreadingService.h"

#include <atomic>

// What the body of a background task reports: 1 when it ran to its end.
using QvResult = int;

class iTaskLog : public virtual iObject {
public:
    virtual void log(const String& line) = 0;
    virtual Qv::Vector<String> lines() const = 0;
};

class iBackgroundTask : public virtual iObject {
public:
    virtual void run() = 0;
    virtual void stop() = 0;
    virtual Qv::Ptr<iTaskLog> log() const = 0;
};

class BackgroundTaskBase : public iBackgroundTask {
public:
    BackgroundTaskBase();
    void stop() override { m_stopped = true; }
    bool isStopped() const { return m_stopped; }
    Qv::Ptr<iTaskLog> log() const override { return m_log; }

private:
    std::atomic<bool> m_stopped { false };
    Qv::Ptr<iTaskLog> m_log;
};

class UIBackgroundTasksQueue {
public:
    static UIBackgroundTasksQueue& instance();

    // False, and nothing queued, for a null task or once the shut-down began.
    bool queue(const Qv::Ptr<iBackgroundTask>& task, bool urgent);
    // Waits until every queued task has run and the worker has ended.
    void drain();

private:
    friend class Qv::NeverDestroyed<UIBackgroundTasksQueue>; // the one instance is built by instance()
    UIBackgroundTasksQueue() = default;
    static iThread::eExecRC work(void* queue);
    void join_finished_worker();

    CriticalSection m_lock;
    Qv::Deque<Qv::Ptr<iBackgroundTask>> m_tasks;
    Qv::Ptr<iThread> m_worker;   // the thread, until joined
    bool m_working = false;      // the worker is taking tasks
};
