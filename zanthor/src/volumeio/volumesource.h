#pragma once
#include <QString>

#include "volumeio/rawvolume.h"
#include "volumeio/volumereadresult.h"

// Opening any volume the framework reads, whole, into memory: the one entry point of the
// command-line tool and the desktop application, so both read a given file alike.
namespace volumeio {

enum class VolumeFormat {
    Segy,  // 3D post-stack SEG-Y (see segyreader.h)
    Raw,   // raw float32 samples, layout given (see rawvolume.h)
    Bloc,  // block file of the framework (see ZNBloc)
};

// Where a volume comes from: its file, its format and, for a raw file, its layout.
struct VolumeSource {
    VolumeFormat format = VolumeFormat::Segy;
    QString path;
    RawVolumeLayout raw;  // read for VolumeFormat::Raw only
};

// The format a file's name suggests: ".sgy" and ".segy" SEG-Y, ".bloc" block file, any
// other name raw (whose layout the caller must then give). Case-insensitive.
VolumeFormat formatOfFileName(const QString& path);
// "segy", "raw" or "bloc".
QString formatName(VolumeFormat format);
// The format of one of those names; false, `out` untouched, for another text.
bool formatFromName(const QString& name, VolumeFormat& out);

// Reads the whole volume of `source`. On success the result holds the samples (x
// inline, y crossline, z sample) with their block space, and the units of its world
// coordinates: metres and milliseconds for SEG-Y (post-stack time data), the file's own
// for a block file, the framework's default (metres, depth) for a raw file. On failure
// the image is empty and the error names the file and the reason, as every reader of
// this namespace does (also sent on the event bus). Progress and cancel go through the
// readers' own bars.
VolumeReadResult readVolume(const VolumeSource& source);

// The units of the world coordinates of every SEG-Y volume: post-stack time volumes,
// metres and milliseconds.
georef::UnitObject segyUnits();

// A whole block file into memory. Errors as readVolume.
VolumeReadResult readBlocVolume(const QString& path);

} // namespace volumeio
