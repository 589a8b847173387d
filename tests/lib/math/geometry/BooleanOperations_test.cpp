// Tests of the set operations on regions with arcs: shared sides, identical
// operands, crossing and touching circles, slivers, snapping within the
// accuracy, holes, self-crossing contours and shrinking with loops resolved.
// Expected areas are worked out by hand from the shapes' dimensions.
#include "lib/math/geometry/PolyArcIntersectionGraph.h"
#include "lib/math/geometry/PolyArcIntersectionGraph2.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace geom;

namespace
{
using Graph = PolyArcIntersectionGraph;
const Unit k_Accuracy(1e-6);

Polygon Rect(double x0, double y0, double x1, double y1)
{
    return Polygon(Box(Point(x0, y0), Point(x1, y1)), k_Unit_0);
}

Polygon Disk(double x, double y, double r)
{
    return Polygon(Circle(Point(x, y), r));
}

double AreaOf(const PolygonWithHolesCollection& c)
{
    return c.GetArea().GetValue();
}

int HoleCount(const PolygonWithHolesCollection& c)
{
    int n = 0;
    for (const PolygonWithHoles& r : c)
        n += r.GetHoles().size();
    return n;
}

// The lens of two unit circles whose centres are 1 apart: two circular
// segments of 120 degrees, each pi/3 - sqrt(3)/4.
const double k_Lens = 2 * (M_PI / 3 - std::sqrt(3.0) / 4);
} // namespace

TEST(BooleanOperations, SquaresSharingASide)
{
    const Polygon a = Rect(0, 0, 1, 1), b = Rect(1, 0, 2, 1);
    const PolygonWithHolesCollection u = a.Unite(b, k_Accuracy);
    ASSERT_EQ(u.size(), 1);
    EXPECT_DOUBLE_EQ(AreaOf(u), 2.0);
    // The shared side is gone and the collinear halves are joined again.
    EXPECT_EQ(u.begin()->GetPolygon().GetEdgeCount(), 4);
    EXPECT_DOUBLE_EQ(AreaOf(a.Subtract(b, k_Accuracy)), 1.0);
    EXPECT_EQ(Graph(a, b, k_Accuracy).GetResult(Graph::k_Intersection).size(), 0);
    EXPECT_DOUBLE_EQ(AreaOf(Graph(a, b, k_Accuracy).GetResult(Graph::k_SymmetricDifference)), 2.0);
}

TEST(BooleanOperations, IdenticalOperands)
{
    // Separate implementations, so that the graph and not a shortcut runs.
    const Polygon a = Disk(1, 1, 2), b = Disk(1, 1, 2);
    ASSERT_FALSE(a.IsSharedWith(b));
    const double disk = 4 * M_PI;
    const PolygonWithHolesCollection u = Graph(a, b, k_Accuracy).GetResult(Graph::k_Union);
    ASSERT_EQ(u.size(), 1);
    EXPECT_NEAR(AreaOf(u), disk, 1e-12);
    EXPECT_EQ(u.begin()->GetPolygon().GetEdgeCount(), 1);
    EXPECT_NEAR(AreaOf(Graph(a, b, k_Accuracy).GetResult(Graph::k_Intersection)), disk, 1e-12);
    EXPECT_TRUE(Graph(a, b, k_Accuracy).GetResult(Graph::k_Subtraction).empty());
    EXPECT_TRUE(Graph(a, b, k_Accuracy).GetResult(Graph::k_SymmetricDifference).empty());
    EXPECT_TRUE(a.Subtract(b, k_Accuracy).empty());
    // A disk and the same circle run the other way round are opposite
    // copies of one boundary: in a union they cancel, the disk stays.
    const Polygon reversed(a.GetReversed(), false);
    EXPECT_NEAR(AreaOf(Graph(a, reversed, k_Accuracy).GetResult(Graph::k_Subtraction)), disk, 1e-12);
}

TEST(BooleanOperations, CrossingCirclesKeepTheirArcs)
{
    const Polygon a = Disk(0, 0, 1), b = Disk(1, 0, 1);
    const PolygonWithHolesCollection u = a.Unite(b, k_Accuracy);
    ASSERT_EQ(u.size(), 1);
    EXPECT_NEAR(AreaOf(u), 2 * M_PI - k_Lens, 1e-12);
    // One contour of two arcs, each still on its unit circle.
    const std::vector<Arc> edges = u.begin()->GetPolygon().GetEdges();
    ASSERT_EQ(edges.size(), 2u);
    for (const Arc& e : edges)
        EXPECT_NEAR(e.GetRadius().GetValue(), 1.0, 1e-12);
    // One graph answers every mode, in any order and more than once.
    Graph graph(a, b, k_Accuracy);
    EXPECT_NEAR(AreaOf(graph.GetResult(Graph::k_Intersection)), k_Lens, 1e-12);
    EXPECT_NEAR(AreaOf(graph.GetResult(Graph::k_SymmetricDifference)), 2 * (M_PI - k_Lens), 1e-12);
    EXPECT_NEAR(AreaOf(graph.GetResult(Graph::k_Subtraction)), M_PI - k_Lens, 1e-12);
    EXPECT_NEAR(AreaOf(graph.GetResult(Graph::k_Intersection)), k_Lens, 1e-12);
    EXPECT_NEAR(AreaOf(a.Subtract(b, k_Accuracy)), M_PI - k_Lens, 1e-12);
}

TEST(BooleanOperations, TouchingAtOnePoint)
{
    // The disk touches the square's right side at (10, 5): the union keeps
    // both areas, as one contour pinched at the point or as two entries.
    const Polygon square = Rect(0, 0, 10, 10), disk = Disk(11, 5, 1);
    const PolygonWithHolesCollection u = square.Unite(disk, k_Accuracy);
    EXPECT_NEAR(AreaOf(u), 100 + M_PI, 1e-12);
    EXPECT_LE(u.size(), 2);
    EXPECT_EQ(Graph(square, disk, k_Accuracy).GetResult(Graph::k_Intersection).size(), 0);
    // Closer than the accuracy but not touching: the same result.
    const Polygon near = Disk(11 + 3e-7, 5, 1);
    EXPECT_NEAR(AreaOf(square.Unite(near, k_Accuracy)), 100 + M_PI, 1e-5);
    EXPECT_NEAR(AreaOf(square.Subtract(near, k_Accuracy)), 100, 1e-5);
    // A small disk whose start vertex is where a big one nearly touches it:
    // the near tangency cuts both circles twice, 3e-5 apart, and the long
    // rest of the small circle must stay an arc.
    const Polygon small = Disk(0, 0, 0.38), big = Disk(0.38 + 1.42 + 3e-7, 0, 1.42);
    EXPECT_NEAR(AreaOf(small.Unite(big, k_Accuracy)), M_PI * (0.38 * 0.38 + 1.42 * 1.42), 1e-5);
    EXPECT_NEAR(AreaOf(small.Subtract(big, k_Accuracy)), M_PI * 0.38 * 0.38, 1e-5);
}

TEST(BooleanOperations, VertexWithinAccuracyOfAnEdge)
{
    // b's left side lies 5e-7 right of a's right side: within the accuracy
    // they are one boundary, and the union is one region.
    const Polygon a = Rect(0, 0, 1, 1), b = Rect(1 + 5e-7, 0.5, 2, 1.5);
    const PolygonWithHolesCollection u = a.Unite(b, k_Accuracy);
    ASSERT_EQ(u.size(), 1);
    EXPECT_NEAR(AreaOf(u), 2.0, 1e-5);
    EXPECT_NEAR(AreaOf(a.Subtract(b, k_Accuracy)), 1.0, 1e-5);
}

TEST(BooleanOperations, SpikeAlongAnotherShapesSide)
{
    // A triangle whose contour runs out along the box's left side and back:
    // the spike has no width and covers neither side, so the box's own copy
    // of that stretch stays its boundary. 1.5 + 4.
    const Polygon spiky(std::vector<Point>{Point(0, 0), Point(2, 0.5), Point(2, 1), Point(2, 0.5), Point(0, 1.5)},
                        false);
    const Polygon box = Rect(2, 0, 4, 2);
    ASSERT_DOUBLE_EQ(spiky.GetArea().GetValue(), 1.5);
    EXPECT_DOUBLE_EQ(AreaOf(Graph(spiky, box, k_Accuracy).GetResult(Graph::k_Union)), 5.5);
    const PolygonCollection both(std::vector<Polygon>{spiky, box});
    EXPECT_DOUBLE_EQ(AreaOf(PolyArcIntersectionGraph2(both, k_Accuracy).GetResult()), 5.5);
    EXPECT_DOUBLE_EQ(AreaOf(Graph(box, spiky, k_Accuracy).GetResult(Graph::k_Subtraction)), 4.0);
}

TEST(BooleanOperations, SliverBelowTheAreaLimitIsDropped)
{
    // Two boxes overlapping in a strip 1e-9 wide and 1 long: its area lies
    // below the square of the accuracy 1e-4.
    const Unit accuracy(1e-4);
    const Polygon a = Rect(0, 0, 1, 1), b = Rect(1 - 1e-9, 0, 2, 1);
    EXPECT_TRUE(Graph(a, b, accuracy).GetResult(Graph::k_Intersection).empty());
    EXPECT_NEAR(AreaOf(Graph(a, b, accuracy).GetResult(Graph::k_Union)), 2.0, 1e-8);
}

TEST(BooleanOperations, HolesFromSubtraction)
{
    const Polygon outer = Rect(0, 0, 10, 10);
    // Wholly inside: one entry with one hole, no graph needed.
    const PolygonWithHolesCollection nested = outer.Subtract(Rect(2, 2, 3, 3), k_Accuracy);
    ASSERT_EQ(nested.size(), 1);
    EXPECT_EQ(HoleCount(nested), 1);
    EXPECT_DOUBLE_EQ(AreaOf(nested), 99.0);
    // Through the graph: the same region by all four modes' rules.
    const PolygonWithHolesCollection by_graph =
        Graph(outer, Rect(2, 2, 3, 3), k_Accuracy).GetResult(Graph::k_Subtraction);
    ASSERT_EQ(by_graph.size(), 1);
    EXPECT_EQ(HoleCount(by_graph), 1);
    EXPECT_DOUBLE_EQ(AreaOf(by_graph), 99.0);
    // A pad straddling the plane's edge bites a half disk out of it.
    const PolygonWithHolesCollection bitten = outer.Subtract(Disk(10, 5, 1), k_Accuracy);
    ASSERT_EQ(bitten.size(), 1);
    EXPECT_EQ(HoleCount(bitten), 0);
    EXPECT_NEAR(AreaOf(bitten), 100 - M_PI / 2, 1e-12);
    // A plane cut in two by a trace across it.
    const PolygonWithHolesCollection halves =
        outer.Subtract(Polygon(Segment(Point(-1.0, 5.0), Point(11.0, 5.0)), Unit(1)), k_Accuracy);
    EXPECT_EQ(halves.size(), 2);
    EXPECT_NEAR(AreaOf(halves), 90, 1e-12);
}

TEST(BooleanOperations, RegionsWithHoles)
{
    PolygonWithHoles ring(Rect(0, 0, 10, 10));
    ring.AddHole(Rect(3, 3, 7, 7));
    // A square that covers the hole fills it.
    const PolygonWithHolesCollection filled = ring.Unite(PolygonWithHoles(Rect(2, 2, 8, 8)), k_Accuracy);
    ASSERT_EQ(filled.size(), 1);
    EXPECT_EQ(HoleCount(filled), 0);
    EXPECT_DOUBLE_EQ(AreaOf(filled), 100.0);
    // Its intersection with the ring is a smaller ring.
    const PolygonWithHolesCollection inner = ring.Intersect(Rect(2, 2, 8, 8), k_Accuracy);
    ASSERT_EQ(inner.size(), 1);
    EXPECT_EQ(HoleCount(inner), 1);
    EXPECT_DOUBLE_EQ(AreaOf(inner), 20.0);
    // An island in the hole stays an entry of its own; disjoint regions
    // come out in the order given.
    const PolygonWithHolesCollection island = ring.Unite(PolygonWithHoles(Disk(5, 5, 1)), k_Accuracy);
    EXPECT_EQ(island.size(), 2);
    EXPECT_NEAR(AreaOf(island), 84 + M_PI, 1e-12);
    EXPECT_EQ(HoleCount(island), 1);
    // Decomposition tiles the ring with hole-free pieces.
    const std::vector<Polygon> pieces = ring.Decompose();
    EXPECT_EQ(pieces.size(), 2u);
    double sum = 0;
    for (const Polygon& p : pieces)
        sum += p.GetArea().GetValue();
    EXPECT_NEAR(sum, 84, 1e-9);
}

TEST(BooleanOperations, CollectionsSubtractUniteAndSelfUnion)
{
    const PolygonWithHolesCollection plane(std::vector<PolygonWithHoles>{
        PolygonWithHoles(Rect(0, 0, 10, 10)), PolygonWithHoles(Rect(20, 0, 30, 10))});
    const PolygonWithHolesCollection voids(std::vector<PolygonWithHoles>{PolygonWithHoles(Disk(5, 5, 1)),
                                                                         PolygonWithHoles(Rect(9, 4, 11, 6)),
                                                                         PolygonWithHoles(Disk(50, 50, 1))});
    const PolygonWithHolesCollection cut = plane.Subtract(voids, k_Accuracy);
    // The untouched right plane comes along; the left one loses a disk
    // and the 1 x 2 part of the box inside it.
    EXPECT_EQ(cut.size(), 2);
    EXPECT_NEAR(AreaOf(cut), 200 - M_PI - 2, 1e-12);
    EXPECT_EQ(HoleCount(cut), 1);
    const PolygonWithHolesCollection joined = plane.Unite(voids, k_Accuracy);
    EXPECT_EQ(joined.size(), 3);
    EXPECT_NEAR(AreaOf(joined), 200 + 2 + M_PI, 1e-12);
    // Three overlapping strips united in one collection: one 4 x 1 box.
    const PolygonCollection strips(
        std::vector<Polygon>{Rect(0, 0, 2, 1), Rect(1, 0, 3, 1), Rect(2, 0, 4, 1)});
    const PolygonWithHolesCollection strip = PolyArcIntersectionGraph2(strips, k_Accuracy).GetResult();
    ASSERT_EQ(strip.size(), 1);
    EXPECT_DOUBLE_EQ(AreaOf(strip), 4.0);
    EXPECT_EQ(strip.begin()->GetPolygon().GetEdgeCount(), 4);
    // A pad that fills half of a void, brought twice: the two copies of its
    // arc in the void are one boundary.
    PolygonWithHoles ring(Rect(0, 0, 10, 10));
    ring.AddHole(Rect(3, 3, 7, 7));
    const PolygonWithHolesCollection pads(std::vector<PolygonWithHoles>{ring, PolygonWithHoles(Disk(5, 3, 1)),
                                                                        PolygonWithHoles(Disk(5, 3, 1))});
    const PolygonWithHolesCollection patched = PolyArcIntersectionGraph2(pads, k_Accuracy).GetResult();
    ASSERT_EQ(patched.size(), 1);
    EXPECT_EQ(HoleCount(patched), 1);
    EXPECT_NEAR(AreaOf(patched), 84 + M_PI / 2, 1e-12);
    // The same with a pad whose circle passes 4e-7 from a corner of the
    // void: snapped to the corner, its pieces are rebuilt off the true
    // circle, and only pairing the copies keeps them one boundary. Two
    // routes must agree: the pad brought twice and the pair of operands.
    const Polygon near_corner = Disk(3 - 0.6, 3 + 0.8, 1 + 4e-7);
    const PolygonWithHolesCollection twice(std::vector<PolygonWithHoles>{
        ring, PolygonWithHoles(near_corner), PolygonWithHoles(Polygon(near_corner.GetEdges(), false))});
    EXPECT_NEAR(AreaOf(PolyArcIntersectionGraph2(twice, k_Accuracy).GetResult()),
                AreaOf(Graph(ring, PolygonWithHoles(near_corner), k_Accuracy).GetResult(Graph::k_Union)),
                1e-9);
    // A ring of four boxes around an empty middle: the middle is a hole.
    const PolygonWithHolesCollection frame =
        PolygonWithHolesCollection(std::vector<PolygonWithHoles>{PolygonWithHoles(Rect(0, 0, 4, 1)),
                                                                 PolygonWithHoles(Rect(3, 0, 4, 4)),
                                                                 PolygonWithHoles(Rect(0, 3, 4, 4)),
                                                                 PolygonWithHoles(Rect(0, 0, 1, 4))})
            .RemoveSelfIntersections(k_Accuracy);
    ASSERT_EQ(frame.size(), 1);
    EXPECT_EQ(HoleCount(frame), 1);
    EXPECT_DOUBLE_EQ(AreaOf(frame), 12.0);
}

TEST(BooleanOperations, SelfCrossingContours)
{
    // A bow tie: one lobe counter-clockwise, the other clockwise, which
    // isn't material and lies in no outline.
    const Polygon bow(std::vector<Point>{Point(0, 0), Point(2, 2), Point(2, 0), Point(0, 2)}, false);
    bool changed = false;
    const PolygonWithHolesCollection fixed = bow.RemoveSelfIntersections(k_Accuracy, false, false, &changed);
    EXPECT_TRUE(changed);
    ASSERT_EQ(fixed.size(), 1);
    EXPECT_DOUBLE_EQ(AreaOf(fixed), 1.0);
    EXPECT_EQ(fixed.begin()->GetPolygon().GetEdgeCount(), 3);
    // The same outline with a void in its material lobe keeps the void.
    PolygonWithHoles region(bow);
    region.AddHole(Rect(0.2, 0.9, 0.4, 1.1));
    const PolygonWithHolesCollection cleaned = region.RemoveSelfIntersections(k_Accuracy);
    ASSERT_EQ(cleaned.size(), 1);
    EXPECT_EQ(HoleCount(cleaned), 1);
    EXPECT_NEAR(AreaOf(cleaned), 0.96, 1e-12);
    // Two voids that overlap each other meet the graph once the outline has
    // split into two entries: the union of the voids is taken out of both.
    PolygonWithHoles two(Polygon(std::vector<Point>{Point(0, 0), Point(4, 0), Point(4, 1), Point(2, 1),
                                                    Point(2, 2), Point(4, 2), Point(4, 3), Point(0, 3),
                                                    Point(0, 2), Point(2, 2), Point(2, 1), Point(0, 1)},
                                 false));
    const PolygonWithHolesCollection parts = two.RemoveSelfIntersections(k_Accuracy);
    EXPECT_NEAR(AreaOf(parts), 8.0, 1e-12);
}

TEST(BooleanOperations, ShrinkRoundsReflexCornersAndDropsNarrowNecks)
{
    // An L of two 4 x 1 bars shrunk by 0.25: two 3.5 x 0.5 bars overlapping
    // in a 0.5 square (3.25), and the 0.25 square between them at the inner
    // corner (1, 1) less the quarter disk of radius 0.25 that the corner
    // keeps clear around itself.
    const Polygon ell(
        std::vector<Point>{Point(0, 0), Point(4, 0), Point(4, 1), Point(1, 1), Point(1, 4), Point(0, 4)},
        true);
    const PolygonWithHolesCollection thin = ell.Shrink(Unit(0.25), k_Accuracy, true, 0, k_Unit_0);
    ASSERT_EQ(thin.size(), 1);
    EXPECT_NEAR(AreaOf(thin), 3.25 + 0.0625 - M_PI / 64, 1e-9);
    // Two 4 x 4 pads joined by a neck 0.2 wide: shrunk by 0.5 the neck's
    // offset turns inside out and is dropped, and each pad is a 3 x 3
    // square. The corner arcs of the neck, 0.2 apart, cross each other and
    // leave a small bump on each square (under 0.001 mm2): the offset
    // rounds reflex corners tangentially and keeps what lies between.
    const Polygon dumbbell(std::vector<Point>{Point(0, 0), Point(4, 0), Point(4, 1.9), Point(6, 1.9),
                                              Point(6, 0), Point(10, 0), Point(10, 4), Point(6, 4),
                                              Point(6, 2.1), Point(4, 2.1), Point(4, 4), Point(0, 4)},
                           true);
    const PolygonWithHolesCollection shrunk = dumbbell.Shrink(Unit(0.5), k_Accuracy, true, 0, k_Unit_0);
    ASSERT_EQ(shrunk.size(), 2);
    for (const PolygonWithHoles& r : shrunk)
    {
        EXPECT_GE(r.GetArea().GetValue(), 9.0);
        EXPECT_LT(r.GetArea().GetValue(), 9.001);
        EXPECT_FALSE(r.HasHoles());
    }
}
