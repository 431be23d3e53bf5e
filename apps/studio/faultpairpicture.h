#pragma once
#include <QColor>
#include <QImage>

#include <core/array.h>
#include <core/pointwithbool.h>
#include <core/vec3.h>

// How the cleaning assistant shows a pair of faults: the first in orange, the second in
// blue, the merged fault in purple, seen across the plane they share.

QColor firstFaultColour();
QColor secondFaultColour();
QColor mergedFaultColour();

// The plane in which a pair of faults is best seen: through the centroid of their picked
// points, `normal` across it; `along` its strike (horizontal), or for a nearly flat plane
// the direction in which the points spread most; `down` across it within the plane,
// pointing downward (world y growing). Invalid when the points do not span a plane (fewer
// than three, or all on one line).
struct FaultPairPlane {
    core::vec3 centre;
    core::vec3 along;
    core::vec3 down;
    core::vec3 normal;
    bool valid = false;
};
FaultPairPlane faultPairPlane(const core::Array<core::PointWithBool>& first,
                              const core::Array<core::PointWithBool>& second);

// A square picture, `size` pixels a side, of the sticks of both faults (picked points,
// separators between sticks) projected on their plane and scaled to fill it: the first
// fault drawn wide, the second narrow over it, so that a duplicate shows as a blue line
// inside an orange one. A light background with a border; only that when the faults hold
// no plane. Safe on any thread (it paints on an image).
QImage faultPairPicture(const core::Array<core::PointWithBool>& first,
                        const core::Array<core::PointWithBool>& second, int size);
