#include "znrecentfiles.h"

#include <QFileInfo>

#include <znsettings.h>

namespace {
const QString kKey = QStringLiteral("files");
}

ZNRecentFiles::ZNRecentFiles(const QString& settingsGroup, int maxCount)
    : m_group(settingsGroup), m_maxCount(maxCount < 1 ? 1 : maxCount)
{
}

QStringList ZNRecentFiles::paths() const
{
    QStringList paths = ZNSettings::value(m_group, kKey).toStringList();
    paths.removeAll(QString());
    while (paths.size() > m_maxCount) paths.removeLast();
    return paths;
}

bool ZNRecentFiles::add(const QString& path)
{
    const QString absolute = QFileInfo(path).absoluteFilePath();
    QStringList list = paths();
    list.removeAll(absolute);
    list.prepend(absolute);
    while (list.size() > m_maxCount) list.removeLast();
    return store(list);
}

bool ZNRecentFiles::remove(const QString& path)
{
    QStringList list = paths();
    list.removeAll(QFileInfo(path).absoluteFilePath());
    return store(list);
}

bool ZNRecentFiles::clear()
{
    return store(QStringList());
}

bool ZNRecentFiles::store(const QStringList& paths)
{
    return ZNSettings::setValue(m_group, kKey, paths);
}
