#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <exchange/opendtectsticks.h>
#include <exchange/worldaxes.h>
#include <testservices.h>

#include "exchangetesthelpers.h"

using namespace fault::exchange;

TEST(OpendTectSticks, QuotedUnquotedAndLineNamedRowsAreRead)
{
    StickSet set;
    ASSERT_TRUE(readOpendTectSticks(exchangetest::dataPath("opendtect_fault_sticks.txt"), set));
    ASSERT_EQ(set.faults.size(), 3u);
    EXPECT_EQ(set.faults[0].name, QStringLiteral("Main Fault"));
    ASSERT_EQ(set.faults[0].sticks.size(), 2u);
    EXPECT_EQ(set.faults[0].sticks[1].size(), 3u);
    EXPECT_DOUBLE_EQ(set.faults[0].sticks[1][1].world.x, 456012.5);
    EXPECT_DOUBLE_EQ(set.faults[0].sticks[1][1].world.y, 1620.0);
    EXPECT_EQ(set.faults[1].name, QStringLiteral("F2"));
    EXPECT_EQ(set.faults[1].sticks.size(), 1u) << "the trailing 2D line name is not a field of ours";
    EXPECT_EQ(set.faults[2].name, QStringLiteral("North Branch")) << "unquoted name with a space";
    EXPECT_EQ(set.faults[2].sticks[0][0].inlineNumber, core::kNoValue);
}

TEST(OpendTectSticks, WrittenLinesAreTabSeparatedWithQuotedNameAndIndices)
{
    StickPoint p;
    p.world = worldFromFile(456000.0, 6780000.5, 1500.25);
    StickSet set;
    set.faults.push_back({QStringLiteral("Main Fault"), {{p}, {p, p}}});
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("out.txt"));
    ASSERT_TRUE(writeOpendTectSticks(path, set));
    const QList<QByteArray> lines = readFileBytes(path).split('\n');
    ASSERT_EQ(lines.size(), 4);
    EXPECT_EQ(lines[0], QByteArray("\"Main Fault\"\t456000.000000\t6780000.500000\t1500.250000\t0\t0"));
    EXPECT_TRUE(lines[2].endsWith("\t1\t1"));
}

TEST(OpendTectSticks, RowsWithoutNameOrStickIndexUseTheDefaults)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("bare.txt"));
    ASSERT_TRUE(writeFileBytes(path, "1 2 3\n4 5 6\n\"\" 7 8 9 0\n"));
    StickSet set;
    ASSERT_TRUE(readOpendTectSticks(path, set, QStringLiteral("bare")));
    ASSERT_EQ(set.faults.size(), 1u);
    EXPECT_EQ(set.faults[0].name, QStringLiteral("bare"));
    ASSERT_EQ(set.faults[0].sticks.size(), 1u) << "no stick index means stick 0";
    EXPECT_EQ(set.faults[0].sticks[0].size(), 3u);
}

TEST(OpendTectSticks, ANameWithADoubleQuoteCannotBeWritten)
{
    StickSet set = exchangetest::sampleSet(false);
    set.faults[1].name = QStringLiteral("F\"2");
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("out.txt"));
    RecordingEventBus bus;
    const ExchangeStatus status = writeOpendTectSticks(path, set);
    EXPECT_FALSE(status);
    EXPECT_TRUE(status.message.contains(QStringLiteral("double quote")));
    EXPECT_FALSE(QFile::exists(path));
}

TEST(OpendTectSticks, ABadLineNamesItsLineAndWhatIsWrong)
{
    const struct {
        const char* line;
        const char* expected;
    } cases[] = {
        {"\"F1\" 1 2", "expected X, Y and Z after the fault name, found 2 fields"},
        {"\"F1\" 1 2 x 0 0", "Z is not a number"},
        {"\"F1 1 2 3 0 0", "never closed"},
        {"\"F1\" 1 2 3 a 0", "stick index is not an integer"},
        {"Fault name only", "found 0 fields"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.line);
        exchangetest::expectRefused(StickFormat::OpendTect,
                                    QByteArray("# header\n\"F1\" 1 2 3 0 0\n") + c.line + "\n", 3,
                                    QLatin1String(c.expected));
    }
}
