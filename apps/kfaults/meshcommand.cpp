#include <memory>

#include <CLI/CLI.hpp>
#include <QFileInfo>

#include <exchange/gocadtsurf.h>
#include <zn3dfaultpatchlight.h>
#include <znfaultpatchmanager.h>

#include "commandline.h"
#include "commands.h"
#include "faultsetsticks.h"
#include "lasterror.h"
#include "sticksmesh.h"

namespace kfaults {
namespace {

struct MeshArguments {
    std::string input;
    std::string output;
};

void runMesh(const MeshArguments& a, CommandIo& io)
{
    const QString in = QString::fromStdString(a.input);
    const QString out = QString::fromStdString(a.output);
    ZNFaultPatchManager set;
    if (!readFaultSetOrFail(set, in, io)) return;
    std::vector<fault::exchange::TriangleMesh> meshes;
    for (const ZN3DFaultPatchLight* light : set.getFaultLightList())
        meshes.push_back(meshFromSticks(light->GetFaultName(), sticksOfFault(set, light->getFaultId())));
    const auto domain = set.GetUnitObject().isTime() ? fault::exchange::VerticalDomain::Time
                                                     : fault::exchange::VerticalDomain::Depth;
    const fault::exchange::ExchangeStatus status = fault::exchange::writeGocadTSurf(out, meshes, domain);
    if (!status) return io.fail(status.message, kExitFailure);
    io.out << out.toStdString() << '\n';
}

} // namespace

void addMeshCommand(CLI::App& tool, CommandIo& io)
{
    auto args = std::make_shared<MeshArguments>();
    CLI::App* c = tool.add_subcommand(
        "mesh", "Mesh every fault of a fault set file from its sticks (a strip of triangles "
                "between consecutive sticks) into a GOCAD TSurf file, one object per fault, "
                "names kept. Prints the file written.");
    c->add_option("input", args->input, "Fault set file")->required();
    c->add_option("output", args->output, "TSurf file to write")->required();
    c->callback([args, &io] { runMesh(*args, io); });
}

} // namespace kfaults
