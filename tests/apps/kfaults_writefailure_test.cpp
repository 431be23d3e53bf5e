#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <commandline.h>

#include "kfaultstesthelpers.h"

// A write the system refuses (a full disk; here a file size limit, which fails the same
// writes without filling a disk): every writing command names the user's own path and
// the system's reason, and leaves the previous file as it was.
namespace {
struct WriteCase {
    const char* name;
    std::vector<std::string> args;  // "@x" is file x of the test folder
    const char* target;
};
void PrintTo(const WriteCase& c, std::ostream* os) { *os << c.name; }

class KfaultsWriteFailure : public ::testing::TestWithParam<WriteCase> {};
} // namespace

TEST_P(KfaultsWriteFailure, NamesTheUsersPathAndTheSystemsReasonAndKeepsThePreviousFile)
{
    QTemporaryDir dir;
    const QDir folder(dir.path());
    // 300 faults: every output is well beyond the limit below.
    ASSERT_TRUE(kfaultstest::writeCommandInputs(folder.path(), 300));
    const QString target = folder.filePath(GetParam().target);
    const QByteArray previous("the previous good file\n");
    {
        QFile f(target);
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        f.write(previous);
    }
    kfaultstest::Outcome r;
    {
        kfaultstest::FileSizeLimit limit(16 * 1024);
        ASSERT_TRUE(limit.isSet());
        r = kfaultstest::runTool(GetParam().args, folder.path());
    }
    EXPECT_EQ(r.code, kfaults::kExitFailure);
    EXPECT_EQ(r.out.find(target.toStdString()), std::string::npos) << r.out;  // not listed as written
    EXPECT_EQ(r.err, "kfaults: " + target.toStdString() + ": cannot be written (File too large)\n");
    QFile f(target);
    ASSERT_TRUE(f.open(QIODevice::ReadOnly));
    EXPECT_EQ(f.readAll(), previous);
    EXPECT_EQ(folder.entryList(QDir::Files | QDir::Hidden).size(), 3) << "no temporary file left";
}

INSTANTIATE_TEST_SUITE_P(
    Commands, KfaultsWriteFailure,
    ::testing::Values(WriteCase{"Mesh", {"mesh", "@set.faultset", "@out.ts"}, "out.ts"},
                      WriteCase{"SticksExport", {"sticks", "export", "@set.faultset", "@out.txt", "--format", "charisma"},
                                "out.txt"},
                      WriteCase{"SticksImport", {"sticks", "import", "@sticks.txt", "@out.faultset"}, "out.faultset"},
                      WriteCase{"DedupeRemove", {"dedupe", "@set.faultset", "--remove", "@out.faultset"},
                                "out.faultset"}),
    [](const auto& info) { return std::string(info.param.name); });
