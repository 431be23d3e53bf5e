// The surface of the 3D fault patch computed from its picked sticks.
#include "zn3dfaultpatch.h"

#include <algorithm>
#include <utility>

#include <znmultipolygon.h>

#include "surface/gridsurface.h"
#include "surface/meshingdomain.h"

using namespace fault::surface;

namespace {

std::vector<Stick> handSticks(const core::Array<core::PointWithBool>& points)
{
    return collectSticks(points.data(), points.size());
}

// The points and facettes of a planar mesh taken back to world coordinates, written in
// place once the arrays have their sizes (both left empty when they cannot).
void toWorld(const PlanarMesh& planar, const PlaneFrame& frame, core::Array<core::vec3>& points,
             core::Array<ZNFacette>& facettes)
{
    if (!points.resize(static_cast<int>(planar.positions.size())) ||
        !facettes.resize(static_cast<int>(planar.triangles.size()))) {
        points.release();
        facettes.release();
        return;
    }
    core::vec3* point = points.data();
    for (size_t i = 0; i < planar.positions.size(); ++i)
        point[i] = frame.toWorld(planar.positions[i].x, planar.positions[i].y, planar.heights[i]);
    ZNFacette* facette = facettes.data();
    for (size_t i = 0; i < planar.triangles.size(); ++i)
        for (int k = 0; k < 3; ++k) facette[i].index[k] = static_cast<uint32_t>(planar.triangles[i][k]);
}

} // namespace

void ZN3DFaultPatch::setMesh(const core::Array<core::vec3>& points,
                             const core::Array<ZNFacette>& facettes)
{
    m_points = points;
    m_facettes = facettes;
    updateComputedArea();
    geometryLoaded();
}

void ZN3DFaultPatch::setMesh(core::Array<core::vec3>&& points, core::Array<ZNFacette>&& facettes)
{
    m_points = std::move(points);
    m_facettes = std::move(facettes);
    updateComputedArea();
    geometryLoaded();
}

bool ZN3DFaultPatch::updateMeshWithPickedPoint()
{
    m_pickedBox = geom::Box3();
    for (const core::PointWithBool& p : m_pickedPoints)
        if (!p.isSeparator()) m_pickedBox.include(p.position());
    if (!m_meshing) return false;
    if (getMeshingMethod() == ConvexEnvelop) return getMeshWithPickedPoint();
    if (getMeshingMethod() == MinimumEnvelop) return getMeshWithPickedPointDelaunay();
    return false;
}

bool ZN3DFaultPatch::getMeshWithPickedPoint()
{
    if (!testValidity()) return false;
    PlanarMesh surface;
    MeshingInput input;
    if (prepareMeshing(handSticks(m_pickedPoints), ConvexEnvelop, 0.0, input)) {
        PlanarMesh interpolation;
        std::vector<core::vec2> hull;
        for (int i : convexHull(input.layout.positions)) hull.push_back(input.layout.positions[i]);
        GridSettings settings;
        settings.stepA = std::max({getUtmPrecision(), kMinimumLateralStep, 1});
        settings.stepB = std::max(getTimePrecision(), 1);
        settings.filterLength = oddFilterLength(getFilterSize());
        if (triangulatePlanar(input.planar, interpolation))
            griddedSurface(interpolation, hull, settings, surface);
    }
    core::Array<core::vec3> points;
    core::Array<ZNFacette> facettes;
    toWorld(surface, input.layout.frame, points, facettes);
    setMesh(std::move(points), std::move(facettes));
    return !m_facettes.empty();
}

bool ZN3DFaultPatch::getMeshWithPickedPointDelaunay()
{
    if (!testValidity()) return false;
    PlanarMesh surface;
    MeshingInput input;
    if (prepareMeshing(handSticks(m_pickedPoints), MinimumEnvelop, getSpare(), input)) {
        input.planar.maxEdgeLength = std::max(getInterpolationSize(), 0);
        triangulatePlanar(input.planar, surface);
    }
    core::Array<core::vec3> points;
    core::Array<ZNFacette> facettes;
    toWorld(surface, input.layout.frame, points, facettes);
    setMesh(std::move(points), std::move(facettes));
    return !m_facettes.empty();
}

core::Array<core::PointWithBool> ZN3DFaultPatch::getExpandedPolyline(double distance) const
{
    const std::vector<Stick> sticks = handSticks(m_pickedPoints);
    const std::vector<core::vec3> points = allPoints(sticks);
    const PlaneFrame frame = fitPlaneFrame(points.data(), static_cast<int>(points.size()));
    core::Array<core::PointWithBool> polyline;
    for (const Stick& stick : expandSticks(sticks, frame, distance)) {
        if (!polyline.empty()) polyline.add(core::PointWithBool::separator());
        for (const core::vec3& p : stick) polyline.add(core::PointWithBool(p));
    }
    return polyline;
}

bool ZN3DFaultPatch::getFaultMeshingRegressionMatrix(core::mat4& planeToWorld) const
{
    const std::vector<core::vec3> points = allPoints(handSticks(m_pickedPoints));
    const PlaneFrame frame = fitPlaneFrame(points.data(), static_cast<int>(points.size()));
    if (!frame.valid) return false;
    planeToWorld = frame.toWorldMatrix();
    return true;
}

ZNMultiPolygon* ZN3DFaultPatch::getMeshingPolygon() const
{
    if (!testValidity()) return nullptr;
    MeshingInput input;
    PlanarMesh domain;
    if (!prepareMeshing(handSticks(m_pickedPoints), getMeshingMethod(), getSpare(), input) ||
        !triangulatePlanar(input.planar, domain))
        return nullptr;
    auto* polygon = new ZNMultiPolygon();
    for (const std::vector<int>& loop : boundaryLoops(domain.triangles)) {
        core::Array<core::vec3> corners;
        for (int i : loop)
            corners.add(input.layout.frame.toWorld(domain.positions[i].x, domain.positions[i].y,
                                                   domain.heights[i]));
        polygon->addPolygon(corners);
    }
    return polygon;
}
