// The fault viewer widget: what it paints of a fault and of the data mapped along it, and
// what clicks and picks do.
#include <gtest/gtest.h>

#include <cmath>

#include <QSignalSpy>
#include <QTest>

#include <pictures.h>
#include <testservices.h>
#include <znfaultpickingsession.h>
#include <znfaultviewer.h>
#include <znpropertybrowser.h>
#include <znsectionviewer.h>

#include "faultviewerfixtures.h"

using faultviewer::Scene;

namespace {

// Layers of the survey: positive and negative amplitudes alternating every 4 samples.
float layers(int, int, int k)
{
    return std::sin(k * M_PI / 4.0) >= 0.0 ? 100.0f : -100.0f;
}

ZNFaultViewer::DataSource layeredVolume()
{
    const auto bloc = faultviewer::volume(layers);
    ZN3DImage<float> samples;
    bloc->readBox(0, 0, 0, bloc->nx(), bloc->ny(), bloc->nz(), samples);
    ZNFaultViewer::DataSource source;
    source.samples = std::make_shared<const ZN3DImage<float>>(std::move(samples));
    source.units = faultviewer::timeUnits();
    source.name = QStringLiteral("layers");
    return source;
}

// The viewport rectangle of the fault's image inside the viewer.
QRect faultArea(const ZNFaultViewer& viewer)
{
    return viewer.engine().getWorkingAreaInsideViewport().toRect().intersected(viewer.viewer()->rect());
}

QImage grabViewer(ZNFaultViewer& viewer, const char* name)
{
    const QImage picture = viewer.viewer()->grab().toImage();
    picturetest::keepPicture(picture, QString::fromLatin1(name));
    return picture;
}

struct Opened {
    Scene scene;
    ZNFaultViewer viewer;
    Opened()
    {
        viewer.resize(1000, 640);
        viewer.show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&viewer));
        EXPECT_TRUE(viewer.showFault(&scene.set, 1));
    }
    bool map()
    {
        QSignalSpy mapped(&viewer, &ZNFaultViewer::dataMapped);
        if (!viewer.mapData(layeredVolume())) return false;
        return mapped.wait(10000) && mapped.first().first().toBool();
    }
};

} // namespace

TEST(FaultViewer, ShowsTheFaultItsOutlinePickedPointsAndScaleBar)
{
    Opened o;
    EXPECT_EQ(o.viewer.windowTitle(), QStringLiteral("Fault Editing: F1"));
    const QImage picture = grabViewer(o.viewer, "faultviewer_fault");
    const QRect area = faultArea(o.viewer);
    ASSERT_FALSE(area.isEmpty());
    // The outline in black, the fault's points in white with the sticks in its colour.
    EXPECT_GT(picturetest::countPixels(picture, area.adjusted(-4, -4, 4, 4), picturetest::near(Qt::black, 30)), 200);
    EXPECT_GT(picturetest::countPixels(picture, area.adjusted(-6, -6, 6, 6), picturetest::near(Qt::white, 8)), 24 * 10);
    EXPECT_GT(picturetest::countPixels(picture, area, picturetest::sameHue(QColor(230, 120, 20), 12)), 100);
    // The scale bar at the bottom left; it goes with "Show Scale".
    const QRect inner = o.viewer.viewer()->rect().marginsRemoved(o.viewer.engine().margins());
    const QRect barArea(inner.left(), inner.bottom() - 40, 200, 40);
    const int withBar = picturetest::countPixels(picture, barArea, picturetest::near(Qt::black, 30));
    o.viewer.engine().setScaleShown(false);
    const QImage noBar = grabViewer(o.viewer, "faultviewer_noscale");
    EXPECT_GT(withBar, picturetest::countPixels(noBar, barArea, picturetest::near(Qt::black, 30)) + 100);
}

TEST(FaultViewer, BeforeAnyDataTheFaultsReliefIsShown)
{
    Scene bent(QStringLiteral("Bent"), 0.15);
    ZNFaultViewer viewer;
    viewer.resize(1000, 640);
    viewer.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&viewer));
    ASSERT_TRUE(viewer.showFault(&bent.set, 1));
    EXPECT_EQ(viewer.engine().sectionTitle(), QStringLiteral("Bent \u2014 relief"));
    const QImage picture = grabViewer(viewer, "faultviewer_relief");
    // The bend puts the middle of the fault on one side of its plane and its ends on the
    // other: both colours of the seismic map show.
    const QRect area = faultArea(viewer);
    EXPECT_GT(picturetest::countPixels(picture, area, picturetest::sameHue(QColor(190, 0, 0), 10)), area.width() * 4);
    EXPECT_GT(picturetest::countPixels(picture, area, picturetest::sameHue(QColor(0, 0, 190), 10)), area.width() * 4);
}

TEST(FaultViewer, MappedLayersShowAsAlternatingAmplitudesAcrossTheFault)
{
    Opened o;
    ASSERT_TRUE(o.map());
    const QImage picture = grabViewer(o.viewer, "faultviewer_mapped_layers");
    const QRect area = faultArea(o.viewer);
    const int red = picturetest::countPixels(picture, area, picturetest::sameHue(QColor(190, 0, 0), 10));
    const int blue = picturetest::countPixels(picture, area, picturetest::sameHue(QColor(0, 0, 190), 10));
    EXPECT_GT(red, area.width() * area.height() / 8);
    EXPECT_GT(blue, area.width() * area.height() / 8);
    // Layers are horizontal and rows run along the strike, which is horizontal: a row
    // holds one colour but where a layer's boundary falls between two rows.
    const ZNFaultViewerEngine& e = o.viewer.engine();
    const img::Image& mapped = e.mappedImage();
    int mixedRows = 0;
    for (int r = 0; r < mapped.height(); ++r) {
        bool positive = false, negative = false;
        for (int c = 0; c < mapped.width(); ++c) {
            positive = positive || mapped(c, r) > 0.0f;
            negative = negative || (mapped(c, r) < 0.0f && mapped(c, r) != -9999.0f);
        }
        mixedRows += positive && negative;
    }
    EXPECT_LE(mixedRows, mapped.height() / 4);
    EXPECT_EQ(e.sectionTitle(), QStringLiteral("F1 \u2014 layers"));
    // The colour bar goes with "Color Scale".
    EXPECT_TRUE(o.viewer.viewer()->isColourBarShown());
    ASSERT_TRUE(o.viewer.engine().updateProperty(QStringLiteral("Color Scale"), false));
    EXPECT_FALSE(o.viewer.viewer()->isColourBarShown());
}

TEST(FaultViewer, AMappingSettingMapsTheVolumeAgain)
{
    Opened o;
    ASSERT_TRUE(o.map());
    QSignalSpy mapped(&o.viewer, &ZNFaultViewer::dataMapped);
    const float before = o.viewer.engine().mappedImage()(o.viewer.engine().imageWidth() / 2, 10);
    o.viewer.propertyBrowser()->propertyEdited(QStringLiteral("Smooth"), 1);  // as the user's edit
    ASSERT_TRUE(mapped.wait(10000));
    EXPECT_EQ(o.viewer.engine().mappingSettings().combine, fault::FaultPlaneMappingSettings::Combine::Mean);
    // The mean of a window across two layers lies between their amplitudes.
    const img::Image& after = o.viewer.engine().mappedImage();
    int between = 0;
    for (std::size_t p = 0; p < after.sampleCount(); ++p)
        between += after.data()[p] != -9999.0f && std::fabs(after.data()[p]) < 99.0f;
    EXPECT_GT(between, 0);
    EXPECT_NE(before, -9999.0f);
}

TEST(FaultViewer, DataOfAnotherDomainIsNotMapped)
{
    Opened o;
    RecordingMessageBox boxes;
    ZNFaultViewer::DataSource depth = layeredVolume();
    depth.units = georef::UnitObject();
    EXPECT_FALSE(o.viewer.mapData(depth));
    EXPECT_EQ(boxes.shown.size(), 1);
    EXPECT_FALSE(o.viewer.isMapping());
}

TEST(FaultViewer, AClickMovesTheGotoPointOntoTheFault)
{
    Opened o;
    QSignalSpy gone(&o.viewer, &ZNFaultViewer::gotoPointChanged);
    const core::vec3 picked = o.scene.surface->getPickedPoints()[3].position();
    QPointF at;
    ASSERT_TRUE(o.viewer.engine().worldToViewport(picked, at));
    QTest::mouseClick(o.viewer.viewer(), Qt::LeftButton, Qt::NoModifier, (at + QPointF(3, 0)).toPoint());
    ASSERT_EQ(gone.count(), 1);
    const core::vec3 world = gone.first().first().value<core::vec3>();
    EXPECT_LT((world - picked).length(), 0.5);  // the picked point under the click (or its stick)
    // In goto mode a drag moves it along.
    o.viewer.setMouseMode(QStringLiteral("SNAP_MODE"));
    EXPECT_EQ(o.viewer.engine().getMouseModeName(), QStringLiteral("TYPE_GOTO"));
    const QPoint middle = faultArea(o.viewer).center();
    QTest::mousePress(o.viewer.viewer(), Qt::LeftButton, Qt::NoModifier, middle);
    QTest::mouseRelease(o.viewer.viewer(), Qt::LeftButton, Qt::NoModifier, middle);
    EXPECT_EQ(gone.count(), 2);
    const QImage picture = grabViewer(o.viewer, "faultviewer_goto");
    EXPECT_GT(picturetest::countPixels(picture, QRect(middle - QPoint(10, 10), QSize(21, 21)),
                                       picturetest::near(QColor(0, 170, 0), 40)),
              10);
}

TEST(FaultViewer, PicksOnTheUnfoldedFaultAreEditsOfTheFaultSet)
{
    Opened o;
    ZNFaultPickingSession session(&o.scene.set);
    o.viewer.setPickingSession(&session);
    o.viewer.setMouseMode(ZNFaultViewerEngine::faultPickingModeName());
    QSignalSpy edited(&session, &ZNFaultPickingSession::edited);
    const int before = o.scene.set.getNumberOfValidPickedPoint(1);
    const QPoint inside = faultArea(o.viewer).center() + QPoint(7, 5);
    const core::vec3 expected = o.viewer.engine().fromViewportTo3dWorld(inside);
    QTest::mouseClick(o.viewer.viewer(), Qt::LeftButton, Qt::NoModifier, inside);
    ASSERT_EQ(edited.count(), 1);
    EXPECT_EQ(edited.first().at(0).toString(), QStringLiteral("Pick Point"));
    EXPECT_EQ(edited.first().at(1).toInt(), 1);  // the fault shown became the current fault
    EXPECT_EQ(o.scene.set.getNumberOfValidPickedPoint(1), before + 1);
    bool found = false;
    core::Array<core::PointWithBool> points;
    o.scene.set.getFaultPickedPointArray(1, points);
    for (const core::PointWithBool& p : points) found = found || (p.position() - expected).length() < 1e-6;
    EXPECT_TRUE(found);
    EXPECT_EQ(o.viewer.engine().pickedPointCount(), points.size());  // drawn at once
    // The fault set's history undoes it.
    core::vec3 focus;
    ASSERT_TRUE(o.scene.set.undoWithLastConfiguration(focus));
    EXPECT_EQ(o.scene.set.getNumberOfValidPickedPoint(1), before);
}
