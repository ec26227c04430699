// iSystemInfo: monitors and the user-interface scale.
#pragma once

#include "tela/core/LightweightString.h"
#include "tela/core/Memory.h"
#include "tela/platform/Geometry.h"

#include <cstdint>

class iSystemInfo {
public:
    struct MonitorInfo {
        Qv::Box<int> screenBox;         // the whole monitor, desktop coordinates
        Qv::Box<int> desktopBox;        // what windows may cover: less task bars
        std::uint16_t isPrimary = 0;
        std::uint16_t reserved = 0;
        String name;
        float scale = 1.0f;             // 1.0 at normal density
    };
    virtual void reserved0() {}
    virtual void getMonitors(Qv::Vector<MonitorInfo>& monitors) = 0;
    virtual float uiScale() = 0;        // 1.0 at normal density
protected:
    ~iSystemInfo() = default;
};
