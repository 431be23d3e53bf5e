#pragma once
#include <core/array.h>
#include <core/multiarray.h>
#include <core/pointwithbool.h>
#include <core/triplet.h>
#include <core/vec3.h>
#include <geom/randomline.h>

// Where a fault's surface crosses a vertical section. A surface is a triangle mesh:
// `vertices` and, per triangle, three indices into them (core::Triplet x, y, z). All
// coordinates are the fault set's; the section says which axis is vertical.
class ZNSectionCrossing {
public:
    // Relative tolerance under which two crossing points are the same point: scaled by
    // the largest coordinate magnitude of the mesh (at least 1).
    static constexpr double kJoinTolerance = 1e-9;

    // A surface through the sticks of one picked-point list: the strip between each pair
    // of consecutive sticks is triangulated, always closing the shorter diagonal first,
    // with the second stick reversed when it was picked in the opposite direction.
    // Separators delimit sticks; automatic entries (flag true) are ignored. Both arrays
    // are replaced. A list with fewer than two sticks gives no triangle; a one-point stick
    // makes a fan; two one-point sticks make nothing.
    static void triangulateSticks(const core::PointWithBool* points, int count,
                                  core::Array<core::vec3>& vertices,
                                  core::Array<core::Triplet>& triangles);

    // The crossing of the mesh with the section, as polylines: one sub-array of
    // `polylines` per connected piece, its points in order along the piece. Triangles
    // lying in the section plane, and those touching it at one vertex only, cross nothing.
    // Each piece is clipped to the section's panels and vertical extent. `polylines` is
    // replaced; an invalid section or a bad triangle index (the triangle is skipped)
    // gives fewer or no pieces.
    static void crossSection(const core::Array<core::vec3>& vertices,
                             const core::Array<core::Triplet>& triangles,
                             const geom::RandomLine& section,
                             core::MultiArray<core::vec3>& polylines);
};
