#pragma once
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>

#include <QFile>
#include <QString>

#include <georef/blocspace.h>

// A label volume kept in a scratch file as records of its labelled voxels, slice after
// slice: for every voxel whose label is at least 1, its index within its slice (x + nx y)
// and its label, 8 bytes in the machine's order. Fault patches fill a small part of a
// likelihood volume (about 1% of it), so the file is that part of the volume's dense
// size, and writing and reading it back cost as much less.
//
// The file is written once, every slice in order (appendSlices), then finished and read
// by runs of slices as often as wanted. It belongs to the run that wrote it: the caller
// chooses its path and removes it.
class ZNLabelRecordFile {
public:
    // One labelled voxel.
    struct Record {
        std::uint32_t index;  // x + nx * y within its slice
        std::int32_t label;   // at least 1
    };
    // Receives records[0 .. count) of slice z, in scan order; a slice may come in
    // several calls.
    using RecordSink = std::function<void(int z, const Record* records, std::size_t count)>;

    ZNLabelRecordFile() = default;
    ZNLabelRecordFile(const ZNLabelRecordFile&) = delete;
    ZNLabelRecordFile& operator=(const ZNLabelRecordFile&) = delete;

    // Creates (or empties) the file at `path` for a volume over `space`. False, the file
    // closed, for an empty space, a slice of 2^32 voxels or more, or a file that cannot be
    // opened for writing.
    bool create(const QString& path, const georef::BlocSpace& space);
    // Appends the next `count` slices (nx * ny labels each, x fastest); labels below 1 are
    // outside every patch and take no room. False on a write failure (the file then stays
    // unusable) or for slices beyond the volume.
    bool appendSlices(const int* slices, int count);
    // Slices appended so far.
    int slicesWritten() const { return m_written; }
    // Ends writing: every slice appended and every record on disk. False otherwise (the
    // file then stays unusable).
    bool finish();

    bool isReadable() const { return m_finished; }
    const georef::BlocSpace& blocSpace() const { return m_space; }
    // Labelled voxels in slices z0 .. z0 + count - 1 (clamped to the volume); 0 before
    // finish().
    long long recordCount(int z0, int count) const;
    // Hands the records of slices z0 .. z0 + count - 1 (within the volume) to `sink`,
    // slice after slice. False when the file is not readable, the slices lie outside the
    // volume, a read fails or a record is not one this file could hold (an index beyond
    // its slice, a label below 1): the sink may then have had some of them.
    bool readRecords(int z0, int count, const RecordSink& sink);

private:
    bool flush();

    QFile m_file;
    georef::BlocSpace m_space;
    std::unique_ptr<long long[]> m_sliceStart;  // first record of each slice, nz + 1 entries
    std::unique_ptr<Record[]> m_buffer;         // records waiting to be written, or just read
    std::size_t m_buffered = 0;                 // records waiting in m_buffer
    int m_written = 0;
    bool m_failed = false;
    bool m_finished = false;
};
