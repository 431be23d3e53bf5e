#include "attribute/faultattributefinisher.h"

#include <algorithm>
#include <cmath>

#include <core/conventions.h>
#include <synthetic/strikedip.h>

#include "attribute/faultscanner.h"
#include "attribute/recursivegaussian.h"

namespace fault::attribute {
namespace {

// Bilinear read of a slice at (x, y), clamped to its edges.
float bilinear(const float* slice, int nx, int ny, float x, float y)
{
    x = std::clamp(x, 0.0F, static_cast<float>(nx - 1));
    y = std::clamp(y, 0.0F, static_cast<float>(ny - 1));
    const int x0 = static_cast<int>(x), y0 = static_cast<int>(y);
    const int x1 = std::min(x0 + 1, nx - 1), y1 = std::min(y0 + 1, ny - 1);
    const float tx = x - static_cast<float>(x0), ty = y - static_cast<float>(y0);
    const float* r0 = slice + static_cast<std::size_t>(y0) * nx;
    const float* r1 = slice + static_cast<std::size_t>(y1) * nx;
    const float a = r0[x0] + tx * (r0[x1] - r0[x0]);
    const float b = r1[x0] + tx * (r1[x1] - r1[x0]);
    return a + ty * (b - a);
}

// Samples, the Gaussian that smooths the likelihood of a slice before its ridges are
// found, so that each fault gives one ridge across and not several close ones.
constexpr double kRidgeSmoothing = 1.25;

// Share of a volume's size along an axis that the scaling down towards its faces may
// take at most: in a volume not much larger than the windows, every window is cut short,
// and scaling most of it down would leave nothing to find.
constexpr double kLargestFaceShare = 0.25;

// Weight of a voxel `distance` samples from a face of the volume: rising linearly from
// 1 / (reach + 1) on the face to 1 at `reach` samples and beyond.
double faceWeight(int distance, double reach)
{
    return std::min(1.0, (distance + 1.0) / (reach + 1.0));
}

// Samples on either side along the normal that a ridge voxel must not be below: more
// than one, so that the weaker copies a window crossing a strong fault leaves a few
// samples beside it do not survive as ridges of their own.
constexpr int kRidgeReach = 3;

// A sample position within 0..n-1 along an axis of n samples.
bool inside(float v, int n) { return v >= 0.0F && v <= static_cast<float>(n - 1); }

} // namespace

FaultAttributeFinisher::FaultAttributeFinisher(const ScanPlan& plan, const FaultAttributeSettings& settings,
                                               const georef::BlocSpace& space)
    : m_power(settings.semblancePower), m_thin(settings.thin), m_nz(space.nz()),
      m_lateralReach(std::min(2.0 * settings.strikeSigma, kLargestFaceShare * std::min(space.nx(), space.ny()))),
      m_verticalReach(std::min(settings.dipHalfLength, kLargestFaceShare * space.nz()))
{
    for (const FaultScan& scan : plan.scans) {
        const synthetic::StrikeDip world =
            synthetic::strikeDipOfWorldNormal(synthetic::gridNormalToWorld(scan.normal, space));
        m_strike.push_back(static_cast<float>(world.strike));
        m_dip.push_back(static_cast<float>(world.dip));
        const double horizontal = std::hypot(scan.normal.x, scan.normal.y);
        m_normalX.push_back(static_cast<float>(horizontal > 0.0 ? scan.normal.x / horizontal : 0.0));
        m_normalY.push_back(static_cast<float>(horizontal > 0.0 ? scan.normal.y / horizontal : 0.0));
    }
}

void FaultAttributeFinisher::finish(const std::uint32_t* keys, int nx, int ny, int z, float* likelihood,
                                    float* strike, float* dip, float* scratch) const
{
    const std::size_t count = static_cast<std::size_t>(nx) * ny;
    const int scans = static_cast<int>(m_strike.size());
    auto scanOf = [&](std::size_t i) {
        const int scan = keyScan(keys[i]);
        return keys[i] == kNoScanKey || scan >= scans ? -1 : scan;
    };
    float* unthinned = m_thin ? scratch : likelihood;
    const double vertical = faceWeight(std::min(z, m_nz - 1 - z), m_verticalReach);
    for (int y = 0; y < ny; ++y) {
        const double row = vertical * faceWeight(std::min(y, ny - 1 - y), m_lateralReach);
        for (int x = 0; x < nx; ++x) {
            const std::size_t i = static_cast<std::size_t>(y) * nx + x;
            const float s = keySemblance(keys[i]);
            const double weight = row * faceWeight(std::min(x, nx - 1 - x), m_lateralReach);
            unthinned[i] = scanOf(i) < 0 ? 0.0F : static_cast<float>(weight * (1.0 - std::pow(s, m_power)));
        }
    }
    if (m_thin) {
        const RecursiveGaussian across(kRidgeSmoothing);
        across.applyInterleaved(unthinned, ny, nx, nx, LineEnds::Constant);
        for (int y = 0; y < ny; ++y)
            across.applyInterleaved(unthinned + static_cast<std::size_t>(y) * nx, nx, 1, 1, LineEnds::Constant);
    }
    if (m_thin)
        for (int y = 0; y < ny; ++y)
            for (int x = 0; x < nx; ++x) {
                const std::size_t i = static_cast<std::size_t>(y) * nx + x;
                const int scan = scanOf(i);
                const float v = unthinned[i];
                bool ridge = scan >= 0 && v > 0.0F;
                if (ridge) {
                    const float ux = m_normalX[static_cast<std::size_t>(scan)];
                    const float uy = m_normalY[static_cast<std::size_t>(scan)];
                    const float fx = static_cast<float>(x), fy = static_cast<float>(y);
                    ridge = inside(fx + ux, nx) && inside(fy + uy, ny) && inside(fx - ux, nx) &&
                            inside(fy - uy, ny);
                    for (int k = 1; ridge && k <= kRidgeReach; ++k) {
                        const float dx = ux * static_cast<float>(k), dy = uy * static_cast<float>(k);
                        ridge = v >= bilinear(unthinned, nx, ny, fx + dx, fy + dy) &&
                                v > bilinear(unthinned, nx, ny, fx - dx, fy - dy);
                    }
                }
                likelihood[i] = ridge ? v : 0.0F;
            }
    if (strike == nullptr || dip == nullptr) return;
    for (std::size_t i = 0; i < count; ++i) {
        const int scan = scanOf(i);
        strike[i] = scan < 0 ? static_cast<float>(core::kNoValueReal) : m_strike[static_cast<std::size_t>(scan)];
        dip[i] = scan < 0 ? static_cast<float>(core::kNoValueReal) : m_dip[static_cast<std::size_t>(scan)];
    }
}

} // namespace fault::attribute
