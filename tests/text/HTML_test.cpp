// The markup subset: what each tag does to the runs it parses into, plain
// text made into markup, and the layout of the runs with the fixed-advance
// test font (a blank 4 pixels, anything else 8), so every position can be
// worked out by hand; links found again from a point; malformed and huge input.

#include "tela/canvas/Canvas.h"
#include "tela/canvas/CanvasGeometry.h"
#include "tela/canvas/CanvasTree.h"
#include "tela/colour/Palette.h"
#include "tela/render/CanvasRenderer.h"
#include "tela/text/Fonts.h"
#include "tela/text/HTMLRenderer.h"

#include "support/RecordingRenderer.h"
#include "text/FixedFontWindow.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using Paragraphs = LightweightVector<HTMLRenderer::Paragraph>;
using Box = HTMLRenderer::Box;

const Palette& palette()
{
    return Palette::getDefault();
}

Paragraphs parse(const char* markup)
{
    return HTMLRenderer::parse(String(markup), palette());
}

// Each paragraph as its runs' texts joined by '|'.
std::vector<std::u16string> shape(const Paragraphs& paragraphs)
{
    std::vector<std::u16string> result;
    for (const HTMLRenderer::Paragraph& paragraph : paragraphs) {
        std::u16string joined;
        for (const HTMLRenderer::StyledText& run : paragraph.runs)
            joined += (joined.empty() ? u"" : u"|") + std::u16string(run.text.view());
        result.push_back(joined);
    }
    return result;
}

// The one run of the one paragraph the markup gives.
HTMLRenderer::StyledText only_run(const char* markup)
{
    const Paragraphs paragraphs = parse(markup);
    EXPECT_EQ(paragraphs.size(), 1u) << markup;
    if (paragraphs.size() != 1 || paragraphs[0].runs.size() != 1) {
        ADD_FAILURE() << markup << " gives more or fewer than one run";
        return {};
    }
    return paragraphs[0].runs[0];
}

using Shape = std::vector<std::u16string>;

} // namespace

TEST(HTMLParse, OnlyTextBeginningWithHtmlOrPIsMarkup)
{
    EXPECT_TRUE(HTMLRenderer::isHTML(String("<html>x")));
    EXPECT_TRUE(HTMLRenderer::isHTML(WString(u"<pre>")));
    EXPECT_FALSE(HTMLRenderer::isHTML(String("<P>x")));
    EXPECT_FALSE(HTMLRenderer::isHTML(String("<HTML>")));
    EXPECT_FALSE(HTMLRenderer::isHTML(String(" <p>x")));
    EXPECT_FALSE(HTMLRenderer::isHTML(WString()));
    EXPECT_TRUE(parse("plain <b>text</b> here").empty());
}

// Paragraphs come from tags opened at depth 0, not from <p>; text in front
// of the first tag and behind the last is dropped, and text between
// paragraphs joins the one before.
TEST(HTMLParse, ParagraphsBeginAtTagsOpenedAtDepthZero)
{
    EXPECT_EQ(shape(parse("<html><p>a</p><p>b</p></html>")), (Shape{u"a|b"}));
    EXPECT_EQ(shape(parse("<p>a</p>\n<p>b</p>")), (Shape{u"a|\n", u"b"}));
    EXPECT_EQ(shape(parse("<p>hello")), (Shape{u""}));
    EXPECT_EQ(shape(parse("<p>a<b>b</b>c</p>tail")), (Shape{u"a|b|c"}));
    // Nothing is decoded or collapsed.
    EXPECT_EQ(shape(parse("<p>&amp; &lt;x\n  y</p>")), (Shape{u"&amp; &lt;x\n  y"}));
    // A tag of another kind separates runs but opens nothing.
    EXPECT_EQ(shape(parse("<p>a<br/>b<!-- c -->d</p>")), (Shape{u"a|b|d"}));
}

TEST(HTMLParse, StyleTagsSetAndClearTheirBitWithoutCounting)
{
    struct Case {
        const char* markup;
        unsigned style;
    };
    const Case cases[] = {
        {"<p><b>x</b></p>", 1},       {"<p><strong>x</strong></p>", 1}, {"<p><i>x</i></p>", 2},
        {"<p><em>x</em></p>", 2},     {"<p><cite>x</cite></p>", 2},     {"<p><b><i>x</i></b></p>", 3},
        {"<p><B>x</B></p>", 0},       {"<p><span>x</span></p>", 0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.markup);
        const HTMLRenderer::StyledText run = only_run(c.markup);
        EXPECT_EQ(run.font.style, c.style);
        EXPECT_EQ(run.font.textStyle, eTextPlain);
    }
    // The second </b> finds the bit already clear: "y" is plain.
    const Paragraphs nested = parse("<p><b><b>x</b>y</b></p>");
    ASSERT_EQ(nested[0].runs.size(), 2u);
    EXPECT_EQ(nested[0].runs[0].font.style, 1u);
    EXPECT_EQ(nested[0].runs[1].font.style, 0u);
}

TEST(HTMLParse, ColoursComeFromThePaletteOrFromHex)
{
    struct Case {
        const char* markup;
        Colour colour;
    };
    const Case cases[] = {
        {"<p>x</p>", palette().text(eTextNormal)},
        {"<p><font color=\"inactive\">x</font></p>", palette().text(eTextStronglyDimmed)},
        {"<p><font color=\"readonly\">x</font></p>", palette().text(eTextLightlyDimmed)},
        {"<p><font color=\"subheading\">x</font></p>", palette().subheadingText()},
        {"<p><font color=\"warning\">x</font></p>", palette().warning()},
        {"<p><font color=\"#ff0000\">x</font></p>", fromHex(0xFF0000)},
        {"<p><font color=#00ff00>x</font></p>", fromHex(0x00FF00)},
        {"<p><font color=\"#zz\">x</font></p>", palette().text(eTextNormal)},
        {"<p><font color=\"red\">x</font></p>", palette().text(eTextNormal)},
        {"<p><font color=\"warning\"><font face=\"Serif\">x</font></font></p>", palette().warning()},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.markup);
        EXPECT_EQ(only_run(c.markup).colour, c.colour);
    }
    EXPECT_TRUE(only_run("<p><font color=\"#ff0000\">x</font></p>").colour.bypassGamma());
    // Closing the font goes back to the colour outside it.
    const Paragraphs closed = parse("<p><font color=\"warning\">a</font>b</p>");
    EXPECT_EQ(closed[0].runs[1].colour, palette().text(eTextNormal));
}

TEST(HTMLParse, FontFaceAndSizesAndSmall)
{
    const unsigned short saved = getDefaultFontSize();
    setDefaultFontSize(20);
    EXPECT_EQ(only_run("<p><font face=\"Serif\">x</font></p>").font.name, String("Serif"));
    EXPECT_EQ(only_run("<p><font size=\"small\">x</font></p>").font.size, 16);   // four fifths
    EXPECT_EQ(only_run("<p><font size=\"7\">x</font></p>").font.size, 0);
    EXPECT_EQ(only_run("<p><small>x</small></p>").font.size, 15);                // three quarters
    // <small> overrides the font's size, and ends with its closing tag.
    EXPECT_EQ(only_run("<p><font size=\"small\"><small>x</small></font></p>").font.size, 15);
    const Paragraphs after = parse("<p><small>a</small>b</p>");
    EXPECT_EQ(after[0].runs[1].font.size, 0);
    setDefaultFontSize(saved);
}

TEST(HTMLParse, AlignmentStaysUntilChanged)
{
    const Paragraphs paragraphs =
        parse("<p align=\"right\">r</p><p>still</p><p align=\"center\">c</p><p align=\"middle\">c</p><p align=left>l</p>");
    const int expected[] = {1, 1, 2, 2, 0};
    ASSERT_EQ(paragraphs.size(), 5u);
    for (std::size_t k = 0; k < 5; ++k) {
        EXPECT_EQ(paragraphs[k].runs[0].alignment.horizontal, expected[k]) << k;
        EXPECT_EQ(paragraphs[k].runs[0].alignment.vertical, 1) << k;
    }
}

// Only the first run behind <a href> carries the link; the colour and the
// heavy style last to </a>.
TEST(HTMLParse, LinksAndUnderlines)
{
    const Paragraphs link = parse("<p><a href=\"x\">go <b>now</b></a> then</p>");
    ASSERT_EQ(link[0].runs.size(), 3u);
    const struct {
        const char16_t* text;
        const char16_t* url;
        Colour colour;
        eTextStyle textStyle;
        unsigned style;
    } runs[] = {{u"go ", u"x", palette().subheadingText(), eTextHeavy, 0},
                {u"now", u"", palette().subheadingText(), eTextHeavy, 1},
                {u" then", u"", palette().text(eTextNormal), eTextPlain, 0}};
    for (std::size_t k = 0; k < 3; ++k) {
        const HTMLRenderer::StyledText& run = link[0].runs[k];
        EXPECT_EQ(run.text, WString(runs[k].text)) << k;
        EXPECT_EQ(run.url, WString(runs[k].url)) << k;
        EXPECT_EQ(run.colour, runs[k].colour) << k;
        EXPECT_EQ(run.font.textStyle, runs[k].textStyle) << k;
        EXPECT_EQ(run.font.style, runs[k].style) << k;
    }
    EXPECT_EQ(only_run("<p><u>x</u></p>").font.textStyle, eTextHeavy);
    EXPECT_EQ(only_run("<p><a name=\"n\">x</a></p>").font.textStyle, eTextPlain);
    // An <a> without href raised nothing, yet its </a> lowers the depth,
    // which wraps: what follows is drawn heavy.
    const Paragraphs wrapped = parse("<p><a>x</a>y</p>");
    EXPECT_EQ(wrapped[0].runs[1].font.textStyle, eTextHeavy);
    // Closing what was never opened is ignored by the stacks.
    EXPECT_EQ(parse("<p></font></a>z<x>")[0].runs[0].colour, palette().text(eTextNormal));
}

TEST(HTMLConvert, LinesBecomeParagraphsWithLinksAndCapitalsWhenAsked)
{
    struct Case {
        const char16_t* text;
        unsigned flags;
        const char* markup;
    };
    const Case cases[] = {
        {u"", 0, "<p></p>"},
        {u"a\nb", 0, "<p>a</p><p>b</p>"},
        {u"see www.example.com.", 0, "<p>see www.example.com.</p>"},
        {u"see www.example.com.", 1, "<p>see <a href=\"www.example.com\">www.example.com</a>.</p>"},
        {u"www.a.org, www.b.org", 1,
         "<p><a href=\"www.a.org\">www.a.org</a>, <a href=\"www.b.org\">www.b.org</a></p>"},
        {u"THE END", 2, "<p><b>The</b> <b>End</b></p>"},
        {u"(HELLO), A MP3 x", 2, "<p>(<b>Hello</b>), A MP3 x</p>"},
        {u"THE END", 1, "<p>THE END</p>"},
        {u"<p>KEEP www.x.org", 3, "<p>KEEP www.x.org"},
        {u"<b>raw</b>", 0, "<p><b>raw</b></p>"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(toUTF8(WString(c.text)).c_str());
        EXPECT_EQ(HTMLRenderer::convertToHTML(WString(c.text), c.flags), String(c.markup));
    }
}

// A 100 x 50 canvas at window (20, 10) whose renderer records; fonts are the
// fixed-advance one. Lines 16 apart put the first baseline at 50 - 16 + 3.
class HTMLLayout : public ::testing::Test {
protected:
    void SetUp() override
    {
        Tela::releaseAllFonts();
        root = createFixedFontRoot({200, 100});
        ASSERT_NE(root, nullptr);
        canvas = tela_newcanvas(nullptr, root);
        ASSERT_EQ(tela_placecanvas(canvas, TopDownRect{20, 10, 120, 60}), 1);
        recorder = Qv::make<RecordingRenderer>();
        canvas->osRenderer = recorder;
    }
    void TearDown() override
    {
        tela_setcanvas(nullptr);
        tela_deletecanvas(root);
        Tela::releaseAllFonts();
    }

    Paragraphs laidOut(const char* markup, const Box& box = {0, 0, 100, 50}, TextAlignment alignment = {0, 1})
    {
        Paragraphs paragraphs = parse(markup);
        CanvasRenderer renderer(canvas, Qv::Box<int>{});
        HTMLRenderer::render(renderer, paragraphs, box, 16, alignment);
        return paragraphs;
    }
    static const std::vector<Box>& boxes(const Paragraphs& paragraphs, std::size_t paragraph, std::size_t run)
    {
        return paragraphs[paragraph].runs[run].boxes;
    }
    std::vector<std::u16string> drawnTexts() const
    {
        std::vector<std::u16string> texts;
        for (std::size_t call = 0; call < recorder->callCount(); ++call)
            if (std::string(recorder->calls()[call].operation) == "drawTexts")
                texts.emplace_back(recorder->primitive<TextDescription>(call).text.view());
        return texts;
    }
    // The x ranges of a run's boxes, and the top of each.
    static std::vector<std::vector<int>> spans(const std::vector<Box>& drawn)
    {
        std::vector<std::vector<int>> result;
        for (const Box& box : drawn)
            result.push_back({box.x1, box.x2, box.y2});
        return result;
    }

    Canvas* root = nullptr;
    Canvas* canvas = nullptr;
    Qv::Ptr<RecordingRenderer> recorder;
};

using Spans = std::vector<std::vector<int>>;

// Line tops: 50 - 16 + 3 + 10 = 47, then 31, 15.
TEST_F(HTMLLayout, RunsFlowAlongALineAndTheLineTakesTheLastRunsAlignment)
{
    // "ab" and "cd" are centred as one 32-pixel piece, in order.
    Paragraphs centred = laidOut("<p align=\"center\">ab<b>cd</b></p>");
    EXPECT_EQ(spans(boxes(centred, 0, 0)), (Spans{{34, 50, 47}}));
    EXPECT_EQ(spans(boxes(centred, 0, 1)), (Spans{{50, 66, 47}}));
    EXPECT_EQ(drawnTexts(), (std::vector<std::u16string>{u"ab", u"cd"}));

    Paragraphs right = laidOut("<p align=\"right\">ab cd</p>");
    EXPECT_EQ(spans(boxes(right, 0, 0)), (Spans{{64, 100, 47}}));

    // Left first, then centre: the line follows the run laid out last.
    Paragraphs mixed = laidOut("<p>ab<p align=\"center\">cd</p></p>");
    EXPECT_EQ(spans(boxes(mixed, 0, 0)), (Spans{{34, 50, 47}}));

    // A newline in a run does not move the pen; the next paragraph does.
    Paragraphs newline = laidOut("<p>ab\ncd</p><p>e</p>");
    EXPECT_EQ(spans(boxes(newline, 0, 0)), (Spans{{0, 16, 47}, {16, 32, 47}}));
    EXPECT_EQ(spans(boxes(newline, 1, 0)), (Spans{{0, 8, 31}}));
}

TEST_F(HTMLLayout, LinesAreFlushedAtTheRightEdgeAndAtTheEndOfAParagraph)
{
    // "aaaa" fills 32 exactly; the rest of the run goes on below it.
    Paragraphs exact = laidOut("<p>aaaa bb</p>", {0, 0, 32, 50});
    EXPECT_EQ(spans(boxes(exact, 0, 0)), (Spans{{0, 32, 47}, {0, 16, 31}}));

    // The pen already at the edge: the next run starts a fresh line.
    Paragraphs full = laidOut("<p>aaaa<b>bb</b></p>", {0, 0, 32, 50});
    EXPECT_EQ(spans(boxes(full, 0, 1)), (Spans{{0, 16, 31}}));

    // A box lower than a line still draws one; the runs below get no boxes.
    Paragraphs low = laidOut("<p>aa</p><p>bb</p>", {0, 0, 100, 10});
    EXPECT_EQ(boxes(low, 0, 0).size(), 1u);
    EXPECT_TRUE(boxes(low, 1, 0).empty());

    // Justified: the wrapped line's first piece takes the spare 8 pixels into
    // its box; the last line keeps its own width.
    Paragraphs justified = laidOut("<p>ab cd efgh</p>", {0, 0, 44, 50}, {3, 1});
    EXPECT_EQ(spans(boxes(justified, 0, 0)), (Spans{{0, 28, 47}, {28, 44, 47}, {0, 32, 31}}));
}

TEST_F(HTMLLayout, AnalysisCountsALineForEveryParagraph)
{
    HTMLRenderer::Analysis empty = HTMLRenderer::analyse(parse("<p></p>"), 100);
    EXPECT_EQ(empty.numLines, 1);
    EXPECT_EQ(empty.maxWidth, 0);
    HTMLRenderer::Analysis wrapped = HTMLRenderer::analyse(parse("<p>aaaa bbbb c</p><p>d</p>"), 40);
    EXPECT_EQ(wrapped.numLines, 4);   // "aaaa", "bbbb", "c", "d"
    EXPECT_EQ(wrapped.maxWidth, 32);
    EXPECT_EQ(HTMLRenderer::calcNumDisplayLines(Paragraphs(), 40), 0);
    EXPECT_EQ(HTMLRenderer::calcMaxWidth(parse("<p>ab</p><p>ab<b>cd</b></p>")), 32);
    EXPECT_EQ(HTMLRenderer::calcMaxWidth(Paragraphs()), 0);
}

// The link's boxes: behind "go " (20 wide), "link" takes [20, 52] of the
// first line and "at edge" [0, 52] of the second.
TEST_F(HTMLLayout, LinksAreFoundOnTheirBoxesEdgesIncludedAndOnEveryLine)
{
    Paragraphs paragraphs = parse("<p>go <a href=\"here\">link at edge</a></p>");
    const Paragraphs copy = paragraphs;
    EXPECT_TRUE(HTMLRenderer::getURLAtPosition({30, 40}, copy).empty());   // nothing before a render
    CanvasRenderer renderer(canvas, Qv::Box<int>{});
    HTMLRenderer::render(renderer, paragraphs, {0, 0, 64, 50}, 16, {0, 1});

    ASSERT_EQ(spans(boxes(copy, 0, 1)), (Spans{{20, 52, 47}, {0, 52, 31}}));
    // Corners of both boxes count; "go ", beyond the edges and between the lines do not.
    for (const XY<int>& on : {XY<int>{20, 34}, XY<int>{52, 47}, XY<int>{52, 18}})
        EXPECT_EQ(HTMLRenderer::getURLAtPosition(on, copy), WString(u"here")) << on.x << "," << on.y;
    for (const XY<int>& off : {XY<int>{10, 40}, XY<int>{53, 40}, XY<int>{30, 48}, XY<int>{30, 32}, XY<int>{53, 20}})
        EXPECT_TRUE(HTMLRenderer::getURLAtPosition(off, copy).empty()) << off.x << "," << off.y;
}

// None of these may crash or hang; what they give is whatever the scanner
// makes of them, checked where it is worth knowing.
TEST_F(HTMLLayout, MalformedAndHugeInputIsParsedAndLaidOutSafely)
{
    const char* const malformed[] = {
        "<p>a < b & c &amp d</p>",
        "<p>unclosed <b>bold <i>and italic",
        "<p><font color=#ff0000 face=Serif>x</font></p>",
        "<p><a href=\"never closed>x</a> y</p> <b>z</b>",
        "<p><a href='x' href=\"y\">x</a></p>",
        "<p><", "<p", "<p>x</", "<p>x<!-- open", "<p>x</ b>y</p>", "<p>\xff\xfe<b>\xc3</b>\x80</p>",
        "<p>x</p></p></p></p><b>y</b>",
    };
    CanvasRenderer renderer(canvas, Qv::Box<int>{});
    for (const char* markup : malformed) {
        SCOPED_TRACE(markup);
        Paragraphs paragraphs = parse(markup);
        HTMLRenderer::render(renderer, paragraphs, {0, 0, 100, 50}, 16, {3, 1});
        HTMLRenderer::analyse(paragraphs, 100);
    }
    EXPECT_EQ(shape(parse("<p>a < b & c</p>")), (Shape{u"a < b & c"}));
    EXPECT_EQ(parse("<p><font color=#ff0000 face=Serif>x</font></p>")[0].runs[0].font.name, String("Serif"));
    // The open quote stops being a quote: the tag ends at its first '>'.
    EXPECT_EQ(shape(parse("<p><a href=\"never closed>x</a> y</p>")), (Shape{u"x| y"}));
    EXPECT_EQ(shape(parse("<p>unclosed <b>bold <i>and italic")), (Shape{u"unclosed |bold "}));

    // 100,000 nested tags: the depth is 16 bits, so the 65,537th opens a
    // second paragraph.
    std::string nested = "<p>";
    for (int k = 0; k < 99999; ++k)
        nested += k % 2 ? "<font color=\"#00ff00\">" : "<font color=\"#0000ff\">";
    nested += "x";
    for (int k = 0; k < 99999; ++k)
        nested += "</font>";
    Paragraphs deep = parse(nested.c_str());
    EXPECT_EQ(deep.size(), 2u);
    EXPECT_EQ(HTMLRenderer::analyse(deep, 100).numLines, 2);

    // 10 MB of text in one paragraph, a link every kilobyte. Three lines fit
    // the box: the first run is drawn, the last is not.
    std::string words;
    while (words.size() < 1000)
        words += "words in a row\n";
    std::string big = "<p>";
    while (big.size() < 10'000'000)
        big += words + "<a href=\"x\">link</a>";
    big += "</p>";
    Paragraphs huge = parse(big.c_str());
    ASSERT_EQ(huge.size(), 1u);
    EXPECT_GT(HTMLRenderer::analyse(huge, 4000).numLines, 5000);
    HTMLRenderer::render(renderer, huge, {0, 0, 100, 50}, 16, {0, 1});
    EXPECT_FALSE(huge[0].runs[0].boxes.empty());
    EXPECT_TRUE(huge[0].runs.back().boxes.empty());
}
