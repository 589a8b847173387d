// Tests of the process-wide trigonometric truncation. The variable is read once
// per process, so each case runs in a fresh copy of the test program.
#include "lib/math/geometry/Vector.h"

#include <gtest/gtest.h>

#include <cstdlib>

using namespace geom;

namespace
{
// Exits with 0 when the truncation at three decimals holds.
void CheckThreeDecimals()
{
    const bool ok = GetTrigTruncationScale_G() == 1000.0 && Angle(1.0).GetCos() == 0.54 &&
                    Angle(1.0).GetSin() == 0.841 && Angle(-1.0).GetSin() == -0.841 &&
                    k_Degree_90.GetCos() == 0.0 && k_Degree_90.GetSin() == 1.0 &&
                    Vector(1.0, 1.0).GetAzimuth().GetValue() == 0.785 && GetAcos_G(0.5).GetValue() == 1.047;
    std::exit(ok ? 0 : 1);
}

void CheckUnchanged()
{
    std::exit(GetTrigTruncationScale_G() == 0.0 && Angle(1.0).GetCos() == std::cos(1.0) ? 0 : 1);
}
} // namespace

TEST(TrigTruncationDeathTest, ThreeDecimals)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    setenv("TARVEX_STUDIO_GEOMETRY_TRIG_TRUNC", "3", 1);
    EXPECT_EXIT(CheckThreeDecimals(), testing::ExitedWithCode(0), "");
    unsetenv("TARVEX_STUDIO_GEOMETRY_TRIG_TRUNC");
}

TEST(TrigTruncationDeathTest, OutOfRangeOrNonNumericLeavesResultsUnchanged)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    for (const char* value : {"16", "-1", "abc", ""})
    {
        setenv("TARVEX_STUDIO_GEOMETRY_TRIG_TRUNC", value, 1);
        EXPECT_EXIT(CheckUnchanged(), testing::ExitedWithCode(0), "") << "value '" << value << "'";
    }
    unsetenv("TARVEX_STUDIO_GEOMETRY_TRIG_TRUNC");
}
