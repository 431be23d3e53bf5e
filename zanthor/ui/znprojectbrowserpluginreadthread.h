#pragma once
#include <QString>
#include <QStringList>
#include <QThread>

// The worker of a project browser plugin that reads the files of one directory: it is
// given the paths before it starts, reads them one after the other on its own thread and
// hands each file's result (a list of texts, empty when the file says nothing or cannot
// be read) back to the thread that owns it through a queued call, where it is delivered
// by fileRead. It stops before the next file once asked to (requestInterruption); results
// still on their way are delivered unless the reader is deleted first.
//
// The thread object itself belongs to the thread that created it (the plugin's): its
// paths are set there before start() and never changed while it runs.
class ZNProjectBrowserPluginReadThread : public QThread {
    Q_OBJECT
public:
    explicit ZNProjectBrowserPluginReadThread(QObject* parent = nullptr);
    // Waits for the work to stop (asking it to) when it still runs.
    ~ZNProjectBrowserPluginReadThread() override;

    // Adds a file to read; before start() only (ignored while running).
    void addPath(const QString& path);
    const QStringList& paths() const { return m_paths; }

signals:
    // The result of one file, emitted on the thread that owns the reader, in the order of
    // the paths.
    void fileRead(const QString& path, const QStringList& texts);

protected:
    void run() override;
    // The result of one file; called on the reading thread, so it must touch nothing but
    // the file and what it creates.
    virtual QStringList readFile(const QString& path) const = 0;

private:
    QStringList m_paths;
};
