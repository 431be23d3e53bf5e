#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include <QTemporaryDir>

#include <testfiles.h>
#include <testservices.h>
#include <volumeio/gridaxes.h>
#include <volumeio/volumeslabreader.h>
#include <znbloc.h>

#include "segytestfile.h"

using namespace volumeio;

namespace {

constexpr int kNi = 7, kNc = 5, kNs = 11;

ZN3DImage<float> randomVolume()
{
    std::mt19937 rng(3);
    std::uniform_real_distribution<float> value(-50.0f, 50.0f);
    ZN3DImage<float> image(georef::BlocSpace(kNi, kNc, kNs, axisAlignedBlocToWorld({2.0, 3.0, 4.0})));
    for (std::size_t i = 0; i < image.voxelCount(); ++i) image.data()[i] = value(rng);
    return image;
}

// A SEG-Y grid of kNi x kNc traces of kNs samples, in `format`, inline-sorted or with
// its traces shuffled; integer formats get whole values.
TestSegy segyGrid(int format, bool shuffled)
{
    TestSegy segy = gridSegy(100, 1, kNi, 300, 2, kNc, kNs);
    segy.format = format;
    for (TestTrace& t : segy.traces)
        for (double& s : t.samples) s = std::fmod(s, 97.0) - 40.0;
    if (shuffled) std::shuffle(segy.traces.begin(), segy.traces.end(), std::mt19937(9));
    return segy;
}

} // namespace

TEST(VolumeSlabReader, SlabsOfEveryFormatHoldTheSamplesOfTheWholeRead)
{
    QTemporaryDir dir;
    RecordingEventBus bus;
    const ZN3DImage<float> image = randomVolume();
    std::vector<VolumeSource> sources;
    for (const char* axes : {"zyx", "xyz", "yzx", "zxy"})
        for (const ByteOrder order : {ByteOrder::BigEndian, ByteOrder::LittleEndian}) {
            VolumeSource raw{VolumeFormat::Raw, dir.filePath(QStringLiteral("v_%1_%2.raw").arg(axes).arg(int(order))), {}};
            raw.raw = {kNi, kNc, kNs, order, kTraceOrder, {2.0, 3.0, 4.0}};
            ASSERT_TRUE(parseAxisOrder(QLatin1String(axes), raw.raw.axes));
            ASSERT_EQ(writeRawVolume(raw.path, image, order, raw.raw.axes), QString());
            sources.push_back(raw);
        }
    for (const int format : {1, 5, 2, 3})
        for (const bool shuffled : {false, true}) {
            const QString path = dir.filePath(QStringLiteral("g_%1_%2.sgy").arg(format).arg(shuffled));
            ASSERT_TRUE(writeFileBytes(path, buildSegy(segyGrid(format, shuffled))));
            sources.push_back({VolumeFormat::Segy, path, {}});
        }
    const QString blocPath = dir.filePath(QStringLiteral("v.bloc"));
    {
        ZNBloc bloc;
        ASSERT_TRUE(bloc.create(blocPath, image.blocSpace(), 0, kNs, ZNBloc::Float32,
                                georef::UnitObject(georef::UnitObject::SpatialFoot, georef::UnitObject::VerticalSecond)));
        ASSERT_TRUE(bloc.writeSlices(0, image, 0, kNs));
        ASSERT_TRUE(bloc.close());
    }
    sources.push_back({VolumeFormat::Bloc, blocPath, {}});

    for (const VolumeSource& source : sources) {
        SCOPED_TRACE(source.path.toStdString());
        const VolumeReadResult whole = readVolume(source);
        ASSERT_TRUE(whole.ok()) << whole.error.toStdString();
        VolumeSlabReader reader;
        ASSERT_EQ(reader.open(source), QString());
        EXPECT_EQ(reader.blocSpace(), whole.image.blocSpace());
        EXPECT_EQ(reader.units(), whole.units);
        EXPECT_DOUBLE_EQ(reader.volumeBytes(), kNi * kNc * kNs * 4.0);
        // Slabs of 1, 4 and the rest, in an order other than the file's.
        std::vector<float> slabs(whole.image.voxelCount(), 1e9f);
        const std::size_t slice = whole.image.sliceSize();
        for (const auto& [z0, count] : std::vector<std::pair<int, int>>{{5, 6}, {0, 1}, {1, 4}})
            ASSERT_EQ(reader.read(z0, count, slabs.data() + slice * z0), QString()) << z0;
        EXPECT_EQ(slabs, std::vector<float>(whole.image.data(), whole.image.data() + whole.image.voxelCount()));
    }
}

TEST(VolumeSlabReader, FilesThatDoNotFitAndSlicesOutsideTheVolumeAreRefused)
{
    QTemporaryDir dir;
    RecordingEventBus bus;
    const QString rawPath = dir.filePath(QStringLiteral("short.raw"));
    ASSERT_TRUE(writeFileBytes(rawPath, QByteArray(kNi * kNc * kNs * 4 - 4, '\0')));
    VolumeSource raw{VolumeFormat::Raw, rawPath, {}};
    raw.raw = {kNi, kNc, kNs, ByteOrder::LittleEndian, kTraceOrder, {1.0, 1.0, 1.0}};
    VolumeSlabReader reader;
    EXPECT_TRUE(reader.open(raw).startsWith(rawPath));
    EXPECT_FALSE(reader.isOpen());
    std::vector<float> out(kNi * kNc * kNs, 7.0f);
    EXPECT_FALSE(reader.read(0, 1, out.data()).isEmpty());
    for (const VolumeSource& missing : {VolumeSource{VolumeFormat::Segy, dir.filePath(QStringLiteral("no.sgy")), {}},
                                        VolumeSource{VolumeFormat::Bloc, dir.filePath(QStringLiteral("no.bloc")), {}}})
        EXPECT_FALSE(reader.open(missing).isEmpty());

    ASSERT_TRUE(writeFileBytes(rawPath, QByteArray(kNi * kNc * kNs * 4, '\0')));
    ASSERT_EQ(reader.open(raw), QString());
    for (const auto& [z0, count] : std::vector<std::pair<int, int>>{{-1, 2}, {10, 2}, {0, 0}, {0, kNs + 1}})
        EXPECT_FALSE(reader.read(z0, count, out.data()).isEmpty()) << z0 << " " << count;
    EXPECT_EQ(out[0], 7.0f);
    EXPECT_EQ(reader.read(0, kNs, out.data()), QString());
    EXPECT_EQ(out[0], 0.0f);
}
