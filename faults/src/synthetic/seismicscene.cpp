#include "seismicscene.h"

#include <algorithm>
#include <cmath>

namespace fault::synthetic {
namespace {

// One fault of the built-in seismic scene, positions as fractions of the grid sizes.
struct SceneFault {
    const char* name;
    PlantedFault::Shape shape;
    double cx, cy, cz;          // centre, fractions of nx, ny, nz
    double strike, dip;         // degrees
    double radiusStrike;        // disc radii, fractions of the smallest size
    double radiusDip;
    double throwSamples;
};

constexpr PlantedFault::Shape kPlane = PlantedFault::Shape::Plane;
constexpr PlantedFault::Shape kDisc = PlantedFault::Shape::Disc;

// A and B cross near the middle of the volume (B, later, offsets A); the disc C sits
// in the far corner, at least 20 voxels (on 128^3) from either plane.
const SceneFault kSceneFaults[] = {
    {"planar A", kPlane, 0.32, 0.50, 0.50, 20.0, 70.0, 0.0, 0.0, 4.0},
    {"planar B", kPlane, 0.40, 0.45, 0.50, 125.0, 65.0, 0.0, 0.0, 3.0},
    {"disc C", kDisc, 0.80, 0.72, 0.50, 340.0, 75.0, 0.28, 0.30, 5.0},
};

constexpr double kSlopeX = 0.12;          // samples per inline of the layers' tilt
constexpr double kSlopeY = -0.08;         // samples per crossline
constexpr double kFoldAmplitude = 6.0;    // samples on 128 samples, scaled with nz
constexpr double kReferenceDepth = 128.0;

bool finite(double v) { return std::isfinite(v); }
} // namespace

bool SeismicFault::isValid() const
{
    return geometry.isValid() && finite(throwSamples) && throwSamples > 0.0 &&
           geometry.orientation.dip >= kMinDip;
}

QString SeismicScene::problem() const
{
    if (nx <= 0 || ny <= 0 || nz <= 0)
        return QStringLiteral("grid sizes must be positive (got %1 x %2 x %3)").arg(nx).arg(ny).arg(nz);
    if (!(peakFrequency >= 0.01 && peakFrequency <= 0.25))
        return QStringLiteral("the wavelet's peak frequency must lie in 0.01..0.25 cycles per sample (got %1)")
            .arg(peakFrequency);
    if (!finite(foldAmplitude) || !finite(slopeX) || !finite(slopeY) || !finite(noiseSmoothing))
        return QStringLiteral("folds, slopes and noise smoothing must be finite numbers");
    if (!finite(signalToNoise) || signalToNoise < 0.0)
        return QStringLiteral("the signal-to-noise ratio must be 0 (no noise) or positive (got %1)")
            .arg(signalToNoise);
    if (!(membershipDistance > 0.0) || !finite(membershipDistance))
        return QStringLiteral("the membership distance must be positive (got %1)").arg(membershipDistance);
    for (std::size_t i = 0; i < faults.size(); ++i)
        if (!faults[i].isValid())
            return QStringLiteral("planted fault %1 (\"%2\") has an invalid geometry or throw")
                .arg(i).arg(faults[i].geometry.name);
    return {};
}

SeismicScene defaultSeismicScene(int nx, int ny, int nz, std::uint64_t seed)
{
    SeismicScene scene;
    scene.nx = nx;
    scene.ny = ny;
    scene.nz = nz;
    scene.seed = seed;
    scene.slopeX = kSlopeX;
    scene.slopeY = kSlopeY;
    scene.foldAmplitude = kFoldAmplitude * nz / kReferenceDepth;
    const double smallest = std::min(nx, std::min(ny, nz));
    for (const SceneFault& f : kSceneFaults) {
        SeismicFault fault;
        PlantedFault& g = fault.geometry;
        g.name = QString::fromLatin1(f.name);
        g.shape = f.shape;
        g.centre = {f.cx * nx, f.cy * ny, f.cz * nz};
        g.orientation = {f.strike, f.dip};
        g.radiusAlongStrike = f.radiusStrike * smallest;
        g.radiusAlongDip = f.radiusDip * smallest;
        fault.throwSamples = f.throwSamples;
        scene.faults.push_back(fault);
    }
    return scene;
}

} // namespace fault::synthetic
