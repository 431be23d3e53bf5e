#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <exchange/stickformat.h>

#include "exchangetesthelpers.h"

using namespace fault::exchange;

TEST(StickFormat, UserNamesMapToFormatsInAnyCase)
{
    const struct {
        const char* name;
        StickFormat format;
    } cases[] = {{"charisma", StickFormat::Charisma}, {"IESX", StickFormat::Iesx},
                 {"Kingdom", StickFormat::Iesx},      {"opendtect", StickFormat::OpendTect},
                 {"odt", StickFormat::OpendTect},     {"GOCAD", StickFormat::GocadPLine},
                 {"pline", StickFormat::GocadPLine}};
    for (const auto& c : cases) {
        StickFormat format = StickFormat::Charisma;
        EXPECT_TRUE(stickFormatFromName(QLatin1String(c.name), format)) << c.name;
        EXPECT_EQ(format, c.format) << c.name;
    }
    StickFormat unchanged = StickFormat::Iesx;
    EXPECT_FALSE(stickFormatFromName(QStringLiteral("tsurf"), unchanged));
    EXPECT_EQ(unchanged, StickFormat::Iesx);
    EXPECT_EQ(stickFormatNames(),
              (QStringList{"charisma", "iesx", "opendtect", "gocad"}));
}

TEST(StickFormat, TheFormatOfEveryCommittedFileIsGuessed)
{
    const struct {
        const char* file;
        StickFormat format;
    } cases[] = {{"charisma_fault_sticks.txt", StickFormat::Charisma},
                 {"charisma_variants.txt", StickFormat::Charisma},
                 {"iesx_fault_sticks.txt", StickFormat::Iesx},
                 {"opendtect_fault_sticks.txt", StickFormat::OpendTect},
                 {"gocad_pline_sticks.pl", StickFormat::GocadPLine}};
    for (const auto& c : cases) {
        StickFormat format = StickFormat::Charisma;
        ASSERT_TRUE(guessStickFormat(exchangetest::dataPath(c.file), format)) << c.file;
        EXPECT_EQ(format, c.format) << c.file;
        StickSet set;
        EXPECT_TRUE(readSticks(exchangetest::dataPath(c.file), format, set)) << c.file;
        EXPECT_FALSE(set.faults.empty()) << c.file;
    }
}

TEST(StickFormat, WhatEachWriterProducesIsGuessedBack)
{
    QTemporaryDir dir;
    for (StickFormat written : {StickFormat::Charisma, StickFormat::Iesx, StickFormat::OpendTect,
                                StickFormat::GocadPLine}) {
        const QString path = dir.filePath(QStringLiteral("sticks"));
        ASSERT_TRUE(writeSticks(path, written, exchangetest::sampleSet(true)));
        StickFormat guessed = StickFormat::Charisma;
        ASSERT_TRUE(guessStickFormat(path, guessed));
        EXPECT_EQ(guessed, written) << stickFormatName(written).toStdString();
    }
}

TEST(StickFormat, UnrecognisableOrMissingFilesAreNotGuessed)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("prose.txt"));
    ASSERT_TRUE(writeFileBytes(path, "# comment\n\nsome words here\n"));
    StickFormat format = StickFormat::Iesx;
    EXPECT_FALSE(guessStickFormat(path, format));
    EXPECT_FALSE(guessStickFormat(dir.filePath(QStringLiteral("missing")), format));
    EXPECT_EQ(format, StickFormat::Iesx);
}
