#include "surface/gridsurface.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <utility>

namespace fault::surface {

namespace {

constexpr double kInsideTolerance = 1e-9;   // barycentric slack when sampling triangles
constexpr double kWeldTolerance = 1e-9;     // relative to the grid extent
constexpr double kSliverArea = 1e-12;       // relative to a cell's area

using Grid = SampleGrid;

double cross(const core::vec2& o, const core::vec2& a, const core::vec2& b)
{
    return (a.x - o.x) * (b.y - o.y) - (a.y - o.y) * (b.x - o.x);
}

bool makeGrid(const std::vector<core::vec2>& hull, const GridSettings& settings, Grid& grid)
{
    if (!(settings.stepA > 0.0) || !(settings.stepB > 0.0) || settings.maxNodes < 4) return false;
    core::vec2 low = hull.front(), high = hull.front();
    for (const core::vec2& p : hull) {
        low = {std::min(low.x, p.x), std::min(low.y, p.y)};
        high = {std::max(high.x, p.x), std::max(high.y, p.y)};
    }
    double stepA = settings.stepA, stepB = settings.stepB;
    const double cellsA = std::ceil((high.x - low.x) / stepA);
    const double cellsB = std::ceil((high.y - low.y) / stepB);
    const double nodes = (cellsA + 1.0) * (cellsB + 1.0);
    if (!std::isfinite(nodes)) return false;
    if (nodes > settings.maxNodes) {
        const double coarsen = std::sqrt(nodes / settings.maxNodes);
        stepA *= coarsen;
        stepB *= coarsen;
    }
    grid.a0 = low.x;
    grid.b0 = low.y;
    grid.stepA = stepA;
    grid.stepB = stepB;
    grid.na = std::max(1, static_cast<int>(std::ceil((high.x - low.x) / stepA)));
    grid.nb = std::max(1, static_cast<int>(std::ceil((high.y - low.y) / stepB)));
    return true;
}

bool insideHull(const std::vector<core::vec2>& hull, const core::vec2& p)
{
    for (size_t k = 0; k < hull.size(); ++k)
        if (cross(hull[k], hull[(k + 1) % hull.size()], p) < 0.0) return false;
    return true;
}

// The part of the convex polygon `polygon` inside the hull (Sutherland-Hodgman).
std::vector<core::vec2> clipToHull(std::vector<core::vec2> polygon,
                                   const std::vector<core::vec2>& hull)
{
    for (size_t k = 0; k < hull.size() && !polygon.empty(); ++k) {
        const core::vec2& a = hull[k];
        const core::vec2& b = hull[(k + 1) % hull.size()];
        std::vector<core::vec2> kept;
        for (size_t i = 0; i < polygon.size(); ++i) {
            const core::vec2& p = polygon[i];
            const core::vec2& q = polygon[(i + 1) % polygon.size()];
            const double sp = cross(a, b, p);  // >= 0: inside
            const double sq = cross(a, b, q);
            if (sp >= 0.0) kept.push_back(p);
            if ((sp >= 0.0) != (sq >= 0.0)) kept.push_back(p + (q - p) * (sp / (sp - sq)));
        }
        polygon = std::move(kept);
    }
    return polygon;
}

double polygonArea(const std::vector<core::vec2>& polygon)
{
    double twice = 0.0;
    for (size_t i = 0; i < polygon.size(); ++i)
        twice += cross(core::vec2(), polygon[i], polygon[(i + 1) % polygon.size()]);
    return 0.5 * twice;
}

// The point of the closed triangle (a, b, c) nearest to `p`.
core::vec2 nearestInTriangle(const core::vec2& p, const core::vec2& a, const core::vec2& b,
                             const core::vec2& c)
{
    const double orientation = cross(a, b, c);
    if (orientation != 0.0 && cross(a, b, p) * orientation >= 0.0 &&
        cross(b, c, p) * orientation >= 0.0 && cross(c, a, p) * orientation >= 0.0)
        return p;
    core::vec2 nearest = a;
    double best = INFINITY;
    const core::vec2 corners[3] = {a, b, c};
    for (int k = 0; k < 3; ++k) {
        const core::vec2& e0 = corners[k];
        const core::vec2 e = corners[(k + 1) % 3] - e0;
        const double length2 = e.dot(e);
        const double t = length2 > 0.0 ? std::clamp((p - e0).dot(e) / length2, 0.0, 1.0) : 0.0;
        const core::vec2 q = e0 + e * t;
        if ((p - q).dot(p - q) < best) {
            best = (p - q).dot(p - q);
            nearest = q;
        }
    }
    return nearest;
}

// The heights of the interpolation anywhere near its hull, its triangles bucketed by the
// grid cells their boxes overlap.
class NearestHeight {
public:
    NearestHeight(const PlanarMesh& interpolation, const Grid& grid)
        : m_mesh(interpolation), m_grid(grid), m_buckets(static_cast<size_t>(grid.na) * grid.nb)
    {
        for (int t = 0; t < static_cast<int>(interpolation.triangles.size()); ++t) {
            core::vec2 low = corner(t, 0), high = low;
            for (int k = 1; k < 3; ++k) {
                low = {std::min(low.x, corner(t, k).x), std::min(low.y, corner(t, k).y)};
                high = {std::max(high.x, corner(t, k).x), std::max(high.y, corner(t, k).y)};
            }
            for (int j = cellRow(low.y); j <= cellRow(high.y); ++j)
                for (int i = cellColumn(low.x); i <= cellColumn(high.x); ++i)
                    m_buckets[bucketIndex(i, j)].push_back(t);
        }
    }

    // The height at the point of the interpolation nearest to `p`: its own height inside
    // the hull, that of the nearest hull point outside. Looks in the cell of `p` (which
    // holds the triangle that contains it), then in the cells within a reach of
    // kSearchCells cells, then everywhere.
    double at(const core::vec2& p) const
    {
        double best = INFINITY, height = 0.0;
        for (int t : bucket(cellColumn(p.x), cellRow(p.y))) consider(t, p, best, height);
        const double onOutline = kOnOutline * std::min(m_grid.stepA, m_grid.stepB);
        if (best <= onOutline * onOutline) return height;  // inside, or on the outline
        const double reachA = kSearchCells * m_grid.stepA, reachB = kSearchCells * m_grid.stepB;
        for (int j = cellRow(p.y - reachB); j <= cellRow(p.y + reachB); ++j)
            for (int i = cellColumn(p.x - reachA); i <= cellColumn(p.x + reachA); ++i)
                for (int t : bucket(i, j)) consider(t, p, best, height);
        if (best == INFINITY)
            for (int t = 0; t < static_cast<int>(m_mesh.triangles.size()); ++t) consider(t, p, best, height);
        return height;
    }

private:
    static constexpr double kSearchCells = 1.5;
    static constexpr double kOnOutline = 1e-9;  // of a grid step: rounding off the outline

    size_t bucketIndex(int i, int j) const
    {
        return static_cast<size_t>(i) + static_cast<size_t>(m_grid.na) * static_cast<size_t>(j);
    }
    const std::vector<int>& bucket(int i, int j) const { return m_buckets[bucketIndex(i, j)]; }
    const core::vec2& corner(int t, int k) const { return m_mesh.positions[m_mesh.triangles[t][k]]; }
    int cellColumn(double a) const
    {
        return std::clamp(static_cast<int>(std::floor((a - m_grid.a0) / m_grid.stepA)), 0, m_grid.na - 1);
    }
    int cellRow(double b) const
    {
        return std::clamp(static_cast<int>(std::floor((b - m_grid.b0) / m_grid.stepB)), 0, m_grid.nb - 1);
    }

    void consider(int t, const core::vec2& p, double& best, double& height) const
    {
        const core::vec2 &p0 = corner(t, 0), &p1 = corner(t, 1), &p2 = corner(t, 2);
        const double area = cross(p0, p1, p2);
        if (area == 0.0) return;
        const core::vec2 q = nearestInTriangle(p, p0, p1, p2);
        const double d = (p - q).dot(p - q);
        if (d >= best) return;
        best = d;  // 0 inside the triangle
        const double w0 = std::clamp(cross(q, p1, p2) / area, 0.0, 1.0);  // barycentric
        const double w1 = std::clamp(cross(p0, q, p2) / area, 0.0, 1.0 - w0);
        const auto& tri = m_mesh.triangles[t];
        height = w0 * m_mesh.heights[tri[0]] + w1 * m_mesh.heights[tri[1]] +
                 (1.0 - w0 - w1) * m_mesh.heights[tri[2]];
    }

    const PlanarMesh& m_mesh;
    const Grid& m_grid;
    std::vector<std::vector<int>> m_buckets;  // triangles per cell, row by row
};

// Needed nodes that no triangle holds (just outside the hull) take the height of the
// nearest hull point.
void extrapolateNearest(const NearestHeight& nearest, const Grid& grid,
                        const std::vector<char>& needed, std::vector<double>& heights,
                        std::vector<char>& known)
{
    for (int j = 0; j <= grid.nb; ++j)
        for (int i = 0; i <= grid.na; ++i) {
            const int n = grid.node(i, j);
            if (!needed[n] || known[n]) continue;
            heights[n] = nearest.at(grid.position(i, j));
            known[n] = 1;
        }
}

// One pass of the triangular filter of half-length `half` along a (alongA) or b, over the
// needed nodes only, normalised by the weights of the nodes present.
void smoothAlong(const Grid& grid, const std::vector<char>& needed, int half, bool alongA,
                 std::vector<double>& heights)
{
    std::vector<double> out(heights);
    for (int j = 0; j <= grid.nb; ++j)
        for (int i = 0; i <= grid.na; ++i) {
            if (!needed[grid.node(i, j)]) continue;
            double sum = 0.0, weight = 0.0;
            for (int k = -half; k <= half; ++k) {
                const int ii = alongA ? i + k : i;
                const int jj = alongA ? j : j + k;
                if (ii < 0 || ii > grid.na || jj < 0 || jj > grid.nb) continue;
                const int n = grid.node(ii, jj);
                if (!needed[n]) continue;
                const double w = half + 1 - std::abs(k);
                sum += w * heights[n];
                weight += w;
            }
            out[grid.node(i, j)] = sum / weight;
        }
    heights = std::move(out);
}

// The triangles of the grid cut to the hull, with their points.
class GridTriangulator {
public:
    GridTriangulator(const Grid& grid, const std::vector<double>& heights,
                     const NearestHeight& interpolation, PlanarMesh& out)
        : m_grid(grid), m_heights(heights), m_interpolation(interpolation), m_out(out),
          m_nodeIndex(grid.nodeCount(), -1)
    {
        m_weld = kWeldTolerance * std::max({grid.na * grid.stepA, grid.nb * grid.stepB, 1e-300});
    }

    void wholeCell(int i, int j)
    {
        const int c00 = nodeVertex(i, j), c10 = nodeVertex(i + 1, j);
        const int c11 = nodeVertex(i + 1, j + 1), c01 = nodeVertex(i, j + 1);
        m_out.triangles.push_back({c00, c10, c11});
        m_out.triangles.push_back({c00, c11, c01});
    }

    void cutCell(int i, int j, const std::vector<core::vec2>& polygon)
    {
        std::vector<int> corners;
        for (const core::vec2& p : polygon) corners.push_back(vertexAt(i, j, p));
        for (size_t k = 1; k + 1 < corners.size(); ++k)
            m_out.triangles.push_back({corners[0], corners[k], corners[k + 1]});
    }

private:
    int nodeVertex(int i, int j)
    {
        int& index = m_nodeIndex[m_grid.node(i, j)];
        if (index < 0) index = addPoint(m_grid.position(i, j), m_heights[m_grid.node(i, j)]);
        return index;
    }

    // A corner of a cut cell: the grid node it is, or a point of the hull's outline (or of
    // a grid line inside it) welded with the equal points of the neighbouring cells, whose
    // height is the interpolation's own there: the outline follows the sticks unsmoothed.
    int vertexAt(int i, int j, const core::vec2& p)
    {
        for (int dj = 0; dj <= 1; ++dj)
            for (int di = 0; di <= 1; ++di)
                if (p == m_grid.position(i + di, j + dj)) return nodeVertex(i + di, j + dj);
        const std::pair<long long, long long> key(std::llround(p.x / m_weld),
                                                  std::llround(p.y / m_weld));
        const auto found = m_welded.find(key);
        if (found != m_welded.end()) return found->second;
        const int index = addPoint(p, m_interpolation.at(p));
        m_welded.emplace(key, index);
        return index;
    }

    int addPoint(const core::vec2& p, double h)
    {
        m_out.positions.push_back(p);
        m_out.heights.push_back(h);
        return static_cast<int>(m_out.positions.size()) - 1;
    }

    const Grid& m_grid;
    const std::vector<double>& m_heights;
    const NearestHeight& m_interpolation;
    PlanarMesh& m_out;
    std::vector<int> m_nodeIndex;  // output index of each node, -1 until used
    std::map<std::pair<long long, long long>, int> m_welded;
    double m_weld = 0.0;           // weld distance, plane units
};

} // namespace

void sampleTriangles(const PlanarMesh& interpolation, const SampleGrid& grid,
                     std::vector<double>& heights, std::vector<char>& known)
{
    for (const auto& t : interpolation.triangles) {
        const core::vec2& p0 = interpolation.positions[t[0]];
        const core::vec2& p1 = interpolation.positions[t[1]];
        const core::vec2& p2 = interpolation.positions[t[2]];
        const double area = cross(p0, p1, p2);
        if (area == 0.0) continue;
        // The triangle's box in node steps.
        const double lowA = (std::min({p0.x, p1.x, p2.x}) - grid.a0) / grid.stepA;
        const double highA = (std::max({p0.x, p1.x, p2.x}) - grid.a0) / grid.stepA;
        const double lowB = (std::min({p0.y, p1.y, p2.y}) - grid.b0) / grid.stepB;
        const double highB = (std::max({p0.y, p1.y, p2.y}) - grid.b0) / grid.stepB;
        const int i0 = std::max(0, static_cast<int>(std::floor(lowA)));
        const int i1 = std::min(grid.na, static_cast<int>(std::ceil(highA)));
        const int j0 = std::max(0, static_cast<int>(std::floor(lowB)));
        const int j1 = std::min(grid.nb, static_cast<int>(std::ceil(highB)));
        for (int j = j0; j <= j1; ++j)
            for (int i = i0; i <= i1; ++i) {
                const int n = grid.node(i, j);
                if (known[n]) continue;
                const core::vec2 p = grid.position(i, j);
                const double w0 = cross(p, p1, p2) / area;  // barycentric weights
                const double w1 = cross(p0, p, p2) / area;
                const double w2 = 1.0 - w0 - w1;
                if (w0 < -kInsideTolerance || w1 < -kInsideTolerance || w2 < -kInsideTolerance)
                    continue;
                heights[n] = w0 * interpolation.heights[t[0]] + w1 * interpolation.heights[t[1]] +
                             w2 * interpolation.heights[t[2]];
                known[n] = 1;
            }
    }
}

int oddFilterLength(int smoothFactor)
{
    const int length = std::max(1, smoothFactor);
    return length % 2 == 0 ? length + 1 : length;
}

bool griddedSurface(const PlanarMesh& interpolation, const std::vector<core::vec2>& hull,
                    const GridSettings& settings, PlanarMesh& surface)
{
    surface = PlanarMesh();
    Grid grid;
    if (hull.size() < 3 || interpolation.positions.empty() || !makeGrid(hull, settings, grid))
        return false;

    // Cells: whole (every corner inside the hull), cut, or outside.
    std::vector<char> needed(grid.nodeCount(), 0);
    std::vector<std::pair<int, std::vector<core::vec2>>> cells;  // cell, its part (empty: whole)
    const double sliver = kSliverArea * grid.stepA * grid.stepB;
    for (int j = 0; j < grid.nb; ++j)
        for (int i = 0; i < grid.na; ++i) {
            const std::vector<core::vec2> square = {grid.position(i, j), grid.position(i + 1, j),
                                                    grid.position(i + 1, j + 1),
                                                    grid.position(i, j + 1)};
            const bool whole = std::all_of(square.begin(), square.end(),
                                           [&](const core::vec2& p) { return insideHull(hull, p); });
            std::vector<core::vec2> part;
            if (!whole) {
                part = clipToHull(square, hull);
                if (part.size() < 3 || polygonArea(part) <= sliver) continue;
            }
            cells.emplace_back(grid.node(i, j), std::move(part));
            for (int n : {grid.node(i, j), grid.node(i + 1, j), grid.node(i, j + 1),
                          grid.node(i + 1, j + 1)})
                needed[n] = 1;
        }

    std::vector<double> heights(grid.nodeCount(), 0.0);
    std::vector<char> known(grid.nodeCount(), 0);
    sampleTriangles(interpolation, grid, heights, known);
    const NearestHeight nearest(interpolation, grid);
    extrapolateNearest(nearest, grid, needed, heights, known);
    const int half = oddFilterLength(settings.filterLength) / 2;
    if (half > 0) {
        smoothAlong(grid, needed, half, true, heights);
        smoothAlong(grid, needed, half, false, heights);
    }

    GridTriangulator triangulator(grid, heights, nearest, surface);
    for (const auto& [node, part] : cells) {
        const int i = node % grid.width(), j = node / grid.width();
        if (part.empty())
            triangulator.wholeCell(i, j);
        else
            triangulator.cutCell(i, j, part);
    }
    return !surface.triangles.empty();
}

} // namespace fault::surface
