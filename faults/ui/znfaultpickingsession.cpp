#include "znfaultpickingsession.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include <core/array.h>
#include <faultpalette.h>
#include <znfaultpatchmanager.h>
#include <znfaultpatchmanagerconfig.h>
#include <znpickingviewer.h>

namespace {
const QString kPickPoint = QStringLiteral("Pick Point");  // the history's own name for a pick
const QString kMovePoint = QStringLiteral("Move Point");
const QString kDeletePoint = QStringLiteral("Delete Point");
const QString kEndStick = QStringLiteral("End Stick");
const QString kNewFault = QStringLiteral("New Fault");
const QString kCleanFault = QStringLiteral("Clean Fault Picking");
const QString kErasePoints = QStringLiteral("Erase Points");
constexpr int kNoValue = -9999;
constexpr double kOnSection = 0.5;  // a point this close to the section (view units) lies on it
} // namespace

ZNFaultPickingSession::ZNFaultPickingSession(ZNFaultPatchManager* set, QObject* parent)
    : QObject(parent), m_set(set)
{
    keepSpares(kSparePatches);
}

int ZNFaultPickingSession::currentFault() const
{
    const int patch = m_set->getCurrentPickedFaultId();
    return m_set->isValidPatchId(patch) ? m_set->getFather(patch) : kNoValue;
}

void ZNFaultPickingSession::setCurrentFault(int faultId)
{
    if (faultId == currentFault()) return;
    m_set->setCurrentMovingPointId(kNoValue);
    m_set->setCurrentPickedFaultId(m_set->isValidPatchId(faultId) ? faultId : kNoValue);
    emit currentFaultChanged(currentFault());
}

// ----- snapshots -----

ZNFaultPickingSession::Snapshot ZNFaultPickingSession::snapshotBefore(const QString& action, int faultId) const
{
    const ZNFaultPatchManagerConfig* current = m_set->getCurrentConfiguration();
    if (faultId == kNoValue) {
        if (current && !current->isEditionMode()) return nullptr;  // the descriptors as they stand
        return Snapshot(m_set->getConfiguration(action, nullptr));
    }
    core::Array<int> patches;
    m_set->getPatchListWithLinkedList(faultId, patches, true);
    if (current && current->isEditionMode() && current->getPatchList().size() == patches.size()) {
        bool same = true;
        for (int k = 0; k < patches.size() && same; ++k) same = current->getPatchList()[k] == patches[k];
        if (same) return nullptr;  // the state the edit starts from is the current snapshot
    }
    return Snapshot(m_set->getConfiguration(action, &patches));
}

void ZNFaultPickingSession::commitEdit(const QString& action, int faultId, Snapshot before)
{
    // The steps an undo walks back: to the state before the edit, and on over the
    // snapshot before it when there was one, so that the history stands where it stood.
    const bool hadCurrent = m_set->getCurrentConfiguration() != nullptr;
    const int count = before && hadCurrent ? 2 : 1;
    if (before) m_set->insertUndoListConfiguration(before.release());
    m_set->insertUndoListConfiguration(action, faultId);
    emit edited(action, faultId, count);
}

std::vector<core::vec3> ZNFaultPickingSession::handPoints(int faultId) const
{
    core::Array<core::PointWithBool> points;
    m_set->getFaultPickedPointArray(faultId, points);
    std::vector<core::vec3> hand;
    for (const core::PointWithBool& p : points)
        if (!p.flag) hand.push_back(p.isSeparator() ? core::vec3(kNoValue, kNoValue, kNoValue) : p.position());
    return hand;
}

// ----- spare patches -----

namespace {
// True for a patch a new fault may take: empty, without descriptor, alone in its tree.
bool isSpare(const ZNFaultPatchManager& set, int id)
{
    if (set.getNumberOfPickedPoint(id) != 0 || set.findFaultLight(id) || set.getFather(id) != id) return false;
    core::Array<int> tree;
    set.getPatchListWithLinkedList(id, tree, true);
    return tree.size() == 1;
}
} // namespace

void ZNFaultPickingSession::keepSpares(int wanted)
{
    int spares = 0;
    for (int id = 1; id < m_set->getNumberOfPatch(); ++id) spares += isSpare(*m_set, id) ? 1 : 0;
    if (spares >= wanted) return;
    const bool hadHistory = m_set->getNumberOfConfiguration() > 0;
    for (int k = spares; k < kSparePatches; ++k)
        if (m_set->addPatch() == kNoValue) break;
    m_set->initElementListBis();
    if (hadHistory) {
        // Snapshots of the smaller fault set would restore nothing now.
        m_set->clearUndoConfigurationList();
        emit historyRestarted();
    }
}

int ZNFaultPickingSession::sparePatch()
{
    keepSpares(1);
    for (int id = 1; id < m_set->getNumberOfPatch(); ++id)
        if (isSpare(*m_set, id)) return id;
    return kNoValue;
}

int ZNFaultPickingSession::newFault(const QString& name)
{
    const int patch = sparePatch();
    if (patch == kNoValue) return kNoValue;
    Snapshot before = snapshotBefore(kNewFault, kNoValue);
    QString unique = name;
    if (unique.isEmpty()) {
        QStringList names;
        for (const ZN3DFaultPatchLight* light : m_set->getFaultLightList()) names << light->GetFaultName();
        for (int n = m_set->getFaultLightList().size() + 1; unique.isEmpty(); ++n)
            if (!names.contains(QStringLiteral("Fault %1").arg(n))) unique = QStringLiteral("Fault %1").arg(n);
    }
    const int rank = m_set->getFaultLightList().size();
    ZN3DFaultPatchLight* light = m_set->insertNewFaultLight(patch);
    if (!light) return kNoValue;
    light->SetFaultName(unique);
    QPen pen = light->getPen();
    pen.setColor(fault::faultColour(rank));
    light->setPen(pen);
    m_set->setCurrentMovingPointId(kNoValue);
    m_set->setCurrentPickedFaultId(patch);
    commitEdit(kNewFault, kNoValue, std::move(before));
    emit currentFaultChanged(patch);
    return patch;
}

// ----- gestures -----

bool ZNFaultPickingSession::pointNear(const QPointF& viewport, const ZNPickingViewer& viewer, int& patchId,
                                      int& index) const
{
    const int fault = currentFault();
    if (fault == kNoValue) return false;
    core::Array<core::PointWithBool> points;
    m_set->getFaultPickedPointArray(fault, points);
    double best = m_grabTolerance;
    int nearest = kNoValue;
    for (int k = 0; k < points.size(); ++k) {
        if (points[k].isSeparator() || points[k].flag) continue;
        const core::vec2 at = viewer.projectToScreen(points[k].position());
        const double d = std::hypot(at.x - viewport.x(), at.y - viewport.y());
        if (d <= best) {
            best = d;
            nearest = k;
        }
    }
    if (nearest == kNoValue) return false;
    int inPatch = 0;
    const int patch = m_set->getPatchIdFromPickedPointId(fault, nearest, inPatch);
    if (patch == kNoValue) return false;
    patchId = patch;
    index = inPatch;
    return true;
}

bool ZNFaultPickingSession::press(const core::vec3& world, const QPointF& viewport, const ZNPickingViewer& viewer)
{
    if (m_dragging) return false;
    if (currentFault() == kNoValue && newFault() == kNoValue) return false;
    const int fault = currentFault();
    int patch = kNoValue;
    int index = kNoValue;
    m_grabbed = pointNear(viewport, viewer, patch, index);
    m_set->setCurrentMovingPointId(kNoValue);  // the snapshot before holds every point
    m_dragBefore = snapshotBefore(m_grabbed ? kMovePoint : kPickPoint, fault);
    m_dragFault = fault;
    m_dragging = true;
    if (m_grabbed) {
        m_set->setCurrentPickedFaultId(patch);
        m_set->setCurrentMovingPointId(index);
        m_set->insertMovingPointBis(patch, world, &viewer);
        return true;
    }
    // A fault without points, or whose stick was just ended, starts a stick: the point is
    // appended. Otherwise it goes to its best place among the fault's points.
    const int patch0 = m_set->isValidPatchId(m_set->getCurrentPickedFaultId()) &&
                               m_set->getFather(m_set->getCurrentPickedFaultId()) == fault
                           ? m_set->getCurrentPickedFaultId()
                           : fault;
    m_set->removeAdditionalPoint(patch0, &viewer);
    const std::vector<core::vec3> hand = handPoints(fault);
    const bool onSection = std::any_of(hand.begin(), hand.end(), [&](const core::vec3& p) {
        return p.x != kNoValue && viewer.distanceToSection(p) <= kOnSection;
    });
    if (!hand.empty() && !onSection && !m_set->isLastPickedPointNo_Value(patch0))
        m_set->addPickedPoint(patch0, core::PointWithBool::separator());  // a new section: a new stick
    if (hand.empty() || m_set->isLastPickedPointNo_Value(patch0)) {
        m_set->addPickedPoint(patch0, core::PointWithBool(world));
        m_set->setCurrentPickedFaultId(patch0);
        m_set->setCurrentMovingPointId(m_set->getNumberOfPickedPoint(patch0) - 1);
        return true;
    }
    m_set->insertMovingPointBis(fault, world, &viewer);
    return true;
}

bool ZNFaultPickingSession::drag(const core::vec3& world, const ZNPickingViewer& viewer)
{
    if (!m_dragging) return false;
    const int patch = m_set->getCurrentPickedFaultId();
    if (!m_set->isValidPatchId(patch)) return false;
    m_set->insertMovingPointBis(patch, world, &viewer);
    return true;
}

bool ZNFaultPickingSession::release(const ZNPickingViewer& viewer)
{
    if (!m_dragging) return false;
    m_dragging = false;
    m_set->setCurrentMovingPointId(kNoValue);
    m_set->createAdditionalPoint(m_set->getCurrentPickedFaultId(), &viewer);
    commitEdit(m_grabbed ? kMovePoint : kPickPoint, m_dragFault, std::move(m_dragBefore));
    return true;
}

bool ZNFaultPickingSession::removeNear(const QPointF& viewport, const ZNPickingViewer& viewer)
{
    int patch = kNoValue;
    int index = kNoValue;
    if (m_dragging || !pointNear(viewport, viewer, patch, index)) return false;
    const int fault = currentFault();
    m_set->setCurrentMovingPointId(kNoValue);
    Snapshot before = snapshotBefore(kDeletePoint, fault);
    if (!m_set->removePickedPoint(patch, index)) return false;
    commitEdit(kDeletePoint, fault, std::move(before));
    return true;
}

bool ZNFaultPickingSession::endStick()
{
    const int patch = m_set->getCurrentPickedFaultId();
    const int fault = currentFault();
    if (m_dragging || fault == kNoValue) return false;
    // The stick ends after its last hand-picked point.
    const std::vector<core::vec3> hand = handPoints(fault);
    if (hand.empty() || hand.back().x == kNoValue) return false;
    m_set->setCurrentMovingPointId(kNoValue);
    Snapshot before = snapshotBefore(kEndStick, fault);
    m_set->removeAutomaticPickedPoints(patch, nullptr);
    m_set->addPickedPoint(patch, core::PointWithBool::separator());
    commitEdit(kEndStick, fault, std::move(before));
    return true;
}

bool ZNFaultPickingSession::cleanCurrentFault()
{
    const int fault = currentFault();
    if (m_dragging || fault == kNoValue) return false;
    m_set->setCurrentMovingPointId(kNoValue);
    const std::vector<core::vec3> was = handPoints(fault);
    Snapshot before = snapshotBefore(kCleanFault, fault);
    m_set->cleanFaultPicking(fault);
    if (handPoints(fault) == was) return false;
    commitEdit(kCleanFault, fault, std::move(before));
    return true;
}

int ZNFaultPickingSession::eraseInsideEllipse(const QPointF& centre, double radiusX, double radiusY,
                                               const ZNPickingViewer& viewer)
{
    const int fault = currentFault();
    if (m_dragging || fault == kNoValue) return 0;
    m_set->setCurrentMovingPointId(kNoValue);
    const std::vector<core::vec3> was = handPoints(fault);
    Snapshot before = snapshotBefore(kErasePoints, fault);
    const int erased =
        m_set->removePickedPointInsideEllipseForOneFault(fault, {centre.x(), centre.y()}, radiusX, radiusY, &viewer);
    if (handPoints(fault) == was) return erased;  // only automatic points went
    commitEdit(kErasePoints, fault, std::move(before));
    return erased;
}

void ZNFaultPickingSession::sectionChanged(const ZNPickingViewer& viewer)
{
    const int fault = currentFault();
    if (fault == kNoValue || m_dragging) return;
    core::Array<int> patches;
    m_set->getPatchListWithLinkedList(fault, patches, true);
    for (int patch : patches) m_set->createAdditionalPoint(patch, &viewer);
}
