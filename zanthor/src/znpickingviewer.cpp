#include "znpickingviewer.h"

#include <limits>

#include <core/array.h>
#include <core/conventions.h>

ZNPickingViewer::~ZNPickingViewer() = default;

double ZNPickingViewer::distanceToSection(const core::vec3&) const
{
    return 0.0;
}

namespace {

// Parameter t of the foot of the perpendicular from `c` on segment (a, b), and the
// distance from `c` to that foot. t is outside 0..1 when the foot is off the segment;
// a zero-length segment gives t = -1.
void footOnSegment(const core::vec2& a, const core::vec2& b, const core::vec2& c, double& t,
                   double& distance)
{
    const core::vec2 ab = b - a;          // segment direction, not normalised
    const double lengthSquared = ab.dot(ab);
    if (lengthSquared <= 0.0) {
        t = -1.0;
        distance = std::numeric_limits<double>::max();
        return;
    }
    t = (c - a).dot(ab) / lengthSquared;
    const core::vec2 foot = a + ab * t;   // closest point of the supporting line
    distance = (c - foot).length();
}

} // namespace

ZNPickingViewer::NearestEntry ZNPickingViewer::getNearestPoint2D(
    const core::vec2& cursor, const core::PointWithBool* points, int count) const
{
    NearestEntry result;
    if (!points || count <= 0) return result;

    core::Array<core::vec2> screen(count);   // screen position of each entry
    screen.resize(count);
    double nearest = std::numeric_limits<double>::max();
    for (int i = 0; i < count; ++i) {
        if (points[i].isSeparator()) continue;
        screen[i] = projectToScreen(points[i].position());
        const double d = (screen[i] - cursor).length();
        if (d < nearest) {
            nearest = d;
            result.entry = i;
        }
    }
    if (result.entry == core::kNoValue) return result;

    double bestSegment = std::numeric_limits<double>::max();
    const int i = result.entry;
    for (int first = i - 1; first <= i; ++first) {
        const int second = first + 1;  // the segment (first, second) touches entry i
        if (first < 0 || second >= count || points[first].isSeparator() ||
            points[second].isSeparator())
            continue;
        double t = 0.0;
        double distance = 0.0;
        footOnSegment(screen[first], screen[second], cursor, t, distance);
        if (t > 0.0 && t < 1.0 && distance <= m_segmentTolerance && distance < bestSegment) {
            bestSegment = distance;
            result.segmentEnd = second;
        }
    }
    return result;
}
