// Area.cpp - epsilon and square root of areas.
#include "lib/math/geometry/Area.h"

#include "core/lib/vellum/Assert.h"

#include <cmath>

namespace geom
{
Area Area::GetEpsilon() const
{
    VELLUM_ASSERT(GetAbs() <= k_InfiniteArea);
    return Area(GetEpsilonOf_G(std::fabs(m_Value), 1000));
}

Unit Area::GetSqrt() const
{
    VELLUM_ASSERT(m_Value >= 0);
    if (!(m_Value > 0))
        return k_Unit_0;
    // Unit squares and the square of 2 come up constantly (unit circles, half
    // chords of diameters); answering them exactly keeps such shapes exact.
    if (m_Value == 1.0)
        return Unit(1.0);
    if (m_Value == 4.0)
        return Unit(2.0);
    return Unit(std::sqrt(m_Value));
}
} // namespace geom
