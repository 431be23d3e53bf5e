#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <commandline.h>
#include <interruptibleprogress.h>

#include "kfaultstesthelpers.h"

// Ctrl-C: every command that reads or writes files stops, leaves its target as it was
// and exits 130.
namespace {
QByteArray bytesOf(const QString& path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

struct CancelCase {
    const char* name;
    std::vector<std::string> args;  // "@x" is file x of the test folder
    const char* target;             // the file the command would write; empty for none
};

void PrintTo(const CancelCase& c, std::ostream* os) { *os << c.name; }

class KfaultsCtrlC : public ::testing::TestWithParam<CancelCase> {};
} // namespace

TEST_P(KfaultsCtrlC, StopsLeavesItsTargetAsItWasAndExits130)
{
    QTemporaryDir dir;
    const QDir folder(dir.path());
    ASSERT_TRUE(kfaultstest::writeCommandInputs(folder.path(), 2));
    const QString target = *GetParam().target ? folder.filePath(GetParam().target) : QString();
    const QByteArray previous("the previous good file\n");
    if (!target.isEmpty()) {
        QFile f(target);
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        f.write(previous);
    }
    const QStringList before = folder.entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden);

    kfaults::InterruptibleProgress::requestInterrupt();
    const kfaultstest::Outcome r = kfaultstest::runTool(GetParam().args, folder.path());
    EXPECT_EQ(r.code, kfaults::kExitCancelled) << r.err;
    EXPECT_TRUE(r.out.empty()) << r.out;
    EXPECT_EQ(r.err, "kfaults: cancelled\n");
    if (!target.isEmpty()) EXPECT_EQ(bytesOf(target), previous);
    EXPECT_EQ(folder.entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden), before);
    EXPECT_FALSE(kfaults::InterruptibleProgress::interrupted());
}

INSTANTIATE_TEST_SUITE_P(
    Commands, KfaultsCtrlC,
    ::testing::Values(
        CancelCase{"Mesh", {"mesh", "@set.faultset", "@out.ts"}, "out.ts"},
        CancelCase{"SticksImport", {"sticks", "import", "@sticks.txt", "@out.faultset"}, "out.faultset"},
        CancelCase{"SticksExport", {"sticks", "export", "@set.faultset", "@out.txt", "--format", "charisma"},
                   "out.txt"},
        CancelCase{"DedupeRemove", {"dedupe", "@set.faultset", "--remove", "@out.faultset"}, "out.faultset"},
        CancelCase{"Info", {"info", "@set.faultset"}, ""},
        CancelCase{"Extract", {"extract", "--synthetic-size", "32", "--no-pictures", "-o", "@out"}, ""},
        CancelCase{"Synth", {"synth", "--size", "16", "-o", "@out"}, ""}),
    [](const auto& info) { return std::string(info.param.name); });
