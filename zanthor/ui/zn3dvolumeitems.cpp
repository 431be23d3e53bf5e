#include "zn3dvolumeitems.h"

namespace {

constexpr double kHalfVoxel = 0.5;

} // namespace

bool ZN3DVolumeItems::sectionCorners(const georef::BlocSpace& blocSpace, SectionKind kind, double index,
                                     std::array<core::vec3, 4>& corners)
{
    if (blocSpace.isEmpty() || kind == SectionKind::RandomLine) return false;
    // The image's column and row axes in the block, and the section's own axis.
    const int column = kind == SectionKind::Inline ? 1 : 0;
    const int row = kind == SectionKind::Slice ? 1 : 2;
    const int across = kind == SectionKind::Inline ? 0 : (kind == SectionKind::Crossline ? 1 : 2);
    const double sizes[3] = {double(blocSpace.nx()), double(blocSpace.ny()), double(blocSpace.nz())};
    const double columnEnds[4] = {-kHalfVoxel, sizes[column] - kHalfVoxel, sizes[column] - kHalfVoxel, -kHalfVoxel};
    const double rowEnds[4] = {-kHalfVoxel, -kHalfVoxel, sizes[row] - kHalfVoxel, sizes[row] - kHalfVoxel};
    for (size_t i = 0; i < 4; ++i) {
        core::vec3 bloc;
        bloc[across] = index;
        bloc[column] = columnEnds[i];
        bloc[row] = rowEnds[i];
        corners[i] = blocSpace.blocToWorld(bloc);
    }
    return true;
}

ZN3DSectionItem ZN3DVolumeItems::section(const georef::BlocSpace& blocSpace, SectionKind kind, double index,
                                         const QImage& image)
{
    ZN3DSectionItem item;
    item.image = image;
    const core::vec3 none(core::kNoValueReal, core::kNoValueReal, core::kNoValueReal);
    item.corners = {none, none, none, none};
    sectionCorners(blocSpace, kind, index, item.corners);
    return item;
}

ZN3DBoxItem ZN3DVolumeItems::outline(const georef::BlocSpace& blocSpace,
                                     const std::array<ZN3DBoxItem::Axis, 3>& axes, const QColor& colour)
{
    ZN3DBoxItem item;
    item.axes = axes;
    item.colour = colour;
    if (blocSpace.isEmpty()) return item;
    const double high[3] = {blocSpace.nx() - kHalfVoxel, blocSpace.ny() - kHalfVoxel, blocSpace.nz() - kHalfVoxel};
    for (size_t k = 0; k < 8; ++k)
        item.corners[k] = blocSpace.blocToWorld({(k & 1) ? high[0] : -kHalfVoxel, (k & 2) ? high[1] : -kHalfVoxel,
                                                 (k & 4) ? high[2] : -kHalfVoxel});
    return item;
}
