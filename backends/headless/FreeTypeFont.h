// FreeTypeFont: the platform's iFont. Fontconfig finds the face, FreeType loads and
// renders its glyphs, HarfBuzz shapes text with it. Both platforms make fonts here.
//
// - Size is the em in pixels, kept within MIN_PIXELS..MAX_PIXELS: 0 gives 1 pixel, 2,000
//   gives 512, so a bad size costs neither a crash nor a glyph of megabytes.
// - Style bit 0 asks for bold, bit 1 for italic. When the family has no such face the
//   regular one is emboldened (and its advances widened to match) or slanted.
// - A family Fontconfig does not know gives DEFAULT_FAMILY (Fontconfig's best match for
//   it). When even that yields no face, the trouble is reported once and no font is made.
// - Positions are in UTF-16 units. A character is a unit together with the units that
//   cannot stand alone after it (the second half of a surrogate pair, a combining
//   mark): they share its edges, and a caret never stops between them. A ligature's
//   width is shared evenly among the characters it joins, so a caret can stop inside it.
//   A lone surrogate is measured and drawn as U+FFFD.
// - Shaped runs and rendered glyphs are cached per font, bounded (FontCache), so a
//   repaint of unchanged text neither shapes nor renders again.
// - Text is shaped in one direction, the one its script suggests: right-to-left text on
//   its own is right, mixed directions are not reordered.
// Every operation locks the font: FreeType faces are not safe on two threads at once.
#pragma once

#include "headless/FontCache.h"
#include "tela/platform/iFont.h"

#include <pixman.h>

#include <cstdint>
#include <memory>
#include <mutex>
#include <set>

typedef struct _FcConfig FcConfig;

namespace Headless {

class FreeTypeFont final : public iFont {
public:
    static constexpr unsigned MIN_PIXELS = 1;
    static constexpr unsigned MAX_PIXELS = 512;
    static constexpr const char16_t* DEFAULT_FAMILY = u"DejaVu Sans";
    enum : unsigned { eBold = 1, eItalic = 2 };

    // Null, reported once, when no face can be had, not even the default one. `config`
    // null is Fontconfig's own configuration; tests pass one of their own.
    static Qv::Ptr<FreeTypeFont> create(const WString& family, unsigned pixels, unsigned style,
                                        FcConfig* config = nullptr);
    // Tests: report a missing default face again.
    static void forgetReports();

    ~FreeTypeFont() override;
    FreeTypeFont(const FreeTypeFont&) = delete;
    FreeTypeFont& operator=(const FreeTypeFont&) = delete;

    // iFont
    const Metrics& getMetrics() const override { return m_metrics; }
    unsigned int getStyle() const override { return m_style; }
    void analyse(const WString& text, std::vector<int>& rightEdges) const override;
    XY<int> getTextExtent(const WString& text, unsigned count) const override;
    // eCharAt: the character holding unit `index`; eCharBefore and eCharAfter: the one
    // on either side of it, where an index at the end of the text counts as the place
    // after its last character. index -1 when there is no such character.
    CharacterLocation locateChar(const WString& text, eCharSeekMethod method, unsigned short index) const override;
    // The character whose pixels hold x, counted from the start of the text; index -1
    // left of the text, at or beyond its end.
    CharacterLocation getCharInfoForPixelX(const WString& text, int x) const override;

    // Text as HarfBuzz laid it out. Immutable once made.
    struct PlacedGlyph {
        std::uint32_t glyph = 0;
        std::int32_t x = 0;          // pen position plus offset, 26.6 pixels from the run's start
        std::int32_t y = 0;          // upward offset from the baseline, 26.6 pixels
        std::uint32_t cluster = 0;   // its first UTF-16 unit
    };
    class ShapedRun final : public iObject {
    public:
        Qv::Vector<PlacedGlyph> glyphs;   // left to right on the screen
        Qv::Vector<int> edges;            // per unit: the right edge of its character, in pixels
        Qv::Vector<std::uint8_t> starts;  // per unit: 1 where a character begins
        std::size_t bytes() const;
    };
    // Never null; empty for empty text.
    Qv::Ptr<ShapedRun> shape(const WString& text) const;

    // A glyph's coverage, ready to composite. mask is null for a glyph with no ink.
    class GlyphImage final : public iObject {
    public:
        GlyphImage() = default;
        ~GlyphImage() override;
        GlyphImage(const GlyphImage&) = delete;
        GlyphImage& operator=(const GlyphImage&) = delete;

        pixman_image_t* mask = nullptr;   // PIXMAN_a8
        void* bits = nullptr;             // the mask's pixels, from the memory seam
        int left = 0;                     // from the pen to the mask's left column
        int top = 0;                      // from the baseline up to the mask's top row
        int width = 0;
        int height = 0;
    };
    // `heavy` thickens the strokes without moving anything. Never null.
    Qv::Ptr<GlyphImage> glyph(std::uint32_t glyph, bool heavy) const;

    unsigned pixels() const { return m_pixels; }
    bool isSyntheticBold() const { return m_synthetic_bold; }
    bool isSyntheticItalic() const { return m_synthetic_italic; }
    // How many runs were shaped, cached or not: tests see the cache work.
    std::uint64_t shapeCount() const;

private:
    struct Engine;   // the FreeType library, face and HarfBuzz font
    FreeTypeFont(std::unique_ptr<Engine> engine, unsigned pixels, unsigned style, bool synthetic_bold,
                 bool synthetic_italic);

    Qv::Ptr<ShapedRun> shapeLocked(const WString& text) const;
    Qv::Ptr<GlyphImage> renderLocked(std::uint32_t glyph, bool heavy) const;

    struct TextHash {
        std::size_t operator()(const WString& text) const;
    };

    std::unique_ptr<Engine> m_engine;
    unsigned m_pixels;
    unsigned m_style;
    bool m_synthetic_bold;
    bool m_synthetic_italic;
    Metrics m_metrics;
    mutable std::mutex m_mutex;
    mutable FontCache<WString, ShapedRun, TextHash> m_runs;
    mutable FontCache<std::uint64_t, GlyphImage> m_glyphs;
    mutable std::uint64_t m_shape_count = 0;
};

// Adds every scalable family Fontconfig knows, by each of its names, to `names`.
void enumerateFontFamilies(std::set<WString, WString::ICompare>& names, FcConfig* config = nullptr);

// What both platforms' root windows give as createFont: the size is scaled by the
// user-interface scale before it is clamped; `variant` has no meaning here.
Qv::Ptr<iFont> createFont(const WString& family, unsigned short size, unsigned style, float ui_scale);

} // namespace Headless
