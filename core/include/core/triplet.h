#pragma once
#include <cstdint>

namespace core {

// A voxel position: three 32-bit signed grid indices (inline, crossline, sample).
struct Triplet {
    int32_t x = 0;
    int32_t y = 0;
    int32_t z = 0;

    constexpr Triplet() = default;
    constexpr Triplet(int32_t x_, int32_t y_, int32_t z_) : x(x_), y(y_), z(z_) {}
    constexpr bool operator==(const Triplet& b) const { return x == b.x && y == b.y && z == b.z; }
    constexpr bool operator!=(const Triplet& b) const { return !(*this == b); }
};

// A voxel's offset from its patch's origin: three signed 8-bit steps, so a patch's
// voxels lie within -128..127 of the origin along each axis. Exactly three bytes.
struct ByteTriplet {
    int8_t x = 0;
    int8_t y = 0;
    int8_t z = 0;

    constexpr ByteTriplet() = default;
    constexpr ByteTriplet(int8_t x_, int8_t y_, int8_t z_) : x(x_), y(y_), z(z_) {}
    constexpr bool operator==(const ByteTriplet& b) const
    {
        return x == b.x && y == b.y && z == b.z;
    }
    constexpr bool operator!=(const ByteTriplet& b) const { return !(*this == b); }
};
static_assert(sizeof(ByteTriplet) == 3, "ByteTriplet is stored as three bytes");

// A pair of 32-bit patch indices (a contact, or a recorded merge).
struct Duplet {
    int32_t a = 0;
    int32_t b = 0;

    constexpr Duplet() = default;
    constexpr Duplet(int32_t a_, int32_t b_) : a(a_), b(b_) {}
    constexpr bool operator==(const Duplet& o) const { return a == o.a && b == o.b; }
    constexpr bool operator!=(const Duplet& o) const { return !(*this == o); }
};

} // namespace core
