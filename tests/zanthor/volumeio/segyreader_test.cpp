#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include <QFile>
#include <QTemporaryDir>

#include <volumeio/segylayout.h>
#include <volumeio/segyreader.h>

#include "segytestfile.h"
#include "testfiles.h"
#include "testgeometry.h"
#include "testservices.h"

using core::vec3;
using namespace volumeio;

namespace {
const QString kDataDir = QStringLiteral(KORVALITH_TEST_DATA_DIR "/segy/");

vec3 worldOf(const ZN3DImage<float>& image, int i, int j, int k)
{
    return image.blocSpace().blocToWorld(vec3(i, j, k));
}

class SegyFiles : public testing::Test {
protected:
    // Writes `segy` to a fresh file and reads it back.
    SegyReadResult roundTrip(const TestSegy& segy, const SegyReadOptions& options = {})
    {
        path = dir.filePath(QStringLiteral("volume %1.sgy").arg(++count));
        EXPECT_TRUE(writeFileBytes(path, buildSegy(segy)));
        return readSegyVolume(path, options);
    }
    QTemporaryDir dir;
    QString path;
    int count = 0;
};
} // namespace

TEST(SegySampleFiles, SmallReadsAsFiveByFiveIbmTraces)
{
    const SegyReadResult r = readSegyVolume(kDataDir + "small.sgy");
    ASSERT_TRUE(r.ok()) << r.error.toStdString();
    ASSERT_EQ(r.image.nx(), 5);
    ASSERT_EQ(r.image.ny(), 5);
    ASSERT_EQ(r.image.nz(), 50);
    EXPECT_EQ(r.info.inlineNumbers, (std::vector<int>{1, 2, 3, 4, 5}));
    EXPECT_EQ(r.info.crosslineNumbers, (std::vector<int>{20, 21, 22, 23, 24}));
    EXPECT_EQ(r.info.formatCode, 1);
    EXPECT_EQ(segyFormatDescription(r.info.formatCode), "4-byte IBM float");
    EXPECT_EQ(r.info.sorting, SegySorting::Inline);
    EXPECT_EQ(r.info.sampleIntervalMicro, 4000);
    EXPECT_EQ(r.info.traceCount, 25);
    EXPECT_FALSE(r.info.littleEndian);
    EXPECT_EQ(r.info.coordinates, SegyCoordinateSource::None);
    for (int i = 0; i < 5; ++i)
        for (int j = 0; j < 5; ++j)
            for (int k = 0; k < 50; ++k)
                ASSERT_NEAR(r.image(i, j, k), (i + 1) + (20 + j) / 100.0 + k / 100000.0, 1e-5);
    // No positions: unit map steps; vertical in milliseconds.
    expectNear(worldOf(r.image, 2, 3, 10), vec3(2, 40, 3), 1e-12);
}

TEST(SegySampleFiles, F3ReadsAsIntegersPlacedByTheirCdpPositions)
{
    const SegyReadResult r = readSegyVolume(kDataDir + "f3.sgy");
    ASSERT_TRUE(r.ok()) << r.error.toStdString();
    ASSERT_EQ(r.image.nx(), 23);
    ASSERT_EQ(r.image.ny(), 18);
    ASSERT_EQ(r.image.nz(), 75);
    EXPECT_EQ(r.info.inlineNumbers.front(), 111);
    EXPECT_EQ(r.info.inlineNumbers.back(), 133);
    EXPECT_EQ(r.info.crosslineNumbers.front(), 875);
    EXPECT_EQ(r.info.crosslineNumbers.back(), 892);
    EXPECT_EQ(r.info.formatCode, 3);
    EXPECT_EQ(r.info.firstSampleTime, 4.0);
    EXPECT_EQ(r.info.coordinates, SegyCoordinateSource::Cdp);
    // First and last samples of the first, second and last traces, from their bytes.
    EXPECT_EQ(r.image(0, 0, 0), 0.0f);
    EXPECT_EQ(r.image(0, 0, 74), -394.0f);
    EXPECT_EQ(r.image(0, 1, 74), 587.0f);
    EXPECT_EQ(r.image(22, 17, 74), -121.0f);
    // CDP X, Y of the first and last traces (scalar -10), delay 4 ms, 4 ms sampling.
    expectNear(worldOf(r.image, 0, 0, 0), vec3(620197.2, 4.0, 6074232.9), 0.5);
    expectNear(worldOf(r.image, 22, 17, 0), vec3(620606.7, 4.0, 6074794.5), 0.5);
    EXPECT_NEAR(worldOf(r.image, 0, 0, 74).y, 4.0 + 74 * 4.0, 1e-9);
}

TEST_F(SegyFiles, EverySampleFormatReadsInEitherByteOrder)
{
    const std::vector<double> values = {0.0, 1.5, -118.625, 100.0, -3.0, 0.15625};
    const std::vector<double> integers = {0.0, 1.0, -118.0, 100.0, -3.0, 7.0};
    for (int format : {1, 2, 3, 5, 8})
        for (bool little : {false, true}) {
            const bool isFloat = format == 1 || format == 5;
            TestSegy segy = gridSegy(1, 1, 2, 10, 1, 1, 6);
            segy.format = format;
            segy.littleEndian = little;
            for (TestTrace& t : segy.traces) t.samples = isFloat ? values : integers;
            const SegyReadResult r = roundTrip(segy);
            ASSERT_TRUE(r.ok()) << format << " " << little << ": " << r.error.toStdString();
            EXPECT_EQ(r.info.formatCode, format);
            EXPECT_EQ(r.info.littleEndian, little);
            for (int k = 0; k < 6; ++k)
                EXPECT_EQ(r.image(1, 0, k), float(isFloat ? values[k] : integers[k]))
                    << format << " " << k;
        }
}

TEST_F(SegyFiles, CrosslineSortedTracesInAnyOrderLandOnIncreasingLineNumbers)
{
    // Inlines 30, 28, ..., 20 (step -2 in the file), crossline-sorted.
    TestSegy segy;
    for (int xl = 5; xl <= 7; ++xl)
        for (int il = 30; il >= 20; il -= 2) {
            TestTrace t;
            t.inlineNumber = il;
            t.crosslineNumber = xl;
            t.samples = {double(il * 100 + xl), -1.0};
            segy.traces.push_back(t);
        }
    const SegyReadResult r = roundTrip(segy);
    ASSERT_TRUE(r.ok()) << r.error.toStdString();
    EXPECT_EQ(r.info.sorting, SegySorting::Crossline);
    EXPECT_EQ(r.info.inlineNumbers, (std::vector<int>{20, 22, 24, 26, 28, 30}));
    for (int i = 0; i < 6; ++i)
        for (int j = 0; j < 3; ++j) EXPECT_EQ(r.image(i, j, 0), float((20 + 2 * i) * 100 + 5 + j));
}

TEST_F(SegyFiles, TracePositionsAndScalarsPlaceTheGridOnTheMap)
{
    // A grid rotated by 30 degrees: 25 m between inlines, 12.5 m between crosslines.
    const double c = std::cos(M_PI / 6), s = std::sin(M_PI / 6);
    const vec3 origin(500000.0, 0.0, 6000000.0);
    TestSegy segy = gridSegy(100, 1, 4, 200, 1, 3, 5);
    segy.intervalMicro = 2000;
    segy.delayMilli = 100;
    for (TestTrace& t : segy.traces) {
        const int i = t.inlineNumber - 100, j = t.crosslineNumber - 200;
        const double x = origin.x + 25.0 * c * i - 12.5 * s * j;
        const double y = origin.z + 25.0 * s * i + 12.5 * c * j;
        t.scalar = -100;   // centimetres
        t.cdpX = int(std::lround(x * 100));
        t.cdpY = int(std::lround(y * 100));
    }
    const SegyReadResult r = roundTrip(segy);
    ASSERT_TRUE(r.ok()) << r.error.toStdString();
    expectNear(worldOf(r.image, 0, 0, 0), vec3(origin.x, 100.0, origin.z), 0.01);
    expectNear(worldOf(r.image, 3, 2, 4),
               vec3(origin.x + 75 * c - 25 * s, 108.0, origin.z + 75 * s + 25 * c), 0.01);

    // No CDP positions: the source positions serve, multiplied by a positive scalar.
    for (TestTrace& t : segy.traces) {
        t.sourceX = t.cdpX / 1000;
        t.sourceY = t.cdpY / 1000;
        t.cdpX = t.cdpY = 0;
        t.scalar = 10;
    }
    const SegyReadResult bySource = roundTrip(segy);
    ASSERT_TRUE(bySource.ok());
    EXPECT_EQ(bySource.info.coordinates, SegyCoordinateSource::Source);
    expectNear(worldOf(bySource.image, 0, 0, 0), vec3(origin.x, 100.0, origin.z), 10.0);
}

TEST_F(SegyFiles, HeaderFieldsOfTheLineNumbersCanBeChosen)
{
    TestSegy segy = gridSegy(1, 1, 2, 1, 1, 2, 3);
    segy.traces[3].samples[0] = 42.0;
    // Move the line numbers into the CDP X and Y fields.
    for (TestTrace& t : segy.traces) {
        t.cdpX = t.inlineNumber + 500;
        t.cdpY = t.crosslineNumber + 700;
        t.inlineNumber = t.crosslineNumber = 0;
    }
    SegyReadOptions options;
    options.inlineByte = 181;
    options.crosslineByte = 185;
    const SegyReadResult r = roundTrip(segy, options);
    ASSERT_TRUE(r.ok()) << r.error.toStdString();
    EXPECT_EQ(r.info.inlineNumbers, (std::vector<int>{501, 502}));
    EXPECT_EQ(r.image(1, 1, 0), 42.0f);

    RecordingEventBus bus;
    options.inlineByte = 190;
    const SegyReadResult bad = roundTrip(segy, options);
    EXPECT_TRUE(bad.error.endsWith("bytes 190 and 185 are not both trace header fields"))
        << bad.error.toStdString();
}

TEST_F(SegyFiles, BadFilesAreRefusedWithAOneLineReason)
{
    struct Case {
        const char* what;
        QByteArray bytes;
        int kind;
        const char* reason;   // the text after "<path>: "
    };
    const QByteArray good = buildSegy(gridSegy(1, 1, 5, 20, 1, 5, 10));
    TestSegy missing = gridSegy(1, 1, 5, 20, 1, 5, 10);
    missing.traces.erase(missing.traces.begin() + 7);
    TestSegy twice = gridSegy(1, 1, 2, 1, 1, 2, 4);
    twice.traces[3] = twice.traces[1];
    TestSegy uneven = gridSegy(1, 1, 3, 1, 1, 2, 4);
    for (TestTrace& t : uneven.traces) if (t.inlineNumber == 3) t.inlineNumber = 4;
    TestSegy noSamples = gridSegy(1, 1, 2, 1, 1, 2, 0);
    TestSegy fixedPoint = gridSegy(1, 1, 2, 1, 1, 2, 4);
    fixedPoint.format = 4;
    TestSegy extended = gridSegy(1, 1, 2, 1, 1, 2, 4);
    extended.declaredExtendedHeaders = 30000;
    TestSegy negative = gridSegy(1, 1, 2, 1, 1, 2, 4);
    negative.declaredExtendedHeaders = 0xFFFF;   // -1 as a signed field
    const QByteArray text = QByteArray("This is a text file, not seismic.\n").repeated(200);

    const Case cases[] = {
        {"tiny", good.left(100), 1, "not a SEG-Y file: 100 bytes, fewer than its headers take"},
        // "sm" of "seismic" lies where the format code belongs.
        {"text", text, 1,
         "not a SEG-Y file, or an unsupported one: sample format code 29549 "
         "(supported: 1, 2, 3, 5, 8)"},
        {"truncated", good.left(good.size() - 10), 2,
         "truncated: the 6990 bytes after the headers are not a whole number of 280-byte "
         "traces (10 samples, 4-byte IEEE float)"},
        {"missing trace", buildSegy(missing), 1,
         "irregular geometry: 24 traces for 5 inlines x 5 crosslines"},
        {"trace twice", buildSegy(twice), 1,
         "irregular geometry: inline 1 crossline 2 has more than one trace"},
        {"uneven lines", buildSegy(uneven), 1,
         "irregular geometry: inline numbers are not evenly spaced (step 1, but 4 follows 2)"},
        {"no samples", buildSegy(noSamples), 1, "no sample count in the headers"},
        {"format 4", buildSegy(fixedPoint), 1,
         "4-byte fixed-point with gain samples (format 4) are not supported "
         "(supported: 1, 2, 3, 5, 8)"},
        {"extended headers", buildSegy(extended), 1,
         "no trace after the headers (first trace at byte 96003600 of 4624)"},
        {"variable extended headers without their end", buildSegy(negative), 1,
         "a variable number of extended textual headers (-1) without the record that ends "
         "them ((SEG: EndText))"},
    };
    for (const Case& c : cases) {
        RecordingEventBus bus;
        const QString file = dir.filePath(QString::fromLatin1(c.what) + ".sgy");
        ASSERT_TRUE(writeFileBytes(file, c.bytes));
        const SegyReadResult r = readSegyVolume(file);
        EXPECT_FALSE(r.ok()) << c.what;
        EXPECT_TRUE(r.image.isEmpty()) << c.what;
        EXPECT_TRUE(r.info.inlineNumbers.empty()) << c.what;
        EXPECT_EQ(r.error.toStdString(), (file + ": " + c.reason).toStdString()) << c.what;
        EXPECT_TRUE(bus.contains(c.kind, r.error)) << c.what;
    }
}

TEST_F(SegyFiles, RandomlyDamagedFilesNeverCrashTheReader)
{
    const QByteArray original = readFileBytes(kDataDir + "small.sgy");
    ASSERT_FALSE(original.isEmpty());
    std::mt19937 rng(17);
    const QString file = dir.filePath("damaged.sgy");
    int refused = 0;
    for (int round = 0; round < 300; ++round) {
        QByteArray bytes = original;
        // Damage the binary header and the first trace headers, sometimes cut the file.
        std::uniform_int_distribution<int> where(3200, 3600 + 2 * 440);
        for (int k = 0; k < 1 + round % 4; ++k) bytes[where(rng)] = char(rng());
        if (round % 3 == 0)
            bytes.truncate(std::uniform_int_distribution<int>(0, bytes.size())(rng));
        ASSERT_TRUE(writeFileBytes(file, bytes));
        RecordingEventBus bus;
        const SegyReadResult r = readSegyVolume(file);
        if (r.ok()) {
            EXPECT_EQ(r.image.voxelCount(), std::size_t(r.info.traceCount) * r.info.sampleCount);
        } else {
            ++refused;
            EXPECT_TRUE(r.image.isEmpty());
            EXPECT_EQ(bus.messages.size(), 1);
        }
    }
    EXPECT_GT(refused, 100);
}

TEST_F(SegyFiles, AMissingFileIsAFileError)
{
    RecordingEventBus bus;
    const QString file = dir.filePath("nothing here.sgy");
    const SegyReadResult r = readSegyVolume(file);
    EXPECT_EQ(r.error, file + ": cannot open: no such file");
    EXPECT_TRUE(bus.contains(ZNEventBus::FileError, r.error));
    EXPECT_FALSE(readSegyVolume(dir.path()).ok());
}

TEST_F(SegyFiles, CancellingTheProgressBarAbandonsTheRead)
{
    RecordingProgress progress(1);
    RecordingEventBus bus;
    const SegyReadResult r = roundTrip(gridSegy(1, 1, 4, 1, 1, 4, 8));
    EXPECT_TRUE(r.error.endsWith(": reading cancelled"));
    EXPECT_TRUE(r.image.isEmpty());
    EXPECT_EQ(progress.titles, QStringList{"Reading SEG-Y"});
    EXPECT_EQ(progress.closed, 1);
}

TEST_F(SegyFiles, FilesSegyioReadsAreReadWhateverTheirHeadersSayOfCountsAndExtensions)
{
    struct Case {
        const char* what;
        TestSegy segy;
    };
    // Two traces whose samples count up from the trace's line numbers.
    const auto twoTraces = [](int samples) { return gridSegy(1, 1, 2, 10, 1, 1, samples); };
    Case cases[] = {
        {"40000 samples in the 16-bit count", twoTraces(40000)},
        {"revision 2 extended sample count", twoTraces(70000)},
        {"revision 2 additional trace headers", twoTraces(6)},
        {"variable extended textual headers", twoTraces(6)},
        {"revision 2 first trace offset", twoTraces(6)},
        {"little-endian 40000 samples", twoTraces(40000)},
        {"additional trace headers before 2-byte integers", twoTraces(6)},
        {"additional trace headers before 4-byte integers", twoTraces(6)},
    };
    cases[1].segy.binarySamples = 0;
    cases[1].segy.extendedSamples = 70000;
    cases[1].segy.revision = 0x0200;
    cases[2].segy.revision = 0x0200;
    cases[2].segy.extraTraceHeaders = 2;
    cases[3].segy.extendedHeaders = 3;
    cases[3].segy.declaredExtendedHeaders = 0xFFFF;  // -1
    cases[3].segy.endStanza = true;
    cases[5].segy.littleEndian = true;
    // Integer samples are read trace by trace through segyio, past the additional headers.
    for (int k : {6, 7}) {
        cases[k].segy.revision = 0x0200;
        cases[k].segy.extraTraceHeaders = 3;
        cases[k].segy.format = k == 6 ? 3 : 2;
    }
    for (Case& c : cases) {
        QByteArray bytes = buildSegy(c.segy);
        if (QLatin1String(c.what) == QLatin1String("revision 2 first trace offset")) {
            // -1 extended headers, none ending with a stanza, but the offset is given.
            TestSegy s = c.segy;
            s.revision = 0x0200;
            s.extendedHeaders = 2;
            s.declaredExtendedHeaders = 0xFFFF;
            bytes = buildSegy(s);
            const quint64 first = 3600 + 2 * 3200;
            for (int k = 0; k < 8; ++k) bytes[3520 + k] = char((first >> (8 * (7 - k))) & 0xFF);
        }
        const QString file = dir.filePath(QStringLiteral("case.sgy"));
        ASSERT_TRUE(writeFileBytes(file, bytes));
        const SegyReadResult r = readSegyVolume(file);
        ASSERT_TRUE(r.ok()) << c.what << ": " << r.error.toStdString();
        const int samples = static_cast<int>(c.segy.traces[0].samples.size());
        EXPECT_EQ(r.info.sampleCount, samples) << c.what;
        EXPECT_EQ(r.info.traceCount, 2) << c.what;
        for (int i = 0; i < 2; ++i)
            for (int k : {0, samples - 1}) EXPECT_EQ(r.image(i, 0, k), float((1 + i) * 100 + 10 + k)) << c.what;
    }
}

TEST_F(SegyFiles, FilesThatCannotBeReadNameTheRealReason)
{
    struct Case {
        const char* what;
        QByteArray bytes;
        const char* reason;
    };
    TestSegy unsignedBig = gridSegy(1, 1, 2, 1, 1, 1, 4);
    unsignedBig.format = 10;
    TestSegy unsignedLittle = unsignedBig;
    unsignedLittle.littleEndian = true;
    TestSegy doubles = unsignedLittle;
    doubles.format = 6;
    const QByteArray headersOnly = buildSegy(gridSegy(1, 1, 2, 1, 1, 1, 4)).left(3600);
    TestSegy wrongExtra = gridSegy(1, 1, 2, 1, 1, 1, 4);
    wrongExtra.revision = 0x0200;
    wrongExtra.extraTraceHeaders = 1;
    QByteArray extraClaimed = buildSegy(wrongExtra);
    extraClaimed[3509] = 3;  // claims three additional headers per trace where one stands
    const Case cases[] = {
        {"format 10", buildSegy(unsignedBig),
         "4-byte unsigned integer samples (format 10) are not supported (supported: 1, 2, 3, 5, 8)"},
        {"format 10 little-endian", buildSegy(unsignedLittle),
         "4-byte unsigned integer samples (format 10) are not supported (supported: 1, 2, 3, 5, 8)"},
        {"format 6 little-endian", buildSegy(doubles),
         "8-byte IEEE float samples (format 6) are not supported (supported: 1, 2, 3, 5, 8)"},
        {"headers only", headersOnly,
         "no trace after the headers (the file ends at byte 3600, where the first trace would begin)"},
        {"wrong additional headers", extraClaimed,
         "truncated: the 992 bytes after the headers are not a whole number of 976-byte traces "
         "(4 samples, 4-byte IEEE float, 3 additional trace headers)"},
    };
    for (const Case& c : cases) {
        RecordingEventBus bus;
        const QString file = dir.filePath(QStringLiteral("bad.sgy"));
        ASSERT_TRUE(writeFileBytes(file, c.bytes));
        const SegyReadResult r = readSegyVolume(file);
        EXPECT_EQ(r.error.toStdString(), (file + ": " + c.reason).toStdString()) << c.what;
    }
}

TEST(SegyLayout, HostileCountsAreCheckedAgainstTheFileBeforeAnyProduct)
{
    // Counts near 2^31 and 2^32 in every field that multiplies: refused, never overflowed.
    QTemporaryDir dir;
    for (const int extra : {0, 0x7FFFFFFF, -1})
        for (const int samples : {0x7FFFFFFF, -1, 65535}) {
            TestSegy s = gridSegy(1, 1, 1, 1, 1, 1, 2);
            s.revision = 0x0200;
            s.binarySamples = 0;
            s.extendedSamples = samples;
            s.extraTraceHeaders = extra;
            s.writtenExtraTraceHeaders = 0;
            const QString file = dir.filePath(QStringLiteral("hostile.sgy"));
            ASSERT_TRUE(writeFileBytes(file, buildSegy(s)));
            volumeio::SegyLayout layout;
            RecordingEventBus bus;
            EXPECT_TRUE(volumeio::readSegyLayout(file, layout).isSet()) << extra << " " << samples;
        }
}
