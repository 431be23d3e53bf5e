// Picking and editing of the fault set's picked points: appending, inserting, dragging,
// deleting, automatic points and cleaning.
#include "znfaultpatchmanager.h"

#include <algorithm>

#include <core/conventions.h>
#include <core/stickrules.h>
#include <zneventbus.h>
#include <znpickingviewer.h>

#include "znfaultsurface.h"

template <class Drop>
int ZNFaultPatchManager::removeEntries(int patchId, int* currentIndex, Drop drop)
{
    const int count = m_pickedPoints.getCount(patchId);
    core::PointWithBool* points = m_pickedPoints.getArray(patchId);
    if (!isValidPatchId(patchId) || count <= 0 || !points) return 0;

    // Decide on the list as it stands: the stick rules look at neighbours.
    core::Array<char> dropped(count);
    dropped.resize(count);
    for (int k = 0; k < count; ++k) dropped[k] = drop(points, count, k) ? 1 : 0;

    const bool remap = currentIndex && *currentIndex >= 0 && *currentIndex < count;
    int newCurrent = core::kNoValue;  // where the cursor's entry lands
    int kept = 0;
    for (int k = 0; k < count; ++k) {
        if (dropped[k]) continue;
        if (remap && *currentIndex == k) newCurrent = kept;
        points[kept++] = points[k];
    }
    if (remap) *currentIndex = newCurrent;
    m_pickedPoints.setArraySize(patchId, kept, true);
    return count - kept;
}

// ----- single edits -----

bool ZNFaultPatchManager::addPickedPoint(const core::PointWithBool& point)
{
    return addPickedPoint(m_currentPickedFaultId, point);
}

bool ZNFaultPatchManager::addPickedPoint(int patchId, const core::PointWithBool& point)
{
    return isValidPatchId(patchId) && m_pickedPoints.addElement(patchId, point, false);
}

bool ZNFaultPatchManager::insertPickedPoint(int patchId, int index, const core::vec3& position)
{
    const int count = getNumberOfPickedPoint(patchId);
    if (!isValidPatchId(patchId) || index < 0 || index > count) return false;
    m_pickedPoints.insertElement(patchId, index, core::PointWithBool(position, false));
    return m_pickedPoints.getCount(patchId) == count + 1;
}

bool ZNFaultPatchManager::setPickedPoint(int patchId, int index, const core::PointWithBool& point)
{
    if (!isValidPatchId(patchId)) return false;
    core::PointWithBool* entry = m_pickedPoints.element(patchId, index);
    if (!entry) return false;
    *entry = point;
    return true;
}

const core::PointWithBool* ZNFaultPatchManager::getPickedPoint(int patchId, int index) const
{
    return isValidPatchId(patchId) ? m_pickedPoints.element(patchId, index) : nullptr;
}

bool ZNFaultPatchManager::removePickedPoint(int patchId, int index)
{
    if (!isValidPatchId(patchId)) return false;
    m_currentMovingPointId = core::kNoValue;
    return m_pickedPoints.removeElement(patchId, index);
}

bool ZNFaultPatchManager::removePickedMovingPoint()
{
    const int moving = m_currentMovingPointId;
    m_currentMovingPointId = core::kNoValue;
    return isValidPatchId(m_currentPickedFaultId) &&
           m_pickedPoints.removeElement(m_currentPickedFaultId, moving);
}

void ZNFaultPatchManager::setCurrentPickedFaultId(int faultId)
{
    if (faultId != core::kNoValue && !isValidPatchId(faultId)) return;
    for (ZNFaultSurface* surface : m_faultSurfaces)
        surface->setCurrentFault(surface->getFaultSurfaceId() == faultId);
    m_currentPickedFaultId = faultId;
}

bool ZNFaultPatchManager::isLastPickedPointNo_Value(int patchId) const
{
    if (!isValidPatchId(patchId)) return false;
    return core::sticks::isLastPickedPointNo_Value(m_pickedPoints.getArray(patchId),
                                                   m_pickedPoints.getCount(patchId));
}

// ----- the gathered list of a fault -----

int ZNFaultPatchManager::getFaultPickedPointArray(int faultId,
                                                  core::Array<core::PointWithBool>& points) const
{
    points.clear();
    core::Array<int> fault(16);
    if (!collectFault(faultId, fault)) return 0;
    for (int id : fault) {
        const core::PointWithBool* entries = m_pickedPoints.getArray(id);
        const int count = m_pickedPoints.getCount(id);
        for (int k = 0; entries && k < count; ++k) points.add(entries[k]);
    }
    return points.size();
}

int ZNFaultPatchManager::getPatchIdFromPickedPointId(int faultId, int pickedPointId,
                                                     int& indexInPatch) const
{
    core::Array<int> fault(16);
    if (pickedPointId < 0 || !collectFault(faultId, fault)) return core::kNoValue;
    int first = 0;  // gathered index of the current patch's first entry
    for (int id : fault) {
        const int count = std::max(0, m_pickedPoints.getCount(id));
        if (pickedPointId < first + count) {
            indexInPatch = pickedPointId - first;
            return id;
        }
        first += count;
    }
    return core::kNoValue;
}

// Insertion rules, on the fault's gathered list and the entry i nearest to the cursor on
// screen:
// - the cursor lies along the segment (j - 1, j) next to i: insert before j (mode 1);
// - i is not the last entry: insert before i, or, when i ends its stick, before the
//   entry after it so that the stick grows (mode 3);
// - i is the last entry of the fault: append after it (mode 2).
// When the last point of a patch ends its stick and another patch of the fault follows,
// "the entry after it" is the first entry of that patch: the gathered list decides.
core::Triplet ZNFaultPatchManager::getNearestPatchIdAndPointId(
    int faultId, const core::vec3& position, const ZNPickingViewer* viewer) const
{
    const core::Triplet none(core::kNoValue, core::kNoValue, core::kNoValue);
    if (!isValidPatchId(faultId) || !viewer) return none;
    core::Array<core::PointWithBool> gathered(64);
    const int n = getFaultPickedPointArray(faultId, gathered);
    if (n == 0) return none;

    const ZNPickingViewer::NearestEntry nearest =
        viewer->getNearestPoint2D(viewer->projectToScreen(position), gathered.data(), n);
    const int i = nearest.entry;
    if (i == core::kNoValue) return none;

    int entry = i;                  // gathered index the result points at
    int mode = AppendAfter;
    if (nearest.segmentEnd != core::kNoValue) {
        entry = nearest.segmentEnd;
        mode = InsertBetween;
    } else if (i != n - 1) {
        if (core::sticks::isPickedPointStopStick(gathered.data(), n, i)) entry = i + 1;
        mode = InsertBefore;
    }
    int index = core::kNoValue;
    const int patch = getPatchIdFromPickedPointId(faultId, entry, index);
    if (patch == core::kNoValue) return none;
    return core::Triplet(patch, index, mode);
}

void ZNFaultPatchManager::insertMovingPointBis(int patchId, const core::vec3& position,
                                               const ZNPickingViewer* viewer)
{
    if (!isValidPatchId(patchId)) return;
    // Stale automatic points must not decide where the point goes.
    if (viewer && viewer->isPatchShown(this, patchId))
        removeAutomaticPickedPoints(patchId, &m_currentMovingPointId);
    // The dragged point is taken out and placed again at its new best position.
    if (m_currentMovingPointId >= 0 && m_currentMovingPointId < getNumberOfPickedPoint(patchId)) {
        m_pickedPoints.removeElement(patchId, m_currentMovingPointId);
        m_currentMovingPointId = core::kNoValue;
    }

    const core::Triplet place = getNearestPatchIdAndPointId(getFather(patchId), position, viewer);
    const int target = place.x;  // patch that receives the point
    m_currentPickedFaultId = target;
    if (target != patchId) createAdditionalPoint(patchId, viewer);

    if (target != core::kNoValue) {
        if (place.z == AppendAfter) {
            m_pickedPoints.addElement(target, core::PointWithBool(position, false), false);
            m_currentMovingPointId = place.y + 1;
        } else {
            insertPickedPoint(target, place.y, position);
            m_currentMovingPointId = place.y;
        }
    }
    createAdditionalPoint(m_currentPickedFaultId, viewer);
}

// ----- automatic points -----

bool ZNFaultPatchManager::createAdditionalPoint(int patchId, const ZNPickingViewer* viewer)
{
    if (!removeAdditionalPoint(patchId, viewer)) return false;
    geom::RandomLine section;
    if (viewer->getShownRandomLine(section)) resamplePatchWithRandomLine(patchId, section);
    return true;
}

bool ZNFaultPatchManager::removeAdditionalPoint(int patchId, const ZNPickingViewer* viewer)
{
    if (!isValidPatchId(patchId) || !viewer || !viewer->isPatchShown(this, patchId))
        return false;
    // The moving point cursor indexes the current picked fault's list.
    int* cursor = patchId == m_currentPickedFaultId ? &m_currentMovingPointId : nullptr;
    removeAutomaticPickedPoints(patchId, cursor);
    return true;
}

int ZNFaultPatchManager::removeAutomaticPickedPoints(int patchId, int* currentIndex)
{
    return removeEntries(patchId, currentIndex,
                         [](const core::PointWithBool* p, int, int k) { return p[k].flag; });
}

// ----- cleaning -----

void ZNFaultPatchManager::cleanFaultPicking(int faultId)
{
    removeIsolatedPointForOneFault(faultId);
    removePickingInterruptionForOneFault(faultId);
}

int ZNFaultPatchManager::forEachPatchOfFault(int faultId, int (ZNFaultPatchManager::*perPatch)(int))
{
    core::Array<int> fault(16);
    if (!collectFault(faultId, fault)) return 0;
    int removed = 0;
    for (int id : fault) removed += (this->*perPatch)(id);
    return removed;
}

int ZNFaultPatchManager::removeIsolatedPointForOneFault(int faultId)
{
    return forEachPatchOfFault(faultId, &ZNFaultPatchManager::removeIsolatedPointForOnePatch);
}

int ZNFaultPatchManager::removePickingInterruptionForOneFault(int faultId)
{
    return forEachPatchOfFault(faultId, &ZNFaultPatchManager::removePickingInterruptionForOnePatch);
}

int ZNFaultPatchManager::removeIsolatedPointForAllPatch()
{
    int removed = 0;
    for (int id = 0; id < getNumberOfPatch(); ++id) removed += removeIsolatedPointForOnePatch(id);
    return removed;
}

int ZNFaultPatchManager::removeIsolatedPointForOnePatch(int patchId)
{
    const int removed = removeEntries(patchId, nullptr, core::sticks::isPointIsolated);
    if (removed > 0) m_currentMovingPointId = core::kNoValue;
    return removed;
}

int ZNFaultPatchManager::removePickingInterruptionForOnePatch(int patchId)
{
    const int removed = removeEntries(
        patchId, nullptr, [](const core::PointWithBool* p, int count, int k) {
            return p[k].isSeparator() && k + 1 < count && p[k + 1].isSeparator();
        });
    if (removed > 0) m_currentMovingPointId = core::kNoValue;
    return removed;
}

// ----- erasing -----

int ZNFaultPatchManager::removePickedPointInsideEllipseForOnePatch(int patchId, const core::vec2& centre,
                                                                    double radiusX, double radiusY,
                                                                    const ZNPickingViewer* viewer)
{
    if (!isValidPatchId(patchId) || !viewer || !(radiusX > 0.0) || !(radiusY > 0.0)) return 0;
    int* cursor = patchId == m_currentPickedFaultId ? &m_currentMovingPointId : nullptr;
    if (cursor && *cursor != core::kNoValue && (*cursor < 0 || *cursor >= getNumberOfPickedPoint(patchId))) {
        ZNEventBus::sendMessage(ZNEventBus::Detail, QStringLiteral("pb with currentMovingPointId"));
        *cursor = core::kNoValue;
    }
    const int erased = removeEntries(patchId, cursor, [&](const core::PointWithBool* p, int, int k) {
        if (p[k].isSeparator()) return false;
        const core::vec2 d = viewer->projectToScreen(p[k].position()) - centre;
        const double u = d.x / radiusX;
        const double v = d.y / radiusY;
        return u * u + v * v <= 1.0;
    });
    if (erased == 0) return 0;
    // The sticks that remain keep one separator between them and none in front.
    removeEntries(patchId, cursor, [](const core::PointWithBool* p, int count, int k) {
        return p[k].isSeparator() && (k == 0 || (k + 1 < count && p[k + 1].isSeparator()));
    });
    return erased;
}

int ZNFaultPatchManager::removePickedPointInsideEllipseForOneFault(int faultId, const core::vec2& centre,
                                                                    double radiusX, double radiusY,
                                                                    const ZNPickingViewer* viewer)
{
    core::Array<int> fault(16);
    if (!collectFault(faultId, fault)) return 0;
    int erased = 0;
    for (int id : fault) erased += removePickedPointInsideEllipseForOnePatch(id, centre, radiusX, radiusY, viewer);
    return erased;
}
