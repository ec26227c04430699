// SoftwareRenderer.cpp
//
// [SECTION] Helpers: colours, owners of pixman images and raw blocks, reports
// [SECTION] Shader effects known by name
// [SECTION] Lifetime and clip
// [SECTION] Fills
// [SECTION] Blits and "InFront"
// [SECTION] Streaming copies
// [SECTION] Operations not drawn yet
#include "headless/SoftwareRenderer.h"

#include "headless/PixmanRegion.h"
#include "tela/core/Log.h"

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

std::uint16_t to_pixman_channel(float value)
{
    // byte * 257 is what pixman turns back into exactly that byte (it keeps the high 8 bits).
    return static_cast<std::uint16_t>(std::lround(value * 255.0f) * 257);
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
    LineStrips,
    RoundedRects,
    Beziers,
    Texts,
    Lines,
    Ellipses,
    ShaderShadowLR,
    ShaderShadowTB,
    ShaderShadowC,
    ShaderRoundedRectangle,
    ShaderEllipse,
    ShaderUnknown,
    UnreachablePixels,
    Count,
};

constexpr const char* REPORT_TEXT[] = {
    "not drawn yet: drawShaderRects without a shader\n",
    "not drawn yet: drawLineStrips\n",
    "not drawn yet: drawRoundedRects\n",
    "not drawn yet: drawBeziers\n",
    "not drawn yet: drawTexts\n",
    "not drawn yet: drawLines\n",
    "not drawn yet: drawEllipses\n",
    "not drawn yet: drawShaderRects(ShadowLR)\n",
    "not drawn yet: drawShaderRects(ShadowTB)\n",
    "not drawn yet: drawShaderRects(ShadowC)\n",
    "not drawn yet: drawShaderRects(RoundedRectangle)\n",
    "not drawn yet: drawShaderRects(Ellipse)\n",
    "not drawn yet: drawShaderRects with an unknown shader\n",
    "SoftwareRenderer: an image whose pixels cannot be reached is not drawn\n",
};
static_assert(std::size(REPORT_TEXT) == static_cast<std::size_t>(Report::Count));

std::atomic<bool> g_reported[static_cast<std::size_t>(Report::Count)];

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
    pixman_region32_init(&m_clip);
}

Headless::SoftwareRenderer::~SoftwareRenderer()
{
    pixman_region32_fini(&m_clip);
    pixman_image_unref(m_target);
}

void Headless::SoftwareRenderer::setClip(const Qv::Ptr<iRegion>& clip)
{
    m_clip_copy = ClipCopy::None;
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
    // FIXME: CAP_SHADERS once all six effects run here, CAP_NATIVE_BEZIERS and
    // CAP_NATIVE_LINE_STRIPS once curves are drawn. "InFront" is drawn regardless:
    // canvas display asks for it without looking at the capabilities.
    return 0;
}

// [SECTION] Fills

void Headless::SoftwareRenderer::fill(const TopDownRect& area, const NormalisedRGB& colour, pixman_op_t op)
{
    // pixman's solid fill writes whatever the boxes and the clip allow, even outside the
    // image (where it runs into the neighbouring rows), so the box is cut to the image here.
    XY<int> size;
    m_image->getSize(size);
    const TopDownRect given = normalised(area);
    const TopDownRect box { std::max(given.left, 0), std::max(given.top, 0), std::min(given.right, size.x),
                            std::min(given.bottom, size.y) };
    if (box.isEmpty())
        return;
    const pixman_color_t pixman_colour = premultiplied(colour);
    const pixman_box32_t pixman_box { box.left, box.top, box.right, box.bottom };
    pixman_image_fill_boxes(op, m_target, &pixman_colour, 1, &pixman_box);
}

void Headless::SoftwareRenderer::drawRects(const RectDescription* descriptions, unsigned count)
{
    // FIXME: twoColours (a second colour across the rectangle) is drawn in the first colour alone.
    for (unsigned index = 0; index < count; ++index) {
        const RectDescription& rect = descriptions[index];
        fill(rect.rect, rect.colour, rect.blendMode == eBlendReplace ? PIXMAN_OP_SRC : PIXMAN_OP_OVER);
    }
}

void Headless::SoftwareRenderer::drawAlphaRects(const AlphaRectDescription* descriptions, unsigned count)
{
    // The alpha is the point of these rectangles: always laid over what is there.
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
    static const Report SHADER_REPORTS[] = { Report::ShaderUnknown, Report::ShaderShadowLR, Report::ShaderShadowTB,
                                             Report::ShaderShadowC, Report::ShaderRoundedRectangle,
                                             Report::ShaderEllipse };
    for (unsigned index = 0; index < count; ++index) {
        const ShaderRectDescription& shaded = descriptions[index];
        if (!shaded.active)
            continue;   // a switched-off effect draws nothing
        if (!shaded.shader) {
            report_once(Report::ShaderRects);
            continue;
        }
        const String name = shaded.shader->name();
        if (name == "InFront") {
            // The input image, times the opacity, over the destination.
            if (shaded.inputs.empty() || !shaded.inputs.front().first)
                continue;
            const float opacity = unit_interval(shaded.floatParam("Opacity", 1.0f));
            blit(shaded.inputs.front().first, shaded.inputs.front().second, shaded.rect, true, opacity);
            continue;
        }
        Report report = Report::ShaderUnknown;
        for (std::size_t known = 1; known < std::size(KNOWN_SHADERS); ++known) {
            if (name == KNOWN_SHADERS[known])
                report = SHADER_REPORTS[known];
        }
        report_once(report);
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

// [SECTION] Operations not drawn yet

void Headless::SoftwareRenderer::drawLineStrips(const LineStripDescription*, unsigned count)
{
    if (count)
        report_once(Report::LineStrips);
}

void Headless::SoftwareRenderer::drawRoundedRects(const RoundedRectDescription*, unsigned count)
{
    if (count)
        report_once(Report::RoundedRects);
}

void Headless::SoftwareRenderer::drawBeziers(const BezierCurveDescription*, unsigned count)
{
    if (count)
        report_once(Report::Beziers);
}

void Headless::SoftwareRenderer::drawTexts(const TextDescription*, unsigned count)
{
    if (count)
        report_once(Report::Texts);
}

void Headless::SoftwareRenderer::drawLines(const LineDescription*, unsigned count)
{
    if (count)
        report_once(Report::Lines);
}

void Headless::SoftwareRenderer::drawEllipses(const EllipseDescription*, unsigned count)
{
    if (count)
        report_once(Report::Ellipses);
}
