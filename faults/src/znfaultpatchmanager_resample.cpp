// Automatic points of a patch along the section a viewer shows.
#include "znfaultpatchmanager.h"

#include <algorithm>
#include <cmath>

#include <core/conventions.h>

#include "znfaultsurface.h"
#include "znsectioncrossing.h"

namespace {

// Distance from `p` to segment (a, b).
double distanceToSegment(const core::vec3& p, const core::vec3& a, const core::vec3& b)
{
    const core::vec3 ab = b - a;
    const double lengthSquared = ab.dot(ab);
    const double t = lengthSquared > 0.0 ? std::clamp((p - a).dot(ab) / lengthSquared, 0.0, 1.0)
                                         : 0.0;  // position of the closest point, 0..1
    return (p - (a + ab * t)).length();
}

// True when `p` lies on one of the hand-picked sticks of the list (a one-point stick
// counts as a point), within `tolerance`.
bool liesOnHandSticks(const core::vec3& p, const core::PointWithBool* points, int count,
                      double tolerance)
{
    for (int k = 0; k < count; ++k) {
        const core::PointWithBool& a = points[k];
        if (a.isSeparator() || a.flag) continue;
        const bool joined = k + 1 < count && !points[k + 1].isSeparator() && !points[k + 1].flag;
        const core::vec3 end = joined ? points[k + 1].position() : a.position();
        if (distanceToSegment(p, a.position(), end) <= tolerance) return true;
    }
    return false;
}

// Largest coordinate magnitude of the hand-picked points (at least 1).
double handScale(const core::PointWithBool* points, int count)
{
    double scale = 1.0;
    for (int k = 0; k < count; ++k)
        if (!points[k].isSeparator())
            scale = std::max({scale, std::fabs(points[k].x), std::fabs(points[k].y),
                              std::fabs(points[k].z)});
    return scale;
}

} // namespace

int ZNFaultPatchManager::resamplePatchWithRandomLine(int patchId, const geom::RandomLine& section)
{
    if (!isValidPatchId(patchId) || !section.isValid()) return 0;

    core::Array<core::vec3> vertices(64);     // the surface that crosses the section
    core::Array<core::Triplet> triangles(64);
    const ZNFaultSurface* surface = findFaultSurface(getFather(patchId));
    const bool meshed = surface && surface->getSurfaceMesh(vertices, triangles) &&
                        !triangles.empty();
    if (!meshed)
        ZNSectionCrossing::triangulateSticks(m_pickedPoints.getArray(patchId),
                                             m_pickedPoints.getCount(patchId), vertices,
                                             triangles);
    core::MultiArray<core::vec3> crossings;
    ZNSectionCrossing::crossSection(vertices, triangles, section, crossings);

    const double tolerance = ZNSectionCrossing::kJoinTolerance *
                             handScale(m_pickedPoints.getArray(patchId),
                                       m_pickedPoints.getCount(patchId));
    const core::PointWithBool automaticSeparator(core::kNoValueReal, core::kNoValueReal,
                                                 core::kNoValueReal, true);
    int appended = 0;
    for (int r = 0; r < crossings.getNumberOfArray(); ++r) {
        const core::vec3* line = crossings.getArray(r);
        const int size = crossings.getCount(r);
        // A crossing that runs along hand-picked sticks (the section shows a picked
        // stick) would only repeat them.
        const core::PointWithBool* hand = m_pickedPoints.getArray(patchId);
        const int handCount = m_pickedPoints.getCount(patchId);
        if (std::all_of(line, line + size, [&](const core::vec3& p) {
                return liesOnHandSticks(p, hand, handCount, tolerance);
            }))
            continue;
        const int count = m_pickedPoints.getCount(patchId);
        if (count > 0 && !m_pickedPoints(patchId, count - 1).isSeparator()) {
            m_pickedPoints.addElement(patchId, automaticSeparator, false);
            ++appended;
        }
        for (int k = 0; k < size; ++k) {
            m_pickedPoints.addElement(patchId, core::PointWithBool(line[k], true), false);
            ++appended;
        }
    }
    return appended;
}
