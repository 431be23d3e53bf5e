#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

#include <attribute/linesmoothing.h>
#include <attribute/recursivegaussian.h>

using namespace fault::attribute;

namespace {

// Impulse response of a line of n samples, impulse in the middle.
std::vector<float> impulseResponse(double sigma, int n, LineEnds ends)
{
    std::vector<float> line(static_cast<std::size_t>(n), 0.0F);
    line[static_cast<std::size_t>(n / 2)] = 1.0F;
    RecursiveGaussian(sigma).applyInterleaved(line.data(), n, 1, 1, ends);
    return line;
}

ZN3DImage<float> randomImage(int nx, int ny, int nz, unsigned seed)
{
    std::mt19937 rng(seed);
    std::normal_distribution<float> normal;
    ZN3DImage<float> image(nx, ny, nz);
    for (std::size_t i = 0; i < image.voxelCount(); ++i) image.data()[i] = normal(rng);
    return image;
}

} // namespace

TEST(RecursiveGaussian, ImpulseResponseSumsToOneWithTheVarianceOfItsSigma)
{
    for (double sigma : {1.0, 2.0, 4.0, 8.0, 16.0}) {
        const int n = 20 * static_cast<int>(sigma) + 41;
        const std::vector<float> h = impulseResponse(sigma, n, LineEnds::Zero);
        double sum = 0.0, variance = 0.0;
        for (int k = 0; k < n; ++k) {
            const double t = k - n / 2;
            sum += h[static_cast<std::size_t>(k)];
            variance += t * t * h[static_cast<std::size_t>(k)];
        }
        EXPECT_NEAR(sum, 1.0, 5e-4) << sigma;
        EXPECT_NEAR(std::sqrt(variance), sigma, 0.002 * sigma) << sigma;
        // Symmetric: the backward pass undoes the forward pass's delay.
        for (int k = 1; k < 3 * static_cast<int>(sigma); ++k)
            EXPECT_NEAR(h[static_cast<std::size_t>(n / 2 + k)], h[static_cast<std::size_t>(n / 2 - k)], 1e-4) << sigma;
    }
}

TEST(RecursiveGaussian, ConstantEndsKeepAConstantLineAndZeroEndsLoseMassNearTheEnds)
{
    std::vector<float> constant(30, 3.0F);
    RecursiveGaussian(4.0).applyInterleaved(constant.data(), 30, 1, 1, LineEnds::Constant);
    for (float v : constant) EXPECT_NEAR(v, 3.0F, 1e-4F);
    std::vector<float> zero(30, 3.0F);
    RecursiveGaussian(4.0).applyInterleaved(zero.data(), 30, 1, 1, LineEnds::Zero);
    EXPECT_LT(zero.front(), 2.0F);   // half the window lies beyond the end
    EXPECT_NEAR(zero[15], 3.0F, 0.1F);
}

TEST(RecursiveGaussian, SigmasBelowHalfASampleLeaveLinesAsTheyAre)
{
    EXPECT_TRUE(RecursiveGaussian(0.4).isIdentity());
    EXPECT_TRUE(RecursiveGaussian(std::nan("")).isIdentity());
    std::vector<float> line{1.0F, 5.0F, 2.0F};
    RecursiveGaussian(0.2).applyInterleaved(line.data(), 3, 1, 1, LineEnds::Constant);
    EXPECT_EQ(line, (std::vector<float>{1.0F, 5.0F, 2.0F}));
}

TEST(RecursiveGaussian, EveryAxisOfAnImageIsFilteredLikeItsLinesOneByOne)
{
    const int nx = 19, ny = 11, nz = 7;
    const RecursiveGaussian g(1.5);
    for (int axis = 0; axis < 3; ++axis) {
        ZN3DImage<float> image = randomImage(nx, ny, nz, 5);
        std::unique_ptr<ZN3DImage<float>> expected = image.clone();
        g.applyAlongAxis(image, axis, LineEnds::Constant);
        const int lengths[3] = {nx, ny, nz};
        const std::ptrdiff_t strides[3] = {1, nx, static_cast<std::ptrdiff_t>(nx) * ny};
        for (int z = 0; z < (axis == 2 ? 1 : nz); ++z)
            for (int y = 0; y < (axis == 1 ? 1 : ny); ++y)
                for (int x = 0; x < (axis == 0 ? 1 : nx); ++x) {
                    std::vector<float> line(static_cast<std::size_t>(lengths[axis]));
                    float* first = &(*expected)(x, y, z);
                    for (int k = 0; k < lengths[axis]; ++k) line[static_cast<std::size_t>(k)] = first[k * strides[axis]];
                    g.applyInterleaved(line.data(), lengths[axis], 1, 1, LineEnds::Constant);
                    const float* got = &image(x, y, z);
                    for (int k = 0; k < lengths[axis]; ++k)
                        ASSERT_NEAR(got[k * strides[axis]], line[static_cast<std::size_t>(k)], 1e-5F) << axis;
                }
    }
}

TEST(LineSmoothing, AnImpulseSpreadsAlongItsDigitalLineOnly)
{
    const int na = 40, nb = 41;
    for (double shift : {0.0, 0.3, -0.7, 1.0}) {
        std::vector<float> slice(static_cast<std::size_t>(na) * nb, 0.0F);
        const int a0 = 20, b0 = 20;
        slice[static_cast<std::size_t>(b0) * na + a0] = 1.0F;
        smoothAlongLines(slice.data(), na, nb, shift, RecursiveGaussian(3.0));
        double total = 0.0;
        for (int b = 0; b < nb; ++b) {
            const int onLine = a0 + lineOffset(b, shift) - lineOffset(b0, shift);
            for (int a = 0; a < na; ++a) {
                const float v = slice[static_cast<std::size_t>(b) * na + a];
                total += v;
                if (a != onLine) {
                    EXPECT_EQ(v, 0.0F) << shift << " " << a << " " << b;
                }
            }
        }
        EXPECT_NEAR(total, 1.0, 1e-3) << shift;
    }
}

TEST(LineSmoothing, LinesLeavingTheSliceLoseWhatLiesBeyond)
{
    const int na = 10, nb = 30;
    std::vector<float> ones(static_cast<std::size_t>(na) * nb, 1.0F);
    smoothAlongLines(ones.data(), na, nb, 1.0, RecursiveGaussian(4.0));
    // Lines through a = 0 at row b came in from outside: less than a whole window.
    EXPECT_LT(ones[static_cast<std::size_t>(15) * na + 0], 0.9F);
    EXPECT_LT(ones[static_cast<std::size_t>(15) * na + 9], 0.9F);
}
