#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <extractjob.h>

#include "kfaultstesthelpers.h"

using kfaultstest::Outcome;
using kfaultstest::runTool;

namespace {

QJsonObject readReport(const QString& folder)
{
    QFile file(QDir(folder).filePath(QStringLiteral("report.json")));
    return file.open(QIODevice::ReadOnly) ? QJsonDocument::fromJson(file.readAll()).object() : QJsonObject();
}

QByteArray readBytes(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

TEST(KfaultsMemoryBudget, SizesReadWithTheirUnits)
{
    struct Case {
        const char* text;
        double bytes;  // -1: refused
    };
    const Case cases[] = {{"1G", 1073741824.0}, {"512M", 536870912.0}, {"512mib", 536870912.0},
                          {"1.5G", 1610612736.0}, {"64k", 65536.0},       {"800000000", 8e8},
                          {" 2T ", 2199023255552.0}, {"1GB", 1073741824.0}, {"", -1},
                          {"G", -1},              {"-1G", -1},             {"0", -1},
                          {"1X", -1},             {"1 G B", -1}};
    for (const Case& c : cases) {
        double bytes = 7.0;
        EXPECT_EQ(kfaults::parseMemorySize(QLatin1String(c.text), bytes), c.bytes > 0) << c.text;
        EXPECT_DOUBLE_EQ(bytes, c.bytes > 0 ? c.bytes : 7.0) << c.text;
    }
}

TEST(KfaultsMemoryBudget, EveryInputExtractedSlabBySlabGivesTheFaultVolumeOfTheRunInMemory)
{
    QTemporaryDir dir;
    const QString synth = dir.filePath(QStringLiteral("synth"));
    const Outcome s = runTool({"synth", "--size", "96", "-o", synth.toStdString()});
    ASSERT_EQ(s.code, 0) << s.err;
    const std::vector<std::string> raw{"-i", QDir(synth).filePath("likelihood.float32.raw").toStdString(),
                                       "--size", "96", "96", "96", "--byte-order", "big"};
    const std::vector<std::string> bloc{"-i", QDir(synth).filePath("likelihood.bloc").toStdString()};
    const QString memory = dir.filePath(QStringLiteral("memory"));
    std::vector<std::string> inMemory{"extract", "--no-pictures", "-o", memory.toStdString()};
    inMemory.insert(inMemory.end(), bloc.begin(), bloc.end());
    const Outcome m = runTool(inMemory);
    ASSERT_EQ(m.code, 0) << m.err;
    const QJsonObject memoryReport = readReport(memory);
    EXPECT_EQ(memoryReport["memory"].toObject()["mode"].toString(), QStringLiteral("memory"));
    const QByteArray expected = readBytes(QDir(memory).filePath("fault_volume.bloc"));
    ASSERT_FALSE(expected.isEmpty());

    struct Case {
        const char* name;
        std::vector<std::string> input;
        const char* budget;
    };
    // Budgets are those of the whole process, which holds over 150 MB already under the
    // sanitizers once the run in memory is done.
    const Case cases[] = {{"raw, trace order, big-endian", raw, "400M"},
                          {"block file, a roomy budget", bloc, "1G"}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const QString out = dir.filePath(QString::fromLatin1(c.name));
        std::vector<std::string> args{"extract", "--no-pictures", "--memory-budget", c.budget, "-o", out.toStdString()};
        args.insert(args.end(), c.input.begin(), c.input.end());
        const Outcome e = runTool(args);
        ASSERT_EQ(e.code, 0) << e.err;
        const QJsonObject report = readReport(out);
        const QJsonObject used = report["memory"].toObject();
        EXPECT_EQ(used["mode"].toString(), QStringLiteral("slabs"));
        EXPECT_EQ(used["budgetChosen"].toString(), QStringLiteral("given"));
        double budget = 0.0;
        ASSERT_TRUE(kfaults::parseMemorySize(QLatin1String(c.budget), budget));
        EXPECT_DOUBLE_EQ(used["budgetBytes"].toDouble(), budget);
        EXPECT_GE(used["segmentationWindows"].toInt(), 1);
        EXPECT_EQ(report["counts"], memoryReport["counts"]);
        EXPECT_TRUE(readBytes(QDir(out).filePath("fault_volume.bloc")) == expected);
        EXPECT_EQ(QDir(out).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot).size(), 4)
            << "fault set, surfaces, fault volume, report: no label file, no staging folder";
    }
    // A roomy budget holds the volume in one window (several windows: see the library's
    // tests, whose budgets do not depend on what the test process holds).
    EXPECT_EQ(readReport(dir.filePath("block file, a roomy budget"))["memory"].toObject()["segmentationWindows"].toInt(), 1);
}

TEST(KfaultsMemoryBudget, BudgetsThatCannotBeHonouredAreRefused)
{
    QTemporaryDir dir;
    const std::string out = dir.filePath(QStringLiteral("out")).toStdString();
    struct Case {
        std::vector<std::string> args;
        const char* message;
    };
    const Case cases[] = {
        {{"extract", "--memory-budget", "1G", "-o", out}, "works on a likelihood volume read from a file"},
        {{"extract", "--memory-budget", "lots", "-o", out}, "--memory-budget takes a size"},
    };
    for (const Case& c : cases) {
        const Outcome e = runTool(c.args);
        EXPECT_NE(e.code, 0);
        EXPECT_NE(e.err.find(c.message), std::string::npos) << e.err;
    }
    const Outcome s = runTool({"synth", "--size", "32", "-o", dir.filePath(QStringLiteral("s")).toStdString()});
    ASSERT_EQ(s.code, 0) << s.err;
    const Outcome tiny = runTool({"extract", "--memory-budget", "1M", "-i",
                                  dir.filePath(QStringLiteral("s/likelihood.bloc")).toStdString(), "-o", out});
    EXPECT_NE(tiny.code, 0);
    EXPECT_NE(tiny.err.find("is too small"), std::string::npos) << tiny.err;
    EXPECT_FALSE(QDir(QString::fromStdString(out)).exists());
}
