#include "znlabelrecordfile.h"

#include <algorithm>
#include <limits>
#include <new>

#include "labelledsamples.h"

namespace {

// Records written or read at once: 512 KiB.
constexpr std::size_t kBufferRecords = std::size_t(1) << 16;
constexpr qint64 kRecordBytes = sizeof(ZNLabelRecordFile::Record);

} // namespace

bool ZNLabelRecordFile::create(const QString& path, const georef::BlocSpace& space)
{
    m_file.close();
    m_space = georef::BlocSpace();
    m_written = 0;
    m_buffered = 0;
    m_failed = false;
    m_finished = false;
    const long long sliceSize = static_cast<long long>(space.nx()) * space.ny();
    if (space.isEmpty() || sliceSize > std::numeric_limits<std::uint32_t>::max()) return false;
    m_sliceStart.reset(new (std::nothrow) long long[static_cast<std::size_t>(space.nz()) + 1]);
    m_buffer.reset(new (std::nothrow) Record[kBufferRecords]);
    if (!m_sliceStart || !m_buffer) return false;
    m_file.setFileName(path);
    if (!m_file.open(QIODevice::ReadWrite | QIODevice::Truncate | QIODevice::Unbuffered)) return false;
    m_space = space;
    m_sliceStart[0] = 0;
    return true;
}

bool ZNLabelRecordFile::flush()
{
    const qint64 bytes = static_cast<qint64>(m_buffered) * kRecordBytes;
    if (bytes > 0 && m_file.write(reinterpret_cast<const char*>(m_buffer.get()), bytes) != bytes) m_failed = true;
    m_buffered = 0;
    return !m_failed;
}

bool ZNLabelRecordFile::appendSlices(const int* slices, int count)
{
    if (m_failed || m_finished || !m_file.isOpen() || slices == nullptr || count < 0 ||
        count > m_space.nz() - m_written)
        return false;
    const int nx = m_space.nx();
    const std::size_t sliceSize = static_cast<std::size_t>(nx) * static_cast<std::size_t>(m_space.ny());
    for (int k = 0; k < count; ++k) {
        const int* slice = slices + sliceSize * static_cast<std::size_t>(k);
        long long records = m_sliceStart[m_written];
        for (int y = 0; y < m_space.ny(); ++y) {
            const std::uint32_t rowStart = static_cast<std::uint32_t>(nx) * static_cast<std::uint32_t>(y);
            const bool kept = fault::forEachLabelled(slice + rowStart, 0, nx, [&](int x, int label) {
                if (m_buffered == kBufferRecords && !flush()) return false;
                m_buffer[m_buffered++] = Record{rowStart + static_cast<std::uint32_t>(x), label};
                ++records;
                return true;
            });
            if (!kept) return false;
        }
        m_sliceStart[++m_written] = records;
    }
    return true;
}

bool ZNLabelRecordFile::finish()
{
    if (m_finished) return true;
    if (m_failed || !m_file.isOpen() || m_written != m_space.nz() || !flush()) {
        m_failed = true;
        return false;
    }
    m_finished = true;
    return true;
}

long long ZNLabelRecordFile::recordCount(int z0, int count) const
{
    if (!m_finished) return 0;
    const int first = std::clamp(z0, 0, m_space.nz());
    const int end = static_cast<int>(std::clamp<long long>(static_cast<long long>(z0) + count, first, m_space.nz()));
    return m_sliceStart[end] - m_sliceStart[first];
}

bool ZNLabelRecordFile::readRecords(int z0, int count, const RecordSink& sink)
{
    if (!m_finished || !sink || z0 < 0 || count < 1 || count > m_space.nz() - z0) return false;
    if (!m_file.seek(m_sliceStart[z0] * kRecordBytes)) return false;
    const std::uint32_t sliceSize = static_cast<std::uint32_t>(m_space.nx()) * static_cast<std::uint32_t>(m_space.ny());
    for (int z = z0; z < z0 + count; ++z)
        for (long long left = m_sliceStart[z + 1] - m_sliceStart[z]; left > 0;) {
            const std::size_t n = static_cast<std::size_t>(std::min<long long>(left, kBufferRecords));
            const qint64 bytes = static_cast<qint64>(n) * kRecordBytes;
            if (m_file.read(reinterpret_cast<char*>(m_buffer.get()), bytes) != bytes) return false;
            const Record* records = m_buffer.get();
            if (std::any_of(records, records + n, [sliceSize](const Record& r) { return r.index >= sliceSize || r.label < 1; }))
                return false;
            sink(z, records, n);
            left -= static_cast<long long>(n);
        }
    return true;
}
