#include "faultunfolding.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include <znfaultpatchmanager.h>

namespace kfaults {
namespace {
struct Projected {
    double along;
    double down;
    int patch;
};
} // namespace

IdImage unfoldFault(const ZNFaultPatchManager& set, const fault::FaultSticks& fault)
{
    if (fault.strikeAxis.length() == 0.0 || fault.dipAxis.length() == 0.0) return IdImage();
    std::vector<Projected> points;
    const core::MultiArray<core::ByteTriplet>& voxels = set.getPatchVoxels();
    for (int patch = 1; patch < set.getNumberOfPatch() && patch < voxels.getNumberOfArray(); ++patch) {
        if (set.getFather(patch) != fault.faultId) continue;
        const core::ByteTriplet* v = voxels.getArray(patch);
        for (int k = 0; v && k < voxels.getCount(patch); ++k) {
            const core::vec3 p = set.getVoxelPosition(patch, v[k]);
            points.push_back({p.dot(fault.strikeAxis), p.dot(fault.dipAxis), patch});
        }
    }
    if (points.empty()) return IdImage();
    double minAlong = std::numeric_limits<double>::max();
    double minDown = minAlong;
    double maxAlong = std::numeric_limits<double>::lowest();
    double maxDown = maxAlong;
    for (const Projected& p : points) {
        minAlong = std::min(minAlong, p.along);
        maxAlong = std::max(maxAlong, p.along);
        minDown = std::min(minDown, p.down);
        maxDown = std::max(maxDown, p.down);
    }
    const int width = static_cast<int>(std::floor(maxAlong - minAlong)) + 1;
    const int height = static_cast<int>(std::floor(maxDown - minDown)) + 1;
    IdImage image(width, height);
    for (const Projected& p : points)
        image.set(static_cast<int>(std::floor(p.along - minAlong)),
                  static_cast<int>(std::floor(p.down - minDown)), p.patch);
    return image;
}

} // namespace kfaults
