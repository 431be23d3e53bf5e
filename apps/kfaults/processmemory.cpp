#include "processmemory.h"

#include <QFile>

#include <core/conventions.h>

namespace kfaults {

long long peakResidentBytes()
{
    constexpr qint64 kLongestStatus = 1 << 16;   // the file is a few kilobytes
    constexpr long long kBytesPerKilobyte = 1024;
    const QByteArray key("VmHWM:");
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly)) return core::kNoValue;
    const QList<QByteArray> lines = status.read(kLongestStatus).split('\n');
    for (const QByteArray& line : lines) {
        if (!line.startsWith(key)) continue;
        // "VmHWM:    180052 kB"
        const QList<QByteArray> fields = line.mid(key.size()).simplified().split(' ');
        bool ok = false;
        const long long kilobytes = fields.value(0).toLongLong(&ok);
        if (ok && fields.value(1) == "kB" && kilobytes >= 0) return kilobytes * kBytesPerKilobyte;
    }
    return core::kNoValue;
}

} // namespace kfaults
