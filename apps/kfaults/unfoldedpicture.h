#pragma once
#include <QColor>
#include <QImage>
#include <QString>

#include "idimage.h"

namespace kfaults {

// How an unfolded fault is drawn. Defaults give a 1000 x 700 picture on white.
struct UnfoldedSettings {
    int width = 1000;     // pixels, at least 1
    int height = 700;
    QString title = QStringLiteral("Fault unfolded on its plane");
    QString horizontalLabel = QStringLiteral("Along strike (cells)");
    QString verticalLabel = QStringLiteral("Down dip (cells)");
    QColor background = Qt::white;
    QColor empty = QColor(238, 238, 238);  // image cells without a patch
};

// The colour of patch `id`: hues spread by the golden angle so that close ids differ
// clearly, saturation and value varied on a short cycle; the same id always gives the
// same colour. -9999 (no patch) gives grey.
QColor patchColour(int id);

// The id image scaled to fit its plot with square cells (nearest neighbour, so cells stay
// crisp), row 0 on top, each id in patchColour(id) and empty cells in `empty`, with cell
// axes, a frame, and a colour bar listing the ids present (every id when they fit, evenly
// chosen ones otherwise). An inconsistent or empty image gives the frame and a note.
// Needs a QGuiApplication for its text; the picture has exactly the requested size.
QImage renderUnfolded(const IdImage& ids, const UnfoldedSettings& settings = {});

} // namespace kfaults
