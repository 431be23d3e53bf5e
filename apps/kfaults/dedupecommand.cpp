#include <memory>
#include <set>
#include <vector>

#include <CLI/CLI.hpp>

#include <core/array.h>
#include <zn3dfaultpatchlight.h>
#include <znfaultpatchmanager.h>

#include "commandline.h"
#include "commands.h"
#include "interruptibleprogress.h"

namespace kfaults {
namespace {

struct DedupeArguments {
    std::string input;
    std::string removeInto;
};

// The patches of every fault with a descriptor, the faults in `dropped` left out.
core::Array<int> patchesKept(const ZNFaultPatchManager& set, const std::set<int>& dropped)
{
    // Patches by root, so that each fault's patches are listed without a walk through
    // every patch (in increasing id order, as a walk would give them).
    std::vector<std::vector<int>> byRoot(static_cast<std::size_t>(set.getNumberOfPatch()));
    for (int patch = 1; patch < set.getNumberOfPatch(); ++patch) {
        const int root = set.getFather(patch);
        if (root >= 1 && root < set.getNumberOfPatch()) byRoot[root].push_back(patch);
    }
    core::Array<int> patches;
    for (const ZN3DFaultPatchLight* light : set.getFaultLightList()) {
        const int id = light->getFaultId();
        if (dropped.count(id) || id < 1 || id >= set.getNumberOfPatch()) continue;
        for (int patch : byRoot[id]) patches.add(patch);
    }
    return patches;
}

void runDedupe(const DedupeArguments& a, CommandIo& io)
{
    ZNFaultPatchManager set;
    if (!readFaultSetOrFail(set, QString::fromStdString(a.input), io)) return;
    core::Array<core::Duplet> pairs;
    QList<QPair<QString, QString>> names;
    if (!set.getRemovedSameFaultArray(pairs, -1, &names))
        return io.fail(QStringLiteral("cancelled"), kExitCancelled);
    core::Array<int> faults;
    for (const ZN3DFaultPatchLight* light : set.getFaultLightList()) faults.add(light->getFaultId());
    std::set<int> dropped;
    for (int k = 0; k < pairs.size(); ++k) {
        io.out << "duplicate: " << pairs[k].a << " \"" << printable(names.value(k).first).toStdString() << "\" "
               << pairs[k].b << " \"" << printable(names.value(k).second).toStdString() << "\"\n";
        dropped.insert(pairs[k].b);
    }
    const QString edgeCases = set.getFaultsEdgeCasesAnalysis(faults);
    io.out << "duplicate pairs: " << pairs.size() << '\n'
           << "edge cases: " << (edgeCases.isEmpty() ? std::string("none") : edgeCases.toStdString()) << '\n';
    if (a.removeInto.empty()) return;
    std::unique_ptr<ZNFaultPatchManager> kept(set.extractSubFaultPatchManager(patchesKept(set, dropped)));
    const QString out = QString::fromStdString(a.removeInto);
    if (kept) keepFaultNamesApart(*kept, io);
    if (stopIfInterrupted(io)) return;
    if (!kept) return io.fail(QStringLiteral("out of memory"), kExitFailure);
    if (!writeFaultSetOrFail(*kept, out, io)) return;
    io.out << "written: " << out.toStdString() << " (" << dropped.size() << " faults removed)\n";
}

} // namespace

void addDedupeCommand(CLI::App& tool, CommandIo& io)
{
    auto args = std::make_shared<DedupeArguments>();
    CLI::App* c = tool.add_subcommand(
        "dedupe", "List the duplicate fault pairs of a fault set file (same domain, points, box "
                  "and sticks on the grid) and the faults with degenerate patches; with "
                  "--remove, write the set without the second fault of every pair.");
    c->add_option("input", args->input, "Fault set file")->required();
    c->add_option("--remove", args->removeInto, "Fault set file to write without the duplicates");
    c->callback([args, &io] { runDedupe(*args, io); });
}

} // namespace kfaults
