// FreeTypeFont.cpp
//
// [SECTION] Owners of the C libraries' objects, reports
// [SECTION] Finding a face with Fontconfig
// [SECTION] Making a font
// [SECTION] Shaping and the per-unit edges
// [SECTION] Measuring and locating
// [SECTION] Glyph images
#include "headless/FreeTypeFont.h"

#include "tela/core/Log.h"

#include <fontconfig/fontconfig.h>
#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_OUTLINE_H
#include <hb-ft.h>
#include <hb-ot.h>
#include <hb.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstring>
#include <optional>

// [SECTION] Owners of the C libraries' objects, reports

namespace {

struct PatternRelease {
    void operator()(FcPattern* pattern) const { FcPatternDestroy(pattern); }
};
using Pattern = std::unique_ptr<FcPattern, PatternRelease>;

struct BufferRelease {
    void operator()(hb_buffer_t* buffer) const { hb_buffer_destroy(buffer); }
};
using ShapingBuffer = std::unique_ptr<hb_buffer_t, BufferRelease>;

// A process that has no default face would otherwise say so for every text it measures.
std::atomic<bool> g_reported_missing_default { false };

// 26.6 fixed point to whole pixels, halves away from the left.
int round_26_6(std::int64_t value)
{
    return static_cast<int>((value + 32) >> 6);
}

constexpr std::size_t RUNS_PER_GENERATION = 512;
constexpr std::size_t RUN_BYTES_PER_GENERATION = 4u << 20;
constexpr std::size_t GLYPHS_PER_GENERATION = 1024;
constexpr std::size_t GLYPH_BYTES_PER_GENERATION = 4u << 20;

} // namespace

struct Headless::FreeTypeFont::Engine : Qv::HeapObject {
    Engine() = default;
    Engine(const Engine&) = delete;
    Engine& operator=(const Engine&) = delete;
    ~Engine()
    {
        // The HarfBuzz font holds a reference to the face; it goes first.
        if (shaper)
            hb_font_destroy(shaper);
        if (face)
            FT_Done_Face(face);
        if (library)
            FT_Done_FreeType(library);
    }

    FT_Library library = nullptr;
    FT_Face face = nullptr;
    hb_font_t* shaper = nullptr;
};

// [SECTION] Finding a face with Fontconfig

namespace {

struct FaceFile {
    String path;
    int index = 0;
    int weight = FC_WEIGHT_REGULAR;
    int slant = FC_SLANT_ROMAN;
    bool familyMatches = false;   // the face belongs to the family asked for
};

std::optional<FaceFile> match_face(FcConfig* config, const String& family, unsigned style)
{
    const Pattern pattern(FcPatternCreate());
    if (!pattern)
        return std::nullopt;
    const auto* family_name = reinterpret_cast<const FcChar8*>(family.c_str());
    FcPatternAddString(pattern.get(), FC_FAMILY, family_name);
    FcPatternAddInteger(pattern.get(), FC_WEIGHT,
                        (style & Headless::FreeTypeFont::eBold) ? FC_WEIGHT_BOLD : FC_WEIGHT_REGULAR);
    FcPatternAddInteger(pattern.get(), FC_SLANT,
                        (style & Headless::FreeTypeFont::eItalic) ? FC_SLANT_ITALIC : FC_SLANT_ROMAN);
    FcPatternAddBool(pattern.get(), FC_SCALABLE, FcTrue);
    if (!FcConfigSubstitute(config, pattern.get(), FcMatchPattern))
        return std::nullopt;
    FcDefaultSubstitute(pattern.get());

    FcResult result = FcResultNoMatch;
    const Pattern match(FcFontMatch(config, pattern.get(), &result));
    if (!match)
        return std::nullopt;
    FcChar8* path = nullptr;
    if (FcPatternGetString(match.get(), FC_FILE, 0, &path) != FcResultMatch || !path)
        return std::nullopt;

    FaceFile face;
    face.path = String(reinterpret_cast<const char*>(path));
    FcPatternGetInteger(match.get(), FC_INDEX, 0, &face.index);
    FcPatternGetInteger(match.get(), FC_WEIGHT, 0, &face.weight);
    FcPatternGetInteger(match.get(), FC_SLANT, 0, &face.slant);
    // Fontconfig's own rules may already have decided to embolden or slant a face that
    // lacks the weight or slant asked for; they then report the weight and slant asked
    // for, with these marks beside them.
    FcBool embolden = FcFalse;
    if (FcPatternGetBool(match.get(), FC_EMBOLDEN, 0, &embolden) == FcResultMatch && embolden)
        face.weight = FC_WEIGHT_REGULAR;
    FcMatrix* matrix = nullptr;
    if (FcPatternGetMatrix(match.get(), FC_MATRIX, 0, &matrix) == FcResultMatch && matrix && matrix->xy != 0.0)
        face.slant = FC_SLANT_ROMAN;
    FcChar8* matched_family = nullptr;
    for (int n = 0; FcPatternGetString(match.get(), FC_FAMILY, n, &matched_family) == FcResultMatch; ++n) {
        if (FcStrCmpIgnoreCase(matched_family, family_name) == 0)
            face.familyMatches = true;
    }
    return face;
}

} // namespace

// [SECTION] Making a font

Qv::Ptr<Headless::FreeTypeFont> Headless::FreeTypeFont::create(const WString& family, unsigned pixels,
                                                               unsigned style, FcConfig* config)
{
    pixels = std::clamp(pixels, MIN_PIXELS, MAX_PIXELS);
    const String wanted = toUTF8(family);
    const String fallback = toUTF8(WString(DEFAULT_FAMILY));

    Qv::Vector<FaceFile> candidates;
    if (!wanted.empty()) {
        if (std::optional<FaceFile> face = match_face(config, wanted, style); face && face->familyMatches)
            candidates.push_back(std::move(*face));
    }
    if (std::optional<FaceFile> face = match_face(config, fallback, style))
        candidates.push_back(std::move(*face));

    for (const FaceFile& candidate : candidates) {
        auto engine = std::make_unique<Engine>();
        if (FT_Init_FreeType(&engine->library) != 0)
            break;
        if (FT_New_Face(engine->library, candidate.path.c_str(), candidate.index, &engine->face) != 0)
            continue;
        if (!FT_IS_SCALABLE(engine->face) || FT_Set_Pixel_Sizes(engine->face, 0, pixels) != 0)
            continue;
        const bool synthetic_bold = (style & eBold) && candidate.weight < FC_WEIGHT_DEMIBOLD;
        const bool synthetic_italic = (style & eItalic) && candidate.slant == FC_SLANT_ROMAN;
        if (synthetic_italic) {
            // A slant of about 12 degrees, the usual lean of an oblique face.
            FT_Matrix shear { 0x10000, 0x3800, 0, 0x10000 };
            FT_Set_Transform(engine->face, &shear, nullptr);
        }
        hb_face_t* const shaping_face = hb_ft_face_create_referenced(engine->face);
        engine->shaper = hb_font_create(shaping_face);
        hb_face_destroy(shaping_face);
        // HarfBuzz's own reading of the tables: unhinted advances, in 26.6 pixels.
        hb_ot_font_set_funcs(engine->shaper);
        const int scale = static_cast<int>(pixels) * 64;
        hb_font_set_scale(engine->shaper, scale, scale);
        return Qv::Ptr<FreeTypeFont>(
            new FreeTypeFont(std::move(engine), pixels, style, synthetic_bold, synthetic_italic));
    }

    if (!g_reported_missing_default.exchange(true))
        murl_printf("FreeTypeFont: no face for \"%s\" and the default face %s cannot be had; no font made\n",
                    wanted.c_str(), fallback.c_str());
    return nullptr;
}

void Headless::FreeTypeFont::forgetReports()
{
    g_reported_missing_default.store(false);
}

Headless::FreeTypeFont::FreeTypeFont(std::unique_ptr<Engine> engine, unsigned pixels, unsigned style,
                                     bool synthetic_bold, bool synthetic_italic)
    : m_engine(std::move(engine))
    , m_pixels(pixels)
    , m_style(style)
    , m_synthetic_bold(synthetic_bold)
    , m_synthetic_italic(synthetic_italic)
    , m_runs(RUNS_PER_GENERATION, RUN_BYTES_PER_GENERATION)
    , m_glyphs(GLYPHS_PER_GENERATION, GLYPH_BYTES_PER_GENERATION)
{
    // From the design units rather than FreeType's hinted size metrics, rounded outward
    // so that a line box holds every glyph the face means to fit in it.
    const FT_Face face = m_engine->face;
    const double scale = static_cast<double>(pixels) / face->units_per_EM;
    const int ascent = static_cast<int>(std::ceil(face->ascender * scale));
    const int descent = static_cast<int>(std::ceil(-face->descender * scale));
    const int line = static_cast<int>(std::ceil(face->height * scale));
    m_metrics.ascent = static_cast<std::int16_t>(std::max(ascent, 1));
    m_metrics.descent = static_cast<std::int16_t>(std::max(descent, 0));
    m_metrics.height = static_cast<std::uint16_t>(std::max(line, m_metrics.ascent + m_metrics.descent));
}

Headless::FreeTypeFont::~FreeTypeFont() = default;

Qv::Ptr<iFont> Headless::createFont(const WString& family, unsigned short size, unsigned style, float ui_scale)
{
    double pixels = size;
    if (std::isfinite(ui_scale) && ui_scale > 0.0f)
        pixels = std::min(pixels * ui_scale, static_cast<double>(FreeTypeFont::MAX_PIXELS));
    return FreeTypeFont::create(family, static_cast<unsigned>(std::lround(pixels)), style);
}

void Headless::enumerateFontFamilies(std::set<WString, WString::ICompare>& names, FcConfig* config)
{
    const Pattern pattern(FcPatternCreate());
    FcObjectSet* const wanted = FcObjectSetBuild(FC_FAMILY, nullptr);
    if (!pattern || !wanted)
        return;
    FcPatternAddBool(pattern.get(), FC_SCALABLE, FcTrue);
    FcFontSet* const fonts = FcFontList(config, pattern.get(), wanted);
    FcObjectSetDestroy(wanted);
    if (!fonts)
        return;
    for (int font = 0; font < fonts->nfont; ++font) {
        FcChar8* family = nullptr;
        for (int n = 0; FcPatternGetString(fonts->fonts[font], FC_FAMILY, n, &family) == FcResultMatch; ++n)
            names.insert(fromUTF8(reinterpret_cast<const char*>(family)));
    }
    FcFontSetDestroy(fonts);
}

// [SECTION] Shaping and the per-unit edges

namespace {

bool is_high_surrogate(char16_t unit) { return unit >= 0xD800 && unit <= 0xDBFF; }
bool is_low_surrogate(char16_t unit) { return unit >= 0xDC00 && unit <= 0xDFFF; }

// True when the unit at `index` cannot begin a character: the second half of a
// surrogate pair, or a combining mark.
bool continues_character(std::u16string_view text, std::size_t index)
{
    const char16_t unit = text[index];
    if (is_low_surrogate(unit))
        return index > 0 && is_high_surrogate(text[index - 1]);
    hb_codepoint_t code = unit;
    if (is_high_surrogate(unit) && index + 1 < text.size() && is_low_surrogate(text[index + 1]))
        code = 0x10000 + ((unit - 0xD800u) << 10) + (text[index + 1] - 0xDC00u);
    switch (hb_unicode_general_category(hb_unicode_funcs_get_default(), code)) {
    case HB_UNICODE_GENERAL_CATEGORY_NON_SPACING_MARK:
    case HB_UNICODE_GENERAL_CATEGORY_SPACING_MARK:
    case HB_UNICODE_GENERAL_CATEGORY_ENCLOSING_MARK:
        return true;
    default:
        return false;
    }
}

} // namespace

std::size_t Headless::FreeTypeFont::ShapedRun::bytes() const
{
    return sizeof(*this) + glyphs.size() * sizeof(PlacedGlyph) + edges.size() * sizeof(int) + starts.size();
}

std::size_t Headless::FreeTypeFont::TextHash::operator()(const WString& text) const
{
    std::uint64_t hash = 14695981039346656037ull;   // FNV-1a
    for (const char16_t unit : text.view())
        hash = (hash ^ unit) * 1099511628211ull;
    return static_cast<std::size_t>(hash);
}

Qv::Ptr<Headless::FreeTypeFont::ShapedRun> Headless::FreeTypeFont::shape(const WString& text) const
{
    const std::lock_guard lock(m_mutex);
    return shapeLocked(text);
}

std::uint64_t Headless::FreeTypeFont::shapeCount() const
{
    const std::lock_guard lock(m_mutex);
    return m_shape_count;
}

Qv::Ptr<Headless::FreeTypeFont::ShapedRun> Headless::FreeTypeFont::shapeLocked(const WString& text) const
{
    if (Qv::Ptr<ShapedRun> cached = m_runs.find(text))
        return cached;
    auto run = Qv::make<ShapedRun>();
    const std::u16string_view units = text.view();
    // HarfBuzz counts in int; no text the library shows comes near that.
    const std::size_t length = std::min<std::size_t>(units.size(), 0x3FFFFFFF);
    if (length == 0)
        return run;
    ++m_shape_count;

    const ShapingBuffer buffer(hb_buffer_create());
    hb_buffer_add_utf16(buffer.get(), reinterpret_cast<const std::uint16_t*>(units.data()), static_cast<int>(length),
                        0, static_cast<int>(length));
    // Marks join their base's cluster, and clusters grow with the text.
    hb_buffer_set_cluster_level(buffer.get(), HB_BUFFER_CLUSTER_LEVEL_MONOTONE_GRAPHEMES);
    hb_buffer_guess_segment_properties(buffer.get());
    hb_shape(m_engine->shaper, buffer.get(), nullptr, 0);

    unsigned glyph_count = 0;
    const hb_glyph_info_t* const infos = hb_buffer_get_glyph_infos(buffer.get(), &glyph_count);
    const hb_glyph_position_t* const positions = hb_buffer_get_glyph_positions(buffer.get(), &glyph_count);
    if (!hb_buffer_allocation_successful(buffer.get()))
        glyph_count = 0;
    // An emboldened face is wider by the strength of the emboldening, glyph by glyph.
    const std::int32_t extra_advance = m_synthetic_bold ? static_cast<std::int32_t>(m_pixels * 64 / 24) : 0;

    Qv::Vector<std::int64_t> cluster_advance(length, 0);
    Qv::Vector<std::uint8_t> cluster_start(length, 0);
    cluster_start[0] = 1;
    run->glyphs.reserve(glyph_count);
    std::int64_t pen = 0;
    for (unsigned n = 0; n < glyph_count; ++n) {
        const std::size_t cluster = std::min<std::size_t>(infos[n].cluster, length - 1);
        std::int32_t advance = positions[n].x_advance;
        if (advance != 0)
            advance += extra_advance;
        run->glyphs.push_back({ infos[n].codepoint, static_cast<std::int32_t>(pen + positions[n].x_offset),
                                positions[n].y_offset, static_cast<std::uint32_t>(cluster) });
        cluster_advance[cluster] += advance;
        cluster_start[cluster] = 1;
        pen += advance;
    }

    // Each cluster's width is shared evenly among the characters in it: one for most,
    // several for a ligature.
    run->edges.resize(length);
    run->starts.resize(length);
    std::int64_t cluster_left = 0;
    for (std::size_t start = 0; start < length;) {
        std::size_t end = start + 1;
        while (end < length && !cluster_start[end])
            ++end;
        std::size_t characters = 0;
        for (std::size_t index = start; index < end; ++index) {
            run->starts[index] = (index == start || !continues_character(units, index)) ? 1 : 0;
            characters += run->starts[index];
        }
        const std::int64_t width = cluster_advance[start];
        std::size_t character = 0;
        for (std::size_t index = start; index < end; ++index) {
            character += run->starts[index];
            run->edges[index] = round_26_6(cluster_left + width * static_cast<std::int64_t>(character)
                                                              / static_cast<std::int64_t>(characters));
        }
        cluster_left += width;
        start = end;
    }

    m_runs.insert(text, run, run->bytes());
    return run;
}

// [SECTION] Measuring and locating

void Headless::FreeTypeFont::analyse(const WString& text, std::vector<int>& rightEdges) const
{
    const Qv::Ptr<ShapedRun> run = shape(text);
    rightEdges.assign(run->edges.begin(), run->edges.end());
}

XY<int> Headless::FreeTypeFont::getTextExtent(const WString& text, unsigned count) const
{
    const int height = m_metrics.height;
    if (count == 0 || text.empty())
        return { 0, height };
    const Qv::Ptr<ShapedRun> run = shape(text);
    if (run->edges.empty())
        return { 0, height };
    const std::size_t shown = std::min<std::size_t>(count, run->edges.size());
    return { run->edges[shown - 1], height };
}

namespace {

using Location = iFont::CharacterLocation;

// The character beginning at `start`.
Location character_at(const Headless::FreeTypeFont::ShapedRun& run, std::size_t start)
{
    const int left = start == 0 ? 0 : run.edges[start - 1];
    return { static_cast<std::int32_t>(start), left, run.edges[start] };
}

// The first unit of the character holding `index` (index < length).
std::size_t character_start(const Headless::FreeTypeFont::ShapedRun& run, std::size_t index)
{
    while (index > 0 && !run.starts[index])
        --index;
    return index;
}

} // namespace

iFont::CharacterLocation Headless::FreeTypeFont::locateChar(const WString& text, eCharSeekMethod method,
                                                            unsigned short index) const
{
    const Qv::Ptr<ShapedRun> run = shape(text);
    const std::size_t length = run->edges.size();
    if (length == 0 || index > length || (index == length && method != eCharBefore))
        return {};
    const std::size_t here = index == length ? length : character_start(*run, index);
    switch (method) {
    case eCharAt:
        return character_at(*run, here);
    case eCharBefore:
        return here == 0 ? Location {} : character_at(*run, character_start(*run, here - 1));
    case eCharAfter: {
        std::size_t next = here + 1;
        while (next < length && !run->starts[next])
            ++next;
        return next < length ? character_at(*run, next) : Location {};
    }
    }
    return {};
}

iFont::CharacterLocation Headless::FreeTypeFont::getCharInfoForPixelX(const WString& text, int x) const
{
    const Qv::Ptr<ShapedRun> run = shape(text);
    for (std::size_t start = 0; start < run->edges.size(); ++start) {
        if (!run->starts[start])
            continue;
        const Location location = character_at(*run, start);
        if (location.left <= x && x < location.right)
            return location;
    }
    return {};
}

// [SECTION] Glyph images

Headless::FreeTypeFont::GlyphImage::~GlyphImage()
{
    if (mask)
        pixman_image_unref(mask);
    Qv::release(bits);
}

Qv::Ptr<Headless::FreeTypeFont::GlyphImage> Headless::FreeTypeFont::glyph(std::uint32_t glyph, bool heavy) const
{
    const std::lock_guard lock(m_mutex);
    const std::uint64_t key = (static_cast<std::uint64_t>(glyph) << 1) | (heavy ? 1u : 0u);
    if (Qv::Ptr<GlyphImage> cached = m_glyphs.find(key))
        return cached;
    Qv::Ptr<GlyphImage> image = renderLocked(glyph, heavy);
    const std::size_t bytes = sizeof(GlyphImage) + static_cast<std::size_t>(image->height) * ((image->width + 3) & ~3);
    m_glyphs.insert(key, image, bytes);
    return image;
}

Qv::Ptr<Headless::FreeTypeFont::GlyphImage> Headless::FreeTypeFont::renderLocked(std::uint32_t glyph,
                                                                                 bool heavy) const
{
    auto image = Qv::make<GlyphImage>();
    const FT_Face face = m_engine->face;
    // Light hinting snaps to the pixel grid vertically only, so the outlines keep the
    // unhinted widths that HarfBuzz placed them by.
    if (FT_Load_Glyph(face, glyph, FT_LOAD_NO_BITMAP | FT_LOAD_TARGET_LIGHT) != 0
        || face->glyph->format != FT_GLYPH_FORMAT_OUTLINE)
        return image;
    FT_Outline* const outline = &face->glyph->outline;
    if (m_synthetic_bold)
        FT_Outline_Embolden(outline, static_cast<FT_Pos>(m_pixels * 64 / 24));
    if (heavy) {
        // Thicker upright strokes, no taller: heavy text keeps its line and its advances.
        FT_Outline_EmboldenXY(outline, std::max<FT_Pos>(40, static_cast<FT_Pos>(m_pixels * 64 / 28)), 0);
    }
    if (FT_Render_Glyph(face->glyph, FT_RENDER_MODE_NORMAL) != 0)
        return image;
    const FT_Bitmap& bitmap = face->glyph->bitmap;
    if (bitmap.width == 0 || bitmap.rows == 0 || bitmap.pixel_mode != FT_PIXEL_MODE_GRAY
        || bitmap.pitch < static_cast<int>(bitmap.width))
        return image;

    const int width = static_cast<int>(bitmap.width);
    const int height = static_cast<int>(bitmap.rows);
    const int stride = (width + 3) & ~3;   // pixman wants rows of whole 32-bit words
    image->bits = Qv::allocate(static_cast<std::size_t>(stride) * height);
    if (!image->bits)
        return image;
    auto* const rows = static_cast<std::uint8_t*>(image->bits);
    for (int row = 0; row < height; ++row) {
        const std::uint8_t* const source = bitmap.buffer + static_cast<std::ptrdiff_t>(row) * bitmap.pitch;
        std::memcpy(rows + static_cast<std::ptrdiff_t>(row) * stride, source, static_cast<std::size_t>(width));
        std::memset(rows + static_cast<std::ptrdiff_t>(row) * stride + width, 0, static_cast<std::size_t>(stride - width));
    }
    image->mask = pixman_image_create_bits(PIXMAN_a8, width, height, static_cast<std::uint32_t*>(image->bits), stride);
    image->left = face->glyph->bitmap_left;
    image->top = face->glyph->bitmap_top;
    image->width = width;
    image->height = height;
    return image;
}
