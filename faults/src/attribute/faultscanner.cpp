#include "attribute/faultscanner.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

#include <znstridedprogress.h>

#include "attribute/linesmoothing.h"
#include "attribute/recursivegaussian.h"
#include "attribute/vectorclones.h"

namespace fault::attribute {
namespace {

// Moves the values of a row `delta` places up (negative: down), zeros coming in.
void shiftRow(float* row, int n, int delta)
{
    if (delta == 0) return;
    const int moved = std::max(0, n - std::abs(delta));
    if (delta > 0) {
        std::memmove(row + (n - moved), row, sizeof(float) * static_cast<std::size_t>(moved));
        std::fill(row, row + (n - moved), 0.0F);
    } else {
        std::memmove(row, row + (n - moved), sizeof(float) * static_cast<std::size_t>(moved));
        std::fill(row + moved, row + n, 0.0F);
    }
}

// sums[a] += sign * source[a + offset] for a in -margin..n + margin - 1 wherever
// a + offset lies in 0..n-1 (`sums` points at index 0 of a row with `margin` entries
// before it and after its n).
FAULT_VECTOR_CLONES
void addShifted(float* sums, const float* source, int offset, int n, int margin, float sign)
{
    const int lo = std::max(-margin, -offset);
    const int hi = std::min(n + margin, n - offset);
    const float* s = source + offset;
#pragma omp simd
    for (int a = lo; a < hi; ++a) sums[a] += sign * s[a];
}

// Keeps, for each voxel of a row, the smaller of its key and the key of this scan.
FAULT_VECTOR_CLONES
void keepSmallerKeys(std::uint32_t* __restrict keys, const float* __restrict num,
                     const float* __restrict den, int n, float floor, std::uint32_t scan)
{
#pragma omp simd
    for (int a = 0; a < n; ++a) {
        const float d = den[a];
        const bool data = d > floor;
        float s = num[a] / (data ? d : 1.0F);
        s = data ? s : 1.0F;
        s = s < 0.0F ? 0.0F : (s > 1.0F ? 1.0F : s);
        const auto level = static_cast<std::uint32_t>(static_cast<int>(s * kSemblanceLevels + 0.5F));
        const std::uint32_t key = (level << 16) | scan;
        const std::uint32_t old = keys[a];
        keys[a] = key < old ? key : old;
    }
}

// Slices one block of the stream advances by.
constexpr int kStepsPerBlock = 16;

// Slots of the ring for windows of `half` slices above and below: a block's slices and
// the windows' reach on either side.
int ringSlots(int half) { return kStepsPerBlock + 2 * half + 2; }

// Samples beyond either end of a row that the lines of a group's windows move across
// between a slice and the ends of its window.
int windowMargin(const StrikeGroup& group)
{
    int margin = 0;
    for (const DipWindow& w : group.dips)
        margin = std::max(margin, static_cast<int>(std::ceil(std::fabs(w.shift) * (w.halfSteps + 1))) + 1);
    return margin;
}

// What one strike group's stream reads and writes.
struct GroupStream {
    const StrikeGroup& group;
    const SlabArray<float>& numerator;
    const SlabArray<float>& denominator;
    int firstSlice;                      // volume slice of the factors' first slice
    SlabArray<std::uint32_t>& keys;
    int firstKeyed;                      // volume slice of the keys' first slice
    float floor;                         // window sums of the denominator below it: no data
};

// The strike-smoothed factors of the slices a window may reach, in a ring of slots.
class SmoothedRing {
public:
    bool allocate(int na, int nb, int slots)
    {
        m_slots = slots;
        if (!m_num.allocate(na, nb, slots) || !m_den.allocate(na, nb, slots) || !m_zero.allocate(na, nb, 1))
            return false;
        std::fill(m_zero.data(), m_zero.data() + m_zero.sliceSize(), 0.0F);
        return true;
    }
    // Smooths volume slice k of the factors into its slot (nothing for slices outside them).
    void fill(const GroupStream& s, const RecursiveGaussian& gaussian, int k)
    {
        const int local = k - s.firstSlice;
        if (local < 0 || local >= s.numerator.nz()) return;
        const std::size_t size = m_num.sliceSize();
        float* n = m_num.slice(slot(k));
        float* d = m_den.slice(slot(k));
        std::copy(s.numerator.slice(local), s.numerator.slice(local) + size, n);
        std::copy(s.denominator.slice(local), s.denominator.slice(local) + size, d);
        smoothAlongLines(n, m_num.na(), m_num.nb(), s.group.shift, gaussian);
        smoothAlongLines(d, m_num.na(), m_num.nb(), s.group.shift, gaussian);
    }
    const float* numerator(const GroupStream& s, int k) const { return inside(s, k) ? m_num.slice(slot(k)) : m_zero.data(); }
    const float* denominator(const GroupStream& s, int k) const { return inside(s, k) ? m_den.slice(slot(k)) : m_zero.data(); }

private:
    static bool inside(const GroupStream& s, int k) { return k >= s.firstSlice && k < s.firstSlice + s.numerator.nz(); }
    int slot(int k) const { return ((k % m_slots) + m_slots) % m_slots; }

    SlabArray<float> m_num, m_den, m_zero;
    int m_slots = 1;
};

// lineOffset of every dip of a group for the volume slices its stream reaches.
class LineTable {
public:
    LineTable(const StrikeGroup& group, int first, int end) : m_first(first), m_span(end - first)
    {
        for (const DipWindow& w : group.dips)
            for (int k = first; k < end; ++k) m_offsets.push_back(lineOffset(k, w.shift));
    }
    int at(std::size_t dip, int k) const { return m_offsets[dip * static_cast<std::size_t>(m_span) + static_cast<std::size_t>(k - m_first)]; }

private:
    int m_first;
    int m_span;
    std::vector<int> m_offsets;
};

// The running window sums of a group: for each dip and row, the sums of the lines that
// pass the row's samples at the current slice, and of the lines `margin` samples beyond
// either end of the row, whose windows reach into the slab above or below although
// they are outside it at the current slice.
class WindowSums {
public:
    bool allocate(int na, int nb, int dips, int margin)
    {
        m_margin = margin;
        m_width = na + 2 * margin;
        if (!m_num.allocate(m_width, nb, dips) || !m_den.allocate(m_width, nb, dips)) return false;
        std::fill(m_num.data(), m_num.data() + m_num.sliceSize() * static_cast<std::size_t>(dips), 0.0F);
        std::fill(m_den.data(), m_den.data() + m_den.sliceSize() * static_cast<std::size_t>(dips), 0.0F);
        return true;
    }
    int margin() const { return m_margin; }
    int width() const { return m_width; }
    // Index 0 of row b of dip j (margin entries before it).
    float* numerator(int j, int b) { return m_num.slice(j) + static_cast<std::size_t>(b) * m_width + m_margin; }
    float* denominator(int j, int b) { return m_den.slice(j) + static_cast<std::size_t>(b) * m_width + m_margin; }

private:
    SlabArray<float> m_num, m_den;
    int m_margin = 0;
    int m_width = 0;
};

// Advances the running window sums of every dip of the group by one slice, for row b
// of volume slice z, and keys that row when z is keyed.
void advanceRow(const GroupStream& s, const SmoothedRing& ring, const LineTable& lines,
                WindowSums& sums, int z, int b)
{
    const int na = s.numerator.na();
    const int margin = sums.margin();
    const std::size_t row = static_cast<std::size_t>(b) * na;
    const int z0 = s.firstKeyed;
    for (std::size_t j = 0; j < s.group.dips.size(); ++j) {
        const DipWindow& w = s.group.dips[j];
        const int half = w.halfSteps;
        if (z < z0 - 2 * half) continue;   // the window has not reached the keyed slices yet
        float* rn = sums.numerator(static_cast<int>(j), b);
        float* rd = sums.denominator(static_cast<int>(j), b);
        const int here = lines.at(j, z);
        const int delta = here - lines.at(j, z - 1);
        shiftRow(rn - margin, sums.width(), delta);
        shiftRow(rd - margin, sums.width(), delta);
        const int enter = z + half;
        addShifted(rn, ring.numerator(s, enter) + row, lines.at(j, enter) - here, na, margin, 1.0F);
        addShifted(rd, ring.denominator(s, enter) + row, lines.at(j, enter) - here, na, margin, 1.0F);
        if (z > z0) {
            const int leave = z - half - 1;
            addShifted(rn, ring.numerator(s, leave) + row, lines.at(j, leave) - here, na, margin, -1.0F);
            addShifted(rd, ring.denominator(s, leave) + row, lines.at(j, leave) - here, na, margin, -1.0F);
        }
        if (z >= z0 && z < z0 + s.keys.nz())
            keepSmallerKeys(s.keys.slice(z - z0) + row, rn, rd, na, s.floor, static_cast<std::uint32_t>(w.scan));
    }
}

// Streams one strike group down the slab, kStepsPerBlock slices at a time: the
// threads first smooth the slices the block's windows reach, then share its rows, each
// row advancing through the whole block, so that they meet twice per block.
bool scanGroup(const GroupStream& s)
{
    int half = 0;
    for (const DipWindow& w : s.group.dips) half = std::max(half, w.halfSteps);
    const int na = s.numerator.na();
    const int nb = s.numerator.nb();
    const int dips = static_cast<int>(s.group.dips.size());
    SmoothedRing ring;
    WindowSums sums;
    if (!ring.allocate(na, nb, ringSlots(half)) || !sums.allocate(na, nb, dips, windowMargin(s.group)))
        return false;
    const RecursiveGaussian gaussian(s.group.sigmaSteps);
    const int z1 = s.firstKeyed + s.keys.nz();
    int z = s.firstKeyed - 2 * half;   // the first slice whose window reaches a keyed slice
    const LineTable lines(s.group, z - half - 1, z1 + half);
    int nextSmoothed = s.firstKeyed - half;
#pragma omp parallel
    while (z < z1) {
        const int blockEnd = std::min(z1, z + kStepsPerBlock);
        const int smoothFrom = nextSmoothed;
        const int smoothTo = blockEnd + half;
#pragma omp for schedule(dynamic, 1)
        for (int k = smoothFrom; k < smoothTo; ++k) ring.fill(s, gaussian, k);
#pragma omp for schedule(dynamic, 4)
        for (int b = 0; b < nb; ++b)
            for (int step = z; step < blockEnd; ++step) advanceRow(s, ring, lines, sums, step, b);
#pragma omp single
        {
            nextSmoothed = smoothTo;
            z = blockEnd;
        }
    }
    return true;
}

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

} // namespace

double FaultScanner::workingSlices() const
{
    std::size_t dips = 0;
    for (const StrikeGroup& g : m_plan.groups) dips = std::max(dips, g.dips.size());
    return 2.0 * ringSlots(m_plan.maxHalfSteps) + 1.0 + 2.0 * static_cast<double>(dips);
}

bool FaultScanner::scan(SlabArray<float>& numerator, SlabArray<float>& denominator, int firstSlice,
                        SlabArray<std::uint32_t>& keys, int firstKeyed, ZNStridedProgress& progress) const
{
    if (numerator.isEmpty() || denominator.isEmpty() || keys.isEmpty()) return false;
    std::fill(keys.data(), keys.data() + keys.sliceSize() * static_cast<std::size_t>(keys.nz()), kNoScanKey);
    const float floor = denominatorFloor(denominator);
    bool transposed = false;
    for (const StrikeGroup& group : m_plan.groups) {
        if (group.transposed != transposed) {
            if (!numerator.transposeLateral() || !denominator.transposeLateral() || !keys.transposeLateral())
                return false;
            transposed = group.transposed;
        }
        if (!scanGroup({group, numerator, denominator, firstSlice, keys, firstKeyed, floor})) return false;
        if (progress.next()) return false;
    }
    return !transposed || keys.transposeLateral();
}

} // namespace fault::attribute
