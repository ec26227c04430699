#pragma once
// Integer conversions of the descriptions and the renderer. Coordinates come in
// as doubles or wide sums and leave as 32-bit or 16-bit values that wrap the way
// two's complement does, without the undefined behaviour of an overflowing
// signed sum or of a double too large for an int.

#include <cmath>
#include <cstdint>

namespace render_wrap {

// The low 32 bits, read as signed (a defined conversion since C++20).
constexpr int wrap(long long value)
{
    return static_cast<int>(static_cast<std::uint32_t>(static_cast<unsigned long long>(value)));
}

constexpr int add(int a, long long b)
{
    return wrap(static_cast<long long>(a) + b);
}

// Truncated toward zero; NaN gives 0 and values beyond an int keep their low 32 bits.
inline int to_int(double value)
{
    if (!std::isfinite(value))
        return 0;
    const double truncated = std::trunc(std::fmod(value, 4294967296.0));
    return wrap(static_cast<long long>(truncated));
}

// Truncated, then only the low 16 bits kept and sign-extended.
inline int to_short(double value)
{
    return static_cast<std::int16_t>(static_cast<std::uint16_t>(static_cast<std::uint32_t>(to_int(value))));
}

} // namespace render_wrap
