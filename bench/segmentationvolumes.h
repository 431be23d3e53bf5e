#pragma once
// The likelihood volumes of the segmentation benchmark and the realistic segmentation
// settings it runs with, shared by the benchmarks that start from the same volumes.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <memory>
#include <vector>

#include <zn3dimage.h>

namespace benchvolumes {

constexpr int kSize = 256;                 // voxels along each axis
constexpr double kThreshold = 0.5;         // seed and growth threshold
constexpr double kNoiseSigma = 0.12;       // Gaussian noise added to every voxel
constexpr double kFaultSigma = 1.0;        // across-plane standard deviation, voxels

// Realistic settings of an automatic extraction.
constexpr int kMaxLabelCount = 1000000;
constexpr int kMaxPatchSize = 1500;
constexpr double kMaxPlaneDeviation = 1.5;
constexpr int kGrowthIterations = 15;

struct Fault {
    double nx, ny, nz;     // unit normal
    double cx, cy, cz;     // centre, voxels
    double radius;         // extent within the plane, voxels
};

// A family of three sub-parallel faults dipping the same way, which do not meet inside
// the volume: the common case.
const std::vector<Fault> kFamily = {
    {0.866, 0.10, 0.49, 60, 128, 128, 150},
    {0.85, 0.05, 0.52, 128, 128, 128, 150},
    {0.87, 0.15, 0.47, 196, 128, 128, 150},
};
// Four faults of different strikes and dips crossing each other: the hard case, where
// every voxel near a crossing seeds a full-size patch spanning two planes, which is
// rejected and undone.
const std::vector<Fault> kCrossing = {
    {0.80, 0.10, 0.59, 128, 128, 128, 140},
    {-0.70, 0.20, 0.69, 90, 150, 120, 110},
    {0.10, 0.95, 0.30, 160, 80, 140, 120},
    {0.55, -0.60, 0.58, 170, 170, 90, 100},
};
// The family with a fourth, smaller fault crossing its first one only: four planar faults,
// two of them crossing, as in the volumes the extraction's speed goals were set on.
const std::vector<Fault> kOneCrossing = {
    kFamily[0],
    kFamily[1],
    kFamily[2],
    {-0.70, 0.20, 0.69, 60, 128, 128, 45},
};
enum VolumeKind { FaultFamily = 0, CrossingFaults = 1 };
const char* const kVolumeNames[] = {"fault family", "crossing faults"};

// A deterministic standard normal deviate per voxel index (splitmix64, Box-Muller), so
// the volume is the same on any number of threads.
inline double normalAt(uint64_t i)
{
    auto mix = [](uint64_t z) {
        z += 0x9e3779b97f4a7c15ULL;
        z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9ULL;
        z = (z ^ (z >> 27)) * 0x94d049bb133111ebULL;
        return z ^ (z >> 31);
    };
    const double u1 = (static_cast<double>(mix(2 * i) >> 11) + 1.0) / 9007199254740993.0;
    const double u2 = static_cast<double>(mix(2 * i + 1) >> 11) / 9007199254740992.0;
    return std::sqrt(-2.0 * std::log(u1)) * std::cos(2.0 * M_PI * u2);
}

inline double faultLikelihood(const Fault& f, double x, double y, double z)
{
    const double dx = x - f.cx, dy = y - f.cy, dz = z - f.cz;
    const double distance = dx * f.nx + dy * f.ny + dz * f.nz;         // across the plane
    const double along2 = dx * dx + dy * dy + dz * dz - distance * distance;
    if (along2 > f.radius * f.radius) return 0.0;
    return std::exp(-distance * distance / (2.0 * kFaultSigma * kFaultSigma));
}

// The volume of `faults` at `size`^3 voxels: their centres and extents scaled by
// size / kSize, their profile across the plane kept (one voxel).
inline std::unique_ptr<ZN3DImage<float>> makeVolume(std::vector<Fault> faults, int size = kSize)
{
    const double scale = static_cast<double>(size) / kSize;
    for (Fault& f : faults) {
        f.cx *= scale, f.cy *= scale, f.cz *= scale;
        f.radius *= scale;
    }
    auto v = std::make_unique<ZN3DImage<float>>(size, size, size);
#pragma omp parallel for schedule(static)
    for (int z = 0; z < size; ++z)
        for (int y = 0; y < size; ++y)
            for (int x = 0; x < size; ++x) {
                double value = 0.0;
                for (const Fault& f : faults) value = std::max(value, faultLikelihood(f, x, y, z));
                const uint64_t i = v->index(x, y, z);
                (*v)(x, y, z) = static_cast<float>(value + kNoiseSigma * normalAt(i));
            }
    return v;
}

inline ZN3DImage<float>& volume(int kind)
{
    static std::unique_ptr<ZN3DImage<float>> volumes[2];
    if (!volumes[kind]) volumes[kind] = makeVolume(kind == FaultFamily ? kFamily : kCrossing);
    return *volumes[kind];
}

} // namespace benchvolumes
