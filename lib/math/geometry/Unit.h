// Unit.h - a signed length of the planar geometry.
//
// Lengths are plain doubles wrapped in a type, so that a length cannot be
// mistaken for an area or an angle in an interface. The library is unit-free:
// the readers decide what a Unit means (the translator uses millimetres) and
// nothing here converts.
#pragma once

#include "lib/math/geometry/GeomDefs.h"

namespace geom
{
class Area;

class Unit
{
public:
    constexpr Unit() : m_Value(0.0) {}
    constexpr Unit(double value) : m_Value(value) {}

    constexpr double GetValue() const { return m_Value; }

    // A thousand units in the last place of this length, never zero.
    Unit GetEpsilon() const;
    Unit GetAbs() const { return Unit(m_Value < 0 ? -m_Value : m_Value); }
    base::Sign GetSign() const { return base::GetSignOf_T(m_Value); }
    // The nearest multiple of c; c == 0 leaves the value as it is.
    Unit GetRounded(Unit c) const;

    Unit operator-() const { return Unit(-m_Value); }
    Unit& operator+=(Unit other)
    {
        m_Value += other.m_Value;
        return *this;
    }
    Unit& operator-=(Unit other)
    {
        m_Value -= other.m_Value;
        return *this;
    }
    Unit& operator*=(double factor)
    {
        m_Value *= factor;
        return *this;
    }

    friend Unit operator+(Unit a, Unit b) { return Unit(a.m_Value + b.m_Value); }
    friend Unit operator-(Unit a, Unit b) { return Unit(a.m_Value - b.m_Value); }
    friend Unit operator*(Unit a, double f) { return Unit(a.m_Value * f); }
    friend Unit operator*(double f, Unit a) { return Unit(f * a.m_Value); }
    friend Unit operator/(Unit a, double d) { return Unit(a.m_Value / d); }
    // The ratio of two lengths is a plain number.
    friend double operator/(Unit a, Unit b) { return a.m_Value / b.m_Value; }

    // Plain double comparisons: a NaN operand makes '>' false and '<=' true.
    friend bool operator==(Unit a, Unit b) { return a.m_Value == b.m_Value; }
    friend bool operator!=(Unit a, Unit b) { return !(a.m_Value == b.m_Value); }
    friend bool operator<(Unit a, Unit b) { return a.m_Value < b.m_Value; }
    friend bool operator>(Unit a, Unit b) { return a.m_Value > b.m_Value; }
    friend bool operator<=(Unit a, Unit b) { return !(a.m_Value > b.m_Value); }
    friend bool operator>=(Unit a, Unit b) { return a.m_Value >= b.m_Value; }

private:
    double m_Value;
};

inline constexpr Unit k_Unit_0(0.0);
inline constexpr Unit k_NullUnit(0.0);
inline constexpr Unit k_InfiniteUnit(k_InfiniteValue);
} // namespace geom
