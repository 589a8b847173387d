// PolygonOffset.cpp - shrinking and growing of polygons.
//
// A pad or plane is shrunk by offsetting its contour inwards and cutting the
// offset contour into simple loops where it crosses itself: where the
// polygon is narrower than twice the distance the offset sides pass each
// other, and a neck thinner than that splits the polygon into pieces, every
// one of which is kept. A part shrunk by more than half its width in every
// direction turns inside out and still turns counter-clockwise: such a loop
// comes closer to the contour than the distance, which no true piece does,
// and that is how it is told apart.
#include "lib/math/geometry/Polygon.h"

#include "core/lib/vellum/Assert.h"
#include "lib/math/geometry/ArcDistance.h"
#include "lib/math/geometry/GeomStl.h"
#include "lib/math/geometry/PolygonWithHolesCollection.h"

namespace geom
{
namespace
{
// Whether every point of the piece lies at least `limit` from the contour:
// no edge of the piece comes closer to an edge of the contour, and the
// contour doesn't lie within the piece.
bool KeepsClearOf(const Polygon& piece, const PolyArc& contour, Unit limit)
{
    for (PolyArc::const_iterator e = piece.begin(); e != piece.end(); ++e)
    {
        const Box near = GetExpandedBBox_T(*e, limit);
        for (PolyArc::const_iterator c = contour.begin(k_SkipOutside, near); c != contour.end(); ++c)
            if (GetDistance_G(*e, *c) < limit)
                return false;
    }
    return !piece.GetBBox().Contains(contour.GetBBox()) ||
           !piece.IsPointInside(contour.GetFirstVertex(), k_Unit_0);
}
} // namespace

Unit Polygon::GetWorkingAccuracy(Unit accuracy) const
{
    // Exact arithmetic isn't to be had: an accuracy of 0 works at what the
    // coordinates can hold.
    return base::GetMaxOf_T(accuracy, GetEpsilon());
}

PolygonWithHolesCollection Polygon::ResolveOffset(const Result_T<std::vector<Arc>>& offset, Unit accuracy,
                                                  bool resolve_loops) const
{
    PolygonWithHolesCollection ret;
    if (!offset.m_Success || offset.m_Value.empty())
        return ret;
    if (!IsPolyArcSequence_G(offset.m_Value, k_Closed))
    {
        // An offset that couldn't be closed leaves the polygon as it was.
        ret.AddPolygonWithHoles(PolygonWithHoles(*this));
        return ret;
    }
    const Polygon contour(offset.m_Value, !resolve_loops);
    if (!resolve_loops)
    {
        if (!contour.empty())
            ret.AddPolygonWithHoles(PolygonWithHoles(contour));
        return ret;
    }
    return contour.RemoveSelfIntersections(accuracy, false, true, nullptr);
}

PolygonWithHolesCollection Polygon::Shrink(Unit by, Unit accuracy, bool resolve_loops, int joint_mode,
                                           Unit joint_value) const
{
    VELLUM_ASSERT(by >= k_Unit_0 && accuracy >= k_Unit_0);
    PolygonWithHolesCollection ret;
    if (by == k_Unit_0)
    {
        if (!empty())
            ret.AddPolygonWithHoles(PolygonWithHoles(*this));
        return ret;
    }
    if (empty())
        return ret;
    const Box box = GetBBox();
    if (base::GetMinOf_T(box.GetWidth(), box.GetHeight()) < by)
        return ret;
    const Unit working = GetWorkingAccuracy(accuracy);
    const Result_T<std::vector<Arc>> offset = GetOffset(-by, working, joint_mode, joint_value);
    const PolygonWithHolesCollection loops = ResolveOffset(offset, working, resolve_loops);
    if (!resolve_loops || !IsPolyArcSequence_G(offset.m_Value, k_Closed))
        return loops;
    // Each piece of a true inner offset keeps the distance from the contour
    // everywhere, but for the noise of the arithmetic and the joining of arcs
    // within the accuracy.
    const Unit limit = by - working * 4.0;
    std::vector<PolygonWithHoles> kept;
    for (const PolygonWithHoles& piece : loops)
        if (limit <= k_Unit_0 || KeepsClearOf(piece.GetPolygon(), *this, limit))
            kept.push_back(piece);
    if (static_cast<int>(kept.size()) == loops.size())
        return loops;
    return PolygonWithHolesCollection(kept);
}

PolygonWithHolesCollection Polygon::Expand(Unit by, Unit accuracy, bool resolve_loops, int joint_mode,
                                           Unit joint_value) const
{
    VELLUM_ASSERT(by >= k_Unit_0 && accuracy >= k_Unit_0);
    PolygonWithHolesCollection ret;
    if (empty())
        return ret;
    if (by == k_Unit_0)
    {
        ret.AddPolygonWithHoles(PolygonWithHoles(*this));
        return ret;
    }
    const Unit working = GetWorkingAccuracy(accuracy);
    const Result_T<std::vector<Arc>> offset = GetOffset(by, working, joint_mode, joint_value);
    if (!offset.m_Success || offset.m_Value.empty())
    {
        // Nothing of a point polygon survives the offset; grown, it is a disc.
        Point only;
        if (GetEdgeCount() == 1 && GetFirstEdge().IsPoint(k_Unit_0, &only))
            ret.AddPolygonWithHoles(PolygonWithHoles(Polygon(Circle(only, by))));
        return ret;
    }
    return ResolveOffset(offset, working, resolve_loops);
}

PolygonWithHolesCollection Polygon::ExpandKeepingPockets(Unit by, Unit accuracy) const
{
    VELLUM_ASSERT(by >= k_Unit_0 && accuracy >= k_Unit_0);
    const Unit working = GetWorkingAccuracy(accuracy);
    if (empty() || by == k_Unit_0)
        return Expand(by, accuracy, true, 0, k_Unit_0);
    const Result_T<std::vector<Arc>> offset = GetOffset(by, working, 0, k_Unit_0);
    if (!offset.m_Success || offset.m_Value.empty() || !IsPolyArcSequence_G(offset.m_Value, k_Closed))
        return Expand(by, accuracy, true, 0, k_Unit_0);
    const PolygonWithHolesCollection loops =
        Polygon(offset.m_Value, false).RemoveSelfIntersections(working, false, false, nullptr);
    // A clockwise loop of the grown contour is a pocket that the growth
    // closes around, or the crossed-over offset of a concave part, which lies
    // within the distance and is covered. Only the first is a hole.
    const Unit limit = by - working * 4.0;
    std::vector<PolygonWithHoles> ret;
    for (const PolygonWithHoles& entry : loops)
    {
        PolygonWithHoles kept(entry.GetPolygon());
        for (const Polygon& hole : entry.GetHoles())
            if (limit > k_Unit_0 && KeepsClearOf(hole, *this, limit))
                kept.AddHole(hole);
        ret.push_back(kept);
    }
    return PolygonWithHolesCollection(ret);
}
} // namespace geom
