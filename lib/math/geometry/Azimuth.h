// Azimuth.h - a direction in the plane, radians in [0, 2*pi).
//
// Directions are normalised on construction, so that two azimuths of the same
// direction compare equal and the angle between two of them can be taken in
// a chosen sense of rotation. Tangents of arcs and the placement of full
// circles are azimuths.
#pragma once

#include "lib/math/geometry/Angle.h"

namespace geom
{
class Azimuth
{
public:
    constexpr Azimuth() : m_Value(0.0) {}
    // The value is reduced into [0, 2*pi); 0 stays 0 without a conversion.
    constexpr explicit Azimuth(double value, AngleUnit unit = k_Radians) : m_Value(Normalise(value, unit)) {}
    constexpr explicit Azimuth(Angle angle) : m_Value(Normalise(angle.GetRadians(), k_Radians)) {}

    double GetValue(AngleUnit unit = k_Radians) const { return GetAsAngle().GetValue(unit); }
    Angle GetAsAngle() const { return Angle(m_Value); }
    // Units in the last place of the direction, without the thousandfold margin.
    Angle GetEpsilon() const;

    double GetSin() const;
    double GetCos() const;

    // The direction half a turn away.
    Azimuth GetOpposite() const;
    // The turn from this azimuth to another in a direction: in [0, 2*pi) for
    // k_CCW, in (-2*pi, 0] for k_CW.
    Angle GetAngleTo(Azimuth other, Direction direction) const;
    // The lesser unsigned turn to another azimuth, at most half a turn.
    Angle GetSmallestAngleTo(Azimuth other) const;
    // The lesser turn with its sign; a tie at half a turn gives -pi.
    Angle GetSmallestSignedAngleTo(Azimuth other) const;
    // Whether this azimuth lies on the way from one bound to the other in the
    // direction given; the bounds themselves belong to the way.
    bool IsBetween(Azimuth from, Azimuth to, Direction direction) const;
    // A direction between this one and another along the lesser turn; rate 1
    // gives this azimuth and rate 0 the other.
    Azimuth GetInterpolated(Azimuth other, double rate) const;

    friend Azimuth operator+(Azimuth a, Angle b) { return Azimuth(a.m_Value + b.GetValue()); }
    friend Azimuth operator-(Azimuth a, Angle b) { return Azimuth(a.m_Value - b.GetValue()); }

    friend bool operator==(Azimuth a, Azimuth b) { return a.m_Value == b.m_Value; }
    friend bool operator!=(Azimuth a, Azimuth b) { return !(a.m_Value == b.m_Value); }
    friend bool operator<(Azimuth a, Azimuth b) { return a.m_Value < b.m_Value; }
    friend bool operator>(Azimuth a, Azimuth b) { return a.m_Value > b.m_Value; }
    friend bool operator<=(Azimuth a, Azimuth b) { return !(a.m_Value > b.m_Value); }
    friend bool operator>=(Azimuth a, Azimuth b) { return a.m_Value >= b.m_Value; }

private:
    static constexpr double Normalise(double value, AngleUnit unit)
    {
        if (value == 0)
            return 0.0;
        const double r = value * Angle::GetFactor(unit);
        if (r >= 0 && r < k_TwoPi)
            return r;
        return Reduce(r);
    }
    // fmod by a whole turn, a negative remainder moved up by one turn.
    static double Reduce(double radians);

    double m_Value;
};

inline constexpr Azimuth k_Azimuth_0(0.0, k_Degrees);
inline constexpr Azimuth k_Azimuth_22_5(22.5, k_Degrees);
inline constexpr Azimuth k_Azimuth_30(30.0, k_Degrees);
inline constexpr Azimuth k_Azimuth_45(45.0, k_Degrees);
inline constexpr Azimuth k_Azimuth_60(60.0, k_Degrees);
inline constexpr Azimuth k_Azimuth_90(90.0, k_Degrees);
inline constexpr Azimuth k_Azimuth_135(135.0, k_Degrees);
inline constexpr Azimuth k_Azimuth_180(180.0, k_Degrees);
inline constexpr Azimuth k_Azimuth_225(225.0, k_Degrees);
inline constexpr Azimuth k_Azimuth_270(270.0, k_Degrees);
inline constexpr Azimuth k_Azimuth_315(315.0, k_Degrees);
} // namespace geom
