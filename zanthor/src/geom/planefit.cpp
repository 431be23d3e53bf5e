#include "geom/planefit.h"

#include <cmath>

namespace geom {

namespace {
constexpr int kMinimumPoints = 2;
} // namespace

PlaneFit fitPlane(const core::vec3* points, int count)
{
    PlaneFit fit;
    if (!points || count < kMinimumPoints) return fit;
    core::vec3 centre;
    for (int i = 0; i < count; ++i) centre += points[i];
    centre = centre / count;
    double covariance[9] = {};
    for (int i = 0; i < count; ++i) {
        const core::vec3 d = points[i] - centre;
        for (int r = 0; r < 3; ++r)
            for (int c = 0; c < 3; ++c) covariance[3 * r + c] += d[r] * d[c];
    }
    for (double& v : covariance) v /= count;
    fit.axes = symmetricEigenPairs(covariance);
    const core::vec3 normal = fit.axes[2].vector;
    if (!std::isfinite(normal.x) || !std::isfinite(normal.y) || !std::isfinite(normal.z))
        return fit;
    fit.plane.point = centre;
    fit.plane.normal = normal;
    return fit;
}

} // namespace geom
