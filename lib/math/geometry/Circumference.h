// Circumference.h - the curve of a circle: a centre and a radius.
//
// Every curved edge lies on one, so arc predicates reduce to circumference
// geometry plus a test of the angular span. The intersections here are the
// tolerance-aware primitives of the boolean operations.
#pragma once

#include "lib/math/geometry/Line.h"

#include <utility>

namespace geom
{
class Arc;

class Circumference
{
public:
    Circumference() = default;
    // A negative radius is reported and taken as 0.
    Circumference(const Point& center, Unit radius);

    const Point& GetCenter() const { return m_Center; }
    Unit GetRadius() const { return m_Radius; }
    Box GetBBox() const;
    Unit GetEpsilon() const { return GetBBox().GetEpsilon(); }

    // The point of the circumference in the direction of the azimuth.
    Point GetPointAt(Azimuth azimuth) const { return m_Center + Vector(azimuth, m_Radius); }
    // The same point moved radially outwards by offset (inwards if negative).
    Point GetOffsetPoint(Azimuth azimuth, Unit offset) const
    {
        return m_Center + Vector(azimuth, m_Radius + offset);
    }
    // The nearest point of the curve; the centre itself answers centre + (radius, 0).
    Point GetNearestPoint(const Point& p) const;
    // Radius within accuracy of 0; writes the centre when asked.
    bool IsPoint(Unit accuracy, Point* what_if_so) const;
    // Whether p lies within accuracy of the curve.
    bool IntersectsWith(const Point& p, Unit accuracy) const;

    // The crossings with an infinite line; a tangent within accuracy gives one.
    std::pair<Result_T<Point>, Result_T<Point>> GetIntersections(const Line& line, Unit accuracy) const;
    // The crossings with a segment; a touching segment gives one point.
    std::pair<Result_T<Point>, Result_T<Point>> GetIntersections(const Segment& segment, Unit accuracy) const;
    // The common points of two circumferences as point arcs, or, for the same
    // circle within accuracy, one full arc on the mean circle.
    std::pair<Result_T<Arc>, Result_T<Arc>> GetIntersections(const Circumference& other, Unit accuracy) const;

    friend bool operator==(const Circumference& a, const Circumference& b)
    {
        return a.m_Center == b.m_Center && a.m_Radius == b.m_Radius;
    }

private:
    Point m_Center;
    Unit m_Radius;
};
} // namespace geom
