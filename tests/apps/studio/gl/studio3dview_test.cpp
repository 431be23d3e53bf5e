// The studio's 3D view drawing on a real OpenGL context (Mesa under Xvfb): the faults of
// the open fault sets in their colours, hidden faults gone, a click on a fault selecting it.
#include <QMdiArea>
#include <QMdiSubWindow>

#include <zn3dviewer.h>

#include "pictures.h"
#include "studio3dviews.h"
#include "studiotestfixture.h"

namespace {

using picturetest::countPixels;
using picturetest::keepPicture;
using picturetest::sameHue;

class Studio3DPictures : public StudioTest {
protected:
    void SetUp() override
    {
        StudioTest::SetUp();
        picks = addFaultSet({"A", "B", "C"});
        viewer = window->views3D()->open3DView();
        window->mdiArea()->activeSubWindow()->showMaximized();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(viewer));
        viewer->renderToImage();
        ASSERT_TRUE(viewer->isOpenGLReady()) << viewer->openGLError().toStdString();
        viewer->engine().setStandardView(ZN3DCamera::StandardView::FromSouth);  // faces the faults
        viewer->engine().fitAll();
    }
    QImage picture(const QString& name)
    {
        const QImage image = viewer->renderToImage().convertToFormat(QImage::Format_RGB32);
        keepPicture(image, QStringLiteral("studio3d_") + name);
        return image;
    }
    int pixelsOf(const QImage& image, int faultId)
    {
        return countPixels(image, image.rect(), sameHue(picks->faultColour(faultId)));
    }

    FaultSetDocument* picks = nullptr;
    ZN3DViewer* viewer = nullptr;
};

} // namespace

TEST_F(Studio3DPictures, EveryVisibleFaultIsDrawnInItsColourAndHiddenOnesAreNot)
{
    const QList<int> ids = picks->faultIds();
    const QImage all = picture("all");
    for (int id : ids) EXPECT_GT(pixelsOf(all, id), 200) << picks->faultName(id).toStdString();

    picks->setFaultsVisible({{ids[1], false}});
    const QImage hidden = picture("one_hidden");
    EXPECT_EQ(pixelsOf(hidden, ids[1]), 0);
    EXPECT_GT(pixelsOf(hidden, ids[0]), 200);
    EXPECT_GT(pixelsOf(hidden, ids[2]), 200);
}

TEST_F(Studio3DPictures, AClickOnAFaultSelectsItInTheTree)
{
    const int target = picks->faultIds().at(2);
    const QImage image = picture("click");
    // The middle of the pixels drawn in the target's colour.
    long long sx = 0, sy = 0, n = 0;
    const auto match = sameHue(picks->faultColour(target));
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            if (match(image.pixelColor(x, y))) sx += x, sy += y, ++n;
    ASSERT_GT(n, 0);
    const qreal ratio = viewer->devicePixelRatioF();
    const QPoint at(int(sx / n / ratio), int(sy / n / ratio));
    QTest::mouseClick(viewer, Qt::LeftButton, Qt::NoModifier, at);
    EXPECT_EQ(window->currentDocument(), picks);
    EXPECT_EQ(window->currentFaultId(), target);
}

TEST_F(Studio3DPictures, TheDemoShowsItsOutlineItsInlineAndItsFaults)
{
    window->closeFaultSet(picks);
    window->openDemo(64);
    ASSERT_TRUE(waitForTasks());
    viewer->engine().setOrientation(200.0, 30.0);
    viewer->engine().fitAll();
    const QImage image = picture("demo");
    // The outline and its labels in light grey, the inline's likelihood in the perceptual
    // map's dark blue-violet, and each fault of the demo in its colour.
    EXPECT_GT(countPixels(image, image.rect(), picturetest::near(QColor(200, 200, 200), 30)), 300);
    EXPECT_GT(countPixels(image, image.rect(), picturetest::near(QColor(68, 1, 84), 30)), 2000);
    FaultSetDocument* demo = window->project()->faultSets().first();
    int drawn = 0;
    for (int id : demo->faultIds())
        drawn += countPixels(image, image.rect(), sameHue(demo->faultColour(id))) > 50;
    EXPECT_GE(drawn, 3);
}
