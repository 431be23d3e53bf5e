#pragma once
#include <cstdint>

#include <QString>
#include <QStringList>

#include <attribute/faultattributesettings.h>
#include <volumeio/rawvolume.h>

#include "volumeinput.h"

namespace kfaults {

// Everything `kfaults likelihood` needs. Defaults: the built-in 128^3 synthetic seismic,
// seed 1, the attribute's default settings, outputs with the picture in
// "kfaults-likelihood".
struct LikelihoodOptions {
    InputKind input = InputKind::Synthetic;
    QString inputPath;                        // for every kind but Synthetic
    volumeio::RawVolumeLayout raw;            // for Raw
    int syntheticSize = 128;                  // voxels along each axis of the built-in seismic
    std::uint64_t seed = 1;                   // of the built-in seismic
    fault::attribute::FaultAttributeSettings attribute;
    QString outputDir = QStringLiteral("kfaults-likelihood");
    bool pictures = true;
};

// The outcome: on success the files written (absolute paths); otherwise a one-line error,
// `cancelled` set when Ctrl-C stopped the run.
struct LikelihoodResult {
    QString error;
    bool cancelled = false;
    QStringList files;
    bool ok() const { return error.isEmpty(); }
};

// File names of the outputs inside the output folder.
struct LikelihoodNames {
    static constexpr const char* likelihood = "likelihood";   // .bloc, .float32.raw, .float32.txt
    static constexpr const char* strike = "strike";
    static constexpr const char* dip = "dip";
    static constexpr const char* picture = "likelihood.png";
};

// Computes the fault likelihood, strike and dip of the input seismic and writes each as
// a block file and as raw float32 (little-endian, inline fastest) with a text header of
// its sizes, plus the picture of an inline and a time slice through the middle of the
// volume (seismic beside likelihood) unless pictures are off. A block-file input is
// read slab by slab; SEG-Y, raw and the built-in seismic are read into memory first.
// Outputs are written into a temporary folder inside the output folder and moved into
// place only once every one is complete, so that an error or a cancel leaves the
// output folder as it was.
LikelihoodResult runLikelihood(const LikelihoodOptions& options);

} // namespace kfaults
