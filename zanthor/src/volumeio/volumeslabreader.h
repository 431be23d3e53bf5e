#pragma once
#include <QFile>
#include <QString>

#include <georef/blocspace.h>
#include <georef/unitobject.h>
#include <znbloc.h>

#include "volumeio/segyreader.h"
#include "volumeio/volumesource.h"

namespace volumeio {

// A volume file read a few z slices (samples) at a time, so that a volume larger than
// memory can be worked through slab by slab: raw float32 in any byte and axis order,
// SEG-Y and block files, decoded exactly as readVolume decodes them. Only the headers
// are read on open.
class VolumeSlabReader {
public:
    // Opens the volume of `source`. Empty on success; otherwise the error readVolume
    // would give (also sent on the event bus) and the reader stays closed.
    QString open(const VolumeSource& source);
    bool isOpen() const { return !m_space.isEmpty(); }

    // Of the image readVolume would give: sizes, block-to-world matrix, units.
    const georef::BlocSpace& blocSpace() const { return m_space; }
    const georef::UnitObject& units() const { return m_units; }
    // Bytes of the whole volume as float samples.
    double volumeBytes() const { return static_cast<double>(m_space.voxelCount()) * sizeof(float); }

    // Reads slices z0 .. z0 + count - 1 into `out` (count slices of nx * ny samples, x
    // fastest). Empty on success; otherwise "<path>: <reason>", also sent on the event bus.
    QString read(int z0, int count, float* out);

private:
    VolumeSource m_source;
    georef::BlocSpace m_space;
    georef::UnitObject m_units;
    QFile m_file;                 // raw
    FileSampleLayout m_samples;   // raw
    SegyGeometry m_segy;          // SEG-Y
    ZNBloc m_bloc;                // block file
};

} // namespace volumeio
