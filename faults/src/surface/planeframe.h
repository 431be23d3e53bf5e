#pragma once
#include <core/mat4.h>
#include <core/vec3.h>

namespace fault::surface {

// The layout of a fault on its regression plane, in world coordinates (y vertical, growing
// downward with time or depth). A point's plane coordinates (a, b, w) are:
//   a  along the strike: the horizontal direction of the plane, oriented so that the plane
//      dips to its right (the dip direction is the strike turned 90 degrees clockwise
//      seen from above);
//   b  down the dip: in the plane, perpendicular to the strike, with a world y >= 0;
//   w  along the normal, which never has a positive world y.
// world = origin + a * along + b * down + w * normal; the three axes are unit vectors.
// For a plane whose normal has a horizontal part shorter than kFlatNormal the strike is
// undefined: `along` then follows the direction of greatest spread of the points.
struct PlaneFrame {
    static constexpr double kFlatNormal = 1e-3;

    core::vec3 origin;   // centre of gravity of the fitted points
    core::vec3 along;
    core::vec3 down;
    core::vec3 normal;
    bool valid = false;  // false when fewer than two points were given

    core::vec3 toPlane(const core::vec3& world) const
    {
        const core::vec3 d = world - origin;
        return {d.dot(along), d.dot(down), d.dot(normal)};
    }
    core::vec3 toWorld(double a, double b, double w) const
    {
        return origin + along * a + down * b + normal * w;
    }
    core::vec3 toWorld(const core::vec3& abw) const { return toWorld(abw.x, abw.y, abw.z); }
    // The matrix that maps plane coordinates (a, b, w) to world coordinates.
    core::mat4 toWorldMatrix() const;
};

// The frame of the least-squares plane of `count` points; invalid for fewer than two.
PlaneFrame fitPlaneFrame(const core::vec3* points, int count);

} // namespace fault::surface
