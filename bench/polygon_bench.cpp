// polygon_bench.cpp - point location in long contours: the quadrant walk against a plain crossing test.
//
// A plane outline read from a design can have a million edges, and every
// boolean operation asks many points whether they are inside. The quadrant
// walk of a polygon skips, through the subtree boxes of its edge tree, every
// run of edges that stays in one quadrant around the point, so its cost
// follows the edges near the two axes through the point rather than the
// contour's length. The plain test walks all edges of the same contour.
#include "lib/math/geometry/Polygon.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <random>
#include <vector>

namespace
{
using namespace geom;

// A wavy star outline of n straight edges around the origin, with a jitter
// of the order of its edge length: spatially coherent at every scale, as a
// board or plane outline is.
std::vector<Point> WavyOutline(int n)
{
    std::mt19937 rng(42);
    const double spacing = 2 * k_Pi * 100 / n;
    std::uniform_real_distribution<double> u(-0.3 * spacing, 0.3 * spacing);
    std::vector<Point> v;
    v.reserve(static_cast<size_t>(n));
    for (int i = 0; i < n; ++i)
    {
        const double t = 2 * k_Pi * i / n;
        const double r = 100 + 10 * std::sin(7 * t) + u(rng);
        v.push_back(Point(r * std::cos(t), r * std::sin(t)));
    }
    return v;
}

std::vector<Point> Probes()
{
    std::mt19937 rng(7);
    std::uniform_real_distribution<double> u(-115, 115);
    std::vector<Point> p;
    for (int i = 0; i < 256; ++i)
        p.push_back(Point(u(rng), u(rng)));
    return p;
}

// Even-odd crossings of the ray to +x over every edge.
bool LinearCrossingTest(const std::vector<Point>& v, const Point& q)
{
    bool inside = false;
    const double qx = q.m_X.GetValue(), qy = q.m_Y.GetValue();
    for (size_t i = 0, j = v.size() - 1; i < v.size(); j = i++)
    {
        const double xi = v[i].m_X.GetValue(), yi = v[i].m_Y.GetValue();
        const double xj = v[j].m_X.GetValue(), yj = v[j].m_Y.GetValue();
        if ((yi > qy) != (yj > qy) && qx < (xj - xi) * (qy - yi) / (yj - yi) + xi)
            inside = !inside;
    }
    return inside;
}

void BM_QuadrantWalk(benchmark::State& state)
{
    const Polygon polygon(WavyOutline(static_cast<int>(state.range(0))), false);
    const std::vector<Point> probes = Probes();
    size_t k = 0;
    int inside = 0;
    for (auto _ : state)
    {
        inside += polygon.IsPointInside(probes[k++ % probes.size()], k_Unit_0);
        benchmark::DoNotOptimize(inside);
    }
    state.SetComplexityN(state.range(0));
}

void BM_LinearCrossing(benchmark::State& state)
{
    const std::vector<Point> outline = WavyOutline(static_cast<int>(state.range(0)));
    const std::vector<Point> probes = Probes();
    size_t k = 0;
    int inside = 0;
    for (auto _ : state)
    {
        inside += LinearCrossingTest(outline, probes[k++ % probes.size()]);
        benchmark::DoNotOptimize(inside);
    }
    state.SetComplexityN(state.range(0));
}

// Both answers agree on every probe; a benchmark of a wrong answer is worth nothing.
void BM_AgreementCheck(benchmark::State& state)
{
    const std::vector<Point> outline = WavyOutline(static_cast<int>(state.range(0)));
    const Polygon polygon(outline, false);
    int disagreements = 0;
    for (auto _ : state)
        for (const Point& p : Probes())
            disagreements += polygon.IsPointInside(p, k_Unit_0) != LinearCrossingTest(outline, p);
    state.counters["disagreements"] = disagreements;
}
} // namespace

BENCHMARK(BM_QuadrantWalk)->RangeMultiplier(10)->Range(100, 1000000)->Complexity();
BENCHMARK(BM_LinearCrossing)->RangeMultiplier(10)->Range(100, 1000000)->Complexity();
BENCHMARK(BM_AgreementCheck)->Arg(1000)->Arg(100000)->Iterations(1);
