#include "picturefile.h"

#include <QSaveFile>

#include <cerrno>

#include <znwritefailure.h>

namespace kfaults {

bool savePng(const QImage& image, const QString& path, QString* problem)
{
    QString failure;
    if (image.isNull()) {
        failure = QStringLiteral("%1: no picture to save").arg(path);
    } else {
        errno = 0;  // a failure names the system call that failed after this point
        QSaveFile file(path);
        if (!file.open(QIODevice::WriteOnly) || !image.save(&file, "PNG") || !file.commit())
            failure = QStringLiteral("%1: cannot be written (%2)").arg(path, ZNWriteFailure::reason(file, errno));
    }
    if (problem) *problem = failure;
    return failure.isEmpty();
}

} // namespace kfaults
