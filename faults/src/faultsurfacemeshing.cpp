#include "faultsurfacemeshing.h"

#include <algorithm>
#include <cmath>
#include <memory>

#include <core/conventions.h>
#include <zn3dfaultpatch.h>
#include <znfaultpatchmanager.h>

namespace fault {
namespace {

// World length of one step along block axis `axis` (0 inline, 1 crossline, 2 sample).
double cellLength(const georef::BlocSpace& space, int axis)
{
    core::vec3 step;
    (axis == 0 ? step.x : axis == 1 ? step.y : step.z) = 1.0;
    return (space.blocToWorld(step) - space.blocToWorld(core::vec3())).length();
}

int roundedWithin(double value, int low, int high)
{
    if (!std::isfinite(value)) return low;
    return static_cast<int>(std::lround(std::clamp(value, double(low), double(high))));
}

} // namespace

QString SurfaceSettings::methodName() const
{
    if (method == ZN3DFaultPatch::ConvexEnvelop) return QStringLiteral("Convex Envelop");
    if (method == ZN3DFaultPatch::MinimumEnvelop) return QStringLiteral("Minimum Envelop");
    return QString();
}

SurfaceSettings surfaceSettingsFor(const georef::BlocSpace& space,
                                   const SticksFromVoxelsSettings& sticks, int method)
{
    SurfaceSettings s;
    s.method = method;
    if (space.isEmpty()) return s;
    const double lateralCell = std::max(cellLength(space, 0), cellLength(space, 1));
    const double verticalCell = cellLength(space, 2);
    const double betweenSticks = sticks.sectionSpacing * lateralCell;  // along strike
    const double betweenPoints = sticks.pointSpacing * verticalCell;   // down dip
    s.meshResolution = roundedWithin(betweenSticks, ZN3DFaultPatchLight::kMinUtmPrecision,
                                     ZN3DFaultPatchLight::kMaxUtmPrecision);
    s.zSampling = roundedWithin(betweenPoints, ZN3DFaultPatchLight::kMinTimePrecision,
                                ZN3DFaultPatchLight::kMaxTimePrecision);
    s.interpolationSize = roundedWithin(betweenSticks, ZN3DFaultPatchLight::kMinInterpolationSize,
                                        ZN3DFaultPatchLight::kMaxInterpolationSize);
    return s;
}

exchange::TriangleMesh triangleMeshOf(const ZN3DFaultPatch& patch)
{
    exchange::TriangleMesh mesh;
    mesh.name = patch.GetFaultName();
    const core::Array<core::vec3>& points = patch.getPoints();
    mesh.vertices.assign(points.begin(), points.end());
    mesh.triangles.reserve(static_cast<std::size_t>(patch.getNumberOfFacettes()));
    for (const ZNFacette& f : patch.getFacettes())
        mesh.triangles.push_back({static_cast<int>(f.index[0]), static_cast<int>(f.index[1]),
                                  static_cast<int>(f.index[2])});
    return mesh;
}

FaultSurface meshFault(ZNFaultPatchManager& set, int faultId, const SurfaceSettings& settings)
{
    FaultSurface surface;
    const ZN3DFaultPatchLight* light = set.findFaultLight(faultId);
    if (!light) return surface;
    surface.mesh.name = light->GetFaultName();
    const std::unique_ptr<ZN3DFaultPatch> patch(set.createPicked3DFaultPatch(light));
    if (!patch) return surface;
    patch->setMeshingMethod(settings.method);
    patch->setUtmPrecision(settings.meshResolution);
    patch->setTimePrecision(settings.zSampling);
    patch->setInterpolationSize(settings.interpolationSize);
    if (!patch->updateMeshWithPickedPoint()) return surface;
    surface.mesh = triangleMeshOf(*patch);
    const double computed = patch->getComputedArea();
    surface.area = computed == core::kNoValueReal ? core::kNoValueReal
                                                   : computed * ZN3DFaultPatch::kAreaScale;
    return surface;
}

} // namespace fault
