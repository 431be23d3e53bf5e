#include "studio3dviews.h"

#include <QMdiSubWindow>

#include <georef/unitobject.h>
#include <zn3dfaultpatch.h>
#include <zn3dviewer.h>
#include <zn3dvolumeitems.h>
#include <znfaultpatchmanager.h>
#include <znframe.h>
#include <znseismicblocviewerengine.h>
#include <znsectionview.h>
#include <znvolume.h>

#include "faultsetdocument.h"
#include "studioproject.h"
#include "studioviews.h"

namespace {

const QString kUpdateReferencePoint = QStringLiteral("UPDATE_REF_POINT");

// The outline's axes: inline and crossline numbers, and the time or depth of the first
// and the last sample.
std::array<ZN3DBoxItem::Axis, 3> axesOf(const ZNVolume& volume)
{
    const georef::BlocSpace& space = volume.blocSpace();
    const georef::LineNumbering& lines = volume.lines();
    const double top = space.blocToWorld({0.0, 0.0, 0.0}).y;
    const double bottom = space.blocToWorld({0.0, 0.0, double(std::max(space.nz() - 1, 0))}).y;
    return {ZN3DBoxItem::Axis{QObject::tr("Inline"), double(lines.inlineNumber(0)),
                              double(lines.inlineNumber(std::max(space.nx() - 1, 0)))},
            ZN3DBoxItem::Axis{QObject::tr("Crossline"), double(lines.crosslineNumber(0)),
                              double(lines.crosslineNumber(std::max(space.ny() - 1, 0)))},
            ZN3DBoxItem::Axis{volume.units().isTime() ? QObject::tr("Time") : QObject::tr("Depth"), top, bottom}};
}

} // namespace

Studio3DViews::Studio3DViews(ZNFrame* frame, StudioProject* project, StudioViews* sections, QObject* parent)
    : QObject(parent), m_frame(frame), m_project(project), m_sections(sections)
{
    connect(project, &StudioProject::volumeAdded, this,
            [this](ZNVolume* volume) { forEachScene([&](ZN3DScene& s) { setVolumeItem(s, volume); }); });
    connect(project, &StudioProject::volumeRemoved, this, &Studio3DViews::removeVolume);
    connect(project, &StudioProject::faultSetAdded, this, [this](FaultSetDocument* document) {
        followFaultSet(document);
        syncFaultSet(document);
    });
    connect(project, &StudioProject::faultSetRemoved, this, &Studio3DViews::removeFaultSet);
    for (FaultSetDocument* document : project->faultSets()) followFaultSet(document);
    connect(sections, &StudioViews::sectionShown, this,
            [this](ZNSectionView* view) { forEachScene([&](ZN3DScene& s) { setSectionItem(s, view); }); });
    connect(sections, &StudioViews::sectionViewClosed, this, &Studio3DViews::removeSection);
    m_referenceHandler = frame->addActionHandler(kUpdateReferencePoint, [this](ZNObject*) {
        forEachScene([this](ZN3DScene& s) { setReferenceItem(s); });
    });
}

Studio3DViews::~Studio3DViews()
{
    m_frame->removeActionHandler(m_referenceHandler);
}

ZN3DViewer* Studio3DViews::open3DView()
{
    auto* viewer = new ZN3DViewer;
    viewer->setObjectName(QStringLiteral("studio3DView"));
    m_views.append(viewer);
    populate(viewer->scene());
    connect(viewer, &ZN3DViewer::itemPicked, this, [this](int id, const core::vec3&) {
        FaultSetDocument* document = nullptr;
        int faultId = -9999;
        if (faultOfItem(id, document, faultId)) emit faultClicked(document, faultId);
    });
    connect(viewer, &ZN3DViewer::referencePointPicked, m_sections, &StudioViews::centreOn);
    connect(viewer, &QObject::destroyed, this, [this] { m_views.removeAll(nullptr); });
    m_frame->addSubWindow(viewer, tr("3D View"));
    return viewer;
}

QList<ZN3DViewer*> Studio3DViews::views() const
{
    QList<ZN3DViewer*> views;
    for (const QPointer<ZN3DViewer>& v : m_views)
        if (v) views << v;
    return views;
}

template <class F>
void Studio3DViews::forEachScene(F f)
{
    for (ZN3DViewer* view : views()) f(view->scene());
}

int Studio3DViews::idOf(ItemKind kind, const void* owner, int index)
{
    const ItemKey key{kind, owner, index};
    const auto it = m_ids.find(key);
    if (it != m_ids.end()) return it->second;
    const int id = m_nextId++;
    m_ids.emplace(key, id);
    m_keys.emplace(id, key);
    return id;
}

int Studio3DViews::existingId(ItemKind kind, const void* owner, int index) const
{
    const auto it = m_ids.find(ItemKey{kind, owner, index});
    return it == m_ids.end() ? -9999 : it->second;
}

void Studio3DViews::forgetId(ItemKind kind, const void* owner, int index)
{
    const auto it = m_ids.find(ItemKey{kind, owner, index});
    if (it == m_ids.end()) return;
    const int id = it->second;
    forEachScene([id](ZN3DScene& s) { s.removeItem(id); });
    m_keys.erase(id);
    m_ids.erase(it);
}

bool Studio3DViews::faultOfItem(int itemId, FaultSetDocument*& document, int& faultId) const
{
    const auto it = m_keys.find(itemId);
    if (it == m_keys.end()) return false;
    const ItemKind kind = std::get<0>(it->second);
    if (kind != ItemKind::Surface && kind != ItemKind::Sticks) return false;
    document = static_cast<FaultSetDocument*>(const_cast<void*>(std::get<1>(it->second)));
    faultId = std::get<2>(it->second);
    return true;
}

int Studio3DViews::surfaceItemOf(const FaultSetDocument* document, int faultId) const
{
    return existingId(ItemKind::Surface, document, faultId);
}

int Studio3DViews::sticksItemOf(const FaultSetDocument* document, int faultId) const
{
    return existingId(ItemKind::Sticks, document, faultId);
}

void Studio3DViews::populate(ZN3DScene& scene)
{
    for (ZNVolume* volume : m_project->volumes()) setVolumeItem(scene, volume);
    for (ZNSectionView* view : m_sections->sectionViews()) setSectionItem(scene, view);
    for (FaultSetDocument* document : m_project->faultSets()) {
        syncFaultSet(document);
        for (int faultId : m_faultsShown[document]) setFaultItems(scene, document, faultId);
    }
    setReferenceItem(scene);
}

void Studio3DViews::setVolumeItem(ZN3DScene& scene, ZNVolume* volume)
{
    scene.setItem(idOf(ItemKind::Outline, volume),
                  ZN3DVolumeItems::outline(volume->blocSpace(), axesOf(*volume), QColor(200, 200, 200)), false);
}

void Studio3DViews::setSectionItem(ZN3DScene& scene, ZNSectionView* view)
{
    ZNSeismicViewerAbstractEngine& engine = view->engine();
    scene.setItem(idOf(ItemKind::Section, static_cast<const QObject*>(view)),
                  ZN3DVolumeItems::section(engine.blocSpace(), engine.sectionKind(), engine.sectionIndex(),
                                           engine.sectionImage()),
                  false);
}

void Studio3DViews::setFaultItems(ZN3DScene& scene, FaultSetDocument* document, int faultId)
{
    ZN3DSurfaceItem surface;
    surface.object = document->surface(faultId);
    const int surfaceId = idOf(ItemKind::Surface, document, faultId);
    scene.setItem(surfaceId, surface);
    scene.setVisible(surfaceId, document->isFaultVisible(faultId));
    setSticksItem(scene, document, faultId);
}

void Studio3DViews::setSticksItem(ZN3DScene& scene, FaultSetDocument* document, int faultId)
{
    core::Array<core::PointWithBool> points;
    document->faultSet()->getFaultPickedPointArray(faultId, points);
    ZN3DPolylineItem sticks = ZN3DPolylineItem::fromPickedPoints(points, document->faultColour(faultId));
    const bool current = document == m_currentDocument && faultId == m_currentFault;
    sticks.width = current ? kCurrentSticksWidth : kSticksWidth;
    sticks.pointSize = current ? 8.0f : 5.0f;
    const int sticksId = idOf(ItemKind::Sticks, document, faultId);
    scene.setItem(sticksId, std::move(sticks));
    scene.setVisible(sticksId, document->isFaultVisible(faultId));
}

void Studio3DViews::setReferenceItem(ZN3DScene& scene)
{
    if (!m_sections->hasReferencePoint()) return;
    ZN3DReferencePointItem cross;
    cross.position = m_sections->referencePoint();
    scene.setItem(idOf(ItemKind::ReferencePoint, this), cross, false);
}

void Studio3DViews::syncFaultSet(FaultSetDocument* document)
{
    QList<int>& shown = m_faultsShown[document];
    const QList<int> now = document->faultIds();
    for (int faultId : shown)
        if (!now.contains(faultId)) {
            forgetId(ItemKind::Surface, document, faultId);
            forgetId(ItemKind::Sticks, document, faultId);
        }
    for (int faultId : now)
        if (!shown.contains(faultId)) forEachScene([&](ZN3DScene& s) { setFaultItems(s, document, faultId); });
    shown = now;
}

void Studio3DViews::followFaultSet(FaultSetDocument* document)
{
    connect(document, &FaultSetDocument::faultsChanged, this, [this, document] {
        syncFaultSet(document);
        // Names, colours and sticks may all have changed (an undo restores a whole set).
        for (int faultId : m_faultsShown[document])
            forEachScene([&](ZN3DScene& s) { setSticksItem(s, document, faultId); });
    });
    connect(document, &FaultSetDocument::faultGeometryChanged, this, [this, document](int faultId) {
        const int surfaceId = surfaceItemOf(document, faultId);
        forEachScene([&](ZN3DScene& s) {
            // The document may have made a new surface object for the fault.
            const ZN3DSurfaceItem* item = s.content<ZN3DSurfaceItem>(surfaceId);
            if (item && item->object == document->surface(faultId)) s.updateItem(surfaceId);
            else if (surfaceId != -9999) setFaultItems(s, document, faultId);
            setSticksItem(s, document, faultId);
        });
    });
    connect(document, &FaultSetDocument::faultAppearanceChanged, this, [this, document](int faultId) {
        const bool visible = document->isFaultVisible(faultId);
        const int surfaceId = surfaceItemOf(document, faultId);
        forEachScene([&](ZN3DScene& s) {
            s.setVisible(surfaceId, visible);
            s.displayChanged(surfaceId);
            if (sticksItemOf(document, faultId) != -9999) setSticksItem(s, document, faultId);
        });
    });
}

void Studio3DViews::setCurrentFault(FaultSetDocument* document, int faultId)
{
    FaultSetDocument* previousDocument = m_currentDocument;
    const int previousFault = m_currentFault;
    m_currentDocument = document;
    m_currentFault = faultId;
    forEachScene([&](ZN3DScene& s) {
        if (previousDocument && sticksItemOf(previousDocument, previousFault) != -9999)
            setSticksItem(s, previousDocument, previousFault);
        if (document && sticksItemOf(document, faultId) != -9999) setSticksItem(s, document, faultId);
    });
}

void Studio3DViews::removeFaultSet(FaultSetDocument* document)
{
    for (int faultId : m_faultsShown[document]) {
        forgetId(ItemKind::Surface, document, faultId);
        forgetId(ItemKind::Sticks, document, faultId);
    }
    m_faultsShown.erase(document);
    if (m_currentDocument == document) m_currentDocument = nullptr;
}

void Studio3DViews::removeVolume(ZNVolume* volume)
{
    forgetId(ItemKind::Outline, volume);
}

void Studio3DViews::removeSection(const QObject* view)
{
    forgetId(ItemKind::Section, view);
}
