// PolygonLoops.cpp - a contour's simple loops.
//
// A contour that crosses itself, such as the offset contour of a pad or plane
// narrower than the offset, is cut at its crossings into simple loops, which
// become outlines and holes. Walking the loops at the crossings is the work
// of the intersection graph (Polygon::ResolveSelfCrossings); what comes
// before and after it is here.
#include "lib/math/geometry/Polygon.h"

#include "core/lib/vellum/Assert.h"
#include "lib/math/geometry/GeomStl.h"
#include "lib/math/geometry/PolygonWithHolesCollection.h"

#include <algorithm>

namespace geom
{
// --- Simple loops ---

std::vector<Arc> Polygon::RemoveDegenerateEdges(const std::vector<Arc>& arcs, Unit accuracy, bool* changed)
{
    std::vector<Arc> kept;
    kept.reserve(arcs.size());
    bool removed = false;
    for (const Arc& a : arcs)
    {
        if (a.IsPoint(accuracy, nullptr))
        {
            removed = true;
            continue;
        }
        // An edge that goes straight back along the previous one is a spike of
        // no area: both go.
        if (!kept.empty() && kept.back().IsEqualTo(a.GetReversed(), accuracy))
        {
            kept.pop_back();
            removed = true;
            continue;
        }
        kept.push_back(a);
    }
    while (kept.size() >= 2 && kept.back().IsEqualTo(kept.front().GetReversed(), accuracy))
    {
        kept.pop_back();
        kept.erase(kept.begin());
        removed = true;
    }
    // Dropped point edges leave gaps of at most accuracy: each edge starts
    // again where its predecessor ends.
    for (size_t i = 0; i < kept.size(); ++i)
    {
        const Arc& prev = kept[(i + kept.size() - 1) % kept.size()];
        if (kept.size() > 1 && prev.GetEnd() != kept[i].GetStart())
            kept[i] = Arc(prev.GetEnd(), kept[i].GetEnd(), kept[i].GetHeight(), kept[i].GetCenterAzimuth());
    }
    if (changed)
        *changed = removed;
    return kept;
}

std::vector<Point> Polygon::GetSelfIntersectionPoints(const PolyArc& chain, Unit accuracy)
{
    std::vector<Point> points;
    const int n = chain.GetEdgeCount();
    for (const_iterator i = chain.begin(); i != chain.end(); ++i)
    {
        const int index_i = i.GetIndex();
        const Box box = GetExpandedBBox_T(*i, accuracy);
        for (const_iterator j = chain.begin(k_SkipOutside, box); j != chain.end(); ++j)
        {
            const int index_j = j.GetIndex();
            if (index_j <= index_i)
                continue;
            // Neighbours meet at their shared vertex by construction; only
            // other meetings count.
            std::vector<Point> shared;
            if (index_j == index_i + 1)
                shared.push_back(i->GetEnd());
            if (chain.GetOpenClosed() == k_Closed && index_i == 0 && index_j == n - 1)
                shared.push_back(i->GetStart());
            const ArcIntersections found = i->GetIntersections(*j, accuracy);
            for (const Result_T<Arc>* r : {&found.first, &found.second})
            {
                if (!r->m_Success)
                    continue;
                for (const Point& p : {r->m_Value.GetStart(), r->m_Value.GetEnd()})
                {
                    const bool at_shared =
                        std::any_of(shared.begin(), shared.end(),
                                    [&](const Point& s) { return s.IsEqualTo(p, accuracy); });
                    if (!at_shared)
                        points.push_back(p);
                }
            }
        }
    }
    std::vector<Point> ret = MergeClosePoints_G(points, accuracy);
    std::sort(ret.begin(), ret.end());
    return ret;
}

namespace
{
// Whether the outline `inner` lies inside `outer`: boxes first, with room for
// the noise of the loop walk, then the middle of inner's first edge.
bool LiesInside(const Polygon& inner, const Polygon& outer, Unit accuracy)
{
    if (!outer.GetBBox().GetExpanded(accuracy * 100.0).Contains(inner.GetBBox()))
        return false;
    return outer.IsPointInside(inner.GetFirstEdge().GetMiddle(), accuracy);
}
} // namespace

PolygonWithHolesCollection Polygon::AssembleLoops(const std::vector<PolyArc>& loops, Unit accuracy,
                                                  bool keep_largest, bool drop_holes)
{
    const Area limit = accuracy * accuracy;
    std::vector<Polygon> outlines, holes;
    for (const PolyArc& loop : loops)
    {
        if (loop.empty())
            continue;
        const Area area = loop.GetSignedArea();
        if (area.GetAbs() < limit || area == k_Area_0)
            continue;
        if (area > k_Area_0)
            outlines.push_back(Polygon(loop, false));
        else
            holes.push_back(Polygon(loop.GetReversed(), false));
    }
    std::vector<PolygonWithHoles> entries;
    if (outlines.size() == 1)
        entries.push_back(PolygonWithHoles(outlines.front()));
    else if (keep_largest && !outlines.empty())
    {
        // The first outline stands with the area of its box, deliberately
        // generous: a later one must beat that to replace it.
        size_t best = 0;
        Area best_area = outlines.front().GetBBox().GetArea();
        for (size_t k = 1; k < outlines.size(); ++k)
        {
            const Area area = outlines[k].GetArea();
            if (area > best_area)
            {
                best = k;
                best_area = area;
            }
        }
        entries.push_back(PolygonWithHoles(outlines[best]));
    }
    else
    {
        for (size_t k = 0; k < outlines.size(); ++k)
        {
            bool inside_another = false;
            for (size_t m = 0; m < outlines.size() && !inside_another; ++m)
                inside_another = m != k && LiesInside(outlines[k], outlines[m], accuracy);
            if (!inside_another)
                entries.push_back(PolygonWithHoles(outlines[k]));
        }
    }
    if (!drop_holes)
        for (const Polygon& hole : holes)
            for (PolygonWithHoles& entry : entries)
                if (LiesInside(hole, entry.GetPolygon(), accuracy))
                {
                    entry.AddHole(hole);
                    break;
                }
    return PolygonWithHolesCollection(entries);
}

PolygonWithHolesCollection Polygon::RemoveSelfIntersections(Unit accuracy, bool keep_largest, bool drop_holes,
                                                            bool* changed) const
{
    if (changed)
        *changed = false;
    if (empty())
        return PolygonWithHolesCollection();
    bool removed = false;
    const std::vector<Arc> arcs = RemoveDegenerateEdges(GetEdges(), accuracy, &removed);
    if (changed)
        *changed = removed;
    if (arcs.empty())
        return PolygonWithHolesCollection();
    const PolyArc chain(k_Closed, arcs);
    const std::vector<Point> crossings = GetSelfIntersectionPoints(chain, accuracy);
    if (crossings.empty())
    {
        // A simple contour is its own single loop.
        PolygonWithHolesCollection ret = AssembleLoops({chain}, accuracy, keep_largest, drop_holes);
        if (changed && chain.GetSignedArea() < k_Area_0)
            *changed = true;
        return ret;
    }
    if (changed)
        *changed = true;
    return ResolveSelfCrossings(arcs, crossings, accuracy, keep_largest, drop_holes);
}
} // namespace geom
