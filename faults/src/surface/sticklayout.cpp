#include "surface/sticklayout.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace fault::surface {

namespace {
constexpr double kMainStickCosine = 0.70710678118654752;  // cos 45 degrees

// Unit direction from the first to the last point of a stick, in (a, b); zero for a stick
// whose ends coincide.
core::vec2 stickDirection(const StickLayout& layout, const std::vector<int>& stick)
{
    if (stick.size() < 2) return {};
    const core::vec2 d = layout.positions[stick.back()] - layout.positions[stick.front()];
    const double length = d.length();
    return length > 0.0 ? d / length : core::vec2();
}

core::vec2 stickCentre(const StickLayout& layout, const std::vector<int>& stick)
{
    core::vec2 sum;
    for (int p : stick) sum = sum + layout.positions[p];
    return sum / static_cast<double>(stick.size());
}

// The end point of a stick moved `distance` beyond its last point, along its last segment.
core::vec3 extendedEnd(const core::vec3& beforeLast, const core::vec3& last, double distance)
{
    const core::vec3 d = (last - beforeLast).normalized();
    return last + d * distance;
}

double cross(const core::vec2& o, const core::vec2& a, const core::vec2& b)
{
    return (a.x - o.x) * (b.y - o.y) - (a.y - o.y) * (b.x - o.x);
}

// Points closer than this to the outline of the convex hull, relative to the span, are
// corners of it when the hull is the domain. A stick along the hull's edge is never quite
// straight (picks snap to samples, sections are not quite parallel): dropped from the
// outline, it would leave a sliver between itself and the hull's edge, narrower than any
// edge bound, that the refinement fills with millions of triangles.
constexpr double kHullOutlineTolerance = 1e-2;

// The larger side of the bounding box of `positions`; 0 for none.
double spanOf(const std::vector<core::vec2>& positions)
{
    if (positions.empty()) return 0.0;
    core::vec2 low = positions.front(), high = positions.front();
    for (const core::vec2& p : positions) {
        low = core::vec2(std::min(low.x, p.x), std::min(low.y, p.y));
        high = core::vec2(std::max(high.x, p.x), std::max(high.y, p.y));
    }
    return std::max(high.x - low.x, high.y - low.y);
}

// Whether the closed loop `loop` of `positions` is simple: no point twice, no two edges
// meeting but at the corner they share, no corner folding back on itself.
bool isSimpleLoop(const std::vector<core::vec2>& positions, const std::vector<int>& loop)
{
    const size_t n = loop.size();
    if (n < 3) return false;
    std::vector<int> sorted = loop;
    std::sort(sorted.begin(), sorted.end());
    if (std::adjacent_find(sorted.begin(), sorted.end()) != sorted.end()) return false;
    const auto onSegment = [](const core::vec2& a, const core::vec2& b, const core::vec2& p) {
        return std::min(a.x, b.x) <= p.x && p.x <= std::max(a.x, b.x) && std::min(a.y, b.y) <= p.y &&
               p.y <= std::max(a.y, b.y);
    };
    const auto meet = [&](const core::vec2& a, const core::vec2& b, const core::vec2& c, const core::vec2& d) {
        const double d1 = cross(c, d, a), d2 = cross(c, d, b), d3 = cross(a, b, c), d4 = cross(a, b, d);
        if (((d1 > 0 && d2 < 0) || (d1 < 0 && d2 > 0)) && ((d3 > 0 && d4 < 0) || (d3 < 0 && d4 > 0))) return true;
        return (d1 == 0 && onSegment(c, d, a)) || (d2 == 0 && onSegment(c, d, b)) ||
               (d3 == 0 && onSegment(a, b, c)) || (d4 == 0 && onSegment(a, b, d));
    };
    for (size_t i = 0; i < n; ++i) {
        const core::vec2& a = positions[loop[i]];
        const core::vec2& b = positions[loop[(i + 1) % n]];
        const core::vec2& c = positions[loop[(i + 2) % n]];
        if (cross(a, b, c) == 0.0 && (b - a).dot(c - b) < 0.0) return false;  // folds back
        for (size_t j = i + 2; j < n; ++j) {
            if ((j + 1) % n == i) continue;  // the edge before i: they share a corner
            if (meet(a, b, positions[loop[j]], positions[loop[(j + 1) % n]])) return false;
        }
    }
    return true;
}

} // namespace

std::vector<Stick> collectSticks(const core::PointWithBool* points, int count)
{
    std::vector<Stick> sticks;
    Stick current;
    for (int i = 0; points && i <= count; ++i) {
        const bool end = i == count || points[i].isSeparator();
        if (end) {
            if (!current.empty()) sticks.push_back(std::move(current));
            current.clear();
            continue;
        }
        if (points[i].flag) continue;
        const core::vec3 p = points[i].position();
        if (current.empty() || current.back() != p) current.push_back(p);
    }
    return sticks;
}

int countLongSticks(const std::vector<Stick>& sticks)
{
    return static_cast<int>(
        std::count_if(sticks.begin(), sticks.end(), [](const Stick& s) { return s.size() >= 2; }));
}

std::vector<core::vec3> allPoints(const std::vector<Stick>& sticks)
{
    std::vector<core::vec3> points;
    for (const Stick& s : sticks) points.insert(points.end(), s.begin(), s.end());
    return points;
}

StickLayout layoutSticks(const std::vector<Stick>& sticks, const PlaneFrame& frame)
{
    StickLayout layout;
    layout.frame = frame;
    for (const Stick& stick : sticks) {
        std::vector<int> indices;
        for (const core::vec3& p : stick) {
            const core::vec3 abw = frame.toPlane(p);
            indices.push_back(static_cast<int>(layout.positions.size()));
            layout.positions.emplace_back(abw.x, abw.y);
            layout.heights.push_back(abw.z);
        }
        layout.sticks.push_back(std::move(indices));
    }
    return layout;
}

StickOrder orderSticks(const StickLayout& layout)
{
    // Structure tensor of the stick directions, weighted by stick length, so that a stick
    // and its reverse count the same.
    double txx = 0.0, txy = 0.0, tyy = 0.0;
    for (const std::vector<int>& stick : layout.sticks) {
        if (stick.size() < 2) continue;
        const core::vec2 d = layout.positions[stick.back()] - layout.positions[stick.front()];
        const double length = d.length();
        if (length <= 0.0) continue;
        txx += d.x * d.x / length;
        txy += d.x * d.y / length;
        tyy += d.y * d.y / length;
    }
    StickOrder order;
    if (txx + tyy > 0.0) {
        const double angle = 0.5 * std::atan2(2.0 * txy, txx - tyy);  // of the major axis
        order.direction = {std::cos(angle), std::sin(angle)};
        order.across = {-order.direction.y, order.direction.x};
    }
    std::vector<double> key(layout.sticks.size(), 0.0);
    for (int s = 0; s < static_cast<int>(layout.sticks.size()); ++s) {
        const core::vec2 d = stickDirection(layout, layout.sticks[s]);
        if (std::fabs(d.dot(order.direction)) < kMainStickCosine) continue;
        order.mainSticks.push_back(s);
        key[s] = stickCentre(layout, layout.sticks[s]).dot(order.across);
    }
    std::stable_sort(order.mainSticks.begin(), order.mainSticks.end(),
                     [&](int a, int b) { return key[a] < key[b]; });
    return order;
}

std::vector<std::vector<int>> envelopeStrips(const StickLayout& layout, const StickOrder& order)
{
    std::vector<std::vector<int>> oriented;
    for (int s : order.mainSticks) {
        std::vector<int> stick = layout.sticks[s];
        if (stickDirection(layout, stick).dot(order.direction) < 0.0)
            std::reverse(stick.begin(), stick.end());
        oriented.push_back(std::move(stick));
    }
    std::vector<std::vector<int>> strips;
    for (size_t k = 0; k + 1 < oriented.size(); ++k) {
        std::vector<int> loop = oriented[k];
        loop.insert(loop.end(), oriented[k + 1].rbegin(), oriented[k + 1].rend());
        strips.push_back(std::move(loop));
    }
    return strips;
}

std::vector<int> convexHull(const std::vector<core::vec2>& points, double keepWithin)
{
    std::vector<int> order(points.size());
    std::iota(order.begin(), order.end(), 0);
    std::sort(order.begin(), order.end(), [&](int a, int b) {
        return points[a].x < points[b].x || (points[a].x == points[b].x && points[a].y < points[b].y);
    });
    order.erase(std::unique(order.begin(), order.end(),
                            [&](int a, int b) { return points[a] == points[b]; }),
                order.end());
    if (order.size() < 3) return order;
    // Andrew's monotone chain, lower hull then upper hull. The middle of three corners
    // goes when it lies inside the line of the other two by more than `keepWithin` (by
    // any amount, collinear included, when it is 0).
    auto inside = [&](int a, int b, int c) {
        const double turn = cross(points[a], points[b], points[c]);
        return keepWithin > 0.0 ? turn < -keepWithin * (points[c] - points[a]).length() : turn <= 0.0;
    };
    std::vector<int> hull(2 * order.size());
    size_t k = 0;
    for (size_t i = 0; i < order.size(); ++i) {
        while (k >= 2 && inside(hull[k - 2], hull[k - 1], order[i])) --k;
        hull[k++] = order[i];
    }
    for (size_t i = order.size() - 1, lower = k + 1; i-- > 0;) {
        while (k >= lower && inside(hull[k - 2], hull[k - 1], order[i])) --k;
        hull[k++] = order[i];
    }
    hull.resize(k - 1);
    return hull;
}

std::vector<Stick> expandSticks(const std::vector<Stick>& sticks, const PlaneFrame& frame,
                                double distance)
{
    if (!(distance > 0.0) || !frame.valid) return sticks;
    std::vector<Stick> expanded;
    for (const Stick& stick : sticks) {
        if (stick.size() < 2) {
            expanded.push_back(stick);
            continue;
        }
        Stick longer;
        longer.push_back(extendedEnd(stick[1], stick[0], distance));
        longer.insert(longer.end(), stick.begin(), stick.end());
        longer.push_back(extendedEnd(stick[stick.size() - 2], stick.back(), distance));
        expanded.push_back(std::move(longer));
    }
    const StickOrder order = orderSticks(layoutSticks(expanded, frame));
    if (order.mainSticks.size() < 2) return expanded;
    const core::vec3 outward =
        (frame.along * order.across.x + frame.down * order.across.y) * distance;
    Stick first = expanded[order.mainSticks.front()];
    Stick last = expanded[order.mainSticks.back()];
    for (core::vec3& p : first) p -= outward;
    for (core::vec3& p : last) p += outward;
    expanded.push_back(std::move(first));
    expanded.push_back(std::move(last));
    return expanded;
}

std::vector<int> hullOutline(const std::vector<core::vec2>& positions, double tolerance)
{
    std::vector<int> loose = convexHull(positions, kHullOutlineTolerance * spanOf(positions));
    if (isSimpleLoop(positions, loose)) return loose;
    return convexHull(positions, tolerance);
}

} // namespace fault::surface
