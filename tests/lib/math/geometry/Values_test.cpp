// Tests of the value types: lengths, areas, angles, azimuths, points, vectors,
// ranges and boxes, with the exactness and the fallbacks the contour code
// depends on.
#include "core/lib/vellum/Assert.h"
#include "lib/math/geometry/Box.h"
#include "lib/math/geometry/GeomStl.h"
#include "lib/math/geometry/Segment.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

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
    EXPECT_FALSE(Asserts([] { (void)Unit(1.7e305).GetEpsilon(); }));
    EXPECT_TRUE(Asserts([] { (void)Area(1e303).GetEpsilon(); }));
}

TEST(Values, AreaArithmeticAndExactRoots)
{
    const Area a = Unit(3.0) * Unit(4.0);
    EXPECT_EQ(a.GetValue(), 12.0);
    EXPECT_EQ((a / Unit(4.0)).GetValue(), 3.0);
    EXPECT_EQ(a / Area(6.0), 2.0);
    EXPECT_EQ(Area(1.0).GetSqrt().GetValue(), 1.0);
    EXPECT_EQ(Area(4.0).GetSqrt().GetValue(), 2.0);
    EXPECT_DOUBLE_EQ(Area(2.0).GetSqrt().GetValue(), std::sqrt(2.0));
    Unit root;
    EXPECT_TRUE(Asserts([&] { root = Area(-1.0).GetSqrt(); }));
    EXPECT_EQ(root.GetValue(), 0.0);
    EXPECT_EQ(Unit(2.4).GetRounded(0.5).GetValue(), 2.5);
    EXPECT_EQ(Unit(-2.4).GetRounded(0.5).GetValue(), -2.5);
    EXPECT_EQ(Unit(2.4).GetRounded(0.0).GetValue(), 2.4);
}

TEST(Values, NanComparesFalseForGreaterAndTrueForLessEqual)
{
    const Unit nan(std::nan(""));
    EXPECT_FALSE(nan > Unit(0.0));
    EXPECT_TRUE(nan <= Unit(0.0));
    EXPECT_FALSE(Angle(std::nan("")) > k_Angle_0);
    EXPECT_TRUE(Area(std::nan("")) <= k_Area_0);
}

TEST(Angles, UnitsAndUnknownSelector)
{
    EXPECT_DOUBLE_EQ(Angle(90.0, k_Degrees).GetValue(), M_PI / 2);
    EXPECT_DOUBLE_EQ(Angle(1.0, k_Quadrants).GetValue(k_Degrees), 90.0);
    EXPECT_DOUBLE_EQ(Angle(1.0, k_Octants).GetValue(k_Degrees), 45.0);
    EXPECT_DOUBLE_EQ(k_Degree_180.GetValue(k_Octants), 4.0);
    EXPECT_DOUBLE_EQ(k_Degree_180.GetValue(k_Quadrants), 2.0);
    double value = 1.0;
    EXPECT_TRUE(Asserts([&] { value = k_Degree_90.GetValue(static_cast<AngleUnit>(7)); }));
    EXPECT_EQ(value, 0.0);
}

TEST(Angles, ExactTrigonometryAtNamedMultiples)
{
    EXPECT_EQ(k_Degree_0.GetCos(), 1.0);
    EXPECT_EQ(k_Degree_360.GetCos(), 1.0);
    EXPECT_EQ(k_Degree_90.GetCos(), 0.0);
    EXPECT_EQ((-k_Degree_90).GetCos(), 0.0);
    EXPECT_EQ(k_Degree_270.GetCos(), 0.0);
    EXPECT_EQ((-k_Degree_270).GetCos(), 0.0);
    EXPECT_EQ(k_Degree_180.GetCos(), -1.0);
    EXPECT_EQ((-k_Degree_180).GetCos(), -1.0);
    EXPECT_EQ(k_Degree_360.GetSin(), 0.0);
    EXPECT_EQ(k_Degree_180.GetSin(), 0.0);
    EXPECT_EQ(k_Degree_90.GetSin(), 1.0);
    EXPECT_EQ((-k_Degree_270).GetSin(), 1.0);
    EXPECT_EQ((-k_Degree_90).GetSin(), -1.0);
    EXPECT_EQ(k_Degree_270.GetSin(), -1.0);
    // The runtime alone does not give these bits.
    EXPECT_NE(std::cos(k_Degree_90.GetValue()), 0.0);
    EXPECT_NEAR(k_Degree_60.GetCos(), 0.5, 1e-15);
    EXPECT_EQ(k_Degree_180.GetTan(), 0.0);
    EXPECT_EQ(k_Degree_90.GetCot(), 0.0);
    EXPECT_NEAR(k_Degree_45.GetTan(), 1.0, 1e-15);
    double tan = 5.0;
    EXPECT_TRUE(Asserts([&] { tan = k_Degree_90.GetTan(); }));
    EXPECT_EQ(tan, 0.0);
    EXPECT_TRUE(Asserts([] { (void)k_Degree_0.GetCot(); }));
}

TEST(Angles, InverseFunctionsExactAtTheirNamedValues)
{
    EXPECT_EQ(GetAcos_G(1.0), k_Degree_0);
    EXPECT_EQ(GetAcos_G(0.0), k_Degree_90);
    EXPECT_EQ(GetAcos_G(-1.0), k_Degree_180);
    EXPECT_EQ(GetAsin_G(1.0), k_Degree_90);
    EXPECT_EQ(GetAsin_G(-1.0), -k_Degree_90);
    EXPECT_NEAR(GetAcos_G(0.5).GetValue(k_Degrees), 60.0, 1e-12);
    Angle a;
    EXPECT_TRUE(Asserts([&] { a = GetAcos_G(1.5); }));
    EXPECT_EQ(a, k_Degree_0);
}

TEST(Azimuths, NormalisedOnConstruction)
{
    EXPECT_DOUBLE_EQ(Azimuth(-90.0, k_Degrees).GetValue(), 3 * M_PI / 2);
    EXPECT_EQ(Azimuth(0.0, k_Degrees).GetValue(), 0.0);
    EXPECT_NEAR(Azimuth(725.0, k_Degrees).GetValue(k_Degrees), 5.0, 1e-12);
    EXPECT_NEAR(Azimuth(-725.0, k_Degrees).GetValue(k_Degrees), 355.0, 1e-12);
    // A remainder just below zero must not become a whole turn.
    const Azimuth tiny(-1e-300);
    EXPECT_GE(tiny.GetValue(), 0.0);
    EXPECT_LT(tiny.GetValue(), 2 * M_PI);
    EXPECT_EQ(k_Azimuth_270.GetSin(), -1.0);
    EXPECT_EQ(k_Azimuth_180.GetCos(), -1.0);
    EXPECT_EQ(k_Azimuth_90.GetOpposite().GetValue(), k_Azimuth_270.GetValue());
    EXPECT_LT(k_Azimuth_270.GetOpposite().GetValue(), 2 * M_PI);
}

TEST(Azimuths, AnglesBetweenDirections)
{
    const Azimuth a(30.0, k_Degrees), b(100.0, k_Degrees);
    EXPECT_NEAR(a.GetAngleTo(b, k_CCW).GetValue(k_Degrees), 70.0, 1e-12);
    EXPECT_NEAR(a.GetAngleTo(b, k_CW).GetValue(k_Degrees), -290.0, 1e-12);
    EXPECT_EQ(a.GetAngleTo(a, k_CW), k_Angle_0);
    EXPECT_NEAR(b.GetSmallestAngleTo(a).GetValue(k_Degrees), 70.0, 1e-12);
    EXPECT_NEAR(b.GetSmallestSignedAngleTo(a).GetValue(k_Degrees), -70.0, 1e-12);
    EXPECT_NEAR(a.GetSmallestSignedAngleTo(b).GetValue(k_Degrees), 70.0, 1e-12);
    // A tie at half a turn goes clockwise.
    EXPECT_DOUBLE_EQ(k_Azimuth_0.GetSmallestSignedAngleTo(k_Azimuth_180).GetValue(), -M_PI);
    EXPECT_TRUE(Asserts([&] { (void)a.GetAngleTo(b, k_NoDirection); }));
}

TEST(Azimuths, BetweenAndInterpolation)
{
    const Azimuth a(350.0, k_Degrees), b(20.0, k_Degrees), inside(5.0, k_Degrees), outside(180.0, k_Degrees);
    EXPECT_TRUE(inside.IsBetween(a, b, k_CCW));
    EXPECT_FALSE(outside.IsBetween(a, b, k_CCW));
    EXPECT_FALSE(inside.IsBetween(a, b, k_CW));
    EXPECT_TRUE(outside.IsBetween(a, b, k_CW));
    EXPECT_TRUE(a.IsBetween(a, b, k_CW));
    // Along the lesser turn through 0; rate 1 keeps the receiver.
    EXPECT_NEAR(a.GetInterpolated(b, 0.5).GetValue(k_Degrees), 5.0, 1e-12);
    EXPECT_NEAR(a.GetInterpolated(b, 1.0).GetValue(k_Degrees), 350.0, 1e-12);
    EXPECT_NEAR(a.GetInterpolated(b, 0.0).GetValue(k_Degrees), 20.0, 1e-12);
    EXPECT_NEAR(b.GetInterpolated(a, 0.25).GetValue(k_Degrees), 357.5, 1e-12);
}

TEST(Points, SquareToleranceAndDistanceCap)
{
    const Point p(0.0, 0.0), q(1.0, 1.0);
    EXPECT_TRUE(p.IsEqualTo(q, 1.0));
    EXPECT_FALSE(p.IsEqualTo(Point(1.0, 1.0000001), 1.0));
    EXPECT_EQ(p.GetDistanceSquareTo(Point(3.0, 4.0)).GetValue(), 25.0);
    EXPECT_EQ(p.GetDistanceTo(Point(3.0, 4.0), k_InfiniteUnit).GetValue(), 5.0);
    EXPECT_EQ(p.GetDistanceTo(Point(3.0, 4.0), 2.0).GetValue(), 2.0);
    EXPECT_TRUE(Asserts([&] { (void)p.GetDistanceTo(q, -1.0); }));
    EXPECT_EQ(GetMiddle_G(Point(0.0, 0.0), Point(2.0, 0.0), Point(0.0, 2.0), Point(2.0, 2.0)),
              Point(1.0, 1.0));
    EXPECT_NEAR(GetMiddle_G(Point(0.0, 0.0), Point(3.0, 0.0), Point(0.0, 3.0)).m_X.GetValue(), 1.0, 1e-15);
    EXPECT_EQ(Point(1.26, -1.24).GetRounded(0.5), Point(1.5, -1.0));
    EXPECT_EQ(GetOrientation_G(p, Point(1.0, 0.0), Point(1.0, 1.0)), k_CCW);
    EXPECT_EQ(GetOrientation_G(p, Point(1.0, 0.0), Point(1.0, -1.0)), k_CW);
    EXPECT_EQ(GetOrientation_G(p, Point(1.0, 1.0), Point(2.0, 2.0)), k_NoDirection);
}

TEST(Vectors, AxisParallelResultsAreExact)
{
    EXPECT_EQ(Vector(0.0, -3.0).GetLength().GetValue(), 3.0);
    EXPECT_EQ(Vector(3.0, 4.0).GetLength().GetValue(), 5.0);
    EXPECT_EQ(Vector(0.0, -3.0).GetResized(2.0), Vector(0.0, -2.0));
    EXPECT_EQ(Vector(-3.0, 0.0).GetResized(2.0), Vector(-2.0, 0.0));
    EXPECT_EQ(Vector(1.0, 0.0).GetPerpendicular(2.0), Vector(0.0, 2.0));
    EXPECT_EQ(Vector(5.0, 0.0).GetAzimuth(), k_Azimuth_0);
    EXPECT_EQ(Vector(0.0, 5.0).GetAzimuth(), k_Azimuth_90);
    EXPECT_EQ(Vector(-5.0, 0.0).GetAzimuth(), k_Azimuth_180);
    EXPECT_EQ(Vector(0.0, -5.0).GetAzimuth(), k_Azimuth_270);
    EXPECT_EQ(Vector(3.0, 4.0).GetRotated(k_Degree_90), Vector(-4.0, 3.0));
    EXPECT_EQ(Vector(3.0, 4.0).GetRotatedBack(k_Degree_90), Vector(4.0, -3.0));
    EXPECT_NEAR(Vector(1.0, 1.0).GetAzimuth().GetValue(k_Degrees), 45.0, 1e-12);
}

TEST(Vectors, DefinedFallbacksBehindAssertions)
{
    Vector v(1.0, 1.0);
    EXPECT_TRUE(Asserts([&] { v = k_NullVector.GetResized(3.0); }));
    EXPECT_EQ(v, k_NullVector);
    Azimuth a(1.0);
    EXPECT_TRUE(Asserts([&] { a = k_NullVector.GetAzimuth(); }));
    EXPECT_EQ(a, k_Azimuth_0);
    EXPECT_TRUE(Asserts([&] { v = Vector(1.0, 2.0) / 0.0; }));
    EXPECT_EQ(v, k_NullVector);
}

TEST(Vectors, Quadrants)
{
    EXPECT_EQ(Vector(1.0, 0.0).GetQuadrant(), 1);
    EXPECT_EQ(Vector(0.0, 1.0).GetQuadrant(), 2);
    EXPECT_EQ(Vector(-1.0, 0.0).GetQuadrant(), 3);
    EXPECT_EQ(Vector(0.0, -1.0).GetQuadrant(), 4);
    EXPECT_EQ(k_NullVector.GetQuadrant(), 1);
    EXPECT_EQ(Vector(1.0, 1.0).GetQuadrant(0.5), 1);
    EXPECT_EQ(Vector(-1.0, 1.0).GetQuadrant(0.5), 2);
    EXPECT_EQ(Vector(-1.0, -1.0).GetQuadrant(0.5), 3);
    EXPECT_EQ(Vector(1.0, -1.0).GetQuadrant(0.5), 4);
    EXPECT_EQ(Vector(1.0, 0.4).GetQuadrant(0.5), -1);
    // Only a negative tolerance lets an axis vector reach the sign table.
    int q = 0;
    EXPECT_TRUE(Asserts([&] { q = Vector(0.0, 1.0).GetQuadrant(-1.0); }));
    EXPECT_EQ(q, -1);
}

TEST(Vectors, Parallelism)
{
    const Vector a(10.0, 0.0), b(10.0, 0.1);
    EXPECT_TRUE(a.IsParallelTo(Vector(-3.0, 0.0), k_Degree_0));
    EXPECT_FALSE(a.IsParallelTo(b, k_Degree_0));
    EXPECT_TRUE(a.IsParallelTo(b, Angle(0.6, k_Degrees)));
    EXPECT_FALSE(a.IsParallelTo(b, Angle(0.5, k_Degrees)));
    EXPECT_TRUE(a.IsParallelTo(Vector(0.0, 1.0), k_Degree_90));
    // Length rule: the allowed angle is 2 * tolerance / |receiver|.
    EXPECT_TRUE(a.IsParallelTo(b, Unit(0.05)));
    EXPECT_FALSE(a.IsParallelTo(b, Unit(0.049)));
    // The argument's length plays no part: the asymmetry stays.
    EXPECT_FALSE(b.IsParallelTo(Vector(1.0, 0.0), Unit(0.049)));
    EXPECT_TRUE(Vector(1.0, 0.0).IsParallelTo(b, Unit(0.005)));
    EXPECT_TRUE(Vector(0.01, 0.01).IsParallelTo(Vector(0.0, 1.0), Unit(0.02)));
    EXPECT_TRUE(a.IsSameDirection(b));
    EXPECT_FALSE(a.IsSameDirection(Vector(0.0, 1.0)));
}

TEST(Ranges, EmptinessHullAndMapping)
{
    const Range_T<Unit> empty, r(1.0, 3.0), single(2.0, 2.0);
    EXPECT_TRUE(empty.IsEmpty());
    EXPECT_FALSE(single.IsEmpty());
    EXPECT_TRUE(single.IsSingle());
    EXPECT_EQ(empty.GetHull(r), r);
    EXPECT_EQ(r.GetHull(Unit(5.0)), Range_T<Unit>(1.0, 5.0));
    EXPECT_TRUE(r.IntersectsWith(single));
    EXPECT_FALSE(r.IntersectsWith(empty));
    EXPECT_TRUE((r & Range_T<Unit>(4.0, 5.0)).IsEmpty());
    EXPECT_EQ(r.GetExpanded(-1.0), Range_T<Unit>(2.0, 2.0));
    EXPECT_TRUE(r.GetExpanded(-1.5).IsEmpty());
    EXPECT_EQ(r.MapValueTo(2.0, Range_T<Unit>(10.0, 20.0)).GetValue(), 15.0);
    EXPECT_EQ(r.MapValueTo(2.0, Range_T<Unit>(7.0, 7.0)).GetValue(), 7.0);
    EXPECT_TRUE(Asserts([&] { (void)single.MapValueTo(2.0, r); }));
    EXPECT_TRUE(Asserts([&] { (void)empty.GetLength(); }));
}

TEST(Boxes, CornersInAnyOrderAndEpsilon)
{
    const Box b(Point(4.0, -1.0), Point(-2.0, 3.0));
    EXPECT_EQ(b, Box(Point(-2.0, -1.0), Point(4.0, 3.0)));
    EXPECT_EQ(b.GetArea().GetValue(), 24.0);
    EXPECT_EQ(b.GetCorner(2), Point(4.0, 3.0));
    EXPECT_EQ(k_EmptyBox.GetArea(), k_Area_0);
    EXPECT_EQ(k_EmptyBox.GetEpsilon(), k_Unit_0);
    // The largest of the bounds' magnitudes and the extents decides.
    EXPECT_EQ(b.GetEpsilon(), Unit(6.0).GetEpsilon());
    EXPECT_EQ(Box(Point(-9.0, 0.0), Point(-8.0, 1.0)).GetEpsilon(), Unit(9.0).GetEpsilon());
    EXPECT_FALSE(Box(Point(1.0, 1.0)).IsEmpty());
    // An empty x range empties a box whose y range is valid.
    EXPECT_TRUE(Box(Range_T<Unit>(1.0, 0.0), Range_T<Unit>(0.0, 5.0)).IsEmpty());
}

TEST(Boxes, QuadrantBoxesReachInfinity)
{
    const Point p(1.0, 2.0);
    const Box q1(p, 1), q2(p, 2), q3(p, 3), q4(p, 4);
    EXPECT_TRUE(q1.Contains(Point(1e300, 1e300)));
    EXPECT_FALSE(q1.Contains(Point(0.0, 3.0)));
    EXPECT_TRUE(q2.Contains(Point(-1e300, 1e300)));
    EXPECT_TRUE(q3.Contains(Point(-1e300, -1e300)));
    EXPECT_TRUE(q4.Contains(Point(1e300, -1e300)));
    EXPECT_EQ(q2.GetMinX(), -k_InfiniteUnit);
    EXPECT_EQ(q4.GetMaxX(), k_InfiniteUnit);
    Box bad;
    EXPECT_TRUE(Asserts([&] { bad = Box(p, 5); }));
    EXPECT_TRUE(bad.IsEmpty());
}

TEST(Boxes, HullIntersectionAndTolerance)
{
    const Box a(Point(0.0, 0.0), Point(2.0, 2.0)), b(Point(3.0, 1.0), Point(4.0, 5.0));
    EXPECT_EQ(k_EmptyBox.GetHull(a), a);
    EXPECT_EQ(a.GetHull(k_EmptyBox), a);
    EXPECT_EQ(a.GetHull(b), Box(Point(0.0, 0.0), Point(4.0, 5.0)));
    EXPECT_FALSE(a.IntersectsWith(b));
    EXPECT_TRUE((a & b).IsEmpty());
    EXPECT_TRUE(a.IntersectsWith(b, 1.0));
    EXPECT_FALSE(a.IntersectsWith(b, 0.9));
    EXPECT_EQ(a & Box(Point(1.0, 1.0), Point(5.0, 5.0)), Box(Point(1.0, 1.0), Point(2.0, 2.0)));
    EXPECT_TRUE(a.Contains(Point(2.5, 1.0), 0.5));
    EXPECT_FALSE(a.Contains(Point(2.6, 1.0), 0.5));
    EXPECT_TRUE(a.Contains(Box(Point(0.5, 0.5), Point(2.0, 1.0))));
    EXPECT_TRUE(a.IsEqualTo(Box(Point(0.125, -0.125), Point(2.0, 2.125)), 0.125));
    EXPECT_FALSE(a.IsEqualTo(Box(Point(0.125, -0.125), Point(2.0, 2.25)), 0.125));
    EXPECT_FALSE(a.IsEqualTo(k_EmptyBox, 100.0));
}

TEST(Boxes, SignedExpansion)
{
    const Box b(Point(0.0, 0.0), Point(10.0, 4.0));
    const Box shrunk = b.GetExpanded(-2.0);
    EXPECT_FALSE(shrunk.IsEmpty());
    EXPECT_EQ(shrunk.GetWidth().GetValue(), 6.0);
    EXPECT_EQ(shrunk.GetHeight().GetValue(), 0.0);
    EXPECT_TRUE(shrunk.GetYRange().IsSingle());
    EXPECT_TRUE(b.GetExpanded(-2.5).IsEmpty());
    EXPECT_EQ(b.GetExpanded(0.0), b);
    EXPECT_EQ(b.GetExpanded(1.0), Box(Point(-1.0, -1.0), Point(11.0, 5.0)));
    EXPECT_TRUE(k_EmptyBox.GetExpanded(5.0).IsEmpty());
    EXPECT_TRUE(GetExpandedBBox_T(Segment(Point(0.0, 0.0), Point(1.0, 0.0)), 1.0).Contains(Point(2.0, 1.0)));
    EXPECT_TRUE(Asserts([] { (void)GetExpandedBBox_T(Segment(), -1.0); }));
}

TEST(Boxes, TotalOrder)
{
    const Box empty, a(Point(0.0, 0.0), Point(1.0, 1.0)), b(Point(0.0, 0.0), Point(2.0, 1.0)),
        c(Point(0.0, -1.0), Point(1.0, 1.0)), d(Point(-1.0, 5.0), Point(0.0, 6.0));
    const Box empty_x(Range_T<Unit>(), Range_T<Unit>(0.0, 1.0));
    EXPECT_TRUE(a < empty_x);
    EXPECT_FALSE(empty_x < a);
    EXPECT_TRUE(d < a);
    EXPECT_TRUE(a < b);
    EXPECT_TRUE(c < a);
    EXPECT_FALSE(a < a);
    EXPECT_TRUE(a < empty);
    // A strict weak order over a mixed set: irreflexive and transitive.
    const Box all[] = {empty, a, b, c, d, empty_x};
    for (const Box& x : all)
        for (const Box& y : all)
            for (const Box& z : all)
            {
                if (x < y && y < z)
                {
                    EXPECT_TRUE(x < z);
                }
            }
}

TEST(PointLists, MergingRepeatsUntilStable)
{
    // 1.0 pulls the kept 0 to 0.5, which only then lies within reach of 1.5:
    // a second pass merges the two.
    const std::vector<Point> chain = {Point(0.0, 0.0), Point(1.5, 0.0), Point(5.0, 5.0), Point(1.0, 0.0)};
    const std::vector<Point> merged = MergeClosePoints_G(chain, 1.0);
    ASSERT_EQ(merged.size(), 2u);
    EXPECT_EQ(merged[0], Point(1.0, 0.0));
    EXPECT_EQ(merged[1], Point(5.0, 5.0));
    // Circular, not square: (0.8, 0.8) is farther than 1 from the origin.
    EXPECT_EQ(MergeClosePoints_G({Point(0.0, 0.0), Point(0.8, 0.8)}, 1.0).size(), 2u);
    EXPECT_TRUE(MergeClosePoints_G({}, 1.0).empty());
}

TEST(PointLists, RandomMergeLeavesNoCloseNeighbours)
{
    std::mt19937 rng(7);
    std::uniform_real_distribution<double> coord(0.0, 10.0);
    for (int round = 0; round < 50; ++round)
    {
        std::vector<Point> pts;
        for (int i = 0; i < 40; ++i)
            pts.push_back(Point(coord(rng), coord(rng)));
        const std::vector<Point> merged = MergeClosePoints_G(pts, 0.7);
        for (size_t i = 0; i < merged.size(); ++i)
            for (size_t j = i + 1; j < merged.size(); ++j)
                EXPECT_GT(merged[i].GetDistanceSquareTo(merged[j]).GetValue(), 0.49);
        EXPECT_LE(merged.size(), pts.size());
    }
}

TEST(PointLists, CommonPoints)
{
    const std::vector<Point> a = {Point(0.0, 0.0), Point(5.0, 5.0), Point(9.0, 0.0)};
    const std::vector<Point> b = {Point(0.2, 0.0), Point(9.0, 3.0), Point(5.0, 5.2)};
    const std::vector<Point> common = GetCommonPoints_G(a, b, 0.5);
    ASSERT_EQ(common.size(), 2u);
    EXPECT_EQ(common[0], Point(0.1, 0.0));
    EXPECT_EQ(common[1], Point(5.0, 5.1));
    // A second match near one already found is folded into it.
    const std::vector<Point> folded =
        GetCommonPoints_G({Point(0.0, 0.0)}, {Point(0.2, 0.0), Point(0.4, 0.0)}, 0.5);
    ASSERT_EQ(folded.size(), 1u);
    EXPECT_DOUBLE_EQ(folded[0].m_X.GetValue(), 0.15);
}
