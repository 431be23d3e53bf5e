// Fault descriptors of the fault set, and the constructors that build a fault set from
// points, sticks or another fault set's picked points.
#include "znfaultpatchmanager.h"

#include <algorithm>
#include <climits>

#include <core/conventions.h>

namespace {

// The separator entry between two sticks of a hand-made list.
const core::PointWithBool kSeparator = core::PointWithBool::separator();

} // namespace

// ----- descriptors -----

ZN3DFaultPatchLight* ZNFaultPatchManager::createNewFaultLight(
    int faultId, const ZN3DFaultPatchLight* settings) const
{
    auto* light = new ZN3DFaultPatchLight();
    const QColor ownColour = light->getPen().color();  // drawn by the constructor
    if (settings) light->copy(settings, false);
    QPen pen = light->getPen();
    pen.setColor(ownColour);
    light->setPen(pen);
    light->setLink(0);
    light->setSaved(false);
    light->setFaultId(faultId);
    return light;
}

ZN3DFaultPatchLight* ZNFaultPatchManager::insertNewFaultLight(int faultId)
{
    return insertNewFaultLight(faultId, m_templateFaultLight);
}

ZN3DFaultPatchLight* ZNFaultPatchManager::insertNewFaultLight(
    int faultId, const ZN3DFaultPatchLight& settings)
{
    ZN3DFaultPatchLight* light = createNewFaultLight(faultId, &settings);
    return insertNewFaultLight(light) ? light : nullptr;
}

bool ZNFaultPatchManager::insertNewFaultLight(ZN3DFaultPatchLight* light)
{
    if (!light) return false;
    if (!isValidPatchId(light->getFaultId())) {
        delete light;
        return false;
    }
    getPatchListWithLinkedList(light->getFaultId(), light->getPatchList(), true);
    const core::vec3 sampling = getMergedSamplingVect(light->getPatchList());
    light->setUtmPrecision(static_cast<int>(std::min(sampling.x, sampling.z)));
    light->setTimePrecision(static_cast<int>(sampling.y));
    appendFaultLight(light);
    return true;
}

void ZNFaultPatchManager::appendFaultLight(ZN3DFaultPatchLight* light)
{
    m_faultLights.append(light);
    if (!m_lightIndexCurrent) return;
    const int id = light->getFaultId();
    if (id < 0 || id >= static_cast<int>(m_lightPosition.size()))
        m_lightIndexCurrent = false;
    else if (m_lightPosition[id] < 0)
        m_lightPosition[id] = m_faultLights.size() - 1;
}

void ZNFaultPatchManager::deleteFaultLights()
{
    qDeleteAll(m_faultLights);
    m_faultLights.clear();
    m_lightIndexCurrent = false;
}

void ZNFaultPatchManager::indexFaultLights() const
{
    m_lightPosition.assign(static_cast<std::size_t>(getNumberOfPatch()), -1);
    for (int k = 0; k < m_faultLights.size(); ++k) {
        const int id = m_faultLights[k]->getFaultId();
        if (isValidPatchId(id) && m_lightPosition[id] < 0) m_lightPosition[id] = k;
    }
    m_lightIndexCurrent = true;
}

ZN3DFaultPatchLight* ZNFaultPatchManager::findFaultLight(int faultId) const
{
    if (!isValidPatchId(faultId)) return nullptr;
    if (!m_lightIndexCurrent || faultId >= static_cast<int>(m_lightPosition.size())) indexFaultLights();
    const int k = m_lightPosition[faultId];
    if (k < 0) return nullptr;
    if (k < m_faultLights.size() && m_faultLights[k]->getFaultId() == faultId) return m_faultLights[k];
    indexFaultLights();  // an id changed in place: look again once
    const int again = m_lightPosition[faultId];
    return again < 0 ? nullptr : m_faultLights[again];
}

void ZNFaultPatchManager::removeFaultLight(int faultId)
{
    if (ZN3DFaultPatchLight* light = findFaultLight(faultId)) removeFaultLight(light);
}

void ZNFaultPatchManager::removeFaultLight(ZN3DFaultPatchLight* light)
{
    if (!light || !m_faultLights.removeOne(light)) return;
    m_lightIndexCurrent = false;
    delete light;
}

bool ZNFaultPatchManager::removePickedFault(int faultId, RemovedFault* removed)
{
    if (!isValidPatchId(faultId) || getFather(faultId) != faultId) return false;
    RemovedFault taken;
    taken.faultId = faultId;
    core::Array<int> patches;
    getPatchListWithLinkedList(faultId, patches, true);
    bool hasPoints = false;
    for (int id : patches) {
        if (!isValidPatchId(id)) continue;
        const core::PointWithBool* entries = m_pickedPoints.getArray(id);
        const int count = m_pickedPoints.getCount(id);
        taken.patchIds.push_back(id);
        taken.points.emplace_back(entries, entries + (entries ? count : 0));
        hasPoints = hasPoints || count > 0;
    }
    ZN3DFaultPatchLight* light = findFaultLight(faultId);
    if (!hasPoints && !light) return false;
    if (light) {
        taken.descriptorIndex = m_faultLights.indexOf(light);
        taken.descriptor = *light;
    }
    for (int id : taken.patchIds) {
        m_pickedPoints.clearArray(id);
        if (id == m_currentPickedFaultId) {
            m_currentPickedFaultId = core::kNoValue;
            m_currentMovingPointId = core::kNoValue;
        }
    }
    removeFaultLight(light);
    if (removed) *removed = std::move(taken);
    return true;
}

bool ZNFaultPatchManager::restorePickedFault(const RemovedFault& removed)
{
    if (removed.patchIds.size() != removed.points.size()) return false;
    for (int id : removed.patchIds)
        if (!isValidPatchId(id) || m_pickedPoints.getCount(id) != 0) return false;
    if (removed.descriptorIndex >= 0 && findFaultLight(removed.faultId)) return false;
    for (std::size_t k = 0; k < removed.patchIds.size(); ++k)
        for (const core::PointWithBool& p : removed.points[k])
            m_pickedPoints.addElement(removed.patchIds[k], p, false);
    if (removed.descriptorIndex >= 0) {
        auto* light = new ZN3DFaultPatchLight(removed.descriptor);
        m_faultLights.insert(std::min(removed.descriptorIndex, static_cast<int>(m_faultLights.size())), light);
        m_lightIndexCurrent = false;
    }
    return true;
}

void ZNFaultPatchManager::fillFaultLightListPatchList()
{
    for (ZN3DFaultPatchLight* light : m_faultLights)
        getPatchListWithLinkedList(light->getFaultId(), light->getPatchList(), true);
}

core::vec3 ZNFaultPatchManager::getMergedSamplingVect(const core::Array<int>& patchList) const
{
    core::vec3 merged(core::kNoValueReal, core::kNoValueReal, core::kNoValueReal);
    for (int id : patchList) {
        const ZNFaultPatch* patch = getFaultPatch(id);
        if (!patch) continue;
        const core::vec3& s = patch->getSamplingVect();
        for (int c = 0; c < 3; ++c)
            merged[c] = merged[c] == core::kNoValueReal ? s[c] : std::min(merged[c], s[c]);
    }
    return merged;
}

// ----- conversion constructors -----

void ZNFaultPatchManager::initForRows(int numberOfRows, int utmPrecision, int timePrecision)
{
    init(std::max(kInitialNumberOfPatch, numberOfRows + 1), true);
    const core::vec3 sampling(utmPrecision, timePrecision, utmPrecision);
    for (int id = 1; id < getNumberOfPatch(); ++id) m_patches[id].setSamplingVect(sampling);
}

void ZNFaultPatchManager::appendStick(int patchId, const core::vec3& start, const core::vec3& end)
{
    if (m_pickedPoints.getCount(patchId) > 0) m_pickedPoints.addElement(patchId, kSeparator, false);
    m_pickedPoints.addElement(patchId, core::PointWithBool(start), false);
    m_pickedPoints.addElement(patchId, core::PointWithBool(end), false);
}

void ZNFaultPatchManager::insertFaultLightsForPickedPatches()
{
    for (int id = 1; id < getNumberOfPatch(); ++id)
        if (m_pickedPoints.getCount(id) > 0) insertNewFaultLight(id);
}

ZNFaultPatchManager::ZNFaultPatchManager(const core::MultiArray<core::vec3>& faults,
                                         int utmPrecision, int timePrecision)
{
    initMembers();
    const int rows = faults.getNumberOfArray();
    initForRows(rows, utmPrecision, timePrecision);
    for (int r = 0; r < rows; ++r) {
        const core::vec3* points = faults.getArray(r);
        // Room for the whole row at once: the list's small growth step would copy a
        // fault's points once for every few points added.
        m_pickedPoints.setArraySize(r + 1, faults.getCount(r), false);
        for (int k = 0; points && k < faults.getCount(r); ++k)
            m_pickedPoints.addElement(r + 1, core::PointWithBool(points[k]), false);
    }
    insertFaultLightsForPickedPatches();
}

ZNFaultPatchManager::ZNFaultPatchManager(const core::MultiArray<core::vec3>& faults,
                                         const georef::UnitObject& unitObject,
                                         int utmPrecision, int timePrecision)
    : ZNFaultPatchManager(faults, utmPrecision, timePrecision)
{
    SetUnitObjectToAllPatch(unitObject);
}

ZNFaultPatchManager::ZNFaultPatchManager(const core::MultiArray<geom::Line>& faults,
                                         int utmPrecision, int timePrecision,
                                         int interpolationSize)
{
    initMembers();
    const int rows = faults.getNumberOfArray();
    initForRows(rows, utmPrecision, timePrecision);
    m_templateFaultLight.setInterpolationSize(interpolationSize);
    for (int r = 0; r < rows; ++r) {
        const geom::Line* lines = faults.getArray(r);
        // Room for the row's sticks at once (two points each, a separator between two).
        const int sticks = lines ? faults.getCount(r) : 0;
        if (sticks > 0 && sticks <= INT_MAX / 3) m_pickedPoints.setArraySize(r + 1, 3 * sticks - 1, false);
        for (int k = 0; lines && k < faults.getCount(r); ++k)
            appendStick(r + 1, lines[k].start, lines[k].end);
    }
    insertFaultLightsForPickedPatches();
}

ZNFaultPatchManager::ZNFaultPatchManager(const core::MultiArray<geom::Line>& faults,
                                         const ZN3DFaultPatchLight* settings)
{
    initMembers();
    const ZN3DFaultPatchLight defaults;
    const ZN3DFaultPatchLight& from = settings ? *settings : defaults;
    const int rows = faults.getNumberOfArray();
    initForRows(rows, from.getUtmPrecision(), from.getTimePrecision());
    m_templateFaultLight.copy(&from, false);
    m_templateFaultLight.setFaultId(-1);
    for (int r = 0; r < rows; ++r) {
        const geom::Line* lines = faults.getArray(r);
        // Room for the row's sticks at once (two points each, a separator between two).
        const int sticks = lines ? faults.getCount(r) : 0;
        if (sticks > 0 && sticks <= INT_MAX / 3) m_pickedPoints.setArraySize(r + 1, 3 * sticks - 1, false);
        for (int k = 0; lines && k < faults.getCount(r); ++k)
            appendStick(r + 1, lines[k].start, lines[k].end);
    }
    insertFaultLightsForPickedPatches();
}

ZNFaultPatchManager::ZNFaultPatchManager(const core::MultiArray<ZNFaultStick>& faults,
                                         const georef::UnitObject& unitObject,
                                         int utmPrecision, int timePrecision)
{
    initMembers();
    const int rows = faults.getNumberOfArray();
    initForRows(rows, utmPrecision, timePrecision);
    SetUnitObjectToAllPatch(unitObject);
    for (int r = 0; r < rows; ++r) {
        const ZNFaultStick* sticks = faults.getArray(r);
        QString name;  // of the first named stick of the row
        for (int k = 0; sticks && k < faults.getCount(r); ++k) {
            appendStick(r + 1, sticks[k].start(), sticks[k].end());
            if (name.isEmpty() && sticks[k].IsNamed()) name = sticks[k].GetFaultName();
        }
        if (m_pickedPoints.getCount(r + 1) <= 0) continue;
        ZN3DFaultPatchLight* light = insertNewFaultLight(r + 1);
        if (light && !name.isEmpty()) light->SetFaultName(name);
    }
}

ZNFaultPatchManager::ZNFaultPatchManager(int firstRow,
                                         const core::MultiArray<core::PointWithBool>& pickedPoints)
{
    initMembers();
    const int first = std::max(0, firstRow);
    const int rows = std::max(0, pickedPoints.getNumberOfArray() - first);
    initForRows(rows, kDefaultUtmPrecision, kDefaultTimePrecision);
    for (int r = 0; r < rows; ++r) pickedPoints.copyOneArray(first + r, m_pickedPoints, r + 1);
    insertFaultLightsForPickedPatches();
}
