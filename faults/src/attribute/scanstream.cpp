#include "attribute/scanstream.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstring>
#include <limits>
#include <new>

#include "attribute/faultscanner.h"
#include "attribute/linesmoothing.h"
#include "attribute/recursivegaussian.h"
#include "attribute/vectorclones.h"

namespace fault::attribute {
namespace {

constexpr int kBlock = ScanStream::kStepsPerBlock;
// A floor no window sum exceeds: its windows read no data.
constexpr float kNoDataFloor = std::numeric_limits<float>::infinity();

// What a step does on a run of samples of a row.
enum SpanWork { kEnter = 1, kLeave = 2, kKey = 4 };
constexpr int kMostSpans = 7;   // between the 8 ends of the row, its margins and two windows

struct Span {
    int lo, hi;   // samples of the row (negative: in the margin before it)
    int work;     // SpanWork bits
};

// The rows one step of one dip reads and writes, each pointer at the row's sample 0.
struct StepRows {
    float* num;                 // running sums
    float* den;
    const float* enterNum;      // the slice entering the window, moved onto the lines
    const float* enterDen;
    const float* leaveNum;      // the slice leaving it
    const float* leaveDen;
    std::uint32_t* keys;        // the block's keys of this slice
};

// Adds the entering slice, takes the leaving one and keys the samples of [lo, hi), as
// `Work` says. The key: the window's semblance rounded to 16 bits above the scan index,
// kept when smaller than the voxel's.
template <int Work>
inline __attribute__((always_inline)) void advanceSpan(const StepRows& r, int lo, int hi, float floor,
                                                       std::uint32_t scan)
{
    float* __restrict num = r.num;
    float* __restrict den = r.den;
    const float* __restrict en = r.enterNum;
    const float* __restrict ed = r.enterDen;
    const float* __restrict ln = r.leaveNum;
    const float* __restrict ld = r.leaveDen;
    std::uint32_t* __restrict keys = r.keys;
#pragma omp simd
    for (int a = lo; a < hi; ++a) {
        float n = num[a];
        float d = den[a];
        if constexpr ((Work & kEnter) != 0) {
            n += en[a];
            d += ed[a];
        }
        if constexpr ((Work & kLeave) != 0) {
            n -= ln[a];
            d -= ld[a];
        }
        if constexpr ((Work & (kEnter | kLeave)) != 0) {
            num[a] = n;
            den[a] = d;
        }
        if constexpr ((Work & kKey) != 0) {
            const bool data = d > floor;
            float s = n / (data ? d : 1.0F);
            s = data ? s : 1.0F;
            s = s < 0.0F ? 0.0F : (s > 1.0F ? 1.0F : s);
            const auto level = static_cast<std::uint32_t>(static_cast<int>(s * kSemblanceLevels + 0.5F));
            const std::uint32_t key = (level << 16) | scan;
            const std::uint32_t old = keys[a];
            keys[a] = key < old ? key : old;
        }
    }
}

FAULT_VECTOR_CLONES
void advanceSpans(const Span* spans, int count, const StepRows& r, float floor, std::uint32_t scan)
{
    for (int i = 0; i < count; ++i) {
        const Span& s = spans[i];
        switch (s.work) {
        case kEnter: advanceSpan<kEnter>(r, s.lo, s.hi, floor, scan); break;
        case kLeave: advanceSpan<kLeave>(r, s.lo, s.hi, floor, scan); break;
        case kEnter | kLeave: advanceSpan<kEnter | kLeave>(r, s.lo, s.hi, floor, scan); break;
        case kKey: advanceSpan<kKey>(r, s.lo, s.hi, floor, scan); break;
        case kEnter | kKey: advanceSpan<kEnter | kKey>(r, s.lo, s.hi, floor, scan); break;
        case kLeave | kKey: advanceSpan<kLeave | kKey>(r, s.lo, s.hi, floor, scan); break;
        case kEnter | kLeave | kKey: advanceSpan<kEnter | kLeave | kKey>(r, s.lo, s.hi, floor, scan); break;
        default: break;
        }
    }
}

FAULT_VECTOR_CLONES
void keepSmallerKeys(std::uint32_t* __restrict keys, const std::uint32_t* __restrict other, std::size_t n)
{
#pragma omp simd
    for (std::size_t i = 0; i < n; ++i) keys[i] = other[i] < keys[i] ? other[i] : keys[i];
}

// Cuts the samples -margin..na + margin - 1 of a row into the spans of one step: the
// entering slice reaches the lines of a in [-enter, na - enter) when `entering`, the
// leaving slice those of [-leave, na - leave) when `leaving`, keys go to 0..na-1 when
// `keyed`. Returns the number of spans.
int spansOf(int na, int margin, bool entering, int enter, bool leaving, int leave, bool keyed, Span* spans)
{
    const int lo = -margin, hi = na + margin;
    int cuts[8];
    int n = 0;
    auto cut = [&](int at) { cuts[n++] = std::clamp(at, lo, hi); };
    cut(lo);
    cut(hi);
    cut(0);
    cut(na);
    if (entering) {
        cut(-enter);
        cut(na - enter);
    }
    if (leaving) {
        cut(-leave);
        cut(na - leave);
    }
    for (int i = 1; i < n; ++i)   // insertion sort: at most eight cuts
        for (int k = i; k > 0 && cuts[k - 1] > cuts[k]; --k) std::swap(cuts[k - 1], cuts[k]);
    n = static_cast<int>(std::unique(cuts, cuts + n) - cuts);
    int count = 0;
    for (int i = 0; i + 1 < n; ++i) {
        const int p = cuts[i], q = cuts[i + 1];
        const int work = (entering && p >= -enter && q <= na - enter ? kEnter : 0) |
                         (leaving && p >= -leave && q <= na - leave ? kLeave : 0) |
                         (keyed && p >= 0 && q <= na ? kKey : 0);
        if (work != 0) spans[count++] = {p, q, work};
    }
    return count;
}

// Samples beyond either end of a row that the lines of a group's windows move across
// between a slice and the ends of its window.
int windowMargin(const StrikeGroup& group)
{
    int margin = 0;
    for (const DipWindow& w : group.dips)
        margin = std::max(margin, static_cast<int>(std::ceil(std::fabs(w.shift) * (w.halfSteps + 1))) + 1);
    return margin;
}

// Room a row of running sums keeps beyond its window so that the window's base can
// move along it for a few blocks before the row is moved back.
int baseSlack(const StrikeGroup& group)
{
    double steepest = 0.0;
    for (const DipWindow& w : group.dips) steepest = std::max(steepest, std::fabs(w.shift));
    return 4 * kBlock * (static_cast<int>(std::ceil(steepest)) + 1) + 2;
}

struct GroupExtent {
    int halfMin = INT_MAX, halfMax = 0;
    int spread() const { return halfMax - halfMin; }
};
GroupExtent extentOf(const StrikeGroup& group)
{
    GroupExtent e;
    for (const DipWindow& w : group.dips) {
        e.halfMin = std::min(e.halfMin, w.halfSteps);
        e.halfMax = std::max(e.halfMax, w.halfSteps);
    }
    return e;
}

// Strike-smoothed factors of a window of consecutive slices that moves down the slab,
// in a ring of padded slices (linesmoothing.h).
class SmoothedWindow {
public:
    void attach(float* memory, int slots, int na, int nb)
    {
        m_size = PaddedSlice::floats(na, nb);
        m_num = memory;
        m_den = memory + m_size * static_cast<std::size_t>(slots);
        std::fill(m_num, m_num + 2 * m_size * static_cast<std::size_t>(slots), 0.0F);
        m_slots = slots;
        m_na = na;
        m_held.assign(static_cast<std::size_t>(slots), INT_MIN);
    }
    // Smooths the factor slices of [from, to) not held yet (to - from <= slots).
    void prepare(int from, int to, const ScanFactors& f, double shift, const RecursiveGaussian& gaussian)
    {
        for (int k = std::max(from, f.firstSlice); k < std::min(to, f.firstSlice + f.numerator.nz()); ++k) {
            const std::size_t s = slot(k);
            if (m_held[s] == k) continue;
            smoothAlongLinesPadded(f.numerator.slice(k - f.firstSlice), f.denominator.slice(k - f.firstSlice),
                                   m_num + s * m_size, m_den + s * m_size, f.numerator.na(), f.numerator.nb(), shift,
                                   gaussian);
            m_held[s] = k;
        }
    }
    // Row b of slice k, null when the slice lies outside the factors (prepared before).
    const float* numerator(int k, int b) const { return m_held[slot(k)] == k ? row(m_num, k, b) : nullptr; }
    const float* denominator(int k, int b) const { return m_held[slot(k)] == k ? row(m_den, k, b) : nullptr; }

private:
    std::size_t slot(int k) const { return static_cast<std::size_t>(((k % m_slots) + m_slots) % m_slots); }
    const float* row(float* slices, int k, int b) const { return PaddedSlice::row(slices + slot(k) * m_size, m_na, b); }

    float* m_num = nullptr;
    float* m_den = nullptr;
    int m_slots = 1;
    int m_na = 0;
    std::size_t m_size = 0;
    std::vector<int> m_held;   // slice held by each slot
};

// What one step of one dip does to every row of a block.
struct DipStep {
    bool active = false;
    int delta = 0;         // samples the lines moved along a since the step before
    int base = 0;          // where the row's window starts in its storage
    int enterSlice = 0;    // the slices entering and leaving the window
    int leaveSlice = 0;
    bool enters = false;
    bool leaves = false;
    int enterOffset = 0;   // lines' move from this slice to the entering one
    int leaveOffset = 0;
    bool empty = false;    // no slice of the window holds data
    Span spans[kMostSpans];
    int spanCount = 0;
};

} // namespace

void SharedKeys::keepSmaller(int z, const std::uint32_t* slice)
{
    const int k = z - m_first;
    std::lock_guard<std::mutex> lock(m_locks[static_cast<std::size_t>(k)]);
    keepSmallerKeys(m_keys.slice(k), slice, m_keys.sliceSize());
}

bool ScanStream::Buffer::reserve(std::size_t count)
{
    if (count <= size) return true;
    data.reset(new (std::nothrow) float[count]);
    size = data ? count : 0;
    return data != nullptr;
}

double ScanStream::workingSlices(const ScanPlan& plan, int shortestSide)
{
    double most = 0.0;
    const double side = std::max(1, shortestSide);
    for (const StrikeGroup& g : plan.groups) {
        const double padding = (side + 2.0 * PaddedSlice::kColumns) * (side + 2.0 * PaddedSlice::kRows) / (side * side);
        const double rings = 4.0 * (kBlock + extentOf(g).spread()) * padding;
        const double sums = 2.0 * static_cast<double>(g.dips.size()) *
                            (side + 2.0 * windowMargin(g) + baseSlack(g)) / side;
        most = std::max(most, rings + sums + kBlock);
    }
    return most;
}

ScanStream::Sizes ScanStream::sizesOf(const StrikeGroup& group, int na, int nb)
{
    const std::size_t slots = static_cast<std::size_t>(kBlock + extentOf(group).spread());
    const std::size_t pitch = static_cast<std::size_t>(na + 2 * windowMargin(group) + baseSlack(group));
    return {4 * PaddedSlice::floats(na, nb) * slots, 2 * group.dips.size() * static_cast<std::size_t>(nb) * pitch,
            static_cast<std::size_t>(na) * nb * kBlock};
}

bool ScanStream::reserve(const ScanPlan& plan, int nx, int ny)
{
    Sizes most{0, 0, 0};
    for (const StrikeGroup& g : plan.groups) {
        const Sizes s = g.transposed ? sizesOf(g, ny, nx) : sizesOf(g, nx, ny);
        most = {std::max(most.rings, s.rings), std::max(most.sums, s.sums), std::max(most.keys, s.keys)};
    }
    return reserveSizes(most);
}

bool ScanStream::reserveSizes(const Sizes& sizes)
{
    if (!m_rings.reserve(sizes.rings) || !m_sums.reserve(sizes.sums)) return false;
    if (m_blockKeysSize < sizes.keys) {
        m_blockKeys.reset(new (std::nothrow) std::uint32_t[sizes.keys]);
        m_blockKeysSize = m_blockKeys ? sizes.keys : 0;
    }
    return m_blockKeys != nullptr;
}

bool ScanStream::run(const StrikeGroup& group, const ScanFactors& f, SharedKeys& keys,
                     const std::atomic<bool>& stop)
{
    const int na = f.numerator.na(), nb = f.numerator.nb();
    const std::size_t sliceSize = f.numerator.sliceSize();
    const int dips = static_cast<int>(group.dips.size());
    const GroupExtent extent = extentOf(group);
    const int margin = windowMargin(group);
    const int width = na + 2 * margin;
    const int slack = baseSlack(group);
    const std::size_t pitch = static_cast<std::size_t>(width + slack);
    const int slots = kBlock + extent.spread();
    const std::size_t padded = PaddedSlice::floats(na, nb);
    if (!reserveSizes(sizesOf(group, na, nb))) return false;
    std::fill(m_sums.data.get(), m_sums.data.get() + 2 * static_cast<std::size_t>(dips) * nb * pitch, 0.0F);
    SmoothedWindow entering, leaving;
    entering.attach(m_rings.data.get(), slots, na, nb);
    leaving.attach(m_rings.data.get() + 2 * padded * static_cast<std::size_t>(slots), slots, na, nb);
    const RecursiveGaussian gaussian(group.sigmaSteps);

    const int z0 = keys.first(), z1 = keys.end();
    const int zStart = z0 - 2 * extent.halfMax;   // the first slice whose window reaches a keyed slice
    const int lineFirst = zStart - extent.halfMax - 1;
    const int lineSpan = z1 + extent.halfMax - lineFirst;
    std::vector<int> lines(static_cast<std::size_t>(dips) * lineSpan);
    for (int j = 0; j < dips; ++j)
        for (int k = 0; k < lineSpan; ++k)
            lines[static_cast<std::size_t>(j) * lineSpan + k] = lineOffset(lineFirst + k, group.dips[j].shift);
    auto line = [&](int j, int k) { return lines[static_cast<std::size_t>(j) * lineSpan + (k - lineFirst)]; };
    auto sumsRow = [&](int j, int which, int b) {
        return m_sums.data.get() + (static_cast<std::size_t>(2 * j + which) * nb + b) * pitch;
    };
    // The lines of a dip with positive shift move up along a: their window's base moves
    // down its storage, from the far end.
    std::vector<int> base(static_cast<std::size_t>(dips));
    for (int j = 0; j < dips; ++j) base[j] = group.dips[j].shift > 0.0 ? slack : 0;

    std::vector<DipStep> steps(static_cast<std::size_t>(kBlock) * dips);
    for (int z = zStart; z < z1; z += kBlock) {
        if (stop.load(std::memory_order_relaxed)) return false;
        const int zEnd = std::min(z1, z + kBlock);
        for (int j = 0; j < dips; ++j) {
            const int moved = line(j, zEnd - 1) - line(j, z - 1);
            if (base[j] - moved >= 0 && base[j] - moved <= slack) continue;
            const int target = group.dips[j].shift > 0.0 ? slack : 0;
            for (int which = 0; which < 2; ++which)
                for (int b = 0; b < nb; ++b) {
                    float* row = sumsRow(j, which, b);
                    std::memmove(row + target, row + base[j], sizeof(float) * static_cast<std::size_t>(width));
                }
            base[j] = target;
        }
        entering.prepare(z + extent.halfMin, zEnd + extent.halfMax, f, group.shift, gaussian);
        const int firstLeaving = std::max(z, z0 + 1);
        if (firstLeaving < zEnd)
            leaving.prepare(firstLeaving - extent.halfMax - 1, zEnd - extent.halfMin - 1, f, group.shift, gaussian);

        for (int z2 = z; z2 < zEnd; ++z2) {
            const bool keyed = z2 >= z0;
            if (keyed) std::fill_n(m_blockKeys.get() + (z2 - z) * sliceSize, sliceSize, kNoScanKey);
            for (int j = 0; j < dips; ++j) {
                DipStep& s = steps[static_cast<std::size_t>(z2 - z) * dips + j];
                const int half = group.dips[j].halfSteps;
                const int here = line(j, z2);
                s.delta = here - line(j, z2 - 1);
                base[j] -= s.delta;
                s.base = base[j];
                s.active = z2 >= z0 - 2 * half;
                if (!s.active) continue;
                s.enterSlice = z2 + half;
                s.enters = entering.numerator(s.enterSlice, 0) != nullptr;
                s.enterOffset = line(j, s.enterSlice) - here;
                s.leaveSlice = z2 - half - 1;
                s.leaves = z2 > z0 && leaving.numerator(s.leaveSlice, 0) != nullptr;
                s.leaveOffset = s.leaves ? line(j, s.leaveSlice) - here : 0;
                s.spanCount = spansOf(na, margin, s.enters, s.enterOffset, s.leaves, s.leaveOffset, keyed, s.spans);
                s.empty = f.emptyBetween(z2 - half, z2 + half);
            }
        }
        // The running sums of a row stay in cache while it goes through the block.
        for (int b = 0; b < nb; ++b) {
            const std::size_t row = static_cast<std::size_t>(b) * na;
            for (int z2 = z; z2 < zEnd; ++z2)
                for (int j = 0; j < dips; ++j) {
                    const DipStep& s = steps[static_cast<std::size_t>(z2 - z) * dips + j];
                    if (!s.active) continue;
                    float* num = sumsRow(j, 0, b) + s.base + margin;
                    float* den = sumsRow(j, 1, b) + s.base + margin;
                    // Lines coming into the row's reach start empty.
                    if (s.delta > 0) {
                        std::fill_n(num - margin, std::min(s.delta, width), 0.0F);
                        std::fill_n(den - margin, std::min(s.delta, width), 0.0F);
                    } else if (s.delta < 0) {
                        const int n = std::min(-s.delta, width);
                        std::fill_n(num + na + margin - n, n, 0.0F);
                        std::fill_n(den + na + margin - n, n, 0.0F);
                    }
                    const StepRows rows{num,
                                        den,
                                        s.enters ? entering.numerator(s.enterSlice, b) + s.enterOffset : nullptr,
                                        s.enters ? entering.denominator(s.enterSlice, b) + s.enterOffset : nullptr,
                                        s.leaves ? leaving.numerator(s.leaveSlice, b) + s.leaveOffset : nullptr,
                                        s.leaves ? leaving.denominator(s.leaveSlice, b) + s.leaveOffset : nullptr,
                                        m_blockKeys.get() + (z2 - z) * sliceSize + row};
                    // A window whose slices hold no data reads none, and its sums go back to
                    // 0: what float rounding left of the data gone by would otherwise read
                    // as any semblance, a fault where there is nothing (below the data of a
                    // volume padded with zeros).
                    advanceSpans(s.spans, s.spanCount, rows, s.empty ? kNoDataFloor : f.floor,
                                 static_cast<std::uint32_t>(group.dips[j].scan));
                    if (s.empty) {
                        std::fill_n(num - margin, width, 0.0F);
                        std::fill_n(den - margin, width, 0.0F);
                    }
                }
        }
        for (int z2 = std::max(z, z0); z2 < zEnd; ++z2) keys.keepSmaller(z2, m_blockKeys.get() + (z2 - z) * sliceSize);
    }
    return true;
}

} // namespace fault::attribute
