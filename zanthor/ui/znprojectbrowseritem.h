#pragma once
#include <QStandardItem>
#include <QString>

// An item of the host's project browser (ZNProjectBrowserModel): a branch that gathers
// the files of one kind, a file, or a part of a file (the faults of a fault set). Each
// carries, in its roles, its kind, a data key that says what its path designates, the
// path, and a numeric tag that the item's owner chooses (the directory's identifier for
// files, 100 for the fault names of a fault set).
class ZNProjectBrowserItem : public QStandardItem {
public:
    // The item kinds of the host.
    enum Kind {
        BranchKind = 1,   // the files of one plugin in the project's directory
        FileKind = 2,     // one file of a branch
        ElementKind = 3,  // something inside a file, listed under the file's item
    };
    enum Role {
        PathRole = Qt::UserRole + 40,  // QString: the path the item stands for
        KindRole,                      // int: a Kind
        DataKeyRole,                   // QString: what the path designates
        TagRole,                       // int: the owner's tag
    };
    // QStandardItem::type() of these items.
    static constexpr int Type = QStandardItem::UserType + 40;
    // The data key of items whose path is a path of the project's files.
    static QString projectPathKey() { return QStringLiteral("PROJECT_PATH"); }

    ZNProjectBrowserItem(int kind, const QString& dataKey, const QString& text, const QString& path,
                         int tag);

    int kind() const { return data(KindRole).toInt(); }
    QString dataKey() const { return data(DataKeyRole).toString(); }
    QString path() const { return data(PathRole).toString(); }
    int tag() const { return data(TagRole).toInt(); }

    int type() const override { return Type; }
    // A copy with the same roles and flags, without children.
    QStandardItem* clone() const override;

    // `item` as a project browser item; null for null or another item.
    static ZNProjectBrowserItem* of(QStandardItem* item);
};
