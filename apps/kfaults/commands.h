#pragma once
#include <ostream>

#include <QString>

#include <exchange/verticaldomain.h>

class ZNFaultPatchManager;
namespace CLI {
class App;
class Option;
}

// The commands of kfaults, each added to the tool's command line by its own function.
namespace kfaults {

// `text` with every control character (below 32, 127, and 128 to 159) written as
// "\xHH": names and messages read from files reach the terminal as text, never as
// commands (a crafted name could set the terminal's title and colours).
QString printable(const QString& text);

// Where a command writes and what it answers.
struct CommandIo {
    std::ostream& out;   // results only
    std::ostream& err;   // one-line errors
    int exitCode = 0;

    // Prints "kfaults: <problem>" on err and keeps `code` as the exit code.
    void fail(const QString& problem, int code);
    // Prints "kfaults: <note>" on err; the exit code stays.
    void warn(const QString& note);
};

// The progress parent that gives a library operation its own top-level bar, which
// Ctrl-C cancels.
constexpr int kTopLevelBar = -1;

// True once Ctrl-C was pressed; then prints "cancelled" and keeps exit code 130. A
// command asks between its steps and before it writes, so that a cancelled command
// leaves its target as it was.
bool stopIfInterrupted(CommandIo& io);

// Reads the fault set file at `path` into `set` (3D form, with the "Load Data" bar that
// Ctrl-C cancels). On failure prints the one-line error, keeps exit code 1 (130 when
// cancelled) and returns false.
bool readFaultSetOrFail(ZNFaultPatchManager& set, const QString& path, CommandIo& io);

// Renames the faults of `set` whose names a fault set file would store alike, so that
// no save or stick file joins two of them (fault::makeStoredFaultNamesUnique), and says
// so on err, one line per renamed fault.
void keepFaultNamesApart(ZNFaultPatchManager& set, CommandIo& io);

// "<path>: cannot be written (<reason>)": the system's reason for `systemError` (the
// errno of the call that failed, 0 for none), else the library's last error; without
// a reason when neither says one.
QString cannotBeWritten(const QString& path, int systemError);

// Writes `bytes` as the file at `path` through a temporary renamed over it, synced once.
// Empty on success, else "<path>: cannot be written (<reason>)".
QString saveTextFile(const QString& path, const QByteArray& bytes);

// Saves `set` at `path` (3D form, with the save's bar that Ctrl-C cancels). On failure
// prints "<path>: cannot be written (<reason>)", the reason being the system's when a
// system call failed ("No space left on device"), else the library's last error, keeps
// exit code 1 (130 when cancelled) and returns false; the previous file stays as it was.
bool writeFaultSetOrFail(ZNFaultPatchManager& set, const QString& path, CommandIo& io);

// What the Z of the fault set's points measures, for the exchange writers: Time when its
// units are in time, Depth otherwise.
fault::exchange::VerticalDomain verticalDomainOf(const ZNFaultPatchManager& set);

// Adds "--surface-method convex|minimum" to command `c`, stored in `method` as the 3D
// fault patch's gridding method (0 "Convex Envelop", 1 "Minimum Envelop"); the default
// is "minimum", which keeps every stick segment and meshes only between neighbouring
// sticks.
CLI::Option* addSurfaceMethodOption(CLI::App& c, int& method);

void addExtractCommand(CLI::App& tool, CommandIo& io);
void addInfoCommand(CLI::App& tool, CommandIo& io);
void addSticksCommand(CLI::App& tool, CommandIo& io);
void addMeshCommand(CLI::App& tool, CommandIo& io);
void addSynthCommand(CLI::App& tool, CommandIo& io);
void addDedupeCommand(CLI::App& tool, CommandIo& io);
void addLikelihoodCommand(CLI::App& tool, CommandIo& io);

} // namespace kfaults
