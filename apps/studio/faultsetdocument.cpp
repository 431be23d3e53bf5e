#include "faultsetdocument.h"

#include <QUndoStack>

#include <core/conventions.h>
#include <zn3dfaultpatch.h>
#include <znfaultpickingsession.h>

#include "faultcommands.h"

FaultSetDocument::FaultSetDocument(std::unique_ptr<ZNFaultPatchManager> set,
                                   std::map<int, std::unique_ptr<ZN3DFaultPatch>> surfaces,
                                   const QString& path, const QString& name, QObject* parent)
    : QObject(parent), m_set(std::move(set)), m_surfaces(std::move(surfaces)), m_path(path),
      m_name(name), m_undo(new QUndoStack(this)), m_picking(new ZNFaultPickingSession(m_set.get(), this))
{
    m_undo->setUndoLimit(kUndoLimit);
    for (int faultId : faultIds())
        if (!m_surfaces.count(faultId)) makeSurface(faultId);
    connect(m_undo, &QUndoStack::cleanChanged, this, [this] { emit modifiedChanged(isModified()); });
    connect(m_picking, &ZNFaultPickingSession::edited, this, &FaultSetDocument::onPickingEdit);
    connect(m_picking, &ZNFaultPickingSession::historyRestarted, this, [this] {
        // The fault set grew: its earlier snapshots restore nothing any more.
        m_undo->clear();
        markModified();
    });
}

FaultSetDocument::~FaultSetDocument()
{
    // The surfaces detach themselves from the fault set, which must still be there.
    m_surfaces.clear();
}

void FaultSetDocument::setPath(const QString& path)
{
    m_path = path;
}

bool FaultSetDocument::isModified() const
{
    return m_dirty || !m_undo->isClean();
}

void FaultSetDocument::markSaved()
{
    m_undo->setClean();
    setDirty(false);
}

void FaultSetDocument::markModified()
{
    setDirty(true);
}

void FaultSetDocument::setDirty(bool dirty)
{
    const bool before = isModified();
    m_dirty = dirty;
    if (isModified() != before) emit modifiedChanged(isModified());
}

QList<int> FaultSetDocument::faultIds() const
{
    QList<int> ids;
    for (const ZN3DFaultPatchLight* light : m_set->getFaultLightList()) ids << light->getFaultId();
    return ids;
}

QString FaultSetDocument::faultName(int faultId) const
{
    const ZN3DFaultPatchLight* light = m_set->findFaultLight(faultId);
    return light ? light->GetFaultName() : QString();
}

QColor FaultSetDocument::faultColour(int faultId) const
{
    const ZN3DFaultPatchLight* light = m_set->findFaultLight(faultId);
    return light ? light->getPen().color() : QColor();
}

ZN3DFaultPatch* FaultSetDocument::surface(int faultId) const
{
    const auto it = m_surfaces.find(faultId);
    return it == m_surfaces.end() ? nullptr : it->second.get();
}

int FaultSetDocument::faultIdOfSurface(const ZNObject* surface) const
{
    for (const auto& entry : m_surfaces)
        if (static_cast<const ZNObject*>(entry.second.get()) == surface) return entry.first;
    return core::kNoValue;
}

bool FaultSetDocument::faultCentre(int faultId, core::vec3& centre) const
{
    core::Array<core::PointWithBool> points;
    m_set->getFaultPickedPointArray(faultId, points);
    core::vec3 sum;
    int n = 0;
    for (const core::PointWithBool& p : points)
        if (!p.isSeparator() && !p.flag) {
            sum = sum + p.position();
            ++n;
        }
    if (n == 0)
        if (const ZN3DFaultPatch* s = surface(faultId))
            for (const core::vec3& p : s->getPoints()) {
                sum = sum + p;
                ++n;
            }
    if (n == 0) return false;
    centre = sum / double(n);
    return true;
}

bool FaultSetDocument::isFaultVisible(int faultId) const
{
    return !m_hidden.count(faultId);
}

std::map<int, bool> FaultSetDocument::setFaultsVisible(const std::map<int, bool>& visible)
{
    std::map<int, bool> previous;
    for (const auto& entry : visible) {
        const int faultId = entry.first;
        previous[faultId] = isFaultVisible(faultId);
        if (previous[faultId] == entry.second) continue;
        if (entry.second) m_hidden.erase(faultId);
        else m_hidden.insert(faultId);
        if (ZN3DFaultPatch* s = surface(faultId)) s->setHidden(!entry.second);
        emit faultAppearanceChanged(faultId);
    }
    return previous;
}

bool FaultSetDocument::renameFault(int faultId, const QString& name)
{
    ZN3DFaultPatchLight* light = m_set->findFaultLight(faultId);
    if (!light || light->GetFaultName() == name) return false;
    light->SetFaultName(name);
    if (ZN3DFaultPatch* s = surface(faultId)) s->SetFaultName(name);
    emit faultsChanged();
    emit faultAppearanceChanged(faultId);
    return true;
}

bool FaultSetDocument::removeFault(int faultId, ZNFaultPatchManager::RemovedFault* removed)
{
    if (!m_set->removePickedFault(faultId, removed)) return false;
    m_surfaces.erase(faultId);
    emit faultsChanged();
    return true;
}

bool FaultSetDocument::restoreFault(const ZNFaultPatchManager::RemovedFault& removed)
{
    if (!m_set->restorePickedFault(removed)) return false;
    makeSurface(removed.faultId);
    emit faultsChanged();
    return true;
}

void FaultSetDocument::surfaceSettingsChanged(int faultId, bool remesh)
{
    ZN3DFaultPatch* s = surface(faultId);
    ZN3DFaultPatchLight* light = m_set->findFaultLight(faultId);
    if (!s || !light) return;
    light->copy(s, false);
    markModified();
    if (remesh) {
        s->setPickedPoints(pointsOf(faultId));
        s->updateMeshWithPickedPoint();
        emit faultGeometryChanged(faultId);
    }
    emit faultsChanged();
    emit faultAppearanceChanged(faultId);
}

core::Array<core::PointWithBool> FaultSetDocument::pointsOf(int faultId) const
{
    core::Array<core::PointWithBool> points;
    m_set->getFaultPickedPointArray(faultId, points);
    return points;
}

void FaultSetDocument::onPickingEdit(const QString& action, int faultId, int steps)
{
    m_undo->push(new FaultSetHistoryCommand(this, action, steps));
    refreshFromFaultSet();
    emit picked(action, faultId);
}

void FaultSetDocument::refreshFromFaultSet()
{
    const QList<int> ids = faultIds();
    bool listChanged = false;
    for (auto it = m_surfaces.begin(); it != m_surfaces.end();) {
        if (ids.contains(it->first)) {
            ++it;
            continue;
        }
        it = m_surfaces.erase(it);
        listChanged = true;
    }
    for (int faultId : ids) {
        ZN3DFaultPatch* s = surface(faultId);
        if (!s) {
            makeSurface(faultId);
            listChanged = true;
            continue;
        }
        const ZN3DFaultPatchLight* light = m_set->findFaultLight(faultId);
        if (light && (light->GetFaultName() != s->GetFaultName() || light->getPen() != s->getPen())) {
            s->setDescriptor(*light);
            emit faultAppearanceChanged(faultId);
        }
        const core::Array<core::PointWithBool> points = pointsOf(faultId);
        const core::Array<core::PointWithBool>& shown = s->getPickedPoints();
        bool same = points.size() == shown.size();
        for (int k = 0; same && k < points.size(); ++k)
            same = points[k].position() == shown[k].position() && points[k].flag == shown[k].flag;
        if (same) continue;
        s->setPickedPoints(points);
        s->updateMeshWithPickedPoint();
        emit faultGeometryChanged(faultId);
    }
    if (listChanged) emit faultsChanged();
}

void FaultSetDocument::makeSurface(int faultId)
{
    std::unique_ptr<ZN3DFaultPatch> s(m_set->createPicked3DFaultPatch(m_set->findFaultLight(faultId)));
    if (!s) return;
    if (s->getNumberOfFacettes() == 0) s->updateMeshWithPickedPoint();
    s->setHidden(!isFaultVisible(faultId));
    m_surfaces[faultId] = std::move(s);
}
