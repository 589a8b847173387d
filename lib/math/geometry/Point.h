// Point.h - a position in the plane, and the helpers that merge and match point lists.
//
// Points compare exactly with '==' and with a tolerance through IsEqualTo,
// which is a square test (both coordinate differences within tolerance), not a
// circular one: the box rejects and the contour code of the library are built
// around that choice.
#pragma once

#include "lib/math/geometry/Vector.h"

namespace geom
{
class Point
{
public:
    constexpr Point() = default;
    constexpr Point(Unit x, Unit y) : m_X(x), m_Y(y) {}

    Unit GetX() const { return m_X; }
    Unit GetY() const { return m_Y; }

    // Square test: |dx| <= tolerance and |dy| <= tolerance.
    bool IsEqualTo(const Point& other, Unit tolerance) const
    {
        return (m_X - other.m_X).GetAbs() <= tolerance && (m_Y - other.m_Y).GetAbs() <= tolerance;
    }
    Area GetDistanceSquareTo(const Point& other) const
    {
        const Unit dx = m_X - other.m_X, dy = m_Y - other.m_Y;
        return dx * dx + dy * dy;
    }
    // The distance, or cur_distance when that is smaller: the form of every
    // distance query of the library, where cur_distance is the best so far.
    Unit GetDistanceTo(const Point& other, Unit cur_distance) const;
    // Both coordinates rounded to multiples of c.
    Point GetRounded(Unit c) const;

    friend Point operator+(const Point& p, const Vector& v)
    {
        return Point(p.m_X + v.GetX(), p.m_Y + v.GetY());
    }
    friend Point operator-(const Point& p, const Vector& v)
    {
        return Point(p.m_X - v.GetX(), p.m_Y - v.GetY());
    }
    friend Vector operator-(const Point& a, const Point& b) { return Vector(a.m_X - b.m_X, a.m_Y - b.m_Y); }
    friend bool operator==(const Point& a, const Point& b) { return a.m_X == b.m_X && a.m_Y == b.m_Y; }
    friend bool operator!=(const Point& a, const Point& b) { return !(a == b); }
    // x first, then y: the order in which edges are normalised before a middle
    // point is computed, so that an edge and its reverse give the same bits.
    friend bool operator<(const Point& a, const Point& b)
    {
        return a.m_X < b.m_X || (a.m_X == b.m_X && a.m_Y < b.m_Y);
    }

    Unit m_X;
    Unit m_Y;
};

inline constexpr Point k_Point_0(0.0, 0.0);

Point GetMiddle_G(const Point& a, const Point& b);
Point GetMiddle_G(const Point& a, const Point& b, const Point& c);
Point GetMiddle_G(const Point& a, const Point& b, const Point& c, const Point& d);

// The turn of a, b, c by the sign of (b - a) x (c - a), without tolerance:
// negative k_CW, zero k_NoDirection, positive k_CCW.
Direction GetOrientation_G(const Point& a, const Point& b, const Point& c);

} // namespace geom
