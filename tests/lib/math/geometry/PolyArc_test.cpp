// Tests of arc chains: construction rules, sharing, filtered iteration against
// brute force, contact and intersection search, the circle test, the point
// list, joining of adjacent edges and offsets (areas checked by formula).
#include "lib/math/geometry/PolyArc.h"

#include "core/lib/vellum/Assert.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <set>

using namespace geom;

namespace
{
std::vector<Arc> Square(double x0, double y0, double side)
{
    const Point a(x0, y0), b(x0 + side, y0), c(x0 + side, y0 + side), d(x0, y0 + side);
    return {Arc(a, b, 0.0), Arc(b, c, 0.0), Arc(c, d, 0.0), Arc(d, a, 0.0)};
}

// A long wavy closed contour around the origin: spatially coherent, as
// contours read from a design are.
std::vector<Arc> Wavy(int n, std::mt19937& rng)
{
    std::uniform_real_distribution<double> u(-0.5, 0.5);
    std::vector<Point> v;
    for (int i = 0; i < n; ++i)
    {
        const double t = 2 * k_Pi * i / n;
        const double r = 10 + u(rng);
        v.push_back(Point(r * std::cos(t), r * std::sin(t)));
    }
    std::vector<Arc> arcs;
    for (int i = 0; i < n; ++i)
    {
        const Point& a = v[i];
        const Point& b = v[(i + 1) % n];
        arcs.push_back(
            Arc(a, b, (i % 3 == 0) ? 0.0 : u(rng) * 0.2 * std::sqrt(a.GetDistanceSquareTo(b).GetValue())));
    }
    return arcs;
}

// Whether some point of the arc, sampled densely, lies in the box: the
// independent view of "the arc touches the box".
bool SampledArcInBox(const Arc& arc, const Box& box)
{
    std::vector<Point> pts;
    arc.GetPoints(100, true, pts);
    for (const Point& p : pts)
        if (box.Contains(p))
            return true;
    return false;
}
} // namespace

TEST(PolyArc, ConstructionRules)
{
    // Sequences: gaps are invalid, an empty vector is valid, closing is exact.
    EXPECT_TRUE(IsPolyArcSequence_G({}, k_Closed));
    EXPECT_TRUE(IsPolyArcSequence_G(Square(0, 0, 1), k_Closed));
    std::vector<Arc> open = Square(0, 0, 1);
    open.pop_back();
    EXPECT_TRUE(IsPolyArcSequence_G(open, k_Open));
    EXPECT_FALSE(IsPolyArcSequence_G(open, k_Closed));
    std::vector<Arc> gap = open;
    gap[1] = Arc(Point(1.0, 1e-12), Point(1.0, 1.0), 0.0);
    EXPECT_FALSE(IsPolyArcSequence_G(gap, k_Open));

    // Points: a closing edge only when closed and the ends differ; one point
    // is a point edge in either mode.
    const std::vector<Point> tri{Point(0.0, 0.0), Point(2.0, 0.0), Point(0.0, 2.0)};
    EXPECT_EQ(PolyArc(k_Closed, tri).GetEdgeCount(), 3);
    EXPECT_EQ(PolyArc(k_Open, tri).GetEdgeCount(), 2);
    std::vector<Point> repeated = tri;
    repeated.push_back(tri.front());
    EXPECT_EQ(PolyArc(k_Closed, repeated).GetEdgeCount(), 3);
    const PolyArc one(k_Closed, std::vector<Point>{Point(3.0, 4.0)});
    ASSERT_EQ(one.GetEdgeCount(), 1);
    EXPECT_TRUE(one.GetFirstEdge().IsPoint(k_Unit_0, nullptr));
    EXPECT_EQ(PolyArc(k_Open, std::vector<Point>{Point(3.0, 4.0)}).GetEdgeCount(), 1);

    // A closed segment goes there and back, enclosing nothing.
    const PolyArc seg(k_Closed, Segment(Point(0.0, 0.0), Point(3.0, 1.0)));
    ASSERT_EQ(seg.GetEdgeCount(), 2);
    EXPECT_EQ(seg.GetEdges()[1], Arc(Point(3.0, 1.0), Point(0.0, 0.0), 0.0));
    EXPECT_EQ(seg.GetSignedArea(), k_Area_0);
    EXPECT_EQ(seg.GetDirection(), k_NoDirection);
    EXPECT_EQ(PolyArc(k_Open, Segment(Point(0.0, 0.0), Point(3.0, 1.0))).GetEdgeCount(), 1);

    // A closed half circle returns along its reverse; a full circle is one edge.
    const Arc half(Point(-1.0, 0.0), Point(1.0, 0.0), 1.0);
    EXPECT_EQ(PolyArc(k_Closed, half).GetEdgeCount(), 2);
    EXPECT_NEAR(PolyArc(k_Closed, half).GetSignedArea().GetValue(), 0.0, 1e-15);

    const PolyArc ccw(Circumference(Point(5.0, 5.0), 1.0), k_CCW, k_Azimuth_90);
    const PolyArc cw(Circumference(Point(5.0, 5.0), 1.0), k_CW, k_Azimuth_90);
    ASSERT_EQ(ccw.GetEdgeCount(), 1);
    EXPECT_EQ(ccw.GetFirstVertex(), Point(5.0, 6.0));
    EXPECT_NEAR(ccw.GetSignedArea().GetValue(), k_Pi, 1e-14);
    EXPECT_NEAR(cw.GetSignedArea().GetValue(), -k_Pi, 1e-14);
    EXPECT_EQ(ccw.GetDirection(), k_CCW);
    EXPECT_EQ(cw.GetDirection(), k_CW);
    const PolyArc dot(Circumference(Point(5.0, 5.0), 0.0), k_CCW, k_Azimuth_0);
    ASSERT_EQ(dot.GetEdgeCount(), 1);
    EXPECT_TRUE(dot.GetFirstEdge().IsPoint(k_Unit_0, nullptr));

    // Null and empty chains are equal; the same edges in another mode aren't.
    EXPECT_EQ(PolyArc(), PolyArc(k_Open));
    EXPECT_NE(PolyArc(k_Open, open), PolyArc(k_Closed, open));

    // Reversal: the reversed edges in reverse order.
    const PolyArc a(k_Closed, Square(0, 0, 2));
    const PolyArc r = a.GetReversed();
    EXPECT_EQ(r.GetFirstEdge(), Square(0, 0, 2).back().GetReversed());
    EXPECT_EQ(r.GetReversed(), a);

    // The box of a bulging edge is the tight box of the arc, not of its chord.
    const PolyArc bulge(k_Closed, Arc(Point(-1.0, 0.0), Point(1.0, 0.0), 1.0));
    EXPECT_EQ(bulge.GetBBox(), Box(Point(-1.0, 0.0), Point(1.0, 1.0)));
}

TEST(PolyArc, CopiesShareUntilWritten)
{
    PolyArc a(k_Open, std::vector<Point>{Point(0.0, 0.0), Point(1.0, 0.0)});
    PolyArc b = a;
    EXPECT_TRUE(a.IsSharedWith(b));
    b.Append(Arc(Point(1.0, 0.0), Point(1.0, 1.0), 0.0));
    EXPECT_FALSE(a.IsSharedWith(b));
    EXPECT_EQ(a.GetEdgeCount(), 1);
    EXPECT_EQ(b.GetEdgeCount(), 2);
    EXPECT_EQ(b.GetLastVertex(), Point(1.0, 1.0));
    // Iterators of the original stay on the original.
    int count = 0;
    for (const Arc& e : a)
    {
        (void)e;
        ++count;
    }
    EXPECT_EQ(count, 1);
    // A unique owner writes in place.
    PolyArc c(k_Open, std::vector<Point>{Point(0.0, 0.0), Point(1.0, 0.0)});
    c.Append(Arc(Point(1.0, 0.0), Point(2.0, 0.0), 0.0));
    EXPECT_EQ(c.GetEdgeCount(), 2);

    // Appending to a closed chain is refused behind the assertion.
    PolyArc closed(k_Closed, Square(0, 0, 1));
    const unsigned long before = GetFailedAssertCount_G();
    closed.Append(Arc(Point(0.0, 0.0), Point(5.0, 5.0), 0.0));
    EXPECT_EQ(GetFailedAssertCount_G(), before + 1);
    EXPECT_EQ(closed.GetEdgeCount(), 4);
}

TEST(PolyArc, WrappingIterators)
{
    const PolyArc closed(k_Closed, Square(0, 0, 1));
    const PolyArc::const_iterator first = closed.begin();
    EXPECT_EQ(*first.GetPreviousWrapped(), closed.GetLastEdge());
    EXPECT_EQ(closed.GetNth(3).GetNextWrapped(), first);
    EXPECT_EQ(closed.GetNth(2).GetIndex(), 2);
    std::vector<Arc> edges = Square(0, 0, 1);
    edges.pop_back();
    const PolyArc open(k_Open, edges);
    EXPECT_EQ(open.GetNth(1).GetNextWrapped().GetIndex(), 2);
    const unsigned long before = GetFailedAssertCount_G();
    EXPECT_EQ(open.begin().GetPreviousWrapped(), open.end());
    EXPECT_EQ(GetFailedAssertCount_G(), before + 1);
}

TEST(PolyArc, FilteredIterationMatchesBruteForce)
{
    std::mt19937 rng(5);
    std::uniform_real_distribution<double> u(-12, 12);
    const std::vector<Arc> arcs = Wavy(500, rng);
    const PolyArc chain(k_Closed, arcs);
    for (int round = 0; round < 80; ++round)
    {
        const Point a(u(rng), u(rng));
        const Box box(a, a + Vector(u(rng) * 0.2, u(rng) * 0.2));
        std::vector<int> outside_skipped, inside_skipped;
        for (auto i = chain.begin(k_SkipOutside, box); i != chain.end(); ++i)
            outside_skipped.push_back(i.GetIndex());
        for (auto i = chain.begin(base::k_SkipInside, box); i != chain.end(); ++i)
            inside_skipped.push_back(i.GetIndex());
        std::vector<int> touching, straying;
        for (int k = 0; k < static_cast<int>(arcs.size()); ++k)
        {
            if (!box.Contains(arcs[k].GetBBox()))
                straying.push_back(k);
            if (SampledArcInBox(arcs[k], box))
                touching.push_back(k);
        }
        // Sampling can miss a graze of the box; it can't invent a touch.
        for (int k : touching)
            EXPECT_TRUE(std::find(outside_skipped.begin(), outside_skipped.end(), k) != outside_skipped.end())
                << "round " << round << " edge " << k;
        for (int k : outside_skipped)
            EXPECT_TRUE(arcs[k].GetBBox().IntersectsWith(box));
        EXPECT_EQ(inside_skipped, straying);
        EXPECT_TRUE(std::is_sorted(outside_skipped.begin(), outside_skipped.end()));
    }
    // Backwards from the last match gives the same set in reverse.
    const Box box(Point(-12.0, -1.0), Point(12.0, 1.0));
    std::vector<int> forward, backward;
    for (auto i = chain.begin(k_SkipOutside, box); i != chain.end(); ++i)
        forward.push_back(i.GetIndex());
    for (auto i = chain.GetLast(k_SkipOutside, box); i.IsDereferenceable(); --i)
        backward.insert(backward.begin(), i.GetIndex());
    EXPECT_EQ(forward, backward);
    EXPECT_FALSE(forward.empty());
}

TEST(PolyArc, ContactAndIntersectionsMatchAllPairs)
{
    std::mt19937 rng(11);
    std::uniform_real_distribution<double> u(-3, 3);
    const std::vector<Arc> arcs = Wavy(300, rng);
    const PolyArc chain(k_Closed, arcs);
    for (int round = 0; round < 60; ++round)
    {
        // A small random chain somewhere over the contour's rim.
        const double t = 2 * k_Pi * round / 60;
        const Point c(10 * std::cos(t) + u(rng) * 0.3, 10 * std::sin(t) + u(rng) * 0.3);
        std::vector<Arc> small;
        Point p = c;
        for (int k = 0; k < 4; ++k)
        {
            const Point q = p + Vector(u(rng) * 0.3, u(rng) * 0.3);
            small.push_back(Arc(p, q, u(rng) * 0.05));
            p = q;
        }
        const PolyArc other(k_Open, small);
        size_t pairs = 0;
        bool any = false;
        for (const Arc& a : arcs)
            for (const Arc& b : small)
            {
                const ArcIntersections found = a.GetIntersections(b, 1e-9);
                pairs += found.first.m_Success + found.second.m_Success;
                any = any || a.IntersectsWith(b, 1e-9);
            }
        const std::vector<PolyArc::Intersection> meetings = chain.GetIntersections(other, 1e-9);
        EXPECT_EQ(meetings.size(), pairs) << "round " << round;
        EXPECT_EQ(chain.IntersectsWith(other, 1e-9), any) << "round " << round;
        EXPECT_EQ(other.IntersectsWith(chain, 1e-9), any) << "round " << round;
        for (const PolyArc::Intersection& m : meetings)
        {
            EXPECT_TRUE(m.m_This->IntersectsWith(m.m_Intersection.GetStart(), 1e-7));
            EXPECT_TRUE(m.m_Other->IntersectsWith(m.m_Intersection.GetStart(), 1e-7));
            EXPECT_EQ(m.m_SameDirection, m.m_This->IsSameDirection(*m.m_Other));
        }
        const Segment s(c, c + Vector(u(rng), u(rng)));
        bool segment_hit = false;
        for (const Arc& a : arcs)
            segment_hit = segment_hit || a.IntersectsWith(s, 1e-9);
        EXPECT_EQ(chain.IntersectsWith(s, 1e-9), segment_hit);
    }
    // Points: every vertex is on the chain, a point off by more than the
    // accuracy is not.
    for (const Arc& a : arcs)
    {
        EXPECT_TRUE(chain.IntersectsWith(a.GetStart(), k_Unit_0));
        EXPECT_TRUE(chain.IntersectsWith(a.GetMiddle(), 1e-9));
    }
    EXPECT_FALSE(chain.IntersectsWith(Point(0.0, 0.0), 1.0));
    EXPECT_FALSE(chain.IntersectsWith(Point(30.0, 0.0), 1.0));
}

TEST(PolyArc, CircleTest)
{
    // A circle cut into four quarter arcs is still one circle.
    const Circumference circle(Point(2.0, 3.0), 1.5);
    std::vector<Arc> quarters;
    for (int k = 0; k < 4; ++k)
        quarters.push_back(
            Arc(circle, Azimuth(90.0 * k, k_Degrees), Azimuth(90.0 * (k + 1), k_Degrees), k_CCW));
    quarters.back() =
        Arc(quarters.back().GetStart(), quarters.front().GetStart(), quarters.back().GetHeight());
    Circumference found;
    ASSERT_TRUE(PolyArc(k_Closed, quarters).IsCircle(1e-9, &found));
    EXPECT_NEAR(found.GetRadius().GetValue(), 1.5, 1e-12);
    EXPECT_TRUE(found.GetCenter().IsEqualTo(Point(2.0, 3.0), 1e-12));

    // Turning the other way on one piece, a flat piece, or an open chain with
    // a gap: no circle.
    std::vector<Arc> mixed = quarters;
    mixed[1] = Arc(mixed[1].GetStart(), mixed[1].GetEnd(), -mixed[1].GetHeight());
    EXPECT_FALSE(PolyArc(k_Closed, mixed).IsCircle(1e-9, nullptr));
    std::vector<Arc> flat = quarters;
    flat[2] = Arc(flat[2].GetStart(), flat[2].GetEnd(), 0.0);
    EXPECT_FALSE(PolyArc(k_Closed, flat).IsCircle(1e-9, nullptr));
    std::vector<Arc> three(quarters.begin(), quarters.end() - 1);
    EXPECT_FALSE(PolyArc(k_Open, three).IsCircle(1e-9, nullptr));
    // A slightly larger piece passes at a coarse accuracy only.
    std::vector<Arc> bumpy = quarters;
    bumpy[0] = Arc(bumpy[0].GetStart(), bumpy[0].GetEnd(), bumpy[0].GetHeight() * 1.001);
    EXPECT_FALSE(PolyArc(k_Closed, bumpy).IsCircle(1e-9, nullptr));
    EXPECT_TRUE(PolyArc(k_Closed, bumpy).IsCircle(1e-2, nullptr));

    EXPECT_TRUE(PolyArc(circle, k_CW, k_Azimuth_0).IsCircle(0.0, nullptr));
    EXPECT_FALSE(PolyArc().IsCircle(1.0, nullptr));
    EXPECT_FALSE(PolyArc(k_Closed, Square(0, 0, 1)).IsCircle(1.0, nullptr));
    EXPECT_TRUE(PolyArc(k_Closed, quarters).HasCurvedEdge());
    EXPECT_FALSE(PolyArc(k_Closed, Square(0, 0, 1)).HasCurvedEdge());
}

TEST(PolyArc, PointList)
{
    const PolyArc circle(Circumference(Point(0.0, 0.0), 2.0), k_CCW, k_Azimuth_0);
    const std::vector<Point> pts = circle.GetPoints(k_Degree_90, true, 100);
    ASSERT_EQ(pts.size(), 5u);
    EXPECT_EQ(pts.front(), pts.back());
    EXPECT_TRUE(pts[1].IsEqualTo(Point(0.0, 2.0), 1e-12));
    EXPECT_TRUE(pts[2].IsEqualTo(Point(-2.0, 0.0), 1e-12));
    EXPECT_EQ(circle.GetPoints(k_Degree_90, false, 100).size(), 4u);
    // Every point of a finer list lies on the circle.
    for (const Point& p : circle.GetPoints(Angle(7.0, k_Degrees), false, 1000))
        EXPECT_NEAR(std::sqrt(p.GetDistanceSquareTo(k_Point_0).GetValue()), 2.0, 1e-12);
    EXPECT_EQ(circle.GetPoints(Angle(7.0, k_Degrees), false, 1000).size(), 52u); // ceil(360 / 7)

    // Straight edges give their starts; the count limit cuts the list.
    const PolyArc square(k_Closed, Square(0, 0, 1));
    EXPECT_EQ(square.GetPoints(k_Degree_45, false, 100).size(), 4u);
    EXPECT_EQ(square.GetPoints(k_Degree_45, true, 100).size(), 5u);
    EXPECT_EQ(square.GetPoints(k_Degree_45, true, 3).size(), 3u);
    std::vector<Arc> open = Square(0, 0, 1);
    open.pop_back();
    EXPECT_EQ(PolyArc(k_Open, open).GetPoints(k_Degree_45, false, 100).size(), 3u);
    EXPECT_EQ(PolyArc(k_Open, open).GetPoints(k_Degree_45, true, 100).size(), 4u);
    EXPECT_THROW(square.GetPoints(k_Degree_45, true, -1), Exception);
}

TEST(PolyArc, MergeOfTwoEdges)
{
    // Collinear straight edges merge; a spike (the second returning along the
    // first) doesn't, nor does a real corner.
    const Point a(0.0, 0.0), b(1.0, 0.0), c(3.0, 0.0);
    const ArcMerge line = MergeArcs_G(Arc(a, b, 0.0), Arc(b, c, 0.0), 1e-9);
    ASSERT_TRUE(line.m_Success);
    EXPECT_EQ(line.m_Arc, Arc(a, c, 0.0));
    EXPECT_FALSE(MergeArcs_G(Arc(a, c, 0.0), Arc(c, b, 0.0), 1e-9).m_Success);
    EXPECT_FALSE(MergeArcs_G(Arc(a, b, 0.0), Arc(b, Point(1.0, 1.0), 0.0), 1e-9).m_Success);
    // A vertex 1e-6 off the line merges at 1e-5, not at 1e-7.
    const Point bent(1.0, 1e-6);
    EXPECT_TRUE(MergeArcs_G(Arc(a, bent, 0.0), Arc(bent, c, 0.0), 1e-5).m_Success);
    EXPECT_FALSE(MergeArcs_G(Arc(a, bent, 0.0), Arc(bent, c, 0.0), 1e-7).m_Success);

    // Two pieces of one circle merge into the arc over both.
    const Circumference circle(Point(0.0, 0.0), 1.0);
    const Arc first(circle, k_Azimuth_0, Azimuth(50.0, k_Degrees), k_CCW);
    const Arc second(circle, Azimuth(50.0, k_Degrees), Azimuth(130.0, k_Degrees), k_CCW);
    const Arc second_joined(first.GetEnd(), second.GetEnd(), second.GetHeight());
    const ArcMerge arc = MergeArcs_G(first, second_joined, 1e-9);
    ASSERT_TRUE(arc.m_Success);
    EXPECT_NEAR(arc.m_Arc.GetRadius().GetValue(), 1.0, 1e-12);
    EXPECT_NEAR(arc.m_Arc.GetAngle().GetValue(k_Degrees), 130.0, 1e-9);
    EXPECT_LE(arc.m_Deviation, Unit(1e-9));
    // Pieces of two different circles don't.
    const Arc other_circle(first.GetEnd(), second.GetEnd(), second.GetHeight() * 1.5);
    EXPECT_FALSE(MergeArcs_G(first, other_circle, 1e-6).m_Success);
}

TEST(PolyArc, JoiningSplitEdgesRestoresTheContour)
{
    // Random contours with every edge split in two pieces at random: joining
    // gives back a contour of the same area with no more edges than before.
    std::mt19937 rng(3);
    std::uniform_real_distribution<double> u(0.2, 0.8);
    for (int round = 0; round < 100; ++round)
    {
        const std::vector<Arc> arcs = Wavy(12, rng);
        std::vector<Arc> split;
        for (const Arc& a : arcs)
        {
            const double t = u(rng);
            const Arc head = a.GetSubArc(0.0, t);
            split.push_back(head);
            split.push_back(Arc(head.GetEnd(), a.GetEnd(), a.GetSubArc(t, 1.0).GetHeight()));
        }
        const Result_T<std::vector<Arc>> joined = JoinAdjacentArcs_G(split, k_Closed, 1e-7);
        ASSERT_TRUE(IsPolyArcSequence_G(joined.m_Value, k_Closed));
        EXPECT_TRUE(joined.m_Success);
        EXPECT_LE(joined.m_Value.size(), arcs.size());
        EXPECT_NEAR(PolyArc(k_Closed, joined.m_Value).GetSignedArea().GetValue(),
                    PolyArc(k_Closed, arcs).GetSignedArea().GetValue(), 1e-5);
    }
    // A contour without mergeable neighbours comes back unchanged.
    const Result_T<std::vector<Arc>> same = JoinAdjacentArcs_G(Square(0, 0, 1), k_Closed, 1e-9);
    EXPECT_FALSE(same.m_Success);
    EXPECT_EQ(same.m_Value, Square(0, 0, 1));
    // The seam of a closed chain is joined too: a square whose first edge
    // starts mid-side.
    std::vector<Point> v{Point(0.5, 0.0), Point(1.0, 0.0), Point(1.0, 1.0), Point(0.0, 1.0), Point(0.0, 0.0)};
    bool changed = false;
    const PolyArc simplified = PolyArc(k_Closed, v).GetSimplified(1e-9, &changed);
    EXPECT_TRUE(changed);
    EXPECT_EQ(simplified.GetEdgeCount(), 4);
    EXPECT_EQ(simplified.GetSignedArea(), Area(1.0));
}

TEST(PolyArc, OffsetOfEdges)
{
    // Right of travel is outside of a counter-clockwise contour: a
    // counter-clockwise arc grows, a clockwise one shrinks, and one shrunk to
    // its accuracy vanishes.
    const Circumference circle(Point(0.0, 0.0), 2.0);
    const Arc ccw(circle, k_Azimuth_0, k_Azimuth_90, k_CCW);
    const Result_T<Arc> out = GetOffsetArc_G(ccw, 0.5, 1e-9);
    ASSERT_TRUE(out.m_Success);
    EXPECT_NEAR(out.m_Value.GetRadius().GetValue(), 2.5, 1e-12);
    EXPECT_TRUE(out.m_Value.GetStart().IsEqualTo(Point(2.5, 0.0), 1e-12));
    EXPECT_NEAR(GetOffsetArc_G(ccw.GetReversed(), 0.5, 1e-9).m_Value.GetRadius().GetValue(), 1.5, 1e-12);
    EXPECT_FALSE(GetOffsetArc_G(ccw, -2.0, 1e-9).m_Success);
    EXPECT_FALSE(GetOffsetArc_G(ccw, -1.95, 0.1).m_Success);
}

TEST(PolyArc, OffsetOfChains)
{
    // A square grown by d: its corners rounded tangentially, area s^2 + 4 s d + pi d^2.
    const PolyArc square(k_Closed, Square(0, 0, 4));
    const Result_T<std::vector<Arc>> grown = square.GetOffset(1.0, 1e-9, 0, 0.0);
    ASSERT_TRUE(grown.m_Success);
    ASSERT_TRUE(IsPolyArcSequence_G(grown.m_Value, k_Closed));
    EXPECT_EQ(grown.m_Value.size(), 8u);
    EXPECT_NEAR(PolyArc(k_Closed, grown.m_Value).GetSignedArea().GetValue(), 16 + 16 + k_Pi, 1e-9);
    // Shrunk by d: the offset sides cross and are cut back to the corners.
    const Result_T<std::vector<Arc>> shrunk = square.GetOffset(-1.0, 1e-9, 0, 0.0);
    ASSERT_TRUE(shrunk.m_Success);
    EXPECT_EQ(shrunk.m_Value.size(), 4u);
    EXPECT_NEAR(PolyArc(k_Closed, shrunk.m_Value).GetSignedArea().GetValue(), 4.0, 1e-12);
    // A circle keeps one edge.
    const PolyArc circle(Circumference(Point(1.0, 1.0), 2.0), k_CCW, k_Azimuth_0);
    const Result_T<std::vector<Arc>> ring = circle.GetOffset(-0.5, 1e-9, 0, 0.0);
    ASSERT_EQ(ring.m_Value.size(), 1u);
    EXPECT_NEAR(PolyArc(k_Closed, ring.m_Value).GetSignedArea().GetValue(), k_Pi * 1.5 * 1.5, 1e-12);
    EXPECT_FALSE(circle.GetOffset(-2.0, 1e-9, 0, 0.0).m_Success);
    // An open trace keeps its ends free.
    std::vector<Arc> open = Square(0, 0, 4);
    open.pop_back();
    const Result_T<std::vector<Arc>> side = PolyArc(k_Open, open).GetOffset(1.0, 1e-9, 0, 0.0);
    ASSERT_TRUE(IsPolyArcSequence_G(side.m_Value, k_Open));
    EXPECT_EQ(side.m_Value.front().GetStart(), Point(0.0, -1.0));
    EXPECT_EQ(side.m_Value.back().GetEnd(), Point(0.0, 5.0));
}

TEST(PolyArc, OffsetOfRandomConvexContoursGrowsAreaByPerimeterAndPi)
{
    // Growing a convex contour by d adds d times its perimeter plus pi d^2
    // (Steiner's formula), with any corner rounding that is tangential.
    std::mt19937 rng(17);
    std::uniform_real_distribution<double> u(0.0, 1.0);
    for (int round = 0; round < 100; ++round)
    {
        const int n = 3 + round % 7;
        std::vector<double> t;
        for (int k = 0; k < n; ++k)
            t.push_back(u(rng) * 2 * k_Pi);
        std::sort(t.begin(), t.end());
        std::vector<Point> v;
        for (double a : t)
            v.push_back(Point(3 * std::cos(a), 3 * std::sin(a)));
        const PolyArc contour(k_Closed, v);
        if (contour.GetSignedArea() < Area(0.5))
            continue;
        double perimeter = 0;
        for (const Arc& a : contour)
            perimeter += a.GetLength().GetValue();
        const double d = 0.1 + u(rng);
        const Result_T<std::vector<Arc>> grown = contour.GetOffset(d, 1e-9, 0, 0.0);
        ASSERT_TRUE(IsPolyArcSequence_G(grown.m_Value, k_Closed));
        EXPECT_NEAR(PolyArc(k_Closed, grown.m_Value).GetSignedArea().GetValue(),
                    contour.GetSignedArea().GetValue() + d * perimeter + k_Pi * d * d, 1e-8)
            << "round " << round;
    }
}

TEST(PolyArc, QuadrantSumFailsOnAxesThroughVertices)
{
    // On the vertical or horizontal through a vertex that the walk reaches:
    // undecided. On the contour: undecided too.
    const PolyArc triangle(k_Closed, std::vector<Point>{Point(0.0, 0.0), Point(4.0, 0.0), Point(2.0, 3.0)});
    EXPECT_FALSE(triangle.GetQuadrantSum(Point(2.0, 1.0), k_Unit_0).m_Success);
    EXPECT_FALSE(triangle.GetQuadrantSum(Point(3.0, 3.0), k_Unit_0).m_Success);
    EXPECT_FALSE(triangle.GetQuadrantSum(Point(1.0, 0.0), k_Unit_0).m_Success);
    // Edges lying wholly in one closed quadrant are passed by, even when a
    // vertex sits on the axis: the point below a square's corner is decided.
    const PolyArc square(k_Closed, Square(0, 0, 2));
    const Result_T<int> below = square.GetQuadrantSum(Point(2.0, -1.0), k_Unit_0);
    EXPECT_TRUE(below.m_Success);
    EXPECT_EQ(below.m_Value, 0);
    const Result_T<int> in = square.GetQuadrantSum(Point(0.5, 0.7), k_Unit_0);
    ASSERT_TRUE(in.m_Success);
    EXPECT_EQ(in.m_Value, 4);
    EXPECT_EQ(square.GetReversed().GetQuadrantSum(Point(0.5, 0.7), k_Unit_0).m_Value, -4);
    const Result_T<int> out = square.GetQuadrantSum(Point(3.5, 0.7), k_Unit_0);
    ASSERT_TRUE(out.m_Success);
    EXPECT_EQ(out.m_Value, 0);
    // Near an axis within accuracy: undecided at that accuracy, decided at 0.
    EXPECT_FALSE(square.GetQuadrantSum(Point(0.5, 1e-7), 1e-6).m_Success);
    EXPECT_TRUE(square.GetQuadrantSum(Point(0.5, 1e-7), k_Unit_0).m_Success);
    // A point beyond the box grown by accuracy is outside at once.
    const Result_T<int> far = square.GetQuadrantSum(Point(0.0, 10.0), 1e-6);
    EXPECT_TRUE(far.m_Success);
    EXPECT_EQ(far.m_Value, 0);
    // Wound twice around: eight quarter turns.
    std::vector<Arc> twice = Square(0, 0, 2);
    const std::vector<Arc> again = Square(0, 0, 2);
    twice.insert(twice.end(), again.begin(), again.end());
    EXPECT_EQ(PolyArc(k_Closed, twice).GetQuadrantSum(Point(0.5, 0.7), k_Unit_0).m_Value, 8);
}
