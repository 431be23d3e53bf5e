#include "segmentation/faultpatchlabelimage.h"

#include <memory>
#include <new>

#include <core/assertion.h>
#include <zneventbus.h>
#include <znstridedprogress.h>

#include "segmentation/labelscan.h"

namespace fault::segmentation {

namespace {
const QString kNoMemory = QStringLiteral("Not enough memory for the fault patch labels.");
} // namespace

namespace detail {

ZN3DImage<int>* segmentInMemory(ZN3DImage<float>* likelihood, const ScanSettings& settings,
                                int& sliceCount, int& labelCounter, int progressParent,
                                const ScanTuning& tuning)
{
    if (!CORE_CHECK(likelihood != nullptr && !likelihood->isNull(),
                    "fault::segmentation::getFaultPatchLabelImage",
                    "faults/src/segmentation/faultpatchlabelimage"))
        return nullptr;
    const int nz = likelihood->nz();
    ZNStridedProgress progress(QStringLiteral("Get Fault Patches"), nz, progressParent);
    std::unique_ptr<ZN3DImage<int>> labels(
        new (std::nothrow) ZN3DImage<int>(likelihood->blocSpace(), kUnlabelled));
    if (!labels || labels->isNull()) {
        ZNEventBus::sendMessage(ZNEventBus::Error, kNoMemory);
        return nullptr;
    }

    VolumeView volume;
    volume.likelihood = likelihood->data();
    volume.labels = labels->data();
    volume.nx = likelihood->nx();
    volume.ny = likelihood->ny();
    volume.nz = nz;
    LabelScan scan(volume, settings, labelCounter + 1, tuning);
    if (!scan.isUsable()) {
        ZNEventBus::sendMessage(ZNEventBus::Error, kNoMemory);
        return nullptr;
    }

    int z = 0;
    for (; z < scan.sliceCount(); ++z) {
        if (progress.next()) {
            sliceCount = scan.sliceCount();
            labelCounter = scan.label();
            return nullptr;
        }
        scan.scanSlice(z);
    }
    scan.clearMarksFrom(z);
    sliceCount = scan.sliceCount();
    labelCounter = scan.label();
    return labels.release();
}

} // namespace detail

ZN3DImage<int>* getFaultPatchLabelImage(ZN3DImage<float>* likelihood, int maxLabelCount,
                                        int& sliceCount, int& labelCounter, int maxPatchSize,
                                        double maxPlaneDeviation, int growthIterations,
                                        double likelihoodThreshold, int progressParent)
{
    const detail::ScanSettings settings{maxLabelCount, maxPatchSize, maxPlaneDeviation,
                                        growthIterations, likelihoodThreshold};
    return detail::segmentInMemory(likelihood, settings, sliceCount, labelCounter,
                                   progressParent, detail::ScanTuning());
}

} // namespace fault::segmentation
