// Angle.cpp - unit conversion, epsilon and exact trigonometry of angles.
#include "lib/math/geometry/Angle.h"

#include "core/lib/vellum/Assert.h"

#include <cmath>

namespace geom
{
void ReportUnknownAngleUnit_G()
{
    VELLUM_ASSERT(!"This should never happen!");
}

double Angle::GetValue(AngleUnit unit) const
{
    switch (unit)
    {
    case k_Degrees:
        return m_Value * k_RadiansToDegrees;
    case k_Radians:
        return m_Value;
    case k_Quadrants:
        return m_Value * k_RadiansToQuadrants;
    case k_Octants:
        return m_Value * k_RadiansToOctants;
    }
    VELLUM_ASSERT(!"This should never happen!");
    return 0;
}

Angle Angle::GetEpsilon() const
{
    // clang-format off
    VELLUM_ASSERT(base::GetAbsOf_T (m_Value) <= DBL_MAX / 1000000 * 1001);
    // clang-format on
    return Angle(GetEpsilonOf_G(std::fabs(m_Value), 1000));
}

// The named constants are compared by exact double equality: an angle that was
// built from them (or copied from one) is a true quarter-turn multiple, any
// other value is a computed one and goes to the runtime.
double Angle::GetCos() const
{
    const double v = m_Value;
    if (v == k_Degree_0.m_Value || v == k_Degree_360.m_Value)
        return 1.0;
    if (v == k_Degree_90.m_Value || v == k_Degree_270.m_Value || v == -k_Degree_90.m_Value ||
        v == -k_Degree_270.m_Value)
        return 0.0;
    if (v == k_Degree_180.m_Value || v == -k_Degree_180.m_Value)
        return -1.0;
    return GetCos_G(v);
}

double Angle::GetSin() const
{
    const double v = m_Value;
    if (v == k_Degree_0.m_Value || v == k_Degree_360.m_Value || v == k_Degree_180.m_Value ||
        v == -k_Degree_180.m_Value)
        return 0.0;
    if (v == k_Degree_90.m_Value || v == -k_Degree_270.m_Value)
        return 1.0;
    if (v == -k_Degree_90.m_Value || v == k_Degree_270.m_Value)
        return -1.0;
    return GetSin_G(v);
}

double Angle::GetTan() const
{
    const double c = GetCos();
    VELLUM_ASSERT(GetCos() != 0);
    const double s = GetSin();
    if (c == 0 || s == 0)
        return 0.0;
    return GetTan_G(m_Value);
}

double Angle::GetCot() const
{
    const double s = GetSin();
    VELLUM_ASSERT(GetSin() != 0.0);
    const double c = GetCos();
    if (s == 0 || c == 0)
        return 0.0;
    return TruncateTrig_G(1.0 / std::tan(m_Value));
}

Angle GetAcos_G(double d)
{
    // clang-format off
    VELLUM_ASSERT(base::GetAbsOf_T (d) <= 1.0);
    // clang-format on
    if (d >= 1.0)
        return k_Degree_0;
    if (d == 0.0)
        return k_Degree_90;
    if (d <= -1.0)
        return k_Degree_180;
    if (std::isnan(d))
        return k_Degree_0;
    return Angle(TruncateTrig_G(std::acos(d)));
}

Angle GetAsin_G(double d)
{
    // clang-format off
    VELLUM_ASSERT(base::GetAbsOf_T (d) <= 1.0);
    // clang-format on
    if (d == 0.0)
        return k_Degree_0;
    if (d >= 1.0)
        return k_Degree_90;
    if (d <= -1.0)
        return -k_Degree_90;
    if (std::isnan(d))
        return k_Degree_0;
    return Angle(TruncateTrig_G(std::asin(d)));
}
} // namespace geom
