#include "headless/FreeTypeFont.h"
#include "headless/PixmanRegion.h"
#include "headless/SoftwareRenderer.h"
#include "headless/TextDrawing.h"
#include "render/FakeFont.h"
#include "support/ReportCapture.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using Headless::FreeTypeFont;

constexpr std::uint32_t WHITE = 0xffffffff;

class TextDrawingTest : public ::testing::Test {
protected:
    static constexpr int WIDTH = 160;
    static constexpr int HEIGHT = 48;
    static constexpr int BASELINE = 30;

    void SetUp() override
    {
        font = FreeTypeFont::create(WString(u"DejaVu Sans"), 16, 0);
        ASSERT_TRUE(font);
        image = Headless::HostImage::create({ WIDTH, HEIGHT });
        image->fill(WHITE);
        ASSERT_TRUE(image->getRenderer(renderer, 1));
    }

    TextDescription text(const char16_t* units, int x = 4) const
    {
        TextDescription description;
        description.text = WString(units);
        description.position = { x, BASELINE };
        description.colour = NormalisedRGB(0.0f, 0.0f, 0.0f);
        description.font = font;
        return description;
    }

    // Rows, top and bottom, that hold a pixel other than white; -1 when none does.
    std::pair<int, int> inked_rows() const
    {
        std::pair<int, int> rows { -1, -1 };
        for (int y = 0; y < HEIGHT; ++y) {
            for (int x = 0; x < WIDTH; ++x) {
                if (image->pixelAt(x, y) != WHITE) {
                    rows.first = rows.first < 0 ? y : rows.first;
                    rows.second = y;
                    break;
                }
            }
        }
        return rows;
    }

    int count_pixels(std::uint32_t pixel) const
    {
        int count = 0;
        for (int y = 0; y < HEIGHT; ++y)
            for (int x = 0; x < WIDTH; ++x)
                count += image->pixelAt(x, y) == pixel;
        return count;
    }

    // How much darker than white the image is, summed over its pixels' green.
    int ink() const
    {
        int darkness = 0;
        for (int y = 0; y < HEIGHT; ++y)
            for (int x = 0; x < WIDTH; ++x)
                darkness += 255 - static_cast<int>((image->pixelAt(x, y) >> 8) & 0xff);
        return darkness;
    }

    Qv::Ptr<FreeTypeFont> font;
    Qv::Ptr<Headless::HostImage> image;
    Qv::Ptr<iGraphicPrimitivesRenderer> renderer;
};

} // namespace

TEST_F(TextDrawingTest, GlyphsSitOnTheBaselineWithTheirDescendersWhole)
{
    const TextDescription capitals = text(u"HHH");
    renderer->drawTexts(&capitals, 1);
    const std::pair<int, int> capital_rows = inked_rows();
    EXPECT_EQ(capital_rows.second, BASELINE - 1);   // H stands on the baseline
    EXPECT_GE(capital_rows.first, BASELINE - font->getMetrics().ascent);
    EXPECT_EQ(image->pixelAt(3, BASELINE - 5), WHITE);   // nothing left of the position
    EXPECT_NE(image->pixelAt(5, BASELINE - 5), WHITE);   // the stem of the first H

    image->fill(WHITE);
    const TextDescription descenders = text(u"gjpqy");
    renderer->drawTexts(&descenders, 1);
    const std::pair<int, int> descender_rows = inked_rows();
    EXPECT_GT(descender_rows.second, BASELINE + 1);
    EXPECT_LT(descender_rows.second, BASELINE + font->getMetrics().descent);

    // The whole run ends where the font says it does.
    image->fill(WHITE);
    const TextDescription word = text(u"Width");
    renderer->drawTexts(&word, 1);
    const int right = 4 + font->getTextExtent(word.text, iFont::ALL_CHARACTERS).x;
    for (int y = 0; y < HEIGHT; ++y)
        EXPECT_EQ(image->pixelAt(right + 1, y), WHITE) << "row " << y;
}

TEST_F(TextDrawingTest, NothingIsDrawnOutsideTheClip)
{
    const TopDownRect inside { 20, 0, 60, HEIGHT };
    Qv::Ptr<iRegion> clip;
    Headless::PixmanRegion::create(clip, &inside, 1);
    renderer->setClip(clip);
    const TextDescription line = text(u"MMMMMMMMMMMM", 0);
    renderer->drawTexts(&line, 1);
    int inked_inside = 0;
    for (int y = 0; y < HEIGHT; ++y) {
        for (int x = 0; x < WIDTH; ++x) {
            const bool in_clip = x >= inside.left && x < inside.right;
            if (!in_clip) {
                ASSERT_EQ(image->pixelAt(x, y), WHITE) << x << ", " << y;
            }
            inked_inside += in_clip && image->pixelAt(x, y) != WHITE;
        }
    }
    EXPECT_GT(inked_inside, 40);
}

TEST_F(TextDrawingTest, TheSelectionHasItsOwnBackgroundAndTextColours)
{
    TextDescription line = text(u"select me");
    line.secondColour = NormalisedRGB(1.0f, 1.0f, 1.0f);   // text on the selection
    line.thirdColour = NormalisedRGB(0.0f, 0.0f, 1.0f);    // the selection's background
    line.selectionStart = 7;
    line.selectionEnd = 99;                                 // beyond the text: cut to it
    renderer->drawTexts(&line, 1);
    std::vector<int> edges;
    font->analyse(line.text, edges);
    const int left = 4 + edges[6];
    const int right = 4 + edges[8];
    const std::uint32_t blue = 0xff0000ff;
    EXPECT_EQ(image->pixelAt(left, BASELINE - font->getMetrics().ascent), blue);
    EXPECT_EQ(image->pixelAt(right - 1, BASELINE + font->getMetrics().descent - 1), blue);
    EXPECT_EQ(image->pixelAt(left - 1, BASELINE - font->getMetrics().ascent), WHITE);
    EXPECT_EQ(image->pixelAt(right, BASELINE), WHITE);
    // The letters on the selection are white on blue: fewer blue pixels than its box.
    int blue_pixels = 0;
    for (int y = BASELINE - font->getMetrics().ascent; y < BASELINE + font->getMetrics().descent; ++y)
        for (int x = left; x < right; ++x)
            blue_pixels += image->pixelAt(x, y) == blue;
    const int box = (right - left) * (font->getMetrics().ascent + font->getMetrics().descent);
    EXPECT_LT(blue_pixels, box - 20);
    EXPECT_EQ(count_pixels(blue), blue_pixels);   // no background outside the selection
}

TEST_F(TextDrawingTest, HeavyTextHasMoreInkInTheSameRows)
{
    const TextDescription plain = text(u"Heavy text");
    renderer->drawTexts(&plain, 1);
    const int plain_ink = ink();
    const std::pair<int, int> plain_rows = inked_rows();
    image->fill(WHITE);
    TextDescription heavy = plain;
    heavy.heavy = true;
    renderer->drawTexts(&heavy, 1);
    EXPECT_GT(ink(), plain_ink + plain_ink / 5);
    EXPECT_EQ(inked_rows(), plain_rows);
}

TEST_F(TextDrawingTest, BadInputDrawsSafely)
{
    ReportCapture reports;
    Headless::forgetTextReports();
    TextDescription bad[5] = { text(u""), text(u"x"), text(u"a"), text(u"y"), text(u"z") };
    const char16_t lone[] = { u'a', 0xD800, u'b' };
    bad[1].text = WString(lone, 3);
    const std::u16string long_word(1u << 20, u'W');
    bad[2].text = WString(long_word.data(), long_word.size());
    bad[2].selectionStart = 3;
    bad[2].selectionEnd = 1 << 20;
    bad[3].font = nullptr;                        // what the library sends without a font
    bad[4].font = Qv::make<FakeFont>();           // a font this platform cannot draw
    renderer->drawTexts(bad, 5);
    renderer->drawTexts(&bad[4], 1);
    renderer->drawTexts(nullptr, 0);
    EXPECT_EQ(reports.count("SoftwareRenderer: text in a font of another platform is not drawn\n"), 1);
    EXPECT_GT(ink(), 0);

    const Qv::Ptr<FreeTypeFont> huge = FreeTypeFont::create(WString(u"DejaVu Sans"), 2000, 0);
    ASSERT_TRUE(huge);
    TextDescription big = text(u"Huge");
    big.font = huge;
    big.position = { -100, 400 };
    renderer->drawTexts(&big, 1);
}
