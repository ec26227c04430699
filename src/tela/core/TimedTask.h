#pragma once
// TimedTaskManager: named pieces of recurring work (a frame, a flush) whose
// stages are timed, so that a slow frame can be told apart into drawing and
// presenting. Each task keeps, per stage, how often it ran and for how long.
//
//     static Qv::TimedTask& task = Qv::TimedTaskManager::instance().task("Frame");
//     Qv::TimedTask::Run run(task);   // first stage, unnamed
//     ...
//     run.stage("present");           // ends the first, begins "present"
//
// Tasks live until the process ends. Any thread; a task's figures are guarded.

#include "tela/core/CriticalSection.h"
#include "tela/core/LightweightString.h"
#include "tela/core/Memory.h"

#include <chrono>
#include <cstdint>

namespace Qv {

class TimedTask {
public:
    struct Stage {
        String name;                 // empty for the first stage of a run
        std::uint64_t runs = 0;
        std::uint64_t totalMicroseconds = 0;
    };

    // Times one run of the task; the current stage ends with the next stage
    // or with the run.
    class Run {
    public:
        explicit Run(TimedTask& task);
        ~Run();
        Run(const Run&) = delete;
        Run& operator=(const Run&) = delete;

        void stage(const char* name);

    private:
        void end_stage();

        TimedTask& m_task;
        String m_stage;
        std::chrono::steady_clock::time_point m_started;
    };

    explicit TimedTask(const char* name) : m_name(name) {}

    const String& name() const { return m_name; }
    // A copy of the figures so far, stages in the order first seen.
    Qv::Vector<Stage> stages() const;

private:
    void record(const String& stage, std::uint64_t microseconds);

    String m_name;
    mutable CriticalSection m_lock;
    Qv::Vector<Stage> m_stages;
};

class TimedTaskManager {
public:
    static TimedTaskManager& instance();
    // The task of that name, made on first request.
    TimedTask& task(const char* name);

private:
    CriticalSection m_lock;
    Qv::List<TimedTask> m_tasks; // a list, so tasks never move
};

} // namespace Qv
