// The studio's section views: opened with a volume, showing the faults, sharing the
// reference point.
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenu>

#include <cmath>

#include <znfaultsectiondrawable.h>
#include <znsectionview.h>

#include "studio3dviews.h"
#include "studioviews.h"
#include "studiotestfixture.h"

namespace {
using Kind = ZNBlocViewerEngine::SectionKind;

// The fault drawables of a view.
std::vector<ZNFaultSectionDrawable*> faultsIn(ZNSectionView* view)
{
    std::vector<ZNFaultSectionDrawable*> found;
    for (const auto& d : view->engine().drawables())
        if (auto* f = dynamic_cast<ZNFaultSectionDrawable*>(d.get())) found.push_back(f);
    return found;
}
} // namespace

TEST_F(StudioTest, AVolumeOpenedShowsItsMiddleInlineWithTheFaultsOverIt)
{
    window->openDemo(64);
    ASSERT_TRUE(waitForTasks());
    const QList<ZNSectionView*> views = window->views()->sectionViews();
    ASSERT_EQ(views.size(), 1);
    ZNSectionView* view = views.first();
    EXPECT_EQ(view->engine().sectionKind(), Kind::Inline);
    EXPECT_EQ(view->engine().sectionIndex(), 32);
    EXPECT_EQ(view->engine().colourScale().map(), img::ColourScale::Map::Viridis);  // a likelihood
    EXPECT_EQ(window->mdiArea()->subWindowList().size(), 2);  // the inline and a 3D view
    EXPECT_EQ(window->views3D()->views().size(), 1);
    const auto faults = faultsIn(view);
    ASSERT_EQ(faults.size(), 1u);
    EXPECT_FALSE(faults[0]->linesOn(view->engine()).empty());  // the demo's faults cut the inline

    // A fault hidden in the tree leaves the view; closing the set takes its drawable away.
    FaultSetDocument* document = window->project()->faultSets().first();
    const std::size_t shownBefore = faults[0]->linesOn(view->engine()).size();
    std::map<int, bool> none;
    for (int id : document->faultIds()) none[id] = false;
    document->setFaultsVisible(none);
    EXPECT_LT(faults[0]->linesOn(view->engine()).size(), shownBefore);
    window->closeFaultSet(document);
    EXPECT_TRUE(faultsIn(view).empty());
}

TEST_F(StudioTest, TheReferencePointIsSharedAndOtherSectionViewsGoThroughIt)
{
    window->openDemo(64);
    ASSERT_TRUE(waitForTasks());
    ZNVolume* volume = window->project()->volumes().first();
    ZNSectionView* inlineView = window->views()->sectionViews().first();
    ZNSectionView* crosslineView = window->views()->openSectionView(volume, Kind::Crossline);
    ZNSectionView* sliceView = window->views()->openSectionView(volume, Kind::Slice);
    ASSERT_EQ(window->views()->sectionViews().size(), 3);

    // Ctrl+click on the inline at crossline 10, sample 50.
    ZNSeismicViewerAbstractEngine& e = inlineView->engine();
    const QPoint at = e.imageToViewport(QPointF(10, 50)).toPoint();
    QTest::mouseClick(inlineView->viewer(), Qt::LeftButton, Qt::ControlModifier, at);
    ASSERT_TRUE(window->views()->hasReferencePoint());
    for (ZNSectionView* v : window->views()->sectionViews()) EXPECT_TRUE(v->engine().hasReferencePoint());
    EXPECT_EQ(inlineView->engine().sectionIndex(), 32);   // the view it was picked in stays
    EXPECT_EQ(crosslineView->engine().sectionIndex(), 10);
    EXPECT_EQ(sliceView->engine().sectionIndex(), 50);

    window->project()->removeVolume(volume);  // its views close with it
    QTest::qWait(10);
    EXPECT_TRUE(window->views()->sectionViews().isEmpty());
}

TEST_F(StudioTest, TheCurrentFaultIsDrawnAsCurrentInEveryView)
{
    window->openDemo(64);
    ASSERT_TRUE(waitForTasks());
    FaultSetDocument* document = window->project()->faultSets().first();
    const int second = document->faultIds()[1];
    window->studioTree()->selectFault(document, second);
    ZNSectionView* view = window->views()->sectionViews().first();
    EXPECT_EQ(faultsIn(view)[0]->currentFault(), second);
    window->objectTree()->selectItem(nullptr);
    window->studioTree()->selectFault(document, -9999);  // the set itself: no current fault
    EXPECT_EQ(faultsIn(view)[0]->currentFault(), -9999);
}

TEST_F(StudioTest, ClickingAFaultInAViewSelectsItInTheTreeAndCentringMovesTheViewsToAFault)
{
    window->openDemo(64);
    ASSERT_TRUE(waitForTasks());
    FaultSetDocument* document = window->project()->faultSets().first();
    ZNSectionView* view = window->views()->sectionViews().first();
    const auto lines = faultsIn(view)[0]->linesOn(view->engine());
    ASSERT_FALSE(lines.empty());
    ASSERT_FALSE(lines[0].trace.empty());
    const QPoint onTrace = lines[0].trace[lines[0].trace.size() / 2].center().toPoint();
    QTest::mouseClick(view->viewer(), Qt::LeftButton, Qt::NoModifier, onTrace);
    EXPECT_EQ(window->currentDocument(), document);
    EXPECT_EQ(window->currentFaultId(), lines[0].faultId);

    // "Centre Views on It": the section view goes through the fault's middle.
    const int other = document->faultIds().back();
    core::vec3 centre;
    ASSERT_TRUE(document->faultCentre(other, centre));
    std::unique_ptr<QMenu> menu(window->objectTree()->buildContextMenu(window->studioTree()->faultItem(document, other)));
    for (QAction* a : menu->actions())
        if (a->text() == StudioTree::centreText()) a->trigger();
    ASSERT_TRUE(window->views()->hasReferencePoint());
    EXPECT_EQ(view->engine().sectionIndex(), static_cast<int>(std::lround(view->engine().worldToBloc(centre).x)));
}
