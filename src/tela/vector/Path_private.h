#pragma once
// The path buffers as the scan converter reads them. Not for applications.

#include <cstdint>

namespace PathCodes {
constexpr std::uint8_t MOVE = 0;
constexpr std::uint8_t LINE = 1;
constexpr std::uint8_t CURVE_CONTROL = 2; // two of these, then CURVE_END
constexpr std::uint8_t CURVE_END = 3;
constexpr std::uint8_t CLOSE = 4; // stores the subpath's first point
} // namespace PathCodes

constexpr int PATH_CAPACITY = 500;

// The stored entries. `x` and `y` are device coordinates and may be written:
// the scan converter moves them to its table's origin in place and then
// empties the path. `count` never exceeds PATH_CAPACITY here; without
// buffers (path_init not run, or failed) it is 0 and the pointers are null.
struct PathEntries {
    const std::uint8_t* codes;
    double* x;
    double* y;
    int count;
};
PathEntries path_entries();
