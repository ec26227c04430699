#pragma once
// FuzzInput: a fuzzer's bytes read as parameters and then text.
//
// - Parameters come first, little-endian; past the end of the input they read as 0.
// - The rest is text, one UTF-16 unit a byte so that blanks, hyphens, newlines and
//   quotes are one mutation away; the byte 0xFF takes the two bytes after it as a
//   raw unit, which reaches surrogates (paired or lone) and every other unit.
// - check() stops the run with the broken rule's name, which libFuzzer records with
//   the input that broke it.

#include "tela/core/LightweightString.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace Fuzz {

class Input {
public:
    Input(const std::uint8_t* data, std::size_t size) : m_data(data), m_size(size) {}

    std::uint8_t byte() { return m_at < m_size ? m_data[m_at++] : 0; }
    std::uint16_t u16()
    {
        const std::uint16_t low = byte();
        return static_cast<std::uint16_t>(low | (byte() << 8));
    }

    // Everything not yet read, as text.
    std::u16string text()
    {
        std::u16string units;
        while (m_at < m_size) {
            const std::uint8_t next = m_data[m_at++];
            units += next == 0xFF ? static_cast<char16_t>(u16()) : static_cast<char16_t>(next);
        }
        return units;
    }

private:
    const std::uint8_t* m_data;
    std::size_t m_size;
    std::size_t m_at = 0;
};

inline void check(bool holds, const char* rule)
{
    if (holds)
        return;
    std::fprintf(stderr, "broken: %s\n", rule);
    std::abort();
}

} // namespace Fuzz
