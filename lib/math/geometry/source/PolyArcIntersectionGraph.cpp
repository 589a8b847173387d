// PolyArcIntersectionGraph.cpp - cutting two arc regions against each other and walking the result.
//
// The filling cuts every contour where the other operand's boundary meets it,
// snapping near vertices together so that both sides of a crossing share one
// vertex bitwise; pieces are classified against the other operand by their
// start, end and middle. Copies of a common boundary are made bitwise equal
// or opposite, then paired according to the mode: a shared side of two pads
// vanishes in their union, a void that coincides with the plane's edge
// leaves no sliver. Loops are walked from the sorted vertices, joined where
// they share a vertex, and sorted into outlines and holes.
#include "lib/math/geometry/PolyArcIntersectionGraph.h"

#include "core/lib/vellum/Assert.h"
#include "core/lib/vellum/Base.h"
#include "lib/math/geometry/GeomStl.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numeric>
#include <unordered_map>

namespace geom
{
namespace
{
// An element of a box index: a box and the index of what it stands for.
struct BoxRef
{
    Box m_Box;
    int m_Index = 0;
    const Box& GetBBox() const { return m_Box; }
};

// The position of a point along a Hilbert curve over the world box. Sorting
// the elements of a range tree by it makes the subtree boxes small, so that
// a query for a small box visits few nodes however the input was ordered.
std::uint64_t GetHilbertKey(const Point& p, const Box& world)
{
    const double size = base::GetMaxOf_T(world.GetWidth(), world.GetHeight()).GetValue();
    if (!(size > 0))
        return 0;
    const std::uint32_t n = 1u << 16;
    const auto cell = [&](Unit v, Unit low)
    {
        // A coordinate that overflowed to infinity or is no number at all
        // gets an end cell rather than an undefined conversion.
        const double f = (v - low) / Unit(size);
        if (!(f > 0.0))
            return std::uint32_t(0);
        if (!(f < 1.0))
            return n - 1;
        return static_cast<std::uint32_t>(f * (n - 1));
    };
    std::uint32_t x = cell(p.m_X, world.GetMinX()), y = cell(p.m_Y, world.GetMinY());
    std::uint64_t d = 0;
    for (std::uint32_t s = n / 2; s > 0; s /= 2)
    {
        const std::uint32_t rx = (x & s) ? 1 : 0, ry = (y & s) ? 1 : 0;
        d += static_cast<std::uint64_t>(s) * s * ((3 * rx) ^ ry);
        if (ry == 0)
        {
            if (rx == 1)
            {
                x = n - 1 - x;
                y = n - 1 - y;
            }
            std::swap(x, y);
        }
    }
    return d;
}

// A balanced box tree of the references, in Hilbert order of their centres.
void BuildBoxTree(std::vector<BoxRef>& refs, base::RangeAvlTree<BoxRef>& tree)
{
    Box world;
    for (const BoxRef& r : refs)
        world |= r.m_Box;
    std::vector<std::pair<std::uint64_t, int>> keyed(refs.size());
    for (size_t i = 0; i < refs.size(); ++i)
        keyed[i] = {GetHilbertKey(refs[i].m_Box.GetCenter(), world), static_cast<int>(i)};
    std::sort(keyed.begin(), keyed.end());
    std::vector<BoxRef> sorted;
    sorted.reserve(refs.size());
    for (const auto& k : keyed)
        sorted.push_back(refs[static_cast<size_t>(k.second)]);
    refs.swap(sorted);
    tree.Build(refs);
}

// Disjoint-set forest over point indices.
int FindRoot(std::vector<int>& parent, int i)
{
    while (parent[static_cast<size_t>(i)] != i)
    {
        parent[static_cast<size_t>(i)] = parent[static_cast<size_t>(parent[static_cast<size_t>(i)])];
        i = parent[static_cast<size_t>(i)];
    }
    return i;
}

void Join(std::vector<int>& parent, int a, int b)
{
    a = FindRoot(parent, a);
    b = FindRoot(parent, b);
    // The lower index stays the root: vertices come first, so a cluster that
    // holds a vertex is represented by it.
    if (a < b)
        parent[static_cast<size_t>(b)] = a;
    else if (b < a)
        parent[static_cast<size_t>(a)] = b;
}

// The grid cell of a coordinate. Finite coordinates of any size stay far
// inside the integers, since the cells grow with the coordinates; one that
// overflowed to infinity, or isn't a number, is put in an outermost cell.
std::int64_t GetCell(double v, double size)
{
    const double k_Limit = 4.0e18; // below 2^63, with room for the neighbours
    const double c = std::floor(v / size);
    if (std::isnan(c))
        return 0;
    return static_cast<std::int64_t>(std::clamp(c, -k_Limit, k_Limit));
}

// Points within tolerance of each other (transitively) form one cluster;
// returns each point's cluster root. A grid of cells of the tolerance's size
// keeps this near linear.
std::vector<int> ClusterPoints(const std::vector<Point>& points, Unit tolerance)
{
    std::vector<int> parent(points.size());
    std::iota(parent.begin(), parent.end(), 0);
    if (tolerance <= k_Unit_0)
    {
        std::vector<int> order(points.size());
        std::iota(order.begin(), order.end(), 0);
        std::sort(order.begin(), order.end(),
                  [&](int a, int b)
                  { return points[static_cast<size_t>(a)] < points[static_cast<size_t>(b)]; });
        for (size_t i = 1; i < order.size(); ++i)
            if (points[static_cast<size_t>(order[i])] == points[static_cast<size_t>(order[i - 1])])
                Join(parent, order[i], order[i - 1]);
    }
    else
    {
        // Cells at least as wide as the tolerance, so that a point's
        // neighbours lie in the 3 x 3 cells around it; never so narrow that
        // a coordinate's cell number leaves the integers.
        double magnitude = 0;
        for (const Point& p : points)
            for (const double v : {std::fabs(p.m_X.GetValue()), std::fabs(p.m_Y.GetValue())})
                if (v <= std::numeric_limits<double>::max())
                    magnitude = std::max(magnitude, v);
        double t = std::max(tolerance.GetValue(), magnitude * 1e-15);
        if (!(t > 0.0 && t <= std::numeric_limits<double>::max()))
            t = 1.0;
        const Area tolerance_square = tolerance * tolerance;
        struct CellHash
        {
            size_t operator()(const std::pair<std::int64_t, std::int64_t>& c) const
            {
                return std::hash<std::uint64_t>()(static_cast<std::uint64_t>(c.first) * 73856093u ^
                                                  static_cast<std::uint64_t>(c.second) * 19349663u);
            }
        };
        std::unordered_map<std::pair<std::int64_t, std::int64_t>, std::vector<int>, CellHash> grid;
        grid.reserve(points.size());
        for (size_t i = 0; i < points.size(); ++i)
        {
            const Point& p = points[i];
            const std::int64_t cx = GetCell(p.m_X.GetValue(), t), cy = GetCell(p.m_Y.GetValue(), t);
            for (std::int64_t dx = -1; dx <= 1; ++dx)
                for (std::int64_t dy = -1; dy <= 1; ++dy)
                {
                    const auto found = grid.find({cx + dx, cy + dy});
                    if (found == grid.end())
                        continue;
                    for (int j : found->second)
                        if (points[static_cast<size_t>(j)].GetDistanceSquareTo(p) <= tolerance_square)
                            Join(parent, static_cast<int>(i), j);
                }
            grid[{cx, cy}].push_back(static_cast<int>(i));
        }
    }
    for (size_t i = 0; i < parent.size(); ++i)
        parent[i] = FindRoot(parent, static_cast<int>(i));
    return parent;
}

struct IndexedPoint
{
    Point m_Point;
    Box GetBBox() const { return Box(m_Point); }
};

// The piece of an edge between two of its points, rebuilt on the edge's own
// circle so that the piece's ends are exactly the given points. A piece
// whose sagitta (length^2 / 8 r) stays under half the accuracy is straight:
// its ends, moved by snapping by up to the accuracy, fit the circle too
// loosely for a centre to be derived from them.
Arc MakePiece(const Arc& arc, const Point& a, double from, const Point& b, double to, Unit accuracy)
{
    if (arc.GetStart() == a && arc.GetEnd() == b)
        return arc;
    if (arc.GetHeight() == k_Unit_0)
        return Arc(a, b, k_Unit_0);
    // The piece's length along the arc, not its chord, tells a short piece
    // from the long rest of a circle cut near its start.
    const Unit along = arc.GetLength() * (to - from);
    if (a != b && along * along < arc.GetRadius() * accuracy * 4.0)
        return Arc(a, b, k_Unit_0);
    if (a == b)
        return Arc(a, b, arc.GetHeight(), arc.GetCenterAzimuth()); // a full circle whose start moved
    // Normally the piece is placed by the edge's centre. A short chord on
    // the long rest of a circle can't place it: its snapped ends lie off the
    // circle by more than the chord allows. That piece takes the edge's
    // radius, the short or the long way round, whichever passes nearer the
    // middle of the swept part.
    const Unit radius = arc.GetRadius();
    if (a.GetDistanceSquareTo(b) >= radius * accuracy * 100.0)
        return Arc(Segment(a, b), arc.GetDirection(), arc.GetCenter());
    const Point middle = arc.GetPointAt((from + to) * 0.5);
    const Arc short_way(Segment(a, b), radius, arc.GetDirection(), false);
    const Arc long_way(Segment(a, b), radius, arc.GetDirection(), true);
    return short_way.GetMiddle().GetDistanceSquareTo(middle) <=
                   long_way.GetMiddle().GetDistanceSquareTo(middle)
               ? short_way
               : long_way;
}

// A closed contour that passes a point twice pinches there: a hole that
// touches its outline, or two outlines that touch. The pieces on either side
// of such a point often lie on one line or circle (a disk touching a side at
// a point), and joined across it they would hide where the contour touches
// itself. Runs between such points are joined on their own.
std::vector<Arc> JoinAdjacentArcsKeepingPinches(const std::vector<Arc>& arcs, Unit accuracy)
{
    const size_t n = arcs.size();
    std::vector<Point> starts;
    starts.reserve(n);
    for (const Arc& a : arcs)
        starts.push_back(a.GetStart());
    std::sort(starts.begin(), starts.end());
    const auto pinch = [&](size_t i)
    {
        const auto range = std::equal_range(starts.begin(), starts.end(), arcs[i].GetStart());
        return range.second - range.first > 1;
    };
    size_t first = n;
    for (size_t i = 0; i < n && first == n; ++i)
        if (pinch(i))
            first = i;
    if (first == n)
        return JoinAdjacentArcs_G(arcs, k_Closed, accuracy).m_Value;
    std::vector<Arc> ret, run;
    const auto flush = [&]()
    {
        const std::vector<Arc> joined = JoinAdjacentArcs_G(run, k_Open, accuracy).m_Value;
        ret.insert(ret.end(), joined.begin(), joined.end());
        run.clear();
    };
    for (size_t k = 0; k < n; ++k)
    {
        const size_t i = (first + k) % n;
        if (k > 0 && pinch(i))
            flush();
        run.push_back(arcs[i]);
    }
    flush();
    return ret;
}
} // namespace

// --- Splitting ---

namespace
{
const double k_FirstPosition = std::nextafter(0.0, 1.0);
const double k_LastPosition = std::nextafter(1.0, 0.0);
} // namespace

std::vector<PolyArcIntersectionGraph::Contour>
PolyArcIntersectionGraph::SplitContours(const std::vector<Contour>& contours,
                                        const std::vector<Point>& extra_points, Unit accuracy)
{
    // Every edge with its box grown by accuracy, indexed.
    struct EdgeId
    {
        int m_Contour;
        int m_Edge;
    };
    std::vector<EdgeId> ids;
    std::vector<BoxRef> refs;
    std::vector<Point> points; // the vertices first, then crossings and extras
    for (size_t c = 0; c < contours.size(); ++c)
        for (size_t k = 0; k < contours[c].m_Arcs.size(); ++k)
        {
            const Arc& arc = contours[c].m_Arcs[k];
            refs.push_back(BoxRef{GetExpandedBBox_T(arc, accuracy), static_cast<int>(ids.size())});
            ids.push_back(EdgeId{static_cast<int>(c), static_cast<int>(k)});
            points.push_back(arc.GetStart());
        }
    const size_t vertex_count = points.size();
    std::vector<Box> edge_boxes(refs.size());
    for (const BoxRef& r : refs)
        edge_boxes[static_cast<size_t>(r.m_Index)] = r.m_Box;
    base::RangeAvlTree<BoxRef> edge_tree;
    BuildBoxTree(refs, edge_tree);

    // Where edges of different groups meet: crossings, touchings within
    // accuracy, and the ends of common pieces.
    for (const BoxRef& r : refs)
    {
        const EdgeId& e = ids[static_cast<size_t>(r.m_Index)];
        const Contour& ce = contours[static_cast<size_t>(e.m_Contour)];
        const Arc& arc_e = ce.m_Arcs[static_cast<size_t>(e.m_Edge)];
        for (auto j = edge_tree.BeginInRange(k_SkipOutside, r.m_Box); j.IsDereferenceable(); ++j)
        {
            if (j->m_Index <= r.m_Index)
                continue;
            const EdgeId& f = ids[static_cast<size_t>(j->m_Index)];
            const Contour& cf = contours[static_cast<size_t>(f.m_Contour)];
            if (cf.m_Group == ce.m_Group)
                continue;
            const ArcIntersections found =
                arc_e.GetIntersections(cf.m_Arcs[static_cast<size_t>(f.m_Edge)], accuracy);
            for (const Result_T<Arc>* x : {&found.first, &found.second})
            {
                if (!x->m_Success)
                    continue;
                points.push_back(x->m_Value.GetStart());
                if (x->m_Value.GetEnd() != x->m_Value.GetStart())
                    points.push_back(x->m_Value.GetEnd());
            }
        }
    }
    points.insert(points.end(), extra_points.begin(), extra_points.end());

    // One location per cluster: a vertex when the cluster holds one, so that
    // the operands' own corners stay where they are; else the crossings' mean.
    const std::vector<int> root = ClusterPoints(points, accuracy);
    std::vector<Point> location(points.size());
    {
        std::vector<double> sx(points.size(), 0.0), sy(points.size(), 0.0);
        std::vector<int> count(points.size(), 0);
        for (size_t i = 0; i < points.size(); ++i)
        {
            const size_t r = static_cast<size_t>(root[i]);
            sx[r] += points[i].m_X.GetValue();
            sy[r] += points[i].m_Y.GetValue();
            ++count[r];
        }
        for (size_t i = 0; i < points.size(); ++i)
        {
            const size_t r = static_cast<size_t>(root[i]);
            if (r < vertex_count || count[r] == 1)
                location[i] = points[r];
            else
                location[i] = Point(sx[r] / count[r], sy[r] / count[r]);
        }
    }
    std::vector<Point> unique_locations;
    for (size_t i = 0; i < points.size(); ++i)
        if (static_cast<size_t>(root[i]) == i)
            unique_locations.push_back(location[i]);
    std::vector<BoxRef> point_refs;
    point_refs.reserve(unique_locations.size());
    for (size_t i = 0; i < unique_locations.size(); ++i)
        point_refs.push_back(BoxRef{Box(unique_locations[i]), static_cast<int>(i)});
    base::RangeAvlTree<BoxRef> point_tree;
    BuildBoxTree(point_refs, point_tree);

    // Each edge cut at the cluster locations on it, with its ends moved to
    // the locations of their clusters.
    std::vector<Contour> ret;
    ret.reserve(contours.size());
    size_t edge_index = 0;
    std::vector<std::pair<double, Point>> cuts;
    for (const Contour& c : contours)
    {
        Contour split;
        split.m_Owner = c.m_Owner;
        split.m_Group = c.m_Group;
        const size_t n = c.m_Arcs.size();
        const size_t first = edge_index;
        for (size_t k = 0; k < n; ++k, ++edge_index)
        {
            const Arc& arc = c.m_Arcs[k];
            const Point& start = location[first + k];
            const Point& end = location[first + (k + 1) % n];
            cuts.clear();
            for (auto j = point_tree.BeginInRange(k_SkipOutside, edge_boxes[edge_index]);
                 j.IsDereferenceable(); ++j)
            {
                const Point& p = unique_locations[static_cast<size_t>(j->m_Index)];
                if (p == start || p == end || !arc.IntersectsWith(p, accuracy))
                    continue;
                // The position is taken without tolerance: a point that the
                // clustering kept apart from an end (by circular distance)
                // must cut this edge as it cuts the edge it came from, even
                // where it lies within the accuracy's square round the end.
                // One just beyond an end is cut next to it.
                const double position =
                    std::clamp(arc.GetPosition(p, k_Unit_0), k_FirstPosition, k_LastPosition);
                cuts.emplace_back(position, p);
            }
            std::sort(cuts.begin(), cuts.end(),
                      [](const auto& a, const auto& b)
                      { return a.first < b.first || (a.first == b.first && a.second < b.second); });
            Point from = start;
            double from_position = 0.0;
            for (const auto& cut : cuts)
            {
                if (cut.second == from)
                    continue;
                split.m_Arcs.push_back(MakePiece(arc, from, from_position, cut.second, cut.first, accuracy));
                from = cut.second;
                from_position = cut.first;
            }
            if (from != end ||
                (cuts.empty() && arc.GetStart() == arc.GetEnd() && arc.GetHeight() != k_Unit_0))
                split.m_Arcs.push_back(MakePiece(arc, from, from_position, end, 1.0, accuracy));
        }
        // Pieces that became points at tolerance 0 go; the chain stays closed
        // because their ends coincide.
        std::erase_if(split.m_Arcs, [](const Arc& a) { return a.IsPoint(k_Unit_0, nullptr); });
        VELLUM_ASSERT(IsPolyArcSequence_G(split.m_Arcs, k_Closed));
        if (!split.m_Arcs.empty())
            ret.push_back(std::move(split));
    }
    return ret;
}

void AppendContours_G(const PolygonWithHoles& region, int owner, int group, Unit accuracy,
                      std::vector<PolyArcIntersectionGraph::Contour>& out)
{
    const auto add = [&](const PolyArc& chain)
    {
        if (chain.empty())
            return;
        PolyArcIntersectionGraph::Contour c;
        c.m_Owner = owner;
        c.m_Group = group;
        c.m_Arcs = JoinAdjacentArcsKeepingPinches(chain.GetEdges(), accuracy * 0.5);
        VELLUM_ASSERT(IsPolyArcSequence_G(c.m_Arcs, k_Closed));
        out.push_back(std::move(c));
    };
    add(region.GetPolygon());
    for (const Polygon& hole : region.GetHoles())
        add(hole.GetReversed());
}

// --- Filling ---

namespace
{
// How p lies to the entries of a collection; the entry `skip`, when not
// negative, is left out. Inside any entry wins over the border of another.
PointRelation GetCollectionRelation(const PolygonWithHolesCollection& c, const Point& p, Unit accuracy,
                                    int skip)
{
    bool on_boundary = false;
    for (auto i = c.begin(k_SkipOutside, Box(p).GetExpanded(accuracy)); i != c.end(); ++i)
    {
        if (skip >= 0 && i.GetIndex() == skip)
            continue;
        switch (i->GetRelation(p, accuracy))
        {
        case k_PointInside:
            return k_PointInside;
        case k_PointOnBoundary:
            on_boundary = true;
            break;
        default:
            break;
        }
    }
    return on_boundary ? k_PointOnBoundary : k_PointOutside;
}

} // namespace

PolygonWithHolesCollection PolyArcIntersectionGraph::GetSpatiallySorted(const PolygonWithHolesCollection& c)
{
    std::vector<PolygonWithHoles> entries = c.GetPolygonsWithHoles();
    const Box world = c.GetBBox();
    std::vector<std::pair<std::uint64_t, size_t>> keyed(entries.size());
    for (size_t i = 0; i < entries.size(); ++i)
        keyed[i] = {GetHilbertKey(entries[i].GetBBox().GetCenter(), world), i};
    std::stable_sort(keyed.begin(), keyed.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    std::vector<PolygonWithHoles> sorted;
    sorted.reserve(entries.size());
    for (const auto& k : keyed)
        sorted.push_back(entries[k.second]);
    return PolygonWithHolesCollection(sorted);
}

PolyArcIntersectionGraph::PolyArcIntersectionGraph(const Polygon& p1, const Polygon& p2, Unit accuracy)
    : m_CalcAccuracy(accuracy)
{
    std::vector<Contour> contours;
    AppendContours_G(PolygonWithHoles(p1), 0, 0, accuracy, contours);
    AppendContours_G(PolygonWithHoles(p2), 1, 1, accuracy, contours);
    Fill(
        contours,
        [&](const Point& p, const Contour& of, Unit a)
        { return (of.m_Owner == 0 ? p2 : p1).GetRelation(p, a); },
        [](InsideOther) { return true; },
        [&](const Point& p, int group, Unit a) { return (group == 0 ? p1 : p2).GetRelation(p, a); });
}

PolyArcIntersectionGraph::PolyArcIntersectionGraph(const PolygonWithHoles& p1, const PolygonWithHoles& p2,
                                                   Unit accuracy)
    : m_CalcAccuracy(accuracy)
{
    std::vector<Contour> contours;
    AppendContours_G(p1, 0, 0, accuracy, contours);
    AppendContours_G(p2, 1, 1, accuracy, contours);
    Fill(
        contours,
        [&](const Point& p, const Contour& of, Unit a)
        { return (of.m_Owner == 0 ? p2 : p1).GetRelation(p, a); },
        [](InsideOther) { return true; },
        [&](const Point& p, int group, Unit a) { return (group == 0 ? p1 : p2).GetRelation(p, a); });
}

PolyArcIntersectionGraph::PolyArcIntersectionGraph(const PolygonWithHolesCollection& pp1,
                                                   const PolygonWithHolesCollection& pp2, Unit accuracy)
    : m_CalcAccuracy(accuracy)
{
    VELLUM_ASSERT(m_CalcAccuracy >= base::GetMaxOf_T(pp1.GetEpsilon(), pp2.GetEpsilon()));
    const PolygonWithHolesCollection s1 = GetSpatiallySorted(pp1), s2 = GetSpatiallySorted(pp2);
    std::vector<Contour> contours;
    for (const PolygonWithHoles& r : s1)
        AppendContours_G(r, 0, 0, accuracy, contours);
    for (const PolygonWithHoles& r : s2)
        AppendContours_G(r, 1, 1, accuracy, contours);
    Fill(
        contours,
        [&](const Point& p, const Contour& of, Unit a)
        { return GetCollectionRelation(of.m_Owner == 0 ? s2 : s1, p, a, -1); },
        [](InsideOther) { return true; },
        [&](const Point& p, int group, Unit a)
        { return GetCollectionRelation(group == 0 ? s1 : s2, p, a, -1); });
}

PolyArcIntersectionGraph::InsideOther PolyArcIntersectionGraph::Classify(const Arc& arc, const Contour& of,
                                                                         const PointClassifier& classify,
                                                                         Unit accuracy)
{
    VELLUM_ASSERT(!arc.IsPoint(k_Unit_0, nullptr));
    for (const Point& p : {arc.GetStart(), arc.GetEnd(), arc.GetMiddle()})
    {
        switch (classify(p, of, accuracy))
        {
        case k_PointInside:
            return k_InsideOtherEdge;
        case k_PointOutside:
            return k_OutsideOtherEdge;
        case k_PointOnBoundary:
            break;
        default:
            VELLUM_ASSERT(!"This should never happen!");
            return k_OutsideOtherEdge;
        }
    }
    return k_CommonEdge;
}

void PolyArcIntersectionGraph::Fill(const std::vector<Contour>& input, const PointClassifier& classify,
                                    const std::function<bool(InsideOther)>& keep, const GroupClassifier& own)
{
    const std::vector<Contour> contours = SplitContours(input, {}, m_CalcAccuracy);
    size_t total = 0;
    for (const Contour& c : contours)
        total += c.m_Arcs.size();
    // Vertices point into the edges and the edges into the vertices: both
    // vectors are reserved up front and never grow while pointers exist.
    m_Edges.clear();
    m_Vertices.clear();
    m_Edges.reserve(total);
    std::vector<const Contour*> edge_contours;
    edge_contours.reserve(total);
    std::vector<Point> locations;
    locations.reserve(total * 2);
    for (const Contour& c : contours)
        for (const Arc& arc : c.m_Arcs)
        {
            if (arc.IsPoint(k_Unit_0, nullptr))
                continue;
            const InsideOther inside_other = Classify(arc, c, classify, m_CalcAccuracy);
            if (!keep(inside_other))
                continue;
            Edge e;
            e.m_Arc = arc;
            e.m_InsideOther = inside_other;
            e.m_Owner = c.m_Owner;
            e.m_Group = c.m_Group;
            m_Edges.push_back(e);
            edge_contours.push_back(&c);
            locations.push_back(arc.GetStart());
            locations.push_back(arc.GetEnd());
        }
    std::sort(locations.begin(), locations.end());
    locations.erase(std::unique(locations.begin(), locations.end()), locations.end());
    m_Vertices.resize(locations.size());
    for (size_t i = 0; i < locations.size(); ++i)
        m_Vertices[i].m_Location = locations[i];
    const auto find = [&](const Point& p) -> Vertex*
    {
        const auto i = std::lower_bound(locations.begin(), locations.end(), p);
        if (i == locations.end() || *i != p)
            return nullptr;
        return &m_Vertices[static_cast<size_t>(i - locations.begin())];
    };
    for (Edge& e : m_Edges)
    {
        Vertex* v1 = find(e.m_Arc.GetStart());
        Vertex* v2 = find(e.m_Arc.GetEnd());
        if (m_SingleCollection && (!v1 || !v2))
        {
            DebugPrint(1,
                       L"PolyArcIntersectionGraph2::FillFrom, unexpected failure v1=%p, v2=%p, throwing an "
                       L"exception\n",
                       static_cast<void*>(v1), static_cast<void*>(v2));
            throw k_GeometryFailure;
        }
        VELLUM_ASSERT(v1 && v2);
        if (!v1 || !v2)
            throw k_GeometryFailure;
        e.m_StartVertex = v1;
        e.m_EndVertex = v2;
        v1->m_Outgoing.push_back(&e);
        v2->m_Incoming.push_back(&e);
    }
    RecheckCommonEdges(classify, edge_contours);
    MergeCommonEdges();
    MarkDoubledBackEdges(own);
}

namespace
{
using Graph = PolyArcIntersectionGraph;

// The common edges grouped by their unordered vertex pair.
std::vector<std::vector<Graph::Edge*>> GetCommonGroups(std::vector<Graph::Edge>& edges)
{
    std::vector<Graph::Edge*> common;
    for (Graph::Edge& e : edges)
        if (e.m_InsideOther == Graph::k_CommonEdge)
            common.push_back(&e);
    const auto key = [](const Graph::Edge* e)
    {
        const Graph::Vertex* a = e->m_StartVertex;
        const Graph::Vertex* b = e->m_EndVertex;
        return a < b ? std::make_pair(a, b) : std::make_pair(b, a);
    };
    std::sort(common.begin(), common.end(),
              [&](const Graph::Edge* x, const Graph::Edge* y)
              { return key(x) < key(y) || (key(x) == key(y) && x < y); });
    std::vector<std::vector<Graph::Edge*>> groups;
    for (size_t i = 0; i < common.size();)
    {
        size_t j = i;
        while (j < common.size() && key(common[j]) == key(common[i]))
            ++j;
        groups.emplace_back(common.begin() + static_cast<std::ptrdiff_t>(i),
                            common.begin() + static_cast<std::ptrdiff_t>(j));
        i = j;
    }
    return groups;
}

// Whether f runs the same way as e along their common vertex pair; for a
// closed edge (both ends one vertex) the nearer of the two heights decides.
bool IsSameWay(const Graph::Edge& e, const Graph::Edge& f)
{
    if (e.m_StartVertex != e.m_EndVertex)
        return f.m_StartVertex == e.m_StartVertex;
    return (f.m_Arc.GetHeight() - e.m_Arc.GetHeight()).GetAbs() <=
           (f.m_Arc.GetHeight() + e.m_Arc.GetHeight()).GetAbs();
}

Unit GetHeightAlong(const Graph::Edge& e, const Graph::Edge& f)
{
    return IsSameWay(e, f) ? f.m_Arc.GetHeight() : -f.m_Arc.GetHeight();
}
} // namespace

void PolyArcIntersectionGraph::RecheckCommonEdges(const PointClassifier& classify,
                                                  const std::vector<const Contour*>& edge_contours)
{
    // A common edge needs a copy of the other operand between the same
    // vertices; one without a partner only ran close to the other boundary,
    // and its middle is asked again at a finer tolerance.
    const Unit fine = m_CalcAccuracy / 100.0;
    for (std::vector<Edge*>& group : GetCommonGroups(m_Edges))
        for (Edge* e : group)
        {
            const bool partnered = std::any_of(
                group.begin(), group.end(),
                [&](const Edge* f)
                {
                    return f != e && f->m_Group != e->m_Group &&
                           (GetHeightAlong(*e, *f) - e->m_Arc.GetHeight()).GetAbs() <= m_CalcAccuracy;
                });
            if (partnered)
                continue;
            e->m_InsideOther = k_UnmatchedCommonEdge;
        }
    for (size_t i = 0; i < m_Edges.size(); ++i)
    {
        Edge& e = m_Edges[i];
        if (e.m_InsideOther != k_UnmatchedCommonEdge)
            continue;
        switch (classify(e.m_Arc.GetMiddle(), *edge_contours[i], fine))
        {
        case k_PointInside:
            e.m_InsideOther = k_InsideOtherEdge;
            break;
        case k_PointOutside:
            e.m_InsideOther = k_OutsideOtherEdge;
            break;
        default:
            e.m_InsideOther = k_CommonEdge;
            break;
        }
    }
}

void PolyArcIntersectionGraph::MergeCommonEdges()
{
    // Copies of one boundary piece from different operands become bitwise
    // equal or opposite, so that pairing can compare them exactly.
    for (std::vector<Edge*>& group : GetCommonGroups(m_Edges))
    {
        std::vector<bool> done(group.size(), false);
        for (size_t i = 0; i < group.size(); ++i)
        {
            if (done[i])
                continue;
            const Edge& e = *group[i];
            std::vector<size_t> members{i};
            double sum = e.m_Arc.GetHeight().GetValue();
            for (size_t j = i + 1; j < group.size(); ++j)
            {
                if (done[j])
                    continue;
                const Unit along = GetHeightAlong(e, *group[j]);
                if ((along - e.m_Arc.GetHeight()).GetAbs() > m_CalcAccuracy)
                    continue;
                members.push_back(j);
                sum += along.GetValue();
            }
            if (members.size() < 2)
                continue;
            const Arc merged(e.m_Arc.GetStart(), e.m_Arc.GetEnd(),
                             Unit(sum / static_cast<double>(members.size())), e.m_Arc.GetCenterAzimuth());
            for (size_t m : members)
            {
                const Edge& e1 = e;
                const Edge& e2 = *group[m];
                VELLUM_ASSERT(e1.m_InsideOther == k_CommonEdge && e2.m_InsideOther == k_CommonEdge);
                done[m] = true;
                Edge& f = *group[m];
                f.m_Arc = IsSameWay(e, f) || m == i ? merged : merged.GetReversed();
            }
        }
    }
}

void PolyArcIntersectionGraph::MarkDoubledBackEdges(const GroupClassifier& own)
{
    // Where a contour runs out along a piece and back, the two copies of its
    // own cancel: its material lies on both sides of the piece (a slit cut
    // into it), on neither (a spike sticking out of it), or, where snapping
    // folded a corner onto the side after it, on one. Which is told by
    // points a few accuracies to either side of the piece's middle; at the
    // middle of an arc the tangent is parallel to the chord.
    for (std::vector<Edge*>& group : GetCommonGroups(m_Edges))
        for (size_t i = 0; i < group.size(); ++i)
        {
            Edge& e = *group[i];
            int net = 0;
            bool both_ways = false;
            for (const Edge* f : group)
                if (f->m_Group == e.m_Group)
                {
                    const bool same_way = f == &e || IsSameWay(e, *f);
                    net += same_way ? 1 : -1;
                    both_ways = both_ways || !same_way;
                }
            if (!both_ways || net != 0)
                continue;
            const Vector chord = e.m_Arc.GetEnd() - e.m_Arc.GetStart();
            const double length = std::hypot(chord.GetX().GetValue(), chord.GetY().GetValue());
            if (!(length > 0.0))
                continue;
            const double step = 4.0 * m_CalcAccuracy.GetValue() / length;
            const Point middle = e.m_Arc.GetMiddle();
            const Point left(middle.m_X - chord.GetY() * step, middle.m_Y + chord.GetX() * step);
            const Point right(middle.m_X + chord.GetY() * step, middle.m_Y - chord.GetX() * step);
            const Unit fine = m_CalcAccuracy / 100.0;
            e.m_OwnSides = (own(left, e.m_Group, fine) == k_PointInside ? k_Left : 0) |
                           (own(right, e.m_Group, fine) == k_PointInside ? k_Right : 0);
        }
}

// --- Result ---

void PolyArcIntersectionGraph::PairCommonEdges(Mode mode)
{
    // Copies of one boundary piece, made bitwise equal or opposite by the
    // merging, are counted by the side their material lies on. In the
    // subtraction and the symmetric difference the second operand counts
    // from its outside, as if flipped. A contour group whose copies go both
    // ways covers both sides (a slit) or neither (a spike). Material on both sides
    // (two pads sharing a side) or on none makes all copies vanish; material
    // on one side leaves one copy facing that way (a void flush with the
    // plane's edge). Any number of copies from any number of entries follow
    // the same rule.
    const auto flipped = [mode](const Edge* e) { return mode > k_Intersection && e->m_Owner == 1; };
    for (std::vector<Edge*>& group : GetCommonGroups(m_Edges))
    {
        std::vector<bool> done(group.size(), false);
        for (size_t i = 0; i < group.size(); ++i)
        {
            if (done[i] || group[i]->m_Visited)
                continue;
            const Edge& e = *group[i];
            std::vector<std::pair<Edge*, bool>> copies; // with the side they face
            std::vector<std::pair<int, int>> net;       // contour group, forward minus backward
            for (size_t j = i; j < group.size(); ++j)
            {
                Edge* f = group[j];
                if (done[j] || f->m_Visited)
                    continue;
                const bool same_way = j == i || IsSameWay(e, *f);
                const Arc along = same_way ? f->m_Arc : f->m_Arc.GetReversed();
                if (along != e.m_Arc)
                    continue;
                done[j] = true;
                const bool forward = same_way != flipped(f);
                copies.emplace_back(f, forward);
                auto n = std::find_if(net.begin(), net.end(),
                                      [&](const auto& g) { return g.first == f->m_Group; });
                if (n == net.end())
                    n = net.insert(net.end(), {f->m_Group, 0});
                n->second += forward ? 1 : -1;
            }
            // Each operand's material beside the piece, from its own copies:
            // a net count forward covers the left, backward the right, and
            // a group that runs both ways covers both sides or neither. The
            // counts above were taken as walked, so a flipped operand's are
            // turned back here.
            bool covers[2][2] = {{false, false}, {false, false}}; // [owner][left, right]
            bool present[2] = {false, false};
            for (const std::pair<Edge*, bool>& copy : copies)
            {
                const Edge* f = copy.first;
                const bool forward = copy.second;
                const auto n = std::find_if(net.begin(), net.end(),
                                            [&](const auto& g) { return g.first == f->m_Group; });
                const int owner = f->m_Owner == 1 ? 1 : 0;
                const int count = flipped(f) ? -n->second : n->second;
                const bool same_way = forward != flipped(f);
                const int own_left = same_way ? k_Left : k_Right, own_right = same_way ? k_Right : k_Left;
                present[owner] = true;
                covers[owner][0] =
                    covers[owner][0] || count > 0 || (count == 0 && (f->m_OwnSides & own_left));
                covers[owner][1] =
                    covers[owner][1] || count < 0 || (count == 0 && (f->m_OwnSides & own_right));
            }
            bool left = covers[0][0] || covers[1][0], right = covers[0][1] || covers[1][1];
            if (present[0] && present[1] && mode != k_Union)
            {
                left = mode == k_Intersection  ? covers[0][0] && covers[1][0]
                       : mode == k_Subtraction ? covers[0][0] && !covers[1][0]
                                               : covers[0][0] != covers[1][0];
                right = mode == k_Intersection  ? covers[0][1] && covers[1][1]
                        : mode == k_Subtraction ? covers[0][1] && !covers[1][1]
                                                : covers[0][1] != covers[1][1];
            }
            else if (!present[0] && mode > k_Intersection)
                std::swap(left, right); // the second operand alone, counted from its outside
            bool kept = false;
            for (auto& [f, forward] : copies)
            {
                const bool keep = !kept && left != right && forward == left;
                kept = kept || keep;
                f->m_Visited = !keep;
            }
        }
    }
}

namespace
{
bool TakesForward(const Graph::Edge& e, Graph::Mode mode)
{
    switch (mode)
    {
    case Graph::k_Union:
        return e.m_InsideOther != Graph::k_InsideOtherEdge;
    case Graph::k_Intersection:
        return e.m_InsideOther != Graph::k_OutsideOtherEdge;
    case Graph::k_SymmetricDifference:
        return e.m_InsideOther == Graph::k_OutsideOtherEdge;
    case Graph::k_Subtraction:
        return e.m_Owner == 0 && e.m_InsideOther != Graph::k_InsideOtherEdge;
    }
    return false;
}

bool TakesBackward(const Graph::Edge& e, Graph::Mode mode)
{
    switch (mode)
    {
    case Graph::k_SymmetricDifference:
        return e.m_InsideOther == Graph::k_InsideOtherEdge;
    case Graph::k_Subtraction:
        return e.m_Owner == 1 && e.m_InsideOther != Graph::k_OutsideOtherEdge;
    default:
        return false;
    }
}

bool HasAvailableEdge(const Graph::Vertex& v, Graph::Mode mode)
{
    for (const Graph::Edge* e : v.m_Outgoing)
        if (!e->m_Visited && TakesForward(*e, mode))
            return true;
    for (const Graph::Edge* e : v.m_Incoming)
        if (!e->m_Visited && TakesBackward(*e, mode))
            return true;
    return false;
}
} // namespace

PolyArcIntersectionGraph::Loop PolyArcIntersectionGraph::Walk(Vertex* start, Mode mode)
{
    Loop ret;
    std::vector<Edge*> edges; // used in this walk
    Vertex* cur = start;
    for (;;)
    {
        Edge* edge = nullptr;
        bool forward = true;
        for (Edge* e : cur->m_Outgoing)
            if (!e->m_Visited && TakesForward(*e, mode))
            {
                edge = e;
                break;
            }
        if (!edge)
            for (Edge* e : cur->m_Incoming)
                if (!e->m_Visited && TakesBackward(*e, mode))
                {
                    edge = e;
                    forward = false;
                    break;
                }
        if (!edge)
        {
            if (cur == start)
            {
                ret.m_Closed = !ret.m_Arcs.empty() && IsPolyArcSequence_G(ret.m_Arcs, k_Closed);
                return ret;
            }
            // A dead end: the edges go back, but the first stays used so
            // that the same walk isn't tried again.
            VELLUM_ASSERT(!edges.empty());
            for (size_t i = 1; i < edges.size(); ++i)
                edges[i]->m_Visited = false;
            ret.m_Closed = false;
            return ret;
        }
        const bool backward = TakesBackward(*edge, mode);
        VELLUM_ASSERT(TakesForward(*edge, mode) != backward);
        VELLUM_ASSERT(edge->m_Arc.GetStart() == edge->m_StartVertex->m_Location &&
                      edge->m_Arc.GetEnd() == edge->m_EndVertex->m_Location);
        const Arc arc = forward ? edge->m_Arc : edge->m_Arc.GetReversed();
        VELLUM_ASSERT(ret.m_Arcs.empty() || ret.m_Arcs.back().GetEnd() == arc.GetStart());
        ret.m_Arcs.push_back(arc);
        ret.m_Vertices.push_back(cur);
        edge->m_Visited = true;
        edges.push_back(edge);
        cur = forward ? edge->m_EndVertex : edge->m_StartVertex;
    }
}

std::vector<PolyArcIntersectionGraph::Loop> PolyArcIntersectionGraph::WalkLoops(Mode mode)
{
    std::vector<Loop> closed;
    for (Vertex& v : m_Vertices)
        while (HasAvailableEdge(v, mode))
        {
            Loop loop = Walk(&v, mode);
            if (loop.m_Closed)
                closed.push_back(std::move(loop));
        }
    return JoinLoopsAtVertices(closed, m_Vertices.empty() ? nullptr : &m_Vertices.front(), m_Vertices.size());
}

std::vector<PolyArcIntersectionGraph::Loop>
PolyArcIntersectionGraph::JoinLoopsAtVertices(const std::vector<Loop>& loops, const Vertex* base_vertex,
                                              size_t vertex_count)
{
    // Loops that touch at a vertex leave as one contour that pinches there:
    // each loop is spliced into one that was reached before, at the shared
    // vertex, so that the joined chain stays continuous.
    struct Attach
    {
        size_t m_Position; // in the parent, the arc before which the child runs
        size_t m_Child;
        size_t m_ChildPosition; // the child's arc that starts at the shared vertex
        bool m_Done = false;
    };
    const auto vertex_index = [&](const Vertex* v) { return static_cast<size_t>(v - base_vertex); };
    std::vector<std::vector<std::pair<size_t, size_t>>> at_vertex(vertex_count);
    for (size_t l = 0; l < loops.size(); ++l)
        for (size_t pos = 0; pos < loops[l].m_Vertices.size(); ++pos)
            at_vertex[vertex_index(loops[l].m_Vertices[pos])].emplace_back(l, pos);
    std::vector<bool> reached(loops.size(), false);
    std::vector<std::vector<Attach>> children(loops.size());
    std::vector<Loop> all;
    for (size_t root = 0; root < loops.size(); ++root)
    {
        if (reached[root])
            continue;
        reached[root] = true;
        std::vector<size_t> queue{root};
        for (size_t q = 0; q < queue.size(); ++q)
        {
            const size_t x = queue[q];
            for (size_t pos = 0; pos < loops[x].m_Vertices.size(); ++pos)
                for (const auto& [other, other_pos] : at_vertex[vertex_index(loops[x].m_Vertices[pos])])
                    if (!reached[other])
                    {
                        reached[other] = true;
                        children[x].push_back(Attach{pos, other, other_pos});
                        queue.push_back(other);
                    }
        }
        Loop ret;
        ret.m_Closed = true;
        struct Frame
        {
            size_t m_Loop, m_Start, m_Step;
        };
        std::vector<Frame> stack{{root, 0, 0}};
        while (!stack.empty())
        {
            Frame& f = stack.back();
            const Loop& l = loops[f.m_Loop];
            if (f.m_Step == l.m_Arcs.size())
            {
                stack.pop_back();
                continue;
            }
            const size_t pos = (f.m_Start + f.m_Step) % l.m_Arcs.size();
            bool descended = false;
            for (Attach& a : children[f.m_Loop])
                if (!a.m_Done && a.m_Position == pos)
                {
                    a.m_Done = true;
                    stack.push_back(Frame{a.m_Child, a.m_ChildPosition, 0});
                    descended = true;
                    break;
                }
            if (descended)
                continue;
            ret.m_Arcs.push_back(l.m_Arcs[pos]);
            ret.m_Vertices.push_back(l.m_Vertices[pos]);
            ++f.m_Step;
        }
        VELLUM_ASSERT(ret.m_Arcs.front().GetStart() == ret.m_Arcs.back().GetEnd());
        all.push_back(std::move(ret));
    }
    return all;
}

PolygonWithHolesCollection PolyArcIntersectionGraph::Assemble(const std::vector<Loop>& loops)
{
    const Area limit = m_CalcAccuracy * m_CalcAccuracy;
    std::vector<PolygonWithHoles> outlines;
    std::vector<Polygon> holes, degenerate;
    for (const Loop& loop : loops)
    {
        std::vector<Arc> arcs = JoinAdjacentArcsKeepingPinches(loop.m_Arcs, m_CalcAccuracy);
        if (arcs.empty() || !IsPolyArcSequence_G(arcs, k_Closed))
            continue;
        const PolyArc chain(k_Closed, arcs);
        const Area area = chain.GetSignedArea();
        if (area.GetAbs() < limit)
            continue;
        switch (chain.GetDirection())
        {
        case k_CCW:
            outlines.push_back(PolygonWithHoles(Polygon(chain, false)));
            break;
        case k_CW:
            holes.push_back(Polygon(chain.GetReversed(), false));
            break;
        default:
            degenerate.push_back(Polygon(chain, false));
            break;
        }
    }
    // Holes go to the innermost outline that holds them; collected first
    // and set once, so that many voids of one plane cost no copying.
    const PolygonWithHolesCollection ret(outlines);
    std::vector<std::vector<Polygon>> holes_of(outlines.size());
    std::vector<PolygonWithHoles> extra;
    const auto find = [&](const Polygon& loop)
    {
        auto i = ret.FindEntryHolding(loop, m_CalcAccuracy, false);
        if (i == ret.end())
            i = ret.FindEntryHolding(loop, m_CalcAccuracy, true);
        return i;
    };
    for (const Polygon& hole : holes)
    {
        const auto i = find(hole);
        VELLUM_ASSERT(i != ret.end());
        if (i != ret.end())
            holes_of[static_cast<size_t>(i.GetIndex())].push_back(hole);
    }
    for (const Polygon& loop : degenerate)
    {
        const auto i = find(loop);
        if (i != ret.end() && i->IsHoleCandidate(loop, m_CalcAccuracy))
            holes_of[static_cast<size_t>(i.GetIndex())].push_back(loop);
        else
            extra.push_back(PolygonWithHoles(loop));
    }
    std::vector<PolygonWithHoles> entries;
    entries.reserve(outlines.size() + extra.size());
    for (size_t i = 0; i < outlines.size(); ++i)
        entries.push_back(holes_of[i].empty()
                              ? outlines[i]
                              : PolygonWithHoles(outlines[i].GetPolygon(), PolygonCollection(holes_of[i])));
    entries.insert(entries.end(), extra.begin(), extra.end());
    return PolygonWithHolesCollection(entries);
}

PolygonWithHolesCollection PolyArcIntersectionGraph::GetResult(Mode mode)
{
    try
    {
        for (Edge& e : m_Edges)
            e.m_Visited = false;
        PairCommonEdges(mode);
        return Assemble(WalkLoops(mode));
    }
    catch (Exception)
    {
        VELLUM_ASSERT(!"There is something to do here!");
        return PolygonWithHolesCollection();
    }
}
} // namespace geom
