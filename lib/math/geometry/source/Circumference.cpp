// Circumference.cpp - nearest points and the intersections with lines, segments and circumferences.
#include "lib/math/geometry/Circumference.h"

#include "core/lib/vellum/Assert.h"
#include "lib/math/geometry/Arc.h"

namespace geom
{
Circumference::Circumference(const Point& center, Unit radius) : m_Center(center), m_Radius(radius)
{
    VELLUM_ASSERT(radius >= k_NullUnit);
    if (!(radius >= k_NullUnit))
        m_Radius = k_NullUnit;
}

Box Circumference::GetBBox() const
{
    return Box(m_Center.m_X - m_Radius, m_Center.m_X + m_Radius, m_Center.m_Y - m_Radius,
               m_Center.m_Y + m_Radius);
}

Point Circumference::GetNearestPoint(const Point& p) const
{
    if (p == m_Center)
        return m_Center + Vector(m_Radius, 0.0);
    return m_Center + (p - m_Center).GetResized(m_Radius);
}

bool Circumference::IsPoint(Unit accuracy, Point* what_if_so) const
{
    if (m_Radius > accuracy)
        return false;
    if (what_if_so)
        *what_if_so = m_Center;
    return true;
}

bool Circumference::IntersectsWith(const Point& p, Unit accuracy) const
{
    const Area d2 = m_Center.GetDistanceSquareTo(p);
    const Unit inner = base::GetMaxOf_T(m_Radius - accuracy, k_Unit_0), outer = m_Radius + accuracy;
    return d2 >= inner * inner && d2 <= outer * outer;
}

std::pair<Result_T<Point>, Result_T<Point>> Circumference::GetIntersections(const Line& line,
                                                                            Unit accuracy) const
{
    std::pair<Result_T<Point>, Result_T<Point>> ret;
    if (line.GetDirection().IsNull())
        return ret;
    const Point foot = line.GetFoot(m_Center);
    const Area d2 = foot.GetDistanceSquareTo(m_Center);
    const Unit outer = m_Radius + accuracy;
    if (d2 > outer * outer)
        return ret;
    const Area rest = m_Radius * m_Radius - d2;
    const Unit half = rest > k_Area_0 ? rest.GetSqrt() : k_Unit_0;
    ret.first.m_Success = true;
    if (half <= accuracy)
    {
        // A tangent within accuracy touches in one point.
        ret.first.m_Value = foot;
        return ret;
    }
    const Vector along = line.GetDirection().GetResized(half);
    ret.first.m_Value = foot - along;
    ret.second.m_Success = true;
    ret.second.m_Value = foot + along;
    return ret;
}

std::pair<Result_T<Point>, Result_T<Point>> Circumference::GetIntersections(const Segment& segment,
                                                                            Unit accuracy) const
{
    std::pair<Result_T<Point>, Result_T<Point>> ret;
    if (!GetBBox().IntersectsWith(segment.GetBBox(), accuracy))
        return ret;
    Point single;
    if (segment.GetStart() == segment.GetEnd())
    {
        if (IntersectsWith(segment.GetStart(), accuracy))
            ret.first = {true, segment.GetStart()};
        return ret;
    }
    if (IsPoint(k_Unit_0, &single))
    {
        if (segment.IntersectsWith(single, accuracy))
            ret.first = {true, single};
        return ret;
    }
    ret = GetIntersections(Line(segment), accuracy);
    // A crossing of the carrier belongs to the segment when it is no farther
    // from either end than the chord is long (plus the tolerance).
    const Unit reach = segment.GetLength() + accuracy;
    const Area reach_square = reach * reach;
    const auto on_segment = [&](const Point& p)
    {
        return p.GetDistanceSquareTo(segment.GetStart()) <= reach_square &&
               p.GetDistanceSquareTo(segment.GetEnd()) <= reach_square;
    };
    if (ret.first.m_Success && !on_segment(ret.first.m_Value))
        ret.first.m_Success = false;
    if (ret.second.m_Success && !on_segment(ret.second.m_Value))
        ret.second.m_Success = false;
    if (!ret.first.m_Success && ret.second.m_Success)
        std::swap(ret.first, ret.second);
    if (ret.first.m_Success && ret.second.m_Success &&
        ret.first.m_Value.IsEqualTo(ret.second.m_Value, accuracy))
    {
        ret.first.m_Value = GetMiddle_G(ret.first.m_Value, ret.second.m_Value);
        ret.second.m_Success = false;
    }
    return ret;
}

std::pair<Result_T<Arc>, Result_T<Arc>> Circumference::GetIntersections(const Circumference& other,
                                                                        Unit accuracy) const
{
    std::pair<Result_T<Arc>, Result_T<Arc>> ret;
    const Area center_dist_square = m_Center.GetDistanceSquareTo(other.m_Center);
    const Unit outer = m_Radius + other.m_Radius + accuracy;
    const Unit inner = base::GetMaxOf_T((m_Radius - other.m_Radius).GetAbs() - accuracy, k_Unit_0);
    if (center_dist_square > outer * outer || center_dist_square < inner * inner)
        return ret;
    if (GetBBox().IsEqualTo(other.GetBBox(), accuracy * 0.5))
    {
        const Circumference mean(GetMiddle_G(m_Center, other.m_Center), (m_Radius + other.m_Radius) * 0.5);
        ret.first = {true, Arc(mean, k_Azimuth_0, k_CCW)};
        return ret;
    }
    VELLUM_ASSERT(center_dist_square != k_Area_0);
    if (center_dist_square == k_Area_0)
        return ret;
    // Centres within accuracy of each other but circles apart by more than the
    // accuracy have no common point; the line of centres has no direction.
    if (other.m_Center.IsEqualTo(m_Center, accuracy))
        return ret;
    // The radical point: where the common chord crosses the line of centres,
    // at distance a from the centre of the smaller circle. Measured from a
    // large circle's centre, r^2 - a^2 would cancel down to its rounding
    // noise when the chord is short against the radius (a nearly straight
    // edge crossing a pad), and the crossing would be lost.
    const bool from_other = other.m_Radius < m_Radius;
    const Circumference& small = from_other ? other : *this;
    const Circumference& large = from_other ? *this : other;
    const Unit d = center_dist_square.GetSqrt();
    // d^2 - R^2 as a product, so that it keeps its digits when the two nearly
    // cancel.
    const Area d2_minus_large2 = (d - large.m_Radius) * (d + large.m_Radius);
    const Unit a = (d2_minus_large2 + small.m_Radius * small.m_Radius) / (d * 2.0);
    const Vector axis = large.m_Center - small.m_Center;
    const Point radical = small.m_Center + axis * (a / d);
    const Area rest = (small.m_Radius - a) * (small.m_Radius + a);
    Unit half = rest > k_Area_0 ? rest.GetSqrt() : k_Unit_0;
    if (half < accuracy)
        half = k_Unit_0;
    // The perpendicular keeps its side of the line from this centre to the
    // other, so that the order of the two points doesn't depend on which
    // circle is larger.
    const Vector across =
        half == k_Unit_0 ? k_NullVector : (other.m_Center - m_Center).GetPerpendicular(half);
    const Point p1 = radical + across, p2 = radical - across;
    ret.first = {true, Arc(p1, p1, k_Unit_0)};
    if (p1.IsEqualTo(p2, accuracy))
    {
        const Point m = GetMiddle_G(p1, p2);
        ret.first.m_Value = Arc(m, m, k_Unit_0);
        return ret;
    }
    ret.second = {true, Arc(p2, p2, k_Unit_0)};
    return ret;
}
} // namespace geom
