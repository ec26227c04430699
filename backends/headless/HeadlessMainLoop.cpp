#include "headless/HeadlessMainLoop.h"

#include "headless/HeadlessRootWindow.h"
#include "tela/core/Clock.h"

#include <algorithm>
#include <chrono>

void Headless::MainLoop::registerWindow(RootWindow* window)
{
    std::lock_guard lock(m_mutex);
    m_windows.push_back(WindowWakes { window, 0, false, {} });
}

void Headless::MainLoop::unregisterWindow(RootWindow* window)
{
    std::lock_guard lock(m_mutex);
    std::erase_if(m_windows, [window](const WindowWakes& entry) { return entry.window == window; });
    std::erase_if(m_timers, [window](const Timer& timer) { return timer.window == window; });
}

Headless::MainLoop::WindowWakes* Headless::MainLoop::find(RootWindow* window)
{
    const auto found = std::find_if(m_windows.begin(), m_windows.end(),
        [window](const WindowWakes& entry) { return entry.window == window; });
    return found == m_windows.end() ? nullptr : &*found;
}

void Headless::MainLoop::wake(RootWindow* window)
{
    {
        std::lock_guard lock(m_mutex);
        WindowWakes* entry = find(window);
        if (!entry)
            return;
        ++entry->pending;
    }
    m_woken.notify_one();
}

void Headless::MainLoop::script(RootWindow* window, const ScriptedInput& input)
{
    {
        std::lock_guard lock(m_mutex);
        WindowWakes* entry = find(window);
        if (!entry)
            return;
        entry->input.push_back(input);
    }
    m_woken.notify_one();
}

void Headless::MainLoop::schedulePaint(RootWindow* window)
{
    {
        std::lock_guard lock(m_mutex);
        WindowWakes* entry = find(window);
        if (!entry)
            return;
        entry->paint = true;
    }
    m_woken.notify_one();
}

bool Headless::MainLoop::take(Delivery& next)
{
    for (std::size_t step = 0; step < m_windows.size(); ++step) {
        WindowWakes& entry = m_windows[(m_next_window + step) % m_windows.size()];
        if (entry.pending == 0)
            continue;
        --entry.pending;
        next = Delivery { entry.window, Kind::Wake, 0, {} };
        m_next_window = (m_next_window + step + 1) % m_windows.size();
        return true;
    }
    for (WindowWakes& entry : m_windows) {
        if (entry.input.empty())
            continue;
        next = Delivery { entry.window, Kind::Input, 0, entry.input.front() };
        entry.input.pop_front();
        return true;
    }
    for (WindowWakes& entry : m_windows) {
        if (!entry.paint)
            continue;
        entry.paint = false;
        next = Delivery { entry.window, Kind::Paint, 0, {} };
        return true;
    }
    const std::uint64_t now = msecsNow();
    for (Timer& timer : m_timers) {
        if (timer.due > now)
            continue;
        timer.due = now + timer.period;
        next = Delivery { timer.window, Kind::Tick, static_cast<std::uint32_t>(now), {} };
        return true;
    }
    return false;
}

std::uint64_t Headless::MainLoop::addTimer(RootWindow* window, std::uint32_t period)
{
    if (period == 0)
        return 0;
    std::lock_guard lock(m_mutex);
    const std::uint64_t id = m_next_timer_id++;
    m_timers.push_back(Timer { id, window, period, msecsNow() + period });
    m_woken.notify_one();
    return id;
}

void Headless::MainLoop::removeTimer(std::uint64_t id)
{
    std::lock_guard lock(m_mutex);
    std::erase_if(m_timers, [id](const Timer& timer) { return timer.id == id; });
}

long long Headless::MainLoop::sleep_limit() const
{
    long long limit = -1;
    const std::uint64_t now = msecsNow();
    for (const Timer& timer : m_timers) {
        const long long wait = timer.due > now ? static_cast<long long>(timer.due - now) : 0;
        limit = limit < 0 ? wait : std::min(limit, wait);
    }
    return limit;
}

void Headless::MainLoop::deliver(const Delivery& next)
{
    // The window stays alive while its handler runs: only the main thread releases windows.
    const Qv::Ptr<iEventHandler> handler = next.window->eventHandler();
    switch (next.kind) {
    case Kind::Paint: {
        const PaintEvent paint { next.window->takePaintRegion() };
        if (handler)
            handler->handleEvent(paint);
        return;
    }
    case Kind::Input:
        if (handler)
            std::visit([&handler](auto report) {
                // Unstamped reports happen now, by the loop's clock.
                if (report.time == 0)
                    report.time = static_cast<std::uint32_t>(msecsNow());
                handler->handleEvent(report);
            }, next.input);
        return;
    case Kind::Tick:
        if (handler)
            handler->handleEvent(TimerEvent { {next.time} });
        return;
    case Kind::Wake:
        // A wake answered with eHandled closed the application's window.
        if (handler && handler->handleEvent(UserEvent {}) == iEventHandler::eHandled)
            stop();
        return;
    }
}

int Headless::MainLoop::run()
{
    {
        // A stop asked for while no loop ran (the library's shut-down after
        // the loop ended, say) is not meant for this one.
        std::lock_guard lock(m_mutex);
        m_stop_requested = false;
    }
    for (;;) {
        Delivery next;
        {
            std::unique_lock lock(m_mutex);
            while (!m_stop_requested && !take(next)) {
                const long long limit = sleep_limit();
                if (limit < 0)
                    m_woken.wait(lock);
                else
                    m_woken.wait_for(lock, std::chrono::milliseconds(limit));
            }
            if (m_stop_requested && !next.window) {
                m_stop_requested = false;
                return 0;
            }
        }
        deliver(next);
    }
}

void Headless::MainLoop::stop()
{
    {
        std::lock_guard lock(m_mutex);
        m_stop_requested = true;
    }
    m_woken.notify_all();
}

std::size_t Headless::MainLoop::runPending()
{
    std::size_t delivered = 0;
    for (;;) {
        Delivery next;
        {
            std::lock_guard lock(m_mutex);
            if (!take(next))
                return delivered;
        }
        deliver(next);
        ++delivered;
    }
}
