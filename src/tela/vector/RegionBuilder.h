#pragma once
// Tela::RegionBuilder: collects rectangles into the banded form regions are
// made of, merging equal columns vertically and splitting a band when a
// rectangle to its right starts inside it. Rectangles must arrive row by row
// from the top, left to right within a row (y downward).

#include "tela/core/Ptr.h"
#include "tela/platform/Geometry.h"
#include "tela/platform/iRegion.h"

#include <cstddef>

namespace Tela {

class RegionBuilder {
public:
    explicit RegionBuilder(std::size_t reserve = 0);
    RegionBuilder(const RegionBuilder& other); // allocates exactly the source's size
    RegionBuilder(RegionBuilder&& other) noexcept;
    RegionBuilder& operator=(const RegionBuilder& other);
    RegionBuilder& operator=(RegionBuilder&& other) noexcept;
    ~RegionBuilder();

    void appendRect(const Qv::Rectangle<int>& rect);
    void appendRect(int left, int top, int right, int bottom) { appendRect({left, top, right, bottom}); }

    // For callers that make the banded form themselves: the rectangle goes
    // in as it stands, never merged or split, and extendBand lowers the
    // bottom of the last `count` rectangles, a band grown by a row.
    void appendBandRect(const Qv::Rectangle<int>& rect) { push(rect); }
    void extendBand(std::size_t count, int bottom)
    {
        for (std::size_t index = m_size - (count < m_size ? count : m_size); index < m_size; ++index)
            m_rects[index].bottom = bottom;
    }
    // Takes back the last `count` rectangles.
    void dropLast(std::size_t count) { m_size -= count < m_size ? count : m_size; }

    // A region of what has been collected; the builder stays usable.
    Qv::Ptr<iRegion> create() const;

    std::size_t size() const { return m_size; }
    const Qv::Rectangle<int>& operator[](std::size_t index) const { return m_rects[index]; }

private:
    void reserve(std::size_t capacity);
    // Inline, for the scan converter emits a rectangle for every span.
    void push(const Qv::Rectangle<int>& rect)
    {
        if (m_size == m_capacity)
            grow();
        if (m_size < m_capacity)
            m_rects[m_size++] = rect;
    }
    void grow();

    Qv::Rectangle<int>* m_rects = nullptr; // from the memory seam
    std::size_t m_size = 0;
    std::size_t m_capacity = 0;
};

} // namespace Tela
