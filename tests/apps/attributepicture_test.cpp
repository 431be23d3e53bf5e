#include <gtest/gtest.h>

#include <QColor>
#include <QRect>

#include <attributepicture.h>

using namespace kfaults;

namespace {

Section constantSection(const QString& title, int width, int height, float value)
{
    Section s{title, ZN3DImage<float>(width, height, 1)};
    std::fill(s.values.data(), s.values.data() + s.values.voxelCount(), value);
    return s;
}

// The bounding box of the pixels of `colour` within `area`; empty when there are none.
QRect boxOf(const QImage& image, const QRect& area, QRgb colour)
{
    QRect box;
    for (int y = area.top(); y <= area.bottom(); ++y)
        for (int x = area.left(); x <= area.right(); ++x)
            if (image.pixel(x, y) == colour) box |= QRect(x, y, 1, 1);
    return box;
}

// The horizontal extent of the pixels that are not white in rows [top, bottom] left of
// column `end`.
std::pair<int, int> inkColumns(const QImage& image, int top, int bottom, int end)
{
    int first = image.width(), last = -1;
    for (int y = top; y <= bottom; ++y)
        for (int x = 0; x < end; ++x)
            if (image.pixel(x, y) != qRgb(255, 255, 255)) first = std::min(first, x), last = std::max(last, x);
    return {first, last};
}

// An inline of few crosslines is narrower than its title: the title is shown whole,
// wider than its panel, and the panel beside it starts after it.
TEST(AttributePicture, ANarrowSectionKeepsItsWholeTitleAndThePanelsDoNotOverlap)
{
    const int crosslines = 6, samples = 40;
    const QImage picture = renderAttributePicture(
        constantSection("Seismic, inline 123", crosslines, samples, 0.0F),
        constantSection("Likelihood, inline 123", crosslines, samples, 1.0F),
        constantSection("Seismic, slice 20", samples, samples, 0.0F),
        constantSection("Likelihood, slice 20", samples, samples, 1.0F), 80);
    ASSERT_FALSE(picture.isNull());
    const QRgb grey = seismicColour(0.0F, 1.0F);
    const QRgb red = likelihoodColour(1.0F);
    // The likelihood panels are the only red; the seismic panels the grey of their rows
    // through the likelihood panels (titles may hold that grey too, in their edges).
    const QRect likelihood = boxOf(picture, QRect(0, 0, picture.width(), picture.height() / 2), red);
    const QRect likelihoodSlice =
        boxOf(picture, QRect(0, picture.height() / 2, picture.width(), picture.height() / 2), red);
    ASSERT_FALSE(likelihood.isEmpty());
    ASSERT_FALSE(likelihoodSlice.isEmpty());
    const QRect seismic = boxOf(picture, QRect(0, likelihood.top(), picture.width(), likelihood.height()), grey);
    const QRect seismicSlice =
        boxOf(picture, QRect(0, likelihoodSlice.top(), picture.width(), likelihoodSlice.height()), grey);
    // The panels keep the sections' proportions, one scale for all (the frame drawn
    // round each panel covers a pixel of its edges).
    EXPECT_EQ(seismic.size(), likelihood.size());
    EXPECT_NEAR(double(likelihood.width()) / likelihood.height(), double(crosslines) / samples, 0.01);
    EXPECT_EQ(likelihoodSlice.size(), QSize(likelihood.height(), likelihood.height()));
    EXPECT_EQ(seismicSlice.size(), likelihoodSlice.size());
    // The seismic inline's title is wider than its panel and shown whole: its ink spans
    // more than the panel, and the panel beside it starts after it.
    const auto [first, last] = inkColumns(picture, 0, seismic.top() - 2, likelihood.left());
    ASSERT_LE(first, last);
    EXPECT_GT(last - first + 1, 2 * seismic.width());
    EXPECT_LT(first, seismic.left());
    EXPECT_LT(seismic.right(), likelihood.left());
    EXPECT_LT(seismicSlice.right(), likelihoodSlice.left());
}

} // namespace
