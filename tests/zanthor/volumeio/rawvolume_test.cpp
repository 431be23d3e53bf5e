#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

#include <QFile>
#include <QTemporaryDir>
#include <QtEndian>

#include <volumeio/rawvolume.h>

#include "segytestfile.h"
#include "testfiles.h"
#include "testservices.h"

using core::vec3;
using namespace volumeio;

namespace {
const AxisOrder kAllOrders[] = {
    {Axis::Inline, Axis::Crossline, Axis::Sample}, {Axis::Inline, Axis::Sample, Axis::Crossline},
    {Axis::Crossline, Axis::Inline, Axis::Sample}, {Axis::Crossline, Axis::Sample, Axis::Inline},
    {Axis::Sample, Axis::Inline, Axis::Crossline}, {Axis::Sample, Axis::Crossline, Axis::Inline},
};

// A 3 x 4 x 5 image whose voxel (i, j, k) holds 100 i + 10 j + k + 0.5.
ZN3DImage<float> numberedImage()
{
    ZN3DImage<float> image(3, 4, 5);
    for (int k = 0; k < 5; ++k)
        for (int j = 0; j < 4; ++j)
            for (int i = 0; i < 3; ++i) image(i, j, k) = 100.0f * i + 10.0f * j + k + 0.5f;
    return image;
}

RawVolumeLayout layoutOf(const ZN3DImage<float>& image, ByteOrder byteOrder, const AxisOrder& axes)
{
    RawVolumeLayout l;
    l.nInline = image.nx();
    l.nCrossline = image.ny();
    l.nSample = image.nz();
    l.byteOrder = byteOrder;
    l.axes = axes;
    return l;
}
} // namespace

TEST(RawVolume, AHandMadeBigEndianTraceOrderFileReadsVoxelByVoxel)
{
    // 2 inlines x 3 crosslines x 4 samples, samples of a trace together, then crosslines,
    // then inlines; each value big-endian.
    QByteArray bytes;
    for (int i = 0; i < 2; ++i)
        for (int j = 0; j < 3; ++j)
            for (int k = 0; k < 4; ++k) {
                const float v = 100.0f * i + 10.0f * j + k;
                quint32 bits;
                std::memcpy(&bits, &v, 4);
                char be[4];
                qToBigEndian(bits, be);
                bytes.append(be, 4);
            }
    QTemporaryDir dir;
    const QString path = dir.filePath("hand made.raw");
    ASSERT_TRUE(writeFileBytes(path, bytes));
    RawVolumeLayout layout;
    layout.nInline = 2;
    layout.nCrossline = 3;
    layout.nSample = 4;
    layout.spacing = {25.0, 12.5, 4.0};
    const VolumeReadResult r = readRawFloat32Volume(path, layout);
    ASSERT_TRUE(r.ok()) << r.error.toStdString();
    for (int i = 0; i < 2; ++i)
        for (int j = 0; j < 3; ++j)
            for (int k = 0; k < 4; ++k) EXPECT_EQ(r.image(i, j, k), 100.0f * i + 10.0f * j + k);
    // World: inline along x, sample along y (vertical), crossline along z.
    EXPECT_EQ(r.image.blocSpace().blocToWorld(vec3(1, 2, 3)), vec3(25.0, 12.0, 25.0));
}

TEST(RawVolume, WriteThenReadGivesTheSameVoxelsInEveryOrder)
{
    QTemporaryDir dir;
    const ZN3DImage<float> image = numberedImage();
    for (ByteOrder byteOrder : {ByteOrder::BigEndian, ByteOrder::LittleEndian})
        for (const AxisOrder& axes : kAllOrders) {
            const QString path = dir.filePath("volume " + axisOrderName(axes) + ".raw");
            ASSERT_EQ(writeRawVolume(path, image, byteOrder, axes), QString());
            EXPECT_EQ(QFileInfo(path).size(), 3 * 4 * 5 * 4);
            const VolumeReadResult r = readRawFloat32Volume(path, layoutOf(image, byteOrder, axes));
            ASSERT_TRUE(r.ok()) << r.error.toStdString();
            EXPECT_EQ(std::memcmp(r.image.data(), image.data(), 60 * sizeof(float)), 0)
                << axisOrderName(axes).toStdString();
        }
}

TEST(RawVolume, WrittenBytesFollowTheAxisAndByteOrder)
{
    QTemporaryDir dir;
    const QString path = dir.filePath("labels.raw");
    ZN3DImage<std::int32_t> labels(georef::BlocSpace(3, 4, 5), -9999);
    labels(2, 1, 0) = 7;    // file index of (i, j, k) in "zxy" order: k + 5 (i + 3 j)
    ASSERT_EQ(writeRawVolume(path, labels, ByteOrder::LittleEndian,
                             {Axis::Sample, Axis::Inline, Axis::Crossline}), QString());
    const QByteArray bytes = readFileBytes(path);
    ASSERT_EQ(bytes.size(), 60 * 4);
    const int at = 4 * (0 + 5 * (2 + 3 * 1));
    EXPECT_EQ(qFromLittleEndian<qint32>(bytes.constData() + at), 7);
    EXPECT_EQ(qFromLittleEndian<qint32>(bytes.constData()), -9999);
}

TEST(RawVolume, BadLayoutsAndSizesAreRefusedBeforeAllocating)
{
    QTemporaryDir dir;
    const ZN3DImage<float> image = numberedImage();
    const QString path = dir.filePath("volume.raw");
    ASSERT_EQ(writeRawVolume(path, image, ByteOrder::BigEndian, kTraceOrder), QString());
    const RawVolumeLayout good = layoutOf(image, ByteOrder::BigEndian, kTraceOrder);
    struct Case {
        RawVolumeLayout layout;
        int kind;
        const char* reason;
    };
    RawVolumeLayout longer = good, zero = good, repeated = good, flat = good, huge = good;
    longer.nSample = 6;
    zero.nCrossline = 0;
    repeated.axes = {Axis::Sample, Axis::Sample, Axis::Inline};
    flat.spacing = {1.0, 0.0, 1.0};
    huge.nInline = huge.nCrossline = huge.nSample = 2000000000;
    const Case cases[] = {
        {longer, 1, "holds 240 bytes, but 3 x 4 x 6 float32 samples need 288"},
        {zero, 1, "raw volume sizes must be positive (got 3 x 0 x 5)"},
        {repeated, 1, "the axis order must name each axis once"},
        {flat, 1, "the spacing must be positive (got 1, 0, 1)"},
        {huge, 1, "sizes 2000000000 x 2000000000 x 2000000000 are too large"},
    };
    for (const Case& c : cases) {
        RecordingEventBus bus;
        const VolumeReadResult r = readRawFloat32Volume(path, c.layout);
        EXPECT_TRUE(r.image.isEmpty());
        EXPECT_EQ(r.error.toStdString(), (path + ": " + c.reason).toStdString());
        EXPECT_TRUE(bus.contains(c.kind, r.error));
    }
    RecordingEventBus bus;
    const QString missing = dir.filePath("missing.raw");
    const VolumeReadResult r = readRawFloat32Volume(missing, good);
    EXPECT_TRUE(r.error.startsWith(missing + ": cannot open: "));
    EXPECT_TRUE(bus.contains(ZNEventBus::FileError, r.error));
}

TEST(RawVolume, AFailedWriteLeavesTheTargetAsItWas)
{
    QTemporaryDir dir;
    RecordingEventBus bus;
    const ZN3DImage<float> image = numberedImage();
    EXPECT_FALSE(writeRawVolume(dir.filePath("no such folder/v.raw"), image, ByteOrder::BigEndian,
                                kTraceOrder).isEmpty());
    const QString path = dir.filePath("kept.raw");
    ASSERT_TRUE(writeFileBytes(path, "previous"));
    EXPECT_EQ(writeRawVolume(path, ZN3DImage<float>(), ByteOrder::BigEndian, kTraceOrder),
              path + ": the volume to write is empty");
    EXPECT_EQ(writeRawVolume(path, image, ByteOrder::BigEndian,
                             {Axis::Inline, Axis::Inline, Axis::Sample}),
              path + ": the axis order must name each axis once");
    EXPECT_EQ(readFileBytes(path), QByteArray("previous"));
    EXPECT_EQ(bus.messages.size(), 3);
}

TEST(RawVolume, CancellingTheProgressBarAbandonsTheRead)
{
    QTemporaryDir dir;
    const QString path = dir.filePath("big.raw");
    ZN3DImage<float> image(64, 64, 256);   // 4 MiB: four chunks
    ASSERT_EQ(writeRawVolume(path, image, ByteOrder::BigEndian, kTraceOrder), QString());
    RecordingProgress progress(1);
    RecordingEventBus bus;
    const VolumeReadResult r =
        readRawFloat32Volume(path, layoutOf(image, ByteOrder::BigEndian, kTraceOrder));
    EXPECT_EQ(r.error, path + ": reading cancelled");
    EXPECT_EQ(progress.titles, QStringList{"Reading raw volume"});
    EXPECT_EQ(progress.closed, 1);
}

TEST(RawVolume, AxisOrdersReadAsThreeDistinctLetters)
{
    AxisOrder order = kImageOrder;
    EXPECT_TRUE(parseAxisOrder("zyx", order));
    EXPECT_EQ(order, kTraceOrder);
    EXPECT_TRUE(parseAxisOrder(" XZY ", order));
    EXPECT_EQ(axisOrderName(order), "xzy");
    for (const char* bad : {"", "xy", "xxy", "xyw", "xyzz"}) {
        AxisOrder kept = kImageOrder;
        EXPECT_FALSE(parseAxisOrder(bad, kept)) << bad;
        EXPECT_EQ(kept, kImageOrder);
    }
}

TEST(RawVolume, TheByteOrderIsTheOneInWhichTheSamplesReadAsPlausibleNumbers)
{
    // Numbers of a likelihood (0 to 1, mostly 0) and of an amplitude volume.
    ZN3DImage<float> likelihood(40, 30, 20);
    for (std::size_t i = 0; i < likelihood.voxelCount(); i += 7) likelihood.data()[i] = float(i % 1000) / 1000.0f;
    ZN3DImage<float> amplitude(40, 30, 20);
    for (std::size_t i = 0; i < amplitude.voxelCount(); ++i) amplitude.data()[i] = std::sin(0.01f * i) * 3000.0f;
    QTemporaryDir dir;
    for (const ZN3DImage<float>* image : {&likelihood, &amplitude})
        for (ByteOrder order : {ByteOrder::BigEndian, ByteOrder::LittleEndian}) {
            const QString path = dir.filePath("v.raw");
            ASSERT_EQ(writeRawVolume(path, *image, order, kTraceOrder), QString());
            bool decided = false;
            EXPECT_EQ(detectByteOrder(path, &decided), order) << byteOrderName(order).toStdString();
            EXPECT_TRUE(decided);
        }
    // Files whose samples read alike either way: big-endian, undecided.
    const QString zeros = dir.filePath("zeros.raw"), empty = dir.filePath("empty.raw");
    ASSERT_TRUE(writeFileBytes(zeros, QByteArray(4000, '\0')));
    ASSERT_TRUE(writeFileBytes(empty, QByteArray()));
    for (const QString& path : {zeros, empty, dir.filePath("missing.raw")}) {
        bool decided = true;
        EXPECT_EQ(detectByteOrder(path, &decided), ByteOrder::BigEndian) << path.toStdString();
        EXPECT_FALSE(decided);
    }
}
