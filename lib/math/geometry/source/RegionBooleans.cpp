// RegionBooleans.cpp - the set operations of polygons, regions with holes and collections.
//
// Each operation first settles the cheap cases by the relation of its
// operands (disjoint, nested, empty) and builds the intersection graph only
// where boundaries meet. A contour that crosses itself is cut at its
// crossings and re-linked into simple loops. The graph's failure surfaces
// as an empty collection.
#include "lib/math/geometry/PolyArcIntersectionGraph.h"
#include "lib/math/geometry/PolyArcIntersectionGraph2.h"

#include "core/lib/vellum/Assert.h"
#include "lib/math/geometry/GeomStl.h"

#include <algorithm>
#include <cmath>

namespace geom
{
namespace
{
using Graph = PolyArcIntersectionGraph;

PolygonWithHolesCollection GetGraphResult(const Polygon& a, const Polygon& b, Unit accuracy, Graph::Mode mode)
{
    try
    {
        return Graph(a, b, accuracy).GetResult(mode);
    }
    catch (Exception)
    {
        VELLUM_ASSERT(!"There is something to do here!");
        return PolygonWithHolesCollection();
    }
}

PolygonWithHolesCollection GetGraphResult(const PolygonWithHoles& a, const PolygonWithHoles& b, Unit accuracy,
                                          Graph::Mode mode)
{
    try
    {
        return Graph(a, b, accuracy).GetResult(mode);
    }
    catch (Exception)
    {
        VELLUM_ASSERT(!"There is something to do here!");
        return PolygonWithHolesCollection();
    }
}

PolygonWithHolesCollection GetGraphResult(const PolygonWithHolesCollection& a,
                                          const PolygonWithHolesCollection& b, Unit accuracy,
                                          Graph::Mode mode)
{
    try
    {
        return Graph(a, b, accuracy).GetResult(mode);
    }
    catch (Exception)
    {
        VELLUM_ASSERT(!"There is something to do here!");
        return PolygonWithHolesCollection();
    }
}

PolygonWithHolesCollection MakeCollection(std::initializer_list<PolygonWithHoles> entries)
{
    return PolygonWithHolesCollection(std::vector<PolygonWithHoles>(entries));
}
} // namespace

namespace
{
// Whether two regions whose boundaries meet share no area: the difference
// leaves the first whole.
bool IsTouchingOnly(const PolygonWithHoles& a, const PolygonWithHoles& b, Unit accuracy)
{
    const Area left = GetGraphResult(a, b, accuracy, Graph::k_Subtraction).GetArea();
    Unit length = k_Unit_0;
    for (const Arc& e : a.GetPolygon().GetEdges())
        length = length + e.GetLength();
    return (a.GetArea() - left).GetAbs() <= accuracy * length * 2.0;
}
} // namespace

// --- Polygon ---

PolygonWithHolesCollection Polygon::Subtract(const Polygon& poly, Unit accuracy) const
{
    if (empty())
        return PolygonWithHolesCollection();
    if (poly.empty())
        return MakeCollection({PolygonWithHoles(*this)});
    VELLUM_ASSERT(accuracy >= base::GetMaxOf_T(GetEpsilon(), poly.GetEpsilon()));
    switch (GetRelation(poly, accuracy))
    {
    case k_ThisInsideOther:
        return PolygonWithHolesCollection();
    case k_OtherInsideThis:
        return MakeCollection({PolygonWithHoles(*this, PolygonCollection(std::vector<Polygon>{poly}))});
    case k_NoIntersection:
        return MakeCollection({PolygonWithHoles(*this)});
    default:
        return GetGraphResult(*this, poly, accuracy, Graph::k_Subtraction);
    }
}

PolygonWithHolesCollection Polygon::Unite(const Polygon& poly, Unit accuracy) const
{
    if (empty() && poly.empty())
        return PolygonWithHolesCollection();
    if (empty())
        return MakeCollection({PolygonWithHoles(poly)});
    if (poly.empty())
        return MakeCollection({PolygonWithHoles(*this)});
    switch (GetRelation(poly, accuracy))
    {
    case k_ThisInsideOther:
        return MakeCollection({PolygonWithHoles(poly)});
    case k_OtherInsideThis:
        return MakeCollection({PolygonWithHoles(*this)});
    case k_NoIntersection:
        VELLUM_ASSERT(!IntersectsWith(poly, accuracy));
        return MakeCollection({PolygonWithHoles(*this), PolygonWithHoles(poly)});
    default:
    {
        PolygonWithHolesCollection ret = GetGraphResult(*this, poly, accuracy, Graph::k_Union);
        VELLUM_ASSERT(!ret.empty());
        return ret;
    }
    }
}

namespace
{
// A contour piece seen from one of its ends: the direction in which it
// leaves the vertex and how it bends to the left from there.
struct HalfEdge
{
    size_t m_Edge;
    bool m_Incoming; // the piece ends at the vertex
    double m_Angle;
    double m_Curvature;
};

double GetLeftCurvature(const Arc& leaving)
{
    const double h = leaving.GetHeight().GetValue();
    const double c2 = leaving.GetStartEndSegment().GetLengthSquare().GetValue();
    const double denominator = 4 * h * h + c2;
    // A positive height bends clockwise, to the right.
    return denominator > 0 ? -8 * h / denominator : 0.0;
}
} // namespace

PolygonWithHolesCollection Polygon::ResolveSelfCrossings(const std::vector<Arc>& arcs,
                                                         const std::vector<Point>& crossings, Unit accuracy,
                                                         bool keep_largest, bool drop_holes)
{
    Graph::Contour contour;
    contour.m_Arcs = arcs;
    std::vector<Graph::Contour> split = Graph::SplitContours({contour}, crossings, accuracy);
    if (split.empty())
        return PolygonWithHolesCollection();
    // Pieces that the contour runs along in both directions add nothing to
    // how often it winds round any point: each such pair goes, so that the
    // loops left don't run along each other the opposite ways.
    std::vector<Arc> pieces;
    {
        const std::vector<Arc>& all = split.front().m_Arcs;
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
        return PolygonWithHolesCollection();
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
    std::vector<std::vector<HalfEdge>> around(locations.size());
    for (size_t i = 0; i < pieces.size(); ++i)
    {
        const Arc& a = pieces[i];
        around[vertex_of(a.GetStart())].push_back(
            HalfEdge{i, false, a.GetStartTangent().GetValue(), GetLeftCurvature(a)});
        const Arc back = a.GetReversed();
        around[vertex_of(a.GetEnd())].push_back(
            HalfEdge{i, true, back.GetStartTangent().GetValue(), GetLeftCurvature(back)});
    }
    std::vector<size_t> next(pieces.size(), pieces.size());
    std::vector<bool> split_vertex(locations.size(), false);
    for (size_t v = 0; v < around.size(); ++v)
    {
        std::vector<HalfEdge>& h = around[v];
        if (h.size() == 2)
        {
            const HalfEdge& in = h[0].m_Incoming ? h[0] : h[1];
            const HalfEdge& out = h[0].m_Incoming ? h[1] : h[0];
            next[in.m_Edge] = out.m_Edge;
            continue;
        }
        split_vertex[v] = true;
        std::sort(h.begin(), h.end(),
                  [](const HalfEdge& a, const HalfEdge& b) {
                      return a.m_Angle < b.m_Angle ||
                             (a.m_Angle == b.m_Angle && a.m_Curvature < b.m_Curvature);
                  });
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
    std::vector<PolyArc> loops;
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
        {
            VELLUM_ASSERT(!"Failed to re-link in Polygon::RemoveSelfIntersections");
            PolygonWithHolesCollection ret;
            const Polygon whole(arcs, true);
            if (!whole.empty())
                ret.AddPolygonWithHoles(PolygonWithHoles(whole));
            return ret;
        }
        if (has_split)
            loop = JoinAdjacentArcs_G(loop, k_Closed, accuracy).m_Value;
        loops.push_back(PolyArc(k_Closed, loop));
    }
    return AssembleLoops(loops, accuracy, keep_largest, drop_holes);
}

// --- PolygonWithHoles ---

PolygonWithHolesCollection PolygonWithHoles::Unite(const PolygonWithHoles& other, Unit accuracy) const
{
    if (empty() || other.empty())
    {
        if (empty() && other.empty())
            return PolygonWithHolesCollection();
        return MakeCollection({empty() ? other : *this});
    }
    // Through the union of one collection, which also copes with holes of
    // one region that the other fills.
    const PolygonWithHolesCollection both = MakeCollection({*this, other});
    PolygonWithHolesCollection ret2 = PolyArcIntersectionGraph2(both, accuracy).GetResult();
    if (!ret2.empty())
    {
        VELLUM_ASSERT(!ret2.empty());
        return ret2;
    }
    if (!HasHoles() && !other.HasHoles())
        return m_Polygon.Unite(other.m_Polygon, accuracy);
    switch (GetRelation(other, accuracy))
    {
    case k_ThisInsideOther:
        return MakeCollection({other});
    case k_OtherInsideThis:
        return MakeCollection({*this});
    case k_NoIntersection:
        return both;
    default:
    {
        PolygonWithHolesCollection ret = GetGraphResult(*this, other, accuracy, Graph::k_Union);
        if (!ret.empty())
            return ret;
        return MakeCollection({GetArea() > other.GetArea() ? *this : other});
    }
    }
}

PolygonWithHolesCollection PolygonWithHoles::Intersect(const PolygonWithHoles& other, Unit accuracy) const
{
    if (empty() || other.empty())
        return PolygonWithHolesCollection();
    switch (GetRelation(other, accuracy))
    {
    case k_NoIntersection:
        return PolygonWithHolesCollection();
    case k_ThisInsideOther:
        return MakeCollection({*this});
    case k_OtherInsideThis:
        return MakeCollection({other});
    default:
    {
        PolygonWithHolesCollection ret = GetGraphResult(*this, other, accuracy, Graph::k_Intersection);
        // Boundaries that only touch share no area; otherwise something
        // must remain.
        VELLUM_ASSERT(!ret.empty() || IsTouchingOnly(*this, other, accuracy));
        return ret;
    }
    }
}

PolygonWithHolesCollection PolygonWithHoles::Intersect(const Polygon& poly, Unit accuracy) const
{
    return Intersect(PolygonWithHoles(poly), accuracy);
}

PolygonWithHolesCollection PolygonWithHoles::RemoveSelfIntersections(Unit accuracy) const
{
    VELLUM_ASSERT(accuracy >= k_Unit_0);
    PolygonWithHolesCollection ret = m_Polygon.RemoveSelfIntersections(accuracy, false, false, nullptr);
    if (ret.empty() || m_Holes.empty())
        return ret;
    // A hole that stays one simple loop inside a single outline, apart from
    // every other hole, is set as it is: the cheap and common case. Holes
    // that break up, overlap each other or leave the outline are united and
    // subtracted.
    std::vector<Polygon> simple =
        ret.size() == 1 ? ret.begin()->GetHoles().GetPolygons() : std::vector<Polygon>();
    const size_t own_holes = simple.size();
    std::vector<PolygonWithHoles> complex;
    for (const Polygon& hole : m_Holes)
    {
        const PolygonWithHolesCollection h = hole.RemoveSelfIntersections(accuracy, false, false, nullptr);
        if (h.empty())
            continue;
        if (ret.size() == 1 && h.size() == 1 && !h.begin()->HasHoles() &&
            ret.begin()->GetPolygon().GetRelation(h.begin()->GetPolygon(), accuracy) == k_OtherInsideThis)
            simple.push_back(h.begin()->GetPolygon());
        else
            for (const PolygonWithHoles& part : h)
                complex.push_back(part);
    }
    // Holes that meet another, found by a sweep over their boxes.
    std::vector<size_t> order(simple.size());
    for (size_t k = 0; k < order.size(); ++k)
        order[k] = k;
    std::sort(order.begin(), order.end(),
              [&](size_t a, size_t b)
              { return simple[a].GetBBox().GetMinX() < simple[b].GetBBox().GetMinX(); });
    std::vector<bool> meets(simple.size(), false);
    for (size_t i = 0; i < order.size(); ++i)
    {
        const Box box = simple[order[i]].GetBBox().GetExpanded(accuracy);
        for (size_t j = i + 1; j < order.size() && simple[order[j]].GetBBox().GetMinX() <= box.GetMaxX(); ++j)
            if (box.IntersectsWith(simple[order[j]].GetBBox()) &&
                simple[order[i]].GetRelation(simple[order[j]], accuracy) != k_NoIntersection)
                meets[order[i]] = meets[order[j]] = true;
    }
    std::vector<Polygon> kept;
    for (size_t k = 0; k < simple.size(); ++k)
        if (meets[k])
            complex.push_back(PolygonWithHoles(simple[k]));
        else
            kept.push_back(simple[k]);
    if (ret.size() == 1 && (kept.size() != own_holes || !complex.empty()))
        ret = MakeCollection({PolygonWithHoles(ret.begin()->GetPolygon(), PolygonCollection(kept))});
    if (complex.empty())
        return ret;
    const PolygonWithHolesCollection voids =
        PolyArcIntersectionGraph2(PolygonWithHolesCollection(complex), accuracy).GetResult();
    return ret.Subtract(voids, accuracy);
}

std::vector<Polygon> PolygonWithHoles::Decompose() const
{
    std::vector<Polygon> ret;
    if (empty())
        return ret;
    if (!HasHoles())
    {
        ret.push_back(m_Polygon);
        return ret;
    }
    const Box box = GetBBox();
    const Point centre = box.GetCenter();
    const Unit half_width = box.GetWidth() * 0.55, half_height = box.GetHeight() * 0.55;
    const Unit y = m_Holes.begin()->GetBBox().GetCenter().m_Y;
    const Unit low = centre.m_Y - half_height, high = centre.m_Y + half_height;
    const Box lower(centre.m_X - half_width, centre.m_X + half_width, base::GetMinOf_T(low, y),
                    base::GetMaxOf_T(low, y));
    const Box upper(centre.m_X - half_width, centre.m_X + half_width, base::GetMinOf_T(y, high),
                    base::GetMaxOf_T(y, high));
    for (const Box& half : {lower, upper})
        for (const PolygonWithHoles& piece : Intersect(Polygon(half, k_Unit_0), GetEpsilon()))
        {
            const std::vector<Polygon> parts = piece.Decompose();
            ret.insert(ret.end(), parts.begin(), parts.end());
        }
    return ret;
}

// --- Collections ---

namespace
{
// The entries of one side that meet the other side, and those that don't.
struct Split
{
    std::vector<PolygonWithHoles> m_Intersecting;
    std::vector<PolygonWithHoles> m_Apart;
};

Split SplitByContact(const PolygonWithHolesCollection& side, const PolygonWithHolesCollection& other,
                     Unit accuracy)
{
    Split ret;
    for (const PolygonWithHoles& entry : side)
        (other.GetRelation(entry.GetPolygon(), accuracy) == k_NoIntersection ? ret.m_Apart
                                                                             : ret.m_Intersecting)
            .push_back(entry);
    return ret;
}
} // namespace

PolygonWithHolesCollection PolygonWithHolesCollection::Subtract(const PolygonWithHolesCollection& other,
                                                                Unit accuracy) const
{
    if (empty() || other.empty())
        return *this;
    const Split this_split = SplitByContact(*this, other, accuracy);
    const Split that_split = SplitByContact(other, *this, accuracy);
    std::vector<PolygonWithHoles> ret;
    // The contact tests of the two sides needn't agree on a touch within
    // accuracy (one tests from each side's own first point): an entry found
    // meeting the other side goes through the graph against all of it.
    if (!this_split.m_Intersecting.empty())
        ret = GetGraphResult(PolygonWithHolesCollection(this_split.m_Intersecting),
                             that_split.m_Intersecting.empty()
                                 ? other
                                 : PolygonWithHolesCollection(that_split.m_Intersecting),
                             accuracy, Graph::k_Subtraction)
                  .GetPolygonsWithHoles();
    ret.insert(ret.end(), this_split.m_Apart.begin(), this_split.m_Apart.end());
    return PolygonWithHolesCollection(ret);
}

PolygonWithHolesCollection PolygonWithHolesCollection::Unite(const PolygonWithHolesCollection& other,
                                                             Unit accuracy) const
{
    if (other.empty())
        return *this;
    if (empty())
        return other;
    const Split this_split = SplitByContact(*this, other, accuracy);
    const Split that_split = SplitByContact(other, *this, accuracy);
    std::vector<PolygonWithHoles> ret;
    if (!this_split.m_Intersecting.empty() && !that_split.m_Intersecting.empty())
    {
        const PolygonWithHolesCollection these(this_split.m_Intersecting), those(that_split.m_Intersecting);
        ret = GetGraphResult(these, those, accuracy, Graph::k_Union).GetPolygonsWithHoles();
        VELLUM_ASSERT(!ret.empty() || (these.GetArea() == k_Area_0 && those.GetArea() == k_Area_0));
    }
    else
    {
        ret = this_split.m_Intersecting;
        ret.insert(ret.end(), that_split.m_Intersecting.begin(), that_split.m_Intersecting.end());
    }
    ret.insert(ret.end(), this_split.m_Apart.begin(), this_split.m_Apart.end());
    ret.insert(ret.end(), that_split.m_Apart.begin(), that_split.m_Apart.end());
    return PolygonWithHolesCollection(ret);
}

PolygonWithHolesCollection PolygonWithHolesCollection::RemoveSelfIntersections(Unit accuracy) const
{
    VELLUM_ASSERT(accuracy >= k_Unit_0);
    if (empty())
        return PolygonWithHolesCollection();
    std::vector<PolygonWithHoles> parts;
    for (const PolygonWithHoles& entry : *this)
    {
        const std::vector<PolygonWithHoles> own =
            entry.RemoveSelfIntersections(accuracy).GetPolygonsWithHoles();
        parts.insert(parts.end(), own.begin(), own.end());
    }
    if (parts.empty())
        return PolygonWithHolesCollection();
    return PolyArcIntersectionGraph2(PolygonWithHolesCollection(parts), accuracy).GetResult();
}
} // namespace geom
