// PolygonWithHoles.cpp - area, holes and relations of a region with holes.
#include "lib/math/geometry/PolygonWithHoles.h"

#include "core/lib/vellum/Assert.h"
#include "lib/math/geometry/GeomStl.h"
#include "lib/math/geometry/PolyArcIntersectionGraph2.h"
#include "lib/math/geometry/PolygonWithHolesCollection.h"

namespace geom
{
void PolygonWithHoles::AddHole(const Polygon& hole)
{
    if (hole.empty())
        return;
    VELLUM_ASSERT(!m_Polygon.empty());
    m_Holes.AddPolygon(hole);
}

Area PolygonWithHoles::GetArea() const
{
    return m_Polygon.GetArea() - m_Holes.GetArea();
}

bool operator==(const PolygonWithHoles& a, const PolygonWithHoles& b)
{
    if (a.m_Polygon != b.m_Polygon || a.m_Holes.size() != b.m_Holes.size())
        return false;
    auto j = b.m_Holes.begin();
    for (auto i = a.m_Holes.begin(); i != a.m_Holes.end(); ++i, ++j)
        if (*i != *j)
            return false;
    return true;
}

PointRelation PolygonWithHoles::GetRelation(const Point& p, Unit accuracy) const
{
    if (m_Polygon.empty() || !m_Polygon.GetBBox().Contains(p, accuracy))
        return k_PointOutside;
    const PointRelation outline = m_Polygon.GetRelation(p, accuracy);
    if (outline != k_PointInside || !HasHoles())
        return outline;
    for (auto i = m_Holes.begin(k_SkipOutside, Box(p).GetExpanded(accuracy)); i != m_Holes.end(); ++i)
    {
        switch (i->GetRelation(p, accuracy))
        {
        case k_PointOnBoundary:
            return k_PointOnBoundary;
        case k_PointInside:
            return k_PointOutside;
        default:
            break;
        }
    }
    return k_PointInside;
}

PolygonRelation PolygonWithHoles::GetRelation(const Polygon& poly, Unit accuracy) const
{
    if (m_Polygon.empty() || poly.empty() || !GetBBox().IntersectsWith(GetExpandedBBox_T(poly, accuracy)))
        return k_NoIntersection;
    const PolygonRelation outline = m_Polygon.GetRelation(poly, accuracy);
    if (outline != k_OtherInsideThis || !HasHoles())
        return outline;
    switch (m_Holes.GetRelation(poly, accuracy))
    {
    case k_NoIntersection:
        return k_OtherInsideThis;
    case k_OtherInsideThis:
        // The polygon sits in a hole: it doesn't meet the material.
        return k_NoIntersection;
    case k_ThisInsideOther:
    case k_Crossing:
        return k_Crossing;
    default:
        VELLUM_ASSERT(!"This should never happen!");
        return k_RelationError;
    }
}

namespace
{
// How all holes of `holes` lie to the holes of `r`, as one relation of the
// two collections: every hole of `holes` answering the same gives that
// answer, mixed answers are a crossing.
PolygonRelation GetHolesRelation(const PolygonCollection& own, const PolygonCollection& holes, Unit accuracy)
{
    PolygonRelation ret = k_RelationError;
    for (const Polygon& h : holes)
    {
        const PolygonRelation rel = own.GetRelation(h, accuracy);
        if (rel == k_Crossing || (ret != k_RelationError && rel != ret))
            return k_Crossing;
        ret = rel;
    }
    return ret == k_RelationError ? k_NoIntersection : ret;
}

// The examination of a region against the holes of the other region, which
// lie in the region's outline or around it:
// 0 keeps the outlines' relation, 1 makes it disjoint, 2 and 3 a crossing.
int ExamineAgainstHoles(const PolygonWithHoles& r, const PolygonCollection& holes, Unit accuracy)
{
    if (holes.empty() || !holes.GetBBox().IntersectsWith(GetExpandedBBox_T(r, accuracy)))
        return 0;
    switch (holes.GetRelation(r.GetPolygon(), accuracy))
    {
    case k_NoIntersection:
        return 0;
    case k_OtherInsideThis:
        return 1;
    case k_Crossing:
        return 3;
    case k_ThisInsideOther:
        break;
    default:
        VELLUM_ASSERT(!"This should never happen!");
        return 3;
    }
    // All of the other's holes lie in r's outline: they must lie in r's own
    // holes for r to stay whole.
    switch (GetHolesRelation(r.GetHoles(), holes, accuracy))
    {
    case k_NoIntersection:
        return 2;
    case k_ThisInsideOther:
        return 3;
    case k_OtherInsideThis:
        return 0;
    case k_Crossing:
        return 3;
    default:
        VELLUM_ASSERT(!"This should never happen!");
        return 3;
    }
}
} // namespace

PolygonRelation PolygonWithHoles::GetRelation(const PolygonWithHoles& other, Unit accuracy) const
{
    if (empty() || other.empty() || !GetBBox().IntersectsWith(GetExpandedBBox_T(other, accuracy)))
        return k_NoIntersection;
    const PolygonRelation outline = m_Polygon.GetRelation(other.m_Polygon, accuracy);
    int examined = 0;
    switch (outline)
    {
    case k_NoIntersection:
    case k_Crossing:
        return outline;
    case k_ThisInsideOther:
        examined = ExamineAgainstHoles(*this, other.m_Holes, accuracy);
        break;
    case k_OtherInsideThis:
        examined = ExamineAgainstHoles(other, m_Holes, accuracy);
        break;
    default:
        VELLUM_ASSERT(!"This should never happen!");
        return k_RelationError;
    }
    if (examined == 0)
        return outline;
    return examined == 1 ? k_NoIntersection : k_Crossing;
}

bool PolygonWithHoles::IsHoleCandidate(const Polygon& loop, Unit accuracy) const
{
    if (loop.empty() || !m_Polygon.PolyArc::IntersectsWith(static_cast<const PolyArc&>(loop), accuracy))
        return false;
    for (auto i = m_Holes.begin(k_SkipOutside, GetExpandedBBox_T(loop, accuracy)); i != m_Holes.end(); ++i)
        if (i->GetRelation(loop, accuracy) == k_OtherInsideThis)
            return false;
    return true;
}

PolygonWithHoles PolygonWithHoles::GetSimplified(Unit accuracy, bool* changed) const
{
    bool outline_changed = false, holes_changed = false;
    const Polygon outline(m_Polygon.GetSimplified(accuracy, &outline_changed), false);
    const PolygonCollection holes = m_Holes.GetSimplified(accuracy, &holes_changed);
    if (changed)
        *changed = outline_changed || holes_changed;
    if (!outline_changed && !holes_changed)
        return *this;
    return PolygonWithHoles(outline, holes);
}

PolygonWithHolesCollection PolygonWithHoles::Shrink(Unit by, Unit accuracy, bool resolve_loops,
                                                    int joint_mode, Unit joint_value) const
{
    VELLUM_ASSERT(by >= k_Unit_0 && accuracy >= k_Unit_0);
    PolygonWithHolesCollection ret;
    if (empty())
        return ret;
    if (by == k_Unit_0)
    {
        ret.AddPolygonWithHoles(*this);
        return ret;
    }
    ret = m_Polygon.Shrink(by, accuracy, resolve_loops, joint_mode, joint_value);
    if (ret.empty() || !HasHoles())
        return ret;
    // The material shrinks away from each void too: the voids grow by the
    // same distance and are taken out of the shrunk outline. A void that
    // curls round a pocket of copper leaves the part of it that is farther
    // than the distance. Voids closer than twice the distance grow into each
    // other; they are united first, so that the graph of the subtraction sees
    // each place covered once.
    std::vector<PolygonWithHoles> grown;
    for (const Polygon& hole : m_Holes)
        for (const PolygonWithHoles& part : hole.ExpandKeepingPockets(by, accuracy))
            grown.push_back(part);
    if (grown.empty())
        return ret;
    PolygonWithHolesCollection voids(grown);
    const Unit working = base::GetMaxOf_T(base::GetMaxOf_T(accuracy, GetEpsilon()), voids.GetEpsilon());
    if (grown.size() > 1)
        voids = PolyArcIntersectionGraph2(voids, working).GetResult();
    return ret.Subtract(voids, working);
}
} // namespace geom
