#include "segmentation/faultpatchpropagation.h"

#include <core/assertion.h>

#include "segmentation/patchgrowth.h"

namespace fault::segmentation {

void propagateFaultPatch(core::Triplet seed, ZN3DImage<float>* likelihood, ZN3DImage<int>* labels,
                         int label, core::Array<core::Triplet>& patch, int maxRings, int maxVoxels,
                         double threshold)
{
    static const char* const kFunction = "fault::segmentation::propagateFaultPatch";
    static const char* const kSource = "faults/src/segmentation/faultpatchpropagation";
    patch.clear();
    if (!CORE_CHECK(likelihood != nullptr && labels != nullptr, kFunction, kSource)) return;
    if (!CORE_CHECK(likelihood->nx() == labels->nx() && likelihood->ny() == labels->ny() &&
                        likelihood->nz() == labels->nz(),
                    kFunction, kSource))
        return;
    if (!CORE_CHECK(labels->contains(seed), kFunction, kSource)) return;
    // A negative label would read as free and be taken again and again.
    if (!CORE_CHECK(label >= 0, kFunction, kSource)) return;

    detail::VolumeView volume;
    volume.likelihood = likelihood->data();
    volume.labels = labels->data();
    volume.nx = labels->nx();
    volume.ny = labels->ny();
    volume.nz = labels->nz();
    detail::growPatch(volume, seed, label, patch, maxRings, maxVoxels, threshold);
}

} // namespace fault::segmentation
