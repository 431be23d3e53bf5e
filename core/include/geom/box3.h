#pragma once
#include <algorithm>

#include <core/conventions.h>
#include <core/vec3.h>

namespace geom {

// An axis-aligned box: the smallest and largest coordinate along each axis. An empty box
// (no point included yet) has every bound at -9999.0.
struct Box3 {
    core::vec3 low{core::kNoValueReal, core::kNoValueReal, core::kNoValueReal};
    core::vec3 high{core::kNoValueReal, core::kNoValueReal, core::kNoValueReal};

    bool isEmpty() const { return low.x == core::kNoValueReal && high.x == core::kNoValueReal; }
    // Grows the box to hold `p`.
    void include(const core::vec3& p)
    {
        if (isEmpty()) {
            low = high = p;
            return;
        }
        low = {std::min(low.x, p.x), std::min(low.y, p.y), std::min(low.z, p.z)};
        high = {std::max(high.x, p.x), std::max(high.y, p.y), std::max(high.z, p.z)};
    }
    core::vec3 size() const { return isEmpty() ? core::vec3() : high - low; }
};

} // namespace geom
