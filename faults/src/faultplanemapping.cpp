// Collecting the voxels along a fault's normal, reading them slice by slice and making
// the pixels' values; the filters after the reading are in faultplanemappingfilters.cpp.
#include "faultplanemapping.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>
#include <new>

#include <core/array.h>
#include <core/conventions.h>
#include <core/triplet.h>
#include <img/holefill.h>
#include <znbloc.h>
#include <znprogressbarmgr.h>

#include "faultplanemappingfilters.h"

namespace fault {
namespace {

constexpr float kNoValue = static_cast<float>(core::kNoValueReal);
constexpr int kListGranularity = 1000;   // voxel lists are sized in multiples of this
constexpr int kProgressStride = 10;      // slices per move of the bar
constexpr int kFillPasses = 10;          // the host's hole filling after the mapping
constexpr int kFillNeighbours = 3;
constexpr int kNoBar = -2;
constexpr double kMaxWindowBytes = 512.0 * 1024 * 1024;  // the correlation check's windows

using Settings = FaultPlaneMappingSettings;

// The offsets along the normal, in voxels: position o of a window (0 .. 2W) is the offset
// (o - W) * step. The plain order visits 0, +step, -step, +2 step, -2 step...
struct Window {
    int half = 0;                 // W
    int count() const { return 2 * half + 1; }
    double offset(int o) const { return (o - half) * Settings::kNormalStep; }
    // The o of the n-th offset in the plain order.
    int plainOrder(int n) const { return half + (n == 0 ? 0 : (n % 2 == 1 ? (n + 1) / 2 : -(n / 2))); }
};

// The voxels to read, one list per slice of a range of slices, and for settings that
// need it the pixel and window position each entry was collected for.
struct VoxelLists {
    int first = 0;                                 // slice of lists[0]
    std::vector<core::Array<core::Triplet>> voxels;
    std::vector<core::Array<uint32_t>> sources;   // pixel * window count + o; empty when unneeded
    long long bytes = 0;                           // capacity held, bytes
};

// The index nearest to `v`, rounded half away from zero, when it lies in 0..n-1; -1
// otherwise (NaN included).
inline int indexIn(double v, int n)
{
    if (!(v > -0.5) || !(v < n - 0.5)) return -1;  // outside once rounded (or NaN)
    const int i = v >= 0.0 ? static_cast<int>(v + 0.5) : 0;  // -0.5 < v < 0 rounds to 0
    return i < n ? i : -1;
}

// Voxel of block position `b`; false outside the block.
inline bool voxelAt(const core::vec3& b, int nx, int ny, int nz, core::Triplet& out)
{
    const int i = indexIn(b.x, nx), j = indexIn(b.y, ny), k = indexIn(b.z, nz);
    if (i < 0 || j < 0 || k < 0) return false;
    out = core::Triplet(i, j, k);
    return true;
}

// Calls visit(pixel, o, voxel) for every fault pixel and window position whose voxel lies
// in the block, pixels row by row, positions in the plain order. With `distinct`, a voxel
// met again for the same pixel (two offsets rounding to one voxel) is visited once: the
// plain rule gives it the same sample and the same pixel. An affine `toBloc` (the usual
// case) is stepped by additions; a projective one is applied point by point.
template <class Visit>
void forEachVoxel(const img::Image& projected, const core::mat4& toBloc, const Window& window,
                  const georef::BlocSpace& space, bool distinct, Visit visit)
{
    const int nx = space.nx(), ny = space.ny(), nz = space.nz();
    const bool affine = toBloc(3, 0) == 0.0 && toBloc(3, 1) == 0.0 && toBloc(3, 2) == 0.0 && toBloc(3, 3) == 1.0;
    const auto column = [&toBloc](int c) { return core::vec3(toBloc(0, c), toBloc(1, c), toBloc(2, c)); };
    std::vector<int> order(static_cast<std::size_t>(window.count()));
    std::vector<core::vec3> along(order.size());  // each offset's step from the plane
    for (int n = 0; n < window.count(); ++n) {
        order[static_cast<std::size_t>(n)] = window.plainOrder(n);
        along[static_cast<std::size_t>(n)] = column(2) * window.offset(window.plainOrder(n));
    }
    core::Triplet voxel;
    std::vector<core::Triplet> seen;  // the voxels of the pixel so far
    seen.reserve(order.size());
    for (int r = 0; r < projected.height(); ++r) {
        const float* row = projected.row(r);
        const core::vec3 rowStart = column(3) + column(1) * r;
        for (int c = 0; c < projected.width(); ++c) {
            if (row[c] == kNoValue) continue;
            const core::vec3 onPlane = rowStart + column(0) * c;
            seen.clear();
            for (std::size_t n = 0; n < order.size(); ++n) {
                const core::vec3 b = affine ? onPlane + along[n]
                                            : toBloc.transformPoint({double(c), double(r), window.offset(order[n])});
                if (!voxelAt(b, nx, ny, nz, voxel)) continue;
                if (distinct) {
                    if (std::find(seen.begin(), seen.end(), voxel) != seen.end()) continue;
                    seen.push_back(voxel);
                }
                visit(c + projected.width() * r, order[n], voxel);
            }
        }
    }
}

// Entries of each slice's list.
std::vector<long long> countVoxels(const img::Image& projected, const core::mat4& toBloc, const Window& window,
                                   const georef::BlocSpace& space, bool distinct)
{
    std::vector<long long> counts(static_cast<std::size_t>(space.nz()), 0);
    forEachVoxel(projected, toBloc, window, space, distinct,
                 [&](int, int, const core::Triplet& v) { ++counts[static_cast<std::size_t>(v.z)]; });
    return counts;
}

long long roundedCapacity(long long count)
{
    return (count + kListGranularity - 1) / kListGranularity * kListGranularity;
}

// The lists of slices first .. last - 1, each sized to its count rounded up to the list
// granularity, so that no list grows while it is filled.
bool collectVoxels(const img::Image& projected, const core::mat4& toBloc, const Window& window,
                   const georef::BlocSpace& space, const std::vector<long long>& counts, int first, int last,
                   std::size_t entryBytes, bool withSources, VoxelLists& lists)
{
    const std::size_t n = static_cast<std::size_t>(last - first);
    lists.first = first;
    lists.voxels.assign(n, core::Array<core::Triplet>(kListGranularity));
    lists.sources.assign(withSources ? n : 0, core::Array<uint32_t>(kListGranularity));
    lists.bytes = 0;
    for (int k = first; k < last; ++k) {
        const long long rounded = roundedCapacity(counts[static_cast<std::size_t>(k)]);
        if (rounded == 0) continue;
        if (rounded > std::numeric_limits<int>::max()) return false;
        const std::size_t at = static_cast<std::size_t>(k - first);
        if (!lists.voxels[at].reserve(static_cast<int>(rounded))) return false;
        if (withSources && !lists.sources[at].reserve(static_cast<int>(rounded))) return false;
        lists.bytes += rounded * static_cast<long long>(entryBytes);
    }
    forEachVoxel(projected, toBloc, window, space, !withSources, [&](int pixel, int o, const core::Triplet& v) {
        if (v.z < first || v.z >= last) return;
        const std::size_t at = static_cast<std::size_t>(v.z - first);
        lists.voxels[at].add(v);
        if (withSources) lists.sources[at].add(static_cast<uint32_t>(pixel) * window.count() + o);
    });
    return true;
}

// The end of the range of slices from `first` whose lists fit `budget` bytes (at least
// one slice).
int rangeEnd(const std::vector<long long>& counts, int first, std::size_t entryBytes, long long budget)
{
    int end = first;
    long long bytes = 0;
    while (end < static_cast<int>(counts.size())) {
        const long long more = roundedCapacity(counts[static_cast<std::size_t>(end)]) * static_cast<long long>(entryBytes);
        if (end > first && bytes + more > budget) break;
        bytes += more;
        ++end;
    }
    return end;
}

// Per-pixel state of the combinations other than the first sample, and the windows of
// the correlation check.
struct Accumulators {
    std::vector<double> sum;     // Mean
    std::vector<int> count;
    std::vector<float> traces;   // pixel * window count + o; empty unless checked
};

} // namespace

bool FaultPlaneMappingSettings::isValid() const
{
    const auto within = [](double v, double low, double high) { return v >= low && v <= high; };
    return windowSize >= 0 && windowSize <= kMaxWindowSize && interpolationRadius >= 0 &&
           interpolationRadius <= kMaxInterpolationRadius && within(correlationThreshold, 0.0, 1.0) &&
           within(spatialDeviation, 0.0, kMaxDeviation) && within(verticalDeviation, 0.0, kMaxDeviation) &&
           static_cast<int>(combine) >= 0 && static_cast<int>(combine) <= static_cast<int>(Combine::MaxAmplitude);
}

bool FaultPlaneMappingSettings::isNeutral() const
{
    return windowSize == kDefaultWindowSize && combine == Combine::FirstSample && correlationThreshold == 0.0 &&
           interpolationRadius == 0 && !smoothing;
}

bool faultImageToBlocMatrix(const core::mat4& imageToWorld, const core::mat4& worldToData, core::mat4& out)
{
    const core::vec3 normal(imageToWorld(0, 2), imageToWorld(1, 2), imageToWorld(2, 2));
    const double length = worldToData.transformVector(normal).length();
    if (!(length > 0.0) || !std::isfinite(length)) return false;
    core::mat4 scaled = imageToWorld;
    for (int row = 0; row < 3; ++row) scaled(row, 2) /= length;
    const core::mat4 toBloc = worldToData * scaled;
    core::mat4 inverse;
    if (!toBloc.inverse(inverse)) return false;
    out = toBloc;
    return true;
}

FaultPlaneMappingResult mapDataOnFaultPlane(const img::Image& projected, const core::mat4& imageToWorld,
                                            ZNBloc& data, const FaultPlaneMappingSettings& settings,
                                            img::Image& mapped, int progressParent, FaultPlaneMappingStats* stats)
{
    using Result = FaultPlaneMappingResult;
    FaultPlaneMappingStats local;
    FaultPlaneMappingStats& st = stats ? *stats : local;
    st = FaultPlaneMappingStats();
    const georef::BlocSpace& space = data.blocSpace();
    img::Image result(projected.width(), projected.height(), kNoValue);
    if (result.isNull() || !settings.isValid()) return Result::Failed;
    core::mat4 toBloc, toImage;
    if (projected.isEmpty() || space.isEmpty() ||
        !faultImageToBlocMatrix(imageToWorld, space.getFromWorldToBlocMatrix(), toBloc) || !toBloc.inverse(toImage)) {
        mapped = std::move(result);  // nothing can be mapped
        return Result::Done;
    }
    const Window window{settings.windowSize};
    const bool perPixel = settings.combine != Settings::Combine::FirstSample;
    const bool checked = settings.correlationThreshold > 0.0;
    const std::size_t pixels = result.sampleCount();
    if (static_cast<double>(pixels) * window.count() > std::numeric_limits<uint32_t>::max()) return Result::Failed;

    const bool withSources = perPixel || checked;
    const std::size_t entryBytes = sizeof(core::Triplet) + (withSources ? sizeof(uint32_t) : 0);
    std::vector<long long> counts;
    try {
        counts = countVoxels(projected, toBloc, window, space, !withSources);
    } catch (const std::bad_alloc&) {
        return Result::Failed;
    }
    for (long long count : counts) st.voxelsListed += count;

    Accumulators acc;
    try {
        if (settings.combine == Settings::Combine::Mean) {
            acc.sum.assign(pixels, 0.0);
            acc.count.assign(pixels, 0);
        }
        if (checked) {
            const double bytes = static_cast<double>(pixels) * window.count() * sizeof(float);
            if (bytes <= kMaxWindowBytes) acc.traces.assign(pixels * window.count(), kNoValue);
            else st.correlationSkipped = true;
        }
    } catch (const std::bad_alloc&) {
        return Result::Failed;
    }
    st.imageBytes = static_cast<long long>(acc.sum.size() * sizeof(double) + acc.count.size() * sizeof(int) +
                                           acc.traces.size() * sizeof(float));

    const bool bar = progressParent != kNoBar;
    const int barId = bar ? ZNProgressBarMgr::createProgressBar(QStringLiteral("Map data on fault plane"), space.nz(),
                                                                progressParent)
                          : -1;
    struct BarCloser {
        int id;
        ~BarCloser()
        {
            if (id != -1) ZNProgressBarMgr::closeProgressBar(id);
        }
    } closer{barId};
    img::Image slice;
    VoxelLists lists;
    const bool affineBack =
        toImage(3, 0) == 0.0 && toImage(3, 1) == 0.0 && toImage(3, 2) == 0.0 && toImage(3, 3) == 1.0;
    for (int k = 0; k < space.nz(); ++k) {
        if (k == lists.first + static_cast<int>(lists.voxels.size())) {
            // The next range of slices whose lists fit the budget: one more sweep over the
            // fault, each slice still read once.
            const int end = rangeEnd(counts, k, entryBytes, settings.listBudgetBytes);
            try {
                if (!collectVoxels(projected, toBloc, window, space, counts, k, end, entryBytes, withSources, lists))
                    return Result::Failed;
            } catch (const std::bad_alloc&) {
                return Result::Failed;
            }
            ++st.listSweeps;
            st.listBytes = std::max(st.listBytes, lists.bytes);
        }
        const std::size_t at = static_cast<std::size_t>(k - lists.first);
        const core::Array<core::Triplet>& list = lists.voxels[at];
        if (!list.empty()) {
            if (!data.readSlice(k, slice)) return Result::Failed;
            st.slicesRead.push_back(k);
            st.sliceBytes = static_cast<long long>(slice.sampleCount() * sizeof(float));
            const uint32_t* sources = withSources ? lists.sources[at].data() : nullptr;
            for (int e = 0; e < list.size(); ++e) {
                const core::Triplet& v = list[e];
                const float value = slice(v.x, v.y);
                if (value == 0.0f || value == kNoValue || std::isnan(value)) continue;  // zero is no data
                if (sources) {
                    const std::size_t pixel = sources[e] / window.count();
                    if (!acc.traces.empty()) acc.traces[sources[e]] = value;
                    if (settings.combine == Settings::Combine::Mean) {
                        acc.sum[pixel] += value;
                        ++acc.count[pixel];
                        continue;
                    }
                    if (settings.combine == Settings::Combine::MaxAmplitude) {
                        float& best = result.data()[pixel];
                        if (best == kNoValue || std::fabs(value) > std::fabs(best)) best = value;
                        continue;
                    }
                }
                const core::vec3 back = affineBack ? core::vec3(toImage(0, 0) * v.x + toImage(0, 1) * v.y + toImage(0, 2) * v.z + toImage(0, 3),
                                                                toImage(1, 0) * v.x + toImage(1, 1) * v.y + toImage(1, 2) * v.z + toImage(1, 3), 0.0)
                                                   : toImage.transformPoint({double(v.x), double(v.y), double(v.z)});
                const int c = indexIn(back.x, result.width()), r = indexIn(back.y, result.height());
                if (c < 0 || r < 0) continue;
                float& pixel = result(c, r);
                if (pixel == kNoValue) pixel = value;
            }
            lists.voxels[at].release();  // read once: no longer needed
            if (sources) lists.sources[at].release();
        }
        if (bar && (k + 1) % kProgressStride == 0) {
            ZNProgressBarMgr::incrementProgressBar(barId, kProgressStride);
            if (ZNProgressBarMgr::isProgressBarCancelled(barId)) return Result::Cancelled;
        }
    }
    if (settings.combine == Settings::Combine::Mean)
        for (std::size_t p = 0; p < pixels; ++p)
            if (acc.count[p] > 0) result.data()[p] = static_cast<float>(acc.sum[p] / acc.count[p]);

    img::fillHoles(result, kFillPasses, kFillNeighbours, img::HoleGrowth::HolesOnly);
    keepInside(result, projected);
    if (!acc.traces.empty())
        dropUncorrelatedPixels(result, acc.traces, window.count(), settings.correlationThreshold);
    if (settings.interpolationRadius > 0) interpolateHoles(result, projected, settings.interpolationRadius);
    if (settings.smoothing) smoothValued(result, settings.spatialDeviation, settings.verticalDeviation);
    for (std::size_t p = 0; p < pixels; ++p) st.pixelsMapped += result.data()[p] != kNoValue;
    mapped = std::move(result);
    return Result::Done;
}

} // namespace fault
