#pragma once
#include <vector>

#include <core/vec3.h>

#include "attribute/faultattributesettings.h"

namespace fault::attribute {

// Most orientations one scan may try: a voxel's best one is kept in 16 bits.
constexpr int kMaxScans = 4096;

// One fault orientation tried by the scan, on the grid (x inline, y crossline, z down;
// one sample along every axis counts the same): strike clockwise from +y towards +x, the
// plane dipping down towards strike + 90, as plantedfault.h reads them.
struct FaultScan {
    double strike = 0.0;   // degrees, 0..360
    double dip = 0.0;      // degrees
    core::vec3 normal;     // unit, pointing up (z <= 0)
};

// The window of one scanned orientation down its plane, on a slab whose lateral axes
// are (a, b), a the fastest: a digital line that moves `shift` samples along a for each
// slice down, summed over `halfSteps` slices above and below the voxel.
struct DipWindow {
    int scan = 0;          // index into ScanPlan::scans
    double shift = 0.0;    // samples along a per slice, |shift| <= about 3
    int halfSteps = 1;     // slices above and below
};

// The orientations of one strike. Their planes share the strike line, which moves
// `shift` samples along a for each sample along b; the smoothing along it is a Gaussian
// of `sigmaSteps` samples along b. `transposed`: a is y and b is x (strikes nearer the
// x axis than the y axis); otherwise a is x and b is y. Either way |shift| <= 1.
struct StrikeGroup {
    bool transposed = false;
    double shift = 0.0;
    double sigmaSteps = 0.0;
    std::vector<DipWindow> dips;
};

// Every orientation of a scan, grouped by strike, untransposed groups first.
struct ScanPlan {
    std::vector<FaultScan> scans;
    std::vector<StrikeGroup> groups;
    int maxHalfSteps = 0;  // the largest DipWindow::halfSteps
};

// The orientations the settings ask for: round(360 / strikeStep) strikes from 0, evenly
// spaced, times the dips from minDip to maxDip in round((maxDip - minDip) / dipStep) + 1
// even steps, less the vertical planes whose strike, turned by 180 degrees, is already
// scanned. Settings with a problem give an empty plan.
ScanPlan planScans(const FaultAttributeSettings& settings);

// The number of orientations planScans gives, computed without building them (a huge
// number for absurd steps).
double scanCount(const FaultAttributeSettings& settings);

} // namespace fault::attribute
