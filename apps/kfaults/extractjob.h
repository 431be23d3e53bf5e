#pragma once
#include <cstdint>

#include <QJsonObject>
#include <QString>
#include <QStringList>

#include <attribute/faultattributesettings.h>
#include <automaticfaultextraction.h>
#include <volumeio/rawvolume.h>
#include <volumeio/volumesource.h>
#include <zn3dfaultpatchlight.h>
#include <znfaultsticksfromvoxels.h>

#include "faultvolumeoutput.h"
#include "volumeinput.h"

namespace kfaults {

// Everything `kfaults extract` needs. Defaults: the built-in 128^3 scene, seed 1, the
// library's extraction and stick defaults, surfaces by "Minimum Envelop", outputs with
// pictures in "kfaults-out".
struct ExtractOptions {
    InputKind input = InputKind::Synthetic;
    bool fromSeismic = false;                 // the input is seismic amplitude (built in:
                                              // the synthetic seismic), whose fault
                                              // likelihood is computed first
    fault::attribute::FaultAttributeSettings attribute;   // for fromSeismic
    QString inputPath;                        // for every kind but Synthetic
    volumeio::RawVolumeLayout raw;            // for Raw
    ByteOrderChoice byteOrderChoice = ByteOrderChoice::Given;  // how raw.byteOrder was chosen
    int syntheticSize = 128;                  // voxels along each axis of the built-in scene
    std::uint64_t seed = 1;                   // of the built-in scene
    fault::AutomaticExtractionSettings extraction;
    fault::SticksFromVoxelsSettings sticks;
    int surfaceMethod = ZN3DFaultPatchLight::kDefaultMeshingMethod;  // 0 convex, 1 minimum envelop
    QString outputDir = QStringLiteral("kfaults-out");
    bool pictures = true;
    FaultVolumeForm faultVolume = FaultVolumeForm::Bloc;
    int unfoldedPictures = 4;                 // largest faults drawn unfolded
    // Bytes the whole run may hold (its peak resident memory), given by --memory-budget:
    // the likelihood is then read and segmented slab by slab (fault::extractFaults on
    // LikelihoodSlabs). 0: in memory, unless the volume would not fit in what the
    // machine has available (kInMemoryFactor times the volume), when the run goes slab
    // by slab within half of that.
    double memoryBudget = 0.0;
    // For tests: stop the final move into the output folder after this many of its steps,
    // as a killed run would (OutputFolder::commit); -1 runs it whole.
    int testStopAfterMoves = -1;
};

// The outcome: on success the files written (absolute paths, report.json last), the
// report and, when no fault came out, why; otherwise a one-line error, `cancelled` set
// when Ctrl-C stopped the run.
struct ExtractResult {
    QString error;
    bool cancelled = false;
    QString note;            // "no fault found: <reason>" when the run found none
    QString memoryNote;      // why the run went slab by slab on its own; empty otherwise
    QStringList files;
    QJsonObject report;
    bool ok() const { return error.isEmpty(); }
};

// What a run in memory holds at its peak, as a multiple of the likelihood volume's bytes
// (the likelihood, its labels, the reading's and the segmentation's buffers).
constexpr double kInMemoryFactor = 3.0;

// Reads a memory size: a number of bytes with an optional unit K, M, G or T (powers of
// 1024; a trailing "B" or "iB" allowed, case-insensitive, "1.5G" allowed). False, `bytes`
// untouched, for anything else or a size below one byte.
bool parseMemorySize(const QString& text, double& bytes);

// The file an input other than the built-in scene is read from, as the framework's
// volume readers take it.
volumeio::VolumeSource volumeSourceOf(const ExtractOptions& options);

// Runs the whole extraction: the input, the library's extraction sequence
// (fault::extractFaults: segmentation, fault set from the labels, merging, sticks,
// duplicates, surfaces), then the outputs. Each full-size volume is released as soon
// as the next step no longer needs it, so that at most the likelihood and its labels
// are held at once. Outputs are written into a staging folder inside the output folder
// and moved into place only once every one of them is complete (OutputFolder), so an
// error or a cancel leaves the output folder as it was; the final move replaces each
// earlier output in one step, removes earlier outputs this run did not write and moves
// report.json in last, the mark of a complete run.
ExtractResult runExtract(const ExtractOptions& options);

} // namespace kfaults
