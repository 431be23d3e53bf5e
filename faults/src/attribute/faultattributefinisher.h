#pragma once
#include <cstdint>
#include <vector>

#include <georef/blocspace.h>

#include "attribute/faultattributesettings.h"
#include "attribute/faultscans.h"

namespace fault::attribute {

// Turns the scan's keys (see faultscanner.h) into the attribute's outputs, one slice at
// a time: the likelihood 1 - s^p of the smallest semblance s of the scan, relative to
// the layers its window crosses (semblancereference.h), thinned to its ridge across the
// fault when the settings ask for it; the strike and dip of the
// orientation that gave it, in world degrees (strikedip.h) through the volume's block
// space.
//
// Thinning smooths the likelihood of the slice slightly (a Gaussian of one sample),
// then keeps a voxel whose likelihood is not below that of its neighbours up to three
// samples away on either side along its fault's horizontal normal (bilinear reads,
// strictly above on one side so that a flat top of two voxels keeps one) and sets the
// others to 0, as well as the voxels whose neighbours fall outside the slice: a ridge
// cannot be told from the volume's side there (J. Canny, "A computational approach to edge detection", IEEE PAMI 8,
// 1986, for the non-maximum suppression; Hale 2013 for its use on fault images).
//
// Near the sides, top and bottom of the volume the windows of the scan are cut short,
// so their semblance rests on fewer samples and its smallest value over all
// orientations runs lower than elsewhere by chance alone: the likelihood is scaled down
// linearly towards the volume's faces over the windows' reach (2 strikeSigma laterally,
// dipHalfLength vertically, but no more than a quarter of the volume's size), so that
// shortened windows do not outvote whole ones.
class FaultAttributeFinisher {
public:
    FaultAttributeFinisher(const ScanPlan& plan, const FaultAttributeSettings& settings,
                           const georef::BlocSpace& space);

    // The keys of volume slice z (nx x ny, x fastest) into `likelihood`, and into
    // `strike` and `dip` when they are not null (-9999 where no scan reached).
    // `scratch` holds nx x ny floats.
    void finish(const std::uint32_t* keys, int nx, int ny, int z, float* likelihood, float* strike,
                float* dip, float* scratch) const;

private:
    std::vector<float> m_strike;     // world strike of each scan, degrees
    std::vector<float> m_dip;        // world dip of each scan, degrees
    std::vector<float> m_normalX;    // horizontal unit normal of each scan on the grid
    std::vector<float> m_normalY;
    double m_power;
    bool m_thin;
    int m_nz;                        // slices of the volume
    double m_lateralReach;           // samples from a side over which windows are cut short
    double m_verticalReach;          // slices from the top or bottom, likewise
};

} // namespace fault::attribute
