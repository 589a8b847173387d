// Angle.h - a signed, unbounded angle in radians, and the inverse trigonometry.
//
// An Angle measures a turn (an arc's sweep, a rotation); where a direction in
// the plane is meant, Azimuth is the type. Sine and cosine are exact at the
// named multiples of a quarter turn, so that axis-parallel geometry built with
// the constants keeps integral coordinates.
#pragma once

#include "lib/math/geometry/GeomDefs.h"

#include <type_traits>

namespace geom
{
// Reports an AngleUnit selector outside the enumeration.
void ReportUnknownAngleUnit_G();

class Angle
{
public:
    constexpr Angle() : m_Value(0.0) {}
    constexpr explicit Angle(double value, AngleUnit unit = k_Radians) : m_Value(value * GetFactor(unit)) {}

    // The value in the given unit; an unknown selector reports and yields 0.
    double GetValue(AngleUnit unit = k_Radians) const;
    constexpr double GetRadians() const { return m_Value; }

    Angle GetEpsilon() const;
    Angle GetAbs() const { return Angle(m_Value < 0 ? -m_Value : m_Value); }
    base::Sign GetSign() const { return base::GetSignOf_T(m_Value); }

    double GetSin() const;
    double GetCos() const;
    double GetTan() const;
    double GetCot() const;

    Angle operator-() const { return Angle(-m_Value); }
    Angle& operator+=(Angle other)
    {
        m_Value += other.m_Value;
        return *this;
    }
    Angle& operator-=(Angle other)
    {
        m_Value -= other.m_Value;
        return *this;
    }
    friend Angle operator+(Angle a, Angle b) { return Angle(a.m_Value + b.m_Value); }
    friend Angle operator-(Angle a, Angle b) { return Angle(a.m_Value - b.m_Value); }
    friend Angle operator*(Angle a, double f) { return Angle(a.m_Value * f); }
    friend Angle operator*(double f, Angle a) { return Angle(f * a.m_Value); }
    friend Angle operator/(Angle a, double d) { return Angle(a.m_Value / d); }
    friend double operator/(Angle a, Angle b) { return a.m_Value / b.m_Value; }

    friend bool operator==(Angle a, Angle b) { return a.m_Value == b.m_Value; }
    friend bool operator!=(Angle a, Angle b) { return !(a.m_Value == b.m_Value); }
    friend bool operator<(Angle a, Angle b) { return a.m_Value < b.m_Value; }
    friend bool operator>(Angle a, Angle b) { return a.m_Value > b.m_Value; }
    friend bool operator<=(Angle a, Angle b) { return !(a.m_Value > b.m_Value); }
    friend bool operator>=(Angle a, Angle b) { return a.m_Value >= b.m_Value; }

    // The factor of a unit to radians; 0 for an unknown selector.
    static constexpr double GetFactor(AngleUnit unit)
    {
        switch (unit)
        {
        case k_Degrees:
            return k_DegreesToRadians;
        case k_Radians:
            return 1.0;
        case k_Quadrants:
            return k_QuadrantsToRadians;
        case k_Octants:
            return k_OctantsToRadians;
        }
        if (!std::is_constant_evaluated())
            ReportUnknownAngleUnit_G();
        return 0.0;
    }

private:
    double m_Value;
};

inline constexpr Angle k_Degree_0(0.0, k_Degrees);
inline constexpr Angle k_Angle_0(0.0, k_Degrees);
inline constexpr Angle k_Degree_22_5(22.5, k_Degrees);
inline constexpr Angle k_Degree_30(30.0, k_Degrees);
inline constexpr Angle k_Degree_45(45.0, k_Degrees);
inline constexpr Angle k_Degree_60(60.0, k_Degrees);
inline constexpr Angle k_Degree_90(90.0, k_Degrees);
inline constexpr Angle k_Degree_135(135.0, k_Degrees);
inline constexpr Angle k_Degree_180(180.0, k_Degrees);
inline constexpr Angle k_Degree_270(270.0, k_Degrees);
inline constexpr Angle k_Degree_360(360.0, k_Degrees);
inline constexpr Angle k_Radian_1(1.0, k_Radians);
// The smallest sweep an arc may be built with.
inline constexpr Angle k_SmallAngle(1e-50, k_Radians);

// The inverse functions, exact at the values whose results are named angles
// (acos of 1, 0, -1; asin of 0, 1, -1), truncated otherwise. An argument
// beyond [-1, 1] is reported and clamped.
Angle GetAcos_G(double d);
Angle GetAsin_G(double d);
} // namespace geom
