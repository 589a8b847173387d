// ArcIntersection.cpp - tolerance predicates and intersections of arcs.
//
// Every test rejects first by boxes grown by the tolerance, then reduces the
// arc to its circumference and asks whether the candidate points fall into
// the arc's angular span. Ends within tolerance of each other always count as
// contact: contours meet at shared vertices far more often than they cross.
#include "core/lib/vellum/Assert.h"

#include "lib/math/geometry/Arc.h"
#include "lib/math/geometry/ChordFrame.h"
#include <initializer_list>

#include <algorithm>
#include <cmath>

namespace geom
{
namespace
{
bool IsWithin(const Point& a, const Point& b, Unit accuracy)
{
    return a.GetDistanceSquareTo(b) <= accuracy * accuracy;
}

// Moves a successful second result into an empty first place.
template <class T> void Repack(std::pair<Result_T<T>, Result_T<T>>& ret)
{
    if (!ret.first.m_Success && ret.second.m_Success)
    {
        ret.first = ret.second;
        ret.second.m_Success = false;
    }
}

Arc MakePointArc(const Point& p)
{
    return Arc(p, p, k_Unit_0);
}

// The span decision from exact orientations around the centre.
bool IsInSpanExactly(const Arc& arc, const Point& center, const Point& p)
{
    const Point& start = arc.GetStart();
    const Point& end = arc.GetEnd();
    const Direction direction = arc.GetDirection();
    const Direction o1 = GetOrientation_G(center, start, p);
    const Direction o2 = GetOrientation_G(center, p, end);
    const Direction o3 = GetOrientation_G(center, start, end);
    const Vector to_p = p - center;
    if (o3 == k_NoDirection)
    {
        // A half circle (or ends on one ray): the side of the start radius
        // into which the arc turns.
        if (o1 == k_NoDirection)
            return true;
        return o1 == direction;
    }
    // On the line of an end radius: on the end itself, or half a turn from it,
    // which only a long arc reaches.
    if (o1 == k_NoDirection)
        return to_p.IsSameDirection(start - center) || arc.IsBig();
    if (o2 == k_NoDirection)
        return to_p.IsSameDirection(end - center) || arc.IsBig();
    // A short arc (o3 runs with the arc) holds the points that turn the same way
    // from both ends; a long one holds all but those of its short complement.
    if (o1 == o2 && o2 == o3)
        return o3 == direction;
    return o3 != direction;
}
} // namespace

bool Arc::IsInSpan(const Point& p, Unit accuracy) const
{
    if (m_Start == m_End)
        return m_Height != k_Unit_0 || IsWithin(p, m_Start, accuracy);
    if (m_Height == k_Unit_0)
    {
        const double rate = GetStartEndSegment().GetProjectionRate(p);
        return rate >= 0.0 && rate <= 1.0;
    }
    if (IsWithin(p, m_Start, accuracy) || IsWithin(p, m_End, accuracy))
        return true;
    if (ChordFrame::IsFlat(*this))
    {
        // Seen from a centre a thousand chords away the span is a sliver of
        // angle; over the chord it is plain.
        const ChordFrame frame(*this);
        if (std::fabs(frame.GetAcross(p)) <= frame.GetHalfChord())
            return frame.IsInSpan(p, accuracy);
    }
    const Point center = GetCenter();
    if (IsWithin(p, center, accuracy))
        return true;
    if (IsInSpanExactly(*this, center, p))
        return true;
    if (!(accuracy > k_Unit_0))
        return false;
    // Near a boundary radius: try the point moved by the tolerance across it.
    const Vector across = (p - center).GetPerpendicular(accuracy);
    return IsInSpanExactly(*this, center, p + across) || IsInSpanExactly(*this, center, p - across);
}

bool Arc::IntersectsWith(const Point& p, Unit accuracy) const
{
    Segment chord;
    if (IsSegment(k_Unit_0, &chord))
        return chord.IntersectsWith(p, accuracy);
    if (IsWithin(p, m_Start, accuracy) || IsWithin(p, m_End, accuracy))
        return true;
    if (!GetLooseBBox().Contains(p, accuracy) || !GetBBox().Contains(p, accuracy))
        return false;
    if (ChordFrame::IsFlat(*this))
        return ChordFrame(*this).IsOnArc(p, accuracy);
    const Circumference circle = GetCircumference();
    if (!circle.IntersectsWith(p, accuracy))
        return false;
    const Point projected = circle.GetNearestPoint(p);
    return IsInSpan(projected, accuracy) && projected.IsEqualTo(p, accuracy);
}

bool Arc::IntersectsWith(const Segment& segment, Unit accuracy) const
{
    Segment chord;
    if (IsSegment(k_Unit_0, &chord))
        return chord.IntersectsWith(segment, accuracy);
    if (segment.GetStart() == segment.GetEnd())
        return IntersectsWith(segment.GetStart(), accuracy);
    if (segment.IntersectsWith(m_Start, accuracy) || segment.IntersectsWith(m_End, accuracy) ||
        IsWithin(segment.GetStart(), m_Start, accuracy) || IsWithin(segment.GetStart(), m_End, accuracy) ||
        IsWithin(segment.GetEnd(), m_Start, accuracy) || IsWithin(segment.GetEnd(), m_End, accuracy))
        return true;
    const Box segment_box = segment.GetBBox();
    if (!GetLooseBBox().IntersectsWith(segment_box, accuracy) ||
        !GetBBox().IntersectsWith(segment_box, accuracy))
        return false;
    if (ChordFrame::IsFlat(*this))
        return GetIntersections(Arc(segment), accuracy).first.m_Success;
    const auto crossings = GetCircumference().GetIntersections(segment, accuracy);
    return (crossings.first.m_Success && IsInSpan(crossings.first.m_Value, accuracy)) ||
           (crossings.second.m_Success && IsInSpan(crossings.second.m_Value, accuracy));
}

bool Arc::IntersectsWith(const Circumference& circumference, Unit accuracy) const
{
    Segment chord;
    if (IsSegment(k_Unit_0, &chord))
        return circumference.GetIntersections(chord, accuracy).first.m_Success;
    if (!GetLooseBBox().IntersectsWith(circumference.GetBBox(), accuracy))
        return false;
    if (circumference.IntersectsWith(m_Start, accuracy) || circumference.IntersectsWith(m_End, accuracy))
        return true;
    const auto crossings = GetCircumference().GetIntersections(circumference, accuracy);
    if (!crossings.first.m_Success)
        return false;
    if (!crossings.first.m_Value.IsSegment(k_Unit_0, nullptr))
        return true; // the same circle
    return IsInSpan(crossings.first.m_Value.GetStart(), accuracy) ||
           (crossings.second.m_Success && IsInSpan(crossings.second.m_Value.GetStart(), accuracy));
}

bool Arc::IntersectsWith(const Arc& arc, Unit accuracy) const
{
    Segment chord;
    if (IsSegment(k_Unit_0, &chord))
        return arc.IntersectsWith(chord, accuracy);
    if (arc.IsSegment(k_Unit_0, &chord))
        return IntersectsWith(chord, accuracy);
    Circumference circle;
    if (IsCircumference(&circle))
        return arc.IntersectsWith(circle, accuracy);
    if (arc.IsCircumference(&circle))
        return IntersectsWith(circle, accuracy);
    if (IsWithin(m_Start, arc.m_Start, accuracy) || IsWithin(m_Start, arc.m_End, accuracy) ||
        IsWithin(m_End, arc.m_Start, accuracy) || IsWithin(m_End, arc.m_End, accuracy))
        return true;
    if (!GetLooseBBox().IntersectsWith(arc.GetLooseBBox(), accuracy))
        return false;
    if (ChordFrame::IsFlat(*this) || ChordFrame::IsFlat(arc))
        return GetIntersections(arc, accuracy).first.m_Success;
    const Circumference c1 = GetCircumference(), c2 = arc.GetCircumference();
    if (c1.GetBBox().IsEqualTo(c2.GetBBox(), accuracy))
        return arc.IsInSpan(m_Start, accuracy) || arc.IsInSpan(m_End, accuracy) ||
               IsInSpan(arc.m_Start, accuracy) || IsInSpan(arc.m_End, accuracy);
    const auto crossings = c1.GetIntersections(c2, accuracy);
    for (const Result_T<Arc>* x : {&crossings.first, &crossings.second})
    {
        if (!x->m_Success)
            continue;
        const Point& p = x->m_Value.GetStart();
        if (IsInSpan(p, accuracy) && arc.IsInSpan(p, accuracy))
            return true;
    }
    return false;
}

namespace
{
// The pieces that two arcs of one circle have in common, as sub-arcs of the
// first, running its way.
ArcIntersections GetCommonPieces(const Arc& a, const Arc& other, Unit accuracy)
{
    ArcIntersections ret;
    const Arc b = a.IsSameDirection(other) ? other : other.GetReversed();
    const bool a_full = a.GetStart() == a.GetEnd(), b_full = b.GetStart() == b.GetEnd();
    if (a_full && b_full)
    {
        ret.first = {true, a};
        return ret;
    }
    if (a_full || b_full)
    {
        ret.first = {true, a_full ? b : a};
        return ret;
    }
    const Direction direction = a.GetDirection();
    const Point center = a.GetCenter();
    const Unit radius = a.GetRadius();
    const double sweep_a = a.GetAngle().GetAbs().GetValue(), sweep_b = b.GetAngle().GetAbs().GetValue();
    double b0 = (a.GetStart() - center)
                    .GetAzimuth()
                    .GetAngleTo((b.GetStart() - center).GetAzimuth(), direction)
                    .GetAbs()
                    .GetValue();
    if (a.GetStart().IsEqualTo(b.GetStart(), accuracy))
        b0 = 0.0;
    // The angular slack of the tolerance at this radius.
    const double slack = radius > k_Unit_0 ? accuracy / radius : 0.0;
    Result_T<Arc>* slot = &ret.first;
    for (const double shift : {0.0, -k_TwoPi})
    {
        const double lower = std::max(0.0, b0 + shift), upper = std::min(sweep_a, b0 + shift + sweep_b);
        if (upper < lower - slack)
            continue;
        const double from = std::clamp(lower / sweep_a, 0.0, 1.0);
        const double to = std::clamp(std::max(lower, upper) / sweep_a, 0.0, 1.0);
        const Arc piece = upper < lower ? MakePointArc(a.GetPointAt(from)) : a.GetSubArc(from, to);
        if (slot == &ret.second && ret.first.m_Value.IsEqualTo(piece, accuracy))
            continue;
        *slot = {true, piece};
        if (slot == &ret.second)
            break;
        slot = &ret.second;
    }
    return ret;
}

// Whether one segment lies along the other's line within half the accuracy
// at both its ends. The parallel test alone lets a segment as short as the
// accuracy pass at any angle: that one touches the other at a point.
bool IsRunningAlong(const Segment& s1, const Segment& s2, Unit accuracy)
{
    const auto near_carrier = [&](const Segment& s, const Point& p)
    {
        const Area cross = s.GetVector().GetVectorProductWith(p - s.GetStart()).GetAbs();
        return cross <= s.GetLength() * accuracy * 0.5;
    };
    return (near_carrier(s1, s2.GetStart()) && near_carrier(s1, s2.GetEnd())) ||
           (near_carrier(s2, s1.GetStart()) && near_carrier(s2, s1.GetEnd()));
}

// The touching or crossing point of two straight edges that meet within accuracy.
Point GetStraightContact(const Segment& s1, const Segment& s2, Unit accuracy)
{
    if (s1.IntersectsWith(s2, k_Unit_0))
        return s1.GetIntersectionPoint(s2);
    for (const Point* p : {&s1.GetStart(), &s1.GetEnd()})
        if (s2.IntersectsWith(*p, accuracy))
            return GetMiddle_G(*p, s2.GetNearestPoint(*p));
    for (const Point* p : {&s2.GetStart(), &s2.GetEnd()})
        if (s1.IntersectsWith(*p, accuracy))
            return GetMiddle_G(*p, s1.GetNearestPoint(*p));
    return s1.GetMiddle();
}
} // namespace

ArcIntersections Arc::GetIntersections(const Arc& arc, Unit accuracy) const
{
    ArcIntersections ret;
    Segment s1, s2;
    const bool straight1 = IsSegment(k_Unit_0, &s1), straight2 = arc.IsSegment(k_Unit_0, &s2);
    if (straight1 && straight2)
    {
        if (!s1.IntersectsWith(s2, accuracy))
            return ret;
        if (s1.IsParallelTo(s2, accuracy) && IsRunningAlong(s1, s2, accuracy))
            ret.first = {true, Arc(s1.GetOverlap(s2, accuracy))};
        else
            ret.first = {true, MakePointArc(GetStraightContact(s1, s2, accuracy))};
        return ret;
    }
    if (straight1 || straight2)
    {
        const Arc& curved = straight1 ? arc : *this;
        const Segment& segment = straight1 ? s1 : s2;
        if (!curved.GetLooseBBox().IntersectsWith(segment.GetBBox(), accuracy))
            return ret;
        if (ChordFrame::IsFlat(curved))
        {
            // The circle's crossings with the segment, found from the chord:
            // from the far centre they cancel down to noise.
            const ArcIntersections found = ChordFrame(curved).GetIntersections(segment, accuracy);
            for (const Result_T<Arc>* x : {&found.first, &found.second})
                if (x->m_Success && curved.IsInSpan(x->m_Value.GetStart(), accuracy))
                    (ret.first.m_Success ? ret.second : ret.first) = *x;
            return ret;
        }
        const auto crossings = curved.GetCircumference().GetIntersections(segment, accuracy);
        if (crossings.first.m_Success && curved.IsInSpan(crossings.first.m_Value, accuracy))
            ret.first = {true, MakePointArc(crossings.first.m_Value)};
        if (crossings.second.m_Success && curved.IsInSpan(crossings.second.m_Value, accuracy))
            ret.second = {true, MakePointArc(crossings.second.m_Value)};
        Repack(ret);
        return ret;
    }
    if (!GetLooseBBox().IntersectsWith(arc.GetLooseBBox(), accuracy))
        return ret;
    const auto crossings = GetCircumference().GetIntersections(arc.GetCircumference(), accuracy);
    if (crossings.first.m_Success && !crossings.first.m_Value.IsSegment(k_Unit_0, nullptr))
        return GetCommonPieces(*this, arc, accuracy);
    const bool flat = ChordFrame::IsFlat(*this), other_flat = ChordFrame::IsFlat(arc);
    if (flat || other_flat)
    {
        // Measured from the chord of the flat one (the flatter of two).
        const bool own_frame =
            flat && (!other_flat || m_Height.GetAbs() * arc.GetStartEndSegment().GetLength() <=
                                        arc.GetHeight().GetAbs() * GetStartEndSegment().GetLength());
        const ArcIntersections found = own_frame ? ChordFrame(*this).GetIntersections(arc, accuracy)
                                                 : ChordFrame(arc).GetIntersections(*this, accuracy);
        for (const Result_T<Arc>* x : {&found.first, &found.second})
            if (x->m_Success && IsInSpan(x->m_Value.GetStart(), accuracy) &&
                arc.IsInSpan(x->m_Value.GetStart(), accuracy))
                (ret.first.m_Success ? ret.second : ret.first) = *x;
        return ret;
    }
    if (!crossings.first.m_Success)
        return ret;
    const auto keep = [&](const Result_T<Arc>& x)
    {
        return x.m_Success && IsInSpan(x.m_Value.GetStart(), accuracy) &&
               arc.IsInSpan(x.m_Value.GetStart(), accuracy);
    };
    if (keep(crossings.first))
        ret.first = crossings.first;
    if (keep(crossings.second))
        ret.second = crossings.second;
    Repack(ret);
    return ret;
}

ArcIntersections Arc::GetIntersections(const Circumference& circumference, Unit accuracy) const
{
    Circumference own;
    if (IsSegment(k_Unit_0, nullptr) && !IsCircumference(&own))
    {
        ArcIntersections ret;
        const auto crossings = circumference.GetIntersections(GetStartEndSegment(), accuracy);
        if (crossings.first.m_Success)
            ret.first = {true, MakePointArc(crossings.first.m_Value)};
        if (crossings.second.m_Success)
            ret.second = {true, MakePointArc(crossings.second.m_Value)};
        return ret;
    }
    ArcIntersections ret;
    const auto crossings = GetCircumference().GetIntersections(circumference, accuracy);
    if (!crossings.first.m_Success)
        return ret;
    if (!crossings.first.m_Value.IsSegment(k_Unit_0, nullptr))
    {
        // The arc lies on the circumference: all of it is common.
        ret.first = {true, *this};
        return ret;
    }
    if (IsInSpan(crossings.first.m_Value.GetStart(), accuracy))
        ret.first = crossings.first;
    if (crossings.second.m_Success && IsInSpan(crossings.second.m_Value.GetStart(), accuracy))
        ret.second = crossings.second;
    Repack(ret);
    return ret;
}
} // namespace geom
