#include "faultpalette.h"

#include <algorithm>

namespace fault {
namespace {
// A qualitative palette (ColorBrewer "Paired"/"Set1" family, reordered so that
// neighbours differ in hue and lightness).
const QRgb kPalette[] = {0x1f78b4, 0xe31a1c, 0x33a02c, 0xff7f00, 0x6a3d9a, 0xb15928,
                         0xa6cee3, 0xfb9a99, 0xb2df8a, 0xfdbf6f, 0xcab2d6, 0x8dd3c7};
constexpr int kPaletteSize = sizeof(kPalette) / sizeof(kPalette[0]);
constexpr int kDarkerPerCycle = 115; // QColor::darker factor applied once per cycle
constexpr int kMaxDarkening = 3;
} // namespace

QColor faultColour(int index)
{
    if (index < 0) return QColor(Qt::gray);
    QColor colour(kPalette[index % kPaletteSize]);
    const int cycles = std::min(index / kPaletteSize, kMaxDarkening);
    for (int i = 0; i < cycles; ++i) colour = colour.darker(kDarkerPerCycle);
    return colour;
}

} // namespace fault
