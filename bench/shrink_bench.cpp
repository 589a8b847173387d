// shrink_bench.cpp - the shrink of a plane with voids against its exact area.
//
// A square plane minus N pads (disks) and N rounded boxes, at constant
// density as in booleans_bench's workload C, shrunk by 0.125 mm through the
// library (PolygonWithHolesCollection::Shrink). Shrinking the plane minus the
// voids is the same as shrinking the plane and taking away every void grown
// by the distance, and both of those are known in closed form: a smaller
// square, and disks and rounded boxes of larger radius. The area of the grown
// voids within the shrunk square is computed here independently of the
// library, by Green's theorem over the boundary pieces that lie on the
// outside of all other voids and inside the square, with plain doubles.
//
//     shrink_bench [N ...]        (default 1000 10000 30000)
//
// prints per N the processor time of the subtraction that makes the plane and
// of the shrink, the library's area, the exact area and the relative error.
#include "lib/math/geometry/PolyArcIntersectionGraph2.h"
#include "lib/math/geometry/PolygonWithHolesCollection.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <random>
#include <unordered_map>
#include <vector>

namespace
{
const double k_ShrinkBy = 0.125;
const double k_Accuracy = 1e-6;

// A void in closed form: the points within m_R of the box (a disk when the
// box is a point).
struct Shape
{
    double m_X0, m_Y0, m_X1, m_Y1, m_R;

    bool IsInside(double x, double y) const
    {
        const double dx = std::max({m_X0 - x, 0.0, x - m_X1}), dy = std::max({m_Y0 - y, 0.0, y - m_Y1});
        return dx * dx + dy * dy < m_R * m_R;
    }
};

// One piece of a boundary: a segment from (m_X0, m_Y0) to (m_X1, m_Y1), or
// the arc of the circle (m_Cx, m_Cy, m_R) from angle m_A0 to m_A1, m_A0 < m_A1.
struct Piece
{
    bool m_Arc;
    double m_X0, m_Y0, m_X1, m_Y1;
    double m_Cx, m_Cy, m_R, m_A0, m_A1;

    void At(double t, double& x, double& y) const
    {
        if (m_Arc)
        {
            const double a = m_A0 + (m_A1 - m_A0) * t;
            x = m_Cx + m_R * std::cos(a);
            y = m_Cy + m_R * std::sin(a);
        }
        else
        {
            x = m_X0 + (m_X1 - m_X0) * t;
            y = m_Y0 + (m_Y1 - m_Y0) * t;
        }
    }
    // The integral of x dy - y dx from t0 to t1.
    double Green(double t0, double t1) const
    {
        if (!m_Arc)
        {
            double xa, ya, xb, yb;
            At(t0, xa, ya);
            At(t1, xb, yb);
            return xa * yb - ya * xb;
        }
        const double a0 = m_A0 + (m_A1 - m_A0) * t0, a1 = m_A0 + (m_A1 - m_A0) * t1;
        return m_R * m_R * (a1 - a0) + m_R * m_Cx * (std::sin(a1) - std::sin(a0)) -
               m_R * m_Cy * (std::cos(a1) - std::cos(a0));
    }
    // The parameter of a point known to lie on the piece's line or circle.
    double ParameterOf(double x, double y) const
    {
        if (!m_Arc)
        {
            const double dx = m_X1 - m_X0, dy = m_Y1 - m_Y0;
            return ((x - m_X0) * dx + (y - m_Y0) * dy) / (dx * dx + dy * dy);
        }
        double a = std::atan2(y - m_Cy, x - m_Cx);
        while (a < m_A0)
            a += 2 * M_PI;
        return (a - m_A0) / (m_A1 - m_A0);
    }
};

// The boundary of a shape, counter-clockwise.
std::vector<Piece> BoundaryOf(const Shape& s)
{
    std::vector<Piece> ret;
    const auto arc = [&](double cx, double cy, double a0, double a1) {
        ret.push_back(Piece{true, 0, 0, 0, 0, cx, cy, s.m_R, a0, a1});
    };
    const auto line = [&](double x0, double y0, double x1, double y1)
    {
        if (x0 != x1 || y0 != y1)
            ret.push_back(Piece{false, x0, y0, x1, y1, 0, 0, 0, 0, 0});
    };
    if (s.m_X0 == s.m_X1 && s.m_Y0 == s.m_Y1)
    {
        arc(s.m_X0, s.m_Y0, 0, 2 * M_PI);
        return ret;
    }
    line(s.m_X0, s.m_Y0 - s.m_R, s.m_X1, s.m_Y0 - s.m_R);
    arc(s.m_X1, s.m_Y0, -M_PI / 2, 0);
    line(s.m_X1 + s.m_R, s.m_Y0, s.m_X1 + s.m_R, s.m_Y1);
    arc(s.m_X1, s.m_Y1, 0, M_PI / 2);
    line(s.m_X1, s.m_Y1 + s.m_R, s.m_X0, s.m_Y1 + s.m_R);
    arc(s.m_X0, s.m_Y1, M_PI / 2, M_PI);
    line(s.m_X0 - s.m_R, s.m_Y1, s.m_X0 - s.m_R, s.m_Y0);
    arc(s.m_X0, s.m_Y0, M_PI, 1.5 * M_PI);
    return ret;
}

// The points where the lines or circles of two pieces meet.
void Meet(const Piece& p, const Piece& q, std::vector<double>& xs, std::vector<double>& ys)
{
    if (!p.m_Arc && !q.m_Arc)
    {
        const double dx = p.m_X1 - p.m_X0, dy = p.m_Y1 - p.m_Y0, ex = q.m_X1 - q.m_X0, ey = q.m_Y1 - q.m_Y0;
        const double den = dx * ey - dy * ex;
        if (den == 0)
            return;
        const double t = ((q.m_X0 - p.m_X0) * ey - (q.m_Y0 - p.m_Y0) * ex) / den;
        xs.push_back(p.m_X0 + dx * t);
        ys.push_back(p.m_Y0 + dy * t);
        return;
    }
    if (!p.m_Arc || !q.m_Arc)
    {
        const Piece& l = p.m_Arc ? q : p;
        const Piece& c = p.m_Arc ? p : q;
        const double dx = l.m_X1 - l.m_X0, dy = l.m_Y1 - l.m_Y0, fx = l.m_X0 - c.m_Cx, fy = l.m_Y0 - c.m_Cy;
        const double a = dx * dx + dy * dy, b = 2 * (fx * dx + fy * dy),
                     cc = fx * fx + fy * fy - c.m_R * c.m_R;
        const double disc = b * b - 4 * a * cc;
        if (disc < 0)
            return;
        for (const double t : {(-b - std::sqrt(disc)) / (2 * a), (-b + std::sqrt(disc)) / (2 * a)})
        {
            xs.push_back(l.m_X0 + dx * t);
            ys.push_back(l.m_Y0 + dy * t);
        }
        return;
    }
    const double dx = q.m_Cx - p.m_Cx, dy = q.m_Cy - p.m_Cy, d = std::hypot(dx, dy);
    if (d == 0 || d > p.m_R + q.m_R || d < std::fabs(p.m_R - q.m_R))
        return;
    const double along = (d * d + p.m_R * p.m_R - q.m_R * q.m_R) / (2 * d);
    const double across = std::sqrt(std::max(0.0, p.m_R * p.m_R - along * along));
    for (const double s : {-1.0, 1.0})
    {
        xs.push_back(p.m_Cx + (dx * along - s * dy * across) / d);
        ys.push_back(p.m_Cy + (dy * along + s * dx * across) / d);
    }
}

// The area of the union of the shapes within the square [lo, hi]^2.
double UnionAreaInSquare(const std::vector<Shape>& shapes, double lo, double hi)
{
    // A grid of cells a little larger than the largest shape finds neighbours.
    double cell = 0;
    for (const Shape& s : shapes)
        cell = std::max(cell, std::max(s.m_X1 - s.m_X0, s.m_Y1 - s.m_Y0) + 2 * s.m_R);
    const auto key = [&](double x, double y)
    {
        return (static_cast<long long>(std::floor(x / cell)) + (1LL << 20)) * (1LL << 21) +
               static_cast<long long>(std::floor(y / cell)) + (1LL << 20);
    };
    std::unordered_map<long long, std::vector<int>> grid;
    for (size_t i = 0; i < shapes.size(); ++i)
        grid[key((shapes[i].m_X0 + shapes[i].m_X1) / 2, (shapes[i].m_Y0 + shapes[i].m_Y1) / 2)].push_back(
            static_cast<int>(i));
    const std::vector<Piece> square = {
        Piece{false, lo, lo, hi, lo, 0, 0, 0, 0, 0}, Piece{false, hi, lo, hi, hi, 0, 0, 0, 0, 0},
        Piece{false, hi, hi, lo, hi, 0, 0, 0, 0, 0}, Piece{false, lo, hi, lo, lo, 0, 0, 0, 0, 0}};
    const auto in_square = [&](double x, double y) { return x > lo && x < hi && y > lo && y < hi; };
    double twice_area = 0;
    // The boundary pieces of one shape that lie in the square and outside
    // every other shape, cut where other boundaries cross them.
    const auto add_pieces =
        [&](const std::vector<Piece>& pieces, const std::vector<int>& others, int self, bool inside_union)
    {
        for (const Piece& p : pieces)
        {
            std::vector<double> cuts = {0.0, 1.0}, xs, ys;
            for (const int j : others)
                for (const Piece& q : BoundaryOf(shapes[static_cast<size_t>(j)]))
                    Meet(p, q, xs, ys);
            if (self >= 0)
                for (const Piece& q : square)
                    Meet(p, q, xs, ys);
            for (size_t k = 0; k < xs.size(); ++k)
            {
                const double t = p.ParameterOf(xs[k], ys[k]);
                if (t > 0 && t < 1)
                    cuts.push_back(t);
            }
            std::sort(cuts.begin(), cuts.end());
            for (size_t k = 0; k + 1 < cuts.size(); ++k)
            {
                double x, y;
                p.At((cuts[k] + cuts[k + 1]) / 2, x, y);
                bool covered = false;
                for (const int j : others)
                    covered = covered || (j != self && shapes[static_cast<size_t>(j)].IsInside(x, y));
                if (covered == inside_union && (self < 0 || in_square(x, y)))
                    twice_area += p.Green(cuts[k], cuts[k + 1]);
            }
        }
    };
    for (size_t i = 0; i < shapes.size(); ++i)
    {
        const Shape& s = shapes[i];
        std::vector<int> others;
        const long long cx = static_cast<long long>(std::floor((s.m_X0 + s.m_X1) / 2 / cell));
        const long long cy = static_cast<long long>(std::floor((s.m_Y0 + s.m_Y1) / 2 / cell));
        for (long long gx = cx - 1; gx <= cx + 1; ++gx)
            for (long long gy = cy - 1; gy <= cy + 1; ++gy)
            {
                const auto g = grid.find((gx + (1LL << 20)) * (1LL << 21) + gy + (1LL << 20));
                if (g != grid.end())
                    for (const int j : g->second)
                        if (j != static_cast<int>(i))
                            others.push_back(j);
            }
        add_pieces(BoundaryOf(s), others, static_cast<int>(i), false);
    }
    // The square's own sides where they run inside the union; all shapes
    // near the sides are tried.
    std::vector<int> near_sides;
    for (size_t i = 0; i < shapes.size(); ++i)
    {
        const Shape& s = shapes[i];
        if (s.m_X0 - s.m_R < lo || s.m_Y0 - s.m_R < lo || s.m_X1 + s.m_R > hi || s.m_Y1 + s.m_R > hi)
            near_sides.push_back(static_cast<int>(i));
    }
    add_pieces(square, near_sides, -1, true);
    return twice_area / 2;
}

struct Workload
{
    double m_Side = 0;
    std::vector<geom::PolygonWithHoles> m_Voids;
    std::vector<Shape> m_Shapes;
};

// Voids drawn as in booleans_bench's workload C (same distribution and density).
Workload MakeWorkload(int n)
{
    using namespace geom;
    std::mt19937 random(static_cast<unsigned>(n * 31 + 'C'));
    const auto uniform = [&](double a, double b)
    { return std::uniform_real_distribution<double>(a, b)(random); };
    Workload w;
    w.m_Side = std::sqrt(static_cast<double>(n)) * 2.0;
    for (int i = 0; i < n; ++i)
    {
        const double x = uniform(0, w.m_Side), y = uniform(0, w.m_Side), r = uniform(0.2, 0.8);
        w.m_Voids.push_back(PolygonWithHoles(Polygon(Circle(Point(x, y), r))));
        w.m_Shapes.push_back(Shape{x, y, x, y, r + k_ShrinkBy});
        const double cx = uniform(0, w.m_Side), cy = uniform(0, w.m_Side);
        const double hw = uniform(0.15, 0.5), hh = uniform(0.15, 0.5);
        w.m_Voids.push_back(
            PolygonWithHoles(Polygon(Box(Point(cx - hw, cy - hh), Point(cx + hw, cy + hh)), Unit(0.1))));
        w.m_Shapes.push_back(Shape{cx - hw, cy - hh, cx + hw, cy + hh, 0.1 + k_ShrinkBy});
    }
    return w;
}

// Processor time, which a busy machine disturbs less than the wall clock.
double Seconds(std::clock_t since)
{
    return static_cast<double>(std::clock() - since) / CLOCKS_PER_SEC;
}
} // namespace

int main(int argc, char** argv)
{
    using namespace geom;
    std::vector<int> sizes;
    for (int i = 1; i < argc; ++i)
        sizes.push_back(std::atoi(argv[i]));
    if (sizes.empty())
        sizes = {1000, 10000, 30000};
    std::printf("%8s %12s %10s %16s %16s %10s %8s\n", "N", "subtract s", "shrink s", "library mm2",
                "exact mm2", "rel error", "entries");
    for (const int n : sizes)
    {
        const Workload w = MakeWorkload(n);
        std::clock_t start = std::clock();
        const PolygonWithHolesCollection voids =
            PolyArcIntersectionGraph2(PolygonWithHolesCollection(w.m_Voids), k_Accuracy).GetResult();
        const PolygonWithHolesCollection plane(std::vector<PolygonWithHoles>{
            PolygonWithHoles(Polygon(Box(Point(0.0, 0.0), Point(w.m_Side, w.m_Side)), k_Unit_0))});
        const PolygonWithHolesCollection cut = plane.Subtract(voids, k_Accuracy);
        const double subtract_s = Seconds(start);
        start = std::clock();
        const PolygonWithHolesCollection shrunk =
            cut.Shrink(k_ShrinkBy, k_Accuracy, true, 0, k_Unit_0, nullptr);
        const double shrink_s = Seconds(start);
        const double lo = k_ShrinkBy, hi = w.m_Side - k_ShrinkBy;
        const double exact = (hi - lo) * (hi - lo) - UnionAreaInSquare(w.m_Shapes, lo, hi);
        const double ours = shrunk.GetArea().GetValue();
        std::printf("%8d %12.3f %10.3f %16.6f %16.6f %10.2e %8d\n", n, subtract_s, shrink_s, ours, exact,
                    std::fabs(ours - exact) / exact, shrunk.size());
        std::fflush(stdout);
    }
    return 0;
}
