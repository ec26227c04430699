// The font table: sharing, emptying when full, fonts per window, the one
// fallback to the default family; the default name and size; size mapping and
// text boxes with the platform's real fonts.

#include "tela/canvas/Canvas.h"
#include "tela/canvas/CanvasTree.h"
#include "tela/canvas/RootCanvas.h"
#include "tela/core/Preferences.h"
#include "tela/render/Descriptions.h"
#include "tela/state/TelaState.h"
#include "tela/text/Fonts.h"

#include "support/ReportCapture.h"
#include "text/FixedFontWindow.h"

#include <gtest/gtest.h>

#include <set>
#include <vector>

namespace {

const char* const FAILED = "*** Failed to load Font ***\n";
const char* const FULL = "Font table full - emptying\n";

class FontTableTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_EQ(tela_rootcanvas(), nullptr);
        Tela::releaseAllFonts();
        setDefaultFontSize(Tela::INITIAL_DEFAULT_FONT_SIZE);
        setDefaultFontName(String());   // the platform's family again
    }
    void TearDown() override { Tela::releaseAllFonts(); }

    const Qv::Vector<Qv::Ptr<GFONT>>& table() const { return Tela::fontTable(); }

    Qv::Ptr<FontWindow> window = Qv::make<FontWindow>(0x70000001u);
};

// A real root window from the embedded platform, for the tests that measure
// real text or make fonts through the root canvas.
class RootFontTest : public FontTableTest {
protected:
    void SetUp() override
    {
        FontTableTest::SetUp();
        iRootWindow::InitArgs args;
        args.size = {200, 100};
        root = tela_createRootCanvas(args);
        ASSERT_NE(root, nullptr);
    }
    void TearDown() override
    {
        FontTableTest::TearDown();
        tela_setcanvas(nullptr);
        tela_deletecanvas(root);
    }

    Canvas* root = nullptr;
};

} // namespace

TEST_F(FontTableTest, TheSameRequestIsSharedPerWindowAndAnEmptyRequestIsTheDefaultFont)
{
    const Qv::Ptr<iFont> first = Tela::loadFont(Tela::FontDesc("Serif", 12, 1), window);
    ASSERT_TRUE(first);
    EXPECT_EQ(Tela::loadFont(Tela::FontDesc("Serif", 12, 1), window), first);
    // Size, style, name and window each tell requests apart.
    EXPECT_NE(Tela::loadFont(Tela::FontDesc("Serif", 13, 1), window), first);
    EXPECT_NE(Tela::loadFont(Tela::FontDesc("Serif", 12, 0), window), first);
    EXPECT_NE(Tela::loadFont(Tela::FontDesc("Sans", 12, 1), window), first);
    const auto other = Qv::make<FontWindow>(0x70000002u);
    EXPECT_NE(Tela::loadFont(Tela::FontDesc("Serif", 12, 1), other), first);
    EXPECT_EQ(window->created, 4);
    EXPECT_EQ(other->created, 1);

    const Qv::Ptr<iFont> plain = Tela::loadFont(Tela::FontDesc(), window);
    const auto* made = dynamic_cast<const SizedFont*>(plain.get());
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(made->family(), fromUTF8(getDefaultFontName(0)));
    EXPECT_EQ(made->size(), Tela::INITIAL_DEFAULT_FONT_SIZE);
    // Asking by the default's name and size explicitly finds the same entry.
    EXPECT_EQ(Tela::loadFont(Tela::FontDesc(getDefaultFontName(0), Tela::INITIAL_DEFAULT_FONT_SIZE, 0), window),
              plain);

    // The entry carries the metrics as read when it was made.
    const GFONT& entry = *table().back();
    EXPECT_EQ((std::vector<int>{entry.height, entry.ascent, entry.negatedDescent, entry.baseline}),
              (std::vector<int>{20, 12, -4, 12}));
    EXPECT_EQ(entry.windowId, 0x70000001u);
}

TEST_F(FontTableTest, TheHundredAndFirstFontEmptiesTheTableButFontsHeldStayAlive)
{
    ReportCapture report;
    Qv::Ptr<iFont> oldest;
    for (unsigned short size = 1; size <= 100; ++size) {
        const Qv::Ptr<iFont> font = Tela::loadFont(Tela::FontDesc("Serif", size, 0), window);
        if (size == 1)
            oldest = font;
    }
    EXPECT_EQ(table().size(), 100u);
    EXPECT_EQ(report.count(FULL), 0);
    // Found again without disturbing anything.
    EXPECT_EQ(Tela::loadFont(Tela::FontDesc("Serif", 1, 0), window), oldest);
    EXPECT_EQ(table().size(), 100u);

    const Qv::Ptr<iFont> newest = Tela::loadFont(Tela::FontDesc("Serif", 101, 0), window);
    EXPECT_EQ(report.count(FULL), 1);
    ASSERT_EQ(table().size(), 1u);
    EXPECT_EQ(table().front()->font, newest);

    // The caller's font still works; the table no longer shares it.
    EXPECT_EQ(oldest->getMetrics().height, 1);
    const int before = window->created;
    const Qv::Ptr<iFont> again = Tela::loadFont(Tela::FontDesc("Serif", 1, 0), window);
    EXPECT_NE(again, oldest);
    EXPECT_EQ(window->created, before + 1);
}

TEST_F(FontTableTest, AFontThatCannotBeLoadedIsReportedAndTheDefaultFamilyTakesItsPlace)
{
    ReportCapture report;
    const Qv::Ptr<iFont> font = Tela::loadFont(Tela::FontDesc("Missing Family", 30, 2), window);
    EXPECT_EQ(report.count(FAILED), 1);
    const auto* made = dynamic_cast<const SizedFont*>(font.get());
    ASSERT_NE(made, nullptr);
    // The default family, at the size and in the style asked for.
    EXPECT_EQ(made->family(), fromUTF8(getDefaultFontName(0)));
    EXPECT_EQ(made->size(), 30);
    EXPECT_EQ(font->getStyle(), 2u);
    // Nothing of the failure is kept.
    ASSERT_EQ(table().size(), 1u);
    EXPECT_EQ(table().front()->name, getDefaultFontName(0));
}

TEST_F(FontTableTest, WhenNothingCanBeLoadedTheCallerGetsNull)
{
    ReportCapture report;
    window->broken = true;
    // Each name tried is reported once: the request's and then the default's...
    EXPECT_FALSE(Tela::loadFont(Tela::FontDesc("Serif", 12, 0), window));
    EXPECT_EQ(report.count(FAILED), 2);
    // ...and a request for the default family is not tried twice.
    report.clear();
    EXPECT_FALSE(Tela::loadFont(Tela::FontDesc(), window));
    EXPECT_EQ(report.count(FAILED), 1);
    EXPECT_TRUE(table().empty());

    // Before there is a root window no font can be made at all.
    report.clear();
    EXPECT_FALSE(Tela::loadFont(String(), 0, 0));
    EXPECT_FALSE(Tela::getDefaultFont(1));
    EXPECT_EQ(report.count(FAILED), 2);
    EXPECT_EQ(getFontYOffset(20, Tela::FontDesc()), 0);
    // A description with no font to be had keeps an empty box.
    const Tela::TextDescription text(WString(u"text"), XY<int>{5, 5}, NormalisedRGB(), TextAlignment{0, 1},
                                     Tela::FontDesc());
    EXPECT_FALSE(text.font);
    EXPECT_EQ(text.extents, (Qv::Box<int>{0, 0, 0, 0}));
}

TEST_F(FontTableTest, TheDefaultNameTakesStyleSuffixesAndAChangeEmptiesTheTable)
{
    const String platform = getDefaultFontName(0);
    EXPECT_FALSE(platform.empty());
    Tela::loadFont(Tela::FontDesc("Serif", 12, 0), window);

    setDefaultFontName(String("Chosen"));
    EXPECT_TRUE(table().empty());
    EXPECT_EQ(prefs().getPreference("Default font name"), String("Chosen"));
    EXPECT_EQ(getDefaultFontName(0), String("Chosen"));
    EXPECT_EQ(getDefaultFontName(1), String("Chosen-b"));
    EXPECT_EQ(getDefaultFontName(2), String("Chosen-i"));
    EXPECT_EQ(getDefaultFontName(3), String("Chosen-b-i"));

    // The same name again leaves the table alone.
    Tela::loadFont(Tela::FontDesc("Serif", 12, 0), window);
    setDefaultFontName(String("Chosen"));
    EXPECT_EQ(table().size(), 1u);

    // With neither a name nor a preference, the platform's family again.
    setDefaultFontName(String());
    EXPECT_EQ(getDefaultFontName(0), platform);
}

TEST_F(FontTableTest, TheDefaultSizeFillsInSizeZeroWithoutTouchingFontsAlreadyMade)
{
    const Tela::FontDesc any;
    const Qv::Ptr<iFont> at16 = Tela::loadFont(any, window);
    setDefaultFontSize(24);
    EXPECT_EQ(any.getSize(), 24);
    EXPECT_EQ(Tela::FontDesc("Serif", 9, 0).getSize(), 9);
    EXPECT_EQ(table().size(), 1u);
    const Qv::Ptr<iFont> at24 = Tela::loadFont(any, window);
    EXPECT_EQ(dynamic_cast<const SizedFont&>(*at24).size(), 24);
    EXPECT_EQ(table().size(), 2u);

    // The text style is no part of a request's identity.
    Tela::FontDesc shadowed("Serif", 12, 1);
    shadowed.textStyle = eTextDropShadow;
    EXPECT_EQ(shadowed, Tela::FontDesc("Serif", 12, 1));
    EXPECT_FALSE(shadowed == Tela::FontDesc("Serif", 12, 0));
}

TEST(FontYOffset, HalfTheRoomAboveTheAscentWrappingWhenThereIsNone)
{
    const auto font = Qv::make<SizedFont>(WString(u"f"), 17, 0, false);   // ascent 12
    EXPECT_EQ(getFontYOffset(20, Qv::Ptr<iFont>()), 0);
    EXPECT_EQ(getFontYOffset(19, font), 4);
    EXPECT_EQ(getFontYOffset(11, font), 0);
    // An ascent taller than the line wraps round in unsigned arithmetic.
    EXPECT_EQ(getFontYOffset(10, font), 0xFFFF);
}

TEST_F(RootFontTest, RequestsWithoutAWindowAndTheCanvasesFontsAreKeptApart)
{
    // Opening the window loaded the default fonts, plain and bold.
    ASSERT_EQ(table().size(), 2u);
    const std::size_t defaults = table().size();
    const Qv::Ptr<iFont> shared = Tela::loadFont(String("DejaVu Sans"), 14, 0);
    ASSERT_TRUE(shared);
    EXPECT_EQ(table().back()->windowId, 0u);
    const Qv::Ptr<iFont> own = root->createFont(Tela::FontDesc("DejaVu Sans", 14, 0));
    ASSERT_TRUE(own);
    EXPECT_NE(own, shared);
    EXPECT_EQ(table().back()->windowId, root->getWindow()->identity());
    EXPECT_EQ(root->createFont(Tela::FontDesc("DejaVu Sans", 14, 0)), own);

    // Sizes outside what the platform makes still give a font, found again.
    const Qv::Ptr<iFont> huge = Tela::loadFont(String("DejaVu Sans"), 2000, 0);
    ASSERT_TRUE(huge);
    EXPECT_EQ(Tela::loadFont(String("DejaVu Sans"), 2000, 0), huge);
    // The default fonts are the ones the window's opening loaded.
    EXPECT_EQ(Tela::getDefaultFont(0), table()[0]->font);
    EXPECT_EQ(Tela::getDefaultFont(1), table()[1]->font);
    EXPECT_EQ(table().size(), defaults + 3);
}

TEST_F(RootFontTest, TheAvailableFamiliesAreFoundWhateverTheirCase)
{
    std::set<WString, WString::ICompare> families;
    Tela::getAvailableFonts(families);
    EXPECT_EQ(families.count(WString(u"DejaVu Sans")), 1u);
    EXPECT_EQ(families.count(WString(u"dejavu SANS")), 1u);
    EXPECT_EQ(families.count(WString(u"DejaVu Sans Mon")), 0u);
    // One family however its names are written.
    std::set<WString, WString::ICompare> names{WString(u"Serif"), WString(u"SERIF"), WString(u"Sans")};
    EXPECT_EQ(names.size(), 2u);
}

TEST_F(RootFontTest, ASubstituteFamilyIsSizedToLookAsWideAsTheDefault)
{
    const std::size_t loaded = table().size();
    // The default family maps to the default size itself.
    EXPECT_EQ(Tela::mapFontSize(String("DejaVu Sans")), 16);
    // A wider family comes out smaller, and just wide enough.
    const unsigned short mono = Tela::mapFontSize(String("DejaVu Sans Mono"));
    EXPECT_LT(mono, 16);
    const WString sentence(u"The quick brown fox");
    const int target = Tela::getDefaultFont(0)->getTextExtent(sentence, iFont::ALL_CHARACTERS).x;
    const auto window = root->getWindow();
    EXPECT_GE(window->createFont(WString(u"DejaVu Sans Mono"), mono, 0, 0)->getTextExtent(sentence, 0xFFFFFFFFu).x,
              target);
    EXPECT_LT(window->createFont(WString(u"DejaVu Sans Mono"), mono - 1, 0, 0)
                  ->getTextExtent(sentence, 0xFFFFFFFFu)
                  .x,
              target);
    // Kept: a change of the default size does not move a mapping once made.
    setDefaultFontSize(30);
    EXPECT_EQ(Tela::mapFontSize(String("DejaVu Sans Mono")), mono);
    // The mapping bypasses the table.
    EXPECT_EQ(table().size(), loaded);
}

TEST_F(RootFontTest, TextWithoutAFontIsMeasuredInTheDefaultFont)
{
    const WString words(u"Hello, world");
    const Tela::TextDescription left(words, XY<int>{10, 40}, NormalisedRGB(), TextAlignment{0, 1},
                                     Qv::Ptr<iFont>());
    const Qv::Ptr<iFont> font = Tela::getDefaultFont(0);
    ASSERT_TRUE(font);
    EXPECT_EQ(left.font, font);
    const int width = font->getTextExtent(words, iFont::ALL_CHARACTERS).x;
    const iFont::Metrics& metrics = font->getMetrics();
    ASSERT_GT(width, 0);
    EXPECT_EQ(left.extents, (Qv::Box<int>{10, 40 - metrics.descent, 10 + width, 40 + metrics.ascent}));

    // A request by description gives the same font and box; centred text is
    // split about the position.
    const Tela::TextDescription described(words, XY<int>{10, 40}, NormalisedRGB(), TextAlignment{0, 1},
                                          Tela::FontDesc());
    EXPECT_EQ(described.font, font);
    EXPECT_EQ(described.extents, left.extents);
    const Tela::TextDescription centred(words, XY<int>{100, 40}, NormalisedRGB(), TextAlignment{2, 1},
                                        Tela::FontDesc());
    EXPECT_EQ(centred.extents.x1, 100 - width / 2);
    EXPECT_EQ(centred.extents.x2, 100 - width / 2 + width);
}
