#pragma once
#include <array>
#include <cstdint>

#include <QString>

#include <core/vec3.h>
#include <zn3dimage.h>

#include "volumeio/filesamples.h"
#include "volumeio/volumereadresult.h"

// Raw volumes: a file of nInline * nCrossline * nSample samples and nothing else, in a
// given byte order and axis order. The image read from one uses the grid axes of
// every volume of the framework (x inline, y crossline, z sample) and the world
// mapping of axisAlignedBlocToWorld with the given spacing.
namespace volumeio {

enum class ByteOrder { BigEndian, LittleEndian };
enum class Axis { Inline, Crossline, Sample };
// The three axes, the one varying fastest in the file first.
using AxisOrder = std::array<Axis, 3>;

// Samples of one trace together, then traces along the crossline, then inlines: the
// usual order of files exported from seismic software.
constexpr AxisOrder kTraceOrder{Axis::Sample, Axis::Crossline, Axis::Inline};
// Inline fastest, then crossline, then sample: the order of ZN3DImage's own storage.
constexpr AxisOrder kImageOrder{Axis::Inline, Axis::Crossline, Axis::Sample};

// Reads an order written as three distinct letters, fastest axis first: x (inline),
// y (crossline), z (sample), case-insensitive ("zyx" is kTraceOrder). False, `out`
// untouched, for anything else.
bool parseAxisOrder(const QString& text, AxisOrder& out);
// The three letters of `order`, lower case.
QString axisOrderName(const AxisOrder& order);

struct RawVolumeLayout {
    int nInline = 0;                         // > 0
    int nCrossline = 0;                      // > 0
    int nSample = 0;                         // > 0
    ByteOrder byteOrder = ByteOrder::BigEndian;
    AxisOrder axes = kTraceOrder;            // fastest first; each axis once
    core::vec3 spacing{1.0, 1.0, 1.0};       // world units per voxel along inline,
                                             // crossline and sample; each > 0
};

// The byte order in which the float32 samples of the raw file at `path` read as plausible
// values: finite, 0 or of a magnitude between 1e-30 and 1e30, as any measured or computed
// volume holds, while the other order turns most of them into NaN, infinities or absurd
// magnitudes. Up to 65536 samples spread over the file are looked at. `decided` (may be
// null) is false, and big-endian returned, when both orders look alike (a file of
// zeros, an unreadable or empty file).
ByteOrder detectByteOrder(const QString& path, bool* decided = nullptr);

// "big" or "little".
QString byteOrderName(ByteOrder order);

// Where the samples of a raw file of `fileBytes` bytes laid out as `layout` says lie.
// Empty on success, `samples` set; otherwise why the layout does not fit the file (a
// reason without the path), `samples` untouched.
QString rawSampleLayout(const RawVolumeLayout& layout, qint64 fileBytes, FileSampleLayout& samples);
// The block space of the image read from a raw file of `layout`.
georef::BlocSpace rawBlocSpace(const RawVolumeLayout& layout);

// Reads a raw float32 volume laid out as `layout` says. The file must hold exactly
// nInline * nCrossline * nSample * 4 bytes; this is checked before anything is
// allocated. Reports progress on a bar titled "Reading raw volume" and stops with an
// error when it is cancelled. Sample values are kept as stored (no check for NaN).
VolumeReadResult readRawFloat32Volume(const QString& path, const RawVolumeLayout& layout);

// Writes `image` as a raw volume of float32 or int32 samples (T is float or
// std::int32_t) in the given byte and axis order, through a temporary file renamed over
// `path` once complete. Empty on success; otherwise a one-line error, also sent on the
// event bus (kind 2), and `path` left as it was.
template <class T>
QString writeRawVolume(const QString& path, const ZN3DImage<T>& image, ByteOrder byteOrder,
                       const AxisOrder& axes);

} // namespace volumeio
