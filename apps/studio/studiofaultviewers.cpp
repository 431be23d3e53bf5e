#include "studiofaultviewers.h"

#include <QInputDialog>
#include <QMdiSubWindow>
#include <QMenu>

#include <core/conventions.h>
#include <zn3dfaultpatch.h>
#include <zneventbus.h>
#include <znfaulteraser.h>
#include <znfaultpickingtool.h>
#include <znfaultviewer.h>
#include <znframe.h>
#include <znsectionviewer.h>
#include <znvolume.h>

#include "faultsetdocument.h"
#include "studio3dviews.h"
#include "studioproject.h"
#include "studioviews.h"

namespace {
const QString kUpdateReferencePoint = QStringLiteral("UPDATE_REF_POINT");
// Scale type "Survey Grid": the studio shows faults at the survey's resolution, whatever
// their gridding steps.
constexpr int kSurveyGridScale = static_cast<int>(ZNFaultViewerEngine::ScaleType::SurveyGrid);
} // namespace

StudioFaultViewers::StudioFaultViewers(ZNFrame* frame, StudioProject* project, StudioViews* sections,
                                       Studio3DViews* views3D, QObject* parent)
    : QObject(parent), m_frame(frame), m_project(project), m_sections(sections), m_views3D(views3D)
{
    connect(project, &StudioProject::faultSetAdded, this, &StudioFaultViewers::followDocument);
    connect(project, &StudioProject::faultSetRemoved, this, &StudioFaultViewers::closeDocument);
    for (FaultSetDocument* document : project->faultSets()) followDocument(document);
    m_referenceHandler = frame->addActionHandler(kUpdateReferencePoint, [this](ZNObject*) { showReferencePoint(); });
    m_chooseVolume = [this](const QList<ZNVolume*>& volumes) -> ZNVolume* {
        QStringList names;
        for (ZNVolume* v : volumes) names << v->name();
        bool ok = false;
        const QString chosen = QInputDialog::getItem(m_frame, tr("Data Mapping"), tr("Volume to map along the fault:"),
                                                     names, 0, false, &ok);
        const int index = names.indexOf(chosen);
        return ok && index >= 0 ? volumes.at(index) : nullptr;
    };
}

StudioFaultViewers::~StudioFaultViewers()
{
    m_frame->removeActionHandler(m_referenceHandler);
    // The viewers outlive this object (their sub-windows go with the frame): they must not
    // call back into it, nor into documents that go first.
    for (Entry& e : m_entries)
        if (e.viewer) {
            e.viewer->engine().setMappedFaultMarker(nullptr);
            e.viewer->engine().setFaultShown(nullptr);
            e.viewer->disconnect(this);
        }
}

StudioFaultViewers::Entry* StudioFaultViewers::entryOf(const ZNFaultViewer* viewer)
{
    for (Entry& e : m_entries)
        if (e.viewer == viewer) return &e;
    return nullptr;
}

QList<ZNFaultViewer*> StudioFaultViewers::viewers() const
{
    QList<ZNFaultViewer*> all;
    for (const Entry& e : m_entries)
        if (e.viewer) all << e.viewer;
    return all;
}

FaultSetDocument* StudioFaultViewers::documentOf(const ZNFaultViewer* viewer) const
{
    for (const Entry& e : m_entries)
        if (e.viewer == viewer) return e.document;
    return nullptr;
}

void StudioFaultViewers::addMenuEntry(FaultSetDocument* document, int faultId, QMenu* menu)
{
    menu->addSeparator();
    QAction* show = menu->addAction(showOnFaultPlaneText(), this, [this, document, faultId] { open(document, faultId); });
    const ZN3DFaultPatch* surface = document->surface(faultId);
    show->setEnabled(surface && surface->getNumberOfFacettes() > 0 && document->isFaultVisible(faultId));
}

// ----- opening and showing -----

bool StudioFaultViewers::show(Entry& entry, FaultSetDocument* document, int faultId, bool force)
{
    ZNFaultViewer* viewer = entry.viewer;
    entry.document = document;
    viewer->engine().setFaultShown([document](const ZNFaultPatchManager*, int id) { return document->isFaultVisible(id); });
    viewer->setPickingSession(document->pickingSession());
    return viewer->showFault(document->faultSet(), faultId, force);
}

ZNFaultViewer* StudioFaultViewers::open(FaultSetDocument* document, int faultId)
{
    const ZN3DFaultPatch* surface = document ? document->surface(faultId) : nullptr;
    if (!surface || surface->getNumberOfFacettes() == 0 || !document->isFaultVisible(faultId)) {
        ZNEventBus::sendMessage(ZNEventBus::Error,
                                tr("The fault \"%1\" has no surface to show on its plane")
                                    .arg(document ? document->faultName(faultId) : QString()));
        return nullptr;
    }
    auto* viewer = new ZNFaultViewer;
    ZNFaultViewerEngine& engine = viewer->engine();
    engine.updateProperty(QStringLiteral("Scale Type"), kSurveyGridScale);
    engine.setViewerCaption();  // the first caption says what the window is
    const QObject* identity = viewer;
    engine.setMappedFaultMarker([this, identity](ZN3DFaultPatch* fault, const QPen& pen) {
        FaultSetDocument* document = nullptr;
        for (const Entry& e : m_entries)
            if (e.identity == identity) document = e.document;
        m_views3D->setFaultMark(identity, fault ? document : nullptr, fault ? fault->getFaultId() : core::kNoValue, pen);
    });
    m_entries.append({viewer, identity, document});
    applyInteraction(m_entries.last());
    if (!show(m_entries.last(), document, faultId, true)) {  // the engine said why
        m_entries.removeLast();
        engine.setMappedFaultMarker(nullptr);
        delete viewer;
        return nullptr;
    }
    QMdiSubWindow* window = m_frame->addSubWindow(viewer, viewer->windowTitle());
    connect(viewer, &ZNFaultViewer::captionChanged, window, &QWidget::setWindowTitle);
    connect(viewer, &ZNFaultViewer::gotoPointChanged, this, [this, viewer](const core::vec3& world) {
        m_referenceOrigin = viewer;
        m_sections->centreOn(world);  // every section view goes to its section through it
    });
    connect(viewer, &ZNFaultViewer::dataMappingRequested, this, [this, viewer] { chooseAndMap(viewer); });
    connect(viewer, &QObject::destroyed, this, [this, identity] {
        for (int i = m_entries.size() - 1; i >= 0; --i)
            if (m_entries[i].identity == identity) m_entries.removeAt(i);
        if (m_referenceOrigin == identity) m_referenceOrigin = nullptr;
        m_views3D->setFaultMark(identity, nullptr, core::kNoValue, QPen());
    });
    if (m_sections->hasReferencePoint()) viewer->engine().setReferencePoint(m_sections->referencePoint());
    return viewer;
}

void StudioFaultViewers::setCurrentFault(FaultSetDocument* document, int faultId)
{
    const ZN3DFaultPatch* surface = document ? document->surface(faultId) : nullptr;
    if (!surface || surface->getNumberOfFacettes() == 0 || !document->isFaultVisible(faultId)) return;
    for (Entry& e : m_entries) {
        if (!e.viewer || e.viewer->engine().isFrozen()) continue;
        if (e.document == document && e.viewer->engine().getMappedFaultId() == faultId) continue;
        show(e, document, faultId, false);
    }
}

// ----- picking -----

void StudioFaultViewers::applyInteraction(Entry& entry)
{
    entry.viewer->setMouseMode(m_mode);
    entry.viewer->viewer()->setCursor(m_mode.isEmpty() ? Qt::ArrowCursor : Qt::CrossCursor);
}

void StudioFaultViewers::setInteraction(const QString& sectionMode, ZNFaultPickingSession* session)
{
    m_session = session;
    m_mode = sectionMode == ZNFaultPickingTool::modeName() ? ZNFaultViewerEngine::faultPickingModeName()
             : sectionMode == ZNFaultEraser::modeName()    ? ZNFaultViewerEngine::eraseModeName()
                                                           : QString();
    for (Entry& e : m_entries)
        if (e.viewer) applyInteraction(e);
}

// ----- following the project -----

void StudioFaultViewers::followDocument(FaultSetDocument* document)
{
    connect(document, &FaultSetDocument::faultGeometryChanged, this, [this, document](int faultId) {
        for (Entry& e : m_entries)
            if (e.viewer && e.document == document) e.viewer->faultGeometryChanged(document->faultSet(), faultId);
    });
    connect(document, &FaultSetDocument::faultsChanged, this, [this, document] {
        const QList<int> faults = document->faultIds();
        for (Entry& e : m_entries) {
            if (!e.viewer || e.document != document || !e.viewer->engine().isFaultProjected()) continue;
            if (!faults.contains(e.viewer->engine().getMappedFaultId())) e.viewer->engine().clearFaultViewer();
            else e.viewer->updateCaption();
        }
    });
    connect(document, &FaultSetDocument::faultAppearanceChanged, this, [this, document](int) {
        for (Entry& e : m_entries)
            if (e.viewer && e.document == document) e.viewer->updateCaption();
    });
}

void StudioFaultViewers::closeDocument(FaultSetDocument* document)
{
    for (Entry& e : m_entries) {
        if (!e.viewer || e.document != document) continue;
        e.viewer->engine().setFaultShown(nullptr);
        e.viewer->engine().clearFaultViewer();
        e.document = nullptr;
        if (auto* window = qobject_cast<QMdiSubWindow*>(e.viewer->parentWidget())) window->close();
    }
}

void StudioFaultViewers::showReferencePoint()
{
    if (!m_sections->hasReferencePoint()) return;
    for (Entry& e : m_entries) {
        if (!e.viewer) continue;
        // The viewer the point came from stays where the user is looking, and so does a
        // viewer kept out of the cross navigation.
        const bool follows = e.viewer != m_referenceOrigin && e.viewer->engine().getUseObjectForCrossNavigation();
        if (follows) e.viewer->showReferencePoint(m_sections->referencePoint());
        else e.viewer->engine().setReferencePoint(m_sections->referencePoint());
        e.viewer->viewer()->update();
    }
    m_referenceOrigin = nullptr;
}

// ----- data mapping -----

bool StudioFaultViewers::mapVolume(ZNFaultViewer* viewer, ZNVolume* volume)
{
    if (!viewer || !volume) return false;
    ZNFaultViewer::DataSource source;
    source.samples = volume->sharedImage();
    source.units = volume->units();
    source.name = volume->name();
    if (!viewer->mapData(source)) return false;
    // As in the section views: likelihoods and attributes in 0..1 on a perceptual map,
    // amplitudes on the seismic one.
    const auto range = volume->valueRange();
    viewer->setColourMap(range.first >= 0.0f && range.second <= 1.0f ? img::ColourScale::Map::Viridis
                                                                     : img::ColourScale::Map::Seismic);
    return true;
}

void StudioFaultViewers::chooseAndMap(ZNFaultViewer* viewer)
{
    const QList<ZNVolume*> volumes = m_project->volumes();
    if (volumes.isEmpty()) {
        ZNEventBus::sendMessage(ZNEventBus::Error, tr("Open a volume to map along the fault first"));
        return;
    }
    ZNVolume* volume = volumes.size() == 1 ? volumes.first() : m_chooseVolume(volumes);
    if (volume) mapVolume(viewer, volume);
}
