#pragma once

namespace geom {

// An axis-aligned 2D rectangle of four 64-bit reals, stored in this order (the order of
// the fault set file): left, top, right, bottom. Default is all zero.
struct Rect2d {
    double left = 0.0;
    double top = 0.0;
    double right = 0.0;
    double bottom = 0.0;

    constexpr Rect2d() = default;
    constexpr Rect2d(double left_, double top_, double right_, double bottom_)
        : left(left_), top(top_), right(right_), bottom(bottom_) {}

    constexpr double width() const { return right - left; }
    constexpr double height() const { return bottom - top; }
    constexpr bool operator==(const Rect2d& b) const
    {
        return left == b.left && top == b.top && right == b.right && bottom == b.bottom;
    }
    constexpr bool operator!=(const Rect2d& b) const { return !(*this == b); }
};
static_assert(sizeof(Rect2d) == 32, "Rect2d is stored as four binary64");

} // namespace geom
