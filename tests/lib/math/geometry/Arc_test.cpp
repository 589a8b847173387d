// Tests of arcs. Most checks build random arcs from an independent description
// (centre, radius, start angle, signed sweep) and compare what the Arc derives
// from its ends and sagitta against formulas computed here from that description.
#include "core/lib/vellum/Assert.h"
#include "lib/math/geometry/Arc.h"
#include "lib/math/geometry/Transformation.h"
#include "lib/math/geometry/Triangle.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
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

bool SameBits(const Point& a, const Point& b)
{
    const double va[2] = {a.m_X.GetValue(), a.m_Y.GetValue()}, vb[2] = {b.m_X.GetValue(), b.m_Y.GetValue()};
    return std::memcmp(va, vb, sizeof va) == 0;
}

// An arc described the independent way: sweep > 0 runs counter-clockwise.
struct ArcSpec
{
    double cx, cy, r, a0, sweep;

    Point At(double angle) const { return Point(cx + r * std::cos(angle), cy + r * std::sin(angle)); }
    Point AtRate(double t) const { return At(a0 + t * sweep); }
    Point Start() const { return At(a0); }
    Point End() const { return At(a0 + sweep); }
    // The sagitta 2 r sin^2(sweep / 4), positive for clockwise arcs.
    double Height() const
    {
        const double s = std::sin(std::fabs(sweep) / 4);
        return (sweep < 0 ? 2.0 : -2.0) * r * s * s;
    }
    Arc Make() const { return Arc(Start(), End(), Height()); }
    // Whether the direction at the given angle lies within the swept span.
    bool Covers(double angle) const
    {
        double rel = std::fmod((angle - a0) * (sweep < 0 ? -1.0 : 1.0), 2 * M_PI);
        if (rel < 0)
            rel += 2 * M_PI;
        return rel <= std::fabs(sweep);
    }
    double Tolerance() const { return 1e-9 * (1.0 + std::fabs(cx) + std::fabs(cy) + r); }
};

class RandomArcs
{
public:
    explicit RandomArcs(unsigned seed) : m_Rng(seed) {}
    ArcSpec Next()
    {
        std::uniform_real_distribution<double> coord(-100.0, 100.0), radius(0.1, 50.0), angle(0.0, 2 * M_PI),
            sweep(0.05, 2 * M_PI - 0.05);
        ArcSpec s{coord(m_Rng), coord(m_Rng), radius(m_Rng), angle(m_Rng), sweep(m_Rng)};
        if (m_Rng() % 2)
            s.sweep = -s.sweep;
        return s;
    }
    double Uniform(double lo, double hi) { return std::uniform_real_distribution<double>(lo, hi)(m_Rng); }

private:
    std::mt19937 m_Rng;
};

void ExpectNear(const Point& a, const Point& b, double tolerance)
{
    EXPECT_NEAR(a.m_X.GetValue(), b.m_X.GetValue(), tolerance);
    EXPECT_NEAR(a.m_Y.GetValue(), b.m_Y.GetValue(), tolerance);
}
} // namespace

TEST(Arcs, HalfCircleOverTheXAxis)
{
    const Arc arc(Point(-1.0, 0.0), Point(1.0, 0.0), 1.0);
    EXPECT_EQ(arc.GetDirection(), k_CW);
    EXPECT_FALSE(arc.IsBig());
    EXPECT_EQ(arc.GetRadius().GetValue(), 1.0);
    EXPECT_EQ(arc.GetCenter(), Point(0.0, 0.0));
    EXPECT_EQ(arc.GetMiddle(), Point(0.0, 1.0));
    EXPECT_EQ(arc.GetAngle(), -k_Degree_180);
    EXPECT_EQ(arc.GetBBox(), Box(Point(-1.0, 0.0), Point(1.0, 1.0)));
    EXPECT_EQ(arc.GetStartTangent(), k_Azimuth_90);
    EXPECT_EQ(arc.GetEndTangent(), k_Azimuth_270);
    const Arc reversed = arc.GetReversed();
    EXPECT_EQ(reversed.GetHeight().GetValue(), -1.0);
    EXPECT_EQ(reversed.GetCircumference(), arc.GetCircumference());
    EXPECT_EQ(reversed.GetAngle(), k_Degree_180);
    EXPECT_TRUE(arc.IntersectsWith(Point(0.0, 1.0), 0.0));
    EXPECT_FALSE(arc.IntersectsWith(Point(0.0, -1.0), 1e-3));
}

TEST(Arcs, FullCircleFromACircumference)
{
    const Arc ccw(Circumference(Point(0.0, 0.0), 2.0), k_Azimuth_0, k_CCW);
    EXPECT_EQ(ccw.GetStart(), Point(2.0, 0.0));
    EXPECT_EQ(ccw.GetEnd(), Point(2.0, 0.0));
    EXPECT_EQ(ccw.GetHeight().GetValue(), -4.0);
    EXPECT_EQ(ccw.GetCenterAzimuth(), k_Azimuth_180);
    EXPECT_EQ(ccw.GetAngle(), k_Degree_360);
    EXPECT_EQ(ccw.GetCenter(), Point(0.0, 0.0));
    EXPECT_EQ(ccw.GetMiddle(), Point(-2.0, 0.0));
    EXPECT_EQ(ccw.GetBBox(), Box(Point(-2.0, -2.0), Point(2.0, 2.0)));
    EXPECT_DOUBLE_EQ(ccw.GetLength().GetValue(), 4 * M_PI);
    EXPECT_TRUE(ccw.IsCircumference(nullptr));
    EXPECT_TRUE(ccw.IsBig());
    EXPECT_EQ(ccw.GetReversed().GetCenterAzimuth(), k_Azimuth_180);
    EXPECT_EQ(Arc(Circumference(Point(0.0, 0.0), 2.0), k_Azimuth_90, k_CW).GetHeight().GetValue(), 4.0);
    // A circle of radius 0 is a point arc, which is both a segment and a point.
    const Arc dot(Circumference(Point(3.0, 4.0), 0.0), k_Azimuth_0, k_CW);
    EXPECT_EQ(dot.GetStart(), Point(3.0, 4.0));
    EXPECT_TRUE(dot.IsSegment(0, nullptr));
    EXPECT_TRUE(dot.IsPoint(0, nullptr));
    EXPECT_EQ(dot.GetLength(), k_Unit_0);
}

TEST(Arcs, DerivedMeasuresAgreeWithIndependentFormulas)
{
    RandomArcs random(1);
    for (int i = 0; i < 2000; ++i)
    {
        const ArcSpec s = random.Next();
        const Arc arc = s.Make();
        const double tol = s.Tolerance();
        SCOPED_TRACE(i);
        ExpectNear(arc.GetCenter(), Point(s.cx, s.cy), tol);
        EXPECT_NEAR(arc.GetRadius().GetValue(), s.r, tol);
        EXPECT_NEAR(arc.GetAngle().GetValue(), s.sweep, 1e-9);
        EXPECT_NEAR(arc.GetLength().GetValue(), s.r * std::fabs(s.sweep), tol * 10);
        ExpectNear(arc.GetMiddle(), s.AtRate(0.5), tol);
        EXPECT_EQ(arc.IsBig(), std::fabs(s.sweep) > M_PI);
        EXPECT_EQ(arc.GetDirection(), s.sweep > 0 ? k_CCW : k_CW);
        // Tangent: the radius direction turned a quarter in the sense of travel.
        const double turn = s.sweep > 0 ? M_PI / 2 : -M_PI / 2;
        EXPECT_NEAR(arc.GetStartTangent().GetSmallestAngleTo(Azimuth(s.a0 + turn)).GetValue(), 0.0, 1e-9);
        EXPECT_NEAR(arc.GetEndTangent().GetSmallestAngleTo(Azimuth(s.a0 + s.sweep + turn)).GetValue(), 0.0,
                    1e-9);
    }
}

TEST(Arcs, ConstructorsAgreeOnTheSameArc)
{
    RandomArcs random(2);
    for (int i = 0; i < 1000; ++i)
    {
        const ArcSpec s = random.Next();
        const Arc expected = s.Make();
        const double tol = s.Tolerance() * 10;
        const Direction dir = s.sweep > 0 ? k_CCW : k_CW;
        SCOPED_TRACE(i);
        const Arc by_azimuths(Circumference(Point(s.cx, s.cy), s.r), Azimuth(s.a0), Azimuth(s.a0 + s.sweep),
                              dir);
        EXPECT_TRUE(by_azimuths.IsEqualTo(expected, tol));
        const Arc by_center(Segment(s.Start(), s.End()), dir, Point(s.cx, s.cy));
        EXPECT_TRUE(by_center.IsEqualTo(expected, tol));
        const Arc by_three(s.Start(), s.AtRate(random.Uniform(0.1, 0.9)), s.End());
        EXPECT_TRUE(by_three.IsEqualTo(expected, tol));
        const Arc by_radius(Segment(s.Start(), s.End()), s.r, dir, std::fabs(s.sweep) > M_PI);
        EXPECT_TRUE(by_radius.IsEqualTo(expected, tol));
        const double turn = s.sweep > 0 ? M_PI / 2 : -M_PI / 2;
        const Arc by_tangent(Segment(s.Start(), s.End()), Azimuth(s.a0 + turn));
        EXPECT_TRUE(by_tangent.IsEqualTo(expected, tol * 100));
    }
}

TEST(Arcs, ChordCentreConstructorEdgeCases)
{
    // Radii 1 and 1 + 1e-12 count as equal: no report.
    const Point center(0.0, 0.0);
    EXPECT_FALSE(
        Asserts([&] { (void)Arc(Segment(Point(1.0, 0.0), Point(0.0, 1.0 + 1e-12)), k_CCW, center); }));
    // A centre far off the bisector is reported, and an arc is built anyway.
    Arc skewed;
    EXPECT_TRUE(Asserts([&] { skewed = Arc(Segment(Point(1.0, 0.0), Point(0.0, 3.0)), k_CCW, center); }));
    EXPECT_LT(skewed.GetHeight(), k_Unit_0);
    // Equal ends: a full circle around the centre, reported as unexpected.
    Arc full;
    EXPECT_TRUE(Asserts([&] { full = Arc(Segment(Point(0.0, -2.0), Point(0.0, -2.0)), k_CW, center); }));
    EXPECT_EQ(full.GetHeight().GetValue(), 4.0);
    EXPECT_EQ(full.GetCenterAzimuth(), k_Azimuth_90);
    EXPECT_EQ(full.GetCenter(), center);
    // A centre nearer than half the chord: the radius grows to half the chord.
    const Arc half(Segment(Point(-1.0, 0.0), Point(1.0, 0.0)), k_CW, Point(0.0, 0.0));
    EXPECT_EQ(half.GetHeight().GetValue(), 1.0);
}

TEST(Arcs, RadiusConstructorAndStraightFallbacks)
{
    const Segment chord(Point(0.0, 0.0), Point(2.0, 0.0));
    const Arc small(chord, 2.0, k_CW, false), big(chord, 2.0, k_CW, true);
    EXPECT_NEAR(small.GetHeight().GetValue(), 2.0 - std::sqrt(3.0), 1e-15);
    EXPECT_NEAR(big.GetHeight().GetValue(), 2.0 + std::sqrt(3.0), 1e-15);
    EXPECT_GT(big.GetHeight(), Unit(2.0));
    EXPECT_LT(Arc(chord, 2.0, k_CCW, false).GetHeight(), k_Unit_0);
    // A radius below half the chord is not widened: the height is the radius
    // itself, so the arc's true radius comes out larger than asked.
    const Arc narrow(chord, 0.5, k_CW, false);
    EXPECT_EQ(narrow.GetHeight().GetValue(), 0.5);
    EXPECT_EQ(narrow.GetRadius().GetValue(), 1.25);
    Arc point_chord;
    EXPECT_TRUE(
        Asserts([&] { point_chord = Arc(Segment(Point(1.0, 1.0), Point(1.0, 1.0)), 1.0, k_CW, true); }));
    EXPECT_EQ(point_chord.GetHeight(), k_Unit_0);
    // Collinear three points make a straight edge.
    EXPECT_EQ(Arc(Point(0.0, 0.0), Point(1.0, 1.0), Point(3.0, 3.0)).GetHeight(), k_Unit_0);
    // A tangent along the chord cannot bend the edge: reported, straight.
    Arc along;
    EXPECT_TRUE(Asserts([&] { along = Arc(chord, k_Azimuth_0); }));
    EXPECT_EQ(along.GetHeight(), k_Unit_0);
    // A straight edge has no circle: reported, radius 0.
    Unit r(5.0);
    EXPECT_TRUE(Asserts([&] { r = Arc(chord).GetCircumference().GetRadius(); }));
    EXPECT_EQ(r, k_Unit_0);
}

TEST(Arcs, ReverseGivesTheSameMiddleAndCentreBits)
{
    RandomArcs random(3);
    for (int i = 0; i < 3000; ++i)
    {
        const ArcSpec s = random.Next();
        // Arbitrary heights too, not only those of tidy arcs.
        const Arc arc(s.Start(), s.End(), i % 3 == 0 ? Unit(random.Uniform(-80.0, 80.0)) : Unit(s.Height()));
        const Arc reversed = arc.GetReversed();
        EXPECT_TRUE(SameBits(arc.GetMiddle(), reversed.GetMiddle())) << i;
        EXPECT_TRUE(SameBits(arc.GetCenter(), reversed.GetCenter())) << i;
        EXPECT_EQ(arc.GetRadius(), reversed.GetRadius()) << i;
        EXPECT_TRUE(
            SameBits(Segment(s.Start(), s.End()).GetMiddle(), Segment(s.End(), s.Start()).GetMiddle()));
    }
}

TEST(Arcs, PointsAlongTheArc)
{
    const Arc half(Point(1.0, 0.0), Point(-1.0, 0.0), -1.0);
    std::vector<Point> out = {Point(9.0, 9.0)};
    half.GetPoints(12, true, out);
    ASSERT_EQ(out.size(), 13u); // appended, not cleared
    EXPECT_TRUE(SameBits(out.back(), half.GetEnd()));
    EXPECT_EQ(out[1], half.GetStart());
    ExpectNear(out[6], Point(std::cos(5 * M_PI / 11), std::sin(5 * M_PI / 11)), 1e-14);

    RandomArcs random(4);
    for (int i = 0; i < 500; ++i)
    {
        const ArcSpec s = random.Next();
        const Arc arc = s.Make();
        const int count = 2 + i % 40;
        const bool last = i % 2 == 0;
        std::vector<Point> pts;
        arc.GetPoints(count, last, pts);
        ASSERT_EQ(pts.size(), static_cast<size_t>(count));
        EXPECT_TRUE(SameBits(pts.front(), arc.GetStart()));
        if (last)
        {
            EXPECT_TRUE(SameBits(pts.back(), arc.GetEnd()));
        }
        const int steps = count - (last ? 1 : 0);
        for (int k = 0; k < count; ++k)
            ExpectNear(pts[k], s.AtRate(static_cast<double>(k) / steps), s.Tolerance() * 10);
    }
    // A straight edge divides its chord evenly.
    std::vector<Point> line;
    Arc(Point(0.0, 0.0), Point(4.0, 0.0), 0.0).GetPoints(4, false, line);
    EXPECT_EQ(line, (std::vector<Point>{Point(0.0, 0.0), Point(1.0, 0.0), Point(2.0, 0.0), Point(3.0, 0.0)}));
    EXPECT_TRUE(Asserts([&] { half.GetPoints(1, true, line); }));
}

TEST(Arcs, TightBoxMatchesTheExtremesInTheSpan)
{
    RandomArcs random(5);
    for (int i = 0; i < 3000; ++i)
    {
        ArcSpec s = random.Next();
        // Every so often an end on an axis extreme or an axis-parallel chord.
        if (i % 7 == 0)
            s.a0 = (i % 4) * M_PI / 2;
        if (i % 11 == 0)
            s.a0 = -s.sweep / 2 + (i % 4) * M_PI / 2;
        const Arc arc = s.Make();
        Box expected(arc.GetStart(), arc.GetEnd());
        for (int k = 0; k < 4; ++k)
            if (s.Covers(k * M_PI / 2))
                expected |= s.At(k * M_PI / 2);
        const Box box = arc.GetBBox();
        EXPECT_TRUE(box.IsEqualTo(expected, s.Tolerance())) << i;
        EXPECT_TRUE(arc.GetLooseBBox().Contains(box.GetExpanded(-s.Tolerance()))) << i;
    }
}

TEST(Arcs, PositionsAndSubArcs)
{
    RandomArcs random(6);
    for (int i = 0; i < 1000; ++i)
    {
        const ArcSpec s = random.Next();
        const Arc arc = s.Make();
        const double tol = s.Tolerance() * 10;
        const double t = random.Uniform(0.05, 0.95);
        SCOPED_TRACE(i);
        EXPECT_NEAR(arc.GetPosition(s.AtRate(t), tol), t, 1e-8);
        ExpectNear(arc.GetPointAt(t), s.AtRate(t), tol);
        EXPECT_EQ(arc.GetPosition(arc.GetStart(), 0), 0.0);
        EXPECT_EQ(arc.GetPosition(arc.GetEnd(), 0), 1.0);
        // A point of the circle off the span maps to the nearer end.
        if (std::fabs(s.sweep) < 2 * M_PI - 0.2)
        {
            const double outside = s.a0 + s.sweep + (s.sweep > 0 ? 0.05 : -0.05);
            EXPECT_EQ(arc.GetPosition(s.At(outside), 0), 1.0);
        }
        const double t2 = random.Uniform(0.05, 0.95);
        const Arc sub = arc.GetSubArc(t, t2);
        ExpectNear(sub.GetStart(), s.AtRate(t), tol);
        ExpectNear(sub.GetEnd(), s.AtRate(t2), tol);
        EXPECT_NEAR(sub.GetAngle().GetValue(), (t2 - t) * s.sweep, 1e-8);
        ExpectNear(sub.GetCenter(), Point(s.cx, s.cy), tol * 10);
    }
    const Arc arc(Point(0.0, 0.0), Point(2.0, 0.0), 1.0);
    EXPECT_EQ(arc.GetSubArc(0.0, 1.0), arc);
    EXPECT_EQ(arc.GetSubArc(1.0, 0.0), arc.GetReversed());
    EXPECT_TRUE(arc.GetSubArc(0.5, 0.5).IsPoint(0, nullptr));
    EXPECT_EQ(Arc(Point(0.0, 0.0), Point(4.0, 0.0), 0.0).GetSubArc(0.25, 0.5),
              Arc(Point(1.0, 0.0), Point(2.0, 0.0), 0.0));
    EXPECT_EQ(arc.GetPosition(Point(1.0, 0.0), 0.01), 0.0); // the centre
    EXPECT_TRUE(Asserts([] { (void)Arc::IsBefore(-0.5, 0.5); }));
}

TEST(Arcs, PointOnArcWithTolerance)
{
    RandomArcs random(7);
    for (int i = 0; i < 1000; ++i)
    {
        const ArcSpec s = random.Next();
        const Arc arc = s.Make();
        const double acc = 1e-3 * s.r;
        const double t = random.Uniform(0.0, 1.0);
        const double angle = s.a0 + t * s.sweep;
        SCOPED_TRACE(i);
        EXPECT_TRUE(arc.IntersectsWith(s.AtRate(t), acc));
        // Half the tolerance off the curve is on, twice the tolerance is not.
        const Point near(s.cx + (s.r + acc * 0.5) * std::cos(angle),
                         s.cy + (s.r + acc * 0.5) * std::sin(angle));
        const Point far(s.cx + (s.r - acc * 2.0) * std::cos(angle),
                        s.cy + (s.r - acc * 2.0) * std::sin(angle));
        EXPECT_TRUE(arc.IntersectsWith(near, acc));
        EXPECT_FALSE(arc.IntersectsWith(far, acc));
        // The circle outside the span is not on the arc.
        if (std::fabs(s.sweep) < 2 * M_PI - 0.3)
        {
            const double gap = (2 * M_PI - std::fabs(s.sweep)) * random.Uniform(0.2, 0.8);
            const Point off = s.At(s.a0 + s.sweep + (s.sweep > 0 ? gap : -gap));
            EXPECT_FALSE(arc.IntersectsWith(off, acc));
            EXPECT_FALSE(arc.IsInSpan(off, 0));
        }
    }
}

namespace
{
// The crossings of two circles by the textbook construction.
std::vector<Point> CircleCrossings(const ArcSpec& a, const ArcSpec& b)
{
    const double dx = b.cx - a.cx, dy = b.cy - a.cy, d = std::hypot(dx, dy);
    if (d > a.r + b.r || d < std::fabs(a.r - b.r) || d == 0)
        return {};
    const double along = (d * d + a.r * a.r - b.r * b.r) / (2 * d);
    const double h = std::sqrt(std::max(0.0, a.r * a.r - along * along));
    const double mx = a.cx + along * dx / d, my = a.cy + along * dy / d;
    return {Point(mx - h * dy / d, my + h * dx / d), Point(mx + h * dy / d, my - h * dx / d)};
}

double AngleOf(const ArcSpec& s, const Point& p)
{
    return std::atan2(p.m_Y.GetValue() - s.cy, p.m_X.GetValue() - s.cx);
}

// How far (in radians) the direction lies from the ends of the span; small
// values make the test ambiguous under rounding.
double SpanMargin(const ArcSpec& s, double angle)
{
    const auto gap = [](double x, double y)
    {
        const double g = std::fabs(std::remainder(x - y, 2 * M_PI));
        return g;
    };
    return std::min(gap(angle, s.a0), gap(angle, s.a0 + s.sweep));
}
} // namespace

TEST(Arcs, ArcArcIntersectionsMatchTheCircleConstruction)
{
    RandomArcs random(8);
    int crossings_seen = 0;
    for (int i = 0; i < 3000; ++i)
    {
        ArcSpec a = random.Next(), b = random.Next();
        // Bring the circles near each other so that they often cross.
        b.cx = a.cx + random.Uniform(-1.0, 1.0) * (a.r + b.r);
        b.cy = a.cy + random.Uniform(-1.0, 1.0) * (a.r + b.r);
        const double d = std::hypot(b.cx - a.cx, b.cy - a.cy);
        if (std::fabs(d - (a.r + b.r)) < 1e-3 || std::fabs(d - std::fabs(a.r - b.r)) < 1e-3)
            continue; // near tangency: ambiguous by design
        const double acc = 1e-9 * (1.0 + std::fabs(a.cx) + std::fabs(a.cy) + a.r + b.r);
        std::vector<Point> expected;
        bool ambiguous = false;
        for (const Point& p : CircleCrossings(a, b))
        {
            const double ma = SpanMargin(a, AngleOf(a, p)), mb = SpanMargin(b, AngleOf(b, p));
            if (ma < 1e-6 || mb < 1e-6)
                ambiguous = true;
            if (a.Covers(AngleOf(a, p)) && b.Covers(AngleOf(b, p)))
                expected.push_back(p);
        }
        if (ambiguous)
            continue;
        const Arc arc_a = a.Make(), arc_b = b.Make();
        const ArcIntersections x = arc_a.GetIntersections(arc_b, acc);
        std::vector<Point> found;
        for (const Result_T<Arc>* r : {&x.first, &x.second})
            if (r->m_Success)
            {
                EXPECT_TRUE(r->m_Value.IsPoint(0, nullptr));
                found.push_back(r->m_Value.GetStart());
            }
        SCOPED_TRACE(i);
        ASSERT_EQ(found.size(), expected.size());
        EXPECT_EQ(arc_a.IntersectsWith(arc_b, acc), !expected.empty());
        EXPECT_EQ(arc_b.IntersectsWith(arc_a, acc), !expected.empty());
        for (const Point& p : found)
        {
            bool matched = false;
            for (const Point& q : expected)
                matched = matched || p.IsEqualTo(q, 1e-6 * (a.r + b.r));
            EXPECT_TRUE(matched);
            EXPECT_TRUE(arc_a.IntersectsWith(p, acc * 100));
            EXPECT_TRUE(arc_b.IntersectsWith(p, acc * 100));
        }
        crossings_seen += static_cast<int>(found.size());

        // Against b's whole circle only a's span filters.
        size_t on_a = 0;
        for (const Point& p : CircleCrossings(a, b))
            on_a += a.Covers(AngleOf(a, p)) ? 1 : 0;
        const Circumference circle_b(Point(b.cx, b.cy), b.r);
        const ArcIntersections y = arc_a.GetIntersections(circle_b, acc);
        EXPECT_EQ(static_cast<size_t>(y.first.m_Success) + static_cast<size_t>(y.second.m_Success), on_a);
        EXPECT_EQ(arc_a.IntersectsWith(circle_b, acc), on_a > 0);
        EXPECT_EQ(arc_a.IntersectsWith(Arc(circle_b, k_Azimuth_0, k_CW), acc), on_a > 0);
    }
    EXPECT_GT(crossings_seen, 500); // the sample really exercised crossings
}

TEST(Arcs, ArcSegmentIntersectionsLieOnBoth)
{
    RandomArcs random(9);
    int seen = 0;
    for (int i = 0; i < 2000; ++i)
    {
        const ArcSpec s = random.Next();
        const Arc arc = s.Make();
        const Point p(s.cx + random.Uniform(-2, 2) * s.r, s.cy + random.Uniform(-2, 2) * s.r);
        const Point q(s.cx + random.Uniform(-2, 2) * s.r, s.cy + random.Uniform(-2, 2) * s.r);
        const Segment seg(p, q);
        const double acc = s.Tolerance();
        const ArcIntersections x = arc.GetIntersections(Arc(seg), acc);
        for (const Result_T<Arc>* r : {&x.first, &x.second})
        {
            if (!r->m_Success)
                continue;
            ++seen;
            const Point c = r->m_Value.GetStart();
            EXPECT_TRUE(arc.IntersectsWith(c, acc * 10)) << i;
            EXPECT_TRUE(seg.IntersectsWith(c, acc * 10)) << i;
        }
        EXPECT_EQ(x.first.m_Success, arc.IntersectsWith(seg, acc)) << i;
        EXPECT_FALSE(x.second.m_Success && !x.first.m_Success);
    }
    EXPECT_GT(seen, 500);
}

TEST(Arcs, SameCircleGivesTheCommonPieces)
{
    const Circumference circle(Point(1.0, 1.0), 2.0);
    const Arc a(circle, k_Azimuth_0, k_Azimuth_180, k_CCW);
    const Arc b(circle, k_Azimuth_90, k_Azimuth_270, k_CCW);
    const ArcIntersections x = a.GetIntersections(b, 1e-9);
    ASSERT_TRUE(x.first.m_Success);
    EXPECT_FALSE(x.second.m_Success);
    ExpectNear(x.first.m_Value.GetStart(), Point(1.0, 3.0), 1e-12);
    ExpectNear(x.first.m_Value.GetEnd(), Point(-1.0, 1.0), 1e-12);
    EXPECT_NEAR(x.first.m_Value.GetAngle().GetValue(), M_PI / 2, 1e-12);
    // Opposite directions: the common piece still runs the first arc's way.
    const ArcIntersections y = a.GetIntersections(b.GetReversed(), 1e-9);
    ASSERT_TRUE(y.first.m_Success);
    EXPECT_GT(y.first.m_Value.GetAngle(), k_Angle_0);
    // Two pieces: a long arc and a short one overlapping at both of its ends.
    const Arc big(circle, k_Azimuth_0, Azimuth(300.0, k_Degrees), k_CCW);
    const Arc across(circle, Azimuth(270.0, k_Degrees), Azimuth(30.0, k_Degrees), k_CCW);
    const ArcIntersections z = big.GetIntersections(across, 1e-9);
    ASSERT_TRUE(z.first.m_Success && z.second.m_Success);
    EXPECT_NEAR(z.first.m_Value.GetAngle().GetValue() + z.second.m_Value.GetAngle().GetValue(),
                (30.0 + 30.0) * M_PI / 180, 1e-12);
    // Arcs that merely touch at an end meet in one point.
    const Arc next(circle, k_Azimuth_180, k_Azimuth_270, k_CCW);
    const ArcIntersections t = a.GetIntersections(next, 1e-9);
    ASSERT_TRUE(t.first.m_Success);
    EXPECT_TRUE(t.first.m_Value.IsPoint(1e-9, nullptr));
    EXPECT_TRUE(a.IntersectsWith(next, 1e-9));
    EXPECT_FALSE(a.IntersectsWith(Arc(circle, Azimuth(200.0, k_Degrees), k_Azimuth_270, k_CCW), 1e-9));
}

TEST(Arcs, EqualityOrderAndDirection)
{
    const Arc a(Point(0.0, 0.0), Point(1.0, 0.0), 0.25), b(Point(0.0, 0.0), Point(1.0, 0.0), 0.5);
    EXPECT_TRUE(a < b);
    EXPECT_FALSE(b < a);
    EXPECT_TRUE(Arc(Point(0.0, 0.0), Point(0.5, 9.0), 9.0) < a);
    EXPECT_TRUE(a.IsEqualTo(b, 0.25));
    EXPECT_FALSE(a.IsEqualTo(b, 0.2));
    EXPECT_FALSE(a.IsEqualTo(Arc(Point(0.0, 0.0), Point(1.0, 0.0), 0.25, k_Azimuth_90), 1.0));
    EXPECT_TRUE(a.IsSameDirection(b));
    EXPECT_FALSE(a.IsSameDirection(a.GetReversed()));
    const Arc straight(Point(0.0, 0.0), Point(1.0, 0.0), 0.0);
    // With a straight edge the chords decide, whatever the other's bend.
    EXPECT_TRUE(straight.IsSameDirection(a));
    EXPECT_TRUE(straight.IsSameDirection(Arc(Point(0.0, 0.0), Point(1.0, 0.0), -0.25)));
    EXPECT_FALSE(straight.IsSameDirection(a.GetReversed()));
    EXPECT_EQ(straight.GetDirection(), k_NoDirection);
    EXPECT_TRUE(Asserts([&] { (void)straight.IsCCW(); }));
    Segment chord;
    EXPECT_TRUE(a.IsSegment(0.25, &chord));
    EXPECT_EQ(chord, Segment(Point(0.0, 0.0), Point(1.0, 0.0)));
    EXPECT_FALSE(a.IsSegment(0.2, nullptr));
    Point p;
    EXPECT_TRUE(Arc(Point(0.0, 0.0), Point(0.1, 0.0), 0.1).IsPoint(0.1, &p));
    EXPECT_EQ(p, Point(0.0, 0.0));
}

TEST(Arcs, TransformationAndAverage)
{
    const ArcSpec s{1.0, 2.0, 3.0, 0.3, 2.0};
    const Arc arc = s.Make();
    const Transformation t(Vector(5.0, -1.0), Angle(30.0, k_Degrees), 2.0, true);
    const Arc moved = arc.GetTransformed(t);
    // Mirror x, scale 2, turn 30 degrees, shift: the middle follows the same map.
    const auto map = [](const Point& p)
    {
        const double x = -2.0 * p.m_X.GetValue(), y = 2.0 * p.m_Y.GetValue(), c = std::cos(M_PI / 6),
                     sn = std::sin(M_PI / 6);
        return Point(x * c - y * sn + 5.0, x * sn + y * c - 1.0);
    };
    ExpectNear(moved.GetStart(), map(arc.GetStart()), 1e-12);
    ExpectNear(moved.GetMiddle(), map(arc.GetMiddle()), 1e-12);
    EXPECT_NEAR(moved.GetRadius().GetValue(), 6.0, 1e-12);
    EXPECT_EQ(moved.GetDirection(), k_CW); // a mirror turns the sense
    const Arc circle(Circumference(Point(0.0, 0.0), 1.0), k_Azimuth_0, k_CCW);
    const Arc moved_circle = circle.GetTransformed(Transformation(Vector(1.0, 1.0), k_Degree_90));
    ExpectNear(moved_circle.GetCenter(), Point(1.0, 1.0), 1e-15);
    ExpectNear(moved_circle.GetStart(), Point(1.0, 2.0), 1e-15);

    const Arc other(Point(2.0, 0.0), Point(4.0, 2.0), -1.0, k_Azimuth_90);
    const Arc base(Point(0.0, 0.0), Point(2.0, 0.0), 1.0, k_Azimuth_0);
    const Arc mid = base.GetAverage(other, 0.25);
    EXPECT_EQ(mid.GetStart(), Point(0.5, 0.0));
    EXPECT_EQ(mid.GetEnd(), Point(2.5, 0.5));
    EXPECT_EQ(mid.GetHeight().GetValue(), 0.5);
    EXPECT_NEAR(mid.GetCenterAzimuth().GetValue(k_Degrees), 22.5, 1e-12);
    EXPECT_EQ(base.GetAverage(other, 0.0), base);
    EXPECT_TRUE(Asserts([&] { (void)base.GetAverage(other, 1.5); }));
}

TEST(Arcs, ASegmentAsShortAsTheAccuracyTouchesAtAPoint)
{
    // A segment about as long as the accuracy passes the parallel test at
    // any angle. Where it meets a long edge at a steep angle the two touch
    // at a point; taking them for overlapping ones failed the overlap's
    // assertion that all four ends lie near one central line.
    std::mt19937 random(5);
    std::uniform_real_distribution<double> unit(0, 1);
    const Unit accuracy(1e-6);
    for (int i = 0; i < 2000; ++i)
    {
        const double angle = 0.3 + 2.5 * unit(random),
                     length = accuracy.GetValue() * (0.5 + 1.5 * unit(random));
        const Point on(Unit(20 * unit(random)), Unit(0.0));
        const Segment edge(Point(0.0, 0.0), Point(20.0, 0.0));
        const Segment tiny(on, on + Vector(Unit(length * std::cos(angle)), Unit(length * std::sin(angle))));
        ArcIntersections found;
        EXPECT_FALSE(Asserts([&] { found = Arc(tiny).GetIntersections(Arc(edge), accuracy); })) << i;
        ASSERT_TRUE(found.first.m_Success) << i;
        EXPECT_TRUE(edge.IntersectsWith(found.first.m_Value.GetStart(), accuracy)) << i;
        EXPECT_TRUE(tiny.IntersectsWith(found.first.m_Value.GetStart(), accuracy)) << i;
    }
}

TEST(Arcs, ThreePointsAlmostInLineHaveACircle)
{
    // The three points turn, exactly, but so little that the directions of
    // two side bisectors round to parallel: no centre is sought where the
    // lines don't meet, and the circle is the one on the longest side.
    const Point a(8.6511472273633103, 9.9436961646053099), b(9.9808103093054719, -7.4375110445538795),
        c(1.6328923246855673, 101.68553991946217);
    Circumference circle;
    EXPECT_FALSE(Asserts([&] { circle = Triangle(a, b, c).GetCircumscribedCircle(); }));
    const double longest = std::sqrt(b.GetDistanceSquareTo(c).GetValue());
    EXPECT_TRUE(std::isfinite(circle.GetRadius().GetValue()));
    EXPECT_GE(circle.GetRadius().GetValue(), longest / 2 * (1 - 1e-12));
}
