// Word wrapping against the fixed-advance test font, so that every break can be
// worked out by hand.

#include "tela/render/CanvasRenderer.h"
#include "tela/text/Fonts.h"
#include "tela/text/WordWrappingTextRenderer.h"

#include "render/RecordingCanvas.h"
#include "support/RecordingRenderer.h"
#include "text/FixedFont.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <vector>

namespace {

using Tela::WordWrappingTextRenderer;
using Strings = WordWrappingTextRenderer::Strings;
using Texts = std::vector<std::u16string>;

const Colour INK(1.0, 0.0, 0.0, true);

using TextTest::FixedFont;

const Qv::Ptr<iFont> FONT = Qv::make<FixedFont>();

struct Line {
    std::u16string text;
    bool wrapped;
    unsigned extraSpacing;
};

// Each line as the characters it names, the way a drawing handler reads it.
struct Collector final : WordWrappingTextRenderer::iStringHandler {
    void handle(const WordWrappingTextRenderer::PSState& state) override
    {
        lines.push_back({std::u16string(state.text->view().substr(state.start, state.length)), state.wrapped,
                         state.extraSpacing});
    }
    std::vector<Line> lines;
};

std::vector<Line> lines(const std::u16string& text, unsigned short width, unsigned short indent = 0,
                        TextAlignment alignment = {0, 1}, const Qv::Ptr<iFont>& font = FONT)
{
    Collector collector;
    WordWrappingTextRenderer::processString(collector, WString(text), width, font, indent, alignment);
    return collector.lines;
}

Texts wrap(const std::u16string& text, unsigned short width, unsigned short indent = 0)
{
    Texts texts;
    for (const Line& line : lines(text, width, indent))
        texts.push_back(line.text);
    return texts;
}

Texts split(const std::u16string& text, wchar_t separator, unsigned flags)
{
    Strings pieces;
    const unsigned count = Tela::splitString(WString(text), separator, pieces, flags);
    Texts texts;
    for (const WString& piece : pieces)
        texts.emplace_back(piece.view());
    EXPECT_EQ(count, texts.size());
    return texts;
}

TEST(WordWrapping, SplitStringMakesNoEmptyEndsAndHonoursQuotesWhenAsked)
{
    EXPECT_EQ(split(u"", u',', 0), Texts{u""});
    EXPECT_EQ(split(u",a,,b,", u',', 0), (Texts{u"a", u"", u"b"}));
    EXPECT_EQ(split(u"a b  c", u' ', Tela::skipEmpty | Tela::keepSeparator), (Texts{u"a ", u"b ", u"c"}));
    EXPECT_EQ(split(u"a,\"b,c\",d", u',', Tela::honourQuotes), (Texts{u"a", u"\"b,c\"", u"d"}));
    EXPECT_EQ(split(u"a\\\",b", u',', Tela::honourQuotes), (Texts{u"a\\\"", u"b"}));   // an escaped quote opens nothing
}

TEST(WordWrapping, BreaksBeforeBlanksAndHyphensAndCutsWordsWiderThanTheLine)
{
    // "aaa b" is 36 pixels wide.
    const auto two = lines(u"aaa bbb", 36);
    ASSERT_EQ(two.size(), 2u);
    EXPECT_EQ(two[0].text, u"aaa");
    EXPECT_TRUE(two[0].wrapped);
    EXPECT_EQ(two[1].text, u"bbb");
    EXPECT_FALSE(two[1].wrapped);
    EXPECT_EQ(wrap(u"well-known", 60), (Texts{u"well", u"-known"}));
    // Blanks starting a wrapped line go, but the text's last character is always reached.
    EXPECT_EQ(wrap(u"aaa    bbb", 30), (Texts{u"aaa", u"bbb"}));
    EXPECT_EQ(wrap(u"aaa     ", 30), (Texts{u"aaa", u" "}));
    EXPECT_EQ(wrap(u"aa bbbbbbb", 30), (Texts{u"aa", u"bbb", u"bbb", u"b"}));
}

TEST(WordWrapping, OnlyTheFirstLineIsIndentedAndAWordTooWideForItStartsBelow)
{
    EXPECT_EQ(wrap(u"aaa bbb ccc", 60, 30), (Texts{u"aaa", u"bbb ccc"}));
    EXPECT_EQ(wrap(u"abcdefghij", 30, 10), (Texts{u"", u"abc", u"def", u"ghi", u"j"}));
    EXPECT_EQ(wrap(u"ab cd", 100, 200), (Texts{u"", u"ab cd"}));
}

TEST(WordWrapping, NewlinesEndLinesWithoutJoiningThem)
{
    EXPECT_EQ(wrap(u"abc\n", 100), Texts{u"abc"});
    EXPECT_EQ(wrap(u"abc\n\ndef", 100), (Texts{u"abc", u"", u"def"}));
    EXPECT_EQ(wrap(u"ab\n  cd", 100), (Texts{u"ab", u"  cd"}));   // blanks behind a newline stay
    EXPECT_EQ(wrap(u"abcd\nef", 30), (Texts{u"abc", u"d", u"ef"}));
}

TEST(WordWrapping, JustifiedLinesSpreadTheSpareWidthOverTheirGapsButTheLastLineIsLeft)
{
    // "a b c" is 32 pixels: 7 to spare in 39, 3 to the first gap and 4 to the second.
    const auto pieces = lines(u"a b c d", 39, 0, {3, 1});
    ASSERT_EQ(pieces.size(), 4u);
    EXPECT_EQ(pieces[0].text + pieces[1].text + pieces[2].text, u"a b c");
    EXPECT_EQ(pieces[0].extraSpacing, 3u);
    EXPECT_EQ(pieces[1].extraSpacing, 4u);
    EXPECT_EQ(pieces[2].extraSpacing, 0u);
    EXPECT_TRUE(pieces[2].wrapped);
    EXPECT_EQ(pieces[3].text, u"d");
    EXPECT_FALSE(pieces[3].wrapped);
    EXPECT_EQ(lines(u"abcd efgh", 40, 0, {3, 1})[0].text, u"abcd");   // one word: no gap to spread over
}

TEST(WordWrapping, AnalysisCountsLinesAndWidthsAnEmptyStringTakingALine)
{
    const auto analysis = WordWrappingTextRenderer::analyse(WString(u"a\n\nb"), 100, FONT);
    EXPECT_EQ(analysis.numStrings, 3u);
    EXPECT_EQ(analysis.numLines, 3u);
    EXPECT_EQ(analysis.maxWidth, 8u);
    EXPECT_EQ(analysis.minWidth, 0u);
    EXPECT_EQ(WordWrappingTextRenderer::analyse(WString(u"\nb"), 100, FONT).numStrings, 1u);
    EXPECT_EQ(WordWrappingTextRenderer::calcNumDisplayLines(WString(), 100, FONT), 1u);
    const auto wrapped = WordWrappingTextRenderer::analyse(WString(u"aaa bbbb\ncc"), 40, FONT);
    EXPECT_EQ(wrapped.numLines, 3u);
    EXPECT_EQ(wrapped.maxWidth, 32u);
    EXPECT_EQ(wrapped.minWidth, 16u);
}

TEST(WordWrapping, CountsAndWidthsWrapAtSixteenBits)
{
    // A megabyte without a blank, ten characters to a line: 104,858 lines, held
    // as 39,322, in one pass however long the text.
    const WString word(std::u16string(1u << 20, u'x'));
    EXPECT_EQ(WordWrappingTextRenderer::calcNumDisplayLines(word, 80, FONT), 104858u % 65536u);
    EXPECT_EQ(WordWrappingTextRenderer::analyse(WString(u"@"), 65535, FONT).maxWidth, 70000u - 65536u);
    const auto empties = WordWrappingTextRenderer::analyse(Strings(65536), 100, FONT);
    EXPECT_EQ(empties.numLines, 0u);
    EXPECT_EQ(empties.numStrings, 0u);
}

TEST(WordWrapping, BadInputGivesSafeResults)
{
    EXPECT_TRUE(lines(u"", 100).empty());
    EXPECT_TRUE(lines(u"abc", 100, 0, {0, 1}, Qv::Ptr<iFont>()).empty());
    EXPECT_EQ(wrap(u"a\xD800 b", 20), (Texts{u"a\xD800", u"b"}));   // a lone surrogate is one more unit
    EXPECT_EQ(wrap(u"abc", 0), (Texts{u"", u"a", u"b", u"c"}));
    EXPECT_EQ(lines(u"abcdef", 100, 0, {0, 1}, Qv::make<FixedFont>(4))[0].text, u"abcd");
}

using Drawn = std::vector<std::pair<std::u16string, XY<int>>>;

class WordWrappingRender : public RecordingCanvasTest {
protected:
    Drawn drawn() const
    {
        Drawn texts;
        for (std::size_t call = 0; call < recorder->callCount(); ++call)
            if (std::string(recorder->calls()[call].operation) == "drawTexts")
                texts.emplace_back(recorder->primitive<TextDescription>(call).text.view(),
                                   recorder->primitive<TextDescription>(call).position);
        return texts;
    }
};

// Three lines of 16 fit in 50; each baseline sits 3 above its line's foot, and
// renderer y is 50 minus canvas y.
TEST_F(WordWrappingRender, LinesGoDownTheBoxAndThoseBelowItAreOnlyCounted)
{
    CanvasRenderer renderer(canvas, Qv::Box<int>{});
    EXPECT_EQ(WordWrappingTextRenderer::renderString(renderer, WString(u"aaa bbb ccc ddd"), {0, 0, 40, 50}, INK, FONT,
                                                     16, 10),
              4u);
    EXPECT_EQ(drawn(), (Drawn{{u"aaa", {10, 13}}, {u"bbb", {0, 29}}, {u"ccc", {0, 45}}}));
    EXPECT_EQ(recorder->primitive<TextDescription>(recorder->callCount() - 1).colour.r, 1.0f);
    // The colour reaches the renderer as given: no gamma curve, whatever its bypass flag.
    recorder->clear();
    WordWrappingTextRenderer::renderString(renderer, WString(u"aaa"), {0, 0, 40, 50}, Colour(0.5, 0.25, 0.0, false),
                                           FONT, 16, 0);
    ASSERT_EQ(drawn().size(), 1u);
    EXPECT_EQ(recorder->primitive<TextDescription>(recorder->callCount() - 1).colour.r, 0.5f);
    EXPECT_EQ(recorder->primitive<TextDescription>(recorder->callCount() - 1).colour.g, 0.25f);

    // A box 65,576 wide wraps as one 40 wide; the font's height stands in for no line height.
    recorder->clear();
    EXPECT_EQ(WordWrappingTextRenderer::renderString(renderer, WString(u"aaa bbb"), {0, 0, 65576, 50}, INK, FONT, 0, 0),
              2u);
    EXPECT_EQ(drawn(), (Drawn{{u"aaa", {0, 13}}, {u"bbb", {0, 29}}}));
    EXPECT_EQ(WordWrappingTextRenderer::renderString(renderer, WString(), {0, 0, 40, 50}, INK, FONT, 16, 0), 1u);
    // Edges as far apart as an int allows are no overflow, just a wide box.
    recorder->clear();
    EXPECT_EQ(WordWrappingTextRenderer::renderString(renderer, WString(u"abc"), {INT_MIN, 0, INT_MAX, 50}, INK, FONT,
                                                     16, 10),
              1u);
    EXPECT_EQ(drawn(), (Drawn{{u"abc", {10, 13}}}));
}

TEST_F(WordWrappingRender, StringsStopAtTheFirstOneThatBeginsWithTheBoxFull)
{
    CanvasRenderer renderer(canvas, Qv::Box<int>{});
    // "aa", an undrawn empty line, then "bbb ccc", begun on the last line and
    // counted to its end; "ddd" begins with the box full.
    const Strings strings {WString(u"aa"), WString(), WString(u"bbb ccc"), WString(u"ddd")};
    EXPECT_EQ(WordWrappingTextRenderer::renderStrings(renderer, strings, {0, 0, 40, 50}, INK, FONT, 16, 20), 4u);
    EXPECT_EQ(drawn(), (Drawn{{u"aa", {20, 13}}, {u"bbb", {0, 45}}}));
    EXPECT_EQ(WordWrappingTextRenderer::renderStrings(renderer, Strings(), {0, 0, 40, 50}, INK, FONT, 16, 0), 0u);
}

// A font request goes through the font table: the request's size spaces the
// lines when no line height is given, and the forms without a renderer draw
// on the current canvas.
TEST_F(WordWrappingRender, AFontRequestIsLoadedAndItsSizeSpacesTheLines)
{
    const auto line_gap = [&](unsigned drawn_lines) {
        const Drawn lines = drawn();
        recorder->clear();
        EXPECT_EQ(drawn_lines, 2u);
        return lines.size() == 2 ? lines[1].second.y - lines[0].second.y : -1;
    };
    CanvasRenderer renderer(canvas, Qv::Box<int>{});
    const Tela::FontDesc request(String(), 20, 0);
    EXPECT_EQ(line_gap(WordWrappingTextRenderer::renderString(renderer, WString(u"aaa bbb"), {0, 0, 40, 60}, INK,
                                                              request, 0, 0)),
              20);
    tela_setcanvas(canvas);
    const Strings strings {WString(u"aaa"), WString(u"bbb")};
    EXPECT_EQ(line_gap(WordWrappingTextRenderer::renderStrings(strings, {0, 0, 40, 60}, INK, request, 0, 0)), 20);
}

} // namespace
