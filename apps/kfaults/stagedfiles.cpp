#include "stagedfiles.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace kfaults {

QString moveIntoPlace(const QStringList& staged, const QString& folder, QStringList& moved)
{
    for (const QString& file : staged) {
        const QString target = QDir(folder).absoluteFilePath(QFileInfo(file).fileName());
        QFile::remove(target);
        if (!QFile::rename(file, target)) return QStringLiteral("%1: cannot be written").arg(target);
        moved << target;
    }
    return {};
}

} // namespace kfaults
