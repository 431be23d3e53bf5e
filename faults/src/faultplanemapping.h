#pragma once
#include <vector>

#include <core/mat4.h>
#include <img/image.h>

class ZNBloc;

// Mapping a data block (seismic amplitudes, a fault likelihood, any attribute) onto a
// fault unfolded on its plane: every pixel of the fault's projection image is traced back
// into the block along the fault's normal and takes a sample from there. The block is
// read one slice (z) at a time, each slice at most once, so blocks larger than memory can
// be mapped: what is held at once is one slice, the lists of voxels to read, and images
// of the projection's size (see FaultPlaneMappingSettings::listBudgetBytes).
namespace fault {

// How samples become pixels: the data mapping settings of the fault viewer. The defaults
// are the neutral values, with which the mapping is exactly the plain one described at
// mapDataOnFaultPlane; each other value changes one thing.
struct FaultPlaneMappingSettings {
    static constexpr double kNormalStep = 0.7;      // voxels between two offsets along the normal
    static constexpr int kDefaultWindowSize = 3;    // offsets each side: 0, +-0.7, +-1.4, +-2.1
    static constexpr int kMaxWindowSize = 30;       // +-21 voxels
    static constexpr int kMaxInterpolationRadius = 20;   // pixels
    static constexpr double kMaxDeviation = 50.0;        // pixels

    // How the usable samples found for one pixel make its value ("Smooth").
    enum class Combine {
        // The sample of the smallest slice among those whose voxel maps back onto the
        // pixel: the plain rule.
        FirstSample = 0,
        // The mean of the usable samples at the pixel's own offsets: an average across
        // the fault zone, which damps noise and the exact position of the fault.
        Mean = 1,
        // The sample of largest magnitude at the pixel's own offsets (its sign kept): the
        // strongest reflection or the highest likelihood next to the fault.
        MaxAmplitude = 2,
    };

    // "WindowSize": offsets kNormalStep apart on each side of the plane along the normal
    // (0..kMaxWindowSize; 0 samples the plane only).
    int windowSize = kDefaultWindowSize;
    Combine combine = Combine::FirstSample;
    // "Corr Threshold": 0 keeps every pixel. Above 0, a pixel is dropped (left without
    // value) when the samples along its normal window correlate less than this with the
    // mean of its 8 neighbours' windows (Pearson's coefficient over the offsets both
    // have, at least 3): data that does not continue along the fault, such as noise or a
    // window that straddles another fault, is not shown. Pixels with fewer than 3 common
    // offsets are kept. 0..1.
    double correlationThreshold = 0.0;
    // "Interpolation": pixels of the fault still without value after the hole filling
    // are interpolated linearly between the nearest mapped pixels along their row,
    // column and diagonals within this many pixels (0 off; 0..kMaxInterpolationRadius):
    // holes where the data holds no value (dead traces, zero samples) close.
    int interpolationRadius = 0;
    // "Smoothing": a Gaussian smoothing of the mapped image, of standard deviations
    // "Spatial dev (px)" along the strike (image columns) and "Vertical dev (px)" down
    // the dip (rows), normalised over the pixels that hold a value so that the fault's
    // outline and its holes do not darken it. A deviation of 0 leaves that direction.
    bool smoothing = false;
    double spatialDeviation = 1.0;
    double verticalDeviation = 1.0;

    // Not a viewer setting: the most bytes the voxel lists may hold at once. When the
    // lists of every slice would take more, they are made for one range of slices after
    // another (one more sweep over the fault's pixels per range); each slice is still read
    // once. A slice's list is always made whole.
    long long listBudgetBytes = kDefaultListBudgetBytes;
    static constexpr long long kDefaultListBudgetBytes = 64LL * 1024 * 1024;

    // Every value within its range (the viewer refuses others).
    bool isValid() const;
    // True with the neutral values: the plain mapping.
    bool isNeutral() const;
};

// What one mapping did, for the caller's checks and the benchmark.
struct FaultPlaneMappingStats {
    std::vector<int> slicesRead;    // in reading order
    long long voxelsListed = 0;     // entries of the slices' voxel lists
    long long listBytes = 0;        // the most bytes the lists (and their companions) held at once
    int listSweeps = 0;             // ranges of slices the lists were made for
    long long sliceBytes = 0;       // one slice as read
    long long imageBytes = 0;       // the per-pixel images the settings needed
    int pixelsMapped = 0;           // pixels of the fault holding a value at the end
    bool correlationSkipped = false;  // the windows would take more than 512 MiB: not checked
};

enum class FaultPlaneMappingResult { Done, Cancelled, Failed };

// Maps `data` onto the fault of `projected` (width x height; a pixel belongs to the fault
// when it is not -9999) into `mapped`, which becomes an image of the same size.
// `imageToWorld` takes an image position (column, row, offset along the third axis) to
// world coordinates; its third column is the fault's normal, of any length: it is
// rescaled so that one unit along it is one voxel of `data` (the length of the normal
// in `data`'s block indices), so offsets are counted in the data's voxels.
//
// The plain mapping (neutral settings):
//  1. `mapped` is filled with -9999.0.
//  2. For each pixel (c, r) of the fault, row by row, and each offset 0, +-0.7, +-1.4,
//     +-2.1 (step s from 0 to 3: 0 for s = 0, else +0.7 s and -0.7 s), (c, r, offset) is
//     taken to the data's block indices, divided by the homogeneous coordinate, each index
//     rounded half away from zero; a voxel inside the block joins the list of its slice k
//     (lists sized in multiples of 1000 entries), once per pixel: two offsets that round
//     to one voxel would give the pixel the same sample twice.
//  3. A progress bar "Map data on fault plane" of nz steps advances by 10 every 10
//     slices. Slices whose list is not empty are read in increasing k, each once. A
//     listed voxel's sample equal to 0.0, -9999 or NaN is skipped (zero counts as no data,
//     deliberately); otherwise the voxel is taken back to the image, rounded, and a pixel
//     inside the image still holding -9999.0 takes the sample: the first sample wins,
//     the one of the smallest slice.
//  4. The holes left between samples are filled by img::fillHoles(mapped, 10, 3,
//     HolesOnly): a pixel with at least 3 valued neighbours on both sides takes their
//     mean, over up to 10 passes; then every pixel outside the fault is reset to -9999.0,
//     so the outline stays the projection's.
// The other settings act in this order: Combine (in step 3), Corr Threshold (after step
// 4, so that the pixels it drops stay without value), Interpolation, Smoothing.
//
// Pixels mapping outside the data stay -9999.0. Done also when nothing could be mapped.
// Cancelled (through the bar) and Failed (a slice could not be read, memory ran out)
// leave `mapped` untouched. `progressParent` nests the bar; -2 shows none. `stats` may
// be null.
FaultPlaneMappingResult mapDataOnFaultPlane(const img::Image& projected, const core::mat4& imageToWorld,
                                            ZNBloc& data, const FaultPlaneMappingSettings& settings,
                                            img::Image& mapped, int progressParent,
                                            FaultPlaneMappingStats* stats = nullptr);

// The matrix from image positions (column, row, offset) to the data's block indices used
// above: `imageToWorld` with its third column rescaled to one voxel of the data's grid
// (`worldToData` takes world coordinates to its block indices), then taken into that
// grid. False, `out` untouched, when the normal has no length in the data's grid or the
// result is singular.
bool faultImageToBlocMatrix(const core::mat4& imageToWorld, const core::mat4& worldToData, core::mat4& out);

} // namespace fault
