#include "surface/meshtools.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <utility>

namespace fault::surface {

namespace {

constexpr double kHalfPixel = 0.5;

bool corners(const core::Array<core::vec3>& points, const ZNFacette& f, core::vec3 out[3])
{
    for (int k = 0; k < 3; ++k) {
        if (f.index[k] >= static_cast<uint32_t>(points.size())) return false;
        out[k] = points[static_cast<int>(f.index[k])];
    }
    return true;
}

// Whether the triangle (2D, in x and y) meets the axis-aligned square of half side
// kHalfPixel around `centre`: separating axis test on the square's axes and the
// triangle's edge normals.
bool triangleMeetsPixel(const core::vec3 t[3], double cx, double cy)
{
    for (int axis = 0; axis < 2; ++axis) {
        const double c = axis == 0 ? cx : cy;
        const double lo = std::min({t[0][axis], t[1][axis], t[2][axis]});
        const double hi = std::max({t[0][axis], t[1][axis], t[2][axis]});
        if (lo > c + kHalfPixel || hi < c - kHalfPixel) return false;
    }
    for (int e = 0; e < 3; ++e) {
        const core::vec3& a = t[e];
        const core::vec3& b = t[(e + 1) % 3];
        const double nx = -(b.y - a.y), ny = b.x - a.x;  // edge normal
        const double third = nx * t[(e + 2) % 3].x + ny * t[(e + 2) % 3].y;
        const double edge = nx * a.x + ny * a.y;
        const double reach = kHalfPixel * (std::fabs(nx) + std::fabs(ny));  // square's extent
        const double centre = nx * cx + ny * cy;
        const double triLo = std::min(edge, third), triHi = std::max(edge, third);
        if (centre - reach > triHi || centre + reach < triLo) return false;
    }
    return true;
}

using EdgeKey = std::pair<uint32_t, uint32_t>;

EdgeKey edgeKey(uint32_t a, uint32_t b) { return a < b ? EdgeKey(a, b) : EdgeKey(b, a); }

// Chains segments given as pairs of node ids into polylines of node ids.
std::vector<std::vector<int>> chainSegments(const std::vector<std::pair<int, int>>& segments,
                                            int nodeCount)
{
    std::vector<std::vector<int>> touching(nodeCount);  // segment ids at each node
    for (int s = 0; s < static_cast<int>(segments.size()); ++s) {
        touching[segments[s].first].push_back(s);
        touching[segments[s].second].push_back(s);
    }
    std::vector<char> used(segments.size(), 0);
    std::vector<std::vector<int>> chains;
    auto walk = [&](int start) {
        std::vector<int> chain{start};
        int node = start;
        for (;;) {
            int next = -1;
            for (int s : touching[node])
                if (!used[s]) { next = s; break; }
            if (next < 0) break;
            used[next] = 1;
            node = segments[next].first == node ? segments[next].second : segments[next].first;
            chain.push_back(node);
        }
        if (chain.size() >= 2) chains.push_back(std::move(chain));
    };
    for (int n = 0; n < nodeCount; ++n)  // open pieces first, from an end
        if (touching[n].size() == 1) walk(n);
    for (int n = 0; n < nodeCount; ++n) walk(n);  // then closed ones
    return chains;
}

} // namespace

double meshArea(const core::Array<core::vec3>& points, const core::Array<ZNFacette>& facettes)
{
    // The corners are read in place rather than copied out as corners() does: this runs on
    // every mesh made.
    const uint32_t count = static_cast<uint32_t>(points.size());
    const core::vec3* point = points.data();
    double area = 0.0;
    for (const ZNFacette& f : facettes) {
        if (f.index[0] >= count || f.index[1] >= count || f.index[2] >= count) continue;
        const core::vec3& a = point[f.index[0]];
        area += 0.5 * (point[f.index[1]] - a).cross(point[f.index[2]] - a).length();
    }
    return area;
}

void rasterizeFacettes(const core::Array<core::vec3>& points,
                       const core::Array<ZNFacette>& facettes, const core::mat4& toGrid,
                       float value, img::Image& image)
{
    for (const ZNFacette& f : facettes) {
        core::vec3 t[3];
        if (!corners(points, f, t)) continue;
        for (core::vec3& p : t) p = toGrid.transformPoint(p);
        if (!std::isfinite(t[0].x + t[1].x + t[2].x + t[0].y + t[1].y + t[2].y)) continue;
        // Pixels whose squares the triangle's box reaches.
        const double lowC = std::min({t[0].x, t[1].x, t[2].x}) - kHalfPixel;
        const double highC = std::max({t[0].x, t[1].x, t[2].x}) + kHalfPixel;
        const double lowR = std::min({t[0].y, t[1].y, t[2].y}) - kHalfPixel;
        const double highR = std::max({t[0].y, t[1].y, t[2].y}) + kHalfPixel;
        const int c0 = std::max(0, static_cast<int>(std::ceil(lowC)));
        const int c1 = std::min(image.width() - 1, static_cast<int>(std::floor(highC)));
        const int r0 = std::max(0, static_cast<int>(std::ceil(lowR)));
        const int r1 = std::min(image.height() - 1, static_cast<int>(std::floor(highR)));
        for (int r = r0; r <= r1; ++r)
            for (int c = c0; c <= c1; ++c)
                if (triangleMeetsPixel(t, c, r)) image(c, r) = value;
    }
}

std::vector<std::vector<core::vec3>> cutSurface(const core::Array<core::vec3>& points,
                                                const core::Array<ZNFacette>& facettes,
                                                const geom::Plane& plane)
{
    std::vector<std::vector<core::vec3>> pieces;
    if (!plane.isValid()) return pieces;
    std::map<EdgeKey, int> nodeOfEdge;  // crossing point of each crossed edge
    std::vector<core::vec3> nodes;
    std::vector<std::pair<int, int>> segments;
    auto crossing = [&](uint32_t a, uint32_t b) {
        const EdgeKey key = edgeKey(a, b);
        const auto found = nodeOfEdge.find(key);
        if (found != nodeOfEdge.end()) return found->second;
        const core::vec3& p = points[static_cast<int>(key.first)];
        const core::vec3& q = points[static_cast<int>(key.second)];
        const double dp = plane.signedDistance(p), dq = plane.signedDistance(q);
        nodes.push_back(p + (q - p) * (dp / (dp - dq)));
        nodeOfEdge.emplace(key, static_cast<int>(nodes.size()) - 1);
        return static_cast<int>(nodes.size()) - 1;
    };
    for (const ZNFacette& f : facettes) {
        core::vec3 t[3];
        if (!corners(points, f, t)) continue;
        bool positive[3];
        for (int k = 0; k < 3; ++k) positive[k] = plane.signedDistance(t[k]) >= 0.0;
        std::vector<int> ends;
        for (int k = 0; k < 3; ++k)
            if (positive[k] != positive[(k + 1) % 3])
                ends.push_back(crossing(f.index[k], f.index[(k + 1) % 3]));
        if (ends.size() == 2) segments.emplace_back(ends[0], ends[1]);
    }
    for (const std::vector<int>& chain : chainSegments(segments, static_cast<int>(nodes.size()))) {
        std::vector<core::vec3> piece;
        for (int n : chain) piece.push_back(nodes[n]);
        pieces.push_back(std::move(piece));
    }
    return pieces;
}

} // namespace fault::surface
