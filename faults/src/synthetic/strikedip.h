#pragma once
#include <core/vec3.h>
#include <georef/blocspace.h>

namespace fault::synthetic {

// Orientation of a plane, in degrees, in world coordinates (y vertical, increasing
// downwards as time or depth does; x east, z north on a map).
//
// - strike: azimuth of the strike direction, 0 to 360 (exclusive), measured clockwise
//   from world +z (north) towards world +x (east). Right-hand rule: the plane dips down
//   towards strike + 90.
// - dip: angle from the horizontal, 0 (horizontal) to 90 (vertical).
//
// The azimuth and dip are those the 3D fault patch shows for a fault ("Fault Strike"
// is the dip direction minus 90), so synthetic descriptions, plane fits and the fault
// sheet agree. For a vertical plane the two strikes 180 degrees apart describe the same
// plane; orientationError takes that into account.
struct StrikeDip {
    double strike = 0.0;
    double dip = 0.0;
};

// Strike and dip of the plane whose world normal is `normal` (any length, either sign).
// The normal is first turned to point up (y <= 0). A horizontal component shorter than
// 0.001 of the normal's length counts as a horizontal plane: dip direction 180, so
// strike 90, dip 0, as the fault sheet shows it. A zero or non-finite normal gives (-9999.0, -9999.0).
StrikeDip strikeDipOfWorldNormal(const core::vec3& normal);

// The unit world normal, pointing up (y <= 0), of the plane of the given strike and dip
// (degrees). Inverse of strikeDipOfWorldNormal for dip in 0..90.
core::vec3 worldNormalOfStrikeDip(const StrikeDip& orientation);

// The world normal of a plane whose normal in block (grid index) coordinates is
// `gridNormal`: normals map with the inverse transpose of the block-to-world matrix,
// that is the transpose of the world-to-block matrix. Not normalised.
core::vec3 gridNormalToWorld(const core::vec3& gridNormal, const georef::BlocSpace& space);
// The inverse mapping: block-space normal of a plane whose world normal is `worldNormal`.
core::vec3 worldNormalToGrid(const core::vec3& worldNormal, const georef::BlocSpace& space);

// Differences between a reference orientation and a measured one, in degrees.
struct OrientationError {
    double strike = 0.0;   // 0 to 180
    double dip = 0.0;      // 0 to 90 as given, up to 180 when read flipped
};

// Errors of the measured plane read as given, or, when its normal points away from the
// reference's (negative dot product), read with its normal flipped (strike + 180, dip
// 180 - dip), which describes the same plane. Near-vertical planes fitted from voxels
// often come out with the flipped strike; this reading keeps their error small. Either
// input at -9999 gives (-9999.0, -9999.0).
OrientationError orientationError(const StrikeDip& reference, const StrikeDip& measured);

} // namespace fault::synthetic
