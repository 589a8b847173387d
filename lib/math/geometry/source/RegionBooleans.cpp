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
