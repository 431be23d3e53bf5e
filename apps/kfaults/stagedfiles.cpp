#include "stagedfiles.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace kfaults {

QString moveIntoPlace(const QStringList& staged, const QString& folder, QStringList& moved)
{
    for (const QString& file : staged) {
        const QString target = QDir(folder).absoluteFilePath(QFileInfo(file).fileName());
        // rename() replaces the target in one step: at every moment either the previous
        // or the new file is there (removing it first lost it to a kill in between).
        if (std::rename(QFile::encodeName(file).constData(), QFile::encodeName(target).constData()) != 0)
            return QStringLiteral("%1: cannot be written (%2)").arg(target, QString::fromLocal8Bit(std::strerror(errno)));
        moved << target;
    }
    return {};
}

} // namespace kfaults
