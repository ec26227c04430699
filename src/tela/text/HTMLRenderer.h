#pragma once
// HTMLRenderer: short pieces of marked-up text (tool tips, help lines,
// messages with links) parsed into paragraphs of styled runs, laid out with
// the word-wrapping engine, drawn, and mapped back from a point to a link.
//
// The markup is a tiny subset, compared exactly (lower-case tags only):
//   p align="left|center|right"   small   u   b strong   i em cite
//   font color="inactive|readonly|subheading|warning|#rrggbb" face="..." size="small"
//   a href="..."
// Anything else is only counted for nesting. Text is taken as it stands:
// entities are not decoded and white space is not collapsed.
//
// - A paragraph begins at every opening tag met at nesting depth 0, not at
//   <p> as such: "<html><p>a</p><p>b</p></html>" is one paragraph. Text in
//   front of the first tag and behind the last is dropped.
// - Only the first run behind <a href> carries the link.
// - Depths are unsigned 16-bit counters and wrap: a stray </a> leaves the
//   text behind it drawn heavy, and the 65536th nested tag opens a paragraph.
// - Paragraphs share their runs when copied; render() writes each run's
//   boxes through that sharing, and getURLAtPosition() reads them.
// All members are static. Main thread only (fonts come from the font table).

#include "tela/colour/Colour.h"
#include "tela/core/LightweightString.h"
#include "tela/core/LightweightVector.h"
#include "tela/core/Memory.h"
#include "tela/platform/Geometry.h"
#include "tela/platform/GraphicPrimitives.h"
#include "tela/text/Fonts.h"

#include <cstdint>
#include <vector>

class CanvasRenderer;
class Palette;

class HTMLRenderer {
public:
    using Box = Qv::Box<int, Qv::BottomUpTraits>;

    // One run of text with one look.
    struct StyledText {
        WString text;
        Tela::FontDesc font;        // textStyle eTextHeavy inside <u> or <a>
        Colour colour;              // fixed from the palette when parsed
        WString url;                // empty: no link
        TextAlignment alignment;    // of the paragraph where the run began
        std::vector<Box> boxes;     // where render() last drew it, one box a line piece
    };

    struct Paragraph {
        LightweightVector<StyledText> runs;
    };

    struct Analysis {
        std::uint16_t numLines = 0;
        std::uint16_t maxWidth = 0;
    };

    // Parsing. Text that isHTML() does not accept gives no paragraphs: the
    // caller shows it some other way.
    static LightweightVector<Paragraph> parse(const String& text, const Palette& palette);
    static LightweightVector<Paragraph> parse(const WString& text, const Palette& palette);
    // Begins with exactly "<html>", or with "<p" (so "<pre>" too); case-sensitive.
    static bool isHTML(const String& text);
    static bool isHTML(const WString& text);

    // Plain text to markup, a <p> a line, unescaped. Flags: bit 0 marks
    // "www." addresses as links, bit 1 restyles words in capitals as bold
    // capitalised words. Text that already begins with "<p>" comes back as it is.
    static String convertToHTML(const WString& text, unsigned int flags);
    static String convertToHTML(const std::vector<WString>& lines, unsigned int flags);

    // Layout. Lines are `lineHeight` apart from the top of `box` down; lines
    // that do not fit are not drawn (one always is). A run goes on along the
    // line where the previous one stopped; a line takes the alignment of the
    // run laid out last on it. Only horizontal 3 in `alignment` changes
    // anything: it justifies wrapped lines. A lineHeight of 0 draws nothing.
    static void render(CanvasRenderer& r, LightweightVector<Paragraph>& paragraphs, const Box& box,
                       unsigned short lineHeight, TextAlignment alignment);
    // Lines (one at least for each paragraph) and the widest line at `width`.
    static Analysis analyse(const LightweightVector<Paragraph>& paragraphs, unsigned short width);
    static unsigned short calcNumDisplayLines(const LightweightVector<Paragraph>& paragraphs, unsigned short width);
    // The width of the widest paragraph laid out on one line.
    static unsigned short calcMaxWidth(const LightweightVector<Paragraph>& paragraphs);
    // The link drawn at `pos` (in the coordinates of render's box, edges
    // included) by the last render(); empty when there is none.
    static WString getURLAtPosition(const XY<int>& pos, const LightweightVector<Paragraph>& paragraphs);

private:
    static Colour getColourFromString(const String& value, const Palette& palette);
    static unsigned int getFontStyleFromTagType(const String& tag);
    static bool isUpperCase(const WString& text, unsigned int start, unsigned int length);

    class StringHandlerBase;
    class LineCalculator;
    class ChunkRenderer;
};
