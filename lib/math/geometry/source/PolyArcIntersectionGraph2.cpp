// PolyArcIntersectionGraph2.cpp - the union of one collection: cutting all entries against each other.
//
// Each entry is cut against every other entry through a box tree of all
// edges; a piece inside any other entry can't bound the union and is dropped
// before the graph is built, which keeps the graph of a dense plane small.
#include "lib/math/geometry/PolyArcIntersectionGraph2.h"

#include "core/lib/vellum/Assert.h"

namespace geom
{

PolyArcIntersectionGraph2::PolyArcIntersectionGraph2(const PolygonCollection& pc, Unit accuracy)
    : PolyArcIntersectionGraph(accuracy)
{
    std::vector<PolygonWithHoles> entries;
    entries.reserve(static_cast<size_t>(pc.size()));
    for (const Polygon& p : pc)
        entries.push_back(PolygonWithHoles(p));
    FillFrom(PolygonWithHolesCollection(entries));
}

PolyArcIntersectionGraph2::PolyArcIntersectionGraph2(const PolygonWithHolesCollection& pc, Unit accuracy)
    : PolyArcIntersectionGraph(accuracy)
{
    FillFrom(pc);
}

void PolyArcIntersectionGraph2::FillFrom(const PolygonWithHolesCollection& pc)
{
    m_SingleCollection = true;
    const PolygonWithHolesCollection sorted = GetSpatiallySorted(pc);
    std::vector<Contour> contours;
    int group = 0;
    for (const PolygonWithHoles& r : sorted)
        AppendContours_G(r, 0, group++, m_CalcAccuracy, contours);
    try
    {
        Fill(
            contours,
            [&](const Point& p, const Contour& of, Unit a)
            {
                bool on_boundary = false;
                for (auto i = sorted.begin(k_SkipOutside, Box(p).GetExpanded(a)); i != sorted.end(); ++i)
                {
                    if (i.GetIndex() == of.m_Group)
                        continue;
                    const PointRelation r = i->GetRelation(p, a);
                    if (r == k_PointInside)
                        return k_PointInside;
                    on_boundary = on_boundary || r == k_PointOnBoundary;
                }
                return on_boundary ? k_PointOnBoundary : k_PointOutside;
            },
            // An edge inside another entry can't be on the union's boundary.
            [](InsideOther c) { return c != k_InsideOtherEdge; },
            [&](const Point& p, int group, Unit a)
            {
                for (auto i = sorted.begin(k_SkipOutside, Box(p).GetExpanded(a)); i != sorted.end(); ++i)
                    if (i.GetIndex() == group)
                        return i->GetRelation(p, a);
                return k_PointOutside;
            });
    }
    catch (Exception)
    {
        // The operation fails as a whole: its result is empty.
        m_Failed = true;
    }
}

PolygonWithHolesCollection PolyArcIntersectionGraph2::GetResult()
{
    if (m_Failed)
    {
        VELLUM_ASSERT(!"There is something to do here!");
        return PolygonWithHolesCollection();
    }
    return PolyArcIntersectionGraph::GetResult(k_Union);
}
} // namespace geom
