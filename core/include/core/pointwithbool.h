#pragma once
#include "conventions.h"
#include "vec3.h"

namespace core {

// A picked point: a position (block or world space, as its fault set is) and a flag that
// is true for a point the system added automatically, false for one picked by hand.
// Default is all zero with the flag false. A point whose x is exactly -9999.0 is a stick
// separator (see stickrules.h).
struct PointWithBool {
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;
    bool flag = false;

    constexpr PointWithBool() = default;
    constexpr PointWithBool(double x_, double y_, double z_, bool flag_ = false)
        : x(x_), y(y_), z(z_), flag(flag_) {}
    constexpr explicit PointWithBool(const vec3& p, bool flag_ = false)
        : x(p.x), y(p.y), z(p.z), flag(flag_) {}

    // All four fields equal (exact comparison).
    constexpr bool operator==(const PointWithBool& b) const
    {
        return x == b.x && y == b.y && z == b.z && flag == b.flag;
    }
    constexpr bool operator!=(const PointWithBool& b) const { return !(*this == b); }

    constexpr vec3 position() const { return {x, y, z}; }
    constexpr bool isSeparator() const { return x == kNoValueReal; }

    // The separator point placed between two sticks.
    static constexpr PointWithBool separator()
    {
        return PointWithBool(kNoValueReal, kNoValueReal, kNoValueReal, false);
    }
};

} // namespace core
