// The picking front end: gestures become the fault set's picking operations, each edit
// leaves snapshots that undo it exactly.
#include <gtest/gtest.h>

#include <random>
#include <vector>

#include <QSignalSpy>

#include <faultpalette.h>
#include <orthographicviewer.h>
#include <znfaultpatchmanager.h>
#include <znfaultpickingsession.h>

namespace {

// The hand-picked entries of every fault, in descriptor order (separators as -9999 x):
// what an undo must give back exactly.
using HandPoints = std::vector<std::pair<int, std::vector<core::vec3>>>;
HandPoints handPointsOf(const ZNFaultPatchManager& set)
{
    HandPoints all;
    for (const ZN3DFaultPatchLight* light : set.getFaultLightList()) {
        core::Array<core::PointWithBool> points;
        set.getFaultPickedPointArray(light->getFaultId(), points);
        std::vector<core::vec3> hand;
        for (const core::PointWithBool& p : points)
            if (!p.flag) hand.push_back(p.position());
        all.emplace_back(light->getFaultId(), hand);
    }
    return all;
}

// The session with a record of its edits.
struct Picking {
    ZNFaultPatchManager set;
    OrthographicViewer viewer;  // screen = world x, y
    ZNFaultPickingSession session{&set};
    std::vector<int> snapshots;  // of each edit
    QStringList actions;
    Picking()
    {
        QObject::connect(&session, &ZNFaultPickingSession::edited, [this](const QString& action, int, int count) {
            actions << action;
            snapshots.push_back(count);
        });
    }
    void click(double x, double y)
    {
        session.press({x, y, 0}, {x, y}, viewer);
        session.release(viewer);
    }
    // Undoes the last edit as the host does: every snapshot it stored.
    void undo()
    {
        core::vec3 focus;
        for (int k = 0; k < snapshots.back(); ++k) set.undoWithLastConfiguration(focus);
    }
};

core::vec3 S() { return {-9999, -9999, -9999}; }

} // namespace

TEST(FaultPickingSession, AScriptedSessionGivesExactlyThePointsPicked)
{
    Picking p;
    p.click(0, 0);      // no current fault: a new one starts
    p.click(0, 30);
    ASSERT_TRUE(p.session.endStick());
    EXPECT_FALSE(p.session.endStick());  // closed already
    p.click(60, 0);     // a new stick
    p.click(60, 36);    // nearest to its last point: appended
    p.click(0, 15);     // between the first stick's points: inserted there
    p.click(0, 45);     // nearest to the end of the first stick, closed: before its separator
    p.click(2, 46);     // within reach of a point: that point is moved, not copied
    const int first = p.session.currentFault();
    EXPECT_EQ(handPointsOf(p.set),
              (HandPoints{{first, {{0, 0, 0}, {0, 15, 0}, {0, 30, 0}, {2, 46, 0}, S(), {60, 0, 0}, {60, 36, 0}}}}));
    EXPECT_EQ(p.actions, (QStringList{"New Fault", "Pick Point", "Pick Point", "End Stick", "Pick Point", "Pick Point",
                                      "Pick Point", "Pick Point", "Move Point"}));
    EXPECT_EQ(p.set.findFaultLight(first)->GetFaultName(), "Fault 1");
    EXPECT_EQ(p.set.findFaultLight(first)->getPen().color(), fault::faultColour(0));

    // A second fault in the next colour; picks go to it.
    const int second = p.session.newFault();
    EXPECT_NE(second, first);
    EXPECT_EQ(p.set.findFaultLight(second)->GetFaultName(), "Fault 2");
    EXPECT_EQ(p.set.findFaultLight(second)->getPen().color(), fault::faultColour(1));
    p.click(150, 0);
    EXPECT_EQ(handPointsOf(p.set)[1].second, (std::vector<core::vec3>{{150, 0, 0}}));
    QString why;
    EXPECT_TRUE(p.set.isValid(&why)) << why.toStdString();
}

TEST(FaultPickingSession, APointGrabbedIsDraggedNotCopiedAndRemovalTakesThePointUnderTheCursor)
{
    Picking p;
    p.click(0, 0);
    p.click(0, 10);
    p.click(0, 20);
    // Grab (0, 10) from 5 pixels away and drag it.
    ASSERT_TRUE(p.session.press({5, 10, 0}, {5, 10}, p.viewer));
    p.session.drag({3, 11, 0}, p.viewer);
    p.session.drag({2, 12, 0}, p.viewer);
    p.session.release(p.viewer);
    EXPECT_EQ(p.actions.last(), "Move Point");
    EXPECT_EQ(handPointsOf(p.set)[0].second, (std::vector<core::vec3>{{0, 0, 0}, {2, 12, 0}, {0, 20, 0}}));
    EXPECT_EQ(p.set.getCurrentMovingPointId(), -9999);

    EXPECT_FALSE(p.session.removeNear({40, 40}, p.viewer));  // nothing near
    const int edits = static_cast<int>(p.actions.size());
    ASSERT_TRUE(p.session.removeNear({1, 21}, p.viewer));
    EXPECT_EQ(handPointsOf(p.set)[0].second, (std::vector<core::vec3>{{0, 0, 0}, {2, 12, 0}}));
    EXPECT_EQ(static_cast<int>(p.actions.size()), edits + 1);
}

TEST(FaultPickingSession, UndoAfterEachKindOfEditRestoresThePreviousPointsExactlyAndRedoReplaysThem)
{
    Picking p;
    std::vector<HandPoints> states{handPointsOf(p.set)};  // before any edit, then after each
    QObject::connect(&p.session, &ZNFaultPickingSession::edited, [&] { states.push_back(handPointsOf(p.set)); });
    p.click(0, 0);
    p.click(0, 10);
    p.session.endStick();
    p.click(10, 0);
    p.click(10, 10);
    p.session.press({10, 9, 0}, {10, 9}, p.viewer);
    p.session.drag({12, 11, 0}, p.viewer);
    p.session.release(p.viewer);
    p.session.removeNear({0, 0}, p.viewer);
    p.session.newFault();
    p.click(30, 0);
    p.session.setCurrentFault(p.set.getFaultLightList()[0]->getFaultId());
    p.click(0, 30);  // back on the first fault: a snapshot before is needed
    p.session.eraseInsideEllipse({10, 5}, 4, 8, p.viewer);
    p.session.cleanCurrentFault();
    const std::size_t edits = p.snapshots.size();
    ASSERT_EQ(states.size(), edits + 1);
    EXPECT_TRUE(p.actions.contains("Erase Points"));

    core::vec3 focus;
    for (std::size_t i = edits; i >= 1; --i) {
        for (int k = 0; k < p.snapshots[i - 1]; ++k) ASSERT_TRUE(p.set.undoWithLastConfiguration(focus)) << i;
        EXPECT_EQ(handPointsOf(p.set), states[i - 1]) << "undoing " << p.actions[int(i) - 1].toStdString();
    }
    for (std::size_t i = 1; i <= edits; ++i) {
        for (int k = 0; k < p.snapshots[i - 1]; ++k) ASSERT_TRUE(p.set.redoWithLastConfiguration(focus)) << i;
        EXPECT_EQ(handPointsOf(p.set), states[i]) << "redoing " << p.actions[int(i) - 1].toStdString();
    }
}

TEST(FaultPickingSession, EditsThatChangeNothingLeaveTheHistoryAloneAndSparesRunningOutRestartIt)
{
    Picking p;
    p.click(0, 0);
    p.click(0, 10);
    const int history = p.set.getNumberOfConfiguration();
    EXPECT_FALSE(p.session.cleanCurrentFault());  // no isolated point, no interruption
    EXPECT_EQ(p.session.eraseInsideEllipse({90, 90}, 2, 2, p.viewer), 0);
    EXPECT_EQ(p.set.getNumberOfConfiguration(), history);

    QSignalSpy restarted(&p.session, &ZNFaultPickingSession::historyRestarted);
    const int patches = p.set.getNumberOfPatch();
    for (int k = 0; k < ZNFaultPickingSession::kSparePatches + 2; ++k) ASSERT_NE(p.session.newFault(), -9999);
    EXPECT_EQ(restarted.count(), 1);
    EXPECT_GT(p.set.getNumberOfPatch(), patches);
    EXPECT_LE(p.set.getNumberOfConfiguration(), 4);  // what came after the restart only
    QString why;
    EXPECT_TRUE(p.set.isValid(&why)) << why.toStdString();
}

TEST(FaultPickingSession, ARandomSessionKeepsTheFaultSetValidAndEveryUndoExact)
{
    std::mt19937 random(20261124);
    Picking p;
    std::vector<HandPoints> states{handPointsOf(p.set)};  // states[i]: after i edits
    std::size_t position = 0;                              // edits in effect
    std::vector<int> steps;                                // snapshots of each edit in effect
    QObject::connect(&p.session, &ZNFaultPickingSession::edited, [&](const QString&, int, int count) {
        states.resize(position + 1);
        steps.resize(position);
        states.push_back(handPointsOf(p.set));
        steps.push_back(count);
        ++position;
    });
    std::uniform_real_distribution<double> coordinate(0.0, 100.0);
    core::vec3 focus;
    for (int round = 0; round < 400; ++round) {
        const int what = std::uniform_int_distribution<int>(0, 9)(random);
        const double x = coordinate(random), y = coordinate(random);
        if (what <= 3) {
            p.click(x, y);
        } else if (what == 4) {
            p.session.press({x, y, 0}, {x, y}, p.viewer);
            p.session.drag({x + 3, y - 2, 0}, p.viewer);
            p.session.release(p.viewer);
        } else if (what == 5) {
            p.session.removeNear({x, y}, p.viewer);
            p.session.endStick();
        } else if (what == 6 && p.set.getFaultLightList().size() < 6) {
            p.session.newFault();
        } else if (what == 7 && position > 0) {
            for (int k = 0; k < steps[position - 1]; ++k) ASSERT_TRUE(p.set.undoWithLastConfiguration(focus));
            --position;
            ASSERT_EQ(handPointsOf(p.set), states[position]) << "round " << round;
        } else if (what == 8 && position + 1 < states.size()) {
            for (int k = 0; k < steps[position]; ++k) ASSERT_TRUE(p.set.redoWithLastConfiguration(focus));
            ++position;
            ASSERT_EQ(handPointsOf(p.set), states[position]) << "round " << round;
        } else if (what == 9) {
            p.session.eraseInsideEllipse({x, y}, 6, 6, p.viewer);
        }
        QString why;
        ASSERT_TRUE(p.set.isValid(&why)) << "round " << round << ": " << why.toStdString();
    }
    EXPECT_GT(position, 20u);
}
