// Behaviours every fault stick format shares: round trips keep names and stick structure,
// writers are atomic, readers survive hostile files and leave their output alone.
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
