#include "znwritefailure.h"

namespace ZNWriteFailure {

QString reason(const QFileDevice& file, int systemError)
{
    if (file.error() != QFileDevice::NoError) return file.errorString();
    return reason(systemError, QStringLiteral("write error"));
}

QString reason(int systemError, const QString& fallback)
{
    return systemError != 0 ? qt_error_string(systemError) : fallback;
}

} // namespace ZNWriteFailure
