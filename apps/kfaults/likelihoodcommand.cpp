#include <memory>

#include <CLI/CLI.hpp>

#include "commandline.h"
#include "commands.h"
#include "likelihoodjob.h"
#include "volumeinput.h"

namespace kfaults {
namespace {

struct LikelihoodArguments : VolumeArguments {
    std::string out = "kfaults-likelihood";
};

void runLikelihoodCommand(const LikelihoodArguments& a, LikelihoodOptions options, CommandIo& io)
{
    QString problem;
    ByteOrderChoice choice = ByteOrderChoice::Given;
    if (!resolveInput(a, options.input, options.inputPath, options.raw, problem, &choice))
        return io.fail(problem, kExitFailure);
    const QString note = byteOrderNote(options.inputPath, options.raw, choice);
    if (!note.isEmpty()) io.warn(note);
    options.outputDir = QString::fromStdString(a.out);
    const LikelihoodResult result = runLikelihood(options);
    if (!result.ok()) return io.fail(result.error, result.cancelled ? kExitCancelled : kExitFailure);
    for (const QString& file : result.files) io.out << file.toStdString() << '\n';
}

} // namespace

void addLikelihoodCommand(CLI::App& tool, CommandIo& io)
{
    auto arguments = std::make_shared<LikelihoodArguments>();
    auto options = std::make_shared<LikelihoodOptions>();
    CLI::App* c = tool.add_subcommand(
        "likelihood",
        "Compute the fault likelihood of a seismic amplitude volume (the built-in synthetic "
        "seismic when no --input is given), with the strike and dip of the fault at each "
        "voxel: block files and raw float32 with text headers, and likelihood.png (an inline "
        "and a time slice of the seismic beside their likelihood). Prints the files written.");
    addVolumeOptions(*c, *arguments, "Seismic amplitude volume: SEG-Y, raw float32 or block file");
    c->add_option("--synthetic-size", options->syntheticSize, "Built-in seismic: voxels along each axis")
        ->check(CLI::Range(16, 1024))->capture_default_str();
    c->add_option("--seed", options->seed, "Built-in seismic: seed of its layers and noise")->capture_default_str();
    c->add_option("-o,--out", arguments->out, "Output folder (created when missing)")->capture_default_str();
    c->add_flag("!--no-pictures", options->pictures, "Do not draw likelihood.png");
    fault::attribute::FaultAttributeSettings& s = options->attribute;
    c->add_option("--strike-step", s.strikeStep, "Degrees between two scanned strikes")->capture_default_str();
    c->add_option("--min-dip", s.minDip, "Shallowest fault dip scanned, degrees")->capture_default_str();
    c->add_option("--max-dip", s.maxDip, "Steepest fault dip scanned, degrees")->capture_default_str();
    c->add_option("--dip-step", s.dipStep, "Degrees between two scanned dips")->capture_default_str();
    c->add_option("--strike-sigma", s.strikeSigma, "Samples of smoothing along a fault's strike")->capture_default_str();
    c->add_option("--dip-half-length", s.dipHalfLength, "Samples of the window down a fault's dip, either side")
        ->capture_default_str();
    c->add_option("--power", s.semblancePower, "p of likelihood = 1 - semblance^p, the semblance relative to the layers")->capture_default_str();
    c->add_flag("!--no-thinning", s.thin, "Keep the likelihood on both sides of each fault's ridge");
    c->callback([arguments, options, &io] { runLikelihoodCommand(*arguments, *options, io); });
}

} // namespace kfaults
