#pragma once
#include <QString>

#include <georef/linenumbering.h>
#include <georef/unitobject.h>
#include <zn3dimage.h>

// Readers of seismic volumes into 3D images. Every reader returns a result object; on
// failure its image is empty and its error is a one-line text naming the file and the
// reason, which the reader also sends on the event bus: kind 2 (file error) when the
// file cannot be opened or read to its end, kind 1 (error) when its content is not what
// the reader accepts. Readers never throw and allocate only after checking the sizes a
// file announces against the bytes it holds.
namespace volumeio {

struct VolumeReadResult {
    ZN3DImage<float> image;   // x inline, y crossline, z sample; with its block space
    QString error;            // empty on success
    georef::UnitObject units; // of the image's world coordinates (see each reader)
    georef::LineNumbering lines;  // survey numbers of the inlines and crosslines (SEG-Y)

    bool ok() const { return error.isEmpty(); }
};

// Formats "<path>: <reason>", sends it on the event bus with `kind` and returns it.
QString reportVolumeError(int kind, const QString& path, const QString& reason);

} // namespace volumeio
