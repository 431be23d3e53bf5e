#include <gtest/gtest.h>

#include <unfoldedpicture.h>

#include "picturetesthelpers.h"

using namespace kfaults;
using picturetest::countPixels;

namespace {
QRect imagePart(const QImage& image) { return QRect(0, 0, image.width() * 80 / 100, image.height()); }
QRect barPart(const QImage& image) { return QRect(image.width() * 84 / 100, 0, image.width(), image.height()); }

double meanCoordinate(const QImage& image, const QRect& area, const QColor& colour, bool rows)
{
    long long sum = 0, n = 0;
    for (int y = area.top(); y <= area.bottom(); ++y)
        for (int x = area.left(); x <= area.right(); ++x)
            if (image.pixelColor(x, y) == colour) sum += rows ? y : x, ++n;
    return n ? double(sum) / n : -1.0;
}
} // namespace

TEST(UnfoldedPicture, HasTheRequestedSizeAndEveryIdInItsColourBesideItsBar)
{
    IdImage ids(40, 20);
    for (int row = 2; row < 18; ++row)
        for (int column = 0; column < 40; ++column) ids.set(column, row, column < 20 ? 7 : 12);
    UnfoldedSettings settings;
    settings.width = 900;
    settings.height = 500;
    const QImage image = renderUnfolded(ids, settings);
    ASSERT_EQ(image.size(), QSize(900, 500));
    EXPECT_EQ(image.pixelColor(0, image.height() - 1), settings.background);
    for (int id : {7, 12}) {
        EXPECT_GT(countPixels(image, imagePart(image), [&](QColor c) { return c == patchColour(id); }), 5000) << id;
        EXPECT_GT(countPixels(image, barPart(image), [&](QColor c) { return c == patchColour(id); }), 50) << id;
    }
    EXPECT_GT(countPixels(image, imagePart(image), [&](QColor c) { return c == settings.empty; }), 1000)
        << "empty cells show as empty";
    EXPECT_LT(meanCoordinate(image, imagePart(image), patchColour(7), false),
              meanCoordinate(image, imagePart(image), patchColour(12), false))
        << "column 0 is on the left";
}

TEST(UnfoldedPicture, RowZeroIsOnTop)
{
    IdImage ids(3, 2);
    for (int column = 0; column < 3; ++column) {
        ids.set(column, 0, 1);
        ids.set(column, 1, 2);
    }
    const QImage image = renderUnfolded(ids);
    EXPECT_LT(meanCoordinate(image, imagePart(image), patchColour(1), true),
              meanCoordinate(image, imagePart(image), patchColour(2), true));
}

TEST(UnfoldedPicture, ManyIdsStillFitTheBarAndBrokenImagesGiveANote)
{
    IdImage many(300, 100);
    for (int row = 0; row < 100; ++row)
        for (int column = 0; column < 300; ++column) many.set(column, row, column);
    EXPECT_EQ(renderUnfolded(many).size(), QSize(1000, 700));
    IdImage broken(10, 10);
    broken.ids.pop_back();
    EXPECT_FALSE(broken.isConsistent());
    EXPECT_EQ(broken.at(0, 0), core::kNoValue);
    const QImage image = renderUnfolded(broken);
    EXPECT_EQ(image.size(), QSize(1000, 700));
    EXPECT_EQ(renderUnfolded(IdImage()).size(), QSize(1000, 700));
}

TEST(UnfoldedPicture, NeighbouringIdsGetClearlyDifferentStableColours)
{
    for (int id = -50; id < 500; ++id) {
        const QColor a = patchColour(id), b = patchColour(id + 1);
        const int distance = std::abs(a.red() - b.red()) + std::abs(a.green() - b.green()) + std::abs(a.blue() - b.blue());
        EXPECT_GT(distance, 60) << id;
        EXPECT_EQ(patchColour(id), a);
    }
    EXPECT_EQ(patchColour(core::kNoValue), QColor(Qt::gray));
}

TEST(IdImage, OutsideTheImageReadsAsNoValueAndIsNotWritten)
{
    IdImage ids(4, 3, 5);
    EXPECT_EQ(ids.at(3, 2), 5);
    EXPECT_EQ(ids.at(4, 0), core::kNoValue);
    EXPECT_EQ(ids.at(-1, 0), core::kNoValue);
    EXPECT_FALSE(ids.set(0, 3, 9));
    EXPECT_TRUE(ids.set(0, 2, 9));
    EXPECT_EQ(ids.at(0, 2), 9);
    EXPECT_EQ(IdImage(-3, 4).ids.size(), 0u);
}
