#pragma once
#include <cstddef>
#include <vector>

#include <georef/blocspace.h>
#include <zn3dimage.h>

class ZNBloc;
class ZNLabelRecordFile;

// A label volume read slab by slab: a 3D image already in memory, a block file or a
// label record file read a few z slices at a time. A slice is nx x ny labels, x fastest;
// voxels outside every label hold a value below 1 (-9999 for a record file). The reader
// does not own the image, the block or the file.
class ZNLabelSlabReader {
public:
    // The whole image is one slab. Null or empty images are not usable.
    explicit ZNLabelSlabReader(const ZN3DImage<int>* image);
    // Slabs of `slabDepth` slices (below 1: the installed slab planner's choice for
    // 4-byte samples, at least one slice). A block not open for reading is not usable.
    ZNLabelSlabReader(ZNBloc* bloc, int slabDepth);
    // Slabs of `slabDepth` slices (at least one) of a finished record file; an unfinished
    // one is not usable.
    ZNLabelSlabReader(ZNLabelRecordFile* records, int slabDepth);

    // Bytes a reader of slabs of `slabDepth` slices of nx x ny labels holds at most, its
    // slab and what it keeps to clear it.
    static double slabBytes(int nx, int ny, int slabDepth);

    bool isUsable() const;
    int nx() const { return m_space.nx(); }
    int ny() const { return m_space.ny(); }
    int nz() const { return m_space.nz(); }
    const georef::BlocSpace& blocSpace() const { return m_space; }
    // Slices per slab; nz() for an image.
    int slabDepth() const { return m_slabDepth; }

    // Makes slices z0 .. z0 + count - 1 (clamped to the volume; at most slabDepth() + 1
    // slices from a block or a record file) readable. False when the reader is not
    // usable, the range is empty or too deep, or a read failed.
    bool load(int z0, int count);
    // Slice z of what was loaded; null outside it.
    const int* slice(int z) const;

private:
    // Makes m_slab hold slabDepth() + 1 slices; false when memory runs out.
    bool allocateSlab();
    bool loadRecords(int first, int last);

    const ZN3DImage<int>* m_image = nullptr;
    ZNBloc* m_bloc = nullptr;
    ZNLabelRecordFile* m_records = nullptr;
    georef::BlocSpace m_space;
    int m_slabDepth = 0;
    ZN3DImage<int> m_slab;      // the slices last loaded from a block or a record file
    int m_first = 0;            // first slice of m_slab
    int m_loaded = 0;           // slices of m_slab loaded
    // Record files: the samples of m_slab set by the last load, so that the next one
    // clears only those; past their cap the whole slab is cleared instead.
    std::vector<std::size_t> m_set;
    bool m_setOverflowed = false;
};
