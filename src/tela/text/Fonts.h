#pragma once
// Fonts: a request (name, size, style) becomes a live iFont through a small
// table, so that the same request never builds a second font; the default
// font's name and size; the size at which another family looks as wide as the
// default one.
//
// - Main thread only: the table and the defaults take no lock.
// - The table holds at most TABLE_LIMIT entries. A full table is emptied, not
//   trimmed: fonts callers still hold stay alive through their own references,
//   and only the sharing with later requests is lost.
// - An entry belongs to the root window it was made through (by the window's
//   identity), or to none; the same request through two windows gives two fonts.
// - A request that cannot be met is reported and tried once more under the
//   default font's name; only when that fails too does the caller get null.

#include "tela/core/LightweightString.h"
#include "tela/core/Memory.h"
#include "tela/core/Ptr.h"
#include "tela/core/RefCount.h"
#include "tela/platform/iFont.h"
#include "tela/platform/iRootWindow.h"
#include "tela/render/Descriptions.h"

#include <cstdint>
#include <set>

namespace Tela {

class FontDesc {
public:
    enum : std::uint32_t { eBold = 1, eItalic = 2 };

    FontDesc() = default;
    FontDesc(const String& fontName, unsigned short fontSize, unsigned int fontStyle)
        : style(fontStyle), name(fontName), size(fontSize)
    {
    }

    // The text style is a matter of drawing and takes no part in the comparison.
    bool operator==(const FontDesc& other) const
    {
        return style == other.style && name == other.name && size == other.size;
    }
    // The size, or the default size when none was asked for.
    unsigned short getSize() const;

    std::uint32_t style = 0;          // eBold, eItalic
    eTextStyle textStyle = eTextPlain;
    String name;                      // empty: the default font's name
    std::uint16_t size = 0;           // 0: the default size
};

} // namespace Tela

// One font the table made, with the metrics read when it was made.
class GFONT : public iObject {
public:
    String name;
    std::uint32_t size = 0;
    std::int32_t variant = 0;         // always 0 from this library
    std::uint16_t height = 0;
    std::int16_t ascent = 0;
    std::int16_t negatedDescent = 0;  // the descent as an upward offset
    std::int16_t baseline = 0;        // from the top of a line to its baseline: the ascent
    Qv::Ptr<iFont> font;
    std::uint32_t windowId = 0;       // the owning root window's identity; 0 for none
};

namespace Tela {

constexpr std::size_t FONT_TABLE_LIMIT = 100;
constexpr unsigned short INITIAL_DEFAULT_FONT_SIZE = 16;

// The font for `desc` made through `window`, or through the root canvas's
// window when `window` is null. Null only when neither the font nor the default
// family at the same size and style can be had.
Qv::Ptr<iFont> loadFont(const FontDesc& desc, const Qv::Ptr<iRootWindow>& window);
Qv::Ptr<iFont> loadFont(const String& name, unsigned short size, unsigned int style);
// The default family at the default size, in `style`.
Qv::Ptr<iFont> getDefaultFont(unsigned int style);

// The families the platform can make fonts of, for a font picker. Names that
// differ only in case are one family.
void getAvailableFonts(std::set<WString, WString::ICompare>& out);

// The size at which the family `name` sets a fixed sentence at least as wide
// as the default font does, so that a substitute family looks neither larger
// nor smaller. Worked out once per name and kept; the default font's width is
// measured once, and neither is revisited when the default font changes.
unsigned short mapFontSize(const String& name);

// Every table entry released (at shut-down, or when the default name changes).
void releaseAllFonts();
// The scale factor kept for the application's own use: 1.0 and its counter 0.
void resetFontScale();
// The fonts the table holds now, oldest first: what the tests look at.
const Qv::Vector<Qv::Ptr<GFONT>>& fontTable();

} // namespace Tela

// The default font's name, with "-b" appended for style bit 0 and then "-i" for
// bit 1. Until one is set it comes from the "Default font name" preference, or
// else from the platform (which is not written back to the preferences).
String getDefaultFontName(unsigned int style);
// Stores the name and the preference; the table is emptied, since its fonts
// were made for the old default. The same name again does nothing.
void setDefaultFontName(String name);
// The size a request of size 0 gets; 16 until set. Setting it leaves the
// fonts already made as they are.
unsigned short getDefaultFontSize();
void setDefaultFontSize(unsigned short size);

// How far down from the top of a line of `lineHeight` pixels text in `font` is
// placed to sit in the middle: half of what is left above the ascent, in 16
// bits. 0 for a null font.
unsigned short getFontYOffset(unsigned short lineHeight, const Qv::Ptr<iFont>& font);
unsigned short getFontYOffset(unsigned short lineHeight, const Tela::FontDesc& desc);
