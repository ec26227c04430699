// PixmanRegion: an iRegion that owns one pixman_region32_t.
//
// Invariants
// - m_region is always initialised and valid (pixman's y-x banded form).
// - An empty result of a set operation or a move is a null Ptr. Only create() may give
//   an empty object: asked for rectangles that cover nothing, it still returns a
//   region, because callers that must hold an object ask for exactly that.
// - m_identity is a fresh number for each shape: set at construction and again on
//   every translateInPlace, so two different shapes never share one.
#pragma once

#include "tela/platform/iRegion.h"

#include <pixman.h>

namespace Headless {

class PixmanRegion final : public iRegion {
public:
    // Builds a region from rectangles in any order; empty rectangles are skipped.
    // out is null only when no rectangle was given.
    static void create(Qv::Ptr<iRegion>& out, const TopDownRect* rects, std::size_t count);
    // Takes over an initialised region; out is null (and the region finished) when empty.
    static void adopt(Qv::Ptr<iRegion>& out, pixman_region32_t& region, bool keepEmpty = false);

    ~PixmanRegion() override;
    PixmanRegion(const PixmanRegion&) = delete;
    PixmanRegion& operator=(const PixmanRegion&) = delete;

    void getBox(Qv::Box<int>& box) const override;
    bool isRectangular() const override;
    bool equals(const Qv::Ptr<iRegion>& other) const override;
    bool contains(const XY<int>& point) const override;
    std::uint32_t identity() const override { return m_identity; }
    void translateInPlace(int dx, int dy) override;
    void translated(Qv::Ptr<iRegion>& out, int dx, int dy) const override;
    void intersected(Qv::Ptr<iRegion>& out, const Qv::Ptr<iRegion>& other) const override;
    void united(Qv::Ptr<iRegion>& out, const Qv::Ptr<iRegion>& other) const override;
    void subtracted(Qv::Ptr<iRegion>& out, const Qv::Ptr<iRegion>& other) const override;
    void getRects(Qv::Vector<TopDownRect>& rects) const override;

    // pixman reads sources through non-const pointers; it never writes them.
    pixman_region32_t* raw() const { return const_cast<pixman_region32_t*>(&m_region); }
    bool selfcheck() const { return pixman_region32_selfcheck(raw()); }

private:
    PixmanRegion();   // takes an initialised region through adopt()

    using Operation = pixman_bool_t (*)(pixman_region32_t*, const pixman_region32_t*, const pixman_region32_t*);
    void combine(Qv::Ptr<iRegion>& out, const Qv::Ptr<iRegion>& other, Operation operation) const;

    pixman_region32_t m_region;
    std::uint32_t m_identity;
};

} // namespace Headless
