#pragma once
#include <array>
#include <vector>

#include <QColor>
#include <QImage>
#include <QPointer>
#include <QString>

#include <3dobject/zn3dobjectdraw.h>
#include <core/array.h>
#include <core/pointwithbool.h>
#include <core/vec3.h>
#include <geom/box3.h>

// What a 3D view can show: the contents of the items of a ZN3DScene. Value types, in
// world coordinates (see core/conventions.h), filled by the host.

// A triangulated surface drawn from a ZN3DObjectDraw the host keeps: its points and
// facettes (read when the item is set or updated, see ZN3DScene::updateItem), and at
// every frame its pen colour, its transparency (0 transparent .. 1 opaque) and its hidden
// flag. The item does not own the object: a deleted object is no longer drawn (the
// pointer nulls itself), and the host removes the item when it deletes the object.
struct ZN3DSurfaceItem {
    enum class Mode { Filled, Wireframe, Points };

    QPointer<const ZN3DObjectDraw> object;
    Mode mode = Mode::Filled;
    float pointSize = 4.0f;  // pixels, Points mode
};

// Polylines with their points, such as fault sticks: a point whose x is -9999
// separates two polylines. Widths and sizes are pixels; a point size of 0 draws no points.
struct ZN3DPolylineItem {
    std::vector<core::vec3> points;
    QColor colour = Qt::yellow;
    float width = 2.0f;
    float pointSize = 6.0f;

    // The sticks of a list of picked points, separators kept.
    static ZN3DPolylineItem fromPickedPoints(const core::Array<core::PointWithBool>& picked, const QColor& colour);
};

// An image laid on a plane quadrilateral: a section of a volume. The corners are the
// world positions of the image's top-left, top-right, bottom-right and bottom-left
// corners (the outer edges of the corner pixels). Pixels of alpha below one half (the
// transparent no-value samples of a colour scale) are not drawn.
struct ZN3DSectionItem {
    QImage image;
    std::array<core::vec3, 4> corners{};
    float opacity = 1.0f;  // 0 transparent .. 1 opaque
};

// The twelve edges of a box, a volume's outline, with a label per axis: the axis name at
// the middle of one edge along that axis and the values of its two ends beside them
// (for instance "Inline", 1 and 128). The box is any hexahedron with parallel faces (a
// survey's grid, rotated on the map): corner k is at the low or the high end of each
// axis, axis a's high end when bit a of k is set, so that the edges along axis a join
// the corners that differ in bit a only. An axis of empty name has no labels.
struct ZN3DBoxItem {
    struct Axis {
        QString name;
        double first = 0.0;  // the value shown at the low end
        double last = 0.0;   // at the high end
    };

    std::array<core::vec3, 8> corners = cornersOf(geom::Box3());  // world; empty at first
    QColor colour = Qt::white;
    std::array<Axis, 3> axes;

    // The corners of an axis-aligned world box, its axes world x, y and z; all -9999 for an
    // empty box.
    static std::array<core::vec3, 8> cornersOf(const geom::Box3& box);
    void setBox(const geom::Box3& box) { corners = cornersOf(box); }
    // Whether the corners are set (the first is not -9999).
    bool isEmpty() const { return corners[0].x == core::kNoValueReal; }
};

// A 3D cross: three arms along the display axes through `position`, of a constant
// length on the screen.
struct ZN3DReferencePointItem {
    core::vec3 position;
    QColor colour = QColor(0, 255, 0);
    float armPixels = 20.0f;  // half the length of an arm
    float width = 2.0f;
};
