#include "tela/core/TimedTask.h"
#include "tela/core/NeverDestroyed.h"

#include <algorithm>

Qv::TimedTask::Run::Run(TimedTask& task) : m_task(task), m_started(std::chrono::steady_clock::now()) {}

Qv::TimedTask::Run::~Run()
{
    end_stage();
}

void Qv::TimedTask::Run::stage(const char* name)
{
    end_stage();
    m_stage = String(name);
    m_started = std::chrono::steady_clock::now();
}

void Qv::TimedTask::Run::end_stage()
{
    const auto elapsed = std::chrono::steady_clock::now() - m_started;
    m_task.record(m_stage, static_cast<std::uint64_t>(std::chrono::duration_cast<std::chrono::microseconds>(elapsed).count()));
}

Qv::Vector<Qv::TimedTask::Stage> Qv::TimedTask::stages() const
{
    CriticalSection::Guard guard(m_lock);
    return m_stages;
}

void Qv::TimedTask::record(const String& stage, std::uint64_t microseconds)
{
    CriticalSection::Guard guard(m_lock);
    auto found = std::find_if(m_stages.begin(), m_stages.end(), [&](const Stage& s) { return s.name == stage; });
    if (found == m_stages.end())
        found = m_stages.insert(m_stages.end(), Stage{stage, 0, 0});
    ++found->runs;
    found->totalMicroseconds += microseconds;
}

Qv::TimedTaskManager& Qv::TimedTaskManager::instance()
{
    // Never destroyed: tasks are held by function statics all over the library.
    static Qv::NeverDestroyed<TimedTaskManager> manager;
    return *manager;
}

Qv::TimedTask& Qv::TimedTaskManager::task(const char* name)
{
    CriticalSection::Guard guard(m_lock);
    for (TimedTask& task : m_tasks)
        if (task.name() == name)
            return task;
    return m_tasks.emplace_back(name);
}
