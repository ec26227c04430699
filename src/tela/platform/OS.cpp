#include "tela/platform/OS.h"

#include "tela/platform/Platforms.h"

#include <atomic>

namespace {
std::atomic<iOSServices*> installed_services { nullptr };

// The embedded default: the first platform the build lists.
iOSServices* default_services()
{
    std::size_t count = 0;
    return Tela::builtInPlatforms(count)[0]->services();
}
} // namespace

iOSServices* OS()
{
    iOSServices* services = installed_services.load(std::memory_order_acquire);
    if (services)
        return services;
    iOSServices* expected = nullptr;
    installed_services.compare_exchange_strong(expected, default_services(), std::memory_order_acq_rel);
    return installed_services.load(std::memory_order_acquire);
}

bool Tela::installOSServices(iOSServices* services)
{
    if (!services)
        return false;
    iOSServices* expected = nullptr;
    if (installed_services.compare_exchange_strong(expected, services, std::memory_order_acq_rel))
        return true;
    // Only the embedded default gives way.
    return expected == default_services() &&
           installed_services.compare_exchange_strong(expected, services, std::memory_order_acq_rel);
}
