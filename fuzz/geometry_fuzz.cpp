// geometry_fuzz.cpp - random arc polygons through the boolean operations and
// the offsets, with the identities that must hold between their results.
//
// The bytes choose two polygons of up to twelve vertices with coordinates in
// [-100, 100] and sagittas up to half their chord, or once in a while any
// sagitta; each is first made simple by RemoveSelfIntersections. Then, within
// a tolerance that grows with the size of the operands:
//   area(A u B) + area(A n B) = area(A) + area(B),  area(A - B) = area(A) - area(A n B),
//   every result lies in the box of its operands (grown by the offset, when
//   no concave arc vanishes in the expansion),
//   no outline of a result runs clockwise, no region has negative area,
//   a shrink has no more area than A and an expansion no less.
// A broken identity aborts, so that libFuzzer keeps the input, but only with
// TNF_FUZZ_STRICT_GEOMETRY set, as fuzz-long sets it, while findings are open
// (fuzz/findings): the smoke run in CI, which replays the fixed findings of
// the seed corpus, looks for crashes, hangs and sanitizer reports alone.
#include "lib/math/geometry/Polygon.h"
#include "lib/math/geometry/PolygonWithHoles.h"
#include "lib/math/geometry/PolygonWithHolesCollection.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <vector>

using namespace geom;

namespace
{
class Bytes
{
public:
    Bytes(const uint8_t* data, size_t size) : m_Data(data), m_Size(size) {}
    unsigned Next() { return m_Pos < m_Size ? m_Data[m_Pos++] : 0u; }
    // A value in [low, high] of 16-bit resolution.
    double Value(double low, double high)
    {
        const unsigned bits = Next() << 8 | Next();
        return low + (high - low) * bits / 65535.0;
    }
    bool AtEnd() const { return m_Pos >= m_Size; }

private:
    const uint8_t* m_Data;
    size_t m_Size;
    size_t m_Pos = 0;
};

const Unit k_Accuracy(1e-6);

const bool g_Strict = std::getenv("TNF_FUZZ_STRICT_GEOMETRY") != nullptr;

void Fail(const char* what, double a, double b)
{
    if (!g_Strict)
        return;
    std::fprintf(stderr, "geometry invariant broken: %s (%.17g against %.17g)\n", what, a, b);
    std::abort();
}

// Vertices around a centre in order of angle, so that most contours are
// simple already; arcs on the edges.
Polygon MakePolygon(Bytes& in)
{
    const int count = 3 + static_cast<int>(in.Next() % 10);
    const double cx = in.Value(-50, 50), cy = in.Value(-50, 50);
    const bool wild = in.Next() % 16 == 0;
    std::vector<Point> points;
    double angle = 0;
    for (int i = 0; i < count; ++i)
    {
        angle += in.Value(0.05, 2 * M_PI / count * 1.9);
        const double r = in.Value(0.001, 50);
        points.emplace_back(Unit(cx + r * std::cos(angle)), Unit(cy + r * std::sin(angle)));
    }
    std::vector<Arc> arcs;
    for (int i = 0; i < count; ++i)
    {
        const Point& a = points[static_cast<size_t>(i)];
        const Point& b = points[static_cast<size_t>((i + 1) % count)];
        const double chord = std::hypot((b.m_X - a.m_X).GetValue(), (b.m_Y - a.m_Y).GetValue());
        double height = 0;
        const unsigned kind = in.Next() % 4;
        if (kind == 1)
            height = in.Value(-0.5, 0.5) * chord;
        else if (kind == 2 && wild)
            height = in.Value(-3, 3) * chord;
        else if (kind == 3)
            height = in.Value(-1e-7, 1e-7); // a sagitta near nothing
        arcs.emplace_back(a, b, Unit(height));
    }
    bool changed = false;
    const PolygonWithHolesCollection simple =
        Polygon(arcs, true).RemoveSelfIntersections(k_Accuracy, true, true, &changed);
    return simple.empty() ? Polygon() : simple.begin()->GetPolygon();
}

Box BoxOf(const PolygonWithHolesCollection& c)
{
    Box box;
    for (const PolygonWithHoles& p : c)
        box = box.GetHull(p.GetBBox());
    return box;
}

// Grown by a distance, a concave arc of a radius within that distance
// vanishes, and the tangent joint that closes the gap between its neighbours
// may bulge beyond the box grown by the distance (a region grown by a disc
// would not, but the joint is the offset's own). The expansion's box is
// checked only where no edge vanishes.
bool HasVanishingConcaveArc(const Polygon& p, double by)
{
    const bool ccw = p.GetSignedArea().GetValue() > 0;
    for (const Arc& edge : p.GetEdges())
    {
        if (edge.IsSegment(k_Accuracy, nullptr))
            continue;
        // A concave arc turns against the contour's own sense.
        if (edge.IsCCW() != ccw && edge.GetRadius().GetValue() <= by + k_Accuracy.GetValue())
            return true;
    }
    return false;
}

void CheckResult(const PolygonWithHolesCollection& result, const Box& allowed, double tolerance,
                 const char* what, bool check_box = true)
{
    for (const PolygonWithHoles& p : result)
    {
        if (p.GetPolygon().GetSignedArea().GetValue() < -tolerance)
            Fail(what, p.GetPolygon().GetSignedArea().GetValue(), 0);
        if (p.GetArea().GetValue() < -tolerance)
            Fail(what, p.GetArea().GetValue(), 0);
    }
    if (check_box && !result.empty() && !allowed.GetExpanded(Unit(tolerance + 1e-6)).Contains(BoxOf(result)))
        Fail(what, BoxOf(result).GetMaxX().GetValue(), allowed.GetMaxX().GetValue());
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    Bytes in(data, size);
    const Polygon a = MakePolygon(in);
    const Polygon b = MakePolygon(in);
    if (a.empty() || b.empty())
        return 0;
    const double areaA = a.GetArea().GetValue(), areaB = b.GetArea().GetValue();
    const Box boxA = a.GetBBox(), boxB = b.GetBBox();
    // Snapping moves a vertex by up to the accuracy; a span of 200 and a few
    // dozen edges bound the area it can move.
    const double tolerance = 1e-6 * (std::fabs(areaA) + std::fabs(areaB)) + 1e-3;

    const PolygonWithHolesCollection united = a.Unite(b, k_Accuracy);
    const PolygonWithHolesCollection common = PolygonWithHoles(a).Intersect(b, k_Accuracy);
    const PolygonWithHolesCollection rest = a.Subtract(b, k_Accuracy);
    CheckResult(united, boxA.GetHull(boxB), tolerance, "union box or orientation");
    CheckResult(common, boxA, tolerance, "intersection box or orientation");
    CheckResult(rest, boxA, tolerance, "difference box or orientation");
    const double u = united.GetArea().GetValue(), i = common.GetArea().GetValue(),
                 d = rest.GetArea().GetValue();
    if (std::fabs(u + i - areaA - areaB) > tolerance)
        Fail("area(A u B) + area(A n B) = area(A) + area(B)", u + i, areaA + areaB);
    if (std::fabs(d - (areaA - i)) > tolerance)
        Fail("area(A - B) = area(A) - area(A n B)", d, areaA - i);

    const double by = in.Value(0.001, 10);
    const PolygonWithHolesCollection shrunk = a.Shrink(Unit(by), k_Accuracy, true, 0, Unit(0.0));
    const PolygonWithHolesCollection grown = a.Expand(Unit(by), k_Accuracy, true, 0, Unit(0.0));
    CheckResult(shrunk, boxA, tolerance, "shrink box or orientation");
    CheckResult(grown, boxA.GetExpanded(Unit(by)), tolerance, "expansion box or orientation",
                !HasVanishingConcaveArc(a, by));
    if (shrunk.GetArea().GetValue() > areaA + tolerance)
        Fail("area of a shrink at most area(A)", shrunk.GetArea().GetValue(), areaA);
    if (grown.GetArea().GetValue() < areaA - tolerance)
        Fail("area of an expansion at least area(A)", grown.GetArea().GetValue(), areaA);
    return 0;
}
