#include "tela/text/WordWrappingTextRenderer.h"

#include "tela/canvas/Canvas.h"
#include "tela/core/Log.h"
#include "tela/render/CanvasRenderer.h"
#include "tela/render/Descriptions.h"
#include "tela/text/Fonts.h"

#include <algorithm>

namespace Tela {

namespace {

constexpr char16_t NEWLINE = 10;
constexpr char16_t BLANK = 32;
constexpr char16_t DOUBLE_QUOTE = 34;
constexpr char16_t HYPHEN = 45;
constexpr char16_t BACKSLASH = 92;

// Lines are always laid out left-aligned; justification is done by the engine.
constexpr TextAlignment LEFT_ALIGNED {0, 1};
constexpr std::uint32_t JUSTIFIED = 3;

bool breaksBefore(char16_t unit)
{
    return unit == BLANK || unit == HYPHEN;
}

// The line height to use: the caller's, else the font's. 0 when neither has
// one, which leaves nothing drawable.
unsigned short resolveLineHeight(unsigned short lineHeight, const Qv::Ptr<iFont>& font)
{
    if (lineHeight == 0 && font)
        lineHeight = font->getMetrics().height;
    if (lineHeight == 0)
        tela_splat("WordWrappingTextRenderer: no line height and no font to take one from; nothing is drawn");
    return lineHeight;
}

// A box's extent as the 16-bit value the layout works in, worked out wide so
// that no box, however far apart its edges, overflows on the way.
unsigned short extent16(int low, int high)
{
    return static_cast<unsigned short>(std::int64_t(high) - low);
}

// Line k's baseline, down from the box's top; wraps like the renderer's own
// coordinates rather than overflowing.
int baselineOf(std::size_t k, int yOffset, unsigned short lineHeight, int top)
{
    return static_cast<int>(static_cast<std::uint32_t>(std::int64_t(yOffset) - std::int64_t(k + 1) * lineHeight + top));
}

void drawLine(CanvasRenderer& renderer, const WString& text, std::uint32_t start, std::uint32_t length, int x, int y,
              const NormalisedRGB& colour, const Qv::Ptr<iFont>& font)
{
    renderer.render(TextDescription(text.substr(start, length), XY<int>(x, y), colour, LEFT_ALIGNED, font));
}

} // namespace

unsigned splitString(const WString& text, wchar_t separator, Qv::Vector<WString>& list, unsigned flags)
{
    list.clear();
    if (text.empty()) {
        list.push_back(text);
        return 1;
    }
    const char16_t split = static_cast<char16_t>(separator);
    const bool quotesHide = (flags & honourQuotes) != 0 && split != DOUBLE_QUOTE;
    const std::size_t keep = (flags & keepSeparator) != 0 ? 1 : 0;
    const std::size_t size = text.size();

    Qv::Vector<std::size_t> separators;
    bool inQuotes = false;
    for (std::size_t index = 0; index < size; ++index) {
        const char16_t unit = text[index];
        if (unit == DOUBLE_QUOTE && split != DOUBLE_QUOTE && !(index > 0 && text[index - 1] == BACKSLASH))
            inQuotes = !inQuotes;
        if (unit == split && !(quotesHide && inQuotes))
            separators.push_back(index);
    }
    if (separators.empty()) {
        list.push_back(text);
        return 1;
    }

    // A leading separator of a longer text opens no empty piece, skipEmpty or not.
    if (!(separators.front() == 0 && size > 1))
        list.push_back(text.substr(0, separators.front() + keep));
    for (std::size_t k = 1; k < separators.size(); ++k) {
        const std::size_t from = separators[k - 1] + 1;
        const std::size_t count = separators[k] - from;
        if (count == 0 && (flags & skipEmpty) != 0)
            continue;
        list.push_back(text.substr(from, count + keep));
    }
    if (separators.back() != size - 1)
        list.push_back(text.substr(separators.back() + 1));
    return static_cast<unsigned>(list.size());
}

void WordWrappingTextRenderer::processString(iStringHandler& handler, const WS& text, unsigned short width,
                                             const Qv::Ptr<iFont>& font, unsigned short firstLineIndent,
                                             TextAlignment alignment)
{
    if (text.empty())
        return;
    PSState state;
    state.text = &text;
    if (font)
        font->analyse(text, state.positions);
    const std::vector<int>& positions = state.positions;
    // A font that measured fewer characters ends the text there; indices are
    // 32-bit, so a longer text ends at their limit.
    const std::size_t n = std::min({positions.size(), text.size(), std::size_t(UINT32_MAX)});
    if (n == 0)
        return;
    const std::size_t last = n - 1;
    const bool justified = alignment.horizontal == JUSTIFIED;

    unsigned short avail = firstLineIndent < width ? static_cast<unsigned short>(width - firstLineIndent) : 0;
    std::size_t start = 0;
    std::size_t length = 0;
    std::size_t candidate = 0;   // length up to the latest break opportunity; 0: none yet
    std::int64_t startPosition = 0;
    // Characters from the line's start up to `end`; none when the line starts
    // behind it (blanks skipped past a wrap).
    const auto upTo = [&start](std::size_t end) { return end > start ? end - start : 0; };

    const auto report = [&](bool wrapped) {
        state.start = static_cast<std::uint32_t>(start);
        state.length = static_cast<std::uint32_t>(length);
        state.startPosition = static_cast<std::int32_t>(startPosition);
        state.wrapped = wrapped;
        handler.handle(state);
    };

    for (std::size_t i = 0; i <= last; ++i) {
        const char16_t c = text[i];
        const bool over = std::int64_t(positions[i]) - startPosition > avail;
        if (!over) {
            // A break opportunity lies behind a word's last character, before the
            // blank or hyphen that follows it: a hyphen begins the next line.
            if (i == last || (!breaksBefore(c) && breaksBefore(text[i + 1])))
                length = candidate = upTo(i + 1);
            if (i != last && c != NEWLINE)
                continue;
        }

        // The line ends here.
        if (c == NEWLINE) {
            // The newline itself belongs to no line, the text's last one included.
            length = candidate = upTo(i);
        } else if (i == last && !over) {
            length = upTo(i + 1);
        } else if (over && candidate == 0 && avail == width) {
            // A word wider than a full line is cut at the character that overflowed.
            length = upTo(i);
        }
        // Otherwise an overflowing word on a shortened first line leaves that line
        // empty (length 0) and starts on the next, full-width one.

        if (over && justified) {
            state.start = static_cast<std::uint32_t>(start);
            state.length = static_cast<std::uint32_t>(length);
            state.startPosition = static_cast<std::int32_t>(startPosition);
            state.wrapped = true;
            justify(handler, text, width, font, state);
        } else {
            report(over);
        }

        if (i == last && c == NEWLINE)
            return;
        start += length;
        if (c == NEWLINE) {
            start += 1;   // blanks behind a newline are kept
        } else {
            while (start < last && text[start] == BLANK)
                ++start;
        }
        if (start > 0)
            startPosition = positions[start - 1];
        if (i == last) {
            // What overflowed on the last character goes out as it is, neither
            // measured nor justified.
            if (start < n) {
                length = n - start;
                report(false);
            }
            return;
        }
        length = 0;
        candidate = 0;
        avail = width;
    }
}

unsigned short WordWrappingTextRenderer::lineWidth(const PSState& state)
{
    if (state.length == 0)
        return 0;
    std::size_t last = std::size_t(state.start) + state.length - 1;
    // The blank a line wrapped at takes no room on it.
    if (state.wrapped && last != 0 && state.text && last < state.text->size() && (*state.text)[last] == BLANK)
        --last;
    if (last >= state.positions.size())
        return 0;
    const int origin = state.start > 0 ? state.positions[state.start - 1] : 0;
    return static_cast<unsigned short>(state.positions[last] - origin);
}

void WordWrappingTextRenderer::justify(iStringHandler& handler, const WS& text, unsigned short width,
                                       const Qv::Ptr<iFont>& /*font*/, const PSState& line)
{
    const unsigned short used = lineWidth(line);
    unsigned short spare = used < width ? static_cast<unsigned short>(width - used) : 0;
    const WS characters = text.substr(line.start, line.length);
    Strings pieces;
    splitString(characters, L' ', pieces, skipEmpty | keepSeparator);
    if (pieces.size() <= 1) {
        handler.handle(line);
        return;
    }
    const std::size_t m = pieces.size();
    for (std::size_t i = 0; i < m; ++i) {
        PSState piece;
        piece.length = static_cast<std::uint32_t>(pieces[i].size());
        piece.text = &pieces[i];
        if (i < m - 1) {
            // Integer shares, so the remainders move on to the later gaps.
            piece.extraSpacing = static_cast<std::uint16_t>(spare / (m - i - 1));
            spare = static_cast<unsigned short>(spare - piece.extraSpacing);
        } else {
            piece.wrapped = true;
        }
        handler.handle(piece);
    }
}

WordWrappingTextRenderer::Analysis WordWrappingTextRenderer::analyse(const Strings& text, unsigned short width,
                                                                     Qv::Ptr<iFont> font)
{
    Analysis result;
    result.numStrings = static_cast<std::uint16_t>(text.size());
    bool first = true;
    for (const WS& string : text) {
        LineAnalyser analyser;
        processString(analyser, string, width, font, 0, LEFT_ALIGNED);
        // An empty string still takes a line.
        result.numLines = static_cast<std::uint16_t>(result.numLines + (analyser.lineCount ? analyser.lineCount : 1));
        if (first) {
            result.maxWidth = analyser.maxWidth;
            result.minWidth = analyser.minWidth;
            first = false;
        } else {
            result.maxWidth = std::max(result.maxWidth, analyser.maxWidth);
            result.minWidth = std::min(result.minWidth, analyser.minWidth);
        }
    }
    return result;
}

WordWrappingTextRenderer::Analysis WordWrappingTextRenderer::analyse(const WS& text, unsigned short width,
                                                                     Qv::Ptr<iFont> font)
{
    Strings pieces;
    splitString(text, L'\n', pieces, 0);
    return analyse(pieces, width, std::move(font));
}

unsigned short WordWrappingTextRenderer::calcNumDisplayLines(const WS& text, unsigned short width, Qv::Ptr<iFont> font)
{
    return analyse(text, width, std::move(font)).numLines;
}

unsigned short WordWrappingTextRenderer::calcNumDisplayLines(const Strings& text, unsigned short width,
                                                             Qv::Ptr<iFont> font)
{
    return analyse(text, width, std::move(font)).numLines;
}

unsigned short WordWrappingTextRenderer::renderString(CanvasRenderer& renderer, const WS& text,
                                                      const Qv::Box<int, Qv::BottomUpTraits>& box, const Colour& colour,
                                                      const Qv::Ptr<iFont>& font, unsigned short lineHeight,
                                                      unsigned short firstLineX)
{
    const int firstX = std::max(int(firstLineX), box.x1);
    lineHeight = resolveLineHeight(lineHeight, font);

    SubStrings lines;
    processString(lines, text, extent16(box.x1, box.x2), font, extent16(box.x1, firstX), LEFT_ALIGNED);

    const std::size_t maxLines = lineHeight ? extent16(box.y1, box.y2) / lineHeight : 0;
    const int yOffset = getFontYOffset(lineHeight, font);
    std::size_t k = 0;
    for (const auto& [start, length] : lines.subStrings) {
        if (k < maxLines)
            drawLine(renderer, text, start, length, k == 0 ? firstX : box.x1,
                     baselineOf(k, yOffset, lineHeight, box.y2), colour, font);
        ++k;
    }
    return k == 0 ? 1 : static_cast<unsigned short>(k);
}

unsigned short WordWrappingTextRenderer::renderString(CanvasRenderer& renderer, const WS& text,
                                                      const Qv::Box<int, Qv::BottomUpTraits>& box, const Colour& colour,
                                                      const FontDesc& desc, unsigned short lineHeight,
                                                      unsigned short firstLineX)
{
    if (lineHeight == 0)
        lineHeight = desc.size;
    return renderString(renderer, text, box, colour, loadFont(desc, nullptr), lineHeight, firstLineX);
}

unsigned short WordWrappingTextRenderer::renderString(const WS& text, const Qv::Box<int, Qv::BottomUpTraits>& box,
                                                      const Colour& colour, const FontDesc& desc,
                                                      unsigned short lineHeight, unsigned short firstLineX)
{
    CanvasRenderer renderer(tela_currentcanvas(), Qv::Box<int>{});
    return renderString(renderer, text, box, colour, desc, lineHeight, firstLineX);
}

unsigned short WordWrappingTextRenderer::renderStrings(CanvasRenderer& renderer, const Strings& text,
                                                       const Qv::Box<int, Qv::BottomUpTraits>& box,
                                                       const Colour& colour, const FontDesc& desc,
                                                       unsigned short lineHeight, unsigned short firstLineX)
{
    if (lineHeight == 0)
        lineHeight = desc.getSize();
    return renderStrings(renderer, text, box, colour, loadFont(desc, nullptr), lineHeight, firstLineX);
}

unsigned short WordWrappingTextRenderer::renderStrings(const Strings& text, const Qv::Box<int, Qv::BottomUpTraits>& box,
                                                       const Colour& colour, const FontDesc& desc,
                                                       unsigned short lineHeight, unsigned short firstLineX)
{
    CanvasRenderer renderer(tela_currentcanvas(), Qv::Box<int>{});
    return renderStrings(renderer, text, box, colour, desc, lineHeight, firstLineX);
}

unsigned short WordWrappingTextRenderer::renderStrings(CanvasRenderer& renderer, const Strings& text,
                                                       const Qv::Box<int, Qv::BottomUpTraits>& box,
                                                       const Colour& colour, const Qv::Ptr<iFont>& font,
                                                       unsigned short lineHeight, unsigned short firstLineX)
{
    const int firstX = std::max(int(firstLineX), box.x1);
    lineHeight = resolveLineHeight(lineHeight, font);
    const std::size_t maxLines = lineHeight ? extent16(box.y1, box.y2) / lineHeight : 0;
    const int yOffset = getFontYOffset(lineHeight, font);

    std::size_t k = 0;
    for (const WS& string : text) {
        // A string that would begin below the box is not even measured.
        if (k >= maxLines)
            return static_cast<unsigned short>(k);
        SubStrings lines;
        processString(lines, string, extent16(box.x1, box.x2), font, 0, LEFT_ALIGNED);
        if (lines.subStrings.empty()) {
            ++k;   // an empty string is an undrawn line
            continue;
        }
        for (const auto& [start, length] : lines.subStrings) {
            // Only the very first line starts at firstLineX; it keeps the full width.
            if (k < maxLines)
                drawLine(renderer, string, start, length, k == 0 ? firstX : box.x1,
                         baselineOf(k, yOffset, lineHeight, box.y2), colour, font);
            ++k;
        }
    }
    return static_cast<unsigned short>(k);
}

void LineAnalyser::handle(const WordWrappingTextRenderer::PSState& state)
{
    const std::uint16_t width = WordWrappingTextRenderer::lineWidth(state);
    if (lineCount == 0) {
        maxWidth = minWidth = width;
    } else {
        maxWidth = std::max(maxWidth, width);
        minWidth = std::min(minWidth, width);
    }
    ++lineCount;
}

void SubStrings::handle(const WordWrappingTextRenderer::PSState& state)
{
    subStrings.emplace_back(state.start, state.length);
}

} // namespace Tela
