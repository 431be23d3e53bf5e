#include "faultmatcher.h"

#include <algorithm>
#include <unordered_map>

#include <core/conventions.h>
#include <zneventbus.h>
#include <znfaultpatch.h>

namespace fault::synthetic {
namespace {
// Running totals of one extracted label.
struct LabelTally {
    int label = core::kNoValue;
    long long voxels = 0;
    std::vector<long long> shared;   // voxels on each planted fault
    ZNFaultPatch fit;                // moments of its grid positions
};

// One pass over the voxels: per-label tallies (in order of first appearance) and the
// voxel count of every planted fault.
std::vector<LabelTally> tally(const ZN3DImage<int>& labels, const ZN3DImage<int>& plantedIds,
                              int plantedCount, std::vector<long long>& plantedVoxels)
{
    std::vector<LabelTally> tallies;
    std::unordered_map<int, std::size_t> slotOf;
    for (int z = 0; z < labels.nz(); ++z)
        for (int y = 0; y < labels.ny(); ++y)
            for (int x = 0; x < labels.nx(); ++x) {
                const int id = plantedIds(x, y, z);
                const bool onPlanted = id >= 0 && id < plantedCount;
                if (onPlanted) ++plantedVoxels[id];
                const int label = labels(x, y, z);
                if (label == core::kNoValue) continue;
                auto found = slotOf.find(label);
                if (found == slotOf.end()) {
                    found = slotOf.emplace(label, tallies.size()).first;
                    tallies.emplace_back();
                    tallies.back().label = label;
                    tallies.back().shared.assign(plantedCount, 0);
                }
                LabelTally& t = tallies[found->second];
                ++t.voxels;
                t.fit.addPoint(core::vec3(x, y, z));
                if (onPlanted) ++t.shared[id];
            }
    return tallies;
}

ExtractedFaultMatch extractedMatch(const LabelTally& t, const std::vector<PlantedFault>& planted,
                                   const std::vector<long long>& plantedVoxels,
                                   const georef::BlocSpace& space)
{
    ExtractedFaultMatch m;
    m.label = t.label;
    m.voxelCount = t.voxels;
    const auto best = std::max_element(t.shared.begin(), t.shared.end());
    if (best != t.shared.end() && *best > 0) {
        m.plantedId = static_cast<int>(best - t.shared.begin());
        m.sharedVoxels = *best;
        m.purity = static_cast<double>(*best) / t.voxels;
        m.coverage = static_cast<double>(*best) / plantedVoxels[m.plantedId];
    }
    m.orientation = {core::kNoValueReal, core::kNoValueReal};
    if (t.voxels >= ZNFaultPatch::kMinPointsForCovariance)
        m.orientation = strikeDipOfWorldNormal(gridNormalToWorld(t.fit.getNormal(), space));
    m.error = {core::kNoValueReal, core::kNoValueReal};
    if (m.plantedId != core::kNoValue)
        m.error = orientationError(planted[m.plantedId].orientation, m.orientation);
    return m;
}

PlantedFaultMatch plantedMatch(int id, const std::vector<LabelTally>& tallies,
                               long long voxels, const MatchSettings& settings)
{
    PlantedFaultMatch m;
    m.plantedId = id;
    m.voxelCount = voxels;
    for (const LabelTally& t : tallies) {
        const long long shared = t.shared[id];
        if (shared > m.recoveredVoxels) {
            m.recoveredVoxels = shared;
            m.bestLabel = t.label;
        }
        if (voxels > 0 && shared > 0 &&
            static_cast<double>(shared) >= settings.significantShare * voxels)
            ++m.significantLabels;
    }
    m.recoveredFraction = voxels > 0 ? static_cast<double>(m.recoveredVoxels) / voxels : 0.0;
    return m;
}
} // namespace

FaultMatchReport matchFaults(const ZN3DImage<int>& labels, const ZN3DImage<int>& plantedIds,
                             const std::vector<PlantedFault>& planted,
                             const MatchSettings& settings)
{
    FaultMatchReport report;
    if (labels.nx() != plantedIds.nx() || labels.ny() != plantedIds.ny() ||
        labels.nz() != plantedIds.nz()) {
        report.error = QStringLiteral("Cannot match faults: labels are %1 x %2 x %3 voxels, "
                                      "planted faults %4 x %5 x %6")
                           .arg(labels.nx()).arg(labels.ny()).arg(labels.nz())
                           .arg(plantedIds.nx()).arg(plantedIds.ny()).arg(plantedIds.nz());
        ZNEventBus::sendMessage(ZNEventBus::Error, report.error);
        return report;
    }
    const int plantedCount = static_cast<int>(planted.size());
    std::vector<long long> plantedVoxels(plantedCount, 0);
    std::vector<LabelTally> tallies = tally(labels, plantedIds, plantedCount, plantedVoxels);
    std::sort(tallies.begin(), tallies.end(),
              [](const LabelTally& a, const LabelTally& b) { return a.label < b.label; });
    for (const LabelTally& t : tallies)
        report.extracted.push_back(
            extractedMatch(t, planted, plantedVoxels, plantedIds.blocSpace()));
    for (int id = 0; id < plantedCount; ++id)
        report.planted.push_back(plantedMatch(id, tallies, plantedVoxels[id], settings));
    return report;
}

} // namespace fault::synthetic
