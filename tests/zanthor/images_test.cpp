#include <gtest/gtest.h>

#include <img/image.h>
#include <zn3dimage.h>

TEST(ZN3DImage, SamplesAreContiguousWithXFastestThenYThenZ)
{
    ZN3DImage<int> image(4, 3, 2);
    for (int z = 0; z < 2; ++z)
        for (int y = 0; y < 3; ++y)
            for (int x = 0; x < 4; ++x) image(x, y, z) = 100 * z + 10 * y + x;
    for (int i = 0; i < 24; ++i) {
        const int x = i % 4, y = (i / 4) % 3, z = i / 12;
        EXPECT_EQ(image.data()[i], 100 * z + 10 * y + x);
        EXPECT_EQ(image.index(x, y, z), static_cast<size_t>(i));
    }
    EXPECT_EQ(image.slice(1), image.data() + 12);
    EXPECT_EQ(image.slice(2), nullptr);
    EXPECT_EQ(image.slice(-1), nullptr);
    EXPECT_EQ(image.sliceSize(), 12u);
    EXPECT_EQ(image.voxelCount(), 24u);
}

TEST(ZN3DImage, TakesItsSizesFromItsBlocSpaceAndStartsAtTheGivenValue)
{
    const georef::BlocSpace space(5, 2, 3, core::mat4::translation({1.0, 2.0, 3.0}));
    const ZN3DImage<float> image(space, -9999.0f);
    EXPECT_EQ(image.blocSpace(), space);
    EXPECT_EQ(image.nx(), 5);
    EXPECT_EQ(image.ny(), 2);
    EXPECT_EQ(image.nz(), 3);
    for (size_t i = 0; i < image.voxelCount(); ++i) EXPECT_EQ(image.data()[i], -9999.0f);
    EXPECT_EQ(ZN3DImage<int>(2, 2, 2).data()[7], 0);
}

TEST(ZN3DImage, CheckedAccessRefusesPositionsOutside)
{
    ZN3DImage<int> image(2, 2, 2);
    struct Position {
        int x, y, z;
    };
    for (const Position p : {Position{-1, 0, 0}, Position{2, 0, 0}, Position{0, -1, 0},
                             Position{0, 2, 0}, Position{0, 0, -1}, Position{0, 0, 2}}) {
        EXPECT_FALSE(image.contains(p.x, p.y, p.z));
        EXPECT_FALSE(image.setValue(p.x, p.y, p.z, 5));
        EXPECT_EQ(image.value(p.x, p.y, p.z, -9999), -9999);
    }
    EXPECT_TRUE(image.setValue(1, 1, 1, 5));
    EXPECT_EQ(image.value(1, 1, 1, -9999), 5);
    for (size_t i = 0; i + 1 < image.voxelCount(); ++i) EXPECT_EQ(image.data()[i], 0);
}

TEST(ZN3DImage, AcceptsOnlyABlocSpaceOfItsOwnSize)
{
    ZN3DImage<int> image(3, 2, 1);
    const georef::BlocSpace moved(3, 2, 1, core::mat4::translation({0.0, 0.0, 7.0}));
    EXPECT_TRUE(image.setBlocSpace(moved));
    EXPECT_EQ(image.blocSpace(), moved);
    EXPECT_FALSE(image.setBlocSpace(georef::BlocSpace(3, 2, 2)));
    EXPECT_EQ(image.blocSpace(), moved);
}

TEST(ZN3DImage, ClonesAreDeepCopies)
{
    ZN3DImage<int> image(2, 2, 2);
    image.fill(3);
    auto copy = image.clone();
    ASSERT_NE(copy, nullptr);
    image(0, 0, 0) = 9;
    EXPECT_EQ((*copy)(0, 0, 0), 3);
    EXPECT_EQ(copy->blocSpace(), image.blocSpace());
}

TEST(ZN3DImage, AnImpossibleAllocationGivesANullImageInsteadOfThrowing)
{
    const ZN3DImage<double> huge(georef::BlocSpace(1 << 20, 1 << 20, 1 << 20));
    EXPECT_TRUE(huge.isNull());
    EXPECT_TRUE(huge.isEmpty());
    EXPECT_EQ(huge.nx(), 0);
    EXPECT_EQ(huge.data(), nullptr);
    EXPECT_FALSE(ZN3DImage<int>().isNull());
}

TEST(Image, RowsFollowEachOtherAndCheckedAccessRefusesPixelsOutside)
{
    img::IndexImage image(3, 2, -9999);
    EXPECT_EQ(image.width(), 3);
    EXPECT_EQ(image.height(), 2);
    EXPECT_TRUE(image.setValue(2, 1, 4));
    EXPECT_EQ(image.data()[5], 4);
    EXPECT_EQ(image.row(1), image.data() + 3);
    EXPECT_EQ(image.row(2), nullptr);
    EXPECT_FALSE(image.setValue(3, 0, 1));
    EXPECT_FALSE(image.setValue(0, -1, 1));
    EXPECT_EQ(image.value(-1, 0, 7), 7);
    EXPECT_EQ(image.value(0, 0, 7), -9999);
    const img::Image empty(-4, 3);
    EXPECT_TRUE(empty.isEmpty());
    EXPECT_FALSE(empty.isNull());
    auto copy = image.clone();
    image.fill(1);
    EXPECT_EQ((*copy)(2, 1), 4);
}
