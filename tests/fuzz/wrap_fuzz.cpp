// processString on any text, width, first-line indent and alignment, with fonts
// of fixed advances so that every run is fast and repeatable. What the wrapping
// rules guarantee, and is checked here:
// - every line lies inside the measured text, the lines come in order, and what
//   lies between two lines (or behind the last) is nothing, blanks, or the one
//   newline that ended the line before: no character is lost or shown twice;
// - a line that wrapped fits its width (the first line's shortened by the indent),
//   but for its last character, which may be the one the line before overflowed
//   on; the tail that ends the text is not measured, so it may not fit at all;
// - justifying changes only the wrapped lines: each is reported as it is, or as
//   pieces holding the same non-blank characters, whose extra spacing adds up to
//   the width the line left free (in 16 bits, as widths are).
// Widths, indents and counts are 16-bit and wrap as such; nothing here assumes
// otherwise.
//
// Input: mode (1 byte: bit 0 justified, bits 1-2 the font), width (2 bytes),
// indent (2 bytes), how many characters a giving-up font measures (2 bytes), then
// the text (see FuzzInput.h).

#include "fuzz/FuzzInput.h"
#include "text/FixedFont.h"

#include "tela/text/WordWrappingTextRenderer.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace {

using Fuzz::check;
using Tela::WordWrappingTextRenderer;
using PSState = WordWrappingTextRenderer::PSState;

// Advances that differ from unit to unit, zero included, and '@' wider than any line.
class UnitFont final : public iFont {
public:
    static int advance(char16_t unit) { return unit == u'@' ? 70000 : static_cast<int>((unit * 2654435761u) >> 28); }

    const Metrics& getMetrics() const override { return m_metrics; }
    unsigned int getStyle() const override { return 0; }
    void analyse(const WString& text, std::vector<int>& edges) const override
    {
        edges.clear();
        int edge = 0;
        for (const char16_t unit : text.view())
            edges.push_back(edge += advance(unit));
    }
    XY<int> getTextExtent(const WString& text, unsigned count) const override
    {
        std::vector<int> edges;
        analyse(text, edges);
        return {edges.empty() || count == 0 ? 0 : edges[std::min<std::size_t>(count, edges.size()) - 1], 16};
    }
    CharacterLocation locateChar(const WString&, eCharSeekMethod, unsigned short) const override { return {}; }
    CharacterLocation getCharInfoForPixelX(const WString&, int) const override { return {}; }

private:
    Metrics m_metrics {10, 3, 16};
};

struct Seen {
    bool own = false;   // indexes the text given, rather than a justified piece
    PSState state;      // text and positions left out
    std::u16string characters;
    std::size_t positions = 0;
    unsigned short width = 0;   // lineWidth: what justifying spreads the rest of the width by
};

struct Collector final : WordWrappingTextRenderer::iStringHandler {
    explicit Collector(const WString& text) : m_text(&text) {}
    void handle(const PSState& state) override
    {
        check(state.text != nullptr, "a line names its text");
        check(std::size_t(state.start) + state.length <= state.text->size(), "a line lies inside its text");
        Seen seen;
        seen.width = WordWrappingTextRenderer::lineWidth(state);
        seen.own = state.text == m_text;
        seen.state.start = state.start;
        seen.state.length = state.length;
        seen.state.startPosition = state.startPosition;
        seen.state.wrapped = state.wrapped;
        seen.state.extraSpacing = state.extraSpacing;
        seen.characters = state.text->view().substr(state.start, state.length);
        seen.positions = state.positions.size();
        lines.push_back(std::move(seen));
    }
    std::vector<Seen> lines;

private:
    const WString* m_text;
};

bool onlyBlanks(std::u16string_view text)
{
    return text.find_first_not_of(u' ') == std::u16string_view::npos;
}

std::u16string nonBlank(std::u16string_view text)
{
    std::u16string kept;
    for (const char16_t unit : text)
        if (unit != u' ')
            kept += unit;
    return kept;
}

bool same(const Seen& a, const Seen& b)
{
    return a.own == b.own && a.state.start == b.state.start && a.state.length == b.state.length
        && a.state.startPosition == b.state.startPosition && a.state.wrapped == b.state.wrapped
        && a.state.extraSpacing == b.state.extraSpacing;
}

void checkLeftAligned(const std::vector<Seen>& lines, const std::u16string& text, const std::vector<int>& edges,
                      unsigned short width, unsigned short indent)
{
    const std::size_t n = std::min(edges.size(), text.size());
    if (n == 0) {
        check(lines.empty(), "nothing measured, no lines");
        return;
    }
    check(!lines.empty(), "a measured text gives a line");
    check(lines.size() <= n + 1, "no more lines than characters and one");
    std::size_t end = 0;
    for (std::size_t k = 0; k < lines.size(); ++k) {
        const PSState& line = lines[k].state;
        check(lines[k].own, "unjustified lines index the text given");
        check(lines[k].positions == edges.size(), "every line carries the font's edges");
        check(line.extraSpacing == 0, "no extra spacing unless justified");
        check(std::size_t(line.start) + line.length <= n, "a line lies inside the measured text");
        check(line.start >= end, "lines come in order and do not overlap");
        const std::u16string_view gap = std::u16string_view(text).substr(end, line.start - end);
        check(k == 0 ? gap.empty() : gap == u"\n" || onlyBlanks(gap),
              "between lines lie only blanks or the newline that ended a line");
        const std::int64_t origin = line.start > 0 ? edges[line.start - 1] : 0;
        check(line.startPosition == static_cast<std::int32_t>(origin), "a line's origin is the edge before it");
        if (line.wrapped && line.length > 1) {
            // Its last character may be the one the line before overflowed on, which
            // was measured against that line and is not measured again.
            const std::int64_t avail = k > 0 ? width : indent < width ? width - indent : 0;
            check(edges[line.start + line.length - 2] - origin <= avail, "a wrapped line fits its width");
        }
        end = std::size_t(line.start) + line.length;
    }
    const std::u16string_view rest = std::u16string_view(text).substr(end, n - end);
    check(rest.empty() || rest == u"\n", "the lines reach the end of the measured text");
}

void checkJustified(const std::vector<Seen>& plain, const std::vector<Seen>& justified, unsigned short width)
{
    std::size_t j = 0;
    for (const Seen& line : plain) {
        check(j < justified.size(), "justifying drops no line");
        if (!line.state.wrapped || justified[j].own) {
            check(same(justified[j], line), "a line justifying leaves alone is reported as it is");
            ++j;
            continue;
        }
        // The pieces of one wrapped line, up to the one marked wrapped.
        std::u16string joined;
        unsigned spacing = 0;
        std::size_t pieces = 0;
        for (;; ++j, ++pieces) {
            check(j < justified.size() && !justified[j].own, "a justified line ends with its last piece");
            const Seen& piece = justified[j];
            check(piece.state.start == 0 && piece.positions == 0, "a piece is its own text, unmeasured");
            joined += piece.characters;
            spacing += piece.state.extraSpacing;
            if (piece.state.wrapped) {
                check(piece.state.extraSpacing == 0, "the last piece gets no extra spacing");
                ++j;
                ++pieces;
                break;
            }
        }
        check(pieces >= 2, "a line is split only into two pieces or more");
        check(nonBlank(joined) == nonBlank(line.characters), "pieces hold the line's characters");
        const unsigned spare = line.width < width ? width - line.width : 0;
        check(spacing == spare, "the free width is spread in full");
    }
    check(j == justified.size(), "justifying adds no line");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Fuzz::Input input(data, size);
    const std::uint8_t mode = input.byte();
    const unsigned short width = input.u16();
    const unsigned short indent = input.u16();
    const std::uint16_t measured = input.u16();
    const std::u16string units = input.text();
    const WString text(units);

    Qv::Ptr<iFont> font;
    switch ((mode >> 1) & 3) {
    case 0: font = Qv::make<TextTest::FixedFont>(); break;
    case 1: font = Qv::make<TextTest::FixedFont>(measured % (units.size() + 2)); break;
    case 2: font = Qv::make<UnitFont>(); break;
    default: break;   // no font: nothing is measured
    }
    std::vector<int> edges;
    if (font)
        font->analyse(text, edges);

    Collector plain(text);
    WordWrappingTextRenderer::processString(plain, text, width, font, indent, {0, 1});
    checkLeftAligned(plain.lines, units, edges, width, indent);

    if (mode & 1) {
        Collector justified(text);
        WordWrappingTextRenderer::processString(justified, text, width, font, indent, {3, 1});
        checkJustified(plain.lines, justified.lines, width);
    }

    Tela::LineAnalyser analyser;
    WordWrappingTextRenderer::processString(analyser, text, width, font, indent, {0, 1});
    check(analyser.lineCount == static_cast<std::uint16_t>(plain.lines.size()), "the analyser counts every line");
    WordWrappingTextRenderer::calcNumDisplayLines(text, width, font);
    return 0;
}
