// Tests of regions with holes and of the two collections: areas, relations of
// points, polygons and regions, sharing, filtered iteration, and finding the
// entry that holds a loop.
#include "lib/math/geometry/PolygonWithHolesCollection.h"

#include "core/lib/vellum/Assert.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

using namespace geom;

namespace
{
Polygon Rect(double x0, double y0, double x1, double y1)
{
    return Polygon(Box(Point(x0, y0), Point(x1, y1)), k_Unit_0);
}

// A 10 x 10 plane with two square voids.
PolygonWithHoles Plane()
{
    PolygonWithHoles plane(Rect(0, 0, 10, 10));
    plane.AddHole(Rect(2, 2, 4, 4));
    plane.AddHole(Rect(6, 6, 8, 8));
    return plane;
}
} // namespace

TEST(PolygonWithHoles, AreaAndPointRelation)
{
    const PolygonWithHoles plane = Plane();
    EXPECT_EQ(plane.GetArea(), Area(92.0));
    EXPECT_TRUE(plane.HasHoles());
    EXPECT_EQ(plane.GetBBox(), Box(Point(0.0, 0.0), Point(10.0, 10.0)));
    // (Inside and outside are checked on random points below.)
    EXPECT_EQ(plane.GetRelation(Point(4.0, 3.0), 1e-9), k_PointOnBoundary);
    EXPECT_EQ(plane.GetRelation(Point(10.0, 3.0), 1e-9), k_PointOnBoundary);
    // An empty hole is ignored; a hole filling the outline leaves nothing.
    PolygonWithHoles filled(Rect(0, 0, 1, 1));
    filled.AddHole(Polygon());
    EXPECT_FALSE(filled.HasHoles());
    filled.AddHole(Rect(0, 0, 1, 1));
    EXPECT_EQ(filled.GetArea(), k_Area_0);
    // A hole without an outline is refused by the assertion, and kept.
    PolygonWithHoles orphan;
    const unsigned long before = GetFailedAssertCount_G();
    orphan.AddHole(Rect(0, 0, 1, 1));
    EXPECT_EQ(GetFailedAssertCount_G(), before + 1);
}

TEST(PolygonWithHoles, RandomPointsAgreeWithOutlineAndHoles)
{
    // Inside the region exactly when inside the outline and outside every
    // hole, each asked of its own polygon.
    std::mt19937 rng(8);
    std::uniform_real_distribution<double> u(-1, 11);
    PolygonWithHoles plane = Plane();
    plane.AddHole(Polygon(Circle(Point(7.0, 2.5), 1.5)));
    for (int k = 0; k < 2000; ++k)
    {
        const Point p(u(rng), u(rng));
        bool inside = plane.GetPolygon().IsPointInside(p, 1e-9);
        for (const Polygon& hole : plane.GetHoles())
            inside = inside && !hole.IsPointInside(p, 1e-9);
        const PointRelation r = plane.GetRelation(p, 1e-9);
        ASSERT_NE(r, k_PointOnBoundary);
        EXPECT_EQ(r == k_PointInside, inside);
    }
}

TEST(PolygonWithHoles, RelationToPolygons)
{
    const PolygonWithHoles plane = Plane();
    EXPECT_EQ(plane.GetRelation(Rect(0.5, 0.5, 1.5, 1.5), 1e-9), k_OtherInsideThis);
    EXPECT_EQ(plane.GetRelation(Rect(2.5, 2.5, 3.5, 3.5), 1e-9), k_NoIntersection); // in a void
    EXPECT_EQ(plane.GetRelation(Rect(2, 2, 4, 4), 1e-9), k_Crossing);               // the void itself
    EXPECT_EQ(plane.GetRelation(Rect(1, 1, 5, 5), 1e-9), k_Crossing);               // around a void
    EXPECT_EQ(plane.GetRelation(Rect(3, 3, 5, 5), 1e-9), k_Crossing);               // across a void's edge
    EXPECT_EQ(plane.GetRelation(Rect(-1, -1, 11, 11), 1e-9), k_ThisInsideOther);
    EXPECT_EQ(plane.GetRelation(Rect(20, 20, 21, 21), 1e-9), k_NoIntersection);
    EXPECT_EQ(PolygonWithHoles().GetRelation(Rect(0, 0, 1, 1), 1e-9), k_NoIntersection);
}

TEST(PolygonWithHoles, RelationToRegions)
{
    const PolygonWithHoles plane = Plane();
    // Inside the material, away from the voids.
    const PolygonWithHoles patch(Rect(0.5, 0.5, 1.5, 1.5));
    EXPECT_EQ(plane.GetRelation(patch, 1e-9), k_OtherInsideThis);
    EXPECT_EQ(patch.GetRelation(plane, 1e-9), k_ThisInsideOther);
    // Inside a void: apart.
    const PolygonWithHoles island(Rect(2.5, 2.5, 3.5, 3.5));
    EXPECT_EQ(plane.GetRelation(island, 1e-9), k_NoIntersection);
    EXPECT_EQ(island.GetRelation(plane, 1e-9), k_NoIntersection);
    // Around a void: crossing.
    EXPECT_EQ(plane.GetRelation(PolygonWithHoles(Rect(1, 1, 5, 5)), 1e-9), k_Crossing);
    // A ring whose void holds the plane's only void lies in the material.
    PolygonWithHoles one_void(Rect(0, 0, 10, 10));
    one_void.AddHole(Rect(2, 2, 4, 4));
    PolygonWithHoles ring(Rect(1, 1, 5, 5));
    ring.AddHole(Rect(1.5, 1.5, 4.5, 4.5));
    EXPECT_EQ(one_void.GetRelation(ring, 1e-9), k_OtherInsideThis);
    // With a second void elsewhere the voids no longer all lie in the ring's
    // outline, and the answer is the cautious one: crossing.
    EXPECT_EQ(plane.GetRelation(ring, 1e-9), k_Crossing);
    // A region with a void that lies in the plane's material: the voids
    // don't cover each other, so they cross.
    PolygonWithHoles cover(Rect(-1, -1, 11, 11));
    cover.AddHole(Rect(0.5, 0.5, 1.5, 1.5));
    EXPECT_EQ(plane.GetRelation(cover, 1e-9), k_Crossing);
    // A frame whose void spans both of the plane's voids: part of the plane
    // falls in the frame's void, so they cross.
    PolygonWithHoles frame(Rect(-1, -1, 11, 11));
    frame.AddHole(Rect(1.5, 1.5, 8.5, 8.5));
    EXPECT_EQ(plane.GetRelation(frame, 1e-9), k_Crossing);
    EXPECT_EQ(plane.GetRelation(PolygonWithHoles(Rect(20, 0, 21, 1)), 1e-9), k_NoIntersection);
    EXPECT_EQ(plane.GetRelation(PolygonWithHoles(Rect(9, 9, 12, 12)), 1e-9), k_Crossing);
}

TEST(PolygonWithHoles, HoleCandidates)
{
    const PolygonWithHoles plane = Plane();
    // A loop touching the outline that isn't inside a void.
    EXPECT_TRUE(plane.IsHoleCandidate(Rect(0, 0, 1, 1), 1e-9));
    EXPECT_FALSE(plane.IsHoleCandidate(Rect(0.5, 0.5, 1, 1), 1e-9));
    // A loop across the outline but wholly inside a void (one that reaches
    // out of the outline) isn't.
    PolygonWithHoles edge_void(Rect(0, 0, 10, 10));
    edge_void.AddHole(Rect(-1, 4, 2, 6));
    EXPECT_FALSE(edge_void.IsHoleCandidate(Rect(-0.5, 4.5, 1, 5.5), 1e-9));
    EXPECT_TRUE(edge_void.IsHoleCandidate(Rect(-0.5, 3.5, 1, 5.5), 1e-9));
}

TEST(PolygonCollection, SharingAndEditing)
{
    PolygonCollection a(std::vector<Polygon>{Rect(0, 0, 1, 1), Rect(2, 0, 3, 1)});
    PolygonCollection b = a;
    EXPECT_TRUE(a.IsSharedWith(b));
    b.AddPolygon(Rect(4, 0, 5, 1));
    EXPECT_FALSE(a.IsSharedWith(b));
    EXPECT_EQ(a.size(), 2);
    EXPECT_EQ(b.size(), 3);
    EXPECT_EQ(a.GetArea(), Area(2.0));
    EXPECT_EQ(b.GetBBox(), Box(Point(0.0, 0.0), Point(5.0, 1.0)));

    // Replacing an entry of a shared collection copies it first.
    PolygonCollection c = b;
    c.ModifyPolygon(c.begin(), Rect(0, 0, 2, 2));
    EXPECT_EQ(c.GetArea(), Area(6.0));
    EXPECT_EQ(b.GetArea(), Area(3.0));
    EXPECT_EQ(c.GetBBox(), Box(Point(0.0, 0.0), Point(5.0, 2.0)));

    // An empty vector leaves no implementation; adding creates one.
    PolygonCollection empty(std::vector<Polygon>{});
    EXPECT_TRUE(empty.empty());
    EXPECT_EQ(empty.begin(), empty.end());
    EXPECT_EQ(empty.GetBBox(), k_EmptyBox);
    empty.AddPolygon(Rect(0, 0, 1, 1));
    EXPECT_EQ(empty.size(), 1);
    EXPECT_EQ(empty.GetPolygons().size(), 1u);
    // Empty polygons aren't added.
    const unsigned long before = GetFailedAssertCount_G();
    empty.AddPolygon(Polygon());
    EXPECT_EQ(GetFailedAssertCount_G(), before + 1);
    EXPECT_EQ(empty.size(), 1);

    PolygonWithHolesCollection regions;
    regions.AddPolygonWithHoles(Plane());
    PolygonWithHolesCollection shared = regions;
    shared.ModifyPolygonWithHoles(shared.begin(), PolygonWithHoles(Rect(0, 0, 1, 1)));
    EXPECT_EQ(regions.GetArea(), Area(92.0));
    EXPECT_EQ(shared.GetArea(), Area(1.0));
    EXPECT_FALSE(regions.IsSharedWith(shared));
}

TEST(PolygonCollection, FilteredIterationAndRelations)
{
    // A row of 100 unit squares; a filter box over a few of them visits only those.
    std::vector<Polygon> row;
    for (int k = 0; k < 100; ++k)
        row.push_back(Rect(2 * k, 0, 2 * k + 1, 1));
    const PolygonCollection squares(row);
    std::vector<int> hit;
    for (auto i = squares.begin(k_SkipOutside, Box(Point(10.5, 0.5), Point(14.5, 0.6))); i != squares.end();
         ++i)
        hit.push_back(i.GetIndex());
    EXPECT_EQ(hit, (std::vector<int>{5, 6, 7}));
    std::vector<int> outside;
    for (auto i = squares.begin(base::k_SkipInside, Box(Point(-1.0, -1.0), Point(195.5, 2.0)));
         i != squares.end(); ++i)
        outside.push_back(i.GetIndex());
    EXPECT_EQ(outside, (std::vector<int>{98, 99}));
    auto last = squares.end();
    --last;
    EXPECT_EQ(last.GetIndex(), 99);

    // Relations of the collection to a polygon.
    EXPECT_EQ(PolygonCollection().GetRelation(Rect(0, 0, 1, 1), 1e-9), k_NoIntersection);
    EXPECT_EQ(squares.GetRelation(Rect(-1, -1, 300, 2), 1e-9), k_ThisInsideOther);
    EXPECT_EQ(squares.GetRelation(Rect(-1, -1, 50, 2), 1e-9), k_Crossing); // some inside
    EXPECT_EQ(squares.GetRelation(Rect(4.2, 0.2, 4.8, 0.8), 1e-9), k_OtherInsideThis);
    EXPECT_EQ(squares.GetRelation(Rect(4.5, 0.5, 5.5, 0.8), 1e-9), k_Crossing);
    EXPECT_EQ(squares.GetRelation(Rect(1.2, 0.2, 1.8, 0.8), 1e-9), k_NoIntersection); // between two
    EXPECT_EQ(squares.GetRelation(Rect(0, 5, 1, 6), 1e-9), k_NoIntersection);

    PolygonWithHolesCollection planes(std::vector<PolygonWithHoles>{Plane()});
    EXPECT_EQ(planes.GetRelation(Rect(2.5, 2.5, 3.5, 3.5), 1e-9), k_NoIntersection);
    EXPECT_EQ(planes.GetRelation(Rect(0.5, 0.5, 1.5, 1.5), 1e-9), k_OtherInsideThis);
    EXPECT_EQ(planes.GetRelation(Rect(-5, -5, 20, 20), 1e-9), k_ThisInsideOther);
}

TEST(PolygonWithHolesCollection, FindingTheEntryThatHoldsALoop)
{
    // Nested outlines: a frame, an island inside its void, a separate block.
    PolygonWithHoles frame(Rect(0, 0, 20, 20));
    frame.AddHole(Rect(2, 2, 18, 18));
    const PolygonWithHoles island(Rect(5, 5, 15, 15));
    const PolygonWithHoles block(Rect(30, 0, 40, 10));
    const PolygonWithHolesCollection c(std::vector<PolygonWithHoles>{frame, island, block});
    // The innermost holder wins.
    auto i = c.FindEntryHolding(Rect(8, 8, 9, 9), 1e-9, false);
    ASSERT_NE(i, c.end());
    EXPECT_EQ(i.GetIndex(), 1);
    i = c.FindEntryHolding(Rect(32, 2, 33, 3), 1e-9, false);
    ASSERT_NE(i, c.end());
    EXPECT_EQ(i.GetIndex(), 2);
    EXPECT_EQ(c.FindEntryHolding(Rect(0.5, 0.5, 1, 1), 1e-9, false).GetIndex(), 0);
    EXPECT_EQ(c.FindEntryHolding(Rect(50, 50, 51, 51), 1e-9, false), c.end());
    // A loop on the block's border, a hair outside: found only relaxed.
    const Polygon rim = Rect(30 - 1e-13, 2, 31, 3);
    EXPECT_EQ(c.FindEntryHolding(rim, 1e-9, false), c.end());
    i = c.FindEntryHolding(rim, 1e-9, true);
    ASSERT_NE(i, c.end());
    EXPECT_EQ(i.GetIndex(), 2);
}

TEST(PolygonWithHolesCollection, SimplifyingEntries)
{
    // Outlines and holes drawn with collinear extra vertices lose them.
    const std::vector<Point> outline{Point(0.0, 0.0), Point(5.0, 0.0), Point(10.0, 0.0), Point(10.0, 10.0),
                                     Point(0.0, 10.0)};
    const std::vector<Point> hole{Point(2.0, 2.0), Point(2.0, 4.0), Point(3.0, 4.0), Point(4.0, 4.0),
                                  Point(4.0, 2.0)};
    PolygonWithHoles region(Polygon(outline, false));
    region.AddHole(Polygon(hole, true));
    const PolygonWithHolesCollection c(
        std::vector<PolygonWithHoles>{region, PolygonWithHoles(Rect(20, 0, 21, 1))});
    bool changed = false;
    const PolygonWithHolesCollection simple = c.GetSimplified(1e-9, &changed);
    EXPECT_TRUE(changed);
    ASSERT_EQ(simple.size(), 2);
    EXPECT_EQ(simple.begin()->GetPolygon().GetEdgeCount(), 4);
    EXPECT_EQ(simple.begin()->GetHoles().begin()->GetEdgeCount(), 4);
    EXPECT_EQ(simple.GetArea(), c.GetArea());
    simple.GetSimplified(1e-9, &changed);
    EXPECT_FALSE(changed);

    // Shrinking a collection of polygons: each entry in turn.
    const PolygonCollection squares(std::vector<Polygon>{Rect(0, 0, 4, 4), Rect(10, 0, 10.5, 1)});
    const PolygonWithHolesCollection shrunk = squares.Shrink(1.0, 1e-9, true, 0, 0.0, &changed);
    EXPECT_TRUE(changed);
    ASSERT_EQ(shrunk.size(), 1); // the narrow one vanishes
    EXPECT_EQ(shrunk.GetArea(), Area(4.0));
}

TEST(PolygonWithHoles, ShrinkingAPlaneAwayFromItsVoids)
{
    // The outline moves in by d and each void grows by d with round corners:
    // (10 - 2d)^2 - (s^2 + 4 s d + pi d^2) for a void of side s.
    PolygonWithHoles plane(Rect(0, 0, 10, 10));
    plane.AddHole(Rect(2, 2, 4, 4));
    const PolygonWithHolesCollection shrunk = plane.Shrink(0.5, 1e-9, true, 0, 0.0);
    ASSERT_EQ(shrunk.size(), 1);
    EXPECT_EQ(shrunk.begin()->GetHoles().size(), 1);
    EXPECT_NEAR(shrunk.GetArea().GetValue(), 81 - (4 + 4 + k_Pi * 0.25), 1e-9);
    // Through the collection, next to a region without voids.
    const PolygonWithHolesCollection c(
        std::vector<PolygonWithHoles>{plane, PolygonWithHoles(Rect(20, 0, 24, 4))});
    bool changed = false;
    const PolygonWithHolesCollection both = c.Shrink(0.5, 1e-9, true, 0, 0.0, &changed);
    EXPECT_TRUE(changed);
    EXPECT_NEAR(both.GetArea().GetValue(), 81 - (8 + k_Pi * 0.25) + 9, 1e-9);
    c.Shrink(k_Unit_0, 1e-9, true, 0, 0.0, &changed);
    EXPECT_FALSE(changed);
}
