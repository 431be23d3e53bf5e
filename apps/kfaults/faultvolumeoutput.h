#pragma once
#include <QDir>
#include <QString>
#include <QStringList>

class ZNFaultPatchManager;

namespace kfaults {

// The forms the fault volume of an extraction is written in.
enum class FaultVolumeForm {
    Bloc,  // fault_volume.bloc: a block file of int32 labels (the default)
    Raw,   // fault_volume.int32.raw and its text header fault_volume.int32.txt
    Both,
};

// "bloc", "raw" or "both".
const char* faultVolumeFormName(FaultVolumeForm form);

// How the fault volume's samples are ordered, as report.json and the raw header state it.
constexpr const char* kFaultVolumeAxisOrder = "xyz";   // x (inline) fastest, then y, then z (sample)

// Writes the fault volume of `set` (each voxel of its block space holds the id of its
// fault, -9999 elsewhere) into `dir` in `form`, slab after slab so that the whole volume
// is never held, each file synced once as it is completed; appends each file written to
// `written`. The raw form is little-endian int32, x fastest, described by its header.
// Empty on success; otherwise a one-line error naming the file.
QString writeFaultVolume(const ZNFaultPatchManager& set, const QDir& dir, FaultVolumeForm form,
                         QStringList& written);

} // namespace kfaults
