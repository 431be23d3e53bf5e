#pragma once

namespace core {

// A 4D vector of 64-bit reals (homogeneous coordinates). Default is (0, 0, 0, 0).
struct vec4 {
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;
    double w = 0.0;

    constexpr vec4() = default;
    constexpr vec4(double x_, double y_, double z_, double w_) : x(x_), y(y_), z(z_), w(w_) {}

    constexpr bool operator==(const vec4& b) const
    {
        return x == b.x && y == b.y && z == b.z && w == b.w;
    }
    constexpr bool operator!=(const vec4& b) const { return !(*this == b); }
    constexpr double dot(const vec4& b) const { return x * b.x + y * b.y + z * b.z + w * b.w; }
};

} // namespace core
