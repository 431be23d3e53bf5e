#include "attributepicture.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include <QFontMetrics>
#include <QPainter>

#include "picturecanvas.h"

namespace kfaults {
namespace {

constexpr double kClipPercentile = 0.99;

float clipLevel(const ZN3DImage<float>& values)
{
    std::vector<float> magnitudes;
    magnitudes.reserve(values.voxelCount());
    for (std::size_t i = 0; i < values.voxelCount(); ++i)
        if (std::isfinite(values.data()[i])) magnitudes.push_back(std::fabs(values.data()[i]));
    if (magnitudes.empty()) return 1.0F;
    const auto at = magnitudes.begin() + static_cast<std::ptrdiff_t>(kClipPercentile * static_cast<double>(magnitudes.size() - 1));
    std::nth_element(magnitudes.begin(), at, magnitudes.end());
    return *at > 0.0F ? *at : 1.0F;
}

QImage sectionImage(const Section& s, bool seismic)
{
    const ZN3DImage<float>& v = s.values;
    QImage image(v.nx(), v.ny(), QImage::Format_RGB32);
    const float clip = seismic ? clipLevel(v) : 1.0F;
    for (int y = 0; y < v.ny(); ++y)
        for (int x = 0; x < v.nx(); ++x)
            image.setPixel(x, y, seismic ? seismicColour(v(x, y, 0), clip) : likelihoodColour(v(x, y, 0)));
    return image;
}

} // namespace

QRgb seismicColour(float amplitude, float clip)
{
    const float t = std::isfinite(amplitude) ? std::clamp(amplitude / clip, -1.0F, 1.0F) : 0.0F;
    const int grey = static_cast<int>(std::lround(127.5 * (1.0 + t)));
    return qRgb(grey, grey, grey);
}

QRgb likelihoodColour(float likelihood)
{
    const float t = std::isfinite(likelihood) ? std::clamp(likelihood, 0.0F, 1.0F) : 0.0F;
    const QColor c = picture::mix(QColor(Qt::white), QColor(140, 0, 0), t);
    return c.rgb();
}

QImage renderAttributePicture(const Section& seismicInline, const Section& likelihoodInline,
                              const Section& seismicSlice, const Section& likelihoodSlice, int minPanelPixels)
{
    const Section* rows[2][2] = {{&seismicInline, &likelihoodInline}, {&seismicSlice, &likelihoodSlice}};
    for (auto& row : rows)
        for (const Section* s : row)
            if (s->values.isEmpty()) return QImage();
    // One scale for the whole picture, so that both rows keep their sizes' ratio.
    const int longest = std::max({seismicInline.values.nx(), seismicInline.values.ny(), seismicSlice.values.nx(),
                                  seismicSlice.values.ny()});
    const int narrowest = std::min(seismicInline.values.nx(), seismicSlice.values.nx());
    const int scale = std::max({1, (minPanelPixels + longest - 1) / longest,
                                (minPanelPixels / 2 + narrowest - 1) / narrowest});
    const picture::PictureStyle style(QSize(4 * longest * scale, 4 * longest * scale));
    const int title = style.labelPixels + 2 * style.margin;
    const int gap = style.margin;
    // Each panel sits in a cell wide enough for its title too, so that a narrow section
    // (an inline of few crosslines) keeps its whole title.
    const QFontMetrics titleMetrics(style.font(style.titlePixels, true));
    auto cellWidth = [&](const Section& s) {
        return std::max(s.values.nx() * scale, titleMetrics.horizontalAdvance(s.title) + 2 * style.margin);
    };
    int width = 0, height = gap;
    for (auto& row : rows) {
        width = std::max(width, gap + cellWidth(*row[0]) + gap + cellWidth(*row[1]) + gap);
        height += title + row[0]->values.ny() * scale + gap;
    }
    QImage picture = picture::blankPicture(width, height, Qt::white);
    QPainter painter(&picture);
    int top = gap;
    for (auto& row : rows) {
        int left = gap;
        for (int k = 0; k < 2; ++k) {
            const Section& s = *row[k];
            const int cell = cellWidth(s);
            picture::drawTitle(painter, QRect(left, top, cell, title), s.title, style);
            const int panelWidth = s.values.nx() * scale;
            const QRect panel(left + (cell - panelWidth) / 2, top + title, panelWidth, s.values.ny() * scale);
            painter.drawImage(panel, sectionImage(s, k == 0));
            painter.setPen(QPen(style.ink, style.lineWidth));
            painter.drawRect(panel);
            left += cell + gap;
        }
        top += title + row[0]->values.ny() * scale + gap;
    }
    return picture;
}

} // namespace kfaults
