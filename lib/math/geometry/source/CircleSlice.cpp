// CircleSlice.cpp - area and containment of the region between an arc and its chord.
#include "lib/math/geometry/CircleSlice.h"

#include "core/lib/vellum/Assert.h"
#include "lib/math/geometry/Triangle.h"

namespace geom
{
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
        const Circumference circle = m_Arc.GetCircumference();
        const Unit r = circle.GetRadius();
        const Area sector = m_Arc.GetAngle().GetValue() * (r * r) * 0.5;
        ret = sector - Triangle(m_Arc.GetStart(), m_Arc.GetEnd(), circle.GetCenter()).GetSignedArea();
    }
    VELLUM_ASSERT(m_Arc.IsBig() || ret.GetAbs() <= m_Arc.GetStartEndSegment().GetLengthSquare());
    return ret;
}

bool CircleSlice::Contains(const Point& p) const
{
    if (m_Arc.GetHeight() == k_Unit_0)
        return false;
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
