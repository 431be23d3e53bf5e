// A seeded random editing session: picks, inserts, drags, deletions, cleanings, automatic
// points, regroupings, undos and redos, as an interpreter's front end issues them. Each
// edit is followed by a snapshot of every patch; a model of the history predicts what
// each undo and redo restores.
#include <gtest/gtest.h>

#include <deque>
#include <map>
#include <random>

#include <core/conventions.h>
#include <znfaultpatchmanager.h>
#include <znfaultpatchmanagerconfig.h>

#include "faultsetfixtures.h"
#include "orthographicviewer.h"

using namespace fixtures;

namespace {

constexpr int kSteps = 1000;
constexpr unsigned kSeed = 20240611u;
constexpr int kPatches = 6;  // reserved 0; fault A = 1, 2, 3; fault B = 4; spare 5

class Session {
public:
    Session() : m_rng(kSeed)
    {
        linkPatches(m_set, 1, {2, 3});
        m_set.insertNewFaultLight(1);
        m_set.insertNewFaultLight(4);
        for (int id = 0; id < kPatches; ++id) m_allPatches.add(id);
        m_viewer.showOnly({1, 2, 4, 5});
        newSection();
        snapshot("Start");
    }

    ZNFaultPatchManager& set() { return m_set; }
    const std::deque<State>& model() const { return m_model; }
    int modelCurrent() const { return m_current; }
    const std::map<std::string, int>& counts() const { return m_counts; }

    // One random operation; false when a restore did not give the predicted state.
    bool step()
    {
        const int kind = pick(0, 99);
        if (kind < 20) return edit("pick", [&] { pickPoint(); });
        if (kind < 30) return edit("insert", [&] { insertPoint(); });
        if (kind < 45) return edit("drag", [&] { drag(); });
        if (kind < 53) return edit("delete", [&] { deletePoint(); });
        if (kind < 58) return edit("clean", [&] { clean(); });
        if (kind < 66) return edit("automatic", [&] { automatic(); });
        if (kind < 70) return edit("regroup", [&] { regroup(); });
        if (kind < 72) return edit("setpoint", [&] { movePoint(); });
        if (kind < 88) return undo();
        return redo();
    }

    bool undo()
    {
        ++m_counts["undo"];
        core::vec3 focus;
        const bool moved = m_set.undoWithLastConfiguration(focus);
        if (moved != (m_current > 0)) return false;
        if (moved) --m_current;
        return !moved || State::of(m_set) == m_model[m_current];
    }

    bool redo()
    {
        ++m_counts["redo"];
        core::vec3 focus;
        const bool moved = m_set.redoWithLastConfiguration(focus);
        if (moved != (m_current + 1 < static_cast<int>(m_model.size()))) return false;
        if (moved) ++m_current;
        return !moved || State::of(m_set) == m_model[m_current];
    }

private:
    int pick(int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(m_rng); }
    // Small integer coordinates on three depths: coincident points, collinear sticks and
    // sticks lying in the shown section all happen.
    core::vec3 randomPosition() { return core::vec3(pick(0, 20), pick(0, 20), 5 * pick(0, 2)); }
    int randomPatch() { return pick(0, kPatches); }  // 0 and 6 are refused ids
    int randomIndex(int patch) { return pick(-1, m_set.getNumberOfPickedPoint(patch) + 1); }

    template <class Edit>
    bool edit(const char* name, Edit&& e)
    {
        ++m_counts[name];
        e();
        snapshot(name);
        return true;
    }

    void pickPoint()
    {
        const int patch = randomPatch();
        m_set.setCurrentPickedFaultId(pick(0, 1) ? patch : m_set.getCurrentPickedFaultId());
        m_set.removeAdditionalPoint(m_set.getCurrentPickedFaultId(), &m_viewer);
        if (pick(0, 4) == 0)
            m_set.addPickedPoint(core::PointWithBool::separator());  // closes the stick
        else
            m_set.addPickedPoint(core::PointWithBool(randomPosition()));
        m_set.createAdditionalPoint(m_set.getCurrentPickedFaultId(), &m_viewer);
    }

    void insertPoint()
    {
        const int patch = randomPatch();
        m_set.insertPickedPoint(patch, randomIndex(patch), randomPosition());
    }

    void drag()
    {
        const int patch = randomPatch();
        const int moves = pick(1, 4);
        for (int k = 0; k < moves; ++k) m_set.insertMovingPointBis(patch, randomPosition(), &m_viewer);
        if (pick(0, 1))
            m_set.setPickedPoint(m_set.getCurrentPickedFaultId(), m_set.getCurrentMovingPointId(),
                                 core::PointWithBool(randomPosition()));
    }

    void deletePoint()
    {
        if (pick(0, 2) == 0) {
            m_set.removePickedMovingPoint();
        } else {
            const int patch = randomPatch();
            m_set.removePickedPoint(patch, randomIndex(patch));
        }
    }

    void clean()
    {
        switch (pick(0, 3)) {
        case 0: m_set.cleanFaultPicking(randomPatch()); break;
        case 1: m_set.removeIsolatedPointForAllPatch(); break;
        case 2: m_set.removePickingInterruptionForOnePatch(randomPatch()); break;
        default: m_set.removeIsolatedPointForOnePatch(randomPatch()); break;
        }
    }

    void automatic()
    {
        if (pick(0, 3) == 0) newSection();
        const int patch = randomPatch();
        if (pick(0, 2) == 0) {
            m_set.removeAdditionalPoint(patch, &m_viewer);
        } else if (pick(0, 1)) {
            m_set.createAdditionalPoint(patch, &m_viewer);
        } else {
            int cursor = randomIndex(patch);
            m_set.removeAutomaticPickedPoints(patch, &cursor);
        }
    }

    // Moves patch 3 between the two faults, or makes it a fault of its own.
    void regroup()
    {
        const int fathers[] = {1, 3, 4};
        m_set.setFather(3, fathers[pick(0, 2)]);
        m_set.initElementListBis();
    }

    void movePoint()
    {
        const int patch = randomPatch();
        m_set.setPickedPoint(patch, randomIndex(patch), core::PointWithBool(randomPosition()));
    }

    void newSection()
    {
        geom::RandomLine line = OrthographicViewer::sectionAlongX(
            2.5 * pick(0, 4), -pick(0, 5), 20 + pick(0, 5), pick(-5, 10), pick(10, 25));
        if (pick(0, 2) == 0) line.nodes.add(core::vec2(pick(0, 20), 10 + pick(0, 10)));
        m_viewer.setSection(line);
    }

    // Snapshot of every patch, and the model's copy of what it will restore: the state
    // without the point being dragged.
    void snapshot(const char* name)
    {
        m_set.insertUndoListConfiguration(m_set.getConfiguration(name, &m_allPatches));
        State expected = State::of(m_set);
        const int fault = m_set.getCurrentPickedFaultId();
        const int moving = m_set.getCurrentMovingPointId();
        if (m_set.isValidPatchId(fault) && moving >= 0 &&
            moving < static_cast<int>(expected.points[fault].size()))
            expected.points[fault].erase(expected.points[fault].begin() + moving);
        m_model.erase(m_model.begin() + m_current + 1, m_model.end());
        if (static_cast<int>(m_model.size()) > m_set.getHistoryLimit()) m_model.pop_front();
        m_model.push_back(expected);
        m_current = static_cast<int>(m_model.size()) - 1;
    }

    std::mt19937 m_rng;
    ZNFaultPatchManager m_set{kPatches};
    OrthographicViewer m_viewer;
    core::Array<int> m_allPatches;
    std::deque<State> m_model;  // what each snapshot of the history restores
    int m_current = -1;         // model index of the current snapshot
    std::map<std::string, int> m_counts;
};

} // namespace

TEST(FaultEditingSession, AThousandRandomEditsKeepTheFaultSetValidAndUndoable)
{
    Session session;
    for (int i = 0; i < kSteps; ++i) {
        SCOPED_TRACE(testing::Message() << "step " << i);
        ASSERT_TRUE(session.step()) << "an undo or redo restored another state";
        QString why;
        ASSERT_TRUE(session.set().isValid(&why)) << why.toStdString();
        ASSERT_EQ(session.set().getNumberOfConfiguration(), static_cast<int>(session.model().size()));
    }
    for (const char* kind : {"pick", "insert", "drag", "delete", "clean", "automatic", "regroup",
                             "undo", "redo"})
        EXPECT_GT(session.counts().at(kind), 10) << kind;

    core::vec3 focus;
    while (session.set().undoWithLastConfiguration(focus)) {}
    EXPECT_TRUE(State::of(session.set()) == session.model().front())
        << "undoing everything restores the first state";
    while (session.set().redoWithLastConfiguration(focus)) {}
    EXPECT_TRUE(State::of(session.set()) == session.model().back())
        << "redoing everything restores the last state";
    EXPECT_TRUE(session.set().isValid());
}
