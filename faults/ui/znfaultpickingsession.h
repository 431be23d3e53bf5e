#pragma once
#include <memory>

#include <QObject>
#include <QPointF>
#include <QString>

#include <vector>

#include <core/vec3.h>
#include <znfaultpatchmanagerconfig.h>

class ZNFaultPatchManager;

class ZNPickingViewer;

// The host's picking front end over one fault set: it turns the interpreter's gestures on
// a section into the fault set's picking operations, and after each edit stores the
// fault set's undo snapshots and says what it did (edited), so that the host records an
// undoable step, calls the auto-save and meshes the fault again.
//
// Gestures. A press on the section grabs the hand-picked point of the current fault
// under the cursor (within grabTolerance() pixels) or places a new point: after the
// fault's last stick was ended, in a fault without points, or on a section where the
// fault has no point yet (the stick in progress is then ended) it starts a new stick,
// otherwise it goes to its best place in the fault (insertMovingPointBis); while the button is held the point
// follows the cursor (taken out and placed again); the release ends the edit ("Pick
// Point" for a new point, "Move Point" for a grabbed one). A press with no current fault
// starts a new fault first. Removing the point under the cursor, ending the current
// stick, starting a new fault, cleaning the fault and erasing inside an ellipse are edits
// of their own.
//
// Snapshots. An edit of one fault stores an edition snapshot of that fault after it; when
// the history's current snapshot is not already an edition snapshot of that fault (the
// state before the edit), one is stored before the edit too. A new fault stores full
// snapshots (its descriptor is new) before and after. `edited` tells how many steps of
// the history the edit spans (2 when it stored a snapshot before it and the history held
// one already, else 1), so that an undo step of the host walks back over all of them and
// a redo forward again.
//
// New faults take an empty patch without descriptor at the end of the fault set; the
// session keeps kSparePatches of them, because a snapshot restores nothing into a fault
// set whose patch count changed: when the spares run out and patches must be added, the
// history is cleared (historyRestarted).
class ZNFaultPickingSession : public QObject {
    Q_OBJECT
public:
    static constexpr int kSparePatches = 32;
    static constexpr double kDefaultGrabTolerance = 8.0;  // pixels

    // `set` is not owned and must outlive the session.
    explicit ZNFaultPickingSession(ZNFaultPatchManager* set, QObject* parent = nullptr);

    ZNFaultPatchManager* faultSet() const { return m_set; }
    // The fault receiving picks (a root patch id); -9999 when none.
    int currentFault() const;
    void setCurrentFault(int faultId);
    double grabTolerance() const { return m_grabTolerance; }
    void setGrabTolerance(double pixels) { m_grabTolerance = pixels; }
    bool isDragging() const { return m_dragging; }

    // ----- gestures (world: the cursor in the fault set's space; viewport: in pixels) -----
    bool press(const core::vec3& world, const QPointF& viewport, const ZNPickingViewer& viewer);
    bool drag(const core::vec3& world, const ZNPickingViewer& viewer);
    bool release(const ZNPickingViewer& viewer);
    // Removes the hand-picked point of the current fault nearest to `viewport` within the
    // grab tolerance ("Delete Point"); false when there is none.
    bool removeNear(const QPointF& viewport, const ZNPickingViewer& viewer);
    // Closes the current stick with a separator ("End Stick"); false when it is closed
    // already or there is no current fault.
    bool endStick();
    // Starts a new fault ("New Fault") named `name` ("Fault <n>" when empty, n making it
    // unique) in the palette colour of its rank, and makes it current. Its id; -9999 when
    // no patch could be had.
    int newFault(const QString& name = QString());
    // removeIsolatedPointForOneFault then removePickingInterruptionForOneFault on the
    // current fault ("Clean Fault Picking"); false when nothing was removed.
    bool cleanCurrentFault();
    // Erases the current fault's points inside the ellipse ("Erase Points"); the number
    // erased.
    int eraseInsideEllipse(const QPointF& centre, double radiusX, double radiusY, const ZNPickingViewer& viewer);
    // The section shown changed: the automatic points of the current fault are made
    // again along it (no edit: automatic points are never part of the history).
    void sectionChanged(const ZNPickingViewer& viewer);

    // The hand-picked entry of the current fault nearest to `viewport` within the grab
    // tolerance, as (patch id, index); false when none.
    bool pointNear(const QPointF& viewport, const ZNPickingViewer& viewer, int& patchId, int& index) const;

signals:
    // An edit was made; it spans `steps` steps of the fault set's history.
    void edited(const QString& action, int faultId, int steps);
    void currentFaultChanged(int faultId);
    // The fault set's history was cleared (its patch count had to grow).
    void historyRestarted();

private:
    using Snapshot = std::unique_ptr<ZNFaultPatchManagerConfig>;
    // The snapshot of the state before an edit of `faultId` (-9999: a full one), when the
    // history's current snapshot is not already that state; null otherwise. Not yet in
    // the history: an edit that changes nothing leaves the history alone.
    Snapshot snapshotBefore(const QString& action, int faultId) const;
    // Puts `before` (when any) and the snapshot after the edit into the history and tells
    // the host.
    void commitEdit(const QString& action, int faultId, Snapshot before);
    // An empty patch without descriptor for a new fault (adding spares when needed).
    int sparePatch();
    // Adds kSparePatches spare patches when fewer than `wanted` are left.
    void keepSpares(int wanted);
    // The hand-picked entries of the fault, to tell whether an edit changed it.
    std::vector<core::vec3> handPoints(int faultId) const;

    ZNFaultPatchManager* m_set;
    double m_grabTolerance = kDefaultGrabTolerance;
    bool m_dragging = false;
    bool m_grabbed = false;         // the drag moves an existing point
    int m_dragFault = -9999;        // the fault being dragged in
    Snapshot m_dragBefore;          // the state before the drag began
};
