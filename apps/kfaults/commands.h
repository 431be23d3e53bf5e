#pragma once
#include <ostream>

#include <QString>

class ZNFaultPatchManager;
namespace CLI {
class App;
}

// The commands of kfaults, each added to the tool's command line by its own function.
namespace kfaults {

// Where a command writes and what it answers.
struct CommandIo {
    std::ostream& out;   // results only
    std::ostream& err;   // one-line errors
    int exitCode = 0;

    // Prints "kfaults: <problem>" on err and keeps `code` as the exit code.
    void fail(const QString& problem, int code);
};

// Reads the fault set file at `path` into `set` (3D form, no progress bar). On failure
// prints the one-line error, keeps exit code 1 and returns false.
bool readFaultSetOrFail(ZNFaultPatchManager& set, const QString& path, CommandIo& io);

void addExtractCommand(CLI::App& tool, CommandIo& io);
void addInfoCommand(CLI::App& tool, CommandIo& io);
void addSticksCommand(CLI::App& tool, CommandIo& io);
void addMeshCommand(CLI::App& tool, CommandIo& io);
void addSynthCommand(CLI::App& tool, CommandIo& io);
void addDedupeCommand(CLI::App& tool, CommandIo& io);

} // namespace kfaults
