// Geometry.h: the small value types shared by every layer.
//
// - XY<T>: a point or a size.
// - Qv::Box<T>: x1, y1, x2, y2 with y upward (canvas and application space).
// - Qv::Rectangle<T>: left, top, right, bottom with y downward (window, region and
//   renderer space). TopDownRect is the int form.
// Low edges are inside, high edges outside: (0, 0, 10, 1) is one pixel row.
#pragma once

#include <initializer_list>

template <typename T>
struct XY {
    T x {};
    T y {};

    constexpr XY() = default;
    constexpr XY(T x_value, T y_value) : x(x_value), y(y_value) {}
    virtual ~XY() = default;
    XY(const XY&) = default;
    XY& operator=(const XY&) = default;

    constexpr bool operator==(const XY& other) const { return x == other.x && y == other.y; }
};

namespace Qv {

template <typename T>
struct Rectangle {
    T left {};
    T top {};
    T right {};
    T bottom {};

    constexpr T width() const { return right - left; }
    constexpr T height() const { return bottom - top; }
    constexpr bool isEmpty() const { return right <= left || bottom <= top; }
    constexpr bool operator==(const Rectangle& other) const = default;
};

struct BottomUpTraits {};

template <typename T, typename Traits = BottomUpTraits>
struct Box {
    T x1 {};
    T y1 {};
    T x2 {};
    T y2 {};

    constexpr T width() const { return x2 - x1; }
    constexpr T height() const { return y2 - y1; }
    constexpr bool isEmpty() const { return x2 <= x1 || y2 <= y1; }
    constexpr bool operator==(const Box& other) const = default;

    // The part both boxes cover. Boxes that only touch or miss give an empty
    // box, which may be inverted (x2 < x1): ask isEmpty(), not the corners.
    constexpr void intersect(const Box& other)
    {
        x1 = x1 < other.x1 ? other.x1 : x1;
        y1 = y1 < other.y1 ? other.y1 : y1;
        x2 = other.x2 < x2 ? other.x2 : x2;
        y2 = other.y2 < y2 ? other.y2 : y2;
    }
    [[nodiscard]] constexpr Box intersected(const Box& other) const
    {
        Box result = *this;
        result.intersect(other);
        return result;
    }
    // True when the boxes share at least one pixel; touching edges share none.
    constexpr bool intersects(const Box& other) const { return !intersected(other).isEmpty(); }

    // The same box with its corners in order: x1 <= x2 and y1 <= y2.
    [[nodiscard]] constexpr Box ordered() const
    {
        return Box {x1 < x2 ? x1 : x2, y1 < y2 ? y1 : y2, x1 < x2 ? x2 : x1, y1 < y2 ? y2 : y1};
    }

    // The smallest box covering both. An empty box covers nothing and adds
    // nothing: the union of an empty box and `other` is `other`.
    constexpr void unite(const Box& other)
    {
        if (other.isEmpty())
            return;
        if (isEmpty()) {
            *this = other;
            return;
        }
        x1 = other.x1 < x1 ? other.x1 : x1;
        y1 = other.y1 < y1 ? other.y1 : y1;
        x2 = x2 < other.x2 ? other.x2 : x2;
        y2 = y2 < other.y2 ? other.y2 : y2;
    }
    [[nodiscard]] constexpr Box united(const Box& other) const
    {
        Box result = *this;
        result.unite(other);
        return result;
    }

    // The smallest box holding every point, edges included: a point on its
    // own gives a box of no area.
    static constexpr Box around(std::initializer_list<XY<T>> points)
    {
        Box box {points.begin()->x, points.begin()->y, points.begin()->x, points.begin()->y};
        for (const XY<T>& point : points) {
            box.x1 = point.x < box.x1 ? point.x : box.x1;
            box.y1 = point.y < box.y1 ? point.y : box.y1;
            box.x2 = box.x2 < point.x ? point.x : box.x2;
            box.y2 = box.y2 < point.y ? point.y : box.y2;
        }
        return box;
    }

    // The same four numbers as left, top, right and bottom, with no flip: for
    // boxes that already hold window coordinates, as iRegion::getBox gives
    // them. A bottom-up box goes top-down through the root's height
    // (telaScreenYTowin32ScreenY), never through this.
    constexpr Rectangle<T> toTopDownRectUnflipped() const { return {x1, y1, x2, y2}; }
};

} // namespace Qv

using TopDownRect = Qv::Rectangle<int>;
