// CircleSlice.cpp - area and containment of the region between an arc and its chord.
#include "lib/math/geometry/CircleSlice.h"

#include "core/lib/vellum/Assert.h"
#include "lib/math/geometry/ChordFrame.h"
#include "lib/math/geometry/Triangle.h"

#include <cmath>

namespace geom
{
namespace
{
// t - sin t without cancellation for small t.
double GetAngleLessSine(double t)
{
    if (std::fabs(t) > 0.05)
        return t - std::sin(t);
    const double t2 = t * t;
    // t^3/3! - t^5/5! + t^7/7! - t^9/9!
    return t * t2 * (1.0 / 6 - t2 * (1.0 / 120 - t2 * (1.0 / 5040 - t2 / 362880)));
}
} // namespace

Area CircleSlice::GetArea() const
{
    Area ret = k_Area_0;
    if (m_Arc.GetHeight().GetAbs() < GetEpsilon())
    {
        // Too flat for a centre worth computing: the triangle of the ends and
        // the middle carries the sign and almost all of the area.
        ret = Triangle(m_Arc.GetStart(), m_Arc.GetMiddle(), m_Arc.GetEnd()).GetSignedArea();
    }
    else if (!m_Arc.IsPoint(k_Unit_0, nullptr))
    {
        // Sector less the triangle of the chord and the centre, written as
        // r^2 / 2 (t - sin t): on a flat arc the two terms are huge and nearly
        // equal, so their difference is taken from the series of t - sin t.
        const Unit r = m_Arc.GetRadius();
        const double t = m_Arc.GetAngle().GetValue();
        ret = (r * r) * (0.5 * GetAngleLessSine(t));
    }
    VELLUM_ASSERT(m_Arc.IsBig() || ret.GetAbs() <= m_Arc.GetStartEndSegment().GetLengthSquare());
    return ret;
}

bool CircleSlice::Contains(const Point& p) const
{
    if (m_Arc.GetHeight() == k_Unit_0)
        return false;
    if (ChordFrame::IsFlat(m_Arc))
        return ChordFrame(m_Arc).IsInSlice(p);
    const Circumference circle = m_Arc.GetCircumference();
    if (!(p.GetDistanceSquareTo(circle.GetCenter()) < circle.GetRadius() * circle.GetRadius()))
        return false;
    if (m_Arc.GetStart() == m_Arc.GetEnd())
        return true;
    // The arc's side of the chord is the side of its middle.
    const Direction side_of_p = GetOrientation_G(m_Arc.GetStart(), m_Arc.GetEnd(), p);
    const Direction side_of_arc = m_Arc.GetHeight() > k_Unit_0 ? k_CCW : k_CW;
    return side_of_p == side_of_arc;
}
} // namespace geom
