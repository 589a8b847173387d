// Faults that the exact-arc oracle found in the boolean operations, each as
// the smallest case that showed it.
//
// Expected areas are worked out from the shapes' dimensions, or, for the
// nearly straight arcs, are the exact answer of CGAL's circle-segment sets
// on the same (grid) input.
#include "core/lib/vellum/Assert.h"
#include "lib/math/geometry/PolyArcIntersectionGraph.h"
#include "lib/math/geometry/PolyArcIntersectionGraph2.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

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
// The triangle about 1 nm thick and 100 nm long that the geometry's fuzz
// target kept laying along the sides of its polygons.
Polygon ThinTriangle()
{
    const Point s0(-0x1.8ffdf45e025bap+5, -0x1.8fffe5cbe8d1fp+5),
        s1(-0x1.8ffdf654cd34cp+5, -0x1.8fffcba895ec7p+5), s2(-0x1.8ffdf9996474dp+5, -0x1.8fffb1a6c0ddbp+5);
    return Polygon(std::vector<Arc>{Arc(s0, s1, k_Unit_0), Arc(s1, s2, k_Unit_0), Arc(s2, s0, k_Unit_0)},
                   false);
}

// A polygon of the given area with the thin triangle along its boundary:
// within the snapping, the triangle adds nothing, takes nothing away and
// has nothing in common with it. Snapping
// moves vertices by up to the accuracy along about 150 mm.
void ExpectThinTriangleChangesNothing(const Polygon& a, double area)
{
    const Polygon sliver = ThinTriangle();
    const double tolerance = 2e-4;
    const PolygonWithHolesCollection united = a.Unite(sliver, k_Accuracy);
    EXPECT_EQ(united.size(), 1);
    EXPECT_NEAR(united.GetArea().GetValue(), area, tolerance);
    const PolygonWithHolesCollection rest = a.Subtract(sliver, k_Accuracy);
    EXPECT_EQ(rest.size(), 1);
    EXPECT_NEAR(rest.GetArea().GetValue(), area, tolerance);
    EXPECT_NEAR(PolygonWithHoles(a).Intersect(sliver, k_Accuracy).GetArea().GetValue(), 0.0, tolerance);
    EXPECT_NEAR(sliver.Subtract(a, k_Accuracy).GetArea().GetValue(), 0.0, tolerance);
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

namespace
{
Point Rotated(double x, double y, double t)
{
    return Point(Unit(x * std::cos(t) - y * std::sin(t)), Unit(x * std::sin(t) + y * std::cos(t)));
}

Polygon RotatedRect(double x0, double y0, double x1, double y1, double t)
{
    return Polygon(
        std::vector<Point>{Rotated(x0, y0, t), Rotated(x1, y0, t), Rotated(x1, y1, t), Rotated(x0, y1, t)},
        false);
}
} // namespace

TEST(BooleanRegressions, EdgesNanometresApartKeepBothOperands)
{
    // Two 10 x 10 squares side by side, d = 1..8 nm apart or overlapping by
    // d, or (from 2 nm) overlapping by d and shifted by d so that their
    // sides cross d from the corners; turned by a range of angles so that
    // the distances come out a little under or over the accuracy once
    // rounded. A crossing clustered apart from a corner by distance once
    // lay within the accuracy's square round it, and cut one operand only:
    // the union came back empty.
    using Graph = PolyArcIntersectionGraph;
    const unsigned long before = GetFailedAssertCount_G();
    for (int turn = 0; turn <= 100; ++turn)
        for (int nm = 1; nm <= 8; ++nm)
            for (int kind = 0; kind < (nm == 1 ? 2 : 3); ++kind)
            {
                const double t = turn * 0.0157, d = nm * 1e-6;
                const Polygon a = RotatedRect(0, 0, 10, 10, t);
                const Polygon b = kind == 0   ? RotatedRect(10 + d, 0, 20, 10, t)
                                  : kind == 1 ? RotatedRect(10 - d, 0, 20, 10, t)
                                              : RotatedRect(10 - d, d, 20, 10 + d, t);
                const double common = kind == 0 ? 0.0 : kind == 1 ? 10 * d : d * (10 - d);
                const std::string label = "turn " + std::to_string(turn) + ", " + std::to_string(nm) +
                                          " nm, kind " + std::to_string(kind);
                // Within the accuracy along the boundary (80 mm).
                const double tolerance = 1e-4;
                Graph g(a, b, k_Accuracy);
                EXPECT_NEAR(g.GetResult(Graph::k_Union).GetArea().GetValue(), 200 - common, tolerance)
                    << label;
                EXPECT_NEAR(g.GetResult(Graph::k_Intersection).GetArea().GetValue(), common, tolerance)
                    << label;
                EXPECT_NEAR(g.GetResult(Graph::k_Subtraction).GetArea().GetValue(), 100 - common, tolerance)
                    << label;
            }
    EXPECT_EQ(GetFailedAssertCount_G(), before);
}

TEST(BooleanRegressions, UnionWithASliverAlongASlitIsTheRegion)
{
    // A polygon whose big arc leaves a corner back along the side before it,
    // within the accuracy: a slit of no width into it, about 53 nm long.
    // A triangle about 1 nm thick lies along the slit. Cut against each
    // other, the polygon's two copies of the slit cancel, and were taken as
    // a spike out of it, covering neither side: the union came back empty.
    // The polygon's material lies on both sides of a slit.
    const Point v0(-0x1.8ffdf45e025bap+5, -0x1.8fffe5cbe8d1fp+5);
    const Point tip(-0x1.8ffdf67e6a64fp+5, -0x1.8fffca101fb36p+5);
    const Point p2(-0x1.2c5c15849bfb4p+5, -0x1.803b380b04086p+5),
        p3(-0x1.19c9de070d8c1p+5, -0x1.a2b76d00b7237p+4);
    const Point p4(-0x1.d317ca45b7d9ep+5, -0x1.73e72a576d37fp+4),
        p5(-0x1.2ef0dfd9cabe1p+6, -0x1.36f1c5e1c871cp+5);
    const Point p6(-0x1.2cf76c4ecb444p+6, -0x1.f1adf58f95b9ap+5),
        p7(-0x1.c9c22f0d3d89ep+5, -0x1.33ecd802e9d85p+6);
    const Polygon a(std::vector<Arc>{Arc(v0, tip, k_Unit_0), Arc(tip, p2, Unit(-0x1.937d45abacd28p+2)),
                                     Arc(p2, p3, k_Unit_0), Arc(p3, p4, k_Unit_0), Arc(p4, p5, k_Unit_0),
                                     Arc(p5, p6, k_Unit_0), Arc(p6, p7, k_Unit_0), Arc(p7, v0, k_Unit_0)},
                    false);
    const Polygon sliver = ThinTriangle();
    const double area = a.GetArea().GetValue();
    ASSERT_NEAR(area, 1385.5585044, 1e-6);
    ASSERT_LT(sliver.GetArea().GetValue(), 1e-10);
    const unsigned long before = GetFailedAssertCount_G();
    ExpectThinTriangleChangesNothing(a, area);
    // And with the triangle first, and in a collection.
    EXPECT_NEAR(sliver.Unite(a, k_Accuracy).GetArea().GetValue(), area, 2e-4);
    const PolygonWithHolesCollection both(
        std::vector<PolygonWithHoles>{PolygonWithHoles(a), PolygonWithHoles(sliver)});
    EXPECT_NEAR(PolyArcIntersectionGraph2(both, k_Accuracy).GetResult().GetArea().GetValue(), area, 2e-4);
    EXPECT_EQ(GetFailedAssertCount_G(), before);
}

TEST(BooleanRegressions, SubtractingASliverAlongASideLeavesThePolygon)
{
    // The triangle about 1 nm thick of the test above, this time along a
    // side about 53 nm long of a polygon that it overhangs at both ends.
    // Snapped, its middle lies on that side, running the same way as the
    // polygon, which made it claim the polygon's side of the common piece;
    // the subtraction dropped the side and the polygon's walk ran into a
    // dead end: A - B came back empty. A sliver with no material a few
    // accuracies to either side of the piece covers neither.
    const Point v0(-0x1.8ffdf58d4d6f1p+5, -0x1.8fffd41d423d6p+5),
        v1(-0x1.8ffdf89d595cap+5, -0x1.8fffb877edaa6p+5);
    const Point p2(-0x1.0875a561b894cp+5, -0x1.75d38c923bb79p+5),
        p3(-0x1.9e10e214dde72p+4, -0x1.5b66ea7f67694p+5);
    const Point p4(-0x1.31171cb8b0609p+5, -0x1.707a4f787f6fp+5),
        p5(-0x1.8622c7bb3274ap+5, -0x1.32d37040401d4p+3);
    const Point p6(-0x1.9006588d14365p+5, -0x1.8eba93f1603aap+5),
        p7(-0x1.846f78cfaa8aep+6, -0x1.0eb0ebfe78631p+5);
    const std::vector<Point> corners{v0, v1, p2, p3, p4, p5, p6, p7};
    std::vector<Arc> sides;
    for (size_t i = 0; i < corners.size(); ++i)
        sides.emplace_back(corners[i], corners[(i + 1) % corners.size()], k_Unit_0);
    const Polygon a(sides, false);
    const double area = a.GetArea().GetValue();
    ASSERT_NEAR(area, 265.915212771, 1e-6);
    const unsigned long before = GetFailedAssertCount_G();
    ExpectThinTriangleChangesNothing(a, area);
    // The same triangle at a sharp corner of a polygon whose sides are
    // nearly straight arcs: there the polygon's own material is within a few
    // accuracies of the piece on one side only near the corner, and the
    // test must not take the polygon for the sliver.
    const Point c0(-0x1.8ffdf465b8938p+5, -0x1.8fffe53389848p+5),
        c1(-0x1.8ffdf6641e827p+5, -0x1.8fffcb10ca0a4p+5);
    const Point c2(-0x1.15640339dff6p+1, -0x1.53469e79c25fp+5),
        c3(-0x1.9017a5620fc4bp+5, -0x1.8f9cbad75f1bap+5);
    const Point c4(-0x1.ec346953fe064p+5, -0x1.67db5d107ae9p+3),
        c5(-0x1.9000aef53c9e9p+5, -0x1.8ffe11c3ffccp+5);
    const Point c6(-0x1.9000c770d38c9p+5, -0x1.8ffe1b20a66d8p+5);
    const Polygon sharp(
        std::vector<Arc>{Arc(c0, c1, Unit(0x1.0bcdc8aa5d6b4p-24)), Arc(c1, c2, Unit(0x1.0bcdc8aa5d6b4p-24)),
                         Arc(c2, c3, Unit(0x1.ad64519e582a6p-24)), Arc(c3, c4, Unit(-0x1.ad7f29abcaf48p-24)),
                         Arc(c4, c5, k_Unit_0), Arc(c5, c6, k_Unit_0), Arc(c6, c0, k_Unit_0)},
        false);
    ASSERT_NEAR(sharp.GetArea().GetValue(), 1.26108862099, 1e-9);
    ExpectThinTriangleChangesNothing(sharp, sharp.GetArea().GetValue());
    EXPECT_EQ(GetFailedAssertCount_G(), before);
}

TEST(BooleanRegressions, UnionKeepsTheVerticesWhereItsBoundaryTouchesItself)
{
    // A disk of radius 0.5 between two walls, touching the right one at its
    // start point (0, 1) and the left one at (-1, 1), over a bar that closes
    // the space below it: the union's boundary touches itself at both
    // points, around the hole under the disk. The pieces either side of a
    // touching point lie on one line or one circle and were joined across
    // it, so that the boundary ran through the point without a vertex and
    // the hole could no longer be told from a notch.
    const Polygon bar = Rect(-1.5, 0, 1, 0.25), left = Rect(-1.5, 0, -1, 2), right = Rect(0, 0, 1, 2);
    const Polygon disk(Circle(Point(-0.5, 1), Unit(0.5)));
    const Point touches[] = {Point(0, 1), Point(-1, 1)};
    const double area = 0.625 + 1 + 2 + M_PI / 4 - 0.125 - 0.25;
    const double hole = 0.75 * 1.0 - M_PI / 8; // under the disk, above the bar
    const unsigned long before = GetFailedAssertCount_G();
    const std::vector<PolygonWithHoles> shapes{PolygonWithHoles(bar), PolygonWithHoles(left),
                                               PolygonWithHoles(right), PolygonWithHoles(disk)};
    const PolygonWithHolesCollection united =
        PolyArcIntersectionGraph2(PolygonWithHolesCollection(shapes), k_Accuracy).GetResult();
    EXPECT_NEAR(united.GetArea().GetValue(), area, 1e-9);
    int visits[2] = {0, 0};
    double outline_area = 0;
    for (const PolygonWithHoles& r : united)
    {
        outline_area += r.GetPolygon().GetArea().GetValue();
        std::vector<Polygon> contours{r.GetPolygon()};
        contours.insert(contours.end(), r.GetHoles().begin(), r.GetHoles().end());
        for (const Polygon& c : contours)
            for (const Arc& a : c.GetEdges())
                for (int k = 0; k < 2; ++k)
                    visits[k] += a.GetStart() == touches[k] ? 1 : 0;
    }
    // Each touching point is passed twice: by the outline and the hole, or
    // twice by an outline that pinches there.
    EXPECT_EQ(visits[0], 2);
    EXPECT_EQ(visits[1], 2);
    EXPECT_NEAR(outline_area, area + (CountHoles(united) > 0 ? hole : 0.0), 1e-9);
    EXPECT_EQ(GetFailedAssertCount_G(), before);
}
