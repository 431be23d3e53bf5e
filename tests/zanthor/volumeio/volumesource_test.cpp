#include <gtest/gtest.h>

#include <QDomDocument>
#include <QFileDevice>
#include <QTemporaryDir>

#include <testfiles.h>
#include <testservices.h>
#include <volumeio/volumesource.h>
#include <znbloc.h>
#include <znobjectfile.h>
#include <znobjectfilewriter.h>
#include <znxml.h>

#include "segytestfile.h"

using namespace volumeio;

TEST(VolumeSource, TheFormatComesFromTheSuffixWhateverItsCaseAndAnythingElseIsRaw)
{
    struct Case {
        const char* path;
        VolumeFormat format;
    };
    for (const Case& c : {Case{"a/b/survey.sgy", VolumeFormat::Segy}, Case{"SURVEY.SEGY", VolumeFormat::Segy},
                          Case{"x.Bloc", VolumeFormat::Bloc}, Case{"cube.f32", VolumeFormat::Raw},
                          Case{"no_suffix", VolumeFormat::Raw}, Case{"sgy", VolumeFormat::Raw}})
        EXPECT_EQ(formatOfFileName(QString::fromLatin1(c.path)), c.format) << c.path;
}

TEST(VolumeSource, FormatNamesRoundTripAndUnknownNamesAreRefused)
{
    for (VolumeFormat f : {VolumeFormat::Segy, VolumeFormat::Raw, VolumeFormat::Bloc}) {
        VolumeFormat back = VolumeFormat::Raw;
        ASSERT_TRUE(formatFromName(formatName(f), back));
        EXPECT_EQ(back, f);
    }
    VolumeFormat untouched = VolumeFormat::Bloc;
    EXPECT_FALSE(formatFromName(QStringLiteral("SEGY"), untouched));
    EXPECT_FALSE(formatFromName(QString(), untouched));
    EXPECT_EQ(untouched, VolumeFormat::Bloc);
}

TEST(VolumeSource, EachFormatReadsItsSamplesAndTheUnitsOfItsWorld)
{
    QTemporaryDir dir;
    RecordingEventBus bus;

    const QString segyPath = dir.filePath(QStringLiteral("grid.sgy"));
    ASSERT_TRUE(writeFileBytes(segyPath, buildSegy(gridSegy(10, 1, 3, 20, 1, 2, 5))));
    const VolumeReadResult segy = readVolume({VolumeFormat::Segy, segyPath, {}});
    ASSERT_TRUE(segy.ok()) << segy.error.toStdString();
    EXPECT_EQ(segy.image.nx(), 3);
    EXPECT_EQ(segy.image.nz(), 5);
    EXPECT_FLOAT_EQ(segy.image(2, 1, 4), 12 * 100 + 21 + 4);
    EXPECT_TRUE(segy.units.isTime());
    EXPECT_EQ(segy.lines.inlineNumber(2), 12);
    EXPECT_EQ(segy.lines.crosslineNumber(1), 21);

    const QString blocPath = dir.filePath(QStringLiteral("volume.bloc"));
    {
        ZN3DImage<float> image(2, 2, 2);
        for (int i = 0; i < 8; ++i) image.data()[i] = static_cast<float>(i);
        ZNBloc bloc;
        const georef::UnitObject feetAndSeconds(georef::UnitObject::SpatialFoot, georef::UnitObject::VerticalSecond);
        ASSERT_TRUE(bloc.create(blocPath, georef::BlocSpace(2, 2, 2, core::mat4()), 0, 2, ZNBloc::Float32,
                                feetAndSeconds));
        ASSERT_TRUE(bloc.writeSlices(0, image, 0, 2));
        ASSERT_TRUE(bloc.close());
    }
    const VolumeReadResult bloc = readVolume({VolumeFormat::Bloc, blocPath, {}});
    ASSERT_TRUE(bloc.ok());
    EXPECT_FLOAT_EQ(bloc.image(1, 1, 1), 7.0f);
    EXPECT_EQ(bloc.units.getSpatialUnit(), georef::UnitObject::SpatialFoot);
    EXPECT_EQ(bloc.units.getVerticalUnit(), georef::UnitObject::VerticalSecond);

    const QString rawPath = dir.filePath(QStringLiteral("volume.raw"));
    ASSERT_TRUE(writeFileBytes(rawPath, QByteArray(2 * 3 * 4 * 4, '\0')));
    VolumeSource raw{VolumeFormat::Raw, rawPath, {}};
    raw.raw.nInline = 2;
    raw.raw.nCrossline = 3;
    raw.raw.nSample = 4;
    const VolumeReadResult r = readVolume(raw);
    ASSERT_TRUE(r.ok());
    EXPECT_EQ(r.image.ny(), 3);
    EXPECT_EQ(r.units, georef::UnitObject());
}

TEST(VolumeSource, AFileThatCannotBeReadGivesAnEmptyImageAndAnErrorNamingIt)
{
    QTemporaryDir dir;
    RecordingEventBus bus;
    const QString garbage = dir.filePath(QStringLiteral("garbage.bloc"));
    ASSERT_TRUE(writeFileBytes(garbage, QByteArray(100, 'x')));
    for (const VolumeSource& s : {VolumeSource{VolumeFormat::Bloc, garbage, {}},
                                  VolumeSource{VolumeFormat::Segy, dir.filePath(QStringLiteral("missing.sgy")), {}}}) {
        const VolumeReadResult r = readVolume(s);
        EXPECT_FALSE(r.ok());
        EXPECT_TRUE(r.image.isEmpty());
        EXPECT_TRUE(r.error.contains(QFileInfo(s.path).fileName())) << r.error.toStdString();
    }
    EXPECT_TRUE(bus.contains(ZNEventBus::FileError, QDir::toNativeSeparators(garbage) +
                                                        QStringLiteral(": not a readable block file")));
}

TEST(VolumeSource, ABlockFileTooLargeForMemoryIsRefusedForThatReason)
{
    // A block file of 16384 x 16384 x 1024 float samples (1 TiB, sparse on disk): it opens,
    // but its samples cannot be held, as SEG-Y and raw readers say too.
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("huge.bloc"));
    QDomDocument doc;
    QDomElement e = doc.createElement(QStringLiteral("ZNBloc"));
    ZNXml::appendInt(doc, e, QStringLiteral("nx"), 16384);
    ZNXml::appendInt(doc, e, QStringLiteral("ny"), 16384);
    ZNXml::appendInt(doc, e, QStringLiteral("nz"), 1024);
    ZNXml::appendString(doc, e, QStringLiteral("sampleType"), QStringLiteral("float32"));
    ZNObjectFile::createHeaderDocument(doc).appendChild(e);
    ZNObjectFileWriter writer(path);
    const qint64 offset = writer.create(doc, 0);
    ASSERT_GE(offset, 0);
    auto* file = qobject_cast<QFileDevice*>(writer.device());
    ASSERT_TRUE(file && file->resize(offset + (qint64(1) << 40)));
    ASSERT_TRUE(writer.commit());

    RecordingEventBus bus;
    const VolumeReadResult r = readVolume({VolumeFormat::Bloc, path, {}});
    EXPECT_TRUE(r.image.isEmpty());
    EXPECT_EQ(r.error, path + QStringLiteral(": not enough memory for the volume"));
}
