#include "exchangestatus.h"

#include <QFileInfo>

#include <zneventbus.h>

namespace fault::exchange {

ExchangeStatus ExchangeStatus::failure(const QString& path, int line, const QString& problem)
{
    ExchangeStatus status;
    status.ok = false;
    status.line = line > 0 ? line : 0;
    const QString file = QFileInfo(path).fileName();
    status.message = status.line > 0
                         ? QStringLiteral("%1: line %2: %3").arg(file).arg(status.line).arg(problem)
                         : QStringLiteral("%1: %2").arg(file, problem);
    ZNEventBus::sendMessage(ZNEventBus::FileError, status.message);
    return status;
}

} // namespace fault::exchange
