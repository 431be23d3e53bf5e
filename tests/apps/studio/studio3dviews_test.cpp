// The studio's 3D views: what their scene holds for the open volumes, section views and
// fault sets, and how it follows them. Without OpenGL: the scene is the views' contract;
// the pictures are checked under Xvfb (gl/).
#include <QAction>
#include <QSignalSpy>
#include <QUndoStack>

#include <volumeio/gridaxes.h>
#include <zn3dviewer.h>
#include <znfaultpickingsession.h>
#include <znsectionview.h>

#include "faultcommands.h"
#include "studio3dviews.h"
#include "studioviews.h"
#include "studiotestfixture.h"

namespace {

using Kind = ZNBlocViewerEngine::SectionKind;
using SceneKind = ZN3DScene::Kind;

class Studio3DTest : public StudioTest {
protected:
    // 40 x 40 x 40 samples of 10 m by 10 m by 4 ms from 1000 ms, lines from 100 and 300.
    ZNVolume* addVolume()
    {
        auto image = std::make_shared<ZN3DImage<float>>(
            georef::BlocSpace(40, 40, 40, volumeio::axisAlignedBlocToWorld({10, 10, 4}, {0, 1000, 0})));
        image->fill(0.5f);
        auto volume = std::make_unique<ZNVolume>(
            image, georef::UnitObject(georef::UnitObject::SpatialMetre, georef::UnitObject::VerticalMillisecond),
            "Survey");
        volume->setLines(georef::LineNumbering{100, 1, 300, 2});
        return window->project()->addVolume(std::move(volume));
    }
    Studio3DViews& views3D() { return *window->views3D(); }
    ZN3DScene& scene(int view = 0) { return views3D().views().at(view)->scene(); }

    int countOf(SceneKind kind, int view = 0)
    {
        int n = 0;
        for (const ZN3DScene::Item& item : scene(view).items()) n += item.kind() == kind;
        return n;
    }
    const ZN3DScene::Item* surfaceOf(const FaultSetDocument* document, int faultId, int view = 0)
    {
        return scene(view).item(views3D().surfaceItemOf(document, faultId));
    }
    const ZN3DPolylineItem* sticksOf(const FaultSetDocument* document, int faultId, int view = 0)
    {
        return scene(view).content<ZN3DPolylineItem>(views3D().sticksItemOf(document, faultId));
    }
};

} // namespace

TEST_F(Studio3DTest, AViewShowsEveryVolumeSectionAndFaultOpenAndWhatOpensLater)
{
    FaultSetDocument* picks = addFaultSet({"A", "B"});
    window->findChild<QAction*>(QStringLiteral("new3DViewAction"))->trigger();
    ASSERT_EQ(views3D().views().size(), 1);
    addVolume();  // opens an inline view, and no other 3D view
    ASSERT_EQ(views3D().views().size(), 1);
    EXPECT_EQ(countOf(SceneKind::Box), 1);
    EXPECT_EQ(countOf(SceneKind::Section), 1);
    EXPECT_EQ(countOf(SceneKind::Surface), 2);
    EXPECT_EQ(countOf(SceneKind::Polyline), 2);
    for (int faultId : picks->faultIds()) {
        const ZN3DScene::Item* surface = surfaceOf(picks, faultId);
        ASSERT_NE(surface, nullptr);
        EXPECT_EQ(std::get<ZN3DSurfaceItem>(surface->content).object, picks->surface(faultId));
        EXPECT_TRUE(surface->pickable);
        ASSERT_NE(sticksOf(picks, faultId), nullptr);
        EXPECT_EQ(sticksOf(picks, faultId)->colour, picks->faultColour(faultId));
        EXPECT_EQ(sticksOf(picks, faultId)->points.size(), 7u);  // two sticks of 3 and a separator
    }

    // The outline is labelled with the volume's lines and its times.
    const ZN3DScene::Item* outline = nullptr;
    for (const ZN3DScene::Item& item : scene().items())
        if (item.kind() == SceneKind::Box) outline = &item;
    const auto& axes = std::get<ZN3DBoxItem>(outline->content).axes;
    EXPECT_EQ(axes[0].name, "Inline");
    EXPECT_EQ(axes[0].first, 100);
    EXPECT_EQ(axes[0].last, 139);
    EXPECT_EQ(axes[1].first, 300);
    EXPECT_EQ(axes[1].last, 378);
    EXPECT_EQ(axes[2].name, "Time");
    EXPECT_DOUBLE_EQ(axes[2].first, 1000.0);
    EXPECT_DOUBLE_EQ(axes[2].last, 1156.0);

    // Opened later: a fault set, a crossline view; a second 3D view shows the same.
    FaultSetDocument* more = addFaultSet({"C"}, "More");
    window->views()->openSectionView(window->project()->volumes().first(), Kind::Crossline);
    EXPECT_EQ(countOf(SceneKind::Surface), 3);
    EXPECT_EQ(countOf(SceneKind::Section), 2);
    views3D().open3DView();
    EXPECT_EQ(countOf(SceneKind::Surface, 1), 3);
    EXPECT_EQ(countOf(SceneKind::Section, 1), 2);
    EXPECT_EQ(views3D().surfaceItemOf(more, more->faultIds().first()),
              scene(1).item(views3D().surfaceItemOf(more, more->faultIds().first()))->id);

    // Closed: the fault set, the section views, the volume.
    window->closeFaultSet(more);
    EXPECT_EQ(countOf(SceneKind::Surface), 2);
    EXPECT_EQ(countOf(SceneKind::Surface, 1), 2);
    window->project()->removeVolume(window->project()->volumes().first());
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(countOf(SceneKind::Box), 0);
    EXPECT_EQ(countOf(SceneKind::Section), 0);
}

TEST_F(Studio3DTest, SectionPlanesFollowTheirViewsAsTheyStep)
{
    addVolume();  // opens an inline and a 3D view
    ZNSectionView* view = window->views()->sectionViews().first();
    const auto cornersNow = [&] {
        for (const ZN3DScene::Item& item : scene().items())
            if (item.kind() == SceneKind::Section) return std::get<ZN3DSectionItem>(item.content).corners;
        return std::array<core::vec3, 4>{};
    };
    EXPECT_NEAR(cornersNow()[0].x, 20 * 10.0, 1e-9);  // the middle inline, 10 m apart
    view->viewer()->setFocus();
    view->engine().setSection(Kind::Inline, 5);
    emit view->viewer()->sectionChanged();
    EXPECT_NEAR(cornersNow()[0].x, 5 * 10.0, 1e-9);
    const QImage& image = std::get<ZN3DSectionItem>(scene().items().back().content).image;
    EXPECT_EQ(image.size(), QSize(40, 40));
}

TEST_F(Studio3DTest, FaultsFollowVisibilityEditsUndoAndTheCurrentFault)
{
    FaultSetDocument* picks = addFaultSet({"A", "B"});
    views3D().open3DView();
    const int a = picks->faultIds().at(0), b = picks->faultIds().at(1);

    // Hidden faults are not drawn; shown again they are.
    picks->setFaultsVisible({{a, false}});
    EXPECT_FALSE(surfaceOf(picks, a)->visible);
    EXPECT_FALSE(scene().item(views3D().sticksItemOf(picks, a))->visible);
    EXPECT_TRUE(surfaceOf(picks, b)->visible);
    picks->setFaultsVisible({{a, true}});
    EXPECT_TRUE(surfaceOf(picks, a)->visible);

    // The current fault's sticks are wider, the others' not.
    window->studioTree()->selectFault(picks, b);
    EXPECT_EQ(sticksOf(picks, b)->width, Studio3DViews::kCurrentSticksWidth);
    EXPECT_EQ(sticksOf(picks, a)->width, Studio3DViews::kSticksWidth);
    window->studioTree()->selectFault(picks, a);
    EXPECT_EQ(sticksOf(picks, b)->width, Studio3DViews::kSticksWidth);

    // A deleted fault leaves; undone, it comes back with its surface and sticks.
    picks->undoStack()->push(new DeleteFaultCommand(picks, a));
    EXPECT_EQ(views3D().surfaceItemOf(picks, a), -9999);
    EXPECT_EQ(countOf(SceneKind::Surface), 1);
    picks->undoStack()->undo();
    ASSERT_NE(surfaceOf(picks, a), nullptr);
    EXPECT_EQ(std::get<ZN3DSurfaceItem>(surfaceOf(picks, a)->content).object, picks->surface(a));
    EXPECT_EQ(sticksOf(picks, a)->points.size(), 7u);
}

TEST_F(Studio3DTest, APickingEditRedrawsTheFaultsSurfaceAndSticks)
{
    addVolume();
    ZNSectionView* view = window->views()->sectionViews().first();
    window->setInteraction(StudioWindow::Interaction::Pick);
    FaultSetDocument* document = window->currentDocument();
    ASSERT_NE(document, nullptr);
    ZNSeismicViewerAbstractEngine& engine = view->engine();
    const auto pickAt = [&](double c, double r) {
        const QPoint at = engine.imageToViewport(QPointF(c, r)).toPoint();
        QTest::mouseClick(view->viewer(), Qt::LeftButton, Qt::NoModifier, at);
    };
    for (double r : {5.0, 15.0, 25.0}) pickAt(10 + r / 5, r);
    const int faultId = window->currentFaultId();
    ASSERT_NE(views3D().sticksItemOf(document, faultId), -9999);
    EXPECT_EQ(sticksOf(document, faultId)->points.size(), 3u);
    const quint64 revision = surfaceOf(document, faultId)->revision;
    pickAt(20, 35);
    EXPECT_EQ(sticksOf(document, faultId)->points.size(), 4u);
    EXPECT_GT(surfaceOf(document, faultId)->revision, revision);  // meshed again, uploaded again
}

TEST_F(Studio3DTest, ClickingAFaultItemSelectsTheFaultAndCtrlClickMovesTheReferencePoint)
{
    addVolume();
    FaultSetDocument* picks = addFaultSet({"A", "B"});
    ZN3DViewer* viewer = views3D().views().first();
    const int b = picks->faultIds().at(1);

    FaultSetDocument* document = nullptr;
    int faultId = -9999;
    ASSERT_TRUE(views3D().faultOfItem(views3D().surfaceItemOf(picks, b), document, faultId));
    EXPECT_EQ(document, picks);
    EXPECT_EQ(faultId, b);
    EXPECT_FALSE(views3D().faultOfItem(-9999, document, faultId));

    emit viewer->itemPicked(views3D().sticksItemOf(picks, b), core::vec3(100, 50, 0));
    EXPECT_EQ(window->currentDocument(), picks);
    EXPECT_EQ(window->currentFaultId(), b);

    // Ctrl+click: every section view goes through the point, the 3D views show a cross.
    emit viewer->referencePointPicked(core::vec3(50.0, 1040.0, 120.0));
    ZNSectionView* inlineView = window->views()->sectionViews().first();
    EXPECT_EQ(inlineView->engine().sectionIndex(), 5);
    EXPECT_EQ(countOf(SceneKind::ReferencePoint), 1);
    for (const ZN3DScene::Item& item : scene().items())
        if (item.kind() == SceneKind::ReferencePoint) {
            EXPECT_EQ(std::get<ZN3DReferencePointItem>(item.content).position.z, 120.0);
        }
}
