// Waitable events share one process-wide mutex and condition variable: waiting on
// several events at once then needs no per-event registration, and the headless
// backend never has more than a handful of waiters.
#include "headless/HeadlessThreading.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace {

std::mutex& events_mutex()
{
    static std::mutex mutex;
    return mutex;
}

std::condition_variable& events_changed()
{
    static std::condition_variable condition;
    return condition;
}

class WaitableEvent final : public iWaitableEvent {
public:
    WaitableEvent(bool manual_reset, bool signalled) : m_manual_reset(manual_reset), m_signalled(signalled) {}

    void set() override
    {
        {
            std::lock_guard lock(events_mutex());
            m_signalled = true;
        }
        events_changed().notify_all();
    }

    void reset() override
    {
        std::lock_guard lock(events_mutex());
        m_signalled = false;
    }

    // Called with events_mutex held.
    bool isSignalled() const { return m_signalled; }
    void consume()
    {
        if (!m_manual_reset)
            m_signalled = false;
    }

private:
    const bool m_manual_reset;
    bool m_signalled;
};

class Thread final : public iThread {
public:
    explicit Thread(const iThreadingService::ThreadStartArgs& args)
        : m_thread([procedure = args.procedure, argument = args.argument] { procedure(argument); })
    {
    }
    ~Thread() override
    {
        // A thread nobody joined is left to finish on its own.
        if (m_thread.joinable())
            m_thread.detach();
    }
    void join() override
    {
        if (m_thread.joinable() && m_thread.get_id() != std::this_thread::get_id())
            m_thread.join();
    }

private:
    std::thread m_thread;
};

} // namespace

bool Headless::Threading::createEvent(Qv::Ptr<iWaitableEvent>& out, bool manualReset, bool initiallySignalled, const WString&)
{
    out = Qv::make<WaitableEvent>(manualReset, initiallySignalled);
    return true;
}

bool Headless::Threading::createThread(Qv::Ptr<iThread>& out, const ThreadStartArgs& startArgs)
{
    if (!startArgs.procedure)
        return false;
    out = Qv::make<Thread>(startArgs);
    return true;
}

iThreadingService::eWaitResult Headless::Threading::waitForEvents(std::size_t& index,
    const Qv::Vector<Qv::Ptr<iWaitableEvent>>& events, bool waitAll, std::uint32_t timeoutMilliseconds)
{
    if (events.empty())
        return eFailed;
    auto ready = [&] {
        bool all = true;
        for (std::size_t position = 0; position < events.size(); ++position) {
            auto* event = static_cast<WaitableEvent*>(events[position].get());
            if (event->isSignalled() && !waitAll) {
                event->consume();
                index = position;
                return true;
            }
            all = all && event->isSignalled();
        }
        if (!waitAll || !all)
            return false;
        for (const auto& event : events)
            static_cast<WaitableEvent*>(event.get())->consume();
        index = 0;
        return true;
    };

    std::unique_lock lock(events_mutex());
    if (timeoutMilliseconds == INFINITE_WAIT) {
        events_changed().wait(lock, ready);
        return eSignalled;
    }
    return events_changed().wait_for(lock, std::chrono::milliseconds(timeoutMilliseconds), ready) ? eSignalled : eTimedOut;
}

std::uint64_t Headless::Threading::currentThreadId()
{
    return std::hash<std::thread::id>()(std::this_thread::get_id());
}

void Headless::Threading::sleepMs(std::uint32_t milliseconds)
{
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}
