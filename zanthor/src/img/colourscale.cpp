#include "img/colourscale.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include <core/conventions.h>

namespace img {
namespace {

constexpr int kTableSize = 256;
using Table = std::array<QRgb, kTableSize>;

int channel(double v)
{
    return static_cast<int>(std::lround(std::clamp(v, 0.0, 1.0) * 255.0));
}

// Viridis by a polynomial fit of its published table (coefficients per channel, lowest
// degree first): within about 1% of the table, which is all a display needs.
QRgb viridis(double t)
{
    static const double c[7][3] = {{0.2777273272234177, 0.005407344544966578, 0.3340998053353061},
                                   {0.1050930431085774, 1.404613529898575, 1.384590162594685},
                                   {-0.3308618287255563, 0.214847559468213, 0.09509516302823659},
                                   {-4.634230498983486, -5.799100973351585, -19.33244095627987},
                                   {6.228269936347081, 14.17993336680509, 56.69055260068105},
                                   {4.776384997670288, -13.74514537774601, -65.35303263337234},
                                   {-5.435455855934631, 4.645852612178535, 26.3124352495832}};
    double rgb[3];
    for (int k = 0; k < 3; ++k) {
        double v = c[6][k];
        for (int d = 5; d >= 0; --d) v = c[d][k] + t * v;
        rgb[k] = v;
    }
    return qRgb(channel(rgb[0]), channel(rgb[1]), channel(rgb[2]));
}

// Blue (0, 0, 0.75) to white at the middle to red (0.75, 0, 0).
QRgb seismic(double t)
{
    constexpr double kDeep = 0.75;  // darkest channel value at the ends
    if (t < 0.5) {
        const double u = t / 0.5;
        return qRgb(channel(u), channel(u), channel(kDeep + (1.0 - kDeep) * u));
    }
    const double u = (t - 0.5) / 0.5;
    return qRgb(channel(1.0 - (1.0 - kDeep) * u), channel(1.0 - u), channel(1.0 - u));
}

const Table& table(ColourScale::Map map)
{
    static const std::array<Table, ColourScale::kMapCount> tables = [] {
        std::array<Table, ColourScale::kMapCount> t{};
        for (int i = 0; i < kTableSize; ++i) {
            const double u = double(i) / (kTableSize - 1);
            t[0][i] = qRgb(channel(u), channel(u), channel(u));
            t[1][i] = seismic(u);
            t[2][i] = viridis(u);
        }
        return t;
    }();
    return tables[static_cast<std::size_t>(map)];
}

bool isNoValue(float v)
{
    return std::isnan(v) || v == static_cast<float>(core::kNoValueReal);
}

} // namespace

void ColourScale::setRange(float minimum, float maximum)
{
    m_minimum = std::min(minimum, maximum);
    m_maximum = std::max(minimum, maximum);
}

QRgb ColourScale::colourOf(float value) const
{
    if (isNoValue(value)) return 0;
    const double span = double(m_maximum) - double(m_minimum);
    const double t = span > 0.0 ? (double(value) - m_minimum) / span : (value < m_minimum ? 0.0 : 1.0);
    const int i = static_cast<int>(std::clamp(t, 0.0, 1.0) * (kTableSize - 1) + 0.5);
    return table(m_map)[static_cast<std::size_t>(i)];
}

void ColourScale::colourRow(const float* values, int n, QRgb* out) const
{
    const Table& colours = table(m_map);
    const float span = m_maximum - m_minimum;
    const float noValue = static_cast<float>(core::kNoValueReal);
    if (!(span > 0.0f)) {
        for (int i = 0; i < n; ++i) out[i] = colourOf(values[i]);
        return;
    }
    const float scale = (kTableSize - 1) / span;  // table entries per value unit
    const float offset = 0.5f - m_minimum * scale;
    constexpr float kLast = kTableSize - 1;
    for (int i = 0; i < n; ++i) {
        const float v = values[i];
        const float position = v * scale + offset;  // NaN stays NaN
        const bool none = v == noValue || position != position;
        const int entry = static_cast<int>(std::min(std::max(position, 0.0f), kLast));
        out[i] = none ? 0u : colours[static_cast<std::size_t>(entry)];
    }
}

QRgb ColourScale::mapColour(Map map, double t)
{
    const int i = static_cast<int>(std::clamp(t, 0.0, 1.0) * (kTableSize - 1) + 0.5);
    return table(map)[static_cast<std::size_t>(i)];
}

std::pair<float, float> ColourScale::symmetricClipRange(const float* samples, std::size_t n, double percentile)
{
    std::vector<float> magnitudes;
    const std::size_t stride = std::max<std::size_t>(1, n / kRangeSamples);
    for (std::size_t i = 0; samples && i < n; i += stride)
        if (!isNoValue(samples[i])) magnitudes.push_back(std::fabs(samples[i]));
    if (magnitudes.empty()) return {-1.0f, 1.0f};
    const double p = std::clamp(percentile, 0.0, 100.0) / 100.0;
    const std::size_t k = std::min(magnitudes.size() - 1, static_cast<std::size_t>(p * (magnitudes.size() - 1) + 0.5));
    std::nth_element(magnitudes.begin(), magnitudes.begin() + static_cast<std::ptrdiff_t>(k), magnitudes.end());
    const float a = magnitudes[k] > 0.0f ? magnitudes[k] : 1.0f;
    return {-a, a};
}

std::pair<float, float> ColourScale::minMaxRange(const float* samples, std::size_t n)
{
    bool any = false;
    float low = 0.0f, high = 1.0f;
    for (std::size_t i = 0; samples && i < n; ++i) {
        if (isNoValue(samples[i])) continue;
        low = any ? std::min(low, samples[i]) : samples[i];
        high = any ? std::max(high, samples[i]) : samples[i];
        any = true;
    }
    return {low, high};
}

QString ColourScale::mapName(Map map)
{
    switch (map) {
    case Map::Grey: return QStringLiteral("Grey");
    case Map::Seismic: return QStringLiteral("Seismic");
    case Map::Viridis: return QStringLiteral("Viridis");
    }
    return QString();
}

QStringList ColourScale::mapNames()
{
    return {mapName(Map::Grey), mapName(Map::Seismic), mapName(Map::Viridis)};
}

bool ColourScale::mapFromName(const QString& name, Map& out)
{
    for (int i = 0; i < kMapCount; ++i)
        if (mapName(static_cast<Map>(i)) == name) {
            out = static_cast<Map>(i);
            return true;
        }
    return false;
}

QImage ColourScale::bar(int width, int height, bool vertical) const
{
    QImage image(std::max(width, 1), std::max(height, 1), QImage::Format_ARGB32);
    const int length = vertical ? image.height() : image.width();
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x) {
            const int along = vertical ? image.height() - 1 - y : x;
            image.setPixel(x, y, mapColour(m_map, length > 1 ? double(along) / (length - 1) : 0.0));
        }
    return image;
}

} // namespace img
