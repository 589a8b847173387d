// Tests of corner rounding on closed outlines: areas by the shoelace formula
// plus circular segments, and the tangency of the corner arcs.
#include "lib/math/geometry/CornerRounding.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace geom;

namespace
{
std::vector<Arc> Outline(const std::vector<Point>& pts)
{
    std::vector<Arc> arcs;
    for (size_t i = 0; i < pts.size(); ++i)
        arcs.push_back(Arc(pts[i], pts[(i + 1) % pts.size()], 0.0));
    return arcs;
}

// Shoelace over the vertices, plus for each curved edge the circular segment
// r^2 / 2 (theta - sin theta) on the outer side of a counter-clockwise edge.
double ContourArea(const std::vector<Arc>& arcs)
{
    double area = 0;
    for (const Arc& a : arcs)
    {
        area += 0.5 * (a.GetStart().m_X.GetValue() * a.GetEnd().m_Y.GetValue() -
                       a.GetEnd().m_X.GetValue() * a.GetStart().m_Y.GetValue());
        if (a.GetHeight() != k_Unit_0)
        {
            const double r = a.GetRadius().GetValue(), theta = a.GetAngle().GetValue();
            area += 0.5 * r * r * (theta - std::sin(theta));
        }
    }
    return area;
}

bool IsClosedSequence(const std::vector<Arc>& arcs)
{
    for (size_t i = 0; i < arcs.size(); ++i)
        if (arcs[i].GetEnd() != arcs[(i + 1) % arcs.size()].GetStart())
            return false;
    return true;
}
} // namespace

TEST(CornerRounding, RoundedRectangle)
{
    const std::vector<Arc> box =
        Outline({Point(0.0, 0.0), Point(10.0, 0.0), Point(10.0, 6.0), Point(0.0, 6.0)});
    const std::vector<Arc> rounded = RoundCorners_G(box, 1.0, 1e-6, true);
    ASSERT_EQ(rounded.size(), 8u);
    EXPECT_TRUE(IsClosedSequence(rounded));
    EXPECT_NEAR(ContourArea(rounded), 60.0 - (4.0 - M_PI), 1e-9);
    for (size_t i = 0; i < rounded.size(); ++i)
    {
        const Arc& a = rounded[i];
        if (a.GetHeight() == k_Unit_0)
            continue;
        EXPECT_NEAR(a.GetRadius().GetValue(), 1.0, 1e-12);
        EXPECT_EQ(a.GetDirection(), k_CCW);
        // Tangent to the straight edges on both sides.
        const Arc& before = rounded[(i + 7) % 8];
        const Arc& after = rounded[(i + 1) % 8];
        EXPECT_NEAR(a.GetStartTangent().GetSmallestAngleTo(before.GetEndTangent()).GetValue(), 0.0, 1e-12);
        EXPECT_NEAR(a.GetEndTangent().GetSmallestAngleTo(after.GetStartTangent()).GetValue(), 0.0, 1e-12);
    }
}

TEST(CornerRounding, SquareRoundedByHalfItsWidthIsACircle)
{
    const std::vector<Arc> square =
        Outline({Point(-5.0, -5.0), Point(5.0, -5.0), Point(5.0, 5.0), Point(-5.0, 5.0)});
    const std::vector<Arc> circle = RoundCorners_G(square, 5.0, 2.5, true);
    ASSERT_EQ(circle.size(), 4u);
    EXPECT_TRUE(IsClosedSequence(circle));
    for (const Arc& a : circle)
    {
        EXPECT_NEAR(a.GetRadius().GetValue(), 5.0, 1e-9);
        EXPECT_TRUE(a.GetCenter().IsEqualTo(Point(0.0, 0.0), 1e-9));
    }
    EXPECT_NEAR(ContourArea(circle), 25 * M_PI, 1e-9);
    // A radius beyond what the edges allow shrinks to fit.
    const std::vector<Arc> capped = RoundCorners_G(square, 50.0, 1e-6, true);
    ASSERT_EQ(capped.size(), 4u);
    EXPECT_NEAR(ContourArea(capped), 25 * M_PI, 1e-9);
}

TEST(CornerRounding, OpenChainsCurvedEdgesAndCollinearJoints)
{
    // Open: only the inner corner is rounded, the chain keeps its ends.
    const std::vector<Arc> open = {Arc(Point(0.0, 0.0), Point(4.0, 0.0), 0.0),
                                   Arc(Point(4.0, 0.0), Point(4.0, 4.0), 0.0)};
    const std::vector<Arc> r = RoundCorners_G(open, 1.0, 1e-6, false);
    ASSERT_EQ(r.size(), 3u);
    EXPECT_EQ(r.front().GetStart(), Point(0.0, 0.0));
    EXPECT_EQ(r.back().GetEnd(), Point(4.0, 4.0));
    EXPECT_EQ(r[1].GetStart(), Point(3.0, 0.0));
    EXPECT_EQ(r[1].GetEnd(), Point(4.0, 1.0));
    // A collinear joint and a corner next to a curved edge stay.
    const std::vector<Arc> mixed = {Arc(Point(0.0, 0.0), Point(2.0, 0.0), 0.0),
                                    Arc(Point(2.0, 0.0), Point(4.0, 0.0), 0.0),
                                    Arc(Point(4.0, 0.0), Point(0.0, 0.0), -2.0)};
    EXPECT_EQ(RoundCorners_G(mixed, 1.0, 1e-6, true), mixed);
    EXPECT_EQ(RoundCorners_G(mixed, 0.0, 1e-6, true), mixed);
}

TEST(CornerRounding, ReflexCornersAddWhatConvexOnesRemove)
{
    // An L of area 12: five left turns and one right turn at (2, 2). Each
    // rounded corner moves the area by r^2 (1 - pi / 4), outwards at the
    // reflex corner.
    const std::vector<Arc> ell = Outline({Point(0.0, 0.0), Point(4.0, 0.0), Point(4.0, 2.0), Point(2.0, 2.0),
                                          Point(2.0, 4.0), Point(0.0, 4.0)});
    const std::vector<Arc> rounded = RoundCorners_G(ell, 0.5, 1e-6, true);
    ASSERT_EQ(rounded.size(), 12u);
    EXPECT_TRUE(IsClosedSequence(rounded));
    EXPECT_NEAR(ContourArea(rounded), 12.0 - 4 * 0.25 * (1 - M_PI / 4), 1e-12);
    int clockwise = 0;
    for (const Arc& a : rounded)
        clockwise += a.GetDirection() == k_CW;
    EXPECT_EQ(clockwise, 1);
}
