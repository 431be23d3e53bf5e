// Fault viewers in the studio: opened from a fault's menu, following the fault set, the
// reference point shared with the section views, data mapped, picks on the unfolded fault.
#include <QMenu>
#include <QSignalSpy>
#include <QUndoStack>

#include <pictures.h>
#include <zn3dfaultpatch.h>
#include <zn3dviewer.h>
#include <zneventbus.h>
#include <znfaultpickingsession.h>
#include <znfaultviewer.h>
#include <znsectionview.h>
#include <znsectionviewer.h>

#include "faultcommands.h"
#include "studio3dviews.h"
#include "studiofaultviewers.h"
#include "studioviews.h"
#include "studiotestfixture.h"

namespace {

using Kind = ZNBlocViewerEngine::SectionKind;

class FaultViewerStudioTest : public StudioTest {
protected:
    StudioFaultViewers& viewers() { return *window->faultViewers(); }

    void openDemo(int size)
    {
        QSignalSpy opened(window.get(), &StudioWindow::demoOpened);
        window->openDemo(size);
        ASSERT_TRUE(waitForTasks());
        ASSERT_EQ(opened.count(), 1);
        demo = window->project()->faultSets().first();
        volume = window->project()->volumes().first();
    }
    // The fault of the demo whose surface is the largest.
    int largestFault() const
    {
        int best = -9999;
        double area = -1.0;
        for (int faultId : demo->faultIds())
            if (demo->surface(faultId) && demo->surface(faultId)->getComputedArea() > area) {
                area = demo->surface(faultId)->getComputedArea();
                best = faultId;
            }
        return best;
    }
    // The actions of a fault's menu in the object tree, as a right click shows it.
    QAction* treeMenuAction(QMenu& menu, FaultSetDocument* document, int faultId, const QString& text)
    {
        emit window->objectTree()->contextMenuRequested(window->studioTree()->faultItem(document, faultId), &menu);
        for (QAction* a : menu.actions())
            if (a->text() == text) return a;
        return nullptr;
    }
    bool mapVolume(ZNFaultViewer* viewer)
    {
        QSignalSpy mapped(viewer, &ZNFaultViewer::dataMapped);
        return viewers().mapVolume(viewer, volume) && mapped.wait(30000) && mapped.first().first().toBool();
    }
    QRect faultArea(ZNFaultViewer* viewer) const
    {
        return viewer->engine().getWorkingAreaInsideViewport().toRect().intersected(viewer->viewer()->rect());
    }

    FaultSetDocument* demo = nullptr;
    ZNVolume* volume = nullptr;
};

} // namespace

TEST_F(FaultViewerStudioTest, TheDemosLargestFaultShowsOnItsPlaneWithTheLikelihoodMappedAlongIt)
{
    openDemo(128);
    const int fault = largestFault();
    ASSERT_NE(fault, -9999);
    QMenu menu;
    QAction* show = treeMenuAction(menu, demo, fault, StudioFaultViewers::showOnFaultPlaneText());
    ASSERT_NE(show, nullptr);
    ASSERT_TRUE(show->isEnabled());
    show->trigger();
    ASSERT_EQ(viewers().viewers().size(), 1);
    ZNFaultViewer* viewer = viewers().viewers().first();
    EXPECT_EQ(viewers().documentOf(viewer), demo);
    EXPECT_EQ(viewer->engine().getMappedFaultId(), fault);
    EXPECT_TRUE(window->subWindowTitles().contains(QStringLiteral("Fault Viewer: ") + demo->faultName(fault)));
    // The demo's grid is one unit a cell: the survey grid scale gives about a pixel a cell.
    EXPECT_GT(viewer->engine().imageWidth(), 60);
    viewer->parentWidget()->resize(1100, 700);
    // The likelihood peaks on the fault, one voxel thick: the largest sample of the window
    // across it ("Smooth": "Max Amplitude") is the fault's own.
    ASSERT_TRUE(viewer->engine().updateProperty(QStringLiteral("Smooth"), 2));
    ASSERT_TRUE(mapVolume(viewer));
    const img::Image& mapped = viewer->engine().mappedImage();
    const img::Image& cover = viewer->engine().projectionImage();
    int covered = 0, valued = 0, likely = 0;
    for (std::size_t p = 0; p < mapped.sampleCount(); ++p) {
        covered += cover.data()[p] != -9999.0f;
        if (mapped.data()[p] == -9999.0f) continue;
        ++valued;
        likely += mapped.data()[p] > 0.5f;
    }
    EXPECT_GT(valued, covered * 95 / 100);
    EXPECT_GT(likely, valued * 3 / 4);
    QTest::qWait(50);
    const QImage picture = viewer->viewer()->grab().toImage();
    picturetest::keepPicture(picture, QStringLiteral("studio_faultviewer_demo"));
    const QRect area = faultArea(viewer);
    ASSERT_FALSE(area.isEmpty());
    // Viridis: teal to green to yellow for the high likelihoods, violet for the low ones.
    const int high = picturetest::countPixels(picture, area, picturetest::sameHue(QColor(60, 190, 110), 65));
    const int low = picturetest::countPixels(picture, area, picturetest::sameHue(QColor(70, 20, 110), 30));
    EXPECT_GT(high, area.width() * area.height() / 2);
    EXPECT_LT(low, area.width() * area.height() / 20);
    EXPECT_EQ(viewer->engine().sectionTitle(), demo->faultName(fault) + QStringLiteral(" \u2014 ") + volume->name());
    picturetest::keepPicture(window->grab().toImage(), QStringLiteral("studio_window_faultviewer"));
}

TEST_F(FaultViewerStudioTest, TheGotoPointMovesTheSectionViewsAndTheirReferencePointShowsOnTheFault)
{
    openDemo(64);
    const int fault = largestFault();
    ZNFaultViewer* viewer = viewers().open(demo, fault);
    ASSERT_NE(viewer, nullptr);
    ZNSectionView* inlines = window->views()->sectionViews().first();
    ASSERT_EQ(inlines->engine().sectionKind(), Kind::Inline);
    // A click on the unfolded fault: every section view goes to the inline through it.
    const QPoint inside = faultArea(viewer).center();
    QTest::mouseClick(viewer->viewer(), Qt::LeftButton, Qt::NoModifier, inside);
    ASSERT_TRUE(window->views()->hasReferencePoint());
    const core::vec3 goto_ = window->views()->referencePoint();
    EXPECT_EQ(viewer->engine().gotoPoint(), goto_);
    EXPECT_EQ(inlines->engine().sectionIndex(), static_cast<int>(std::lround(inlines->engine().worldToBloc(goto_).x)));
    EXPECT_EQ(inlines->engine().referencePoint(), goto_);
    // A Ctrl+click in the inline view: the fault viewer shows that point, centred.
    const QPoint onInline = inlines->engine().imageToViewport(QPointF(20, 30)).toPoint();
    QTest::mouseClick(inlines->viewer(), Qt::LeftButton, Qt::ControlModifier, onInline);
    const core::vec3 picked = window->views()->referencePoint();
    EXPECT_NE(picked, goto_);
    EXPECT_EQ(viewer->engine().referencePoint(), picked);
    // Kept out of the cross navigation, the viewer shows the point but does not move.
    viewer->engine().setUseObjectForCrossNavigation(false);
    const auto kept = viewer->engine().view();
    QTest::mouseClick(inlines->viewer(), Qt::LeftButton, Qt::ControlModifier, onInline + QPoint(0, 40));
    EXPECT_EQ(viewer->engine().referencePoint(), window->views()->referencePoint());
    EXPECT_EQ(viewer->engine().view().offset, kept.offset);
}

TEST_F(FaultViewerStudioTest, PicksOnTheUnfoldedFaultAreUndoableEditsThatTheViewerFollows)
{
    openDemo(64);
    const int fault = largestFault();
    ZNFaultViewer* viewer = viewers().open(demo, fault);
    ASSERT_NE(viewer, nullptr);
    window->setInteraction(StudioWindow::Interaction::Pick);
    EXPECT_EQ(viewer->engine().getMouseModeName(), QStringLiteral("faultpicking"));
    const int points = demo->faultSet()->getNumberOfValidPickedPoint(fault);
    const int steps = demo->undoStack()->count();
    // A place of the fault away from its points (a press near one would grab it).
    QPoint inside;
    double farthest = 0.0;
    const QRect area = faultArea(viewer);
    for (int y = area.top() + 10; y < area.bottom() - 10; y += 4)
        for (int x = area.left() + 10; x < area.right() - 10; x += 4) {
            const QPointF image = viewer->engine().viewportToImage(QPointF(x, y));
            if (viewer->engine().indexImage().value(int(std::lround(image.x())), int(std::lround(image.y())), -9999) == -9999)
                continue;
            double nearest = 1e9;
            for (const core::PointWithBool& p : demo->surface(fault)->getPickedPoints()) {
                QPointF at;
                if (!p.isSeparator() && viewer->engine().worldToViewport(p.position(), at))
                    nearest = std::min(nearest, std::hypot(at.x() - x, at.y() - y));
            }
            if (nearest > farthest) {
                farthest = nearest;
                inside = QPoint(x, y);
            }
        }
    ASSERT_GT(farthest, 12.0);
    QTest::mouseClick(viewer->viewer(), Qt::LeftButton, Qt::NoModifier, inside);
    EXPECT_EQ(demo->faultSet()->getNumberOfValidPickedPoint(fault), points + 1);
    EXPECT_EQ(demo->undoStack()->count(), steps + 1);
    EXPECT_EQ(window->currentFaultId(), fault);  // the fault picked in is the current fault
    EXPECT_EQ(viewer->engine().getMappedFaultId(), fault);
    EXPECT_EQ(viewer->engine().getCurrentFaultPatch(), demo->surface(fault));
    demo->undoStack()->undo();
    EXPECT_EQ(demo->faultSet()->getNumberOfValidPickedPoint(fault), points);
    EXPECT_EQ(viewer->engine().pickedPointCount(), demo->surface(fault)->getPickedPoints().size());
    window->setInteraction(StudioWindow::Interaction::Navigate);
    EXPECT_EQ(viewer->engine().getMouseModeName(), QString());
}

TEST_F(FaultViewerStudioTest, ViewersFollowTheCurrentFaultUnlessFrozenAndGoWithTheirFaultSet)
{
    openDemo(64);
    QList<int> faults = demo->faultIds();
    ASSERT_GE(faults.size(), 2);
    // A hidden fault is not shown: no viewer, and a message says why.
    demo->setFaultsVisible({{faults[1], false}});
    EXPECT_EQ(viewers().open(demo, faults[1]), nullptr);
    EXPECT_EQ(logTexts(ZNEventBus::Error).size(), 1);
    EXPECT_TRUE(viewers().viewers().isEmpty());
    demo->setFaultsVisible({{faults[1], true}});
    ZNFaultViewer* following = viewers().open(demo, faults[0]);
    ZNFaultViewer* frozen = viewers().open(demo, faults[0]);
    ASSERT_TRUE(following && frozen);
    ASSERT_TRUE(frozen->engine().updateProperty(QStringLiteral("Freeze"), true));
    window->studioTree()->selectFault(demo, faults[1]);
    EXPECT_EQ(following->engine().getMappedFaultId(), faults[1]);
    EXPECT_EQ(frozen->engine().getMappedFaultId(), faults[0]);
    // The fault shown is marked in the 3D views with a green outline of width 2.
    ASSERT_FALSE(window->views3D()->views().isEmpty());
    const ZN3DScene& scene = window->views3D()->views().first()->scene();
    const auto* mark = scene.content<ZN3DPolylineItem>(window->views3D()->markItemOf(following));
    ASSERT_NE(mark, nullptr);
    EXPECT_EQ(mark->colour, QColor(Qt::green));
    EXPECT_FLOAT_EQ(mark->width, 2.0f);
    EXPECT_GT(mark->points.size(), 3u);
    // Deleting the fault shown empties its viewer; closing the fault set closes them.
    demo->undoStack()->push(new DeleteFaultCommand(demo, faults[0]));
    EXPECT_FALSE(frozen->engine().isFaultProjected());
    EXPECT_EQ(frozen->engine().getCaption(), QStringLiteral("Fault Editing: Empty"));
    EXPECT_TRUE(following->engine().isFaultProjected());
    ASSERT_TRUE(window->closeFaultSet(demo));
    QTest::qWait(20);
    EXPECT_TRUE(viewers().viewers().isEmpty());
    EXPECT_EQ(window->views3D()->markItemOf(following), -9999);
}

TEST_F(FaultViewerStudioTest, APickedFaultOnF3IsShownAndItsSeismicMapped)
{
    window->openFiles({QStringLiteral(KORVALITH_SAMPLES_DIR "/f3.sgy")});
    ASSERT_TRUE(waitForTasks());
    ASSERT_EQ(window->project()->volumes().size(), 1);
    volume = window->project()->volumes().first();
    ZNSectionView* view = window->views()->sectionViews().first();
    window->setInteraction(StudioWindow::Interaction::Pick);
    FaultSetDocument* picks = window->currentDocument();
    ASSERT_NE(picks, nullptr);
    // Two sticks on inlines 4 and 18, leaning across the crosslines as they go down.
    for (int inlineIndex : {4, 18}) {
        view->engine().setSection(Kind::Inline, inlineIndex);
        for (double r : {8.0, 35.0, 65.0}) {
            const QPoint at = view->engine().imageToViewport(QPointF(4.0 + r / 8.0, r)).toPoint();
            QTest::mouseClick(view->viewer(), Qt::LeftButton, Qt::NoModifier, at);
        }
        QTest::keyClick(view->viewer(), Qt::Key_Return);
    }
    const int fault = window->currentFaultId();
    ASSERT_NE(picks->surface(fault), nullptr);
    ASSERT_GT(picks->surface(fault)->getNumberOfFacettes(), 0);
    window->setInteraction(StudioWindow::Interaction::Navigate);
    QMenu menu;
    QAction* show = treeMenuAction(menu, picks, fault, StudioFaultViewers::showOnFaultPlaneText());
    ASSERT_TRUE(show && show->isEnabled());
    show->trigger();
    ASSERT_EQ(viewers().viewers().size(), 1);
    ZNFaultViewer* viewer = viewers().viewers().first();
    ASSERT_TRUE(mapVolume(viewer));
    const img::Image& mapped = viewer->engine().mappedImage();
    int valued = 0, negative = 0, positive = 0;
    for (std::size_t p = 0; p < mapped.sampleCount(); ++p) {
        const float v = mapped.data()[p];
        if (v == -9999.0f) continue;
        ++valued;
        negative += v < 0.0f;
        positive += v > 0.0f;
    }
    EXPECT_GT(valued, 100);
    EXPECT_GT(negative, valued / 10);  // seismic: both signs along the fault
    EXPECT_GT(positive, valued / 10);
    QTest::qWait(50);
    picturetest::keepPicture(viewer->viewer()->grab().toImage(), QStringLiteral("studio_faultviewer_f3"));
}
