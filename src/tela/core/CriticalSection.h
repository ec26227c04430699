// CriticalSection: a re-entrant lock, and its scope guard.
#pragma once

#include <mutex>

class CriticalSection {
public:
    CriticalSection() = default;
    CriticalSection(const CriticalSection&) = delete;
    CriticalSection& operator=(const CriticalSection&) = delete;

    void enter() { m_mutex.lock(); }
    void leave() { m_mutex.unlock(); }
    bool tryEnter() { return m_mutex.try_lock(); }

    // BasicLockable, for std::lock_guard and std::condition_variable_any.
    void lock() { enter(); }
    void unlock() { leave(); }

    // Enters now, leaves at the end of the scope.
    class Guard {
    public:
        explicit Guard(CriticalSection& section) : m_section(section) { m_section.enter(); }
        ~Guard() { m_section.leave(); }
        Guard(const Guard&) = delete;
        Guard& operator=(const Guard&) = delete;
    private:
        CriticalSection& m_section;
    };

private:
    std::recursive_mutex m_mutex;
};
