// Reading the voxels along a fault's normal slice by slice and making the pixels' values;
// the voxels are listed in faultplanemappingvoxels.cpp, the filters after the reading are
// in faultplanemappingfilters.cpp.
#include "faultplanemapping.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>
#include <new>

#include <core/conventions.h>
#include <img/holefill.h>
#include <znbloc.h>
#include <znprogressbarmgr.h>

#include "faultplanemappingfilters.h"
#include "faultplanemappingvoxels.h"

namespace fault {
namespace {

constexpr float kNoValue = static_cast<float>(core::kNoValueReal);
constexpr int kProgressStride = 10;      // slices per move of the bar
constexpr int kFillPasses = 10;          // the host's hole filling after the mapping
constexpr int kFillNeighbours = 3;
constexpr int kNoBar = -2;
constexpr double kMaxWindowBytes = 512.0 * 1024 * 1024;  // the correlation check's windows

using Settings = FaultPlaneMappingSettings;

// Per-pixel state of the combinations other than the first sample, and the windows of
// the correlation check.
struct Accumulators {
    std::vector<double> sum;     // Mean
    std::vector<int> count;
    std::vector<float> traces;   // pixel * window count + o; empty unless checked
};

// The pixel a voxel is taken back to: its image position rounded, when inside the image.
class BackToImage {
public:
    BackToImage(const core::mat4& toImage, int width, int height)
        : m_toImage(toImage), m_width(width), m_height(height),
          m_affine(toImage(3, 0) == 0.0 && toImage(3, 1) == 0.0 && toImage(3, 2) == 0.0 && toImage(3, 3) == 1.0)
    {
    }

    // The voxels of slice k.
    class Slice {
    public:
        // Index of the pixel of voxel (i, j) (c + width r), -1 outside the image.
        long long pixelOf(int i, int j) const
        {
            const core::mat4& m = m_back.m_toImage;
            double x, y;
            if (m_back.m_affine) {
                // The products of k are the same whichever voxel: made once per slice.
                x = m(0, 0) * i + m(0, 1) * j + m_zx + m(0, 3);
                y = m(1, 0) * i + m(1, 1) * j + m_zy + m(1, 3);
            } else {
                const core::vec3 b = m.transformPoint({double(i), double(j), double(m_k)});
                x = b.x;
                y = b.y;
            }
            const int c = roundedIndex(x, m_back.m_width), r = roundedIndex(y, m_back.m_height);
            return c < 0 || r < 0 ? -1 : c + static_cast<long long>(m_back.m_width) * r;
        }

    private:
        friend class BackToImage;
        Slice(const BackToImage& back, int k)
            : m_back(back), m_k(k), m_zx(back.m_toImage(0, 2) * k), m_zy(back.m_toImage(1, 2) * k)
        {
        }
        const BackToImage& m_back;
        int m_k;
        double m_zx, m_zy;   // the slice's share of x and y
    };
    Slice slice(int k) const { return Slice(*this, k); }

private:
    core::mat4 m_toImage;
    int m_width, m_height;
    bool m_affine;
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
    const NormalWindow window{settings.windowSize};
    const bool perPixel = settings.combine != Settings::Combine::FirstSample;
    const bool checked = settings.correlationThreshold > 0.0;
    const std::size_t pixels = result.sampleCount();
    if (static_cast<double>(pixels) * window.count() > std::numeric_limits<uint32_t>::max()) return Result::Failed;

    const bool withSources = perPixel || checked;
    const NormalWalk walk(projected, toBloc, window, space, !withSources);
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
    ZN3DImage<float> slice;
    VoxelLists lists;
    VoxelCounts counts;
    const BackToImage back(toImage, result.width(), result.height());
    float* const out = result.data();
    for (int k = 0; k < space.nz(); ++k) {
        if (k == lists.end()) {
            // The next range of slices whose lists fit the budget: one more sweep over the
            // fault, each slice still read once. The first sweep also counts the lists.
            try {
                const bool made = k == 0 ? lists.collectCounting(walk, k, withSources, settings.listBudgetBytes, counts)
                                         : lists.collect(walk, k, withSources, settings.listBudgetBytes, counts);
                if (!made) return Result::Failed;
            } catch (const std::bad_alloc&) {
                return Result::Failed;
            }
            if (k == 0) st.voxelsListed = counts.total;
            ++st.listSweeps;
            st.listBytes = std::max(st.listBytes, lists.peakBytes());
        }
        if (lists.blocks(k) > 0) {
            // As a box of one slice: the samples as read, without the copy into an image.
            if (!data.readBox(0, 0, k, space.nx(), space.ny(), 1, slice)) return Result::Failed;
            st.slicesRead.push_back(k);
            st.sliceBytes = static_cast<long long>(slice.voxelCount() * sizeof(float));
            const float* samples = slice.data();
            const std::size_t rowLength = static_cast<std::size_t>(space.nx());
            const BackToImage::Slice backOfSlice = back.slice(k);
            for (int b = 0; b < lists.blocks(k); ++b) {
                const VoxelLists::Voxel* voxels = lists.voxels(k, b);
                const uint32_t* sources = lists.sources(k, b);
                const int size = lists.blockSize(k, b);
                for (int e = 0; e < size; ++e) {
                    const VoxelLists::Voxel v = voxels[e];
                    const float value =
                        samples[static_cast<std::size_t>(v.y) * rowLength + static_cast<std::size_t>(v.x)];
                    if (value == 0.0f || value == kNoValue || std::isnan(value)) continue;  // zero is no data
                    if (sources) {
                        const std::size_t pixel = sources[e] / static_cast<uint32_t>(window.count());
                        if (!acc.traces.empty()) acc.traces[sources[e]] = value;
                        if (settings.combine == Settings::Combine::Mean) {
                            acc.sum[pixel] += value;
                            ++acc.count[pixel];
                            continue;
                        }
                        if (settings.combine == Settings::Combine::MaxAmplitude) {
                            float& best = out[pixel];
                            if (best == kNoValue || std::fabs(value) > std::fabs(best)) best = value;
                            continue;
                        }
                    }
                    const long long pixel = backOfSlice.pixelOf(v.x, v.y);
                    if (pixel >= 0 && out[pixel] == kNoValue) out[pixel] = value;
                }
            }
            lists.release(k);  // read once: no longer needed
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
    st.pixelsMapped += static_cast<int>(img::countValued(result));
    mapped = std::move(result);
    return Result::Done;
}

} // namespace fault
