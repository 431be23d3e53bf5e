#include "attribute/attributeslabplan.h"

#include <algorithm>
#include <cmath>

#include <core/conventions.h>
#include <znslabplanner.h>

#include "attribute/faultscanner.h"
#include "attribute/reflectorslopes.h"
#include "attribute/semblancefactors.h"

namespace fault::attribute {
namespace {
constexpr int kChunkSlices = 32;   // seismic slices read at once
constexpr int kBytesPerFloat = 4;
constexpr double kCellShare = 0.75;    // six cell products, an eighth of a slice each
} // namespace

double AttributeSlabPlan::workingBytes(int nx, int ny, int c) const
{
    return (kFloatsPerKeyedSample * c + fixedSlices) * nx * ny * kBytesPerFloat;
}

AttributeSlabPlan planAttributeSlabs(int nx, int ny, int nz, const ScanPlan& scans,
                                     const FaultAttributeSettings& settings, long long maxWorkingBytes)
{
    AttributeSlabPlan plan;
    if (nx <= 0 || ny <= 0 || nz <= 0 || scans.groups.empty()) return plan;
    plan.scanHalo = scans.maxHalfSteps;
    plan.slopeHalo = static_cast<int>(std::ceil(3.0 * settings.slopeSigma)) + 2;
    plan.chunkSlices = kChunkSlices;
    const int readHalo = std::max(ReflectorSlopes::kGradientHalo, factorHalo(settings.maxReflectorSlope));
    // Factors of the scan's halo, the cells of the slopes' halo, one chunk of seismic,
    // the scan's ring and sums, the output chunk and the finishing scratch.
    plan.fixedSlices = 2.0 * 2 * plan.scanHalo + kCellShare * (2 * plan.scanHalo + 2 * plan.slopeHalo + 2) +
                       (plan.chunkSlices + 2 * readHalo) + FaultScanner(scans).workingSlices(std::min(nx, ny)) +
                       4.0 * kOutputChunkSlices;
    const int halo = static_cast<int>(std::ceil(plan.fixedSlices / kFloatsPerKeyedSample));
    const core::Triplet planned =
        ZNSlabPlanner::planSlab(nx, ny, nz, kBytesPerFloat, kFloatsPerKeyedSample, halo);
    if (planned.z == core::kNoValue || planned.z <= 0) return plan;
    int slices = planned.z;
    if (maxWorkingBytes > 0) {
        const double sliceBytes = static_cast<double>(nx) * ny * kBytesPerFloat;
        const double capped = (static_cast<double>(maxWorkingBytes) / sliceBytes - plan.fixedSlices) /
                              kFloatsPerKeyedSample;
        const int smallest = std::max(kMinCappedSlabSlices, 4 * plan.scanHalo);
        slices = std::min(slices, std::max(smallest, static_cast<int>(std::floor(capped))));
    }
    plan.slabSlices = std::clamp(slices, 1, nz);
    return plan;
}

} // namespace fault::attribute
