#pragma once
// Checking the content of rendered pictures: pixels counted by colour in an area, and
// pictures kept for a person to look at.
#include <functional>

#include <QColor>
#include <QImage>
#include <QRect>
#include <QString>

namespace picturetest {

// Pixels of `image` inside `area` for which `match` is true.
int countPixels(const QImage& image, const QRect& area, const std::function<bool(QColor)>& match);

// Match of a colour of the same hue (within `hueDegrees`) and clearly coloured.
std::function<bool(QColor)> sameHue(const QColor& colour, int hueDegrees = 8);
// Match of a colour within `tolerance` of `colour` on each of red, green and blue.
std::function<bool(QColor)> near(const QColor& colour, int tolerance = 24);

// The folder named by KORVALITH_KEEP_PICTURES, where tests leave their pictures for a
// person to look at; empty when unset.
QString keepFolder();
// Saves `image` as <keep folder>/<name>.png when the folder is set; nothing otherwise.
void keepPicture(const QImage& image, const QString& name);

} // namespace picturetest
