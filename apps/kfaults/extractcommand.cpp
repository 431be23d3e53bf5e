#include <array>
#include <map>
#include <memory>

#include <CLI/CLI.hpp>
#include <QFileInfo>

#include "commandline.h"
#include "commands.h"
#include "extractjob.h"

namespace kfaults {
namespace {

// What the command line gives besides the settings, before it is checked.
struct ExtractArguments {
    std::string input;
    std::string format = "auto";
    std::vector<int> size;
    std::string byteOrder = "big";
    std::string axisOrder = "zyx";
    std::vector<double> spacing{1.0, 1.0, 1.0};
    std::string out = "kfaults-out";
};

// The input kind the user meant; false with `problem` set for an unknown one.
bool inputKindOf(const ExtractArguments& a, InputKind& kind, QString& problem)
{
    if (a.input.empty()) {
        kind = InputKind::Synthetic;
        return true;
    }
    std::string format = a.format;
    if (format == "auto")
        format = volumeio::formatName(volumeio::formatOfFileName(QString::fromStdString(a.input))).toStdString();
    static const std::map<std::string, InputKind> kKinds{
        {"segy", InputKind::Segy}, {"raw", InputKind::Raw}, {"bloc", InputKind::Bloc}};
    const auto it = kKinds.find(format);
    if (it == kKinds.end()) {
        problem = QStringLiteral("unknown input format \"%1\"").arg(QString::fromStdString(format));
        return false;
    }
    kind = it->second;
    return true;
}

bool rawLayoutOf(const ExtractArguments& a, volumeio::RawVolumeLayout& layout, QString& problem)
{
    if (a.size.size() != 3) {
        problem = QStringLiteral("a raw volume needs --size NINLINE NCROSSLINE NSAMPLE");
        return false;
    }
    layout.nInline = a.size[0];
    layout.nCrossline = a.size[1];
    layout.nSample = a.size[2];
    layout.byteOrder = a.byteOrder == "little" ? volumeio::ByteOrder::LittleEndian
                                               : volumeio::ByteOrder::BigEndian;
    if (!volumeio::parseAxisOrder(QString::fromStdString(a.axisOrder), layout.axes)) {
        problem = QStringLiteral("--axis-order takes three distinct letters of x, y, z, fastest first");
        return false;
    }
    layout.spacing = core::vec3(a.spacing[0], a.spacing[1], a.spacing[2]);
    return true;
}

void runExtractCommand(const ExtractArguments& a, ExtractOptions options, CommandIo& io)
{
    QString problem;
    if (!inputKindOf(a, options.input, problem)) return io.fail(problem, kExitFailure);
    options.inputPath = QString::fromStdString(a.input);
    options.outputDir = QString::fromStdString(a.out);
    if (options.input == InputKind::Raw && !rawLayoutOf(a, options.raw, problem))
        return io.fail(problem, kExitFailure);
    if (options.input != InputKind::Synthetic && !QFileInfo::exists(options.inputPath))
        return io.fail(QStringLiteral("%1: no such file").arg(options.inputPath), kExitFailure);
    if (options.input != InputKind::Synthetic && QFileInfo(options.inputPath).isDir())
        return io.fail(QStringLiteral("%1: a folder, not a volume file").arg(options.inputPath), kExitFailure);
    const ExtractResult result = runExtract(options);
    if (!result.ok())
        return io.fail(result.error, result.cancelled ? kExitCancelled : kExitFailure);
    for (const QString& file : result.files) io.out << file.toStdString() << '\n';
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
    c->add_option("-i,--input", arguments->input, "Likelihood volume: SEG-Y, raw float32 or block file");
    c->add_option("--format", arguments->format, "Input format: auto (by extension), segy, raw, bloc")
        ->check(CLI::IsMember({"auto", "segy", "raw", "bloc"}))->capture_default_str();
    c->add_option("--size", arguments->size, "Raw input: samples along inline, crossline, sample")
        ->expected(3);
    c->add_option("--byte-order", arguments->byteOrder, "Raw input: big or little")
        ->check(CLI::IsMember({"big", "little"}))->capture_default_str();
    c->add_option("--axis-order", arguments->axisOrder,
                  "Raw input: axes fastest first, x inline, y crossline, z sample")->capture_default_str();
    c->add_option("--spacing", arguments->spacing, "Raw input: world units per voxel along x, y, z")
        ->expected(3)->check(CLI::PositiveNumber);
    c->add_option("--synthetic-size", options->syntheticSize, "Built-in volume: voxels along each axis")
        ->check(CLI::Range(16, 1024))->capture_default_str();
    c->add_option("--seed", options->seed, "Built-in volume: seed of the noise")->capture_default_str();
    c->add_option("-o,--out", arguments->out, "Output folder (created when missing)")->capture_default_str();
    c->add_flag("!--no-pictures", options->pictures, "Do not draw the PNG pictures");
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
