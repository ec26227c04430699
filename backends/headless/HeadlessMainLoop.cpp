#include "headless/HeadlessMainLoop.h"

#include "headless/HeadlessRootWindow.h"

#include <algorithm>

void Headless::MainLoop::registerWindow(RootWindow* window)
{
    std::lock_guard lock(m_mutex);
    m_windows.push_back(WindowWakes { window, 0 });
}

void Headless::MainLoop::unregisterWindow(RootWindow* window)
{
    std::lock_guard lock(m_mutex);
    std::erase_if(m_windows, [window](const WindowWakes& entry) { return entry.window == window; });
}

void Headless::MainLoop::wake(RootWindow* window)
{
    {
        std::lock_guard lock(m_mutex);
        const auto found = std::find_if(m_windows.begin(), m_windows.end(),
            [window](const WindowWakes& entry) { return entry.window == window; });
        if (found == m_windows.end())
            return;
        ++found->pending;
    }
    m_woken.notify_one();
}

bool Headless::MainLoop::take_wake(RootWindow*& window)
{
    for (std::size_t step = 0; step < m_windows.size(); ++step) {
        WindowWakes& entry = m_windows[(m_next_window + step) % m_windows.size()];
        if (entry.pending == 0)
            continue;
        --entry.pending;
        window = entry.window;
        m_next_window = (m_next_window + step + 1) % m_windows.size();
        return true;
    }
    return false;
}

void Headless::MainLoop::deliver(RootWindow* window)
{
    // The window stays alive while its handler runs: only the main thread releases windows.
    const Qv::Ptr<iEventHandler> handler = window->eventHandler();
    if (handler)
        handler->handleEvent(UserEvent {});
}

int Headless::MainLoop::run()
{
    for (;;) {
        RootWindow* window = nullptr;
        {
            std::unique_lock lock(m_mutex);
            m_woken.wait(lock, [&] { return m_stop_requested || take_wake(window); });
            if (m_stop_requested && !window) {
                m_stop_requested = false;
                return 0;
            }
        }
        deliver(window);
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
        RootWindow* window = nullptr;
        {
            std::lock_guard lock(m_mutex);
            if (!take_wake(window))
                return delivered;
        }
        deliver(window);
        ++delivered;
    }
}
