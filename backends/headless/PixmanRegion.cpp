#include "headless/PixmanRegion.h"

#include "tela/core/Log.h"

#include <atomic>
#include <algorithm>
#include <climits>
#include <cstdlib>
#include <new>

namespace {

std::uint32_t next_identity()
{
    static std::atomic<std::uint32_t> counter { 0 };
    return counter.fetch_add(1, std::memory_order_relaxed) + 1;
}

const Headless::PixmanRegion* as_pixman(const Qv::Ptr<iRegion>& region)
{
    // Every region of this process is born in this backend's createRegion.
    return static_cast<const Headless::PixmanRegion*>(region.get());
}

void report_allocation_failure_once()
{
    static std::atomic<bool> reported { false };
    if (!reported.exchange(true))
        murl_printf("PixmanRegion: out of memory; the result is empty\n");
}

// Clamps a move so that no coordinate leaves the range pixman can hold.
int clamp_offset(long long offset)
{
    return static_cast<int>(std::clamp<long long>(offset, INT_MIN / 2, INT_MAX / 2));
}

// True when the `size` boxes from `upper` and from `lower` are two bands
// pixman would fold into one: touching vertically, with the same columns.
bool bands_coalesce(const pixman_box32_t* upper, const pixman_box32_t* lower, std::size_t size)
{
    if (upper[0].y2 != lower[0].y1)
        return false;
    for (std::size_t index = 0; index < size; ++index) {
        if (upper[index].x1 != lower[index].x1 || upper[index].x2 != lower[index].x2)
            return false;
    }
    return true;
}

// Rectangles already in the region's form go in as they are: init_rects
// would sort, scatter and coalesce them only to get the same boxes back,
// which costs more than the shape took to make. The form: none empty, bands
// top to bottom, each band's boxes of one height, apart and left to right,
// and no band a repeat of the one just above it. The boxes are laid out the
// way pixman keeps them and checked there, and the block is handed to the
// region, which frees its data with free(): hence malloc here. False,
// with the region untouched, for rectangles in any other form, or too few
// to need this.
bool init_if_in_region_form(pixman_region32_t& region, const TopDownRect* rects, std::size_t count)
{
    static_assert(alignof(pixman_box32_t) <= alignof(pixman_region32_data_t));
    static_assert(sizeof(pixman_region32_data_t) % alignof(pixman_box32_t) == 0);
    // One box is a region without data, which init_rects makes directly.
    if (count < 2 || count > std::size_t(INT_MAX))
        return false;
    void* const block = std::malloc(sizeof(pixman_region32_data_t) + count * sizeof(pixman_box32_t));
    if (!block)
        return false; // the ordinary road reports the shortage
    auto* const data = new (block) pixman_region32_data_t{long(count), long(count)};
    auto* const boxes = reinterpret_cast<pixman_box32_t*>(data + 1);
    // Three plain passes rather than one: the copy and the extents run
    // without a branch, and only the form's checks have any.
    for (std::size_t index = 0; index < count; ++index)
        new (&boxes[index]) pixman_box32_t{rects[index].left, rects[index].top, rects[index].right, rects[index].bottom};
    int left = boxes[0].x1;
    int right = boxes[0].x2;
    for (std::size_t index = 1; index < count; ++index) {
        left = boxes[index].x1 < left ? boxes[index].x1 : left;
        right = boxes[index].x2 > right ? boxes[index].x2 : right;
    }
    std::size_t band = 0;         // first box of the band being read
    std::size_t previousBand = 0; // first of the band above it; equal to band while there is none
    bool banded = boxes[0].x1 < boxes[0].x2 && boxes[0].y1 < boxes[0].y2;
    for (std::size_t index = 1; index < count && banded; ++index) {
        const pixman_box32_t& box = boxes[index];
        const pixman_box32_t& last = boxes[index - 1];
        if (box.y1 == last.y1) {
            banded = box.y2 == last.y2 && box.x1 > last.x2 && box.x1 < box.x2;
        } else if (box.y1 >= last.y2) {
            banded = box.x1 < box.x2 && box.y1 < box.y2 &&
                     (band == previousBand || index - band != band - previousBand ||
                      !bands_coalesce(&boxes[previousBand], &boxes[band], index - band));
            previousBand = band;
            band = index;
        } else {
            banded = false;
        }
    }
    if (banded && band != previousBand && count - band == band - previousBand)
        banded = !bands_coalesce(&boxes[previousBand], &boxes[band], count - band);
    if (!banded) {
        std::free(block);
        return false;
    }
    region.extents = pixman_box32_t{left, boxes[0].y1, right, boxes[count - 1].y2};
    region.data = data;
    return true;
}

} // namespace

Headless::PixmanRegion::PixmanRegion()
    : m_identity(next_identity())
{
    pixman_region32_init(&m_region);
}

Headless::PixmanRegion::~PixmanRegion()
{
    pixman_region32_fini(&m_region);
}

void Headless::PixmanRegion::adopt(Qv::Ptr<iRegion>& out, pixman_region32_t& region, bool keepEmpty)
{
    if (!keepEmpty && !pixman_region32_not_empty(&region)) {
        pixman_region32_fini(&region);
        out = nullptr;
        return;
    }
    Qv::Ptr<PixmanRegion> result(new PixmanRegion);
    pixman_region32_fini(&result->m_region);
    result->m_region = region;   // pixman regions move by plain copy of the struct
    out = result;
}

void Headless::PixmanRegion::create(Qv::Ptr<iRegion>& out, const TopDownRect* rects, std::size_t count)
{
    pixman_region32_t region;
    pixman_region32_init(&region);
    if (count > 0 && rects && !init_if_in_region_form(region, rects, count)) {
        // pixman wants boxes; skip empty ones, which it would report as invalid.
        Qv::Vector<pixman_box32_t> boxes;
        boxes.reserve(count);
        for (std::size_t index = 0; index < count; ++index) {
            const TopDownRect& rect = rects[index];
            if (rect.isEmpty())
                continue;
            boxes.push_back(pixman_box32_t { rect.left, rect.top, rect.right, rect.bottom });
        }
        // init_rects validates and, when the boxes are not banded, sorts them out itself.
        pixman_region32_fini(&region);
        if (!pixman_region32_init_rects(&region, boxes.data(), static_cast<int>(boxes.size()))) {
            report_allocation_failure_once();
            pixman_region32_init(&region);
        }
    }
    adopt(out, region, count > 0 && rects);
}

void Headless::PixmanRegion::getBox(Qv::Box<int>& box) const
{
    const pixman_box32_t* extents = pixman_region32_extents(raw());
    box = Qv::Box<int> { extents->x1, extents->y1, extents->x2, extents->y2 };
}

bool Headless::PixmanRegion::isRectangular() const
{
    return pixman_region32_n_rects(raw()) == 1;
}

bool Headless::PixmanRegion::equals(const Qv::Ptr<iRegion>& other) const
{
    // No region is the empty point set; an empty region made from an empty
    // rectangle is the same set.
    if (!other)
        return !pixman_region32_not_empty(raw());
    return pixman_region32_equal(raw(), as_pixman(other)->raw());
}

bool Headless::PixmanRegion::contains(const XY<int>& point) const
{
    return pixman_region32_contains_point(raw(), point.x, point.y, nullptr);
}

void Headless::PixmanRegion::translateInPlace(int dx, int dy)
{
    pixman_region32_translate(&m_region, clamp_offset(dx), clamp_offset(dy));
    m_identity = next_identity();
}

void Headless::PixmanRegion::translated(Qv::Ptr<iRegion>& out, int dx, int dy) const
{
    pixman_region32_t copy;
    pixman_region32_init(&copy);
    if (!pixman_region32_copy(&copy, raw()))
        report_allocation_failure_once();
    if (dx || dy)
        pixman_region32_translate(&copy, clamp_offset(dx), clamp_offset(dy));
    adopt(out, copy);
}

void Headless::PixmanRegion::combine(Qv::Ptr<iRegion>& out, const Qv::Ptr<iRegion>& other, Operation operation) const
{
    pixman_region32_t result;
    pixman_region32_init(&result);
    pixman_region32_t empty;
    pixman_region32_init(&empty);
    pixman_region32_t* const other_raw = other ? as_pixman(other)->raw() : &empty;
    if (!operation(&result, raw(), other_raw))
        report_allocation_failure_once();
    pixman_region32_fini(&empty);
    adopt(out, result);
}

void Headless::PixmanRegion::intersected(Qv::Ptr<iRegion>& out, const Qv::Ptr<iRegion>& other) const
{
    combine(out, other, pixman_region32_intersect);
}

void Headless::PixmanRegion::united(Qv::Ptr<iRegion>& out, const Qv::Ptr<iRegion>& other) const
{
    combine(out, other, pixman_region32_union);
}

void Headless::PixmanRegion::subtracted(Qv::Ptr<iRegion>& out, const Qv::Ptr<iRegion>& other) const
{
    combine(out, other, pixman_region32_subtract);
}

void Headless::PixmanRegion::getRects(Qv::Vector<TopDownRect>& rects) const
{
    int count = 0;
    const pixman_box32_t* boxes = pixman_region32_rectangles(raw(), &count);
    rects.clear();
    rects.reserve(static_cast<std::size_t>(count));
    for (int index = 0; index < count; ++index)
        rects.push_back(TopDownRect { boxes[index].x1, boxes[index].y1, boxes[index].x2, boxes[index].y2 });
}
