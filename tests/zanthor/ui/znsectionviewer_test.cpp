// The section viewer widget: what it paints and what the user's gestures do.
#include <gtest/gtest.h>

#include <QComboBox>
#include <QSignalSpy>
#include <QSpinBox>
#include <QTest>

#include <pictures.h>
#include <znseismicblocviewerengine.h>
#include <znsectionview.h>
#include <znsectionviewer.h>

namespace {

using Kind = ZNBlocViewerEngine::SectionKind;

// 10 inlines x 40 crosslines x 30 samples: dark on crosslines 0..19, bright on 20..39,
// and one bright horizon at sample 10 (value 2, beyond the range); inline numbers 101..,
// crosslines 501.., 4 ms samples from 1000 ms.
std::shared_ptr<ZNBloc> patternBloc()
{
    core::mat4 m = core::mat4::translation({0.0, 1000.0, 0.0});
    m(0, 0) = 25.0;
    m(1, 1) = 0.0;
    m(2, 2) = 0.0;
    m(2, 1) = 25.0;
    m(1, 2) = 4.0;
    auto image = std::make_shared<ZN3DImage<float>>(georef::BlocSpace(10, 40, 30, m));
    for (int z = 0; z < 30; ++z)
        for (int y = 0; y < 40; ++y)
            for (int x = 0; x < 10; ++x) (*image)(x, y, z) = z == 10 ? 2.0f : (y < 20 ? 0.0f : 1.0f);
    auto bloc = std::make_shared<ZNBloc>();
    bloc->openImage(image, georef::UnitObject(georef::UnitObject::SpatialMetre, georef::UnitObject::VerticalMillisecond));
    return bloc;
}

std::unique_ptr<ZNSeismicBlocViewerEngine> patternEngine()
{
    auto engine = std::make_unique<ZNSeismicBlocViewerEngine>();
    engine->setBloc(patternBloc());
    engine->setLineNumbering({101, 1, 501, 1});
    engine->setManualRange(0.0f, 1.0f);
    engine->setSection(Kind::Inline, 4);
    return engine;
}

} // namespace

TEST(SectionViewer, AnInlineShowsItsPatternAtTheRightPixels)
{
    ZNSectionViewer viewer(patternEngine());
    viewer.resize(500, 400);
    viewer.show();
    const QImage picture = viewer.grab().toImage();
    picturetest::keepPicture(picture, "section_inline_pattern");
    const ZNSeismicViewerAbstractEngine& e = viewer.engine();
    const QRectF area = e.imageRectInViewport();
    EXPECT_NEAR(area.left(), ZNSectionViewer::kLeftMargin, 1.0);
    // Crossline 5 dark, crossline 30 bright, the horizon at sample 10 bright across.
    const auto at = [&](double c, double r) { return picture.pixelColor(e.imageToViewport(QPointF(c, r)).toPoint()); };
    EXPECT_TRUE(picturetest::near(Qt::black, 10)(at(5, 20)));
    EXPECT_TRUE(picturetest::near(Qt::white, 10)(at(30, 20)));
    EXPECT_TRUE(picturetest::near(Qt::white, 10)(at(5, 10)));
    const QRect darkHalf = QRectF(e.imageToViewport(QPointF(0, 12)), e.imageToViewport(QPointF(19, 29))).toRect();
    const QRect brightHalf = QRectF(e.imageToViewport(QPointF(20, 12)), e.imageToViewport(QPointF(39, 29))).toRect();
    EXPECT_GT(picturetest::countPixels(picture, darkHalf, picturetest::near(Qt::black, 10)), darkHalf.width() * darkHalf.height() * 9 / 10);
    EXPECT_GT(picturetest::countPixels(picture, brightHalf, picturetest::near(Qt::white, 10)), brightHalf.width() * brightHalf.height() * 9 / 10);
    // Between the image and the colour bar: the background, no section colours.
    const QRect gap(int(area.right()) + 3, int(area.top()) + 5, 6, int(area.height()) - 10);
    EXPECT_EQ(picturetest::countPixels(picture, gap, picturetest::near(Qt::black, 10)), 0);
    EXPECT_EQ(picturetest::countPixels(picture, gap, picturetest::near(Qt::white, 10)), 0);
}

TEST(SectionViewer, KeysStepSectionsWheelZoomsAroundTheCursorAndCtrlClickSetsTheReferencePoint)
{
    ZNSectionViewer viewer(patternEngine());
    viewer.resize(500, 400);
    viewer.show();
    ZNSeismicViewerAbstractEngine& e = viewer.engine();
    QSignalSpy stepped(&viewer, &ZNSectionViewer::sectionChanged);
    QTest::keyClick(&viewer, Qt::Key_Up);
    EXPECT_EQ(e.sectionIndex(), 5);
    QTest::keyClick(&viewer, Qt::Key_PageDown);
    EXPECT_EQ(e.sectionIndex(), 0);
    QTest::keyClick(&viewer, Qt::Key_End);
    EXPECT_EQ(e.sectionIndex(), 9);
    EXPECT_EQ(stepped.count(), 3);

    const QPoint cursor(200, 150);
    const core::vec3 under = e.viewportToWorld(cursor);
    const double scale = e.scaleAcross();
    QWheelEvent wheel(QPointF(cursor), viewer.mapToGlobal(cursor), QPoint(), QPoint(0, 120), Qt::NoButton,
                      Qt::NoModifier, Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(&viewer, &wheel);
    EXPECT_NEAR(e.scaleAcross(), scale * ZNSectionViewer::kWheelZoom, 1e-9);
    EXPECT_NEAR(e.viewportToWorld(cursor).y, under.y, 1e-6);

    QSignalSpy picked(&viewer, &ZNSectionViewer::referencePointPicked);
    QTest::mouseClick(&viewer, Qt::LeftButton, Qt::ControlModifier, cursor);
    ASSERT_EQ(picked.count(), 1);
    EXPECT_TRUE(e.hasReferencePoint());

    const QPointF before = e.imageToViewport(QPointF(0, 0));
    QTest::mousePress(&viewer, Qt::LeftButton, Qt::NoModifier, QPoint(100, 100));
    QMouseEvent move(QEvent::MouseMove, QPointF(130, 90), Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(&viewer, &move);
    QTest::mouseRelease(&viewer, Qt::LeftButton, Qt::NoModifier, QPoint(130, 90));
    EXPECT_EQ(e.imageToViewport(QPointF(0, 0)) - before, QPointF(30, -10));
}

TEST(SectionView, ControlsAndViewerFollowEachOther)
{
    ZNSectionView view(patternEngine());
    view.resize(800, 500);
    view.show();
    auto* number = view.findChild<QSpinBox*>("sectionNumber");
    auto* kind = view.findChild<QComboBox*>("sectionKind");
    ASSERT_NE(number, nullptr);
    EXPECT_EQ(number->value(), 105);  // inline index 4, numbered from 101
    EXPECT_EQ(number->minimum(), 101);
    QTest::keyClick(view.viewer(), Qt::Key_Up);
    EXPECT_EQ(number->value(), 106);
    number->setValue(103);
    EXPECT_EQ(view.engine().sectionIndex(), 2);
    kind->setCurrentIndex(static_cast<int>(Kind::Slice));
    EXPECT_EQ(view.engine().sectionKind(), Kind::Slice);
    EXPECT_EQ(view.engine().sectionIndex(), 15);  // through the middle of the inline
    auto* map = view.findChild<QComboBox*>("colourMap");
    map->setCurrentText("Viridis");
    EXPECT_EQ(view.engine().colourScale().map(), img::ColourScale::Map::Viridis);
}
