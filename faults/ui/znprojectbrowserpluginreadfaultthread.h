#pragma once
#include <QString>
#include <QStringList>

#include <znprojectbrowserpluginreadthread.h>

// The reader of the project browser's fault plugin: for each fault set file of one
// directory, the names of its faults, read from the file's header alone (the data block
// is never read).
class ZNProjectBrowserPluginReadFaultThread : public ZNProjectBrowserPluginReadThread {
    Q_OBJECT
public:
    explicit ZNProjectBrowserPluginReadFaultThread(QObject* parent = nullptr);
    ~ZNProjectBrowserPluginReadFaultThread() override;

    // The label of the entry that counts a fault set's unnamed faults.
    static QString unnamedLabel();

    // The fault names of the fault set file at `path`: the name of every named fault
    // whose descriptor has an id in 1..numberOfPatch - 1, in the header's order, then,
    // when some of those faults are unnamed, one entry "%1 (%2)" with unnamedLabel() and
    // their count. Empty for an empty path, a file whose header cannot be read, and a
    // header without an element "ZNPickedFaultPatchManager" (an automatic fault set).
    // Touches nothing but the file: safe on any thread.
    static QStringList readFaultNames(const QString& path);

protected:
    QStringList readFile(const QString& path) const override { return readFaultNames(path); }
};
