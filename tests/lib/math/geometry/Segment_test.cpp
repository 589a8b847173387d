// Tests of segments, lines, circumferences, circles and triangles: the helper
// shapes through which arcs answer, checked on hand-computed cases and on
// random data against plain formulas.
#include "core/lib/vellum/Assert.h"
#include "lib/math/geometry/Arc.h"
#include "lib/math/geometry/Circle.h"
#include "lib/math/geometry/Triangle.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

using namespace geom;

namespace
{
template <class F> bool Asserts(F&& f)
{
    const unsigned long before = GetFailedAssertCount_G();
    f();
    return GetFailedAssertCount_G() > before;
}

void ExpectNear(const Point& a, const Point& b, double tolerance)
{
    EXPECT_NEAR(a.m_X.GetValue(), b.m_X.GetValue(), tolerance);
    EXPECT_NEAR(a.m_Y.GetValue(), b.m_Y.GetValue(), tolerance);
}
} // namespace

TEST(Segments, PointOnSegmentWithTolerance)
{
    const Segment s(Point(0.0, 0.0), Point(4.0, 0.0));
    EXPECT_TRUE(s.IntersectsWith(Point(2.0, 0.5), 0.5));
    EXPECT_FALSE(s.IntersectsWith(Point(2.0, 0.6), 0.5));
    // Beyond an end the zone is the band cut by the grown box: its corners
    // count, though they lie farther than the tolerance from the end.
    EXPECT_TRUE(s.IntersectsWith(Point(4.4, 0.4), 0.5));
    EXPECT_FALSE(s.IntersectsWith(Point(4.6, 0.1), 0.5));
    const Segment dot(Point(1.0, 1.0), Point(1.0, 1.0));
    EXPECT_TRUE(dot.IntersectsWith(Point(1.3, 1.4), 0.5));
    EXPECT_FALSE(dot.IntersectsWith(Point(1.4, 1.4), 0.5));
    EXPECT_EQ(Segment(Point(0.0, 0.0), Point(0.0, -7.0)).GetLength().GetValue(), 7.0);
    Point p;
    EXPECT_TRUE(Segment(Point(0.0, 0.0), Point(0.1, 0.1)).IsPoint(0.1, &p));
    EXPECT_EQ(p, Point(0.0, 0.0));
}

TEST(Segments, TouchingCrossingAndParallel)
{
    const Segment a(Point(0.0, 0.0), Point(4.0, 4.0)), b(Point(0.0, 4.0), Point(4.0, 0.0));
    EXPECT_TRUE(a.IntersectsWith(b, 0));
    EXPECT_TRUE(a.IsCrossing(b, 0));
    EXPECT_EQ(a.GetIntersectionPoint(b), Point(2.0, 2.0));
    // A T-junction touches but does not cross properly.
    const Segment t(Point(2.0, 2.0), Point(3.0, 1.0));
    EXPECT_TRUE(a.IntersectsWith(t, 0));
    EXPECT_FALSE(a.IsCrossing(t, 0));
    EXPECT_EQ(a.GetIntersectionPoint(t), Point(2.0, 2.0));
    // Shared ends come back as they are, this segment's start first.
    const Segment c(Point(4.0, 4.0), Point(0.0, 0.0));
    EXPECT_EQ(a.GetIntersectionPoint(c), Point(0.0, 0.0));
    EXPECT_EQ(a.GetIntersectionPoint(Segment(Point(4.0, 4.0), Point(9.0, 0.0))), Point(4.0, 4.0));
    // Collinear overlap: the centre of the common box.
    EXPECT_EQ(a.GetIntersectionPoint(Segment(Point(1.0, 1.0), Point(6.0, 6.0))), Point(2.5, 2.5));
    // Parallel and apart; a near miss within tolerance.
    const Segment d(Point(0.0, 1.0), Point(4.0, 5.0));
    EXPECT_FALSE(a.IntersectsWith(d, 0));
    EXPECT_TRUE(a.IntersectsWith(d, 0.71));
    EXPECT_FALSE(a.IntersectsWith(Segment(Point(5.0, 0.0), Point(9.0, 0.0)), 0.5));
    Point x;
    EXPECT_TRUE(Asserts([&] { x = a.GetIntersectionPoint(Segment(Point(10.0, 0.0), Point(11.0, -3.0))); }));
}

TEST(Segments, RandomCrossingsLieOnBoth)
{
    std::mt19937 rng(11);
    std::uniform_real_distribution<double> coord(-50.0, 50.0);
    int crossings = 0;
    for (int i = 0; i < 5000; ++i)
    {
        const Segment a(Point(coord(rng), coord(rng)), Point(coord(rng), coord(rng)));
        const Segment b(Point(coord(rng), coord(rng)), Point(coord(rng), coord(rng)));
        // Independent: the parameters of the crossing on both carriers.
        const Vector u = a.GetVector(), v = b.GetVector(), w = b.GetStart() - a.GetStart();
        const double den = u.GetVectorProductWith(v).GetValue();
        const double ta = w.GetVectorProductWith(v).GetValue() / den,
                     tb = w.GetVectorProductWith(u).GetValue() / den;
        const bool crosses = ta > 1e-9 && ta < 1 - 1e-9 && tb > 1e-9 && tb < 1 - 1e-9;
        const bool misses = ta < -1e-9 || ta > 1 + 1e-9 || tb < -1e-9 || tb > 1 + 1e-9;
        if (!crosses && !misses)
            continue;
        EXPECT_EQ(a.IntersectsWith(b, 0), crosses) << i;
        EXPECT_EQ(a.IsCrossing(b, 0), crosses) << i;
        EXPECT_EQ(b.IsCrossing(a, 0), crosses) << i;
        if (crosses)
        {
            ++crossings;
            const Point p = a.GetIntersectionPoint(b);
            EXPECT_TRUE(a.IntersectsWith(p, 1e-10)) << i;
            EXPECT_TRUE(b.IntersectsWith(p, 1e-10)) << i;
        }
    }
    EXPECT_GT(crossings, 1000);
}

TEST(Segments, DistancesAndNearestPoints)
{
    const Segment s(Point(0.0, 0.0), Point(4.0, 0.0));
    EXPECT_EQ(s.GetDistanceSquareTo(Point(2.0, 3.0)).GetValue(), 9.0);
    EXPECT_EQ(s.GetDistanceSquareTo(Point(7.0, 4.0)).GetValue(), 25.0);
    EXPECT_EQ(s.GetDistanceSquareTo(Point(-3.0, -4.0)).GetValue(), 25.0);
    EXPECT_EQ(s.GetDistanceTo(Point(2.0, 3.0), k_InfiniteUnit).GetValue(), 3.0);
    EXPECT_EQ(s.GetDistanceTo(Point(2.0, 3.0), 1.0).GetValue(), 1.0);
    EXPECT_EQ(s.GetDistanceTo(Point(2.0, 0.0), 1.0).GetValue(), 0.0);
    EXPECT_EQ(s.GetNearestPoint(Point(1.0, 5.0)), Point(1.0, 0.0));
    EXPECT_EQ(s.GetNearestPoint(Point(-0.2, 1.0)), Point(0.0, 0.0));
    EXPECT_TRUE(Asserts([&] { (void)s.GetNearestPoint(Point(9.0, 0.0)); }));
    std::mt19937 rng(12);
    std::uniform_real_distribution<double> coord(-10.0, 10.0);
    for (int i = 0; i < 1000; ++i)
    {
        const Segment r(Point(coord(rng), coord(rng)), Point(coord(rng), coord(rng)));
        const Point p(coord(rng), coord(rng));
        // Brute force over the segment's points.
        double best = 1e300;
        for (int k = 0; k <= 2000; ++k)
            best =
                std::min(best, p.GetDistanceSquareTo(r.GetStart() + r.GetVector() * (k / 2000.0)).GetValue());
        EXPECT_LE(r.GetDistanceSquareTo(p).GetValue(), best + 1e-12) << i;
        EXPECT_NEAR(std::sqrt(r.GetDistanceSquareTo(p).GetValue()), std::sqrt(best), 0.02) << i;
    }
}

TEST(Segments, OverlapOfNearlyParallelSegments)
{
    const Segment a(Point(0.0, 0.0), Point(10.0, 0.0));
    // Ends pairwise equal after turning the second: the middles.
    const Segment same = a.GetOverlap(Segment(Point(10.0, 0.02), Point(0.0, 0.02)), 0.05);
    EXPECT_EQ(same, Segment(Point(0.0, 0.01), Point(10.0, 0.01)));
    // A partial overlap runs this segment's way between the inner ends.
    const Segment part = a.GetOverlap(Segment(Point(12.0, 0.02), Point(4.0, 0.02)), 0.05);
    ExpectNear(part.GetStart(), Point(4.0, 0.01), 1e-12);
    ExpectNear(part.GetEnd(), Point(10.0, 0.01), 1e-12);
    // Overlaps shorter than the tolerance collapse to a point.
    const Segment touch = a.GetOverlap(Segment(Point(10.01, 0.0), Point(15.0, 0.0)), 0.05);
    EXPECT_TRUE(touch.IsPoint(0, nullptr));
    ExpectNear(touch.GetStart(), Point(10.005, 0.0), 1e-12);
    // A point segment collapses onto the other.
    const Segment dot = a.GetOverlap(Segment(Point(3.0, 0.02), Point(3.0, 0.02)), 0.05);
    EXPECT_EQ(dot, Segment(Point(3.0, 0.01), Point(3.0, 0.01)));
    EXPECT_TRUE(Asserts([&] { (void)a.GetOverlap(Segment(Point(0.0, 0.0), Point(0.0, 5.0)), 0.05); }));
}

TEST(Lines, CrossingsFeetAndBisectors)
{
    const Line x_axis(Point(0.0, 0.0), k_Azimuth_0), vertical(Point(3.0, 5.0), k_Azimuth_90);
    const Result_T<Point> meet = GetIntersection_G(x_axis, vertical);
    ASSERT_TRUE(meet.m_Success);
    EXPECT_EQ(meet.m_Value, Point(3.0, 0.0));
    Result_T<Point> none;
    EXPECT_TRUE(Asserts([&] { none = GetIntersection_G(x_axis, Line(Point(0.0, 1.0), k_Azimuth_180)); }));
    EXPECT_FALSE(none.m_Success);
    EXPECT_TRUE(x_axis.IntersectsWith(Line(Point(5.0, 0.0), k_Azimuth_180), 0));
    EXPECT_EQ(x_axis.GetDistanceTo(Point(7.0, -2.0)).GetValue(), 2.0);
    EXPECT_EQ(x_axis.GetFoot(Point(7.0, -2.0)), Point(7.0, 0.0));
    const Line bisector = Line::GetPerpendicularBisector(Segment(Point(0.0, 0.0), Point(2.0, 2.0)));
    EXPECT_EQ(bisector.GetPoint(), Point(1.0, 1.0));
    EXPECT_EQ(bisector.GetDistanceTo(Point(0.0, 2.0)).GetValue(), 0.0);
}

TEST(Circumferences, NearestPointsAndLineCrossings)
{
    const Circumference c(Point(1.0, 1.0), 2.0);
    EXPECT_EQ(c.GetBBox(), Box(Point(-1.0, -1.0), Point(3.0, 3.0)));
    EXPECT_EQ(c.GetNearestPoint(Point(1.0, 1.0)), Point(3.0, 1.0));
    EXPECT_EQ(c.GetNearestPoint(Point(1.0, 9.0)), Point(1.0, 3.0));
    EXPECT_EQ(c.GetPointAt(k_Azimuth_90), Point(1.0, 3.0));
    EXPECT_EQ(c.GetOffsetPoint(k_Azimuth_180, 1.0), Point(-2.0, 1.0));
    EXPECT_TRUE(c.IsPoint(2.0, nullptr));
    EXPECT_FALSE(c.IsPoint(1.9, nullptr));
    const auto two = c.GetIntersections(Line(Point(0.0, 1.0), k_Azimuth_0), 1e-9);
    ASSERT_TRUE(two.first.m_Success && two.second.m_Success);
    EXPECT_EQ(two.first.m_Value, Point(-1.0, 1.0));
    EXPECT_EQ(two.second.m_Value, Point(3.0, 1.0));
    const auto tangent = c.GetIntersections(Line(Point(0.0, 3.0 + 1e-12), k_Azimuth_0), 1e-6);
    ASSERT_TRUE(tangent.first.m_Success);
    EXPECT_FALSE(tangent.second.m_Success);
    ExpectNear(tangent.first.m_Value, Point(1.0, 3.0), 1e-9);
    EXPECT_FALSE(c.GetIntersections(Line(Point(0.0, 3.1), k_Azimuth_0), 0.05).first.m_Success);
    Circumference negative;
    EXPECT_TRUE(Asserts([&] { negative = Circumference(Point(0.0, 0.0), -1.0); }));
    EXPECT_EQ(negative.GetRadius(), k_Unit_0);
}

TEST(Circumferences, SegmentCrossings)
{
    const Circumference c(Point(0.0, 0.0), 5.0);
    // From inside: one crossing, moved to the first place.
    const auto one = c.GetIntersections(Segment(Point(0.0, 0.0), Point(10.0, 0.0)), 1e-9);
    ASSERT_TRUE(one.first.m_Success);
    EXPECT_FALSE(one.second.m_Success);
    EXPECT_EQ(one.first.m_Value, Point(5.0, 0.0));
    const auto both = c.GetIntersections(Segment(Point(-10.0, 3.0), Point(10.0, 3.0)), 1e-9);
    ASSERT_TRUE(both.first.m_Success && both.second.m_Success);
    ExpectNear(both.first.m_Value, Point(-4.0, 3.0), 1e-12);
    ExpectNear(both.second.m_Value, Point(4.0, 3.0), 1e-12);
    EXPECT_FALSE(c.GetIntersections(Segment(Point(-1.0, 1.0), Point(1.0, 1.0)), 1e-9).first.m_Success);
    // A point segment on the curve, and a point circle on the segment.
    EXPECT_TRUE(c.GetIntersections(Segment(Point(3.0, 4.0), Point(3.0, 4.0)), 1e-9).first.m_Success);
    const auto dot =
        Circumference(Point(1.0, 0.0), 0.0).GetIntersections(Segment(Point(0.0, 0.0), Point(2.0, 0.0)), 0);
    ASSERT_TRUE(dot.first.m_Success);
    EXPECT_EQ(dot.first.m_Value, Point(1.0, 0.0));
}

TEST(Circumferences, CircleCircleCrossings)
{
    const Circumference a(Point(0.0, 0.0), 5.0), b(Point(8.0, 0.0), 5.0);
    const auto x = a.GetIntersections(b, 1e-9);
    ASSERT_TRUE(x.first.m_Success && x.second.m_Success);
    EXPECT_EQ(x.first.m_Value.GetStart(), Point(4.0, 3.0));
    EXPECT_EQ(x.second.m_Value.GetStart(), Point(4.0, -3.0));
    EXPECT_TRUE(x.first.m_Value.IsPoint(0, nullptr));
    // Outer tangency within accuracy: one point, the middle of the two.
    const auto touch = a.GetIntersections(Circumference(Point(10.0 + 1e-10, 0.0), 5.0), 1e-6);
    ASSERT_TRUE(touch.first.m_Success);
    EXPECT_FALSE(touch.second.m_Success);
    ExpectNear(touch.first.m_Value.GetStart(), Point(5.0, 0.0), 1e-9);
    EXPECT_FALSE(a.GetIntersections(Circumference(Point(11.0, 0.0), 5.0), 1e-6).first.m_Success);
    // The common chord may pass through the first centre.
    const auto through =
        Circumference(Point(0.0, 0.0), 3.0).GetIntersections(Circumference(Point(4.0, 0.0), 5.0), 1e-9);
    ASSERT_TRUE(through.first.m_Success && through.second.m_Success);
    EXPECT_EQ(through.first.m_Value.GetStart(), Point(0.0, 3.0));
    EXPECT_EQ(through.second.m_Value.GetStart(), Point(0.0, -3.0));
    EXPECT_FALSE(a.GetIntersections(Circumference(Point(1.0, 0.0), 1.0), 1e-6).first.m_Success);
    // The same circle within accuracy: one full arc on the mean circle.
    const auto same = a.GetIntersections(Circumference(Point(1e-10, 0.0), 5.0), 1e-6);
    ASSERT_TRUE(same.first.m_Success);
    EXPECT_FALSE(same.second.m_Success);
    const Arc full = same.first.m_Value;
    EXPECT_EQ(full.GetStart(), full.GetEnd());
    EXPECT_EQ(full.GetDirection(), k_CCW);
    EXPECT_NEAR(full.GetRadius().GetValue(), 5.0, 1e-12);
    // Random pairs: every crossing lies on both curves.
    std::mt19937 rng(13);
    std::uniform_real_distribution<double> coord(-10.0, 10.0), radius(0.5, 8.0);
    for (int i = 0; i < 2000; ++i)
    {
        const Circumference p(Point(coord(rng), coord(rng)), radius(rng)),
            q(Point(coord(rng), coord(rng)), radius(rng));
        const auto r = p.GetIntersections(q, 1e-9);
        for (const Result_T<Arc>* z : {&r.first, &r.second})
        {
            if (!z->m_Success)
                continue;
            EXPECT_TRUE(p.IntersectsWith(z->m_Value.GetStart(), 1e-8)) << i;
            EXPECT_TRUE(q.IntersectsWith(z->m_Value.GetStart(), 1e-8)) << i;
        }
        const double d = std::sqrt(p.GetCenter().GetDistanceSquareTo(q.GetCenter()).GetValue());
        const double r1 = p.GetRadius().GetValue(), r2 = q.GetRadius().GetValue();
        if (d < r1 + r2 - 1e-6 && d > std::fabs(r1 - r2) + 1e-6)
        {
            EXPECT_TRUE(r.second.m_Success) << i;
        }
        if (d > r1 + r2 + 1e-6 || d < std::fabs(r1 - r2) - 1e-6)
        {
            EXPECT_FALSE(r.first.m_Success) << i;
        }
    }
}

TEST(Circles, AreaAndContainment)
{
    const Circle c(Point(0.0, 0.0), 2.0);
    EXPECT_DOUBLE_EQ(c.GetArea().GetValue(), 4 * M_PI);
    EXPECT_TRUE(c.Contains(Point(2.0, 0.0), 0));
    EXPECT_FALSE(c.Contains(Point(1.5, 1.5), 0));
    EXPECT_TRUE(c.Contains(Point(1.5, 1.5), 0.2));
    EXPECT_TRUE(c.Contains(Box(Point(-1.0, -1.0), Point(1.0, 1.0)), 0));
    EXPECT_FALSE(c.Contains(Box(Point(-1.5, -1.5), Point(1.5, 1.5)), 0));
    EXPECT_TRUE(c.Contains(Circle(Point(1.0, 0.0), 1.0), 0));
    EXPECT_FALSE(c.Contains(Circle(Point(1.0, 0.0), 1.1), 0));
    // An arc with both ends inside whose bulge leaves the disc.
    const Arc bulge(Point(1.0, 0.0), Point(-1.0, 0.0), -3.0);
    EXPECT_FALSE(c.Contains(bulge, 0));
    EXPECT_TRUE(c.Contains(Arc(Point(1.0, 0.0), Point(-1.0, 0.0), -0.5), 0));
    EXPECT_TRUE(c.Contains(Arc(Point(1.0, 0.0), Point(-1.0, 0.0), 0.0), 0));
    EXPECT_TRUE(Circle(Point(3.0, 3.0), 0.0).IsPoint(0, nullptr));
    Circle bad;
    EXPECT_TRUE(Asserts([&] { bad = Circle(Point(0.0, 0.0), -2.0); }));
    EXPECT_EQ(bad.GetRadius(), k_Unit_0);
}

TEST(Triangles, AreaCircleAndAngles)
{
    const Triangle t(Point(0.0, 0.0), Point(4.0, 0.0), Point(0.0, 3.0));
    EXPECT_EQ(t.GetSignedArea().GetValue(), 6.0);
    EXPECT_EQ(Triangle(Point(0.0, 0.0), Point(0.0, 3.0), Point(4.0, 0.0)).GetSignedArea().GetValue(), -6.0);
    EXPECT_EQ(t.GetOrientation(), k_CCW);
    const Circumference circle = t.GetCircumscribedCircle();
    ExpectNear(circle.GetCenter(), Point(2.0, 1.5), 1e-15);
    EXPECT_DOUBLE_EQ(circle.GetRadius().GetValue(), 2.5);
    // Collinear: the circle on the longest side.
    const Circumference flat =
        Triangle(Point(0.0, 0.0), Point(1.0, 0.0), Point(6.0, 0.0)).GetCircumscribedCircle();
    EXPECT_EQ(flat.GetCenter(), Point(3.0, 0.0));
    EXPECT_EQ(flat.GetRadius().GetValue(), 3.0);
    EXPECT_NEAR(Triangle::GetAngle(3.0, 4.0, 5.0).GetValue(k_Degrees), 90.0, 1e-12);
    EXPECT_NEAR(Triangle::GetAngle(1.0, 1.0, 1.0).GetValue(k_Degrees), 60.0, 1e-12);
    EXPECT_TRUE(Asserts([] { (void)Triangle::GetAngle(1.0, 1.0, 3.0); }));
    EXPECT_TRUE(Asserts([] { (void)Triangle::GetAngle(-1.0, 1.0, 1.0); }));
}
