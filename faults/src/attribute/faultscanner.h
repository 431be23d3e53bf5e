#pragma once
#include <cstdint>

#include "attribute/faultscans.h"
#include "attribute/slabarray.h"

class ZNStridedProgress;

namespace fault::attribute {

// The best orientation of a voxel as one 32-bit key: its smallest semblance, rounded to
// 16 bits, above the index of the scan that gave it, so that the smaller key is the
// more fault-like orientation. kNoScanKey: no scan reached the voxel.
constexpr std::uint32_t kNoScanKey = 0xFFFFFFFFu;
constexpr float kSemblanceLevels = 65535.0F;
inline float keySemblance(std::uint32_t key) { return static_cast<float>(key >> 16) / kSemblanceLevels; }
inline int keyScan(std::uint32_t key) { return static_cast<int>(key & 0xFFFFu); }

// The scan over fault orientations of one slab (D. Hale, "Methods to compute fault
// images, extract fault surfaces, and estimate fault throws from 3D seismic images",
// Geophysics 78(2), 2013, with windows of our own that make it cheap). For each
// orientation of the plan, the semblance factors are summed over a window lying in the
// candidate plane: a Gaussian along its strike (recursive, the same for every dip of
// that strike, so computed once per strike) times a box down the plane (running sums
// along digital lines, so each further slice costs one add and one subtract whatever
// the window's length). Every voxel keeps the orientation of smallest semblance.
//
// Each OpenMP thread streams whole strike groups down the slab (scanstream.h), so that
// the threads meet only when the layout turns; they fold their keys into the slab's a
// slice at a time.
class FaultScanner {
public:
    explicit FaultScanner(const ScanPlan& plan) : m_plan(plan) {}

    // Slices of factors the scan reads above and below the slices it keys.
    int haloSlices() const { return m_plan.maxHalfSteps; }

    // Keys slices [firstKeyed, firstKeyed + keys.nz()) of the volume. `numerator` and
    // `denominator` (see semblancefactors.h) hold the slab's slices from `firstSlice`
    // on, in the untransposed layout (a = x); the factors beyond them count as 0. Both
    // factor arrays and the keys are turned (transposeLateral) for the strikes nearer x
    // and back. The keys are overwritten. Counts one item of `progress` per strike and returns
    // false when it is cancelled or memory runs out (keys then unusable). The factors are
    // left in either layout: the caller has no further use for them.
    bool scan(SlabArray<float>& numerator, SlabArray<float>& denominator, int firstSlice,
              SlabArray<std::uint32_t>& keys, int firstKeyed, ZNStridedProgress& progress) const;

    // Slices of nx x ny floats a scan holds besides the factors and the keys, on a
    // volume whose lateral sides are at least `shortestSide` samples.
    double workingSlices(int shortestSide) const;
    // Groups streamed at once: one per OpenMP thread, at most the groups of one layout.
    int streamCount() const;

    // Items of progress one scan() counts.
    int progressSteps() const { return static_cast<int>(m_plan.groups.size()); }

private:
    const ScanPlan& m_plan;
};

} // namespace fault::attribute
