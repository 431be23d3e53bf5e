// Auto-save of the picking work, and the two operations that build a fault set from
// parts of others: the extraction of listed patches and the concatenation.
#include "znfaultpatchmanager.h"

#include <climits>
#include <memory>

#include <QDir>

#include "znfaultpatchtools.h"

namespace {

// The vertical domain code of the file formats is 2 - the unit object's domain index;
// code 1 is time, every other code depth.
constexpr int kDomainCodeBase = 2;
constexpr int kTimeDomainCode = 1;

bool isTimePatch(const ZNFaultPatch& patch)
{
    return kDomainCodeBase - patch.unitObject().getDomainIndex() == kTimeDomainCode;
}

// A copy of `light` for another fault set: every setting, id `faultId`, not saved there.
ZN3DFaultPatchLight* copyForFault(const ZN3DFaultPatchLight& light, int faultId)
{
    auto* copy = new ZN3DFaultPatchLight(light);
    copy->setFaultId(faultId);
    copy->setSaved(false);
    return copy;
}

} // namespace

// ----- auto-save -----

bool ZNFaultPatchManager::autoSave(const QString& folder, bool is2dFaultPatch, bool isTime)
{
    int& counter = m_autoSaveCounters[is2dFaultPatch ? 1 : 0][isTime ? 1 : 0];
    ++counter;
    if (ZNFaultPatchTools::getNbPatchBeforeAutoSave() > counter) return false;
    counter = 0;

    core::Array<int> patches(kPatchGrowthStep);
    for (int id = 0; id < getNumberOfPatch(); ++id) {
        const ZNFaultPatch& patch = m_patches[id];
        if (patch.is2dFaultPatch() == is2dFaultPatch && isTimePatch(patch) == isTime)
            patches.add(id);
    }
    const std::unique_ptr<ZNFaultPatchManager> extracted(extractSubFaultPatchManager(patches));
    const QString name = isTime ? ZNFaultPatchTools::getAutoSaveFileNameTime()
                                : ZNFaultPatchTools::getAutoSaveFileNameDepth();
    // A failed write is reported by the writer; the next attempt waits a full step.
    extracted->writePickedFault(folder + QDir::separator() + name, is2dFaultPatch, nullptr, true);
    return true;
}

int ZNFaultPatchManager::getAutoSaveCounter(bool is2dFaultPatch, bool isTime) const
{
    return m_autoSaveCounters[is2dFaultPatch ? 1 : 0][isTime ? 1 : 0];
}

// ----- extraction -----

ZNFaultPatchManager* ZNFaultPatchManager::extractSubFaultPatchManager(
    const core::Array<int>& patchList) const
{
    const int n = getNumberOfPatch();
    core::Array<int> newId;   // per patch of this set: its id in the extract, -1 if left out
    core::Array<int> kept(kPatchGrowthStep);  // listed patches in list order
    newId.fill(n, -1);
    for (int id : patchList) {
        if (!isValidPatchId(id) || newId[id] >= 0) continue;
        kept.add(id);
        newId[id] = kept.size();
    }

    // The listed patches, then one spare patch that can be picked in.
    auto* sub = new ZNFaultPatchManager(kept.size() + 2);
    sub->m_blocSpace = m_blocSpace;
    sub->m_picked = m_picked;
    sub->m_withMesh = m_withMesh;
    sub->m_templateFaultLight = m_templateFaultLight;
    sub->m_secondFaultLight = m_secondFaultLight;

    core::Array<int> newRootOf;  // per root of this set: the root of its listed patches
    newRootOf.fill(n, -1);
    for (int k = 0; k < kept.size(); ++k) {
        const int id = kept[k];
        const int father = getFather(id);
        const int root = isValidPatchId(father) ? father : id;  // patch 0 is in no fault
        if (newRootOf[root] < 0) newRootOf[root] = newId[root] >= 0 ? newId[root] : k + 1;
        ZNFaultPatch& record = sub->m_patches[k + 1];
        record = m_patches[id];
        record.setFather(newRootOf[root]);
        m_pickedPoints.copyOneArray(id, sub->m_pickedPoints, k + 1);
        m_patchVoxels.copyOneArray(id, sub->m_patchVoxels, k + 1);
    }
    for (const ZN3DFaultPatchLight* light : m_faultLights) {
        const int root = light->getFaultId();
        if (!isValidPatchId(root) || newRootOf[root] < 0 || sub->findFaultLight(newRootOf[root]))
            continue;
        sub->appendFaultLight(copyForFault(*light, newRootOf[root]));
    }
    sub->initElementListBis();
    sub->fillFaultLightListPatchList();
    return sub;
}

// ----- concatenation -----

bool ZNFaultPatchManager::concatFaultPatchManager(const ZNFaultPatchManager& other)
{
    if (&other == this) {
        const ZNFaultPatchManager copy(*this);
        return concatFaultPatchManager(copy);
    }
    const int n = getNumberOfPatch();
    const int m = other.getNumberOfPatch();
    const int shift = n - 1;  // other's patch q becomes q + shift
    if (m <= 1) return true;
    const long long total = static_cast<long long>(n) + m - 1;
    if (total > INT_MAX) return false;
    const int size = static_cast<int>(total);
    if (!m_patches.reserve(size) || !m_visitStamps.reserve(size) || !m_nextInFault.reserve(size) ||
        !m_pickedPoints.setNumberOfArray(size) || !m_patchVoxels.setNumberOfArray(size)) {
        m_pickedPoints.setNumberOfArray(n);
        return false;
    }

    for (int q = 1; q < m; ++q) {
        ZNFaultPatch record = other.m_patches[q];
        const int father = record.getFather();
        record.setFather(father >= 1 && father < m ? father + shift : q + shift);
        m_patches.add(record);  // room reserved above
        other.m_pickedPoints.copyOneArray(q, m_pickedPoints, q + shift);
        other.m_patchVoxels.copyOneArray(q, m_patchVoxels, q + shift);
    }
    for (const ZN3DFaultPatchLight* light : other.m_faultLights)
        appendFaultLight(copyForFault(*light, light->getFaultId() + shift));
    if (m_blocSpace.isEmpty()) m_blocSpace = other.m_blocSpace;
    m_visitStamps.fill(size, m_currentStamp);
    initElementListBis();
    fillFaultLightListPatchList();
    return true;
}
