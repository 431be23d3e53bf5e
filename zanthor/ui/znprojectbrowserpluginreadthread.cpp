#include "znprojectbrowserpluginreadthread.h"

ZNProjectBrowserPluginReadThread::ZNProjectBrowserPluginReadThread(QObject* parent) : QThread(parent) {}

ZNProjectBrowserPluginReadThread::~ZNProjectBrowserPluginReadThread()
{
    requestInterruption();
    wait();
}

void ZNProjectBrowserPluginReadThread::addPath(const QString& path)
{
    if (!isRunning()) m_paths << path;
}

void ZNProjectBrowserPluginReadThread::run()
{
    for (const QString& path : m_paths) {
        if (isInterruptionRequested()) return;
        // The call carries the result made here; the owner's thread runs it.
        QMetaObject::invokeMethod(
            this, [this, path, texts = readFile(path)] { emit fileRead(path, texts); }, Qt::QueuedConnection);
    }
}
