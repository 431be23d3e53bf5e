#pragma once
#include <vector>

#include <QString>

#include "volumeio/filesamples.h"
#include "volumeio/segygrid.h"
#include "volumeio/segylayout.h"
#include "volumeio/volumereadresult.h"

// Reading of 3D post-stack SEG-Y files (through segyio) into a ZN3DImage<float>.
//
// The image's x is the inline index, y the crossline index, z the sample index, so that
// one trace is the column (i, j, *) and the inline fastest layout of ZN3DImage holds a
// time slice contiguously. Inline index i stands for info.inlineNumbers[i], crossline
// index j for info.crosslineNumbers[j], both increasing whatever the file's order.
//
// The block space maps to world coordinates as: world x = easting and world z =
// northing of the trace (CDP X and Y, bytes 181 and 185, or source X and Y, bytes 73
// and 77, when every CDP position is zero; scaled by the coordinate scalar of bytes
// 71-72: a positive scalar multiplies, a negative one divides, 0 counts as 1), fitted
// over the grid; world y = delay recording time of the first trace (bytes 109-110,
// milliseconds) + sample index * sample interval / 1000 (milliseconds for time data).
// A file without positions gets unit map steps (see segyBlocToWorld).
namespace volumeio {

// Where the reader finds what it needs in the trace headers (1-based byte positions of
// 4-byte fields, as SEG-Y documents them).
struct SegyReadOptions {
    int inlineByte = 189;
    int crosslineByte = 193;
};

enum class SegyCoordinateSource { Cdp, Source, None };

struct SegyInfo {
    std::vector<int> inlineNumbers;     // increasing; image x index -> inline number
    std::vector<int> crosslineNumbers;  // increasing; image y index -> crossline number
    int sampleCount = 0;
    int sampleIntervalMicro = 0;        // as stored (binary header, else first trace);
                                        // 0 when neither holds one (then world y steps by 1)
    double firstSampleTime = 0.0;       // delay recording time of the first trace, ms
    int formatCode = 0;                 // 1 IBM float, 2 int32, 3 int16, 5 IEEE float, 8 int8
    bool littleEndian = false;          // the file's byte order
    SegySorting sorting = SegySorting::Inline;
    SegyCoordinateSource coordinates = SegyCoordinateSource::None;  // positions used
    int traceCount = 0;
};

struct SegyReadResult : VolumeReadResult {
    SegyInfo info;                      // filled on success
};

// What the headers of a post-stack file say, without its samples: its grid, block space,
// description and where its samples lie.
struct SegyGeometry {
    SegyInfo info;
    georef::BlocSpace space;    // as the image readSegyVolume gives
    SegyLayout layout;
    SegyGrid grid;
    bool regular = false;       // 4-byte float traces in a regular order: `samples` holds
    FileSampleLayout samples;   // where they lie
};

// Reads the headers of a post-stack file as readSegyVolume does (bar "Reading SEG-Y",
// one step per trace). Empty on success, `geometry` filled; otherwise the error
// readSegyVolume would give, `geometry` untouched.
QString readSegyGeometry(const QString& path, SegyGeometry& geometry, const SegyReadOptions& options = {});

// Reads samples z0 .. z0 + depth - 1 of every trace of the file `geometry` describes into
// `out` (depth slices of nx x ny samples, x fastest), as readSegyVolume decodes them.
// Empty on success; otherwise "<path>: <reason>", also sent on the event bus.
QString readSegySlices(const QString& path, const SegyGeometry& geometry, int z0, int depth, float* out);

// Reads a whole post-stack volume, its headers as readSegyLayout (segylayout.h) reads
// them: unsigned and revision 2 sample counts, variable extended textual headers and
// additional trace headers included. Refused with an error (see volumereadresult.h):
// a file that cannot be opened, what readSegyLayout refuses (too short, no trace, a
// sample format other than 1, 2, 3, 5 or 8, no sample count, truncated), traces that do
// not fill a regular inline/crossline grid, or a cancelled read (bar "Reading SEG-Y").
SegyReadResult readSegyVolume(const QString& path, const SegyReadOptions& options = {});

} // namespace volumeio
