#include "volumeio/volumereadresult.h"

#include <QDir>

#include <zneventbus.h>

namespace volumeio {

QString reportVolumeError(int kind, const QString& path, const QString& reason)
{
    const QString text = QDir::toNativeSeparators(path) + QStringLiteral(": ") + reason;
    ZNEventBus::sendMessage(kind, text);
    return text;
}

} // namespace volumeio
