#include <gtest/gtest.h>

#include <property/znpropertysheet.h>
#include <property/znstyleicons.h>

namespace {

// Pixels of row `y` that are painted (not transparent).
int paintedInRow(const QImage& image, int y)
{
    int n = 0;
    for (int x = 0; x < image.width(); ++x) n += qAlpha(image.pixel(x, y)) != 0;
    return n;
}

int paintedPixels(const QImage& image)
{
    int n = 0;
    for (int y = 0; y < image.height(); ++y) n += paintedInRow(image, y);
    return n;
}

} // namespace

TEST(PropertySheet, KeepsGroupsAndRowsInInsertionOrderAndFindsRowsById)
{
    ZNPropertySheet sheet;
    sheet.addProperty("Information", "Nb Facette", "Nb Facet", ZNProperty::String, "3").readOnly = true;
    ZNProperty& width = sheet.addProperty("Edge", "Width Edge", "Width Edge", ZNProperty::Int, 2);
    width.setAttribute(ZNProperty::minimum(), 1);
    sheet.addProperty("Information", "Name", "Name", ZNProperty::String, "obj");
    EXPECT_EQ(sheet.addGroup("Edge"), 1);

    ASSERT_EQ(sheet.groups().size(), 2);
    EXPECT_EQ(sheet.groups()[0].name, QStringLiteral("Information"));
    ASSERT_EQ(sheet.groups()[0].properties.size(), 2);
    EXPECT_EQ(sheet.groups()[0].properties[1].id, QStringLiteral("Name"));
    EXPECT_EQ(sheet.count(), 3);

    const ZNProperty* facets = sheet.property("Nb Facette");
    ASSERT_NE(facets, nullptr);
    EXPECT_EQ(facets->label, QStringLiteral("Nb Facet"));
    EXPECT_TRUE(facets->readOnly);
    EXPECT_TRUE(facets->enabled);
    EXPECT_EQ(sheet.property("Nb Facet"), nullptr);  // labels are not ids
    EXPECT_EQ(sheet.property("Width Edge")->attribute(ZNProperty::minimum()).toInt(), 1);
    EXPECT_FALSE(sheet.property("Width Edge")->attribute(ZNProperty::maximum()).isValid());

    EXPECT_TRUE(sheet.setValue("Width Edge", 7));
    EXPECT_EQ(sheet.property("Width Edge")->value.toInt(), 7);
    EXPECT_FALSE(sheet.setValue("missing", 1));
    EXPECT_EQ(sheet.group("missing"), nullptr);
}

TEST(StyleIcons, EveryIconIsAFiftyPixelSquare)
{
    const QVariantList pens = ZNStyleIcons::penStyleIcons();
    const QVariantList brushes = ZNStyleIcons::brushStyleIcons();
    ASSERT_EQ(pens.size(), 6);
    ASSERT_EQ(brushes.size(), 15);
    for (const QVariantList* list : {&pens, &brushes})
        for (const QVariant& v : *list) EXPECT_EQ(v.value<QImage>().size(), QSize(50, 50));
}

TEST(StyleIcons, PenIconsDrawTheirStyleAcrossTheMiddle)
{
    EXPECT_EQ(paintedPixels(ZNStyleIcons::penStyleIcon(Qt::NoPen)), 0);
    const int solid = paintedInRow(ZNStyleIcons::penStyleIcon(Qt::SolidLine), 25);
    EXPECT_GE(solid, 45);
    for (int style = Qt::DashLine; style <= Qt::DashDotDotLine; ++style) {
        const QImage icon = ZNStyleIcons::penStyleIcon(style);
        const int painted = paintedInRow(icon, 25);
        EXPECT_GT(painted, 0) << style;
        EXPECT_LT(painted, solid) << style;  // the gaps show
        EXPECT_EQ(paintedInRow(icon, 5), 0) << style;
    }
    EXPECT_NE(ZNStyleIcons::penStyleIcon(Qt::DashLine), ZNStyleIcons::penStyleIcon(Qt::DotLine));
}

TEST(StyleIcons, BrushIconsFillAccordingToTheirDensity)
{
    EXPECT_EQ(paintedPixels(ZNStyleIcons::brushStyleIcon(Qt::NoBrush)), 0);
    EXPECT_EQ(paintedPixels(ZNStyleIcons::brushStyleIcon(Qt::SolidPattern)), 2500);
    int previous = 2500;
    for (int style = Qt::Dense1Pattern; style <= Qt::Dense7Pattern; ++style) {
        const int painted = paintedPixels(ZNStyleIcons::brushStyleIcon(style));
        EXPECT_LT(painted, previous) << style;  // each dense pattern is sparser
        previous = painted;
    }
    for (int style = Qt::HorPattern; style <= Qt::DiagCrossPattern; ++style)
        EXPECT_GT(paintedPixels(ZNStyleIcons::brushStyleIcon(style)), 0) << style;
    EXPECT_EQ(paintedPixels(ZNStyleIcons::brushStyleIcon(Qt::LinearGradientPattern)), 0);
}
