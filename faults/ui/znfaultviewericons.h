#pragma once
#include <QImage>
#include <QString>

// The icons of the fault viewer's property rows, drawn here rather than read from files:
// 16 x 16 pixels, transparent where nothing is drawn.
namespace ZNFaultViewerIcons {

constexpr int kSize = 16;

// "faultviewershowpoint" (points on a stick), "freezesmall" (a snowflake), "imagescale"
// (a scale bar), "colorscaleok" (a colour bar), "zdomain16" (a Z over a downward arrow);
// a null image for another name.
QImage icon(const QString& name);

} // namespace ZNFaultViewerIcons
