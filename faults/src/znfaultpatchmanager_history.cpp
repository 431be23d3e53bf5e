// The undo and redo history of the fault set: snapshots, their linear history and the
// restore of a snapshot.
#include "znfaultpatchmanager.h"

#include <algorithm>
#include <cmath>

#include <core/conventions.h>

#include "znfaultpatchmanagerconfig.h"

namespace {

const QString kPickAction = QStringLiteral("Pick Point");

core::vec3 noFocus() { return {core::kNoValueReal, core::kNoValueReal, core::kNoValueReal}; }

// Rounded half away from zero, as the pick focus compares positions.
double roundHalfAway(double v) { return std::trunc(v > 0.0 ? v + 0.5 : v - 0.5); }

bool sameRounded(const core::PointWithBool& a, const core::PointWithBool& b)
{
    return roundHalfAway(a.x) == roundHalfAway(b.x) && roundHalfAway(a.y) == roundHalfAway(b.y) &&
           roundHalfAway(a.z) == roundHalfAway(b.z);
}

} // namespace

// ----- snapshots -----

void ZNFaultPatchManager::fillConfiguration(const QString& actionName,
                                            ZNFaultPatchManagerConfig* config,
                                            const core::Array<int>* patchList) const
{
    if (!config) return;
    const int n = getNumberOfPatch();
    config->init(n);
    config->setActionName(actionName);
    core::Array<int>& fathers = config->getFathers();
    for (int i = 0; i < n; ++i) fathers[i] = m_patches[i].getFather();

    if (patchList) {
        config->setEditionMode(true);
        for (int id : *patchList) {
            if (id < 0 || id >= n) continue;
            m_pickedPoints.copyOneArray(id, config->getPickedPoints(), id);
            config->getPatchList().add(id);
        }
    }
    config->setStoredId(m_storedId);
    if (!config->isEditionMode())
        for (const ZN3DFaultPatchLight* light : m_faultLights) config->appendFaultLightCopy(light);
}

ZNFaultPatchManagerConfig* ZNFaultPatchManager::getConfiguration(
    const QString& actionName, const core::Array<int>* patchList) const
{
    auto* config = new ZNFaultPatchManagerConfig();
    fillConfiguration(actionName, config, patchList);
    core::MultiArray<core::PointWithBool>& points = config->getPickedPoints();
    const bool dragging = isValidPatchId(m_currentPickedFaultId) && m_currentMovingPointId >= 0 &&
                          m_currentMovingPointId < points.getCount(m_currentPickedFaultId);
    if (config->isEditionMode() && dragging)
        points.removeElement(m_currentPickedFaultId, m_currentMovingPointId);
    return config;
}

// ----- the history -----

int ZNFaultPatchManager::historyIndexOf(const ZNFaultPatchManagerConfig* config) const
{
    return config ? m_history.indexOf(const_cast<ZNFaultPatchManagerConfig*>(config)) : -1;
}

ZNFaultPatchManagerConfig* ZNFaultPatchManager::insertUndoListConfiguration(
    const QString& actionName, int faultId)
{
    ZNFaultPatchManagerConfig* config = nullptr;
    if (isValidPatchId(faultId)) {
        getPatchListWithLinkedList(faultId, m_workingPatchList, true);
        config = getConfiguration(actionName, &m_workingPatchList);
    } else {
        config = getConfiguration(actionName, nullptr);
    }
    insertUndoListConfiguration(config);
    return config;
}

void ZNFaultPatchManager::insertUndoListConfiguration(ZNFaultPatchManagerConfig* config)
{
    if (!config || m_history.contains(config)) return;
    if (!m_history.isEmpty()) {
        const int current = historyIndexOf(m_currentConfig);
        if (current < 0) {
            qDeleteAll(m_history);
            m_history.clear();
        } else {
            // A new action after undos drops the undone snapshots, newest first.
            while (m_history.size() > current + 1) delete m_history.takeLast();
        }
    }
    // Tested before appending, so the history holds up to limit + 1 snapshots.
    if (m_history.size() > m_historyLimit) delete m_history.takeFirst();
    m_history.append(config);
    m_currentConfig = config;
}

bool ZNFaultPatchManager::undoWithLastConfiguration(core::vec3& focus)
{
    focus = noFocus();
    const int current = historyIndexOf(m_currentConfig);
    if (m_history.isEmpty() || current < 0) {
        m_currentConfig = nullptr;
        return false;
    }
    if (current == 0) return false;
    m_currentConfig = m_history[current - 1];
    focus = setConfiguration(m_currentConfig);
    return true;
}

bool ZNFaultPatchManager::redoWithLastConfiguration(core::vec3& focus)
{
    focus = noFocus();
    if (m_history.isEmpty()) return false;
    const int current = historyIndexOf(m_currentConfig);  // -1: before the first one
    if (current == m_history.size() - 1) return false;
    ZNFaultPatchManagerConfig* next = m_history[current + 1];
    if (!next) return false;
    focus = setConfiguration(next);
    m_currentConfig = next;
    return true;
}

void ZNFaultPatchManager::clearUndoConfigurationList()
{
    qDeleteAll(m_history);
    m_history.clear();
    m_currentConfig = nullptr;
}

bool ZNFaultPatchManager::isCurrentConfigInEditionMode() const
{
    return historyIndexOf(m_currentConfig) >= 0 && m_currentConfig->isEditionMode();
}

const ZNFaultPatchManagerConfig* ZNFaultPatchManager::getConfigurationAt(int i) const
{
    return i >= 0 && i < m_history.size() ? m_history[i] : nullptr;
}

// ----- restoring -----

// The point a pick undo or redo should show for one patch: the last point of the
// snapshot that differs, once rounded to integers, from the current point at the same
// index; when none differs, the snapshot's last point. False when neither exists.
bool ZNFaultPatchManager::findPickFocus(int patchId, const ZNFaultPatchManagerConfig& config,
                                        core::vec3& focus) const
{
    const core::MultiArray<core::PointWithBool>& snapshot = config.getPickedPoints();
    const int snapshotCount = std::max(0, snapshot.getCount(patchId));
    const int currentCount = std::max(0, m_pickedPoints.getCount(patchId));
    bool differed = false;
    for (int k = 0; k < currentCount && k < snapshotCount; ++k) {
        const core::PointWithBool& current = m_pickedPoints(patchId, k);
        if (current.isSeparator() || sameRounded(current, snapshot(patchId, k))) continue;
        focus = snapshot(patchId, k).position();
        differed = true;
    }
    if (differed) return true;
    if (snapshotCount == 0 || snapshot(patchId, snapshotCount - 1).isSeparator()) return false;
    focus = snapshot(patchId, snapshotCount - 1).position();
    return true;
}

// Restore rules: fathers are restored as the absolute value of the stored ones; an
// edition snapshot replaces the listed patches' points (and ends any drag: the moving
// point cursor is unset); a full snapshot replaces every descriptor by a copy of its
// own. For a "Pick Point" snapshot the focus is found on the first listed patch that
// gives one (findPickFocus); other actions give no focus. The linked lists are rebuilt.
core::vec3 ZNFaultPatchManager::setConfiguration(const ZNFaultPatchManagerConfig* config)
{
    core::vec3 focus = noFocus();
    const int n = getNumberOfPatch();
    if (!config || config->getNumberOfPatch() != n) return focus;
    const bool pick = config->getActionName() == kPickAction;

    const core::Array<int>& fathers = config->getFathers();
    for (int i = 0; i < n; ++i) m_patches[i].setFather(std::abs(fathers[i]));

    if (config->isEditionMode()) {
        bool focused = false;
        for (int id : config->getPatchList()) {
            if (id < 0 || id >= n) continue;
            if (pick && !focused) focused = findPickFocus(id, *config, focus);
            config->getPickedPoints().copyOneArray(id, m_pickedPoints, id);
        }
        m_currentMovingPointId = core::kNoValue;
    }
    m_storedId = config->getStoredId();
    if (!config->isEditionMode()) {
        deleteFaultLights();
        for (const ZN3DFaultPatchLight* light : config->getFaultLights()) {
            auto* copy = new ZN3DFaultPatchLight();
            copy->copy(light, true);
            appendFaultLight(copy);
        }
    }
    initElementListBis();
    return focus;
}
