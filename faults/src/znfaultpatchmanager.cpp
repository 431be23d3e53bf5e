#include "znfaultpatchmanager.h"

#include <algorithm>

#include <core/assertion.h>
#include <core/conventions.h>
#include <zneventbus.h>
#include <znprocess.h>

#include "znfaultpatchmanagerconfig.h"
#include "znfaultsurface.h"

namespace {
constexpr const char* kSource = "faults/src/znfaultpatchmanager";
constexpr int kEndOfList = -1;  // link of the last patch of a linked list
constexpr int kParallelPatchCount = 1000;  // fewer patches are not worth the threads
} // namespace

ZNFaultPatchManager::ZNFaultPatchManager() : ZNFaultPatchManager(kInitialNumberOfPatch) {}

ZNFaultPatchManager::ZNFaultPatchManager(int numberOfPatch)
{
    initMembers();
    init(numberOfPatch, true);
}

ZNFaultPatchManager::ZNFaultPatchManager(const ZNFaultPatchManager& other)
    : QObject(), ZNObject(), georef::CrsObjectAbstract()
{
    initMembers();
    init(other.getNumberOfPatch(), true);
    copyModelFrom(other);
}

ZNFaultPatchManager::~ZNFaultPatchManager()
{
    ZNProcess::removeProcessObject(this);
    clearUndoConfigurationList();
    deleteFaultLights();
}

void ZNFaultPatchManager::initMembers()
{
    m_pickedPoints.init(0, kPointGrowthStep);
    m_patchVoxels.init(0, kPointGrowthStep);
}

void ZNFaultPatchManager::copyModelFrom(const ZNFaultPatchManager& other)
{
    m_blocSpace = other.m_blocSpace;
    m_picked = other.m_picked;
    m_templateFaultLight = other.m_templateFaultLight;
    m_secondFaultLight = other.m_secondFaultLight;
    m_patches = other.m_patches;
    m_visitStamps = other.m_visitStamps;
    m_currentStamp = other.m_currentStamp;
    m_nextInFault = other.m_nextInFault;
    m_patchVoxels = other.m_patchVoxels;
    m_contacts = other.m_contacts;
    m_allocSize = other.m_allocSize;
    m_minimumPatchSize = other.m_minimumPatchSize;
    m_pickedPoints = other.m_pickedPoints;
    for (const ZN3DFaultPatchLight* light : other.m_faultLights)
        appendFaultLight(new ZN3DFaultPatchLight(*light));
    m_locked = other.m_locked;
    m_storedId = other.m_storedId;
    m_version = other.m_version;
    m_withMesh = other.m_withMesh;
}

void ZNFaultPatchManager::init(int numberOfPatch, bool resetDescriptors)
{
    if (!CORE_CHECK(numberOfPatch >= 1, "ZNFaultPatchManager::init", kSource)) numberOfPatch = 1;
    ZNProcess::insertProcessObject(this);

    m_patches.setGrowthStep(kPatchGrowthStep);
    m_workingPatchList.setGrowthStep(kPatchGrowthStep);
    m_visitStamps.setGrowthStep(kPatchGrowthStep);
    m_nextInFault.setGrowthStep(kPatchGrowthStep);
    m_patches.clear();
    m_workingPatchList.clear();
    m_patches.resize(numberOfPatch);
    for (int i = 0; i < numberOfPatch; ++i) {
        m_patches[i] = ZNFaultPatch();
        m_patches[i].setFather(i);
    }
    m_visitStamps.fill(numberOfPatch, m_currentStamp);

    m_pickedPoints.init(numberOfPatch, kPointGrowthStep);
    m_patchVoxels.init(numberOfPatch, kPointGrowthStep);
    m_nextInFault.fill(numberOfPatch, kEndOfList);
    initElementListBis();
    m_contacts = core::MultiArray<int>();

    m_picked = true;
    m_locked = false;
    m_currentPickedFaultId = core::kNoValue;
    m_currentMovingPointId = core::kNoValue;
    m_historyLimit = kDefaultHistoryLimit;
    m_version = kLastVersion;
    m_withMesh = true;
    m_storedMeshes.clear();
    for (auto& counters : m_autoSaveCounters) counters[0] = counters[1] = 0;

    if (resetDescriptors) {
        m_templateFaultLight.init();
        m_secondFaultLight.init();
        deleteFaultLights();
    } else {
        for (int i = m_faultLights.size() - 1; i >= 0; --i) {
            if (isValidPatchId(m_faultLights[i]->getFaultId())) continue;
            delete m_faultLights.takeAt(i);
        }
        m_lightIndexCurrent = false;
    }
}

QString ZNFaultPatchManager::getZNObjectType() const
{
    return m_picked ? QStringLiteral("ZNPickedFaultPatchManager")
                    : QStringLiteral("ZNFaultPatchManager");
}

georef::UnitObject ZNFaultPatchManager::GetUnitObject() const
{
    return getUnitObjectFromMiddlePatch();
}

void ZNFaultPatchManager::SetUnitObject(const georef::UnitObject& unitObject)
{
    SetUnitObjectToAllPatch(unitObject);
}

int ZNFaultPatchManager::addPatch()
{
    const int id = m_patches.size();
    const int n = id + 1;
    if (!m_patches.reserve(n) || !m_visitStamps.reserve(n) || !m_nextInFault.reserve(n) ||
        !m_pickedPoints.setNumberOfArray(n))
        return core::kNoValue;
    if (!m_patchVoxels.setNumberOfArray(n)) {
        m_pickedPoints.setNumberOfArray(id);
        return core::kNoValue;
    }
    ZNFaultPatch record;
    record.setFather(id);
    // Every patch carries the units; the set's are read from its middle patch, which a
    // new patch may become.
    if (id > 0) record.SetUnitObject(GetUnitObject());
    m_patches.add(record);
    m_visitStamps.add(m_currentStamp);
    m_nextInFault.add(kEndOfList);  // a new patch is a fault of its own
    return id;
}

core::vec3 ZNFaultPatchManager::getVoxelPosition(int id, const core::ByteTriplet& v) const
{
    int16_t ox = core::kNoValue;
    int16_t oy = core::kNoValue;
    int16_t oz = core::kNoValue;
    if (const ZNFaultPatch* patch = getFaultPatch(id)) patch->getOrigin(ox, oy, oz);
    const int u = static_cast<uint8_t>(v.x);
    const int w = static_cast<uint8_t>(v.y);
    const int s = v.z;
    return {double(ox + u), double(oy + w), double(oz + s)};
}

georef::UnitObject ZNFaultPatchManager::getUnitObject(int id) const
{
    const ZNFaultPatch* patch = getFaultPatch(id);
    return patch ? patch->GetUnitObject() : georef::UnitObject();
}

georef::UnitObject ZNFaultPatchManager::getUnitObjectFromMiddlePatch() const
{
    return getUnitObject(getNumberOfPatch() / 2);
}

void ZNFaultPatchManager::SetUnitObjectToAllPatch(const georef::UnitObject& unitObject)
{
    for (ZNFaultPatch& patch : m_patches) patch.SetUnitObject(unitObject);
}

// ----- patch tree -----

int ZNFaultPatchManager::getFather(int id) const
{
    const int n = getNumberOfPatch();
    if (id < 0 || id >= n) return id;
    int k = id;
    for (int steps = 0; steps <= n; ++steps) {
        const int f = m_patches[k].getFather();
        if (f == k || f < 0 || f >= n) return f == k ? k : f;
        k = f;
    }
    CORE_CHECK(false, "ZNFaultPatchManager::getFather", kSource);  // a father cycle
    return k;
}

void ZNFaultPatchManager::setFather(int id, int father)
{
    if (ZNFaultPatch* patch = getFaultPatch(id)) patch->setFather(father);
}

int ZNFaultPatchManager::getInitialFather(int id) const
{
    const int n = getNumberOfPatch();
    int start = id;
    for (int walks = 0; walks <= n; ++walks) {
        const int end = getFather(start);
        if (end == start || end < 0 || end >= n) return end;
        start = end;
    }
    return start;
}

void ZNFaultPatchManager::initElementListBis()
{
    const int n = getNumberOfPatch();
    m_nextInFault.fill(n, kEndOfList);
    // Walking down and inserting each patch right after its root leaves every list in
    // increasing id order behind the root.
    for (int i = n - 1; i >= 1; --i) {
        const int root = getFather(i);
        if (root == i || root < 1 || root >= n) continue;
        m_nextInFault[i] = m_nextInFault[root];
        m_nextInFault[root] = i;
    }
}

void ZNFaultPatchManager::getPatchListWithLinkedList(int id, core::Array<int>& list,
                                                     bool clearFirst) const
{
    if (clearFirst) list.clear();
    const int n = getNumberOfPatch();
    if (id < 0 || id >= n) return;
    const int root = getFather(id);
    if (id == 0 || root < 1 || root >= n) {
        list.add(id);
        return;
    }
    int k = root;
    for (int steps = 0; k != kEndOfList; ++steps) {
        if (steps >= n || k < 0 || k >= n) {
            ZNEventBus::sendMessage(ZNEventBus::Error,
                                    QStringLiteral("Loop in getPatchListWithLinkedList"));
            return;
        }
        list.add(k);
        k = m_nextInFault[k];
    }
}

int ZNFaultPatchManager::incrementCurrentIndex() { return ++m_currentStamp; }

void ZNFaultPatchManager::getPatchListInsideFault(const core::Array<int>& patches,
                                                  core::Array<int>& list)
{
    list.clear();
    const int n = getNumberOfPatch();
    const int stamp = incrementCurrentIndex();
    for (int id : patches)
        if (id >= 0 && id < n) m_visitStamps[id] = -stamp;
    core::Array<int> fault(16);
    for (int id : patches) {
        if (id < 0 || id >= n || m_visitStamps[id] != -stamp) continue;
        getPatchListWithLinkedList(id, fault, true);
        for (int member : fault) {
            list.add(member);
            m_visitStamps[member] = stamp;
        }
    }
}

bool ZNFaultPatchManager::collectFault(int faultId, core::Array<int>& list) const
{
    list.clear();
    if (!isValidPatchId(faultId)) return false;
    getPatchListWithLinkedList(faultId, list, true);
    return true;
}

// ----- counts -----

int ZNFaultPatchManager::getNumberOfPickedPoint(int id) const
{
    if (!isValidPatchId(id)) return 0;
    if (!m_pickedPoints.hasCountArray()) return core::kNoValue;
    return m_pickedPoints.getCount(id);
}

int ZNFaultPatchManager::getNumberOfValidPickedPoint(int id) const
{
    const int count = getNumberOfPickedPoint(id);
    const core::PointWithBool* points = m_pickedPoints.getArray(id);
    if (count <= 0 || !points) return 0;
    return static_cast<int>(std::count_if(points, points + count,
                                           [](const core::PointWithBool& p) {
                                               return !p.isSeparator();
                                           }));
}

int ZNFaultPatchManager::getNumberOfValidPatch()
{
    int valid = 0;
    for (int i = 0; i < getNumberOfPatch(); ++i) {
        const int count = m_pickedPoints.getCount(i);
        if (count <= 0) continue;
        m_patches[i].setNbPoint(count);
        ++valid;
    }
    return valid;
}

int ZNFaultPatchManager::getNumberOfFaultPickedPoint(int faultId) const
{
    core::Array<int> fault(16);
    if (!collectFault(faultId, fault)) return 0;
    int total = 0;
    for (int id : fault) total += std::max(0, m_pickedPoints.getCount(id));
    return total;
}

// ----- patch parameters -----

void ZNFaultPatchManager::computePatchParameters()
{
    const int n = getNumberOfPatch();
    int mixed = 0;  // patches holding both picked points and voxels
    // Each record is written by one thread from its own points, in the same order as a
    // single thread would: the result does not depend on the thread count.
#pragma omp parallel for schedule(dynamic, 256) reduction(+ : mixed) if (n > kParallelPatchCount)
    for (int i = 0; i < n; ++i) {
        ZNFaultPatch& patch = m_patches[i];
        patch.clearParameters();
        const int picked = m_pickedPoints.getCount(i);
        const int voxels = m_patchVoxels.getCount(i);
        if (picked > 0 && voxels > 0) ++mixed;
        if (picked < 1 && voxels > 0) {
            const core::ByteTriplet* offsets = m_patchVoxels.getArray(i);
            patch.setNbPoint(voxels);
            for (int k = 0; k < voxels; ++k)
                patch.addToSums(getVoxelPosition(i, offsets ? offsets[k] : core::ByteTriplet()));
        } else {
            updatePickedPatchParameters(i);
        }
    }
    // One message per such patch, sent from this thread.
    for (int k = 0; k < mixed; ++k)
        ZNEventBus::sendMessage(ZNEventBus::Error, QStringLiteral("Pb with picked patch"));
}

void ZNFaultPatchManager::updatePickedPatchParameters(int id)
{
    ZNFaultPatch* patch = getFaultPatch(id);
    if (!patch) return;
    patch->clearParameters();
    const int count = m_pickedPoints.getCount(id);
    const core::PointWithBool* points = m_pickedPoints.getArray(id);
    for (int k = 0; points && k < count; ++k)
        if (!points[k].isSeparator() && !points[k].flag) patch->addPoint(points[k].position());
}

// ----- fault surfaces -----

void ZNFaultPatchManager::attachFaultSurface(ZNFaultSurface* surface)
{
    if (surface && !m_faultSurfaces.contains(surface)) m_faultSurfaces.append(surface);
}

void ZNFaultPatchManager::detachFaultSurface(ZNFaultSurface* surface)
{
    m_faultSurfaces.removeAll(surface);
}

ZNFaultSurface* ZNFaultPatchManager::findFaultSurface(int faultId) const
{
    for (ZNFaultSurface* surface : m_faultSurfaces)
        if (surface->getFaultSurfaceId() == faultId) return surface;
    return nullptr;
}

// ----- invariants -----

namespace {

template <class T>
bool containerFits(const core::MultiArray<T>& container, int n)
{
    if (!container.hasCountArray() || container.getNumberOfArray() != n) return false;
    for (int i = 0; i < n; ++i) {
        const int count = container.getCount(i);
        if (count < 0 || count > container.getCapacity(i)) return false;
        if (count > 0 && !container.getArray(i)) return false;
    }
    return true;
}

bool fail(QString* why, const QString& rule)
{
    if (why) *why = rule;
    return false;
}

} // namespace

bool ZNFaultPatchManager::isValid(QString* why) const
{
    const int n = getNumberOfPatch();
    if (n < 1) return fail(why, QStringLiteral("no reserved patch"));
    if (!containerFits(m_pickedPoints, n)) return fail(why, QStringLiteral("picked points"));
    if (!containerFits(m_patchVoxels, n)) return fail(why, QStringLiteral("patch voxels"));
    if (m_visitStamps.size() != n || m_nextInFault.size() != n)
        return fail(why, QStringLiteral("stamps or links"));
    for (int i = 0; i < n; ++i) {
        const int f = m_patches[i].getFather();
        if (f < 0 || f >= n) return fail(why, QStringLiteral("father of %1").arg(i));
    }
    for (int i = 0; i < n; ++i) {
        if (getFather(i) != i) continue;  // lists start at roots
        int k = m_nextInFault[i];
        for (int steps = 0; k != kEndOfList; ++steps, k = m_nextInFault[k]) {
            if (steps >= n || k < 0 || k >= n) return fail(why, QStringLiteral("list loop"));
            if (getFather(k) != i) return fail(why, QStringLiteral("list of %1").arg(i));
        }
    }
    for (const ZN3DFaultPatchLight* light : m_faultLights)
        if (!light || !isValidPatchId(light->getFaultId()))
            return fail(why, QStringLiteral("descriptor id"));
    if (m_currentPickedFaultId != core::kNoValue && !isValidPatchId(m_currentPickedFaultId))
        return fail(why, QStringLiteral("current picked fault"));
    if (m_currentMovingPointId != core::kNoValue && m_currentMovingPointId < 0)
        return fail(why, QStringLiteral("moving point"));
    if (m_currentConfig && !m_history.contains(m_currentConfig))
        return fail(why, QStringLiteral("current snapshot"));
    if (m_history.size() > m_historyLimit + 1) return fail(why, QStringLiteral("history depth"));
    return true;
}
