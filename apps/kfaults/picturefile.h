#pragma once
#include <QImage>
#include <QString>

namespace kfaults {

// Saves `image` as PNG into a temporary file beside `path` and renames it over `path`
// once complete, so an interrupted run never leaves half a picture. False, with
// `problem` set when given, for a null image or a file that cannot be written.
bool savePng(const QImage& image, const QString& path, QString* problem = nullptr);

} // namespace kfaults
