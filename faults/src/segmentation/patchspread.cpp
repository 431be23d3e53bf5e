#include "segmentation/patchspread.h"

#include <cmath>
#include <cstdint>

#include <core/conventions.h>
#include <geom/symmetriceigen.h>

namespace fault::segmentation {

namespace {

// Fewer voxels than this always lie on one plane.
constexpr int kMinVoxelsOffPlane = 4;
// Patches at least this large sum their moments on several threads; below it the
// threads cost more than they save.
constexpr int kParallelMinVoxels = 1 << 15;

// First and second moments of voxel offsets from a reference voxel, exact.
struct Moments {
    int64_t x = 0, y = 0, z = 0;
    int64_t xx = 0, yy = 0, zz = 0, xy = 0, xz = 0, yz = 0;
};

Moments sumMoments(const core::Array<core::Triplet>& voxels)
{
    const core::Triplet origin = voxels[0];
    const int n = voxels.size();
    int64_t sx = 0, sy = 0, sz = 0, sxx = 0, syy = 0, szz = 0, sxy = 0, sxz = 0, syz = 0;
    // Integer sums are exact, so the reduction order cannot change them.
#pragma omp parallel for if (n >= kParallelMinVoxels) \
    reduction(+ : sx, sy, sz, sxx, syy, szz, sxy, sxz, syz)
    for (int i = 0; i < n; ++i) {
        const int64_t dx = static_cast<int64_t>(voxels[i].x) - origin.x;
        const int64_t dy = static_cast<int64_t>(voxels[i].y) - origin.y;
        const int64_t dz = static_cast<int64_t>(voxels[i].z) - origin.z;
        sx += dx;
        sy += dy;
        sz += dz;
        sxx += dx * dx;
        syy += dy * dy;
        szz += dz * dz;
        sxy += dx * dy;
        sxz += dx * dz;
        syz += dy * dz;
    }
    return {sx, sy, sz, sxx, syy, szz, sxy, sxz, syz};
}

// Population covariance of one pair of coordinates: (n * sab - sa * sb) / n^2.
double covariance(double n, int64_t sab, int64_t sa, int64_t sb)
{
    const double centred = n * static_cast<double>(sab) -
                           static_cast<double>(sa) * static_cast<double>(sb);
    return centred / (n * n);
}

} // namespace

double planeDeviation(const core::Array<core::Triplet>& voxels)
{
    if (voxels.empty()) return core::kNoValueReal;
    if (voxels.size() < kMinVoxelsOffPlane) return 0.0;
    const Moments m = sumMoments(voxels);
    const double n = voxels.size();
    const double cxx = covariance(n, m.xx, m.x, m.x);
    const double cyy = covariance(n, m.yy, m.y, m.y);
    const double czz = covariance(n, m.zz, m.z, m.z);
    const double cxy = covariance(n, m.xy, m.x, m.y);
    const double cxz = covariance(n, m.xz, m.x, m.z);
    const double cyz = covariance(n, m.yz, m.y, m.z);
    const double matrix[9] = {cxx, cxy, cxz, cxy, cyy, cyz, cxz, cyz, czz};
    const double smallest = geom::symmetricEigenPairs(matrix)[2].value;
    return smallest > 0.0 ? std::sqrt(smallest) : 0.0;
}

} // namespace fault::segmentation
