#pragma once
#include <QFile>
#include <QString>
#include <QtGlobal>

#include <zn3dimage.h>

class ZNStridedProgress;

// Reading the 4-byte samples of a volume stored in a file in any regular layout (raw
// volumes in any axis and byte order, the traces of a SEG-Y file on a complete grid) into
// images, at the speed of memory: the file is mapped a window at a time along its slowest
// axis and the samples are moved into the image's order (x fastest) by tiles of 16 x 4
// samples, byte-swapped and transposed in registers, each row of the image written as
// whole cache lines.
namespace volumeio {

enum class SampleCoding {
    Ieee,  // IEEE 754 single precision
    Ibm,   // IBM System/360 single precision (SEG-Y format 1)
};

// Where the samples of a volume of size[0] x size[1] x size[2] voxels (x inline, y
// crossline, z sample) lie in a file: sample (x, y, z) is the 4 bytes at
// origin + x * step[0] + y * step[1] + z * step[2]. Steps may be negative; the samples of
// the volume must not overlap.
struct FileSampleLayout {
    int size[3] = {0, 0, 0};
    qint64 origin = 0;
    qint64 step[3] = {0, 0, 0};
    bool swap = false;                       // stored in the other byte order than the machine's
    SampleCoding coding = SampleCoding::Ieee;

    // True when every sample lies within the first `fileBytes` bytes of the file.
    bool fitsIn(qint64 fileBytes) const;
};

// Bytes of the file mapped at once by default.
constexpr qint64 kSampleWindowBytes = qint64(32) << 20;

// Reads slices z0 .. z0 + out.nz() - 1 of the volume `layout` describes in `file` (open
// for reading) into `out`, whose nx and ny are the layout's. The file is taken in windows
// of about `windowBytes` (at least one slice along its slowest axis), each mapped, or
// read into memory when it cannot be mapped. `progress` (may be null) is advanced by
// `progressItems` items over the read, in proportion of the windows read. Empty on
// success; otherwise the reason, `cancelled` telling whether the progress bar was
// cancelled ("reading cancelled") rather than the file failing to be read. Samples are
// decoded as stored: NaN and infinities are kept.
QString readFileSamples(QFile& file, const FileSampleLayout& layout, int z0, ZN3DImage<float>& out,
                        ZNStridedProgress* progress, qint64 progressItems, bool& cancelled,
                        qint64 windowBytes = kSampleWindowBytes);

// The same into `depth` slices of the layout's nx x ny samples at `out` (x fastest).
QString readFileSamples(QFile& file, const FileSampleLayout& layout, int z0, int depth, float* out,
                        ZNStridedProgress* progress, qint64 progressItems, bool& cancelled,
                        qint64 windowBytes = kSampleWindowBytes);

// The IEEE single-precision value nearest an IBM single-precision one (its bits in the
// machine's order); infinities beyond the IEEE range, 0 below it.
float ibmToIeee(quint32 bits);

} // namespace volumeio
