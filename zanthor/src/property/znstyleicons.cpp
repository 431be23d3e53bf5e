#include "property/znstyleicons.h"

#include <QPainter>

namespace {
constexpr int kPenWidth = 3;      // pixels, wide enough to show dots and dashes apart
constexpr int kLineMargin = 2;    // pixels left free at both ends of the line

QImage blankIcon()
{
    QImage image(ZNStyleIcons::kIconSize, ZNStyleIcons::kIconSize, QImage::Format_ARGB32);
    image.fill(Qt::transparent);
    return image;
}
} // namespace

namespace ZNStyleIcons {

QImage penStyleIcon(int style)
{
    QImage image = blankIcon();
    if (style <= Qt::NoPen || style > kLastPenStyle) return image;
    QPainter painter(&image);
    painter.setPen(QPen(Qt::black, kPenWidth, static_cast<Qt::PenStyle>(style), Qt::FlatCap));
    const int middle = kIconSize / 2;
    painter.drawLine(kLineMargin, middle, kIconSize - kLineMargin, middle);
    return image;
}

QImage brushStyleIcon(int style)
{
    QImage image = blankIcon();
    if (style <= Qt::NoBrush || style > kLastBrushStyle) return image;
    QPainter painter(&image);
    painter.fillRect(image.rect(), QBrush(Qt::black, static_cast<Qt::BrushStyle>(style)));
    return image;
}

QVariantList penStyleIcons()
{
    QVariantList icons;
    for (int style = Qt::NoPen; style <= kLastPenStyle; ++style) icons << penStyleIcon(style);
    return icons;
}

QVariantList brushStyleIcons()
{
    QVariantList icons;
    for (int style = Qt::NoBrush; style <= kLastBrushStyle; ++style) icons << brushStyleIcon(style);
    return icons;
}

} // namespace ZNStyleIcons
