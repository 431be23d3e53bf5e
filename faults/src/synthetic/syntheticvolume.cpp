#include "syntheticvolume.h"

#include <algorithm>

#include <core/conventions.h>
#include <volumeio/gridaxes.h>
#include <zneventbus.h>
#include <znprogressbarmgr.h>

#include "seedednoise.h"

namespace fault::synthetic {
namespace {
constexpr int kProgressSteps = 100;   // bar advances every max(1, nz / 100) slices

// Fills row (y, z) of both images from the prepared faults.
void fillRow(int y, int z, const SyntheticScene& scene,
             const std::vector<PlantedFaultField>& fields, SyntheticVolume& out)
{
    const int faultCount = static_cast<int>(fields.size());
    for (int x = 0; x < scene.nx; ++x) {
        const core::vec3 p(x, y, z);
        double likelihood = 0.0;
        double bestProfile = 0.0;
        int owner = core::kNoValue;
        for (int f = 0; f < faultCount; ++f) {
            const PlantedFaultField::Value v = fields[f].evaluate(p);
            likelihood = std::max(likelihood, v.likelihood);
            if (v.profile >= scene.membershipThreshold && v.profile > bestProfile) {
                bestProfile = v.profile;
                owner = f;
            }
        }
        const std::size_t index = out.likelihood.index(x, y, z);
        const double noisy = likelihood + scene.noiseSigma * seededGaussian(scene.seed, index);
        out.likelihood.data()[index] = static_cast<float>(std::clamp(noisy, 0.0, 1.0));
        out.plantedIds.data()[index] = owner;
    }
}

SyntheticVolume failure(const QString& text)
{
    SyntheticVolume result;
    result.error = text;
    ZNEventBus::sendMessage(ZNEventBus::Error, text);
    return result;
}
} // namespace

georef::BlocSpace syntheticBlocSpace(int nx, int ny, int nz)
{
    return georef::BlocSpace(nx, ny, nz, volumeio::axisAlignedBlocToWorld({1.0, 1.0, 1.0}));
}

SyntheticVolume generateSyntheticVolume(const SyntheticScene& scene)
{
    const QString problem = scene.problem();
    if (!problem.isEmpty()) return failure(QStringLiteral("Invalid synthetic scene: ") + problem);
    const georef::BlocSpace space = syntheticBlocSpace(scene.nx, scene.ny, scene.nz);
    SyntheticVolume out;
    out.likelihood = ZN3DImage<float>(space);
    out.plantedIds = ZN3DImage<int>(space, core::kNoValue);
    if (out.likelihood.isNull() || out.plantedIds.isNull())
        return failure(QStringLiteral("Not enough memory for a synthetic volume of %1 x %2 x %3")
                           .arg(scene.nx).arg(scene.ny).arg(scene.nz));
    out.faults = scene.faults;
    const std::vector<PlantedFaultField> fields(scene.faults.begin(), scene.faults.end());

    const int step = std::max(1, scene.nz / kProgressSteps);
    const int bar = ZNProgressBarMgr::createProgressBar(QStringLiteral("Synthetic volume"),
                                                        (scene.nz + step - 1) / step);
    bool cancelled = false;
    for (int first = 0; first < scene.nz && !cancelled; first += step) {
        const int last = std::min(scene.nz, first + step);
#pragma omp parallel for collapse(2) schedule(dynamic, 4)
        for (int z = first; z < last; ++z)
            for (int y = 0; y < scene.ny; ++y) fillRow(y, z, scene, fields, out);
        ZNProgressBarMgr::incrementProgressBar(bar);
        cancelled = ZNProgressBarMgr::isProgressBarCancelled(bar);
    }
    ZNProgressBarMgr::closeProgressBar(bar);
    if (cancelled) return failure(QStringLiteral("Synthetic volume generation cancelled"));
    return out;
}

} // namespace fault::synthetic
