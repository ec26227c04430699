#include "tela/vector/RegionBuilder.h"

#include "tela/core/Log.h"
#include "tela/core/Memory.h"
#include "tela/platform/iWindowingService.h"
#include "tela/platform/OS.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace Tela {

RegionBuilder::RegionBuilder(std::size_t reserveCount)
{
    reserve(reserveCount);
}

RegionBuilder::RegionBuilder(const RegionBuilder& other)
{
    reserve(other.m_size);
    if (m_capacity >= other.m_size && other.m_size > 0) {
        std::memcpy(m_rects, other.m_rects, other.m_size * sizeof *m_rects);
        m_size = other.m_size;
    }
}

RegionBuilder::RegionBuilder(RegionBuilder&& other) noexcept
    : m_rects(std::exchange(other.m_rects, nullptr)),
      m_size(std::exchange(other.m_size, 0)),
      m_capacity(std::exchange(other.m_capacity, 0))
{
}

RegionBuilder& RegionBuilder::operator=(const RegionBuilder& other)
{
    if (this != &other) {
        RegionBuilder copy(other);
        *this = std::move(copy);
    }
    return *this;
}

RegionBuilder& RegionBuilder::operator=(RegionBuilder&& other) noexcept
{
    if (this != &other) {
        Qv::release(m_rects);
        m_rects = std::exchange(other.m_rects, nullptr);
        m_size = std::exchange(other.m_size, 0);
        m_capacity = std::exchange(other.m_capacity, 0);
    }
    return *this;
}

RegionBuilder::~RegionBuilder()
{
    Qv::release(m_rects);
}

void RegionBuilder::reserve(std::size_t capacity)
{
    if (capacity <= m_capacity)
        return;
    if (capacity > SIZE_MAX / sizeof *m_rects) {
        murl_printf("RegionBuilder: %zu rectangles cannot be held; the shape is cut short\n", capacity);
        return;
    }
    auto* grown = static_cast<Qv::Rectangle<int>*>(Qv::allocate(capacity * sizeof *m_rects));
    if (!grown) {
        murl_printf("RegionBuilder: out of memory for %zu rectangles; the shape is cut short\n", capacity);
        return;
    }
    if (m_size > 0)
        std::memcpy(grown, m_rects, m_size * sizeof *m_rects);
    Qv::release(m_rects);
    m_rects = grown;
    m_capacity = capacity;
}

void RegionBuilder::grow()
{
    reserve(std::max(m_capacity + m_capacity / 2, m_size + 1));
}

void RegionBuilder::appendRect(const Qv::Rectangle<int>& rect)
{
    if (m_size > 0) {
        Qv::Rectangle<int>& last = m_rects[m_size - 1];
        if (rect.left == last.left && rect.right == last.right && rect.top == last.bottom) {
            last.bottom = rect.bottom; // the same columns, one row further down
            return;
        }
        if (rect.left > last.right && rect.top > last.top && rect.top < last.bottom) {
            // A band starts inside the last rectangle: split it there, so that
            // every band holds rectangles of one height.
            const Qv::Rectangle<int> lower{last.left, rect.top, last.right, last.bottom};
            const std::size_t split = m_size - 1;
            push(lower); // may move the array: address the entry afresh below
            m_rects[split].bottom = rect.top;
        }
    }
    push(rect);
}

Qv::Ptr<iRegion> RegionBuilder::create() const
{
    Qv::Ptr<iRegion> region;
    OS()->windowing()->createRegion(region, m_rects, m_size);
    return region;
}

} // namespace Tela
