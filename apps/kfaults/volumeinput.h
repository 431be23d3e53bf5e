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
    std::string byteOrder = "big";
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

// The raw layout the options give; false with `problem` set when --size is missing or
// the axis order unreadable.
bool rawLayoutOf(const VolumeArguments& a, volumeio::RawVolumeLayout& layout, QString& problem);

// The input the options name: its kind, path and, for a raw file, layout. False with
// `problem` set for an unknown format, a raw file without its size, or a file that does
// not exist.
bool resolveInput(const VolumeArguments& a, InputKind& kind, QString& path, volumeio::RawVolumeLayout& raw,
                  QString& problem);

// The file an input other than a built-in one is read from, as the framework's volume
// readers take it.
volumeio::VolumeSource volumeSource(InputKind kind, const QString& path, const volumeio::RawVolumeLayout& raw);

} // namespace kfaults
