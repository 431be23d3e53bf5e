#pragma once
#include <vector>

#include <QColor>
#include <QImage>
#include <QString>

#include "faultmesh.h"

namespace kfaults {

// How the perspective view is drawn. Defaults give a 1200 x 900 picture on white, seen
// from the south-south-west, 30 degrees above the horizon.
struct PerspectiveSettings {
    int width = 1200;                   // pixels, at least 1
    int height = 900;
    QString title = QStringLiteral("Faults, perspective view");
    QString horizontalUnit = QStringLiteral("m");
    QString verticalUnit;               // of Z ("ms", "m"), for the Z axis; may be empty
    double viewerAzimuthDegrees = 210;  // compass bearing of the eye from the scene centre
    double viewerElevationDegrees = 30; // height of the eye above the horizon, 5..85 used
    // Factor on Z before drawing; 0 or less chooses one that makes the vertical extent
    // about half the horizontal one (time and depth data need very different factors).
    double verticalExaggeration = 0.0;
    double fieldOfViewDegrees = 30;
    double ambient = 0.4;               // share of the colour lit whatever the orientation
    QColor background = Qt::white;
};

// The faults in perspective: each triangle lit by a light over the viewer's left
// shoulder with Lambert shading on both sides (a fault has no outside), faded towards the
// background with distance, outlined along its free edges in a darker tone, hidden parts
// removed by a depth buffer. A floor grid at the deepest Z with easting and northing
// ticks and each fault's footprint tinted with its colour, a Z axis at the back corner, a legend and a caption with the viewing angles
// and the vertical exaggeration, and a compass complete it. Triangles with an index outside their mesh
// are skipped. Needs a QGuiApplication for its text; the image has exactly the requested
// size (a size below 1 counts as 1).
QImage renderPerspective(const std::vector<FaultMesh>& faults, const PerspectiveSettings& settings = {});

// The vertical exaggeration renderPerspective uses for `faults` with `settings`.
double effectiveVerticalExaggeration(const std::vector<FaultMesh>& faults,
                                     const PerspectiveSettings& settings);

} // namespace kfaults
