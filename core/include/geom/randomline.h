#pragma once
#include <core/array.h>
#include <core/vec2.h>
#include <core/vec3.h>

namespace geom {

// A vertical section through a survey: a polyline drawn on the map, extruded between a
// bottom and a top. A straight inline or crossline section is the two-node case.
//
// Coordinates are those of the objects the section cuts. One axis of that space is
// vertical (`verticalAxis`: 1 for world space, where y is vertical; 2 for block space,
// where the sample index is); the map position of a point is its two other coordinates,
// in increasing axis order. The section is valid with at least two nodes, a vertical
// axis in 0..2 and verticalMin <= verticalMax.
struct RandomLine {
    static constexpr int kWorldVerticalAxis = 1;
    static constexpr int kBlocVerticalAxis = 2;

    core::Array<core::vec2> nodes{4};  // map positions of the polyline, in drawing order
    double verticalMin = 0.0;          // lowest vertical coordinate shown
    double verticalMax = 0.0;          // highest vertical coordinate shown
    int verticalAxis = kWorldVerticalAxis;

    bool isValid() const
    {
        return nodes.size() >= 2 && verticalAxis >= 0 && verticalAxis <= 2 &&
               verticalMin <= verticalMax;
    }

    // The map position of `p`: its two non-vertical coordinates.
    core::vec2 mapPosition(const core::vec3& p) const
    {
        const int a = verticalAxis == 0 ? 1 : 0;
        const int b = verticalAxis == 2 ? 1 : 2;
        return {p[a], p[b]};
    }
    // The vertical coordinate of `p`.
    double height(const core::vec3& p) const { return p[verticalAxis]; }
    // The point of the space at map position `map` and vertical coordinate `h`.
    core::vec3 toSpace(const core::vec2& map, double h) const
    {
        core::vec3 p;
        const int a = verticalAxis == 0 ? 1 : 0;
        const int b = verticalAxis == 2 ? 1 : 2;
        p[a] = map.x;
        p[b] = map.y;
        p[verticalAxis] = h;
        return p;
    }
};

} // namespace geom
