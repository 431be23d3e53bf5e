// The 3D fault patches of the fault set's faults.
#include "znfaultpatchmanager.h"

#include <algorithm>
#include <cmath>

#include "zn3dfaultpatch.h"

bool ZNFaultPatchManager::isPatchPicked(int id) const
{
    return getNumberOfValidPickedPoint(id) > 0;
}

int ZNFaultPatchManager::getNumberOfPatchPoint(int id) const
{
    if (!isValidPatchId(id)) return 0;
    const int voxels = m_patchVoxels.getCount(id);
    return voxels > 0 ? voxels : std::max(0, getNumberOfPickedPoint(id));
}

core::Triplet ZNFaultPatchManager::getPatchPointPosition(int id, int j) const
{
    const core::Triplet none(core::kNoValue, core::kNoValue, core::kNoValue);
    if (!isValidPatchId(id) || j < 0 || j >= getNumberOfPatchPoint(id)) return none;
    core::vec3 grid;
    if (m_patchVoxels.getCount(id) > 0) {
        grid = getVoxelPosition(id, *m_patchVoxels.element(id, j));
    } else {
        const core::PointWithBool* p = getPickedPoint(id, j);
        if (!p || p->isSeparator()) return none;
        grid = m_blocSpace.worldToBloc(p->position());
    }
    const auto index = [](double v) { return static_cast<int32_t>(std::lround(v)); };
    return core::Triplet(index(grid.x), index(grid.y), index(grid.z));
}

ZN3DFaultPatch* ZNFaultPatchManager::findFaultPatch(int faultId) const
{
    for (ZNFaultSurface* surface : m_faultSurfaces)
        if (surface->getFaultSurfaceId() == faultId)
            if (auto* patch = dynamic_cast<ZN3DFaultPatch*>(surface)) return patch;
    return nullptr;
}

ZN3DFaultPatch* ZNFaultPatchManager::createPicked3DFaultPatch(const ZN3DFaultPatchLight* light)
{
    if (!light || !isValidPatchId(light->getFaultId())) return nullptr;
    const int faultId = light->getFaultId();
    auto* patch = new ZN3DFaultPatch(m_blocSpace, nullptr, getUnitObject(faultId));
    patch->setDescriptor(*light);
    core::Array<core::PointWithBool> points;
    getFaultPickedPointArray(getFather(faultId), points);
    patch->setPickedPoints(points);
    patch->set2D(m_patches[faultId].is2dFaultPatch());
    patch->setFaultSetName(objectName());
    if (const StoredMesh* mesh = getStoredMesh(faultId)) patch->setMesh(mesh->points, mesh->facettes);
    patch->setFaultSet(this);
    return patch;
}

QList<ZN3DFaultPatch*> ZNFaultPatchManager::getFaultPatchList(QList<ZN3DFaultPatch*>& created)
{
    QList<ZN3DFaultPatch*> patches;
    for (const ZN3DFaultPatchLight* light : m_faultLights) {
        ZN3DFaultPatch* patch = findFaultPatch(light->getFaultId());
        if (!patch) {
            patch = createPicked3DFaultPatch(light);
            if (!patch) continue;
            created.append(patch);
        }
        patches.append(patch);
    }
    return patches;
}
