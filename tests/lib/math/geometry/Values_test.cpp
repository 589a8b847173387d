// Tests of the value types: lengths, areas, angles, azimuths, points, vectors,
// ranges and boxes, with the exactness the contour code depends on.
#include "core/lib/vellum/Assert.h"
#include "lib/math/geometry/Box.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace geom;

namespace
{
// Runs a statement and tells whether it made an assertion fail.
template <class F> bool Asserts(F&& f)
{
    const unsigned long before = GetFailedAssertCount_G();
    f();
    return GetFailedAssertCount_G() > before;
}
} // namespace

TEST(Values, EpsilonIsAThousandUlpsAndNeverZero)
{
    EXPECT_EQ(k_Unit_0.GetEpsilon().GetValue(), 2.2250738585072014e-305);
    EXPECT_EQ(Unit(1.0).GetEpsilon().GetValue(), 1000 * DBL_EPSILON);
    EXPECT_EQ(Unit(-8.0).GetEpsilon().GetValue(), 8000 * DBL_EPSILON);
    EXPECT_EQ(Area(2.0).GetEpsilon().GetValue(), 2000 * DBL_EPSILON);
    EXPECT_EQ(Angle(0.5).GetEpsilon().GetValue(), 500 * DBL_EPSILON);
    // Azimuths have no thousandfold margin.
    EXPECT_EQ(Azimuth(1.0).GetEpsilon().GetValue(), DBL_EPSILON);
    EXPECT_DOUBLE_EQ(k_InfiniteUnit.GetValue(), 1.797693134862316e+302);
    EXPECT_EQ(k_InfiniteArea.GetValue(), k_InfiniteUnit.GetValue());
    EXPECT_TRUE(Asserts([] { (void)Unit(1e306).GetEpsilon(); }));
}
