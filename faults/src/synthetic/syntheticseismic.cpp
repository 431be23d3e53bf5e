#include "syntheticseismic.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include <attribute/recursivegaussian.h>
#include <core/conventions.h>
#include <zneventbus.h>
#include <znstridedprogress.h>

#include "seedednoise.h"
#include "syntheticvolume.h"

namespace fault::synthetic {
namespace {

constexpr std::uint64_t kReflectivityStream = 0x2EF1;   // keeps the streams of one seed apart
constexpr std::uint64_t kNoiseStream = 0x4015E;
constexpr double kDegToRad = M_PI / 180.0;
constexpr double kLayerSpacing = 6.0;     // samples of layer coordinate between boundaries
constexpr double kWaveletPeriods = 1.0;   // wavelet half-length in periods: its envelope
                                          // exp(-(pi f t)^2) is below 1e-4 beyond

// A fold of the layers: a Gaussian bump, positions and radius as fractions of the grid.
struct Fold {
    double cx, cy;
    double height;   // relative to the scene's fold amplitude
    double radius;   // fraction of the smallest lateral size
};
const Fold kFolds[] = {
    {0.25, 0.70, 1.0, 0.22},
    {0.70, 0.30, -0.8, 0.25},
    {0.65, 0.85, 0.6, 0.18},
};

// A planted fault prepared to undo its displacement at many points.
class FaultSlip {
public:
    explicit FaultSlip(const SeismicFault& fault)
        : m_field(fault.geometry), m_fault(fault.geometry),
          m_slip(fault.throwSamples / std::sin(fault.geometry.orientation.dip * kDegToRad))
    {
    }

    // Where the material now at `p` was before this fault moved it.
    core::vec3 undo(const core::vec3& p) const
    {
        if (m_field.signedDistance(p) <= 0.0) return p;   // the footwall stayed
        return p - m_field.dipAxis() * (m_slip * throwShare(p));
    }
    // Distance from `p` to the fault, voxels; infinite outside a disc's rim.
    double distance(const core::vec3& p) const
    {
        if (m_fault.shape == PlantedFault::Shape::Disc && squaredRadius(p) > 1.0)
            return std::numeric_limits<double>::infinity();
        return std::fabs(m_field.signedDistance(p));
    }

private:
    // Elliptical radius of the projection of `p` on a disc: 1 on its rim.
    double squaredRadius(const core::vec3& p) const
    {
        const core::vec3 rel = p - m_fault.centre;
        const double u = rel.dot(m_field.strikeAxis()) / m_fault.radiusAlongStrike;
        const double v = rel.dot(m_field.dipAxis()) / m_fault.radiusAlongDip;
        return u * u + v * v;
    }
    // Share of the full throw at `p`: 1 on a plane, sqrt(1 - r^2) on a disc.
    double throwShare(const core::vec3& p) const
    {
        if (m_fault.shape == PlantedFault::Shape::Plane) return 1.0;
        return std::sqrt(std::max(0.0, 1.0 - squaredRadius(p)));
    }

    PlantedFaultField m_field;
    PlantedFault m_fault;
    double m_slip;   // displacement along the dip axis that gives the throw
};

// Layer coordinate and truth of the scene at every voxel.
class LayerModel {
public:
    explicit LayerModel(const SeismicScene& scene) : m_scene(scene)
    {
        for (const SeismicFault& f : scene.faults) m_slips.emplace_back(f);
    }

    // Layer coordinate u of the material at `p`, faults undone, then folds and tilt.
    double layerCoordinate(core::vec3 p) const
    {
        for (auto it = m_slips.rbegin(); it != m_slips.rend(); ++it) p = it->undo(p);
        return p.z - structure(p);
    }
    // The planted fault `p` belongs to, -9999 for none.
    int plantedId(core::vec3 p) const
    {
        int best = core::kNoValue;
        double bestDistance = m_scene.membershipDistance;
        for (int k = static_cast<int>(m_slips.size()) - 1; k >= 0; --k) {
            const double d = m_slips[static_cast<std::size_t>(k)].distance(p);
            if (d <= bestDistance) {
                bestDistance = d;
                best = k;
            }
            p = m_slips[static_cast<std::size_t>(k)].undo(p);
        }
        return best;
    }

private:
    // Depth of the layers' base surface at `p`: tilt plus folds growing with depth.
    double structure(const core::vec3& p) const
    {
        const SeismicScene& s = m_scene;
        const double lateral = std::min(s.nx, s.ny);
        double folds = 0.0;
        for (const Fold& f : kFolds) {
            const double dx = p.x - f.cx * s.nx;
            const double dy = p.y - f.cy * s.ny;
            const double r = f.radius * lateral;
            folds += f.height * std::exp(-(dx * dx + dy * dy) / (2.0 * r * r));
        }
        const double growth = std::clamp(p.z / s.nz, 0.0, 1.0);
        return s.slopeX * (p.x - 0.5 * s.nx) + s.slopeY * (p.y - 0.5 * s.ny) +
               s.foldAmplitude * growth * folds;
    }

    const SeismicScene& m_scene;
    std::vector<FaultSlip> m_slips;
};

// The Ricker wavelet of peak frequency f (cycles per sample), samples -half..half.
std::vector<float> rickerWavelet(double f, int half)
{
    std::vector<float> w(static_cast<std::size_t>(2 * half + 1));
    for (int k = -half; k <= half; ++k) {
        const double a = M_PI * f * k;
        w[static_cast<std::size_t>(k + half)] = static_cast<float>((1.0 - 2.0 * a * a) * std::exp(-a * a));
    }
    return w;
}

// Reflectivity at layer coordinate u: layer boundaries about every kLayerSpacing
// samples of u (each moved by up to a third of that), each reflecting with a seeded
// sign and a strength of 0.3 to 1, drawn as a spike one sample wide so that a boundary
// between two samples shares its strength between them.
double reflectivity(std::uint64_t seed, double u)
{
    const double nearest = std::floor(u / kLayerSpacing);
    double r = 0.0;
    for (double k = nearest - 1.0; k <= nearest + 2.0; k += 1.0) {
        const auto index = static_cast<std::uint64_t>(static_cast<std::int64_t>(k));
        const double jitter = (seededUniform(seed, 3 * index) - 0.5) * (2.0 / 3.0);
        const double boundary = (k + jitter) * kLayerSpacing;
        const double spike = 1.0 - std::fabs(u - boundary);
        if (spike <= 0.0) continue;
        const double sign = seededUniform(seed, 3 * index + 1) < 0.5 ? -1.0 : 1.0;
        const double strength = 0.3 + 0.7 * seededUniform(seed, 3 * index + 2);
        r += spike * sign * strength;
    }
    return r;
}

// Fills trace (x, y) of the amplitude and planted-id images.
void fillTrace(int x, int y, const SeismicScene& scene, const LayerModel& model,
               const std::vector<float>& wavelet, std::vector<float>& r, SyntheticSeismic& out)
{
    const int half = static_cast<int>(wavelet.size() / 2);
    const std::uint64_t seed = scene.seed ^ kReflectivityStream;
    for (int k = 0; k < scene.nz + 2 * half; ++k)
        r[static_cast<std::size_t>(k)] = static_cast<float>(
            reflectivity(seed, model.layerCoordinate(core::vec3(x, y, k - half))));
    for (int z = 0; z < scene.nz; ++z) {
        float sum = 0.0F;
        for (std::size_t k = 0; k < wavelet.size(); ++k) sum += wavelet[k] * r[static_cast<std::size_t>(z) + k];
        out.amplitude(x, y, z) = sum;
        out.plantedIds(x, y, z) = model.plantedId(core::vec3(x, y, z));
    }
}

// Root mean square of the image, summed slice by slice in a fixed order.
double rootMeanSquare(const ZN3DImage<float>& image)
{
    std::vector<double> sums(static_cast<std::size_t>(image.nz()), 0.0);
#pragma omp parallel for schedule(static)
    for (int z = 0; z < image.nz(); ++z) {
        const float* s = image.slice(z);
        double sum = 0.0;
        for (std::size_t i = 0; i < image.sliceSize(); ++i) sum += static_cast<double>(s[i]) * s[i];
        sums[static_cast<std::size_t>(z)] = sum;
    }
    double total = 0.0;
    for (double s : sums) total += s;
    return image.voxelCount() > 0 ? std::sqrt(total / static_cast<double>(image.voxelCount())) : 0.0;
}

// Adds the scene's noise; false when memory runs out.
bool addNoise(const SeismicScene& scene, ZN3DImage<float>& amplitude)
{
    if (scene.signalToNoise <= 0.0) return true;
    ZN3DImage<float> noise(amplitude.blocSpace());
    if (noise.isNull()) return false;
    const std::uint64_t seed = scene.seed ^ kNoiseStream;
    float* n = noise.data();
    const std::ptrdiff_t count = static_cast<std::ptrdiff_t>(noise.voxelCount());
#pragma omp parallel for schedule(static)
    for (std::ptrdiff_t i = 0; i < count; ++i)
        n[i] = static_cast<float>(seededGaussian(seed, static_cast<std::uint64_t>(i)));
    if (scene.noiseSmoothing >= attribute::RecursiveGaussian::kMinSigma)
        attribute::smoothGaussian3D(noise, scene.noiseSmoothing);
    const double noiseRms = rootMeanSquare(noise);
    const double signalRms = rootMeanSquare(amplitude);
    if (noiseRms <= 0.0) return true;
    const auto scale = static_cast<float>(signalRms / (scene.signalToNoise * noiseRms));
    float* a = amplitude.data();
#pragma omp parallel for schedule(static)
    for (std::ptrdiff_t i = 0; i < count; ++i) a[i] += scale * n[i];
    return true;
}

SyntheticSeismic failure(const QString& text)
{
    SyntheticSeismic result;
    result.error = text;
    ZNEventBus::sendMessage(ZNEventBus::Error, text);
    return result;
}

} // namespace

SyntheticSeismic generateSyntheticSeismic(const SeismicScene& scene)
{
    const QString problem = scene.problem();
    if (!problem.isEmpty()) return failure(QStringLiteral("Invalid seismic scene: ") + problem);
    const georef::BlocSpace space = syntheticBlocSpace(scene.nx, scene.ny, scene.nz);
    SyntheticSeismic out;
    out.amplitude = ZN3DImage<float>(space);
    out.plantedIds = ZN3DImage<int>(space, core::kNoValue);
    if (out.amplitude.isNull() || out.plantedIds.isNull())
        return failure(QStringLiteral("Not enough memory for a synthetic seismic volume of %1 x %2 x %3")
                           .arg(scene.nx).arg(scene.ny).arg(scene.nz));
    for (const SeismicFault& f : scene.faults) {
        out.faults.push_back(f.geometry);
        out.throwSamples.push_back(f.throwSamples);
    }
    const LayerModel model(scene);
    const int half = static_cast<int>(std::ceil(kWaveletPeriods / scene.peakFrequency));
    const std::vector<float> wavelet = rickerWavelet(scene.peakFrequency, half);

    bool cancelled = false;
    {
        ZNStridedProgress progress(QStringLiteral("Synthetic seismic"), scene.ny);
        const int step = static_cast<int>(progress.stride());
        for (int first = 0; first < scene.ny && !cancelled; first += step) {
            const int last = std::min(scene.ny, first + step);
#pragma omp parallel
            {
                std::vector<float> r(static_cast<std::size_t>(scene.nz + 2 * half));
#pragma omp for collapse(2) schedule(dynamic, 16)
                for (int y = first; y < last; ++y)
                    for (int x = 0; x < scene.nx; ++x) fillTrace(x, y, scene, model, wavelet, r, out);
            }
            cancelled = progress.move();
        }
    }
    if (cancelled) return failure(QStringLiteral("Synthetic seismic generation cancelled"));
    if (!addNoise(scene, out.amplitude))
        return failure(QStringLiteral("Not enough memory for the noise of a synthetic seismic volume"));
    return out;
}

} // namespace fault::synthetic
