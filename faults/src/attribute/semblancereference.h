#pragma once
#include "attribute/cellgrid.h"
#include "attribute/slabarray.h"

namespace fault::attribute {

// The semblance of the layers around each sample over a wide window of no particular
// orientation (the ratio of the Gaussian-weighted sums of the semblance factors,
// semblancefactors.h), and with it the balance of the factors that makes the scan's
// semblance relative to the layers each window crosses.
//
// Why: random noise lowers semblance by a share of the energy it adds, so it lowers it
// most along weak reflections. A window of the scan that runs nearly parallel to the
// layers (a candidate fault plane close to the dip of dipping layers) samples few layers,
// and where those are weak its semblance drops as a fault's would. Over the
// neighbourhood, the deficit den - num of the factors estimates the noise's energy
// (the layers' own share of it is small where their slopes are followed). Subtracting it
// from each sample's denominator leaves what the sample's semblance would be without
// noise, so that the window semblance sum(num) / sum(den - deficit) is about 1 in
// unfaulted layers, strong or weak, flat or dipping, and a fault lowers it by what the
// throw takes from the numerator.
//
// Held on cells of 2 x 2 x 2 samples (cellgrid.h).
class SemblanceReference {
public:
    // From the factors of volume slices [first, first + numerator.nz()) of a volume of
    // nz slices, in the untransposed layout (a = x), with a Gaussian of `sigma` samples.
    // False, the reference empty, when memory runs out.
    bool compute(const SlabArray<float>& numerator, const SlabArray<float>& denominator, int first, int nz,
                 double sigma);
    // Divides both factors by the smoothed energy per sample of their neighbourhood
    // (the energy balance of automatic gain control: every part of a window weighs
    // alike instead of the strongest reflections deciding its semblance), then takes
    // the neighbourhood's noise share 1 - at() from each denominator, keeping at least
    // kLeastSignalShare of it (a sample whose energy is all noise would otherwise weigh
    // nothing or less). Samples without amplitude are left at 0.
    void balance(SlabArray<float>& numerator, SlabArray<float>& denominator, int first) const;

    // Smallest share of a sample's balanced energy kept in its denominator.
    static constexpr float kLeastSignalShare = 0.1F;

    bool isEmpty() const { return m_cells.isEmpty(); }
    void release() { m_cells.release(); }

private:
    CellGrid m_cells;   // field 0: numerator sums, then the ratio; field 1: denominator sums
};

} // namespace fault::attribute
