#include "faultcleaningwindow.h"

#include <cmath>

#include <QMdiSubWindow>
#include <QPen>

#include <3dobject/zn3dobjectdraw.h>
#include <core/conventions.h>
#include <zn3dcameralink.h>
#include <zn3dfaultpatch.h>
#include <zn3dviewer.h>
#include <zncleanfaultpreview.h>
#include <znframe.h>

#include "faultcleaningsession.h"
#include "faultpairpicture.h"
#include "faultsetdocument.h"

namespace {

enum Item { MainSurface = 1, ContextSurface = 2, Sticks = 3, Preview = 4 };
constexpr float kFaint = 0.35f;  // transparency of the fault shown for context, as a wireframe
constexpr double kDegrees = 180.0 / 3.14159265358979323846;

core::Array<core::PointWithBool> pointsOf(const FaultSetDocument& document, int faultId)
{
    core::Array<core::PointWithBool> points;
    document.faultSet()->getFaultPickedPointArray(faultId, points);
    return points;
}

} // namespace

FaultCleaningWindow::FaultCleaningWindow(ZNFrame* frame, FaultSetDocument* document, FaultCleaningPairs found,
                                         QObject* parent)
    : QObject(parent), m_frame(frame), m_session(std::make_unique<FaultCleaningSession>(document, std::move(found))),
      m_link(new ZN3DCameraLink(this))
{
    addHandler("DISPLAY_CLEAN_FAULT_PREVIEW_SELECTED_ITEM", &FaultCleaningWindow::onDisplay);
    addHandler("ACCEPT_CLEAN_FAULT_PREVIEW", &FaultCleaningWindow::onAccept);
    addHandler("REFUSE_CLEAN_FAULT_PREVIEW", &FaultCleaningWindow::onRefuse);
    addHandler("PREVIEW_CLEAN_FAULT_PREVIEW", &FaultCleaningWindow::onPreview);
    addHandler("UNDO_CLEAN_FAULT_PREVIEW", &FaultCleaningWindow::onUndo);
    addHandler("REDO_CLEAN_FAULT_PREVIEW", &FaultCleaningWindow::onRedo);
    addHandler("CLOSE_CLEAN_FAULT_PREVIEW", &FaultCleaningWindow::onClose);

    // Connected before the dialog shows: showing it may already make its first row current.
    connect(m_session.get(), &FaultCleaningSession::rowRemoved, this, &FaultCleaningWindow::onRowRemoved);
    connect(m_session.get(), &FaultCleaningSession::rowAdded, this, &FaultCleaningWindow::onRowAdded);
    connect(m_session.get(), &FaultCleaningSession::currentChanged, this, &FaultCleaningWindow::onCurrentChanged);
    connect(m_session.get(), &FaultCleaningSession::previewChanged, this, &FaultCleaningWindow::showPair);
    connect(document, &QObject::destroyed, this, &FaultCleaningWindow::onClose);

    auto* dialog = new ZNCleanFaultPreview();
    m_dialog = dialog;
    m_link->add(dialog->getLeft3dViewer());
    m_link->add(dialog->getRight3dViewer());
    m_mirroring = true;
    for (int row = 0; row < m_session->rowCount(); ++row) {
        dialog->getDupletArray().add(m_session->pairs()[row]);
        dialog->getParallelArray().add(m_session->scores()[row]);
    }
    dialog->updateDupletArray();
    setRowIcons();
    m_mirroring = false;
    m_subWindow = frame->addSubWindow(dialog, dialog->windowTitle());

    dialog->selectFirstItem();
}

FaultCleaningWindow::~FaultCleaningWindow()
{
    for (int handle : m_handlers) m_frame->removeActionHandler(handle);
    m_closing = true;
    if (m_subWindow) m_subWindow->close();
    if (m_dialog) m_dialog->getLeft3dViewer()->scene().clear();
    if (m_dialog) m_dialog->getRight3dViewer()->scene().clear();
}

void FaultCleaningWindow::addHandler(const char* action, void (FaultCleaningWindow::*answer)())
{
    m_handlers.push_back(m_frame->addActionHandler(QLatin1String(action), [this, answer](ZNObject*) {
        if (!m_closing) (this->*answer)();
    }));
}

// ----- the dialog's actions -----

void FaultCleaningWindow::onDisplay()
{
    if (m_mirroring || !m_dialog) return;
    m_session->setCurrentRow(m_dialog->getCurrentIntItem());
}

void FaultCleaningWindow::onAccept() { m_session->accept(); }
void FaultCleaningWindow::onRefuse() { m_session->refuse(); }
void FaultCleaningWindow::onPreview() { m_session->preview(); }
void FaultCleaningWindow::onUndo() { m_session->undo(); }
void FaultCleaningWindow::onRedo() { m_session->redo(); }

void FaultCleaningWindow::onClose()
{
    if (m_closing) return;
    m_closing = true;
    if (m_subWindow) m_subWindow->close();
    emit closed();
}

// ----- the session's changes, mirrored -----

void FaultCleaningWindow::onRowRemoved(int row)
{
    if (!m_dialog) return;
    m_mirroring = true;
    m_dialog->removeItem(row);
    setRowIcons();
    m_mirroring = false;
}

void FaultCleaningWindow::onRowAdded(int row)
{
    if (!m_dialog) return;
    m_mirroring = true;
    m_dialog->getDupletArray().add(m_session->pairs()[row]);
    m_dialog->getParallelArray().add(m_session->scores()[row]);
    m_dialog->updateDupletArray();
    setRowIcons();
    m_mirroring = false;
}

void FaultCleaningWindow::onCurrentChanged(int row)
{
    if (m_dialog && m_dialog->getCurrentIntItem() != row) {
        m_mirroring = true;
        m_dialog->selectItem(row);
        m_mirroring = false;
    }
    showPair();
}

void FaultCleaningWindow::setRowIcons()
{
    for (int row = 0; row < m_session->rowCount(); ++row) {
        QPixmap picture = m_session->pixmap(row);
        m_dialog->setPixmap(row, picture);
    }
}

// ----- the viewers -----

const ZN3DObjectDraw* FaultCleaningWindow::copyOf(const ZN3DObjectDraw* source, const QColor& colour,
                                                  float transparency)
{
    if (!source) return nullptr;
    auto copy = std::make_unique<ZN3DObjectDraw>();
    copy->getPoints() = source->getPoints();
    copy->getFacettes() = source->getFacettes();
    copy->setPen(QPen(colour));
    copy->setTransparency(transparency);
    m_drawables.push_back(std::move(copy));
    return m_drawables.back().get();
}

void FaultCleaningWindow::showPair()
{
    if (!m_dialog) return;
    ZN3DViewer* viewers[2] = {m_dialog->getLeft3dViewer(), m_dialog->getRight3dViewer()};
    for (ZN3DViewer* viewer : viewers) viewer->scene().clear();
    m_drawables.clear();
    const FaultSetDocument* document = m_session->document();
    const core::Duplet faults = m_session->currentFaults();
    if (!document || faults.a == core::kNoValue) return;

    const int ids[2] = {faults.a, faults.b};
    const QColor colours[2] = {firstFaultColour(), secondFaultColour()};
    const ZN3DFaultPatch* preview = m_session->previewSurface();
    for (int side = 0; side < 2; ++side) {
        ZN3DScene& scene = viewers[side]->scene();
        const int other = 1 - side;
        if (preview) {
            scene.setItem(Preview, ZN3DSurfaceItem{copyOf(preview, mergedFaultColour(), 1.0f)});
        } else {
            scene.setItem(MainSurface, ZN3DSurfaceItem{copyOf(document->surface(ids[side]), colours[side], 1.0f)});
            scene.setItem(ContextSurface, ZN3DSurfaceItem{copyOf(document->surface(ids[other]), colours[other], kFaint),
                                                          ZN3DSurfaceItem::Mode::Wireframe});
        }
        scene.setItem(Sticks, ZN3DPolylineItem::fromPickedPoints(pointsOf(*document, ids[side]), colours[side].darker(160)));
    }
    if (faults == m_fitted) return;
    m_fitted = faults;
    const FaultPairPlane plane = faultPairPlane(pointsOf(*document, faults.a), pointsOf(*document, faults.b));
    ZN3DViewerEngine& engine = viewers[0]->engine();
    if (plane.valid) {
        // Across the plane, from the side that looks down on it (or level with it).
        const core::vec3 look = plane.normal.y < 0 ? -plane.normal : plane.normal;
        engine.setOrientation(std::atan2(look.x, look.z) * kDegrees, std::asin(std::min(1.0, look.y)) * kDegrees);
    }
    engine.fitAll();
}
