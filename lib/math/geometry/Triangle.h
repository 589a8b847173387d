// Triangle.h - three points: signed area, orientation and circumscribed circle.
//
// Arcs through three points and the area of contour fans are computed here.
#pragma once

#include "lib/math/geometry/Circumference.h"

namespace geom
{
class Triangle
{
public:
    Triangle() = default;
    Triangle(const Point& a, const Point& b, const Point& c) : m_A(a), m_B(b), m_C(c) {}

    const Point& GetA() const { return m_A; }
    const Point& GetB() const { return m_B; }
    const Point& GetC() const { return m_C; }

    // Half the vector product of the sides from the first vertex: positive
    // when the vertices run counter-clockwise.
    Area GetSignedArea() const;
    Area GetArea() const { return GetSignedArea().GetAbs(); }
    Direction GetOrientation() const { return GetOrientation_G(m_A, m_B, m_C); }
    // The circle through the three vertices; a collinear triple gives the
    // circle whose diameter is the longest side.
    Circumference GetCircumscribedCircle() const;

    // The angle opposite side c of a triangle with side lengths a, b, c.
    static Angle GetAngle(Unit a, Unit b, Unit c);

private:
    Point m_A;
    Point m_B;
    Point m_C;
};
} // namespace geom
