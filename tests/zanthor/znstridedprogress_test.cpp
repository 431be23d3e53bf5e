#include <gtest/gtest.h>

#include <testservices.h>
#include <znstridedprogress.h>

TEST(StridedProgress, MovesAboutAHundredTimesWhateverTheItemCount)
{
    struct Case {
        qint64 items;
        qint64 stride;
        int moves;
    } cases[] = {
        {0, 1, 0}, {1, 1, 1}, {99, 1, 99}, {250, 2, 125}, {10001, 100, 100}, {5000000000LL, 50000000, 100},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.items);
        RecordingProgress bars;
        {
            ZNStridedProgress progress(QStringLiteral("Work"), c.items);
            EXPECT_EQ(progress.stride(), c.stride);
            // Large counts are worked a stride at a time, as the scoring loops do.
            for (qint64 done = 0; done + c.stride <= c.items; done += c.stride) {
                if (c.stride > 1000) {
                    progress.move();
                    continue;
                }
                for (qint64 k = 0; k < c.stride; ++k) progress.next();
            }
        }
        EXPECT_EQ(bars.titles, QStringList{QStringLiteral("Work")});
        EXPECT_EQ(bars.increments, c.moves);
        EXPECT_EQ(bars.closed, 1);
    }
}

TEST(StridedProgress, ReportsACancelFromTheMoveThatSawItOn)
{
    RecordingProgress bars(/*cancelAfter=*/3);
    ZNStridedProgress progress(QStringLiteral("Work"), 1000);  // a move every 10 items
    int firstCancelled = -1;
    for (int item = 1; item <= 100 && firstCancelled < 0; ++item)
        if (progress.next()) firstCancelled = item;
    EXPECT_EQ(firstCancelled, 30);
    EXPECT_TRUE(progress.next());
    EXPECT_TRUE(progress.isCancelled());
}

TEST(StridedProgress, NoBarShowsNothingAndNeverCancels)
{
    RecordingProgress bars(/*cancelAfter=*/0);
    {
        ZNStridedProgress progress(QStringLiteral("Hidden"), 500, ZNStridedProgress::kNoBar);
        for (int i = 0; i < 500; ++i) EXPECT_FALSE(progress.next());
        EXPECT_FALSE(progress.move());
    }
    EXPECT_TRUE(bars.titles.isEmpty());
    EXPECT_EQ(bars.increments, 0);
    EXPECT_EQ(bars.closed, 0);
}

TEST(StridedProgress, ReachingACountMovesOncePerStrideCrossed)
{
    RecordingProgress bars;
    ZNStridedProgress progress(QStringLiteral("Work"), 1000);  // a move every 10 items
    struct Step {
        qint64 reach;
        int increments;
    } steps[] = {{9, 0}, {10, 1}, {35, 3}, {20, 3}, {1000, 100}};
    for (const Step& s : steps) {
        EXPECT_FALSE(progress.reach(s.reach));
        EXPECT_EQ(bars.increments, s.increments) << s.reach;
    }
    EXPECT_EQ(progress.done(), 1000);
}
