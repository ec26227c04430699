#pragma once
// region_*: the library's side of region arithmetic. A null Qv::Ptr<iRegion>
// is the empty region everywhere, and results may share an argument instead
// of copying it, so callers never mutate a region they did not make.
// Regions are in window coordinates (y downward); the dy of the translate
// family counts upward, as canvases do, and is negated here.

#include "tela/core/Ptr.h"
#include "tela/platform/Geometry.h"
#include "tela/platform/iImage.h"
#include "tela/platform/iRegion.h"

class Canvas;

using RegionPtr = Qv::Ptr<iRegion>;

enum eCurvedRegionType : int {
    eSmallCorners = 0, // 3-pixel corners chosen by the mask
    eLargeCorners = 1, // any other value: 6-pixel corners on all four, mask ignored
};

// The rectangle as it stands, an empty one included.
RegionPtr region_mkrect(const Qv::Rectangle<int>& rect);
// A bottom-up box of the root's coordinates, flipped into the window.
RegionPtr region_mkrect(Canvas* canvas, int x1, int y1, int x2, int y2);

RegionPtr region_copy(const RegionPtr& r);
RegionPtr region_translate(const RegionPtr& r, int dx, int dy);
RegionPtr region_union(const RegionPtr& a, const RegionPtr& b);
RegionPtr region_intersect(const RegionPtr& a, const RegionPtr& b);
// With mayBeNull false an empty difference is an object with an all-zero
// box; but a minus itself, or a null a, is null whatever the flag.
RegionPtr region_subtract(const RegionPtr& a, const RegionPtr& b, bool mayBeNull);
int region_eq(const RegionPtr& a, const RegionPtr& b);
int region_is_rect(const RegionPtr& r);
// The area of the bounding box, not of the set.
long long region_area(const RegionPtr& r);
// Boxes that only touch do not overlap.
bool region_bbx_overlap(const RegionPtr& a, const RegionPtr& b);
RegionPtr region_bbx_intersect(const RegionPtr& a, const RegionPtr& b);
// Both give back `r` itself and ignore the distances: callers were written
// against that, so it stays.
RegionPtr region_grow(const RegionPtr& r, int dx, int dy);
RegionPtr region_border(const RegionPtr& r, int dx, int dy);

// A window shape of the given size with rounded corners (mask: 1 top left,
// 2 top right, 4 bottom left, 8 bottom right).
RegionPtr makeCurvedRegion(const XY<int>& size, unsigned corners, eCurvedRegionType type);

// The opaque part of an image: alpha above 0 for 32-bit pixels, anything but
// white for 24-bit ones.
RegionPtr tela_buildRegionFromImage(const Qv::Ptr<iHostImage>& image);

namespace Tela {

// The bounding box turned bottom-up in the root's coordinates.
Qv::Box<int> getExtentsQV(Canvas* root, const RegionPtr& region);

// A window region made relative to the canvas. In place, the region moves by
// (-x, +y); as a copy, by (-x, -y). The copy is what clipping uses; the
// in-place sign is kept because callers depend on it.
RegionPtr screenRegionToCanvasRegion(Canvas* canvas, const RegionPtr& region, bool inPlace);

} // namespace Tela
