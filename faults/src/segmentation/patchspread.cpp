#include "segmentation/patchspread.h"

#include <algorithm>
#include <cmath>

#include <core/conventions.h>
#include <geom/symmetriceigen.h>

namespace fault::segmentation {

namespace {

using Sums = VoxelMoments::Sums;

// Fewer voxels than this always lie on one plane.
constexpr int kMinVoxelsOffPlane = 4;
// Patches at least this large sum their moments on several threads; below it the
// threads cost more than they save.
constexpr int kParallelMinVoxels = 1 << 15;
// Relative margin of the spread bound: far above the rounding of the covariance, of its
// factorisation and of the eigen solver (a few units of 1e-16 of the matrix's size).
constexpr double kBoundMargin = 1e-9;

Sums sumMoments(const core::Array<core::Triplet>& voxels)
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
    return Sums{sx, sy, sz, sxx, syy, szz, sxy, sxz, syz};
}

// Population covariance of one pair of coordinates: (n * sab - sa * sb) / n^2.
double covariance(double n, int64_t sab, int64_t sa, int64_t sb)
{
    const double centred = n * static_cast<double>(sab) -
                           static_cast<double>(sa) * static_cast<double>(sb);
    return centred / (n * n);
}

// The covariance matrix of `count` voxels, row-major.
void covarianceMatrix(const Sums& s, int count, double matrix[9])
{
    const double n = count;
    const double cxx = covariance(n, s.xx, s.x, s.x);
    const double cyy = covariance(n, s.yy, s.y, s.y);
    const double czz = covariance(n, s.zz, s.z, s.z);
    const double cxy = covariance(n, s.xy, s.x, s.y);
    const double cxz = covariance(n, s.xz, s.x, s.z);
    const double cyz = covariance(n, s.yz, s.y, s.z);
    const double m[9] = {cxx, cxy, cxz, cxy, cyy, cyz, cxz, cyz, czz};
    std::copy(m, m + 9, matrix);
}

double deviationOf(const Sums& s, int count)
{
    if (count == 0) return core::kNoValueReal;
    if (count < kMinVoxelsOffPlane) return 0.0;
    double matrix[9];
    covarianceMatrix(s, count, matrix);
    const double smallest = geom::symmetricEigenPairs(matrix)[2].value;
    return smallest > 0.0 ? std::sqrt(smallest) : 0.0;
}

// True when the symmetric matrix m - shift I is positive definite, by the pivots of its
// LDL^T factorisation (all positive). Rounding can only make a true answer false by a
// relative amount far below kBoundMargin, since the factors of a positive definite
// matrix are bounded by its diagonal.
bool isDefiniteAfterShift(const double m[9], double shift)
{
    const double d1 = m[0] - shift;
    if (!(d1 > 0.0)) return false;
    const double l21 = m[3] / d1;
    const double l31 = m[6] / d1;
    const double d2 = m[4] - shift - m[3] * l21;
    if (!(d2 > 0.0)) return false;
    const double l32 = (m[7] - m[6] * l21) / d2;
    const double d3 = m[8] - shift - m[6] * l31 - l32 * l32 * d2;
    return d3 > 0.0;
}

} // namespace

double planeDeviation(const core::Array<core::Triplet>& voxels)
{
    if (voxels.size() < kMinVoxelsOffPlane) return deviationOf(Sums(), voxels.size());
    return deviationOf(sumMoments(voxels), voxels.size());
}

void VoxelMoments::reset()
{
    m_sums = Sums();
    m_count = 0;
}

void VoxelMoments::add(const core::Triplet* begin, const core::Triplet* end)
{
    if (begin == end) return;
    if (m_count == 0) m_origin = *begin;
    Sums s = m_sums;
    for (const core::Triplet* v = begin; v != end; ++v) {
        const int64_t dx = static_cast<int64_t>(v->x) - m_origin.x;
        const int64_t dy = static_cast<int64_t>(v->y) - m_origin.y;
        const int64_t dz = static_cast<int64_t>(v->z) - m_origin.z;
        s.x += dx;
        s.y += dy;
        s.z += dz;
        s.xx += dx * dx;
        s.yy += dy * dy;
        s.zz += dz * dz;
        s.xy += dx * dy;
        s.xz += dx * dz;
        s.yz += dy * dz;
    }
    m_sums = s;
    m_count += static_cast<int>(end - begin);
}

double VoxelMoments::planeDeviation() const { return deviationOf(m_sums, m_count); }

bool VoxelMoments::forcesDeviationOver(double deviation, int maxCount, int reach) const
{
    if (!(deviation > 0.0)) return true;  // no spread is below it
    if (m_count == 0) return false;
    const int supersetCount = std::max(maxCount, m_count);
    // The superset's computed smallest eigenvalue must reach deviation^2 with room for
    // the eigen solver's rounding, which is relative to its trace, at most 3 reach^2.
    const double reachSquared = static_cast<double>(reach) * reach;
    const double needed = deviation * deviation * (1.0 + kBoundMargin) +
                          kBoundMargin * 3.0 * reachSquared;
    const double ownNeeded = needed * supersetCount / m_count;
    double matrix[9];
    covarianceMatrix(m_sums, m_count, matrix);
    const double trace = matrix[0] + matrix[4] + matrix[8];
    return isDefiniteAfterShift(matrix, ownNeeded + kBoundMargin * (trace + ownNeeded));
}

} // namespace fault::segmentation
