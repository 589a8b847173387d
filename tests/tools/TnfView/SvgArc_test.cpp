// SvgArc_test.cpp - the sagitta of an edge against the arc a browser draws
// from the SVG parameters.
//
// The oracle follows the SVG rules for an elliptical arc (end points, radius
// and the two flags give a centre and an angle range) and takes the arc's
// middle from there. The expected middle comes from the definition of the
// sagitta: chord middle plus the chord's left normal times the sagitta, with
// y up, then turned to the page's y down.
#include "tools/TnfView/SvgArc.h"

#include <gtest/gtest.h>

#include <cmath>

namespace
{
constexpr double k_Pi = 3.14159265358979323846;

struct Point
{
    double x, y;
};

// The middle of the SVG arc from p1 to p2 (page coordinates).
Point SvgArcMiddle(Point p1, Point p2, double r, bool large, bool sweep)
{
    const double x1 = (p1.x - p2.x) / 2, y1 = (p1.y - p2.y) / 2;
    const double num = r * r * r * r - r * r * y1 * y1 - r * r * x1 * x1;
    const double den = r * r * y1 * y1 + r * r * x1 * x1;
    const double coef = (large != sweep ? 1.0 : -1.0) * std::sqrt(std::max(0.0, num / den));
    const double cxp = coef * y1, cyp = -coef * x1;
    const Point c{cxp + (p1.x + p2.x) / 2, cyp + (p1.y + p2.y) / 2};
    const double a1 = std::atan2((y1 - cyp) / r, (x1 - cxp) / r);
    const double a2 = std::atan2((-y1 - cyp) / r, (-x1 - cxp) / r);
    double delta = std::fmod(a2 - a1, 2 * k_Pi);
    if (!sweep && delta > 0)
        delta -= 2 * k_Pi;
    if (sweep && delta < 0)
        delta += 2 * k_Pi;
    const double mid = a1 + delta / 2;
    return {c.x + r * std::cos(mid), c.y + r * std::sin(mid)};
}

TEST(SvgArc, MiddleOfTheDrawnArcIsWhereTheSagittaPutsIt)
{
    const Point start{3.0, -2.0};
    // Chords pointing into each quadrant, and along the axes.
    for (double degrees : {0.0, 30.0, 90.0, 120.0, 180.0, 210.0, 270.0, 300.0})
        for (double ratio : {0.1, 0.45, 0.5, 0.8, 2.5}) // sagitta over chord: small, half circle, large
            for (double sign : {1.0, -1.0})
            {
                const double chord = 4.0;
                const double a = degrees * k_Pi / 180.0;
                const Point end{start.x + chord * std::cos(a), start.y + chord * std::sin(a)};
                const double sagitta = sign * ratio * chord;
                // Left normal of the chord, y up.
                const Point normal{-std::sin(a), std::cos(a)};
                const Point expected{(start.x + end.x) / 2 + normal.x * sagitta,
                                     (start.y + end.y) / 2 + normal.y * sagitta};

                const tnfview::SvgArc arc =
                    tnfview::SagittaToSvgArc_G(start.x, start.y, end.x, end.y, sagitta);
                ASSERT_TRUE(arc.m_IsArc);
                const Point mid = SvgArcMiddle({start.x, -start.y}, {end.x, -end.y}, arc.m_Radius,
                                               arc.m_LargeArc, arc.m_Sweep);
                SCOPED_TRACE(::testing::Message() << degrees << " degrees, sagitta " << sagitta);
                // The oracle's centre is ill-conditioned at a half circle,
                // where it loses half its digits; a wrong flag misses by a
                // chord's length.
                EXPECT_NEAR(mid.x, expected.x, 1e-6);
                EXPECT_NEAR(mid.y, -expected.y, 1e-6);
            }
}

TEST(SvgArc, ClockwiseOverTheTopOfAHalfCircle)
{
    // From (-1, 0) to (1, 0) with sagitta +1: clockwise with y up, through
    // (0, 1); on the page through (0, -1), which SVG reaches with sweep 1.
    const tnfview::SvgArc arc = tnfview::SagittaToSvgArc_G(-1, 0, 1, 0, 1.0);
    EXPECT_DOUBLE_EQ(arc.m_Radius, 1.0);
    EXPECT_TRUE(arc.m_Sweep);
    EXPECT_FALSE(arc.m_LargeArc);
    const tnfview::SvgArc big = tnfview::SagittaToSvgArc_G(-1, 0, 1, 0, -1.5);
    EXPECT_TRUE(big.m_LargeArc);
    EXPECT_FALSE(big.m_Sweep);
    EXPECT_NEAR(big.m_Radius, (1.0 + 1.5 * 1.5) / 3.0, 1e-12);
}

TEST(SvgArc, StraightAndDegenerateEdgesAreLines)
{
    EXPECT_FALSE(tnfview::SagittaToSvgArc_G(0, 0, 1, 1, 0.0).m_IsArc);
    EXPECT_FALSE(tnfview::SagittaToSvgArc_G(2, 2, 2, 2, 0.5).m_IsArc);
    EXPECT_FALSE(tnfview::SagittaToSvgArc_G(0, 0, 1, 0, NAN).m_IsArc);
}
} // namespace
