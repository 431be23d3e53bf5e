#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <exchange/iesxsticks.h>
#include <exchange/worldaxes.h>
#include <testservices.h>

#include "exchangetesthelpers.h"

using namespace fault::exchange;

namespace {
StickSet onePoint(double z, int il, int xl, const QString& name = QStringLiteral("F1"))
{
    StickPoint p;
    p.world = worldFromFile(456000.0, 6780000.0, z);
    p.inlineNumber = il;
    p.crosslineNumber = xl;
    StickSet set;
    set.faults.push_back({name, {{p}}});
    return set;
}

QStringList writtenLines(const StickSet& set)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("out.dat"));
    if (!writeIesxSticks(path, set)) return {};
    return QString::fromUtf8(readFileBytes(path)).split('\n');
}
} // namespace

TEST(IesxSticks, CardImagesGiveFaultsSticksLineNumbersAndDomain)
{
    StickSet set;
    ASSERT_TRUE(readIesxSticks(exchangetest::dataPath("iesx_fault_sticks.txt"), set));
    ASSERT_EQ(set.faults.size(), 2u);
    EXPECT_EQ(set.domain, VerticalDomain::Time);
    const FaultSticks& a = set.faults[0];
    EXPECT_EQ(a.name, QStringLiteral("Fault_A"));
    ASSERT_EQ(a.sticks.size(), 2u);
    EXPECT_EQ(a.sticks[0].size(), 3u);
    EXPECT_EQ(a.sticks[1][2].inlineNumber, 1004);
    EXPECT_EQ(a.sticks[1][2].crosslineNumber, 2003);
    EXPECT_DOUBLE_EQ(a.sticks[1][2].world.y, 1610.25);
    EXPECT_DOUBLE_EQ(a.sticks[1][1].world.x, 456012.5);
    const FaultSticks& b = set.faults[1];
    EXPECT_EQ(b.name, QStringLiteral("Fault B West"));
    ASSERT_EQ(b.sticks.size(), 2u);
    EXPECT_EQ(b.sticks[1].size(), 2u) << "the undefined Z, overflowing its column, is dropped";
    EXPECT_EQ(b.sticks[0][0].inlineNumber, core::kNoValue) << "47-column rows carry no lines";
}

TEST(IesxSticks, WrittenRowsPutEachValueInItsColumns)
{
    const QStringList lines = writtenLines(onePoint(1500.25, 1201, 3301));
    ASSERT_GE(lines.size(), 4);
    EXPECT_TRUE(lines[0].startsWith(QStringLiteral("PROFILE F1               TYPE 1  4 ")));
    EXPECT_TRUE(lines[0].endsWith(QStringLiteral("fault_gf.ifdf     m")));
    const QString row = lines[2];
    EXPECT_EQ(row.mid(0, 16), QStringLiteral("  4.56000000E+05"));
    EXPECT_EQ(row.mid(16, 16), QStringLiteral("  6.78000000E+06"));
    EXPECT_EQ(row.mid(32, 3), QStringLiteral("  1"));
    EXPECT_EQ(row.mid(38, 9), QStringLiteral("  1500.25"));
    EXPECT_EQ(row.mid(67, 5), QStringLiteral(" 3301"));
    EXPECT_EQ(row.mid(86, 9), QStringLiteral(" I   1201"));
    EXPECT_EQ(lines[3], QStringLiteral("EOD"));
    EXPECT_EQ(writtenLines(onePoint(1500.25, core::kNoValue, 3301))[2].size(), 47)
        << "no 3D tail without both line numbers";
}

TEST(IesxSticks, LongNamesWithSpacesAndMoreThanAThousandSticksSurvive)
{
    StickSet set;
    FaultSticks fault{QStringLiteral("A long fault name with spaces"), {}};
    const int stickCount = 1002;
    for (int s = 0; s < stickCount; ++s) {
        StickPoint p;
        p.world = worldFromFile(1000.0 + s, 2000.0, 100.0);
        fault.sticks.push_back({p, p});
    }
    set.faults.push_back(fault);
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("many.dat"));
    ASSERT_TRUE(writeIesxSticks(path, set));
    StickSet read;
    ASSERT_TRUE(readIesxSticks(path, read));
    ASSERT_EQ(read.faults.size(), 1u);
    EXPECT_EQ(read.faults[0].name, fault.name);
    EXPECT_EQ(read.faults[0].sticks.size(), static_cast<size_t>(stickCount));
}

TEST(IesxSticks, AZOutsideItsColumnRefusesTheWriteAndKeepsThePreviousFile)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("out.dat"));
    ASSERT_TRUE(writeFileBytes(path, "previous"));
    RecordingEventBus bus;
    const ExchangeStatus status = writeIesxSticks(path, onePoint(123456.0, 1, 1));
    EXPECT_FALSE(status);
    EXPECT_TRUE(status.message.contains(QStringLiteral("does not fit the IESX Z column")));
    EXPECT_EQ(readFileBytes(path), QByteArray("previous"));
    EXPECT_TRUE(writeIesxSticks(path, onePoint(-99999.99, 1, 1))) << "the widest Z that fits";
}

TEST(IesxSticks, TabSeparatedRowsAndRowsBeforeAnyProfileAreRead)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("tabs.dat"));
    ASSERT_TRUE(writeFileBytes(path, "456000.0\t6780000.0\t1\t14\t1500.0\n"
                                               "456010.0\t6780000.0\t1\t14\t1600.0\n"
                                               "456010.0\t6780000.0\t2\t14\t1700.0\n"));
    StickSet set;
    ASSERT_TRUE(readIesxSticks(path, set, QStringLiteral("tabs")));
    ASSERT_EQ(set.faults.size(), 1u);
    EXPECT_EQ(set.faults[0].name, QStringLiteral("tabs"));
    EXPECT_EQ(set.faults[0].sticks.size(), 2u);
    EXPECT_DOUBLE_EQ(set.faults[0].sticks[1][0].world.y, 1700.0);
}

TEST(IesxSticks, ARowThatIsNeitherColumnsNorFieldsIsAnErrorAtItsLine)
{
    const QStringList lines = writtenLines(onePoint(1500.0, 1, 1));
    exchangetest::expectRefused(StickFormat::Iesx,
                                (lines[0] + "\n" + lines[2] + "\n  4.5600E+05  junk\n").toUtf8(), 3,
                                QStringLiteral("not an IESX data line"));
}
