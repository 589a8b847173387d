// booleans_bench.cpp - boolean operations on arc regions against Clipper 1, CGAL and Boost.Geometry.
//
// Four plane-like workloads at constant density (the board's side grows with
// the square root of the count): A the union of N traces 0.25 mm wide with
// round ends, B the union of N pads of radius 0.2 to 0.8 mm, C a square
// plane minus N pads and N rounded boxes, D the result of C shrunk by
// 0.125 mm. Our operations keep true arcs; Clipper and Boost.Geometry get
// the same shapes flattened to chords deviating at most 1 um from the arcs,
// in nanometre integers for Clipper. CGAL (when built with it) gets the
// shapes with true arcs in exact rational arithmetic for A to C; for D it
// offsets the flattened rings of our plane, since its offsets take straight
// edges only. The shapes are made once per size.
#include "lib/math/geometry/PolyArcIntersectionGraph.h"
#include "lib/math/geometry/PolyArcIntersectionGraph2.h"

#include <benchmark/benchmark.h>
#include <boost/geometry.hpp>
#include <boost/geometry/geometries/multi_polygon.hpp>
#include <boost/geometry/geometries/point_xy.hpp>
#include <boost/geometry/geometries/polygon.hpp>
#include <polyclipping/clipper.hpp>
#ifdef TNF_BENCH_CGAL
#include <CGAL/Boolean_set_operations_2.h>
#include <CGAL/Exact_predicates_exact_constructions_kernel.h>
#include <CGAL/General_polygon_set_2.h>
#include <CGAL/Gps_circle_segment_traits_2.h>
#include <CGAL/approximated_offset_2.h>
#endif

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

// One shape as drawn: a disk (centre A), a trace from A to B, or a box from
// corner A to corner B grown by the radius with round corners.
struct Primitive
{
    enum Kind
    {
        k_Disk,
        k_Trace,
        k_RoundedBox
    } m_Kind = k_Disk;
    Point m_A, m_B;
    double m_Radius = 0;
};

// One workload's input in the representations of the libraries.
struct Workload
{
    double m_Side = 0;
    std::vector<Primitive> m_Primitives;
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
    w.m_Side = side;
    for (int i = 0; i < n; ++i)
    {
        if (kind == 'A')
        {
            const Point a = point();
            const double len = uniform(0.5, 2), t = uniform(0, 2 * M_PI);
            const Point b(a.m_X + len * std::cos(t), a.m_Y + len * std::sin(t));
            w.m_Primitives.push_back({Primitive::k_Trace, a, b, 0.125});
            w.m_Shapes.push_back(PolygonWithHoles(Polygon(Segment(a, b), Unit(0.25))));
        }
        else
        {
            const Point c = point();
            const double r = uniform(0.2, 0.8);
            w.m_Primitives.push_back({Primitive::k_Disk, c, c, r});
            w.m_Shapes.push_back(PolygonWithHoles(Polygon(Circle(c, r))));
            if (kind != 'B')
            {
                const Point m = point();
                const double hw = uniform(0.15, 0.5), hh = uniform(0.15, 0.5);
                const Point lo(m.m_X - hw, m.m_Y - hh), hi(m.m_X + hw, m.m_Y + hh);
                w.m_Primitives.push_back({Primitive::k_RoundedBox, lo, hi, 0.1});
                w.m_Shapes.push_back(PolygonWithHoles(Polygon(Box(lo, hi), Unit(0.1))));
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

// --- CGAL ---

#ifdef TNF_BENCH_CGAL
using CKernel = CGAL::Exact_predicates_exact_constructions_kernel;
using CTraits = CGAL::Gps_circle_segment_traits_2<CKernel>;
using CSet = CGAL::General_polygon_set_2<CTraits>;
using CPolygon = CTraits::Polygon_2;
using CRegion = CTraits::Polygon_with_holes_2;
using CCurve = CTraits::Curve_2;
using CXCurve = CTraits::X_monotone_curve_2;
using CFT = CKernel::FT;
using CKPoint = CKernel::Point_2;
using CLinear = CGAL::Polygon_2<CKernel>;

// Builds a closed contour of segments and circle arcs out of its curves.
class CContour
{
public:
    void Segment(const CKPoint& s, const CKPoint& t) { Add(CCurve(s, t)); }
    // Counter-clockwise arc round centre c of radius r, between two points
    // that lie on that circle exactly.
    void Arc(const CKPoint& c, const CFT& r, const CKPoint& s, const CKPoint& t)
    {
        Add(CCurve(CKernel::Circle_2(c, r * r, CGAL::COUNTERCLOCKWISE), CTraits::Point_2(s.x(), s.y()),
                   CTraits::Point_2(t.x(), t.y())));
    }
    void Circle(const CKPoint& c, const CFT& r)
    {
        Add(CCurve(CKernel::Circle_2(c, r * r, CGAL::COUNTERCLOCKWISE)));
    }
    CPolygon Get() const { return CPolygon(m_Curves.begin(), m_Curves.end()); }

private:
    void Add(const CCurve& curve)
    {
        std::vector<boost::variant<CTraits::Point_2, CXCurve>> pieces;
        CTraits().make_x_monotone_2_object()(curve, std::back_inserter(pieces));
        for (const auto& piece : pieces)
            if (const CXCurve* x = boost::get<CXCurve>(&piece))
                m_Curves.push_back(*x);
    }
    std::vector<CXCurve> m_Curves;
};

// The primitive shapes exactly: centres and corners are the same doubles,
// taken as rationals. A trace's direction becomes a rational unit vector
// (from the tangent of its half angle) within rounding of the true one, so
// that the points where its caps meet its sides lie on the caps' circles.
CPolygon ToCgal(const Primitive& p)
{
    CContour c;
    const CKPoint a(p.m_A.m_X.GetValue(), p.m_A.m_Y.GetValue());
    switch (p.m_Kind)
    {
    case Primitive::k_Disk:
        c.Circle(a, CFT(p.m_Radius));
        break;
    case Primitive::k_Trace:
    {
        const CKPoint b(p.m_B.m_X.GetValue(), p.m_B.m_Y.GetValue());
        double phi = std::atan2((p.m_B.m_Y - p.m_A.m_Y).GetValue(), (p.m_B.m_X - p.m_A.m_X).GetValue());
        const bool flip = std::fabs(phi) > M_PI / 2;
        if (flip)
            phi += phi > 0 ? -M_PI : M_PI;
        const CFT t(std::tan(phi / 2)), d = 1 + t * t;
        CFT ux = (1 - t * t) / d, uy = 2 * t / d;
        if (flip)
            ux = -ux, uy = -uy;
        const CFT r(p.m_Radius);
        const CKernel::Vector_2 side(-uy * r, ux * r); // to the left of a -> b
        c.Segment(a - side, b - side);
        c.Arc(b, r, b - side, b + side);
        c.Segment(b + side, a + side);
        c.Arc(a, r, a + side, a - side);
        break;
    }
    case Primitive::k_RoundedBox:
    {
        const CFT x0(p.m_A.m_X.GetValue()), y0(p.m_A.m_Y.GetValue());
        const CFT x1(p.m_B.m_X.GetValue()), y1(p.m_B.m_Y.GetValue()), r(p.m_Radius);
        c.Segment(CKPoint(x0, y0 - r), CKPoint(x1, y0 - r));
        c.Arc(CKPoint(x1, y0), r, CKPoint(x1, y0 - r), CKPoint(x1 + r, y0));
        c.Segment(CKPoint(x1 + r, y0), CKPoint(x1 + r, y1));
        c.Arc(CKPoint(x1, y1), r, CKPoint(x1 + r, y1), CKPoint(x1, y1 + r));
        c.Segment(CKPoint(x1, y1 + r), CKPoint(x0, y1 + r));
        c.Arc(CKPoint(x0, y1), r, CKPoint(x0, y1 + r), CKPoint(x0 - r, y1));
        c.Segment(CKPoint(x0 - r, y1), CKPoint(x0 - r, y0));
        c.Arc(CKPoint(x0, y0), r, CKPoint(x0 - r, y0), CKPoint(x0, y0 - r));
        break;
    }
    }
    return c.Get();
}

// Signed area of a closed run of x-monotone curves in doubles: the chords'
// shoelace and the circular segments beside them.
double GetCgalArea(const CPolygon& polygon)
{
    double ret = 0;
    for (auto i = polygon.curves_begin(); i != polygon.curves_end(); ++i)
    {
        const double sx = CGAL::to_double(i->source().x()), sy = CGAL::to_double(i->source().y());
        const double tx = CGAL::to_double(i->target().x()), ty = CGAL::to_double(i->target().y());
        ret += (sx * ty - tx * sy) / 2;
        if (i->is_linear())
            continue;
        const auto circle = i->supporting_circle();
        const double cx = CGAL::to_double(circle.center().x()), cy = CGAL::to_double(circle.center().y());
        const double ax = sx - cx, ay = sy - cy, bx = tx - cx, by = ty - cy;
        const double theta = std::fabs(std::atan2(ax * by - ay * bx, ax * bx + ay * by));
        const double half = i->orientation() == CGAL::COUNTERCLOCKWISE ? 0.5 : -0.5;
        ret += half * CGAL::to_double(circle.squared_radius()) * (theta - std::sin(theta));
    }
    return ret;
}

double GetCgalArea(const CSet& set, size_t* entries)
{
    std::vector<CRegion> regions;
    set.polygons_with_holes(std::back_inserter(regions));
    double ret = 0;
    for (const CRegion& r : regions)
    {
        ret += GetCgalArea(r.outer_boundary());
        for (auto h = r.holes_begin(); h != r.holes_end(); ++h)
            ret += GetCgalArea(*h); // clockwise: negative
    }
    if (entries)
        *entries = regions.size();
    return ret;
}

CSet CgalUnion(const std::vector<CPolygon>& shapes)
{
    CSet ret;
    ret.join(shapes.begin(), shapes.end());
    return ret;
}

CLinear ToCgalLinear(const std::vector<Point>& ring)
{
    CLinear ret;
    for (const Point& p : ring)
        ret.push_back(CKPoint(p.m_X.GetValue(), p.m_Y.GetValue()));
    return ret;
}

void BM_Cgal(benchmark::State& state, char kind)
{
    const Workload& w = GetWorkload(kind, static_cast<int>(state.range(0)));
    std::vector<CPolygon> shapes;
    for (const Primitive& p : w.m_Primitives)
        shapes.push_back(ToCgal(p));
    CContour plane_contour;
    if (kind == 'C')
    {
        const double side = w.m_Side;
        plane_contour.Segment(CKPoint(0, 0), CKPoint(side, 0));
        plane_contour.Segment(CKPoint(side, 0), CKPoint(side, side));
        plane_contour.Segment(CKPoint(side, side), CKPoint(0, side));
        plane_contour.Segment(CKPoint(0, side), CKPoint(0, 0));
    }
    const CPolygon plane = plane_contour.Get();
    // The shrink works on flattened rings of the plane our library made:
    // CGAL offsets polygons of straight edges only, approximating the round
    // joins by arcs through rational points within k_Deviation.
    std::vector<std::pair<CLinear, std::vector<CLinear>>> base;
    if (kind == 'D')
        for (const PolygonWithHoles& r : OurPlane(w))
        {
            base.emplace_back(ToCgalLinear(FlattenChain(r.GetPolygon())), std::vector<CLinear>());
            for (const Polygon& h : r.GetHoles())
            {
                CLinear ring = ToCgalLinear(FlattenChain(h));
                if (ring.is_clockwise_oriented())
                    ring.reverse_orientation();
                base.back().second.push_back(ring);
            }
        }
    double area = 0;
    size_t entries = 0;
    for (auto _ : state)
    {
        switch (kind)
        {
        case 'A':
        case 'B':
            area = GetCgalArea(CgalUnion(shapes), &entries);
            break;
        case 'C':
        {
            CSet r(plane);
            r.difference(CgalUnion(shapes));
            area = GetCgalArea(r, &entries);
            break;
        }
        default:
        {
            area = 0;
            entries = 0;
            for (const auto& [outline, holes] : base)
            {
                std::vector<CPolygon> insets;
                CGAL::approximated_inset_2(outline, CFT(k_ShrinkBy), k_Deviation, std::back_inserter(insets));
                CSet r;
                r.join(insets.begin(), insets.end());
                std::vector<CRegion> grown;
                for (const CLinear& h : holes)
                    grown.push_back(CGAL::approximated_offset_2(h, CFT(k_ShrinkBy), k_Deviation));
                CSet voids;
                voids.join(grown.begin(), grown.end());
                r.difference(voids);
                size_t n = 0;
                area += GetCgalArea(r, &n);
                entries += n;
            }
            break;
        }
        }
        benchmark::DoNotOptimize(area);
    }
    state.counters["area_mm2"] = area;
    state.counters["entries"] = static_cast<double>(entries);
}
#endif

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

// CGAL's approximated offsets take about 17 s of processor time at N = 1000
// (a convolution per ring, then the unions), so they stop there.
void OffsetSizes(benchmark::internal::Benchmark* b)
{
    for (int n : {100, 300, 1000})
        b->Arg(n);
    b->Unit(benchmark::kMillisecond)->MinTime(0.3);
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
#ifdef TNF_BENCH_CGAL
BENCHMARK_CAPTURE(BM_Cgal, A_TraceUnion, 'A')->Apply(LargerSizes);
BENCHMARK_CAPTURE(BM_Cgal, B_PadUnion, 'B')->Apply(LargerSizes);
BENCHMARK_CAPTURE(BM_Cgal, C_PlaneMinusVoids, 'C')->Apply(LargerSizes);
BENCHMARK_CAPTURE(BM_Cgal, D_ShrunkPlane, 'D')->Apply(OffsetSizes);
#endif
