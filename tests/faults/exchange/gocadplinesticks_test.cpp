#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <exchange/gocadplinesticks.h>
#include <exchange/worldaxes.h>

#include "exchangetesthelpers.h"

using namespace fault::exchange;

TEST(GocadPLineSticks, ObjectsPartsPropertiesAtomsAndElevationAreRead)
{
    StickSet set;
    ASSERT_TRUE(readGocadPLineSticks(exchangetest::dataPath("gocad_pline_sticks.pl"), set));
    ASSERT_EQ(set.faults.size(), 2u);
    EXPECT_EQ(set.domain, VerticalDomain::Time);
    const FaultSticks& main = set.faults[0];
    EXPECT_EQ(main.name, QStringLiteral("Main Fault"));
    ASSERT_EQ(main.sticks.size(), 2u);
    EXPECT_EQ(main.sticks[0].size(), 3u);
    EXPECT_EQ(main.sticks[0][0].inlineNumber, 1201);
    EXPECT_EQ(main.sticks[0][2].inlineNumber, core::kNoValue) << "NO_DATA_VALUES";
    EXPECT_EQ(main.sticks[1][1].crosslineNumber, 3302);
    const FaultSticks& f2 = set.faults[1];
    EXPECT_EQ(f2.name, QStringLiteral("F2"));
    ASSERT_EQ(f2.sticks.size(), 2u);
    EXPECT_DOUBLE_EQ(f2.sticks[0][0].world.y, 1400.0) << "ZPOSITIVE Elevation -1400 is Z 1400";
    ASSERT_EQ(f2.sticks[1].size(), 2u);
    EXPECT_EQ(f2.sticks[1][0].world, f2.sticks[0][1].world) << "ATOM repeats vertex 11";
}

TEST(GocadPLineSticks, WrittenObjectsUseVrtxWithoutLineNumbersAndPvrtxWithThem)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("out.pl"));
    ASSERT_TRUE(writeGocadPLineSticks(path, exchangetest::sampleSet(false)));
    const QByteArray plain = readFileBytes(path);
    EXPECT_TRUE(plain.contains("name:\"Main Fault\"\n"));
    EXPECT_TRUE(plain.contains("name:F2\n"));
    EXPECT_TRUE(plain.contains("ILINE\nVRTX 1 456000.250000 6780000.500000 1500.000000\n"));
    EXPECT_TRUE(plain.contains("SEG 1 2\nSEG 2 3\nILINE\n"));
    EXPECT_FALSE(plain.contains("PROPERTIES"));
    ASSERT_TRUE(writeGocadPLineSticks(path, exchangetest::sampleSet(true)));
    const QByteArray lines = readFileBytes(path);
    EXPECT_TRUE(lines.contains("PROPERTIES Inline Crossline\nNO_DATA_VALUES -9999 -9999\n"));
    EXPECT_TRUE(lines.contains("PVRTX 3 456020.000000 6780000.500000 1700.500000 -9999 -9999\n"));
}

TEST(GocadPLineSticks, ABadObjectNamesItsLineAndWhatIsWrong)
{
    const QByteArray head("GOCAD PLine 1\nHEADER {\nname:F\n}\n");
    const struct {
        QByteArray body;
        const char* expected;
        int line;
    } cases[] = {
        {"VRTX 1 0 0 0\nEND\n", "vertex 1 stands before the first ILINE", 5},
        {"ILINE\nVRTX 1 0 0 0\nSEG 1 2\nEND\n", "SEG refers to vertex 2", 7},
        {"ILINE\nATOM 2 1\nEND\n", "ATOM 2 refers to vertex 1", 6},
        {"ILINE\nVRTX 1 0 0 0\nVRTX 1 1 1 1\nEND\n", "vertex id 1 is used twice", 7},
        {"ILINE\nVRTX 1 0 zero 0\nEND\n", "coordinate that is not a number: \"zero\"", 6},
        {"ILINE\nVRTX 1 0 0\nEND\n", "VRTX needs an id and three coordinates", 6},
        {"ILINE\nVRTX 1 0 0 0\n", "no END", 0},
    };
    for (const auto& c : cases)
        exchangetest::expectRefused(StickFormat::GocadPLine, head + c.body, c.line, QLatin1String(c.expected));
}

TEST(GocadPLineSticks, ATSurfObjectIsNotReadAsSticks)
{
    exchangetest::expectRefused(StickFormat::GocadPLine,
                                readFileBytes(exchangetest::dataPath("gocad_tsurf.ts")), 1,
                                QStringLiteral("a GOCAD TSurf object where a PLine was expected"));
}
