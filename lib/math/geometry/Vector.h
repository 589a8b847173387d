// Vector.h - a free vector of the plane: differences of points, directions, normals.
//
// Vectors carry the orientation arithmetic of the library (scalar and vector
// products, rotation, azimuth, quadrant). Axis-parallel vectors are answered
// without roots or trigonometry wherever possible, so that the horizontal and
// vertical edges that dominate printed-circuit geometry stay exact.
#pragma once

#include "lib/math/geometry/Area.h"
#include "lib/math/geometry/Azimuth.h"

namespace geom
{
class Point;
class Segment;

class Vector
{
public:
    constexpr Vector() = default;
    constexpr Vector(Unit x, Unit y) : m_X(x), m_Y(y) {}
    // (cos, sin) of the azimuth times the length.
    Vector(Azimuth azimuth, Unit length);
    // From the first point to the second.
    Vector(const Point& from, const Point& to);
    // From the segment's start to its end.
    explicit Vector(const Segment& segment);

    Unit GetX() const { return m_X; }
    Unit GetY() const { return m_Y; }

    bool IsNull() const { return m_X == 0.0 && m_Y == 0.0; }
    bool IsEqualTo(const Vector& v, Unit tolerance) const
    {
        return (m_X - v.m_X).GetAbs() <= tolerance && (m_Y - v.m_Y).GetAbs() <= tolerance;
    }

    Area GetScalarProductWith(const Vector& v) const { return m_X * v.m_X + m_Y * v.m_Y; }
    Area GetVectorProductWith(const Vector& v) const { return m_X * v.m_Y - m_Y * v.m_X; }

    Unit GetLength() const;
    Area GetLengthSquare() const { return m_X * m_X + m_Y * m_Y; }

    Vector GetRotated(Angle angle) const;
    Vector GetRotatedBack(Angle angle) const { return GetRotated(-angle); }
    // The same direction at the given length; a null vector stays null.
    Vector GetResized(Unit length) const;
    // A quarter turn counter-clockwise, resized to the length: the left normal.
    Vector GetPerpendicular(Unit length) const;

    // The direction; a null vector reports and answers azimuth 0.
    Azimuth GetAzimuth() const;
    Angle GetAngleTo(const Vector& v, Direction direction) const;

    // 1 for x > 0, y >= 0; 2 for x <= 0, y > 0; 3 for x < 0, y <= 0; 4 for
    // x >= 0, y < 0. The null vector answers 1.
    int GetQuadrant() const;
    // As GetQuadrant, but -1 when the vector lies within tolerance of an axis.
    int GetQuadrant(Unit tolerance) const;

    // Parallel (or antiparallel) within an angle; 90 degrees or more accepts all.
    bool IsParallelTo(const Vector& v, Angle accuracy) const;
    // Parallel within a length tolerance at this vector's far end: the allowed
    // angle is twice tolerance over this vector's length. A vector within
    // tolerance of null is parallel to all.
    bool IsParallelTo(const Vector& v, Unit tolerance) const;
    bool IsSameDirection(const Vector& v) const { return GetScalarProductWith(v) > k_Area_0; }

    Vector operator-() const { return Vector(-m_X, -m_Y); }
    friend Vector operator+(const Vector& a, const Vector& b) { return Vector(a.m_X + b.m_X, a.m_Y + b.m_Y); }
    friend Vector operator-(const Vector& a, const Vector& b) { return Vector(a.m_X - b.m_X, a.m_Y - b.m_Y); }
    friend Vector operator*(const Vector& a, double f) { return Vector(a.m_X * f, a.m_Y * f); }
    friend Vector operator*(double f, const Vector& a) { return Vector(a.m_X * f, a.m_Y * f); }
    // Division by 2 is a multiplication by 0.5, others by the reciprocal; a
    // zero divisor reports and gives the null vector.
    friend Vector operator/(const Vector& a, double div);
    friend bool operator==(const Vector& a, const Vector& b) { return a.m_X == b.m_X && a.m_Y == b.m_Y; }
    friend bool operator!=(const Vector& a, const Vector& b) { return !(a == b); }

private:
    Unit m_X;
    Unit m_Y;
};

inline constexpr Vector k_NullVector(0.0, 0.0);
} // namespace geom
