#include <vector>

#include <CLI/CLI.hpp>
#include <QFileInfo>

#include <core/stickrules.h>
#include <zn3dfaultpatchlight.h>
#include <znbloc.h>
#include <znfaultpatchmanager.h>

#include "commandline.h"
#include "commands.h"
#include "lasterror.h"

namespace kfaults {
namespace {

// Sticks and points of the patches of one fault.
struct FaultCounts {
    long long sticks = 0;
    long long points = 0;
};

// The counts of every fault at its root's index, in one pass over the patches.
std::vector<FaultCounts> countFaults(const ZNFaultPatchManager& set)
{
    std::vector<FaultCounts> counts(static_cast<std::size_t>(set.getNumberOfPatch()));
    for (int patch = 1; patch < set.getNumberOfPatch(); ++patch) {
        const int root = set.getFather(patch);
        if (root < 1 || root >= set.getNumberOfPatch()) continue;
        counts[root].sticks += set.getNumberOfSticks(patch);
        counts[root].points += set.getNumberOfValidPickedPoint(patch);
    }
    return counts;
}

void describeBloc(const QString& path, const ZNBloc& bloc, std::ostream& out)
{
    const core::vec3 origin = bloc.blocSpace().blocToWorld(core::vec3(0, 0, 0));
    out << "file: " << path.toStdString() << '\n'
        << "kind: block file (ZNBloc)\n"
        << "size: " << bloc.nx() << " x " << bloc.ny() << " x " << bloc.nz() << '\n'
        << "axes: x inline, y crossline, z sample (samples stored x fastest, then y, then z)\n"
        << "sample type: " << ZNBloc::sampleTypeName(bloc.sampleType()).toStdString() << '\n'
        << "world origin: " << origin.x << ' ' << origin.y << ' ' << origin.z << '\n';
}

void runInfo(const std::string& file, CommandIo& io)
{
    const QString path = QString::fromStdString(file);
    if (!QFileInfo::exists(path)) return io.fail(QStringLiteral("%1: no such file").arg(path), kExitFailure);
    ZNFaultPatchManager set;
    const bool read = set.readPickedFault(path, false, kTopLevelBar);
    if (stopIfInterrupted(io)) return;
    if (!read) {
        const QString why = LastError::withDetail(QStringLiteral("%1: neither a fault set file nor a block file").arg(path));
        ZNBloc bloc;
        if (bloc.open(path)) return describeBloc(path, bloc, io.out);
        return io.fail(why, kExitFailure);
    }
    std::ostream& out = io.out;
    const georef::UnitObject units = set.GetUnitObject();
    const QString crs = units.getCrs().isEmpty() ? QStringLiteral("none") : units.getCrs().name();
    out << "file: " << path.toStdString() << '\n'
        << "kind: " << (set.isPicked() ? "picked fault set" : "automatic fault set") << " ("
        << set.getZNObjectType().toStdString() << ")\n"
        << "version: " << set.getVersion() << '\n'
        << "patches: " << set.getNumberOfPatch() << '\n'
        << "faults: " << set.getFaultLightList().size() << '\n'
        << "crs: " << printable(crs).toStdString() << '\n'
        << "domain: " << (units.isTime() ? "time" : "depth") << '\n';
    const std::vector<FaultCounts> counts = countFaults(set);
    for (const ZN3DFaultPatchLight* light : set.getFaultLightList()) {
        const int id = light->getFaultId();
        const FaultCounts c = id >= 1 && id < set.getNumberOfPatch() ? counts[id] : FaultCounts();
        out << "fault " << light->getFaultId() << " \"" << printable(light->GetFaultName()).toStdString()
            << "\": " << c.sticks << " sticks, " << c.points << " points\n";
    }
}

} // namespace

void addInfoCommand(CLI::App& tool, CommandIo& io)
{
    auto file = std::make_shared<std::string>();
    CLI::App* c = tool.add_subcommand(
        "info", "Describe a fault set file (kind, version, patches, CRS, domain, and each fault "
                "with its name, sticks and points) or a block file (sizes, sample type).");
    c->add_option("file", *file, "Fault set or block file")->required();
    c->callback([file, &io] { runInfo(*file, io); });
}

} // namespace kfaults
