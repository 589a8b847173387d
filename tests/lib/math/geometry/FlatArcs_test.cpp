// Nearly straight arcs: crossings, points on them and the regions they bound.
//
// A sagitta of 1e-8 on a chord of 50 mm puts the centre 3e10 mm away; the
// operations must not take their digits from there. The oracles here are
// independent of the library: the arc's circle in long double arithmetic
// for crossings, and a scanline count of the winding number over the
// contour taken as straight edges (the sagittas, below 1e-7, move the area
// by less than the tolerance) for the regions. Two of the cases are the
// geometry fuzz target's findings, an expansion with less area than its
// polygon and a union and intersection whose areas didn't add up.
#include "core/lib/vellum/Assert.h"
#include "lib/math/geometry/Polygon.h"
#include "lib/math/geometry/PolygonWithHoles.h"
#include "lib/math/geometry/PolygonWithHolesCollection.h"
#include "lib/math/geometry/ScanlineArea.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <random>
#include <vector>

using namespace geom;

namespace
{
const Unit k_Accuracy(1e-6);

// Crossings of an arc's circle with a line, from the centre in long double:
// 64 bits of mantissa keep a centre 1e10 mm away good to 1e-9 mm.
std::vector<std::pair<long double, long double>> GetCircleLineCrossings(const Arc& arc, const Point& p,
                                                                        const Point& q)
{
    using LD = long double;
    const LD sx = arc.GetStart().m_X.GetValue(), sy = arc.GetStart().m_Y.GetValue();
    const LD ex = arc.GetEnd().m_X.GetValue(), ey = arc.GetEnd().m_Y.GetValue();
    const LD h = arc.GetHeight().GetValue();
    const LD mx = (sx + ex) / 2, my = (sy + ey) / 2, dx = ex - sx, dy = ey - sy;
    const LD len = std::sqrt(dx * dx + dy * dy), c = len / 2;
    const LD nx = -dy / len, ny = dx / len;
    // The centre lies on the normal at y0 = (h^2 - c^2) / (2 h).
    const LD y0 = (h * h - c * c) / (2 * h);
    const LD cx = mx + nx * y0, cy = my + ny * y0, r2 = c * c + y0 * y0;
    const LD px = p.m_X.GetValue(), py = p.m_Y.GetValue();
    const LD vx = q.m_X.GetValue() - px, vy = q.m_Y.GetValue() - py;
    const LD a = vx * vx + vy * vy, b = 2 * ((px - cx) * vx + (py - cy) * vy);
    const LD k = (px - cx) * (px - cx) + (py - cy) * (py - cy) - r2;
    const LD disc = b * b - 4 * a * k;
    std::vector<std::pair<LD, LD>> ret;
    if (disc < 0)
        return ret;
    for (const LD sign : {-1.0L, 1.0L})
    {
        const LD t = (-b + sign * std::sqrt(disc)) / (2 * a);
        if (t >= 0 && t <= 1)
            ret.emplace_back(px + vx * t, py + vy * t);
    }
    return ret;
}
} // namespace

TEST(FlatArcs, PointsOnANearlyStraightArcAreOnIt)
{
    // The middle of the arc, its points at a quarter and three quarters, all
    // within a nanometre; a point a micrometre off the middle is not on it.
    std::mt19937 random(7);
    std::uniform_real_distribution<double> coordinate(-100, 100), exponent(-12, -3);
    for (int i = 0; i < 2000; ++i)
    {
        const Point a(coordinate(random), coordinate(random)), b(coordinate(random), coordinate(random));
        const double chord = std::sqrt(a.GetDistanceSquareTo(b).GetValue());
        if (chord < 1)
            continue;
        const double sign = i % 2 ? 1.0 : -1.0;
        const Arc arc(a, b, Unit(sign * chord * std::pow(10.0, exponent(random))));
        const Unit nanometre(1e-9);
        EXPECT_TRUE(arc.IntersectsWith(arc.GetMiddle(), nanometre))
            << i << " sagitta " << arc.GetHeight().GetValue();
        EXPECT_TRUE(arc.IntersectsWith(arc.GetPointAt(0.25), nanometre)) << i;
        EXPECT_TRUE(arc.IntersectsWith(arc.GetPointAt(0.75), nanometre)) << i;
        EXPECT_TRUE(arc.GetBBox().Contains(arc.GetMiddle(), nanometre)) << i;
        const Point off = arc.GetMiddle() + (b - a).GetPerpendicular(Unit(1e-6));
        EXPECT_FALSE(arc.IntersectsWith(off, nanometre)) << i;
        // Positions and points along the arc agree.
        EXPECT_NEAR(arc.GetPosition(arc.GetPointAt(0.3), nanometre), 0.3, 1e-9) << i;
    }
}

TEST(FlatArcs, CrossingsWithSegmentsAndArcsAreFound)
{
    // A segment across a nearly straight arc, and a pad's arc across it:
    // each crossing found, within a nanometre of the long double answer.
    std::mt19937 random(11);
    std::uniform_real_distribution<double> coordinate(-60, 60), exponent(-11, -4), unit(0, 1);
    int checked = 0;
    for (int i = 0; i < 3000; ++i)
    {
        const Point a(coordinate(random), coordinate(random)), b(coordinate(random), coordinate(random));
        const double chord = std::sqrt(a.GetDistanceSquareTo(b).GetValue());
        if (chord < 1)
            continue;
        const Arc arc(a, b, Unit((i % 2 ? 1.0 : -1.0) * chord * std::pow(10.0, exponent(random))));
        // A segment through a point of the arc, at a random angle.
        const Point on = arc.GetPointAt(0.05 + 0.9 * unit(random));
        const double angle = 0.2 + 2.7 * unit(random), reach = 1 + 20 * unit(random);
        const Vector along(Unit(std::cos(angle) * reach), Unit(std::sin(angle) * reach));
        const Vector chord_dir = (b - a) * (1.0 / chord);
        const Vector v(
            chord_dir.GetX() * along.GetX().GetValue() - chord_dir.GetY() * along.GetY().GetValue(),
            chord_dir.GetY() * along.GetX().GetValue() + chord_dir.GetX() * along.GetY().GetValue());
        const Point p = on - v * unit(random), q = p + v;
        const auto expected = GetCircleLineCrossings(arc, p, q);
        const Arc segment(p, q, k_Unit_0);
        const ArcIntersections found = arc.GetIntersections(segment, k_Accuracy);
        ASSERT_TRUE(found.first.m_Success) << "case " << i;
        EXPECT_TRUE(arc.IntersectsWith(Segment(p, q), k_Accuracy)) << i;
        // The long double centre is good to about 1e-19 of the radius.
        const double radius = arc.GetRadius().GetValue();
        double best = 1e300;
        for (const auto& e : expected)
            best = std::min(
                best,
                std::hypot(static_cast<double>(e.first) - found.first.m_Value.GetStart().m_X.GetValue(),
                           static_cast<double>(e.second) - found.first.m_Value.GetStart().m_Y.GetValue()));
        EXPECT_LT(best, 1e-9 + 1e-18 * radius) << "case " << i;
        ++checked;
        // A round pad's arc through the same point crosses it too.
        const Polygon pad(Circle(on + v.GetPerpendicular(Unit(0.5)), Unit(0.5)));
        const ArcIntersections with_pad = arc.GetIntersections(pad.GetFirstEdge(), k_Accuracy);
        EXPECT_TRUE(with_pad.first.m_Success) << "pad case " << i;
    }
    EXPECT_GT(checked, 1000);
}

TEST(FlatArcs, SelfCrossingThroughAFlatArcIsResolved)
{
    // The geometry fuzz finding: the closing edge crosses an arc of sagitta
    // 1e-7 on a chord of 68 mm. The crossing was lost, the contour came out
    // of RemoveSelfIntersections with two lobes over each other, and its
    // expansion by 1 um seemed to lose 833 mm^2.
    const std::vector<RawEdge> raw = {
        {-43.566521070357823, -37.419678201810086, -43.816966778394928, -37.300758197520885,
         1.2501716639963372e-08},
        {-43.816966778394928, -37.300758197520885, -62.062946611400548, 9.0258018936546236, 0},
        {-62.062946611400548, 9.0258018936546236, -91.568917568737632, -52.106040866281511,
         9.9999999999999995e-08},
        {-91.568917568737632, -52.106040866281511, -32.940535678193982, -86.317403865398489,
         9.9999999999999995e-08},
        {-32.940535678193982, -86.317403865398489, 5.7652949333807015, -30.553946314517908,
         9.9221789883268476e-08},
        {5.7652949333807015, -30.553946314517908, -46.789438018804319, 12.407717592799401,
         -5.0774395361257341e-08},
        {-46.789438018804319, 12.407717592799401, -93.742062277672687, -36.614273355817723, 0},
        {-93.742062277672687, -36.614273355817723, -43.566521070357823, -37.419678201810086, 0}};
    // The contour runs clockwise: its region is where it winds -1 or less.
    const double expected = GetScanlineArea(
        {raw}, [&](double x, double y) { return GetWinding(raw, x, y) != 0; }, 20000);
    const unsigned long before = GetFailedAssertCount_G();
    const PolygonWithHolesCollection simple =
        Polygon(ToArcs(raw), true).RemoveSelfIntersections(k_Accuracy, true, true, nullptr);
    ASSERT_EQ(simple.size(), 1);
    const Polygon a = simple.begin()->GetPolygon();
    EXPECT_NEAR(a.GetArea().GetValue(), expected, 1e-3);
    for (const double by : {0.001, 0.5, 3.0})
    {
        const PolygonWithHolesCollection grown = a.Expand(Unit(by), k_Accuracy, true, 0, k_Unit_0);
        EXPECT_GT(grown.GetArea().GetValue(), a.GetArea().GetValue()) << by;
        const PolygonWithHolesCollection shrunk = a.Shrink(Unit(by), k_Accuracy, true, 0, k_Unit_0);
        EXPECT_LT(shrunk.GetArea().GetValue(), a.GetArea().GetValue()) << by;
    }
    EXPECT_EQ(GetFailedAssertCount_G(), before);
}

TEST(FlatArcs, UnionAndIntersectionOfAFlatArcQuadrangleAddUp)
{
    // The other fuzz finding: a quadrangle of three arcs of sagitta 2e-8 and
    // a thin star across its lower side. Points near the flat sides were
    // judged from centres 1e10 mm away; the intersection came back empty.
    const std::vector<RawEdge> a = {
        {-57.899276806077175, 40.132370932914284, -76.286373257991258, -4.4712956314259653,
         2.1568627450980402e-08},
        {-76.286373257991258, -4.4712956314259653, -28.436628190981423, -10.633623433239375,
         2.1568627450980402e-08},
        {-28.436628190981423, -10.633623433239375, -34.922626861209459, 37.173323846048774,
         2.1568627450980402e-08},
        {-34.922626861209459, 37.173323846048774, -57.899276806077175, 40.132370932914284, 0}};
    const std::vector<RawEdge> b = {
        {-28.59525762489017, -8.6147844121398123, -33.232288955564705, -2.9892748949977701, 0},
        {-33.232288955564705, -2.9892748949977701, -42.197217554955593, -10.184169461968727, 0},
        {-42.197217554955593, -10.184169461968727, -53.184278485826951, 6.8240473632711875, 0},
        {-53.184278485826951, 6.8240473632711875, -43.619105351445171, -16.273606171415619, 0},
        {-43.619105351445171, -16.273606171415619, -43.619149978972871, -16.273628707231151, 0},
        {-43.619149978972871, -16.273628707231151, -43.61919342440644, -16.27365344532954, 0},
        {-43.61919342440644, -16.27365344532954, -43.619235579154925, -16.273680323878427, 0},
        {-43.619235579154925, -16.273680323878427, -43.619276337853407, -16.273709275695435, 0},
        {-43.619276337853407, -16.273709275695435, -43.619315598626365, -16.273740228416106, 0},
        {-43.619315598626365, -16.273740228416106, -28.59525762489017, -8.6147844121398123, 0}};
    const auto in = [](const std::vector<RawEdge>& c)
    { return [&c](double x, double y) { return GetWinding(c, x, y) != 0; }; };
    const double expected_common = GetScanlineArea(
        {a, b}, [&](double x, double y) { return in(a)(x, y) && in(b)(x, y); }, 20000);
    const double expected_union = GetScanlineArea(
        {a, b}, [&](double x, double y) { return in(a)(x, y) || in(b)(x, y); }, 20000);
    const Polygon pa(ToArcs(a), true), pb(ToArcs(b), true);
    const unsigned long before = GetFailedAssertCount_G();
    const double united = pa.Unite(pb, k_Accuracy).GetArea().GetValue();
    const double common = PolygonWithHoles(pa).Intersect(pb, k_Accuracy).GetArea().GetValue();
    const double rest = pa.Subtract(pb, k_Accuracy).GetArea().GetValue();
    EXPECT_NEAR(common, expected_common, 1e-3);
    EXPECT_NEAR(united, expected_union, 1e-3);
    EXPECT_NEAR(united + common, pa.GetArea().GetValue() + pb.GetArea().GetValue(), 1e-6);
    EXPECT_NEAR(rest, pa.GetArea().GetValue() - common, 1e-6);
    EXPECT_EQ(GetFailedAssertCount_G(), before);
}
