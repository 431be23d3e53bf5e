#pragma once
#include <core/conventions.h>
#include <core/vec3.h>

namespace geom {

// A plane of the fault set's space: a point on it and its unit normal. A plane that could
// not be determined (too few points) has both at (-9999, -9999, -9999).
struct Plane {
    core::vec3 point{core::kNoValueReal, core::kNoValueReal, core::kNoValueReal};
    core::vec3 normal{core::kNoValueReal, core::kNoValueReal, core::kNoValueReal};

    bool isValid() const { return normal.x != core::kNoValueReal; }
    // Signed distance of `p` to the plane, positive on the side the normal points to.
    double signedDistance(const core::vec3& p) const { return (p - point).dot(normal); }
};

} // namespace geom
