#pragma once
#include <deque>
#include <utility>

#include <QFileDevice>

// Streams a large output to disk while it is being written. A file written in one go and
// synced at the end leaves every page dirty until the sync, which then waits for all of
// them, and takes a fresh page of memory for every page written; on a virtual machine
// that hands freed memory back to its host, fresh pages cost a fault on the host each,
// and the time of such a write swings by a factor of three from run to run. Handing each
// piece to the disk as soon as it is written lets the disk work while the program makes
// the next piece, and releasing the pieces once they are on disk lets the system reuse
// the same few pages for the whole file.
//
// The data are on disk once the file is synced (QSaveFile::commit syncs), whatever this
// does. On Linux the written file is left out of the page cache, so reading it back
// right away reads the disk; elsewhere only Qt's buffer is passed on.
class ZNWriteback {
public:
    // About how many bytes to hand over at a time: much larger pieces let dirty pages pile
    // up between requests, and the time of a write swings again.
    static constexpr qint64 kPieceBytes = qint64(1) << 20;

    explicit ZNWriteback(QFileDevice& file) : m_file(file) {}
    ZNWriteback(const ZNWriteback&) = delete;
    ZNWriteback& operator=(const ZNWriteback&) = delete;

    // Records that [offset, offset + bytes) of the file was just written (in any order).
    // Once at least kPieceBytes are pending, passes the file's buffer to the system and
    // starts writing them to disk without waiting; the pieces started the longest ago are
    // then waited for and released. Returns false when the buffered bytes could not be
    // passed to the system: the failure the next write or the commit would report.
    bool written(qint64 offset, qint64 bytes);
    // Starts what is pending, whatever its size.
    bool startPending();

private:
    using Range = std::pair<qint64, qint64>;  // offset, bytes

    bool start(const Range& range);

    QFileDevice& m_file;
    std::deque<Range> m_pending;  // written, not yet handed over
    qint64 m_pendingBytes = 0;
    std::deque<Range> m_started;  // handed over, not yet released
    qint64 m_startedBytes = 0;
};
