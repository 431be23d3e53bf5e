#include "exchangestatus.h"

#include <QFileInfo>

#include <zneventbus.h>

namespace fault::exchange {

ExchangeStatus ExchangeStatus::failure(const QString& path, int line, const QString& problem)
{
    ExchangeStatus status;
    status.ok = false;
    status.line = line > 0 ? line : 0;
    status.detail = status.line > 0 ? QStringLiteral("line %1: %2").arg(status.line).arg(problem) : problem;
    status.message = QStringLiteral("%1: %2").arg(QFileInfo(path).fileName(), status.detail);
    ZNEventBus::sendMessage(ZNEventBus::FileError, status.message);
    return status;
}

} // namespace fault::exchange
