#include "tela/vector/Regions.h"

#include "tela/platform/iWindowingService.h"
#include "tela/platform/OS.h"
#include "tela/vector/RegionBuilder.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>

namespace {

Qv::Box<int> box_of(const RegionPtr& r)
{
    Qv::Box<int> box;
    r->getBox(box);
    return box;
}

} // namespace

RegionPtr region_mkrect(const Qv::Rectangle<int>& rect)
{
    RegionPtr region;
    OS()->windowing()->createRegion(region, &rect, 1);
    return region;
}

RegionPtr region_copy(const RegionPtr& r)
{
    RegionPtr copy;
    if (r)
        r->translated(copy, 0, 0);
    return copy;
}

RegionPtr region_translate(const RegionPtr& r, int dx, int dy)
{
    RegionPtr moved = region_copy(r);
    if (moved)
        moved->translateInPlace(dx, -dy);
    return moved;
}

RegionPtr region_union(const RegionPtr& a, const RegionPtr& b)
{
    if (!a)
        return b;
    if (!b)
        return a;
    RegionPtr result;
    a->united(result, b);
    return result;
}

RegionPtr region_intersect(const RegionPtr& a, const RegionPtr& b)
{
    if (a.get() == b.get())
        return a;
    if (!a || !b)
        return nullptr;
    // Most pairs in a dirty-region walk do not meet: settle those on the boxes.
    if (!box_of(a).intersects(box_of(b)))
        return nullptr;
    RegionPtr result;
    a->intersected(result, b);
    return result;
}

RegionPtr region_subtract(const RegionPtr& a, const RegionPtr& b, bool mayBeNull)
{
    if (!a || a.get() == b.get())
        return nullptr;
    RegionPtr result;
    a->subtracted(result, b);
    if (!result && !mayBeNull)
        result = region_mkrect(Qv::Rectangle<int>{});
    return result;
}

int region_eq(const RegionPtr& a, const RegionPtr& b)
{
    if (a.get() == b.get())
        return 1;
    if (!a || !b)
        return 0;
    return a->equals(b) ? 1 : 0;
}

int region_is_rect(const RegionPtr& r)
{
    return r && r->isRectangular() ? 1 : 0;
}

long long region_area(const RegionPtr& r)
{
    if (!r)
        return 0;
    const Qv::Box<int> box = box_of(r);
    return static_cast<long long>(box.width()) * box.height();
}

bool region_bbx_overlap(const RegionPtr& a, const RegionPtr& b)
{
    if (!a || !b)
        return false;
    return box_of(a).intersects(box_of(b));
}

RegionPtr region_bbx_intersect(const RegionPtr& a, const RegionPtr& b)
{
    if (!a || !b)
        return nullptr;
    const Qv::Box<int> overlap = box_of(a).intersected(box_of(b));
    if (overlap.isEmpty())
        return nullptr;
    return region_mkrect(overlap.toTopDownRectUnflipped()); // region boxes are window boxes already
}

RegionPtr region_grow(const RegionPtr& r, int, int)
{
    return r;
}

RegionPtr region_border(const RegionPtr& r, int dx, int dy)
{
    return region_grow(r, dx, dy);
}

RegionPtr makeCurvedRegion(const XY<int>& size, unsigned corners, eCurvedRegionType type)
{
    const int w = size.x;
    const int h = size.y;
    Tela::RegionBuilder builder(10);
    if (corners == 0) {
        builder.appendRect(0, 0, w, h);
        return builder.create();
    }
    if (type != eSmallCorners) {
        builder.appendRect(6, 0, w - 6, 1);
        builder.appendRect(3, 1, w - 3, 2);
        builder.appendRect(2, 2, w - 2, 3);
        builder.appendRect(1, 3, w - 1, 6);
        builder.appendRect(0, 6, w, h - 6);
        builder.appendRect(1, h - 6, w - 1, h - 3);
        builder.appendRect(2, h - 3, w - 2, h - 2);
        builder.appendRect(3, h - 2, w - 3, h - 1);
        builder.appendRect(6, h - 1, w - 6, h);
        return builder.create();
    }

    const bool top_left = corners & 1, top_right = corners & 2;
    const bool bottom_left = corners & 4, bottom_right = corners & 8;
    int body_top = 3;
    if (top_left || top_right) {
        const int inset_left = top_left ? 3 : 0, inset_right = top_right ? 3 : 0;
        builder.appendRect(inset_left, 0, w - inset_right, 1);
        builder.appendRect(top_left ? 1 : 0, 1, w - (top_right ? 1 : 0), 3);
    } else {
        body_top = 0;
    }
    builder.appendRect(0, body_top, w, h - 3);
    if (bottom_left || bottom_right) {
        builder.appendRect(bottom_left ? 1 : 0, h - 3, w - (bottom_right ? 1 : 0), h - 1);
        builder.appendRect(bottom_left ? 3 : 0, h - 1, w - (bottom_right ? 3 : 0), h);
    } else {
        builder.appendRect(0, h - 3, w, h);
    }
    return builder.create();
}

RegionPtr tela_buildRegionFromImage(const Qv::Ptr<iHostImage>& image)
{
    if (!image)
        return nullptr;
    const Qv::Ptr<iPixelGuard> guard = image->lock();
    if (!guard)
        return nullptr;
    XY<int> image_size;
    image->getSize(image_size);
    const XY<int> buffer_size = guard->size();
    if (image_size.x <= 0 || image_size.y <= 0 || buffer_size.x <= 0)
        return nullptr;
    const int step = std::max(1, buffer_size.x / image_size.x);
    const bool has_alpha = image->bitsPerPixel() == 32;
    const std::uint8_t* pixels = guard->pixels();
    const int stride = guard->stride();
    const int buffer_height = std::min(buffer_size.y, image_size.y * step);

    // A span a row is the usual shape; the builder grows for more.
    Tela::RegionBuilder builder(static_cast<std::size_t>(image_size.y));
    // `next_change(row, x, inside)` is the first pixel from x on that is not
    // `inside`: each pixel form has its own, so that the form is not asked
    // again for every pixel.
    auto add_spans = [&](auto next_change) {
        for (int y = 0; y < buffer_height; y += step) {
            const std::uint8_t* row = pixels + static_cast<std::ptrdiff_t>(y) * stride;
            int x = 0;
            while (x < buffer_size.x) {
                const int start = next_change(row, x, false);
                x = next_change(row, start, true);
                const int run = x - start;
                if (run > 0)
                    builder.appendRect(start / step, y / step, start / step + run / step, y / step + 1);
            }
        }
    };
    const int width = buffer_size.x;
    if (has_alpha) {
        // A picture is mostly runs of opaque or of clear pixels: they are
        // passed two at a time, a word holding both alphas (bytes 3 and 7).
        static_assert(std::endian::native == std::endian::little);
        add_spans([width](const std::uint8_t* row, int x, bool inside) {
            constexpr std::uint64_t LOW_ALPHA = 0xff000000ull, HIGH_ALPHA = 0xff00000000000000ull;
            for (; x + 2 <= width; x += 2) {
                std::uint64_t pair;
                std::memcpy(&pair, row + x * 4, sizeof pair);
                const bool alike = inside ? (pair & LOW_ALPHA) && (pair & HIGH_ALPHA)
                                          : (pair & (LOW_ALPHA | HIGH_ALPHA)) == 0;
                if (!alike)
                    break;
            }
            while (x < width && (row[x * 4 + 3] > 0) == inside)
                ++x;
            return x;
        });
    } else {
        add_spans([width](const std::uint8_t* row, int x, bool inside) {
            auto shown = [row](int at) {
                const std::uint8_t* pixel = row + at * 3;
                return !(pixel[0] == 255 && pixel[1] == 255 && pixel[2] == 255);
            };
            while (x < width && shown(x) == inside)
                ++x;
            return x;
        });
    }
    return builder.create();
}
