#include "znsectioncrossing.h"

#include <algorithm>
#include <cmath>

#include <core/stickrules.h>
#include <core/vec2.h>

namespace {

// One stick as a range of the vertex array.
struct StickSpan {
    int first = 0;  // vertex index of the stick's first point
    int size = 0;   // number of points
};

// Vertex index of the k-th point of a stick, read backwards when `reversed`.
int stickVertex(const StickSpan& s, int k, bool reversed)
{
    return reversed ? s.first + s.size - 1 - k : s.first + k;
}

// True when stick b runs against stick a: joining first to last and last to first is
// shorter than joining first to first and last to last.
bool runsAgainst(const core::Array<core::vec3>& v, const StickSpan& a, const StickSpan& b)
{
    const core::vec3& a0 = v[a.first];
    const core::vec3& a1 = v[a.first + a.size - 1];
    const core::vec3& b0 = v[b.first];
    const core::vec3& b1 = v[b.first + b.size - 1];
    const double straight = (a0 - b0).length() + (a1 - b1).length();
    const double crossed = (a0 - b1).length() + (a1 - b0).length();
    return crossed < straight;
}

// Triangles of the strip between two sticks, advancing along the stick whose next
// diagonal is the shorter one.
void triangulateStrip(const core::Array<core::vec3>& v, const StickSpan& a, const StickSpan& b,
                      core::Array<core::Triplet>& triangles)
{
    const bool reversed = runsAgainst(v, a, b);
    int i = 0;  // position on stick a
    int j = 0;  // position on stick b (read backwards when reversed)
    while (i < a.size - 1 || j < b.size - 1) {
        const int ai = stickVertex(a, i, false);
        const int bj = stickVertex(b, j, reversed);
        bool advanceA = false;
        if (j == b.size - 1) {
            advanceA = true;
        } else if (i < a.size - 1) {
            const int aNext = stickVertex(a, i + 1, false);
            const int bNext = stickVertex(b, j + 1, reversed);
            advanceA = (v[aNext] - v[bj]).length() < (v[ai] - v[bNext]).length();
        }
        if (advanceA) {
            triangles.add(core::Triplet(ai, stickVertex(a, i + 1, false), bj));
            ++i;
        } else {
            triangles.add(core::Triplet(ai, stickVertex(b, j + 1, reversed), bj));
            ++j;
        }
    }
}

// A vertical panel of the section: the plane through one polyline segment.
struct Panel {
    core::vec2 origin;     // first node, map coordinates
    core::vec2 direction;  // unit vector towards the second node
    double length = 0.0;   // distance between the two nodes

    // Signed distance of a map position to the panel's plane.
    double side(const core::vec2& m) const
    {
        const core::vec2 q = m - origin;
        return direction.x * q.y - direction.y * q.x;
    }
    // Position of a map position along the panel, 0 at the first node.
    double along(const core::vec2& m) const { return (m - origin).dot(direction); }
};

// Where edge (p, q) crosses the plane; vertices are taken in index order so that the
// two triangles sharing an edge compute the very same point.
core::vec3 edgeCrossing(const core::Array<core::vec3>& v, const double* side, int p, int q)
{
    if (q < p) std::swap(p, q);
    const double t = side[p] / (side[p] - side[q]);  // fraction of the way from p to q
    return v[p] + (v[q] - v[p]) * t;
}

// Clips the parameter range [w0, w1] of a segment to lo <= a + w (b - a) <= hi.
bool clipRange(double a, double b, double lo, double hi, double& w0, double& w1)
{
    const double delta = b - a;
    if (delta == 0.0) return a >= lo && a <= hi;
    double wLo = (lo - a) / delta;  // parameter where the value reaches lo
    double wHi = (hi - a) / delta;  // parameter where the value reaches hi
    if (wLo > wHi) std::swap(wLo, wHi);
    w0 = std::max(w0, wLo);
    w1 = std::min(w1, wHi);
    return w0 <= w1;
}

// The part of segment (x, y) inside the panel's width and the section's height.
bool clipToPanel(const Panel& panel, const geom::RandomLine& section, core::vec3& x,
                 core::vec3& y)
{
    double w0 = 0.0;
    double w1 = 1.0;
    const double sx = panel.along(section.mapPosition(x));
    const double sy = panel.along(section.mapPosition(y));
    if (!clipRange(sx, sy, 0.0, panel.length, w0, w1)) return false;
    if (!clipRange(section.height(x), section.height(y), section.verticalMin,
                   section.verticalMax, w0, w1))
        return false;
    const core::vec3 d = y - x;
    const core::vec3 clippedStart = x + d * w0;
    y = x + d * w1;
    x = clippedStart;
    return true;
}

struct Segment {
    core::vec3 a;
    core::vec3 b;
};

// Crossing segments of every triangle with one panel, appended to `out`.
void crossPanel(const core::Array<core::vec3>& v, const core::Array<core::Triplet>& triangles,
                const geom::RandomLine& section, const Panel& panel, double tolerance,
                core::Array<Segment>& out)
{
    core::Array<double> side(v.size());  // signed distance of each vertex to the plane
    side.resize(v.size());
    for (int i = 0; i < v.size(); ++i) side[i] = panel.side(section.mapPosition(v[i]));

    for (const core::Triplet& t : triangles) {
        const int idx[3] = {t.x, t.y, t.z};
        if (std::any_of(idx, idx + 3, [&](int k) { return k < 0 || k >= v.size(); })) continue;
        // A vertex on the plane counts as lying on the positive side, so a triangle that
        // only touches the plane crosses nothing and a shared edge is counted once.
        core::vec3 ends[2];
        int found = 0;
        for (int e = 0; e < 3; ++e) {
            const int p = idx[e];
            const int q = idx[(e + 1) % 3];
            if ((side[p] < 0.0) != (side[q] < 0.0) && found < 2)
                ends[found++] = edgeCrossing(v, side.data(), p, q);
        }
        if (found != 2 || !clipToPanel(panel, section, ends[0], ends[1])) continue;
        if ((ends[1] - ends[0]).length() <= tolerance) continue;
        out.add(Segment{ends[0], ends[1]});
    }
}

// Marks in `used` every segment that repeats an earlier one: a crossing along the
// vertical line of a node between two panels is found by both panels.
void markRepeatedSegments(const core::Array<Segment>& segments, double tolerance,
                          core::Array<char>& used)
{
    auto near = [tolerance](const core::vec3& p, const core::vec3& q) {
        return (p - q).length() <= tolerance;
    };
    for (int s = 0; s < segments.size(); ++s)
        for (int k = 0; k < s && !used[s]; ++k)
            if ((near(segments[k].a, segments[s].a) && near(segments[k].b, segments[s].b)) ||
                (near(segments[k].a, segments[s].b) && near(segments[k].b, segments[s].a)))
                used[s] = 1;
}

// Joins segments that share end points into polylines, each segment used once.
void chainSegments(const core::Array<Segment>& segments, double tolerance,
                   core::MultiArray<core::vec3>& polylines)
{
    core::Array<char> used(segments.size());
    used.fill(segments.size(), 0);
    markRepeatedSegments(segments, tolerance, used);
    auto near = [tolerance](const core::vec3& p, const core::vec3& q) {
        return (p - q).length() <= tolerance;
    };
    for (int s = 0; s < segments.size(); ++s) {
        if (used[s]) continue;
        used[s] = 1;
        core::Array<core::vec3> chain(16);
        chain.add(segments[s].a);
        chain.add(segments[s].b);
        // Grow the tail, then the head, until no unused segment touches either end.
        for (bool atTail : {true, false}) {
            bool grown = true;
            while (grown) {
                grown = false;
                const core::vec3 end = atTail ? chain.last() : chain[0];
                for (int k = 0; k < segments.size() && !grown; ++k) {
                    if (used[k]) continue;
                    const bool fromA = near(segments[k].a, end);
                    if (!fromA && !near(segments[k].b, end)) continue;
                    const core::vec3 next = fromA ? segments[k].b : segments[k].a;
                    if (atTail)
                        chain.add(next);
                    else
                        chain.insert(0, next);
                    used[k] = 1;
                    grown = true;
                }
            }
        }
        const int row = polylines.addArray();
        for (const core::vec3& p : chain) polylines.addElement(row, p, false);
    }
}

} // namespace

void ZNSectionCrossing::triangulateSticks(const core::PointWithBool* points, int count,
                                          core::Array<core::vec3>& vertices,
                                          core::Array<core::Triplet>& triangles)
{
    vertices.clear();
    triangles.clear();
    if (!points || count <= 0) return;

    // Hand-picked entries only; automatic ones drop out, separators stay.
    core::Array<core::PointWithBool> hand(count);
    for (int i = 0; i < count; ++i)
        if (!points[i].flag || points[i].isSeparator()) hand.add(points[i]);

    core::Array<StickSpan> spans(8);
    for (core::sticks::StickRange r = core::sticks::nextStick(hand.data(), hand.size(), 0);
         r.isValid(); r = core::sticks::nextStick(hand.data(), hand.size(), r.last + 1)) {
        spans.add(StickSpan{vertices.size(), r.size()});
        for (int i = r.first; i <= r.last; ++i) vertices.add(hand[i].position());
    }
    for (int s = 0; s + 1 < spans.size(); ++s)
        triangulateStrip(vertices, spans[s], spans[s + 1], triangles);
}

void ZNSectionCrossing::crossSection(const core::Array<core::vec3>& vertices,
                                     const core::Array<core::Triplet>& triangles,
                                     const geom::RandomLine& section,
                                     core::MultiArray<core::vec3>& polylines)
{
    polylines.init(0, core::MultiArray<core::vec3>::kDefaultGrowthStep);
    if (!section.isValid() || vertices.empty() || triangles.empty()) return;

    double scale = 1.0;  // largest coordinate magnitude, for the join tolerance
    for (const core::vec3& p : vertices)
        scale = std::max({scale, std::fabs(p.x), std::fabs(p.y), std::fabs(p.z)});
    const double tolerance = kJoinTolerance * scale;

    core::Array<Segment> segments(64);
    for (int k = 0; k + 1 < section.nodes.size(); ++k) {
        const core::vec2 a = section.nodes[k];
        const core::vec2 ab = section.nodes[k + 1] - a;
        const double length = ab.length();
        if (length <= 0.0) continue;
        const Panel panel{a, ab / length, length};
        crossPanel(vertices, triangles, section, panel, tolerance, segments);
    }
    chainSegments(segments, tolerance, polylines);
}
