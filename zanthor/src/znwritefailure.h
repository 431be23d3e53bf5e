#pragma once
#include <QFileDevice>
#include <QString>

// Why a write failed, in the system's words ("No space left on device"). Qt's buffered
// files leave their own reason unset when the failure comes from flushing their buffer,
// which Qt words "Unknown error"; the errno of the call that failed names it.
namespace ZNWriteFailure {

// The device's reason when it holds one, else the system's for `systemError` (an errno
// value; 0 when no system call failed), else "write error".
QString reason(const QFileDevice& file, int systemError);

// The system's reason for `systemError`, else `fallback`.
QString reason(int systemError, const QString& fallback);

} // namespace ZNWriteFailure
