// The framework's hole filling of images with no-value samples.
#include <gtest/gtest.h>

#include <img/holefill.h>

namespace {

constexpr float kNo = -9999.0f;

// A 9 x 9 image of value 10 + c inside the square 2..6 x 2..6, without value elsewhere,
// with the given holes inside.
img::Image square(std::initializer_list<std::pair<int, int>> holes)
{
    img::Image image(9, 9, kNo);
    for (int r = 2; r <= 6; ++r)
        for (int c = 2; c <= 6; ++c) image(c, r) = float(10 + c);
    for (const auto& h : holes) image(h.first, h.second) = kNo;
    return image;
}

} // namespace

TEST(HoleFill, HolesCloseWithTheMeanOfTheirNeighboursAndTheOutlineStays)
{
    img::Image single = square({{4, 4}});
    EXPECT_EQ(img::fillHoles(single, 10, 3, img::HoleGrowth::HolesOnly), 1);
    EXPECT_FLOAT_EQ(single(4, 4), 14.0f);  // the mean of a linear field around it
    img::Image image = square({{4, 4}, {3, 5}, {4, 5}, {6, 3}});  // the last on the edge
    EXPECT_EQ(img::fillHoles(image, 10, 3, img::HoleGrowth::HolesOnly), 4);
    EXPECT_EQ(img::countValued(image), 25u);          // nothing outside the square
}

TEST(HoleFill, SettingsDecideWhatIsFilled)
{
    const struct {
        int passes, neighbours;
        img::HoleGrowth growth;
        int filled;
    } cases[] = {
        {10, 3, img::HoleGrowth::HolesOnly, 9},  // the 3 x 3 hole closes over two passes
        {1, 3, img::HoleGrowth::HolesOnly, 4},   // one pass: the corners, between diagonals
        {10, 9, img::HoleGrowth::HolesOnly, 0},  // no pixel has nine neighbours
        {0, 3, img::HoleGrowth::HolesOnly, 0},
        {1, 3, img::HoleGrowth::Grow, 8 + 12},   // the rim, and 3 pixels beside each side
    };
    for (const auto& c : cases) {
        img::Image image = square({{3, 3}, {4, 3}, {5, 3}, {3, 4}, {4, 4}, {5, 4}, {3, 5}, {4, 5}, {5, 5}});
        EXPECT_EQ(img::fillHoles(image, c.passes, c.neighbours, c.growth), c.filled)
            << c.passes << " " << c.neighbours << " " << int(c.growth);
    }
}

TEST(HoleFill, AnImageWithoutValuesStaysEmpty)
{
    img::Image image(5, 5, kNo);
    EXPECT_EQ(img::fillHoles(image, 10, 1, img::HoleGrowth::Grow), 0);
    EXPECT_EQ(img::countValued(image), 0u);
}
