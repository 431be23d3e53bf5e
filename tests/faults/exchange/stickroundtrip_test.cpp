// Behaviours every fault stick format shares: round trips keep names and stick structure,
// writers are atomic, readers survive hostile files and leave their output alone.
#include <algorithm>
#include <climits>
#include <cmath>
#include <limits>

#include <QDir>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <exchange/stickformat.h>
#include <testservices.h>

#include "exchangetesthelpers.h"

using namespace fault::exchange;

namespace {

struct FormatCase {
    StickFormat format;
    double tolerance;     // world units, from the format's written precision
    bool keepsLineNumbers;
    bool keepsDomain;
};

const FormatCase kFormats[] = {
    {StickFormat::Charisma, 1e-5, true, false},
    {StickFormat::Iesx, 0.01, true, true},
    {StickFormat::OpendTect, 1e-6, false, false},
    {StickFormat::GocadPLine, 1e-6, true, true},
};

std::string label(const FormatCase& c) { return stickFormatName(c.format).toStdString(); }

} // namespace

TEST(StickFormats, RoundTripKeepsNamesSticksAndPointsInEveryFormat)
{
    QTemporaryDir dir;
    for (const FormatCase& c : kFormats) {
        for (bool withLines : {true, false}) {
            const StickSet written = exchangetest::sampleSet(withLines);
            const QString path = dir.filePath(QStringLiteral("sticks.txt"));
            ASSERT_TRUE(writeSticks(path, c.format, written)) << label(c);
            StickSet read;
            const ExchangeStatus status = readSticks(path, c.format, read);
            ASSERT_TRUE(status) << label(c) << ": " << status.message.toStdString();
            SCOPED_TRACE(label(c));
            exchangetest::expectSameSticks(written, read, c.tolerance, c.keepsLineNumbers && withLines);
            EXPECT_EQ(read.domain, c.keepsDomain ? VerticalDomain::Time : VerticalDomain::Unknown);
        }
    }
}

TEST(StickFormats, ReadingWhatWasWrittenAndWritingAgainGivesTheSameBytes)
{
    QTemporaryDir dir;
    for (const FormatCase& c : kFormats) {
        const QString first = dir.filePath(QStringLiteral("first"));
        const QString second = dir.filePath(QStringLiteral("second"));
        ASSERT_TRUE(writeSticks(first, c.format, exchangetest::sampleSet(true)));
        StickSet read;
        ASSERT_TRUE(readSticks(first, c.format, read));
        ASSERT_TRUE(writeSticks(second, c.format, read));
        EXPECT_EQ(readFileBytes(first), readFileBytes(second)) << label(c);
    }
}

TEST(StickFormats, DepthDomainSurvivesWhereTheFormatCarriesIt)
{
    QTemporaryDir dir;
    StickSet written = exchangetest::sampleSet(false);
    written.domain = VerticalDomain::Depth;
    for (const FormatCase& c : kFormats) {
        if (!c.keepsDomain) continue;
        const QString path = dir.filePath(QStringLiteral("depth"));
        ASSERT_TRUE(writeSticks(path, c.format, written));
        StickSet read;
        ASSERT_TRUE(readSticks(path, c.format, read));
        EXPECT_EQ(read.domain, VerticalDomain::Depth) << label(c);
    }
}

TEST(StickFormats, AnEmptySetWritesAFileThatReadsBackEmpty)
{
    QTemporaryDir dir;
    for (const FormatCase& c : kFormats) {
        const QString path = dir.filePath(QStringLiteral("empty"));
        ASSERT_TRUE(writeSticks(path, c.format, StickSet()));
        StickSet read = exchangetest::markerSet();
        ASSERT_TRUE(readSticks(path, c.format, read)) << label(c);
        EXPECT_TRUE(read.faults.empty()) << label(c);
    }
}

TEST(StickFormats, AFailedWriteLeavesTheTargetAndTheFolderAsTheyWere)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("target.txt"));
    const QByteArray previous("previous content\n");
    StickSet bad = exchangetest::sampleSet(true);
    bad.faults[2].name = QStringLiteral("broken\nname");
    for (const FormatCase& c : kFormats) {
        ASSERT_TRUE(writeFileBytes(path, previous));
        RecordingEventBus bus;
        const ExchangeStatus status = writeSticks(path, c.format, bad);
        EXPECT_FALSE(status) << label(c);
        EXPECT_TRUE(status.message.contains(QStringLiteral("line break"))) << label(c);
        EXPECT_EQ(readFileBytes(path), previous) << label(c);
        EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files), QStringList{QStringLiteral("target.txt")});
        ASSERT_EQ(bus.messages.size(), 1);
        EXPECT_EQ(bus.messages[0].first, ZNEventBus::FileError);
    }
}

TEST(StickFormats, WritingIntoAMissingFolderFailsWithAMessage)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("no/such/folder/sticks.txt"));
    for (const FormatCase& c : kFormats) {
        RecordingEventBus bus;
        const ExchangeStatus status = writeSticks(path, c.format, exchangetest::sampleSet(false));
        EXPECT_FALSE(status) << label(c);
        EXPECT_TRUE(status.message.startsWith(QStringLiteral("sticks.txt: cannot be written")))
            << status.message.toStdString();
        EXPECT_EQ(status.line, 0);
    }
}

TEST(StickFormats, HostileFilesFailCleanlyAndLeaveTheResultAlone)
{
    const struct {
        const char* what;
        QByteArray bytes;
        const char* expected;  // part of the message
        int line;
    } hostile[] = {
        {"binary", QByteArray("ab\x00\x01\x02garbage\n", 13), "NUL byte", 1},
        {"over-long line", QByteArray(70000, 'x') + "\n", "line longer than", 1},
        {"over-long last line", QByteArray(70000, '7'), "line longer than", 1},
    };
    for (const FormatCase& c : kFormats)
        for (const auto& h : hostile) {
            SCOPED_TRACE(label(c) + " " + h.what);
            exchangetest::expectRefused(c.format, h.bytes, h.line, QLatin1String(h.expected));
        }
}

TEST(StickFormats, AMissingFileIsAFileErrorWithoutLineNumber)
{
    for (const FormatCase& c : kFormats) {
        StickSet result = exchangetest::markerSet();
        RecordingEventBus bus;
        const ExchangeStatus status = readSticks(QStringLiteral("/no/such/file.dat"), c.format, result);
        EXPECT_FALSE(status);
        EXPECT_EQ(status.line, 0);
        EXPECT_TRUE(status.message.startsWith(QStringLiteral("file.dat: cannot be opened")))
            << status.message.toStdString();
        EXPECT_EQ(result.faults[0].name, QStringLiteral("marker"));
    }
}

TEST(StickFormats, EveryReaderSurvivesEveryTruncationOfItsOwnOutput)
{
    // Cutting a valid file anywhere must give either a clean error or a shorter set,
    // never a crash; the sanitizer build checks the memory side.
    QTemporaryDir dir;
    for (const FormatCase& c : kFormats) {
        const QString full = dir.filePath(QStringLiteral("full"));
        ASSERT_TRUE(writeSticks(full, c.format, exchangetest::sampleSet(true)));
        const QByteArray bytes = readFileBytes(full);
        const QString cut = dir.filePath(QStringLiteral("cut"));
        const int step = 7;
        for (int length = 0; length < bytes.size(); length += step) {
            ASSERT_TRUE(writeFileBytes(cut, bytes.left(length)));
            StickSet result;
            RecordingEventBus bus;
            const ExchangeStatus status = readSticks(cut, c.format, result);
            if (status) EXPECT_LE(result.pointCount(), exchangetest::sampleSet(true).pointCount());
            else EXPECT_FALSE(status.message.isEmpty());
        }
    }
}

TEST(StickFormats, ExtremeValuesReadBackOrAreRefusedWithAClearError)
{
    // A writer never leaves a file its own reader refuses: wide numbers keep their
    // separating space, values a format cannot carry are refused by name.
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double inf = std::numeric_limits<double>::infinity();
    const struct {
        const char* what;
        core::vec3 world;     // world (X, Z, Y)
        int inlineNumber, crosslineNumber;
        const char* refusal;  // empty: every format reads the value back
    } cases[] = {
        {"X of 1e10", {1e10, 1500.0, 6.78e6}, 10, 20, ""},
        {"Y of -1e9", {4.5e5, 1500.0, -1e9}, 10, 20, ""},
        {"X and Y of 1e15", {1e15, 1500.0, -1e15}, 10, 20, ""},
        {"Z of -1e9", {4.5e5, -1e9, 6.78e6}, 10, 20, "IESX Z column"},
        {"extreme line numbers", {4.5e5, 1500.0, 6.78e6}, INT_MIN, INT_MAX - 1, ""},
        {"NaN X", {nan, 1500.0, 6.78e6}, 10, 20, "not a finite number"},
        {"infinite Z", {4.5e5, inf, 6.78e6}, 10, 20, "not a finite number"},
    };
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("sticks.txt"));
    for (const FormatCase& c : kFormats)
        for (const auto& v : cases) {
            SCOPED_TRACE(label(c) + ": " + v.what);
            StickSet written;
            written.faults.push_back({QStringLiteral("F"), {{{v.world, v.inlineNumber, v.crosslineNumber},
                                                             {v.world + core::vec3(0, 10, 0), 1, 2}}}});
            RecordingEventBus bus;
            const ExchangeStatus wrote = writeSticks(path, c.format, written);
            const bool refused = *v.refusal && (c.format == StickFormat::Iesx ||
                                                QString(v.refusal) == "not a finite number");
            if (refused) {
                EXPECT_FALSE(wrote);
                EXPECT_TRUE(wrote.message.contains(QLatin1String(v.refusal))) << wrote.message.toStdString();
                continue;
            }
            ASSERT_TRUE(wrote) << wrote.message.toStdString();
            StickSet read;
            const ExchangeStatus status = readSticks(path, c.format, read);
            ASSERT_TRUE(status) << status.message.toStdString();
            ASSERT_EQ(read.pointCount(), 2);
            const core::vec3 back = read.faults[0].sticks[0][0].world;
            const double scale = std::max({1.0, std::fabs(v.world.x), std::fabs(v.world.y), std::fabs(v.world.z)});
            EXPECT_LT((back - v.world).length(), std::max(c.tolerance, 1e-7 * scale));
        }
}
