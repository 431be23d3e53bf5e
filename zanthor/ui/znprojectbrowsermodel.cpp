#include "znprojectbrowsermodel.h"

#include <algorithm>

#include <QApplication>
#include <QDir>
#include <QDomDocument>
#include <QFileInfo>
#include <QMimeData>
#include <QStyle>
#include <QUrl>

#include "znprojectbrowseritem.h"
#include "znprojectbrowserpluginabstract.h"

namespace {
const QString kDirectoryTag = QStringLiteral("directory");
const QString kDirectoryIdKey = QStringLiteral("directoryId");
const QString kPathKey = QStringLiteral("path");
const QString kUriList = QStringLiteral("text/uri-list");
constexpr int kBranchTag = 0;

// The rows from the top of the tree down to `item`, the order in which a depth-first
// search meets items; false when the item hangs below a column other than the first,
// which a search by rows never visits.
bool rowsFromTop(const QStandardItem* item, std::vector<int>& rows)
{
    rows.clear();
    for (; item; item = item->parent()) {
        if (item->column() != 0) return false;
        rows.push_back(item->row());
    }
    std::reverse(rows.begin(), rows.end());
    return true;
}

// The style's icon; none in an application without widgets.
QIcon standardIcon(QStyle::StandardPixmap which)
{
    return qobject_cast<QApplication*>(QCoreApplication::instance()) ? QApplication::style()->standardIcon(which)
                                                                     : QIcon();
}

// The path `item` stands for; false when it has none (no string under the path role).
bool pathOf(const QStandardItem* item, QString& path)
{
    const QVariant value = item->data(ZNProjectBrowserItem::PathRole);
    if (value.userType() != QMetaType::QString) return false;
    path = value.toString();
    return true;
}

// Whether `item` has a path and its parent item has the same one.
bool sharesParentPath(const QStandardItem* item, const QString& path)
{
    QString parentPath;
    return item->parent() && pathOf(item->parent(), parentPath) && parentPath == path;
}

// `item` (of `path`) and, below it, every item reached through first-column children of
// the same path, with their rows from the top; nothing when a search by rows never
// reaches `item`.
void collectSamePath(QStandardItem* item, const QString& path,
                     std::vector<std::pair<std::vector<int>, QStandardItem*>>& found)
{
    std::vector<int> rows;
    if (!rowsFromTop(item, rows)) return;
    found.emplace_back(rows, item);
    QString childPath;
    for (int row = 0; row < item->rowCount(); ++row)
        if (QStandardItem* child = item->child(row, 0))
            if (pathOf(child, childPath) && childPath == path) collectSamePath(child, path, found);
}
} // namespace

ZNProjectBrowserModel::ZNProjectBrowserModel(QObject* parent) : QStandardItemModel(parent)
{
    connect(this, &QAbstractItemModel::rowsInserted, this, [this](const QModelIndex& parent, int first, int last) {
        indexRange(parent, first, last, 0, columnCount(parent) - 1, true);
    });
    connect(this, &QAbstractItemModel::rowsAboutToBeRemoved, this,
            [this](const QModelIndex& parent, int first, int last) {
                indexRange(parent, first, last, 0, columnCount(parent) - 1, false);
            });
    connect(this, &QAbstractItemModel::columnsInserted, this, [this](const QModelIndex& parent, int first, int last) {
        indexRange(parent, 0, rowCount(parent) - 1, first, last, true);
    });
    connect(this, &QAbstractItemModel::columnsAboutToBeRemoved, this,
            [this](const QModelIndex& parent, int first, int last) {
                indexRange(parent, 0, rowCount(parent) - 1, first, last, false);
            });
    connect(this, &QAbstractItemModel::dataChanged, this,
            [this](const QModelIndex& topLeft, const QModelIndex& bottomRight, const QVector<int>& roles) {
                if (!roles.isEmpty() && !roles.contains(ZNProjectBrowserItem::PathRole)) return;
                for (int row = topLeft.row(); row <= bottomRight.row(); ++row)
                    for (int column = topLeft.column(); column <= bottomRight.column(); ++column)
                        if (QStandardItem* item = itemFromIndex(topLeft.sibling(row, column))) {
                            // Its children's paths are now compared with its new one.
                            reindexItem(item);
                            for (int r = 0; r < item->rowCount(); ++r)
                                for (int c = 0; c < item->columnCount(); ++c)
                                    if (QStandardItem* child = item->child(r, c)) reindexItem(child);
                        }
            });
    // Items replaced in place (setItem, setChild) and sorted rows only announce a new
    // layout; a reset deletes everything.
    connect(this, &QAbstractItemModel::layoutChanged, this, &ZNProjectBrowserModel::rebuildIndex);
    connect(this, &QAbstractItemModel::modelReset, this, &ZNProjectBrowserModel::rebuildIndex);
}

ZNProjectBrowserModel::~ZNProjectBrowserModel() = default;

ZNProjectBrowserItem* ZNProjectBrowserModel::addBranch(ZNProjectBrowserPluginAbstract* plugin, const QString& title,
                                                       const QStringList& nameFilters)
{
    auto* item = new ZNProjectBrowserItem(ZNProjectBrowserItem::BranchKind, ZNProjectBrowserItem::projectPathKey(),
                                          title, m_directory, kBranchTag);
    item->setEditable(false);
    item->setDragEnabled(false);
    item->setIcon(standardIcon(QStyle::SP_DirIcon));
    appendRow(item);
    m_branches.push_back(Branch{plugin, item, nameFilters, {}});
    fill(m_branches.back());
    return item;
}

void ZNProjectBrowserModel::setDirectory(const QString& path)
{
    m_directory = path.isEmpty() ? QString() : QDir(path).absolutePath();
    for (Branch& branch : m_branches) {
        branch.item->setData(m_directory, ZNProjectBrowserItem::PathRole);
        fill(branch);
    }
}

int ZNProjectBrowserModel::refresh()
{
    int filled = 0;
    for (Branch& branch : m_branches) {
        if (currentFiles(branch) == branch.files) continue;
        fill(branch);
        ++filled;
    }
    return filled;
}

void ZNProjectBrowserModel::fill(Branch& branch)
{
    branch.item->removeRows(0, branch.item->rowCount());
    // Taken before the plugin lists the files: a change made while it fills is seen by
    // the next refresh.
    branch.files = currentFiles(branch);
    if (m_directory.isEmpty() || !branch.plugin) return;
    QDomDocument doc;
    QDomElement element = doc.createElement(kDirectoryTag);
    element.setAttribute(kDirectoryIdKey, QString::number(directoryId(m_directory)));
    element.setAttribute(kPathKey, m_directory);
    doc.appendChild(element);
    branch.plugin->fillFiles(element, m_directory, branch.item, branch.nameFilters);
}

auto ZNProjectBrowserModel::currentFiles(const Branch& branch) const -> QVector<FileStamp>
{
    QVector<FileStamp> files;
    if (m_directory.isEmpty()) return files;
    const QFileInfoList entries =
        QDir(m_directory).entryInfoList(branch.nameFilters, QDir::Files | QDir::NoDotAndDotDot, QDir::Name);
    for (const QFileInfo& entry : entries) files.push_back({entry.fileName(), entry.size(), entry.lastModified()});
    return files;
}

int ZNProjectBrowserModel::directoryId(const QString& path)
{
    auto found = m_directoryIds.find(path);
    if (found == m_directoryIds.end()) found = m_directoryIds.insert(path, m_directoryIds.size() + 1);
    return found.value();
}

ZNProjectBrowserItem* ZNProjectBrowserModel::addFileItem(ZNProjectBrowserItem* branch, const QString& path,
                                                         int directoryId)
{
    if (!branch) return nullptr;
    auto* item = new ZNProjectBrowserItem(ZNProjectBrowserItem::FileKind, ZNProjectBrowserItem::projectPathKey(),
                                          QFileInfo(path).fileName(), path, directoryId);
    item->setEditable(false);
    item->setDragEnabled(true);
    item->setToolTip(path);
    if (m_fileIcon.isNull()) m_fileIcon = standardIcon(QStyle::SP_FileIcon);  // made once: icons cost
    item->setIcon(m_fileIcon);
    branch->appendRow(item);
    return item;
}

QStringList ZNProjectBrowserModel::filePaths() const
{
    QStringList paths;
    for (const Branch& branch : m_branches)
        for (int row = 0; row < branch.item->rowCount(); ++row)
            if (const ZNProjectBrowserItem* file = ZNProjectBrowserItem::of(branch.item->child(row)))
                if (file->kind() == ZNProjectBrowserItem::FileKind) paths << file->path();
    return paths;
}

QModelIndexList ZNProjectBrowserModel::match(const QModelIndex& start, int role, const QVariant& value, int hits,
                                             Qt::MatchFlags flags) const
{
    const bool wholeTree = start.isValid() && !start.parent().isValid() && start.row() == 0 && start.column() == 0;
    if (role != ZNProjectBrowserItem::PathRole || flags != Qt::MatchFlags(Qt::MatchExactly | Qt::MatchRecursive) ||
        !wholeTree || value.userType() != QMetaType::QString)
        return QStandardItemModel::match(start, role, value, hits, flags);

    // The items with that path, in the order of a depth-first search by rows. An item
    // that is not indexed comes after its parent of the same path: the first hit is an
    // indexed one.
    const QString path = value.toString();
    std::vector<std::pair<std::vector<int>, QStandardItem*>> found;
    std::vector<int> rows;
    for (QStandardItem* item : m_itemsByPath.value(path)) {
        if (hits != 1)
            collectSamePath(item, path, found);
        else if (rowsFromTop(item, rows))
            found.emplace_back(rows, item);
    }
    std::sort(found.begin(), found.end());
    QModelIndexList result;
    for (const auto& f : found) {
        if (hits >= 0 && result.size() >= hits) break;
        result << f.second->index();
    }
    return result;
}

QStringList ZNProjectBrowserModel::mimeTypes() const
{
    return {kUriList};
}

QMimeData* ZNProjectBrowserModel::mimeData(const QModelIndexList& indexes) const
{
    QList<QUrl> urls;
    for (const QModelIndex& index : indexes) {
        const ZNProjectBrowserItem* item = ZNProjectBrowserItem::of(itemFromIndex(index));
        if (item && item->kind() == ZNProjectBrowserItem::FileKind) urls << QUrl::fromLocalFile(item->path());
    }
    if (urls.isEmpty()) return nullptr;
    auto* mime = new QMimeData;
    mime->setUrls(urls);
    return mime;
}

// ----- the index of items by path -----

void ZNProjectBrowserModel::indexItem(QStandardItem* item)
{
    QString path;
    if (!pathOf(item, path) || sharesParentPath(item, path)) return;
    m_itemsByPath[path].append(item);
    m_pathOfItem.insert(item, path);
}

void ZNProjectBrowserModel::unindexItem(QStandardItem* item)
{
    const auto path = m_pathOfItem.find(item);
    if (path == m_pathOfItem.end()) return;
    const auto items = m_itemsByPath.find(path.value());
    if (items != m_itemsByPath.end()) {
        items->removeOne(item);
        if (items->isEmpty()) m_itemsByPath.erase(items);
    }
    m_pathOfItem.erase(path);
}

void ZNProjectBrowserModel::reindexItem(QStandardItem* item)
{
    unindexItem(item);
    indexItem(item);
}

void ZNProjectBrowserModel::indexSubtree(QStandardItem* item, bool add)
{
    if (!item) return;
    if (add)
        indexItem(item);
    else
        unindexItem(item);
    for (int row = 0; row < item->rowCount(); ++row)
        for (int column = 0; column < item->columnCount(); ++column) indexSubtree(item->child(row, column), add);
}

void ZNProjectBrowserModel::indexRange(const QModelIndex& parent, int firstRow, int lastRow, int firstColumn,
                                       int lastColumn, bool add)
{
    QStandardItem* parentItem = parent.isValid() ? itemFromIndex(parent) : invisibleRootItem();
    if (!parentItem) return;
    for (int row = firstRow; row <= lastRow; ++row)
        for (int column = firstColumn; column <= lastColumn; ++column)
            indexSubtree(parentItem->child(row, column), add);
}

void ZNProjectBrowserModel::rebuildIndex()
{
    m_itemsByPath.clear();
    m_pathOfItem.clear();
    QStandardItem* root = invisibleRootItem();
    for (int row = 0; row < root->rowCount(); ++row)
        for (int column = 0; column < root->columnCount(); ++column) indexSubtree(root->child(row, column), true);
}
