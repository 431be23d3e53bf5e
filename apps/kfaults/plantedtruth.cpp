#include "plantedtruth.h"

#include <limits>

#include <core/conventions.h>
#include <synthetic/syntheticvolume.h>

namespace kfaults {

PlantedTruth::PlantedTruth(fault::synthetic::SyntheticVolume& volume)
    : PlantedTruth(volume.faults, volume.plantedIds)
{
}

PlantedTruth::PlantedTruth(std::vector<fault::synthetic::PlantedFault> faults, ZN3DImage<int>& plantedIds)
    : m_faults(std::move(faults)), m_space(plantedIds.blocSpace())
{
    const int* ids = plantedIds.data();
    const std::size_t count = plantedIds.voxelCount();
    constexpr std::uint32_t kLongestRun = std::numeric_limits<std::uint32_t>::max();
    for (std::size_t i = 0; i < count; ++i) {
        if (ids[i] == core::kNoValue) continue;
        const bool extends = !m_runs.empty() && m_runs.back().id == ids[i] &&
                             m_runs.back().start + m_runs.back().length == i &&
                             m_runs.back().length < kLongestRun;
        if (extends) ++m_runs.back().length;
        else m_runs.push_back({i, 1, ids[i]});
    }
    m_runs.shrink_to_fit();
    plantedIds = ZN3DImage<int>();
}

ZN3DImage<int> PlantedTruth::plantedIds() const
{
    ZN3DImage<int> image(m_space, core::kNoValue);
    if (image.isNull()) return image;
    int* ids = image.data();
    for (const Run& run : m_runs)
        for (std::uint32_t k = 0; k < run.length; ++k) ids[run.start + k] = run.id;
    return image;
}

} // namespace kfaults
