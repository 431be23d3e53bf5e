#pragma once
#include <memory>

#include <QPointer>
#include <QWidget>

#include <core/vec3.h>
#include <georef/unitobject.h>
#include <zn3dimage.h>

#include "znfaultviewerengine.h"

class QComboBox;
class QToolButton;
class ZNFaultEraser;
class ZNFaultPatchManager;
class ZNFaultPickingSession;
class ZNPropertyBrowser;
class ZNSectionViewer;

// The fault viewer: one fault of a fault set unfolded on its plane (ZNFaultViewerEngine),
// with the data mapped along it, its picked points, its outline and the goto point drawn
// over it, a scale bar and a colour bar, and beside it the viewer's property sheet.
//
// Gestures. With no mouse mode, a drag pans, the wheel zooms, a click moves the goto
// point (the picked point under it, or the point of the fault clicked), which the host's
// other views follow (gotoPointChanged). "TYPE_GOTO" does the same on press and drag, and
// with "AutoGoto" the goto point follows the mouse. "faultpicking" picks on the fault
// through its fault set's picking session (points land on the fault's surface; every edit
// is one step of the fault set's history), "TYPE_FAULT_ERASE" erases inside an ellipse.
//
// Data. mapData maps a volume along the fault on a worker thread (progress and cancel
// through the host's bars) and shows it; the volume is remembered, and mapped again after
// the fault is projected again or a data mapping setting changes.
class ZNFaultViewer : public QWidget {
    Q_OBJECT
public:
    // A volume to map: samples held in memory (shared, read only) or a block file.
    struct DataSource {
        std::shared_ptr<const ZN3DImage<float>> samples;  // null: read `path`
        QString path;
        georef::UnitObject units;
        QString name;                                     // shown in the title
    };
    static constexpr double kScaleBarPixels = 120.0;      // longest scale bar

    explicit ZNFaultViewer(QWidget* parent = nullptr);
    ~ZNFaultViewer() override;

    ZNFaultViewerEngine& engine() const { return *m_engine; }
    ZNSectionViewer* viewer() const { return m_viewer; }
    ZNPropertyBrowser* propertyBrowser() const { return m_properties; }

    // Shows fault `faultId` of `set` (for picking while a picking mode is on); refused
    // (false) while the view is frozen on another fault, or when the fault cannot be
    // shown. `force` shows it even when frozen.
    bool showFault(ZNFaultPatchManager* set, int faultId, bool force = false);
    // The fault shown changed shape (an edit, an undo): its projection is made again.
    void faultGeometryChanged(ZNFaultPatchManager* set, int faultId);
    // The fault's name may have changed: the caption is made again.
    void updateCaption();
    // Maps `source` along the fault shown, in the background; dataMapped tells the end.
    // False (nothing started) without a fault, for data of another vertical domain (the
    // engine's message box) or while a mapping runs.
    bool mapData(const DataSource& source);
    bool isMapping() const { return m_mapping; }
    // The colour map of the samples shown (the map chooser follows).
    void setColourMap(img::ColourScale::Map map);
    const DataSource* mappedSource() const { return m_source ? m_source.get() : nullptr; }

    // The picking session of the fault set shown (not owned; null: no picking).
    void setPickingSession(ZNFaultPickingSession* session);
    // The mouse mode: empty (navigation), "TYPE_GOTO", "faultpicking", "TYPE_FAULT_ERASE",
    // or any host mode (see ZNFaultViewerEngine::setMouseMode).
    void setMouseMode(const QString& mode);
    // The reference point of another view: shown, and the view centred on it when it
    // lies on the fault's image.
    void showReferencePoint(const core::vec3& world);

    // The picked point copy taken again from the fault set (while a point is dragged, the
    // surface has not been meshed yet).
    void refreshPickedPoints();

signals:
    // The goto point moved ("UPDATE_REF_POINT"): the other views follow it.
    void gotoPointChanged(const core::vec3& world);
    // The "Data Mapping..." button: the host chooses a volume and calls mapData.
    void dataMappingRequested();
    // A mapping ended: shown (true), or cancelled or failed.
    void dataMapped(bool ok);
    void captionChanged(const QString& caption);

private:
    void onAction(const QString& action);
    void refreshProperties();
    void onPropertyEdited(const QString& id, const QVariant& value);
    // Runs the mapping of the remembered source again (after a new projection or
    // setting), when there is one and none runs.
    void remap();
    void startMapping();

    ZNFaultViewerEngine* m_engine = nullptr;  // owned by the viewer
    ZNSectionViewer* m_viewer;
    ZNPropertyBrowser* m_properties;
    QComboBox* m_map;
    QToolButton* m_mappingButton;
    ZNFaultEraser* m_eraser = nullptr;        // owned by the viewer
    QPointer<ZNFaultPickingSession> m_session;
    std::unique_ptr<DataSource> m_source;
    bool m_mapping = false;
    bool m_remapPending = false;
    quint64 m_projectionSerial = 0;           // changes with every projection
};
