#include <QDir>

#include <gtest/gtest.h>

#include <mapviewpicture.h>
#include <picturefile.h>

#include "picturetesthelpers.h"

using namespace kfaults;
using picturetest::countPixels;

namespace {
// The map part of a default-layout picture: left of the legend column.
QRect mapPart(const QImage& image) { return QRect(0, 0, image.width() * 3 / 4, image.height()); }

MapViewSettings flatColours()
{
    MapViewSettings settings;
    settings.shallowLightening = 0.0;
    settings.deepDarkening = 0.0;
    return settings;
}
} // namespace

TEST(MapViewPicture, HasTheRequestedSizeWithBackgroundWhereNothingIsDrawn)
{
    const std::vector<FaultMesh> faults = {
        picturetest::planarFault("F1", faultColour(0), 1000, 2000, 1500, 30, 60, 2000, 800)};
    for (const QSize size : {QSize(1200, 900), QSize(640, 480), QSize(300, 700), QSize(1, 1), QSize(0, -5)}) {
        MapViewSettings settings;
        settings.width = size.width();
        settings.height = size.height();
        const QImage image = renderMapView(faults, settings);
        EXPECT_EQ(image.size(), size.expandedTo(QSize(1, 1)));
        EXPECT_EQ(image.pixelColor(0, image.height() - 1), settings.background) << "a corner stays blank";
    }
}

TEST(MapViewPicture, EachFaultAppearsInItsOwnColourOnTheMap)
{
    const std::vector<FaultMesh> faults = {
        picturetest::planarFault("West", faultColour(0), 0, 0, 1500, 0, 70, 3000, 1000),
        picturetest::planarFault("East", faultColour(1), 2000, 0, 1500, 0, 50, 3000, 1000)};
    const QImage image = renderMapView(faults, flatColours());
    for (const FaultMesh& fault : faults) {
        const int pixels = countPixels(image, mapPart(image), [&](QColor c) { return c == fault.colour; });
        EXPECT_GT(pixels, 2000) << fault.surface.name.toStdString();
    }
}

TEST(MapViewPicture, NorthIsUpEastIsRightAndDeepPartsAreDarker)
{
    const QColor colour = faultColour(2);
    const FaultMesh north = picturetest::planarFault("North", faultColour(0), 0, 5000, 1500, 90, 60, 1500, 800);
    const FaultMesh south = picturetest::planarFault("South", faultColour(1), 0, 0, 1500, 90, 60, 1500, 800);
    const QImage image = renderMapView({north, south}, flatColours());
    auto meanRow = [&](const QColor& c) {
        long long sum = 0, n = 0;
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width() * 3 / 4; ++x)
                if (image.pixelColor(x, y) == c) sum += y, ++n;
        return n ? double(sum) / n : -1.0;
    };
    EXPECT_LT(meanRow(north.colour), meanRow(south.colour));

    // A fault striking north and dipping east: its shallow edge is west (left).
    const FaultMesh dipping = picturetest::planarFault("Dipping", colour, 0, 0, 1500, 0, 45, 3000, 2000);
    const QImage shaded = renderMapView({dipping});
    double leftValue = 0, rightValue = 0;
    int left = 0, right = 0, first = shaded.width(), last = 0;
    const auto hue = picturetest::sameHue(colour, 12);
    for (int y = 0; y < shaded.height(); ++y)
        for (int x = 0; x < shaded.width() * 3 / 4; ++x)
            if (hue(shaded.pixelColor(x, y))) first = std::min(first, x), last = std::max(last, x);
    ASSERT_LT(first, last);
    const int band = (last - first) / 10;
    for (int y = 0; y < shaded.height(); ++y) {
        for (int x = first; x <= last; ++x) {
            const QColor c = shaded.pixelColor(x, y);
            if (!hue(c)) continue;
            if (x < first + band) leftValue += c.lightnessF(), ++left;
            if (x > last - band) rightValue += c.lightnessF(), ++right;
        }
    }
    ASSERT_GT(left, 0);
    ASSERT_GT(right, 0);
    EXPECT_GT(leftValue / left, rightValue / right + 0.1);
}

TEST(MapViewPicture, NothingToDrawOrBrokenTrianglesStillGiveAPicture)
{
    EXPECT_EQ(renderMapView({}).size(), QSize(1200, 900));
    FaultMesh broken = picturetest::planarFault("Broken", faultColour(3), 0, 0, 1000, 0, 60, 1000, 500, 2);
    broken.surface.triangles.push_back({0, 1, 999});
    broken.surface.triangles.push_back({-1, 0, 1});
    const QImage image = renderMapView({broken}, flatColours());
    EXPECT_GT(countPixels(image, mapPart(image), [&](QColor c) { return c == broken.colour; }), 1000);
    FaultMesh single = broken;
    single.surface.vertices.assign(3, core::vec3(5, -100, 5));
    single.surface.triangles = {{0, 1, 2}};
    EXPECT_EQ(renderMapView({single}).size(), QSize(1200, 900)) << "a map of one point";
}
