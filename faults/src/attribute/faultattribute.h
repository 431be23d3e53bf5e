#pragma once
#include <QString>

#include <georef/blocspace.h>
#include <georef/unitobject.h>
#include <zn3dimage.h>

#include "attribute/faultattributesettings.h"
#include "attribute/seismicslices.h"

class ZNBloc;

// The fault-likelihood attribute of a 3D seismic amplitude volume: at every voxel, how
// likely a fault passes there (0..1) and the strike and dip of that fault.
//
// Method (references in the files that implement each step):
// 1. reflector slopes from the structure tensor of the amplitude (reflectorslopes.h), so that the comparison of neighbouring traces follows their
//    layers and dipping or folded layers stay coherent;
// 2. the numerator and denominator of semblance over 5 x 5 traces along those layers
//    (semblancefactors.h), balanced by the energy of their neighbourhood, the
//    denominator less the noise's share of it (semblancereference.h), so that the
//    semblance of any window is relative to the layers it crosses;
// 3. a scan over fault strikes and dips that sums both over a window lying in each
//    candidate fault plane and keeps, at each voxel, the plane of smallest semblance s
//    (faultscanner.h);
// 4. likelihood = 1 - s^p, thinned to its ridge across the fault, with that plane's
//    strike and dip (faultattributefinisher.h).
// Where the seismic holds no data (a zero sample between zero samples above and below:
// padding beyond a survey's outline or below its record, dead traces) the likelihood is
// 0, with no strike or dip (nodatamask.h), and the semblance of the live traces beside
// them counts the live traces only (semblancefactors.h).
//
// The volume is processed slab by slab (stacks of z slices, as ZNSlabPlanner plans them)
// with the halo the windows need, so that a volume larger than memory can be read from
// a block file and written to block files. Slabs change the result only near their
// borders, where the wide windows of the slopes and of the noise's share are cut (a few
// voxels in a thousand by more than 0.05 with slabs of a few slices). The work runs on the OpenMP threads, reports progress on a bar
// titled "Fault likelihood" (one bar, moved about a hundred times) and stops when that
// bar is cancelled.
namespace fault::attribute {

// Where the attribute goes: slices in increasing order, each exactly once.
class AttributeSlices {
public:
    virtual ~AttributeSlices() = default;
    // False when only the likelihood is wanted (strike and dip are then not computed).
    virtual bool wantsOrientation() const = 0;
    // Slices [z, z + likelihood.nz()) of the likelihood, and of the strike and dip in
    // world degrees (-9999 where no scan reached; empty images when not wanted); false
    // stops the run.
    virtual bool write(int z, const ZN3DImage<float>& likelihood, const ZN3DImage<float>& strike,
                       const ZN3DImage<float>& dip) = 0;
};

// Computes the attribute of `seismic` into `out`. The working memory, besides what the
// source and the sink hold, stays within the installed slab planner's budget and, when
// maxWorkingBytes is positive, within that many bytes too (but never below what a slab
// of 16 slices needs). Empty on success; otherwise a one-line reason (settings with a
// problem, a volume or budget too small for one slab, a read or a write that failed,
// memory running out, "cancelled"), also sent on the event bus (kind 1) unless
// cancelled.
QString computeFaultAttribute(SeismicSlices& seismic, AttributeSlices& out,
                              const FaultAttributeSettings& settings, int progressParent,
                              long long maxWorkingBytes = 0);

// The attribute of a volume held in memory.
struct FaultAttributeVolumes {
    ZN3DImage<float> likelihood;   // 0..1, on the seismic's block space
    ZN3DImage<float> strike;       // world degrees; empty unless asked for
    ZN3DImage<float> dip;          // world degrees; empty unless asked for
    QString error;                 // empty on success

    bool ok() const { return error.isEmpty(); }
};

// Working memory of computeFaultAttribute for a volume in memory, as a share of the
// volume's size, unless slabs that small would be thinner than four halos (then they
// get four halos' worth of slices, about 1.9 volumes on 256^3 with the default settings:
// 3.9 volumes in all with the seismic and the likelihood; 2 more with the strike and
// dip).
constexpr double kInMemoryWorkingShare = 1.5;

// The attribute of `seismic`, with the strike and dip when withOrientation is set.
// Failures as above, with empty images.
FaultAttributeVolumes computeFaultAttribute(const ZN3DImage<float>& seismic,
                                            const FaultAttributeSettings& settings,
                                            bool withOrientation, int progressParent);

// Block files the attribute is written to; an empty path is not written (the
// likelihood's must be given).
struct FaultAttributeFiles {
    QString likelihood;
    QString strike;
    QString dip;
};

// The attribute of `seismic` written slab by slab to new block files of float samples
// on the seismic's block space with `units` (each through a temporary file that
// replaces its target only when complete, so a failure leaves the targets as they
// were). Besides what the source holds, only one slab is in memory at a time, within the
// slab planner's budget. Empty on success; otherwise a one-line reason as above.
QString computeFaultAttributeFiles(SeismicSlices& seismic, const FaultAttributeFiles& files,
                                   const georef::UnitObject& units,
                                   const FaultAttributeSettings& settings, int progressParent);

} // namespace fault::attribute
