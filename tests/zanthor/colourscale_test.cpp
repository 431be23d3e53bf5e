#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include <img/colourscale.h>

using img::ColourScale;

namespace {
bool near(QRgb a, QRgb b, int tolerance = 6)
{
    return std::abs(qRed(a) - qRed(b)) <= tolerance && std::abs(qGreen(a) - qGreen(b)) <= tolerance &&
           std::abs(qBlue(a) - qBlue(b)) <= tolerance && qAlpha(a) == qAlpha(b);
}
} // namespace

TEST(ColourScale, EachMapRunsFromItsFirstToItsLastColour)
{
    struct Case {
        ColourScale::Map map;
        QRgb first, middle, last;
    };
    for (const Case& c : {Case{ColourScale::Map::Grey, qRgb(0, 0, 0), qRgb(128, 128, 128), qRgb(255, 255, 255)},
                          Case{ColourScale::Map::Seismic, qRgb(0, 0, 191), qRgb(255, 255, 255), qRgb(191, 0, 0)},
                          // viridis: the published table's ends and middle
                          Case{ColourScale::Map::Viridis, qRgb(68, 1, 84), qRgb(33, 145, 140), qRgb(253, 231, 37)}}) {
        EXPECT_TRUE(near(ColourScale::mapColour(c.map, 0.0), c.first)) << ColourScale::mapName(c.map).toStdString();
        EXPECT_TRUE(near(ColourScale::mapColour(c.map, 0.5), c.middle, 8)) << ColourScale::mapName(c.map).toStdString();
        EXPECT_TRUE(near(ColourScale::mapColour(c.map, 1.0), c.last)) << ColourScale::mapName(c.map).toStdString();
    }
}

TEST(ColourScale, ValuesAreSpreadOverTheRangeClampedOutsideAndNoValuesAreTransparent)
{
    ColourScale scale(ColourScale::Map::Grey, 10.0f, 20.0f);
    EXPECT_EQ(scale.colourOf(10.0f), qRgb(0, 0, 0));
    EXPECT_TRUE(near(scale.colourOf(15.0f), qRgb(128, 128, 128), 1));
    EXPECT_EQ(scale.colourOf(-5.0f), qRgb(0, 0, 0));
    EXPECT_EQ(scale.colourOf(99.0f), qRgb(255, 255, 255));
    EXPECT_EQ(scale.colourOf(-9999.0f), 0u);
    EXPECT_EQ(scale.colourOf(std::nanf("")), 0u);
    scale.setRange(5.0f, -5.0f);  // put in order
    EXPECT_EQ(scale.minimum(), -5.0f);
    ColourScale flat(ColourScale::Map::Grey, 3.0f, 3.0f);
    EXPECT_EQ(flat.colourOf(2.0f), qRgb(0, 0, 0));
    EXPECT_EQ(flat.colourOf(3.0f), qRgb(255, 255, 255));
}

TEST(ColourScale, RangesFromTheDataClipSignedAmplitudesSymmetricallyAndSkipNoValues)
{
    std::vector<float> amplitudes;
    for (int i = 1; i <= 100; ++i) amplitudes.push_back(i % 2 ? float(i) : -float(i));
    amplitudes.push_back(-9999.0f);
    amplitudes.push_back(5000.0f);  // one spike: clipped away
    const auto clip = ColourScale::symmetricClipRange(amplitudes.data(), amplitudes.size(), 98.0);
    EXPECT_EQ(clip.first, -clip.second);
    EXPECT_GE(clip.second, 98.0f);
    EXPECT_LE(clip.second, 100.0f);
    const auto all = ColourScale::minMaxRange(amplitudes.data(), amplitudes.size());
    EXPECT_EQ(all.first, -100.0f);
    EXPECT_EQ(all.second, 5000.0f);
    EXPECT_EQ(ColourScale::symmetricClipRange(nullptr, 0), (std::pair<float, float>{-1.0f, 1.0f}));
    const float none[] = {-9999.0f};
    EXPECT_EQ(ColourScale::minMaxRange(none, 1), (std::pair<float, float>{0.0f, 1.0f}));
}

TEST(ColourScale, NamesRoundTripAndTheBarRunsUpOrRight)
{
    for (const QString& name : ColourScale::mapNames()) {
        ColourScale::Map map = ColourScale::Map::Grey;
        ASSERT_TRUE(ColourScale::mapFromName(name, map));
        EXPECT_EQ(ColourScale::mapName(map), name);
    }
    ColourScale::Map untouched = ColourScale::Map::Seismic;
    EXPECT_FALSE(ColourScale::mapFromName("Jet", untouched));
    EXPECT_EQ(untouched, ColourScale::Map::Seismic);
    const ColourScale grey(ColourScale::Map::Grey, 0, 1);
    const QImage up = grey.bar(10, 100, true);
    EXPECT_EQ(up.pixel(5, 99), qRgb(0, 0, 0));
    EXPECT_EQ(up.pixel(5, 0), qRgb(255, 255, 255));
    const QImage right = grey.bar(100, 10, false);
    EXPECT_EQ(right.pixel(0, 5), qRgb(0, 0, 0));
}
