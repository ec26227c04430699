#pragma once
// WordWrappingTextRenderer: wide strings broken into display lines for a pixel
// width, measured, justified and drawn.
//
// - One engine, processString, walks a string once and reports each line to an
//   iStringHandler; measuring (LineAnalyser), collecting (SubStrings), drawing
//   and justification are handlers or callers of it.
// - The string is measured once, by iFont::analyse; lines are found by integer
//   comparisons on those cumulative right edges, which every handler receives by
//   reference, so no line is measured twice.
// - A line breaks behind the last character of a word, before the blank or the
//   hyphen that follows it: a hyphen therefore starts the next line. Blanks at
//   the start of a wrapped line are dropped; blanks behind a newline are kept.
// - Widths, heights and line counts are unsigned 16-bit values and wrap as such:
//   a box 70000 pixels wide wraps at 4464, and the 65536th line counts as 0.
// - A font that gives fewer right edges than there are characters ends the
//   text there; a null font ends it at once.
// All members are static. Main thread only.

#include "tela/colour/Colour.h"
#include "tela/core/LightweightString.h"
#include "tela/core/Memory.h"
#include "tela/core/Ptr.h"
#include "tela/platform/Geometry.h"
#include "tela/platform/GraphicPrimitives.h"
#include "tela/platform/iFont.h"

#include <cstdint>
#include <list>
#include <utility>
#include <vector>

class CanvasRenderer;

namespace Tela {

class FontDesc;

// splitString's flags.
enum eSplitFlags : unsigned {
    skipEmpty = 1,       // pieces between two neighbouring separators are dropped when empty
    honourQuotes = 2,    // separators between double quotes do not split
    keepSeparator = 4,   // every piece but the last keeps the separator behind it
};

// Replaces `list` by the pieces of `text` between the separators and returns
// how many there are. An empty text is one empty piece. A separator at index 0
// of a longer text makes no empty first piece, and a trailing separator no
// empty last piece, whatever the flags. A double quote preceded by a backslash
// opens or closes nothing.
unsigned splitString(const WString& text, wchar_t separator, Qv::Vector<WString>& list, unsigned flags);

class WordWrappingTextRenderer {
public:
    using WS = WString;
    using Strings = Qv::Vector<WString>;

    // The engine's view of one line, as a handler receives it.
    struct PSState {
        std::uint32_t start = 0;           // index of the line's first character in *text
        std::uint32_t length = 0;          // characters in the line
        std::int32_t startPosition = 0;    // right edge of the character before start: the line's origin
        std::vector<int> positions;        // cumulative right edges of the whole string
        bool wrapped = false;              // ended because the width ran out
        std::uint16_t extraSpacing = 0;    // pixels to add behind this piece when justifying
        const WS* text = nullptr;          // not owned
    };

    class iStringHandler {
    public:
        virtual ~iStringHandler() = default;
        virtual void handle(const PSState& state) = 0;
    };

    struct Analysis {
        std::uint16_t numLines = 0;
        std::uint16_t numStrings = 0;
        std::uint16_t maxWidth = 0;
        std::uint16_t minWidth = 0;
    };

    // Reports each line of `text` to `handler`; an empty text reports nothing.
    // The first line is `firstLineIndent` narrower (no room at all when the
    // indent reaches the width). A justified alignment (horizontal 3) hands each
    // wrapped line over as pieces split at its blanks, with the spare width
    // spread over the gaps; the line that ends the text is never justified.
    static void processString(iStringHandler& handler, const WS& text, unsigned short width,
                              const Qv::Ptr<iFont>& font, unsigned short firstLineIndent, TextAlignment alignment);

    // Lines and widths of a text split at its newlines, or of each string.
    // An empty string takes one line of width 0.
    static Analysis analyse(const WS& text, unsigned short width, Qv::Ptr<iFont> font);
    static Analysis analyse(const Strings& text, unsigned short width, Qv::Ptr<iFont> font);
    static unsigned short calcNumDisplayLines(const WS& text, unsigned short width, Qv::Ptr<iFont> font);
    static unsigned short calcNumDisplayLines(const Strings& text, unsigned short width, Qv::Ptr<iFont> font);

    // Draws the wrapped text from the top of `box` down, the first line starting
    // at `firstLineX` (never left of the box) and the others at its left edge.
    // Lines below the box are counted, not drawn. Returns the number of lines,
    // at least 1. A `lineHeight` of 0 takes the font's height.
    static unsigned short renderString(CanvasRenderer& renderer, const WS& text, const Qv::Box<int, Qv::BottomUpTraits>& box,
                                       const Colour& colour, const Qv::Ptr<iFont>& font, unsigned short lineHeight,
                                       unsigned short firstLineX);

    // Draws each string as renderString does, one below the other; only the very
    // first line starts at `firstLineX`, and it keeps the full width. Stops, returning the
    // count so far, before a string that begins with the box already full; the
    // string in progress is counted to its end. No strings: 0.
    static unsigned short renderStrings(CanvasRenderer& renderer, const Strings& text,
                                        const Qv::Box<int, Qv::BottomUpTraits>& box, const Colour& colour,
                                        const Qv::Ptr<iFont>& font, unsigned short lineHeight,
                                        unsigned short firstLineX);

    // The same for a font request: the font comes from the font table (a
    // failed request draws nothing and counts one line). In renderString a
    // `lineHeight` of 0 is the request's own size field, 0 included; in
    // renderStrings it is the request's size, the default size for 0. The
    // forms without a renderer draw on the current canvas, with no clip box.
    static unsigned short renderString(CanvasRenderer& renderer, const WS& text, const Qv::Box<int, Qv::BottomUpTraits>& box,
                                       const Colour& colour, const FontDesc& desc, unsigned short lineHeight,
                                       unsigned short firstLineX);
    static unsigned short renderString(const WS& text, const Qv::Box<int, Qv::BottomUpTraits>& box, const Colour& colour,
                                       const FontDesc& desc, unsigned short lineHeight, unsigned short firstLineX);
    static unsigned short renderStrings(CanvasRenderer& renderer, const Strings& text,
                                        const Qv::Box<int, Qv::BottomUpTraits>& box, const Colour& colour,
                                        const FontDesc& desc, unsigned short lineHeight, unsigned short firstLineX);
    static unsigned short renderStrings(const Strings& text, const Qv::Box<int, Qv::BottomUpTraits>& box,
                                        const Colour& colour, const FontDesc& desc, unsigned short lineHeight,
                                        unsigned short firstLineX);

    // The pixel width of a line, without the blank it wrapped at; 0 for a piece
    // that carries no right edges (a justified one).
    static unsigned short lineWidth(const PSState& state);

private:
    static void justify(iStringHandler& handler, const WS& text, unsigned short width, const Qv::Ptr<iFont>& font,
                        const PSState& line);
};

// Counts lines and keeps the widest and narrowest.
class LineAnalyser : public WordWrappingTextRenderer::iStringHandler {
public:
    void handle(const WordWrappingTextRenderer::PSState& state) override;

    std::uint16_t lineCount = 0;
    std::uint16_t maxWidth = 0;
    std::uint16_t minWidth = 0;
};

// Collects each line as (start, length) in the string.
class SubStrings : public WordWrappingTextRenderer::iStringHandler {
public:
    void handle(const WordWrappingTextRenderer::PSState& state) override;

    Qv::List<std::pair<std::uint32_t, std::uint32_t>> subStrings;
};

} // namespace Tela
