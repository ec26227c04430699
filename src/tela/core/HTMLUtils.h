#pragma once
// HTMLUtils: colours as the 24-bit numbers of markup and settings, 8 bits a
// channel with red in the high byte.

#include "tela/core/NormalisedRGB.h"

#include <string_view>

namespace HTMLUtils {

// Channels 0..1 from a 24-bit number; alpha 1. Bits above 24 are ignored.
NormalisedRGB fromHex(unsigned int rgb);
// The nearest 24-bit number; channels outside 0..1 are clamped. Alpha is not kept.
unsigned int toHex(const NormalisedRGB& colour);

// "rrggbb" or "#rrggbb", either case; false for anything else.
bool parseHex(std::string_view text, unsigned int& rgb);
// Six lower-case hex digits into `out`, which must hold 7 characters.
void formatHex(unsigned int rgb, char out[7]);

} // namespace HTMLUtils
