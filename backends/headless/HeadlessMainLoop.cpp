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
        next = Delivery { entry.window, false };
        m_next_window = (m_next_window + step + 1) % m_windows.size();
        return true;
    }
    for (WindowWakes& entry : m_windows) {
        if (!entry.paint)
            continue;
        entry.paint = false;
        next = Delivery { entry.window, true };
        return true;
    }
    return false;
}

void Headless::MainLoop::deliver(const Delivery& next)
{
    // The window stays alive while its handler runs: only the main thread releases windows.
    const Qv::Ptr<iEventHandler> handler = next.window->eventHandler();
    if (next.paint) {
        const PaintEvent paint { next.window->takePaintRegion() };
        if (handler)
            handler->handleEvent(paint);
        return;
    }
    if (handler)
        handler->handleEvent(UserEvent {});
}

int Headless::MainLoop::run()
{
    for (;;) {
        Delivery next;
        {
            std::unique_lock lock(m_mutex);
            m_woken.wait(lock, [&] { return m_stop_requested || take(next); });
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
