// Line.h - an infinite straight line through a point in a direction.
//
// Lines carry the constructions that need no end: perpendicular bisectors for
// centres of arcs, the central line fitted through two overlapping segments,
// and the crossings of a circumference with a segment's carrier.
#pragma once

#include "lib/math/geometry/Segment.h"

namespace geom
{
class Line
{
public:
    Line() = default;
    Line(const Point& point, const Vector& direction) : m_Point(point), m_Direction(direction) {}
    Line(const Point& point, Azimuth direction) : m_Point(point), m_Direction(direction, 1.0) {}
    // The carrier of a segment, from its start towards its end.
    explicit Line(const Segment& segment) : m_Point(segment.GetStart()), m_Direction(segment.GetVector()) {}

    // The line of all points at equal distance from the segment's ends, running
    // a quarter turn counter-clockwise from the segment.
    static Line GetPerpendicularBisector(const Segment& segment);

    const Point& GetPoint() const { return m_Point; }
    const Vector& GetDirection() const { return m_Direction; }

    // Whether the lines meet: not parallel within tolerance, or coincident.
    bool IntersectsWith(const Line& other, Unit tolerance) const;
    Unit GetDistanceTo(const Point& p) const;
    // The foot of the perpendicular from p.
    Point GetFoot(const Point& p) const;
    // Where along the line the foot of p lies, in units of the direction vector.
    double GetProjectionRate(const Point& p) const;

private:
    Point m_Point;
    Vector m_Direction;
};

// The crossing point of two lines; unsuccessful for parallel lines.
Result_T<Point> GetIntersection_G(const Line& line1, const Line& line2);
} // namespace geom
