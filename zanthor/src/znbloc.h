#pragma once
#include <memory>

#include <QFile>
#include <QString>

#include <georef/blocspace.h>
#include <georef/unitobject.h>
#include <img/image.h>
#include <zn3dimage.h>

#include "znobject.h"

class ZNObjectFileWriter;

// A volume stored in a block file: an object file (ZNObjectFile) whose header element
// "ZNBloc" holds the sizes ("nx", "ny", "nz"), the sample type ("sampleType": "uint8",
// "int16", "int32" or "float32"), the block-to-world matrix ("fromBlocToWorld", 16 reals)
// and the units ("unitsObject"), and whose data are the nx * ny * nz samples,
// little-endian, x fastest, then y, then z.
//
// A block is either opened for reading (open) and read by sub-box, by slice or by
// section, or created for writing (create) and written slice by slice, or made over
// samples already in memory (openImage), which it then reads without copying them first. A created block goes to a
// temporary file beside the target, which replaces the target on close(); a block
// destroyed without close() leaves the target untouched. Files are treated as hostile:
// open() refuses a header whose sizes, type or matrix are unusable and a file too short
// for its samples. Failures are reported on the event bus (kind FileError).
class ZNBloc : public ZNObject {
public:
    enum SampleType { UInt8 = 0, Int16 = 1, Int32 = 2, Float32 = 3 };
    // Bytes of header growth room kept in front of the samples, so that the header can
    // be rewritten in place when the depth changes.
    static constexpr qint64 kHeaderReserve = 4096;

    ZNBloc();
    ~ZNBloc() override;
    ZNBloc(const ZNBloc&) = delete;
    ZNBloc& operator=(const ZNBloc&) = delete;

    // 1, 2, 4, 4; 0 for an unknown type.
    static int bytesPerSample(int type);
    // The header text of a type; empty for an unknown type.
    static QString sampleTypeName(int type);
    // The type of a header text; -1 for an unknown text.
    static int sampleTypeFromName(const QString& name);

    // Opens the block file at `path` for reading (closing whatever was open). False, the
    // block closed, when the file cannot be read or is not a usable block file.
    bool open(const QString& path);
    // Opens a read-only block over samples held in memory, shared, never modified (closing
    // whatever was open): reads take them from there. False for a null or empty image.
    bool openImage(std::shared_ptr<const ZN3DImage<float>> image,
                   const georef::UnitObject& units = georef::UnitObject());
    // True for a block opened over samples in memory.
    bool isInMemory() const { return m_memory != nullptr; }
    // Creates a block file at `path` (closing whatever was open) over slices
    // firstSlice .. lastSlice - 1 of `space`: nx and ny of `space`, depth
    // lastSlice - firstSlice, and the matrix of `space` moved down by firstSlice slices so
    // that every sample keeps its world position. False when the box is empty or outside
    // `space`, the type unknown, or the file cannot be created.
    bool create(const QString& path, const georef::BlocSpace& space, int firstSlice,
                int lastSlice, int sampleType,
                const georef::UnitObject& units = georef::UnitObject());
    // Completes the block: a created block gets its final header (its current depth) and
    // exactly its samples' size, then replaces the target; an opened block is closed.
    // False when a created block could not be completed (the target is then untouched).
    bool close();

    bool isOpen() const;
    bool isWritable() const { return m_writer != nullptr; }
    const QString& path() const { return m_path; }
    const georef::BlocSpace& blocSpace() const { return m_space; }
    int nx() const { return m_space.nx(); }
    int ny() const { return m_space.ny(); }
    int nz() const { return m_space.nz(); }
    int sampleType() const { return m_type; }
    const georef::UnitObject& unitObject() const { return m_units; }

    // Reads the box of cx x cy x cz samples from (x0, y0, z0) into `out`, which becomes a
    // new image on the box's own block space (the block's matrix moved to the box
    // origin). Samples are converted to T. False, `out` untouched, for a box not wholly
    // inside the block, an empty box, a block not open for reading, a read error or a
    // lack of memory.
    bool readBox(int x0, int y0, int z0, int cx, int cy, int cz, ZN3DImage<float>& out);
    bool readBox(int x0, int y0, int z0, int cx, int cy, int cz, ZN3DImage<int>& out);
    // Reads slices z0 .. z0 + count - 1 into `out` (room for count * nx * ny samples, x
    // fastest), converted to the type of `out`: a block of that type is read straight
    // into it, in one run. False, as readBox (`out` then partly written on a read error).
    bool readSlices(int z0, int count, float* out);
    bool readSlices(int z0, int count, int* out);
    // Reads slice z into `out` (width nx, height ny). False, `out` untouched, as readBox.
    bool readSlice(int z, img::Image& out);

    // The three sections through the block, by the axis held fixed.
    enum SectionAxis {
        InlineSection = 0,     // x = index: width ny (crossline), height nz (sample)
        CrosslineSection = 1,  // y = index: width nx (inline), height nz (sample)
        TimeSlice = 2,         // z = index: width nx (inline), height ny (crossline)
    };
    // Reads one section into `out`, samples as reals. A time slice or a crossline of a
    // block file is read by runs of consecutive samples (one per slice for a crossline);
    // an inline, one sample per row of the file, is gathered from a memory mapping of the
    // file (read row by row without one). False, `out` untouched, for an index outside the block, an unknown
    // axis, a block not open for reading, a read error or a lack of memory.
    bool readSection(int axis, int index, img::Image& out);
    // The nz samples of the trace (x, y) into `samples` (room for nz values). False,
    // nothing written, as readSection.
    bool readTrace(int x, int y, float* samples);

    // Writes `count` slices of `image`, from its slice `firstImageSlice`, at slices
    // z .. z + count - 1 of a created block. The image must have the block's nx and ny.
    // False, and the block becomes unusable (close() then fails), on a write error; false
    // without writing for slices outside the block or an unsuitable image.
    bool writeSlices(int z, const ZN3DImage<int>& image, int firstImageSlice, int count);
    bool writeSlices(int z, const ZN3DImage<float>& image, int firstImageSlice, int count);
    // Sets the depth of a created block (slices beyond it are dropped on close()); the
    // matrix is kept. False for a depth outside 0 .. the depth given to create().
    bool setDepth(int nz);

    // ZNObject: "ZNBloc".
    QString getZNObjectType() const override;
    QDomElement createHeader(QDomDocument& doc) const override;
    // Takes the geometry, type and units of a "ZNBloc" element; false, the block
    // unchanged, for an element without usable sizes, type or matrix.
    bool getHeader(const QDomElement* header) override;
    // Copies the samples of the block opened for reading; false otherwise.
    bool writeData(QIODevice& file, qint64 offset) const override;

private:
    template <class T>
    bool readBoxAs(int x0, int y0, int z0, int cx, int cy, int cz, ZN3DImage<T>& out);
    // Whether the box lies inside an open block and is not empty.
    bool isBoxReadable(int x0, int y0, int z0, int cx, int cy, int cz) const;
    // Reads the box (readable) into `target`, cx * cy * cz samples, x fastest.
    template <class T>
    bool readBoxInto(int x0, int y0, int z0, int cx, int cy, int cz, T* target);
    // The sample at index `i` (x fastest) of an opened block, as a real; the caller checks
    // the index and the source (memory or mapping).
    float sampleAt(qint64 i) const;
    // Maps the samples of a block file for reading; false when it cannot be mapped.
    bool mapSamples();
    template <class T>
    bool writeSlicesAs(int z, const ZN3DImage<T>& image, int firstImageSlice, int count);
    bool readSamples(qint64 sampleIndex, qint64 count, char* destination);
    bool finishCreated();
    void reset();
    // Bytes of one slice; INT64_MAX when the header's sizes make more than 64 bits hold.
    qint64 sliceBytes() const;

    QString m_path;                              // the block's file
    georef::BlocSpace m_space;                   // sizes and matrix
    int m_type = Float32;                        // SampleType of the samples
    georef::UnitObject m_units;                  // spatial and vertical units
    qint64 m_dataOffset = -1;                    // byte offset of the first sample
    int m_createdDepth = 0;                      // depth given to create()
    mutable QFile m_reader;                      // open when reading
    std::shared_ptr<const ZN3DImage<float>> m_memory;  // samples of a block made by openImage
    const uchar* m_mapped = nullptr;             // mapped samples of the file; null when none
    bool m_mappingTried = false;                 // mapSamples ran since the file was opened
    std::unique_ptr<ZNObjectFileWriter> m_writer; // set when created, until close()
};
