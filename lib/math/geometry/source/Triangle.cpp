// Triangle.cpp - signed area, circumscribed circle and angles from side lengths.
#include "lib/math/geometry/Triangle.h"

#include "core/lib/vellum/Assert.h"

#include <initializer_list>

namespace geom
{
Area Triangle::GetSignedArea() const
{
    return (m_B - m_A).GetVectorProductWith(m_C - m_A) * 0.5;
}

Circumference Triangle::GetCircumscribedCircle() const
{
    if (GetOrientation() != k_NoDirection)
    {
        // Points that turn, but so little that the bisectors' directions
        // round to parallel, have no centre to be found: they count as in line.
        const Line ab = Line::GetPerpendicularBisector(Segment(m_A, m_B));
        const Line bc = Line::GetPerpendicularBisector(Segment(m_B, m_C));
        const Result_T<Point> center =
            ab.IntersectsWith(bc, k_Unit_0) ? GetIntersection_G(ab, bc) : Result_T<Point>();
        if (center.m_Success)
            return Circumference(center.m_Value, center.m_Value.GetDistanceTo(m_A, k_InfiniteUnit));
    }
    // Collinear: the circle on the longest side as diameter.
    Segment longest(m_A, m_B);
    for (const Segment& s : {Segment(m_B, m_C), Segment(m_C, m_A)})
        if (s.GetLengthSquare() > longest.GetLengthSquare())
            longest = s;
    return Circumference(longest.GetMiddle(), longest.GetLength() * 0.5);
}

Angle Triangle::GetAngle(Unit a, Unit b, Unit c)
{
    VELLUM_ASSERT(a >= 0.0 && b >= 0.0 && c >= 0);
    VELLUM_ASSERT(a + b >= c && a + c >= b && b + c >= a);
    const Area denominator = a * b * 2.0;
    if (!(denominator > k_Area_0))
        return k_Angle_0;
    // The law of cosines, clamped so that rounding cannot leave acos's domain.
    double cosine = (a * a + b * b - c * c) / denominator;
    cosine = base::GetMaxOf_T(-1.0, base::GetMinOf_T(1.0, cosine));
    return GetAcos_G(cosine);
}
} // namespace geom
