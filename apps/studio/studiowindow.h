#pragma once
#include <functional>
#include <memory>

#include <QMessageBox>
#include <QPointer>

#include <attribute/faultattributesettings.h>
#include <exchange/stickformat.h>
#include <faultextractionpipeline.h>
#include <volumeio/volumesource.h>
#include <znframe.h>
#include <znrecentfiles.h>

#include "studioloading.h"

class FaultSetDocument;
class QActionGroup;
class QLabel;
class QUndoGroup;
class StudioProject;
class StudioProjectDock;
class StudioServices;
class FaultCleaningWindow;
class Studio3DViews;
class StudioFaultViewers;
class StudioTree;
class StudioViews;
class ZNBackgroundTask;
class ZNMessageLog;
class ZNNotificationArea;
class ZNObjectTree;
class ZNProgressPanel;
class ZNPropertyBrowser;
class ZNVolume;

// The main window of kfaults-studio: the multiple-document frame with the object tree,
// the property sheet and the message log as docks, the progress panel, and the menus
// File, Edit, Faults and Window. It owns the project (what is open) and installs the
// studio's host services for its lifetime.
//
// Every file read and every extraction runs as a background task: the window stays
// responsive, the progress panel shows the work and can cancel it, and the result joins
// the project when the task ends (a failure leaves the project as it was and says why
// in one message). Saves and exports write on the GUI thread, through a temporary file
// renamed over the target, so a failed save leaves the previous file intact.
//
// The named actions the library posts reach the window's handlers:
// "UPDATE_FAULT_MESH" (a fault's surface meshed again), "UPDATE_FAULT_LIGHT" (its look
// or name changed), "UPDATE_WINDOW_MANAGER" (the list of windows), and any other
// handlers added to the frame.
class StudioWindow : public ZNFrame {
    Q_OBJECT
public:
    struct Options {
        bool dialogs = true;  // real message boxes (tests record them instead)
    };
    // What the user answers when a fault set with unsaved changes would be closed.
    using UnsavedChangesQuestion = std::function<QMessageBox::StandardButton(FaultSetDocument*)>;

    explicit StudioWindow(const Options& options, QWidget* parent = nullptr);
    ~StudioWindow() override;

    StudioProject* project() const { return m_project; }
    ZNObjectTree* objectTree() const { return m_tree; }
    StudioTree* studioTree() const { return m_studioTree; }
    ZNMessageLog* messageLog() const { return m_log; }
    ZNProgressPanel* progressPanel() const { return m_progressPanel; }
    ZNNotificationArea* notifications() const { return m_notifications; }
    ZNPropertyBrowser* propertyBrowser() const { return m_properties; }
    QUndoGroup* undoGroup() const { return m_undoGroup; }
    StudioViews* views() const { return m_views; }
    StudioProjectDock* projectDock() const { return m_projectDock; }
    Studio3DViews* views3D() const { return m_views3D; }
    StudioFaultViewers* faultViewers() const { return m_faultViewers; }
    ZNRecentFiles& recentFiles() { return m_recent; }

    // ----- files (each read runs in the background; the window announces its end) -----

    // Opens files by their kind: fault sets (".faultset"), volumes (".sgy", ".segy",
    // ".bloc"; any other name is asked about as a raw volume, or imported as a stick
    // file when its first line says it is one).
    void openFiles(const QStringList& paths);
    void openVolume(const volumeio::VolumeSource& source);
    void openFaultSet(const QString& path);
    void importSticks(const QString& path, fault::exchange::StickFormat format);
    // Writes the document to `path` (its own path when empty) and makes it its path.
    // False, the previous file intact, with the reason on the event bus.
    bool saveFaultSet(FaultSetDocument* document, const QString& path = QString());
    bool exportSticks(FaultSetDocument* document, const QString& path, fault::exchange::StickFormat format);
    bool exportSurfaces(FaultSetDocument* document, const QString& path);
    // Closes a fault set, asking first when it has unsaved changes; false when the user
    // kept it open.
    bool closeFaultSet(FaultSetDocument* document);
    void setUnsavedChangesQuestion(UnsavedChangesQuestion question) { m_askUnsaved = std::move(question); }

    // ----- fault likelihood -----

    // Computes the fault likelihood of the seismic `volume` in the background, with the
    // strike and dip of the faults when withOrientation; they join the project as new
    // volumes ("Fault likelihood of <volume>", "Fault strike of ...", "Fault dip of ..."),
    // each shown in a section view, the likelihood made the current volume so that the
    // extraction starts from it.
    void computeFaultLikelihood(ZNVolume* volume, const fault::attribute::FaultAttributeSettings& settings,
                                bool withOrientation = true);

    // ----- extraction -----

    // Extracts the faults of `volume` in the background; the fault set joins the project.
    void extractFaults(ZNVolume* volume, const fault::FaultExtractionSettings& settings);
    // The built-in synthetic volume (`size` voxels a side) and its extracted faults.
    void openDemo(int size = 128, quint64 seed = 1);

    // ----- picking -----

    // What the mouse does in the section views: navigate, pick faults or erase points,
    // for the current fault set (a new one, "Picks", is made over the current volume when
    // there is none).
    enum class Interaction { Navigate, Pick, Erase };
    void setInteraction(Interaction interaction);
    Interaction interaction() const { return m_interaction; }
    // A new empty picked fault set over `volume`'s survey (the current volume when null),
    // made current.
    FaultSetDocument* newFaultSet(ZNVolume* volume = nullptr);
    // The folder of the emergency-save files: the user settings' "StudioWorkingFolder"
    // (group "Studio"), else "work" in the user settings directory.
    static QString workingFolder();
    // Emergency-save files left in the working folder by a session that ended without
    // saving (a crash): offered for restoring at start-up, opened as new fault sets when
    // the user accepts. `ask` answers for the user (true: restore). Returns how many were
    // opened.
    int offerEmergencyRestore(const std::function<bool(const QStringList&)>& ask);

    // ----- cleaning (studiowindow_cleaning.cpp) -----

    // Faults > Clean Duplicated Faults on `document` (the current or only fault set when
    // null): finds its duplicated faults, and the merge candidates of the extraction that
    // made it, in the background, then opens the cleaning assistant on them (one at a
    // time: an assistant open on another fault set is closed first). Says so when there
    // is nothing to clean.
    void cleanDuplicatedFaults(FaultSetDocument* document = nullptr);
    // The assistant open now; null when none.
    FaultCleaningWindow* cleaningWindow() const;

    // Number of background tasks still running.
    int runningTaskCount() const { return m_runningTasks; }

    // The fault whose property sheet is shown and which the views treat as current;
    // null document when none.
    FaultSetDocument* currentDocument() const { return m_currentDocument; }
    int currentFaultId() const { return m_currentFaultId; }

signals:
    // A background task ended: `what` names it ("Open <file>", "Extract faults of
    // <volume>", ...); ok false on failure or cancel.
    void taskFinished(const QString& what, bool ok);
    // The demo's volume and faults are open.
    void demoOpened();
    void currentFaultChanged(FaultSetDocument* document, int faultId);

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void buildDocks();
    void buildMenus();
    // The fault viewers and their entries in the faults' menus (studiowindow_faultviewer.cpp).
    void buildFaultViewers();
    void installActionHandlers();
    void updateRecentMenu();
    void setCurrentFault(FaultSetDocument* document, int faultId);
    // Shows the property sheet of the current fault (nothing without one).
    void refreshProperties();
    // An edit of the sheet: an undoable change of the current fault.
    void onPropertyEdited(const QString& id, const QVariant& value);

    // Runs `work` in the background, then `done` on the GUI thread; `what` names the task
    // in the messages.
    void runTask(const QString& what, std::function<void()> work, std::function<bool()> done);
    void addLoadedFaultSet(LoadedFaultSet& loaded, const QString& path, const QString& name);

    // File menu actions with dialogs.
    void chooseAndOpenVolume();
    void chooseAndOpenFaultSet();
    void chooseAndImportSticks();
    void chooseAndSaveAs(FaultSetDocument* document);
    void chooseAndExportSticks(FaultSetDocument* document);
    void chooseAndExportSurfaces(FaultSetDocument* document);
    // The extraction dialog, `volume` chosen first (the current volume, else the first,
    // for null).
    void chooseAndExtract(ZNVolume* volume = nullptr);
    // The fault likelihood's dialog, likewise.
    void chooseAndComputeLikelihood(ZNVolume* volume = nullptr);
    bool askRawLayout(const QString& path, volumeio::VolumeSource& source);
    // The fault set the File menu's save and export act on: the current one, or the only
    // one; null when none can be told.
    FaultSetDocument* targetDocument() const;
    void reportFailure(const QString& message);

    StudioProject* m_project;
    ZNObjectTree* m_tree = nullptr;
    StudioTree* m_studioTree = nullptr;
    ZNMessageLog* m_log = nullptr;
    ZNProgressPanel* m_progressPanel = nullptr;
    ZNNotificationArea* m_notifications = nullptr;
    ZNPropertyBrowser* m_properties = nullptr;
    QUndoGroup* m_undoGroup;
    std::unique_ptr<StudioServices> m_services;
    ZNRecentFiles m_recent;
    QMenu* m_recentMenu = nullptr;
    QLabel* m_status = nullptr;
    UnsavedChangesQuestion m_askUnsaved;
    StudioViews* m_views = nullptr;
    StudioProjectDock* m_projectDock = nullptr;
    Studio3DViews* m_views3D = nullptr;
    StudioFaultViewers* m_faultViewers = nullptr;
    ZNVolume* m_currentVolume = nullptr;  // the volume chosen last in the tree
    FaultSetDocument* m_currentDocument = nullptr;
    int m_currentFaultId = -9999;
    int m_runningTasks = 0;
    Interaction m_interaction = Interaction::Navigate;
    QActionGroup* m_interactionGroup = nullptr;
    int m_untitled = 0;
    QPointer<FaultCleaningWindow> m_cleaning;
};
