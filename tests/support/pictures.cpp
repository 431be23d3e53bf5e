#include "pictures.h"

#include <algorithm>
#include <cstdlib>

#include <QDir>

namespace picturetest {

int countPixels(const QImage& image, const QRect& area, const std::function<bool(QColor)>& match)
{
    int count = 0;
    const QRect r = area.intersected(image.rect());
    for (int y = r.top(); y <= r.bottom(); ++y)
        for (int x = r.left(); x <= r.right(); ++x)
            if (match(image.pixelColor(x, y))) ++count;
    return count;
}

std::function<bool(QColor)> sameHue(const QColor& colour, int hueDegrees)
{
    const int hue = colour.hsvHue();
    return [hue, hueDegrees](QColor c) {
        if (c.hsvSaturation() < 80 || c.value() < 40) return false;
        const int d = std::abs(c.hsvHue() - hue);
        return std::min(d, 360 - d) <= hueDegrees;
    };
}

std::function<bool(QColor)> near(const QColor& colour, int tolerance)
{
    return [colour, tolerance](QColor c) {
        return std::abs(c.red() - colour.red()) <= tolerance && std::abs(c.green() - colour.green()) <= tolerance &&
               std::abs(c.blue() - colour.blue()) <= tolerance;
    };
}

QString keepFolder() { return qEnvironmentVariable("KORVALITH_KEEP_PICTURES"); }

void keepPicture(const QImage& image, const QString& name)
{
    const QString folder = keepFolder();
    if (folder.isEmpty()) return;
    QDir().mkpath(folder);
    image.save(QDir(folder).filePath(name + QStringLiteral(".png")));
}

} // namespace picturetest
