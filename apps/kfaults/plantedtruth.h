#pragma once
#include <cstdint>
#include <vector>

#include <synthetic/plantedfault.h>
#include <zn3dimage.h>

namespace fault::synthetic {
struct SyntheticVolume;
}

namespace kfaults {

// The truth of the built-in volume kept while an extraction runs: the planted faults,
// and which voxels belong to which of them as runs of consecutive voxels (in the image's
// sample order) instead of one integer per voxel, so that the truth weighs a small part
// of the volume while the segmentation holds the likelihood and its labels.
class PlantedTruth {
public:
    PlantedTruth() = default;
    // Takes the planted faults of `volume` and encodes its planted-id image, which is
    // released (left empty) once encoded; the likelihood is left as it is.
    explicit PlantedTruth(fault::synthetic::SyntheticVolume& volume);
    // The same from planted faults and their id image, which is released once encoded.
    PlantedTruth(std::vector<fault::synthetic::PlantedFault> faults, ZN3DImage<int>& plantedIds);

    const std::vector<fault::synthetic::PlantedFault>& faults() const { return m_faults; }
    // Number of runs held (for tests and sizing).
    std::size_t runCount() const { return m_runs.size(); }
    // The planted-id image decoded, newly allocated: the index of the planted fault of
    // each voxel, -9999 elsewhere, on the original block space. A null image when memory
    // runs out.
    ZN3DImage<int> plantedIds() const;

private:
    struct Run {
        std::uint64_t start = 0;    // sample index of the first voxel
        std::uint32_t length = 0;   // voxels, >= 1
        std::int32_t id = 0;        // planted fault index
    };

    std::vector<fault::synthetic::PlantedFault> m_faults;
    georef::BlocSpace m_space;
    std::vector<Run> m_runs;        // by increasing start, never overlapping
};

} // namespace kfaults
