#pragma once
#include <functional>

#include <QList>
#include <QObject>
#include <QPointer>
#include <QString>

#include <core/vec3.h>

class FaultSetDocument;
class QMenu;
class Studio3DViews;
class StudioProject;
class StudioViews;
class ZNFaultPickingSession;
class ZNFaultViewer;
class ZNFrame;
class ZNVolume;

// The studio's fault viewers (ZNFaultViewer), each in a sub-window of the frame, showing
// one fault of an open fault set unfolded on its plane, kept in step with the project:
// - "Show on fault plane" in the menu of a fault (tree, section views, 3D views) opens
//   one; a viewer not frozen ("Freeze" in its sheet) follows the current fault;
// - the fault re-meshed (a pick anywhere, an undo) is projected again, a fault deleted
//   empties its viewers, a fault set closed closes them; the fault shown is marked in the
//   3D views with a green outline of width 2;
// - the goto point (a click on the unfolded fault) becomes the shared reference point
//   ("UPDATE_REF_POINT"): the section views go to their sections through it; the
//   reference point set elsewhere shows in the fault viewers, centred when on the fault;
// - Faults > Pick Faults and Erase Points pick on the unfolded fault through the fault
//   set's picking session (each edit one step of its undo stack);
// - "Data Mapping..." maps an open volume (chosen when there are several) onto the fault.
class StudioFaultViewers : public QObject {
    Q_OBJECT
public:
    StudioFaultViewers(ZNFrame* frame, StudioProject* project, StudioViews* sections, Studio3DViews* views3D,
                       QObject* parent = nullptr);
    ~StudioFaultViewers() override;

    static QString showOnFaultPlaneText() { return tr("Show on fault plane"); }
    // The entry "Show on fault plane" for a fault's menu.
    void addMenuEntry(FaultSetDocument* document, int faultId, QMenu* menu);

    // Opens a viewer on fault `faultId` of `document`; null (with a message) when the
    // fault cannot be shown (no surface yet, hidden).
    ZNFaultViewer* open(FaultSetDocument* document, int faultId);
    QList<ZNFaultViewer*> viewers() const;
    // The document whose fault a viewer shows; null for none.
    FaultSetDocument* documentOf(const ZNFaultViewer* viewer) const;

    // Maps `volume` along the viewer's fault (in the background); false when it cannot
    // start (no fault, another vertical domain).
    bool mapVolume(ZNFaultViewer* viewer, ZNVolume* volume);
    // Chooses the volume for "Data Mapping..." among several; by default a dialog. Null:
    // none chosen.
    using VolumeChooser = std::function<ZNVolume*(const QList<ZNVolume*>& volumes)>;
    void setVolumeChooser(VolumeChooser chooser) { m_chooseVolume = std::move(chooser); }

    // The section views' interaction: "FAULT_PICKING", "FAULT_ERASER" or empty; the fault
    // viewers pick and erase through `session` when it is the fault set they show.
    void setInteraction(const QString& sectionMode, ZNFaultPickingSession* session);
    // The current fault: followed by every viewer that is not frozen.
    void setCurrentFault(FaultSetDocument* document, int faultId);

private:
    struct Entry {
        QPointer<ZNFaultViewer> viewer;
        const QObject* identity = nullptr;  // the viewer, for comparisons while it is destroyed
        FaultSetDocument* document = nullptr;
    };
    Entry* entryOf(const ZNFaultViewer* viewer);
    bool show(Entry& entry, FaultSetDocument* document, int faultId, bool force);
    void applyInteraction(Entry& entry);
    void followDocument(FaultSetDocument* document);
    void closeDocument(FaultSetDocument* document);
    void showReferencePoint();
    void chooseAndMap(ZNFaultViewer* viewer);

    ZNFrame* m_frame;
    StudioProject* m_project;
    StudioViews* m_sections;
    Studio3DViews* m_views3D;
    QList<Entry> m_entries;
    QString m_mode;                          // the fault viewers' mouse mode
    QPointer<ZNFaultPickingSession> m_session;
    const ZNFaultViewer* m_referenceOrigin = nullptr;  // the viewer the point came from
    int m_referenceHandler = 0;
    VolumeChooser m_chooseVolume;
};
