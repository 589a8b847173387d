// Segment.h - a straight piece between two points.
//
// Segments are the straight edges of contours and the chords of arcs. Their
// predicates take an explicit tolerance and reject cheaply by the box grown by
// that tolerance; lengths of axis-parallel segments are exact.
#pragma once

#include "lib/math/geometry/Box.h"

namespace geom
{
class Segment
{
public:
    Segment() = default;
    Segment(const Point& start, const Point& end) : m_Start(start), m_End(end) {}

    const Point& GetStart() const { return m_Start; }
    const Point& GetEnd() const { return m_End; }
    Vector GetVector() const { return m_End - m_Start; }
    Unit GetLength() const { return GetVector().GetLength(); }
    Area GetLengthSquare() const { return GetVector().GetLengthSquare(); }
    Box GetBBox() const { return Box(m_Start, m_End); }
    Unit GetEpsilon() const { return GetBBox().GetEpsilon(); }
    Segment GetReversed() const { return Segment(m_End, m_Start); }
    // The middle, computed on the segment whose start sorts first, so that a
    // segment and its reverse give the same bits.
    Point GetMiddle() const;

    // Both ends IsEqualTo within accuracy; writes the start when asked.
    bool IsPoint(Unit accuracy, Point* what_if_so) const;
    bool IsParallelTo(const Segment& s, Unit accuracy) const
    {
        return GetVector().IsParallelTo(s.GetVector(), accuracy);
    }

    // Whether the point lies on the segment within accuracy (circular near
    // the ends, perpendicular distance along the body).
    bool IntersectsWith(const Point& p, Unit accuracy) const;
    // Whether the segments touch or cross within accuracy.
    bool IntersectsWith(const Segment& s, Unit accuracy) const;
    // A proper crossing: neither is a point, no end lies on the other, and each
    // segment has the other's ends strictly on its two sides.
    bool IsCrossing(const Segment& s, Unit accuracy) const;
    // The crossing point of two segments that intersect exactly. Shared ends
    // are returned as they are; parallel segments give the centre of the common
    // part of their boxes.
    Point GetIntersectionPoint(const Segment& seg) const;

    // Where the foot of the point falls: 0 at the start, 1 at the end, outside
    // [0, 1] beyond them; 0 for a point segment.
    double GetProjectionRate(const Point& p) const;
    Area GetDistanceSquareTo(const Point& p) const;
    Unit GetDistanceTo(const Point& p, Unit cur_distance) const;
    // The point of the segment nearest to p; p is expected near the segment.
    Point GetNearestPoint(const Point& p) const;
    // The common stretch of two nearly parallel segments that touch within
    // accuracy, running the way of this segment; a point segment if the common
    // part is shorter than accuracy.
    Segment GetOverlap(const Segment& ss, Unit accuracy) const;

    friend bool operator==(const Segment& a, const Segment& b)
    {
        return a.m_Start == b.m_Start && a.m_End == b.m_End;
    }
    friend bool operator!=(const Segment& a, const Segment& b) { return !(a == b); }

private:
    Point m_Start;
    Point m_End;
};
} // namespace geom
