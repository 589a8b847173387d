// booleans_bench.cpp - boolean operations on arc regions against Clipper 1 and Boost.Geometry.
//
// Four plane-like workloads at constant density (the board's side grows with
// the square root of the count): A the union of N traces 0.25 mm wide with
// round ends, B the union of N pads of radius 0.2 to 0.8 mm, C a square
// plane minus N pads and N rounded boxes, D the result of C shrunk by
// 0.125 mm. Our operations keep true arcs; the reference libraries get the
// same shapes flattened to chords deviating at most 1 um from the arcs, in
// nanometre integers for Clipper. The shapes are made once per size.
#include "lib/math/geometry/PolyArcIntersectionGraph.h"
#include "lib/math/geometry/PolyArcIntersectionGraph2.h"

#include <benchmark/benchmark.h>
#include <boost/geometry.hpp>
#include <boost/geometry/geometries/multi_polygon.hpp>
#include <boost/geometry/geometries/point_xy.hpp>
#include <boost/geometry/geometries/polygon.hpp>
#include <polyclipping/clipper.hpp>

#include <cmath>
#include <map>
#include <random>
#include <vector>

namespace
{
using namespace geom;
namespace bg = boost::geometry;
using BPoint = bg::model::d2::point_xy<double>;
using BPolygon = bg::model::polygon<BPoint, false, true>;
using BMulti = bg::model::multi_polygon<BPolygon>;

const Unit k_Accuracy(1e-6);
const double k_Deviation = 1e-3;   // mm: 1 um
const double k_ClipperScale = 1e6; // nanometres
const double k_ShrinkBy = 0.125;

// One workload's input in the three representations.
struct Workload
{
    std::vector<PolygonWithHoles> m_Shapes;
    std::vector<std::vector<Point>> m_Flat; // counter-clockwise rings
    Polygon m_Plane;                        // workload C only
    std::vector<Point> m_PlaneFlat;
};

std::vector<Point> FlattenChain(const PolyArc& chain)
{
    std::vector<Point> pts;
    for (const Arc& a : chain.GetEdges())
    {
        pts.push_back(a.GetStart());
        if (a.IsSegment(k_Unit_0, nullptr))
            continue;
        const double r = a.GetRadius().GetValue();
        const double step = 2 * std::acos(std::max(-1.0, 1 - k_Deviation / r));
        const double sweep = a.GetAngle().GetRadians();
        const int n = std::max(2, static_cast<int>(std::ceil(std::fabs(sweep) / step)));
        const Point c = a.GetCenter();
        const Vector v = a.GetStart() - c;
        for (int i = 1; i < n; ++i)
        {
            const double t = sweep * i / n, cs = std::cos(t), sn = std::sin(t);
            pts.push_back(
                Point(c.m_X + v.GetX() * cs - v.GetY() * sn, c.m_Y + v.GetX() * sn + v.GetY() * cs));
        }
    }
    return pts;
}

ClipperLib::Path ToClipper(const std::vector<Point>& pts)
{
    ClipperLib::Path path;
    path.reserve(pts.size());
    for (const Point& p : pts)
        path.emplace_back(static_cast<ClipperLib::cInt>(std::llround(p.m_X.GetValue() * k_ClipperScale)),
                          static_cast<ClipperLib::cInt>(std::llround(p.m_Y.GetValue() * k_ClipperScale)));
    return path;
}

BPolygon ToBoost(const std::vector<Point>& pts)
{
    BPolygon p;
    for (const Point& q : pts)
        p.outer().emplace_back(q.m_X.GetValue(), q.m_Y.GetValue());
    if (!pts.empty())
        p.outer().emplace_back(pts.front().m_X.GetValue(), pts.front().m_Y.GetValue());
    return p;
}

// Boost unites pairwise in a balanced tree: one union of all at once isn't
// offered, and folding one by one would be quadratic.
BMulti BoostUnion(std::vector<BMulti> parts)
{
    if (parts.empty())
        return BMulti();
    while (parts.size() > 1)
    {
        std::vector<BMulti> next;
        for (size_t i = 0; i + 1 < parts.size(); i += 2)
        {
            BMulti u;
            bg::union_(parts[i], parts[i + 1], u);
            next.push_back(std::move(u));
        }
        if (parts.size() % 2)
            next.push_back(std::move(parts.back()));
        parts.swap(next);
    }
    return parts.front();
}

Workload MakeWorkload(char kind, int n)
{
    std::mt19937 random(static_cast<unsigned>(n * 31 + kind));
    const auto uniform = [&](double a, double b)
    { return std::uniform_real_distribution<double>(a, b)(random); };
    Workload w;
    const double side = std::sqrt(static_cast<double>(n)) * (kind == 'A' ? 1.5 : kind == 'B' ? 1.2 : 2.0);
    const auto point = [&]() { return Point(uniform(0, side), uniform(0, side)); };
    for (int i = 0; i < n; ++i)
    {
        if (kind == 'A')
        {
            const Point a = point();
            const double len = uniform(0.5, 2), t = uniform(0, 2 * M_PI);
            w.m_Shapes.push_back(PolygonWithHoles(Polygon(
                Segment(a, Point(a.m_X + len * std::cos(t), a.m_Y + len * std::sin(t))), Unit(0.25))));
        }
        else
        {
            w.m_Shapes.push_back(PolygonWithHoles(Polygon(Circle(point(), uniform(0.2, 0.8)))));
            if (kind != 'B')
            {
                const Point c = point();
                const double hw = uniform(0.15, 0.5), hh = uniform(0.15, 0.5);
                w.m_Shapes.push_back(PolygonWithHoles(
                    Polygon(Box(Point(c.m_X - hw, c.m_Y - hh), Point(c.m_X + hw, c.m_Y + hh)), Unit(0.1))));
            }
        }
    }
    for (const PolygonWithHoles& s : w.m_Shapes)
        w.m_Flat.push_back(FlattenChain(s.GetPolygon()));
    if (kind == 'C' || kind == 'D')
    {
        w.m_Plane = Polygon(Box(Point(0.0, 0.0), Point(side, side)), k_Unit_0);
        w.m_PlaneFlat = FlattenChain(w.m_Plane);
    }
    return w;
}

const Workload& GetWorkload(char kind, int n)
{
    static std::map<std::pair<char, int>, Workload> cache;
    auto i = cache.find({kind, n});
    if (i == cache.end())
        i = cache.emplace(std::make_pair(kind, n), MakeWorkload(kind, n)).first;
    return i->second;
}

// --- Ours ---

PolygonWithHolesCollection OurUnion(const std::vector<PolygonWithHoles>& shapes)
{
    return PolyArcIntersectionGraph2(PolygonWithHolesCollection(shapes), k_Accuracy).GetResult();
}

PolygonWithHolesCollection OurPlane(const Workload& w)
{
    const PolygonWithHolesCollection plane(std::vector<PolygonWithHoles>{PolygonWithHoles(w.m_Plane)});
    return plane.Subtract(OurUnion(w.m_Shapes), k_Accuracy);
}

// Each region shrunk by the library: its outline moved inwards, its voids
// grown by the same distance, united and taken away.
PolygonWithHolesCollection OurShrink(const PolygonWithHolesCollection& regions)
{
    return regions.Shrink(Unit(k_ShrinkBy), k_Accuracy, true, 0, k_Unit_0, nullptr);
}

void BM_Ours(benchmark::State& state, char kind)
{
    const Workload& w = GetWorkload(kind, static_cast<int>(state.range(0)));
    PolygonWithHolesCollection base;
    if (kind == 'D')
        base = OurPlane(w);
    double area = 0;
    size_t entries = 0;
    for (auto _ : state)
    {
        PolygonWithHolesCollection r;
        switch (kind)
        {
        case 'A':
        case 'B':
            r = OurUnion(w.m_Shapes);
            break;
        case 'C':
            r = OurPlane(w);
            break;
        default:
            r = OurShrink(base);
            break;
        }
        area = r.GetArea().GetValue();
        entries = static_cast<size_t>(r.size());
        benchmark::DoNotOptimize(area);
    }
    state.counters["area_mm2"] = area;
    state.counters["entries"] = static_cast<double>(entries);
}

// --- Clipper ---

void BM_Clipper(benchmark::State& state, char kind)
{
    const Workload& w = GetWorkload(kind, static_cast<int>(state.range(0)));
    ClipperLib::Paths shapes;
    for (const auto& f : w.m_Flat)
        shapes.push_back(ToClipper(f));
    const auto plane = [&]()
    {
        ClipperLib::Clipper c;
        c.AddPath(ToClipper(w.m_PlaneFlat), ClipperLib::ptSubject, true);
        c.AddPaths(shapes, ClipperLib::ptClip, true);
        ClipperLib::Paths out;
        c.Execute(ClipperLib::ctDifference, out, ClipperLib::pftNonZero, ClipperLib::pftNonZero);
        return out;
    };
    ClipperLib::Paths base;
    if (kind == 'D')
        base = plane();
    double area = 0;
    for (auto _ : state)
    {
        ClipperLib::Paths out;
        switch (kind)
        {
        case 'A':
        case 'B':
        {
            ClipperLib::Clipper c;
            c.AddPaths(shapes, ClipperLib::ptSubject, true);
            c.Execute(ClipperLib::ctUnion, out, ClipperLib::pftNonZero, ClipperLib::pftNonZero);
            break;
        }
        case 'C':
            out = plane();
            break;
        default:
        {
            ClipperLib::ClipperOffset o;
            o.ArcTolerance = k_Deviation * k_ClipperScale;
            o.AddPaths(base, ClipperLib::jtRound, ClipperLib::etClosedPolygon);
            o.Execute(out, -k_ShrinkBy * k_ClipperScale);
            break;
        }
        }
        area = 0;
        for (const auto& p : out)
            area += ClipperLib::Area(p);
        area /= k_ClipperScale * k_ClipperScale;
        benchmark::DoNotOptimize(area);
    }
    state.counters["area_mm2"] = area;
}

// --- Boost.Geometry ---

void BM_Boost(benchmark::State& state, char kind)
{
    const Workload& w = GetWorkload(kind, static_cast<int>(state.range(0)));
    std::vector<BMulti> shapes;
    for (const auto& f : w.m_Flat)
    {
        BPolygon p = ToBoost(f);
        bg::correct(p);
        shapes.push_back(BMulti{p});
    }
    BPolygon plane_polygon = ToBoost(w.m_PlaneFlat);
    bg::correct(plane_polygon);
    const auto plane = [&]()
    {
        BMulti out;
        bg::difference(plane_polygon, BoostUnion(shapes), out);
        return out;
    };
    BMulti base;
    if (kind == 'D')
        base = plane();
    // Points per full circle for a 1 um chord deviation at the shrink radius.
    const int points = static_cast<int>(std::ceil(2 * M_PI / (2 * std::acos(1 - k_Deviation / k_ShrinkBy))));
    double area = 0;
    for (auto _ : state)
    {
        BMulti out;
        switch (kind)
        {
        case 'A':
        case 'B':
            out = BoostUnion(shapes);
            break;
        case 'C':
            out = plane();
            break;
        default:
            bg::buffer(base, out, bg::strategy::buffer::distance_symmetric<double>(-k_ShrinkBy),
                       bg::strategy::buffer::side_straight(), bg::strategy::buffer::join_round(points),
                       bg::strategy::buffer::end_round(points), bg::strategy::buffer::point_circle(points));
            break;
        }
        area = bg::area(out);
        benchmark::DoNotOptimize(area);
    }
    state.counters["area_mm2"] = area;
}

void Sizes(benchmark::internal::Benchmark* b)
{
    for (int n : {10, 100, 1000, 10000})
        b->Arg(n);
    b->Unit(benchmark::kMillisecond)->MinTime(0.3);
}

// Boost.Geometry takes minutes beyond ten thousand shapes; the others go on.
void LargerSizes(benchmark::internal::Benchmark* b)
{
    Sizes(b);
    b->Arg(30000);
}
} // namespace

BENCHMARK_CAPTURE(BM_Ours, A_TraceUnion, 'A')->Apply(LargerSizes);
BENCHMARK_CAPTURE(BM_Clipper, A_TraceUnion, 'A')->Apply(LargerSizes);
BENCHMARK_CAPTURE(BM_Boost, A_TraceUnion, 'A')->Apply(Sizes);
BENCHMARK_CAPTURE(BM_Ours, B_PadUnion, 'B')->Apply(LargerSizes);
BENCHMARK_CAPTURE(BM_Clipper, B_PadUnion, 'B')->Apply(LargerSizes);
BENCHMARK_CAPTURE(BM_Boost, B_PadUnion, 'B')->Apply(Sizes);
BENCHMARK_CAPTURE(BM_Ours, C_PlaneMinusVoids, 'C')->Apply(LargerSizes);
BENCHMARK_CAPTURE(BM_Clipper, C_PlaneMinusVoids, 'C')->Apply(LargerSizes);
BENCHMARK_CAPTURE(BM_Boost, C_PlaneMinusVoids, 'C')->Apply(Sizes);
BENCHMARK_CAPTURE(BM_Ours, D_ShrunkPlane, 'D')->Apply(LargerSizes);
BENCHMARK_CAPTURE(BM_Clipper, D_ShrunkPlane, 'D')->Apply(LargerSizes);
BENCHMARK_CAPTURE(BM_Boost, D_ShrunkPlane, 'D')->Apply(Sizes);
