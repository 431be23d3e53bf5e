#include <memory>

#include <CLI/CLI.hpp>

#include "commandline.h"
#include "commands.h"
#include "extractjob.h"
#include "volumeinput.h"

namespace kfaults {
namespace {

// What the command line gives besides the settings, before it is checked.
struct ExtractArguments : VolumeArguments {
    std::string out = "kfaults-out";
    std::string faultVolume = "bloc";
    std::string memoryBudget;   // empty: in memory when the volume fits
};

void runExtractCommand(const ExtractArguments& a, ExtractOptions options, CommandIo& io)
{
    QString problem;
    if (!resolveInput(a, options.input, options.inputPath, options.raw, problem, &options.byteOrderChoice))
        return io.fail(problem, kExitFailure);
    const QString note = byteOrderNote(options.inputPath, options.raw, options.byteOrderChoice);
    if (!note.isEmpty()) io.warn(note);
    if (!a.memoryBudget.empty() &&
        !parseMemorySize(QString::fromStdString(a.memoryBudget), options.memoryBudget))
        return io.fail(QStringLiteral("--memory-budget takes a size such as 1G, 512M or 800000000, not \"%1\"")
                           .arg(QString::fromStdString(a.memoryBudget)),
                       kExitFailure);
    options.outputDir = QString::fromStdString(a.out);
    options.faultVolume = a.faultVolume == "raw"    ? FaultVolumeForm::Raw
                          : a.faultVolume == "both" ? FaultVolumeForm::Both
                                                    : FaultVolumeForm::Bloc;
    const ExtractResult result = runExtract(options);
    if (!result.memoryNote.isEmpty()) io.warn(result.memoryNote);
    if (!result.ok())
        return io.fail(result.error, result.cancelled ? kExitCancelled : kExitFailure);
    for (const QString& file : result.files) io.out << file.toStdString() << '\n';
    if (!result.note.isEmpty()) io.warn(result.note);   // a volume without faults is a result
}

} // namespace

void addExtractCommand(CLI::App& tool, CommandIo& io)
{
    auto arguments = std::make_shared<ExtractArguments>();
    auto options = std::make_shared<ExtractOptions>();
    CLI::App* c = tool.add_subcommand(
        "extract",
        "Extract faults from a fault-likelihood volume (the built-in synthetic volume when no "
        "--input is given) and write the fault set, surfaces, fault volume, pictures and "
        "report.json into the output folder. Each fault's surface is meshed from its sticks "
        "by the 3D fault patch (--surface-method). Prints the files written.");
    addVolumeOptions(*c, *arguments, "Likelihood volume: SEG-Y, raw float32 or block file");
    c->add_flag("--from-seismic", options->fromSeismic,
                "The input is seismic amplitude (without --input: the built-in synthetic seismic): "
                "its fault likelihood is computed first, as kfaults likelihood does");
    c->add_option("--synthetic-size", options->syntheticSize, "Built-in volume: voxels along each axis")
        ->check(CLI::Range(16, 1024))->capture_default_str();
    c->add_option("--seed", options->seed, "Built-in volume: seed of the noise")->capture_default_str();
    c->add_option("-o,--out", arguments->out, "Output folder (created when missing)")->capture_default_str();
    c->add_flag("!--no-pictures", options->pictures, "Do not draw the PNG pictures");
    c->add_option("--fault-volume", arguments->faultVolume,
                  "Form of the fault volume: bloc (fault_volume.bloc), raw (fault_volume.int32.raw, "
                  "little-endian int32, inline fastest, with its text header fault_volume.int32.txt) "
                  "or both")
        ->check(CLI::IsMember({"bloc", "raw", "both"}))->capture_default_str();
    c->add_option("--memory-budget", arguments->memoryBudget,
                  "Largest memory the run may hold, e.g. 1G or 512M: the likelihood volume is then read "
                  "and segmented slab by slab and never held whole, nor its labels (a temporary label "
                  "file goes into the output folder), with the same faults as in memory. Without it a "
                  "volume that would not fit in the memory available is extracted slab by slab within "
                  "half of that memory, as stderr says");
    c->add_option("--unfolded", options->unfoldedPictures, "Largest faults drawn unfolded")
        ->check(CLI::NonNegativeNumber)->capture_default_str();

    fault::AutomaticExtractionSettings& e = options->extraction;
    c->add_option("--likelihood-threshold", e.likelihoodThreshold,
                  "Seeds and growth need a likelihood above this")->capture_default_str();
    c->add_option("--max-patch-size", e.maxPatchSize, "Voxels a patch grows to")
        ->check(CLI::PositiveNumber)->capture_default_str();
    c->add_option("--max-plane-deviation", e.maxPlaneDeviation,
                  "Voxels a kept patch may spread across its plane")->check(CLI::PositiveNumber)->capture_default_str();
    c->add_option("--growth-iterations", e.growthIterations, "Rings a patch grows by")
        ->check(CLI::PositiveNumber)->capture_default_str();
    c->add_option("--max-merge-cost", e.maxMergeCost,
                  "Voxels two merged faults may spread across their common plane")
        ->check(CLI::PositiveNumber)->capture_default_str();
    fault::SticksFromVoxelsSettings& s = options->sticks;
    c->add_option("--section-spacing", s.sectionSpacing, "Voxels between two sticks along strike")
        ->check(CLI::PositiveNumber)->capture_default_str();
    c->add_option("--point-spacing", s.pointSpacing, "Voxels between two points of a stick along dip")
        ->check(CLI::PositiveNumber)->capture_default_str();
    c->add_option("--min-fault-voxels", s.minVoxelsPerFault, "Smaller faults are left out of the sticks")
        ->check(CLI::PositiveNumber)->capture_default_str();
    addSurfaceMethodOption(*c, options->surfaceMethod)
        ->description("How each fault is meshed from its sticks for faults.ts, the pictures and "
                      "the areas of report.json: minimum (\"Minimum Envelop\": every stick "
                      "segment kept, triangles only between neighbouring sticks, edges no "
                      "longer than the distance between two sticks) or convex (\"Convex "
                      "Envelop\": a smoothed grid over the sticks' convex envelope, steps of "
                      "the distance between two sticks, at least 50 world units, and between "
                      "two stick points)");
    c->callback([arguments, options, &io] { runExtractCommand(*arguments, *options, io); });
}

} // namespace kfaults
