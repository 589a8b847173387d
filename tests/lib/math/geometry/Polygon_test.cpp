// Tests of polygons: the pad and trace constructors (areas by formula),
// relations, equality and order, shrinking and growing, and the simple-loop
// path of RemoveSelfIntersections.
#include "lib/math/geometry/Polygon.h"

#include "core/lib/vellum/Assert.h"
#include "lib/math/geometry/PolygonWithHolesCollection.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

using namespace geom;

namespace
{
Polygon Rect(double x0, double y0, double x1, double y1)
{
    return Polygon(Box(Point(x0, y0), Point(x1, y1)), k_Unit_0);
}

bool IsClosedSequence(const Polygon& p)
{
    return IsPolyArcSequence_G(p.GetEdges(), k_Closed);
}
} // namespace

TEST(Polygon, PadAndTraceShapes)
{
    // Circle: one counter-clockwise edge from azimuth 0; radius 0 a point.
    const Polygon pad(Circle(Point(1.0, 2.0), 0.5));
    ASSERT_EQ(pad.GetEdgeCount(), 1);
    EXPECT_EQ(pad.GetFirstPoint(), Point(1.5, 2.0));
    EXPECT_NEAR(pad.GetArea().GetValue(), k_Pi * 0.25, 1e-15);
    const Polygon dot(Circle(Point(1.0, 2.0), 0.0));
    ASSERT_EQ(dot.GetEdgeCount(), 1);
    EXPECT_TRUE(dot.GetFirstEdge().IsPoint(k_Unit_0, nullptr));
    EXPECT_EQ(dot.GetArea(), k_Area_0);

    // Thick line: 2 L half + pi half^2, counter-clockwise, four edges.
    const Polygon trace(Segment(Point(0.0, 0.0), Point(3.0, 4.0)), 0.4);
    ASSERT_EQ(trace.GetEdgeCount(), 4);
    EXPECT_TRUE(IsClosedSequence(trace));
    EXPECT_EQ(trace.GetDirection(), k_CCW);
    EXPECT_NEAR(trace.GetArea().GetValue(), 5 * 0.4 + k_Pi * 0.04, 1e-12);
    EXPECT_TRUE(trace.IsPointInside(Point(1.5, 2.0), k_Unit_0));
    EXPECT_TRUE(trace.IsPointInside(Point(-0.1, -0.1), k_Unit_0)); // in the round cap
    EXPECT_FALSE(trace.IsPointInside(Point(-0.19, -0.19), k_Unit_0));
    // Width 0: the segment there and back, which IsSegment recognises.
    const Polygon hairline(Segment(Point(0.0, 0.0), Point(3.0, 4.0)), k_Unit_0);
    Segment s;
    ASSERT_TRUE(hairline.IsSegment(k_Unit_0, &s));
    EXPECT_EQ(s, Segment(Point(0.0, 0.0), Point(3.0, 4.0)));
    EXPECT_FALSE(trace.IsSegment(1.0, nullptr));
    // Zero length, width 2: the unit circle at the start.
    Circle c;
    ASSERT_TRUE(Polygon(Segment(Point(7.0, 7.0), Point(7.0, 7.0)), 2.0).IsCircle(1e-12, &c));
    EXPECT_EQ(c.GetCenter(), Point(7.0, 7.0));
    EXPECT_EQ(c.GetRadius(), Unit(1.0));
    // Shorter than the width in the square sense: also the circle at the start.
    EXPECT_EQ(Polygon(Segment(Point(0.0, 0.0), Point(0.9, 0.9)), 2.0).GetEdgeCount(), 1);

    // Rounded box: 144 - (4 - pi) for (0,0)-(10,10) with r = 1; eight edges.
    const Polygon rounded(Box(Point(0.0, 0.0), Point(10.0, 10.0)), 1.0);
    ASSERT_EQ(rounded.GetEdgeCount(), 8);
    EXPECT_TRUE(IsClosedSequence(rounded));
    EXPECT_NEAR(rounded.GetArea().GetValue(), 144 - (4 - k_Pi), 1e-12);
    EXPECT_EQ(rounded.GetFirstPoint(), Point(11.0, 10.0));
    EXPECT_EQ(rounded.GetBBox(), Box(Point(-1.0, -1.0), Point(11.0, 11.0)));
    EXPECT_FALSE(rounded.IsPointInside(Point(10.9, 10.9), k_Unit_0));
    EXPECT_TRUE(rounded.IsPointInside(Point(10.6, 10.6), k_Unit_0));
    // Radius 0: the four corners, area of the box.
    EXPECT_EQ(Rect(0, 0, 3, 2).GetEdgeCount(), 4);
    EXPECT_EQ(Rect(0, 0, 3, 2).GetArea(), Area(6.0));
    // A box of height 0 with radius 1 is the thick line of width 2.
    const Polygon flat(Box(Point(0.0, 5.0), Point(4.0, 5.0)), 1.0);
    EXPECT_NEAR(flat.GetArea().GetValue(), 8 + k_Pi, 1e-12);
    EXPECT_TRUE(Polygon(Box(), 1.0).empty());
}

TEST(Polygon, NormalisingConstructors)
{
    const std::vector<Point> cw{Point(0.0, 0.0), Point(0.0, 2.0), Point(2.0, 2.0), Point(2.0, 0.0)};
    EXPECT_EQ(Polygon(cw, false).GetSignedArea(), Area(-4.0));
    const Polygon normalised(cw, true);
    EXPECT_EQ(normalised.GetArea(), Area(4.0));
    EXPECT_EQ(normalised.GetDirection(), k_CCW);
    const PolyArc chain(k_Closed, cw);
    EXPECT_EQ(Polygon(chain, true).GetDirection(), k_CCW);
    EXPECT_TRUE(Polygon(chain, false).IsSharedWith(chain));
    EXPECT_TRUE(Polygon().empty());
    EXPECT_EQ(Polygon().GetArea(), k_Area_0);
    EXPECT_EQ(Polygon().GetOpenClosed(), k_Closed);
}

TEST(Polygon, PointRelations)
{
    const Polygon square = Rect(0, 0, 2, 2);
    EXPECT_EQ(square.GetRelation(Point(1.0, 1.0), k_Unit_0), k_PointInside);
    EXPECT_EQ(square.GetRelation(Point(3.0, 1.0), k_Unit_0), k_PointOutside);
    EXPECT_EQ(square.GetRelation(Point(2.0, 1.0), k_Unit_0), k_PointOnBoundary);
    EXPECT_EQ(square.GetRelation(Point(2.0 + 1e-7, 1.0), 1e-6), k_PointOnBoundary);
    EXPECT_EQ(square.GetRelation(Point(2.0 + 1e-5, 1.0), 1e-6), k_PointOutside);
    // A point exactly on the contour is inside even at accuracy 0.
    EXPECT_TRUE(square.IsPointInside(Point(1.0, 0.0), k_Unit_0));
    EXPECT_TRUE(square.IsPointInside(Point(0.0, 0.0), k_Unit_0));
    EXPECT_FALSE(Polygon().IsPointInside(Point(0.0, 0.0), 1.0));
    // The retry with a displaced point decides points on the axes through
    // vertices, without failing the assertion behind the retries.
    const Polygon diamond(
        std::vector<Point>{Point(0.0, -2.0), Point(2.0, 0.0), Point(0.0, 2.0), Point(-2.0, 0.0)}, false);
    const unsigned long before = GetFailedAssertCount_G();
    EXPECT_TRUE(diamond.IsPointInside(Point(0.0, 1.0), k_Unit_0));
    EXPECT_TRUE(diamond.IsPointInside(Point(-1.0, 0.0), k_Unit_0));
    EXPECT_FALSE(diamond.IsPointInside(Point(0.0, 3.0), k_Unit_0));
    EXPECT_FALSE(diamond.IsPointInside(Point(3.0, 0.0), 1e-9));
    EXPECT_EQ(GetFailedAssertCount_G(), before);
}

TEST(Polygon, PolygonRelations)
{
    const Polygon big = Rect(0, 0, 10, 10);
    const Polygon small = Rect(2, 2, 4, 4);
    const Polygon apart = Rect(20, 0, 22, 2);
    const Polygon across = Rect(8, 8, 12, 12);
    EXPECT_EQ(big.GetRelation(small, 1e-9), k_OtherInsideThis);
    EXPECT_EQ(small.GetRelation(big, 1e-9), k_ThisInsideOther);
    EXPECT_EQ(big.GetRelation(apart, 1e-9), k_NoIntersection);
    EXPECT_EQ(big.GetRelation(across, 1e-9), k_Crossing);
    EXPECT_EQ(across.GetRelation(big, 1e-9), k_Crossing);
    // Touching contours are a crossing; a gap just beyond accuracy is not.
    EXPECT_EQ(big.GetRelation(Rect(10, 0, 12, 2), 1e-9), k_Crossing);
    EXPECT_EQ(big.GetRelation(Rect(10 + 1e-6, 0, 12, 2), 1e-9), k_NoIntersection);
    EXPECT_EQ(big.GetRelation(Rect(10 + 1e-6, 0, 12, 2), 1e-5), k_Crossing);
    // Boxes overlap but the regions don't: a circle in the corner of a box.
    const Polygon ring(Circle(Point(0.0, 0.0), 1.0));
    EXPECT_EQ(ring.GetRelation(Rect(0.8, 0.8, 2, 2), 1e-9), k_NoIntersection);
    EXPECT_EQ(Polygon().GetRelation(big, 1e-9), k_NoIntersection);

    // IntersectsWith asks the receiver's first point and the contours only:
    // a small polygon wholly inside the receiver isn't seen.
    EXPECT_TRUE(small.IntersectsWith(big, 1e-9));
    EXPECT_TRUE(across.IntersectsWith(big, 1e-9));
    EXPECT_FALSE(apart.IntersectsWith(big, 1e-9));
    EXPECT_FALSE(big.IntersectsWith(small, 1e-9));
}

TEST(Polygon, EqualityAndOrder)
{
    const Polygon a = Rect(0, 0, 2, 2);
    EXPECT_TRUE(a.IsEqualTo(a, k_Unit_0));
    EXPECT_TRUE(a.IsEqualTo(Rect(0, 0, 2, 2 + 1e-10), 1e-9));
    EXPECT_FALSE(a.IsEqualTo(Rect(0, 0, 2, 2 + 1e-8), 1e-9));
    // The same square from another vertex, or reversed, doesn't match.
    std::vector<Arc> rotated = a.GetEdges();
    std::rotate(rotated.begin(), rotated.begin() + 1, rotated.end());
    EXPECT_FALSE(a.IsEqualTo(Polygon(rotated, false), 1e-9));
    EXPECT_FALSE(a.IsEqualTo(Polygon(a.GetReversed(), false), 1e-9));

    // A strict total order on a random set: irreflexive, asymmetric,
    // transitive, and equal exactly when neither is less.
    std::mt19937 rng(1);
    std::uniform_int_distribution<int> u(0, 3);
    std::vector<Polygon> set;
    for (int k = 0; k < 60; ++k)
    {
        const double x = u(rng), y = u(rng);
        switch (u(rng))
        {
        case 0:
            set.push_back(Rect(x, y, x + 1 + u(rng), y + 1));
            break;
        case 1:
            set.push_back(Polygon(Circle(Point(x, y), 1.0 + u(rng))));
            break;
        case 2:
            set.push_back(Polygon(Box(Point(x, y), Point(x + 1, y + 1)), 0.5 * u(rng)));
            break;
        default:
            set.push_back(Polygon(rotated, false));
        }
    }
    for (const Polygon& p : set)
    {
        EXPECT_FALSE(p < p);
        for (const Polygon& q : set)
        {
            EXPECT_FALSE(p < q && q < p);
            EXPECT_EQ(!(p < q) && !(q < p), p == q);
            for (const Polygon& r : set)
                EXPECT_TRUE(!(p < q && q < r) || p < r);
        }
    }
    EXPECT_TRUE(Rect(0, 0, 1, 1) < Polygon(Box(Point(0.0, 0.0), Point(1.0, 1.0)), 0.5)); // fewer edges
}

TEST(Polygon, ShrinkAndExpand)
{
    // The rounded box shrunk by its radius is the plain box.
    const Polygon rounded(Box(Point(0.0, 0.0), Point(10.0, 6.0)), 1.0);
    const PolygonWithHolesCollection plain = rounded.Shrink(1.0, 1e-9, true, 0, 0.0);
    ASSERT_EQ(plain.size(), 1);
    EXPECT_NEAR(plain.GetArea().GetValue(), 60.0, 1e-9);
    // A square shrunk by d: (s - 2d)^2, a single simple loop.
    const PolygonWithHolesCollection inner = Rect(0, 0, 4, 4).Shrink(0.5, 1e-9, true, 0, 0.0);
    ASSERT_EQ(inner.size(), 1);
    EXPECT_NEAR(inner.GetArea().GetValue(), 9.0, 1e-12);
    EXPECT_FALSE(inner.begin()->HasHoles());
    // Without resolving loops the offset contour comes back as one polygon.
    EXPECT_NEAR(Rect(0, 0, 4, 4).Shrink(0.5, 1e-9, false, 0, 0.0).GetArea().GetValue(), 9.0, 1e-12);
    // By 0: the polygon itself; narrower than `by`, or empty: nothing.
    const Polygon square = Rect(0, 0, 4, 4);
    const PolygonWithHolesCollection same = square.Shrink(k_Unit_0, 1e-9, true, 0, 0.0);
    ASSERT_EQ(same.size(), 1);
    EXPECT_TRUE(same.begin()->GetPolygon().IsSharedWith(square));
    EXPECT_TRUE(Rect(0, 0, 10, 0.5).Shrink(1.0, 1e-9, true, 0, 0.0).empty());
    EXPECT_TRUE(Polygon().Shrink(1.0, 1e-9, true, 0, 0.0).empty());
    // Shrunk by more than half its width (but less than the width), a square
    // or triangle would turn inside out; nothing of it remains.
    EXPECT_TRUE(Rect(0, 0, 1, 1).Shrink(0.6, 1e-9, true, 0, 0.0).empty());
    // Without resolving loops the offset contour comes back as it is, a
    // contour that crosses itself, as one polygon.
    EXPECT_EQ(Rect(0, 0, 1, 1).Shrink(0.6, 1e-9, false, 0, 0.0).size(), 1);
    const Polygon triangle(std::vector<Point>{Point(0.0, 0.0), Point(4.0, 0.0), Point(2.0, 3.0)}, false);
    EXPECT_TRUE(triangle.Shrink(1.5, 1e-9, true, 0, 0.0).empty()); // inradius ~1.11
    EXPECT_EQ(triangle.Shrink(0.5, 1e-9, true, 0, 0.0).size(), 1);
    // A rectangle thinner than twice the distance in one direction only is
    // mirrored, turns clockwise and is dropped as a loop of no material.
    EXPECT_TRUE(Rect(0, 0, 2, 1.5).Shrink(0.8, 1e-9, true, 0, 0.0).empty());
    // A circle shrinks to a smaller circle, and vanishes at its radius.
    const Polygon disc(Circle(Point(0.0, 0.0), 2.0));
    EXPECT_NEAR(disc.Shrink(0.5, 1e-9, true, 0, 0.0).GetArea().GetValue(), k_Pi * 2.25, 1e-12);

    // Expansion: square grown by d, rounded corners (s^2 + 4 s d + pi d^2).
    EXPECT_NEAR(square.Expand(1.0, 1e-9, true, 0, 0.0).GetArea().GetValue(), 16 + 16 + k_Pi, 1e-9);
    // A point grows into a disc.
    const PolygonWithHolesCollection grown =
        Polygon(Circle(Point(3.0, 3.0), 0.0)).Expand(2.0, 1e-9, true, 0, 0.0);
    ASSERT_EQ(grown.size(), 1);
    EXPECT_NEAR(grown.GetArea().GetValue(), k_Pi * 4, 1e-12);
    EXPECT_TRUE(grown.begin()->GetPolygon().IsPointInside(Point(4.9, 3.0), k_Unit_0));
}

TEST(Polygon, SimpleLoops)
{
    // A valid polygon is one entry, unchanged.
    bool changed = true;
    const PolygonWithHolesCollection one =
        Rect(0, 0, 2, 2).RemoveSelfIntersections(1e-9, false, false, &changed);
    ASSERT_EQ(one.size(), 1);
    EXPECT_FALSE(changed);
    EXPECT_EQ(one.GetArea(), Area(4.0));
    EXPECT_TRUE(Polygon().RemoveSelfIntersections(1e-9, false, false, nullptr).empty());
    // A spike and a point edge are removed; the region stays.
    const std::vector<Point> spiky{Point(0.0, 0.0), Point(2.0, 0.0), Point(2.0, 1.0), Point(5.0, 1.0),
                                   Point(2.0, 1.0), Point(2.0, 2.0), Point(2.0, 2.0), Point(0.0, 2.0)};
    const PolygonWithHolesCollection cleaned =
        Polygon(spiky, false).RemoveSelfIntersections(1e-9, false, false, &changed);
    EXPECT_TRUE(changed);
    ASSERT_EQ(cleaned.size(), 1);
    EXPECT_EQ(cleaned.begin()->GetPolygon().GetEdgeCount(), 5);
    EXPECT_EQ(cleaned.GetArea(), Area(4.0));
    // A segment traced there and back has no region at all.
    EXPECT_TRUE(Polygon(Segment(Point(0.0, 0.0), Point(1.0, 1.0)), k_Unit_0)
                    .RemoveSelfIntersections(1e-9, false, false, nullptr)
                    .empty());

    // Crossings of a figure eight: one, at the waist.
    const Polygon eight(
        std::vector<Point>{Point(0.0, 0.0), Point(2.0, 2.0), Point(2.0, 0.0), Point(0.0, 2.0)}, false);
    const std::vector<Point> waist = Polygon::GetSelfIntersectionPoints(eight, 1e-9);
    ASSERT_EQ(waist.size(), 1u);
    EXPECT_TRUE(waist.front().IsEqualTo(Point(1.0, 1.0), 1e-12));
    EXPECT_TRUE(Polygon::GetSelfIntersectionPoints(Rect(0, 0, 1, 1), 1e-9).empty());
    // A vertex that comes down onto another edge (a pinch) meets it there,
    // once for each of its two edges, merged into one point.
    const Polygon pinched(std::vector<Point>{Point(0.0, 0.0), Point(4.0, 0.0), Point(4.0, 3.0),
                                             Point(2.0, 0.0), Point(0.0, 3.0)},
                          false);
    const std::vector<Point> pinch = Polygon::GetSelfIntersectionPoints(pinched, 1e-9);
    ASSERT_EQ(pinch.size(), 1u);
    EXPECT_EQ(pinch.front(), Point(2.0, 0.0));
}

TEST(Polygon, AssemblingLoops)
{
    const PolyArc outer(k_Closed, Rect(0, 0, 10, 10).GetEdges());
    const PolyArc hole = Rect(2, 2, 4, 4).GetReversed();
    const PolyArc nested(k_Closed, Rect(6, 6, 8, 8).GetEdges());
    const PolyArc apart(k_Closed, Rect(20, 0, 21, 1).GetEdges());
    const PolyArc sliver(k_Closed, Rect(30, 0, 30 + 1e-6, 1e-6).GetEdges());

    // An outline with its hole; the sliver below accuracy^2 is dropped.
    const PolygonWithHolesCollection c = Polygon::AssembleLoops({outer, hole, sliver}, 1e-2, false, false);
    ASSERT_EQ(c.size(), 1);
    EXPECT_EQ(c.begin()->GetHoles().size(), 1);
    EXPECT_EQ(c.GetArea(), Area(96.0));
    EXPECT_EQ(Polygon::AssembleLoops({outer, hole}, 1e-9, false, true).begin()->GetHoles().size(), 0);
    // An outline inside another is left out; one apart is kept.
    const PolygonWithHolesCollection two = Polygon::AssembleLoops({outer, nested, apart}, 1e-9, false, false);
    EXPECT_EQ(two.size(), 2);
    EXPECT_EQ(two.GetArea(), Area(101.0));
    // Keeping the largest: the first outline stands with its box area, so a
    // later one must beat the box. A circle first (box 4, area pi) stays
    // against a square of area 3.5, and loses to one of area 4.5.
    const Polygon disc(Circle(Point(0.0, 0.0), 1.0));
    const PolyArc square35(k_Closed, Rect(5, 0, 5 + 3.5, 1).GetEdges());
    const PolyArc square45(k_Closed, Rect(5, 0, 5 + 4.5, 1).GetEdges());
    const PolygonWithHolesCollection kept = Polygon::AssembleLoops({disc, square35}, 1e-9, true, false);
    ASSERT_EQ(kept.size(), 1);
    EXPECT_NEAR(kept.GetArea().GetValue(), k_Pi, 1e-12);
    EXPECT_EQ(Polygon::AssembleLoops({disc, square45}, 1e-9, true, false).GetArea(), Area(4.5));
    // Only holes: nothing to hold them.
    EXPECT_TRUE(Polygon::AssembleLoops({hole}, 1e-9, false, false).empty());
}
