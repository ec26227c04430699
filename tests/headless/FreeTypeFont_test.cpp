#include "headless/FreeTypeFont.h"
#include "headless/HeadlessRootWindow.h"
#include "headless/HeadlessServices.h"
#include "support/ReportCapture.h"

#include <fontconfig/fontconfig.h>
#include <ft2build.h>
#include FT_FREETYPE_H
#include <hb-ot.h>
#include <hb.h>

#include <gtest/gtest.h>

#include <map>
#include <string>

namespace {

using Headless::FreeTypeFont;

Qv::Ptr<FreeTypeFont> dejavu(unsigned pixels = 16, unsigned style = 0)
{
    Qv::Ptr<FreeTypeFont> font = FreeTypeFont::create(WString(u"DejaVu Sans"), pixels, style);
    EXPECT_TRUE(font) << "DejaVu Sans is needed by these tests";
    return font;
}

std::vector<int> edges_of(const iFont& font, const WString& text)
{
    std::vector<int> edges;
    font.analyse(text, edges);
    return edges;
}

// HarfBuzz's own view of a text, from the face file without our font in the way:
// for each cluster's first unit, the pen position in 26.6 after the cluster.
std::map<unsigned, std::int64_t> cluster_ends(const char16_t* text, unsigned pixels)
{
    FcPattern* pattern = FcNameParse(reinterpret_cast<const FcChar8*>("DejaVu Sans"));
    FcConfigSubstitute(nullptr, pattern, FcMatchPattern);
    FcDefaultSubstitute(pattern);
    FcResult result;
    FcPattern* match = FcFontMatch(nullptr, pattern, &result);
    FcChar8* path = nullptr;
    FcPatternGetString(match, FC_FILE, 0, &path);
    hb_blob_t* blob = hb_blob_create_from_file(reinterpret_cast<const char*>(path));
    hb_face_t* face = hb_face_create(blob, 0);
    hb_font_t* font = hb_font_create(face);
    hb_font_set_scale(font, pixels * 64, pixels * 64);
    hb_buffer_t* buffer = hb_buffer_create();
    const std::u16string_view units(text);
    hb_buffer_add_utf16(buffer, reinterpret_cast<const std::uint16_t*>(units.data()), units.size(), 0, units.size());
    hb_buffer_guess_segment_properties(buffer);
    hb_shape(font, buffer, nullptr, 0);
    unsigned count = 0;
    const hb_glyph_info_t* infos = hb_buffer_get_glyph_infos(buffer, &count);
    const hb_glyph_position_t* positions = hb_buffer_get_glyph_positions(buffer, &count);
    std::map<unsigned, std::int64_t> ends;
    std::int64_t pen = 0;
    for (unsigned n = 0; n < count; ++n) {
        pen += positions[n].x_advance;
        ends[infos[n].cluster] = pen;
    }
    hb_buffer_destroy(buffer);
    hb_font_destroy(font);
    hb_face_destroy(face);
    hb_blob_destroy(blob);
    FcPatternDestroy(match);
    FcPatternDestroy(pattern);
    return ends;
}

int pixels_of(std::int64_t fixed) { return static_cast<int>((fixed + 32) >> 6); }

} // namespace

TEST(FreeTypeFontFace, DejaVuAtSixteenPixelsHasPlausibleMetricsAndStyle)
{
    const Qv::Ptr<FreeTypeFont> font = dejavu(16, FreeTypeFont::eBold);
    ASSERT_TRUE(font);
    const iFont::Metrics& metrics = font->getMetrics();
    EXPECT_GE(metrics.ascent, 14);   // DejaVu's ascender is 0.93 em, its descender 0.24 em
    EXPECT_LE(metrics.ascent, 16);
    EXPECT_GE(metrics.descent, 3);
    EXPECT_LE(metrics.descent, 5);
    EXPECT_GE(metrics.height, metrics.ascent + metrics.descent);
    EXPECT_LE(metrics.height, 21);
    EXPECT_FALSE(font->isSyntheticBold());   // DejaVu Sans has a bold face of its own
}

TEST(FreeTypeFontFace, BoldIsWiderAndAFamilyWithoutBoldIsEmboldened)
{
    const WString text(u"The quick brown fox");
    const int regular = dejavu(16)->getTextExtent(text, iFont::ALL_CHARACTERS).x;
    EXPECT_GT(dejavu(16, FreeTypeFont::eBold)->getTextExtent(text, iFont::ALL_CHARACTERS).x, regular);

    // The TeX Gyre math face comes in one weight only.
    const WString single_weight(u"DejaVu Math TeX Gyre");
    const Qv::Ptr<FreeTypeFont> plain = FreeTypeFont::create(single_weight, 16, 0);
    const Qv::Ptr<FreeTypeFont> bold = FreeTypeFont::create(single_weight, 16, FreeTypeFont::eBold);
    ASSERT_TRUE(plain && bold);
    EXPECT_TRUE(bold->isSyntheticBold());
    EXPECT_GT(bold->getTextExtent(text, iFont::ALL_CHARACTERS).x, plain->getTextExtent(text, iFont::ALL_CHARACTERS).x);
    const Qv::Ptr<FreeTypeFont> slanted = FreeTypeFont::create(single_weight, 16, FreeTypeFont::eItalic);
    ASSERT_TRUE(slanted);
    EXPECT_TRUE(slanted->isSyntheticItalic());
    EXPECT_FALSE(dejavu(16, FreeTypeFont::eItalic)->isSyntheticItalic());   // DejaVu has its oblique
}

TEST(FreeTypeFontFace, UnknownFamilyFallsBackToDejaVuAndNoFaceAtAllGivesNoFont)
{
    const Qv::Ptr<FreeTypeFont> unknown = FreeTypeFont::create(WString(u"No Such Family Anywhere"), 16, 0);
    ASSERT_TRUE(unknown);
    const WString text(u"Fallback");
    EXPECT_EQ(unknown->getTextExtent(text, iFont::ALL_CHARACTERS).x,
              dejavu()->getTextExtent(text, iFont::ALL_CHARACTERS).x);
    EXPECT_EQ(unknown->getMetrics().ascent, dejavu()->getMetrics().ascent);

    ReportCapture reports;
    FreeTypeFont::forgetReports();
    FcConfig* const empty = FcConfigCreate();   // knows no font at all
    EXPECT_FALSE(FreeTypeFont::create(WString(u"DejaVu Sans"), 16, 0, empty));
    EXPECT_FALSE(FreeTypeFont::create(WString(), 16, 0, empty));
    FcConfigDestroy(empty);
    EXPECT_EQ(reports.count("and the default face DejaVu Sans cannot be had; no font made\n"), 1);
}

TEST(FreeTypeFontFace, TheInstalledFamiliesAreListedByEveryName)
{
    std::set<WString, WString::ICompare> names;
    Headless::services().windowing()->enumerateFonts(names);
    EXPECT_EQ(names.count(WString(u"DejaVu Sans")), 1u);
    EXPECT_EQ(names.count(WString(u"DejaVu Sans Condensed")), 1u);   // a second name of a DejaVu face
    EXPECT_EQ(names.count(WString(u"No Such Family Anywhere")), 0u);
}

TEST(FreeTypeFontFace, SizesAreClampedAndScaledByTheWindow)
{
    EXPECT_EQ(dejavu(0)->pixels(), FreeTypeFont::MIN_PIXELS);
    EXPECT_EQ(dejavu(2000)->pixels(), FreeTypeFont::MAX_PIXELS);
    EXPECT_GT(dejavu(0)->getMetrics().height, 0);

    Headless::RootWindow first(1);
    Headless::RootWindow second(1);
    EXPECT_NE(first.identity(), 0u);
    EXPECT_NE(first.identity(), second.identity());
    auto& system = *Headless::services().systemInfo();
    system.setUiScale(2.0f);
    const Qv::Ptr<iFont> scaled = first.createFont(WString(u"DejaVu Sans"), 16, 0, 0);
    system.setUiScale(1.0f);
    ASSERT_TRUE(scaled);
    EXPECT_EQ(scaled->getMetrics().height, dejavu(32)->getMetrics().height);
}

TEST(FreeTypeFontAnalyse, EdgesFollowHarfBuzzClustersAndSplitTheLigature)
{
    const Qv::Ptr<FreeTypeFont> font = dejavu();
    ASSERT_TRUE(font);
    const char16_t* const office = u"office";
    const std::map<unsigned, std::int64_t> ends = cluster_ends(office, 16);
    ASSERT_LT(ends.size(), 6u) << "DejaVu Sans is expected to join letters of \"office\"";
    const std::vector<int> edges = edges_of(*font, WString(office));
    ASSERT_EQ(edges.size(), 6u);
    // At the last unit of every cluster, the edge is HarfBuzz's pen there.
    for (auto cluster = ends.begin(); cluster != ends.end(); ++cluster) {
        const auto next = std::next(cluster);
        const unsigned last_unit = (next == ends.end() ? 6u : next->first) - 1;
        EXPECT_EQ(edges[last_unit], pixels_of(cluster->second)) << "cluster at " << cluster->first;
    }
    // Inside the ligature, the units share its width evenly.
    for (auto cluster = ends.begin(); cluster != ends.end(); ++cluster) {
        const auto next = std::next(cluster);
        const unsigned end = next == ends.end() ? 6u : next->first;
        const int left = cluster->first == 0 ? 0 : edges[cluster->first - 1];
        const int share = (edges[end - 1] - left) / static_cast<int>(end - cluster->first);
        for (unsigned unit = cluster->first; unit + 1 < end; ++unit) {
            EXPECT_NEAR(edges[unit] - (unit == 0 ? 0 : edges[unit - 1]), share, 1) << "unit " << unit;
            EXPECT_LT(edges[unit], edges[end - 1]);
        }
    }
    EXPECT_EQ(font->getTextExtent(WString(office), iFont::ALL_CHARACTERS).x, edges.back());
    EXPECT_EQ(font->getTextExtent(WString(office), 2).x, edges[1]);
    EXPECT_EQ(font->getTextExtent(WString(office), 0).x, 0);
}

TEST(FreeTypeFontAnalyse, MarksAndSurrogatePairsShareTheirCharactersEdges)
{
    const Qv::Ptr<FreeTypeFont> font = dejavu();
    ASSERT_TRUE(font);
    const WString text(u"e\u0301t\U0001D400x");   // e + combining acute, t, a pair, x
    const std::vector<int> edges = edges_of(*font, text);
    ASSERT_EQ(edges.size(), 6u);
    EXPECT_GT(edges[0], 0);
    EXPECT_EQ(edges[0], edges[1]);
    EXPECT_GT(edges[2], edges[1]);
    EXPECT_EQ(edges[3], edges[4]);
    EXPECT_GT(edges[5], edges[4]);
    EXPECT_EQ(font->getTextExtent(text, iFont::ALL_CHARACTERS).x, edges.back());

    // A caret steps over the mark and the pair, never into them.
    EXPECT_EQ(font->locateChar(text, iFont::eCharAfter, 0).index, 2);
    EXPECT_EQ(font->locateChar(text, iFont::eCharAt, 4).index, 3);
    EXPECT_EQ(font->locateChar(text, iFont::eCharBefore, 5).index, 3);
    EXPECT_EQ(font->locateChar(text, iFont::eCharBefore, 6).index, 5);   // from the end of the text
    EXPECT_EQ(font->locateChar(text, iFont::eCharBefore, 1).index, -1);
    EXPECT_EQ(font->locateChar(text, iFont::eCharAfter, 5).index, -1);
    EXPECT_EQ(font->locateChar(text, iFont::eCharAt, 6).index, -1);
    const iFont::CharacterLocation pair = font->locateChar(text, iFont::eCharAt, 3);
    EXPECT_EQ(pair.left, edges[2]);
    EXPECT_EQ(pair.right, edges[4]);

    EXPECT_EQ(font->getCharInfoForPixelX(text, 0).index, 0);
    EXPECT_EQ(font->getCharInfoForPixelX(text, pair.left).index, 3);
    EXPECT_EQ(font->getCharInfoForPixelX(text, pair.right - 1).index, 3);
    EXPECT_EQ(font->getCharInfoForPixelX(text, -1).index, -1);
    EXPECT_EQ(font->getCharInfoForPixelX(text, edges.back()).index, -1);
}

TEST(FreeTypeFontAnalyse, BadTextIsMeasuredWithoutTrouble)
{
    const Qv::Ptr<FreeTypeFont> font = dejavu();
    ASSERT_TRUE(font);
    EXPECT_TRUE(edges_of(*font, WString()).empty());
    EXPECT_EQ(font->getTextExtent(WString(), iFont::ALL_CHARACTERS).x, 0);
    EXPECT_EQ(font->locateChar(WString(), iFont::eCharBefore, 0).index, -1);

    const char16_t lone[] = { u'a', 0xD800, u'b', 0xDC00 };
    const std::vector<int> edges = edges_of(*font, WString(lone, 4));
    ASSERT_EQ(edges.size(), 4u);
    for (std::size_t n = 1; n < edges.size(); ++n)
        EXPECT_GT(edges[n], edges[n - 1]) << "each lone half is a character of its own";

    const std::u16string long_word(1u << 20, u'x');
    const WString megabyte(long_word.data(), long_word.size());
    const int x_width = font->getTextExtent(WString(u"xxxxxxxxxx"), iFont::ALL_CHARACTERS).x;
    EXPECT_NEAR(font->getTextExtent(megabyte, iFont::ALL_CHARACTERS).x, x_width * (1 << 20) / 10.0, 1 << 17);
}

TEST(FreeTypeFontAnalyse, UnchangedTextIsShapedOnce)
{
    const Qv::Ptr<FreeTypeFont> font = dejavu();
    ASSERT_TRUE(font);
    const WString text(u"Shaped once");
    const std::uint64_t before = font->shapeCount();
    edges_of(*font, text);
    font->getTextExtent(WString(u"Shaped once"), iFont::ALL_CHARACTERS);   // another body, the same text
    font->getCharInfoForPixelX(text, 3);
    EXPECT_EQ(font->shapeCount(), before + 1);
    // Thousands of other texts later the cache has turned over, and stayed bounded.
    for (int n = 0; n < 3000; ++n) {
        WString other(u"text ");
        other << static_cast<double>(n);
        edges_of(*font, other);
    }
    edges_of(*font, text);
    EXPECT_EQ(font->shapeCount(), before + 3002);
}
