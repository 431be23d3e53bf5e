#include <gtest/gtest.h>

#include <random>

#include <QDir>
#include <QMimeData>
#include <QTemporaryDir>
#include <QUrl>

#include <znprojectbrowseritem.h>
#include <znprojectbrowsermodel.h>
#include <znprojectbrowserpluginvolume.h>

#include <testfiles.h>

namespace {

// A plugin that lists its files and records every call.
class RecordingPlugin : public ZNProjectBrowserPluginAbstract {
public:
    using ZNProjectBrowserPluginAbstract::ZNProjectBrowserPluginAbstract;
    struct Call {
        int directoryId;
        QString directory;
        QStringList nameFilters;
    };
    QList<Call> calls;

    void fillFiles(QDomElement element, QString directory, ZNProjectBrowserItem* branch,
                   QStringList nameFilters) override
    {
        calls << Call{directoryId(element), directory, nameFilters};
        for (const QString& path : listFiles(directory, nameFilters))
            model()->addFileItem(branch, path, directoryId(element));
    }
};

QStringList childTexts(const QStandardItem* item)
{
    QStringList texts;
    for (int row = 0; row < item->rowCount(); ++row) texts << item->child(row)->text();
    return texts;
}

struct Folder {
    QTemporaryDir dir;
    QString path(const QString& name) const { return dir.filePath(name); }
    void write(const QString& name, const QByteArray& bytes = "x") const { ASSERT_TRUE(writeFileBytes(path(name), bytes)); }
};

} // namespace

TEST(ProjectBrowserModel, EachPluginFillsItsBranchWithTheDirectorysMatchingFiles)
{
    Folder folder;
    for (const char* name : {"b.sgy", "A.SEGY", "c.bloc", "faults.faultset", "notes.txt"}) folder.write(name);
    ASSERT_TRUE(QDir(folder.dir.path()).mkdir("old.sgy"));  // a folder is not a volume

    ZNProjectBrowserModel model;
    ZNProjectBrowserPluginVolume volumes(&model);
    RecordingPlugin faults(&model);
    ZNProjectBrowserItem* volumeBranch = model.addBranch(&volumes, "Volumes", ZNProjectBrowserPluginVolume::volumeNameFilters());
    ZNProjectBrowserItem* faultBranch = model.addBranch(&faults, "Fault Sets", {"*.faultset"});
    EXPECT_EQ(faultBranch->rowCount(), 0);  // no directory yet
    EXPECT_TRUE(faults.calls.isEmpty());

    model.setDirectory(folder.dir.path());
    EXPECT_EQ(model.directory(), QDir(folder.dir.path()).absolutePath());
    EXPECT_EQ(childTexts(volumeBranch), (QStringList{"A.SEGY", "b.sgy", "c.bloc"}));
    EXPECT_EQ(childTexts(faultBranch), QStringList{"faults.faultset"});
    ASSERT_EQ(faults.calls.size(), 1);
    EXPECT_GT(faults.calls[0].directoryId, 0);
    EXPECT_EQ(faults.calls[0].directory, model.directory());
    EXPECT_EQ(faults.calls[0].nameFilters, QStringList{"*.faultset"});
    EXPECT_EQ(volumeBranch->kind(), ZNProjectBrowserItem::BranchKind);
    EXPECT_EQ(volumeBranch->path(), model.directory());

    const ZNProjectBrowserItem* file = ZNProjectBrowserItem::of(faultBranch->child(0));
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(file->kind(), ZNProjectBrowserItem::FileKind);
    EXPECT_EQ(file->dataKey(), "PROJECT_PATH");
    EXPECT_EQ(file->path(), QDir(folder.dir.path()).absoluteFilePath("faults.faultset"));
    EXPECT_EQ(file->tag(), faults.calls[0].directoryId);
    EXPECT_FALSE(file->isEditable());
    EXPECT_TRUE(file->isDragEnabled());
    EXPECT_EQ(model.filePaths(), (QStringList{folder.path("A.SEGY"), folder.path("b.sgy"), folder.path("c.bloc"),
                                              folder.path("faults.faultset")}));

    // The same directory keeps its identifier; another gets its own.
    Folder other;
    model.setDirectory(other.dir.path());
    model.setDirectory(folder.dir.path());
    ASSERT_EQ(faults.calls.size(), 3);
    EXPECT_NE(faults.calls[1].directoryId, faults.calls[0].directoryId);
    EXPECT_EQ(faults.calls[2].directoryId, faults.calls[0].directoryId);
    EXPECT_EQ(faultBranch->rowCount(), 1);  // filled again, not added to

    model.setDirectory(QString());
    EXPECT_EQ(volumeBranch->rowCount(), 0);
    EXPECT_EQ(faults.calls.size(), 3);
}

TEST(ProjectBrowserModel, RefreshFillsAgainOnlyTheBranchesWhoseFilesChanged)
{
    Folder folder;
    folder.write("a.faultset");
    folder.write("v.bloc");
    ZNProjectBrowserModel model;
    RecordingPlugin volumes(&model);
    RecordingPlugin faults(&model);
    model.addBranch(&volumes, "Volumes", {"*.bloc"});
    ZNProjectBrowserItem* faultBranch = model.addBranch(&faults, "Fault Sets", {"*.faultset"});
    model.setDirectory(folder.dir.path());
    ASSERT_EQ(faults.calls.size(), 1);

    EXPECT_EQ(model.refresh(), 0);
    folder.write("notes.txt");  // belongs to no branch
    EXPECT_EQ(model.refresh(), 0);

    folder.write("b.faultset");  // added
    EXPECT_EQ(model.refresh(), 1);
    EXPECT_EQ(faults.calls.size(), 2);
    EXPECT_EQ(volumes.calls.size(), 1);
    EXPECT_EQ(childTexts(faultBranch), (QStringList{"a.faultset", "b.faultset"}));

    folder.write("a.faultset", "rewritten");  // another size
    EXPECT_EQ(model.refresh(), 1);
    ASSERT_TRUE(QFile::remove(folder.path("v.bloc")));  // removed
    EXPECT_EQ(model.refresh(), 1);
    EXPECT_EQ(volumes.calls.size(), 2);
    EXPECT_EQ(faults.calls.size(), 3);
}

TEST(ProjectBrowserModel, DraggedFileItemsTravelAsTheirLocalFiles)
{
    Folder folder;
    folder.write("a.bloc");
    folder.write("b.bloc");
    ZNProjectBrowserModel model;
    ZNProjectBrowserPluginVolume volumes(&model);
    ZNProjectBrowserItem* branch = model.addBranch(&volumes, "Volumes", {"*.bloc"});
    model.setDirectory(folder.dir.path());

    std::unique_ptr<QMimeData> mime(model.mimeData({branch->index(), branch->child(1)->index(), branch->child(0)->index()}));
    ASSERT_NE(mime, nullptr);
    EXPECT_EQ(mime->urls(), (QList<QUrl>{QUrl::fromLocalFile(folder.path("b.bloc")), QUrl::fromLocalFile(folder.path("a.bloc"))}));
    EXPECT_TRUE(model.mimeTypes().contains("text/uri-list"));
    EXPECT_EQ(model.mimeData({branch->index()}), nullptr);  // nothing to open
}

// The model answers searches by path from its index; whatever happens to the tree, the
// answer is the generic search's.
TEST(ProjectBrowserModel, SearchByPathAgreesWithTheGenericSearchThroughRandomEdits)
{
    ZNProjectBrowserModel model;
    const QStringList paths{"/p/a", "/p/b", "/p/c", "/p/d"};
    std::mt19937 random(7);
    const auto pick = [&random](int n) { return std::uniform_int_distribution<int>(0, n - 1)(random); };
    // Every item of the tree, in no particular order.
    const auto allItems = [&model] {
        QList<QStandardItem*> items;
        QList<QStandardItem*> todo{model.invisibleRootItem()};
        while (!todo.isEmpty()) {
            QStandardItem* item = todo.takeLast();
            for (int r = 0; r < item->rowCount(); ++r)
                for (int c = 0; c < item->columnCount(); ++c)
                    if (QStandardItem* child = item->child(r, c)) {
                        items << child;
                        todo << child;
                    }
        }
        return items;
    };
    const auto newItem = [&] {
        auto* item = new ZNProjectBrowserItem(ZNProjectBrowserItem::FileKind, "PROJECT_PATH", "x", paths[pick(4)], 0);
        if (pick(3) == 0) item->appendRow(new ZNProjectBrowserItem(ZNProjectBrowserItem::ElementKind, "PROJECT_PATH", "y",
                                                                   paths[pick(4)], 100));
        return item;
    };

    for (int step = 0; step < 400; ++step) {
        const QList<QStandardItem*> items = allItems();
        QStandardItem* parent = items.isEmpty() || pick(4) == 0 ? model.invisibleRootItem() : items[pick(items.size())];
        switch (pick(7)) {
        case 0:
        case 1:
            parent->insertRow(pick(parent->rowCount() + 1), newItem());
            break;
        case 2:
            if (parent->rowCount() > 0) parent->removeRow(pick(parent->rowCount()));
            break;
        case 3:
            if (!items.isEmpty()) items[pick(items.size())]->setData(paths[pick(4)], ZNProjectBrowserItem::PathRole);
            break;
        case 4:  // replaced in place
            if (parent->rowCount() > 0) parent->setChild(pick(parent->rowCount()), 0, newItem());
            break;
        case 5:  // taken out and put back elsewhere
            if (parent->rowCount() > 0) {
                const QList<QStandardItem*> row = parent->takeRow(pick(parent->rowCount()));
                model.invisibleRootItem()->insertRow(pick(model.rowCount() + 1), row);
            }
            break;
        case 6:
            if (pick(4) == 0) model.sort(0, pick(2) ? Qt::AscendingOrder : Qt::DescendingOrder);
            else if (parent->rowCount() > 0) parent->setChild(pick(parent->rowCount()), 1, newItem());  // a second column
            break;
        }
        if (model.rowCount() == 0) continue;
        for (const QString& path : paths)
            for (int hits : {1, 2, -1}) {
                const auto flags = Qt::MatchFlags(Qt::MatchExactly | Qt::MatchRecursive);
                ASSERT_EQ(model.match(model.index(0, 0), ZNProjectBrowserItem::PathRole, path, hits, flags),
                          model.QStandardItemModel::match(model.index(0, 0), ZNProjectBrowserItem::PathRole, path, hits, flags))
                    << "step " << step << " path " << path.toStdString() << " hits " << hits;
            }
    }
    model.clear();
    EXPECT_TRUE(model.match(QModelIndex(), ZNProjectBrowserItem::PathRole, paths[0], -1,
                            Qt::MatchFlags(Qt::MatchExactly | Qt::MatchRecursive)).isEmpty());
}

TEST(ProjectBrowserItem, KnowsItsKindKeyPathAndTagAndCopiesThem)
{
    ZNProjectBrowserItem item(ZNProjectBrowserItem::ElementKind, "PROJECT_PATH", "F1", "/p/a.faultset", 100);
    item.setEnabled(false);
    std::unique_ptr<QStandardItem> copy(item.clone());
    const ZNProjectBrowserItem* same = ZNProjectBrowserItem::of(copy.get());
    ASSERT_NE(same, nullptr);
    EXPECT_EQ(same->kind(), ZNProjectBrowserItem::ElementKind);
    EXPECT_EQ(same->dataKey(), "PROJECT_PATH");
    EXPECT_EQ(same->text(), "F1");
    EXPECT_EQ(same->path(), "/p/a.faultset");
    EXPECT_EQ(same->tag(), 100);
    EXPECT_FALSE(same->isEnabled());
    QStandardItem plain("plain");
    EXPECT_EQ(ZNProjectBrowserItem::of(&plain), nullptr);
    EXPECT_EQ(ZNProjectBrowserItem::of(nullptr), nullptr);
}
