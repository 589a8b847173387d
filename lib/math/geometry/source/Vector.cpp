// Vector.cpp - lengths, rotations, azimuths, quadrants and parallelism of vectors.
#include "lib/math/geometry/Vector.h"

#include "core/lib/vellum/Assert.h"
#include "lib/math/geometry/Point.h"

#include <algorithm>
#include <cmath>

namespace geom
{
Vector::Vector(Azimuth azimuth, Unit length) : m_X(length * azimuth.GetCos()), m_Y(length * azimuth.GetSin())
{
}

Vector::Vector(const Point& from, const Point& to) : m_X(to.m_X - from.m_X), m_Y(to.m_Y - from.m_Y) {}

Vector operator/(const Vector& a, double div)
{
    VELLUM_ASSERT(div);
    if (div == 0)
        return k_NullVector;
    if (div == 2.0)
        return a * 0.5;
    return a * (1.0 / div);
}

Unit Vector::GetLength() const
{
    // An axis-parallel vector has its length without a root, exactly.
    if (m_X == 0.0)
        return m_Y.GetAbs();
    if (m_Y == 0.0)
        return m_X.GetAbs();
    return Unit(std::sqrt(GetLengthSquare().GetValue()));
}

Vector Vector::GetRotated(Angle angle) const
{
    const double c = angle.GetCos(), s = angle.GetSin();
    return Vector(m_X * c - m_Y * s, m_X * s + m_Y * c);
}

Vector Vector::GetResized(Unit length) const
{
    VELLUM_ASSERT(*this != k_NullVector);
    if (IsNull())
        return k_NullVector;
    if (m_X == 0.0)
        return Vector(0.0, m_Y < 0.0 ? -length : length);
    if (m_Y == 0.0)
        return Vector(m_X < 0.0 ? -length : length, 0.0);
    return *this * (length / GetLength());
}

Vector Vector::GetPerpendicular(Unit length) const
{
    return Vector(-m_Y, m_X).GetResized(length);
}

Azimuth Vector::GetAzimuth() const
{
    VELLUM_ASSERT(!IsNull());
    if (m_Y == 0.0)
        return m_X < 0.0 ? k_Azimuth_180 : k_Azimuth_0;
    if (m_X == 0.0)
        return m_Y > 0.0 ? k_Azimuth_90 : k_Azimuth_270;
    return Azimuth(GetAtan2_G(m_Y.GetValue(), m_X.GetValue()));
}

Angle Vector::GetAngleTo(const Vector& v, Direction direction) const
{
    VELLUM_ASSERT(!IsNull() && !v.IsNull());
    return GetAzimuth().GetAngleTo(v.GetAzimuth(), direction);
}

int Vector::GetQuadrant() const
{
    if (m_X > 0.0 && m_Y >= 0.0)
        return 1;
    if (m_X <= 0.0 && m_Y > 0.0)
        return 2;
    if (m_X < 0.0 && m_Y <= 0.0)
        return 3;
    if (m_X >= 0.0 && m_Y < 0.0)
        return 4;
    return 1;
}

int Vector::GetQuadrant(Unit tolerance) const
{
    if (m_X.GetAbs() <= tolerance || m_Y.GetAbs() <= tolerance)
        return -1;
    const base::Sign sx = m_X.GetSign(), sy = m_Y.GetSign();
    VELLUM_ASSERT(sx != base::k_Zero || sy != base::k_Zero);
    if (sx == base::k_Plus && sy == base::k_Plus)
        return 1;
    if (sx == base::k_Minus && sy == base::k_Plus)
        return 2;
    if (sx == base::k_Minus && sy == base::k_Minus)
        return 3;
    if (sx == base::k_Plus && sy == base::k_Minus)
        return 4;
    // Only a negative tolerance lets an axis component through to here.
    VELLUM_ASSERT(!"This should never happen!");
    return -1;
}

bool Vector::IsParallelTo(const Vector& v, Angle accuracy) const
{
    VELLUM_ASSERT(accuracy >= k_Degree_0);
    if (accuracy >= k_Degree_90)
        return true;
    const Area product = GetVectorProductWith(v);
    if (product == k_Area_0)
        return true;
    if (!(accuracy > k_Degree_0))
        return false;
    const double sine = std::min(1.0, product.GetAbs().GetValue() / (GetLength() * v.GetLength()).GetValue());
    return GetAsin_G(sine) <= accuracy;
}

bool Vector::IsParallelTo(const Vector& v, Unit tolerance) const
{
    if (IsEqualTo(k_NullVector, tolerance) || v.IsEqualTo(k_NullVector, tolerance))
        return true;
    if (tolerance == k_Unit_0)
        return IsParallelTo(v, k_Degree_0);
    // Both terms use this vector's length: the asymmetry is deliberate, the
    // receiver is the edge whose far end may move by the tolerance.
    const Unit length = GetLength();
    return IsParallelTo(v, Angle(tolerance / length + tolerance / length));
}
} // namespace geom
