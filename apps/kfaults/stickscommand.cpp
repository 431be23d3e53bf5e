#include <memory>

#include <CLI/CLI.hpp>
#include <QFileInfo>

#include <exchange/faultsetsticks.h>
#include <exchange/stickformat.h>
#include <exchange/stickset.h>
#include <zn3dfaultpatchlight.h>
#include <znfaultpatchmanager.h>

#include "commandline.h"
#include "commands.h"

namespace kfaults {
namespace {

using fault::exchange::StickFormat;

struct SticksArguments {
    std::string input;
    std::string output;
    std::string format = "auto";
};

// The stick format named on the command line, or guessed from `path` for "auto".
bool formatOf(const std::string& name, const QString& path, StickFormat& format, QString& problem)
{
    const QString text = QString::fromStdString(name);
    if (text == "auto") {
        if (fault::exchange::guessStickFormat(path, format)) return true;
        problem = QStringLiteral("%1: not a stick file of a known format (give --format)").arg(path);
        return false;
    }
    if (fault::exchange::stickFormatFromName(text, format)) return true;
    problem = QStringLiteral("unknown stick format \"%1\" (one of %2)")
                  .arg(text, fault::exchange::stickFormatNames().join(", "));
    return false;
}

// Stick file -> fault set file: one fault per named fault of the file, names kept.
void runImport(const SticksArguments& a, CommandIo& io)
{
    const QString in = QString::fromStdString(a.input);
    const QString out = QString::fromStdString(a.output);
    if (!QFileInfo::exists(in)) return io.fail(QStringLiteral("%1: no such file").arg(in), kExitFailure);
    StickFormat format;
    QString problem;
    if (!formatOf(a.format, in, format, problem)) return io.fail(problem, kExitFailure);
    fault::exchange::StickSet sticks;
    const fault::exchange::ExchangeStatus status = fault::exchange::readSticks(in, format, sticks);
    if (stopIfInterrupted(io)) return;
    if (!status) return io.fail(QStringLiteral("%1: %2").arg(in, status.detail), kExitFailure);
    const std::unique_ptr<ZNFaultPatchManager> set(fault::exchange::faultSetFromSticks(sticks));
    if (!set) return io.fail(QStringLiteral("out of memory"), kExitFailure);
    keepFaultNamesApart(*set, io);
    if (stopIfInterrupted(io)) return;
    // The save's bar lets Ctrl-C stop it before the target is replaced.
    if (!writeFaultSetOrFail(*set, out, io)) return;
    io.out << out.toStdString() << '\n';
}

// Fault set file -> stick file: one fault per descriptor, its patches' sticks in order.
void runExport(const SticksArguments& a, CommandIo& io)
{
    const QString in = QString::fromStdString(a.input);
    const QString out = QString::fromStdString(a.output);
    StickFormat format;
    if (a.format == "auto" || !fault::exchange::stickFormatFromName(QString::fromStdString(a.format), format))
        return io.fail(QStringLiteral("export needs --format, one of %1")
                           .arg(fault::exchange::stickFormatNames().join(", ")),
                       kExitFailure);
    ZNFaultPatchManager set;
    if (!readFaultSetOrFail(set, in, io)) return;
    keepFaultNamesApart(set, io);  // a stick file joins faults of one name
    const fault::exchange::StickSet sticks = fault::exchange::sticksOfFaultSet(set);
    if (stopIfInterrupted(io)) return;
    const fault::exchange::ExchangeStatus status = fault::exchange::writeSticks(out, format, sticks);
    if (!status) return io.fail(QStringLiteral("%1: %2").arg(out, status.detail), kExitFailure);
    io.out << out.toStdString() << '\n';
}

} // namespace

void addSticksCommand(CLI::App& tool, CommandIo& io)
{
    CLI::App* sticks = tool.add_subcommand(
        "sticks", "Convert between fault set files and the ASCII stick formats interpreters "
                  "exchange: " + fault::exchange::stickFormatNames().join(", ").toStdString() + ".");
    sticks->require_subcommand(1);
    auto importArgs = std::make_shared<SticksArguments>();
    CLI::App* import = sticks->add_subcommand("import", "Stick file to fault set file. Prints the file written.");
    import->add_option("input", importArgs->input, "Stick file")->required();
    import->add_option("output", importArgs->output, "Fault set file to write")->required();
    import->add_option("--format", importArgs->format, "Stick format; auto guesses it from the file")
        ->capture_default_str();
    import->callback([importArgs, &io] { runImport(*importArgs, io); });

    auto exportArgs = std::make_shared<SticksArguments>();
    CLI::App* exporting = sticks->add_subcommand("export", "Fault set file to stick file. Prints the file written.");
    exporting->add_option("input", exportArgs->input, "Fault set file")->required();
    exporting->add_option("output", exportArgs->output, "Stick file to write")->required();
    exporting->add_option("--format", exportArgs->format, "Stick format")->required();
    exporting->callback([exportArgs, &io] { runExport(*exportArgs, io); });
}

} // namespace kfaults
