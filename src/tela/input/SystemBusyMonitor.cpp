#include "tela/input/SystemBusyMonitor.h"

#include "tela/core/Memory.h"
#include "tela/core/Shutdown.h"
#include "tela/core/SystemWatchdog.h"
#include "tela/input/Cursors.h"
#include "tela/platform/OS.h"

#include <cstdio>
#include <memory>
#include <mutex>

namespace {

constexpr int DEFAULT_TIMEOUT_MS = 500;
constexpr int SHUTDOWN_PRIORITY = 100;

// The instance and the lock that guards the pointer to it: any thread may
// beat the heart while the main thread starts or stops the monitor.
std::mutex s_mutex;
std::unique_ptr<SystemBusyMonitor> s_monitor;

} // namespace

SystemBusyMonitor::SystemBusyMonitor()
{
    // The heartbeat resets itself as the monitor takes it; the stop stays set.
    OS()->threading()->createEvent(heartbeatEvent, false, true, WString());
    OS()->threading()->createEvent(stopEvent, true, false, WString());
}

bool SystemBusyMonitor::start(int timeoutMs)
{
    static std::once_flag registered;
    std::call_once(registered, [] {
        Shutdown::addCallback(&SystemBusyMonitor::shutdown, SHUTDOWN_PRIORITY);
    });
    std::lock_guard lock(s_mutex);
    // Made anew after a stop.
    if (!s_monitor)
        s_monitor = std::make_unique<SystemBusyMonitor>();
    SystemBusyMonitor* monitor = s_monitor.get();
    if (monitor->thread)
        return false;
    monitor->timeoutMs = timeoutMs < 1 ? DEFAULT_TIMEOUT_MS : timeoutMs;
    iThreadingService::ThreadStartArgs args;
    args.procedure = &SystemBusyMonitor::SystemBusyMonitorThreadProc;
    args.argument = monitor;
    args.name = WString(u"SystemBusyMonitor");
    OS()->threading()->createThread(monitor->thread, args);
    return static_cast<bool>(monitor->thread);
}

bool SystemBusyMonitor::stop()
{
    std::unique_ptr<SystemBusyMonitor> monitor;
    {
        std::lock_guard lock(s_mutex);
        monitor = std::move(s_monitor);
    }
    if (!monitor)
        return false;
    const bool was_running = static_cast<bool>(monitor->thread);
    if (monitor->stopEvent)
        monitor->stopEvent->set();
    if (monitor->thread)
        monitor->thread->join();
    return was_running;
}

void SystemBusyMonitor::shutdown(Shutdown::eExitType)
{
    stop();
}

bool SystemBusyMonitor::heartbeat()
{
    // The watchdog hears every beat, also while no monitor runs.
    SystemWatchdog::heartbeat();
    std::lock_guard lock(s_mutex);
    if (!s_monitor || !s_monitor->thread || !s_monitor->heartbeatEvent)
        return false;
    s_monitor->heartbeatEvent->set();
    return true;
}

iThread::eExecRC SystemBusyMonitor::SystemBusyMonitorThreadProc(void* argument)
{
    auto* monitor = static_cast<SystemBusyMonitor*>(argument);
    Qv::Vector<Qv::Ptr<iWaitableEvent>> events;
    events.push_back(monitor->heartbeatEvent);
    events.push_back(monitor->stopEvent);
    bool busy = false;
    for (;;) {
        std::size_t index = 0;
        const auto status = OS()->threading()->waitForEvents(index, events, false,
                                                             static_cast<std::uint32_t>(monitor->timeoutMs));
        if (status == iThreadingService::eTimedOut) {
            busy = true;
            tela_setCursor(BUSY_CURSOR);
        } else if (status == iThreadingService::eSignalled && index == 0) {
            if (busy)
                Tela::updateMouseCursor(false); // the main thread puts the right one back
            busy = false;
        } else if (status == iThreadingService::eSignalled && index == 1) {
            return iThread::eOK;
        } else if (status != iThreadingService::eSignalled) {
            std::fputs("SystemBusyMonitor: Dirty exit!\n", stdout);
            return iThread::eFailed;
        }
    }
}
