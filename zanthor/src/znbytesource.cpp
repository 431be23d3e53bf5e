#include "znbytesource.h"

#include <cstring>

#include <QFile>
#include <QIODevice>

#include <fcntl.h>
#include <sys/stat.h>
#ifdef Q_OS_WIN
#include <io.h>
#else
#include <unistd.h>
#endif

namespace {
#ifdef Q_OS_WIN
qint64 seekFd(int fd, qint64 position) { return _lseeki64(fd, position, SEEK_SET); }
qint64 readFd(int fd, char* out, qint64 n) { return _read(fd, out, static_cast<unsigned>(n)); }
void closeFd(int fd) { _close(fd); }
qint64 sizeFd(int fd)
{
    struct _stat64 st;
    return _fstat64(fd, &st) == 0 ? st.st_size : -1;
}
#else
qint64 seekFd(int fd, qint64 position) { return ::lseek(fd, static_cast<off_t>(position), SEEK_SET); }
qint64 readFd(int fd, char* out, qint64 n) { return ::read(fd, out, static_cast<size_t>(n)); }
void closeFd(int fd) { ::close(fd); }
qint64 sizeFd(int fd)
{
    struct stat st;
    return ::fstat(fd, &st) == 0 ? static_cast<qint64>(st.st_size) : -1;
}
#endif

// Reads up to `n` bytes at the descriptor's position, retrying short reads; the count
// read, -1 on error.
qint64 readFully(int fd, char* out, qint64 n)
{
    constexpr qint64 kLargestCall = 1 << 30;  // bytes per system call
    qint64 done = 0;
    while (done < n) {
        const qint64 got = readFd(fd, out + done, qMin(n - done, kLargestCall));
        if (got < 0) return -1;
        if (got == 0) break;
        done += got;
    }
    return done;
}
} // namespace

bool ZNDeviceSource::read(void* out, qint64 n)
{
    return n >= 0 && m_device.read(static_cast<char*>(out), n) == n;
}

bool ZNDeviceSource::seek(qint64 position) { return position >= 0 && m_device.seek(position); }

qint64 ZNDeviceSource::pos() const { return m_device.pos(); }

qint64 ZNDeviceSource::remaining() const
{
    if (m_device.isSequential()) return -1;
    return qMax<qint64>(m_device.size() - m_device.pos(), 0);
}

int ZNFdReader::openForReading(const QString& path)
{
    const QByteArray name = QFile::encodeName(path);
#ifdef Q_OS_WIN
    return _open(name.constData(), _O_RDONLY | _O_BINARY);
#else
    return ::open(name.constData(), O_RDONLY);
#endif
}

ZNFdReader::ZNFdReader(int fd) : m_fd(fd)
{
    if (m_fd != -1) m_size = qMax<qint64>(sizeFd(m_fd), 0);
}

ZNFdReader::~ZNFdReader()
{
    if (m_fd != -1) closeFd(m_fd);
}

qint64 ZNFdReader::remaining() const { return qMax<qint64>(m_size - m_position, 0); }

bool ZNFdReader::seek(qint64 position)
{
    if (m_fd == -1 || position < 0) return false;
    m_position = position;
    return true;
}

bool ZNFdReader::refill()
{
    m_buffer.resize(static_cast<int>(kBufferSize));
    if (seekFd(m_fd, m_position) != m_position) return false;
    const qint64 got = readFully(m_fd, m_buffer.data(), kBufferSize);
    if (got <= 0) return false;
    m_buffer.resize(static_cast<int>(got));
    m_bufferStart = m_position;
    return true;
}

bool ZNFdReader::read(void* out, qint64 n)
{
    if (m_fd == -1 || n < 0) return false;
    char* dest = static_cast<char*>(out);
    while (n > 0) {
        const qint64 inBuffer = m_bufferStart + m_buffer.size() - m_position;
        if (m_position < m_bufferStart || inBuffer <= 0) {
            // Large reads go straight to the caller's memory.
            if (n >= kBufferSize) {
                if (seekFd(m_fd, m_position) != m_position) return false;
                const qint64 got = readFully(m_fd, dest, n);
                if (got > 0) m_position += got;
                return got == n;
            }
            if (!refill()) return false;
            continue;
        }
        const qint64 take = qMin(n, inBuffer);
        memcpy(dest, m_buffer.constData() + (m_position - m_bufferStart), static_cast<size_t>(take));
        dest += take;
        n -= take;
        m_position += take;
    }
    return true;
}
