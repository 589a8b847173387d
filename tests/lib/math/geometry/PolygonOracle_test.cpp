// Random arc polygons against an independent model: each edge's circle is
// worked out here from its ends and sagitta, flattened densely, and the
// flattened contour answers area (shoelace) and point location (signed
// crossings of a ray, i.e. the winding number). The exact area comes from
// the vertices' shoelace plus the circular segments r^2/2 (t - sin t).
#include "lib/math/geometry/Polygon.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

using namespace geom;

namespace
{
struct P
{
    double x, y;
};

// The circle of an edge, computed from first principles.
struct EdgeModel
{
    bool straight = true;
    double flat_area = 0; // the slice of an arc too flat for a centre: -2/3 chord h
    double cx = 0, cy = 0, r = 0;
    double start_angle = 0; // of the start, seen from the centre
    double sweep = 0;       // signed, counter-clockwise positive
    P a{0, 0}, b{0, 0};
};

EdgeModel Model(const Arc& arc)
{
    EdgeModel m;
    m.a = {arc.GetStart().m_X.GetValue(), arc.GetStart().m_Y.GetValue()};
    m.b = {arc.GetEnd().m_X.GetValue(), arc.GetEnd().m_Y.GetValue()};
    const double h = arc.GetHeight().GetValue();
    if (h == 0)
        return m;
    m.straight = false;
    if (m.a.x == m.b.x && m.a.y == m.b.y)
    {
        // Full circle: |h| is the diameter, the stored azimuth points to the centre.
        const double az = arc.GetCenterAzimuth().GetValue();
        m.r = std::fabs(h) / 2;
        m.cx = m.a.x + m.r * std::cos(az);
        m.cy = m.a.y + m.r * std::sin(az);
        m.start_angle = std::atan2(m.a.y - m.cy, m.a.x - m.cx);
        m.sweep = h < 0 ? 2 * k_Pi : -2 * k_Pi;
        return m;
    }
    const double dx = m.b.x - m.a.x, dy = m.b.y - m.a.y;
    const double c = std::hypot(dx, dy), half = c / 2;
    if (std::fabs(h) < 1e-7 * c)
    {
        // The centre of so flat an arc is lost in rounding; as a chord it is
        // off by |h| at most, and its slice is the parabolic -2/3 c h.
        m.straight = true;
        m.flat_area = -2.0 / 3.0 * c * h;
        return m;
    }
    // Middle of the arc: chord middle plus the left normal times h.
    const double mx = (m.a.x + m.b.x) / 2 - dy / c * h, my = (m.a.y + m.b.y) / 2 + dx / c * h;
    m.r = (half * half + h * h) / (2 * std::fabs(h));
    // The centre lies from the arc's middle towards the chord, at distance r.
    const double ux = ((m.a.x + m.b.x) / 2 - mx) / std::fabs(h),
                 uy = ((m.a.y + m.b.y) / 2 - my) / std::fabs(h);
    m.cx = mx + ux * m.r;
    m.cy = my + uy * m.r;
    m.start_angle = std::atan2(m.a.y - m.cy, m.a.x - m.cx);
    m.sweep = -4 * std::atan(h / half);
    return m;
}

double ExactArea(const std::vector<Arc>& arcs)
{
    double area = 0;
    for (const Arc& arc : arcs)
    {
        const EdgeModel m = Model(arc);
        area += 0.5 * (m.a.x * m.b.y - m.b.x * m.a.y) + m.flat_area;
        if (!m.straight)
            area += 0.5 * m.r * m.r * (m.sweep - std::sin(m.sweep));
    }
    return area;
}

std::vector<P> Flatten(const std::vector<Arc>& arcs, double tolerance)
{
    std::vector<P> pts;
    for (const Arc& arc : arcs)
    {
        const EdgeModel m = Model(arc);
        pts.push_back(m.a);
        if (m.straight)
            continue;
        const double step = 2 * std::acos(std::max(-1.0, 1 - tolerance / m.r));
        const int n = std::max(4, static_cast<int>(std::ceil(std::fabs(m.sweep) / step)));
        for (int i = 1; i < n; ++i)
        {
            const double t = m.start_angle + m.sweep * i / n;
            pts.push_back({m.cx + m.r * std::cos(t), m.cy + m.r * std::sin(t)});
        }
    }
    return pts;
}

double Shoelace(const std::vector<P>& pts)
{
    double area = 0;
    for (size_t i = 0; i < pts.size(); ++i)
    {
        const P& a = pts[i];
        const P& b = pts[(i + 1) % pts.size()];
        area += a.x * b.y - b.x * a.y;
    }
    return area / 2;
}

// Signed crossings of the ray to +x: the winding number of the flattened contour.
int Winding(const std::vector<P>& pts, P q)
{
    int w = 0;
    for (size_t i = 0; i < pts.size(); ++i)
    {
        const P& a = pts[i];
        const P& b = pts[(i + 1) % pts.size()];
        const double side = (b.x - a.x) * (q.y - a.y) - (q.x - a.x) * (b.y - a.y);
        if (a.y <= q.y && b.y > q.y && side > 0)
            ++w;
        else if (a.y > q.y && b.y <= q.y && side < 0)
            --w;
    }
    return w;
}

// The distance of q from the true contour.
double DistanceToContour(const std::vector<Arc>& arcs, P q)
{
    double best = 1e300;
    for (const Arc& arc : arcs)
    {
        const EdgeModel m = Model(arc);
        best = std::min({best, std::hypot(q.x - m.a.x, q.y - m.a.y), std::hypot(q.x - m.b.x, q.y - m.b.y)});
        if (m.straight)
        {
            const double dx = m.b.x - m.a.x, dy = m.b.y - m.a.y, l2 = dx * dx + dy * dy;
            if (l2 == 0)
                continue;
            const double t = ((q.x - m.a.x) * dx + (q.y - m.a.y) * dy) / l2;
            if (t > 0 && t < 1)
                best = std::min(best, std::fabs((q.x - m.a.x) * dy - (q.y - m.a.y) * dx) / std::sqrt(l2));
            continue;
        }
        // The radial distance counts when q's direction falls in the sweep.
        double t = std::atan2(q.y - m.cy, q.x - m.cx) - m.start_angle;
        if (m.sweep > 0)
            t = std::fmod(std::fmod(t, 2 * k_Pi) + 2 * k_Pi, 2 * k_Pi);
        else
            t = -std::fmod(std::fmod(-t, 2 * k_Pi) + 2 * k_Pi, 2 * k_Pi);
        if (std::fabs(t) <= std::fabs(m.sweep))
            best = std::min(best, std::fabs(std::hypot(q.x - m.cx, q.y - m.cy) - m.r));
    }
    return best;
}

enum Shape
{
    k_Convex, // vertices in order on a circle, edges straight or bulging out within the circle's own bulge
    k_Star,   // vertices in order around a centre at random distances, any heights
    k_Wild    // vertices in random order: self-crossing contours, winding numbers beyond 1
};

// A random closed contour; heights from straight through nearly flat to
// bulging beyond a half circle.
std::vector<Arc> RandomContour(std::mt19937& rng, Shape shape)
{
    std::uniform_real_distribution<double> u(0.0, 1.0);
    const int n = 3 + static_cast<int>(u(rng) * 9);
    std::vector<double> angles;
    for (int i = 0; i < n; ++i)
        angles.push_back(u(rng) * 2 * k_Pi);
    if (shape != k_Wild)
        std::sort(angles.begin(), angles.end());
    const double cx = (u(rng) - 0.5) * 20, cy = (u(rng) - 0.5) * 20;
    std::vector<Point> v;
    for (double a : angles)
    {
        const double radius = shape == k_Convex ? 3 : 1 + 4 * u(rng);
        v.push_back(Point(cx + radius * std::cos(a), cy + radius * std::sin(a)));
    }
    std::vector<Arc> arcs;
    for (int i = 0; i < n; ++i)
    {
        const Point& a = v[i];
        const Point& b = v[(i + 1) % n];
        const double chord = std::sqrt(a.GetDistanceSquareTo(b).GetValue());
        double h = 0;
        if (shape == k_Convex)
        {
            // Outwards (counter-clockwise) no further than the circle through the vertices.
            const double circle_bulge = 3 - std::sqrt(9 - chord * chord / 4);
            arcs.push_back(Arc(a, b, -u(rng) * circle_bulge));
            continue;
        }
        switch (static_cast<int>(u(rng) * 5))
        {
        case 0:
            break;
        case 1: // almost straight
            h = (u(rng) - 0.5) * chord * 1e-9;
            break;
        case 2: // beyond a half circle
            h = (u(rng) < 0.5 ? -1 : 1) * chord * (0.5 + u(rng));
            break;
        default:
            h = (u(rng) - 0.5) * chord * 0.8;
        }
        arcs.push_back(Arc(a, b, h));
    }
    return arcs;
}

// Points of interest: random ones in the box, on the axes through each
// vertex, near vertices and near arc middles.
std::vector<Point> ProbePoints(std::mt19937& rng, const std::vector<Arc>& arcs, const Box& box)
{
    std::uniform_real_distribution<double> u(0.0, 1.0);
    auto random_x = [&] { return box.GetMinX().GetValue() - 1 + u(rng) * (box.GetWidth().GetValue() + 2); };
    auto random_y = [&] { return box.GetMinY().GetValue() - 1 + u(rng) * (box.GetHeight().GetValue() + 2); };
    std::vector<Point> pts;
    for (int i = 0; i < 20; ++i)
        pts.push_back(Point(random_x(), random_y()));
    for (const Arc& a : arcs)
    {
        const Point& s = a.GetStart();
        pts.push_back(Point(s.m_X, random_y()));
        pts.push_back(Point(random_x(), s.m_Y));
        const double d = std::pow(10.0, -1 - 3 * u(rng));
        pts.push_back(Point(s.m_X + d * (u(rng) - 0.5), s.m_Y + d * (u(rng) - 0.5)));
        pts.push_back(Point(s.m_X + d, s.m_Y)); // on the horizontal through the vertex
        const Point m = a.GetMiddle();
        pts.push_back(Point(m.m_X + d * (u(rng) - 0.5), m.m_Y + d * (u(rng) - 0.5)));
    }
    return pts;
}

P ToP(const Point& p)
{
    return {p.m_X.GetValue(), p.m_Y.GetValue()};
}
} // namespace

TEST(PolygonOracle, AreaAndPointLocationOfRandomArcContours)
{
    std::mt19937 rng(20261122);
    int compared_points = 0, undecided_walks = 0;
    for (int round = 0; round < 1000; ++round)
    {
        const std::vector<Arc> arcs = RandomContour(rng, static_cast<Shape>(round % 3));
        const Polygon polygon(arcs, false);
        ASSERT_EQ(polygon.GetEdgeCount(), static_cast<int>(arcs.size()));

        const double exact = ExactArea(arcs);
        const std::vector<P> flat = Flatten(arcs, 1e-6);
        const double scale = polygon.GetBBox().GetArea().GetValue() + 1;
        EXPECT_NEAR(polygon.GetSignedArea().GetValue(), exact, 1e-9 * scale) << "round " << round;
        EXPECT_NEAR(polygon.GetSignedArea().GetValue(), Shoelace(flat), 1e-4 * scale) << "round " << round;
        EXPECT_NEAR(polygon.GetReversed().GetSignedArea().GetValue(), -exact, 1e-9 * scale);

        for (const Point& p : ProbePoints(rng, arcs, polygon.GetBBox()))
        {
            if (DistanceToContour(arcs, ToP(p)) < 1e-5)
                continue;
            const int winding = Winding(flat, ToP(p));
            ++compared_points;
            ASSERT_EQ(polygon.IsPointInside(p, k_Unit_0), winding != 0)
                << "round " << round << " point " << p.m_X.GetValue() << ", " << p.m_Y.GetValue();
            ASSERT_EQ(polygon.IsPointInside(p, Unit(1e-9)), winding != 0) << "round " << round;
            const Result_T<int> sum = polygon.GetQuadrantSum(p, k_Unit_0);
            undecided_walks += !sum.m_Success;
            if (sum.m_Success)
            {
                ASSERT_EQ(sum.m_Value, 4 * winding) << "round " << round;
            }
        }
    }
    EXPECT_GT(compared_points, 40000);
    // The points on the axes through vertices did take the displaced-point road.
    EXPECT_GT(undecided_walks, 1000);
}

TEST(PolygonOracle, PointsOnTheContourAreInside)
{
    std::mt19937 rng(7);
    for (int round = 0; round < 300; ++round)
    {
        const std::vector<Arc> arcs = RandomContour(rng, k_Star);
        const Polygon polygon(arcs, false);
        for (const Arc& a : arcs)
        {
            // Vertices are exact, so even accuracy 0 finds them on the contour.
            EXPECT_TRUE(polygon.IsPointInside(a.GetStart(), k_Unit_0));
            EXPECT_EQ(polygon.GetRelation(a.GetStart(), k_Unit_0), k_PointOnBoundary);
            // A middle computed here lies within rounding of the arc.
            const EdgeModel m = Model(a);
            const double dx = m.b.x - m.a.x, dy = m.b.y - m.a.y, c = std::hypot(dx, dy);
            const double h = a.GetHeight().GetValue();
            const Point mid = c == 0
                                  ? a.GetStart()
                                  : Point((m.a.x + m.b.x) / 2 - dy / c * h, (m.a.y + m.b.y) / 2 + dx / c * h);
            // (Arcs flatter than 1e-6 of their chord are left out: the arc's
            // own point test loses them in the squares of their huge radius.)
            if (h == 0 || std::fabs(h) >= 1e-6 * c)
            {
                EXPECT_EQ(polygon.GetRelation(mid, Unit(1e-9)), k_PointOnBoundary)
                    << "round " << round << " h/c " << h / c;
            }
        }
    }
}

TEST(PolygonOracle, LargeCoordinatesKeepTheirAnswers)
{
    // A board far from the origin: the same contour shifted by 10^4 keeps its
    // area and its inside.
    std::mt19937 rng(99);
    for (int round = 0; round < 200; ++round)
    {
        std::vector<Arc> arcs = RandomContour(rng, k_Star);
        for (Arc& a : arcs)
            a = Arc(a.GetStart() + Vector(1e4, -1e4), a.GetEnd() + Vector(1e4, -1e4), a.GetHeight());
        const Polygon polygon(arcs, false);
        const std::vector<P> flat = Flatten(arcs, 1e-7);
        EXPECT_NEAR(polygon.GetSignedArea().GetValue(), ExactArea(arcs), 1e-6);
        for (const Point& p : ProbePoints(rng, arcs, polygon.GetBBox()))
            if (DistanceToContour(arcs, ToP(p)) > 1e-4)
            {
                ASSERT_EQ(polygon.IsPointInside(p, k_Unit_0), Winding(flat, ToP(p)) != 0)
                    << "round " << round;
            }
    }
}
