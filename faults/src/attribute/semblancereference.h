#pragma once
#include "attribute/cellgrid.h"
#include "attribute/slabarray.h"

namespace fault::attribute {

// The semblance of the layers around each sample over a wide window of no particular
// orientation: the ratio of the Gaussian-weighted sums of the semblance factors
// (semblancefactors.h). Noise lowers semblance most where the reflections are weak;
// the scan's semblance divided by this reference measures how much a candidate fault
// plane lowers it below what the neighbourhood shows, so that weak or noisy layers
// read as layers and not as faults. Held on cells of 2 x 2 x 2 samples (cellgrid.h).
class SemblanceReference {
public:
    // From the factors of volume slices [first, first + numerator.nz()) of a volume of
    // nz slices, in the untransposed layout (a = x), with a Gaussian of `sigma` samples.
    // False, the reference empty, when memory runs out.
    bool compute(const SlabArray<float>& numerator, const SlabArray<float>& denominator, int first, int nz,
                 double sigma);
    // The reference at sample (x, y) of volume slice z (a slice the factors covered),
    // in [0, 1]; 1 where the window holds no amplitude.
    float at(int x, int y, int z) const;

    // Divides both factors by the smoothed energy of their neighbourhood (the
    // reference's denominator), so that the scan's windows weigh every part of them
    // alike instead of letting the strongest reflections decide their semblance (the
    // energy balance of automatic gain control). Ratios of window sums, and the
    // reference itself, are otherwise unchanged.
    void balance(SlabArray<float>& numerator, SlabArray<float>& denominator, int first) const;

    bool isEmpty() const { return m_cells.isEmpty(); }
    void release() { m_cells.release(); }

private:
    CellGrid m_cells;   // field 0: numerator sums, then the ratio; field 1: denominator sums
};

} // namespace fault::attribute
