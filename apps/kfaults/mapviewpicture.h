#pragma once
#include <vector>

#include <QColor>
#include <QImage>
#include <QString>

#include "faultmesh.h"

namespace kfaults {

// How the map view is drawn. Defaults give a 1200 x 900 picture on white.
struct MapViewSettings {
    int width = 1200;                 // pixels, at least 1
    int height = 900;
    QString title = QStringLiteral("Faults, map view");
    QString horizontalUnit = QStringLiteral("m");  // of map X and Y, for axes and scale bar
    QString verticalUnit;             // of Z ("ms", "m"), for the depth key; may be empty
    QColor background = Qt::white;
    double shallowLightening = 0.35;  // mixed with white at the shallowest Z
    double deepDarkening = 0.45;      // mixed with black at the deepest Z
};

// The faults seen from above: map X (easting) to the right, map Y (northing) up, one
// scale for both. Each triangle is filled with its fault's colour, lightened where it is
// shallow and darkened where it is deep, and drawn deepest first so that shallow parts lie
// on top; up to twenty faults are also named on the map. Around the map: title, easting and northing axes, scale bar, north arrow, a
// legend of the faults and a key of the depth shading. Triangles with an index outside
// their mesh are skipped. Needs a QGuiApplication (any platform) for its text; the image
// has exactly the requested size (a size below 1 counts as 1).
QImage renderMapView(const std::vector<FaultMesh>& faults, const MapViewSettings& settings = {});

} // namespace kfaults
