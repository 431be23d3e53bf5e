#pragma once
#include <QSet>
#include <QString>
#include <QTimer>
#include <QWidget>

class QFileSystemWatcher;
class QStandardItem;
class QTreeView;
class StudioWindow;
class ZNProjectBrowserModel;
class ZNProjectBrowserPluginFault;
class ZNProjectBrowserPluginVolume;

// The project dock of the studio: the host's project browser over one folder, with a
// branch of volumes (SEG-Y and block files) and a branch of fault sets, each fault set
// with the names of its faults below it as they are read (in the background).
//
// The folder is watched: a file added, removed or rewritten fills its branch again, a
// moment after the last change (changes come in bursts while a file is written); what
// was expanded stays expanded. A double click opens a volume or a fault set in the
// window; on a fault's name it opens the fault set (unless it is open already) and then
// selects that fault. Files dragged from the dock travel as local files, which the
// window opens when they are dropped on it or on one of its views.
class StudioProjectDock : public QWidget {
    Q_OBJECT
public:
    // Time from the last change in the folder to the refresh.
    static constexpr int kRefreshDelayMs = 200;

    explicit StudioProjectDock(StudioWindow* window);
    ~StudioProjectDock() override;

    // Shows the folder `path` (empty: none) and watches it.
    void setFolder(const QString& path);
    // The folder shown, absolute; empty when none.
    QString folder() const;
    // Asks for a folder and shows it.
    void chooseFolder();

    ZNProjectBrowserModel* model() const { return m_model; }
    QTreeView* view() const { return m_view; }
    ZNProjectBrowserPluginFault* faultPlugin() const { return m_faults; }

    // What a double click on `item` does: a file opens in the window; a fault's name
    // opens its fault set and selects the fault (the set alone for the entry that
    // counts the unnamed faults). Other items do nothing.
    void openItem(QStandardItem* item);

signals:
    // The folder's files changed and the dock filled again what changed.
    void refreshed();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void refresh();
    // Watches the folder and every file listed, and nothing else.
    void updateWatchedPaths();
    // Selects the fault asked for once its fault set is open; true when it was.
    bool selectPendingFault();

    // A fault to select once its fault set is open: the `occurrence`-th fault (from 0)
    // named `name` in the set at `path`.
    struct PendingFault {
        QString path;
        QString name;
        int occurrence = 0;
    };

    StudioWindow* m_window;
    ZNProjectBrowserModel* m_model;
    ZNProjectBrowserPluginVolume* m_volumes;
    ZNProjectBrowserPluginFault* m_faults;
    QTreeView* m_view;
    QFileSystemWatcher* m_watcher;
    QTimer m_refreshTimer;
    QSet<QString> m_expandedFiles;  // paths of the file items the user expanded
    PendingFault m_pending;
};
