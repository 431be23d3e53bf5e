#include <gtest/gtest.h>

#include <algorithm>

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <core/multiarray.h>
#include <exchange/stickformat.h>
#include <exchange/stickset.h>

#include <commandline.h>
#include <znfaultpatchmanager.h>

#include "kfaultstesthelpers.h"

// Fault names through the command-line tool: names a fault set cannot store are refused
// on every path, and faults that a fault set would store under one name are renamed
// apart, never joined.
namespace {
// The tool's answer with its streams as text.
struct Outcome {
    int code = -1;
    QString out;
    QString err;
};

Outcome run(std::vector<std::string> args)
{
    const kfaultstest::Outcome r = kfaultstest::runTool(std::move(args));
    return {r.code, QString::fromStdString(r.out), QString::fromStdString(r.err)};
}

// One fault per name, fault f holding two sticks of two points a few metres apart.
fault::exchange::StickSet sticksNamed(const QStringList& names)
{
    fault::exchange::StickSet set;
    set.domain = fault::exchange::VerticalDomain::Depth;
    for (int f = 0; f < names.size(); ++f) {
        fault::exchange::FaultSticks fault{names[f], {}};
        for (int s = 0; s < 2; ++s) {
            fault::exchange::Stick stick;
            for (int p = 0; p < 2; ++p)
                stick.push_back({core::vec3(1000.0 + 100 * f + 10 * s, 1500.0 + 100 * p, 2000.0 + 7 * f), 
                                 core::kNoValue, core::kNoValue});
            fault.sticks.push_back(stick);
        }
        set.faults.push_back(fault);
    }
    return set;
}

// The "fault ..." lines of `kfaults info`.
QStringList faultLines(const std::string& faultSet)
{
    return run({"info", faultSet}).out.split('\n').filter(QRegularExpression("^fault "));
}

class KfaultsNames : public ::testing::TestWithParam<const char*> {
protected:
    std::string path(const char* name) const { return m_dir.filePath(name).toStdString(); }
    std::string writeStickFile(const QStringList& names)
    {
        fault::exchange::StickFormat format;
        EXPECT_TRUE(fault::exchange::stickFormatFromName(GetParam(), format));
        const std::string file = path("sticks.txt");
        EXPECT_TRUE(fault::exchange::writeSticks(QString::fromStdString(file), format, sticksNamed(names)));
        return file;
    }
    QTemporaryDir m_dir;
};
} // namespace

TEST_P(KfaultsNames, FaultsStoredUnderOneNameAreRenamedApartAndSaySo)
{
    const std::string sticks = writeStickFile({"F.1", "F.2", "North/South", "South"});
    const Outcome im = run({"sticks", "import", sticks, path("set.faultset"), "--format", GetParam()});
    ASSERT_EQ(im.code, 0) << im.err.toStdString();
    const QStringList warnings = im.err.split('\n', Qt::SkipEmptyParts);
    ASSERT_EQ(warnings.size(), 2) << im.err.toStdString();
    EXPECT_TRUE(warnings[0].startsWith("kfaults: fault \"F.2\" is saved as \"F (2)\"")) << warnings[0].toStdString();
    EXPECT_TRUE(warnings[1].startsWith("kfaults: fault \"South\" is saved as \"South (2)\"")) << warnings[1].toStdString();
    const QStringList expected{"fault 1 \"F\": 2 sticks, 4 points", "fault 2 \"F (2)\": 2 sticks, 4 points",
                               "fault 3 \"South\": 2 sticks, 4 points",
                               "fault 4 \"South (2)\": 2 sticks, 4 points"};
    EXPECT_EQ(faultLines(path("set.faultset")), expected);

    // Export and import again: four faults still, nothing left to rename.
    const Outcome ex = run({"sticks", "export", path("set.faultset"), path("back.txt"), "--format", GetParam()});
    ASSERT_EQ(ex.code, 0) << ex.err.toStdString();
    const Outcome again = run({"sticks", "import", path("back.txt"), path("back.faultset"), "--format", GetParam()});
    ASSERT_EQ(again.code, 0) << again.err.toStdString();
    EXPECT_TRUE(ex.err.isEmpty() && again.err.isEmpty()) << (ex.err + again.err).toStdString();
    EXPECT_EQ(faultLines(path("back.faultset")), expected);
}

TEST_P(KfaultsNames, ANameWithAControlCharacterAnywhereIsRefusedAndNothingIsWritten)
{
    for (const QString& name : {QString("A\x1f\\B"), QString("A\x1f/B"), QString("A\x1f" "B"),
                                QString("\x1b]0;title\x07\x1b[31m"), QString("csi\u009b" "2J")}) {
        const std::string sticks = writeStickFile({"Good", name});
        const Outcome im = run({"sticks", "import", sticks, path("set.faultset"), "--format", GetParam()});
        EXPECT_EQ(im.code, kfaults::kExitFailure) << name.toStdString();
        EXPECT_TRUE(im.out.isEmpty());
        EXPECT_EQ(im.err.split('\n', Qt::SkipEmptyParts).size(), 1) << im.err.toStdString();
        EXPECT_TRUE(im.err.contains("control characters")) << im.err.toStdString();
        // The name is shown with its control characters escaped, never sent as they are.
        const QString line = im.err.trimmed();
        EXPECT_TRUE(std::none_of(line.begin(), line.end(), [](QChar c) { return c.category() == QChar::Other_Control; }))
            << im.err.toStdString();
        EXPECT_TRUE(line.contains(QRegularExpression("\\\\x(1f|1b|9b)"))) << im.err.toStdString();
        EXPECT_FALSE(QFile::exists(QString::fromStdString(path("set.faultset"))));
    }
}

TEST(KfaultsNamesOfUnnamedFaults, ManyFaultsOfOneNameAreNumberedApartInOneLine)
{
    // Three faults of the default name: export numbers the second and third.
    core::MultiArray<core::vec3> rows(3);
    for (int f = 0; f < 3; ++f)
        for (int p = 0; p < 2; ++p) rows.addElement(f, core::vec3(10.0 * f, 5.0 * p, 0.0), false);
    QTemporaryDir dir;
    ASSERT_TRUE(ZNFaultPatchManager(rows).writePickedFault(dir.filePath("set"), false, nullptr, false));
    const std::string sticks = dir.filePath("sticks.txt").toStdString();
    const Outcome ex = run({"sticks", "export", dir.filePath("set").toStdString(), sticks, "--format", "opendtect"});
    ASSERT_EQ(ex.code, 0);
    EXPECT_EQ(ex.err, "kfaults: 2 faults are saved as \"Unnamed (2)\" to \"Unnamed (3)\": a fault set keeps "
                      "their names, like \"Unnamed\", as \"Unnamed\" (names lose their folder and extension)\n");
    ASSERT_EQ(run({"sticks", "import", sticks, dir.filePath("back").toStdString()}).code, 0);
    EXPECT_EQ(faultLines(dir.filePath("back").toStdString()).size(), 3);
}

INSTANTIATE_TEST_SUITE_P(Formats, KfaultsNames, ::testing::Values("charisma", "iesx", "opendtect", "gocad"));
