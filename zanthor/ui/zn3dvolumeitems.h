#pragma once
#include <array>

#include <QColor>
#include <QImage>

#include <core/vec3.h>
#include <georef/blocspace.h>

#include "zn3dsceneitems.h"
#include "znblocviewerengine.h"

// The 3D view's items of a volume, placed from its block space: the textured planes of
// its sections and its outline with the inline, crossline and sample axes.
//
// Section images are laid out as the section viewers show them (ZNBlocViewerEngine): an
// inline has crossline across and sample down, a crossline inline across and sample
// down, a time slice inline across and crossline down, and the centre of pixel (c, r)
// lies on the voxel the section viewers put it on when the image holds one pixel per
// voxel. A plane covers the outer edges of its section's voxels, as the outline does.
class ZN3DVolumeItems {
public:
    using SectionKind = ZNBlocViewerEngine::SectionKind;

    // The world corners of the image of section `index` of `kind`: top-left, top-right,
    // bottom-right, bottom-left. False, `corners` untouched, for a random line or an
    // empty block space.
    static bool sectionCorners(const georef::BlocSpace& blocSpace, SectionKind kind, double index,
                               std::array<core::vec3, 4>& corners);
    // A section item showing `image` there; its corners are -9999 when sectionCorners
    // fails, which makes an item with nothing to draw.
    static ZN3DSectionItem section(const georef::BlocSpace& blocSpace, SectionKind kind, double index,
                                   const QImage& image);
    // The outline of the block in world coordinates, axes inline, crossline and sample
    // (ZN3DBoxItem's corner order); an empty item for an empty block space.
    static ZN3DBoxItem outline(const georef::BlocSpace& blocSpace, const std::array<ZN3DBoxItem::Axis, 3>& axes,
                               const QColor& colour = Qt::white);
};
