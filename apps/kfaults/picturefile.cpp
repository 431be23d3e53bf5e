#include "picturefile.h"

#include <QFileInfo>
#include <QSaveFile>

namespace kfaults {

bool savePng(const QImage& image, const QString& path, QString* problem)
{
    const QString name = QFileInfo(path).fileName();
    QString failure;
    if (image.isNull()) {
        failure = QStringLiteral("%1: no picture to save").arg(name);
    } else {
        QSaveFile file(path);
        if (!file.open(QIODevice::WriteOnly) || !image.save(&file, "PNG") || !file.commit())
            failure = QStringLiteral("%1: cannot be written (%2)").arg(name, file.errorString());
    }
    if (problem) *problem = failure;
    return failure.isEmpty();
}

} // namespace kfaults
