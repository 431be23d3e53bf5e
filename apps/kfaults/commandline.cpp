#include "commandline.h"

#include <cerrno>
#include <map>
#include <memory>

#include <CLI/CLI.hpp>
#include <QFileInfo>
#include <QHash>
#include <QSaveFile>

#include <storedfaultnames.h>
#include <zn3dfaultpatch.h>
#include <znfaultpatchmanager.h>
#include <znfilename.h>
#include <znwritefailure.h>

#include "commands.h"
#include "interruptibleprogress.h"
#include "lasterror.h"

namespace kfaults {
void CommandIo::fail(const QString& problem, int code)
{
    warn(problem);
    exitCode = code;
}

QString printable(const QString& text)
{
    QString out;
    out.reserve(text.size());
    for (const QChar c : text) {
        if (c.category() == QChar::Other_Control)
            out += QStringLiteral("\\x%1").arg(c.unicode(), 2, 16, QLatin1Char('0'));
        else
            out += c;
    }
    return out;
}

void CommandIo::warn(const QString& note) { err << "kfaults: " << printable(note).toStdString() << '\n'; }

void keepFaultNamesApart(ZNFaultPatchManager& set, CommandIo& io)
{
    // One line per name that several faults would share (a set of unnamed faults would
    // otherwise give a line per fault).
    QStringList order;                                       // first names, first met first
    QHash<QString, std::vector<fault::RenamedFault>> groups;  // by the first name
    for (const fault::RenamedFault& r : fault::makeStoredFaultNamesUnique(set)) {
        if (!groups.contains(r.firstName)) order << r.firstName;
        groups[r.firstName].push_back(r);
    }
    for (const QString& firstName : order) {
        const std::vector<fault::RenamedFault>& group = groups[firstName];
        const QString kept = ZNFileName::completeBaseName(firstName);
        if (group.size() == 1)
            io.warn(QStringLiteral("fault \"%1\" is saved as \"%2\": a fault set keeps \"%3\" as \"%4\" "
                                   "(names lose their folder and extension)")
                        .arg(group[0].from, group[0].storedAs, firstName, kept));
        else
            io.warn(QStringLiteral("%1 faults are saved as \"%2\" to \"%3\": a fault set keeps their names, "
                                   "like \"%4\", as \"%5\" (names lose their folder and extension)")
                        .arg(group.size()).arg(group.front().storedAs, group.back().storedAs, firstName, kept));
    }
}

bool stopIfInterrupted(CommandIo& io)
{
    if (!InterruptibleProgress::interrupted()) return false;
    io.fail(QStringLiteral("cancelled"), kExitCancelled);
    return true;
}

bool readFaultSetOrFail(ZNFaultPatchManager& set, const QString& path, CommandIo& io)
{
    if (!QFileInfo::exists(path)) {
        io.fail(QStringLiteral("%1: no such file").arg(path), kExitFailure);
        return false;
    }
    if (set.readPickedFault(path, false, kTopLevelBar) && !stopIfInterrupted(io)) return true;
    if (io.exitCode == kExitCancelled || stopIfInterrupted(io)) return false;
    io.fail(LastError::withDetail(QStringLiteral("%1: not a readable fault set file").arg(path)), kExitFailure);
    return false;
}

QString cannotBeWritten(const QString& path, int systemError)
{
    const QString what = QStringLiteral("%1: cannot be written").arg(path);
    return systemError != 0 ? QStringLiteral("%1 (%2)").arg(what, ZNWriteFailure::reason(systemError, QString()))
                            : LastError::withDetail(what);
}

QString saveTextFile(const QString& path, const QByteArray& bytes)
{
    errno = 0;  // a failure names the system call that failed after this point
    QSaveFile file(path);
    if (file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.commit()) return QString();
    return QStringLiteral("%1: cannot be written (%2)").arg(path, ZNWriteFailure::reason(file, errno));
}

bool writeFaultSetOrFail(ZNFaultPatchManager& set, const QString& path, CommandIo& io)
{
    errno = 0;  // a failure names the system call that failed after this point
    if (set.writePickedFault(path, false, nullptr, true)) return true;
    const int systemError = errno;
    if (stopIfInterrupted(io)) return false;
    io.fail(cannotBeWritten(path, systemError), kExitFailure);
    return false;
}

fault::exchange::VerticalDomain verticalDomainOf(const ZNFaultPatchManager& set)
{
    return set.GetUnitObject().isTime() ? fault::exchange::VerticalDomain::Time
                                        : fault::exchange::VerticalDomain::Depth;
}

CLI::Option* addSurfaceMethodOption(CLI::App& c, int& method)
{
    method = ZN3DFaultPatch::MinimumEnvelop;
    const std::map<std::string, int> methods{{"convex", ZN3DFaultPatch::ConvexEnvelop},
                                             {"minimum", ZN3DFaultPatch::MinimumEnvelop}};
    return c.add_option("--surface-method", method,
                        "How each fault is meshed from its sticks: minimum (\"Minimum Envelop\": "
                        "every stick segment kept, triangles only between neighbouring sticks, "
                        "edges no longer than the distance between two sticks) or convex "
                        "(\"Convex Envelop\": a smoothed grid over the sticks' convex envelope)")
        ->transform(CLI::CheckedTransformer(methods))
        ->option_text("convex|minimum (default: minimum)");
}

int runKfaults(const std::vector<std::string>& args, std::ostream& out, std::ostream& err)
{
    CommandIo io{out, err};
    CLI::App tool("kfaults: extract faults from seismic fault-likelihood volumes, compute fault "
                  "likelihood from seismic amplitude, and read, convert and mesh fault sets.",
                  "kfaults");
    tool.require_subcommand(1);
    addExtractCommand(tool, io);
    addInfoCommand(tool, io);
    addSticksCommand(tool, io);
    addMeshCommand(tool, io);
    addSynthCommand(tool, io);
    addDedupeCommand(tool, io);
    addLikelihoodCommand(tool, io);

    std::vector<const char*> argv;
    for (const std::string& a : args) argv.push_back(a.c_str());
    InterruptibleProgress progress;
    LastError errors;
    try {
        tool.parse(static_cast<int>(argv.size()), argv.data());
    } catch (const CLI::CallForHelp& e) {
        return tool.exit(e, out, err);
    } catch (const CLI::CallForAllHelp& e) {
        return tool.exit(e, out, err);
    } catch (const CLI::ParseError& e) {
        err << "kfaults: " << e.what() << " (see kfaults --help)\n";
        return kExitUsage;
    }
    return io.exitCode;
}

} // namespace kfaults
