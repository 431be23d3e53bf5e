#include <gtest/gtest.h>

#include <perspectivepicture.h>

#include "picturetesthelpers.h"

using namespace kfaults;
using picturetest::countPixels;
using picturetest::sameHue;

namespace {
QRect scenePart(const QImage& image) { return QRect(0, 0, image.width() * 3 / 4, image.height()); }
} // namespace

TEST(PerspectivePicture, HasTheRequestedSizeWithBackgroundWhereNothingIsDrawn)
{
    const std::vector<FaultMesh> faults = {
        picturetest::planarFault("F1", faultColour(0), 0, 0, 1500, 30, 60, 2000, 800)};
    for (const QSize size : {QSize(1200, 900), QSize(500, 400), QSize(2, 2)}) {
        PerspectiveSettings settings;
        settings.width = size.width();
        settings.height = size.height();
        const QImage image = renderPerspective(faults, settings);
        EXPECT_EQ(image.size(), size);
        EXPECT_EQ(image.pixelColor(image.width() - 1, image.height() - 1), settings.background);
    }
}

TEST(PerspectivePicture, ShadedFaultsKeepTheHueOfTheirColour)
{
    const std::vector<FaultMesh> faults = {
        picturetest::planarFault("Red", faultColour(1), 0, 0, 1500, 20, 60, 3000, 1200),
        picturetest::discFault("Blue", faultColour(0), 1500, 500, 1600, 110, 45, 900)};
    const QImage image = renderPerspective(faults);
    for (const FaultMesh& f : faults)
        EXPECT_GT(countPixels(image, scenePart(image), sameHue(f.colour)), 3000) << f.surface.name.toStdString();
}

TEST(PerspectivePicture, TheNearFaultHidesTheFarOneWhateverTheDrawingOrder)
{
    // Seen from the south, low above the horizon: two vertical east-west faults, the
    // southern one in front.
    const FaultMesh nearFault = picturetest::planarFault("Near", faultColour(0), 0, 0, 1500, 90, 90, 3000, 1000);
    const FaultMesh farFault = picturetest::planarFault("Far", faultColour(1), 0, 400, 1500, 90, 90, 3000, 1000);
    PerspectiveSettings settings;
    settings.viewerAzimuthDegrees = 180;
    settings.viewerElevationDegrees = 10;
    settings.verticalExaggeration = 1.0;
    const QImage alone = renderPerspective({farFault}, settings);
    const int farAlone = countPixels(alone, scenePart(alone), sameHue(farFault.colour));
    for (const auto& order : {std::vector<FaultMesh>{nearFault, farFault}, std::vector<FaultMesh>{farFault, nearFault}}) {
        const QImage both = renderPerspective(order, settings);
        const int nearPixels = countPixels(both, scenePart(both), sameHue(nearFault.colour));
        const int farPixels = countPixels(both, scenePart(both), sameHue(farFault.colour));
        EXPECT_GT(nearPixels, 10000);
        EXPECT_LT(farPixels, farAlone / 3) << "most of the far fault is hidden";
    }
}

TEST(PerspectivePicture, AutomaticExaggerationMakesTheVerticalHalfTheHorizontal)
{
    const std::vector<FaultMesh> faults = {
        picturetest::planarFault("F", faultColour(0), 0, 0, 1000, 0, 90, 4000, 100)};
    PerspectiveSettings settings;
    EXPECT_NEAR(effectiveVerticalExaggeration(faults, settings), 0.5 * 4000 / 100, 1e-6);
    settings.verticalExaggeration = 3;
    EXPECT_EQ(effectiveVerticalExaggeration(faults, settings), 3);
    settings.verticalExaggeration = 0;
    EXPECT_EQ(effectiveVerticalExaggeration({}, settings), 1.0);
}

TEST(PerspectivePicture, NothingToDrawStillGivesAPicture)
{
    const QImage image = renderPerspective({});
    EXPECT_EQ(image.size(), QSize(1200, 900));
    EXPECT_EQ(countPixels(image, scenePart(image), sameHue(faultColour(0))), 0);
}
