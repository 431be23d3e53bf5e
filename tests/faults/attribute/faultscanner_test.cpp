#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include <omp.h>

#include <attribute/faultscanner.h>
#include <attribute/linesmoothing.h>
#include <attribute/recursivegaussian.h>
#include <znstridedprogress.h>

using namespace fault::attribute;

namespace {

// Semblance factors of a slab: random energies, each numerator a share of its
// denominator, and a block without data in part of its first slices.
struct Factors {
    SlabArray<float> num, den;
};
Factors randomFactors(int na, int nb, int nz, unsigned seed)
{
    Factors f;
    f.num.allocate(na, nb, nz);
    f.den.allocate(na, nb, nz);
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> unit(0.0F, 1.0F);
    for (std::size_t i = 0; i < f.den.sliceSize() * static_cast<std::size_t>(nz); ++i) {
        f.den.data()[i] = 0.2F + unit(random);
        f.num.data()[i] = f.den.data()[i] * (0.5F + 0.5F * unit(random));
    }
    for (int z = 0; z < std::min(nz, 6); ++z)
        for (int b = 0; b < nb / 2; ++b)
            for (int a = 0; a < na / 2; ++a) {
                f.num.slice(z)[b * na + a] = 0.0F;
                f.den.slice(z)[b * na + a] = 0.0F;
            }
    return f;
}

// The semblance of every orientation of `plan` at every keyed voxel (x fastest), each
// window summed slice by slice along its digital line: scan-major.
std::vector<float> semblanceSliceBySlice(const ScanPlan& plan, const Factors& f, int firstSlice, int firstKeyed,
                                         int keyed, float floor)
{
    const int nx = f.num.na(), ny = f.num.nb(), nz = f.num.nz();
    const std::size_t voxels = static_cast<std::size_t>(nx) * ny * keyed;
    std::vector<float> semblance(plan.scans.size() * voxels, 1.0F);
    for (const StrikeGroup& g : plan.groups) {
        const int na = g.transposed ? ny : nx, nb = g.transposed ? nx : ny;
        // Smoothed slices in the group's layout.
        std::vector<float> sn(f.num.sliceSize() * nz), sd(sn.size());
        for (int k = 0; k < nz; ++k)
            for (int y = 0; y < ny; ++y)
                for (int x = 0; x < nx; ++x) {
                    const int a = g.transposed ? y : x, b = g.transposed ? x : y;
                    sn[(static_cast<std::size_t>(k) * nb + b) * na + a] = f.num.slice(k)[y * nx + x];
                    sd[(static_cast<std::size_t>(k) * nb + b) * na + a] = f.den.slice(k)[y * nx + x];
                }
        const RecursiveGaussian gaussian(g.sigmaSteps);
        for (int k = 0; k < nz; ++k) {
            smoothAlongLines(sn.data() + f.num.sliceSize() * k, na, nb, g.shift, gaussian);
            smoothAlongLines(sd.data() + f.num.sliceSize() * k, na, nb, g.shift, gaussian);
        }
        for (const DipWindow& w : g.dips)
            for (int z = firstKeyed; z < firstKeyed + keyed; ++z)
                for (int b = 0; b < nb; ++b)
                    for (int a = 0; a < na; ++a) {
                        double n = 0.0, d = 0.0;
                        for (int k = z - w.halfSteps; k <= z + w.halfSteps; ++k) {
                            const int local = k - firstSlice;
                            const int on = a + lineOffset(k, w.shift) - lineOffset(z, w.shift);
                            if (local < 0 || local >= nz || on < 0 || on >= na) continue;
                            n += sn[(static_cast<std::size_t>(local) * nb + b) * na + on];
                            d += sd[(static_cast<std::size_t>(local) * nb + b) * na + on];
                        }
                        const int x = g.transposed ? b : a, y = g.transposed ? a : b;
                        const double s = d > floor ? std::clamp(n / d, 0.0, 1.0) : 1.0;
                        semblance[static_cast<std::size_t>(w.scan) * voxels +
                                  (static_cast<std::size_t>(z - firstKeyed) * ny + y) * nx + x] =
                            static_cast<float>(s);
                    }
    }
    return semblance;
}

float meanTimesMillionth(const SlabArray<float>& den)
{
    double sum = 0.0;
    const std::size_t count = den.sliceSize() * static_cast<std::size_t>(den.nz());
    for (std::size_t i = 0; i < count; ++i) sum += den.data()[i];
    return static_cast<float>(1e-6 * sum / static_cast<double>(count));
}

// A plan of few orientations for small slabs: strikes on, near and between the axes.
ScanPlan smallPlan()
{
    FaultAttributeSettings settings;
    settings.strikeStep = 22.5;
    settings.minDip = 50.0;
    settings.dipStep = 20.0;
    settings.dipHalfLength = 6.0;
    settings.strikeSigma = 2.0;
    return planScans(settings);
}

// The smallest semblance of voxel v over every scan of a reference from
// semblanceSliceBySlice of `voxels` voxels.
float smallestOf(const std::vector<float>& reference, std::size_t scans, std::size_t voxels, std::size_t v)
{
    float least = 1.0F;
    for (std::size_t s = 0; s < scans; ++s) least = std::min(least, reference[s * voxels + v]);
    return least;
}

} // namespace

// Every voxel's key holds the smallest semblance of its windows and an orientation that
// has it, whatever the threads, with windows cut by either end of the factors and lines
// that run far enough along a slab for the running sums to be moved back along their rows.
TEST(FaultScanner, KeysHoldTheSmallestSemblanceOfTheWindowsSummedSliceBySlice)
{
    const ScanPlan plan = smallPlan();
    ASSERT_GT(plan.groups.size(), 8U);
    struct Case {
        int nx, ny, nz;
        int firstSlice, firstKeyed, keyed;
    };
    const int threads = omp_get_max_threads();
    for (const Case& c : {Case{17, 13, 90, 100, 103, 84},    // a long slab, halos shorter than the windows
                          Case{12, 15, 30, 0, 6, 18},         // whole halos
                          Case{9, 9, 12, 40, 40, 12}}) {      // no halo at all
        for (int team : {1, 3}) {
            const Factors f = randomFactors(c.nx, c.ny, c.nz, static_cast<unsigned>(c.nx + team));
            const float floor = meanTimesMillionth(f.den);
            const std::vector<float> reference =
                semblanceSliceBySlice(plan, f, c.firstSlice, c.firstKeyed, c.keyed, floor);
            Factors scanned = randomFactors(c.nx, c.ny, c.nz, static_cast<unsigned>(c.nx + team));
            SlabArray<std::uint32_t> keys;
            ASSERT_TRUE(keys.allocate(c.nx, c.ny, c.keyed));
            ZNStridedProgress progress(QString(), FaultScanner(plan).progressSteps(), ZNStridedProgress::kNoBar);
            omp_set_num_threads(team);
            const bool ok = FaultScanner(plan).scan(scanned.num, scanned.den, c.firstSlice, keys, c.firstKeyed, progress);
            omp_set_num_threads(threads);
            ASSERT_TRUE(ok);
            EXPECT_EQ(progress.done(), static_cast<qint64>(plan.groups.size()));
            ASSERT_EQ(keys.na(), c.nx);
            const std::size_t voxels = keys.sliceSize() * static_cast<std::size_t>(c.keyed);
            int wrong = 0;
            for (std::size_t i = 0; i < voxels; ++i) {
                const float least = smallestOf(reference, plan.scans.size(), voxels, i);
                const std::uint32_t key = keys.data()[i];
                const bool right = key != kNoScanKey && std::fabs(keySemblance(key) - least) < 2e-4F &&
                                   std::fabs(reference[static_cast<std::size_t>(keyScan(key)) * voxels + i] - least) < 2e-4F;
                if (!right && ++wrong <= 3)
                    ADD_FAILURE() << c.nx << " team " << team << " voxel " << i << ": key " << keySemblance(key)
                                  << " scan " << keyScan(key) << ", smallest " << least;
            }
            EXPECT_EQ(wrong, 0) << c.nx << " team " << team;
        }
    }
}

// Slices without data between data (a gap, as between two volumes padded with zeros, or
// below the data of one): every window inside the gap reads "no data" (semblance 1), and
// the windows of the data after it read their own semblance, however much energy the
// running sums let go of before the gap.
TEST(FaultScanner, WindowsInAGapOfEmptySlicesReadNoDataAndNothingOfTheDataBeforeStays)
{
    const ScanPlan plan = smallPlan();
    const int nx = 14, ny = 11, nz = 90, gapStart = 40, gapEnd = 60;
    auto factors = [&] {
        Factors f = randomFactors(nx, ny, nz, 7);
        for (int z = gapStart; z < gapEnd; ++z) {
            std::fill(f.num.slice(z), f.num.slice(z) + f.num.sliceSize(), 0.0F);
            std::fill(f.den.slice(z), f.den.slice(z) + f.den.sliceSize(), 0.0F);
        }
        // Energies four orders of magnitude above the rest just before the gap, as a
        // strong reflector: the most rounding the running sums can carry into it.
        for (int z = gapStart - 10; z < gapStart; ++z)
            for (std::size_t i = 0; i < f.den.sliceSize(); ++i) {
                f.num.slice(z)[i] *= 1e4F;
                f.den.slice(z)[i] *= 1e4F;
            }
        return f;
    };
    Factors f = factors();
    const float floor = meanTimesMillionth(f.den);
    SlabArray<std::uint32_t> keys;
    ASSERT_TRUE(keys.allocate(nx, ny, nz));
    ZNStridedProgress progress(QString(), FaultScanner(plan).progressSteps(), ZNStridedProgress::kNoBar);
    ASSERT_TRUE(FaultScanner(plan).scan(f.num, f.den, 0, keys, 0, progress));
    const std::vector<float> reference = semblanceSliceBySlice(plan, factors(), 0, 0, nz, floor);
    const std::size_t voxels = keys.sliceSize() * static_cast<std::size_t>(nz);
    int wrong = 0, noData = 0;
    for (int z = gapStart; z < nz; ++z)
        for (std::size_t i = 0; i < keys.sliceSize(); ++i) {
            const std::size_t v = static_cast<std::size_t>(z) * keys.sliceSize() + i;
            const float least = smallestOf(reference, plan.scans.size(), voxels, v);
            if (least == 1.0F) ++noData;
            if (std::fabs(keySemblance(keys.data()[v]) - least) >= 2e-4F && ++wrong <= 3)
                ADD_FAILURE() << "slice " << z << " voxel " << i << ": key " << keySemblance(keys.data()[v])
                              << ", smallest " << least;
        }
    EXPECT_GT(noData, 0);
    EXPECT_EQ(wrong, 0);
}

TEST(LineSmoothing, PaddedSlicesGetTheInPlaceResultAndKeepTheirZeroMargins)
{
    const int na = 23, nb = 19;
    std::vector<float> first(static_cast<std::size_t>(na) * nb), second(first.size());
    for (std::size_t i = 0; i < first.size(); ++i) {
        first[i] = std::sin(0.37F * static_cast<float>(i));
        second[i] = std::cos(0.11F * static_cast<float>(i));
    }
    for (double sigma : {0.3, 2.5}) {
        for (double shift : {0.0, 0.6, -1.0}) {
            std::vector<float> inPlace0 = first, inPlace1 = second;
            smoothAlongLines(inPlace0.data(), na, nb, shift, RecursiveGaussian(sigma));
            smoothAlongLines(inPlace1.data(), na, nb, shift, RecursiveGaussian(sigma));
            std::vector<float> out0(PaddedSlice::floats(na, nb), 0.0F), out1(out0.size(), 0.0F);
            smoothAlongLinesPadded(first.data(), second.data(), out0.data(), out1.data(), na, nb, shift,
                                   RecursiveGaussian(sigma));
            double inside0 = 0.0, inside1 = 0.0, all0 = 0.0, all1 = 0.0;
            for (int b = 0; b < nb; ++b)
                for (int a = 0; a < na; ++a) {
                    const std::size_t i = static_cast<std::size_t>(b) * na + a;
                    ASSERT_NEAR(PaddedSlice::row(out0.data(), na, b)[a], inPlace0[i], 1e-6F) << shift << " " << a;
                    ASSERT_NEAR(PaddedSlice::row(out1.data(), na, b)[a], inPlace1[i], 1e-6F) << shift << " " << a;
                    inside0 += std::fabs(PaddedSlice::row(out0.data(), na, b)[a]);
                    inside1 += std::fabs(PaddedSlice::row(out1.data(), na, b)[a]);
                }
            for (std::size_t i = 0; i < out0.size(); ++i) {
                all0 += std::fabs(out0[i]);
                all1 += std::fabs(out1[i]);
            }
            EXPECT_EQ(all0, inside0);   // nothing written to the margins
            EXPECT_EQ(all1, inside1);
        }
    }
}
