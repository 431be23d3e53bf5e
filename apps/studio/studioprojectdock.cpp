#include "studioprojectdock.h"

#include <QFileDialog>
#include <QFileInfo>
#include <QFileSystemWatcher>
#include <QMouseEvent>
#include <QTreeView>
#include <QVBoxLayout>

#include <core/conventions.h>
#include <znprojectbrowseritem.h>
#include <znprojectbrowsermodel.h>
#include <znprojectbrowserpluginfault.h>
#include <znprojectbrowserpluginvolume.h>

#include "faultsetdocument.h"
#include "studioproject.h"
#include "studiotree.h"
#include "studiowindow.h"

namespace {
const QString kFaultSetFilter = QStringLiteral("*.faultset");

// The file item `index` stands for; null for any other item.
ZNProjectBrowserItem* fileItemAt(const ZNProjectBrowserModel* model, const QModelIndex& index)
{
    ZNProjectBrowserItem* item = ZNProjectBrowserItem::of(model->itemFromIndex(index));
    return item && item->kind() == ZNProjectBrowserItem::FileKind ? item : nullptr;
}
} // namespace

StudioProjectDock::StudioProjectDock(StudioWindow* window)
    : m_window(window), m_model(new ZNProjectBrowserModel(this)),
      m_volumes(new ZNProjectBrowserPluginVolume(m_model, this)), m_faults(new ZNProjectBrowserPluginFault(m_model, this)),
      m_view(new QTreeView), m_watcher(new QFileSystemWatcher(this))
{
    setObjectName(QStringLiteral("projectBrowser"));
    m_model->addBranch(m_volumes, tr("Volumes"), ZNProjectBrowserPluginVolume::volumeNameFilters());
    m_model->addBranch(m_faults, tr("Fault Sets"), {kFaultSetFilter});

    m_view->setObjectName(QStringLiteral("projectBrowserView"));
    m_view->setModel(m_model);
    m_view->setHeaderHidden(true);
    m_view->setUniformRowHeights(true);
    m_view->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_view->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_view->setDragEnabled(true);
    m_view->setDragDropMode(QAbstractItemView::DragOnly);
    m_view->viewport()->installEventFilter(this);
    for (int row = 0; row < m_model->rowCount(); ++row) m_view->expand(m_model->index(row, 0));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_view);

    // A fault set the user expanded stays expanded when it is filled again.
    connect(m_view, &QTreeView::expanded, this, [this](const QModelIndex& index) {
        if (const ZNProjectBrowserItem* file = fileItemAt(m_model, index)) m_expandedFiles.insert(file->path());
    });
    connect(m_view, &QTreeView::collapsed, this, [this](const QModelIndex& index) {
        if (const ZNProjectBrowserItem* file = fileItemAt(m_model, index)) m_expandedFiles.remove(file->path());
    });
    connect(m_model, &QAbstractItemModel::rowsInserted, this, [this](const QModelIndex& parent) {
        const ZNProjectBrowserItem* file = fileItemAt(m_model, parent);
        if (file && m_expandedFiles.contains(file->path())) m_view->expand(parent);
    });

    m_refreshTimer.setSingleShot(true);
    m_refreshTimer.setInterval(kRefreshDelayMs);
    connect(&m_refreshTimer, &QTimer::timeout, this, &StudioProjectDock::refresh);
    connect(m_watcher, &QFileSystemWatcher::directoryChanged, &m_refreshTimer, qOverload<>(&QTimer::start));
    connect(m_watcher, &QFileSystemWatcher::fileChanged, &m_refreshTimer, qOverload<>(&QTimer::start));

    connect(m_window, &StudioWindow::taskFinished, this, [this](const QString& what, bool ok) {
        if (selectPendingFault() || ok || m_pending.path.isEmpty()) return;
        // The fault set asked for could not be opened: nothing is left to select.
        if (what.endsWith(QFileInfo(m_pending.path).fileName())) m_pending = PendingFault();
    });
}

StudioProjectDock::~StudioProjectDock()
{
    // The readers stop before the model they fill goes.
    delete m_faults;
    delete m_volumes;
    m_view->setModel(nullptr);
}

void StudioProjectDock::setFolder(const QString& path)
{
    m_refreshTimer.stop();
    m_expandedFiles.clear();
    m_model->setDirectory(path);
    updateWatchedPaths();
}

QString StudioProjectDock::folder() const
{
    return m_model->directory();
}

void StudioProjectDock::chooseFolder()
{
    const QString path = QFileDialog::getExistingDirectory(this, tr("Open Project Folder"), folder());
    if (path.isEmpty()) return;
    setFolder(path);
    if (QWidget* dock = parentWidget()) {
        dock->show();
        dock->raise();
    }
}

void StudioProjectDock::refresh()
{
    m_model->refresh();
    updateWatchedPaths();
    emit refreshed();
}

void StudioProjectDock::updateWatchedPaths()
{
    QSet<QString> wanted;
    for (const QString& path : m_model->filePaths()) wanted.insert(path);
    if (!folder().isEmpty()) wanted.insert(folder());
    QSet<QString> watched;
    for (const QString& path : m_watcher->files() + m_watcher->directories()) watched.insert(path);
    const QStringList gone = (watched - wanted).values();
    const QStringList added = (wanted - watched).values();
    if (!gone.isEmpty()) m_watcher->removePaths(gone);
    if (!added.isEmpty()) m_watcher->addPaths(added);
}

void StudioProjectDock::openItem(QStandardItem* standardItem)
{
    const ZNProjectBrowserItem* item = ZNProjectBrowserItem::of(standardItem);
    if (!item) return;
    if (item->kind() == ZNProjectBrowserItem::FileKind) {
        m_window->openFiles({item->path()});
        return;
    }
    if (item->kind() != ZNProjectBrowserItem::ElementKind || item->tag() != ZNProjectBrowserPluginFault::kFaultNameTag)
        return;
    // Names may repeat within a set: the n-th item of a name stands for the n-th fault of it.
    int occurrence = 0;
    const QStandardItem* file = item->parent();
    for (int row = 0; file && row < item->row(); ++row)
        if (file->child(row)->text() == item->text()) ++occurrence;
    m_pending = PendingFault{item->path(), item->text(), occurrence};
    if (!selectPendingFault()) m_window->openFiles({item->path()});
}

bool StudioProjectDock::selectPendingFault()
{
    if (m_pending.path.isEmpty()) return false;
    FaultSetDocument* document = m_window->project()->documentWithPath(m_pending.path);
    if (!document) return false;
    int faultId = core::kNoValue;  // the set itself when no fault has the name
    int seen = 0;
    for (int id : document->faultIds()) {
        if (document->faultName(id) != m_pending.name) continue;
        if (seen++ == m_pending.occurrence) {
            faultId = id;
            break;
        }
    }
    m_pending = PendingFault();
    m_window->studioTree()->selectFault(document, faultId);
    return true;
}

bool StudioProjectDock::eventFilter(QObject* watched, QEvent* event)
{
    // Double clicks are handled here rather than through the view's signal, which fault
    // names (disabled items) never emit.
    if (watched != m_view->viewport() || event->type() != QEvent::MouseButtonDblClick) return false;
    const auto* mouse = static_cast<QMouseEvent*>(event);
    if (mouse->button() != Qt::LeftButton) return false;
    ZNProjectBrowserItem* item = ZNProjectBrowserItem::of(m_model->itemFromIndex(m_view->indexAt(mouse->pos())));
    if (!item || item->kind() == ZNProjectBrowserItem::BranchKind) return false;
    openItem(item);
    return true;
}
