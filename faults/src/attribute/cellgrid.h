#pragma once
#include <vector>

#include "attribute/slabarray.h"

namespace fault::attribute {

// Smooth fields over a stack of slices of a volume, held on cells of 2 x 2 x 2 samples:
// quantities summed into the cells, smoothed there by a wide Gaussian and read back at
// any sample by trilinear interpolation lose nothing a window of several samples keeps,
// at an eighth of the memory and cost. Cells cover the volume's slices (2i, 2i + 1),
// so two grids over the same slices line up whatever piece of the volume they came from.
class CellGrid {
public:
    static constexpr int kCell = 2;   // samples per cell along each axis

    // `fields` fields, zero, over volume slices [first, end) (first rounded down to even)
    // of a volume nx x ny x nz. False, the grid empty, when memory runs out or the range
    // is empty.
    bool allocate(int nx, int ny, int nz, int first, int end, int fields);
    void release();
    bool isEmpty() const { return m_fields.empty(); }

    // The cells of field f; cell (i, j, k) covers samples 2i.., 2j.., first + 2k...
    SlabArray<float>& field(int f) { return m_fields[static_cast<std::size_t>(f)]; }
    const SlabArray<float>& field(int f) const { return m_fields[static_cast<std::size_t>(f)]; }
    // Cell slice of volume slice z.
    int cellSlice(int z) const { return (z - m_first) / kCell; }
    // Volume slices [first, end) of cell slice k, within the volume.
    int firstSliceOf(int k) const { return m_first + k * kCell; }

    // Smooths every field by a Gaussian of `sigma` samples (constant ends).
    void smooth(double sigma);
    // Field f at sample (x, y) of volume slice z, interpolated between cell centres
    // (clamped to the grid's ends).
    float at(int f, int x, int y, int z) const;

private:
    std::vector<SlabArray<float>> m_fields;
    int m_first = 0;   // volume slice of the first cell's first slice
};

} // namespace fault::attribute
