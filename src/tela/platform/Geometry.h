// Geometry.h: the small value types shared by every layer.
//
// - XY<T>: a point or a size.
// - Qv::Box<T>: x1, y1, x2, y2 with y upward (canvas and application space).
// - Qv::Rectangle<T>: left, top, right, bottom with y downward (window, region and
//   renderer space). TopDownRect is the int form.
// Low edges are inside, high edges outside: (0, 0, 10, 1) is one pixel row.
#pragma once


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
};

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

} // namespace Qv

using TopDownRect = Qv::Rectangle<int>;
