#include "znprojectbrowserpluginfault.h"

#include <QPainter>
#include <QPixmap>

#include <zneventbus.h>
#include <zniconhandler.h>
#include <znprojectbrowseritem.h>
#include <znprojectbrowsermodel.h>

#include "znprojectbrowserpluginreadfaultthread.h"

namespace {
constexpr int kIconSize = 16;  // pixels

// A fault trace across the square with three picked points on it.
QIcon drawFaultPickingIcon()
{
    QPixmap pixmap(kIconSize, kIconSize);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(QColor(170, 30, 30), 2.0));
    painter.drawLine(QPointF(4, 1), QPointF(12, 15));
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(20, 60, 160));
    for (const QPointF& p : {QPointF(5.1, 3.0), QPointF(8.0, 8.0), QPointF(10.9, 13.0)})
        painter.drawEllipse(p, 2.0, 2.0);
    return QIcon(pixmap);
}
} // namespace

ZNProjectBrowserPluginFault::ZNProjectBrowserPluginFault(ZNProjectBrowserModel* model, QObject* parent)
    : ZNProjectBrowserPluginAbstract(model, parent)
{
    if (!ZNIconHandler::hasIcon(faultNameIconName()))
        ZNIconHandler::setDefaultIcon(faultNameIconName(), drawFaultPickingIcon());
}

ZNProjectBrowserPluginFault::~ZNProjectBrowserPluginFault()
{
    // Replaced readers are children too, and may still run.
    const auto readers = findChildren<ZNProjectBrowserPluginReadFaultThread*>(QString(), Qt::FindDirectChildrenOnly);
    for (ZNProjectBrowserPluginReadFaultThread* reader : readers) reader->requestInterruption();
    for (ZNProjectBrowserPluginReadFaultThread* reader : readers) reader->wait();
}

void ZNProjectBrowserPluginFault::fillFiles(QDomElement element, QString directory, ZNProjectBrowserItem* branch,
                                            QStringList nameFilters)
{
    const int id = directoryId(element);
    auto* reader = new ZNProjectBrowserPluginReadFaultThread(this);
    connect(reader, &QThread::finished, this, &ZNProjectBrowserPluginFault::faultThreadFinished,
            Qt::QueuedConnection);
    // Each file's names come on this thread, through the reader's queued call.
    connect(reader, &ZNProjectBrowserPluginReadThread::fileRead, this, &ZNProjectBrowserPluginFault::fillFaultModel);
    if (ZNProjectBrowserPluginReadFaultThread* previous = m_threads.value(directory)) {
        previous->requestInterruption();
        m_threads.remove(directory);
    }
    m_threads.insert(directory, reader);

    for (const QString& path : listFiles(directory, nameFilters)) {
        if (model()) model()->addFileItem(branch, path, id);
        reader->addPath(path);
    }
    reader->start(QThread::InheritPriority);
}

void ZNProjectBrowserPluginFault::fillFaultModel(QString faultPath, QStringList faultNames)
{
    // What a replaced reader still delivers is dropped: its successor reads the same files.
    if (auto* from = qobject_cast<ZNProjectBrowserPluginReadFaultThread*>(sender()))
        if (!m_threads.values().contains(from)) return;
    ZNProjectBrowserModel* browser = model();
    if (!browser || browser->rowCount() == 0) return;
    const QModelIndexList found =
        browser->match(browser->index(0, 0), ZNProjectBrowserItem::PathRole, faultPath, 1,
                       Qt::MatchFlags(Qt::MatchExactly | Qt::MatchRecursive));
    QStandardItem* faultSetItem = found.isEmpty() ? nullptr : browser->itemFromIndex(found.first());
    if (!faultSetItem) return;

    ZNEventBus::sendMessage(ZNEventBus::Progress, fillMessage() + faultPath);
    // Every child is a copy of one item that differs only by its text: a copy shares the
    // prototype's roles until its text is set, which keeps a set of many faults cheap.
    ZNProjectBrowserItem prototype(ZNProjectBrowserItem::ElementKind, ZNProjectBrowserItem::projectPathKey(), QString(),
                                   faultPath, kFaultNameTag);
    prototype.setEditable(false);
    prototype.setEnabled(false);
    prototype.setIcon(ZNIconHandler::icon(faultNameIconName()));
    QList<QStandardItem*> children;
    children.reserve(faultNames.size());
    for (const QString& name : qAsConst(faultNames)) {
        QStandardItem* child = prototype.clone();
        child->setText(name);
        children << child;
    }
    // Appended as the last rows, in order, in one insertion.
    if (!children.isEmpty()) faultSetItem->appendRows(children);
}

void ZNProjectBrowserPluginFault::faultThreadFinished()
{
    auto* reader = qobject_cast<ZNProjectBrowserPluginReadFaultThread*>(sender());
    if (!reader) return;
    for (auto it = m_threads.begin(); it != m_threads.end(); ++it) {
        if (it.value() != reader) continue;
        m_threads.erase(it);
        break;
    }
    reader->wait();  // finished() comes just before the thread really ends
    reader->deleteLater();
    if (m_threads.isEmpty()) emit readersFinished();
}
