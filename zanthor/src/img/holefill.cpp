#include "img/holefill.h"

#include <vector>

#include <core/conventions.h>

namespace img {
namespace {

constexpr float kNoValue = static_cast<float>(core::kNoValueReal);
constexpr int kMaxNeighbours = 8;

// The 8 neighbours in opposite pairs: k and k + 4 face each other.
constexpr int kDx[kMaxNeighbours] = {1, 1, 0, -1, -1, -1, 0, 1};
constexpr int kDy[kMaxNeighbours] = {0, 1, 1, 1, 0, -1, -1, -1};

} // namespace

int fillHoles(Image& image, int maxPasses, int minNeighbours, HoleGrowth growth)
{
    if (maxPasses < 1 || minNeighbours < 1 || minNeighbours > kMaxNeighbours || image.isEmpty()) return 0;
    const int width = image.width();
    const int height = image.height();
    struct Fill {
        int c, r;
        float value;
    };
    std::vector<Fill> fills;
    int filled = 0;
    for (int pass = 0; pass < maxPasses; ++pass) {
        fills.clear();
        for (int r = 0; r < height; ++r)
            for (int c = 0; c < width; ++c) {
                if (image(c, r) != kNoValue) continue;
                bool valued[kMaxNeighbours];
                double sum = 0.0;
                int count = 0;
                for (int k = 0; k < kMaxNeighbours; ++k) {
                    const float v = image.value(c + kDx[k], r + kDy[k], kNoValue);
                    valued[k] = v != kNoValue;
                    if (valued[k]) {
                        sum += v;
                        ++count;
                    }
                }
                if (count < minNeighbours) continue;
                bool between = growth == HoleGrowth::Grow;
                for (int k = 0; k < kMaxNeighbours / 2 && !between; ++k) between = valued[k] && valued[k + 4];
                if (between) fills.push_back({c, r, static_cast<float>(sum / count)});
            }
        if (fills.empty()) break;
        for (const Fill& f : fills) image(f.c, f.r) = f.value;
        filled += static_cast<int>(fills.size());
    }
    return filled;
}

std::size_t countValued(const Image& image)
{
    std::size_t n = 0;
    for (std::size_t p = 0; p < image.sampleCount(); ++p) n += image.data()[p] != kNoValue;
    return n;
}

} // namespace img
