#include <gtest/gtest.h>

#include <cstring>

#include <QFile>
#include <QTemporaryDir>
#include <QtEndian>

#include <volumeio/filesamples.h>
#include <znstridedprogress.h>

#include "segytestfile.h"
#include "testfiles.h"
#include "testservices.h"

using namespace volumeio;

namespace {

// Sample (x, y, z): 100 x + 10 y + z + 0.5, exact in both float codings.
float valueAt(int x, int y, int z) { return 100.0f * x + 10.0f * y + z + 0.5f; }

// The file bytes of `layout`, written sample by sample from its definition; bytes that
// hold no sample are 0xAB.
QByteArray bytesOf(const FileSampleLayout& layout, qint64 fileBytes)
{
    QByteArray bytes(static_cast<int>(fileBytes), static_cast<char>(0xAB));
    for (int z = 0; z < layout.size[2]; ++z)
        for (int y = 0; y < layout.size[1]; ++y)
            for (int x = 0; x < layout.size[0]; ++x) {
                const float v = valueAt(x, y, z);
                quint32 word;
                if (layout.coding == SampleCoding::Ibm) word = ibmFromDouble(v);
                else std::memcpy(&word, &v, 4);
                if (layout.swap) word = qbswap(word);
                const qint64 at = layout.origin + x * layout.step[0] + y * layout.step[1] + z * layout.step[2];
                std::memcpy(bytes.data() + at, &word, 4);
            }
    return bytes;
}

// A layout of nx x ny x nz samples, axes fastest first as `order` (0 x, 1 y, 2 z), each
// run of the slowest axis followed by `gap` spare bytes, after `origin` header bytes.
FileSampleLayout packed(int nx, int ny, int nz, const int (&order)[3], int gap = 0, qint64 origin = 0)
{
    FileSampleLayout l;
    l.size[0] = nx, l.size[1] = ny, l.size[2] = nz;
    l.origin = origin;
    qint64 step = 4;
    for (int k = 0; k < 3; ++k) {
        l.step[order[k]] = step;
        step *= l.size[order[k]];
        if (k == 1) step += gap;
    }
    return l;
}

// Bytes enough for every sample of `l` (whose steps are positive or start at its end).
qint64 fileBytesOf(const FileSampleLayout& l)
{
    qint64 last = l.origin;
    for (int a = 0; a < 3; ++a) last += (l.size[a] - 1) * std::abs(l.step[a]);
    return last + 4 + 64;
}

// Reads slices z0 .. z0 + depth - 1 and checks every voxel; the first mismatch is reported.
void expectSlices(const FileSampleLayout& layout, int z0, int depth, qint64 windowBytes, const std::string& what)
{
    QTemporaryDir dir;
    const QString path = dir.filePath("samples.bin");
    ASSERT_TRUE(writeFileBytes(path, bytesOf(layout, fileBytesOf(layout))));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    ZN3DImage<float> out(layout.size[0], layout.size[1], depth);
    bool cancelled = true;
    ASSERT_EQ(readFileSamples(file, layout, z0, out, nullptr, 0, cancelled, windowBytes),
              QString()) << what;
    EXPECT_FALSE(cancelled);
    for (int z = 0; z < depth; ++z)
        for (int y = 0; y < layout.size[1]; ++y)
            for (int x = 0; x < layout.size[0]; ++x)
                if (out(x, y, z) != valueAt(x, y, z0 + z)) {
                    ADD_FAILURE() << what << ": (" << x << ", " << y << ", " << z0 + z << ") read "
                                  << out(x, y, z) << " instead of " << valueAt(x, y, z0 + z);
                    return;
                }
}

} // namespace

TEST(FileSamples, EveryAxisOrderByteOrderAndCodingReadsEveryVoxel)
{
    const int orders[6][3] = {{0, 1, 2}, {0, 2, 1}, {1, 0, 2}, {1, 2, 0}, {2, 0, 1}, {2, 1, 0}};
    // Sizes that fill whole tiles, and sizes that leave a tail along every axis.
    const int sizes[][3] = {{32, 8, 12}, {37, 21, 19}, {5, 3, 2}};
    for (const auto& size : sizes)
        for (const auto& order : orders)
            for (bool swap : {false, true})
                for (SampleCoding coding : {SampleCoding::Ieee, SampleCoding::Ibm}) {
                    FileSampleLayout l = packed(size[0], size[1], size[2], order);
                    l.swap = swap;
                    l.coding = coding;
                    const std::string what = "size " + std::to_string(size[0]) + " order " +
                                             std::to_string(order[0]) + std::to_string(order[1]) +
                                             std::to_string(order[2]) + (swap ? " swapped" : "") +
                                             (coding == SampleCoding::Ibm ? " ibm" : "");
                    expectSlices(l, 0, size[2], kSampleWindowBytes, what);
                }
}

TEST(FileSamples, SlabsWindowsHeadersAndReversedLinesReadTheSameVoxels)
{
    struct Case {
        const char* name;
        FileSampleLayout layout;
        int z0, depth;
        qint64 windowBytes;
    };
    // Traces of 40 samples behind 240-byte headers, inlines numbered downwards: the
    // layout of a SEG-Y file whose first trace is the last inline.
    FileSampleLayout segy = packed(33, 18, 40, {2, 1, 0}, 0, 3600 + 240);
    const qint64 trace = 240 + 40 * 4;
    segy.step[1] = trace;
    segy.step[0] = -18 * trace;
    segy.origin = 3600 + 240 + 32 * 18 * trace;
    segy.swap = true;
    const Case cases[] = {
        {"slab of a trace-order volume", packed(37, 21, 19, {2, 1, 0}), 5, 9, kSampleWindowBytes},
        {"one slice of an inline-fastest volume", packed(37, 21, 19, {0, 1, 2}), 18, 1, kSampleWindowBytes},
        {"windows of one inline", packed(37, 21, 19, {2, 1, 0}), 0, 19, 64},
        {"windows of two crosslines", packed(37, 21, 19, {2, 0, 1}), 3, 13, 2 * 37 * 19 * 4},
        {"gaps between slices", packed(20, 9, 7, {0, 2, 1}, 12), 1, 5, 1000},
        {"SEG-Y-like traces", segy, 0, 40, kSampleWindowBytes},
        {"SEG-Y-like traces, small windows", segy, 7, 30, 3 * trace * 18},
    };
    for (const Case& c : cases) expectSlices(c.layout, c.z0, c.depth, c.windowBytes, c.name);
}

TEST(FileSamples, AVolumeLargerThanTheCachesIsStreamedIntoPlace)
{
    // 16 MiB of samples: the image is written past the caches.
    FileSampleLayout l = packed(128, 128, 256, {2, 1, 0});
    l.swap = true;
    expectSlices(l, 0, 256, kSampleWindowBytes, "streamed");
}

TEST(FileSamples, SlicesOutsideTheVolumeAndCancelsAreRefused)
{
    QTemporaryDir dir;
    const FileSampleLayout l = packed(8, 4, 6, {2, 1, 0});
    const QString path = dir.filePath("v.raw");
    ASSERT_TRUE(writeFileBytes(path, bytesOf(l, fileBytesOf(l))));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    bool cancelled = false;
    for (const auto& box : {std::pair<int, int>{5, 2}, {-1, 2}, {0, 7}}) {
        ZN3DImage<float> out(georef::BlocSpace(8, 4, std::max(1, box.second)), 7.0f);
        EXPECT_EQ(readFileSamples(file, l, box.first, out, nullptr, 0, cancelled),
                  "the slices asked for lie outside the volume");
        EXPECT_EQ(out(0, 0, 0), 7.0f);
    }
    ZN3DImage<float> wrongWidth(7, 4, 6);
    EXPECT_FALSE(readFileSamples(file, l, 0, wrongWidth, nullptr, 0, cancelled).isEmpty());

    // Four windows of one crossline each, the bar of 8 items moved two by two.
    const FileSampleLayout byCrossline = packed(8, 4, 6, {2, 0, 1});
    QFile other(dir.filePath("crosslines.raw"));
    ASSERT_TRUE(writeFileBytes(other.fileName(), bytesOf(byCrossline, fileBytesOf(byCrossline))));
    ASSERT_TRUE(other.open(QIODevice::ReadOnly));
    {
        RecordingProgress recording;
        ZNStridedProgress progress("Reading", 8);
        ZN3DImage<float> out(8, 4, 6);
        EXPECT_EQ(readFileSamples(other, byCrossline, 0, out, &progress, 8, cancelled, 8 * 6 * 4), QString());
        EXPECT_EQ(recording.increments, 8);
    }
    RecordingProgress recording(1);
    ZNStridedProgress progress("Reading", 8);
    ZN3DImage<float> out(8, 4, 6);
    EXPECT_EQ(readFileSamples(other, byCrossline, 0, out, &progress, 8, cancelled, 8 * 6 * 4), "reading cancelled");
    EXPECT_TRUE(cancelled);
    EXPECT_EQ(recording.titles, QStringList{"Reading"});
    EXPECT_EQ(progress.done(), 2);  // stopped after the first window
}

TEST(FileSamples, LayoutsFitTheFileOnlyWhenEverySampleLiesInIt)
{
    const FileSampleLayout l = packed(8, 4, 6, {2, 1, 0}, 0, 100);
    const qint64 end = 100 + 8 * 4 * 6 * 4;
    EXPECT_TRUE(l.fitsIn(end));
    EXPECT_FALSE(l.fitsIn(end - 1));
    FileSampleLayout before = l;
    before.origin = -4;
    EXPECT_FALSE(before.fitsIn(end));
    FileSampleLayout empty = l;
    empty.size[1] = 0;
    EXPECT_FALSE(empty.fitsIn(end));
}

TEST(FileSamples, IbmValuesConvertToTheNearestFloat)
{
    struct Case {
        quint32 bits;
        float value;
    };
    const Case cases[] = {
        {0x00000000u, 0.0f},  {0x41100000u, 1.0f},   {0xC1100000u, -1.0f}, {0x42640000u, 100.0f},
        {0x40800000u, 0.5f},  {0xC276A000u, -118.625f}, {0x7FFFFFFFu, std::numeric_limits<float>::infinity()},
        {0x00100000u, 0.0f},  // 16^-65: below the smallest float
    };
    for (const Case& c : cases) EXPECT_EQ(ibmToIeee(c.bits), c.value) << std::hex << c.bits;
}
