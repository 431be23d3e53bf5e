#include "syntheticscene.h"

#include <cmath>

#include "seedednoise.h"

namespace fault::synthetic {
namespace {
// One fault of the built-in scene, positions as fractions of the grid sizes.
struct SceneFault {
    const char* name;
    PlantedFault::Shape shape;
    double cx, cy, cz;          // centre, fractions of nx, ny, nz
    double strike, dip;         // degrees
    double radiusStrike;        // disc radii, fractions of the smallest size
    double radiusDip;
};

constexpr PlantedFault::Shape kPlane = PlantedFault::Shape::Plane;
constexpr PlantedFault::Shape kDisc = PlantedFault::Shape::Disc;

// A and B cross near the middle of the volume; C cuts the far corner, where neither
// reaches; the discs sit in the two other corners.
const SceneFault kSceneFaults[] = {
    {"planar A", kPlane, 0.30, 0.50, 0.50, 15.0, 72.0, 0.0, 0.0},
    {"planar B", kPlane, 0.50, 0.32, 0.50, 105.0, 62.0, 0.0, 0.0},
    {"planar C", kPlane, 0.84, 0.84, 0.50, 320.0, 80.0, 0.0, 0.0},
    {"disc D", kDisc, 0.12, 0.80, 0.70, 230.0, 40.0, 0.10, 0.07},
    {"disc E", kDisc, 0.78, 0.15, 0.30, 60.0, 30.0, 0.12, 0.08},
};

constexpr double kWidth = 0.65;                // voxels, sigma across every fault
constexpr double kAmplitude = 0.95;            // peak likelihood
constexpr double kAmplitudeVariation = 0.3;    // peaks vary over 0.665 .. 0.95
constexpr double kVariationWavelength = 0.4;   // fraction of the smallest size
constexpr std::uint64_t kPhaseStream = 0x5EED;  // keeps phases apart from the noise
} // namespace

QString SyntheticScene::problem() const
{
    if (nx <= 0 || ny <= 0 || nz <= 0)
        return QStringLiteral("grid sizes must be positive (got %1 x %2 x %3)")
            .arg(nx).arg(ny).arg(nz);
    if (!std::isfinite(noiseSigma) || noiseSigma < 0.0)
        return QStringLiteral("noise must be a non-negative number (got %1)").arg(noiseSigma);
    if (!(membershipThreshold > 0.0 && membershipThreshold <= 1.0))
        return QStringLiteral("membership threshold must lie in (0, 1] (got %1)")
            .arg(membershipThreshold);
    for (std::size_t i = 0; i < faults.size(); ++i)
        if (!faults[i].isValid())
            return QStringLiteral("planted fault %1 (\"%2\") has invalid geometry")
                .arg(i).arg(faults[i].name);
    return {};
}

SyntheticScene defaultScene(int nx, int ny, int nz, std::uint64_t seed)
{
    SyntheticScene scene;
    scene.nx = nx;
    scene.ny = ny;
    scene.nz = nz;
    scene.seed = seed;
    const double smallest = std::min(nx, std::min(ny, nz));
    const std::uint64_t phaseSeed = seed ^ kPhaseStream;
    std::uint64_t phaseIndex = 0;
    for (const SceneFault& f : kSceneFaults) {
        PlantedFault fault;
        fault.name = QString::fromLatin1(f.name);
        fault.shape = f.shape;
        fault.centre = {f.cx * nx, f.cy * ny, f.cz * nz};
        fault.orientation = {f.strike, f.dip};
        fault.radiusAlongStrike = f.radiusStrike * smallest;
        fault.radiusAlongDip = f.radiusDip * smallest;
        fault.width = kWidth;
        fault.amplitude = kAmplitude;
        fault.amplitudeVariation = kAmplitudeVariation;
        fault.variationWavelength = kVariationWavelength * smallest;
        fault.variationPhaseStrike = 2.0 * M_PI * seededUniform(phaseSeed, phaseIndex++);
        fault.variationPhaseDip = 2.0 * M_PI * seededUniform(phaseSeed, phaseIndex++);
        scene.faults.push_back(fault);
    }
    return scene;
}

} // namespace fault::synthetic
