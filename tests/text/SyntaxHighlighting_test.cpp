// Keywords drawn in their own colour: where they are found, which wins a tie,
// which side of the search is folded to lower case, and that the pieces sit
// end to end on the line.

#include "tela/render/CanvasRenderer.h"
#include "tela/text/SyntaxHighlighting.h"

#include "render/RecordingCanvas.h"
#include "text/FixedFont.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

const Colour PLAIN(0.0, 0.0, 0.0, true);
const Colour KEYWORD(1.0, 0.0, 0.0, true);

class SyntaxHighlighting : public RecordingCanvasTest {
protected:
    // The pieces drawn, each as "text" or "[keyword]", in order. An empty
    // piece has no extents, so the renderer's guard lets nothing of it through.
    std::string draw(SyntaxHighightingRenderer& highlighter, const char16_t* text)
    {
        recorder->clear();
        CanvasRenderer renderer(canvas, Qv::Box<int>{});
        highlighter.render(renderer, WString(text), XY<int>(2, 20), PLAIN, KEYWORD, font);
        std::string pieces;
        int expected_x = 2;
        for (std::size_t call = 0; call < recorder->callCount(); ++call) {
            if (std::string(recorder->calls()[call].operation) != "drawTexts")
                continue;   // the clip, set once
            const TextDescription& piece = recorder->primitive<TextDescription>(call);
            // Each piece starts where the one before it ended.
            EXPECT_EQ(piece.position.x, expected_x) << "piece " << call;
            expected_x += font->getTextExtent(piece.text, static_cast<unsigned>(piece.text.size())).x;
            const std::string characters(toUTF8(piece.text).c_str());
            pieces += piece.colour.r == 1.0f ? "[" + characters + "]" : characters;
            pieces += "|";
        }
        return pieces;
    }

    Qv::Ptr<iFont> font = Qv::make<TextTest::FixedFont>();
};

} // namespace

TEST_F(SyntaxHighlighting, KeywordsAreSubstringsAndTheFirstAddedWinsATie)
{
    SyntaxHighightingRenderer none;
    EXPECT_EQ(draw(none, u"a + b"), "a + b|");

    SyntaxHighightingRenderer highlighter;
    highlighter.setKeyWords({WString(u"if"), WString(u"in"), WString(u"int"), WString(u"")});
    EXPECT_EQ(draw(highlighter, u"different"), "d|[if]|ferent|");   // no word boundaries
    EXPECT_EQ(draw(highlighter, u"int"), "[in]|t|");                // "in" was added before "int"
    EXPECT_EQ(draw(highlighter, u"ifin"), "[if]|[in]|");            // adjacent: no gap between them
    EXPECT_EQ(draw(highlighter, u"if x"), "[if]| x|");              // at the start...
    EXPECT_EQ(draw(highlighter, u"x if"), "x |[if]|");              // ...and at the end
    EXPECT_EQ(draw(highlighter, u""), "");

    // setKeyWords adds to the list.
    highlighter.setKeyWords({WString(u"x")});
    EXPECT_EQ(draw(highlighter, u"if x"), "[if]| |[x]|");

    // The 255th keyword still takes part; the 256th does not.
    SyntaxHighightingRenderer long_list;
    long_list.setKeyWords(std::vector<WString>(254, WString(u"zz")));
    long_list.setKeyWords({WString(u"last"), WString(u"over")});
    EXPECT_EQ(draw(long_list, u"last over"), "[last]| over|");
}

TEST_F(SyntaxHighlighting, TheTwoSidesAreFoldedInOppositeCases)
{
    // Keeping case: keywords stored in lower case, text searched as it is.
    SyntaxHighightingRenderer keeping(true);
    keeping.addKeyWord(WString(u"Sum"));
    EXPECT_EQ(draw(keeping, u"Sum sum"), "Sum |[sum]|");

    // Not keeping it: text searched in lower case, drawn as given.
    SyntaxHighightingRenderer folding;
    folding.addKeyWord(WString(u"sum"));
    EXPECT_EQ(draw(folding, u"Sum SUM"), "[Sum]| |[SUM]|");
    SyntaxHighightingRenderer capital;
    capital.addKeyWord(WString(u"Sum"));
    EXPECT_EQ(draw(capital, u"Sum sum"), "Sum sum|");
}
