#include "attribute/recursivegaussian.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "attribute/vectorclones.h"

namespace fault::attribute {
namespace {

constexpr int kCalibrationSteps = 48;   // bisection steps of q: far below float precision
constexpr int kLanesPerBlock = 512;   // lines filtered together along x (fits L1 with history)

// One step of the recursion for `count` lanes: cur = b cur + a1 p1 + a2 p2 + a3 p3.
FAULT_VECTOR_CLONES
void recursionStep(float* cur, const float* p1, const float* p2, const float* p3, int count,
                   float b, float a1, float a2, float a3)
{
#pragma omp simd
    for (int j = 0; j < count; ++j) cur[j] = b * cur[j] + a1 * p1[j] + a2 * p2[j] + a3 * p3[j];
}

} // namespace

RecursiveGaussian::RecursiveGaussian(double sigma) : m_sigma(sigma)
{
    if (!(sigma >= kMinSigma) || !std::isfinite(sigma)) return;
    // Young and van Vliet's coefficients as functions of their parameter q. Their fit of q
    // to sigma gives a response about a tenth wider than sigma (24% at sigma 1), so q is
    // chosen instead to give exactly the variance sigma^2, from the closed form of the
    // variance of the forward and backward passes: for the all-pole pass
    // 1 / (1 - a1 z^-1 - a2 z^-2 - a3 z^-3), with D = 1 - a1 - a2 - a3, the mean is
    // m = (a1 + 2 a2 + 3 a3) / D and the variance (2 a2 + 6 a3) / D + m^2 + m; the two
    // passes add their variances.
    auto coefficients = [](double q, double& a1, double& a2, double& a3) {
        const double q2 = q * q;
        const double q3 = q2 * q;
        const double b0 = 1.57825 + 2.44413 * q + 1.4281 * q2 + 0.422205 * q3;
        a1 = (2.44413 * q + 2.85619 * q2 + 1.26661 * q3) / b0;
        a2 = -(1.4281 * q2 + 1.26661 * q3) / b0;
        a3 = 0.422205 * q3 / b0;
    };
    auto variance = [&](double q) {
        double a1, a2, a3;
        coefficients(q, a1, a2, a3);
        const double d = 1.0 - a1 - a2 - a3;
        const double mean = (a1 + 2.0 * a2 + 3.0 * a3) / d;
        return 2.0 * ((2.0 * a2 + 6.0 * a3) / d + mean * mean + mean);
    };
    double lo = 0.0, hi = 2.0 * sigma + 2.0;   // variance grows with q; hi overshoots sigma
    for (int i = 0; i < kCalibrationSteps; ++i) {
        const double mid = 0.5 * (lo + hi);
        (variance(mid) < sigma * sigma ? lo : hi) = mid;
    }
    double a1, a2, a3;
    coefficients(0.5 * (lo + hi), a1, a2, a3);
    m_a1 = static_cast<float>(a1);
    m_a2 = static_cast<float>(a2);
    m_a3 = static_cast<float>(a3);
    m_b = static_cast<float>(1.0 - a1 - a2 - a3);
    m_identity = false;
}

void RecursiveGaussian::applyInterleaved(float* data, int length, std::ptrdiff_t stride, int count,
                                         LineEnds ends) const
{
    if (m_identity || length <= 0 || count <= 0) return;
    // Three rows of history before the first sample: the steady state of the end value.
    std::vector<float> start(static_cast<std::size_t>(count), 0.0F);
    if (ends == LineEnds::Constant) std::copy(data, data + count, start.begin());
    auto row = [&](int k) -> float* { return k < 0 ? start.data() : data + k * stride; };
    for (int k = 0; k < length; ++k)
        recursionStep(row(k), row(k - 1), row(k - 2), row(k - 3), count, m_b, m_a1, m_a2, m_a3);

    const int last = length - 1;
    if (ends == LineEnds::Constant) std::copy(row(last), row(last) + count, start.begin());
    auto back = [&](int k) -> float* { return k > last ? start.data() : data + k * stride; };
    for (int k = last; k >= 0; --k)
        recursionStep(back(k), back(k + 1), back(k + 2), back(k + 3), count, m_b, m_a1, m_a2, m_a3);
}

void RecursiveGaussian::applyAlongAxis(float* data, int nx, int ny, int nz, int axis,
                                       LineEnds ends) const
{
    if (m_identity || data == nullptr || nx <= 0 || ny <= 0 || nz <= 0) return;
    const std::ptrdiff_t slice = static_cast<std::ptrdiff_t>(nx) * ny;
    if (axis == 2) {
        // Lines along z: every sample of a slice is one lane; lanes split in blocks.
        const std::ptrdiff_t blocks = (slice + kLanesPerBlock - 1) / kLanesPerBlock;
#pragma omp parallel for schedule(dynamic, 4)
        for (std::ptrdiff_t b = 0; b < blocks; ++b) {
            const std::ptrdiff_t first = b * kLanesPerBlock;
            const int count = static_cast<int>(std::min<std::ptrdiff_t>(kLanesPerBlock, slice - first));
            applyInterleaved(data + first, nz, slice, count, ends);
        }
    } else if (axis == 1) {
        // Lines along y: one slice at a time, the x samples of a row as lanes.
#pragma omp parallel for schedule(dynamic, 1)
        for (int z = 0; z < nz; ++z) applyInterleaved(data + z * slice, ny, nx, nx, ends);
    } else {
        // Lines along x are contiguous: blocks of rows are turned so that rows become lanes.
#pragma omp parallel
        {
            std::vector<float> block;
#pragma omp for collapse(2) schedule(dynamic, 4)
            for (int z = 0; z < nz; ++z)
                for (int y0 = 0; y0 < ny; y0 += kLanesPerBlock / 8) {
                    const int rows = std::min(kLanesPerBlock / 8, ny - y0);
                    block.resize(static_cast<std::size_t>(rows) * nx);
                    float* first = data + z * slice + static_cast<std::ptrdiff_t>(y0) * nx;
                    for (int r = 0; r < rows; ++r)
                        for (int x = 0; x < nx; ++x) block[static_cast<std::size_t>(x) * rows + r] = first[r * nx + x];
                    applyInterleaved(block.data(), nx, rows, rows, ends);
                    for (int r = 0; r < rows; ++r)
                        for (int x = 0; x < nx; ++x) first[r * nx + x] = block[static_cast<std::size_t>(x) * rows + r];
                }
        }
    }
}

void smoothGaussian3D(ZN3DImage<float>& image, double sigma)
{
    const RecursiveGaussian g(sigma);
    for (int axis = 0; axis < 3; ++axis) g.applyAlongAxis(image, axis, LineEnds::Constant);
}

} // namespace fault::attribute
