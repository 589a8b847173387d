// Tests of shrinking against answers worked out by hand: pads joined by a
// neck thinner than twice the distance, squares shrunk past half their width,
// planes whose voids grow into each other; and the edge distance that tells
// a true piece from an inverted one, against a dense sampling of both edges.
#include "lib/math/geometry/ArcDistance.h"
#include "lib/math/geometry/Polygon.h"
#include "lib/math/geometry/PolygonWithHolesCollection.h"

#include "core/lib/vellum/Assert.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

using namespace geom;

namespace
{
// Two 4 x 4 pads side by side, 2 apart, joined at mid-height by a neck.
Polygon Dumbbell(double neck)
{
    const double lo = 2 - neck / 2, hi = 2 + neck / 2;
    return Polygon(std::vector<Point>{Point(0, 0), Point(4, 0), Point(4, lo), Point(6, lo), Point(6, 0),
                                      Point(10, 0), Point(10, 4), Point(6, 4), Point(6, hi), Point(4, hi),
                                      Point(4, 4), Point(0, 4)},
                   true);
}

// One pad of the dumbbell shrunk by r: the 3 x 3 square, and where the neck
// met the pad a bump of the points at least r from the neck's two corners
// (half a neck g above and below the middle). At x = 3.5 + d the bump is
// 2 g - 2 sqrt(r^2 - (r - d)^2) tall, up to where that reaches 0.
double ShrunkPadArea(double g, double r)
{
    const double reach = r - std::sqrt(r * r - g * g);
    const auto quarter_disc = [r](double u)
    { return 0.5 * (u * std::sqrt(r * r - u * u) + r * r * std::asin(u / r)); };
    return 9 + 2 * g * reach - 2 * (quarter_disc(r) - quarter_disc(r - reach));
}

// The least distance between points of the two edges, each taken at n
// points along it: an upper bound within a step of the true distance.
double SampledDistance(const Arc& a, const Arc& b, int n)
{
    std::vector<Point> pa, pb;
    a.GetPoints(n, true, pa);
    b.GetPoints(n, true, pb);
    if (a.IsSegment(k_Unit_0, nullptr))
        for (int i = 0; i <= n; ++i)
            pa.push_back(a.GetStart() + (a.GetEnd() - a.GetStart()) * (double(i) / n));
    if (b.IsSegment(k_Unit_0, nullptr))
        for (int i = 0; i <= n; ++i)
            pb.push_back(b.GetStart() + (b.GetEnd() - b.GetStart()) * (double(i) / n));
    double best = 1e300;
    for (const Point& p : pa)
        for (const Point& q : pb)
            best = std::min(
                best, std::hypot(p.m_X.GetValue() - q.m_X.GetValue(), p.m_Y.GetValue() - q.m_Y.GetValue()));
    return best;
}
} // namespace

TEST(PolygonOffset, EveryPieceOfANeckedPolygonIsKept)
{
    // Pads joined by a neck thinner than the pen: shrunk by half the pen the
    // neck is gone and both pads remain, whatever the accuracy, 0 included.
    for (const double neck : {0.6, 0.2})
        for (const double accuracy : {1e-8, 0.0, 1e-6})
        {
            SCOPED_TRACE(testing::Message() << "neck " << neck << " accuracy " << accuracy);
            const unsigned long asserts = GetFailedAssertCount_G();
            const PolygonWithHolesCollection shrunk = Dumbbell(neck).Shrink(0.5, accuracy, true, 0, 0.0);
            ASSERT_EQ(shrunk.size(), 2);
            const double pad = ShrunkPadArea(neck / 2, 0.5);
            for (const PolygonWithHoles& piece : shrunk)
            {
                EXPECT_NEAR(piece.GetArea().GetValue(), pad, 1e-9);
                EXPECT_FALSE(piece.HasHoles());
                const Box box = piece.GetBBox();
                EXPECT_NEAR(std::min(box.GetWidth().GetValue(), box.GetHeight().GetValue()), 3.0, 1e-9);
            }
            EXPECT_LT(shrunk.begin()->GetBBox().GetMaxX().GetValue(), 5.0);
            EXPECT_GT((++shrunk.begin())->GetBBox().GetMinX().GetValue(), 5.0);
            EXPECT_EQ(GetFailedAssertCount_G(), asserts);
        }
    // A neck wider than the pen stays: one piece, the neck 0.2 wide.
    const PolygonWithHolesCollection joined = Dumbbell(1.2).Shrink(0.5, 0.0, true, 0, 0.0);
    ASSERT_EQ(joined.size(), 1);
    EXPECT_GT(joined.GetArea().GetValue(), 18 + 1.0 * 0.2);
}

TEST(PolygonOffset, PartsShrunkPastHalfTheirWidthVanish)
{
    // Past half its width in both directions a square's offset sides swap
    // over and close a smaller square that still turns counter-clockwise; it
    // lies 0.4 from the contour, closer than 0.6, and is no part of the result.
    const Polygon square(Box(Point(0.0, 0.0), Point(1.0, 1.0)), k_Unit_0);
    EXPECT_TRUE(square.Shrink(0.6, 1e-9, true, 0, 0.0).empty());
    EXPECT_TRUE(square.Shrink(0.6, 0.0, true, 0, 0.0).empty());
    EXPECT_NEAR(square.Shrink(0.45, 0.0, true, 0, 0.0).GetArea().GetValue(), 0.01, 1e-12);
    // The same on the pads of a dumbbell: each pad is 4 wide, shrunk by 2.2
    // nothing of it is left, and the neck's offset is inverted too.
    EXPECT_TRUE(Dumbbell(0.6).Shrink(2.2, 1e-8, true, 0, 0.0).empty());
    // A ring of a square frame: shrinking keeps a true piece in each side
    // only while the sides are wider than twice the distance.
    const Polygon frame(std::vector<Point>{Point(0, 0), Point(10, 0), Point(10, 10), Point(0, 10),
                                           Point(0, 1), Point(1, 1), Point(1, 9), Point(9, 9), Point(9, 1),
                                           Point(0, 1)},
                        true);
    const PolygonWithHolesCollection thin = frame.Shrink(0.3, 1e-9, true, 0, 0.0);
    EXPECT_GT(thin.GetArea().GetValue(), 0.0);
    for (const PolygonWithHoles& piece : thin)
        for (const Arc& e : piece.GetPolygon().GetEdges())
            for (const Arc& c : frame.GetEdges())
                EXPECT_GE(GetDistance_G(e, c).GetValue(), 0.3 - 1e-9);
}

TEST(PolygonOffset, GrownVoidsAreTakenAwayOnceAndKeepTheirPockets)
{
    // A 20 x 20 plane with two disks of radius 1, 2.3 apart, and a rounded
    // box far from them, shrunk by 0.25: the outline moves in to 19.5 x 19.5,
    // the disks grow to radius 1.25 and overlap in a lens, the box grows its
    // corner radius to 0.35.
    PolygonWithHoles plane(Polygon(Box(Point(0.0, 0.0), Point(20.0, 20.0)), k_Unit_0));
    plane.AddHole(Polygon(Circle(Point(8.0, 10.0), 1.0)));
    plane.AddHole(Polygon(Circle(Point(10.3, 10.0), 1.0)));
    plane.AddHole(Polygon(Box(Point(3.0, 3.0), Point(4.0, 3.6)), 0.1));
    const double R = 1.25, d = 2.3, r = 0.35;
    const double lens = 2 * R * R * std::acos(d / (2 * R)) - d / 2 * std::sqrt(4 * R * R - d * d);
    const double voids = 2 * M_PI * R * R - lens + (1.0 * 0.6 + 2 * (1.0 + 0.6) * r + M_PI * r * r);
    for (const double accuracy : {1e-9, 0.0})
    {
        const PolygonWithHolesCollection shrunk = plane.Shrink(0.25, accuracy, true, 0, 0.0);
        ASSERT_EQ(shrunk.size(), 1);
        EXPECT_EQ(shrunk.begin()->GetHoles().size(), 2);
        EXPECT_NEAR(shrunk.GetArea().GetValue(), 19.5 * 19.5 - voids, 1e-9);
    }
    // A void shaped as a square frame, [5, 15] around [7, 13], cut through on
    // the right by a slot of copper 0.2 wide. Shrunk by 0.25 the slot is
    // gone, the copper inside the frame is an island of its own, and where
    // the slot met the copper on either side a bump remains as at a
    // dumbbell's neck. Grown, the void closes round the island: the island
    // stays.
    const std::vector<Point> c_void{Point(5, 5),     Point(15, 5),    Point(15, 9.9), Point(13, 9.9),
                                    Point(13, 7),    Point(7, 7),     Point(7, 13),   Point(13, 13),
                                    Point(13, 10.1), Point(15, 10.1), Point(15, 15),  Point(5, 15)};
    PolygonWithHoles framed(Polygon(Box(Point(0.0, 0.0), Point(20.0, 20.0)), k_Unit_0));
    framed.AddHole(Polygon(c_void, true));
    const double bump = ShrunkPadArea(0.1, 0.25) - 9;
    const double grown_frame = 10.5 * 10.5 - (4 - M_PI) * 0.25 * 0.25 - 5.5 * 5.5 - 2 * bump;
    for (const double accuracy : {1e-8, 0.0})
    {
        const PolygonWithHolesCollection shrunk = framed.Shrink(0.25, accuracy, true, 0, 0.0);
        ASSERT_EQ(shrunk.size(), 2);
        EXPECT_NEAR(shrunk.GetArea().GetValue(), 19.5 * 19.5 - grown_frame, 1e-9);
    }
    // Voids all around a narrow web: the web is gone, the region isn't.
    PolygonWithHoles webbed(Polygon(Box(Point(0.0, 0.0), Point(10.0, 4.0)), k_Unit_0));
    for (int k = 0; k < 4; ++k)
        webbed.AddHole(Polygon(Circle(Point(2.0 + 2.05 * k, 2.0), 1.0)));
    const PolygonWithHolesCollection web = webbed.Shrink(0.1, 1e-9, true, 0, 0.0);
    EXPECT_FALSE(web.empty());
    EXPECT_GT(web.GetArea().GetValue(), 0.0);
    EXPECT_LT(web.GetArea().GetValue(), 9.8 * 3.8 - 4 * M_PI * 1.1 * 1.1 + 3 * 0.2);
}

TEST(PolygonOffset, EdgeDistanceAgreesWithDenseSampling)
{
    std::mt19937 random(21);
    const auto uniform = [&](double a, double b)
    { return std::uniform_real_distribution<double>(a, b)(random); };
    const auto edge = [&]()
    {
        const Point a(uniform(-3, 3), uniform(-3, 3)), b(uniform(-3, 3), uniform(-3, 3));
        const double kind = uniform(0, 1);
        if (kind < 0.3)
            return Arc(a, b, k_Unit_0);
        if (kind < 0.4)
            return Arc(Circumference(a, uniform(0.2, 2)), Azimuth(uniform(0, 6)), k_CCW);
        // Heights of both signs, big arcs included.
        const double chord = std::hypot((b - a).GetX().GetValue(), (b - a).GetY().GetValue());
        return Arc(a, b, Unit(chord * uniform(-1.5, 1.5)));
    };
    const int n = 150;
    for (int round = 0; round < 250; ++round)
    {
        const Arc a = edge(), b = edge();
        const double exact = GetDistance_G(a, b).GetValue();
        const double sampled = SampledDistance(a, b, n);
        // Neighbouring samples lie at most a step apart on each edge.
        const double step = (a.GetLength().GetValue() + b.GetLength().GetValue()) / n;
        SCOPED_TRACE(round);
        EXPECT_LE(exact, sampled + 1e-12);
        EXPECT_GE(exact, sampled - step);
        EXPECT_EQ(exact, GetDistance_G(b, a).GetValue());
    }
    // Exact values: parallel segments, a segment over a circle, concentric arcs.
    EXPECT_DOUBLE_EQ(
        GetDistance_G(Arc(Point(0, 0), Point(4, 0), 0.0), Arc(Point(1, 2), Point(3, 2), 0.0)).GetValue(),
        2.0);
    const Arc circle(Circumference(Point(0, 0), 1.0), k_Azimuth_0, k_CCW);
    EXPECT_DOUBLE_EQ(GetDistance_G(Arc(Point(-5, 3), Point(5, 3), 0.0), circle).GetValue(), 2.0);
    EXPECT_DOUBLE_EQ(GetDistance_G(Arc(Point(-5, 0.5), Point(5, 0.5), 0.0), circle).GetValue(), 0.0);
    // Concentric half circles on opposite sides meet the other's span at
    // their ends only: 1 apart there, not on a common radius.
    const Arc upper(Point(2, 0), Point(-2, 0), Unit(-2.0)), lower(Point(-1, 0), Point(1, 0), Unit(-1.0));
    EXPECT_NEAR(GetDistance_G(upper, lower).GetValue(), 1.0, 1e-12);
    const Arc inner_upper(Point(1, 0), Point(-1, 0), Unit(-1.0));
    EXPECT_NEAR(GetDistance_G(upper, inner_upper).GetValue(), 1.0, 1e-12);
    EXPECT_NEAR(GetDistance_G(Point(0, 5), upper).GetValue(), 3.0, 1e-12);
}
