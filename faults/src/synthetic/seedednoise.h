#pragma once
#include <cmath>
#include <cstdint>

// Counter-based random numbers: each value is a pure function of a seed and an index,
// so a volume filled in parallel is the same for every thread count and platform.
namespace fault::synthetic {

// The splitmix64 finaliser: a well-mixed 64-bit hash of `x`.
inline std::uint64_t mix64(std::uint64_t x)
{
    x += 0x9E3779B97F4A7C15ULL;
    x = (x ^ (x >> 30)) * 0xBF58476D1CE4E5B9ULL;
    x = (x ^ (x >> 27)) * 0x94D049BB133111EBULL;
    return x ^ (x >> 31);
}

// The hash of item `index` of stream `seed`.
inline std::uint64_t seededHash(std::uint64_t seed, std::uint64_t index)
{
    return mix64(mix64(seed) ^ index);
}

// Uniform in [0, 1) for item `index` of stream `seed`, 53 bits of resolution.
inline double seededUniform(std::uint64_t seed, std::uint64_t index)
{
    constexpr double kTwoToMinus53 = 1.0 / 9007199254740992.0;
    return static_cast<double>(seededHash(seed, index) >> 11) * kTwoToMinus53;
}

// Approximately Gaussian, mean 0 and standard deviation 1, for item `index` of stream
// `seed`: the centred sum of the four 16-bit uniform variates of one hash, scaled to
// unit variance. Bounded by +-2 sqrt(3) (about 3.46), which keeps the background of a
// synthetic volume from ever reaching a fault's likelihood by chance.
inline double seededGaussian(std::uint64_t seed, std::uint64_t index)
{
    constexpr double kQuarterScale = 1.0 / 65536.0;   // 16-bit variate to [0, 1)
    const double kUnitVariance = std::sqrt(3.0);      // sum of 4 uniforms has variance 1/3
    const std::uint64_t h = seededHash(seed, index);
    double sum = 0.0;
    for (int part = 0; part < 4; ++part)
        sum += static_cast<double>((h >> (16 * part)) & 0xFFFFu) * kQuarterScale;
    return (sum - 2.0) * kUnitVariance;
}

} // namespace fault::synthetic
