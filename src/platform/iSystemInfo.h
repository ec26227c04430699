// iSystemInfo: monitors and the user-interface scale.
#pragma once

#include "core/Memory.h"
#include "platform/Geometry.h"

class iSystemInfo {
public:
    struct MonitorInfo {
        Qv::Rectangle<int> area;        // the whole monitor, desktop coordinates
        Qv::Rectangle<int> workArea;    // less task bars
        bool primary = false;
    };
    virtual void reserved0() {}
    virtual void getMonitors(Qv::Vector<MonitorInfo>& monitors) = 0;
    virtual float uiScale() = 0;        // 1.0 at normal density
protected:
    ~iSystemInfo() = default;
};
