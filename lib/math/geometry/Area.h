// Area.h - a signed area, and the arithmetic that links areas to lengths.
//
// Areas are kept apart from lengths because the tolerance of an area is the
// square of a length tolerance: comparing one against the other by mistake is
// the classic fault of contour code, and the type system catches it here.
#pragma once

#include "lib/math/geometry/Unit.h"

namespace geom
{
class Area
{
public:
    constexpr Area() : m_Value(0.0) {}
    constexpr Area(double value) : m_Value(value) {}

    constexpr double GetValue() const { return m_Value; }

    Area GetEpsilon() const;
    Area GetAbs() const { return Area(m_Value < 0 ? -m_Value : m_Value); }
    base::Sign GetSign() const { return base::GetSignOf_T(m_Value); }
    // The side of the square of this area; 1 and 4 are answered exactly without
    // a root, and a negative area gives 0 behind the assertion.
    Unit GetSqrt() const;

    Area operator-() const { return Area(-m_Value); }
    Area& operator+=(Area other)
    {
        m_Value += other.m_Value;
        return *this;
    }
    Area& operator-=(Area other)
    {
        m_Value -= other.m_Value;
        return *this;
    }

    friend Area operator+(Area a, Area b) { return Area(a.m_Value + b.m_Value); }
    friend Area operator-(Area a, Area b) { return Area(a.m_Value - b.m_Value); }
    friend Area operator*(Area a, double f) { return Area(a.m_Value * f); }
    friend Area operator*(double f, Area a) { return Area(f * a.m_Value); }
    friend Area operator/(Area a, double d) { return Area(a.m_Value / d); }
    friend double operator/(Area a, Area b) { return a.m_Value / b.m_Value; }
    friend Unit operator/(Area a, Unit b) { return Unit(a.m_Value / b.GetValue()); }

    friend bool operator==(Area a, Area b) { return a.m_Value == b.m_Value; }
    friend bool operator!=(Area a, Area b) { return !(a.m_Value == b.m_Value); }
    friend bool operator<(Area a, Area b) { return a.m_Value < b.m_Value; }
    friend bool operator>(Area a, Area b) { return a.m_Value > b.m_Value; }
    friend bool operator<=(Area a, Area b) { return !(a.m_Value > b.m_Value); }
    friend bool operator>=(Area a, Area b) { return a.m_Value >= b.m_Value; }

private:
    double m_Value;
};

inline Area operator*(Unit a, Unit b)
{
    return Area(a.GetValue() * b.GetValue());
}

inline Area GetSquare_G(Unit a)
{
    return a * a;
}

inline constexpr Area k_Area_0(0.0);
inline constexpr Area k_NullArea(0.0);
// The same number as k_InfiniteUnit, not its square: an area bound that cannot
// overflow when areas are added.
inline constexpr Area k_InfiniteArea(k_InfiniteValue);
} // namespace geom
