#pragma once
#include <ostream>
#include <string>
#include <vector>

namespace kfaults {

// Exit codes of the tool.
enum ExitCode {
    kExitOk = 0,
    kExitFailure = 1,     // bad input, an unreadable or unwritable file
    kExitUsage = 2,       // a command line that does not parse
    kExitCancelled = 130, // Ctrl-C, as shells report a SIGINT
};

// Runs the tool on `args` (args[0] is the program name) as `kfaults` does: results on
// `out`, help on `out`, errors as one line "kfaults: <problem>" on `err`. Installs the
// tool's progress service (Ctrl-C cancels) and event bus for the duration of the run.
// Needs a QGuiApplication for the pictures.
int runKfaults(const std::vector<std::string>& args, std::ostream& out, std::ostream& err);

} // namespace kfaults
