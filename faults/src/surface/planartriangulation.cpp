// The CGAL side of the surface code: kept in this one file because its templates are
// heavy to compile.
#include "surface/planartriangulation.h"

#include "surface/segmentcrossings.h"
#include "surface/sticklayout.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include <CGAL/Constrained_Delaunay_triangulation_2.h>
#include <CGAL/Delaunay_mesh_face_base_2.h>
#include <CGAL/Delaunay_mesh_size_criteria_2.h>
#include <CGAL/Delaunay_mesher_2.h>
#include <CGAL/Exact_predicates_inexact_constructions_kernel.h>
#include <CGAL/Spatial_sort_traits_adapter_2.h>
#include <CGAL/Triangulation_face_base_with_info_2.h>
#include <CGAL/Triangulation_vertex_base_with_info_2.h>
#include <CGAL/property_map.h>
#include <CGAL/spatial_sort.h>
#include <boost/container/small_vector.hpp>

namespace fault::surface {

namespace {

using Kernel = CGAL::Exact_predicates_inexact_constructions_kernel;

struct VertexData {
    double height = 0.0;
    int index = -1;            // in the output, once used
    int source = -1;           // the input point whose height this is (the first merged here)
    bool known = false;        // false for points the triangulation added
    bool constrained = false;  // an end of a constrained edge, once these are listed

    static VertexData withHeight(double height, int source = -1)
    {
        VertexData data;
        data.height = height;
        data.source = source;
        data.known = true;
        return data;
    }
};

struct FaceData {
    bool visited = false;  // by the domain marking
    int input = -1;        // index among the input triangles, once they are listed
    uint32_t queueStamp = 0;  // in the mesher's queue of bad faces under this stamp; 0: not
};

using VertexBase = CGAL::Triangulation_vertex_base_with_info_2<VertexData, Kernel>;
// Without the constrained Delaunay face base CGAL puts under its mesh faces by default:
// that one records what hides each face from the constraints, for Voronoi diagrams and
// mesh optimisation, 24 bytes a face this code never reads.
using FaceBase = CGAL::Delaunay_mesh_face_base_2<
    Kernel, CGAL::Constrained_triangulation_face_base_2<
                Kernel, CGAL::Triangulation_face_base_with_info_2<FaceData, Kernel>>>;
using Tds = CGAL::Triangulation_data_structure_2<VertexBase, FaceBase>;
// Exact predicates with inexact constructions: segments may cross.
using CdtBase = CGAL::Constrained_Delaunay_triangulation_2<Kernel, Tds, CGAL::Exact_predicates_tag>;

// The constrained triangulation as the mesher sees it: one that lists its constrained
// edges. Without such a list the mesher's set-up circulates around every vertex to find
// them, and most vertices are lattice seeds far from any; with it, the set-up visits the
// ends of the listed edges only. The list is made once the constraints are in, while the
// triangulation is small; it stays true while only points off the constraints are added
// (the lattice seeds), and the mesher reads it when it is set up. The splits the mesher
// reports later need no record.
class Cdt : public CdtBase {
public:
    using Constraint_hierarchy_tag = CGAL::Tag_true;
    using Subconstraint = std::pair<std::pair<Vertex_handle, Vertex_handle>, int>;
    using Subconstraint_iterator = std::vector<Subconstraint>::const_iterator;

    void listConstrainedEdges()
    {
        m_constrained.clear();
        for (auto e = finite_edges_begin(); e != finite_edges_end(); ++e)
            if (e->first->is_constrained(e->second)) {
                const Vertex_handle a = e->first->vertex(cw(e->second)), b = e->first->vertex(ccw(e->second));
                a->info().constrained = b->info().constrained = true;
                m_constrained.push_back({{a, b}, 0});
            }
    }
    Subconstraint_iterator subconstraints_begin() const { return m_constrained.begin(); }
    Subconstraint_iterator subconstraints_end() const { return m_constrained.end(); }
    void split_constraint(Vertex_handle, Vertex_handle, Vertex_handle) {}

private:
    std::vector<Subconstraint> m_constrained;
};

} // namespace
} // namespace fault::surface

// How CGAL's mesher levels reach the triangulation, as CGAL defines it for any
// triangulation but for the conflict zone's lists. The mesher builds a zone for every
// point it tries, and CGAL's zone keeps its faces and edges in linked lists: two
// allocations per face or edge, freed moments later. Here they are vectors with room
// for a usual zone in place.
template <>
struct CGAL::Triangulation_mesher_level_traits_2<fault::surface::Cdt>
    : public CGAL::Triangulation_ref_impl<fault::surface::Cdt> {
    using Tr = fault::surface::Cdt;
    using Triangulation = Tr;
    using Point = Tr::Point;
    using Vertex_handle = Tr::Vertex_handle;
    using Face_handle = Tr::Face_handle;
    using Edge = Tr::Edge;

    using Triangulation_ref_impl<Tr>::triangulation_ref_impl;

    Triangulation_mesher_level_traits_2(Tr& tr) : Triangulation_ref_impl<Tr>(tr) {}

    struct Zone {
        using Faces = boost::container::small_vector<Face_handle, 16>;
        using Edges = boost::container::small_vector<Edge, 16>;
        using Faces_iterator = Faces::iterator;
        using Edges_iterator = Edges::iterator;

        Tr::Locate_type locate_type;
        Face_handle fh;
        int i;
        Face_handle parent_face;  // the face whose circumcentre the point is, if it is one
        Faces faces;
        Edges boundary_edges;
    };

    Vertex_handle insert_impl(const Point& p, Zone& zone)
    {
        if (zone.locate_type == Tr::VERTEX) return zone.fh->vertex(zone.i);
        return triangulation_ref_impl().star_hole(p, zone.boundary_edges.begin(), zone.boundary_edges.end(),
                                                  zone.faces.begin(), zone.faces.end());
    }
};

namespace fault::surface {
namespace {

using Criteria = CGAL::Delaunay_mesh_size_criteria_2<Cdt>;
using Point = Cdt::Point;
using Vertex = Cdt::Vertex_handle;
using Face = Cdt::Face_handle;

// Marks the faces around `v` inside the domain: after a point is inserted in the domain,
// the faces made around it (constraints are never flipped, so they stay in the region
// the point fell in).
void markStarInDomain(const Cdt& cdt, Vertex v)
{
    Cdt::Face_circulator f = cdt.incident_faces(v), done(f);
    do {
        f->set_in_domain(true);
    } while (++f != done);
}

// The mesher, assembled from CGAL's refinement levels as CGAL's own Delaunay mesher
// assembles them but for the queue of bad faces. CGAL keeps them in a two-way map
// (ordered by quality, and by the faces' corner points for look-ups) and looks up every
// face the mesher replaces, bad or not: in the benchmark's meshes the map's upkeep took
// a tenth of the time. Here the bad faces wait in a binary heap, each face knows whether
// and under which stamp it waits, and an entry whose stamp was withdrawn is dropped when
// it reaches the top.
using EdgesLevel = CGAL::Mesh_2::Refine_edges_with_clusters<Cdt, CGAL::Mesh_2::Is_locally_conforming_Gabriel<Cdt>>;
using FacesLevelBase = CGAL::Mesh_2::Refine_faces_base<Cdt, Criteria, EdgesLevel>;

// The faces level's queue and the functions that use it, hiding the base class's (whose
// own map stays empty). Faces are refined worst first, ties in the order they were
// found, so that the order never depends on where faces lie in memory (ties are common
// among the faces of a lattice).
class HeapQueuedFaces : public FacesLevelBase {
public:
    using Quality = Criteria::Quality;
    using Zone = CGAL::Triangulation_mesher_level_traits_2<Cdt>::Zone;

    HeapQueuedFaces(Cdt& cdt, Criteria& criteria, EdgesLevel& edges) : FacesLevelBase(cdt, criteria, edges) {}

    void scan_triangulation_impl()
    {
        for (const Entry& e : m_heap)
            if (m_waiting[e.stamp]) e.face->info().queueStamp = 0;
        m_heap.clear();
        m_waiting.assign(1, false);  // stamp 0: not queued
        Cdt& cdt = triangulation_ref_impl();
        for (auto f = cdt.finite_faces_begin(); f != cdt.finite_faces_end(); ++f)
            if (f->is_in_domain()) addIfBad(f);
    }
    bool no_longer_element_to_refine_impl() const
    {
        dropWithdrawn();
        return m_heap.empty();
    }
    Face get_next_element_impl()
    {
        dropWithdrawn();
        current_badness = is_bad(m_heap.front().quality);
        return m_heap.front().face;
    }
    void pop_next_element_impl()
    {
        dropWithdrawn();
        withdraw(m_heap.front().face);
        dropWithdrawn();
    }
    void before_insertion_impl(const Face&, const Cdt::Point&, Zone& zone)
    {
        for (const Face f : zone.faces) {
            if (f->is_in_domain()) remove_bad_face(f);
            f->set_in_domain(false);
        }
    }
    void after_insertion_impl(const Vertex& v)
    {
        markStarInDomain(triangulation_ref_impl(), v);
        compute_new_bad_faces(v);
    }
    void compute_new_bad_faces(Vertex v)
    {
        const Cdt& cdt = triangulation_ref_impl();
        Cdt::Face_circulator f = cdt.incident_faces(v), done(f);
        do {
            if (!cdt.is_infinite(f) && f->is_in_domain()) addIfBad(f);
        } while (++f != done);
    }
    void remove_bad_face(Face f) { withdraw(f); }

private:
    struct Entry {
        Quality quality;
        Face face;
        uint32_t stamp;
    };
    // The heap's order: true when `a` comes after `b`.
    static bool after(const Entry& a, const Entry& b)
    {
        if (b.quality < a.quality) return true;
        if (a.quality < b.quality) return false;
        return b.stamp < a.stamp;
    }

    // Queues `f` if it is bad and not queued already (its badness then stands).
    void addIfBad(Face f)
    {
        Quality q;
        if (f->info().queueStamp != 0 || is_bad(f, q) == CGAL::Mesh_2::NOT_BAD) return;
        const uint32_t stamp = static_cast<uint32_t>(m_waiting.size());
        m_waiting.push_back(true);
        f->info().queueStamp = stamp;
        m_heap.push_back({q, f, stamp});
        std::push_heap(m_heap.begin(), m_heap.end(), after);
    }

    // Takes `f`, a live face, out of the queue if it waits there.
    void withdraw(Face f)
    {
        uint32_t& stamp = f->info().queueStamp;
        if (stamp == 0) return;
        m_waiting[stamp] = false;
        stamp = 0;
    }

    // Pops the withdrawn entries off the top: their faces may be gone, so only the stamps
    // are read.
    void dropWithdrawn() const
    {
        while (!m_heap.empty() && !m_waiting[m_heap.front().stamp]) {
            std::pop_heap(m_heap.begin(), m_heap.end(), after);
            m_heap.pop_back();
        }
    }

    mutable std::vector<Entry> m_heap;
    std::vector<bool> m_waiting{false};  // per stamp: still queued
};

using FacesLevel = CGAL::Mesh_2::Refine_faces<Cdt, Criteria, EdgesLevel, HeapQueuedFaces>;

// Refines the faces marked in the domain until none is bad by `criteria`, as CGAL's
// refine_Delaunay_mesh_2 does with a domain already marked. The constrained edges must be
// listed.
//
// The refinement stops once the triangulation holds `maxVertices` vertices (about twice as
// many triangles): a domain whose own features are far finer than the edge bound would
// otherwise be refined without end in sight; the mesh is then valid but not everywhere
// as fine as asked.
void refineDomain(Cdt& cdt, Criteria criteria, size_t maxVertices)
{
    CGAL::Null_mesher_level noLevel;
    CGAL::Null_mesh_visitor noVisitor;
    CGAL::Mesh_2::Clusters<Cdt> clusters(cdt);
    EdgesLevel edges(cdt, clusters, noLevel);
    FacesLevel faces(cdt, criteria, edges);
    CGAL::Mesh_2::Refine_edges_visitor_from_faces<FacesLevel> visitor(faces, edges, noVisitor);
    CGAL::Delaunay_mesher_2<Cdt, Criteria>::propagate_marks(cdt.infinite_face(), false);
    clusters.create_clusters();
    edges.scan_triangulation();
    faces.scan_triangulation();
    while (faces.one_step(visitor) && cdt.number_of_vertices() < maxVertices) {
    }
}

constexpr double kEquilateralArea = 0.43301270189221932;  // area of a unit-sided triangle
// The mesher's triangles are smaller than the edge bound: about this many per
// equilateral triangle of the bound's side.
constexpr double kRefinementDensity = 2.0;
// The refinement's vertex budget is never below this: small domains with fine features
// (fans of sticks, crossing points) need more than their area says.
constexpr double kMinimumVertexBudget = 20000.0;
constexpr int kHeightPasses = 3;  // neighbour averaging passes for crossing points
// Positions are rounded to a power of two this many binary digits below their extent:
// points closer than that merge, and sticks along an axis become exactly straight.
constexpr int kQuantumDigits = 40;
// Points closer than this to a constraint's inside, relative to the extent, are made
// points of it: nearly degenerate corners would stall the refinement.
constexpr double kOnEdgeTolerance = 1e-9;
// The seeding lattice: its side relative to the edge bound, the height of its rows
// relative to its side, and the clearance it keeps from vertices and constraints
// relative to its side.
constexpr double kLatticeSpacing = 0.85;
constexpr double kLatticeRowRatio = 0.86602540378443865;  // sqrt(3) / 2: equilateral
constexpr double kSeedClearance = 0.25;
// The lattice is not laid over a box holding more than this many times the points the
// domain needs, plus an allowance for small domains.
constexpr double kMaxLatticeExcess = 16.0;
constexpr double kLatticeAllowance = 100000.0;

// Largest coordinate magnitude of the positions.
double extentOf(const std::vector<core::vec2>& positions)
{
    double extent = 0.0;
    for (const core::vec2& p : positions) extent = std::max({extent, std::fabs(p.x), std::fabs(p.y)});
    return extent;
}

// `positions` rounded to multiples of a power of two kQuantumDigits below their extent.
std::vector<core::vec2> quantized(const std::vector<core::vec2>& positions)
{
    const double extent = extentOf(positions);
    if (!(extent > 0.0)) return positions;
    const double quantum = std::ldexp(1.0, std::ilogb(extent) - kQuantumDigits);
    std::vector<core::vec2> out;
    out.reserve(positions.size());
    for (const core::vec2& p : positions)
        out.emplace_back(std::round(p.x / quantum) * quantum, std::round(p.y / quantum) * quantum);
    return out;
}

bool isFinite(const core::vec2& p) { return std::isfinite(p.x) && std::isfinite(p.y); }

bool validInput(const PlanarInput& in)
{
    const int n = static_cast<int>(in.positions.size());
    if (in.heights.size() != in.positions.size()) return false;
    for (int i = 0; i < n; ++i)
        if (!isFinite(in.positions[i]) || !std::isfinite(in.heights[i])) return false;
    auto inRange = [n](int i) { return i >= 0 && i < n; };
    for (const auto& s : in.segments)
        if (!inRange(s[0]) || !inRange(s[1])) return false;
    for (const auto& loop : in.domainLoops)
        for (int i : loop)
            if (!inRange(i)) return false;
    return std::isfinite(in.maxEdgeLength) && in.maxEdgeLength >= 0.0 && in.maxTriangles > 0;
}

// Even-odd test of `p` against the closed loop.
bool insideLoop(const std::vector<core::vec2>& positions, const std::vector<int>& loop,
                const Point& p)
{
    bool inside = false;
    const size_t n = loop.size();
    for (size_t i = 0, j = n - 1; i < n; j = i++) {
        const core::vec2& a = positions[loop[i]];
        const core::vec2& b = positions[loop[j]];
        if ((a.y > p.y()) != (b.y > p.y()) &&
            p.x() < (b.x - a.x) * (p.y() - a.y) / (b.y - a.y) + a.x)
            inside = !inside;
    }
    return inside;
}

// Constrains the segment from `a` to `b`. Most segments are pieces of subdivided sticks
// whose end points the triangulation already joins: their edge is marked on both sides
// directly, which is what the general insertion does for them after setting up its work
// stack, a heap allocation per segment.
void insertConstraint(Cdt& cdt, Vertex a, Vertex b)
{
    if (a == b) return;
    Face f;
    int i = 0;
    if (cdt.dimension() == 2 && cdt.is_edge(a, b, f, i)) {
        f->set_constraint(i, true);
        f->neighbor(i)->set_constraint(cdt.mirror_index(f, i), true);
        return;
    }
    cdt.insert_constraint(a, b);
}

// The box of a loop, to spare the even-odd test the points it cannot find inside.
struct LoopBox {
    double xmax = 0.0, ymin = 0.0, ymax = 0.0;
    bool empty = true;  // fewer than three corners: nothing is inside

    static LoopBox of(const std::vector<core::vec2>& positions, const std::vector<int>& loop)
    {
        LoopBox box;
        if (loop.size() < 3) return box;
        box.empty = false;
        box.xmax = box.ymax = -HUGE_VAL;
        box.ymin = HUGE_VAL;
        for (int i : loop) {
            box.xmax = std::max(box.xmax, positions[i].x);
            box.ymin = std::min(box.ymin, positions[i].y);
            box.ymax = std::max(box.ymax, positions[i].y);
        }
        return box;
    }

    // False only where insideLoop() finds no crossing: on no edge is one end above `p` and
    // the other not when `p` is below the lowest corner or level with or above the highest,
    // and every crossing is right of `p` when one is (the margin covers the rounding of the
    // crossing's abscissa).
    bool mayHold(const Point& p) const
    {
        if (empty || p.y() < ymin || p.y() >= ymax) return false;
        return p.x() < xmax + 1e-9 * (std::fabs(xmax) + 1.0);
    }
};

// Marks the faces inside the union of the loops. Every loop edge is a constraint, so each
// region of faces joined across unconstrained edges lies wholly inside or outside each
// loop: one face per region is tested. A region that reaches the convex hull through an
// unconstrained edge is outside whatever the test says: it holds the flat slivers between
// nearly collinear outer points, which the refinement cannot mesh.
void markLoopDomain(Cdt& cdt, const std::vector<core::vec2>& positions,
                    const std::vector<std::vector<int>>& loops)
{
    for (auto f = cdt.all_faces_begin(); f != cdt.all_faces_end(); ++f) {
        f->set_in_domain(false);
        f->info().visited = false;
    }
    std::vector<LoopBox> boxes;
    boxes.reserve(loops.size());
    for (const auto& loop : loops) boxes.push_back(LoopBox::of(positions, loop));
    std::vector<Face> region;
    for (auto seed = cdt.finite_faces_begin(); seed != cdt.finite_faces_end(); ++seed) {
        if (seed->info().visited) continue;
        seed->info().visited = true;
        region.assign(1, seed);
        bool open = false;  // reaches the hull through an unconstrained edge
        for (size_t k = 0; k < region.size(); ++k)
            for (int i = 0; i < 3; ++i) {
                const Face next = region[k]->neighbor(i);
                if (region[k]->is_constrained(i)) continue;
                if (cdt.is_infinite(next)) {
                    open = true;
                } else if (!next->info().visited) {
                    next->info().visited = true;
                    region.push_back(next);
                }
            }
        bool inside = false;
        if (!open) {
            const Point centre = CGAL::centroid(cdt.triangle(seed));
            for (size_t k = 0; k < loops.size() && !inside; ++k)
                inside = boxes[k].mayHold(centre) && insideLoop(positions, loops[k], centre);
        }
        for (const Face f : region) f->set_in_domain(inside);
    }
}

bool touchesDomain(const Cdt& cdt, Vertex v)
{
    Cdt::Face_circulator f = cdt.incident_faces(v), done(f);
    do {
        if (!cdt.is_infinite(f) && f->is_in_domain()) return true;
    } while (++f != done);
    return false;
}

// Heights of the points where segments cross: averaged from their known neighbours.
void fillCrossingHeights(Cdt& cdt)
{
    for (int pass = 0; pass < kHeightPasses; ++pass) {
        bool missing = false;
        for (auto v = cdt.finite_vertices_begin(); v != cdt.finite_vertices_end(); ++v) {
            if (v->info().known) continue;
            double sum = 0.0, weight = 0.0;
            Cdt::Vertex_circulator n = cdt.incident_vertices(v), done(n);
            do {
                if (cdt.is_infinite(n) || !n->info().known) continue;
                const double w = 1.0 / std::max(1e-300, std::sqrt(CGAL::to_double(
                                                           CGAL::squared_distance(n->point(), v->point()))));
                sum += w * n->info().height;
                weight += w;
            } while (++n != done);
            if (weight > 0.0) {
                v->info().height = sum / weight;
                v->info().known = true;
            } else {
                missing = true;
            }
        }
        if (!missing) return;
    }
}

// The height at `p` interpolated linearly on the triangle of corners `a`, `b`, `c` and
// heights `ha`, `hb`, `hc`.
double interpolate(const Point& a, const Point& b, const Point& c, double ha, double hb, double hc,
                   const Point& p)
{
    const double area = CGAL::to_double(CGAL::area(a, b, c));
    if (area == 0.0) return ha;
    const double wa = CGAL::to_double(CGAL::area(p, b, c)) / area;  // barycentric weights
    const double wb = CGAL::to_double(CGAL::area(a, p, c)) / area;
    const double wc = 1.0 - wa - wb;
    return wa * ha + wb * hb + wc * hc;
}

// The height at `p` interpolated linearly on the finite face `f`.
double heightIn(Face f, const Point& p)
{
    return interpolate(f->vertex(0)->point(), f->vertex(1)->point(), f->vertex(2)->point(),
                       f->vertex(0)->info().height, f->vertex(1)->info().height,
                       f->vertex(2)->info().height, p);
}

// The triangles of a triangulation with their heights and adjacency, kept apart from it
// while it is refined: the points the refinement adds take their heights from these. A
// flat list rather than a copy of the triangulation, whose vertices, faces and handle
// maps cost more to build than the few hundred look-ups they serve.
class InputSurface {
public:
    // Lists the finite faces of `cdt`, whose vertices must all have their heights, in one
    // pass: a face takes its index when first met, as itself or as a neighbour.
    explicit InputSurface(Cdt& cdt)
    {
        m_triangles.resize(cdt.number_of_faces());
        int listed = 0;
        auto indexOf = [&listed](Face f) {
            int& index = f->info().input;
            if (index < 0) index = listed++;
            return index;
        };
        for (auto f = cdt.finite_faces_begin(); f != cdt.finite_faces_end(); ++f) {
            Triangle& t = m_triangles[indexOf(f)];
            for (int i = 0; i < 3; ++i) {
                t.corners[i] = f->vertex(i)->point();
                t.heights[i] = f->vertex(i)->info().height;
                const Face n = f->neighbor(i);
                t.neighbours[i] = cdt.is_infinite(n) ? -1 : indexOf(n);
            }
        }
        indexStarts(cdt);
    }

    // The height at `p` interpolated on the triangle that holds it; beyond the hull, on
    // the hull triangle the search ends at. 0 without triangles.
    double heightAt(const Point& p)
    {
        const int found = locate(p);
        if (found < 0) return 0.0;
        const Triangle& t = m_triangles[found];
        return interpolate(t.corners[0], t.corners[1], t.corners[2], t.heights[0], t.heights[1],
                           t.heights[2], p);
    }

private:
    struct Triangle {
        std::array<Point, 3> corners;      // counter-clockwise, as in the triangulation
        std::array<double, 3> heights;
        std::array<int, 3> neighbours;     // across the edge facing each corner; -1: hull
    };

    // A grid over the triangles' box of about one cell per triangle, each cell naming a
    // triangle whose centroid lies in it: walks start there, a few steps from their end.
    void indexStarts(const Cdt& cdt)
    {
        if (m_triangles.empty()) return;
        CGAL::Bbox_2 box;
        for (auto v = cdt.finite_vertices_begin(); v != cdt.finite_vertices_end(); ++v) box += v->point().bbox();
        m_origin = Point(box.xmin(), box.ymin());
        const double width = box.xmax() - box.xmin(), height = box.ymax() - box.ymin();
        const double cell = std::sqrt(std::max(width * height, 1e-300) / m_triangles.size());
        if (!(cell > 0.0) || !std::isfinite(cell)) return;
        m_columns = std::clamp(static_cast<int>(width / cell) + 1, 1, kMaxGridSide);
        m_rows = std::clamp(static_cast<int>(height / cell) + 1, 1, kMaxGridSide);
        m_cellWidth = std::max(width / m_columns, 1e-300);
        m_cellHeight = std::max(height / m_rows, 1e-300);
        m_starts.assign(static_cast<size_t>(m_columns) * m_rows, -1);
        for (size_t k = 0; k < m_triangles.size(); ++k) {
            const Triangle& t = m_triangles[k];
            const Point centre((t.corners[0].x() + t.corners[1].x() + t.corners[2].x()) / 3.0,
                               (t.corners[0].y() + t.corners[1].y() + t.corners[2].y()) / 3.0);
            m_starts[cellOf(centre)] = static_cast<int>(k);
        }
        // Cells without a centroid of their own (most, where the triangles are long and
        // thin) take the nearest named one in their row, or failing that in their column.
        auto fill = [this](int count, int stride, size_t first) {
            int last = -1;
            for (int k = 0; k < count; ++k) {
                int& start = m_starts[first + static_cast<size_t>(k) * stride];
                if (start < 0) start = last; else last = start;
            }
            last = -1;
            for (int k = count - 1; k >= 0; --k) {
                int& start = m_starts[first + static_cast<size_t>(k) * stride];
                if (start < 0) start = last; else last = start;
            }
        };
        for (int row = 0; row < m_rows; ++row) fill(m_columns, 1, static_cast<size_t>(row) * m_columns);
        for (int column = 0; column < m_columns; ++column) fill(m_rows, m_columns, column);
    }

    size_t cellOf(const Point& p) const
    {
        const int column = std::clamp(static_cast<int>((p.x() - m_origin.x()) / m_cellWidth), 0, m_columns - 1);
        const int row = std::clamp(static_cast<int>((p.y() - m_origin.y()) / m_cellHeight), 0, m_rows - 1);
        return static_cast<size_t>(row) * m_columns + column;
    }

    // Where `p` lies from the edge of `t` facing corner `i`: RIGHT_TURN beyond it.
    static CGAL::Orientation side(const Triangle& t, int i, const Point& p)
    {
        return CGAL::orientation(t.corners[(i + 1) % 3], t.corners[(i + 2) % 3], p);
    }

    static double areaOf(const Triangle& t)
    {
        return std::fabs(CGAL::to_double(CGAL::area(t.corners[0], t.corners[1], t.corners[2])));
    }

    // The triangle holding `p`, found by walking from a triangle near it across the edges
    // `p` lies beyond. The walk never crosses back the edge it came in by and turns the
    // edge it tests first, so that it cannot circle; should it take too long all the
    // same, every triangle is tested. A point on an edge goes to the larger of the two
    // triangles: the interpolation in a sliver is the less accurate.
    int locate(const Point& p)
    {
        if (m_triangles.empty()) return -1;
        int current = m_last, from = -1;
        if (!m_starts.empty() && std::isfinite(p.x()) && std::isfinite(p.y())) {
            const int start = m_starts[cellOf(p)];
            if (start >= 0) current = start;
        }
        const size_t limit = 2 * m_triangles.size() + 8;
        int first = 0;  // the edge tested first, turning from one step to the next
        for (size_t step = 0; step < limit; ++step) {
            const Triangle& t = m_triangles[current];
            int exit = -1, on = -1;
            for (int k = 0, i = first; k < 3 && exit < 0; ++k, i = i == 2 ? 0 : i + 1) {
                if (from >= 0 && t.neighbours[i] == from) continue;  // `p` is on this side
                const CGAL::Orientation o = side(t, i, p);
                if (o == CGAL::RIGHT_TURN) exit = i;
                else if (o == CGAL::COLLINEAR) on = i;
            }
            first = first == 2 ? 0 : first + 1;
            if (exit < 0) {
                const int other = on < 0 ? -1 : t.neighbours[on];
                if (other >= 0 && areaOf(m_triangles[other]) > areaOf(t)) current = other;
                return m_last = current;
            }
            if (t.neighbours[exit] < 0) return m_last = current;  // beyond the hull
            from = current;
            current = t.neighbours[exit];
        }
        for (size_t k = 0; k < m_triangles.size(); ++k) {
            const Triangle& t = m_triangles[k];
            if (side(t, 0, p) != CGAL::RIGHT_TURN && side(t, 1, p) != CGAL::RIGHT_TURN &&
                side(t, 2, p) != CGAL::RIGHT_TURN)
                return m_last = static_cast<int>(k);
        }
        return m_last = current;
    }

    static constexpr int kMaxGridSide = 1024;

    std::vector<Triangle> m_triangles;
    int m_last = 0;  // where a walk starts when the grid names no triangle near the point
    std::vector<int> m_starts;  // per grid cell, row by row; -1: none
    Point m_origin;
    double m_cellWidth = 1.0, m_cellHeight = 1.0;
    int m_columns = 0, m_rows = 0;
};

double domainArea(const Cdt& cdt)
{
    double area = 0.0;
    for (auto f = cdt.finite_faces_begin(); f != cdt.finite_faces_end(); ++f)
        if (f->is_in_domain()) area += CGAL::to_double(cdt.triangle(f).area());
    return area;
}

// True when `p` lies right of the line from `a` to `b`, as rounded arithmetic finds it.
bool rightOf(const Point& a, const Point& b, const Point& p)
{
    return (b.x() - a.x()) * (p.y() - a.y()) - (b.y() - a.y()) * (p.x() - a.x()) < 0.0;
}

// A finite face holding `p`, walked to from the finite face `start` across the edges `p`
// lies beyond, without crossing back the edge just crossed; null when `p` lies beyond the
// hull. For points next to `start` this costs a fraction of the triangulation's own
// search, which first walks with inexact tests and then again with exact ones; that
// search takes over should a walk run long. The tests are rounded: for a point within
// rounding of an edge the face may be the one across it, which serves the callers (the
// lattice points, which keep clear of the constraints, and take their heights linearly).
Face walkTo(const Cdt& cdt, Face start, const Point& p)
{
    constexpr int kMaxSteps = 256;
    Face f = start, from;
    for (int step = 0, first = 0; step < kMaxSteps; ++step, first = first == 2 ? 0 : first + 1) {
        int exit = -1;
        for (int k = 0, i = first; k < 3 && exit < 0; ++k, i = i == 2 ? 0 : i + 1)
            if (f->neighbor(i) != from && rightOf(f->vertex(cdt.ccw(i))->point(), f->vertex(cdt.cw(i))->point(), p))
                exit = i;
        if (exit < 0) return f;
        from = f;
        f = f->neighbor(exit);
        if (cdt.is_infinite(f)) return Face();
    }
    const Face found = cdt.locate(p, start);
    return found == Face() || cdt.is_infinite(found) ? Face() : found;
}

// The points of a triangular lattice of side `spacing` over a box, row by row: rows
// sqrt(3)/2 sides apart, every other one shifted by half a side. Points near given
// segments can be blocked; the blocked ones are kept as a sorted list of their keys, a
// few per segment, rather than as a flag per point of the box, which a thin slanted
// domain would make much larger than the mesh.
class SeedLattice {
public:
    SeedLattice(const CGAL::Bbox_2& box, double spacing)
        : m_box(box), m_spacing(spacing), m_rowStep(spacing * kLatticeRowRatio) {}

    // About how many points the lattice has over the box, and the area around each.
    double pointCount() const
    {
        return ((m_box.xmax() - m_box.xmin()) / m_spacing + 1.0) * ((m_box.ymax() - m_box.ymin()) / m_rowStep + 1.0);
    }
    double cellArea() const { return m_spacing * m_rowStep; }

    bool rowInBox(long row) const { return y(row) <= m_box.ymax(); }
    bool inBox(long row, long column) const { return x(row, column) <= m_box.xmax(); }
    Point at(long row, long column) const { return Point(x(row, column), y(row)); }

    // Blocks the points closer than the square root of `limit` to the segment ab (to the
    // point a when b equals it).
    void blockNear(const Point& a, const Point& b, double limit)
    {
        const double clearance = std::sqrt(limit);
        const long firstRow = std::max(0L, static_cast<long>(std::floor(
                                                (std::min(a.y(), b.y()) - clearance - m_box.ymin()) / m_rowStep)));
        const long lastRow = static_cast<long>(std::ceil((std::max(a.y(), b.y()) + clearance - m_box.ymin()) / m_rowStep));
        for (long row = firstRow; row <= lastRow && rowInBox(row); ++row) {
            double low = 0.0, high = 0.0;
            if (!abscissaeInBand(a, b, y(row) - clearance, y(row) + clearance, low, high)) continue;
            const double start = x(row, 0);
            // One column of margin each side for the rounding of these bounds.
            const long first = std::max(0L, static_cast<long>(std::floor((low - clearance - start) / m_spacing)) - 1);
            const long last = static_cast<long>(std::ceil((high + clearance - start) / m_spacing)) + 1;
            for (long column = first; column <= last && inBox(row, column); ++column)
                if (squaredDistanceToSegment(at(row, column), a, b) < limit)
                    m_blocked.push_back(key(row, column));
        }
    }

    // To be called once every block is in, before isBlocked().
    void sortBlocked()
    {
        std::sort(m_blocked.begin(), m_blocked.end());
        m_blocked.erase(std::unique(m_blocked.begin(), m_blocked.end()), m_blocked.end());
        m_next = 0;
    }

    // Whether the point is blocked, for points asked in row then column order only: the
    // answer comes from a cursor into the sorted keys.
    bool isBlocked(long row, long column)
    {
        const uint64_t k = key(row, column);
        while (m_next < m_blocked.size() && m_blocked[m_next] < k) ++m_next;
        return m_next < m_blocked.size() && m_blocked[m_next] == k;
    }

private:
    double y(long row) const { return m_box.ymin() + row * m_rowStep; }
    double x(long row, long column) const
    {
        return m_box.xmin() + (row % 2) * 0.5 * m_spacing + column * m_spacing;
    }
    static uint64_t key(long row, long column)
    {
        return static_cast<uint64_t>(row) << 32 | static_cast<uint32_t>(column);
    }

    // The square of the distance from `p` to the segment ab, or to a when b equals it. A
    // rounded figure serves: the clearance is a choice, not a bound anything relies on.
    static double squaredDistanceToSegment(const Point& p, const Point& a, const Point& b)
    {
        const double dx = b.x() - a.x(), dy = b.y() - a.y();
        const double px = p.x() - a.x(), py = p.y() - a.y();
        const double length2 = dx * dx + dy * dy;
        const double t = length2 > 0.0 ? std::clamp((px * dx + py * dy) / length2, 0.0, 1.0) : 0.0;
        const double ex = px - t * dx, ey = py - t * dy;
        return ex * ex + ey * ey;
    }

    // The abscissae of the part of ab with ordinates in [low, high]: false when none.
    static bool abscissaeInBand(const Point& a, const Point& b, double low, double high, double& xLow,
                                double& xHigh)
    {
        double t0 = 0.0, t1 = 1.0;  // along ab
        const double dy = b.y() - a.y();
        if (dy == 0.0) {
            if (a.y() < low || a.y() > high) return false;
        } else {
            t0 = (low - a.y()) / dy;
            t1 = (high - a.y()) / dy;
            if (t0 > t1) std::swap(t0, t1);
            t0 = std::max(t0, 0.0);
            t1 = std::min(t1, 1.0);
            if (t0 > t1) return false;
        }
        const double x0 = a.x() + t0 * (b.x() - a.x()), x1 = a.x() + t1 * (b.x() - a.x());
        xLow = std::min(x0, x1);
        xHigh = std::max(x0, x1);
        return true;
    }

    CGAL::Bbox_2 m_box;
    double m_spacing, m_rowStep;
    std::vector<uint64_t> m_blocked;  // keys: row in the high half, column in the low
    size_t m_next = 0;
};

// Points of a triangular lattice of side `spacing` that lie in the domain, clear of the
// vertices and constraints, with their heights: they give the refinement most of its
// points at once, in an even pattern, so that it only has to finish the mesh near the
// constraints. The constrained edges must be listed. None when the lattice over the box
// would hold many times the points the domain's area calls for (a thin domain across its
// box): visiting them would cost more than the refinement saves.
std::vector<std::pair<Point, double>> latticeSeeds(const Cdt& cdt, double spacing, double domainArea)
{
    std::vector<std::pair<Point, double>> seeds;
    CGAL::Bbox_2 box;
    for (auto v = cdt.finite_vertices_begin(); v != cdt.finite_vertices_end(); ++v) box += v->point().bbox();
    SeedLattice lattice(box, spacing);
    if (!(lattice.pointCount() <= kMaxLatticeExcess * (domainArea / lattice.cellArea()) + kLatticeAllowance))
        return seeds;
    const double limit = kSeedClearance * spacing * kSeedClearance * spacing;
    for (auto v = cdt.finite_vertices_begin(); v != cdt.finite_vertices_end(); ++v)
        if (!v->info().constrained) lattice.blockNear(v->point(), v->point(), limit);  // else below
    for (auto e = cdt.subconstraints_begin(); e != cdt.subconstraints_end(); ++e)
        lattice.blockNear(e->first.first->point(), e->first.second->point(), limit);
    lattice.sortBlocked();
    Face hint;
    for (long row = 0; lattice.rowInBox(row); ++row)
        for (long column = 0; lattice.inBox(row, column); ++column) {
            if (lattice.isBlocked(row, column)) continue;
            const Point p = lattice.at(row, column);
            Face f;
            if (hint != Face()) {
                f = walkTo(cdt, hint, p);
            } else {
                f = cdt.locate(p);
                if (f != Face() && cdt.is_infinite(f)) f = Face();
            }
            if (f == Face()) continue;
            hint = f;  // the next point is a lattice side away
            if (f->is_in_domain()) seeds.emplace_back(p, heightIn(f, p));
        }
    return seeds;
}

// Refines the domain so that no edge is longer than the bound (raised to fit the
// triangle budget), seeding it with a lattice first; added points take their heights from
// the triangulation of the input points.
void refine(Cdt& cdt, const PlanarInput& in)
{
    const double area = domainArea(cdt);
    double bound = in.maxEdgeLength;
    const double expected = kRefinementDensity * area / (kEquilateralArea * bound * bound);
    if (expected > in.maxTriangles)
        bound = std::sqrt(kRefinementDensity * area / (kEquilateralArea * in.maxTriangles));
    cdt.listConstrainedEdges();  // the seeds keep clear of them: cheaper listed now
    InputSurface base(cdt);  // the triangulation of the input points, for the heights
    Face hint;
    for (const auto& [p, height] : latticeSeeds(cdt, kLatticeSpacing * bound, area)) {
        const Vertex v = cdt.insert(p, hint);  // row by row: each next to the last
        v->info() = VertexData::withHeight(height);
        hint = v->face();
        markStarInDomain(cdt, v);
    }
    // Four times the triangles the domain needs (in vertices, about half as many), at
    // least kMinimumVertexBudget, at most the triangle budget.
    const double vertexBudget = std::max(kMinimumVertexBudget, 2.0 * std::min(expected, double(in.maxTriangles)));
    refineDomain(cdt, Criteria(PlanarInput::kAngleBound, bound),
                 static_cast<size_t>(std::min(vertexBudget, double(in.maxTriangles))));
    for (auto v = cdt.finite_vertices_begin(); v != cdt.finite_vertices_end(); ++v) {
        if (v->info().known) continue;
        v->info().height = base.heightAt(v->point());
        v->info().known = true;
    }
}

void collectMesh(Cdt& cdt, PlanarMesh& mesh)
{
    mesh.positions.reserve(cdt.number_of_vertices());
    mesh.heights.reserve(cdt.number_of_vertices());
    mesh.triangles.reserve(cdt.number_of_faces());
    for (auto f = cdt.finite_faces_begin(); f != cdt.finite_faces_end(); ++f) {
        if (!f->is_in_domain()) continue;
        std::array<int, 3> triangle{};
        for (int k = 0; k < 3; ++k) {
            VertexData& data = f->vertex(k)->info();
            if (data.index < 0) {
                const Point& p = f->vertex(k)->point();
                data.index = static_cast<int>(mesh.positions.size());
                mesh.positions.emplace_back(p.x(), p.y());
                mesh.heights.push_back(data.height);
            }
            triangle[k] = data.index;
        }
        mesh.triangles.push_back(triangle);
    }
}

} // namespace

bool triangulatePlanar(const PlanarInput& input, PlanarMesh& mesh)
{
    mesh = PlanarMesh();
    if (!validInput(input)) return false;
    PlanarInput in = input;
    const double tolerance = kOnEdgeTolerance * extentOf(in.positions);
    const bool hullDomain = in.domainLoops.empty();
    if (hullDomain) in.domainLoops.assign(1, hullOutline(in.positions, tolerance));
    splitConstraints(in, tolerance);
    subdivideConstraints(in, in.maxEdgeLength);  // spares the refinement most of its cuts
    const std::vector<core::vec2> positions = quantized(in.positions);

    Cdt cdt;
    // The points go in along a space-filling curve, in rounds of growing size (CGAL's
    // spatial sort, whose shuffle has a fixed seed): each lands near the last in a
    // triangulation whose triangles are not yet long and thin. In the order given (stick
    // after stick, the cut points last) the benchmark's faults took 8% more work to mesh.
    std::vector<std::pair<Point, int>> order;
    order.reserve(positions.size());
    for (size_t i = 0; i < positions.size(); ++i)
        order.emplace_back(Point(positions[i].x, positions[i].y), static_cast<int>(i));
    CGAL::spatial_sort(order.begin(), order.end(),
                       CGAL::Spatial_sort_traits_adapter_2<Kernel, CGAL::First_of_pair_property_map<std::pair<Point, int>>>());
    std::vector<Vertex> handles(positions.size());
    Face hint;
    for (const auto& [p, i] : order) {
        const Vertex v = cdt.insert(p, hint);
        VertexData& data = v->info();
        if (!data.known || i < data.source) data = VertexData::withHeight(in.heights[i], i);
        hint = v->face();
        handles[i] = v;
    }
    for (const auto& s : in.segments) insertConstraint(cdt, handles[s[0]], handles[s[1]]);
    for (const auto& loop : in.domainLoops)
        for (size_t k = 0; loop.size() >= 2 && k < loop.size(); ++k)
            insertConstraint(cdt, handles[loop[k]], handles[loop[(k + 1) % loop.size()]]);
    if (cdt.dimension() < 2) return false;

    markLoopDomain(cdt, positions, in.domainLoops);
    const size_t inputPoints = input.positions.size();
    for (size_t i = 0; !hullDomain && i < inputPoints; ++i)
        if (!touchesDomain(cdt, handles[i])) {
            PlanarInput hull = input;
            hull.domainLoops.clear();
            const bool made = triangulatePlanar(hull, mesh);
            mesh.convexHullDomain = true;
            return made;
        }
    fillCrossingHeights(cdt);
    if (in.maxEdgeLength > 0.0) refine(cdt, in);
    collectMesh(cdt, mesh);
    return !mesh.triangles.empty();
}

} // namespace fault::surface
