// SoftwareRenderer.cpp
//
// [SECTION] Helpers: colours, owners of pixman images and raw blocks, reports
// [SECTION] Shader effects known by name
// [SECTION] Lifetime and clip
// [SECTION] Fills
// [SECTION] Blits and "InFront"
// [SECTION] Streaming copies
// [SECTION] Cairo: the context, its clip and its recovery
// [SECTION] Ellipses and rounded rectangles
// [SECTION] Lines, strips and Beziers
// [SECTION] Texts
#include "headless/SoftwareRenderer.h"

#include "headless/PixmanRegion.h"
#include "headless/ShaderPrograms.h"
#include "headless/TextDrawing.h"
#include "tela/core/Log.h"

#include <cairo.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <utility>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

// [SECTION] Helpers

namespace {

float unit_interval(float value)
{
    if (!(value > 0.0f))   // also catches NaN
        return 0.0f;
    return value < 1.0f ? value : 1.0f;
}

// value is within 0..1 here, so adding a half and truncating rounds as lround would
// (in double, where the half cannot round the sum up), at a fraction of its cost.
std::uint32_t to_byte(float value)
{
    return static_cast<std::uint32_t>(static_cast<double>(value * 255.0f) + 0.5);
}

std::uint16_t to_pixman_channel(float value)
{
    // byte * 257 is what pixman turns back into exactly that byte (it keeps the high 8 bits).
    return static_cast<std::uint16_t>(to_byte(value) * 257);
}

pixman_color_t premultiplied(const NormalisedRGB& colour)
{
    const float alpha = unit_interval(colour.a);
    return { to_pixman_channel(unit_interval(colour.r) * alpha), to_pixman_channel(unit_interval(colour.g) * alpha),
             to_pixman_channel(unit_interval(colour.b) * alpha), to_pixman_channel(alpha) };
}

TopDownRect normalised(const TopDownRect& area)
{
    return { std::min(area.left, area.right), std::min(area.top, area.bottom), std::max(area.left, area.right),
             std::max(area.top, area.bottom) };
}

Qv::Rectangle<float> normalised(const Qv::Rectangle<float>& area)
{
    return { std::min(area.left, area.right), std::min(area.top, area.bottom), std::max(area.left, area.right),
             std::max(area.top, area.bottom) };
}

Qv::Rectangle<float> as_float(const TopDownRect& area)
{
    return { static_cast<float>(area.left), static_cast<float>(area.top), static_cast<float>(area.right),
             static_cast<float>(area.bottom) };
}

bool is_whole(float value)
{
    return std::floor(value) == value;
}

// Far beyond any surface, and well inside int once rounded.
constexpr float MAX_COORDINATE = 1.0e7f;

bool is_reasonable(const Qv::Rectangle<float>& area)
{
    for (const float value : { area.left, area.top, area.right, area.bottom }) {
        if (!(std::fabs(value) < MAX_COORDINATE))   // also catches NaN
            return false;
    }
    return true;
}

// Owns one pixman image reference.
class PixmanImage {
public:
    explicit PixmanImage(pixman_image_t* image) : m_image(image) {}
    ~PixmanImage()
    {
        if (m_image)
            pixman_image_unref(m_image);
    }
    PixmanImage(const PixmanImage&) = delete;
    PixmanImage& operator=(const PixmanImage&) = delete;

    pixman_image_t* get() const { return m_image; }

private:
    pixman_image_t* m_image;
};

// Owns one block from the memory seam.
class Block {
public:
    explicit Block(std::size_t bytes) : m_bytes(Qv::allocate(bytes ? bytes : 4)) {}
    ~Block() { Qv::release(m_bytes); }
    Block(const Block&) = delete;
    Block& operator=(const Block&) = delete;

    template <typename T>
    T* as() const { return static_cast<T*>(m_bytes); }
    explicit operator bool() const { return m_bytes != nullptr; }

private:
    void* m_bytes;
};

// Each trouble is told once per process: a renderer is made for every frame, and one
// line per frame would bury everything else in the log.
enum class Report {
    ShaderRects,
    ShaderUnknown,
    UnreachablePixels,
    NoCairo,
    ShapesWithoutClip,
    ShapeFailed,
    Count,
};

constexpr const char* REPORT_TEXT[] = {
    "not drawn: drawShaderRects without a shader\n",
    "not drawn: drawShaderRects with an unknown shader\n",
    "SoftwareRenderer: an image whose pixels cannot be reached is not drawn\n",
    "SoftwareRenderer: Cairo cannot draw on this image; curves and slanted lines are skipped\n",
    "SoftwareRenderer: the clip could not be copied; curves and slanted lines are skipped\n",
    "SoftwareRenderer: Cairo refused a shape; it was skipped and drawing goes on\n",
};
static_assert(std::size(REPORT_TEXT) == static_cast<std::size_t>(Report::Count));

std::atomic<bool> g_reported[static_cast<std::size_t>(Report::Count)];

// Capability bits the tests have asked every renderer to leave out.
std::atomic<unsigned> g_hidden_caps { 0 };

void report_once(Report report)
{
    const auto index = static_cast<std::size_t>(report);
    if (!g_reported[index].exchange(true))
        murl_printf("%s", REPORT_TEXT[index]);
}

} // namespace

// [SECTION] Shader effects known by name

namespace {

constexpr const char* KNOWN_SHADERS[] = { "InFront", "ShadowLR", "ShadowTB", "ShadowC", "RoundedRectangle", "Ellipse" };

class NamedShader final : public iShaderEffect {
public:
    explicit NamedShader(const char* name) : m_name(name) {}
    String name() const override { return m_name; }

private:
    String m_name;
};

} // namespace

Qv::Ptr<iShaderEffect> Headless::SoftwareRenderer::findShader(const String& name)
{
    for (const char* known : KNOWN_SHADERS) {
        if (name == known)
            return Qv::make<NamedShader>(known);
    }
    return nullptr;
}

void Headless::SoftwareRenderer::forgetReportedOperations()
{
    for (std::atomic<bool>& reported : g_reported)
        reported.store(false);
}

void Headless::SoftwareRenderer::hideCaps(unsigned mask)
{
    g_hidden_caps.store(mask);
}

// [SECTION] Lifetime and clip

Qv::Ptr<Headless::SoftwareRenderer> Headless::SoftwareRenderer::create(const Qv::Ptr<HostImage>& target)
{
    if (!target)
        return nullptr;
    XY<int> size;
    target->getSize(size);
    pixman_image_t* const pixels = pixman_image_create_bits(
        PIXMAN_a8r8g8b8, size.x, size.y, reinterpret_cast<std::uint32_t*>(target->data()), target->stride());
    if (!pixels) {
        murl_printf("SoftwareRenderer: cannot wrap an image of %d x %d pixels\n", size.x, size.y);
        return nullptr;
    }
    return Qv::Ptr<SoftwareRenderer>(new SoftwareRenderer(target, pixels));
}

Headless::SoftwareRenderer::SoftwareRenderer(const Qv::Ptr<HostImage>& image, pixman_image_t* target)
    : m_image(image)
    , m_lock(image->lock())
    , m_target(target)
{
    image->getSize(m_size);
    pixman_region32_init(&m_clip);
}

Headless::SoftwareRenderer::~SoftwareRenderer()
{
    pixman_region32_fini(&m_clip);
    pixman_image_unref(m_target);
}

void Headless::SoftwareRenderer::setClip(Qv::Ptr<iRegion> clip)
{
    m_clip_copy = ClipCopy::None;
    m_cairo_clip_stale = true;
    if (!clip) {
        pixman_image_set_clip_region32(m_target, nullptr);
        return;
    }
    if (const auto* region = dynamic_cast<const PixmanRegion*>(clip.get())) {
        pixman_image_set_clip_region32(m_target, region->raw());
        m_clip_copy = pixman_region32_copy(&m_clip, region->raw()) ? ClipCopy::Held : ClipCopy::Lost;
        return;
    }
    // A region from another platform: rebuild it from its rectangles.
    Qv::Vector<TopDownRect> rects;
    clip->getRects(rects);
    Qv::Vector<pixman_box32_t> boxes;
    boxes.reserve(rects.size());
    for (const TopDownRect& rect : rects)
        boxes.push_back({ rect.left, rect.top, rect.right, rect.bottom });
    pixman_region32_t region;
    pixman_region32_init_rects(&region, boxes.data(), static_cast<int>(boxes.size()));
    pixman_image_set_clip_region32(m_target, &region);
    m_clip_copy = pixman_region32_copy(&m_clip, &region) ? ClipCopy::Held : ClipCopy::Lost;
    pixman_region32_fini(&region);
}

unsigned Headless::SoftwareRenderer::getCaps() const
{
    return (CAP_NATIVE_BEZIERS | CAP_NATIVE_LINE_STRIPS | CAP_SHADERS) & ~g_hidden_caps.load();
}

// [SECTION] Fills

void Headless::SoftwareRenderer::fill(const TopDownRect& area, const NormalisedRGB& colour, pixman_op_t op)
{
    // pixman's solid fill writes whatever the boxes and the clip allow, even outside the
    // image (where it runs into the neighbouring rows), so the box is cut to the image here.
    const TopDownRect given = normalised(area);
    TopDownRect box { std::max(given.left, 0), std::max(given.top, 0), std::min(given.right, m_size.x),
                      std::min(given.bottom, m_size.y) };
    if (box.isEmpty())
        return;
    // An opaque colour replaces what lies below under either operator, and within a
    // clip of one rectangle (a canvas nothing covers) the box only needs cutting to it:
    // the plain fill then skips the region built and intersected for every call.
    const bool single_clip = m_clip_copy == ClipCopy::Held && pixman_region32_n_rects(&m_clip) == 1;
    if (unit_interval(colour.a) == 1.0f && (m_clip_copy == ClipCopy::None || single_clip)) {
        if (single_clip) {
            const pixman_box32_t* clip = pixman_region32_extents(&m_clip);
            box = { std::max(box.left, clip->x1), std::max(box.top, clip->y1), std::min(box.right, clip->x2),
                    std::min(box.bottom, clip->y2) };
            if (box.isEmpty())
                return;
        }
        const std::uint32_t pixel = 0xFF000000u | to_byte(unit_interval(colour.r)) << 16 |
                                    to_byte(unit_interval(colour.g)) << 8 | to_byte(unit_interval(colour.b));
        if (pixman_fill(pixman_image_get_data(m_target), pixman_image_get_stride(m_target) / 4, 32, box.left,
                        box.top, box.width(), box.height(), pixel))
            return;
    }
    const pixman_color_t pixman_colour = premultiplied(colour);
    const pixman_box32_t pixman_box { box.left, box.top, box.right, box.bottom };
    pixman_image_fill_boxes(op, m_target, &pixman_colour, 1, &pixman_box);
}

void Headless::SoftwareRenderer::drawRects(const RectDescription* descriptions, unsigned count)
{
    for (unsigned index = 0; index < count; ++index) {
        const RectDescription& rect = descriptions[index];
        const pixman_op_t op = rect.blendMode == eBlendReplace ? PIXMAN_OP_SRC : PIXMAN_OP_OVER;
        if (rect.twoColours)
            gradient(rect.rect, rect.colour, rect.secondColour, op);
        else
            fill(rect.rect, rect.colour, op);
    }
}

namespace {

NormalisedRGB mixed(const NormalisedRGB& from, const NormalisedRGB& to, double share)
{
    const auto mix = [share](float a, float b) {
        return static_cast<float>(unit_interval(a) + (unit_interval(b) - unit_interval(a)) * share);
    };
    return { mix(from.r, to.r), mix(from.g, to.g), mix(from.b, to.b), mix(from.a, to.a) };
}

// Gradient stops take straight colours: pixman premultiplies after it interpolates.
pixman_color_t straight(const NormalisedRGB& colour)
{
    return { to_pixman_channel(unit_interval(colour.r)), to_pixman_channel(unit_interval(colour.g)),
             to_pixman_channel(unit_interval(colour.b)), to_pixman_channel(unit_interval(colour.a)) };
}

} // namespace

void Headless::SoftwareRenderer::gradient(const TopDownRect& area, const NormalisedRGB& top_colour,
                                          const NormalisedRGB& bottom_colour, pixman_op_t op)
{
    XY<int> size;
    m_image->getSize(size);
    const TopDownRect given = normalised(area);
    const TopDownRect box { std::max(given.left, 0), std::max(given.top, 0), std::min(given.right, size.x),
                            std::min(given.bottom, size.y) };
    if (box.isEmpty())
        return;
    // The gradient runs from the centre of the top row to that of the bottom row, so both
    // colours appear exactly. The rows cut off by the image are left out of the pixman
    // gradient, which then only spans what is drawn (and stays inside its fixed point).
    const double rows = static_cast<double>(given.bottom) - given.top;   // given.height() may not fit an int
    const auto share = [&](int row) { return rows > 1.0 ? (static_cast<double>(row) - given.top) / (rows - 1.0) : 0.0; };
    const NormalisedRGB first = mixed(top_colour, bottom_colour, share(box.top));
    const NormalisedRGB last = mixed(top_colour, bottom_colour, share(box.bottom - 1));
    if (box.height() == 1) {
        fill(box, first, op);
        return;
    }
    const pixman_point_fixed_t from { 0, pixman_double_to_fixed(0.5) };
    const pixman_point_fixed_t to { 0, pixman_double_to_fixed(box.height() - 0.5) };
    const pixman_gradient_stop_t stops[2] = { { 0, straight(first) }, { pixman_fixed_1, straight(last) } };
    const PixmanImage source(pixman_image_create_linear_gradient(&from, &to, stops, 2));
    if (!source.get())
        return;
    pixman_image_set_repeat(source.get(), PIXMAN_REPEAT_PAD);
    pixman_image_composite32(op, source.get(), nullptr, m_target, 0, 0, 0, 0, box.left, box.top, box.width(),
                             box.height());
}

void Headless::SoftwareRenderer::drawAlphaRects(const AlphaRectDescription* descriptions, unsigned count)
{
    // The alpha is the point of these rectangles: always laid over what is there, in
    // whatever mode. The library has already put the alpha into the colour.
    for (unsigned index = 0; index < count; ++index)
        fill(descriptions[index].rect, descriptions[index].colour, PIXMAN_OP_OVER);
}

// [SECTION] Blits and "InFront"

void Headless::SoftwareRenderer::drawImages(const ImageDescription* descriptions, unsigned count)
{
    for (unsigned index = 0; index < count; ++index) {
        const ImageDescription& image = descriptions[index];
        blit(image.image, as_float(image.sourceRect), as_float(image.destRect), image.blend, image.opacity);
    }
}

void Headless::SoftwareRenderer::drawImagesEx(const ImageDescriptionEx* descriptions, unsigned count)
{
    for (unsigned index = 0; index < count; ++index) {
        const ImageDescriptionEx& image = descriptions[index];
        blit(image.image, image.sourceRect, image.destRect, image.enabled, 1.0f);
    }
}

void Headless::SoftwareRenderer::drawShaderRects(const ShaderRectDescription* descriptions, unsigned count)
{
    // The programs compute only what the clip's extents let through; the clip proper
    // is pixman's, on the target.
    XY<int> size;
    m_image->getSize(size);
    TopDownRect reach { 0, 0, size.x, size.y };
    if (m_clip_copy == ClipCopy::Held) {
        const pixman_box32_t* const extents = pixman_region32_extents(&m_clip);
        reach = { std::max(reach.left, extents->x1), std::max(reach.top, extents->y1),
                  std::min(reach.right, extents->x2), std::min(reach.bottom, extents->y2) };
    }
    for (unsigned index = 0; index < count; ++index) {
        const ShaderRectDescription& shaded = descriptions[index];
        if (!shaded.active)
            continue;   // a switched-off effect draws nothing
        if (!shaded.shader) {
            report_once(Report::ShaderRects);
            continue;
        }
        const ShaderProgram program = shaderProgram(shaded.shader->name());
        if (program == ShaderProgram::InFront) {
            // The input image, times the opacity, over the destination.
            if (shaded.inputs.empty() || !shaded.inputs.front().first)
                continue;
            const float opacity = unit_interval(shaded.floatParam("Opacity", 1.0f));
            blit(shaded.inputs.front().first, shaded.inputs.front().second, shaded.rect, true, opacity);
        } else if (program == ShaderProgram::Unknown) {
            report_once(Report::ShaderUnknown);
        } else if (!reach.isEmpty()) {
            m_shaders.run(program, shaded, m_target, reach);
        }
    }
}

void Headless::SoftwareRenderer::blit(const Qv::Ptr<iImage>& image, const Qv::Rectangle<float>& source_area,
                                      const Qv::Rectangle<float>& dest_area, bool blend, float opacity)
{
    const Qv::Rectangle<float> source = normalised(source_area);
    const Qv::Rectangle<float> dest = normalised(dest_area);
    if (!image || !is_reasonable(source) || !is_reasonable(dest) || source.isEmpty() || dest.isEmpty()
        || !(opacity > 0.0f))
        return;
    const Qv::Ptr<iPixelGuard> source_lock = image->lock();
    if (!source_lock || !source_lock->pixels()) {
        report_once(Report::UnreachablePixels);
        return;
    }
    const XY<int> source_size = source_lock->size();
    const int source_stride = source_lock->stride();

    // pixman leaves overlapping source and destination undefined; drawing an image into
    // itself goes through a copy.
    const std::size_t source_bytes = static_cast<std::size_t>(source_stride) * static_cast<std::size_t>(source_size.y);
    const bool same_pixels = source_lock->pixels() == m_image->data();
    Block source_copy(same_pixels ? source_bytes : 0);
    if (same_pixels) {
        if (!source_copy)
            return;
        std::memcpy(source_copy.as<std::uint8_t>(), source_lock->pixels(), source_bytes);
    }
    std::uint8_t* const source_pixels = same_pixels ? source_copy.as<std::uint8_t>() : source_lock->pixels();
    // Without blending the source's own alpha is not looked at; an opacity
    // below 1 still lays the image over what is there by that share, so the
    // source is read as opaque and laid over through the opacity alone.
    const bool fade = !blend && opacity < 1.0f;
    const PixmanImage source_image(pixman_image_create_bits(fade ? PIXMAN_x8r8g8b8 : PIXMAN_a8r8g8b8,
                                                            source_size.x, source_size.y,
                                                            reinterpret_cast<std::uint32_t*>(source_pixels),
                                                            source_stride));
    if (!source_image.get())
        return;

    // Destination pixels touched. Blending gives partly covered edge pixels their share
    // through a coverage mask; replacing cannot blend a share, so it rounds the edges.
    XY<int> target_size;
    m_image->getSize(target_size);
    const auto edge = [blend](float value, bool low) {
        if (!blend)
            return static_cast<int>(std::floor(value + 0.5f));
        return static_cast<int>(low ? std::floor(value) : std::ceil(value));
    };
    const int left = std::max(edge(dest.left, true), 0);
    const int top = std::max(edge(dest.top, true), 0);
    const int right = std::min(edge(dest.right, false), target_size.x);
    const int bottom = std::min(edge(dest.bottom, false), target_size.y);
    if (right <= left || bottom <= top)
        return;

    // Destination space to source space, sampled at pixel centres.
    const double scale_x = static_cast<double>(source.width()) / dest.width();
    const double scale_y = static_cast<double>(source.height()) / dest.height();
    pixman_f_transform mapping {};
    mapping.m[0][0] = scale_x;
    mapping.m[0][2] = source.left - dest.left * scale_x;
    mapping.m[1][1] = scale_y;
    mapping.m[1][2] = source.top - dest.top * scale_y;
    mapping.m[2][2] = 1.0;
    // Whole-pixel copies stay exact and take pixman's plain copying paths, which a
    // transform would rule out: they are given as an offset instead.
    const bool exact = scale_x == 1.0 && scale_y == 1.0 && is_whole(static_cast<float>(mapping.m[0][2]))
        && is_whole(static_cast<float>(mapping.m[1][2]));
    int source_x = 0, source_y = 0;
    if (exact) {
        source_x = static_cast<int>(mapping.m[0][2]);
        source_y = static_cast<int>(mapping.m[1][2]);
    } else {
        pixman_transform fixed_mapping;
        pixman_transform_from_pixman_f_transform(&fixed_mapping, &mapping);
        pixman_image_set_transform(source_image.get(), &fixed_mapping);
        pixman_image_set_filter(source_image.get(), PIXMAN_FILTER_BILINEAR, nullptr, 0);
        // Filtering at the edge of the image reads beyond it; repeating the edge
        // keeps the border from fading towards transparent.
        pixman_image_set_repeat(source_image.get(), PIXMAN_REPEAT_PAD);
    }

    const int width = right - left;
    const int height = bottom - top;
    if (exact && !blend && opacity >= 1.0f
        && streamCopy(source_pixels, source_size, source_stride, left + source_x, top + source_y, left, top, width,
                      height))
        return;
    const bool whole_edges = !blend
        || (is_whole(dest.left) && is_whole(dest.top) && is_whole(dest.right) && is_whole(dest.bottom));
    const int mask_stride = (width + 3) & ~3;
    Block mask_bits(whole_edges ? 0 : static_cast<std::size_t>(mask_stride) * static_cast<std::size_t>(height));
    pixman_image_t* mask = nullptr;
    if (!whole_edges) {
        if (!mask_bits)
            return;
        const auto coverage = [](int pixel, float low, float high) {
            return std::clamp(std::min(high, pixel + 1.0f) - std::max(low, static_cast<float>(pixel)), 0.0f, 1.0f);
        };
        for (int row = 0; row < height; ++row) {
            const float row_cover = coverage(top + row, dest.top, dest.bottom) * unit_interval(opacity);
            std::uint8_t* const line = mask_bits.as<std::uint8_t>() + static_cast<std::size_t>(row) * mask_stride;
            for (int column = 0; column < width; ++column)
                line[column] = static_cast<std::uint8_t>(
                    std::lround(coverage(left + column, dest.left, dest.right) * row_cover * 255.0f));
        }
        mask = pixman_image_create_bits(PIXMAN_a8, width, height, mask_bits.as<std::uint32_t>(), mask_stride);
    } else if (opacity < 1.0f) {
        const pixman_color_t alpha { 0, 0, 0, to_pixman_channel(unit_interval(opacity)) };
        mask = pixman_image_create_solid_fill(&alpha);
    }
    const PixmanImage mask_image(mask);
    // The coverage mask starts at (left, top); a solid mask is the same everywhere.
    pixman_image_composite32(blend || fade ? PIXMAN_OP_OVER : PIXMAN_OP_SRC, source_image.get(), mask_image.get(), m_target,
                             left + source_x, top + source_y, 0, 0, left, top, width, height);
}

// [SECTION] Streaming copies

namespace {

// Below this many bytes a copy keeps to pixman's ordinary stores: the lines it writes
// are likely still cached when they are next read (a neighbour's edge, the present),
// and a fence and partly written cache lines would cost more than the reads saved. A
// 32 x 32 damage is well below; a panel of a full repaint well above.
constexpr std::int64_t STREAMING_BYTES = 64 * 1024;
// A row narrower than this has too few whole cache lines to be worth streaming.
constexpr std::size_t STREAMING_ROW_BYTES = 256;
constexpr std::size_t CACHE_LINE = 64;

// One row of pixels. The destination is brought to a cache-line boundary by ordinary
// stores, so that the streaming stores that follow are aligned and fill whole lines;
// the tail goes the ordinary way too. Source loads are unaligned.
void copy_row(std::uint8_t* to, const std::uint8_t* from, std::size_t bytes)
{
#if defined(__SSE2__)
    if (bytes >= STREAMING_ROW_BYTES) {
        const std::size_t head = (CACHE_LINE - reinterpret_cast<std::uintptr_t>(to) % CACHE_LINE) % CACHE_LINE;
        std::memcpy(to, from, head);
        to += head;
        from += head;
        bytes -= head;
        for (; bytes >= CACHE_LINE; bytes -= CACHE_LINE, to += CACHE_LINE, from += CACHE_LINE) {
            const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
            const __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from + 16));
            const __m128i c = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from + 32));
            const __m128i d = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from + 48));
            _mm_stream_si128(reinterpret_cast<__m128i*>(to), a);
            _mm_stream_si128(reinterpret_cast<__m128i*>(to + 16), b);
            _mm_stream_si128(reinterpret_cast<__m128i*>(to + 32), c);
            _mm_stream_si128(reinterpret_cast<__m128i*>(to + 48), d);
        }
    }
#endif
    std::memcpy(to, from, bytes);
}

// Streaming stores are weakly ordered: the fence makes them visible before anything
// else reads the target (another renderer, the present, a pixel guard).
void end_streaming()
{
#if defined(__SSE2__)
    _mm_sfence();
#endif
}

} // namespace

bool Headless::SoftwareRenderer::streamCopy(const std::uint8_t* source, const XY<int>& source_size,
                                            int source_stride, int source_x, int source_y, int left, int top,
                                            int width, int height)
{
    // pixman reads transparent black outside the source; only copies wholly inside it
    // come here.
    if (m_clip_copy == ClipCopy::Lost || source_x < 0 || source_y < 0 || source_x > source_size.x - width
        || source_y > source_size.y - height)
        return false;
    if (static_cast<std::int64_t>(width) * height * 4 < STREAMING_BYTES)
        return false;
    pixman_region32_t area;
    pixman_region32_init_rect(&area, left, top, static_cast<unsigned>(width), static_cast<unsigned>(height));
    if (m_clip_copy == ClipCopy::Held && !pixman_region32_intersect(&area, &area, &m_clip)) {
        pixman_region32_fini(&area);
        return false;
    }
    int count = 0;
    const pixman_box32_t* const boxes = pixman_region32_rectangles(&area, &count);
    std::int64_t bytes = 0;
    for (int index = 0; index < count; ++index)
        bytes += static_cast<std::int64_t>(boxes[index].x2 - boxes[index].x1) * (boxes[index].y2 - boxes[index].y1) * 4;
    if (bytes < STREAMING_BYTES) {
        pixman_region32_fini(&area);
        return false;
    }
    std::uint8_t* const target = m_image->data();
    const auto target_stride = static_cast<std::size_t>(m_image->stride());
    const auto from_stride = static_cast<std::size_t>(source_stride);
    for (int index = 0; index < count; ++index) {
        const pixman_box32_t& box = boxes[index];
        const auto row_bytes = static_cast<std::size_t>(box.x2 - box.x1) * 4;
        const std::uint8_t* from = source + static_cast<std::size_t>(box.y1 - top + source_y) * from_stride
            + static_cast<std::size_t>(box.x1 - left + source_x) * 4;
        std::uint8_t* to = target + static_cast<std::size_t>(box.y1) * target_stride + static_cast<std::size_t>(box.x1) * 4;
        for (int y = box.y1; y < box.y2; ++y, from += from_stride, to += target_stride)
            copy_row(to, from, row_bytes);
    }
    end_streaming();
    pixman_region32_fini(&area);
    return true;
}

// [SECTION] Cairo: the context, its clip and its recovery

namespace {

constexpr double PI = 3.14159265358979323846;
// Cairo holds device coordinates as 24.8 fixed point, about 8 million pixels either way;
// shapes stay well inside, with room for the pen.
constexpr double MAX_SHAPE_COORDINATE = 4.0e6;
// A pen this wide covers any image there is; the limit keeps a pen inside Cairo's range.
constexpr unsigned MAX_THICKNESS = 65536;

bool within_cairo(double value)
{
    return std::fabs(value) < MAX_SHAPE_COORDINATE;   // also catches NaN
}

bool within_cairo(const TopDownRect& box)
{
    return within_cairo(box.left) && within_cairo(box.top) && within_cairo(box.right) && within_cairo(box.bottom);
}

bool is_visible(const NormalisedRGB& colour)
{
    return unit_interval(colour.a) > 0.0f;
}

void set_colour(cairo_t* cairo, const NormalisedRGB& colour)
{
    cairo_set_source_rgba(cairo, unit_interval(colour.r), unit_interval(colour.g), unit_interval(colour.b),
                          unit_interval(colour.a));
}

void fill_path(cairo_t* cairo, const NormalisedRGB& colour, cairo_fill_rule_t rule)
{
    set_colour(cairo, colour);
    cairo_set_fill_rule(cairo, rule);
    cairo_fill(cairo);
}

// Every stroke sets all of its pen, so no shape inherits another's.
void stroke_path(cairo_t* cairo, const NormalisedRGB& colour, double width, cairo_line_cap_t cap,
                 const double* dash = nullptr, double dash_offset = 0.0)
{
    set_colour(cairo, colour);
    cairo_set_line_width(cairo, width);
    cairo_set_line_cap(cairo, cap);
    cairo_set_line_join(cairo, CAIRO_LINE_JOIN_ROUND);
    cairo_set_dash(cairo, dash, dash ? 1 : 0, dash_offset);
    cairo_stroke_preserve(cairo);
}

} // namespace

void Headless::SoftwareRenderer::CairoSurfaceRelease::operator()(cairo_surface_t* surface) const
{
    cairo_surface_destroy(surface);
}

void Headless::SoftwareRenderer::CairoRelease::operator()(cairo_t* context) const
{
    cairo_destroy(context);
}

cairo_t* Headless::SoftwareRenderer::shapes()
{
    if (m_clip_copy == ClipCopy::Lost) {
        // Without its rectangles Cairo cannot be held to the clip, and drawing past the
        // clip is worse than not drawing.
        report_once(Report::ShapesWithoutClip);
        return nullptr;
    }
    XY<int> size;
    m_image->getSize(size);
    if (!m_surface) {
        m_surface.reset(
            cairo_image_surface_create_for_data(m_image->data(), CAIRO_FORMAT_ARGB32, size.x, size.y, m_image->stride()));
    }
    if (cairo_surface_status(m_surface.get()) != CAIRO_STATUS_SUCCESS) {
        report_once(Report::NoCairo);
        return nullptr;
    }
    if (!m_cairo) {
        m_cairo.reset(cairo_create(m_surface.get()));
        if (cairo_status(m_cairo.get()) != CAIRO_STATUS_SUCCESS) {
            m_cairo.reset();
            report_once(Report::NoCairo);
            return nullptr;
        }
        m_cairo_clip_stale = true;
    }
    cairo_t* const cairo = m_cairo.get();
    cairo_new_path(cairo);
    if (m_cairo_clip_stale) {
        cairo_reset_clip(cairo);
        if (m_clip_copy == ClipCopy::Held) {
            // Cut to the image first: a region may reach beyond what Cairo's fixed point holds.
            int count = 0;
            const pixman_box32_t* const boxes = pixman_region32_rectangles(&m_clip, &count);
            for (int index = 0; index < count; ++index) {
                const int left = std::max(boxes[index].x1, 0), top = std::max(boxes[index].y1, 0);
                const int right = std::min(boxes[index].x2, size.x), bottom = std::min(boxes[index].y2, size.y);
                if (left < right && top < bottom)
                    cairo_rectangle(cairo, left, top, right - left, bottom - top);
            }
            cairo_clip(cairo);   // an empty path clips everything away, as an empty region should
        }
        m_cairo_clip_stale = false;
    }
    cairo_set_antialias(cairo, m_antialiasing ? CAIRO_ANTIALIAS_DEFAULT : CAIRO_ANTIALIAS_NONE);
    return cairo;
}

void Headless::SoftwareRenderer::checkShape()
{
    if (!m_cairo)
        return;
    cairo_new_path(m_cairo.get());
    if (cairo_status(m_cairo.get()) != CAIRO_STATUS_SUCCESS) {
        // A context in an error state ignores everything from then on: drop it, and
        // shapes() makes a fresh one, clip and all, for the next shape.
        report_once(Report::ShapeFailed);
        m_cairo.reset();
    }
}

// [SECTION] Ellipses and rounded rectangles

namespace {

struct EllipseShape {
    double centre_x, centre_y, radius_x, radius_y;
};

// Appends an elliptical arc, clockwise on the screen from `from` to `to` (radians), or
// anticlockwise when backwards. A path keeps device coordinates, so the matrix can go
// back to the identity at once; no save and restore needed.
void add_arc(cairo_t* cairo, const EllipseShape& shape, double from, double to, bool backwards = false)
{
    cairo_translate(cairo, shape.centre_x, shape.centre_y);
    cairo_scale(cairo, shape.radius_x, shape.radius_y);
    if (backwards)
        cairo_arc_negative(cairo, 0.0, 0.0, 1.0, from, to);
    else
        cairo_arc(cairo, 0.0, 0.0, 1.0, from, to);
    cairo_identity_matrix(cairo);
}

void add_whole_ellipse(cairo_t* cairo, const EllipseShape& shape)
{
    cairo_new_sub_path(cairo);
    add_arc(cairo, shape, 0.0, 2.0 * PI);
    cairo_close_path(cairo);
}

// Degrees swept clockwise from start to end: 0 for nothing, 360 for the whole ellipse.
int sweep_of(int start, int end)
{
    const int raw = end - start;
    if (raw == 0)
        return 0;
    if (raw >= 360)
        return 360;
    const int wrapped = ((raw % 360) + 360) % 360;
    return wrapped == 0 ? 360 : wrapped;
}

bool touches(const TopDownRect& box, const XY<int>& size)
{
    return box.right > 0 && box.bottom > 0 && box.left < size.x && box.top < size.y;
}

constexpr unsigned TOP_LEFT = 1, TOP_RIGHT = 2, BOTTOM_LEFT = 4, BOTTOM_RIGHT = 8;

void add_rounded_rect(cairo_t* cairo, double left, double top, double right, double bottom, double radius,
                      unsigned corners)
{
    cairo_new_sub_path(cairo);
    if (radius <= 0.0 || (corners & 15) == 0) {
        cairo_rectangle(cairo, left, top, right - left, bottom - top);
        return;
    }
    // Clockwise from the top left; a line_to with no current point starts the path there.
    if (corners & TOP_LEFT)
        cairo_arc(cairo, left + radius, top + radius, radius, PI, 1.5 * PI);
    else
        cairo_line_to(cairo, left, top);
    if (corners & TOP_RIGHT)
        cairo_arc(cairo, right - radius, top + radius, radius, -0.5 * PI, 0.0);
    else
        cairo_line_to(cairo, right, top);
    if (corners & BOTTOM_RIGHT)
        cairo_arc(cairo, right - radius, bottom - radius, radius, 0.0, 0.5 * PI);
    else
        cairo_line_to(cairo, right, bottom);
    if (corners & BOTTOM_LEFT)
        cairo_arc(cairo, left + radius, bottom - radius, radius, 0.5 * PI, PI);
    else
        cairo_line_to(cairo, left, bottom);
    cairo_close_path(cairo);
}

bool same_rgb(const NormalisedRGB& a, const NormalisedRGB& b)
{
    return unit_interval(a.r) == unit_interval(b.r) && unit_interval(a.g) == unit_interval(b.g)
        && unit_interval(a.b) == unit_interval(b.b);
}

} // namespace

void Headless::SoftwareRenderer::drawEllipses(const EllipseDescription* descriptions, unsigned count)
{
    XY<int> size;
    m_image->getSize(size);
    for (unsigned index = 0; index < count; ++index) {
        const EllipseDescription& ellipse = descriptions[index];
        const TopDownRect box = normalised(ellipse.rect);
        if (box.isEmpty() || !within_cairo(box) || !touches(box, size))
            continue;
        const int sweep = sweep_of(ellipse.startAngle, ellipse.endAngle);
        const bool filled = ellipse.style != 1 && is_visible(ellipse.fillColour);
        const bool outlined
            = (ellipse.style == 1 || ellipse.style == 2) && ellipse.thickness > 0 && is_visible(ellipse.lineColour);
        if (sweep == 0 || (!filled && !outlined))
            continue;
        cairo_t* const cairo = shapes();
        if (!cairo)
            return;
        const EllipseShape outer { (box.left + static_cast<double>(box.right)) / 2.0,
                                   (box.top + static_cast<double>(box.bottom)) / 2.0, box.width() / 2.0,
                                   box.height() / 2.0 };
        const bool whole = sweep == 360;
        const double from = (ellipse.startAngle % 360) * PI / 180.0;
        const double to = from + sweep * PI / 180.0;
        if (filled) {
            if (whole) {
                add_whole_ellipse(cairo, outer);
            } else {
                cairo_move_to(cairo, outer.centre_x, outer.centre_y);
                add_arc(cairo, outer, from, to);
                cairo_close_path(cairo);
            }
            fill_path(cairo, ellipse.fillColour, CAIRO_FILL_RULE_WINDING);
        }
        if (outlined) {
            // A band between the box's ellipse and one inset by the thickness; past half
            // the smaller axis there is no hole left.
            const double thickness = std::min<double>(ellipse.thickness, std::min(outer.radius_x, outer.radius_y));
            const EllipseShape inner { outer.centre_x, outer.centre_y, outer.radius_x - thickness,
                                       outer.radius_y - thickness };
            const bool hole = inner.radius_x > 0.0 && inner.radius_y > 0.0;
            if (whole) {
                add_whole_ellipse(cairo, outer);
                if (hole)
                    add_whole_ellipse(cairo, inner);
            } else {
                cairo_new_sub_path(cairo);
                add_arc(cairo, outer, from, to);
                if (hole)
                    add_arc(cairo, inner, to, from, true);
                else
                    cairo_line_to(cairo, outer.centre_x, outer.centre_y);
                cairo_close_path(cairo);
            }
            fill_path(cairo, ellipse.lineColour, CAIRO_FILL_RULE_EVEN_ODD);
        }
        checkShape();
    }
}

void Headless::SoftwareRenderer::drawRoundedRects(const RoundedRectDescription* descriptions, unsigned count)
{
    XY<int> size;
    m_image->getSize(size);
    for (unsigned index = 0; index < count; ++index) {
        const RoundedRectDescription& rounded = descriptions[index];
        const TopDownRect box = normalised(rounded.rect);
        if (box.isEmpty() || !within_cairo(box) || !touches(box, size))
            continue;
        const double half_side = std::min(box.width(), box.height()) / 2.0;
        const double radius = std::min<double>(rounded.radius, half_side);
        const double thickness = std::min<double>(rounded.thickness, half_side);
        // An outline in the fill's own colour is an outline alone, as the shader road has it.
        const bool filled
            = !(thickness > 0.0 && same_rgb(rounded.fillColour, rounded.lineColour)) && is_visible(rounded.fillColour);
        const bool outlined = thickness > 0.0 && is_visible(rounded.lineColour);
        if (!filled && !outlined)
            continue;
        cairo_t* const cairo = shapes();
        if (!cairo)
            return;
        if (filled) {
            add_rounded_rect(cairo, box.left, box.top, box.right, box.bottom, radius, rounded.corners);
            fill_path(cairo, rounded.fillColour, CAIRO_FILL_RULE_WINDING);
        }
        if (outlined) {
            add_rounded_rect(cairo, box.left, box.top, box.right, box.bottom, radius, rounded.corners);
            if (thickness < half_side)
                add_rounded_rect(cairo, box.left + thickness, box.top + thickness, box.right - thickness,
                                 box.bottom - thickness, std::max(radius - thickness, 0.0), rounded.corners);
            fill_path(cairo, rounded.lineColour, CAIRO_FILL_RULE_EVEN_ODD);
        }
        checkShape();
    }
}

// [SECTION] Lines, strips and Beziers

namespace {

// The pen of thickness t covers pixels p - (t-1)/2 to p - (t-1)/2 + t - 1 across the
// line; its centre lies this far from the pixel's corner p.
double pen_centre(unsigned thickness)
{
    return thickness % 2 ? 0.5 : 1.0;
}

unsigned pen_of(std::uint32_t thickness)
{
    return std::clamp<unsigned>(thickness, 1, MAX_THICKNESS);
}

struct Segment {
    double x0, y0, x1, y1;
    double skipped = 0.0;   // length cut from the start
};

// Cuts the segment to the image grown by margin on all sides (Liang and Barsky). False
// when nothing is left. End points that survive are kept bit for bit, so that a strip's
// segments still meet.
bool cut_to(Segment& segment, const XY<int>& size, double margin)
{
    const double dx = segment.x1 - segment.x0, dy = segment.y1 - segment.y0;
    double enter = 0.0, leave = 1.0;
    const double limits[4][2] = { { -dx, segment.x0 + margin },
                                  { dx, size.x + margin - segment.x0 },
                                  { -dy, segment.y0 + margin },
                                  { dy, size.y + margin - segment.y0 } };
    for (const auto& [p, q] : limits) {
        if (p == 0.0) {
            if (q < 0.0)
                return false;
            continue;
        }
        const double share = q / p;
        if (p < 0.0)
            enter = std::max(enter, share);
        else
            leave = std::min(leave, share);
        if (enter > leave)
            return false;
    }
    const Segment given = segment;
    if (enter > 0.0) {
        segment.x0 = given.x0 + enter * dx;
        segment.y0 = given.y0 + enter * dy;
        segment.skipped = enter * std::hypot(dx, dy);
    }
    if (leave < 1.0) {
        segment.x1 = given.x0 + leave * dx;
        segment.y1 = given.y0 + leave * dy;
    }
    return true;
}

// fill() cuts to the image; this only keeps the values inside int on the way there.
int held(std::int64_t value)
{
    constexpr std::int64_t LIMIT = 1 << 30;
    return static_cast<int>(std::clamp<std::int64_t>(value, -LIMIT, LIMIT));
}

TopDownRect box_of(std::int64_t left, std::int64_t top, std::int64_t right, std::int64_t bottom)
{
    return { held(left), held(top), held(right), held(bottom) };
}

} // namespace

void Headless::SoftwareRenderer::drawLines(const LineDescription* descriptions, unsigned count)
{
    for (unsigned index = 0; index < count; ++index) {
        const LineDescription& line = descriptions[index];
        const unsigned run = line.patterned ? line.pattern : 0;
        if (!is_visible(line.colour) && !(run && is_visible(line.secondColour)))
            continue;
        if (line.start.x == line.end.x || line.start.y == line.end.y)
            drawStraightLine(line, pen_of(line.thickness), run);
        else
            drawSlantedLine(line, pen_of(line.thickness), run);
    }
}

void Headless::SoftwareRenderer::drawStraightLine(const LineDescription& line, unsigned thickness, unsigned run)
{
    XY<int> size;
    m_image->getSize(size);
    const bool along_row = line.start.y == line.end.y;
    const std::int64_t from = along_row ? line.start.x : line.start.y;
    const std::int64_t to = along_row ? line.end.x : line.end.y;
    const std::int64_t back = (thickness - 1) / 2;   // the pen reaches this far before a pixel
    const std::int64_t across = static_cast<std::int64_t>(along_row ? line.start.y : line.start.x) - back;
    const std::int64_t extent = along_row ? size.x : size.y;
    const std::int64_t across_extent = along_row ? size.y : size.x;
    if (across + thickness <= 0 || across >= across_extent)
        return;
    // Pixels from low to high along the line, each covered by the whole pen.
    const auto draw = [&](std::int64_t low, std::int64_t high, const NormalisedRGB& colour) {
        const std::int64_t start = low - back, end = high - back + thickness;
        const TopDownRect box = along_row ? box_of(start, across, end, across + thickness)
                                          : box_of(across, start, across + thickness, end);
        fill(box, colour, PIXMAN_OP_OVER);
    };
    const std::int64_t length = (to >= from ? to - from : from - to) + 1;
    if (run == 0 || run >= length) {
        if (is_visible(line.colour))
            draw(std::min(from, to), std::max(from, to), line.colour);
        return;
    }
    // Runs counted from the start point; only those that reach the image are drawn, so
    // a long dotted line costs what its visible part does.
    const std::int64_t step = to >= from ? 1 : -1;
    const std::int64_t first_seen = back - thickness + 1, last_seen = extent - 1 + back;
    const std::int64_t k_low = std::max<std::int64_t>(0, step > 0 ? first_seen - from : from - last_seen);
    const std::int64_t k_high = std::min<std::int64_t>(length - 1, step > 0 ? last_seen - from : from - first_seen);
    for (std::int64_t k = k_low - k_low % run; k <= k_high; k += run) {
        const NormalisedRGB& colour = (k / run) % 2 == 0 ? line.colour : line.secondColour;
        if (!is_visible(colour))
            continue;
        const std::int64_t a = from + step * std::max(k, k_low);
        const std::int64_t b = from + step * std::min<std::int64_t>(k + run - 1, k_high);
        draw(std::min(a, b), std::max(a, b), colour);
    }
}

void Headless::SoftwareRenderer::drawSlantedLine(const LineDescription& line, unsigned thickness, unsigned run)
{
    XY<int> size;
    m_image->getSize(size);
    const double centre = pen_centre(thickness);
    Segment segment { line.start.x + centre, line.start.y + centre, line.end.x + centre, line.end.y + centre };
    const double dx = segment.x1 - segment.x0, dy = segment.y1 - segment.y0;
    const double length = std::hypot(dx, dy);
    // The length of one pixel step along the longer axis: runs are counted in those.
    const double step = length / std::max(std::fabs(dx), std::fabs(dy));
    if (run) {
        // Square caps would smear the runs into each other; the ends reach half a step
        // further instead, so that both end pixels are lit.
        const double reach_x = dx / length * step / 2.0, reach_y = dy / length * step / 2.0;
        segment = { segment.x0 - reach_x, segment.y0 - reach_y, segment.x1 + reach_x, segment.y1 + reach_y };
    }
    if (!cut_to(segment, size, thickness + 2.0))
        return;
    cairo_t* const cairo = shapes();
    if (!cairo)
        return;
    cairo_move_to(cairo, segment.x0, segment.y0);
    cairo_line_to(cairo, segment.x1, segment.y1);
    if (!run) {
        stroke_path(cairo, line.colour, thickness, CAIRO_LINE_CAP_SQUARE);
    } else {
        const double dash = run * step;
        if (is_visible(line.colour))
            stroke_path(cairo, line.colour, thickness, CAIRO_LINE_CAP_BUTT, &dash, segment.skipped);
        if (is_visible(line.secondColour))
            stroke_path(cairo, line.secondColour, thickness, CAIRO_LINE_CAP_BUTT, &dash, segment.skipped + dash);
        cairo_set_dash(cairo, nullptr, 0, 0.0);
    }
    checkShape();
}

void Headless::SoftwareRenderer::drawLineStrips(const LineStripDescription* descriptions, unsigned count)
{
    XY<int> size;
    m_image->getSize(size);
    for (unsigned index = 0; index < count; ++index) {
        const LineStripDescription& strip = descriptions[index];
        if (strip.points.size() < 2 || !is_visible(strip.colour))
            continue;
        cairo_t* const cairo = shapes();
        if (!cairo)
            return;
        const unsigned thickness = pen_of(strip.thickness);
        const double centre = pen_centre(thickness);
        // Each segment is cut to the image on its own; where the cut parts do not meet,
        // a new piece starts. Cut ends lie outside the image by more than the pen reaches.
        bool have_previous = false, pen_down = false;
        double previous_x = 0.0, previous_y = 0.0;
        for (const XY<float>& point : strip.points) {
            if (!std::isfinite(point.x) || !std::isfinite(point.y)) {
                have_previous = pen_down = false;   // a point that is not there breaks the strip
                continue;
            }
            const double x = point.x + centre, y = point.y + centre;
            if (have_previous) {
                Segment segment { previous_x, previous_y, x, y };
                if (cut_to(segment, size, thickness + 2.0)) {
                    if (!pen_down || segment.skipped > 0.0)
                        cairo_move_to(cairo, segment.x0, segment.y0);
                    cairo_line_to(cairo, segment.x1, segment.y1);
                    pen_down = segment.x1 == x && segment.y1 == y;
                } else {
                    pen_down = false;
                }
            }
            previous_x = x;
            previous_y = y;
            have_previous = true;
        }
        stroke_path(cairo, strip.colour, thickness, CAIRO_LINE_CAP_SQUARE);
        checkShape();
    }
}

void Headless::SoftwareRenderer::drawBeziers(const BezierCurveDescription* descriptions, unsigned count)
{
    XY<int> size;
    m_image->getSize(size);
    for (unsigned index = 0; index < count; ++index) {
        const BezierCurveDescription& curve = descriptions[index];
        if (!is_visible(curve.colour))
            continue;
        // The curve stays inside the box of its four points.
        const XY<int> points[4] = { curve.start, curve.control1, curve.control2, curve.end };
        const unsigned thickness = pen_of(curve.thickness);
        std::int64_t left = points[0].x, top = points[0].y, right = left, bottom = top;
        for (const XY<int>& point : points) {
            left = std::min<std::int64_t>(left, point.x);
            top = std::min<std::int64_t>(top, point.y);
            right = std::max<std::int64_t>(right, point.x);
            bottom = std::max<std::int64_t>(bottom, point.y);
        }
        if (!within_cairo(static_cast<double>(left)) || !within_cairo(static_cast<double>(top))
            || !within_cairo(static_cast<double>(right)) || !within_cairo(static_cast<double>(bottom))
            || right + thickness < 0 || bottom + thickness < 0 || left - thickness >= size.x
            || top - thickness >= size.y)
            continue;
        cairo_t* const cairo = shapes();
        if (!cairo)
            return;
        const double centre = pen_centre(thickness);
        cairo_move_to(cairo, curve.start.x + centre, curve.start.y + centre);
        cairo_curve_to(cairo, curve.control1.x + centre, curve.control1.y + centre, curve.control2.x + centre,
                       curve.control2.y + centre, curve.end.x + centre, curve.end.y + centre);
        stroke_path(cairo, curve.colour, thickness, CAIRO_LINE_CAP_SQUARE);
        checkShape();
    }
}

// [SECTION] Texts

void Headless::SoftwareRenderer::drawTexts(const TextDescription* descriptions, unsigned count)
{
    Headless::drawTexts(m_target, descriptions, count);   // TextDrawing.cpp
}
