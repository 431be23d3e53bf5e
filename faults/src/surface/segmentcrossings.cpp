#include "surface/segmentcrossings.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <utility>

namespace fault::surface {

namespace {

using Edge = std::pair<int, int>;  // point indices, smaller first

Edge undirected(int a, int b) { return a < b ? Edge(a, b) : Edge(b, a); }

constexpr double kMaxPieces = 1e6;  // an edge is not cut in more pieces than this

double cross(const core::vec2& a, const core::vec2& b) { return a.x * b.y - a.y * b.x; }

// Parameter along pq of the foot of `x` when `x` lies within `tolerance` of the inside of
// segment pq (not at its ends); -1 otherwise.
double nearInside(const core::vec2& p, const core::vec2& q, const core::vec2& x, double tolerance)
{
    const core::vec2 d = q - p;
    const double length2 = d.dot(d);
    if (length2 == 0.0) return -1.0;
    const double t = (x - p).dot(d) / length2;
    const core::vec2 offset = x - (p + d * t);
    const double margin = tolerance / std::sqrt(length2);  // ends excluded
    return t > margin && t < 1.0 - margin && offset.dot(offset) <= tolerance * tolerance ? t : -1.0;
}

// Parameters (t along pq, u along rs) of a proper crossing of two segments; false when
// they do not cross strictly inside both.
bool properCrossing(const core::vec2& p, const core::vec2& q, const core::vec2& r,
                    const core::vec2& s, double& t, double& u)
{
    const core::vec2 d1 = q - p, d2 = s - r;
    const double denominator = cross(d1, d2);
    if (denominator == 0.0) return false;  // parallel or collinear
    t = cross(r - p, d2) / denominator;
    u = cross(r - p, d1) / denominator;
    return t > 0.0 && t < 1.0 && u > 0.0 && u < 1.0;
}


// Every segment and loop edge once, in the order of their ends. The edges are sorted as
// single integers, the smaller end in the high half: the same order as the pairs' (point
// indices are never negative), at less cost per comparison.
std::vector<Edge> constraintEdges(const PlanarInput& input)
{
    auto key = [](int a, int b) {
        const Edge e = undirected(a, b);
        return static_cast<uint64_t>(static_cast<uint32_t>(e.first)) << 32 | static_cast<uint32_t>(e.second);
    };
    std::vector<uint64_t> keys;
    size_t count = input.segments.size();
    for (const auto& loop : input.domainLoops) count += loop.size();
    keys.reserve(count);
    for (const auto& s : input.segments)
        if (s[0] != s[1]) keys.push_back(key(s[0], s[1]));
    for (const auto& loop : input.domainLoops)
        for (size_t k = 0; loop.size() >= 2 && k < loop.size(); ++k)
            if (loop[k] != loop[(k + 1) % loop.size()]) keys.push_back(key(loop[k], loop[(k + 1) % loop.size()]));
    std::sort(keys.begin(), keys.end());
    keys.erase(std::unique(keys.begin(), keys.end()), keys.end());
    std::vector<Edge> edges;
    edges.reserve(keys.size());
    for (const uint64_t k : keys) edges.emplace_back(static_cast<int>(k >> 32), static_cast<int>(k & 0xffffffffu));
    return edges;
}

// Rewrites the segments and loops of `input` through the points that split their edges:
// `walk(from, to, out)` appends to `out` the points after `from` on the way to `to`,
// ending with `to`.
template <typename Walk>
void rewriteThrough(PlanarInput& input, const Walk& walk)
{
    std::vector<std::array<int, 2>> segments;
    segments.reserve(input.segments.size());
    std::vector<int> path;
    for (const auto& s : input.segments) {
        path.assign(1, s[0]);
        walk(s[0], s[1], path);
        for (size_t k = 0; k + 1 < path.size(); ++k) segments.push_back({path[k], path[k + 1]});
    }
    input.segments = std::move(segments);
    for (auto& loop : input.domainLoops) {
        std::vector<int> rewritten;
        for (size_t k = 0; k < loop.size(); ++k) {
            rewritten.push_back(loop[k]);
            walk(loop[k], loop[(k + 1) % loop.size()], rewritten);
            rewritten.pop_back();  // the next corner starts the next edge
        }
        loop = std::move(rewritten);
    }
}

// Rewrites the segments and loops of `input` through the points that split `edges`:
// `splits[i]` holds (parameter along edges[i] from its first point, point index).
void rewriteThroughSplits(PlanarInput& input, const std::vector<Edge>& edges,
                          std::vector<std::vector<std::pair<double, int>>>& splits)
{
    // The split edges, their split points in order and without repeats, the edges ordered
    // by their ends for lookups.
    std::vector<int> byEnds;
    for (size_t i = 0; i < edges.size(); ++i) {
        auto& split = splits[i];
        if (split.empty()) continue;
        std::sort(split.begin(), split.end());
        split.erase(std::unique(split.begin(), split.end(),
                                [](const auto& a, const auto& b) { return a.second == b.second; }),
                    split.end());
        byEnds.push_back(static_cast<int>(i));
    }
    if (byEnds.empty()) return;
    std::sort(byEnds.begin(), byEnds.end(), [&](int a, int b) { return edges[a] < edges[b]; });
    rewriteThrough(input, [&](int from, int to, std::vector<int>& out) {
        const Edge key = undirected(from, to);
        const auto found = std::lower_bound(byEnds.begin(), byEnds.end(), key,
                                            [&](int i, const Edge& e) { return edges[i] < e; });
        if (found != byEnds.end() && edges[*found] == key) {
            const auto& split = splits[*found];  // ordered from the edge's smaller end
            if (from == key.first)
                for (auto it = split.begin(); it != split.end(); ++it) out.push_back(it->second);
            else
                for (auto it = split.rbegin(); it != split.rend(); ++it) out.push_back(it->second);
        }
        out.push_back(to);
    });
}

} // namespace

void splitConstraints(PlanarInput& input, double tolerance)
{
    std::vector<Edge> edges = constraintEdges(input);

    // The edges' boxes, the edges sorted by their boxes' left sides.
    struct Box {
        double xLow, xHigh, yLow, yHigh;
    };
    const auto& pos = input.positions;
    auto boxOf = [&pos](const Edge& e) {
        const core::vec2 &a = pos[e.first], &b = pos[e.second];
        return Box{std::min(a.x, b.x), std::max(a.x, b.x), std::min(a.y, b.y), std::max(a.y, b.y)};
    };
    std::vector<std::pair<double, Edge>> byLeft;
    byLeft.reserve(edges.size());
    for (const Edge& e : edges) byLeft.emplace_back(boxOf(e).xLow, e);
    std::sort(byLeft.begin(), byLeft.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
    std::vector<Box> boxes;
    boxes.reserve(edges.size());
    for (size_t i = 0; i < edges.size(); ++i) {
        edges[i] = byLeft[i].second;
        boxes.push_back(boxOf(edges[i]));
    }

    const int inputPoints = static_cast<int>(pos.size());  // before crossing points are added
    std::vector<std::vector<std::pair<double, int>>> splits(edges.size());  // (parameter, point)
    for (size_t i = 0; i < edges.size(); ++i)
        for (size_t j = i + 1; j < edges.size() && boxes[j].xLow <= boxes[i].xHigh; ++j) {
            if (boxes[j].yLow > boxes[i].yHigh || boxes[j].yHigh < boxes[i].yLow) continue;
            const Edge& a = edges[i];
            const Edge& b = edges[j];
            if (a.first == b.first || a.first == b.second || a.second == b.first || a.second == b.second)
                continue;
            double t = 0.0, u = 0.0;
            if (!properCrossing(pos[a.first], pos[a.second], pos[b.first], pos[b.second], t, u))
                continue;
            const double ha = input.heights[a.first] + t * (input.heights[a.second] - input.heights[a.first]);
            const double hb = input.heights[b.first] + u * (input.heights[b.second] - input.heights[b.first]);
            const int point = static_cast<int>(input.positions.size());
            input.positions.push_back(pos[a.first] + (pos[a.second] - pos[a.first]) * t);
            input.heights.push_back(0.5 * (ha + hb));
            splits[i].emplace_back(t, point);
            splits[j].emplace_back(u, point);
        }

    // Points lying on an edge's inside: the input points, swept along the first axis.
    std::vector<int> byX(static_cast<size_t>(inputPoints));
    for (int i = 0; i < inputPoints; ++i) byX[i] = i;
    std::sort(byX.begin(), byX.end(), [&](int a, int b) { return pos[a].x < pos[b].x; });
    for (size_t i = 0; i < edges.size(); ++i) {
        const Edge& e = edges[i];
        const Box& box = boxes[i];
        auto first = std::lower_bound(byX.begin(), byX.end(), box.xLow - tolerance,
                                      [&](int k, double x) { return pos[k].x < x; });
        for (auto it = first; it != byX.end() && pos[*it].x <= box.xHigh + tolerance; ++it) {
            if (pos[*it].y < box.yLow - tolerance || pos[*it].y > box.yHigh + tolerance) continue;
            if (*it == e.first || *it == e.second) continue;
            const double t = nearInside(pos[e.first], pos[e.second], pos[*it], tolerance);
            if (t > 0.0) splits[i].emplace_back(t, *it);
        }
    }

    rewriteThroughSplits(input, edges, splits);
}

void subdivideConstraints(PlanarInput& input, double maxLength)
{
    if (!(maxLength > 0.0)) return;
    const std::vector<Edge> edges = constraintEdges(input);  // ordered by their ends
    // The edges from point p (as their smaller end) are edges[edgesFrom[p]] to
    // edges[edgesFrom[p + 1] - 1]: a look-up scans the few of them.
    std::vector<int> edgesFrom(input.positions.size() + 1, 0);
    for (const Edge& e : edges) ++edgesFrom[static_cast<size_t>(e.first) + 1];
    for (size_t p = 1; p < edgesFrom.size(); ++p) edgesFrom[p] += edgesFrom[p - 1];
    // The points cutting edges[i] are the points firstCut[i] to firstCut[i + 1] - 1, in
    // order from the edge's first end: one list for all, not one per edge.
    std::vector<int> firstCut(edges.size() + 1);
    for (size_t i = 0; i < edges.size(); ++i) {
        firstCut[i] = static_cast<int>(input.positions.size());
        const auto [a, b] = edges[i];
        const core::vec2 from = input.positions[a], along = input.positions[b] - from;
        const double fromHeight = input.heights[a], rise = input.heights[b] - fromHeight;
        const double pieces = std::ceil(along.length() / maxLength);
        for (int k = 1; k < pieces && pieces <= kMaxPieces; ++k) {
            const double t = k / pieces;
            input.positions.push_back(from + along * t);
            input.heights.push_back(fromHeight + rise * t);
        }
    }
    firstCut[edges.size()] = static_cast<int>(input.positions.size());
    rewriteThrough(input, [&](int from, int to, std::vector<int>& out) {
        const Edge key = undirected(from, to);
        int i = edgesFrom[key.first];
        while (i < edgesFrom[key.first + 1] && edges[i].second != key.second) ++i;
        if (i < edgesFrom[key.first + 1]) {
            if (from == key.first)
                for (int k = firstCut[i]; k < firstCut[i + 1]; ++k) out.push_back(k);
            else
                for (int k = firstCut[i + 1] - 1; k >= firstCut[i]; --k) out.push_back(k);
        }
        out.push_back(to);
    });
}

} // namespace fault::surface
