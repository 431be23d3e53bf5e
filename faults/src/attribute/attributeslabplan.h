#pragma once
#include "attribute/faultattributesettings.h"
#include "attribute/faultscans.h"

namespace fault::attribute {

// How a volume is cut for the attribute: slabs of `slabSlices` keyed slices, each
// scanned with `scanHalo` slices of semblance factors above and below, whose reflector
// slopes are computed over `slopeHalo` slices more on either side; the seismic is read
// in chunks of `chunkSlices` slices. Memory is counted in slices of nx x ny floats: a
// slab of c keyed slices holds kFloatsPerKeyedSample c + fixedSlices of them at most.
struct AttributeSlabPlan {
    int slabSlices = 0;        // 0: no slab fits
    int scanHalo = 0;
    int slopeHalo = 0;
    int chunkSlices = 0;
    double fixedSlices = 0.0;

    bool isValid() const { return slabSlices > 0; }
    // Bytes a slab of c keyed slices works in, for a volume nx x ny wide.
    double workingBytes(int nx, int ny, int c) const;
};

// Floats held per sample of a slab's keyed slices: semblance numerator and denominator,
// key, the reflector slopes' six cell products (an eighth each) and the no-data mask (a
// bit).
constexpr double kFloatsPerKeyedSample = 3.75 + 1.0 / 32.0;

// Slices finished and written together.
constexpr int kOutputChunkSlices = 8;

// Slabs never get fewer keyed slices than this because of a working-memory cap (the
// halo would cost more than the slab).
constexpr int kMinCappedSlabSlices = 16;

// Plans the slabs of a volume nx x ny x nz: the installed slab planner is asked for the
// most slices its budget allows, with kFloatsPerKeyedSample floats per sample and the
// fixed slices as halo;
// when maxWorkingBytes is positive, the slab is also kept within it, though not below
// max(kMinCappedSlabSlices, 4 scanHalo). Invalid (slabSlices 0) when the planner allows
// no slice or the sizes are not positive.
AttributeSlabPlan planAttributeSlabs(int nx, int ny, int nz, const ScanPlan& scans,
                                     const FaultAttributeSettings& settings,
                                     long long maxWorkingBytes);

} // namespace fault::attribute
