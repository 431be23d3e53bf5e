#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <exchange/charismasticks.h>
#include <exchange/worldaxes.h>

#include "exchangetesthelpers.h"

using namespace fault::exchange;

namespace {
std::vector<size_t> stickSizes(const FaultSticks& fault)
{
    std::vector<size_t> sizes;
    for (const Stick& s : fault.sticks) sizes.push_back(s.size());
    return sizes;
}
} // namespace

TEST(CharismaSticks, TheInterpretationPackageSampleIsOneFaultOfFiveSticks)
{
    StickSet set;
    ASSERT_TRUE(readCharismaSticks(exchangetest::dataPath("charisma_fault_sticks.txt"), set));
    ASSERT_EQ(set.faults.size(), 1u);
    EXPECT_EQ(set.faults[0].name, QStringLiteral("Example_fault"));
    EXPECT_EQ(stickSizes(set.faults[0]), (std::vector<size_t>{4, 5, 4, 5, 5}));
    const StickPoint& first = set.faults[0].sticks[0][0];
    EXPECT_EQ(first.inlineNumber, core::kNoValue) << "2147483647 means unknown";
    EXPECT_EQ(first.crosslineNumber, core::kNoValue);
    EXPECT_DOUBLE_EQ(first.world.x, 1011700.73566);
    EXPECT_DOUBLE_EQ(first.world.y, 2007.76680) << "Z positive down is world y, which grows downward";
    EXPECT_DOUBLE_EQ(first.world.z, 9483470.13910);
    EXPECT_EQ(set.domain, VerticalDomain::Unknown);
}

TEST(CharismaSticks, WritingTheSampleBackReproducesItByteForByte)
{
    QTemporaryDir dir;
    const QString sample = exchangetest::dataPath("charisma_fault_sticks.txt");
    StickSet set;
    ASSERT_TRUE(readCharismaSticks(sample, set));
    const QString path = dir.filePath(QStringLiteral("out.txt"));
    ASSERT_TRUE(writeCharismaSticks(path, set));
    EXPECT_EQ(readFileBytes(path), readFileBytes(sample));
}

TEST(CharismaSticks, MarkerVariantsQuotedNamesAndInterleavedFaultsAreRead)
{
    StickSet set;
    ASSERT_TRUE(readCharismaSticks(exchangetest::dataPath("charisma_variants.txt"), set,
                                   QStringLiteral("From file")));
    ASSERT_EQ(set.faults.size(), 4u);
    EXPECT_EQ(set.faults[0].name, QStringLiteral("Main Fault"));
    EXPECT_EQ(set.faults[1].name, QStringLiteral("F2"));
    EXPECT_EQ(set.faults[2].name, QStringLiteral("Quoted Fault"));
    EXPECT_EQ(set.faults[3].name, QStringLiteral("From file")) << "a line without a name";
    EXPECT_EQ(stickSizes(set.faults[0]), (std::vector<size_t>{3, 2, 2}))
        << "stick 3 comes back to Main Fault after F2's lines";
    const StickPoint& crosslineMarked = set.faults[0].sticks[1][0];
    EXPECT_EQ(crosslineMarked.inlineNumber, 1205);
    EXPECT_EQ(crosslineMarked.crosslineNumber, 3301);
    EXPECT_EQ(set.faults[0].sticks[1][1].inlineNumber, core::kNoValue);
    EXPECT_EQ(set.faults[1].sticks[0][0].inlineNumber, 1210) << "\"INLINE -\" marker";
}

TEST(CharismaSticks, WrittenLinesFollowTheColumnLayout)
{
    QTemporaryDir dir;
    StickSet set;
    StickPoint p;
    p.world = worldFromFile(456000.25, 6780000.5, 1500.125);
    p.inlineNumber = 1201;
    set.faults.push_back({QStringLiteral("F 12"), {{p}, {p}}});
    const QString path = dir.filePath(QStringLiteral("out.txt"));
    ASSERT_TRUE(writeCharismaSticks(path, set));
    EXPECT_EQ(readFileBytes(path),
              QByteArray("INLINE-        1201 2147483647    456000.25000   6780000.50000      1500.12500 F 12 1\n"
                         "INLINE-        1201 2147483647    456000.25000   6780000.50000      1500.12500 F 12 2\n"));
}

TEST(CharismaSticks, ABadLineNamesItsLineAndWhatIsWrong)
{
    const char* good = "INLINE-  1 2 456000.0 6780000.0 1500.0 F 1\n";
    const struct {
        const char* line;
        const char* expected;
    } cases[] = {
        {"INLINE- 1 2 abc 6780000.0 1500.0 F 1", "X is not a number: \"abc\""},
        {"INLINE- 1 2 456000.0 6780000.0 nan F 1", "Z is not a number"},
        {"INLINE- 1 2 456000.0 6780000.0 inf F 1", "Z is not a number"},
        {"INLINE- 1.5 2 456000.0 6780000.0 1500.0 F 1", "inline is not an integer"},
        {"INLINE- 1 x 456000.0 6780000.0 1500.0 F 1", "crossline is not an integer"},
        {"INLINE- 1 2 456000.0 6780000.0 1500.0 F x", "stick number is not an integer"},
        {"INLINE- 1 2 456000.0 6780000.0", "found 4 fields"},
        {"Inline Crossline X Y Z Name Stick", "inline is not an integer: \"Crossline\""},
        {"FAULT F1 456000.0 6780000.0 1500.0", "expected a point line starting with INLINE"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.line);
        exchangetest::expectRefused(StickFormat::Charisma, QByteArray(good) + good + c.line + "\n" + good,
                                    3, QLatin1String(c.expected));
    }
}

TEST(CharismaSticks, WindowsLineEndingsAndAByteOrderMarkReadAsTheUnixFile)
{
    const QString sample = exchangetest::dataPath("charisma_fault_sticks.txt");
    QByteArray windows = readFileBytes(sample);
    windows.replace("\n", "\r\n");
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("windows.txt"));
    ASSERT_TRUE(writeFileBytes(path, "\xEF\xBB\xBF" + windows));
    StickSet expected, read;
    ASSERT_TRUE(readCharismaSticks(sample, expected));
    ASSERT_TRUE(readCharismaSticks(path, read));
    exchangetest::expectSameSticks(expected, read, 0.0, true);
}
