#pragma once
#include <QString>

#include <zn3dimage.h>

class ZNBloc;

namespace fault::segmentation {

// Voxel value of the label images for "no patch".
constexpr int kUnlabelled = -9999;

// Cuts a fault-likelihood volume (larger is more likely on a fault) into small, nearly
// planar, connected patches and labels each accepted patch with its own positive integer.
//
// Seeds are taken in scan order (z slice by slice, then y, then x fastest): a voxel whose
// likelihood is >= likelihoodThreshold and which is still unlabelled seeds a patch grown
// by propagateFaultPatch (growthIterations rings, at most maxPatchSize voxels, growth
// strictly above the threshold). A patch is kept when it has at least maxPatchSize / 3
// voxels (integer division) and its spread across its best-fit plane (planeDeviation) is
// strictly less than maxPlaneDeviation; it then takes the current label, which moves on
// by one. A rejected patch is unlabelled again, so its voxels may seed later patches.
//
// Label budget: at the first acceptance after which the next label exceeds
// maxLabelCount, the scan is limited to the slices that patches seeded so far can still
// reach (growthIterations more), and `sliceCount` says how many slices were scanned.
//
// labelCounter: in, the last label the caller already used (the first label is
// labelCounter + 1); out, the next free label. A following call therefore starts one
// value later and skips one label; kept for compatibility with existing label sets.
//
// Returns a new label image (caller owns it) with the input's size and block space,
// kUnlabelled outside the kept patches. Null when the user cancelled through the "Get
// Fault Patches" progress bar (labelCounter is then still updated, sliceCount set) and
// for a null or unusable input or when memory runs out (outputs then untouched).
// The result is deterministic and independent of the number of threads. While patches
// are rejected, later seeds are grown ahead on the other OpenMP threads (at most 8); each
// thread holds one bit per voxel besides the label image.
ZN3DImage<int>* getFaultPatchLabelImage(ZN3DImage<float>* likelihood, int maxLabelCount,
                                        int& sliceCount, int& labelCounter, int maxPatchSize,
                                        double maxPlaneDeviation, int growthIterations,
                                        double likelihoodThreshold, int progressParent);

// The same segmentation for a volume on disk, slab by slab, from z slice `firstSlice` to
// the end of `likelihood`. Slabs hold the slab planner's cz slices plus 3 more, so that two
// successive slabs share 3 slices; the planner is asked for two bytes per sample with the
// working set of the in-memory segmentation as a factor of it, and the 3 shared slices
// and the segmentation's fixed needs as halo, so that a whole slab's work fits its budget.
// Each slab is segmented in memory (label budget 1000000) with one label counter for the
// whole run, starting at 1 so that the first label is 2.
//
// The labels go to a new block file at `outputPath` (32-bit integer samples) covering
// slices firstSlice onwards; unlabelled voxels hold kUnlabelled. In the 3 slices two
// slabs share, the earlier slab's labels are kept: the later slab writes only the slices
// after them. Labels of one slab are never related to those of the next, so a patch that
// crosses a slab border carries two labels. When a slab's label budget stops its scan,
// the run ends there and the file's depth ends at the last scanned slice.
//
// At most one slab (its likelihood, its labels and the segmentation's masks) is held in
// memory. "k: <first slice>" is sent on the event bus (kind 0) for every slab. Returns
// true when the slabs were processed to the end; false for a null block, a first slice
// outside the block, a slab size that cannot be planned, an output file that cannot be
// created, read or written, or a cancel (a partial file then stays behind, its header
// telling the slices written).
//
// firstSlice: in, the first z slice to process; out, once the output file exists, the
// slice after the last one written, where a following run would resume.
bool getFaultPatchLabelImageLargeFile(ZNBloc* likelihood, const QString& outputPath,
                                      int& firstSlice, int maxPatchSize,
                                      double maxPlaneDeviation, int growthIterations,
                                      double likelihoodThreshold, int progressParent);

} // namespace fault::segmentation
