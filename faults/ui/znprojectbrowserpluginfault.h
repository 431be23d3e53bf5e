#pragma once
#include <QMap>
#include <QString>
#include <QStringList>

#include <znprojectbrowserpluginabstract.h>

class ZNProjectBrowserPluginReadFaultThread;

// The fault sets of a directory in the host's project browser: one item per fault set
// file and, under each, one item per named fault of the set (and one that counts its
// unnamed faults). Opening every file's header takes time, so the names are read on a
// worker thread, one per directory being filled, and the tree grows file by file as that
// thread delivers each file's names.
//
// Concurrency: the plugin, its map of readers and the model are used on the plugin's
// thread only; a reader only reads files and hands each file's names back through a
// queued call, delivered here by its signal fileRead (to fillFaultModel). Filling a
// directory again while its reader still runs interrupts that reader and replaces it:
// what the replaced reader still delivers is dropped, since the new one delivers the
// same files again.
class ZNProjectBrowserPluginFault : public ZNProjectBrowserPluginAbstract {
    Q_OBJECT
public:
    // The tag of the items of fault names, and the name of their icon.
    static constexpr int kFaultNameTag = 100;
    static QString faultNameIconName() { return QStringLiteral("faultpicking"); }
    // The event-bus message (kind 3) sent before the names of the fault set at a path are
    // added: this text followed by the path.
    static QString fillMessage() { return QStringLiteral("Project browser: fill fault names of fault set "); }

    // Registers the icon "faultpicking" with the host's icon handler unless the host
    // has its own.
    explicit ZNProjectBrowserPluginFault(ZNProjectBrowserModel* model, QObject* parent = nullptr);
    // Stops every reader still running and waits for it.
    ~ZNProjectBrowserPluginFault() override;

    // Adds the items of the directory's fault set files (its files matching
    // `nameFilters`, "." and ".." left out) under `branch` with the host's item builder and
    // starts one reader for their names, with the caller's priority. A reader still at
    // work on the same directory is interrupted and replaced.
    void fillFiles(QDomElement element, QString directory, ZNProjectBrowserItem* branch,
                   QStringList nameFilters) override;

    // The reader at work on `directory`; null when none.
    ZNProjectBrowserPluginReadFaultThread* reader(const QString& directory) const { return m_threads.value(directory); }
    int readerCount() const { return m_threads.size(); }

signals:
    // The last reader at work ended: every fault set listed has its names.
    void readersFinished();

public slots:
    // Adds `faultNames` under the item of the fault set file `faultPath` (the first item
    // of the tree whose path is exactly `faultPath`): one child per name, in order, of the
    // kind ElementKind with the data key "PROJECT_PATH", the name as text, `faultPath` as
    // path, the tag kFaultNameTag, neither editable nor enabled (shown, not selectable as
    // a file), with the icon "faultpicking"; the event bus says so first (kind 3). Nothing
    // happens when no item has that path (the file left the tree meanwhile).
    void fillFaultModel(QString faultPath, QStringList faultNames);
    // A reader ended: it is forgotten (when it is still its directory's) and deleted later;
    // readersFinished follows when no reader is left.
    void faultThreadFinished();

private:
    // Ordered by path, as the host lists its directories.
    QMap<QString, ZNProjectBrowserPluginReadFaultThread*> m_threads;
};
