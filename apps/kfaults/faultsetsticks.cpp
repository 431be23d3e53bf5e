#include "faultsetsticks.h"

#include <core/array.h>
#include <znfaultpatchmanager.h>

namespace kfaults {

std::vector<std::vector<core::vec3>> sticksOfFault(const ZNFaultPatchManager& set, int faultId)
{
    std::vector<std::vector<core::vec3>> sticks(1);
    core::Array<core::PointWithBool> points;
    set.getFaultPickedPointArray(faultId, points);
    for (int k = 0; k < points.size(); ++k) {
        if (points[k].isSeparator()) {
            if (!sticks.back().empty()) sticks.emplace_back();
            continue;
        }
        sticks.back().push_back(core::vec3(points[k].x, points[k].y, points[k].z));
    }
    if (sticks.back().empty()) sticks.pop_back();
    return sticks;
}

} // namespace kfaults
