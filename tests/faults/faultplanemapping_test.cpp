// Mapping a data block onto a fault's projection image: the plain rules, reading slice
// by slice, and each data mapping setting.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <tuple>

#include <QTemporaryDir>

#include <faultplanemapping.h>
#include <img/holefill.h>
#include <testservices.h>
#include <znbloc.h>

using fault::FaultPlaneMappingResult;
using fault::FaultPlaneMappingSettings;
using fault::FaultPlaneMappingStats;
using Combine = FaultPlaneMappingSettings::Combine;

namespace {

constexpr float kNo = -9999.0f;

// A data block of nx x ny x nz samples f(i, j, k) on a grid whose block-to-world matrix
// is `toWorld`, held in memory.
std::shared_ptr<ZNBloc> dataBloc(int nx, int ny, int nz, const std::function<float(int, int, int)>& f,
                                 const core::mat4& toWorld = core::mat4())
{
    auto image = std::make_shared<ZN3DImage<float>>(georef::BlocSpace(nx, ny, nz, toWorld));
    for (int k = 0; k < nz; ++k)
        for (int j = 0; j < ny; ++j)
            for (int i = 0; i < nx; ++i) (*image)(i, j, k) = f(i, j, k);
    auto bloc = std::make_shared<ZNBloc>();
    EXPECT_TRUE(bloc->openImage(image));
    return bloc;
}

// A fault lying on slice k0 of a grid with the identity matrix: pixel (c, r) is voxel
// (c, r, k0); the image's third axis is the grid's z, `normalLength` world units long.
struct FlatFault {
    img::Image projected;
    core::mat4 imageToWorld;
    FlatFault(int width, int height, double k0, double normalLength = 25.0)
        : projected(width, height, 7.0f), imageToWorld(core::mat4::translation({0.0, 0.0, k0}))
    {
        imageToWorld(2, 2) = normalLength;
    }
};

// A vertical fault x = x0 across a ny x nz grid: pixel (c, r) is voxel (x0, c, r).
struct VerticalFault {
    img::Image projected;
    core::mat4 imageToWorld;
    VerticalFault(int width, int height, double x0) : projected(width, height, 3.0f), imageToWorld(core::mat4::zero())
    {
        imageToWorld(1, 0) = 1.0;  // column -> y
        imageToWorld(2, 1) = 1.0;  // row -> z
        imageToWorld(0, 2) = 4.0;  // normal -> x, any length
        imageToWorld(0, 3) = x0;
        imageToWorld(3, 3) = 1.0;
    }
};

img::Image map(const img::Image& projected, const core::mat4& toWorld, ZNBloc& data,
               const FaultPlaneMappingSettings& settings = {}, FaultPlaneMappingStats* stats = nullptr)
{
    img::Image mapped;
    EXPECT_EQ(fault::mapDataOnFaultPlane(projected, toWorld, data, settings, mapped, -2, stats),
              FaultPlaneMappingResult::Done);
    return mapped;
}

} // namespace

// ----- the plain mapping -----

TEST(FaultPlaneMapping, AllZeroDataLeavesEveryPixelWithoutValue)
{
    const FlatFault f(20, 15, 10.0);
    const auto data = dataBloc(20, 15, 30, [](int, int, int) { return 0.0f; });
    const img::Image mapped = map(f.projected, f.imageToWorld, *data);
    ASSERT_EQ(mapped.width(), 20);
    ASSERT_EQ(mapped.height(), 15);
    EXPECT_EQ(img::countValued(mapped), 0u);
}

TEST(FaultPlaneMapping, AFaultOnOneSliceReadsThatSliceAndItsNeighboursWithinTwoPointOneVoxels)
{
    for (double normalLength : {1.0, 25.0, 0.1}) {  // offsets count in data voxels whatever its length
        const FlatFault f(12, 9, 10.0, normalLength);
        const auto data = dataBloc(12, 9, 30, [](int, int, int k) { return float(k + 100); });
        FaultPlaneMappingStats stats;
        const img::Image mapped = map(f.projected, f.imageToWorld, *data, {}, &stats);
        EXPECT_EQ(stats.slicesRead, (std::vector<int>{8, 9, 10, 11, 12})) << normalLength;
        EXPECT_EQ(stats.voxelsListed, 12 * 9 * 5);  // seven offsets, five distinct voxels a pixel
        // The first sample wins: the one of the smallest slice, 2.1 voxels above.
        EXPECT_EQ(mapped(5, 4), 108.0f);
        EXPECT_EQ(img::countValued(mapped), 12u * 9);
    }
}

TEST(FaultPlaneMapping, ZeroAndNoValueSamplesAreSkippedForTheNextSlice)
{
    const FlatFault f(6, 6, 10.0);
    // The two slices above the fault hold no data: zero and -9999.
    const auto data = dataBloc(6, 6, 20, [](int, int, int k) { return k == 8 ? 0.0f : k == 9 ? kNo : float(k); });
    EXPECT_EQ(map(f.projected, f.imageToWorld, *data)(2, 3), 10.0f);
}

TEST(FaultPlaneMapping, MappedImageFollowsAFunctionOfPositionAlongTheFault)
{
    // The crossline number along a vertical fault: the normal runs along the inlines, so
    // offsets do not change it and every pixel holds its crossline within rounding.
    const VerticalFault f(40, 30, 17.0);
    const auto data = dataBloc(32, 40, 30, [](int, int j, int) { return float(200 + j); });
    const img::Image mapped = map(f.projected, f.imageToWorld, *data);
    for (int r = 0; r < 30; ++r)
        for (int c = 0; c < 40; ++c) ASSERT_EQ(mapped(c, r), float(200 + c)) << c << "," << r;
}

TEST(FaultPlaneMapping, AFinerImageThanTheDataIsFilledBetweenSamplesAndKeepsItsOutline)
{
    // Two pixels per voxel along each axis: most pixels receive no voxel of their own and
    // are filled from their neighbours by the hole filling; the fault is a disc.
    img::Image projected(60, 60, kNo);
    for (int r = 0; r < 60; ++r)
        for (int c = 0; c < 60; ++c)
            if ((c - 30) * (c - 30) + (r - 30) * (r - 30) < 25 * 25) projected(c, r) = 1.0f;
    core::mat4 toWorld = core::mat4::translation({1.0, 2.0, 12.0});
    toWorld(0, 0) = 0.5;
    toWorld(1, 1) = 0.5;
    const auto data = dataBloc(40, 40, 25, [](int i, int j, int) { return float(100 + i + 2 * j); });
    const img::Image mapped = map(projected, toWorld, *data);
    int inside = 0;
    for (int r = 0; r < 60; ++r)
        for (int c = 0; c < 60; ++c) {
            if (projected(c, r) == kNo) {
                ASSERT_EQ(mapped(c, r), kNo) << "outline grew at " << c << "," << r;
                continue;
            }
            ++inside;
            // The linear function within one voxel of rounding.
            if (mapped(c, r) != kNo) {
                EXPECT_NEAR(mapped(c, r), 100 + (1 + 0.5 * c) + 2 * (2 + 0.5 * r), 1.6);
            }
        }
    EXPECT_GE(img::countValued(mapped), static_cast<std::size_t>(inside) * 97 / 100);
}

TEST(FaultPlaneMapping, PixelsMappingOutsideTheDataStayWithoutValue)
{
    const VerticalFault f(40, 30, 17.0);
    const auto data = dataBloc(32, 25, 30, [](int, int j, int) { return float(1 + j); });  // 25 crosslines
    const img::Image mapped = map(f.projected, f.imageToWorld, *data);
    EXPECT_NE(mapped(24, 5), kNo);
    EXPECT_EQ(mapped(25, 5), kNo);
    EXPECT_EQ(mapped(39, 29), kNo);
}

TEST(FaultPlaneMapping, ProgressAdvancesByTenEveryTenSlicesAndACancelLeavesTheImage)
{
    const FlatFault f(8, 8, 20.0);
    const auto data = dataBloc(8, 8, 45, [](int, int, int k) { return float(k + 1); });
    {
        RecordingProgress progress;
        img::Image mapped;
        ASSERT_EQ(fault::mapDataOnFaultPlane(f.projected, f.imageToWorld, *data, {}, mapped, -1),
                  FaultPlaneMappingResult::Done);
        EXPECT_EQ(progress.titles, QStringList{QStringLiteral("Map data on fault plane")});
        EXPECT_EQ(progress.increments, 4);  // slices 10, 20, 30, 40
        EXPECT_EQ(progress.closed, 1);
    }
    RecordingProgress cancelling(1);
    img::Image mapped(3, 3, 5.0f);
    EXPECT_EQ(fault::mapDataOnFaultPlane(f.projected, f.imageToWorld, *data, {}, mapped, -1),
              FaultPlaneMappingResult::Cancelled);
    EXPECT_EQ(mapped.width(), 3);
    EXPECT_EQ(mapped(1, 1), 5.0f);
    EXPECT_EQ(cancelling.closed, 1);
}

TEST(FaultPlaneMapping, ABlockFileIsReadOneSliceAtATime)
{
    QTemporaryDir dir;
    const int nx = 64, ny = 48, nz = 120;
    const auto memory = dataBloc(nx, ny, nz, [](int i, int j, int k) { return float(1 + i + 3 * j + 7 * k); });
    const QString path = dir.filePath(QStringLiteral("volume.bloc"));
    {
        ZN3DImage<float> all;
        ASSERT_TRUE(memory->readBox(0, 0, 0, nx, ny, nz, all));
        ZNBloc file;
        ASSERT_TRUE(file.create(path, memory->blocSpace(), 0, nz, ZNBloc::Float32));
        ASSERT_TRUE(file.writeSlices(0, all, 0, nz));
        ASSERT_TRUE(file.close());
    }
    ZNBloc file;
    ASSERT_TRUE(file.open(path));
    // A fault dipping through every slice: pixel (c, r) at voxel (c, 0.3 r + 5, r).
    img::Image projected(nx, nz, 1.0f);
    core::mat4 toWorld = core::mat4::translation({0.0, 5.0, 0.0});
    toWorld(1, 1) = 0.3;
    toWorld(2, 1) = 1.0;
    toWorld(1, 2) = 1.0;
    toWorld(2, 2) = -0.3;
    FaultPlaneMappingStats stats;
    const img::Image fromFile = map(projected, toWorld, file, {}, &stats);
    const img::Image fromMemory = map(projected, toWorld, *memory);
    for (std::size_t p = 0; p < fromFile.sampleCount(); ++p) ASSERT_EQ(fromFile.data()[p], fromMemory.data()[p]);
    EXPECT_EQ(static_cast<int>(stats.slicesRead.size()), nz);
    for (std::size_t s = 1; s < stats.slicesRead.size(); ++s) EXPECT_LT(stats.slicesRead[s - 1], stats.slicesRead[s]);
    EXPECT_EQ(stats.sliceBytes, nx * ny * 4);
    EXPECT_EQ(stats.listSweeps, 1);
    // A budget of three slices' lists (1000 entries of 8 bytes each): the lists are made
    // range by range, the result is the same and each slice is still read once, in order.
    FaultPlaneMappingSettings budgeted;
    budgeted.listBudgetBytes = 3 * 1000 * 8;
    FaultPlaneMappingStats small;
    const img::Image inRanges = map(projected, toWorld, file, budgeted, &small);
    for (std::size_t p = 0; p < fromFile.sampleCount(); ++p) ASSERT_EQ(inRanges.data()[p], fromFile.data()[p]);
    EXPECT_EQ(small.slicesRead, stats.slicesRead);
    EXPECT_GE(small.listSweeps, nz / 3);
    EXPECT_LE(small.listBytes, budgeted.listBudgetBytes);
    // What it holds at once is a slice and three slices' lists, far below the volume.
    const long long volumeBytes = 4LL * nx * ny * nz;
    EXPECT_LT(small.sliceBytes + small.listBytes + small.imageBytes, volumeBytes / 20);
}

// A fault across a 40 x 36 x 50 grid: pixel (c, r) at voxel (3 + 0.8 c, 4 + a r, 2 + b r
// + d c), the normal along (0, -b, a) tilted by `tilt` towards x. Rows climb or descend
// through the slices (b > 0 or b < 0), or each row crosses many slices (d large).
struct ObliqueFault {
    img::Image projected;
    core::mat4 imageToWorld = core::mat4::zero();
    ObliqueFault(double a, double b, double d, double tilt, double k0) : projected(44, 40, 1.0f)
    {
        imageToWorld(0, 0) = 0.8;
        imageToWorld(2, 0) = d;
        imageToWorld(1, 1) = a;
        imageToWorld(2, 1) = b;
        imageToWorld(0, 2) = tilt;
        imageToWorld(1, 2) = -b;
        imageToWorld(2, 2) = a;
        imageToWorld(0, 3) = 3.0;
        imageToWorld(1, 3) = 4.0;
        imageToWorld(2, 3) = k0;
        imageToWorld(3, 3) = 1.0;
        for (int r = 0; r < 40; ++r)
            for (int c = 0; c < 44; ++c)
                if ((c * 7 + r * 3) % 11 == 0) projected(c, r) = kNo;  // holes in the fault
    }
};

const struct {
    double a, b, d, tilt, k0;
} kObliqueFaults[] = {
    {0.5, 0.83, 0.0, 0.3, 2.0},    // rows climb through the slices
    {0.6, -0.77, 0.0, -0.2, 46.0}, // rows descend
    {0.7, 0.1, 1.05, 0.45, 1.0},   // each row crosses most slices
};

TEST(FaultPlaneMapping, ListBudgetsChangeTheSweepsButNeitherTheSlicesReadNorTheResult)
{
    const auto data = dataBloc(40, 36, 50, [](int i, int j, int k) {
        return (i + 2 * j + 3 * k) % 17 == 0 ? 0.0f : float(1 + i + 40 * j + 1440 * k);
    });
    for (const auto& g : kObliqueFaults) {
        const ObliqueFault f(g.a, g.b, g.d, g.tilt, g.k0);
        for (Combine combine : {Combine::FirstSample, Combine::Mean}) {
            FaultPlaneMappingSettings plain;
            plain.combine = combine;
            FaultPlaneMappingStats whole;
            const img::Image reference = map(f.projected, f.imageToWorld, *data, plain, &whole);
            ASSERT_EQ(whole.listSweeps, 1);
            ASSERT_GT(whole.pixelsMapped, 800);
            // Below one block (each slice alone), a few blocks, most of the lists.
            for (long long budget : {1LL, 40000LL, whole.listBytes * 2 / 3}) {
                FaultPlaneMappingSettings s = plain;
                s.listBudgetBytes = budget;
                FaultPlaneMappingStats st;
                const img::Image mapped = map(f.projected, f.imageToWorld, *data, s, &st);
                const std::string where = std::to_string(budget) + " " + std::to_string(int(combine));
                EXPECT_EQ(st.slicesRead, whole.slicesRead) << where;
                EXPECT_EQ(st.voxelsListed, whole.voxelsListed) << where;
                EXPECT_GT(st.listSweeps, 1) << where;
                if (budget > 1) {
                    EXPECT_LE(st.listBytes, budget) << where;
                }
                for (std::size_t p = 0; p < mapped.sampleCount(); ++p)
                    ASSERT_EQ(mapped.data()[p], reference.data()[p]) << where << " pixel " << p;
            }
        }
    }
}

TEST(FaultPlaneMapping, EachPixelListsEachDistinctVoxelOfItsWindowOnce)
{
    // Against the obvious count: every offset of every pixel taken to the grid and rounded,
    // the distinct voxels inside it counted. The combinations keep every offset's voxel.
    const auto data = dataBloc(40, 36, 50, [](int, int, int) { return 1.0f; });
    for (const auto& g : kObliqueFaults) {
        const ObliqueFault f(g.a, g.b, g.d, g.tilt, g.k0);
        for (int windowSize : {0, 3, 12, 30}) {
            core::mat4 toBloc;
            ASSERT_TRUE(fault::faultImageToBlocMatrix(f.imageToWorld, data->blocSpace().getFromWorldToBlocMatrix(), toBloc));
            long long distinct = 0, all = 0;
            for (int r = 0; r < f.projected.height(); ++r)
                for (int c = 0; c < f.projected.width(); ++c) {
                    if (f.projected(c, r) == kNo) continue;
                    std::set<std::tuple<long, long, long>> voxels;
                    for (int o = -windowSize; o <= windowSize; ++o) {
                        const core::vec3 b = toBloc.transformPoint({double(c), double(r), 0.7 * o});
                        const long i = std::lround(b.x), j = std::lround(b.y), k = std::lround(b.z);
                        if (i < 0 || j < 0 || k < 0 || i >= 40 || j >= 36 || k >= 50) continue;
                        voxels.insert({i, j, k});
                        ++all;
                    }
                    distinct += static_cast<long long>(voxels.size());
                }
            FaultPlaneMappingSettings s;
            s.windowSize = windowSize;
            FaultPlaneMappingStats plain, mean;
            map(f.projected, f.imageToWorld, *data, s, &plain);
            EXPECT_EQ(plain.voxelsListed, distinct) << windowSize;
            s.combine = Combine::Mean;
            map(f.projected, f.imageToWorld, *data, s, &mean);
            EXPECT_EQ(mean.voxelsListed, all) << windowSize;
        }
    }
}

TEST(FaultPlaneMapping, ImageToBlocMatrixCountsTheNormalInDataVoxels)
{
    core::mat4 dataToWorld;
    dataToWorld(0, 0) = 25.0;  // 25 m inlines, 12.5 m crosslines, 4 ms samples
    dataToWorld(2, 1) = 12.5;
    dataToWorld(1, 2) = 4.0;
    core::mat4 worldToData;
    ASSERT_TRUE(dataToWorld.inverse(worldToData));
    core::mat4 imageToWorld = core::mat4::zero();
    imageToWorld(1, 0) = 1.0;
    imageToWorld(2, 1) = 1.0;
    imageToWorld(0, 2) = 50.0;  // the normal along world x, 50 units long
    imageToWorld(3, 3) = 1.0;
    core::mat4 toBloc;
    ASSERT_TRUE(fault::faultImageToBlocMatrix(imageToWorld, worldToData, toBloc));
    EXPECT_NEAR(toBloc.transformVector({0.0, 0.0, 1.0}).length(), 1.0, 1e-12);
    imageToWorld(0, 2) = 0.0;
    EXPECT_FALSE(fault::faultImageToBlocMatrix(imageToWorld, worldToData, toBloc));
}

// ----- the data mapping settings -----

TEST(FaultPlaneMappingSettings, WindowSizeSetsTheSlicesAlongTheNormal)
{
    const struct {
        int window;
        std::vector<int> slices;
    } cases[] = {
        {0, {10}},                                // the plane only
        {1, {9, 10, 11}},                         // +-0.7
        {3, {8, 9, 10, 11, 12}},                  // +-2.1, the default
        {5, {7, 8, 9, 10, 11, 12, 13, 14}},       // +-3.5: 6.5 and 13.5 round up
    };
    const FlatFault f(5, 5, 10.0);
    const auto data = dataBloc(5, 5, 30, [](int, int, int k) { return float(k + 1); });
    for (const auto& c : cases) {
        FaultPlaneMappingSettings s;
        s.windowSize = c.window;
        FaultPlaneMappingStats stats;
        map(f.projected, f.imageToWorld, *data, s, &stats);
        EXPECT_EQ(stats.slicesRead, c.slices) << c.window;
    }
}

TEST(FaultPlaneMappingSettings, SmoothChoosesHowTheWindowsSamplesCombine)
{
    // Samples equal their slice + 100 around a fault on slice 10; the seven offsets fall
    // on slices 10, 11, 9, 11, 9, 12, 8.
    const struct {
        Combine combine;
        float expected;
    } cases[] = {
        {Combine::FirstSample, 108.0f},
        {Combine::Mean, 110.0f},
        {Combine::MaxAmplitude, 112.0f},
    };
    const FlatFault f(6, 4, 10.0);
    const auto data = dataBloc(6, 4, 30, [](int, int, int k) { return float(k + 100); });
    const auto negative = dataBloc(6, 4, 30, [](int, int, int k) { return k == 8 ? -500.0f : float(k + 100); });
    for (const auto& c : cases) {
        FaultPlaneMappingSettings s;
        s.combine = c.combine;
        const img::Image mapped = map(f.projected, f.imageToWorld, *data, s);
        EXPECT_EQ(img::countValued(mapped), 24u);
        EXPECT_FLOAT_EQ(mapped(3, 2), c.expected) << int(c.combine);
    }
    FaultPlaneMappingSettings s;
    s.combine = Combine::MaxAmplitude;  // magnitude wins, sign kept
    EXPECT_EQ(map(f.projected, f.imageToWorld, *negative, s)(1, 1), -500.0f);
}

TEST(FaultPlaneMappingSettings, CorrThresholdDropsPixelsWhoseWindowDoesNotFollowItsNeighbours)
{
    // Layers along the normal everywhere, but random samples in a 6 x 6 patch.
    std::mt19937 random(5);
    std::uniform_real_distribution<float> noise(1.0f, 2.0f);
    ZN3DImage<float> values(30, 30, 30);
    for (int k = 0; k < 30; ++k)
        for (int j = 0; j < 30; ++j)
            for (int i = 0; i < 30; ++i) {
                const bool noisy = i >= 12 && i < 18 && j >= 12 && j < 18;
                values(i, j, k) = noisy ? noise(random) : 1.5f + std::sin(0.9f * k);
            }
    const auto data = dataBloc(30, 30, 30, [&](int i, int j, int k) { return values(i, j, k); });
    const FlatFault f(30, 30, 15.0);
    FaultPlaneMappingSettings s;
    s.windowSize = 6;  // 13 samples a window
    EXPECT_EQ(img::countValued(map(f.projected, f.imageToWorld, *data, s)), 900u);  // 0: off
    s.correlationThreshold = 0.5;
    const img::Image checked = map(f.projected, f.imageToWorld, *data, s);
    int droppedInside = 0;
    for (int j = 13; j < 17; ++j)
        for (int i = 13; i < 17; ++i) droppedInside += checked(i, j) == kNo;
    EXPECT_GE(droppedInside, 12);       // the noise's core goes
    EXPECT_NE(checked(4, 4), kNo);      // the layers stay
    EXPECT_NE(checked(25, 20), kNo);
}

TEST(FaultPlaneMappingSettings, InterpolationClosesWideHolesFromTheValuesAround)
{
    // Five dead crosslines: a gap too wide for the hole filling.
    const VerticalFault f(40, 20, 10.0);
    const auto data = dataBloc(20, 40, 20, [](int, int j, int) { return j >= 18 && j < 23 ? 0.0f : float(100 + j); });
    FaultPlaneMappingSettings s;
    const img::Image plain = map(f.projected, f.imageToWorld, *data, s);
    EXPECT_EQ(plain(20, 10), kNo);
    s.interpolationRadius = 5;
    const img::Image filled = map(f.projected, f.imageToWorld, *data, s);
    for (int c = 18; c < 23; ++c) EXPECT_NEAR(filled(c, 10), 100 + c, 1e-3) << c;  // linear across
    EXPECT_EQ(filled(25, 10), 125.0f);  // mapped pixels keep their value
}

TEST(FaultPlaneMappingSettings, SmoothingActsAlongTheDirectionOfItsDeviationOnly)
{
    // Stripes that alternate along the columns (crosslines): only a smoothing across
    // columns ("Spatial dev") evens them out.
    const VerticalFault f(30, 30, 10.0);
    const auto data = dataBloc(20, 30, 30, [](int, int j, int) { return j % 2 ? 200.0f : 100.0f; });
    const struct {
        double spatial, vertical;
        bool evened;
    } cases[] = {{2.0, 0.0, true}, {0.0, 2.0, false}, {2.0, 2.0, true}};
    for (const auto& c : cases) {
        FaultPlaneMappingSettings s;
        s.smoothing = true;
        s.spatialDeviation = c.spatial;
        s.verticalDeviation = c.vertical;
        const img::Image mapped = map(f.projected, f.imageToWorld, *data, s);
        const float spread = std::fabs(mapped(15, 15) - mapped(16, 15));
        EXPECT_EQ(spread < 5.0f, c.evened) << c.spatial << " " << c.vertical;
        if (!c.evened) {
            EXPECT_FLOAT_EQ(spread, 100.0f) << c.spatial << " " << c.vertical;
        }
    }
}

TEST(FaultPlaneMappingSettings, SmoothingKeepsAConstantFieldUpToTheOutline)
{
    img::Image projected(30, 30, kNo);
    for (int r = 5; r < 25; ++r)
        for (int c = 5; c < 25; ++c) projected(c, r) = 1.0f;
    const auto data = dataBloc(30, 30, 30, [](int, int, int) { return 42.0f; });
    FaultPlaneMappingSettings s;
    s.smoothing = true;
    s.spatialDeviation = s.verticalDeviation = 3.0;
    const img::Image mapped = map(projected, FlatFault(1, 1, 12.0).imageToWorld, *data, s);
    EXPECT_FLOAT_EQ(mapped(5, 5), 42.0f);   // a corner is not darkened by the outside
    EXPECT_FLOAT_EQ(mapped(15, 15), 42.0f);
    EXPECT_EQ(mapped(4, 15), kNo);          // nor does the outline grow
}

TEST(FaultPlaneMappingSettings, OutOfRangeSettingsAreRefusedAndNeutralOnesAreRecognised)
{
    EXPECT_TRUE(FaultPlaneMappingSettings().isNeutral());
    EXPECT_TRUE(FaultPlaneMappingSettings().isValid());
    const std::function<void(FaultPlaneMappingSettings&)> bad[] = {
        [](FaultPlaneMappingSettings& s) { s.windowSize = -1; },
        [](FaultPlaneMappingSettings& s) { s.windowSize = FaultPlaneMappingSettings::kMaxWindowSize + 1; },
        [](FaultPlaneMappingSettings& s) { s.correlationThreshold = 1.5; },
        [](FaultPlaneMappingSettings& s) { s.interpolationRadius = -2; },
        [](FaultPlaneMappingSettings& s) { s.spatialDeviation = -1.0; },
        [](FaultPlaneMappingSettings& s) { s.verticalDeviation = 1e9; },
    };
    const FlatFault f(4, 4, 3.0);
    const auto data = dataBloc(4, 4, 8, [](int, int, int) { return 1.0f; });
    for (const auto& change : bad) {
        FaultPlaneMappingSettings s;
        change(s);
        EXPECT_FALSE(s.isValid());
        img::Image mapped(2, 2, 9.0f);
        EXPECT_EQ(fault::mapDataOnFaultPlane(f.projected, f.imageToWorld, *data, s, mapped, -2),
                  FaultPlaneMappingResult::Failed);
        EXPECT_EQ(mapped(0, 0), 9.0f);
    }
}
