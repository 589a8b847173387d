// Unit.cpp - epsilon and grid rounding of lengths.
#include "lib/math/geometry/Unit.h"

#include "core/lib/vellum/Assert.h"

#include <cmath>

namespace geom
{
Unit Unit::GetEpsilon() const
{
    // clang-format off
    VELLUM_ASSERT(base::GetAbsOf_T (*this) <= DBL_MAX / 1000000 * 1001);
    // clang-format on
    return Unit(GetEpsilonOf_G(std::fabs(m_Value), 1000));
}

Unit Unit::GetRounded(Unit c) const
{
    VELLUM_ASSERT(c >= k_NullUnit);
    if (c.m_Value <= 0)
        return *this;
    return Unit(base::RoundDivide_T(m_Value, c.m_Value) * c.m_Value);
}
} // namespace geom
