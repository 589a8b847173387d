// CornerRounding.cpp - tangent arcs at the corners of straight edges.
#include "lib/math/geometry/CornerRounding.h"

#include "core/lib/vellum/Assert.h"

#include <algorithm>
#include <cmath>

namespace geom
{
namespace
{
// One corner at the start of an edge: where the rounding arc leaves the
// previous edge and joins this one.
struct Corner
{
    bool m_Rounded = false;
    Point m_Leave; // on the previous edge
    Point m_Join;  // on this edge
    Unit m_Radius; // the radius that fits
    Direction m_Turn = k_NoDirection;
};

bool IsStraight(const Arc& arc)
{
    return arc.IsSegment(k_Unit_0, nullptr);
}
} // namespace

std::vector<Arc> RoundCorners_G(const std::vector<Arc>& arcs, Unit radius, Unit accuracy, bool closed)
{
    const size_t n = arcs.size();
    if (n < 2 || !(radius > k_Unit_0))
        return arcs;
    for (size_t i = 1; i < n; ++i)
        VELLUM_ASSERT(arcs[i - 1].GetEnd() == arcs[i].GetStart());

    // The wanted tangent length at each corner, before edges are shared out.
    std::vector<Corner> corners(n);
    std::vector<double> half_turn_tan(n, 0.0), wanted(n, 0.0);
    for (size_t i = closed ? 0 : 1; i < n; ++i)
    {
        const Arc& prev = arcs[(i + n - 1) % n];
        const Arc& next = arcs[i];
        if (!IsStraight(prev) || !IsStraight(next) || prev.GetEnd() != next.GetStart())
            continue;
        const Vector u = prev.GetEnd() - prev.GetStart(), w = next.GetEnd() - next.GetStart();
        if (!(u.GetLength() > accuracy) || !(w.GetLength() > accuracy))
            continue;
        const double cross = u.GetVectorProductWith(w).GetValue(), dot = u.GetScalarProductWith(w).GetValue();
        // tan of half the deflection, sin / (1 + cos), without trigonometry:
        // exactly 1 at the right-angled corners of boxes.
        const double lengths = (u.GetLength() * w.GetLength()).GetValue();
        // Collinear joints need no arc; a spike (nearly half a turn) has none that fits.
        if (cross == 0 || lengths + dot <= lengths * 1e-12)
            continue;
        half_turn_tan[i] = std::fabs(cross) / (lengths + dot);
        wanted[i] = radius.GetValue() * half_turn_tan[i];
        corners[i].m_Rounded = true;
        corners[i].m_Turn = cross > 0 ? k_CCW : k_CW;
    }

    // An edge gives each rounded end at most half its length, or all of it
    // when only one end is rounded.
    const auto available = [&](size_t edge, size_t other_corner)
    {
        const double length = arcs[edge].GetStartEndSegment().GetLength().GetValue();
        return corners[other_corner].m_Rounded ? length * 0.5 : length;
    };
    for (size_t i = 0; i < n; ++i)
    {
        if (!corners[i].m_Rounded)
            continue;
        const size_t prev = (i + n - 1) % n;
        const double t = std::min({wanted[i], available(prev, prev), available(i, (i + 1) % n)});
        const Vector u = arcs[prev].GetEnd() - arcs[prev].GetStart(),
                     w = arcs[i].GetEnd() - arcs[i].GetStart();
        corners[i].m_Leave = arcs[i].GetStart() - u.GetResized(t);
        corners[i].m_Join = arcs[i].GetStart() + w.GetResized(t);
        corners[i].m_Radius = Unit(t / half_turn_tan[i]);
    }

    // Each straight edge now runs from the join of its start corner to the
    // leave point of its end corner; one shorter than accuracy is removed and
    // the two points meet at their middle.
    std::vector<bool> dropped(n, false);
    for (size_t i = 0; i < n; ++i)
    {
        const size_t end_corner = (i + 1) % n;
        const bool end_rounded = (closed || i + 1 < n) && corners[end_corner].m_Rounded;
        if (!corners[i].m_Rounded || !end_rounded)
            continue;
        Point& from = corners[i].m_Join;
        Point& to = corners[end_corner].m_Leave;
        if (from.GetDistanceSquareTo(to) <= accuracy * accuracy)
        {
            from = to = GetMiddle_G(from, to);
            dropped[i] = true;
        }
    }

    std::vector<Arc> ret;
    ret.reserve(2 * n);
    for (size_t i = 0; i < n; ++i)
    {
        const size_t end_corner = (i + 1) % n;
        const bool end_rounded = (closed || i + 1 < n) && corners[end_corner].m_Rounded;
        if (!dropped[i])
        {
            if (!IsStraight(arcs[i]))
                ret.push_back(arcs[i]);
            else
                ret.push_back(Arc(corners[i].m_Rounded ? corners[i].m_Join : arcs[i].GetStart(),
                                  end_rounded ? corners[end_corner].m_Leave : arcs[i].GetEnd(), k_Unit_0));
        }
        if (end_rounded)
        {
            const Corner& c = corners[end_corner];
            ret.push_back(Arc(Segment(c.m_Leave, c.m_Join), c.m_Radius, c.m_Turn, false));
        }
    }
    // A closed chain whose first corner is rounded now ends with that corner's
    // arc and starts at its join point, so it still closes exactly.
    return ret;
}
} // namespace geom
