#pragma once
// SystemBusyMonitor: shows the busy cursor while the main thread makes no
// progress. The dispatcher beats a heart for every event and tick; a
// monitor thread waits for the beats, and when none comes within the
// time-out it shows the busy cursor (again at each further time-out). The
// next beat asks the main thread to put the right cursor back.
//
// Any thread may beat the heart. Stopped at shut-down.

#include "tela/core/Memory.h"
#include "tela/core/Ptr.h"
#include "tela/core/Shutdown.h"
#include "tela/platform/iThreadingService.h"

class SystemBusyMonitor : public Qv::HeapObject {
public:
    // Starts the monitor thread; a time-out below 1 means 500 ms. False when
    // it already runs, or no thread could be made.
    static bool start(int timeoutMs);
    // Ends the thread and forgets the monitor; false when none ran.
    static bool stop();
    // Reports the beat to the process's SystemWatchdog; true when a running
    // monitor heard it too.
    static bool heartbeat();
    // The shut-down callback the first start registers: stops the monitor.
    static void shutdown(Shutdown::eExitType);

    SystemBusyMonitor();
    SystemBusyMonitor(const SystemBusyMonitor&) = delete;
    SystemBusyMonitor& operator=(const SystemBusyMonitor&) = delete;

private:
    static iThread::eExecRC SystemBusyMonitorThreadProc(void* monitor);

    Qv::Ptr<iThread> thread;
    Qv::Ptr<iWaitableEvent> stopEvent;
    Qv::Ptr<iWaitableEvent> heartbeatEvent;
    int timeoutMs = -1;
};
