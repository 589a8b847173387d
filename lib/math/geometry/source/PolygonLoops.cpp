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
    // A vertex that the contour passes twice is where it touches itself,
    // though no two edges cross there. An edge of no length (an outline that
    // repeats its first point) passes its vertex once only: it is no touch.
    std::vector<Point> starts;
    starts.reserve(static_cast<size_t>(n));
    for (const_iterator i = chain.begin(); i != chain.end(); ++i)
        if (!i->IsPoint(Unit(0.0), nullptr))
            starts.push_back(i->GetStart());
    std::sort(starts.begin(), starts.end());
    for (size_t k = 1; k < starts.size(); ++k)
        if (starts[k] == starts[k - 1])
            points.push_back(starts[k]);
    std::vector<Point> ret = MergeClosePoints_G(points, accuracy);
    std::sort(ret.begin(), ret.end());
    return ret;
}

namespace
{
// Whether the simple loop `inner` lies inside the simple loop `outer`, the
// two touching at most: decided by the first middle of an edge of inner
// that isn't on outer's contour. Loops that run along each other all the
// way are ordered by their index, the later one inside.
bool LiesInside(const Polygon& inner, size_t inner_index, const Polygon& outer, size_t outer_index,
                Unit accuracy)
{
    if (!outer.GetBBox().GetExpanded(accuracy * 100.0).Contains(inner.GetBBox()))
        return false;
    for (const Arc& a : inner.GetEdges())
    {
        const PointRelation r = outer.GetRelation(a.GetMiddle(), accuracy);
        if (r != k_PointOnBoundary)
            return r == k_PointInside;
    }
    return inner_index > outer_index;
}
} // namespace

// The loops are simple and cross neither themselves nor each other, so they
// nest. The contour winds round a point as often as the signed loops that
// hold it: a loop bounds the region where it takes the winding number from
// zero or below to above zero (an outline), or back (a hole).
PolygonWithHolesCollection Polygon::AssembleLoops(const std::vector<PolyArc>& loops, Unit accuracy,
                                                  bool keep_largest, bool drop_holes)
{
    const Area limit = accuracy * accuracy;
    std::vector<Polygon> shapes; // counter-clockwise
    std::vector<int> sign;
    for (const PolyArc& loop : loops)
    {
        if (loop.empty())
            continue;
        const Area area = loop.GetSignedArea();
        if (area.GetAbs() < limit || area == k_Area_0)
            continue;
        shapes.push_back(area > k_Area_0 ? Polygon(loop, false) : Polygon(loop.GetReversed(), false));
        sign.push_back(area > k_Area_0 ? 1 : -1);
    }
    // Each loop's parent is the smallest loop that holds it.
    const size_t n = shapes.size();
    std::vector<Area> areas(n);
    for (size_t k = 0; k < n; ++k)
        areas[k] = shapes[k].GetArea();
    std::vector<size_t> order(n);
    for (size_t k = 0; k < n; ++k)
        order[k] = k;
    std::stable_sort(order.begin(), order.end(), [&](size_t a, size_t b) { return areas[a] > areas[b]; });
    std::vector<size_t> parent(n, n);
    for (size_t i = 0; i < n; ++i)
        for (size_t j = i; j-- > 0;)
            if (LiesInside(shapes[order[i]], order[i], shapes[order[j]], order[j], accuracy))
            {
                parent[order[i]] = order[j];
                break;
            }
    // Winding numbers from the outermost loops inwards.
    std::vector<int> winding(n, 0);
    for (size_t k : order)
        winding[k] = sign[k] + (parent[k] == n ? 0 : winding[parent[k]]);
    std::vector<PolygonWithHoles> entries;
    std::vector<size_t> entry_of(n, n);
    std::vector<size_t> hole_loops;
    for (size_t k = 0; k < n; ++k)
    {
        const int outside = parent[k] == n ? 0 : winding[parent[k]];
        if (winding[k] > 0 && outside <= 0)
        {
            entry_of[k] = entries.size();
            entries.push_back(PolygonWithHoles(shapes[k]));
        }
        else if (winding[k] <= 0 && outside > 0)
            hole_loops.push_back(k);
    }
    if (keep_largest && entries.size() > 1)
    {
        // The first outline stands with the area of its box, deliberately
        // generous: a later one must beat that to replace it.
        size_t best = 0;
        Area best_area = entries.front().GetPolygon().GetBBox().GetArea();
        for (size_t k = 1; k < entries.size(); ++k)
        {
            const Area area = entries[k].GetPolygon().GetArea();
            if (area > best_area)
            {
                best = k;
                best_area = area;
            }
        }
        for (size_t& e : entry_of)
            e = e == best ? 0 : n;
        entries = {entries[best]};
    }
    if (!drop_holes)
        for (size_t k : hole_loops)
        {
            // The hole belongs to the nearest loop round it that is an outline.
            size_t p = parent[k];
            while (p != n && entry_of[p] == n)
                p = parent[p];
            if (p != n && entry_of[p] < entries.size())
                entries[entry_of[p]].AddHole(shapes[k]);
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
