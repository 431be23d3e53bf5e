#pragma once
#include <cmath>

namespace core {

// A 2D vector of 64-bit reals. Trivially copyable; default is (0, 0).
struct vec2 {
    double x = 0.0;
    double y = 0.0;

    constexpr vec2() = default;
    constexpr vec2(double x_, double y_) : x(x_), y(y_) {}

    constexpr vec2 operator+(const vec2& b) const { return {x + b.x, y + b.y}; }
    constexpr vec2 operator-(const vec2& b) const { return {x - b.x, y - b.y}; }
    constexpr vec2 operator*(double s) const { return {x * s, y * s}; }
    constexpr vec2 operator/(double s) const { return {x / s, y / s}; }
    constexpr bool operator==(const vec2& b) const { return x == b.x && y == b.y; }
    constexpr bool operator!=(const vec2& b) const { return !(*this == b); }

    constexpr double dot(const vec2& b) const { return x * b.x + y * b.y; }
    double length() const { return std::sqrt(dot(*this)); }
};

} // namespace core
