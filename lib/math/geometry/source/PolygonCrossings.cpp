// PolygonCrossings.cpp - the loops of a contour that crosses or runs over itself.
//
// The contour is cut at every point where it meets itself, and its pieces
// form a planar map: copies of one piece (strands that run along each other,
// as where a plane's outline retraces a side) become one edge that counts
// how often, and which way, the contour runs there. Across an edge the
// winding number changes by that count, so the faces of the map get their
// winding numbers from the outside inwards, and the region is where the
// contour winds round a positive number of times. Its boundary is walked
// with the region kept on the left, always taking the sharpest left turn,
// so that loops touch at a vertex but never cross.
#include "lib/math/geometry/Polygon.h"

#include "core/lib/vellum/Assert.h"
#include "lib/math/geometry/GeomStl.h"
#include "lib/math/geometry/PolyArcIntersectionGraph.h"
#include "lib/math/geometry/PolygonWithHolesCollection.h"

#include <algorithm>
#include <climits>
#include <cstddef>
#include <cstdint>

namespace geom
{
namespace
{
// A piece of the contour and how often it is run forwards minus backwards.
struct MapEdge
{
    Arc m_Arc;
    int m_Count = 0;
};

// One direction of an edge: half-edge 2 e runs along edge e, 2 e + 1 back.
struct HalfEdge
{
    size_t m_Vertex = 0; // where it leaves from
    double m_Angle = 0;  // its direction there
    double m_Curvature = 0;
};

double GetLeftCurvature(const Arc& leaving)
{
    const double h = leaving.GetHeight().GetValue();
    const double c2 = leaving.GetStartEndSegment().GetLengthSquare().GetValue();
    const double denominator = 4 * h * h + c2;
    // A positive height bends clockwise, to the right.
    return denominator > 0 ? -8 * h / denominator : 0.0;
}

// The angle within which two tangents at a vertex are one: the length
// rule of parallelism on a unit tangent, and never below what rounding
// leaves of two tangents that are really one (loops that touch, one arc
// reversed, both worked out from different chords).
double GetTangentTolerance(Unit accuracy)
{
    return std::max(2 * accuracy.GetValue(), 1e-9);
}

// Puts the directions leaving one vertex in counter-clockwise order from
// the east. Directions whose tangents are one (a chain of neighbours each
// within the tolerance, across east too) are ordered by their curvature to
// the left, since the curve that bends more to the left lies further
// counter-clockwise just off the vertex; equal curvatures keep the order of
// their angles. Comparing angles exactly instead would let a last-bit
// difference put two touching loops the wrong way round.
template <typename T, typename AngleOf, typename CurvatureOf>
void SortCounterClockwise(std::vector<T>& items, double tolerance, AngleOf angle_of, CurvatureOf curvature_of)
{
    std::sort(items.begin(), items.end(), [&](const T& a, const T& b) { return angle_of(a) < angle_of(b); });
    const size_t n = items.size();
    if (n < 2)
        return;
    // The directions just short of a full turn that join the first one's
    // tangent go to the front, a turn lower.
    size_t wrap = n;
    double next = angle_of(items.front()) + 2 * k_Pi;
    while (wrap > 1 && next - angle_of(items[wrap - 1]) <= tolerance)
        next = angle_of(items[--wrap]);
    std::rotate(items.begin(), items.begin() + static_cast<std::ptrdiff_t>(wrap), items.end());
    std::vector<double> unwrapped(n);
    for (size_t i = 0; i < n; ++i)
        unwrapped[i] = angle_of(items[i]) - (i < n - wrap ? 2 * k_Pi : 0.0);
    for (size_t first = 0; first < n;)
    {
        size_t last = first + 1;
        while (last < n && unwrapped[last] - unwrapped[last - 1] <= tolerance)
            ++last;
        if (last - first > 1)
            std::stable_sort(items.begin() + static_cast<std::ptrdiff_t>(first),
                             items.begin() + static_cast<std::ptrdiff_t>(last),
                             [&](const T& a, const T& b) { return curvature_of(a) < curvature_of(b); });
        first = last;
    }
}

// The pieces with their copies folded into counts: copies share their ends
// and have heights within accuracy, run either way.
std::vector<MapEdge> FoldCopies(const std::vector<Arc>& pieces, Unit accuracy)
{
    const auto key = [&](size_t k)
    {
        const Point& a = pieces[k].GetStart();
        const Point& b = pieces[k].GetEnd();
        return a < b ? std::make_pair(a, b) : std::make_pair(b, a);
    };
    std::vector<size_t> order(pieces.size());
    for (size_t k = 0; k < order.size(); ++k)
        order[k] = k;
    std::sort(order.begin(), order.end(), [&](size_t a, size_t b) { return key(a) < key(b); });
    std::vector<MapEdge> ret;
    size_t group_start = 0;
    for (size_t i = 0; i < order.size(); ++i)
    {
        if (i > 0 && key(order[i]) != key(order[i - 1]))
            group_start = ret.size();
        const Arc& a = pieces[order[i]];
        bool folded = false;
        for (size_t g = group_start; g < ret.size() && !folded; ++g)
        {
            const Arc& e = ret[g].m_Arc;
            if (a.GetStart() == e.GetStart() && a.GetEnd() == e.GetEnd() &&
                (a.GetHeight() - e.GetHeight()).GetAbs() <= accuracy)
                ++ret[g].m_Count, folded = true;
            else if (a.GetStart() == e.GetEnd() && a.GetEnd() == e.GetStart() &&
                     (a.GetHeight() + e.GetHeight()).GetAbs() <= accuracy)
                --ret[g].m_Count, folded = true;
        }
        if (!folded)
            ret.push_back(MapEdge{a, 1});
    }
    return ret;
}

// The older linking, kept for a map whose windings don't agree (a crossing
// lost to rounding): pieces run both ways cancel, and at each vertex the
// pieces arriving are re-linked to the pieces leaving so that no two strands
// cross there. False when a loop doesn't close.
struct BracketEnd
{
    size_t m_Edge;
    bool m_Incoming; // the piece ends at the vertex
    double m_Angle;
    double m_Curvature;
};

bool LinkByBrackets(const std::vector<Arc>& all, Unit accuracy, std::vector<PolyArc>& loops)
{
    // Pieces that the contour runs along in both directions add nothing to
    // how often it winds round any point: each such pair goes, so that the
    // loops left don't run along each other the opposite ways.
    std::vector<Arc> pieces;
    {
        std::vector<size_t> by_ends(all.size());
        for (size_t k = 0; k < all.size(); ++k)
            by_ends[k] = k;
        const auto key = [&](size_t k)
        {
            const Point& a = all[k].GetStart();
            const Point& b = all[k].GetEnd();
            return a < b ? std::make_pair(a, b) : std::make_pair(b, a);
        };
        std::sort(by_ends.begin(), by_ends.end(), [&](size_t a, size_t b) { return key(a) < key(b); });
        std::vector<bool> gone(all.size(), false);
        for (size_t i = 0; i < by_ends.size(); ++i)
            for (size_t j = i + 1;
                 j < by_ends.size() && key(by_ends[j]) == key(by_ends[i]) && !gone[by_ends[i]]; ++j)
            {
                const Arc& e = all[by_ends[i]];
                const Arc& f = all[by_ends[j]];
                if (!gone[by_ends[j]] && e.GetStart() == f.GetEnd() && e.GetEnd() == f.GetStart() &&
                    (e.GetHeight() + f.GetHeight()).GetAbs() <= accuracy)
                    gone[by_ends[i]] = gone[by_ends[j]] = true;
            }
        for (size_t k = 0; k < all.size(); ++k)
            if (!gone[k])
                pieces.push_back(all[k]);
    }
    if (pieces.empty())
        return true;
    // At each vertex the pieces arriving are re-linked to the pieces leaving
    // so that no two strands cross there: around the vertex, each arriving
    // strand takes the nearest unmatched leaving strand counter-clockwise,
    // matched like brackets. Where strands leave along one tangent their
    // curvature orders them.
    std::vector<Point> locations;
    for (const Arc& a : pieces)
        locations.push_back(a.GetStart());
    std::sort(locations.begin(), locations.end());
    locations.erase(std::unique(locations.begin(), locations.end()), locations.end());
    const auto vertex_of = [&](const Point& p) {
        return static_cast<size_t>(std::lower_bound(locations.begin(), locations.end(), p) -
                                   locations.begin());
    };
    std::vector<std::vector<BracketEnd>> around(locations.size());
    for (size_t i = 0; i < pieces.size(); ++i)
    {
        const Arc& a = pieces[i];
        around[vertex_of(a.GetStart())].push_back(
            BracketEnd{i, false, a.GetStartTangent().GetValue(), GetLeftCurvature(a)});
        const Arc back = a.GetReversed();
        around[vertex_of(a.GetEnd())].push_back(
            BracketEnd{i, true, back.GetStartTangent().GetValue(), GetLeftCurvature(back)});
    }
    std::vector<size_t> next(pieces.size(), pieces.size());
    std::vector<bool> split_vertex(locations.size(), false);
    for (size_t v = 0; v < around.size(); ++v)
    {
        std::vector<BracketEnd>& h = around[v];
        if (h.size() == 2)
        {
            const BracketEnd& in = h[0].m_Incoming ? h[0] : h[1];
            const BracketEnd& out = h[0].m_Incoming ? h[1] : h[0];
            next[in.m_Edge] = out.m_Edge;
            continue;
        }
        split_vertex[v] = true;
        SortCounterClockwise(
            h, GetTangentTolerance(accuracy), [](const BracketEnd& e) { return e.m_Angle; },
            [](const BracketEnd& e) { return e.m_Curvature; });
        std::vector<size_t> open;
        std::vector<bool> matched(h.size(), false);
        for (size_t round = 0; round < 2 * h.size(); ++round)
        {
            const size_t k = round % h.size();
            if (matched[k])
                continue;
            if (h[k].m_Incoming)
            {
                if (std::find(open.begin(), open.end(), k) == open.end())
                    open.push_back(k);
            }
            else if (!open.empty())
            {
                const size_t in = open.back();
                open.pop_back();
                matched[in] = matched[k] = true;
                next[h[in].m_Edge] = h[k].m_Edge;
            }
        }
    }
    std::vector<bool> used(pieces.size(), false);
    for (size_t first = 0; first < pieces.size(); ++first)
    {
        if (used[first])
            continue;
        std::vector<Arc> loop;
        bool has_split = false;
        size_t i = first;
        while (i < pieces.size() && !used[i])
        {
            used[i] = true;
            loop.push_back(pieces[i]);
            has_split = has_split || split_vertex[vertex_of(pieces[i].GetStart())];
            i = next[i];
        }
        if (i != first || !IsPolyArcSequence_G(loop, k_Closed))
            return false;
        if (has_split)
            loop = JoinAdjacentArcs_G(loop, k_Closed, accuracy).m_Value;
        loops.push_back(PolyArc(k_Closed, loop));
    }
    return true;
}

class WindingMap
{
public:
    WindingMap(const std::vector<MapEdge>& edges, Unit accuracy)
        : m_Edges(edges), m_TangentTolerance(GetTangentTolerance(accuracy))
    {
    }

    // Builds the map and its faces' winding numbers; false if the map
    // doesn't hold together (a vertex where the pieces don't meet).
    bool Build();
    // The boundary of the positively wound region as closed loops.
    std::vector<std::vector<Arc>> GetBoundaryLoops() const;
    bool IsSplitVertex(const Point& p) const;

private:
    Arc GetArc(size_t h) const
    {
        const Arc& a = m_Edges[h / 2].m_Arc;
        return h % 2 ? a.GetReversed() : a;
    }
    int GetCount(size_t h) const { return h % 2 ? -m_Edges[h / 2].m_Count : m_Edges[h / 2].m_Count; }
    // The half-edge that follows h round the face on its left.
    size_t GetNext(size_t h) const
    {
        const size_t twin = h ^ 1u;
        const std::vector<size_t>& around = m_Around[m_HalfEdges[twin].m_Vertex];
        const size_t i = m_Position[twin];
        return around[(i + around.size() - 1) % around.size()];
    }
    size_t GetOuterFace() const;

    std::vector<MapEdge> m_Edges;
    double m_TangentTolerance;
    std::vector<Point> m_Locations;
    std::vector<HalfEdge> m_HalfEdges;
    std::vector<std::vector<size_t>> m_Around; // per vertex, counter-clockwise
    std::vector<size_t> m_Position;            // of each half-edge in its vertex's list
    std::vector<size_t> m_Face;                // on the left of each half-edge
    std::vector<int> m_Winding;                // per face
};

bool WindingMap::Build()
{
    for (const MapEdge& e : m_Edges)
    {
        m_Locations.push_back(e.m_Arc.GetStart());
        m_Locations.push_back(e.m_Arc.GetEnd());
    }
    std::sort(m_Locations.begin(), m_Locations.end());
    m_Locations.erase(std::unique(m_Locations.begin(), m_Locations.end()), m_Locations.end());
    const auto vertex_of = [&](const Point& p)
    {
        return static_cast<size_t>(std::lower_bound(m_Locations.begin(), m_Locations.end(), p) -
                                   m_Locations.begin());
    };
    m_HalfEdges.resize(m_Edges.size() * 2);
    m_Around.resize(m_Locations.size());
    for (size_t h = 0; h < m_HalfEdges.size(); ++h)
    {
        const Arc a = GetArc(h);
        m_HalfEdges[h] =
            HalfEdge{vertex_of(a.GetStart()), a.GetStartTangent().GetValue(), GetLeftCurvature(a)};
        m_Around[m_HalfEdges[h].m_Vertex].push_back(h);
    }
    m_Position.resize(m_HalfEdges.size());
    for (std::vector<size_t>& around : m_Around)
    {
        SortCounterClockwise(
            around, m_TangentTolerance, [&](size_t h) { return m_HalfEdges[h].m_Angle; },
            [&](size_t h) { return m_HalfEdges[h].m_Curvature; });
        for (size_t i = 0; i < around.size(); ++i)
            m_Position[around[i]] = i;
    }
    // Faces: the cycles of the next relation.
    const size_t none = SIZE_MAX;
    m_Face.assign(m_HalfEdges.size(), none);
    size_t faces = 0;
    for (size_t h = 0; h < m_HalfEdges.size(); ++h)
    {
        if (m_Face[h] != none)
            continue;
        size_t g = h;
        for (size_t steps = 0; m_Face[g] == none; ++steps)
        {
            if (steps > m_HalfEdges.size())
                return false;
            m_Face[g] = faces;
            g = GetNext(g);
        }
        if (g != h)
            return false;
        ++faces;
    }
    // Winding numbers from the outer face inwards: crossing an edge from
    // its right to its left adds its count.
    std::vector<std::vector<size_t>> sides(faces);
    for (size_t h = 0; h < m_HalfEdges.size(); ++h)
        sides[m_Face[h]].push_back(h);
    m_Winding.assign(faces, INT_MIN);
    const size_t outer = GetOuterFace();
    m_Winding[outer] = 0;
    std::vector<size_t> queue{outer};
    for (size_t q = 0; q < queue.size(); ++q)
        for (size_t h : sides[queue[q]])
        {
            const size_t other = m_Face[h ^ 1u];
            const int expected = m_Winding[queue[q]] - GetCount(h);
            if (m_Winding[other] == INT_MIN)
            {
                m_Winding[other] = expected;
                queue.push_back(other);
            }
            else if (m_Winding[other] != expected)
                return false;
        }
    return queue.size() == faces;
}

size_t WindingMap::GetOuterFace() const
{
    // The westmost point of the map: at a vertex, the outer face lies in
    // the gap that holds the west; inside an arc's bulge, on the arc's
    // outer side.
    size_t best = 0;
    Unit west = m_Edges.front().m_Arc.GetBBox().GetMinX();
    for (size_t e = 1; e < m_Edges.size(); ++e)
    {
        const Unit x = m_Edges[e].m_Arc.GetBBox().GetMinX();
        if (x < west)
            best = e, west = x;
    }
    const Arc& a = m_Edges[best].m_Arc;
    if (a.GetStart().m_X != west && a.GetEnd().m_X != west)
        // A clockwise arc runs north at its west point, with the west on its left.
        return m_Face[a.GetHeight() > k_Unit_0 ? 2 * best : 2 * best + 1];
    const Point& v = a.GetStart().m_X == west ? a.GetStart() : a.GetEnd();
    const std::vector<size_t>& around = m_Around[static_cast<size_t>(
        std::lower_bound(m_Locations.begin(), m_Locations.end(), v) - m_Locations.begin())];
    // The last direction at or before west, counter-clockwise from east;
    // the face to its left spans the west.
    size_t pick = around.back();
    for (size_t h : around)
        if (m_HalfEdges[h].m_Angle <= k_Pi)
            pick = h;
    return m_Face[pick];
}

std::vector<std::vector<Arc>> WindingMap::GetBoundaryLoops() const
{
    const auto on_boundary = [&](size_t h)
    { return m_Winding[m_Face[h]] > 0 && m_Winding[m_Face[h ^ 1u]] <= 0; };
    std::vector<bool> used(m_HalfEdges.size(), false);
    std::vector<std::vector<Arc>> ret;
    for (size_t first = 0; first < m_HalfEdges.size(); ++first)
    {
        if (used[first] || !on_boundary(first))
            continue;
        std::vector<Arc> loop;
        size_t h = first;
        while (!used[h])
        {
            used[h] = true;
            loop.push_back(GetArc(h));
            // The sharpest left turn onto the boundary at h's end.
            size_t g = GetNext(h);
            for (size_t steps = 0; !on_boundary(g) && steps < m_HalfEdges.size(); ++steps)
                g = GetNext(g ^ 1u);
            h = g;
        }
        ret.push_back(std::move(loop));
    }
    return ret;
}

bool WindingMap::IsSplitVertex(const Point& p) const
{
    const auto i = std::lower_bound(m_Locations.begin(), m_Locations.end(), p);
    return i != m_Locations.end() && *i == p &&
           m_Around[static_cast<size_t>(i - m_Locations.begin())].size() > 2;
}
} // namespace

PolygonWithHolesCollection Polygon::ResolveSelfCrossings(const std::vector<Arc>& arcs,
                                                         const std::vector<Point>& crossings, Unit accuracy,
                                                         bool keep_largest, bool drop_holes)
{
    PolyArcIntersectionGraph::Contour contour;
    contour.m_Arcs = arcs;
    const std::vector<PolyArcIntersectionGraph::Contour> split =
        PolyArcIntersectionGraph::SplitContours({contour}, crossings, accuracy);
    if (split.empty())
        return PolygonWithHolesCollection();
    const std::vector<MapEdge> edges = FoldCopies(split.front().m_Arcs, accuracy);
    if (edges.empty())
        return PolygonWithHolesCollection();
    WindingMap map(edges, accuracy);
    bool linked = map.Build();
    std::vector<std::vector<Arc>> walked;
    if (linked)
        walked = map.GetBoundaryLoops();
    std::vector<PolyArc> loops;
    for (std::vector<Arc>& loop : walked)
    {
        if (!IsPolyArcSequence_G(loop, k_Closed))
        {
            linked = false;
            break;
        }
        const bool has_split = std::any_of(loop.begin(), loop.end(),
                                           [&](const Arc& a) { return map.IsSplitVertex(a.GetStart()); });
        if (has_split)
            loop = JoinAdjacentArcs_G(loop, k_Closed, accuracy).m_Value;
        loops.push_back(PolyArc(k_Closed, loop));
    }
    if (!linked)
    {
        loops.clear();
        linked = LinkByBrackets(split.front().m_Arcs, accuracy, loops);
    }
    if (!linked)
    {
        VELLUM_ASSERT(!"Failed to re-link in Polygon::RemoveSelfIntersections");
        PolygonWithHolesCollection ret;
        const Polygon whole(arcs, true);
        if (!whole.empty())
            ret.AddPolygonWithHoles(PolygonWithHoles(whole));
        return ret;
    }
    return AssembleLoops(loops, accuracy, keep_largest, drop_holes);
}
} // namespace geom
