#pragma once
// Tiny likelihood volumes for the segmentation tests, and the label checks they share.
#include <initializer_list>
#include <vector>

#include <core/array.h>
#include <core/triplet.h>
#include <zn3dimage.h>

namespace segtest {

constexpr float kLow = 0.1f;    // below every threshold used
constexpr float kHigh = 0.9f;   // above every threshold used
constexpr double kThreshold = 0.5;

// nx x ny x nz voxels all set to `value`.
inline ZN3DImage<float> volume(int nx, int ny, int nz, float value = kLow)
{
    return ZN3DImage<float>(georef::BlocSpace(nx, ny, nz), value);
}

inline void set(ZN3DImage<float>& v, std::initializer_list<core::Triplet> voxels, float value = kHigh)
{
    for (const core::Triplet& t : voxels) v(t.x, t.y, t.z) = value;
}

inline std::vector<core::Triplet> toVector(const core::Array<core::Triplet>& a)
{
    return std::vector<core::Triplet>(a.begin(), a.end());
}

// The voxels holding `label`, in scan order.
inline std::vector<core::Triplet> voxelsWithLabel(const ZN3DImage<int>& labels, int label)
{
    std::vector<core::Triplet> result;
    for (int z = 0; z < labels.nz(); ++z)
        for (int y = 0; y < labels.ny(); ++y)
            for (int x = 0; x < labels.nx(); ++x)
                if (labels(x, y, z) == label) result.emplace_back(x, y, z);
    return result;
}

} // namespace segtest

namespace core {
inline void PrintTo(const Triplet& t, std::ostream* os)
{
    *os << "(" << t.x << "," << t.y << "," << t.z << ")";
}
} // namespace core
