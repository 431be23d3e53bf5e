#include "studiowindow.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDockWidget>
#include <QHeaderView>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QStatusBar>
#include <QTableView>
#include <QUndoGroup>
#include <QUndoStack>
#include <QVBoxLayout>

#include <core/conventions.h>
#include <znbackgroundtask.h>
#include <zneventbus.h>
#include <znmessagelog.h>
#include <znnotificationarea.h>
#include <znobjecttree.h>
#include <znprogresspanel.h>
#include <znguiprogressbarmgr.h>
#include <znpropertybrowser.h>
#include <znsectionview.h>
#include <zn3dfaultpatch.h>
#include <property/znpropertysheet.h>

#include <QDir>
#include <QFileInfo>

#include <znfaulteraser.h>
#include <znfaultpatchtools.h>
#include <znfaultpickingsession.h>
#include <znfaultpickingtool.h>
#include <znsettings.h>

#include "faultcleaningwindow.h"
#include "faultcommands.h"
#include "faultsetdocument.h"
#include "studioproject.h"
#include "studioprojectdock.h"
#include "studioservices.h"
#include "studiotree.h"
#include "studio3dviews.h"
#include "studiofaultviewers.h"
#include "studioviews.h"

namespace {
const QString kSettingsGroup = QStringLiteral("StudioWindow");
const QString kRecentGroup = QStringLiteral("StudioRecentFiles");
constexpr int kInitialWidth = 1400;   // pixels, before a saved layout is restored
constexpr int kInitialHeight = 900;
} // namespace

StudioWindow::StudioWindow(const Options& options, QWidget* parent)
    : ZNFrame(kSettingsGroup, parent), m_project(new StudioProject(this)),
      m_undoGroup(new QUndoGroup(this)), m_recent(kRecentGroup)
{
    setObjectName(QStringLiteral("studioWindow"));
    setWindowTitle(tr("Korvalith Faults Studio"));
    resize(kInitialWidth, kInitialHeight);
    buildDocks();
    m_services = std::make_unique<StudioServices>(this, m_log, m_notifications, m_progressPanel, options.dialogs);
    m_views = new StudioViews(this, m_project, this);
    m_views3D = new Studio3DViews(this, m_project, m_views, this);
    buildFaultViewers();
    buildMenus();
    installActionHandlers();
    restoreLayout();
    if (auto* progressDock = findChild<QDockWidget*>(QStringLiteral("progressDock")))
        progressDock->setVisible(m_progressPanel->taskCount() > 0);

    connect(this, &ZNFrame::filesDropped, this, &StudioWindow::openFiles);
    connect(m_project, &StudioProject::faultSetAdded, this, [this](FaultSetDocument* document) {
        m_undoGroup->addStack(document->undoStack());
        m_undoGroup->setActiveStack(document->undoStack());
    });
    connect(m_project, &StudioProject::faultSetRemoved, this, [this](FaultSetDocument* document) {
        m_undoGroup->removeStack(document->undoStack());
        if (m_currentDocument == document) setCurrentFault(nullptr, core::kNoValue);
    });
    connect(m_studioTree, &StudioTree::faultSelected, this, &StudioWindow::setCurrentFault);
    connect(m_studioTree, &StudioTree::volumeSelected, this, [this](ZNVolume* volume) { m_currentVolume = volume; });
    // A volume opened shows at once: its middle inline, and in 3D (a 3D view shows every
    // volume, so one is opened only when none is open).
    connect(m_project, &StudioProject::volumeAdded, this, [this](ZNVolume* volume) {
        m_views->openSectionView(volume, ZNBlocViewerEngine::SectionKind::Inline);
        if (m_views3D->views().isEmpty()) m_views3D->open3DView();
    });
    connect(m_project, &StudioProject::volumeRemoved, this, [this](ZNVolume* volume) {
        if (m_currentVolume == volume) m_currentVolume = nullptr;
    });
    connect(this, &StudioWindow::currentFaultChanged, m_views, &StudioViews::setCurrentFault);
    connect(this, &StudioWindow::currentFaultChanged, m_views3D, &Studio3DViews::setCurrentFault);
    connect(m_views3D, &Studio3DViews::faultClicked, this,
            [this](FaultSetDocument* document, int faultId) { m_studioTree->selectFault(document, faultId); });
    connect(m_project, &StudioProject::faultSetAdded, this, [this](FaultSetDocument* document) {
        // A fault the picking makes current is the current fault everywhere; every pick
        // counts towards the emergency save.
        connect(document->pickingSession(), &ZNFaultPickingSession::currentFaultChanged, this,
                [this, document](int faultId) { m_studioTree->selectFault(document, faultId); });
        connect(document, &FaultSetDocument::picked, this, [document] {
            ZNFaultPatchManager* set = document->faultSet();
            QDir().mkpath(workingFolder());
            set->autoSave(workingFolder(), false, set->GetUnitObject().isTime());
        });
    });
    connect(m_views, &StudioViews::faultClicked, this,
            [this](FaultSetDocument* document, int faultId) { m_studioTree->selectFault(document, faultId); });
    connect(m_studioTree, &StudioTree::propertiesRequested, this, [this] {
        if (auto* dock = findChild<QDockWidget*>(QStringLiteral("propertyDock"))) {
            dock->show();
            dock->raise();
        }
    });
    connect(m_project, &StudioProject::faultSetAdded, this, [this](FaultSetDocument* document) {
        // The sheet follows the current fault's changes, whoever made them.
        const auto follow = [this, document](int faultId) {
            if (document == m_currentDocument && faultId == m_currentFaultId) refreshProperties();
        };
        connect(document, &FaultSetDocument::faultAppearanceChanged, this, follow);
        connect(document, &FaultSetDocument::faultGeometryChanged, this, follow);
    });
    connect(m_studioTree, &StudioTree::centreRequested, this, [this](FaultSetDocument* document, int faultId) {
        core::vec3 centre;
        if (document->faultCentre(faultId, centre)) m_views->centreOn(centre);
    });
    m_askUnsaved = [this](FaultSetDocument* document) {
        return QMessageBox::question(this, tr("Unsaved changes"),
                                     tr("The fault set \"%1\" has unsaved changes. Save them?").arg(document->name()),
                                     QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel,
                                     QMessageBox::Save);
    };
}

StudioWindow::~StudioWindow()
{
    // Running work is cancelled and waited for while the services are still installed.
    for (const auto& bar : m_services->progress()->openBars())
        if (bar.second.parent < 0) m_services->progress()->cancel(bar.first);
    for (ZNBackgroundTask* task : findChildren<ZNBackgroundTask*>()) task->wait();
    qDeleteAll(findChildren<ZNBackgroundTask*>());
    delete m_cleaning.data();  // it leaves the frame's handlers too
    delete m_faultViewers;  // before the 3D views, which show their marks
    m_faultViewers = nullptr;
    delete m_views3D;  // they leave the frame's handlers, which go with the frame
    m_views3D = nullptr;
    delete m_views;
    m_views = nullptr;
    delete m_project;  // before the services, which the documents may still use
    m_project = nullptr;
}

void StudioWindow::buildDocks()
{
    m_tree = new ZNObjectTree;
    m_studioTree = new StudioTree(m_tree, m_project, this);
    addDock(QStringLiteral("objectTreeDock"), tr("Objects"), m_tree, Qt::LeftDockWidgetArea);
    m_projectDock = new StudioProjectDock(this);
    addDock(QStringLiteral("projectDock"), tr("Project"), m_projectDock, Qt::LeftDockWidgetArea);

    m_properties = new ZNPropertyBrowser;
    m_properties->setObjectName(QStringLiteral("propertyBrowser"));
    addDock(QStringLiteral("propertyDock"), tr("Properties"), m_properties, Qt::LeftDockWidgetArea);
    connect(m_properties, &ZNPropertyBrowser::propertyEdited, this, &StudioWindow::onPropertyEdited);

    m_log = new ZNMessageLog(this);
    auto* logView = new QTableView;
    logView->setObjectName(QStringLiteral("messageLogView"));
    logView->setModel(m_log);
    logView->horizontalHeader()->setStretchLastSection(true);
    logView->verticalHeader()->hide();
    logView->setSelectionBehavior(QAbstractItemView::SelectRows);
    logView->setEditTriggers(QAbstractItemView::NoEditTriggers);
    connect(m_log, &QAbstractItemModel::rowsInserted, logView, [logView] { logView->scrollToBottom(); });
    addDock(QStringLiteral("messageLogDock"), tr("Messages"), logView, Qt::BottomDockWidgetArea);

    m_progressPanel = new ZNProgressPanel;
    // The progress dock comes and goes with the work; it is not a dock the user toggles.
    auto* progressDock = new QDockWidget(tr("Progress"), this);
    progressDock->setObjectName(QStringLiteral("progressDock"));
    progressDock->setWidget(m_progressPanel);
    progressDock->setFeatures(QDockWidget::DockWidgetMovable | QDockWidget::DockWidgetFloatable);
    addDockWidget(Qt::BottomDockWidgetArea, progressDock);
    progressDock->hide();
    connect(m_progressPanel, &ZNProgressPanel::activityChanged, progressDock, &QDockWidget::setVisible);
    m_notifications = new ZNNotificationArea(this);
    m_status = new QLabel(this);
    statusBar()->addWidget(m_status, 1);
}

void StudioWindow::buildMenus()
{
    QMenu* file = new QMenu(tr("&File"), this);
    file->setObjectName(QStringLiteral("fileMenu"));
    file->addAction(tr("Open &Volume..."), this, &StudioWindow::chooseAndOpenVolume);
    file->addAction(tr("&Open Fault Set..."), this, &StudioWindow::chooseAndOpenFaultSet, QKeySequence::Open);
    file->addAction(tr("Open &Project Folder..."), m_projectDock, &StudioProjectDock::chooseFolder);
    m_recentMenu = file->addMenu(tr("Open &Recent"));
    file->addSeparator();
    file->addAction(tr("&Save Fault Set"), this, [this] { saveFaultSet(targetDocument()); }, QKeySequence::Save);
    file->addAction(tr("Save Fault Set &As..."), this, [this] { chooseAndSaveAs(targetDocument()); },
                    QKeySequence::SaveAs);
    file->addAction(tr("&Close Fault Set"), this, [this] { closeFaultSet(targetDocument()); });
    file->addSeparator();
    file->addAction(tr("&Import Sticks..."), this, &StudioWindow::chooseAndImportSticks);
    file->addAction(tr("&Export Sticks..."), this, [this] { chooseAndExportSticks(targetDocument()); });
    file->addAction(tr("Export &Surfaces (TSurf)..."), this, [this] { chooseAndExportSurfaces(targetDocument()); });
    file->addSeparator();
    file->addAction(tr("&Quit"), this, &QWidget::close, QKeySequence::Quit);
    connect(file, &QMenu::aboutToShow, this, &StudioWindow::updateRecentMenu);

    QMenu* edit = new QMenu(tr("&Edit"), this);
    edit->setObjectName(QStringLiteral("editMenu"));
    QAction* undo = m_undoGroup->createUndoAction(this, tr("&Undo"));
    undo->setShortcut(QKeySequence::Undo);
    QAction* redo = m_undoGroup->createRedoAction(this, tr("&Redo"));
    redo->setShortcuts({QKeySequence(Qt::CTRL | Qt::Key_Y), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Z)});
    edit->addAction(undo);
    edit->addAction(redo);

    QMenu* faults = new QMenu(tr("Fa&ults"), this);
    faults->setObjectName(QStringLiteral("faultsMenu"));
    faults->addAction(tr("Compute Fault &Likelihood..."), this, [this] { chooseAndComputeLikelihood(); });
    faults->addAction(tr("&Extract from Likelihood Volume..."), this, [this] { chooseAndExtract(); });
    faults->addSeparator();
    m_interactionGroup = new QActionGroup(this);
    const std::tuple<QString, Interaction, QKeySequence> modes[] = {
        {tr("&Navigate"), Interaction::Navigate, QKeySequence(Qt::Key_Escape)},
        {tr("&Pick Faults"), Interaction::Pick, QKeySequence(Qt::CTRL | Qt::Key_P)},
        {tr("E&rase Points"), Interaction::Erase, QKeySequence(Qt::CTRL | Qt::Key_E)}};
    for (const auto& mode : modes) {
        QAction* a = faults->addAction(std::get<0>(mode));
        a->setCheckable(true);
        a->setChecked(std::get<1>(mode) == m_interaction);
        a->setShortcut(std::get<2>(mode));
        a->setActionGroup(m_interactionGroup);
        a->setData(static_cast<int>(std::get<1>(mode)));
        const Interaction interaction = std::get<1>(mode);
        connect(a, &QAction::triggered, this, [this, interaction] { setInteraction(interaction); });
    }
    faults->addSeparator();
    faults->addAction(tr("New Fault &Set"), this, [this] { newFaultSet(); });
    faults->addAction(tr("New &Fault"), this, [this] {
        if (FaultSetDocument* d = targetDocument() ? targetDocument() : newFaultSet()) d->pickingSession()->newFault();
    });
    faults->addAction(tr("&Clean Picking of Current Fault"), this, [this] {
        if (m_currentDocument && !m_currentDocument->pickingSession()->cleanCurrentFault())
            ZNEventBus::sendMessage(ZNEventBus::Information, tr("Nothing to clean in the current fault"));
    });
    faults->addSeparator();
    faults->addAction(tr("Clean &Duplicated Faults..."), this, [this] { cleanDuplicatedFaults(); })
        ->setObjectName(QStringLiteral("cleanDuplicatedFaultsAction"));

    QMenu* newView = new QMenu(tr("New &Section View"), this);
    newView->setObjectName(QStringLiteral("newSectionViewMenu"));
    const std::pair<QString, ZNBlocViewerEngine::SectionKind> kinds[] = {
        {tr("&Inline"), ZNBlocViewerEngine::SectionKind::Inline},
        {tr("&Crossline"), ZNBlocViewerEngine::SectionKind::Crossline},
        {tr("&Time Slice"), ZNBlocViewerEngine::SectionKind::Slice}};
    for (const auto& kind : kinds) {
        const ZNBlocViewerEngine::SectionKind k = kind.second;
        newView->addAction(kind.first, this, [this, k] {
            ZNVolume* volume = m_currentVolume ? m_currentVolume
                                               : (m_project->volumes().isEmpty() ? nullptr : m_project->volumes().first());
            if (!volume) reportFailure(tr("Open a volume first (File > Open Volume)"));
            else m_views->openSectionView(volume, k);
        });
    }
    windowMenu()->insertMenu(windowMenu()->actions().value(0), newView);
    QAction* new3D = new QAction(tr("New &3D View"), this);
    new3D->setObjectName(QStringLiteral("new3DViewAction"));
    connect(new3D, &QAction::triggered, this, [this] { m_views3D->open3DView(); });
    windowMenu()->insertAction(windowMenu()->actions().value(1), new3D);

    QAction* before = windowMenu()->menuAction();
    for (QMenu* menu : {file, edit, faults}) menuBar()->insertMenu(before, menu);
    menuBar()->addMenu(tr("&Help"))->addAction(tr("&About"), this, [this] {
        QMessageBox::about(this, tr("About Korvalith Faults Studio"),
                           tr("Korvalith Faults Studio: pick, extract, mesh and clean geological faults "
                              "in 3D seismic surveys."));
    });

    connect(m_studioTree, &StudioTree::faultSetMenuRequested, this, [this](FaultSetDocument* document, QMenu* menu) {
        menu->addSeparator();
        menu->addAction(tr("Save"), this, [this, document] { saveFaultSet(document); });
        menu->addAction(tr("Save As..."), this, [this, document] { chooseAndSaveAs(document); });
        menu->addAction(tr("Export Sticks..."), this, [this, document] { chooseAndExportSticks(document); });
        menu->addAction(tr("Export Surfaces (TSurf)..."), this, [this, document] { chooseAndExportSurfaces(document); });
        menu->addSeparator();
        menu->addAction(tr("Close"), this, [this, document] { closeFaultSet(document); });
    });
    connect(m_studioTree, &StudioTree::volumeMenuRequested, this, [this](ZNVolume* volume, QMenu* menu) {
        menu->addAction(tr("Compute Fault Likelihood..."), this, [this, volume] { chooseAndComputeLikelihood(volume); });
        menu->addAction(tr("Extract Faults..."), this, [this, volume] { chooseAndExtract(volume); });
        menu->addAction(tr("Close"), this, [this, volume] { m_project->removeVolume(volume); });
    });
}

void StudioWindow::installActionHandlers()
{
    const auto surfaceChanged = [this](ZNObject* object, bool remesh) {
        FaultSetDocument* document = m_project ? m_project->documentOf(object) : nullptr;
        if (!document) return;
        document->surfaceSettingsChanged(document->faultIdOfSurface(object), remesh);
    };
    addActionHandler(QStringLiteral("UPDATE_FAULT_MESH"),
                     [surfaceChanged](ZNObject* object) { surfaceChanged(object, true); });
    addActionHandler(QStringLiteral("UPDATE_FAULT_LIGHT"),
                     [surfaceChanged](ZNObject* object) { surfaceChanged(object, false); });
}

void StudioWindow::setCurrentFault(FaultSetDocument* document, int faultId)
{
    if (document == m_currentDocument && faultId == m_currentFaultId) return;
    m_currentDocument = document;
    m_currentFaultId = document ? faultId : core::kNoValue;
    if (document) {
        document->pickingSession()->setCurrentFault(m_currentFaultId);
        m_undoGroup->setActiveStack(document->undoStack());
        m_studioTree->selectFault(document, m_currentFaultId);
    }
    refreshProperties();
    emit currentFaultChanged(document, m_currentFaultId);
}

void StudioWindow::refreshProperties()
{
    const ZN3DFaultPatch* surface = m_currentDocument ? m_currentDocument->surface(m_currentFaultId) : nullptr;
    if (!surface) {
        m_properties->clear();
        return;
    }
    ZNPropertySheet sheet;
    surface->createProperty(sheet);
    surface->createGlobalProperty(sheet);
    m_properties->setSheet(sheet);
}

void StudioWindow::onPropertyEdited(const QString& id, const QVariant& value)
{
    FaultSetDocument* document = m_currentDocument;
    const int faultId = m_currentFaultId;
    ZN3DFaultPatch* surface = document ? document->surface(faultId) : nullptr;
    if (!surface) return;
    if (id == QLatin1String("Name")) {
        const QString name = value.toString().trimmed();
        if (!name.isEmpty() && name != document->faultName(faultId))
            document->undoStack()->push(new RenameFaultCommand(document, faultId, name));
        refreshProperties();
        return;
    }
    ZNPropertySheet sheet;
    surface->createProperty(sheet);
    surface->createGlobalProperty(sheet);
    const ZNProperty* row = sheet.property(id);
    if (!row) return;
    // The command applies the edit (its first redo), which posts the surface's action
    // once; an edit the surface refuses leaves no step to undo.
    if (row->value == value) return;
    document->undoStack()->push(new SetFaultPropertyCommand(document, faultId, id, value, row->value, row->label));
    refreshProperties();
}

void StudioWindow::setInteraction(Interaction interaction)
{
    FaultSetDocument* document = interaction == Interaction::Navigate ? m_currentDocument : targetDocument();
    if (interaction != Interaction::Navigate && !document) document = newFaultSet();
    if (interaction != Interaction::Navigate && !document) {
        reportFailure(tr("Open a volume first: faults are picked on its sections"));
        interaction = Interaction::Navigate;
    }
    m_interaction = interaction;
    for (QAction* a : m_interactionGroup->actions()) a->setChecked(a->data().toInt() == static_cast<int>(interaction));
    if (document && document != m_currentDocument) m_studioTree->selectFault(document, -9999);
    const QString mode = interaction == Interaction::Pick    ? ZNFaultPickingTool::modeName()
                         : interaction == Interaction::Erase ? ZNFaultEraser::modeName()
                                                             : QString();
    m_views->setInteraction(mode, document ? document->pickingSession() : nullptr);
    m_faultViewers->setInteraction(mode, document ? document->pickingSession() : nullptr);
}

FaultSetDocument* StudioWindow::newFaultSet(ZNVolume* volume)
{
    if (!volume) volume = m_currentVolume ? m_currentVolume : (m_project->volumes().isEmpty() ? nullptr : m_project->volumes().first());
    if (!volume) return nullptr;
    auto set = std::make_unique<ZNFaultPatchManager>();
    set->setBlocSpace(volume->blocSpace());
    set->SetUnitObject(volume->units());
    const QString name = m_project->uniqueName(tr("Picks"));
    set->setObjectName(name);
    FaultSetDocument* document = m_project->addFaultSet(std::make_unique<FaultSetDocument>(
        std::move(set), std::map<int, std::unique_ptr<ZN3DFaultPatch>>(), QString(), name));
    m_studioTree->selectFault(document, -9999);
    return document;
}

QString StudioWindow::workingFolder()
{
    const QString chosen = ZNSettings::value(QStringLiteral("Studio"), QStringLiteral("StudioWorkingFolder")).toString();
    return chosen.isEmpty() ? ZNSettings::userSettingsFile(QStringLiteral("work")) : chosen;
}

int StudioWindow::offerEmergencyRestore(const std::function<bool(const QStringList&)>& ask)
{
    QStringList found;
    for (const QString& name : {ZNFaultPatchTools::getAutoSaveFileNameTime(), ZNFaultPatchTools::getAutoSaveFileNameDepth()})
        if (QFileInfo(QDir(workingFolder()).filePath(name)).isFile()) found << QDir(workingFolder()).filePath(name);
    if (found.isEmpty() || !ask(found)) return 0;
    for (const QString& path : found) {
        // Opened as a new fault set: saving asks where, and the emergency file stays until
        // the session ends cleanly.
        auto loaded = std::make_shared<LoadedFaultSet>();
        runTask(tr("Restore %1").arg(QFileInfo(path).fileName()), [path, loaded] { *loaded = readFaultSetFile(path); },
                [this, loaded, path] {
                    if (!loaded->ok()) {
                        reportFailure(loaded->error);
                        return false;
                    }
                    addLoadedFaultSet(*loaded, QString(), tr("Recovered %1").arg(QFileInfo(path).fileName()));
                    return true;
                });
    }
    return found.size();
}

FaultSetDocument* StudioWindow::targetDocument() const
{
    if (m_currentDocument) return m_currentDocument;
    const QList<FaultSetDocument*> sets = m_project->faultSets();
    return sets.size() == 1 ? sets.first() : nullptr;
}

void StudioWindow::reportFailure(const QString& message)
{
    ZNEventBus::sendMessage(ZNEventBus::Error, message);
}

void StudioWindow::runTask(const QString& what, std::function<void()> work, std::function<bool()> done)
{
    ++m_runningTasks;
    m_status->setText(tr("%1...").arg(what));
    ZNBackgroundTask::start(this, std::move(work), [this, what, done] {
        --m_runningTasks;
        const bool ok = done();
        m_status->setText(m_runningTasks > 0 ? tr("Working...") : QString());
        emit taskFinished(what, ok);
    });
}

void StudioWindow::closeEvent(QCloseEvent* event)
{
    for (FaultSetDocument* document : m_project->faultSets()) {
        if (!document->isModified()) continue;
        const QMessageBox::StandardButton answer = m_askUnsaved(document);
        if (answer == QMessageBox::Cancel || (answer == QMessageBox::Save && !saveFaultSet(document))) {
            event->ignore();
            return;
        }
    }
    // A session that ends here leaves nothing to restore.
    for (const QString& name : {ZNFaultPatchTools::getAutoSaveFileNameTime(), ZNFaultPatchTools::getAutoSaveFileNameDepth()})
        QFile::remove(QDir(workingFolder()).filePath(name));
    ZNFrame::closeEvent(event);
}
