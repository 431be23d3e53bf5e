#include "surface/planeframe.h"

#include <geom/planefit.h>

namespace fault::surface {

core::mat4 PlaneFrame::toWorldMatrix() const
{
    core::mat4 m;
    const core::vec3 columns[4] = {along, down, normal, origin};
    for (int c = 0; c < 4; ++c)
        for (int r = 0; r < 3; ++r) m(r, c) = columns[c][r];
    return m;
}

PlaneFrame fitPlaneFrame(const core::vec3* points, int count)
{
    PlaneFrame frame;
    const geom::PlaneFit fit = geom::fitPlane(points, count);
    if (!fit.plane.isValid()) return frame;
    const core::vec3 normal = fit.plane.normal.y > 0.0 ? -fit.plane.normal : fit.plane.normal;
    const core::vec3 strike(-normal.z, 0.0, normal.x);  // normal x vertical: horizontal
    const double horizontal = strike.length();          // sine of the dip
    core::vec3 along;
    if (horizontal >= PlaneFrame::kFlatNormal) {
        along = strike / horizontal;
    } else {
        const core::vec3 spread = fit.axes[0].vector;  // greatest spread, in the plane
        along = (spread - normal * spread.dot(normal)).normalized();
    }
    frame.origin = fit.plane.point;
    frame.along = along;
    frame.down = along.cross(normal);
    frame.normal = normal;
    frame.valid = true;
    return frame;
}

} // namespace fault::surface
