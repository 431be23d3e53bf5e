#include "attribute/semblancefactors.h"

#include <algorithm>
#include <cmath>

namespace fault::attribute {
namespace {
constexpr int kHalf = 2;                                       // traces on either side
constexpr float kWeights[2 * kHalf + 1] = {1.0F / 16, 4.0F / 16, 6.0F / 16, 4.0F / 16, 1.0F / 16};   // binomial
} // namespace

int factorHalo(double maxSlope) { return static_cast<int>(std::ceil(2.0 * kHalf * maxSlope)) + 1; }

void computeSemblanceFactors(const ZN3DImage<float>& seismic, int seismicFirst,
                             const ReflectorSlopes& slopes, int first, int count,
                             float* numerator, float* denominator)
{
    const int nx = seismic.nx(), ny = seismic.ny(), nz = seismic.nz();
    const float lastSlice = static_cast<float>(nz - 1);
#pragma omp parallel for collapse(2) schedule(dynamic, 4)
    for (int z = first; z < first + count; ++z)
        for (int y = 0; y < ny; ++y) {
            const std::size_t row = (static_cast<std::size_t>(z - first) * ny + y) * nx;
            float* num = numerator + row;
            float* den = denominator + row;
            for (int x = 0; x < nx; ++x) {
                float p, q;
                slopes.slopesAt(x, y, z, p, q);
                const float local = static_cast<float>(z - seismicFirst);
                float sum = 0.0F;
                float sumSquares = 0.0F;
                float liveWeight = 0.0F;
                for (int j = -kHalf; j <= kHalf; ++j) {
                    const int yj = std::clamp(y + j, 0, ny - 1);
                    for (int i = -kHalf; i <= kHalf; ++i) {
                        const int xi = std::clamp(x + i, 0, nx - 1);
                        const float zz = std::clamp(local + static_cast<float>(i) * p +
                                                        static_cast<float>(j) * q,
                                                    0.0F, lastSlice);
                        const int z0 = static_cast<int>(zz);
                        const int z1 = std::min(z0 + 1, nz - 1);
                        const float t = zz - static_cast<float>(z0);
                        const float a = seismic(xi, yj, z0);
                        const float b = seismic(xi, yj, z1);
                        const float g = a + t * (b - a);
                        const float w = kWeights[i + kHalf] * kWeights[j + kHalf];
                        sum += w * g;
                        sumSquares += w * g * g;
                        if (a != 0.0F || b != 0.0F) liveWeight += w;
                    }
                }
                // Only the traces with data count: traces of zeros (beyond a survey's
                // outline, dead traces) would otherwise lower the semblance of the live
                // ones beside them as much as a fault does.
                num[x] = liveWeight > 0.0F ? std::min(sum * sum / liveWeight, sumSquares) : 0.0F;
                den[x] = sumSquares;
            }
        }
}

} // namespace fault::attribute
