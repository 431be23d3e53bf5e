#pragma once
#include <QByteArray>
#include <QString>
#include <QtGlobal>

class QIODevice;

// A readable sequence of bytes with a position, from which binary records are read.
// Readers check remaining() against the counts a file claims before they allocate.
class ZNByteSource {
public:
    virtual ~ZNByteSource() = default;

    // Reads exactly `n` bytes into `out`; false on a short read or an error (then `out`
    // holds an undefined part and the position is undefined).
    virtual bool read(void* out, qint64 n) = 0;
    // Moves to the absolute byte position `position`; false when it cannot.
    virtual bool seek(qint64 position) = 0;
    // Current byte position.
    virtual qint64 pos() const = 0;
    // Bytes from the position to the end; -1 when the source cannot tell (a pipe).
    virtual qint64 remaining() const = 0;

    // True when `n` bytes can still be read as far as the source can tell: false only
    // when remaining() is known and smaller.
    bool mayHold(qint64 n) const
    {
        const qint64 left = remaining();
        return n >= 0 && (left < 0 || n <= left);
    }
};

// A byte source over an open Qt device (not owned).
class ZNDeviceSource : public ZNByteSource {
public:
    explicit ZNDeviceSource(QIODevice& device) : m_device(device) {}
    bool read(void* out, qint64 n) override;
    bool seek(qint64 position) override;
    qint64 pos() const override;
    qint64 remaining() const override;

private:
    QIODevice& m_device;
};

// A buffered byte source over a low-level file descriptor, with 64-bit positions, for
// files beyond the 2 GiB limit of the ordinary stream. Owns the descriptor and closes it.
class ZNFdReader : public ZNByteSource {
public:
    static constexpr qint64 kBufferSize = 1 << 20;  // bytes read from the file per call

    // Opens `path` for binary reading; -1 when it cannot be opened.
    static int openForReading(const QString& path);

    // Takes ownership of `fd` (may be -1: every read then fails).
    explicit ZNFdReader(int fd);
    ~ZNFdReader() override;
    ZNFdReader(const ZNFdReader&) = delete;
    ZNFdReader& operator=(const ZNFdReader&) = delete;

    bool isOpen() const { return m_fd != -1; }
    bool read(void* out, qint64 n) override;
    bool seek(qint64 position) override;
    qint64 pos() const override { return m_position; }
    qint64 remaining() const override;

private:
    bool refill();

    int m_fd;
    qint64 m_size = 0;       // file size at opening
    qint64 m_position = 0;   // logical position of the next byte handed out
    QByteArray m_buffer;     // bytes from m_bufferStart
    qint64 m_bufferStart = 0;
};
