#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <memory>
#include <set>

#include <omp.h>

#include <synthetic/seedednoise.h>
#include <synthetic/syntheticvolume.h>
#include <znfaultpatch.h>

#include "testservices.h"

using core::vec3;
using namespace fault::synthetic;

namespace {
// The built-in scene is generated once and shared by the tests that only read it.
class DefaultVolume : public testing::Test {
protected:
    static void SetUpTestSuite()
    {
        volume = new SyntheticVolume(generateSyntheticVolume(defaultScene()));
    }
    static void TearDownTestSuite() { delete volume; volume = nullptr; }
    static SyntheticVolume* volume;
};
SyntheticVolume* DefaultVolume::volume = nullptr;

// Largest distance from a voxel belonging to a fault of width w to the fault, for the
// membership threshold t: w * sqrt(2 ln(1 / t)).
double membershipReach(const PlantedFault& f, double threshold)
{
    return f.width * std::sqrt(2.0 * std::log(1.0 / threshold));
}

bool sameBytes(const SyntheticVolume& a, const SyntheticVolume& b)
{
    const std::size_t n = a.likelihood.voxelCount();
    return n == b.likelihood.voxelCount() &&
           std::memcmp(a.likelihood.data(), b.likelihood.data(), n * sizeof(float)) == 0 &&
           std::memcmp(a.plantedIds.data(), b.plantedIds.data(), n * sizeof(int)) == 0;
}
} // namespace

TEST_F(DefaultVolume, HoldsThreePlanesAndTwoDiscsOfDistinctStrikes)
{
    ASSERT_TRUE(volume->ok()) << volume->error.toStdString();
    ASSERT_EQ(volume->faults.size(), 5u);
    int planes = 0;
    std::set<double> strikes;
    for (const PlantedFault& f : volume->faults) {
        planes += f.shape == PlantedFault::Shape::Plane;
        strikes.insert(f.orientation.strike);
    }
    EXPECT_EQ(planes, 3);
    EXPECT_EQ(strikes.size(), 5u);
    EXPECT_EQ(volume->likelihood.nx(), 128);
    EXPECT_EQ(volume->likelihood.blocSpace(), syntheticBlocSpace(128, 128, 128));
    EXPECT_EQ(volume->plantedIds.blocSpace(), volume->likelihood.blocSpace());
}

TEST_F(DefaultVolume, LikelihoodStaysInUnitRangeAndAboutTwoPercentExceedsAHalf)
{
    long long above = 0;
    const float* v = volume->likelihood.data();
    for (std::size_t i = 0; i < volume->likelihood.voxelCount(); ++i) {
        ASSERT_GE(v[i], 0.0f);
        ASSERT_LE(v[i], 1.0f);
        above += v[i] > 0.5f;
    }
    const double fraction = double(above) / volume->likelihood.voxelCount();
    EXPECT_GT(fraction, 0.01);
    EXPECT_LT(fraction, 0.03);
}

TEST_F(DefaultVolume, PlantedVoxelsLieOnTheirFaultAndAreLikely)
{
    const SyntheticScene scene = defaultScene();
    std::vector<PlantedFaultField> fields(scene.faults.begin(), scene.faults.end());
    std::vector<long long> counts(fields.size(), 0);
    for (int z = 0; z < 128; ++z)
        for (int y = 0; y < 128; ++y)
            for (int x = 0; x < 128; ++x) {
                const int id = volume->plantedIds(x, y, z);
                if (id == -9999) continue;
                ASSERT_GE(id, 0);
                ASSERT_LT(id, 5);
                ++counts[id];
                const PlantedFault& f = scene.faults[id];
                const double reach = membershipReach(f, scene.membershipThreshold);
                ASSERT_LE(std::fabs(fields[id].signedDistance(vec3(x, y, z))), reach + 1e-9);
                // Lowest peak times the threshold, less the noise's bound.
                const double lowest = f.amplitude * (1 - f.amplitudeVariation) * 0.5 -
                                      3.47 * scene.noiseSigma;
                ASSERT_GE(volume->likelihood(x, y, z), lowest);
            }
    for (long long c : counts) EXPECT_GT(c, 300);
}

TEST_F(DefaultVolume, DiscVoxelsStayInsideTheirEllipse)
{
    const SyntheticScene scene = defaultScene();
    for (int id = 0; id < 5; ++id) {
        const PlantedFault& f = scene.faults[id];
        if (f.shape != PlantedFault::Shape::Disc) continue;
        const PlantedFaultField field(f);
        const double reach = membershipReach(f, scene.membershipThreshold);
        double farthest = 0.0;   // largest ellipse radius seen, 1 on the rim
        for (std::size_t i = 0; i < volume->plantedIds.voxelCount(); ++i) {
            if (volume->plantedIds.data()[i] != id) continue;
            const int x = int(i % 128), y = int(i / 128 % 128), z = int(i / (128 * 128));
            const vec3 rel = vec3(x, y, z) - f.centre;
            const double u = rel.dot(field.strikeAxis()) / (f.radiusAlongStrike + reach);
            const double v = rel.dot(field.dipAxis()) / (f.radiusAlongDip + reach);
            farthest = std::max(farthest, std::sqrt(u * u + v * v));
        }
        EXPECT_LE(farthest, 1.0) << f.name.toStdString();
        EXPECT_GT(farthest, 0.8) << f.name.toStdString();
    }
}

TEST_F(DefaultVolume, PlaneFitsOfPlantedVoxelsGiveBackStrikeAndDip)
{
    std::vector<ZNFaultPatch> fits(volume->faults.size());
    for (int z = 0; z < 128; ++z)
        for (int y = 0; y < 128; ++y)
            for (int x = 0; x < 128; ++x) {
                const int id = volume->plantedIds(x, y, z);
                if (id >= 0) fits[id].addPoint(vec3(x, y, z));
            }
    for (std::size_t id = 0; id < fits.size(); ++id) {
        const PlantedFault& f = volume->faults[id];
        const vec3 world = gridNormalToWorld(fits[id].getNormal(), volume->plantedIds.blocSpace());
        const OrientationError e = orientationError(f.orientation, strikeDipOfWorldNormal(world));
        const double tolerance = f.shape == PlantedFault::Shape::Plane ? 1.0 : 3.0;
        EXPECT_LT(e.strike, tolerance) << f.name.toStdString();
        EXPECT_LT(e.dip, tolerance) << f.name.toStdString();
    }
}

TEST_F(DefaultVolume, OnlyTheFirstTwoPlanesTouch)
{
    // Pairs of planted faults whose voxels are 26-neighbours somewhere.
    std::set<std::pair<int, int>> touching;
    const auto& ids = volume->plantedIds;
    for (int z = 0; z < 128; ++z)
        for (int y = 0; y < 128; ++y)
            for (int x = 0; x < 128; ++x) {
                const int a = ids(x, y, z);
                if (a < 0) continue;
                for (int dz = -1; dz <= 1; ++dz)
                    for (int dy = -1; dy <= 1; ++dy)
                        for (int dx = -1; dx <= 1; ++dx) {
                            const int b = ids.value(x + dx, y + dy, z + dz, -9999);
                            if (b > a) touching.insert({a, b});
                        }
            }
    EXPECT_EQ(touching, (std::set<std::pair<int, int>>{{0, 1}}));
}

TEST(SyntheticVolume, TheSameSceneGivesTheSameBytesForAnyThreadCount)
{
    const SyntheticScene scene = defaultScene(40, 36, 32, 7);
    const int threads = omp_get_max_threads();
    omp_set_num_threads(1);
    const SyntheticVolume serial = generateSyntheticVolume(scene);
    omp_set_num_threads(std::max(2, threads));
    const SyntheticVolume parallel = generateSyntheticVolume(scene);
    omp_set_num_threads(threads);
    EXPECT_TRUE(sameBytes(serial, parallel));
}

TEST(SyntheticVolume, AnotherSeedChangesTheNoiseButNotThePlantedFaults)
{
    const SyntheticVolume a = generateSyntheticVolume(defaultScene(40, 36, 32, 7));
    SyntheticScene other = defaultScene(40, 36, 32, 7);
    other.seed = 8;
    const SyntheticVolume b = generateSyntheticVolume(other);
    EXPECT_FALSE(sameBytes(a, b));
    EXPECT_EQ(std::memcmp(a.plantedIds.data(), b.plantedIds.data(),
                          a.plantedIds.voxelCount() * sizeof(int)), 0);
    // The default scene's seed also moves each fault's amplitude variation.
    EXPECT_NE(defaultScene(40, 36, 32, 7).faults[0].variationPhaseStrike,
              defaultScene(40, 36, 32, 8).faults[0].variationPhaseStrike);
}

TEST(SyntheticVolume, NoiselessFlatFaultHasItsGaussianProfile)
{
    SyntheticScene scene;
    scene.nx = scene.ny = 8;
    scene.nz = 21;
    scene.noiseSigma = 0.0;
    PlantedFault flat;
    flat.centre = {4, 4, 10};
    flat.orientation = {0.0, 0.0};
    flat.width = 2.0;
    flat.amplitude = 0.8;
    scene.faults.push_back(flat);
    const SyntheticVolume v = generateSyntheticVolume(scene);
    ASSERT_TRUE(v.ok());
    for (int z = 0; z < 21; ++z) {
        const double d = z - 10.0;
        const double expected = d * d > -8.0 * std::log(1e-4) ? 0.0 : 0.8 * std::exp(-d * d / 8.0);
        EXPECT_NEAR(v.likelihood(3, 5, z), expected, 1e-6) << z;
        // Within 2 sqrt(2 ln 2) = 2.35 voxels the profile reaches one half.
        EXPECT_EQ(v.plantedIds(3, 5, z), std::fabs(d) <= 2.35 ? 0 : -9999) << z;
    }
}

TEST(SyntheticVolume, InvalidScenesAreRefusedWithAMessage)
{
    SyntheticScene sizes = defaultScene(16, 16, 16);
    sizes.nz = 0;
    SyntheticScene noise = defaultScene(16, 16, 16);
    noise.noiseSigma = -1.0;
    SyntheticScene disc = defaultScene(16, 16, 16);
    disc.faults[3].radiusAlongDip = 0.0;
    SyntheticScene dip = defaultScene(16, 16, 16);
    dip.faults[0].orientation.dip = 95.0;
    for (const SyntheticScene& scene : {sizes, noise, disc, dip}) {
        RecordingEventBus bus;
        const SyntheticVolume v = generateSyntheticVolume(scene);
        EXPECT_FALSE(v.ok());
        EXPECT_TRUE(v.error.startsWith("Invalid synthetic scene: ")) << v.error.toStdString();
        EXPECT_TRUE(v.likelihood.isEmpty());
        EXPECT_TRUE(bus.contains(ZNEventBus::Error, v.error));
    }
}

TEST(SyntheticVolume, CancellingTheProgressBarStopsWithAnError)
{
    RecordingProgress progress(3);
    RecordingEventBus bus;
    const SyntheticVolume v = generateSyntheticVolume(defaultScene(16, 16, 200));
    EXPECT_EQ(v.error, "Synthetic volume generation cancelled");
    EXPECT_TRUE(v.likelihood.isEmpty());
    EXPECT_EQ(progress.titles, QStringList{"Synthetic volume"});
    EXPECT_EQ(progress.increments, 3);
    EXPECT_EQ(progress.closed, 1);
}

TEST(SeededNoise, IsRepeatableCenteredAndBounded)
{
    double sum = 0.0, sumSquares = 0.0, largest = 0.0;
    const int n = 200000;
    for (int i = 0; i < n; ++i) {
        const double g = seededGaussian(42, i);
        ASSERT_EQ(g, seededGaussian(42, i));
        sum += g;
        sumSquares += g * g;
        largest = std::max(largest, std::fabs(g));
    }
    EXPECT_NEAR(sum / n, 0.0, 0.01);
    EXPECT_NEAR(sumSquares / n, 1.0, 0.02);
    EXPECT_LE(largest, 2.0 * std::sqrt(3.0));
    EXPECT_NE(seededGaussian(42, 5), seededGaussian(43, 5));
}
