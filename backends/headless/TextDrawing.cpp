#include "headless/TextDrawing.h"

#include "headless/FreeTypeFont.h"
#include "tela/core/Log.h"

#include <algorithm>
#include <atomic>
#include <memory>

namespace {

std::atomic<bool> g_reported_foreign_font { false };

float unit_interval(float value)
{
    if (!(value > 0.0f))   // also catches NaN
        return 0.0f;
    return value < 1.0f ? value : 1.0f;
}

std::uint16_t channel(float value)
{
    return static_cast<std::uint16_t>(static_cast<int>(value * 255.0f + 0.5f) * 257);
}

struct ImageRelease {
    void operator()(pixman_image_t* image) const
    {
        if (image)
            pixman_image_unref(image);
    }
};
using PixmanImage = std::unique_ptr<pixman_image_t, ImageRelease>;

PixmanImage solid(const NormalisedRGB& colour)
{
    const float alpha = unit_interval(colour.a);
    const pixman_color_t premultiplied { channel(unit_interval(colour.r) * alpha),
                                         channel(unit_interval(colour.g) * alpha),
                                         channel(unit_interval(colour.b) * alpha), channel(alpha) };
    return PixmanImage(pixman_image_create_solid_fill(&premultiplied));
}

// Columns [left, right) of the screen.
struct Span {
    int left;
    int right;
};

// Lays `paint` through the glyph's coverage at (x, y), within the columns of `span` only.
void composite_glyph(pixman_image_t* target, pixman_image_t* paint, const Headless::FreeTypeFont::GlyphImage& glyph,
                     int x, int y, Span span)
{
    const int left = std::max(x, span.left);
    const int right = std::min(x + glyph.width, span.right);
    if (left >= right)
        return;
    pixman_image_composite32(PIXMAN_OP_OVER, paint, glyph.mask, target, 0, 0, left - x, 0, left, y, right - left,
                             glyph.height);
}

void draw_text(pixman_image_t* target, const TextDescription& text, const Headless::FreeTypeFont& font)
{
    const Qv::Ptr<Headless::FreeTypeFont::ShapedRun> run = font.shape(text.text);
    const int length = static_cast<int>(run->edges.size());
    if (length == 0)
        return;
    const iFont::Metrics& metrics = font.getMetrics();
    const int origin_x = text.position.x;
    const int baseline = text.position.y;

    const int selection_start = std::clamp(text.selectionStart, 0, length);
    const int selection_end = std::clamp(text.selectionEnd, selection_start, length);
    Span selected { 0, 0 };
    if (selection_start < selection_end) {
        selected.left = origin_x + (selection_start == 0 ? 0 : run->edges[selection_start - 1]);
        selected.right = origin_x + run->edges[selection_end - 1];
        const PixmanImage background = solid(text.thirdColour);
        pixman_image_composite32(PIXMAN_OP_OVER, background.get(), nullptr, target, 0, 0, 0, 0, selected.left,
                                 baseline - metrics.ascent, selected.right - selected.left,
                                 metrics.ascent + metrics.descent);
    }

    const PixmanImage ink = solid(text.colour);
    const PixmanImage selected_ink = solid(text.secondColour);
    const int target_width = pixman_image_get_width(target);
    const int target_height = pixman_image_get_height(target);
    if (baseline - 2 * static_cast<int>(font.pixels()) >= target_height
        || baseline + 2 * static_cast<int>(font.pixels()) < 0)
        return;   // the whole line is above or below the image
    // Glyphs run left to right; none reaches further than two ems from its pen.
    const int reach = 2 * static_cast<int>(font.pixels()) + 2;
    constexpr Span EVERYWHERE { INT32_MIN, INT32_MAX };
    for (const Headless::FreeTypeFont::PlacedGlyph& placed : run->glyphs) {
        const int pen = origin_x + ((placed.x + 32) >> 6);
        if (pen + reach < 0)
            continue;
        if (pen - reach >= target_width)
            break;
        const Qv::Ptr<Headless::FreeTypeFont::GlyphImage> glyph = font.glyph(placed.glyph, text.heavy);
        if (!glyph->mask)
            continue;
        const int x = pen + glyph->left;
        const int y = baseline - ((placed.y + 32) >> 6) - glyph->top;
        if (selected.left == selected.right) {
            composite_glyph(target, ink.get(), *glyph, x, y, EVERYWHERE);
            continue;
        }
        composite_glyph(target, ink.get(), *glyph, x, y, { INT32_MIN, selected.left });
        composite_glyph(target, selected_ink.get(), *glyph, x, y, selected);
        composite_glyph(target, ink.get(), *glyph, x, y, { selected.right, INT32_MAX });
    }
}

} // namespace

void Headless::drawTexts(pixman_image_t* target, const TextDescription* texts, unsigned count)
{
    if (!target || !texts)
        return;
    for (unsigned n = 0; n < count; ++n) {
        const TextDescription& text = texts[n];
        if (!text.font || text.text.empty())
            continue;
        const auto* const font = dynamic_cast<const FreeTypeFont*>(text.font.get());
        if (!font) {
            if (!g_reported_foreign_font.exchange(true))
                murl_printf("SoftwareRenderer: text in a font of another platform is not drawn\n");
            continue;
        }
        draw_text(target, text, *font);
    }
}

void Headless::forgetTextReports()
{
    g_reported_foreign_font.store(false);
}
