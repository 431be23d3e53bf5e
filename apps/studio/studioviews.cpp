#include "studioviews.h"

#include <QMdiSubWindow>

#include <zn3dfaultpatch.h>
#include <znfaulteraser.h>
#include <znfaultpatchmanager.h>
#include <znfaultpickingsession.h>
#include <znfaultpickingtool.h>
#include <znfaultsectiondrawable.h>
#include <znframe.h>
#include <znprocess.h>
#include <znseismicblocviewerengine.h>
#include <znsectionview.h>
#include <znvolume.h>

#include "faultsetdocument.h"
#include "studioproject.h"

namespace {

using Kind = ZNBlocViewerEngine::SectionKind;
const QString kUpdateReferencePoint = QStringLiteral("UPDATE_REF_POINT");

QString kindName(Kind kind)
{
    switch (kind) {
    case Kind::Inline: return QObject::tr("Inline");
    case Kind::Crossline: return QObject::tr("Crossline");
    case Kind::Slice: return QObject::tr("Time slice");
    case Kind::RandomLine: return QObject::tr("Random line");
    }
    return QString();
}

} // namespace

StudioViews::StudioViews(ZNFrame* frame, StudioProject* project, QObject* parent)
    : QObject(parent), m_frame(frame), m_project(project)
{
    connect(project, &StudioProject::faultSetAdded, this, &StudioViews::addFaultSet);
    connect(project, &StudioProject::faultSetRemoved, this, &StudioViews::removeFaultSet);
    connect(project, &StudioProject::volumeRemoved, this, &StudioViews::removeVolume);
    m_referenceHandler = frame->addActionHandler(kUpdateReferencePoint, [this](ZNObject*) {
        showReferencePoint(m_referenceOrigin);
        m_referenceOrigin = nullptr;
    });
}

StudioViews::~StudioViews()
{
    m_frame->removeActionHandler(m_referenceHandler);
}

ZNSectionView* StudioViews::openSectionView(ZNVolume* volume, Kind kind)
{
    if (!volume || volume->image().isEmpty()) return nullptr;
    auto bloc = std::make_shared<ZNBloc>();
    if (!bloc->openImage(volume->sharedImage(), volume->units())) return nullptr;
    auto engine = std::make_unique<ZNSeismicBlocViewerEngine>();
    engine->setBloc(bloc);
    engine->setLineNumbering(volume->lines());
    // Likelihoods and attributes in 0..1 read best on a perceptual map, amplitudes on the
    // seismic one.
    const auto range = volume->valueRange();
    engine->setColourMap(range.first >= 0.0f && range.second <= 1.0f ? img::ColourScale::Map::Viridis
                                                                     : img::ColourScale::Map::Seismic);
    engine->setSection(kind, engine->sectionCount(kind) / 2);
    auto* view = new ZNSectionView(std::move(engine));
    m_sections.append({view, view, volume, {}, nullptr, nullptr});
    SectionEntry& entry = m_sections.last();
    for (FaultSetDocument* document : m_project->faultSets()) addFaultSetTo(entry, document);
    auto picking = std::make_unique<ZNFaultPickingTool>();
    auto eraser = std::make_unique<ZNFaultEraser>();
    entry.picking = picking.get();
    entry.eraser = eraser.get();
    view->viewer()->addTool(ZNFaultPickingTool::modeName(), std::move(picking));
    view->viewer()->addTool(ZNFaultEraser::modeName(), std::move(eraser));
    applyInteraction(entry);
    // The picked fault's automatic points follow the section shown in the view picked in.
    connect(view->viewer(), &ZNSectionViewer::sectionChanged, this, [this, view] {
        if (m_session && !m_mode.isEmpty()) m_session->sectionChanged(view->engine());
        emit sectionShown(view);
    });
    if (m_hasReference) view->engine().setReferencePoint(m_reference);
    connect(view->viewer(), &ZNSectionViewer::referencePointPicked, this, [this, view](const core::vec3& world) {
        m_referenceOrigin = view;
        setReferencePoint(world);
    });
    connect(view->viewer(), &ZNSectionViewer::clicked, this, [this, view](const QPointF& at) {
        constexpr double kClickTolerance = 6.0;  // pixels
        for (const SectionEntry& e : m_sections) {
            if (e.view != view) continue;
            for (const auto& faults : e.faults) {
                const int faultId = faults.second->faultAt(at, kClickTolerance, view->engine());
                if (faultId != -9999) {
                    emit faultClicked(const_cast<FaultSetDocument*>(faults.first), faultId);
                    return;
                }
            }
        }
    });
    // Compared as a plain object: while it is destroyed the view is no longer a view.
    const QObject* identity = view;
    connect(view, &QObject::destroyed, this, [this, identity] {
        for (int i = m_sections.size() - 1; i >= 0; --i)
            if (m_sections[i].identity == identity) m_sections.removeAt(i);
        emit sectionViewClosed(identity);
    });
    m_frame->addSubWindow(view, QStringLiteral("%1 \u2014 %2").arg(volume->name(), kindName(kind)));
    emit sectionShown(view);
    return view;
}

QList<ZNSectionView*> StudioViews::sectionViews() const
{
    QList<ZNSectionView*> views;
    for (const SectionEntry& e : m_sections)
        if (e.view) views << e.view;
    return views;
}

ZNVolume* StudioViews::volumeOf(const ZNSectionView* view) const
{
    for (const SectionEntry& e : m_sections)
        if (e.view == view) return e.volume;
    return nullptr;
}

void StudioViews::setReferencePoint(const core::vec3& world)
{
    m_reference = world;
    m_hasReference = true;
    ZNProcess::sendActionToMdi(kUpdateReferencePoint, nullptr);
}

void StudioViews::setInteraction(const QString& mode, ZNFaultPickingSession* session)
{
    m_mode = mode;
    m_session = session;
    for (SectionEntry& e : m_sections)
        if (e.view) applyInteraction(e);
}

void StudioViews::applyInteraction(SectionEntry& entry)
{
    ZNFaultPickingSession* session = m_session.data();
    entry.picking->setSession(session);
    entry.eraser->setSession(session);
    ZNSeismicViewerAbstractEngine& engine = entry.view->engine();
    engine.removeDrawable(entry.eraser->outline().get());
    if (m_mode == ZNFaultEraser::modeName()) engine.addDrawable(entry.eraser->outline());
    // The patches of the fault being picked are the ones the view shows for picking.
    engine.setPatchShown([session](const ZNObject* set, int patchId) {
        return session && set == static_cast<const ZNObject*>(session->faultSet()) &&
               session->faultSet()->getFather(patchId) == session->currentFault();
    });
    entry.view->viewer()->setMouseMode(m_mode);
    entry.view->viewer()->setCursor(m_mode.isEmpty() ? Qt::ArrowCursor : Qt::CrossCursor);
}

void StudioViews::centreOn(const core::vec3& world)
{
    m_referenceOrigin = nullptr;  // every view goes there
    setReferencePoint(world);
}

void StudioViews::showReferencePoint(const ZNSectionView* origin)
{
    if (!m_hasReference) return;
    for (ZNSectionView* view : sectionViews()) {
        view->engine().setReferencePoint(m_reference);
        if (view != origin) view->viewer()->goToWorldPoint(m_reference);  // cross navigation
    }
}

template <class F>
void StudioViews::forEachFaults(const FaultSetDocument* document, F f)
{
    for (SectionEntry& e : m_sections) {
        const auto it = e.faults.find(document);
        if (e.view && it != e.faults.end()) f(*it->second);
    }
}

void StudioViews::setCurrentFault(FaultSetDocument* document, int faultId)
{
    m_currentDocument = document;
    m_currentFault = faultId;
    for (FaultSetDocument* d : m_project->faultSets())
        forEachFaults(d, [&](ZNFaultSectionDrawable& faults) { faults.setCurrentFault(d == document ? faultId : -9999); });
    redrawAll();
}

void StudioViews::addFaultSet(FaultSetDocument* document)
{
    for (SectionEntry& e : m_sections)
        if (e.view) addFaultSetTo(e, document);
    connect(document, &FaultSetDocument::faultGeometryChanged, this, [this, document](int faultId) {
        forEachFaults(document, [faultId](ZNFaultSectionDrawable& faults) { faults.surfaceChanged(faultId); });
        redrawAll();
    });
    connect(document, &FaultSetDocument::faultsChanged, this, [this, document] {
        forEachFaults(document, [](ZNFaultSectionDrawable& faults) { faults.surfaceChanged(-9999); });
        redrawAll();
    });
    connect(document, &FaultSetDocument::faultAppearanceChanged, this, &StudioViews::redrawAll);
}

void StudioViews::addFaultSetTo(SectionEntry& entry, FaultSetDocument* document)
{
    auto faults = std::make_shared<ZNFaultSectionDrawable>(
        document->faultSet(), [document](int faultId) -> const ZN3DObject* { return document->surface(faultId); },
        [document](int faultId) { return document->isFaultVisible(faultId); });
    faults->setName(document->name());
    if (document == m_currentDocument) faults->setCurrentFault(m_currentFault);
    entry.faults[document] = faults;
    entry.view->engine().addDrawable(faults);
}

void StudioViews::removeFaultSet(FaultSetDocument* document)
{
    for (SectionEntry& e : m_sections) {
        const auto it = e.faults.find(document);
        if (it == e.faults.end()) continue;
        if (e.view) e.view->engine().removeDrawable(it->second.get());
        e.faults.erase(it);
    }
    if (m_currentDocument == document) m_currentDocument = nullptr;
}

void StudioViews::removeVolume(ZNVolume* volume)
{
    for (const SectionEntry& e : m_sections)
        if (e.volume == volume && e.view)
            if (auto* sub = qobject_cast<QMdiSubWindow*>(e.view->parentWidget())) sub->close();
}

void StudioViews::redrawAll()
{
    for (ZNSectionView* view : sectionViews()) view->viewer()->update();
}
