#include "znwriteback.h"

#if defined(__linux__)
#include <fcntl.h>
#endif

namespace {

// Bytes handed to the disk and not yet released: the disk's lead over the program.
constexpr qint64 kLeadBytes = qint64(8) << 20;

} // namespace

bool ZNWriteback::written(qint64 offset, qint64 bytes)
{
    if (bytes <= 0) return true;
    if (!m_pending.empty() && m_pending.back().first + m_pending.back().second == offset)
        m_pending.back().second += bytes;
    else
        m_pending.emplace_back(offset, bytes);
    m_pendingBytes += bytes;
    return m_pendingBytes < kPieceBytes || startPending();
}

bool ZNWriteback::startPending()
{
    if (!m_file.isOpen() || !m_file.flush()) return false;
    for (const Range& r : m_pending)
        if (!start(r)) return false;
    m_pending.clear();
    m_pendingBytes = 0;
    return true;
}

bool ZNWriteback::start(const Range& range)
{
#if defined(__linux__)
    const int fd = m_file.handle();
    if (fd < 0) return true;
    // Failures (a file system without writeback, say) change nothing but the time the
    // final sync takes, and are let be.
    (void)::sync_file_range(fd, range.first, range.second, SYNC_FILE_RANGE_WRITE);
    m_started.push_back(range);
    m_startedBytes += range.second;
    while (m_startedBytes - m_started.front().second >= kLeadBytes) {
        const Range done = m_started.front();
        m_started.pop_front();
        m_startedBytes -= done.second;
        (void)::sync_file_range(fd, done.first, done.second,
                                SYNC_FILE_RANGE_WAIT_BEFORE | SYNC_FILE_RANGE_WRITE |
                                    SYNC_FILE_RANGE_WAIT_AFTER);
        (void)::posix_fadvise(fd, done.first, done.second, POSIX_FADV_DONTNEED);
    }
#else
    (void)range;
#endif
    return true;
}
