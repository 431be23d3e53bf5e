#include "processmemory.h"

#include <QFile>

#include <core/conventions.h>

namespace kfaults {
namespace {

// The value of the line "<key> <n> kB" of a /proc file, in bytes; -9999 when missing.
long long kilobyteField(const QString& path, const QByteArray& key)
{
    constexpr qint64 kLongestFile = 1 << 16;   // the files are a few kilobytes
    constexpr long long kBytesPerKilobyte = 1024;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) return core::kNoValue;
    const QList<QByteArray> lines = file.read(kLongestFile).split('\n');
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

} // namespace

long long peakResidentBytes()
{
    return kilobyteField(QStringLiteral("/proc/self/status"), "VmHWM:");
}

long long residentBytes()
{
    return kilobyteField(QStringLiteral("/proc/self/status"), "VmRSS:");
}

long long availableMemoryBytes()
{
    return kilobyteField(QStringLiteral("/proc/meminfo"), "MemAvailable:");
}

} // namespace kfaults
