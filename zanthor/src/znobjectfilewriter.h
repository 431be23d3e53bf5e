#pragma once
#include <QDomDocument>
#include <QSaveFile>
#include <QString>

#include "znwriteback.h"

// Writes one object file (see ZNObjectFile) safely: everything goes to a temporary file
// beside the target, which replaces the target only on commit(). A writer that is
// destroyed or fails before commit() leaves the target as it was.
//
//   ZNObjectFileWriter writer(path);
//   const qint64 offset = writer.create(doc, reserve);  // header and reserve written
//   if (offset < 0) return false;
//   ... write the data through writer.device(), starting at `offset` ...
//   return writer.commit();
//
// Failures are reported on the event bus as the container reports them ("Error when
// opening in Write mode file : ...", "Error when writing into ...") and recorded as one
// of the ZNObjectFile error codes.
class ZNObjectFileWriter {
public:
    explicit ZNObjectFileWriter(const QString& path);
    ZNObjectFileWriter(const ZNObjectFileWriter&) = delete;
    ZNObjectFileWriter& operator=(const ZNObjectFileWriter&) = delete;

    // Opens the temporary and writes the global header block, the header document and
    // `reserve` zero bytes (negative counts as 0). Returns the data offset, 2500 +
    // header length + reserve, with the device positioned there; -1 on failure.
    // Called once per writer.
    qint64 create(const QDomDocument& header, qint64 reserve);
    // The same with the header document already printed (ZNObjectFile::headerBytes, or a
    // flat tree's toByteArray).
    qint64 create(const QByteArray& headerText, qint64 reserve);

    // The open temporary, positioned at the data offset after create(); null when no
    // file is open. Owned by the writer.
    QIODevice* device();
    // Data offset returned by create(); -1 before or after a failure.
    qint64 dataOffset() const { return m_dataOffset; }

    // Records that [offset, offset + bytes) was just written through device(), so that
    // the data stream to disk as they are written (see ZNWriteback). False when buffered
    // bytes could not be passed to the system.
    bool streamed(qint64 offset, qint64 bytes) { return m_writeback.written(offset, bytes); }

    // Replaces the target with the completed file. False, the target unchanged, when any
    // write failed or the rename did not succeed.
    bool commit();
    // Abandons the file after a failed data write: reports the write error and discards
    // the temporary.
    void fail();

    // Code of the last failure (ZNObjectFile::Error), -1 when none.
    int error() const { return m_error; }
    const QString& path() const { return m_path; }

private:
    void failWith(int code);

    QString m_path;
    QSaveFile m_file;
    ZNWriteback m_writeback{m_file};
    qint64 m_dataOffset = -1;
    int m_error = -1;
};
