#pragma once
#include <string>
#include <vector>

#include <QString>

#include <volumeio/rawvolume.h>
#include <volumeio/volumesource.h>

namespace CLI {
class App;
}

namespace kfaults {

// Where an input volume comes from.
enum class InputKind {
    Synthetic,  // built in, generated in memory
    Segy,       // a 3D post-stack SEG-Y file
    Raw,        // raw float32 samples, layout given
    Bloc,       // a block file of the library
};

// The input options of a command, as typed, before they are checked.
struct VolumeArguments {
    std::string input;
    std::string format = "auto";
    std::vector<int> size;
    std::string byteOrder;          // "big", "little", or empty: detected from the samples
    std::string axisOrder = "zyx";
    std::vector<double> spacing{1.0, 1.0, 1.0};
};

// Adds -i/--input (described by `inputHelp`), --format, --size, --byte-order,
// --axis-order and --spacing to command `c`, stored in `a`.
void addVolumeOptions(CLI::App& c, VolumeArguments& a, const std::string& inputHelp);

// The input kind the user meant: Synthetic without an input, else by --format or the
// file's extension (.sgy, .segy, .bloc, anything else raw). False with `problem` set
// for an unknown format.
bool inputKindOf(const VolumeArguments& a, InputKind& kind, QString& problem);

// How the byte order of a raw input was chosen.
enum class ByteOrderChoice {
    Given,       // by --byte-order
    Detected,    // from the samples (volumeio::detectByteOrder)
    Undecided,   // the samples do not tell: big-endian
};

// The raw layout the options give; false with `problem` set when --size is missing or
// the axis order unreadable. Without --byte-order the byte order is detected from the
// samples of the file; `choice` (may be null) says how it was chosen.
bool rawLayoutOf(const VolumeArguments& a, volumeio::RawVolumeLayout& layout, QString& problem,
                 ByteOrderChoice* choice = nullptr);

// The input the options name: its kind, path and, for a raw file, layout. False with
// `problem` set for an unknown format, a raw file without its size, or a file that does
// not exist. `choice` as rawLayoutOf.
bool resolveInput(const VolumeArguments& a, InputKind& kind, QString& path, volumeio::RawVolumeLayout& raw,
                  QString& problem, ByteOrderChoice* choice = nullptr);

// The line that says which byte order a raw input is read in when it was detected:
// "<path>: samples read big-endian (detected; --byte-order sets it)"; empty otherwise
// (given, or samples that read alike both ways).
QString byteOrderNote(const QString& path, const volumeio::RawVolumeLayout& raw, ByteOrderChoice choice);

// The file an input other than a built-in one is read from, as the framework's volume
// readers take it.
volumeio::VolumeSource volumeSource(InputKind kind, const QString& path, const volumeio::RawVolumeLayout& raw);

} // namespace kfaults
