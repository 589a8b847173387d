// Circle.h - a disc: the region inside a circumference.
//
// Round pads and the ends of thick lines are circles; a Circle turns into a
// polygon of one full-circle edge where a region is needed.
#pragma once

#include "lib/math/geometry/Circumference.h"

namespace geom
{
class Circle
{
public:
    Circle() = default;
    // A negative radius is reported and taken as 0.
    Circle(const Point& center, Unit radius);

    const Point& GetCenter() const { return m_Center; }
    Unit GetRadius() const { return m_Radius; }
    Circumference GetCircumference() const { return Circumference(m_Center, m_Radius); }
    Box GetBBox() const { return GetCircumference().GetBBox(); }
    Area GetArea() const;

    // Radius within accuracy of 0; writes the centre when asked.
    bool IsPoint(Unit accuracy, Point* what_if_so) const;
    // Inside or on the boundary within accuracy.
    bool Contains(const Point& p, Unit accuracy) const;
    // Whether a shape lies wholly inside within accuracy: a box by its corners,
    // a circle by its far side, an arc by its ends and its tight box extremes.
    bool Contains(const Box& box, Unit accuracy) const;
    bool Contains(const Circle& circle, Unit accuracy) const;
    bool Contains(const Arc& arc, Unit accuracy) const;

private:
    Point m_Center;
    Unit m_Radius;
};
} // namespace geom
