#pragma once
// Text fitting: a wide string shortened to a pixel width, with ".." (two full
// stops) marking where text was taken out; the default font's character
// lookups; one styled string drawn in the default bold font.
//
// - Widths are measured through iFont and are unsigned 16-bit values; lengths
//   count UTF-16 units, so a cut may fall between the halves of a surrogate pair.
// - The width of ".." is measured each time, with the font in use.
// - Nothing here reports an error: where a string cannot be shortened as
//   asked, it comes back as it was. A null font means the default font, or
//   for fitTextToWidth, no fitting at all.
// Main thread only, as the font table is.

#include "tela/core/LightweightString.h"
#include "tela/core/Ptr.h"
#include "tela/platform/Geometry.h"
#include "tela/platform/GraphicPrimitives.h"
#include "tela/platform/iFont.h"
#include "tela/text/Typeface.h"

#include <vector>

class Canvas;

namespace Tela {

// 0 cuts the end of the text; any other value cuts the middle.
enum eTextShorteningMethod : std::int32_t {
    eShortenEnd = 0,
    eShortenMiddle = 1,
};

// `text` shortened to `width` by cutting its end (blanks before the cut are
// dropped too) or its middle, ".." standing for what was taken out. A text
// that cannot be cut so that anything of it remains comes back unchanged,
// wider than asked.
WString fitTextToWidth(const Qv::Ptr<iFont>& font, const WString& text, unsigned short width,
                       eTextShorteningMethod method);

// The default font's answers (getDefaultFont(0)); with no default font,
// nothing: an empty vector, or a location with index -1.
void analyseString(const WString& text, std::vector<int>& out);
iFont::CharacterLocation locateChar(const WString& text, iFont::eCharSeekMethod method, unsigned short index);
iFont::CharacterLocation getCharInfoForPixelX(const WString& text, int x);

} // namespace Tela

// `text` shortened at its end so that it fits `maxWidth`, with ".." behind it
// when `addEllipsis` is set. Two behaviours callers rely on: a width that
// leaves no room beside ".." (exactly its width) returns the text untouched,
// and a width too narrow for even the first character plus ".." returns the
// whole text with ".." behind it. The search for the cut counts in signed
// 16 bits: in a text longer than 32768 units it starts at the last index
// taken modulo 65536, and finds nothing when that is negative.
WString clipStringToFit(const WString& text, unsigned short maxWidth, bool addEllipsis, Qv::Ptr<iFont> font);

// One folder of a path while clipFilenameToFit works on it.
struct clippedPathComponent {
    WString text;
    bool clipped = false;
};

// `path` made to fit `maxWidth` by taking characters off its folders, one at a
// time from whichever folder is longest (the first on a tie), each clipped
// folder followed by "..". The last component, the file name, is kept whole,
// and so are a leading and a trailing separator. A path without the
// platform's separator, or with more than 255 components, is returned as it is.
WString clipFilenameToFit(const WString& path, unsigned short maxWidth, Qv::Ptr<iFont> font);

// Draws `text` on `canvas` in the default family, bold, at the default size,
// whatever the typeface names: only its colour counts, dimmed to 70%. `pos`
// is where the middle of the line goes. `quality` is not used. Nothing is
// drawn when no font can be had.
void tela_drawTextEx(const WString& text, const XY<int>& pos, Canvas* canvas, const Typeface& typeface,
                     TextAlignment alignment, FontOutputQuality quality);
