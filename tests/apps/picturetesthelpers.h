#pragma once
// Scenes for the picture tests: planar and disc-shaped faults meshed on regular grids,
// and pixel counting by colour.
#include <functional>

#include <QImage>
#include <QRect>

#include <faultmesh.h>
#include <pictures.h>

namespace picturetest {

// A rectangular fault of `length` along strike and `width` down dip, centred at map
// (x, y) and depth z, meshed as `cells` x `cells` squares split in two triangles.
// Strike in degrees clockwise from north; the fault dips `dip` degrees to the right of
// the strike direction.
kfaults::FaultMesh planarFault(const QString& name, const QColor& colour, double x, double y, double z,
                               double strike, double dip, double length, double width, int cells = 12);

// The same plane cut to a disc of the given radius (triangles whose centre lies outside
// the disc are left out).
kfaults::FaultMesh discFault(const QString& name, const QColor& colour, double x, double y, double z,
                             double strike, double dip, double radius, int cells = 24);

} // namespace picturetest
