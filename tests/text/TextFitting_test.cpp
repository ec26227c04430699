// Fitting text to a width against the fixed-advance test font: letters and
// separators are 8 pixels, a blank 4, '@' 70000, so ".." is 16.

#include "tela/render/CanvasRenderer.h"
#include "tela/text/Fonts.h"
#include "tela/text/GlyphNames.h"
#include "tela/text/TextFitting.h"

#include "render/RecordingCanvas.h"
#include "support/RecordingRenderer.h"
#include "text/FixedFont.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using Tela::eShortenEnd;
using Tela::eShortenMiddle;
using TextTest::FixedFont;

const Qv::Ptr<iFont> FONT = Qv::make<FixedFont>();

std::u16string clip(const std::u16string& text, unsigned short width, bool dots)
{
    return std::u16string(clipStringToFit(WString(text), width, dots, FONT).view());
}

std::u16string fit(const std::u16string& text, unsigned short width, Tela::eTextShorteningMethod method,
                   const Qv::Ptr<iFont>& font = FONT)
{
    return std::u16string(Tela::fitTextToWidth(font, WString(text), width, method).view());
}

std::u16string clipPath(const std::u16string& path, unsigned short width)
{
    return std::u16string(clipFilenameToFit(WString(path), width, FONT).view());
}

TEST(ClipStringToFit, CutsTheEndAndPutsTheDotsBehindWhatFits)
{
    EXPECT_EQ(clip(u"abcdef", 48, true), u"abcdef");     // fits exactly: no dots
    EXPECT_EQ(clip(u"abcdef", 40, true), u"abc..");      // 24 + 16
    EXPECT_EQ(clip(u"abcdef", 47, true), u"abc..");
    EXPECT_EQ(clip(u"abcdef", 20, false), u"ab");
    EXPECT_EQ(clip(u"", 0, true), u"");
    EXPECT_EQ(clip(u"abc", 65535, true), u"abc");
    // Units are counted, so a cut may split a surrogate pair.
    EXPECT_EQ(clip(u"a\xD83D\xDE00" u"b", 16, false), u"a\xD83D");
    EXPECT_EQ(clip(u"ab\xDC00" u"cdef", 40, true), u"ab\xDC00..");
}

// A box exactly as wide as ".." leaves no room and the text is kept as it is;
// a narrower one wraps the room round to 65,520, so all of the text is kept and
// the dots still go behind it.
TEST(ClipStringToFit, TooNarrowBoxesKeepTheWholeText)
{
    EXPECT_EQ(clip(u"abcdef", 16, true), u"abcdef");
    EXPECT_EQ(clip(u"abcdef", 1, true), u"abcdef..");
    EXPECT_EQ(clip(u"abcdef", 0, true), u"abcdef..");
    EXPECT_EQ(clip(u"abcdef", 0, false), u"abcdef");
    EXPECT_EQ(clip(u"abcdef", 5, false), u"abcdef");     // not even 'a' fits
    EXPECT_EQ(clip(u"abcdef", 12, true), u"abcdef..");
    // Wider than 16 bits: 65,535 less the dots finds no character.
    EXPECT_EQ(clip(u"@@", 65535, true), u"@@..");
    EXPECT_EQ(clip(u"@@", 65535, false), u"@@");
}

TEST(FitTextToWidth, EndCutStepsBackOverBlanks)
{
    // "ab   cdef" would be cut inside the blanks: they go, and the dots follow 'b'.
    EXPECT_EQ(fit(u"ab   cdef", 40, eShortenEnd), u"ab..");
    // The cut stops one character short of what would fit beside the dots.
    EXPECT_EQ(fit(u"abcdef", 40, eShortenEnd), u"ab..");
    EXPECT_EQ(fit(u"abcdef", 24, eShortenEnd), u"..");
    EXPECT_EQ(fit(u"   abcdef", 36, eShortenEnd), u"..");
}

TEST(FitTextToWidth, TextThatCannotBeCutComesBackUnchanged)
{
    EXPECT_EQ(fit(u"abcdef", 48, eShortenEnd), u"abcdef");   // fits
    EXPECT_EQ(fit(u"abcdef", 20, eShortenEnd), u"abcdef");   // 'a' and ".." are 24
    EXPECT_EQ(fit(u"abcdef", 0, eShortenEnd), u"abcdef");
    EXPECT_EQ(fit(u"@@", 65535, eShortenEnd), u"@@");
    EXPECT_EQ(fit(u"", 0, eShortenMiddle), u"");
    EXPECT_EQ(fit(u"abcdef", 10, eShortenEnd, Qv::Ptr<iFont>()), u"abcdef");
    EXPECT_EQ(fit(u"@", 10, eShortenMiddle), u"@");         // one character: nothing to take out
}

TEST(FitTextToWidth, MiddleCutTakesFromFrontAndBackInTurn)
{
    EXPECT_EQ(fit(u"abcdefgh", 48, eShortenMiddle), u"ab..h");
    EXPECT_EQ(fit(u"abcdefgh", 56, eShortenMiddle), u"ab..gh");
    EXPECT_EQ(fit(u"abcd", 31, eShortenMiddle), u"a..");
    EXPECT_EQ(fit(u"ab", 15, eShortenMiddle), u"..");
    // Each '@' counts 4,464 in 16 bits, so both seem to fit and the text stays.
    EXPECT_EQ(fit(u"@@", 65535, eShortenMiddle), u"@@");
    // A font that measures only part of the text cannot cut its middle.
    EXPECT_EQ(fit(u"abcdefgh", 30, eShortenMiddle, Qv::make<FixedFont>(2)), u"abcdefgh");
}

TEST(ClipFilenameToFit, FoldersShrinkInTurnAndTheNameSurvives)
{
    EXPECT_EQ(clipPath(u"/aaa/bbbb/name", 112), u"/aaa/bbbb/name");
    EXPECT_EQ(clipPath(u"/aaa/bbbb/name", 111), u"/a../b../name");
    EXPECT_EQ(clipPath(u"/aaa/bbbb/name", 100), u"/../b../name");
    // The longest folder goes first, and of two as long, the first.
    EXPECT_EQ(clipPath(u"/a/bbbb/name", 95), u"/a/b../name");
    EXPECT_EQ(clipPath(u"/aaaa/bbbb/n", 95), u"/a../bb../n");
    // Once every folder is gone the path stays as wide as it is.
    EXPECT_EQ(clipPath(u"/aaa/bbbb/name", 0), u"/../../name");
    EXPECT_EQ(clipPath(u"/aaa/bbbb/name/", 112), u"/a../b../name/");
    EXPECT_EQ(clipPath(u"aaa/name", 56), u"../name");
    EXPECT_EQ(clipPath(u"aaa//name", 64), u"a../name");      // doubled separators close up
}

TEST(ClipFilenameToFit, PathsItCannotShortenComeBackAsTheyAre)
{
    EXPECT_EQ(clipPath(u"", 0), u"");
    EXPECT_EQ(clipPath(u"averyverylongname", 0), u"averyverylongname");
    EXPECT_EQ(clipPath(u"/name/", 0), u"/name/");
    EXPECT_EQ(clipPath(u"/aaa/bbbb/name", 65535), u"/aaa/bbbb/name");
    std::u16string deep;
    for (int level = 0; level < 300; ++level)
        deep += u"a/";
    EXPECT_EQ(clipPath(deep, 0), deep);
}

TEST(GlyphNames, CodesNameTheirGlyphs)
{
    EXPECT_EQ(getString(QvTTF::eZoomIn), WString(u"+"));
    EXPECT_EQ(QvTTF::getDescription(QvTTF::eGlyph(44)), WString(u"Plus"));   // ',' is the plus glyph
    EXPECT_TRUE(QvTTF::getDescription(QvTTF::eGlyph(61)).empty());
}

class DrawTextEx : public RecordingCanvasTest {};

// The default family in bold, whatever the typeface asks for; the colour dimmed
// to 70%; the position moved from the middle of the line to the baseline.
TEST_F(DrawTextEx, DrawsInTheDefaultBoldFontWithTheTypefacesColourDimmed)
{
    Typeface typeface("Some other family", 40, false, false, 1.0);
    typeface.colour = Colour(1.0, 0.5, 0.0, true);
    tela_drawTextEx(WString(u"Hi"), {10, 20}, canvas, typeface, {0, 1}, eFontOutputDefault);

    const Qv::Ptr<iFont> bold = Tela::loadFont(getDefaultFontName(0), getDefaultFontSize(), 1);
    ASSERT_TRUE(bold);
    std::size_t call = 0;
    while (call < recorder->callCount() && std::string(recorder->calls()[call].operation) != "drawTexts")
        ++call;
    ASSERT_LT(call, recorder->callCount()) << recorder->operations();
    const auto& drawn = recorder->primitive<TextDescription>(call);
    EXPECT_EQ(drawn.text, WString(u"Hi"));
    EXPECT_EQ(drawn.font.get(), bold.get());
    const Colour dimmed = scale(typeface.colour, 0.7);
    EXPECT_FLOAT_EQ(drawn.colour.r, dimmed.r);
    EXPECT_FLOAT_EQ(drawn.colour.g, dimmed.g);
    const iFont::Metrics& metrics = bold->getMetrics();
    EXPECT_EQ(drawn.position.x, 10);
    EXPECT_EQ(drawn.position.y, 50 - (20 + metrics.descent - (metrics.height >> 1)));

    tela_drawTextEx(WString(u"Hi"), {10, 20}, nullptr, typeface, {0, 1}, eFontOutputDefault);
}

} // namespace
