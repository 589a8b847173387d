// Boolean operations against Boost.Geometry on flattened copies of the same shapes.
//
// Random pairs of pads, traces, rounded boxes, arc polygons and regions with
// holes, plus the awkward pairs (shared sides, coincident circles, one-point
// contact, near tangency, slivers, identical operands), go through all four
// modes of the graph. The arcs are flattened here by this file's own
// geometry (circle from ends and sagitta), and Boost's area of the same
// operation on the flattened shapes must match ours within the flattening
// error. The results are checked on their own too: closed chains, no
// crossing edges, holes inside their outline, and the set identities.
// TNF_BOOLEAN_CASES sets the number of random cases for a longer run.
#if defined(__GNUC__) && !defined(__clang__) && !defined(__OPTIMIZE__)
// The oracle's templates are slow unoptimised; a debug build of the suite
// still wants thousands of cases in seconds.
#pragma GCC optimize("O2")
#endif
#include "lib/math/geometry/PolyArcIntersectionGraph.h"
#include "lib/math/geometry/PolyArcIntersectionGraph2.h"

#include <gtest/gtest.h>

#include <boost/geometry.hpp>
#include <boost/geometry/geometries/multi_polygon.hpp>
#include <boost/geometry/geometries/point_xy.hpp>
#include <boost/geometry/geometries/polygon.hpp>

#include <cmath>
#include <cstdlib>
#include <random>
#include <string>

using namespace geom;
namespace bg = boost::geometry;

namespace
{
using BPoint = bg::model::d2::point_xy<double>;
using BPolygon = bg::model::polygon<BPoint, false, true>;
using BMulti = bg::model::multi_polygon<BPolygon>;
using Graph = PolyArcIntersectionGraph;

const Unit k_Accuracy(1e-6);
const double k_Deviation = 2e-4; // chord deviation of the flattening

// An edge's circle, worked out from its ends and sagitta alone.
struct EdgeCircle
{
    bool m_Straight = true;
    double m_Cx = 0, m_Cy = 0, m_R = 0, m_StartAngle = 0, m_Sweep = 0;
};

EdgeCircle GetEdgeCircle(const Arc& a)
{
    EdgeCircle e;
    const double sx = a.GetStart().m_X.GetValue(), sy = a.GetStart().m_Y.GetValue();
    const double ex = a.GetEnd().m_X.GetValue(), ey = a.GetEnd().m_Y.GetValue();
    const double h = a.GetHeight().GetValue();
    if (h == 0)
        return e;
    e.m_Straight = false;
    if (sx == ex && sy == ey)
    {
        e.m_R = std::fabs(h) / 2;
        const double az = a.GetCenterAzimuth().GetValue();
        e.m_Cx = sx + e.m_R * std::cos(az);
        e.m_Cy = sy + e.m_R * std::sin(az);
        e.m_StartAngle = std::atan2(sy - e.m_Cy, sx - e.m_Cx);
        e.m_Sweep = h > 0 ? -2 * M_PI : 2 * M_PI;
        return e;
    }
    const double dx = ex - sx, dy = ey - sy, c = std::hypot(dx, dy);
    const double nx = -dy / c, ny = dx / c; // left normal
    const double ah = std::fabs(h);
    e.m_R = (c * c / 4 + ah * ah) / (2 * ah);
    const double sign = h > 0 ? 1.0 : -1.0;
    const double mx = (sx + ex) / 2 + nx * h, my = (sy + ey) / 2 + ny * h; // middle of the arc
    e.m_Cx = mx - sign * nx * e.m_R;
    e.m_Cy = my - sign * ny * e.m_R;
    const double half = std::atan2(c / 2, e.m_R - ah);
    e.m_StartAngle = std::atan2(sy - e.m_Cy, sx - e.m_Cx);
    e.m_Sweep = (h > 0 ? -2.0 : 2.0) * half;
    return e;
}

// The contour as points, chords deviating at most k_Deviation from arcs.
BPolygon::ring_type Flatten(const PolyArc& chain)
{
    std::vector<BPoint> pts;
    for (const Arc& a : chain.GetEdges())
    {
        pts.emplace_back(a.GetStart().m_X.GetValue(), a.GetStart().m_Y.GetValue());
        const EdgeCircle e = GetEdgeCircle(a);
        if (e.m_Straight)
            continue;
        const double step = 2 * std::acos(std::max(-1.0, 1 - k_Deviation / e.m_R));
        const int n = std::max(2, static_cast<int>(std::ceil(std::fabs(e.m_Sweep) / step)));
        for (int i = 1; i < n; ++i)
        {
            const double t = e.m_StartAngle + e.m_Sweep * i / n;
            pts.emplace_back(e.m_Cx + e.m_R * std::cos(t), e.m_Cy + e.m_R * std::sin(t));
        }
    }
    if (!pts.empty())
        pts.push_back(pts.front());
    return BPolygon::ring_type(pts.begin(), pts.end());
}

BMulti ToBoost(const PolygonWithHolesCollection& c)
{
    BMulti ret;
    for (const PolygonWithHoles& r : c)
    {
        BPolygon p;
        p.outer() = Flatten(r.GetPolygon());
        for (const Polygon& h : r.GetHoles())
        {
            p.inners().push_back(Flatten(h.GetReversed()));
        }
        bg::correct(p);
        ret.push_back(p);
    }
    return ret;
}

double GetLength(const PolygonWithHolesCollection& c)
{
    double ret = 0;
    for (const PolygonWithHoles& r : c)
    {
        for (const Arc& a : r.GetPolygon().GetEdges())
            ret += a.GetLength().GetValue();
        for (const Polygon& h : r.GetHoles())
            for (const Arc& a : h.GetEdges())
                ret += a.GetLength().GetValue();
    }
    return ret;
}

// Whether a point of the edge's circle lies within the edge's sweep.
bool IsInSweep(const EdgeCircle& e, double x, double y)
{
    double phi = std::atan2(y - e.m_Cy, x - e.m_Cx) - e.m_StartAngle;
    if (e.m_Sweep > 0)
    {
        while (phi < 0)
            phi += 2 * M_PI;
        while (phi >= 2 * M_PI)
            phi -= 2 * M_PI;
        return phi < e.m_Sweep;
    }
    while (phi > 0)
        phi -= 2 * M_PI;
    while (phi <= -2 * M_PI)
        phi += 2 * M_PI;
    return phi > e.m_Sweep;
}

// The points where the two edges' lines or circles cross transversally, the
// two crossings of a pair at least `margin` apart (a closer pair is a
// tangency, which isn't a crossing).
std::vector<BPoint> GetCrossings(const Arc& a, const Arc& b, double margin)
{
    const EdgeCircle ea = GetEdgeCircle(a), eb = GetEdgeCircle(b);
    std::vector<BPoint> ret;
    const auto sx = [](const Arc& e) { return e.GetStart().m_X.GetValue(); };
    const auto sy = [](const Arc& e) { return e.GetStart().m_Y.GetValue(); };
    const auto ex = [](const Arc& e) { return e.GetEnd().m_X.GetValue(); };
    const auto ey = [](const Arc& e) { return e.GetEnd().m_Y.GetValue(); };
    if (ea.m_Straight && eb.m_Straight)
    {
        const double x1 = sx(a), y1 = sy(a), x2 = ex(a), y2 = ey(a), x3 = sx(b), y3 = sy(b), x4 = ex(b),
                     y4 = ey(b);
        const double d = (x2 - x1) * (y4 - y3) - (y2 - y1) * (x4 - x3);
        // Nearly parallel pieces meet, if at all, along a stretch that the
        // area comparison judges; only clear crossings count here.
        if (std::fabs(d) <= 1e-9 * std::hypot(x2 - x1, y2 - y1) * std::hypot(x4 - x3, y4 - y3))
            return ret;
        const double t = ((x3 - x1) * (y4 - y3) - (y3 - y1) * (x4 - x3)) / d;
        const double u = ((x3 - x1) * (y2 - y1) - (y3 - y1) * (x2 - x1)) / d;
        if (t > 0 && t < 1 && u > 0 && u < 1)
            ret.emplace_back(x1 + t * (x2 - x1), y1 + t * (y2 - y1));
        return ret;
    }
    if (ea.m_Straight || eb.m_Straight)
    {
        const Arc& line = ea.m_Straight ? a : b;
        const EdgeCircle& c = ea.m_Straight ? eb : ea;
        const double x1 = sx(line), y1 = sy(line), dx = ex(line) - x1, dy = ey(line) - y1;
        const double fx = x1 - c.m_Cx, fy = y1 - c.m_Cy;
        const double qa = dx * dx + dy * dy, qb = 2 * (fx * dx + fy * dy),
                     qc = fx * fx + fy * fy - c.m_R * c.m_R;
        const double disc = qb * qb - 4 * qa * qc;
        if (qa == 0 || disc <= 0)
            return ret;
        const double root = std::sqrt(disc);
        if (root / qa * std::sqrt(qa) < margin)
            return ret;
        for (double t : {(-qb - root) / (2 * qa), (-qb + root) / (2 * qa)})
        {
            const double x = x1 + t * dx, y = y1 + t * dy;
            if (t > 0 && t < 1 && IsInSweep(c, x, y))
                ret.emplace_back(x, y);
        }
        return ret;
    }
    const double dx = eb.m_Cx - ea.m_Cx, dy = eb.m_Cy - ea.m_Cy, d = std::hypot(dx, dy);
    if (d == 0 || d > ea.m_R + eb.m_R || d < std::fabs(ea.m_R - eb.m_R))
        return ret;
    const double along = (ea.m_R * ea.m_R - eb.m_R * eb.m_R + d * d) / (2 * d);
    const double h2 = ea.m_R * ea.m_R - along * along;
    if (h2 <= 0 || 2 * std::sqrt(h2) < margin)
        return ret;
    const double h = std::sqrt(h2), mx = ea.m_Cx + along * dx / d, my = ea.m_Cy + along * dy / d;
    for (double sign : {-1.0, 1.0})
    {
        const double x = mx - sign * h * dy / d, y = my + sign * h * dx / d;
        if (IsInSweep(ea, x, y) && IsInSweep(eb, x, y))
            ret.emplace_back(x, y);
    }
    return ret;
}

// Whether the two pieces cross away from their ends.
bool CrossAwayFromEnds(const Arc& a, const Arc& b, double margin)
{
    for (const BPoint& c : GetCrossings(a, b, margin))
    {
        bool near_end = false;
        for (const Arc* e : {&a, &b})
            for (const Point& p : {e->GetStart(), e->GetEnd()})
                near_end =
                    near_end || std::hypot(c.x() - p.m_X.GetValue(), c.y() - p.m_Y.GetValue()) <= margin;
        if (!near_end)
            return true;
    }
    return false;
}

// Independent checks of a result; returns a description of the first fault.
std::string CheckResult(const PolygonWithHolesCollection& c)
{
    std::vector<Arc> all;
    for (const PolygonWithHoles& r : c)
    {
        if (!IsPolyArcSequence_G(r.GetPolygon().GetEdges(), k_Closed))
            return "outline is not a closed chain";
        if (r.GetPolygon().GetSignedArea() <= k_Area_0)
            return "outline is not counter-clockwise";
        const auto edges = r.GetPolygon().GetEdges();
        all.insert(all.end(), edges.begin(), edges.end());
        BPolygon outline;
        outline.outer() = Flatten(r.GetPolygon());
        bg::correct(outline);
        for (const Polygon& h : r.GetHoles())
        {
            if (!IsPolyArcSequence_G(h.GetEdges(), k_Closed))
                return "hole is not a closed chain";
            const auto hole_edges = h.GetEdges();
            all.insert(all.end(), hole_edges.begin(), hole_edges.end());
            // A hole lies in its outline: the flattened hole, grown by the
            // flattening error, covers no area outside the outline.
            BPolygon hole;
            hole.outer() = Flatten(h);
            bg::correct(hole);
            BMulti outside;
            bg::difference(hole, outline, outside);
            if (bg::area(outside) > 1e-3 * std::max(1e-3, bg::area(hole)) + 1e-5)
                return "hole outside its outline";
        }
    }
    if (all.size() > 400)
        return "";
    for (size_t i = 0; i < all.size(); ++i)
        for (size_t j = i + 1; j < all.size(); ++j)
        {
            if (!all[i].GetBBox().IntersectsWith(all[j].GetBBox()))
                continue;
            if (CrossAwayFromEnds(all[i], all[j], 1e-4))
                return "edges cross";
        }
    return "";
}

// --- Random shapes, millimetre sized ---

class ShapeMaker
{
public:
    explicit ShapeMaker(unsigned seed) : m_Random(seed) {}

    double Uniform(double a, double b) { return std::uniform_real_distribution<double>(a, b)(m_Random); }
    int Pick(int n) { return std::uniform_int_distribution<int>(0, n - 1)(m_Random); }
    Point RandomPoint() { return Point(Uniform(-3, 3), Uniform(-3, 3)); }

    PolygonWithHoles Disk() { return PolygonWithHoles(Polygon(Circle(RandomPoint(), Uniform(0.2, 3)))); }
    PolygonWithHoles Trace()
    {
        return PolygonWithHoles(Polygon(Segment(RandomPoint(), RandomPoint()), Unit(Uniform(0.1, 1.5))));
    }
    PolygonWithHoles RoundedBox()
    {
        return PolygonWithHoles(
            Polygon(Box(RandomPoint(), RandomPoint()), Unit(Pick(3) == 0 ? 0.0 : Uniform(0.05, 1))));
    }
    // A star-shaped contour with bulging or hollow edges.
    PolygonWithHoles ArcPolygon()
    {
        const Point c = RandomPoint();
        const int n = 3 + Pick(6);
        std::vector<Point> pts;
        for (int i = 0; i < n; ++i)
        {
            const double t = (i + Uniform(0.1, 0.9)) * 2 * M_PI / n, r = Uniform(0.8, 3);
            pts.push_back(Point(c.m_X + r * std::cos(t), c.m_Y + r * std::sin(t)));
        }
        std::vector<Arc> arcs;
        for (int i = 0; i < n; ++i)
        {
            const Point& a = pts[static_cast<size_t>(i)];
            const Point& b = pts[static_cast<size_t>((i + 1) % n)];
            const double chord = std::sqrt(a.GetDistanceSquareTo(b).GetValue());
            const double h = Pick(3) == 0 ? 0.0 : Uniform(-0.12, 0.12) * chord;
            arcs.push_back(Arc(a, b, Unit(h)));
        }
        return PolygonWithHoles(Polygon(arcs, true));
    }
    // A rounded box with a disk and a box void.
    PolygonWithHoles WithHoles()
    {
        const Point c = RandomPoint();
        const double w = Uniform(2, 4), h = Uniform(2, 4);
        PolygonWithHoles r(Polygon(Box(Point(c.m_X - w, c.m_Y - h), Point(c.m_X + w, c.m_Y + h)), Unit(0.3)));
        r.AddHole(Polygon(Circle(Point(c.m_X - w / 2, c.m_Y), Uniform(0.2, w / 2 - 0.1))));
        r.AddHole(
            Polygon(Box(Point(c.m_X + 0.2, c.m_Y - h / 2), Point(c.m_X + w / 2, c.m_Y + h / 2)), Unit(0.0)));
        return r;
    }
    PolygonWithHoles Any()
    {
        switch (Pick(6))
        {
        case 0:
            return Disk();
        case 1:
            return Trace();
        case 2:
            return RoundedBox();
        case 3:
            return ArcPolygon();
        case 4:
            return WithHoles();
        default:
            return Pick(2) ? Disk() : RoundedBox();
        }
    }

    // A second operand made to meet the first awkwardly.
    PolygonWithHoles Nasty(const PolygonWithHoles& a, int kind)
    {
        const Box box = a.GetBBox();
        const double x0 = box.GetMinX().GetValue(), x1 = box.GetMaxX().GetValue();
        const double y0 = box.GetMinY().GetValue(), y1 = box.GetMaxY().GetValue();
        switch (kind)
        {
        case 0: // identical operand
            return a;
        case 1: // a copy shifted by less than the accuracy: a sliver
            return Shifted(a, Uniform(-4e-7, 4e-7), Uniform(-4e-7, 4e-7));
        case 2: // sharing the right side of the box
            return PolygonWithHoles(Polygon(Box(Point(x1, y0), Point(x1 + Uniform(0.5, 2), y1)), k_Unit_0));
        case 3: // a disk touching the box at one point
        {
            const double r = Uniform(0.3, 2);
            return PolygonWithHoles(Polygon(Circle(Point(x1 + r, (y0 + y1) / 2), r)));
        }
        case 4: // nearly touching from outside or inside, well below the accuracy
        {
            const double r = Uniform(0.3, 2);
            return PolygonWithHoles(Polygon(Circle(Point(x1 + r + Uniform(-3e-7, 3e-7), (y0 + y1) / 2), r)));
        }
        case 5: // a corner within the accuracy of the other's edge
            return PolygonWithHoles(Polygon(
                Box(Point(x1 + Uniform(-5e-7, 5e-7), (y0 + y1) / 2), Point(x1 + 2, y1 + 1)), k_Unit_0));
        case 6: // a copy moved along an axis: long common stretches
            return Shifted(a, Pick(2) ? Uniform(0.1, 1) : 0.0, Pick(2) ? 0.0 : Uniform(0.1, 1));
        default: // a coincident circle of another direction of travel, or a concentric one
        {
            Circle circle;
            if (a.GetPolygon().IsCircle(k_Accuracy, &circle))
                return PolygonWithHoles(
                    Polygon(Circle(circle.GetCenter(), circle.GetRadius() * (Pick(2) ? 1.0 : 0.5))));
            return PolygonWithHoles(Polygon(Circle(Point(x0, y0), Unit(x1 - x0) * 0.5)));
        }
        }
    }

private:
    static PolygonWithHoles Shifted(const PolygonWithHoles& a, double dx, double dy)
    {
        const auto move = [&](const Polygon& p)
        {
            std::vector<Arc> arcs;
            for (const Arc& e : p.GetEdges())
                arcs.push_back(Arc(Point(e.GetStart().m_X + dx, e.GetStart().m_Y + dy),
                                   Point(e.GetEnd().m_X + dx, e.GetEnd().m_Y + dy), e.GetHeight(),
                                   e.GetCenterAzimuth()));
            return Polygon(arcs, false);
        };
        PolygonWithHoles ret(move(a.GetPolygon()));
        for (const Polygon& h : a.GetHoles())
            ret.AddHole(move(h));
        return ret;
    }

    std::mt19937 m_Random;
};

int GetCaseCount(int by_default)
{
    const char* text = std::getenv("TNF_BOOLEAN_CASES");
    return text ? std::max(1, std::atoi(text)) : by_default;
}

// With TNF_BOOLEAN_ONLY=n only case n runs, and its shapes are printed
// exactly (ends, height, centre azimuth per edge) to replay a failure.
bool SkipCase(int i, const std::vector<PolygonWithHoles>& shapes)
{
    const char* only = std::getenv("TNF_BOOLEAN_ONLY");
    if (!only)
        return false;
    if (std::atoi(only) != i)
        return true;
    for (const PolygonWithHoles& r : shapes)
    {
        std::vector<Polygon> contours{r.GetPolygon()};
        for (const Polygon& h : r.GetHoles())
            contours.push_back(h);
        for (size_t c = 0; c < contours.size(); ++c)
        {
            std::printf(c == 0 ? "shape\n" : "hole\n");
            for (const Arc& e : contours[c].GetEdges())
                std::printf("%.17g %.17g %.17g %.17g %.17g %.17g\n", e.GetStart().m_X.GetValue(),
                            e.GetStart().m_Y.GetValue(), e.GetEnd().m_X.GetValue(), e.GetEnd().m_Y.GetValue(),
                            e.GetHeight().GetValue(), e.GetCenterAzimuth().GetValue());
        }
    }
    return false;
}

BMulti GetBoostResult(const BMulti& a, const BMulti& b, Graph::Mode mode)
{
    BMulti ret;
    switch (mode)
    {
    case Graph::k_Union:
        bg::union_(a, b, ret);
        break;
    case Graph::k_Intersection:
        bg::intersection(a, b, ret);
        break;
    case Graph::k_SymmetricDifference:
        bg::sym_difference(a, b, ret);
        break;
    case Graph::k_Subtraction:
        bg::difference(a, b, ret);
        break;
    }
    return ret;
}

struct Tally
{
    int m_Cases = 0;
    int m_Results = 0;
    double m_MaxAreaError = 0;
    double m_MaxRelativeError = 0;
};

// Runs one pair through all modes; adds a failure per fault.
void RunCase(const PolygonWithHoles& a, const PolygonWithHoles& b, const std::string& label, Tally& tally)
{
    const PolygonWithHolesCollection ca(std::vector<PolygonWithHoles>{a}),
        cb(std::vector<PolygonWithHoles>{b});
    // A generated contour that crosses itself isn't a region; it is skipped.
    if (!CheckResult(ca).empty() || !CheckResult(cb).empty())
        return;
    const BMulti ba = ToBoost(ca), bb = ToBoost(cb);
    const double tolerance = 2 * k_Deviation * (GetLength(ca) + GetLength(cb)) +
                             4 * k_Accuracy.GetValue() * (GetLength(ca) + GetLength(cb)) + 1e-9;
    double area[4];
    PolygonWithHolesCollection results[4];
    for (int m = 0; m < 4; ++m)
    {
        const Graph::Mode mode = static_cast<Graph::Mode>(m);
        const PolygonWithHolesCollection ours = Graph(a, b, k_Accuracy).GetResult(mode);
        results[m] = ours;
        area[m] = ours.GetArea().GetValue();
        const double expected = bg::area(GetBoostResult(ba, bb, mode));
        const double error = std::fabs(area[m] - expected);
        tally.m_MaxAreaError = std::max(tally.m_MaxAreaError, error);
        tally.m_MaxRelativeError = std::max(tally.m_MaxRelativeError, error / tolerance);
        ++tally.m_Results;
        EXPECT_LE(error, tolerance) << label << " mode " << m << ": ours " << area[m] << ", Boost "
                                    << expected;
        const std::string fault = CheckResult(ours);
        EXPECT_EQ(fault, "") << label << " mode " << m;
    }
    const double area_a = a.GetArea().GetValue(), area_b = b.GetArea().GetValue();
    const double exact = 4 * k_Accuracy.GetValue() * (GetLength(ca) + GetLength(cb)) + 1e-9;
    EXPECT_NEAR(area[Graph::k_Union] + area[Graph::k_Intersection], area_a + area_b, exact) << label;
    EXPECT_NEAR(area[Graph::k_Subtraction] + area[Graph::k_Intersection], area_a, exact) << label;
    EXPECT_NEAR(area[Graph::k_SymmetricDifference], area[Graph::k_Union] - area[Graph::k_Intersection], exact)
        << label;
    // A - B and A & B don't overlap: their flattened copies share no more
    // than the flattening error.
    BMulti overlap;
    bg::intersection(ToBoost(results[Graph::k_Subtraction]), ToBoost(results[Graph::k_Intersection]),
                     overlap);
    EXPECT_LE(bg::area(overlap), tolerance) << label;
    ++tally.m_Cases;
}
} // namespace

TEST(BooleanDifferential, RandomPairsAgainstBoost)
{
    ShapeMaker maker(20261122);
    Tally tally;
    const int cases = GetCaseCount(200);
    for (int i = 0; i < cases; ++i)
    {
        const PolygonWithHoles a = maker.Any(), b = maker.Any();
        if (SkipCase(i, {a, b}))
            continue;
        RunCase(a, b, "random case " + std::to_string(i), tally);
        if (HasFailure())
            break;
    }
    std::printf("random: %d cases, %d results, max area error %.3g (%.2f of tolerance)\n", tally.m_Cases,
                tally.m_Results, tally.m_MaxAreaError, tally.m_MaxRelativeError);
}

TEST(BooleanDifferential, AwkwardPairsAgainstBoost)
{
    ShapeMaker maker(7);
    Tally tally;
    const int cases = GetCaseCount(200);
    for (int i = 0; i < cases; ++i)
    {
        const int kind = i % 8;
        const PolygonWithHoles a = kind == 7 ? maker.Disk() : maker.Any();
        const PolygonWithHoles b = maker.Nasty(a, kind);
        if (SkipCase(i, {a, b}))
            continue;
        RunCase(a, b, "awkward case " + std::to_string(i) + " kind " + std::to_string(kind), tally);
        if (HasFailure())
            break;
    }
    std::printf("awkward: %d cases, %d results, max area error %.3g (%.2f of tolerance)\n", tally.m_Cases,
                tally.m_Results, tally.m_MaxAreaError, tally.m_MaxRelativeError);
}

namespace
{
double GetLength(const std::vector<PolygonWithHoles>& shapes)
{
    return GetLength(PolygonWithHolesCollection(shapes));
}
} // namespace

TEST(BooleanDifferential, UnionOfOneCollectionAndPlanesMinusVoids)
{
    // A plane's pads, traces and boxes overlap freely: their union through
    // one graph, and a plane of several pieces minus that union.
    ShapeMaker maker(99);
    Tally tally;
    int unjudged = 0;
    const int cases = std::max(1, GetCaseCount(200) / 4);
    for (int i = 0; i < cases; ++i)
    {
        std::vector<PolygonWithHoles> shapes;
        const int n = 2 + maker.Pick(12);
        for (int k = 0; k < n; ++k)
            shapes.push_back(maker.Pick(3)
                                 ? maker.Any()
                                 : maker.Nasty(shapes.empty() ? maker.Disk() : shapes.back(), maker.Pick(8)));
        const PolygonWithHolesCollection input(shapes);
        bool valid = true;
        for (const PolygonWithHoles& s : shapes)
            valid =
                valid && CheckResult(PolygonWithHolesCollection(std::vector<PolygonWithHoles>{s})).empty();
        if (!valid)
            continue;
        const std::string label = "collection case " + std::to_string(i);
        if (SkipCase(i, shapes))
            continue;
        const double tolerance =
            2 * k_Deviation * GetLength(shapes) + 4 * k_Accuracy.GetValue() * GetLength(shapes) + 1e-9;
        const PolygonWithHolesCollection ours = PolyArcIntersectionGraph2(input, k_Accuracy).GetResult();
        // Boost folds the union one shape at a time. On shapes that nearly
        // share edges its fold can go wrong (a union smaller than a union of
        // fewer shapes); folding in the opposite order shows it, and such a
        // case is left out as unjudged.
        BMulti expected, backwards;
        for (size_t k = 0; k < shapes.size(); ++k)
        {
            BMulti u, w;
            bg::union_(expected,
                       ToBoost(PolygonWithHolesCollection(std::vector<PolygonWithHoles>{shapes[k]})), u);
            expected = u;
            bg::union_(backwards,
                       ToBoost(PolygonWithHolesCollection(
                           std::vector<PolygonWithHoles>{shapes[shapes.size() - 1 - k]})),
                       w);
            backwards = w;
        }
        if (std::fabs(bg::area(expected) - bg::area(backwards)) > tolerance)
        {
            ++unjudged;
            continue;
        }
        const double error = std::fabs(ours.GetArea().GetValue() - bg::area(expected));
        tally.m_MaxAreaError = std::max(tally.m_MaxAreaError, error);
        ++tally.m_Results;
        EXPECT_LE(error, tolerance) << label << " union";
        EXPECT_EQ(CheckResult(ours), "") << label << " union";
        // A plane of two rounded boxes minus the union.
        const Box box = input.GetBBox();
        const Point c = box.GetCenter();
        const PolygonWithHolesCollection plane(std::vector<PolygonWithHoles>{
            PolygonWithHoles(Polygon(
                Box(Point(box.GetMinX() - 1, box.GetMinY() - 1), Point(c.m_X - 0.3, box.GetMaxY() + 1)),
                Unit(0.2))),
            PolygonWithHoles(Polygon(
                Box(Point(c.m_X + 0.3, box.GetMinY() - 1), Point(box.GetMaxX() + 1, box.GetMaxY() + 1)),
                Unit(0.2)))});
        const PolygonWithHolesCollection cut = plane.Subtract(ours, k_Accuracy);
        BMulti expected_cut;
        bg::difference(ToBoost(plane), expected, expected_cut);
        const double cut_tolerance = tolerance + 2 * k_Deviation * GetLength(plane);
        const double cut_error = std::fabs(cut.GetArea().GetValue() - bg::area(expected_cut));
        tally.m_MaxAreaError = std::max(tally.m_MaxAreaError, cut_error);
        ++tally.m_Results;
        EXPECT_LE(cut_error, cut_tolerance) << label << " plane minus union";
        EXPECT_EQ(CheckResult(cut), "") << label << " plane minus union";
        ++tally.m_Cases;
        if (HasFailure())
            break;
    }
    std::printf("collections: %d cases, %d results, max area error %.3g, %d unjudged\n", tally.m_Cases,
                tally.m_Results, tally.m_MaxAreaError, unjudged);
}
