// Picking fault sticks on sections in the studio, with the real section viewer driven by
// mouse and key events: the points picked, undo and redo, the emergency save, the
// surfaces meshed again, automatic points following the section.
#include <QUndoGroup>
#include <QUndoStack>

#include <volumeio/gridaxes.h>
#include <zn3dfaultpatch.h>
#include <znfaultpatchmanager.h>
#include <znfaultpatchtools.h>
#include <znfaultpickingsession.h>
#include <znsectionview.h>
#include <znsettings.h>

#include "studioviews.h"
#include "studiotestfixture.h"

namespace {

using Kind = ZNBlocViewerEngine::SectionKind;

// The hand-picked entries of every fault, in descriptor order (separators x = -9999).
std::vector<std::vector<core::vec3>> handPoints(const ZNFaultPatchManager& set)
{
    std::vector<std::vector<core::vec3>> all;
    for (const ZN3DFaultPatchLight* light : set.getFaultLightList()) {
        core::Array<core::PointWithBool> points;
        set.getFaultPickedPointArray(light->getFaultId(), points);
        std::vector<core::vec3> hand;
        for (const core::PointWithBool& p : points)
            if (!p.flag) hand.push_back(p.position());
        all.push_back(hand);
    }
    return all;
}

class PickingTest : public StudioTest {
protected:
    void SetUp() override
    {
        StudioTest::SetUp();
        // 40 inlines x 40 crosslines x 40 samples, 10 m by 10 m by 4 ms, from 1000 ms.
        auto image = std::make_shared<ZN3DImage<float>>(
            georef::BlocSpace(40, 40, 40, volumeio::axisAlignedBlocToWorld({10, 10, 4}, {0, 1000, 0})));
        image->fill(0.0f);
        volume = window->project()->addVolume(std::make_unique<ZNVolume>(
            image, georef::UnitObject(georef::UnitObject::SpatialMetre, georef::UnitObject::VerticalMillisecond),
            "Survey"));
        view = window->views()->sectionViews().first();
        view->engine().setSection(Kind::Inline, 20);
        window->setInteraction(StudioWindow::Interaction::Pick);
        document = window->currentDocument();
    }
    // A click at image position (crossline c, sample r) of the shown section.
    void click(double c, double r, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        QTest::mouseClick(view->viewer(), Qt::LeftButton, modifiers, at(c, r));
    }
    QPoint at(double c, double r) const { return view->engine().imageToViewport(QPointF(c, r)).toPoint(); }
    core::vec3 world(double c, double r) const { return view->engine().viewportToWorld(at(c, r)); }
    void drag(double c0, double r0, double c1, double r1)
    {
        QTest::mousePress(view->viewer(), Qt::LeftButton, Qt::NoModifier, at(c0, r0));
        QMouseEvent move(QEvent::MouseMove, at(c1, r1), Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(view->viewer(), &move);
        QTest::mouseRelease(view->viewer(), Qt::LeftButton, Qt::NoModifier, at(c1, r1));
    }

    ZNVolume* volume = nullptr;
    ZNSectionView* view = nullptr;
    FaultSetDocument* document = nullptr;
};

const core::vec3 kSeparator(-9999, -9999, -9999);

} // namespace

TEST_F(PickingTest, AScriptedSessionOfPicksDragsDeletesAndStickEndsGivesExactlyThePointsExpected)
{
    ASSERT_NE(document, nullptr);
    EXPECT_EQ(document->name(), "Picks");
    click(5, 5);    // the first click makes a fault
    click(7, 15);
    click(9, 25);
    drag(7, 15, 7, 17);  // the middle point dragged along its stick
    QTest::keyClick(view->viewer(), Qt::Key_Return);  // end the stick
    view->engine().setSection(Kind::Inline, 24);
    click(6, 5);
    click(8, 30);
    click(20, 35);
    click(20, 35, Qt::ShiftModifier);  // deleted again
    QTest::keyClick(view->viewer(), Qt::Key_N);  // a second fault
    click(30, 10);
    click(31, 20);

    const auto points = handPoints(*document->faultSet());
    ASSERT_EQ(points.size(), 2u);
    view->engine().setSection(Kind::Inline, 20);
    const std::vector<core::vec3> first{world(5, 5), world(7, 17), world(9, 25), kSeparator};
    view->engine().setSection(Kind::Inline, 24);
    std::vector<core::vec3> expected = first;
    expected.push_back(world(6, 5));
    expected.push_back(world(8, 30));
    EXPECT_EQ(points[0], expected);
    EXPECT_EQ(points[1], (std::vector<core::vec3>{world(30, 10), world(31, 20)}));
    EXPECT_EQ(treeNames(document), (QStringList{"Fault 1", "Fault 2"}));

    // Saved and read back: the same sticks.
    const QString path = dir.filePath("picks.faultset");
    ASSERT_TRUE(window->saveFaultSet(document, path));
    ZNFaultPatchManager back;
    ASSERT_TRUE(back.readPickedFault(path, false, -1));
    EXPECT_EQ(handPoints(back), points);
}

TEST_F(PickingTest, UndoAfterEachKindOfEditRestoresThePointsAndRedoReplaysThem)
{
    std::vector<std::vector<std::vector<core::vec3>>> states{handPoints(*document->faultSet())};
    const auto record = [&] { states.push_back(handPoints(*document->faultSet())); };
    click(5, 5);
    record();  // two steps: the new fault, then its point
    click(7, 20);
    record();
    drag(7, 20, 10, 22);
    record();
    QTest::keyClick(view->viewer(), Qt::Key_Return);
    record();
    view->engine().setSection(Kind::Inline, 25);
    click(5, 5);
    record();
    click(5, 5, Qt::ShiftModifier);
    record();
    QUndoStack* undo = document->undoStack();
    EXPECT_EQ(undo->count(), 7);
    EXPECT_EQ(window->undoGroup()->undoText(), "Delete Point");
    for (int i = static_cast<int>(states.size()) - 1; i >= 1; --i) {
        window->undoGroup()->undo();
        if (i == 1) window->undoGroup()->undo();  // the first click was two steps
        EXPECT_EQ(handPoints(*document->faultSet()), states[i - 1]) << i;
    }
    for (std::size_t i = 1; i < states.size(); ++i) {
        window->undoGroup()->redo();
        if (i == 1) window->undoGroup()->redo();
        EXPECT_EQ(handPoints(*document->faultSet()), states[i]) << i;
    }
}

TEST_F(PickingTest, TheTenthEditWritesTheEmergencyFileWhichReadsBackToTheSameFaults)
{
    const QString emergency = QDir(StudioWindow::workingFolder()).filePath(ZNFaultPatchTools::getAutoSaveFileNameTime());
    QFile::remove(emergency);
    for (int k = 0; k < 9; ++k) click(5 + k, 2 + 4 * k);  // a new fault and 9 picks: 10 edits
    EXPECT_TRUE(QFileInfo::exists(emergency));
    ZNFaultPatchManager saved;
    ASSERT_TRUE(saved.readPickedFault(emergency, false, -1));
    EXPECT_EQ(handPoints(saved), handPoints(*document->faultSet()));

    // A session that ended without saving is offered the file back.
    QStringList offered;
    EXPECT_EQ(window->offerEmergencyRestore([&](const QStringList& files) {
                  offered = files;
                  return true;
              }),
              1);
    ASSERT_TRUE(waitForTasks());
    EXPECT_EQ(offered, (QStringList{emergency}));
    ASSERT_EQ(window->project()->faultSets().size(), 2);
    EXPECT_EQ(handPoints(*window->project()->faultSets()[1]->faultSet()), handPoints(*document->faultSet()));
}

TEST_F(PickingTest, TheSurfaceIsMeshedAgainAfterAnEditAndPassesThroughTheNewPoint)
{
    click(5, 5);
    click(5, 30);
    QTest::keyClick(view->viewer(), Qt::Key_Return);
    view->engine().setSection(Kind::Inline, 26);
    click(15, 5);
    click(15, 30);
    const int fault = document->faultIds().first();
    const ZN3DFaultPatch* surface = document->surface(fault);
    ASSERT_GT(surface->getNumberOfFacettes(), 0);
    const int before = surface->getNumberOfFacettes();
    click(16, 18);  // a third point on the second stick
    EXPECT_NE(surface->getNumberOfFacettes(), before);
    const core::vec3 added = world(16, 18);
    bool through = false;
    for (const core::vec3& p : surface->getPoints()) through = through || (p - added).length() < 1e-6;
    EXPECT_TRUE(through);
}

TEST_F(PickingTest, ASectionChangeKeepsHandPointsAndMakesOnlyTheAutomaticOnesAgain)
{
    click(5, 5);
    click(5, 30);
    QTest::keyClick(view->viewer(), Qt::Key_Return);
    view->engine().setSection(Kind::Inline, 30);
    click(25, 5);
    click(25, 30);
    const auto hand = handPoints(*document->faultSet());
    const auto automatic = [&] {
        core::Array<core::PointWithBool> points;
        document->faultSet()->getFaultPickedPointArray(document->faultIds().first(), points);
        std::vector<core::vec3> found;
        for (const core::PointWithBool& p : points)
            if (p.flag && !p.isSeparator()) found.push_back(p.position());
        return found;
    };
    view->engine().setSection(Kind::Inline, 25);  // between the sticks: the surface crosses it
    const auto between = automatic();
    ASSERT_FALSE(between.empty());
    for (const core::vec3& p : between) EXPECT_NEAR(view->engine().worldToBloc(p).x, 25.0, 1e-6);
    view->engine().setSection(Kind::Inline, 22);
    const auto elsewhere = automatic();
    ASSERT_FALSE(elsewhere.empty());
    for (const core::vec3& p : elsewhere) EXPECT_NEAR(view->engine().worldToBloc(p).x, 22.0, 1e-6);
    EXPECT_EQ(handPoints(*document->faultSet()), hand);
}
