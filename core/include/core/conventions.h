#pragma once
// Conventions shared by every module, written once.
//
// - No value: -9999 (integer) or -9999.0 (real) means "unset" for coordinates, angles,
//   ids, counts and image samples. Functions that find nothing return it.
// - Stick separator: inside one patch's picked-point list, a point whose x is exactly
//   -9999.0 separates two sticks. Only x is tested.
// - Index order of grid positions: (inline, crossline, sample), held as (x, y, z) in
//   block space. In world space the vertical axis is y and holds the time or depth value,
//   so it grows downward; x and z are map coordinates (x east, z north).
// - Angles are returned in degrees unless a name says otherwise.
// - Matrices are 4x4, row-major, m0..m15 (see mat4.h).

namespace core {

constexpr int kNoValue = -9999;
constexpr double kNoValueReal = -9999.0;

} // namespace core
