#include "segmentation/slabsegmentation.h"

#include <algorithm>
#include <climits>
#include <cstring>

#include <znbloc.h>
#include <znstridedprogress.h>

#include "segmentation/faultpatchlabelimage.h"
#include "segmentation/labelscan.h"

namespace fault::segmentation {

namespace {

// The window of slices a scan works on: the likelihood and the labels of slices
// first .. first + depth - 1, in images as deep as the largest window.
struct Window {
    ZN3DImage<float> likelihood;
    ZN3DImage<int> labels;
    int first = 0;
    int depth = 0;

    int end() const { return first + depth; }
};

// Moves the window to slices first .. end - 1 (first at or after the window's first
// slice, at or before its end): the slices both hold keep their samples and labels, the
// others are read, unlabelled.
bool moveWindow(Window& w, int first, int end, const LikelihoodSlabReader& read)
{
    const std::size_t slice = w.likelihood.sliceSize();
    const int kept = w.end() - first;
    if (kept > 0 && first > w.first) {
        const std::size_t from = static_cast<std::size_t>(first - w.first) * slice;
        std::memmove(w.likelihood.data(), w.likelihood.data() + from, kept * slice * sizeof(float));
        std::memmove(w.labels.data(), w.labels.data() + from, kept * slice * sizeof(int));
    }
    const int carried = std::max(0, kept);
    const int added = end - first - carried;
    w.first = first;
    w.depth = end - first;
    if (added <= 0) return true;
    int* fresh = w.labels.slice(carried);
    std::fill(fresh, fresh + static_cast<std::size_t>(added) * slice, kUnlabelled);
    return read(first + carried, added, w.likelihood.slice(carried));
}

// Writes slices from .. to - 1 of the window (final: no later seed reaches them) into
// `out`; the scan's marks on free voxels become kUnlabelled first.
bool writeFinal(Window& w, int from, int to, ZNBloc& out)
{
    if (to <= from) return true;
    int* first = w.labels.slice(from - w.first);
    int* last = first + static_cast<std::size_t>(to - from) * w.labels.sliceSize();
    std::replace_if(first, last, [](int v) { return v < 0; }, kUnlabelled);
    return out.writeSlices(from, w.labels, from - w.first, to - from);
}

} // namespace

double slabSegmentationBytes(int nx, int ny, int seedSlices, int growthIterations, int maxPatchSize)
{
    const detail::ScanMemory memory = detail::scanMemory(nx, ny, maxPatchSize, detail::ScanTuning());
    const double windowSlices = static_cast<double>(seedSlices) + 2.0 * growthIterations;
    return windowSlices * memory.perSlice + memory.fixed;
}

int seedSlicesWithin(double budget, int nx, int ny, int nz, int growthIterations, int maxPatchSize)
{
    if (nx < 1 || ny < 1 || nz < 1) return 0;
    const double one = slabSegmentationBytes(nx, ny, 1, growthIterations, maxPatchSize);
    const double perSlice = slabSegmentationBytes(nx, ny, 2, growthIterations, maxPatchSize) - one;
    if (budget < one) return 0;
    const double more = (budget - one) / perSlice;
    return static_cast<int>(std::min<double>(nz, 1.0 + more));
}

bool segmentLikelihoodSlabs(const georef::BlocSpace& space, const LikelihoodSlabReader& read,
                            ZNBloc& labels, const AutomaticExtractionSettings& settings,
                            int seedSlices, int progressParent, SlabScanSummary& summary)
{
    summary = SlabScanSummary();
    const int nx = space.nx(), ny = space.ny(), nz = space.nz();
    if (space.isEmpty() || !read || !labels.isWritable() || labels.nx() != nx || labels.ny() != ny ||
        labels.nz() != nz)
        return false;
    const int reach = std::max(0, settings.growthIterations);
    const int seedDepth = std::clamp(seedSlices, 1, nz);
    const int windowDepth = static_cast<int>(std::min<long long>(nz, seedDepth + 2LL * reach));
    Window w;
    w.likelihood = ZN3DImage<float>::unfilled(georef::BlocSpace(nx, ny, windowDepth));
    w.labels = ZN3DImage<int>::unfilled(georef::BlocSpace(nx, ny, windowDepth));
    if (w.likelihood.isNull() || w.labels.isNull()) return false;

    detail::ScanSettings scanSettings{settings.maxLabelCount, settings.maxPatchSize,
                                      settings.maxPlaneDeviation, settings.growthIterations,
                                      settings.likelihoodThreshold, std::max({nx, ny, nz})};
    ZNStridedProgress progress(QStringLiteral("Get Fault Patches"), nz, progressParent);
    int label = 1;         // of the next kept patch
    int scanEnd = nz;      // slices seeded: lowered once the label budget is spent
    int written = 0;       // slices final and written
    for (int a = 0; a < scanEnd; a += seedDepth) {
        const int b = std::min(scanEnd, a + seedDepth);
        if (!moveWindow(w, std::max(0, a - reach), std::min(nz, b + reach), read)) return false;
        detail::VolumeView view{w.likelihood.data(), w.labels.data(), nx, ny, w.depth};
        detail::LabelScan scan(view, scanSettings, label, detail::ScanTuning());
        if (!scan.isUsable()) return false;
        ++summary.windows;
        int z = a;
        for (; z < std::min(b, scanEnd); ++z) {
            if (progress.next()) return false;
            scan.scanSlice(z - w.first);
            if (scan.label() > scanSettings.maxLabelCount && scanEnd == nz) {
                scanEnd = w.first + scan.sliceCount();
                scanSettings.maxLabelCount = INT_MAX;  // spent: later windows only finish
            }
        }
        label = scan.label();
        // Slices before z - reach are final: no seed from z on reaches them.
        const int final = z >= scanEnd ? w.end() : z - reach;
        if (!writeFinal(w, written, final, labels)) return false;
        written = std::max(written, final);
    }
    // Slices no patch reached, after a spent label budget.
    if (written < nz) {
        ZN3DImage<int> empty(georef::BlocSpace(nx, ny, 1), kUnlabelled);
        if (empty.isNull()) return false;
        for (; written < nz; ++written)
            if (!labels.writeSlices(written, empty, 0, 1)) return false;
    }
    summary.labelCount = label - 1;
    summary.seedSlices = seedDepth;
    return true;
}

} // namespace fault::segmentation
