#pragma once
#include <core/pointwithbool.h>
#include <core/vec2.h>
#include <core/vec3.h>
#include <geom/randomline.h>

class ZNObject;

// What an editing operation needs to know of the viewer the user is picking in: where a
// point of the fault set's space appears on the screen, which picked entry the cursor is
// nearest to, whether a patch is drawn, and which section the view shows. Section
// viewers of the host implement it; the model classes never draw.
//
// Screen coordinates are pixels, x to the right, y down; only distances between screen
// positions matter here.
class ZNPickingViewer {
public:
    // Result of getNearestPoint2D: indices into the list given to it.
    struct NearestEntry {
        int entry = -9999;       // nearest non-separator entry; -9999 for none
        int segmentEnd = -9999;  // when the cursor lies along the segment (segmentEnd - 1,
                                 // segmentEnd) that ends or starts at `entry`: segmentEnd;
                                 // -9999 otherwise
    };

    static constexpr double kDefaultSegmentTolerance = 10.0;  // pixels

    virtual ~ZNPickingViewer();

    // The screen position of a point of the fault set's space.
    virtual core::vec2 projectToScreen(const core::vec3& point) const = 0;
    // Whether patch `patchId` of the fault set `faultSet` is drawn in this view.
    virtual bool isPatchShown(const ZNObject* faultSet, int patchId) const = 0;
    // The section the view shows, in the fault set's space; false (line untouched) when
    // the view shows no section.
    virtual bool getShownRandomLine(geom::RandomLine& line) const = 0;
    // How far `point` lies from the section shown, in the view's own unit (voxels for a
    // view of a block); 0 for a view that shows all of its space at once (the default).
    virtual double distanceToSection(const core::vec3& point) const;

    // The entry of `points` (count entries, separators skipped) whose screen position is
    // nearest to `cursor` (first one on ties), and, when the foot of the perpendicular
    // from the cursor falls strictly inside one of the two segments that join that entry
    // to a non-separator neighbour and lies within segmentTolerance() pixels of it, the
    // later entry of the nearer such segment. A null list or one without points gives
    // {-9999, -9999}.
    virtual NearestEntry getNearestPoint2D(const core::vec2& cursor,
                                           const core::PointWithBool* points,
                                           int count) const;

    // Farthest distance, in pixels, at which the cursor still lies along a segment.
    double segmentTolerance() const { return m_segmentTolerance; }
    void setSegmentTolerance(double pixels) { m_segmentTolerance = pixels; }

private:
    double m_segmentTolerance = kDefaultSegmentTolerance;
};
