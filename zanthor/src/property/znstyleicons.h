#pragma once
#include <QImage>
#include <QVariantList>

// The icons of the pen and brush style choices of property sheets: one square image per
// style, kIconSize pixels a side, transparent where nothing is drawn, the style drawn in
// black. Styles outside the plain ones give an empty (transparent) icon.
namespace ZNStyleIcons {

constexpr int kIconSize = 50;          // pixels, both sides
constexpr int kLastPenStyle = 5;       // Qt::DashDotDotLine: pen styles 0 .. 5
constexpr int kLastBrushStyle = 14;    // Qt::DiagCrossPattern: brush styles 0 .. 14

// A horizontal line through the middle in pen style `style` (0 no line .. 5).
QImage penStyleIcon(int style);
// The whole square filled in brush style `style` (0 no brush .. 14).
QImage brushStyleIcon(int style);

// The icons of every pen style 0..5, and of every brush style 0..14, in style order, as
// the "enumIcons" attribute holds them.
QVariantList penStyleIcons();
QVariantList brushStyleIcons();

} // namespace ZNStyleIcons
