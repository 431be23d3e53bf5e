#include "znfaultviewericons.h"

#include <cmath>

#include <QLinearGradient>
#include <QPainter>

namespace ZNFaultViewerIcons {
namespace {

void showPoint(QPainter& p)
{
    p.setPen(QPen(QColor(40, 40, 40), 1.5));
    p.drawLine(QPointF(4, 2), QPointF(12, 14));
    p.setBrush(Qt::white);
    for (const QPointF& at : {QPointF(4, 2), QPointF(8, 8), QPointF(12, 14)}) p.drawEllipse(at, 2.0, 2.0);
}

void freeze(QPainter& p)
{
    p.setPen(QPen(QColor(40, 110, 200), 1.5));
    const QPointF centre(8, 8);
    for (int k = 0; k < 3; ++k) {
        const double a = k * M_PI / 3.0;
        const QPointF arm(6.5 * std::cos(a), 6.5 * std::sin(a));
        p.drawLine(centre - arm, centre + arm);
    }
}

void scale(QPainter& p)
{
    p.setPen(QPen(Qt::black, 1.5));
    p.drawLine(QPointF(2, 11), QPointF(14, 11));
    for (double x : {2.0, 8.0, 14.0}) p.drawLine(QPointF(x, 7), QPointF(x, 11));
}

void colourBar(QPainter& p)
{
    QLinearGradient g(0, 14, 0, 2);
    g.setColorAt(0.0, QColor(0, 0, 190));
    g.setColorAt(0.5, Qt::white);
    g.setColorAt(1.0, QColor(190, 0, 0));
    p.setPen(QPen(Qt::black, 1));
    p.setBrush(g);
    p.drawRect(QRectF(5, 2, 6, 12));
}

void zDomain(QPainter& p)
{
    p.setPen(QPen(Qt::black, 1.5));
    p.drawPolyline(QPolygonF({QPointF(3, 2), QPointF(9, 2), QPointF(3, 9), QPointF(9, 9)}));
    p.drawLine(QPointF(13, 2), QPointF(13, 14));
    p.drawPolyline(QPolygonF({QPointF(11, 11), QPointF(13, 14), QPointF(15, 11)}));
}

} // namespace

QImage icon(const QString& name)
{
    void (*draw)(QPainter&) = name == QLatin1String("faultviewershowpoint") ? showPoint
                              : name == QLatin1String("freezesmall")        ? freeze
                              : name == QLatin1String("imagescale")         ? scale
                              : name == QLatin1String("colorscaleok")       ? colourBar
                              : name == QLatin1String("zdomain16")          ? zDomain
                                                                            : nullptr;
    if (!draw) return QImage();
    QImage image(kSize, kSize, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    draw(painter);
    return image;
}

} // namespace ZNFaultViewerIcons
