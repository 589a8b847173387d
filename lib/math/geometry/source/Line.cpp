// Line.cpp - crossings, distances and feet on infinite lines.
#include "lib/math/geometry/Line.h"

#include "core/lib/vellum/Assert.h"

namespace geom
{
Line Line::GetPerpendicularBisector(const Segment& segment)
{
    const Vector v = segment.GetVector();
    return Line(segment.GetMiddle(), Vector(-v.GetY(), v.GetX()));
}

bool Line::IntersectsWith(const Line& other, Unit tolerance) const
{
    if (m_Direction.GetVectorProductWith(other.m_Direction) != k_Area_0)
        return true;
    // Parallel lines meet only when they coincide.
    return GetDistanceTo(other.m_Point) <= tolerance;
}

Unit Line::GetDistanceTo(const Point& p) const
{
    const Unit length = m_Direction.GetLength();
    if (length == k_Unit_0)
        return m_Point.GetDistanceTo(p, k_InfiniteUnit);
    return m_Direction.GetVectorProductWith(p - m_Point).GetAbs() / length;
}

double Line::GetProjectionRate(const Point& p) const
{
    const Area length_square = m_Direction.GetLengthSquare();
    if (length_square == k_Area_0)
        return 0.0;
    return m_Direction.GetScalarProductWith(p - m_Point) / length_square;
}

Point Line::GetFoot(const Point& p) const
{
    return m_Point + m_Direction * GetProjectionRate(p);
}

Result_T<Point> GetIntersection_G(const Line& line1, const Line& line2)
{
    // clang-format off
    VELLUM_ASSERT(line1.IntersectsWith (line2, 0));
    // clang-format on
    Result_T<Point> ret;
    const Area denominator = line1.GetDirection().GetVectorProductWith(line2.GetDirection());
    if (denominator == k_Area_0)
        return ret;
    const double t =
        (line2.GetPoint() - line1.GetPoint()).GetVectorProductWith(line2.GetDirection()) / denominator;
    ret.m_Success = true;
    ret.m_Value = line1.GetPoint() + line1.GetDirection() * t;
    return ret;
}
} // namespace geom
