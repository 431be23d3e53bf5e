#include "faultplanemappingfilters.h"

#include <algorithm>
#include <cmath>
#include <memory>

#include <core/conventions.h>

namespace fault {
namespace {

constexpr float kNoValue = static_cast<float>(core::kNoValueReal);
constexpr int kMinCommonSamples = 3;   // of two windows, for a correlation
constexpr double kKernelSigmas = 3.0;  // half-width of a Gaussian kernel

// Pearson's coefficient of a and b over the positions both hold; false with fewer than
// kMinCommonSamples or a constant window.
bool correlation(const float* a, const double* b, const int* bCount, int n, double& out)
{
    double sa = 0.0, sb = 0.0, saa = 0.0, sbb = 0.0, sab = 0.0;
    int m = 0;
    for (int o = 0; o < n; ++o) {
        if (a[o] == kNoValue || bCount[o] == 0) continue;
        const double x = a[o], y = b[o] / bCount[o];
        sa += x;
        sb += y;
        saa += x * x;
        sbb += y * y;
        sab += x * y;
        ++m;
    }
    if (m < kMinCommonSamples) return false;
    const double covariance = sab - sa * sb / m;
    const double va = saa - sa * sa / m, vb = sbb - sb * sb / m;
    if (!(va > 0.0) || !(vb > 0.0)) return false;
    out = covariance / std::sqrt(va * vb);
    return true;
}

// The normalised Gaussian kernel of deviation `sigma` (a single 1 for 0).
std::vector<double> gaussian(double sigma)
{
    if (!(sigma > 0.0)) return {1.0};
    const int half = static_cast<int>(std::ceil(kKernelSigmas * sigma));
    std::vector<double> k(static_cast<std::size_t>(2 * half + 1));
    for (int i = -half; i <= half; ++i) k[static_cast<std::size_t>(i + half)] = std::exp(-0.5 * i * i / (sigma * sigma));
    return k;
}

// One separable pass along columns (dx 1) or rows (dy 1) of values and weights.
void convolve(std::vector<double>& values, std::vector<double>& weights, int width, int height,
              const std::vector<double>& kernel, bool alongRows)
{
    const int half = static_cast<int>(kernel.size() / 2);
    if (half == 0) return;
    std::vector<double> v(values.size(), 0.0), w(weights.size(), 0.0);
    for (int r = 0; r < height; ++r)
        for (int c = 0; c < width; ++c) {
            double sv = 0.0, sw = 0.0;
            for (int t = -half; t <= half; ++t) {
                const int cc = alongRows ? c + t : c, rr = alongRows ? r : r + t;
                if (cc < 0 || rr < 0 || cc >= width || rr >= height) continue;
                const std::size_t q = static_cast<std::size_t>(cc) + static_cast<std::size_t>(width) * rr;
                const double g = kernel[static_cast<std::size_t>(t + half)];
                sv += g * values[q];
                sw += g * weights[q];
            }
            const std::size_t p = static_cast<std::size_t>(c) + static_cast<std::size_t>(width) * r;
            v[p] = sv;
            w[p] = sw;
        }
    values.swap(v);
    weights.swap(w);
}

} // namespace

void dropUncorrelatedPixels(img::Image& mapped, const std::vector<float>& traces, int windowCount, double threshold)
{
    const int width = mapped.width(), height = mapped.height();
    if (windowCount <= 0 || traces.size() != mapped.sampleCount() * static_cast<std::size_t>(windowCount)) return;
    std::vector<char> drop(mapped.sampleCount(), 0);
    std::vector<double> mean(static_cast<std::size_t>(windowCount));
    std::vector<int> count(static_cast<std::size_t>(windowCount));
    for (int r = 0; r < height; ++r)
        for (int c = 0; c < width; ++c) {
            if (mapped(c, r) == kNoValue) continue;
            std::fill(mean.begin(), mean.end(), 0.0);
            std::fill(count.begin(), count.end(), 0);
            for (int dr = -1; dr <= 1; ++dr)
                for (int dc = -1; dc <= 1; ++dc) {
                    if ((dr == 0 && dc == 0) || mapped.value(c + dc, r + dr, kNoValue) == kNoValue) continue;
                    const float* w = traces.data() + (static_cast<std::size_t>(c + dc) + static_cast<std::size_t>(width) * (r + dr)) * windowCount;
                    for (int o = 0; o < windowCount; ++o)
                        if (w[o] != kNoValue) {
                            mean[static_cast<std::size_t>(o)] += w[o];
                            ++count[static_cast<std::size_t>(o)];
                        }
                }
            const float* own = traces.data() + (static_cast<std::size_t>(c) + static_cast<std::size_t>(width) * r) * windowCount;
            double rho = 0.0;
            if (correlation(own, mean.data(), count.data(), windowCount, rho) && rho < threshold)
                drop[static_cast<std::size_t>(c) + static_cast<std::size_t>(width) * r] = 1;
        }
    for (std::size_t p = 0; p < drop.size(); ++p)
        if (drop[p]) mapped.data()[p] = kNoValue;
}

void keepInside(img::Image& mapped, const img::Image& fault)
{
    if (fault.width() != mapped.width() || fault.height() != mapped.height()) return;
    for (std::size_t p = 0; p < mapped.sampleCount(); ++p)
        if (fault.data()[p] == kNoValue) mapped.data()[p] = kNoValue;
}

int interpolateHoles(img::Image& mapped, const img::Image& fault, int radius)
{
    if (radius <= 0 || fault.width() != mapped.width() || fault.height() != mapped.height()) return 0;
    const std::unique_ptr<img::Image> before = mapped.clone();
    if (!before) return 0;
    // Directions in opposite pairs: d and d + 4 face each other.
    static constexpr int kDirections = 8;
    static constexpr int kDx[kDirections] = {1, 1, 0, -1, -1, -1, 0, 1};
    static constexpr int kDy[kDirections] = {0, 1, 1, 1, 0, -1, -1, -1};
    int filled = 0;
    for (int r = 0; r < mapped.height(); ++r)
        for (int c = 0; c < mapped.width(); ++c) {
            if (fault(c, r) == kNoValue || mapped(c, r) != kNoValue) continue;
            double value[kDirections], distance[kDirections];
            for (int d = 0; d < kDirections; ++d) {
                distance[d] = 0.0;
                const double stepLength = std::hypot(kDx[d], kDy[d]);
                for (int step = 1; step * stepLength <= radius; ++step) {
                    const float v = before->value(c + step * kDx[d], r + step * kDy[d], kNoValue);
                    if (v == kNoValue) continue;
                    value[d] = v;
                    distance[d] = step * stepLength;
                    break;
                }
            }
            // Each line with a value on both sides gives the linear interpolation along
            // it, shorter spans weighing more; without such a line, the one-sided values.
            double sum = 0.0, weights = 0.0;
            for (int d = 0; d < kDirections / 2; ++d) {
                const int e = d + kDirections / 2;
                if (distance[d] == 0.0 || distance[e] == 0.0) continue;
                const double span = distance[d] + distance[e];
                const double along = (value[d] * distance[e] + value[e] * distance[d]) / span;
                sum += along / span;
                weights += 1.0 / span;
            }
            for (int d = 0; d < kDirections && weights == 0.0; ++d)
                if (distance[d] > 0.0) {
                    sum += value[d] / distance[d];
                    weights += 1.0 / distance[d];
                }
            if (weights > 0.0) {
                mapped(c, r) = static_cast<float>(sum / weights);
                ++filled;
            }
        }
    return filled;
}

void smoothValued(img::Image& mapped, double across, double down)
{
    const int width = mapped.width(), height = mapped.height();
    std::vector<double> values(mapped.sampleCount(), 0.0), weights(mapped.sampleCount(), 0.0);
    for (std::size_t p = 0; p < mapped.sampleCount(); ++p)
        if (mapped.data()[p] != kNoValue) {
            values[p] = mapped.data()[p];
            weights[p] = 1.0;
        }
    std::vector<char> valued(weights.begin(), weights.end());
    convolve(values, weights, width, height, gaussian(across), true);
    convolve(values, weights, width, height, gaussian(down), false);
    for (std::size_t p = 0; p < mapped.sampleCount(); ++p)
        if (valued[p] && weights[p] > 0.0) mapped.data()[p] = static_cast<float>(values[p] / weights[p]);
}

} // namespace fault
