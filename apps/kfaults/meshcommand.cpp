#include <memory>

#include <CLI/CLI.hpp>
#include <QFileInfo>

#include <exchange/gocadtsurf.h>
#include <faultsurfacemeshing.h>
#include <zn3dfaultpatchlight.h>
#include <znfaultpatchmanager.h>

#include "commandline.h"
#include "commands.h"

namespace kfaults {
namespace {

struct MeshArguments {
    std::string input;
    std::string output;
    int method = ZN3DFaultPatchLight::kDefaultMeshingMethod;  // set by the option
};

void runMesh(const MeshArguments& a, CommandIo& io)
{
    const QString in = QString::fromStdString(a.input);
    const QString out = QString::fromStdString(a.output);
    ZNFaultPatchManager set;
    if (!readFaultSetOrFail(set, in, io)) return;
    // The sticks of a file are taken to be cut at the tool's own spacing.
    const fault::SurfaceSettings settings = fault::surfaceSettingsFor(set.getBlocSpace(), {}, a.method);
    std::vector<int> faultIds;
    for (const ZN3DFaultPatchLight* light : set.getFaultLightList()) faultIds.push_back(light->getFaultId());
    std::vector<fault::exchange::TriangleMesh> meshes;
    for (int faultId : faultIds) {
        if (stopIfInterrupted(io)) return;
        meshes.push_back(fault::meshFault(set, faultId, settings).mesh);
    }
    if (stopIfInterrupted(io)) return;
    const fault::exchange::ExchangeStatus status =
        fault::exchange::writeGocadTSurf(out, meshes, verticalDomainOf(set));
    if (!status) return io.fail(QStringLiteral("%1: %2").arg(out, status.detail), kExitFailure);
    io.out << out.toStdString() << '\n';
}

} // namespace

void addMeshCommand(CLI::App& tool, CommandIo& io)
{
    auto args = std::make_shared<MeshArguments>();
    CLI::App* c = tool.add_subcommand(
        "mesh", "Mesh every fault of a fault set file from its sticks by the 3D fault patch's "
                "surface method into a GOCAD TSurf file, one object per fault, names kept "
                "(a fault of fewer than two sticks gives an object without triangles). Grid "
                "steps and edge lengths follow the survey's spacing (8 cells between sticks, "
                "4 down dip). Prints the file written.");
    c->add_option("input", args->input, "Fault set file")->required();
    c->add_option("output", args->output, "TSurf file to write")->required();
    addSurfaceMethodOption(*c, args->method);
    c->callback([args, &io] { runMesh(*args, io); });
}

} // namespace kfaults
