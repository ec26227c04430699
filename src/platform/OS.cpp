#include "platform/OS.h"

#include <atomic>

// Defined by the embedded headless backend.
iOSServices* tela_defaultOSServices();

namespace {
std::atomic<iOSServices*> installed_services { nullptr };
}

iOSServices* OS()
{
    iOSServices* services = installed_services.load(std::memory_order_acquire);
    if (services)
        return services;
    iOSServices* expected = nullptr;
    iOSServices* fallback = tela_defaultOSServices();
    installed_services.compare_exchange_strong(expected, fallback, std::memory_order_acq_rel);
    return installed_services.load(std::memory_order_acquire);
}

bool Tela::installOSServices(iOSServices* services)
{
    if (!services)
        return false;
    iOSServices* expected = nullptr;
    if (installed_services.compare_exchange_strong(expected, services, std::memory_order_acq_rel))
        return true;
    // Only the embedded fallback gives way.
    return expected == tela_defaultOSServices() &&
           installed_services.compare_exchange_strong(expected, services, std::memory_order_acq_rel);
}
