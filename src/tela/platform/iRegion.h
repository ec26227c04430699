// iRegion: an immutable set of pixels in window coordinates (y downward), held by the
// platform. The one exception to immutability is translateInPlace, used only on a
// region with a single owner. A null Qv::Ptr<iRegion> is the empty region.
#pragma once

#include "tela/core/Memory.h"
#include "tela/core/Ptr.h"
#include "tela/platform/Geometry.h"

#include <cstdint>

class iRegion : public iObject {
public:
    virtual void getBox(Qv::Box<int>& box) const = 0;   // bounding box, y downward; all zero when empty
    virtual bool isRectangular() const = 0;             // exactly one rectangle
    virtual bool equals(const Qv::Ptr<iRegion>& other) const = 0;   // same point set; null is empty
    virtual bool contains(const XY<int>& point) const = 0;
    virtual std::uint32_t identity() const = 0;         // differs between two different shapes
    virtual void reserved5() {}
    virtual void translateInPlace(int dx, int dy) = 0;
    virtual void translated(Qv::Ptr<iRegion>& out, int dx = 0, int dy = 0) const = 0;   // a new, moved copy
    // Set operations; an empty result is a null Ptr.
    virtual void intersected(Qv::Ptr<iRegion>& out, const Qv::Ptr<iRegion>& other) const = 0;
    virtual void united(Qv::Ptr<iRegion>& out, const Qv::Ptr<iRegion>& other) const = 0;
    virtual void subtracted(Qv::Ptr<iRegion>& out, const Qv::Ptr<iRegion>& other) const = 0;
    // The banded rectangles, top to bottom and left to right (renderers and tests read them).
    virtual void getRects(Qv::Vector<TopDownRect>& rects) const = 0;
};
