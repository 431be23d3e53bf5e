#include <gtest/gtest.h>

#include <csignal>
#include <sstream>

#include <sys/resource.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <core/multiarray.h>
#include <zn3dfaultpatchlight.h>
#include <znfaultpatchmanager.h>

#include <commandline.h>

// A write the system refuses (a full disk; here a file size limit, which fails the same
// writes without filling a disk): every writing command names the user's own path and
// the system's reason, and leaves the previous file as it was.
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

// Limits the size of every file this process writes while it lives; writes past the
// limit fail with EFBIG ("File too large") instead of raising SIGXFSZ.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes)
    {
        m_signal = std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &m_previous);
        rlimit limit = m_previous;
        limit.rlim_cur = bytes;
        m_set = setrlimit(RLIMIT_FSIZE, &limit) == 0;
    }
    ~FileSizeLimit()
    {
        setrlimit(RLIMIT_FSIZE, &m_previous);
        std::signal(SIGXFSZ, m_signal);
    }
    bool isSet() const { return m_set; }

private:
    rlimit m_previous{};
    void (*m_signal)(int) = nullptr;
    bool m_set = false;
};

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
    // 300 faults of three sticks: every output is well beyond the limit below.
    core::MultiArray<core::vec3> rows(300);
    for (int f = 0; f < 300; ++f)
        for (int s = 0; s < 3; ++s) {
            if (s > 0) rows.addElement(f, core::vec3(-9999.0, -9999.0, -9999.0), false);
            for (int p = 0; p < 3; ++p)
                rows.addElement(f, core::vec3(1000.0 * f + 10 * s, 50.0 * p, 20.0 * s), false);
        }
    ZNFaultPatchManager set(rows);
    for (int f = 1; f <= 300; ++f) set.findFaultLight(f)->SetFaultName(QStringLiteral("F%1").arg(f));
    ASSERT_TRUE(set.writePickedFault(folder.filePath("set.faultset"), false, nullptr, false));
    ASSERT_EQ(run({"sticks", "export", folder.filePath("set.faultset").toStdString(),
                   folder.filePath("sticks.txt").toStdString(), "--format", "opendtect"}).code, 0);
    const QString target = folder.filePath(GetParam().target);
    const QByteArray previous("the previous good file\n");
    {
        QFile f(target);
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        f.write(previous);
    }
    std::vector<std::string> args = GetParam().args;
    for (std::string& a : args)
        if (a.rfind("@", 0) == 0) a = folder.filePath(QString::fromStdString(a.substr(1))).toStdString();

    Outcome r;
    {
        FileSizeLimit limit(16 * 1024);
        ASSERT_TRUE(limit.isSet());
        r = run(args);
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
