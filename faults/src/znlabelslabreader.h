#pragma once
#include <georef/blocspace.h>
#include <zn3dimage.h>

class ZNBloc;

// A label volume read slab by slab: a 3D image already in memory, or a block file read a
// few z slices at a time. A slice is nx x ny labels, x fastest. The reader does not own
// the image or the block.
class ZNLabelSlabReader {
public:
    // The whole image is one slab. Null or empty images are not usable.
    explicit ZNLabelSlabReader(const ZN3DImage<int>* image);
    // Slabs of `slabDepth` slices (below 1: the installed slab planner's choice for
    // 4-byte samples, at least one slice). A block not open for reading is not usable.
    ZNLabelSlabReader(ZNBloc* bloc, int slabDepth);

    bool isUsable() const;
    int nx() const { return m_space.nx(); }
    int ny() const { return m_space.ny(); }
    int nz() const { return m_space.nz(); }
    const georef::BlocSpace& blocSpace() const { return m_space; }
    // Slices per slab; nz() for an image.
    int slabDepth() const { return m_slabDepth; }

    // Makes slices z0 .. z0 + count - 1 (clamped to the volume) readable. False when the
    // reader is not usable, the range is empty or a read failed.
    bool load(int z0, int count);
    // Slice z of what was loaded; null outside it.
    const int* slice(int z) const;

private:
    const ZN3DImage<int>* m_image = nullptr;
    ZNBloc* m_bloc = nullptr;
    georef::BlocSpace m_space;
    int m_slabDepth = 0;
    ZN3DImage<int> m_slab;      // the block's slices last loaded
    int m_first = 0;            // first slice of m_slab
};
