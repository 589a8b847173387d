// Segment.cpp - predicates, crossing, distances and overlap of segments.
#include "lib/math/geometry/Segment.h"

#include "core/lib/vellum/Assert.h"
#include "lib/math/geometry/Line.h"

#include <algorithm>
#include <cmath>

namespace geom
{
Vector::Vector(const Segment& segment) : Vector(segment.GetStart(), segment.GetEnd()) {}

Point Segment::GetMiddle() const
{
    if (m_End < m_Start)
        return GetMiddle_G(m_End, m_Start);
    return GetMiddle_G(m_Start, m_End);
}

bool Segment::IsPoint(Unit accuracy, Point* what_if_so) const
{
    if (!m_Start.IsEqualTo(m_End, accuracy))
        return false;
    if (what_if_so)
        *what_if_so = m_Start;
    return true;
}

bool Segment::IntersectsWith(const Point& p, Unit accuracy) const
{
    const Area accuracy_square = accuracy * accuracy;
    if (m_Start == m_End)
        return m_Start.GetDistanceSquareTo(p) <= accuracy_square;
    if (!GetBBox().Contains(p, accuracy))
        return false;
    if (m_Start.GetDistanceSquareTo(p) <= accuracy_square || m_End.GetDistanceSquareTo(p) <= accuracy_square)
        return true;
    // |v x (p - start)| is the distance from the carrier times the length.
    return GetVector().GetVectorProductWith(p - m_Start).GetAbs() <= GetLength() * accuracy;
}

namespace
{
// The side of p relative to the directed segment, exactly.
base::Sign GetSide(const Segment& s, const Point& p)
{
    return s.GetVector().GetVectorProductWith(p - s.GetStart()).GetSign();
}
} // namespace

bool Segment::IntersectsWith(const Segment& s, Unit accuracy) const
{
    if (!GetBBox().IntersectsWith(s.GetBBox(), accuracy))
        return false;
    if (IntersectsWith(s.m_Start, accuracy) || IntersectsWith(s.m_End, accuracy) ||
        s.IntersectsWith(m_Start, accuracy) || s.IntersectsWith(m_End, accuracy))
        return true;
    const base::Sign a1 = GetSide(*this, s.m_Start), a2 = GetSide(*this, s.m_End);
    if (a1 == a2 && a1 != base::k_Zero)
        return false;
    const base::Sign b1 = GetSide(s, m_Start), b2 = GetSide(s, m_End);
    if (b1 == b2 && b1 != base::k_Zero)
        return false;
    return true;
}

bool Segment::IsCrossing(const Segment& s, Unit accuracy) const
{
    if (IsPoint(accuracy, nullptr) || s.IsPoint(accuracy, nullptr))
        return false;
    if (IntersectsWith(s.m_Start, accuracy) || IntersectsWith(s.m_End, accuracy) ||
        s.IntersectsWith(m_Start, accuracy) || s.IntersectsWith(m_End, accuracy))
        return false;
    const base::Sign a1 = GetSide(*this, s.m_Start), a2 = GetSide(*this, s.m_End);
    const base::Sign b1 = GetSide(s, m_Start), b2 = GetSide(s, m_End);
    return a1 != base::k_Zero && a2 != base::k_Zero && a1 != a2 && b1 != base::k_Zero && b2 != base::k_Zero &&
           b1 != b2;
}

Point Segment::GetIntersectionPoint(const Segment& seg) const
{
    // clang-format off
    VELLUM_ASSERT(IntersectsWith (seg, 0));
    // clang-format on
    if (m_Start == seg.m_Start || m_Start == seg.m_End)
        return m_Start;
    if (m_End == seg.m_Start || m_End == seg.m_End)
        return m_End;
    if (m_Start == m_End)
        return m_Start;
    if (seg.m_Start == seg.m_End)
        return seg.m_Start;
    const Vector v1 = GetVector(), v2 = seg.GetVector();
    if (v1.IsParallelTo(v2, k_Unit_0))
    {
        const Box common = GetBBox() & seg.GetBBox();
        return common.IsEmpty() ? GetMiddle() : common.GetCenter();
    }
    // Relative to this segment's start, so that far-away coordinates don't
    // cost digits: start + v1 * (w x v2) / (v1 x v2).
    const double div = v1.GetVectorProductWith(v2).GetValue();
    VELLUM_ASSERT(div);
    if (div == 0)
        return GetMiddle();
    const double reciprocal = 1.0 / div;
    const double t = (seg.m_Start - m_Start).GetVectorProductWith(v2).GetValue() * reciprocal;
    const Unit x = m_Start.m_X + v1.GetX() * t;
    const Unit y = m_Start.m_Y + v1.GetY() * t;
    return Point(x, y);
}

double Segment::GetProjectionRate(const Point& p) const
{
    const Area length_square = GetLengthSquare();
    if (length_square == k_Area_0)
        return 0.0;
    return GetVector().GetScalarProductWith(p - m_Start) / length_square;
}

Area Segment::GetDistanceSquareTo(const Point& p) const
{
    const Area to_start = m_Start.GetDistanceSquareTo(p), to_end = m_End.GetDistanceSquareTo(p);
    const Area length_square = GetLengthSquare();
    // The foot lies beyond an end exactly when the angle at that end is obtuse.
    if (to_start >= to_end + length_square)
        return to_end;
    if (to_end >= to_start + length_square)
        return to_start;
    const double twice_area = GetVector().GetVectorProductWith(p - m_Start).GetValue();
    return Area(twice_area * twice_area / length_square.GetValue());
}

Unit Segment::GetDistanceTo(const Point& p, Unit cur_distance) const
{
    VELLUM_ASSERT(cur_distance >= k_Unit_0);
    if (m_Start == m_End)
        return m_Start.GetDistanceTo(p, cur_distance);
    if (!GetBBox().Contains(p, cur_distance))
        return cur_distance;
    if (IntersectsWith(p, k_Unit_0))
        return k_Unit_0;
    const Unit distance = GetDistanceSquareTo(p).GetSqrt();
    return base::GetMinOf_T(distance, cur_distance);
}

Point Segment::GetNearestPoint(const Point& p) const
{
    if (m_Start == m_End)
        return m_Start;
    const double offset = GetProjectionRate(p);
    VELLUM_ASSERT(offset >= -0.1 && offset <= 1.1);
    if (offset <= 0)
        return m_Start;
    if (offset >= 1)
        return m_End;
    return m_Start + GetVector() * offset;
}

namespace
{
// The nearest point without the expectation that p lies near the segment.
Point GetClampedNearestPoint(const Segment& s, const Point& p)
{
    const double rate = s.GetProjectionRate(p);
    if (rate <= 0)
        return s.GetStart();
    if (rate >= 1)
        return s.GetEnd();
    return s.GetStart() + s.GetVector() * rate;
}
} // namespace

Segment Segment::GetOverlap(const Segment& ss, Unit accuracy) const
{
    VELLUM_ASSERT(IsParallelTo(ss, accuracy) && IntersectsWith(ss, accuracy));
    // The other segment turned to run the same way as this one.
    const bool reverse = GetVector().GetScalarProductWith(ss.GetVector()) < k_Area_0 ||
                         (m_Start.IsEqualTo(ss.m_End, accuracy) && m_End.IsEqualTo(ss.m_Start, accuracy) &&
                          !(m_Start.IsEqualTo(ss.m_Start, accuracy) && m_End.IsEqualTo(ss.m_End, accuracy)));
    const Segment other = reverse ? ss.GetReversed() : ss;
    if (m_Start.IsEqualTo(other.m_Start, accuracy) && m_End.IsEqualTo(other.m_End, accuracy))
        return Segment(GetMiddle_G(m_Start, other.m_Start), GetMiddle_G(m_End, other.m_End));

    const bool this_point = IsPoint(accuracy, nullptr), other_point = other.IsPoint(accuracy, nullptr);
    if (this_point && other_point)
    {
        const Point m = GetMiddle_G(m_Start, m_End, other.m_Start, other.m_End);
        return Segment(m, m);
    }
    if (this_point || other_point)
    {
        const Segment& point_segment = this_point ? *this : other;
        const Segment& long_segment = this_point ? other : *this;
        const Point q = point_segment.GetMiddle();
        const Point m = GetMiddle_G(q, GetClampedNearestPoint(long_segment, q));
        return Segment(m, m);
    }

    // The central line runs from the middle of the starts to the middle of the
    // ends; the overlap lies between the inner two of the four projected ends.
    const Point from = GetMiddle_G(m_Start, other.m_Start), to = GetMiddle_G(m_End, other.m_End);
    const Line central(from, to - from);
    if ((to - from).IsNull())
        return Segment(from, from);
    const Unit d1 = central.GetDistanceTo(m_Start), d2 = central.GetDistanceTo(m_End);
    const Unit d3 = central.GetDistanceTo(other.m_Start), d4 = central.GetDistanceTo(other.m_End);
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wparentheses"
    VELLUM_ASSERT(accuracy == 0 || d1 <= accuracy * 0.8 && d2 <= accuracy * 0.8 && d3 <= accuracy * 0.8 &&
                                       d4 <= accuracy * 0.8);
#pragma GCC diagnostic pop
    const double t1 = central.GetProjectionRate(m_Start), t2 = central.GetProjectionRate(m_End);
    const double t3 = central.GetProjectionRate(other.m_Start), t4 = central.GetProjectionRate(other.m_End);
    const double lower = std::max(std::min(t1, t2), std::min(t3, t4));
    const double upper = std::min(std::max(t1, t2), std::max(t3, t4));
    const Point a = from + (to - from) * lower, b = from + (to - from) * upper;
    if (lower > upper || a.GetDistanceSquareTo(b) < accuracy * accuracy)
    {
        const Point m = GetMiddle_G(a, b);
        return Segment(m, m);
    }
    return Segment(a, b);
}
} // namespace geom
