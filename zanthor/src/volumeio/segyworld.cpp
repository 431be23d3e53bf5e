#include "volumeio/segyworld.h"

#include <cmath>

#include "volumeio/gridaxes.h"

namespace volumeio {
namespace {
constexpr double kDegenerateRatio = 1e-9;   // |det| below this times the axes' squared
                                            // lengths counts as a degenerate map frame

// The least-squares map frame: origin and the map steps along inline and crossline.
struct MapFrame {
    core::vec2 origin;
    core::vec2 alongInline;
    core::vec2 alongCrossline;
};

MapFrame fitFrame(const SegyGrid& grid, const std::vector<core::vec2>& points)
{
    const double n = static_cast<double>(points.size());
    const double meanI = (grid.inlineCount() - 1) / 2.0;      // full grid: exact means
    const double meanJ = (grid.crosslineCount() - 1) / 2.0;
    core::vec2 mean;
    for (const core::vec2& p : points) mean = mean + p / n;
    core::vec2 covI, covJ;
    double varI = 0.0, varJ = 0.0;
    for (std::size_t t = 0; t < points.size(); ++t) {
        const double di = grid.inlineIndexOfTrace[t] - meanI;
        const double dj = grid.crosslineIndexOfTrace[t] - meanJ;
        const core::vec2 dp = points[t] - mean;
        covI = covI + dp * di;
        covJ = covJ + dp * dj;
        varI += di * di;
        varJ += dj * dj;
    }
    MapFrame f;
    f.alongInline = varI > 0.0 ? covI / varI : core::vec2();
    f.alongCrossline = varJ > 0.0 ? covJ / varJ : core::vec2();
    if (varI == 0.0 && varJ == 0.0) {
        f.alongInline = {1.0, 0.0};
        f.alongCrossline = {0.0, 1.0};
    } else if (varI == 0.0) {
        f.alongInline = {f.alongCrossline.y, -f.alongCrossline.x};
    } else if (varJ == 0.0) {
        f.alongCrossline = {-f.alongInline.y, f.alongInline.x};
    }
    f.origin = mean - f.alongInline * meanI - f.alongCrossline * meanJ;
    return f;
}

bool usable(const MapFrame& f)
{
    const double det = f.alongInline.x * f.alongCrossline.y - f.alongInline.y * f.alongCrossline.x;
    const double scale = f.alongInline.dot(f.alongInline) + f.alongCrossline.dot(f.alongCrossline);
    return std::isfinite(det) && std::isfinite(f.origin.x) && std::isfinite(f.origin.y) &&
           std::fabs(det) > kDegenerateRatio * scale;
}
} // namespace

SegyWorldFit segyBlocToWorld(const SegyGrid& grid, const std::vector<core::vec2>& mapPoints,
                             const SegyVerticalAxis& vertical)
{
    SegyWorldFit fit;
    fit.blocToWorld = axisAlignedBlocToWorld({1.0, 1.0, vertical.step},
                                             {0.0, vertical.firstSample, 0.0});
    bool anyPosition = false;
    for (const core::vec2& p : mapPoints) anyPosition = anyPosition || p != core::vec2();
    if (!anyPosition || mapPoints.size() != grid.inlineIndexOfTrace.size()) return fit;
    const MapFrame f = fitFrame(grid, mapPoints);
    if (!usable(f)) return fit;
    core::mat4& m = fit.blocToWorld;
    m(0, 0) = f.alongInline.x;  m(0, 1) = f.alongCrossline.x;  m(0, 3) = f.origin.x;
    m(2, 0) = f.alongInline.y;  m(2, 1) = f.alongCrossline.y;  m(2, 3) = f.origin.y;
    fit.fromCoordinates = true;
    return fit;
}

} // namespace volumeio
