#include "tela/core/HTMLUtils.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace {

unsigned int channel_byte(float value)
{
    if (!(value > 0.0f)) // NaN reads as 0
        return 0;
    return static_cast<unsigned int>(std::lround(std::min(value, 1.0f) * 255.0f));
}

int hex_digit(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

} // namespace

NormalisedRGB HTMLUtils::fromHex(unsigned int rgb)
{
    return NormalisedRGB(static_cast<float>((rgb >> 16) & 0xFF) / 255.0f, static_cast<float>((rgb >> 8) & 0xFF) / 255.0f,
                         static_cast<float>(rgb & 0xFF) / 255.0f);
}

unsigned int HTMLUtils::toHex(const NormalisedRGB& colour)
{
    return channel_byte(colour.r) << 16 | channel_byte(colour.g) << 8 | channel_byte(colour.b);
}

bool HTMLUtils::parseHex(std::string_view text, unsigned int& rgb)
{
    if (!text.empty() && text.front() == '#')
        text.remove_prefix(1);
    if (text.size() != 6)
        return false;
    unsigned int value = 0;
    for (const char c : text) {
        const int digit = hex_digit(c);
        if (digit < 0)
            return false;
        value = value << 4 | static_cast<unsigned int>(digit);
    }
    rgb = value;
    return true;
}

void HTMLUtils::formatHex(unsigned int rgb, char out[7])
{
    std::snprintf(out, 7, "%06x", rgb & 0xFFFFFFu);
}
