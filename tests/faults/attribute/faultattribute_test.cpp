#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>

#include <omp.h>
#include <QTemporaryDir>

#include <core/conventions.h>
#include <attribute/attributeslabplan.h>
#include <attribute/faultattribute.h>
#include <attribute/faultscans.h>
#include <synthetic/syntheticseismic.h>
#include <znbloc.h>
#include <znservice.h>
#include <znslabplanner.h>

#include "testservices.h"

using namespace fault::attribute;
using fault::synthetic::SeismicScene;

namespace {

constexpr double kExtractionThreshold = 0.5;   // the extraction's default

// Layers without faults, tilted by the given slopes, with noise at a ratio of 2.
ZN3DImage<float> layers(int n, double slopeX, double slopeY, std::uint64_t seed)
{
    SeismicScene scene = fault::synthetic::defaultSeismicScene(n, n, n, seed);
    scene.faults.clear();
    scene.slopeX = slopeX;
    scene.slopeY = slopeY;
    return fault::synthetic::generateSyntheticSeismic(scene).amplitude;
}

// A small scene: one planar fault across the volume, no folds, the layers tilted as the
// built-in scene's unless slopes are given.
ZN3DImage<float> oneFault(int n, double strike, double dip, double snr, double slopeX = 0.12, double slopeY = -0.08)
{
    SeismicScene scene = fault::synthetic::defaultSeismicScene(n, n, n, 3);
    scene.slopeX = slopeX;
    scene.slopeY = slopeY;
    scene.faults.resize(1);
    scene.faults[0].geometry.shape = fault::synthetic::PlantedFault::Shape::Plane;
    scene.faults[0].geometry.centre = {n / 2.0, n / 2.0, n / 2.0};
    scene.faults[0].geometry.orientation = {strike, dip};
    scene.faults[0].throwSamples = 4.0;
    scene.foldAmplitude = 0.0;
    scene.signalToNoise = snr;
    return fault::synthetic::generateSyntheticSeismic(scene).amplitude;
}

float largest(const ZN3DImage<float>& image)
{
    return image.isEmpty() ? 0.0F : *std::max_element(image.data(), image.data() + image.voxelCount());
}

// Share of the voxels whose values differ by more than `tolerance`.
double differingShare(const ZN3DImage<float>& a, const ZN3DImage<float>& b, float tolerance)
{
    std::size_t differ = 0;
    for (std::size_t i = 0; i < a.voxelCount(); ++i)
        if (std::fabs(a.data()[i] - b.data()[i]) > tolerance) ++differ;
    return static_cast<double>(differ) / static_cast<double>(a.voxelCount());
}

} // namespace

// Layers dipping by up to 35 degrees towards various azimuths, folded, with noise at a
// ratio of 2: windows of the scan running nearly along weak layers must not read as
// faults.
TEST(FaultAttribute, UnfaultedLayersStayBelowTheExtractionThresholdFlatOrDipping)
{
    struct Case {
        double dip, azimuth;   // degrees of the layers' dip, and towards which the layers deepen
        std::uint64_t seed;
    };
    for (const Case& c : {Case{0.0, 0.0, 1}, Case{20.0, 300.0, 2}, Case{30.0, 30.0, 3}, Case{35.0, 120.0, 4},
                          Case{35.0, 0.0, 5}}) {
        const double slope = std::tan(c.dip * M_PI / 180.0);
        const double slopeX = slope * std::cos(c.azimuth * M_PI / 180.0);
        const double slopeY = slope * std::sin(c.azimuth * M_PI / 180.0);
        const FaultAttributeVolumes v =
            computeFaultAttribute(layers(96, slopeX, slopeY, c.seed), FaultAttributeSettings(), false, -1);
        ASSERT_TRUE(v.ok()) << v.error.toStdString();
        EXPECT_LT(largest(v.likelihood), kExtractionThreshold) << c.dip << " towards " << c.azimuth;
    }
}

TEST(FaultAttribute, AFaultGivesAThinRidgeOnItsPlaneWithItsStrikeAndDip)
{
    struct Case {
        double strike, dip;
        double slopeX, slopeY;   // of the layers
    };
    // The last fault cuts layers dipping 30 degrees the same way, at about 50 degrees to them.
    for (const Case& c : {Case{0.0, 90.0, 0.12, -0.08}, Case{35.0, 70.0, 0.12, -0.08}, Case{250.0, 60.0, 0.12, -0.08},
                          Case{10.0, 75.0, 0.55, 0.17}}) {
        const int n = 96;
        const FaultAttributeVolumes v = computeFaultAttribute(
            oneFault(n, c.strike, c.dip, 0.0, c.slopeX, c.slopeY), FaultAttributeSettings(), true, -1);
        ASSERT_TRUE(v.ok());
        const fault::synthetic::PlantedFault plane{QString(), fault::synthetic::PlantedFault::Shape::Plane,
                                                   core::vec3(n / 2.0, n / 2.0, n / 2.0), {c.strike, c.dip}};
        const fault::synthetic::PlantedFaultField field(plane);
        int above = 0, near = 0, oriented = 0;
        for (int z = 0; z < n; ++z)
            for (int y = 0; y < n; ++y)
                for (int x = 0; x < n; ++x) {
                    if (v.likelihood(x, y, z) < kExtractionThreshold) continue;
                    ++above;
                    if (std::fabs(field.signedDistance(core::vec3(x, y, z))) <= 1.5) ++near;
                    const fault::synthetic::OrientationError e =
                        fault::synthetic::orientationError({c.strike, c.dip}, {v.strike(x, y, z), v.dip(x, y, z)});
                    if (e.strike <= 6.0 && e.dip <= 8.0) ++oriented;
                }
        ASSERT_GT(above, n * n / 5) << c.strike;   // a good part of the plane
        EXPECT_GT(near, 0.95 * above) << c.strike;
        EXPECT_GT(oriented, 0.8 * above) << c.strike;
    }
}

// A survey whose rectangle is padded with zero traces beyond its outline and with zero
// samples below its record: the padding reads no fault (likelihood 0, no strike or dip),
// however the smoothing carried the data's edge into it, and the fault inside is found.
TEST(FaultAttribute, ZeroPaddingAroundTheDataReadsNoFault)
{
    const int n = 80, outline = 56, record = 60;
    ZN3DImage<float> seismic = oneFault(n, 35.0, 70.0, 2.0);
    for (int z = 0; z < n; ++z)
        for (int y = 0; y < n; ++y)
            for (int x = 0; x < n; ++x)
                if (x >= outline || z >= record) seismic(x, y, z) = 0.0F;
    seismic(10, 10, 10) = 0.0F;   // a zero sample inside the data is data
    const FaultAttributeVolumes v = computeFaultAttribute(seismic, FaultAttributeSettings(), true, -1);
    ASSERT_TRUE(v.ok());
    int inside = 0, padding = 0, oriented = 0;
    for (int z = 0; z < n; ++z)
        for (int y = 0; y < n; ++y)
            for (int x = 0; x < n; ++x) {
                // The padding's first sample below the record still has data above it.
                const bool empty = x >= outline || z > record;
                if (empty) {
                    if (v.likelihood(x, y, z) != 0.0F) ++padding;
                    if (v.strike(x, y, z) != static_cast<float>(core::kNoValueReal)) ++oriented;
                } else if (v.likelihood(x, y, z) >= kExtractionThreshold) {
                    ++inside;
                }
            }
    EXPECT_EQ(padding, 0);
    EXPECT_EQ(oriented, 0);
    EXPECT_GT(inside, outline * record / 5);
    EXPECT_NE(v.strike(10, 10, 10), static_cast<float>(core::kNoValueReal));
}

// Layers without a fault, padded with zero traces beyond two sides of the outline and
// holding two dead traces: the live traces beside the zeros, whose windows are partly
// empty, read as coherent as the rest, so nothing reads as a fault along the outline or
// around the dead traces.
TEST(FaultAttribute, TracesBesideZeroTracesReadNoFault)
{
    const int n = 72, outlineX = 52, outlineY = 60;
    SeismicScene scene = fault::synthetic::defaultSeismicScene(n, n, n, 5);
    scene.faults.clear();
    scene.foldAmplitude = 0.0;
    scene.signalToNoise = 2.0;
    ZN3DImage<float> seismic = fault::synthetic::generateSyntheticSeismic(scene).amplitude;
    for (int z = 0; z < n; ++z)
        for (int y = 0; y < n; ++y)
            for (int x = 0; x < n; ++x) {
                const bool deadTrace = (x == 20 && y == 30) || (x == 35 && y == 12);
                if (x >= outlineX || y >= outlineY || deadTrace) seismic(x, y, z) = 0.0F;
            }
    const FaultAttributeVolumes v = computeFaultAttribute(seismic, FaultAttributeSettings(), false, -1);
    ASSERT_TRUE(v.ok());
    int above = 0;
    for (std::size_t i = 0; i < v.likelihood.voxelCount(); ++i)
        if (v.likelihood.data()[i] >= kExtractionThreshold) ++above;
    EXPECT_EQ(above, 0);
}

TEST(FaultAttribute, SlabsOfAFewSlicesGiveTheSameLikelihoodAsOneSlab)
{
    const ZN3DImage<float> seismic = oneFault(48, 30.0, 75.0, 2.0);
    const FaultAttributeVolumes whole = computeFaultAttribute(seismic, FaultAttributeSettings(), false, -1);
    ASSERT_TRUE(whole.ok());
    const AttributeSlabPlan plan = planAttributeSlabs(48, 48, 48, planScans(FaultAttributeSettings()),
                                                      FaultAttributeSettings(), 0);
    ZNSlabPlanner small(static_cast<long long>(plan.workingBytes(48, 48, 6)));
    ZNScopedService<ZNSlabPlanner> scope(small);
    const int slices =
        planAttributeSlabs(48, 48, 48, planScans(FaultAttributeSettings()), FaultAttributeSettings(), 0).slabSlices;
    ASSERT_GE(slices, 4);
    ASSERT_LE(slices, 8);
    const FaultAttributeVolumes sliced = computeFaultAttribute(seismic, FaultAttributeSettings(), false, -1);
    ASSERT_TRUE(sliced.ok());
    EXPECT_LT(differingShare(whole.likelihood, sliced.likelihood, 0.05F), 0.01);
}

TEST(FaultAttribute, TheResultDoesNotDependOnTheThreadCount)
{
    const ZN3DImage<float> seismic = oneFault(40, 120.0, 65.0, 2.0);
    const int threads = omp_get_max_threads();
    omp_set_num_threads(1);
    const FaultAttributeVolumes one = computeFaultAttribute(seismic, FaultAttributeSettings(), true, -1);
    omp_set_num_threads(std::max(2, threads));
    const FaultAttributeVolumes many = computeFaultAttribute(seismic, FaultAttributeSettings(), true, -1);
    omp_set_num_threads(threads);
    ASSERT_TRUE(one.ok() && many.ok());
    EXPECT_TRUE(std::equal(one.likelihood.data(), one.likelihood.data() + one.likelihood.voxelCount(),
                           many.likelihood.data()));
    EXPECT_TRUE(std::equal(one.strike.data(), one.strike.data() + one.strike.voxelCount(), many.strike.data()));
}

TEST(FaultAttribute, BlockFilesInGiveTheInMemoryAttributeInBlockFilesOut)
{
    QTemporaryDir dir;
    ZN3DImage<float> seismic = oneFault(40, 300.0, 80.0, 2.0);
    ZNBloc in;
    ASSERT_TRUE(in.create(dir.filePath("seismic.bloc"), seismic.blocSpace(), 0, seismic.nz(), ZNBloc::Float32));
    ASSERT_TRUE(in.writeSlices(0, seismic, 0, seismic.nz()) && in.close());
    ASSERT_TRUE(in.open(dir.filePath("seismic.bloc")));
    BlocSeismicSlices slices(in);
    const FaultAttributeFiles files{dir.filePath("l.bloc"), dir.filePath("s.bloc"), QString()};
    ASSERT_TRUE(computeFaultAttributeFiles(slices, files, georef::UnitObject(), FaultAttributeSettings(), -1).isEmpty());
    EXPECT_FALSE(QFile::exists(dir.filePath("d.bloc")));
    const FaultAttributeVolumes memory = computeFaultAttribute(seismic, FaultAttributeSettings(), true, -1);
    ZNBloc likelihood, strike;
    ZN3DImage<float> l, s;
    ASSERT_TRUE(likelihood.open(files.likelihood) && likelihood.readBox(0, 0, 0, 40, 40, 40, l));
    ASSERT_TRUE(strike.open(files.strike) && strike.readBox(0, 0, 0, 40, 40, 40, s));
    EXPECT_EQ(differingShare(l, memory.likelihood, 0.0F), 0.0);
    EXPECT_EQ(differingShare(s, memory.strike, 0.0F), 0.0);
}

TEST(FaultAttribute, ACancelStopsTheRunAndLeavesTheTargetsAlone)
{
    QTemporaryDir dir;
    QFile previous(dir.filePath("l.bloc"));
    ASSERT_TRUE(previous.open(QIODevice::WriteOnly) && previous.write("old", 3) == 3);
    previous.close();
    const ZN3DImage<float> seismic = oneFault(40, 10.0, 70.0, 2.0);
    RecordingProgress progress(3);
    ImageSeismicSlices slices(seismic);
    const QString error = computeFaultAttributeFiles(slices, {dir.filePath("l.bloc"), {}, {}}, georef::UnitObject(),
                                                     FaultAttributeSettings(), -1);
    EXPECT_EQ(error, "cancelled");
    QFile kept(dir.filePath("l.bloc"));
    ASSERT_TRUE(kept.open(QIODevice::ReadOnly));
    EXPECT_EQ(kept.readAll(), QByteArray("old"));
    EXPECT_EQ(progress.titles, QStringList{"Fault likelihood"});
}

TEST(FaultAttribute, RefusalsComeWithAReasonAndNoImages)
{
    RecordingEventBus bus;
    FaultAttributeSettings bad;
    bad.dipStep = -1.0;
    const ZN3DImage<float> seismic = oneFault(24, 0.0, 90.0, 0.0);
    FaultAttributeVolumes v = computeFaultAttribute(seismic, bad, true, -1);
    EXPECT_FALSE(v.ok());
    EXPECT_TRUE(v.likelihood.isEmpty() && v.strike.isEmpty());
    EXPECT_FALSE(computeFaultAttribute(ZN3DImage<float>(), FaultAttributeSettings(), false, -1).ok());
    ZNSlabPlanner tiny(1000);
    {
        ZNScopedService<ZNSlabPlanner> scope(tiny);
        v = computeFaultAttribute(seismic, FaultAttributeSettings(), false, -1);
        EXPECT_TRUE(v.error.contains("memory budget")) << v.error.toStdString();
    }
    EXPECT_EQ(bus.messages.size(), 3);
}

TEST(FaultAttribute, VolumesSmallerThanTheWindowsAreStillComputed)
{
    for (const auto& size : {std::array<int, 3>{1, 1, 1}, std::array<int, 3>{3, 2, 50}, std::array<int, 3>{30, 30, 2}}) {
        ZN3DImage<float> seismic(size[0], size[1], size[2]);
        for (std::size_t i = 0; i < seismic.voxelCount(); ++i) seismic.data()[i] = std::sin(0.7F * static_cast<float>(i));
        const FaultAttributeVolumes v = computeFaultAttribute(seismic, FaultAttributeSettings(), true, -1);
        ASSERT_TRUE(v.ok()) << size[0] << " " << size[2];
        for (std::size_t i = 0; i < v.likelihood.voxelCount(); ++i) {
            EXPECT_GE(v.likelihood.data()[i], 0.0F);
            EXPECT_LE(v.likelihood.data()[i], 1.0F);
        }
    }
}
