// Faults that the exact-arc oracle found in the boolean operations, each as
// the smallest case that showed it.
//
// Expected areas are worked out from the shapes' dimensions, or, for the
// nearly straight arcs, are the exact answer of CGAL's circle-segment sets
// on the same (grid) input.
#include "core/lib/vellum/Assert.h"
#include "lib/math/geometry/PolyArcIntersectionGraph.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace geom;

namespace
{
const Unit k_Accuracy(1e-6);

Polygon Rect(double x0, double y0, double x1, double y1)
{
    return Polygon(Box(Point(x0, y0), Point(x1, y1)), k_Unit_0);
}

// The arc from a to b round a centre, its sagitta worked out here.
Arc ArcAround(Point a, Point b, Point c, bool ccw)
{
    const double r = std::sqrt(a.GetDistanceSquareTo(c).GetValue());
    const Point mid((a.m_X + b.m_X) * 0.5, (a.m_Y + b.m_Y) * 0.5);
    const double d = std::sqrt(mid.GetDistanceSquareTo(c).GetValue());
    const double quarter = a.GetDistanceSquareTo(b).GetValue() / 4;
    const double cross = ((a - c).GetX() * (b - c).GetY() - (a - c).GetY() * (b - c).GetX()).GetValue();
    const bool minor = ccw == (cross > 0);
    const double h = minor ? quarter / (r + d) : r + d;
    return Arc(a, b, Unit(ccw ? -h : h));
}

size_t CountHoles(const PolygonWithHolesCollection& c)
{
    size_t ret = 0;
    for (const PolygonWithHoles& r : c)
        ret += r.GetHoles().size();
    return ret;
}
} // namespace

TEST(BooleanRegressions, NearlyStraightArcsKeepTheirCrossingsWithAPad)
{
    // Two edges of radius about 7e4 and 8e4 mm cross a disk of radius 1.1.
    // Intersected from the large circle's centre, r^2 - a^2 cancelled to
    // noise, the crossings were lost and the union came back empty.
    const Polygon a(
        std::vector<Arc>{ArcAround(Point(0.48828125, -1.177734375), Point(-1.5, -1.7578125),
                                   Point(19007.494140625, -65153.4677734375), true),
                         ArcAround(Point(-1.5, -1.7578125), Point(-1.314453125, -4.1826171875),
                                   Point(79454.5927734375, 6077.02978515625), true),
                         ArcAround(Point(-1.314453125, -4.1826171875), Point(1.349609375, -3.251953125),
                                   Point(953.017578125, -2731.71728515625), false),
                         ArcAround(Point(1.349609375, -3.251953125), Point(0.48828125, -1.177734375),
                                   Point(2124.9189453125, 879.78515625), false)},
        false);
    const Polygon pad(Circle(Point(-1.205078125, -2.7783203125), 0.556640625));
    const unsigned long before = GetFailedAssertCount_G();
    const PolygonWithHolesCollection united =
        PolyArcIntersectionGraph(a, pad, k_Accuracy).GetResult(PolyArcIntersectionGraph::k_Union);
    ASSERT_EQ(united.size(), 1);
    // Within the accuracy along the boundary (about 13 mm long).
    EXPECT_NEAR(united.GetArea().GetValue(), 5.8793132916263184, 1.3e-5);
    EXPECT_EQ(GetFailedAssertCount_G(), before);
}

TEST(BooleanRegressions, LoopsOfOneContourThatTouchAtAVertexNest)
{
    // Two counter-clockwise circles from one common vertex, the second
    // inside the first: the contour winds twice round the small disk and
    // once round the rest, so the result is the large disk alone.
    const Point v(1.5283203125, -1.302734375);
    const Polygon both(std::vector<Arc>{Arc(v, v, Unit(-2.197265625), k_Azimuth_180),
                                        Arc(v, v, Unit(-1.943359375), k_Azimuth_180)},
                       false);
    const PolygonWithHolesCollection r = both.RemoveSelfIntersections(k_Accuracy, false, false, nullptr);
    ASSERT_EQ(r.size(), 1);
    EXPECT_EQ(CountHoles(r), 0);
    EXPECT_NEAR(r.GetArea().GetValue(), M_PI * 1.0986328125 * 1.0986328125, 1e-9);
    // Run the other way round, the second circle takes its disk away again.
    const Polygon ring(std::vector<Arc>{Arc(v, v, Unit(-2.197265625), k_Azimuth_180),
                                        Arc(v, v, Unit(1.943359375), k_Azimuth_180)},
                       false);
    const PolygonWithHolesCollection h = ring.RemoveSelfIntersections(k_Accuracy, false, false, nullptr);
    EXPECT_NEAR(h.GetArea().GetValue(), M_PI * (1.0986328125 * 1.0986328125 - 0.9716796875 * 0.9716796875),
                1e-9);
}

TEST(BooleanRegressions, HolesThatLeaveTheOutlineOrOverlapAreResolved)
{
    // A 4 x 4 square; one hole reaches out of it, two others overlap.
    PolygonWithHoles r(Rect(0, 0, 4, 4));
    r.AddHole(Rect(3, 1, 6, 2));
    r.AddHole(Rect(0.5, 2.5, 1.5, 3.5));
    r.AddHole(Rect(1, 2.5, 2, 3.5));
    const unsigned long before = GetFailedAssertCount_G();
    const PolygonWithHolesCollection c = r.RemoveSelfIntersections(k_Accuracy);
    ASSERT_EQ(c.size(), 1);
    EXPECT_EQ(CountHoles(c), 1);
    EXPECT_NEAR(c.GetArea().GetValue(), 16 - 1 - 1.5, 1e-12);
    EXPECT_EQ(GetFailedAssertCount_G(), before);
    // A hole larger than its outline leaves nothing.
    PolygonWithHoles covered(Rect(0, 0, 1, 1));
    covered.AddHole(Rect(-1, -1, 2, 2));
    EXPECT_NEAR(covered.RemoveSelfIntersections(k_Accuracy).GetArea().GetValue(), 0.0, 1e-12);
}

TEST(BooleanRegressions, RegionsThatOnlyTouchIntersectInNothingWithoutAnAssertion)
{
    const PolygonWithHoles a(Rect(0, 0, 2, 2)), side(Rect(2, 0.5, 3, 1.5)), corner(Rect(2, 2, 3, 3));
    const PolygonWithHoles disk(Polygon(Circle(Point(3, 1), 1.0)));
    const unsigned long before = GetFailedAssertCount_G();
    EXPECT_TRUE(a.Intersect(side, k_Accuracy).empty());
    EXPECT_TRUE(a.Intersect(corner, k_Accuracy).empty());
    EXPECT_TRUE(a.Intersect(disk, k_Accuracy).empty());
    EXPECT_EQ(GetFailedAssertCount_G(), before);
}
