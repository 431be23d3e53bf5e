#pragma once
#include <vector>

#include <QDateTime>
#include <QHash>
#include <QIcon>
#include <QStandardItemModel>
#include <QString>
#include <QStringList>
#include <QVector>

class ZNProjectBrowserItem;
class ZNProjectBrowserPluginAbstract;

// The host's project browser: the files of one project directory as a tree. Each plugin
// registered with addBranch gets one top-level branch item and fills it with its files
// (the host's item builder addFileItem makes their items) and, when it reads them, with
// what they hold under each file's item. Items are ZNProjectBrowserItem objects whose
// path role holds the path they stand for.
//
// The model, like every item model, is used on the thread that owns it (the GUI thread)
// only: plugins that read files on other threads bring their results back through queued
// signals.
//
// Searches by path (match with ZNProjectBrowserItem::PathRole, Qt::MatchExactly and
// Qt::MatchRecursive from the first top-level index) are answered from an index of the
// items by path that the model keeps up to date with every insertion, removal and change,
// with exactly the result the generic search gives: a plugin that looks up the file of
// each result it receives does not scan the whole tree every time. Only the items whose
// path differs from their parent's are indexed: the parts listed under a file carry the
// file's path, and a search meets their parent first.
class ZNProjectBrowserModel : public QStandardItemModel {
    Q_OBJECT
public:
    explicit ZNProjectBrowserModel(QObject* parent = nullptr);
    ~ZNProjectBrowserModel() override;

    // Adds a top-level branch titled `title`, filled by `plugin` (not owned; it must
    // outlive the model or be destroyed with it) with the directory's files whose names
    // match `nameFilters` (wildcards, case-insensitive; every file when empty).
    ZNProjectBrowserItem* addBranch(ZNProjectBrowserPluginAbstract* plugin, const QString& title,
                                    const QStringList& nameFilters);

    // Shows the directory `path`: every branch is emptied and filled again by its plugin.
    // An empty path leaves the branches empty.
    void setDirectory(const QString& path);
    // The directory shown, absolute; empty when none.
    const QString& directory() const { return m_directory; }
    // Fills again the branches whose files changed since they were filled (a file added or
    // removed, or now of another size or modification time); returns how many were.
    int refresh();

    // The host's item builder: an item for the file at `path` (its name as text, the path,
    // the data key "PROJECT_PATH", the directory's identifier as tag), selectable and
    // draggable but not editable, appended to `branch`. Null for a null branch.
    ZNProjectBrowserItem* addFileItem(ZNProjectBrowserItem* branch, const QString& path, int directoryId);

    // The paths of every file item, in tree order.
    QStringList filePaths() const;

    QModelIndexList match(const QModelIndex& start, int role, const QVariant& value, int hits = 1,
                          Qt::MatchFlags flags = Qt::MatchFlags(Qt::MatchStartsWith | Qt::MatchWrap)) const override;

    // Dragged items travel as the local files they stand for (file items only), which any
    // window that opens dropped files understands.
    QStringList mimeTypes() const override;
    QMimeData* mimeData(const QModelIndexList& indexes) const override;
    Qt::DropActions supportedDragActions() const override { return Qt::CopyAction; }

private:
    // What a branch's files looked like when it was filled.
    struct FileStamp {
        QString name;
        qint64 size = 0;
        QDateTime modified;
        bool operator==(const FileStamp& o) const
        {
            return name == o.name && size == o.size && modified == o.modified;
        }
    };
    struct Branch {
        ZNProjectBrowserPluginAbstract* plugin = nullptr;
        ZNProjectBrowserItem* item = nullptr;
        QStringList nameFilters;
        QVector<FileStamp> files;
    };

    void fill(Branch& branch);
    QVector<FileStamp> currentFiles(const Branch& branch) const;
    int directoryId(const QString& path);

    // The index of items by path: the items whose path (a string) is not their parent's,
    // each under its path.
    void indexItem(QStandardItem* item);
    void unindexItem(QStandardItem* item);
    // Indexes `item` when its path is not its parent's, and unindexes it otherwise.
    void reindexItem(QStandardItem* item);
    void indexSubtree(QStandardItem* item, bool add);
    void indexRange(const QModelIndex& parent, int firstRow, int lastRow, int firstColumn, int lastColumn,
                    bool add);
    void rebuildIndex();

    std::vector<Branch> m_branches;
    QIcon m_fileIcon;
    QString m_directory;
    QHash<QString, int> m_directoryIds;  // the directories shown so far, numbered from 1
    QHash<QString, QVector<QStandardItem*>> m_itemsByPath;
    QHash<const QStandardItem*, QString> m_pathOfItem;
};
