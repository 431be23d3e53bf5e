// The host side of the cleaning assistant without a window: what it proposes for a fault
// set with planted duplicates, and what each answer does to the rows and to the fault set.
#include <gtest/gtest.h>

#include <QSignalSpy>
#include <QUndoStack>

#include <zn3dfaultpatch.h>

#include "cleaningfixtures.h"
#include "faultcleaningpairs.h"
#include "faultcleaningsession.h"
#include "faultpairpicture.h"
#include "pictures.h"
#include "testservices.h"

using namespace cleaning;

namespace {

FaultCleaningPairs detect(const FaultSetDocument& document, const core::Array<core::Duplet>& candidates,
                          const core::Array<double>& costs)
{
    ZNFaultPatchManager copy(*document.faultSet());  // the worker's own set
    return findCleaningPairs(copy, candidates, costs, -1);
}

FaultCleaningPairs detect(const FaultSetDocument& document)
{
    return detect(document, core::Array<core::Duplet>(), core::Array<double>());
}

QList<core::Duplet> rows(const FaultCleaningSession& session)
{
    QList<core::Duplet> out;
    for (const core::Duplet& pair : session.pairs()) out << pair;
    return out;
}

struct Cleaning {
    std::unique_ptr<FaultSetDocument> document = plantedDocument();
    std::unique_ptr<FaultCleaningSession> session;
    Cleaning() : session(std::make_unique<FaultCleaningSession>(document.get(), detect(*document)))
    {
        session->setCurrentRow(0);
    }
    ZNFaultPatchManager& set() { return *document->faultSet(); }
};

} // namespace

TEST(FaultCleaningPairs, FindsEachPlantedDuplicateOnceWithAPictureOfBothFaults)
{
    auto document = plantedDocument();
    const FaultCleaningPairs found = detect(*document);
    ASSERT_EQ(found.pairs.size(), 3);
    EXPECT_EQ(found.pairs[0], core::Duplet(2, 7));
    EXPECT_EQ(found.pairs[1], core::Duplet(4, 8));
    EXPECT_EQ(found.pairs[2], core::Duplet(5, 9));
    EXPECT_FALSE(found.cancelled);
    ASSERT_EQ(found.pictures.size(), 3u);
    for (int k = 0; k < 3; ++k) {
        EXPECT_EQ(found.scores[k], 0.0);
        const QImage& picture = found.pictures[std::size_t(k)];
        EXPECT_EQ(picture.size(), QSize(48, 48));
        const QRect all = picture.rect();
        // The copy lies inside the original: blue lines within orange ones.
        EXPECT_GT(picturetest::countPixels(picture, all, picturetest::sameHue(firstFaultColour())), 100);
        EXPECT_GT(picturetest::countPixels(picture, all, picturetest::sameHue(secondFaultColour())), 40);
        picturetest::keepPicture(picture, QStringLiteral("cleaning_pair_%1").arg(k));
    }
}

TEST(FaultCleaningPairs, MergeCandidatesFollowTheDuplicatesSignedWithTheirCosts)
{
    auto document = plantedDocument();
    core::Array<core::Duplet> candidates;
    core::Array<double> costs;
    const std::pair<core::Duplet, double> given[] = {
        {{1, 3}, 0.5},    // listed as (-1, 3)
        {{2, 7}, 0.7},    // a duplicate already: once only
        {{6, 3}, 0.9},    // listed smaller id first
        {{4, 4}, 1.0},    // one fault
        {{1, 99}, 1.1},   // no such fault
        {{6, 40}, 1.2},   // a spare patch: no fault
    };
    for (const auto& c : given) {
        candidates.add(c.first);
        costs.add(c.second);
    }
    const FaultCleaningPairs found = detect(*document, candidates, costs);
    ASSERT_EQ(found.pairs.size(), 5);
    EXPECT_EQ(found.pairs[3], core::Duplet(-1, 3));
    EXPECT_EQ(found.pairs[4], core::Duplet(-3, 6));
    EXPECT_EQ(found.scores[3], 0.5);
    EXPECT_EQ(found.scores[4], 0.9);
    EXPECT_EQ(found.pictures.size(), 5u);
}

TEST(FaultCleaningPairs, ACancelKeepsWhatWasDrawn)
{
    auto document = plantedDocument();
    RecordingProgress progress;
    progress.cancelOnTitle = QStringLiteral("Fault Pair Pictures");
    const FaultCleaningPairs found = detect(*document);
    EXPECT_TRUE(found.cancelled);
    EXPECT_LT(found.pairs.size(), 3);
    EXPECT_EQ(found.scores.size(), found.pairs.size());
    EXPECT_EQ(int(found.pictures.size()), found.pairs.size());
}

TEST(FaultCleaningSession, AcceptMergesTheCopyIntoTheOriginalAsOneUndoableStep)
{
    Cleaning c;
    QSignalSpy removed(c.session.get(), &FaultCleaningSession::rowRemoved);
    ASSERT_EQ(c.session->currentFaults(), core::Duplet(2, 7));
    ASSERT_TRUE(c.session->accept());

    EXPECT_EQ(c.set().findFaultLight(7), nullptr);
    EXPECT_EQ(c.set().getFather(7), 2);
    EXPECT_EQ(sticksOf(c.set(), 2).size(), std::size_t(2 * kSticks));
    EXPECT_EQ(c.document->surface(7), nullptr);
    ASSERT_NE(c.document->surface(2), nullptr);
    EXPECT_GT(c.document->surface(2)->getNumberOfFacettes(), 0);
    EXPECT_TRUE(c.document->isModified());
    QUndoStack* stack = c.document->undoStack();
    ASSERT_EQ(stack->count(), 2);
    EXPECT_EQ(stack->text(0), "End Stick of Fault \"F2\"");
    EXPECT_EQ(stack->text(1), "Merge Faults \"F2\" and \"F2 copy\"");

    EXPECT_EQ(removed.size(), 1);
    EXPECT_EQ(rows(*c.session), QList<core::Duplet>({{5, 9}, {4, 8}}));  // the last row took its place
    EXPECT_EQ(c.session->currentRow(), 0);
    EXPECT_TRUE(c.set().isValid());
}

TEST(FaultCleaningSession, RefuseDropsTheRowAndLeavesTheFaultSetAlone)
{
    Cleaning c;
    const QStringList before = faultSummary(c.set());
    c.session->setCurrentRow(2);
    EXPECT_TRUE(c.session->refuse());
    EXPECT_EQ(rows(*c.session), QList<core::Duplet>({{2, 7}, {4, 8}}));
    EXPECT_EQ(c.session->currentRow(), 1);  // the last row went: the new last one
    EXPECT_EQ(faultSummary(c.set()), before);
    EXPECT_EQ(c.document->undoStack()->count(), 0);
    EXPECT_TRUE(c.session->refuse());
    EXPECT_TRUE(c.session->refuse());
    EXPECT_EQ(c.session->currentRow(), -1);
    EXPECT_FALSE(c.session->refuse());
    EXPECT_FALSE(c.session->accept());
}

TEST(FaultCleaningSession, UndoAndRedoWalkTheMergesAndBringThePairsBackInStep)
{
    Cleaning c;
    const QStringList start = faultSummary(c.set());
    ASSERT_TRUE(c.session->accept());  // (2, 7); rows (5, 9), (4, 8)
    const QStringList afterFirst = faultSummary(c.set());
    ASSERT_TRUE(c.session->refuse());  // (5, 9); rows (4, 8)
    ASSERT_TRUE(c.session->accept());  // (4, 8); no row left
    const QStringList afterBoth = faultSummary(c.set());
    EXPECT_EQ(afterBoth, QStringList({"F1:5", "F2:10", "F3:5", "F4:10", "F5:5", "F6:5", "F5 copy:5", "F3 shifted:5"}));
    EXPECT_EQ(c.session->rowCount(), 0);

    struct Step {
        bool undo;
        QList<core::Duplet> rows;
        QStringList faults;
        int current;
    };
    const Step steps[] = {
        {true, {{4, 8}}, afterFirst, 0},
        {true, {{4, 8}, {2, 7}}, start, 1},
        {false, {{4, 8}}, afterFirst, 0},
        {false, {}, afterBoth, -1},
        {true, {{4, 8}}, afterFirst, 0},
    };
    for (const Step& s : steps) {
        EXPECT_TRUE(s.undo ? c.session->undo() : c.session->redo());
        EXPECT_EQ(rows(*c.session), s.rows);
        EXPECT_EQ(faultSummary(c.set()), s.faults);
        EXPECT_EQ(c.session->currentRow(), s.current);
        EXPECT_TRUE(c.set().isValid());
    }
    for (int id : {2, 4})
        EXPECT_GT(c.document->surface(id)->getNumberOfFacettes(), 0) << id;

    // An undone merge answered again: merged once more, the redo branch dropped.
    EXPECT_TRUE(c.session->accept());
    EXPECT_EQ(faultSummary(c.set()), afterBoth);
    EXPECT_FALSE(c.session->redo());
}

TEST(FaultCleaningSession, PreviewShowsTheMergedSurfaceWithoutTouchingTheFaultSet)
{
    Cleaning c;
    QSignalSpy previews(c.session.get(), &FaultCleaningSession::previewChanged);
    const QStringList before = faultSummary(c.set());
    ASSERT_TRUE(c.session->preview());
    ASSERT_NE(c.session->previewSurface(), nullptr);
    EXPECT_GT(c.session->previewSurface()->getNumberOfFacettes(), 0);
    core::Array<core::PointWithBool> points = c.session->previewSurface()->getPickedPoints();
    EXPECT_EQ(core::sticks::countSticks(points.data(), points.size()), 2 * kSticks);
    EXPECT_EQ(faultSummary(c.set()), before);
    EXPECT_EQ(c.document->undoStack()->count(), 0);
    EXPECT_EQ(c.set().getNumberOfPickedPoint(2), kSticks * kPoints + kSticks - 1);  // no stick closed

    c.session->setCurrentRow(1);
    EXPECT_EQ(c.session->previewSurface(), nullptr);
    EXPECT_EQ(previews.size(), 2);
}

TEST(FaultCleaningSession, ThreeCopiesOfOneFaultBecomeOneAndTheirLastPairNothingToMerge)
{
    auto set = plantedDuplicates();
    // Fault 10 becomes a second copy of fault 2: pairs (2, 7), (2, 10), (7, 10).
    auto copy = jitteredCopy(originalSticks(1));
    while (set->getNumberOfPickedPoint(10) > 0) set->removePickedPoint(10, 0);
    for (std::size_t s = 0; s < copy.size(); ++s) {
        if (s > 0) set->addPickedPoint(10, core::PointWithBool::separator());
        for (const core::vec3& p : copy[s]) set->addPickedPoint(10, core::PointWithBool(p));
    }
    FaultSetDocument document(std::move(set), {}, QString(), "Three copies");
    FaultCleaningSession session(&document, detect(document));
    QList<core::Duplet> found = rows(session);
    for (const core::Duplet& pair : {core::Duplet(2, 7), core::Duplet(2, 10), core::Duplet(7, 10)})
        EXPECT_TRUE(found.contains(pair));
    for (const core::Duplet& pair : {core::Duplet(2, 7), core::Duplet(7, 10)}) {
        session.setCurrentRow(static_cast<int>(rows(session).indexOf(pair)));
        EXPECT_TRUE(session.accept());
    }
    session.setCurrentRow(static_cast<int>(rows(session).indexOf(core::Duplet(2, 10))));
    EXPECT_EQ(session.currentFaults(), core::Duplet(-9999, -9999));
    EXPECT_FALSE(session.preview());
    EXPECT_FALSE(session.accept());  // one fault already: the row simply goes
    EXPECT_FALSE(rows(session).contains(core::Duplet(2, 10)));
    EXPECT_EQ(sticksOf(*document.faultSet(), 2).size(), std::size_t(3 * kSticks));
}

TEST(FaultCleaningSession, AClosedDocumentRefusesEveryAnswer)
{
    auto document = plantedDocument();
    FaultCleaningSession session(document.get(), detect(*document));
    session.setCurrentRow(0);
    document.reset();
    EXPECT_EQ(session.document(), nullptr);
    EXPECT_EQ(session.currentFaults(), core::Duplet(-9999, -9999));
    EXPECT_FALSE(session.accept());
    EXPECT_FALSE(session.preview());
    EXPECT_FALSE(session.undo());
    EXPECT_FALSE(session.redo());
}
