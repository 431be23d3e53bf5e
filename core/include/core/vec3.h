#pragma once
#include <cmath>

namespace core {

// A 3D vector of 64-bit reals: a point or a direction in block or world space.
// Trivially copyable; default is (0, 0, 0).
struct vec3 {
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;

    constexpr vec3() = default;
    constexpr vec3(double x_, double y_, double z_) : x(x_), y(y_), z(z_) {}

    constexpr vec3 operator+(const vec3& b) const { return {x + b.x, y + b.y, z + b.z}; }
    constexpr vec3 operator-(const vec3& b) const { return {x - b.x, y - b.y, z - b.z}; }
    constexpr vec3 operator-() const { return {-x, -y, -z}; }
    constexpr vec3 operator*(double s) const { return {x * s, y * s, z * s}; }
    constexpr vec3 operator/(double s) const { return {x / s, y / s, z / s}; }
    vec3& operator+=(const vec3& b) { x += b.x; y += b.y; z += b.z; return *this; }
    vec3& operator-=(const vec3& b) { x -= b.x; y -= b.y; z -= b.z; return *this; }
    vec3& operator*=(double s) { x *= s; y *= s; z *= s; return *this; }
    constexpr bool operator==(const vec3& b) const { return x == b.x && y == b.y && z == b.z; }
    constexpr bool operator!=(const vec3& b) const { return !(*this == b); }

    double& operator[](int i) { return i == 0 ? x : (i == 1 ? y : z); }
    double operator[](int i) const { return i == 0 ? x : (i == 1 ? y : z); }

    constexpr double dot(const vec3& b) const { return x * b.x + y * b.y + z * b.z; }
    constexpr vec3 cross(const vec3& b) const
    {
        return {y * b.z - z * b.y, z * b.x - x * b.z, x * b.y - y * b.x};
    }
    double length() const { return std::sqrt(dot(*this)); }
    // This vector divided by its length; a zero vector is returned unchanged.
    vec3 normalized() const
    {
        const double len = length();
        return len > 0.0 ? *this / len : *this;
    }
};

constexpr vec3 operator*(double s, const vec3& v) { return v * s; }

} // namespace core
