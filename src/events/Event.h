#pragma once
// Placeholder until the event record lands.
#include <cstdint>
struct Event {
    std::uint32_t type = 0;
};
