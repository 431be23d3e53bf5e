#include "surface/meshingdomain.h"

#include <map>
#include <utility>

namespace fault::surface {

namespace {
constexpr int kMinimumEnvelop = 1;
} // namespace

bool prepareMeshing(const std::vector<Stick>& sticks, int method, double extrapolation,
                    MeshingInput& input)
{
    const std::vector<core::vec3> points = allPoints(sticks);
    const PlaneFrame frame = fitPlaneFrame(points.data(), static_cast<int>(points.size()));
    if (!frame.valid) return false;
    const bool minimum = method == kMinimumEnvelop;
    input.layout = layoutSticks(minimum && extrapolation != 0.0
                                    ? expandSticks(sticks, frame, extrapolation)
                                    : sticks,
                                frame);
    input.planar = PlanarInput();
    input.planar.positions = input.layout.positions;
    input.planar.heights = input.layout.heights;
    for (const std::vector<int>& stick : input.layout.sticks)
        for (size_t k = 0; k + 1 < stick.size(); ++k)
            input.planar.segments.push_back({stick[k], stick[k + 1]});
    if (minimum)
        input.planar.domainLoops = envelopeStrips(input.layout, orderSticks(input.layout));
    return true;
}

std::vector<std::vector<int>> boundaryLoops(const std::vector<std::array<int, 3>>& triangles)
{
    std::map<std::pair<int, int>, int> uses;  // undirected edge -> number of triangles
    for (const auto& t : triangles)
        for (int k = 0; k < 3; ++k) {
            const int a = t[k], b = t[(k + 1) % 3];
            ++uses[a < b ? std::make_pair(a, b) : std::make_pair(b, a)];
        }
    std::multimap<int, int> next;  // directed boundary edges, as the triangles run them
    for (const auto& t : triangles)
        for (int k = 0; k < 3; ++k) {
            const int a = t[k], b = t[(k + 1) % 3];
            if (uses[a < b ? std::make_pair(a, b) : std::make_pair(b, a)] == 1) next.emplace(a, b);
        }
    std::vector<std::vector<int>> loops;
    while (!next.empty()) {
        std::vector<int> loop{next.begin()->first};
        auto edge = next.begin();
        for (;;) {
            const int to = edge->second;
            next.erase(edge);
            if (to == loop.front()) break;
            loop.push_back(to);
            edge = next.find(to);
            if (edge == next.end()) break;  // an open chain: a broken triangulation
        }
        if (loop.size() >= 3) loops.push_back(std::move(loop));
    }
    return loops;
}

} // namespace fault::surface
