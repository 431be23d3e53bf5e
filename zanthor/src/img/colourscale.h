#pragma once
#include <cstddef>
#include <utility>

#include <QImage>
#include <QRgb>
#include <QString>
#include <QStringList>

namespace img {

// How sample values become colours in the viewers: a colour map spread over a range.
// Values below the range take the map's first colour, above it its last; the no-value
// marker (-9999) and NaN are transparent. A plain value.
class ColourScale {
public:
    enum class Map {
        Grey,     // black to white: amplitudes
        Seismic,  // blue to white to red: signed amplitudes around zero
        Viridis,  // dark blue to green to yellow, perceptually uniform: attributes, likelihoods
    };
    static constexpr int kMapCount = 3;
    static constexpr double kDefaultClipPercentile = 99.0;  // of |amplitude|, for seismic data

    ColourScale() = default;
    ColourScale(Map map, float minimum, float maximum) : m_map(map), m_minimum(minimum), m_maximum(maximum) {}

    Map map() const { return m_map; }
    void setMap(Map map) { m_map = map; }
    float minimum() const { return m_minimum; }
    float maximum() const { return m_maximum; }
    // Sets the range; a range whose ends are swapped is put in order.
    void setRange(float minimum, float maximum);

    // The colour of a value (opaque), or 0 (transparent) for -9999 and NaN.
    QRgb colourOf(float value) const;
    // The colours of `n` values, as colourOf gives them, into `out`: the fast path of
    // pictures.
    void colourRow(const float* values, int n, QRgb* out) const;
    // The colour at position t of the map (0 first colour, 1 last; clamped).
    static QRgb mapColour(Map map, double t);

    // The range of `n` samples symmetric about zero that clips |value| at `percentile`
    // (0..100) of the samples, for signed amplitudes; (-1, 1) when there is no sample.
    // At most kRangeSamples samples, evenly strided, are looked at.
    static std::pair<float, float> symmetricClipRange(const float* samples, std::size_t n,
                                                      double percentile = kDefaultClipPercentile);
    // The smallest and largest of `n` samples; (0, 1) when there is none.
    static std::pair<float, float> minMaxRange(const float* samples, std::size_t n);
    static constexpr std::size_t kRangeSamples = 1u << 20;

    // "Grey", "Seismic", "Viridis".
    static QString mapName(Map map);
    static QStringList mapNames();
    // The map of a name; false, `out` untouched, for another one.
    static bool mapFromName(const QString& name, Map& out);

    // A colour bar of the map: `length` colours along the bar, first colour at the
    // bottom of a vertical bar and at the left of a horizontal one.
    QImage bar(int width, int height, bool vertical) const;

private:
    Map m_map = Map::Grey;
    float m_minimum = 0.0f;
    float m_maximum = 1.0f;
};

} // namespace img
