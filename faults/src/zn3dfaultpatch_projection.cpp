// Planes, block spaces and projection images of the 3D fault patch, and the sticks cut
// from its mesh.
#include "zn3dfaultpatch.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <new>

#include <geom/planefit.h>
#include <znmultipolygon.h>

#include "surface/gridsurface.h"
#include "surface/meshingdomain.h"
#include "surface/meshtools.h"

using namespace fault::surface;

namespace {

constexpr double kCellSnap = 1e-9;  // a box this close to a whole number of steps fits it
constexpr float kNoPixel = static_cast<float>(core::kNoValue);

std::vector<Stick> handSticks(const core::Array<core::PointWithBool>& points)
{
    return collectSticks(points.data(), points.size());
}

geom::Plane planeOf(const std::vector<core::vec3>& points)
{
    return geom::fitPlane(points.data(), static_cast<int>(points.size())).plane;
}

img::Image* newImage(const georef::BlocSpace& space)
{
    auto* image = new (std::nothrow) img::Image(space.nx(), space.ny(), kNoPixel);
    if (image && image->isNull()) {
        delete image;
        return nullptr;
    }
    return image;
}

// Draws every stick segment into `image` through `toGrid`, one sample per pixel step;
// each pixel takes `value`, or the point's height over `frame` when `frame` is given.
void drawSticks(const std::vector<Stick>& sticks, const core::mat4& toGrid,
                const PlaneFrame* frame, float value, img::Image& image)
{
    for (const Stick& stick : sticks)
        for (size_t k = 0; k < stick.size(); ++k) {
            const core::vec3& a = stick[k];
            const core::vec3& b = k + 1 < stick.size() ? stick[k + 1] : stick[k];
            const core::vec3 ga = toGrid.transformPoint(a), gb = toGrid.transformPoint(b);
            const double span = std::max(std::fabs(gb.x - ga.x), std::fabs(gb.y - ga.y));
            if (!std::isfinite(span)) continue;
            const int samples = static_cast<int>(std::ceil(span)) + 1;
            for (int s = 0; s <= samples; ++s) {
                const double t = static_cast<double>(s) / samples;
                const core::vec3 g = ga + (gb - ga) * t;
                const int c = static_cast<int>(std::lround(g.x)), r = static_cast<int>(std::lround(g.y));
                const float v = frame ? static_cast<float>(frame->toPlane(a + (b - a) * t).z) : value;
                image.setValue(c, r, v);
            }
        }
}

} // namespace

// ----- planes -----

geom::Plane ZN3DFaultPatch::getFaultPlane() const
{
    return planeOf(allPoints(handSticks(m_pickedPoints)));
}

geom::Plane ZN3DFaultPatch::getFaultPlane(const core::Array<core::vec3>& points)
{
    return geom::fitPlane(points.data(), points.size()).plane;
}

geom::Plane ZN3DFaultPatch::getFaultPlane(const core::Array<core::PointWithBool>& points)
{
    std::vector<core::vec3> kept;
    for (const core::PointWithBool& p : points)
        if (!p.isSeparator()) kept.push_back(p.position());
    return planeOf(kept);
}

geom::Plane ZN3DFaultPatch::getFaultPlane(const core::mat4& matrix) const
{
    std::vector<core::vec3> points = allPoints(handSticks(m_pickedPoints));
    for (core::vec3& p : points) p = matrix.transformPoint(p);
    return planeOf(points);
}

// ----- block spaces -----

PlaneFrame ZN3DFaultPatch::layoutFrame() const
{
    const std::vector<core::vec3> picked = allPoints(handSticks(m_pickedPoints));
    const PlaneFrame frame = fitPlaneFrame(picked.data(), static_cast<int>(picked.size()));
    return frame.valid ? frame : fitPlaneFrame(m_points.data(), m_points.size());
}

core::vec3 ZN3DFaultPatch::griddingSampling(bool lowerBound) const
{
    const double lateral = lowerBound ? std::max({getUtmPrecision(), kMinimumLateralStep, 1})
                                      : getUtmPrecision();
    return {lateral, static_cast<double>(getTimePrecision()), lateral};
}

georef::BlocSpace ZN3DFaultPatch::getFaultBlocSpace(const geom::Box3& planeBox,
                                                    const core::vec3& sampling) const
{
    const PlaneFrame frame = layoutFrame();
    if (!frame.valid || planeBox.isEmpty()) return {};
    for (int c = 0; c < 3; ++c)
        if (!(sampling[c] > 0.0) || !std::isfinite(sampling[c])) return {};
    const core::vec3 size = planeBox.size();
    const double columns = std::ceil(size.x / sampling.x - kCellSnap) + 1.0;
    const double rows = std::ceil(size.y / sampling.y - kCellSnap) + 1.0;
    if (!(columns * rows <= static_cast<double>(kMaxImagePixels))) return {};
    const double middle = 0.5 * (planeBox.low.z + planeBox.high.z);  // w of the layer
    core::mat4 toWorld;
    const core::vec3 axes[4] = {frame.along * sampling.x, frame.down * sampling.y,
                                frame.normal * sampling.z,
                                frame.toWorld(planeBox.low.x, planeBox.low.y, middle)};
    for (int c = 0; c < 4; ++c)
        for (int r = 0; r < 3; ++r) toWorld(r, c) = axes[c][r];
    georef::BlocSpace space(static_cast<int>(columns), static_cast<int>(rows), 1);
    return space.setFromBlocToWorldMatrix(toWorld) ? space : georef::BlocSpace();
}

georef::BlocSpace ZN3DFaultPatch::blocSpaceAround(const core::vec3& sampling, bool withPicks,
                                                  int margin) const
{
    const PlaneFrame frame = layoutFrame();
    if (!frame.valid) return {};
    geom::Box3 box;
    for (const core::vec3& p : m_points) box.include(frame.toPlane(p));
    if (withPicks || m_facettes.empty())
        for (const core::vec3& p : allPoints(handSticks(m_pickedPoints))) box.include(frame.toPlane(p));
    if (box.isEmpty()) return {};
    const core::vec3 grow(margin * sampling.x, margin * sampling.y, 0.0);
    box.low -= grow;
    box.high += grow;
    return getFaultBlocSpace(box, sampling);
}

georef::BlocSpace ZN3DFaultPatch::getFaultBlocSpace() const
{
    return blocSpaceAround(griddingSampling(false), false, 0);
}

georef::BlocSpace ZN3DFaultPatch::getFaultBlocSpaceWithPointArray(
    const core::Array<core::PointWithBool>& points, const core::vec3& sampling) const
{
    const PlaneFrame frame = layoutFrame();
    if (!frame.valid) return {};
    geom::Box3 box;
    for (const core::PointWithBool& p : points)
        if (!p.isSeparator()) box.include(frame.toPlane(p.position()));
    return getFaultBlocSpace(box, sampling);
}

// ----- projection images -----

img::Image* ZN3DFaultPatch::getProjectionImage(georef::BlocSpace& blocSpace, core::mat4& matrix,
                                               double scale) const
{
    if (!(scale > 0.0) || !std::isfinite(scale)) return nullptr;
    return getProjectionImage(blocSpace, matrix, griddingSampling(false) * scale);
}

img::Image* ZN3DFaultPatch::getProjectionImage(georef::BlocSpace& blocSpace, core::mat4& matrix,
                                               const core::vec3& sampling) const
{
    if (m_facettes.empty()) return nullptr;
    const georef::BlocSpace space = blocSpaceAround(sampling, false, 0);
    img::Image* image = space.isEmpty() ? nullptr : newImage(space);
    if (!image) return nullptr;
    rasterizeFacettes(m_points, m_facettes, space.getFromWorldToBlocMatrix(),
                      static_cast<float>(getFaultId()), *image);
    blocSpace = space;
    matrix = space.getFromBlocToWorldMatrix();
    return image;
}

img::Image* ZN3DFaultPatch::getProjectionImageFromPickedPoint(georef::BlocSpace* blocSpace,
                                                              ZNMultiPolygon* polygon) const
{
    if (!testValidity()) return nullptr;
    const std::vector<Stick> sticks = handSticks(m_pickedPoints);
    core::Array<core::PointWithBool> hand;
    for (const core::vec3& p : allPoints(sticks)) hand.add(core::PointWithBool(p));
    const georef::BlocSpace space = getFaultBlocSpaceWithPointArray(hand, griddingSampling(true));
    MeshingInput input;
    if (space.isEmpty() || !prepareMeshing(sticks, getMeshingMethod(), getSpare(), input))
        return nullptr;
    std::unique_ptr<img::Image> image(newImage(space));
    if (!image) return nullptr;
    if (blocSpace) {
        PlanarMesh domain;
        triangulatePlanar(input.planar, domain);
        const core::vec3 origin = input.layout.frame.toPlane(space.blocToWorld(core::vec3()));
        const core::vec3 steps = griddingSampling(true);
        const SampleGrid grid{origin.x, origin.y, steps.x, steps.y, space.nx() - 1, space.ny() - 1};
        std::vector<double> heights(grid.nodeCount(), 0.0);
        std::vector<char> known(grid.nodeCount(), 0);
        sampleTriangles(domain, grid, heights, known);
        for (int n = 0; n < grid.nodeCount(); ++n)
            if (known[n]) image->data()[n] = static_cast<float>(heights[n]);
        *blocSpace = space;
    } else {
        drawSticks(sticks, space.getFromWorldToBlocMatrix(), &input.layout.frame, kNoPixel, *image);
    }
    if (polygon) {
        const std::unique_ptr<ZNMultiPolygon> outline(getMeshingPolygon());
        *polygon = outline ? *outline : ZNMultiPolygon();
    }
    return image.release();
}

img::Image* ZN3DFaultPatch::getProjectionImageForPicking(georef::BlocSpace& blocSpace,
                                                         core::mat4& matrix) const
{
    return getProjectionImageForPicking(blocSpace, matrix, griddingSampling(false));
}

img::Image* ZN3DFaultPatch::getProjectionImageForPicking(georef::BlocSpace& blocSpace,
                                                         core::mat4& matrix, const core::vec3& sampling) const
{
    const georef::BlocSpace space = blocSpaceAround(sampling, true, kPickingMarginCells);
    img::Image* image = space.isEmpty() ? nullptr : newImage(space);
    if (!image) return nullptr;
    const float id = static_cast<float>(getFaultId());
    rasterizeFacettes(m_points, m_facettes, space.getFromWorldToBlocMatrix(), id, *image);
    drawSticks(handSticks(m_pickedPoints), space.getFromWorldToBlocMatrix(), nullptr, id, *image);
    blocSpace = space;
    matrix = space.getFromBlocToWorldMatrix();
    return image;
}

// ----- sticks from the mesh -----

int ZN3DFaultPatch::getFaultStick(const georef::BlocSpace& blocSpace,
                                  core::Array<ZNFaultStick>& sticks, int step) const
{
    sticks.clear();
    if (blocSpace.isEmpty() || m_facettes.empty()) return 0;
    const int stride = std::max(1, step);
    const core::mat4& toWorld = blocSpace.getFromBlocToWorldMatrix();
    const core::vec3 normal =
        toWorld.transformVector({0.0, 1.0, 0.0}).cross(toWorld.transformVector({0.0, 0.0, 1.0})).normalized();
    for (int column = stride / 2; column < blocSpace.nx(); column += stride) {
        geom::Plane cut;
        cut.point = blocSpace.blocToWorld({static_cast<double>(column), 0.0, 0.0});
        cut.normal = normal;
        const auto pieces = cutSurface(m_points, m_facettes, cut);
        for (int k = 0; k < static_cast<int>(pieces.size()); ++k) {
            core::vec3 top = pieces[k].front(), bottom = pieces[k].back();
            if (top.y > bottom.y) std::swap(top, bottom);
            ZNFaultStick stick(top, bottom, column, k);
            stick.SetFaultName(GetFaultName());
            sticks.add(stick);
        }
    }
    return sticks.size();
}
