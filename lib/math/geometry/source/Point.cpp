// Point.cpp - distances, rounding, middles and orientation of points.
#include "lib/math/geometry/Point.h"

#include "core/lib/vellum/Assert.h"

#include <cmath>

namespace geom
{
Unit Point::GetDistanceTo(const Point& other, Unit cur_distance) const
{
    VELLUM_ASSERT(cur_distance >= k_NullUnit);
    const Area square = GetDistanceSquareTo(other);
    if (square >= cur_distance * cur_distance)
        return cur_distance;
    return Vector(*this, other).GetLength();
}

Point Point::GetRounded(Unit c) const
{
    VELLUM_ASSERT(c >= 0);
    return Point(m_X.GetRounded(c), m_Y.GetRounded(c));
}

Point GetMiddle_G(const Point& a, const Point& b)
{
    return Point((a.m_X + b.m_X) * 0.5, (a.m_Y + b.m_Y) * 0.5);
}

Point GetMiddle_G(const Point& a, const Point& b, const Point& c)
{
    return Point((a.m_X + b.m_X + c.m_X) * 0.3333333333333333, (a.m_Y + b.m_Y + c.m_Y) * 0.3333333333333333);
}

Point GetMiddle_G(const Point& a, const Point& b, const Point& c, const Point& d)
{
    return Point((a.m_X + b.m_X + c.m_X + d.m_X) * 0.25, (a.m_Y + b.m_Y + c.m_Y + d.m_Y) * 0.25);
}

Direction GetOrientation_G(const Point& a, const Point& b, const Point& c)
{
    const Area product = (b - a).GetVectorProductWith(c - a);
    if (product < k_Area_0)
        return k_CW;
    if (product > k_Area_0)
        return k_CCW;
    return k_NoDirection;
}

} // namespace geom
