#pragma once
// HTMLUtils: colours as the 24-bit numbers of markup and settings, 8 bits a
// channel with red in the high byte; small pieces of markup made from text.

#include "tela/core/LightweightString.h"
#include "tela/core/NormalisedRGB.h"

#include <string_view>

namespace HTMLUtils {

// Channels 0..1 from a 24-bit number; alpha 1. Bits above 24 are ignored.
NormalisedRGB fromHex(unsigned int rgb);
// The nearest 24-bit number; channels outside 0..1 are clamped. Alpha is not kept.
unsigned int toHex(const NormalisedRGB& colour);

// The value of one hexadecimal digit, either case; -1 for any other character.
int hexDigit(char c);
// "rrggbb" or "#rrggbb", either case; false for anything else.
bool parseHex(std::string_view text, unsigned int& rgb);
// Six lower-case hex digits into `out`, which must hold 7 characters.
void formatHex(unsigned int rgb, char out[7]);

// Markup makers. The text goes in as it is, unescaped: they wrap, they do not quote.
constexpr unsigned int NOT_GIVEN = 0xFFFFFFFFu;

// `line`'s `length` characters from `start` (clipped to the line), as a link to
// themselves: <a href="www.x.org">www.x.org</a>. Only the link comes back, not
// the rest of the line. An empty range gives an empty string.
WString addLinkTags(const WString& line, unsigned int start, unsigned int length);
// `text` wrapped for the style bits (1 bold, 2 italic, 4 underlined), the
// 24-bit colour and the font size, each left out when NOT_GIVEN (style 0 is
// none): <font color="#rrggbb" size="12"><b><i><u>text</u></i></b></font>.
WString addStyleTags(const WString& text, unsigned int style, unsigned int colour, unsigned int size);

} // namespace HTMLUtils
