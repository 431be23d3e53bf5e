#pragma once
#include <vector>

#include <core/pointwithbool.h>
#include <core/vec2.h>
#include <core/vec3.h>

#include "surface/planeframe.h"

// The sticks of a fault laid out on the fault's regression plane: what both surface
// methods start from.
namespace fault::surface {

// One stick: its points in picking order, world coordinates.
using Stick = std::vector<core::vec3>;

// The hand-picked sticks of a picked-point list: each maximal run of entries between
// separators, with automatic entries (flag true) left out and a point equal to the one
// before it dropped. Runs left empty are no sticks.
std::vector<Stick> collectSticks(const core::PointWithBool* points, int count);

// Number of sticks holding two points or more.
int countLongSticks(const std::vector<Stick>& sticks);

// Every point of every stick, stick after stick.
std::vector<core::vec3> allPoints(const std::vector<Stick>& sticks);

// The sticks in plane coordinates (see PlaneFrame): `positions` holds (a, b) of every
// point, `heights` its w, `sticks` the indices of each stick's points in order.
struct StickLayout {
    PlaneFrame frame;
    std::vector<core::vec2> positions;
    std::vector<double> heights;
    std::vector<std::vector<int>> sticks;
};
StickLayout layoutSticks(const std::vector<Stick>& sticks, const PlaneFrame& frame);

// How the sticks run on the plane. Sticks picked on inlines and crosslines of a steep
// fault all run down the dip; sticks picked on time slices run along the strike. The
// dominant direction is the length-weighted mean direction of the sticks (a stick and its
// reverse count the same); `mainSticks` are the sticks of two distinct points or more
// that run within 45 degrees of it, sorted by the position of their centre across it.
struct StickOrder {
    core::vec2 direction{0.0, 1.0};  // unit, in (a, b)
    core::vec2 across{1.0, 0.0};     // unit, perpendicular to `direction`
    std::vector<int> mainSticks;     // indices into StickLayout::sticks
};
StickOrder orderSticks(const StickLayout& layout);

// The minimum envelope of the sticks: one closed loop of point indices per pair of
// neighbouring main sticks, running down the first stick (along `direction`) and back up
// the second. Their union follows the sticks' own ends, not their convex hull. Empty when
// there are fewer than two main sticks.
std::vector<std::vector<int>> envelopeStrips(const StickLayout& layout, const StickOrder& order);

// Indices of the corners of the convex hull of `points`, counter-clockwise (positive
// cross product), without collinear corners. Fewer than three corners when the points
// span no area. With `keepWithin` > 0, a point lying within that distance inside the
// hull's outline stays a corner: the outline then runs through every point near it, at
// the price of corners a little reflex.
std::vector<int> convexHull(const std::vector<core::vec2>& points, double keepWithin = 0.0);

// The outline of the convex hull of `points` used as a meshing domain: through every
// point within a hundredth of the points' span of it when that outline is a simple loop,
// as for any set of some width (a stick along the hull's edge is never quite straight,
// and left out of the outline it would leave a sliver that refinement fills with
// millions of triangles); otherwise, for points nearly in one line, the strict hull
// keeping the points within `tolerance`.
std::vector<int> hullOutline(const std::vector<core::vec2>& points, double tolerance);

// The sticks widened by `distance` (world units): every stick of two points or more is
// lengthened at both ends along its end segments, and the two outermost main sticks are
// copied `distance` further out across the sticks, on the plane. Distance 0 or less, or
// an invalid frame, returns the sticks unchanged.
std::vector<Stick> expandSticks(const std::vector<Stick>& sticks, const PlaneFrame& frame,
                                double distance);

} // namespace fault::surface
