#include "attribute/faultscanner.h"

#include <algorithm>
#include <atomic>
#include <vector>

#include <omp.h>
#include <znstridedprogress.h>

#include "attribute/scanstream.h"

namespace fault::attribute {
namespace {

// The smallest window sum of the denominator that still holds data: a millionth of
// its mean over the slab.
float denominatorFloor(const SlabArray<float>& denominator)
{
    double sum = 0.0;
    const std::size_t count = denominator.sliceSize() * static_cast<std::size_t>(denominator.nz());
    const float* d = denominator.data();
#pragma omp parallel for reduction(+ : sum) schedule(static)
    for (std::ptrdiff_t i = 0; i < static_cast<std::ptrdiff_t>(count); ++i) sum += d[i];
    return count > 0 ? static_cast<float>(1e-6 * sum / static_cast<double>(count)) : 0.0F;
}

// For each slice k of the factors, how many slices before it hold a non-zero numerator
// or denominator sample (nz + 1 counts).
std::vector<int> slicesWithDataBefore(const SlabArray<float>& numerator, const SlabArray<float>& denominator)
{
    const int nz = numerator.nz();
    std::vector<unsigned char> data(static_cast<std::size_t>(nz), 0);
    const std::size_t size = numerator.sliceSize();
#pragma omp parallel for schedule(static)
    for (int k = 0; k < nz; ++k) {
        const float* n = numerator.slice(k);
        const float* d = denominator.slice(k);
        bool any = false;
        for (std::size_t i = 0; i < size && !any; ++i) any = n[i] != 0.0F || d[i] != 0.0F;
        data[static_cast<std::size_t>(k)] = any ? 1 : 0;
    }
    std::vector<int> before(static_cast<std::size_t>(nz) + 1, 0);
    for (std::size_t k = 0; k < data.size(); ++k) before[k + 1] = before[k] + data[k];
    return before;
}

// The most groups one layout (transposed or not) holds: no more streams run at once.
int largestPass(const ScanPlan& plan)
{
    int plain = 0, turned = 0;
    for (const StrikeGroup& g : plan.groups) ++(g.transposed ? turned : plain);
    return std::max(plain, turned);
}

} // namespace

int FaultScanner::streamCount() const
{
    return std::max(1, std::min(omp_get_max_threads(), largestPass(m_plan)));
}

double FaultScanner::workingSlices(int shortestSide) const
{
    return streamCount() * ScanStream::workingSlices(m_plan, shortestSide);
}

bool FaultScanner::scan(SlabArray<float>& numerator, SlabArray<float>& denominator, int firstSlice,
                        SlabArray<std::uint32_t>& keys, int firstKeyed, ZNStridedProgress& progress) const
{
    if (numerator.isEmpty() || denominator.isEmpty() || keys.isEmpty()) return false;
    std::fill(keys.data(), keys.data() + keys.sliceSize() * static_cast<std::size_t>(keys.nz()), kNoScanKey);
    const std::vector<int> dataBefore = slicesWithDataBefore(numerator, denominator);
    const ScanFactors factors{numerator, denominator, firstSlice, denominatorFloor(denominator), dataBefore.data()};
    SharedKeys shared(keys, firstKeyed);
    const qint64 progressStart = progress.done();
    std::atomic<int> done{0};
    std::atomic<bool> stop{false};   // cancelled or out of memory
    // The streams' memory is taken here, by the calling thread, and given back at the end.
    const int nx = numerator.na(), ny = numerator.nb();
    std::vector<ScanStream> streams(static_cast<std::size_t>(streamCount()));
    for (ScanStream& s : streams)
        if (!s.reserve(m_plan, nx, ny)) return false;
    bool failed = false;
    bool transposed = false;
    for (const bool pass : {false, true}) {
        std::vector<const StrikeGroup*> groups;
        for (const StrikeGroup& g : m_plan.groups)
            if (g.transposed == pass) groups.push_back(&g);
        if (groups.empty()) continue;
        if (pass != transposed) {
            if (!numerator.transposeLateral() || !denominator.transposeLateral() || !keys.transposeLateral())
                return false;
            transposed = pass;
        }
        const int count = static_cast<int>(groups.size());
        // Each thread streams whole groups: the threads meet only at the end of the pass.
#pragma omp parallel num_threads(static_cast<int>(streams.size()))
        {
            ScanStream& stream = streams[static_cast<std::size_t>(omp_get_thread_num())];
#pragma omp for schedule(dynamic, 1)
            for (int i = 0; i < count; ++i) {
                if (stop.load(std::memory_order_relaxed)) continue;
                if (!stream.run(*groups[static_cast<std::size_t>(i)], factors, shared, stop)) {
                    stop.store(true);
                    continue;
                }
                const int finished = done.fetch_add(1) + 1;
                // The bar belongs to the calling thread, which is the team's first.
                if (omp_get_thread_num() == 0 && progress.reach(progressStart + finished)) stop.store(true);
            }
        }
        if (stop.load()) {
            failed = true;
            break;
        }
    }
    if (failed || progress.reach(progressStart + static_cast<qint64>(m_plan.groups.size()))) return false;
    return !transposed || keys.transposeLateral();
}

} // namespace fault::attribute
