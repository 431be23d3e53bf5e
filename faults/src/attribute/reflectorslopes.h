#pragma once
#include <zn3dimage.h>

#include "attribute/cellgrid.h"

namespace fault::attribute {

// The slopes of the reflectors of a stack of slices of a seismic volume: at each
// sample, p = dz/dx and q = dz/dy (samples per trace) of the reflector through it, so
// that the attribute can compare neighbouring traces along their layers and dipping
// layers do not read as faults.
//
// The slopes come from the structure tensor, the Gaussian-weighted sum of the outer
// products of the amplitude's gradient: its eigenvector of largest eigenvalue is the
// reflectors' normal u, and p = -u_x / u_z, q = -u_y / u_z (J. Bigun, G. H. Granlund and
// J. Wiklund, "Multidimensional orientation estimation with applications to texture
// analysis and optical flow", IEEE PAMI 13, 1991; D. Hale, "Structure-oriented
// smoothing and semblance", CWP report 635, 2009). Unlike the least-squares slope
// -<f_x f_z> / <f_z f_z>, the eigenvector is not drawn towards flat by noise of no
// particular direction, which adds alike to every diagonal term. Gradients are
// five-point differences (shorter at the volume's ends, see reflectorslopes.cpp); their
// products are summed and smoothed on cells of 2 x 2 x 2 samples (cellgrid.h).
//
// Use: begin() over the slices wanted, accumulate() the seismic in any number of
// pieces that together cover them, finish(), then read slopesAt().
class ReflectorSlopes {
public:
    // Extra slices a piece given to accumulate() needs on either side of the slices it
    // adds, where the volume has them.
    static constexpr int kGradientHalo = 2;

    // Prepares slopes for volume slices [first, end) (first rounded down to even) of a
    // volume nx x ny x nz. False, the slopes empty, when memory runs out or the range is
    // empty.
    bool begin(int nx, int ny, int nz, int first, int end);
    // Adds the gradient products of volume slices [from, to), which must lie in the
    // range begun. `seismic` holds volume slices from `seismicFirst` on, including
    // from - 1 and to where the volume has them.
    void accumulate(const ZN3DImage<float>& seismic, int seismicFirst, int from, int to);
    // Smooths the products with a Gaussian of `sigma` samples and turns them into
    // slopes, each clamped to +-maxSlope (0 where the window sees no vertical variation).
    void finish(double sigma, double maxSlope);

    // The slopes at sample (x, y) of volume slice z, interpolated from the cells; the
    // slice must lie in the range begun.
    void slopesAt(int x, int y, int z, float& p, float& q) const;

    bool isEmpty() const { return m_cells.isEmpty(); }
    void release() { m_cells.release(); }

private:
    // Tensor products; the first two hold dz/dx and dz/dy once finished.
    enum Field { kXZ, kYZ, kZZ, kXX, kYY, kXY, kFields };
    CellGrid m_cells;
};

} // namespace fault::attribute
