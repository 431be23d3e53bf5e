#pragma once
#include <core/vec3.h>

namespace geom {

// A straight stick between two points of the fault set's space: a fault stick of exactly
// two ends, as fault stick files exchange them. Default: both ends at the origin.
struct Line {
    core::vec3 start;
    core::vec3 end;

    constexpr Line() = default;
    constexpr Line(const core::vec3& start_, const core::vec3& end_) : start(start_), end(end_) {}

    constexpr bool operator==(const Line& b) const { return start == b.start && end == b.end; }
    constexpr bool operator!=(const Line& b) const { return !(*this == b); }
};

} // namespace geom
