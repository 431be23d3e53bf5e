#pragma once
// Scenes for the picture tests: planar and disc-shaped faults meshed on regular grids,
// and pixel counting by colour.
#include <functional>

#include <QImage>
#include <QRect>

#include <faultmesh.h>

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

// Pixels of `image` inside `area` for which `match` is true.
int countPixels(const QImage& image, const QRect& area, const std::function<bool(QColor)>& match);

// Match of a colour of the same hue (within `hueDegrees`) and clearly coloured.
std::function<bool(QColor)> sameHue(const QColor& colour, int hueDegrees = 8);

// The folder named by KORVALITH_KEEP_PICTURES, where tests leave their pictures for a
// person to look at; empty when unset.
QString keepFolder();

} // namespace picturetest
