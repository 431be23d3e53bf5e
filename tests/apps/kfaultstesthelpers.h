#pragma once
// Running the command-line tool inside the tests, and limits a test puts on the process.
#include <string>
#include <vector>

#include <sys/resource.h>

#include <QString>

namespace kfaultstest {

// What one run of the tool answered.
struct Outcome {
    int code = -1;
    std::string out;
    std::string err;
};

// Runs `kfaults` with `args` (the program name is added) as the executable would. An
// argument "@name" stands for the file `name` of `folder` when a folder is given.
Outcome runTool(std::vector<std::string> args, const QString& folder = QString());

// Writes into `folder` the inputs of the commands that read files: "set.faultset" with
// `faults` faults "F1", "F2"... of three sticks of three points each, 1000 m apart, and
// the same faults as the OpendTect stick file "sticks.txt". False when a write fails.
bool writeCommandInputs(const QString& folder, int faults);

// Limits the size of every file this process writes while it lives, so that writes
// fail as on a full disk (with EFBIG, "File too large", instead of raising SIGXFSZ).
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes);
    ~FileSizeLimit();
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;
    bool isSet() const { return m_set; }

private:
    rlimit m_previous{};
    void (*m_signal)(int) = nullptr;
    bool m_set = false;
};

} // namespace kfaultstest
