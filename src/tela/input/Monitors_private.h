#pragma once
// The monitor list inside the library, on the memory seam; Tela::getMonitors
// hands the same list to the application in its own container.

#include "tela/core/Memory.h"
#include "tela/platform/iSystemInfo.h"

namespace Tela {
void getMonitorList(Qv::Vector<iSystemInfo::MonitorInfo>& monitors);
} // namespace Tela
