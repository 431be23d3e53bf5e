#include <gtest/gtest.h>

#include <sstream>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <core/multiarray.h>
#include <znfaultpatchmanager.h>

#include <commandline.h>
#include <interruptibleprogress.h>

// Ctrl-C: every command that reads or writes files stops, leaves its target as it was
// and exits 130.
namespace {
struct Outcome {
    int code = -1;
    std::string out;
    std::string err;
};

Outcome run(std::vector<std::string> args)
{
    args.insert(args.begin(), "kfaults");
    std::ostringstream out, err;
    Outcome r;
    r.code = kfaults::runKfaults(args, out, err);
    r.out = out.str();
    r.err = err.str();
    return r;
}

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
    core::MultiArray<core::vec3> rows(2);
    for (int f = 0; f < 2; ++f)
        for (int s = 0; s < 3; ++s) {
            if (s > 0) rows.addElement(f, core::vec3(-9999.0, -9999.0, -9999.0), false);
            for (int p = 0; p < 3; ++p)
                rows.addElement(f, core::vec3(100.0 * f + 10 * s, 50.0 * p, 20.0 * s), false);
        }
    ASSERT_TRUE(ZNFaultPatchManager(rows).writePickedFault(folder.filePath("set.faultset"), false, nullptr, false));
    ASSERT_EQ(run({"sticks", "export", folder.filePath("set.faultset").toStdString(),
                   folder.filePath("sticks.txt").toStdString(), "--format", "opendtect"}).code, 0);
    const QString target = *GetParam().target ? folder.filePath(GetParam().target) : QString();
    const QByteArray previous("the previous good file\n");
    if (!target.isEmpty()) {
        QFile f(target);
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        f.write(previous);
    }
    const QStringList before = folder.entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden);

    std::vector<std::string> args = GetParam().args;
    for (std::string& a : args)
        if (a.rfind("@", 0) == 0) a = folder.filePath(QString::fromStdString(a.substr(1))).toStdString();
    kfaults::InterruptibleProgress::requestInterrupt();
    const Outcome r = run(args);
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
