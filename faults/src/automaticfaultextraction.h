#pragma once
#include <zn3dimage.h>

class ZNFaultPatchManager;

namespace fault {

// Settings of an automatic fault extraction: the segmentation of the likelihood volume
// into small planar patches, then the best-first merging of touching patches into faults.
// The defaults recover every planted fault of the built-in synthetic scene (grid units:
// voxels) as exactly one fault, crossing faults kept apart; the merge works from 2.0 to
// 4.0 there, and 2.5 sits in the middle of that range.
struct AutomaticExtractionSettings {
    int maxPatchSize = 600;            // voxels a patch grows to; kept from a third of it
    double maxPlaneDeviation = 1.0;    // voxels, spread a kept patch may have across its plane
    int growthIterations = 15;         // rings a patch grows by
    double likelihoodThreshold = 0.5;  // seeds and growth need more
    int maxLabelCount = 1000000;       // label budget of the segmentation
    double maxMergeCost = 2.5;         // voxels, spread of two merged faults across their
                                       // plane (patch pairs are queued below half of it)
};

// The segmentation alone: the label image of `likelihood` (caller owns it), labels from
// 1, -9999 elsewhere. Null for a null or unusable volume, a lack of memory or a cancel.
ZN3DImage<int>* segmentLikelihood(ZN3DImage<float>* likelihood,
                                  const AutomaticExtractionSettings& settings, int progressParent);

// Merges the patches of an automatic fault set into faults: fastContactMerging up to
// maxMergeCost, then the faults left over where faults cross settled
// (settleCrossingLeftovers, at most maxPatchSize voxels), whose counts go to `joined` and
// `dropped` when given. False when the merging was cancelled (merges made so far stay,
// no leftover is settled).
bool mergePatchesIntoFaults(ZNFaultPatchManager& set, const AutomaticExtractionSettings& settings,
                            int progressParent, int* joined = nullptr, int* dropped = nullptr);

// Segments `likelihood` and builds from the labels an automatic fault set (label k is
// patch k), then merges its patches into faults (mergePatchesIntoFaults). Returns the new fault set
// (caller owns it); null for a null or unusable volume, a volume in which nothing was
// segmented, a lack of memory, or a cancel through the progress bars.
ZNFaultPatchManager* extractAutomaticFaults(ZN3DImage<float>* likelihood,
                                            const AutomaticExtractionSettings& settings,
                                            int progressParent);

} // namespace fault
