#include "automaticfaultextraction.h"

#include <memory>
#include <new>

#include "segmentation/faultpatchlabelimage.h"
#include "znfaultpatchmanager.h"

namespace fault {

ZN3DImage<int>* segmentLikelihood(ZN3DImage<float>* likelihood,
                                  const AutomaticExtractionSettings& settings, int progressParent)
{
    int sliceCount = 0;
    int labelCounter = 0;
    return segmentation::getFaultPatchLabelImage(
        likelihood, settings.maxLabelCount, sliceCount, labelCounter, settings.maxPatchSize,
        settings.maxPlaneDeviation, settings.growthIterations, settings.likelihoodThreshold,
        progressParent);
}

bool mergePatchesIntoFaults(ZNFaultPatchManager& set, const AutomaticExtractionSettings& settings,
                            int progressParent, int* joined, int* dropped)
{
    if (!set.fastContactMerging(settings.maxMergeCost, progressParent)) return false;
    const ZNFaultPatchManager::LeftoverOutcome leftovers =
        set.settleCrossingLeftovers(settings.maxPatchSize, settings.maxMergeCost);
    if (joined) *joined = leftovers.joined;
    if (dropped) *dropped = leftovers.dropped;
    return true;
}

ZNFaultPatchManager* extractAutomaticFaults(ZN3DImage<float>* likelihood,
                                            const AutomaticExtractionSettings& settings,
                                            int progressParent)
{
    std::unique_ptr<ZN3DImage<int>> labels(segmentLikelihood(likelihood, settings, progressParent));
    if (!labels) return nullptr;
    std::unique_ptr<ZNFaultPatchManager> set(new (std::nothrow) ZNFaultPatchManager());
    if (!set || !set->init(labels.get())) return nullptr;
    if (!mergePatchesIntoFaults(*set, settings, progressParent)) return nullptr;
    return set.release();
}

} // namespace fault
