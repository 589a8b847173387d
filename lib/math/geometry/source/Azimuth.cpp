// Azimuth.cpp - normalisation, exact trigonometry and turns between directions.
#include "lib/math/geometry/Azimuth.h"

#include "core/lib/vellum/Assert.h"

#include <cmath>
#include <utility>

namespace geom
{
double Azimuth::Reduce(double radians)
{
    double r = std::fmod(radians, k_TwoPi);
    if (r < 0)
        r += k_TwoPi;
    // A tiny negative remainder plus a whole turn rounds to the turn itself.
    if (r >= k_TwoPi)
        r -= k_TwoPi;
    if (std::isnan(r))
        r = 0.0;
    return r;
}

Angle Azimuth::GetEpsilon() const
{
    return Angle(GetEpsilonOf_G(m_Value, 1));
}

double Azimuth::GetCos() const
{
    if (m_Value == k_Azimuth_0.m_Value)
        return 1.0;
    if (m_Value == k_Azimuth_90.m_Value || m_Value == k_Azimuth_270.m_Value)
        return 0.0;
    if (m_Value == k_Azimuth_180.m_Value)
        return -1.0;
    return GetCos_G(m_Value);
}

double Azimuth::GetSin() const
{
    if (m_Value == k_Azimuth_0.m_Value || m_Value == k_Azimuth_180.m_Value)
        return 0.0;
    if (m_Value == k_Azimuth_90.m_Value)
        return 1.0;
    if (m_Value == k_Azimuth_270.m_Value)
        return -1.0;
    return GetSin_G(m_Value);
}

Azimuth Azimuth::GetOpposite() const
{
    Azimuth ret;
    ret.m_Value = m_Value + k_Pi;
    if (ret.m_Value >= k_TwoPi)
        ret.m_Value -= k_TwoPi;
    return ret;
}

Angle Azimuth::GetAngleTo(Azimuth other, Direction direction) const
{
    VELLUM_ASSERT(direction == k_CW || direction == k_CCW);
    double d = std::fmod(other.m_Value - m_Value, k_TwoPi);
    if (d < 0)
        d += k_TwoPi;
    if (d >= k_TwoPi)
        d -= k_TwoPi;
    // Clockwise turns are counted negative: the same sweep, the other way.
    if (direction == k_CW && d != 0)
        d -= k_TwoPi;
    return Angle(d);
}

Angle Azimuth::GetSmallestAngleTo(Azimuth other) const
{
    const Angle ccw = GetAngleTo(other, k_CCW);
    const Angle cw = GetAngleTo(other, k_CW).GetAbs();
    return ccw < cw ? ccw : cw;
}

Angle Azimuth::GetSmallestSignedAngleTo(Azimuth other) const
{
    const Angle ccw = GetAngleTo(other, k_CCW);
    const Angle cw = -GetAngleTo(other, k_CW);
    VELLUM_ASSERT(ccw >= k_Angle_0 && cw >= k_Angle_0);
    if (ccw < cw)
        return ccw;
    return -cw;
}

bool Azimuth::IsBetween(Azimuth from, Azimuth to, Direction direction) const
{
    if (*this == from || *this == to)
        return true;
    if (direction == k_CW)
        std::swap(from, to);
    return from.GetAngleTo(*this, k_CCW) <= from.GetAngleTo(to, k_CCW);
}

Azimuth Azimuth::GetInterpolated(Azimuth other, double rate) const
{
    Angle angle = GetAngleTo(other, k_CCW);
    if (angle >= k_Degree_180)
        angle -= k_Degree_360;
    return Azimuth(m_Value + (1.0 - rate) * angle.GetValue());
}
} // namespace geom
