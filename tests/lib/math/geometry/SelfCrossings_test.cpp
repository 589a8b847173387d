// RemoveSelfIntersections of contours that run along themselves.
//
// The answer is the region that the contour winds round a positive number
// of times, worked out here by scanlines over the straight edges, with no
// part of the library. Strands that run along each other the same way (an
// outline that retraces sides, loops from one corner) must count twice; the
// old re-linking paired them arbitrarily and lost or added whole loops.
#include "core/lib/vellum/Assert.h"
#include "lib/math/geometry/Polygon.h"
#include "lib/math/geometry/PolygonWithHoles.h"
#include "lib/math/geometry/PolygonWithHolesCollection.h"
#include "lib/math/geometry/ScanlineArea.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <tuple>
#include <utility>

using namespace geom;

namespace
{
const Unit k_Accuracy(1e-6);

// A box from the corner v to v + (dx, dy), counter-clockwise or not.
std::vector<RawEdge> CornerBox(double vx, double vy, double dx, double dy, bool ccw)
{
    std::vector<std::pair<double, double>> p = {{vx, vy}, {vx + dx, vy}, {vx + dx, vy + dy}, {vx, vy + dy}};
    if ((dx * dy > 0) != ccw)
        std::swap(p[1], p[3]);
    std::vector<RawEdge> ret;
    for (size_t i = 0; i < 4; ++i)
        ret.push_back({p[i].first, p[i].second, p[(i + 1) % 4].first, p[(i + 1) % 4].second, 0});
    return ret;
}

// Exact for boxes on a grid of 0.25: one scanline through the middle of
// each row of the grid, where the winding numbers don't change.
double GetPositiveArea(const std::vector<RawEdge>& c)
{
    double y0 = 1e300, y1 = -1e300;
    for (const RawEdge& e : c)
        y0 = std::min({y0, e.y0, e.y1}), y1 = std::max({y1, e.y0, e.y1});
    const int rows = static_cast<int>(std::lround((y1 - y0) / 0.25));
    return GetScanlineArea(
        {c}, [&](double x, double y) { return GetWinding(c, x, y) > 0; }, rows);
}
} // namespace

TEST(SelfCrossings, BoxesFromOneCornerCountTheirWindings)
{
    // Three boxes from one corner, two clockwise inside each other and one
    // counter-clockwise beside them, sharing sides: only the last one winds
    // positively, 1.4951171875 x 1.3193359375.
    const double vx = 2.9638671875, vy = 2.091796875;
    std::vector<RawEdge> c = CornerBox(vx, vy, 0.572265625, -0.642578125, false);
    for (const auto& box : {CornerBox(vx, vy, -1.4951171875, -1.3193359375, true),
                            CornerBox(vx, vy, 0.7783203125, -1.873046875, false)})
        c.insert(c.end(), box.begin(), box.end());
    const unsigned long before = GetFailedAssertCount_G();
    const PolygonWithHolesCollection r =
        Polygon(ToArcs(c), false).RemoveSelfIntersections(k_Accuracy, false, false, nullptr);
    ASSERT_EQ(r.size(), 1);
    EXPECT_EQ(r.begin()->GetHoles().size(), 0);
    EXPECT_NEAR(r.GetArea().GetValue(), 1.4951171875 * 1.3193359375, 1e-9);
    EXPECT_EQ(GetFailedAssertCount_G(), before);
}

TEST(SelfCrossings, RandomLoopsFromOneCornerMatchTheWindingCount)
{
    // Two to four boxes of either orientation from one corner, on a grid so
    // that sides coincide often; the area where the contour winds positively.
    std::mt19937 random(3);
    std::uniform_int_distribution<int> size(1, 8), sign(0, 1), count(2, 4);
    int wrong = 0, cases = 0;
    for (int i = 0; i < 400; ++i)
    {
        std::vector<RawEdge> c;
        const int n = count(random);
        for (int k = 0; k < n; ++k)
        {
            const double dx = size(random) * 0.25 * (sign(random) ? 1 : -1);
            const double dy = size(random) * 0.25 * (sign(random) ? 1 : -1);
            const auto box = CornerBox(1.0, 2.0, dx, dy, sign(random) != 0);
            c.insert(c.end(), box.begin(), box.end());
        }
        const double expected = GetPositiveArea(c);
        const PolygonWithHolesCollection r =
            Polygon(ToArcs(c), false).RemoveSelfIntersections(k_Accuracy, false, false, nullptr);
        ++cases;
        if (std::fabs(r.GetArea().GetValue() - expected) > 1e-6)
        {
            ++wrong;
            ADD_FAILURE() << "case " << i << ": area " << r.GetArea().GetValue() << ", winding count "
                          << expected;
        }
    }
    EXPECT_EQ(wrong, 0) << " of " << cases;
}

TEST(SelfCrossings, LoopsTangentAtTheirCommonVertexKeepTheirOrder)
{
    // From one vertex v: a counter-clockwise disk, a counter-clockwise box
    // to its lower left, and a clockwise disk tangent inside the first at v.
    // The region (winding above 0) is the big disk less the small one, plus
    // the box; the box keeps the part of the small disk right of its left
    // side. At v the disks leave along one tangent, and their tangents come
    // out of the arithmetic a last bit apart: ordered by that bit instead of
    // by their curvature, the loops came out crossed and too large. Each
    // quarter turn of the figure puts the common tangent on another axis,
    // east (where the angles wrap) included.
    const double r1 = 1.5595703125, r2 = 0.8251953125, w = 0.7802734375, h = 1.60546875;
    // The part of a half disk of radius r below its centre that lies more
    // than a to the right of the centre.
    const auto beyond = [](double r, double a)
    { return r * r * M_PI / 4 - (a / 2 * std::sqrt(r * r - a * a) + r * r / 2 * std::asin(a / r)); };
    // The big disk less the small one, plus the box less its part in the
    // big disk, plus its part in the small disk, which the first term took.
    const double expected = M_PI * (r1 * r1 - r2 * r2) + w * h - beyond(r1, r1 - w) + beyond(r2, r2 - w);
    for (int turn = 0; turn < 4; ++turn)
    {
        // A quarter turn about the origin, exact on the grid.
        const auto at = [&](double x, double y)
        {
            for (int k = 0; k < turn; ++k)
                std::tie(x, y) = std::make_pair(-y, x);
            return Point(x, y);
        };
        const double vx = 2.5966796875, vy = -2.951171875;
        const Point v = at(vx, vy);
        const std::vector<Arc> arcs{Arc(v, v, Unit(-2 * r1), Azimuth(turn * k_Pi / 2 + k_Pi)),
                                    Arc(v, at(vx - w, vy), k_Unit_0),
                                    Arc(at(vx - w, vy), at(vx - w, vy - h), k_Unit_0),
                                    Arc(at(vx - w, vy - h), at(vx, vy - h), k_Unit_0),
                                    Arc(at(vx, vy - h), v, k_Unit_0),
                                    Arc(v, v, Unit(2 * r2), Azimuth(turn * k_Pi / 2 + k_Pi))};
        const unsigned long before = GetFailedAssertCount_G();
        const PolygonWithHolesCollection got =
            Polygon(arcs, false).RemoveSelfIntersections(k_Accuracy, false, false, nullptr);
        EXPECT_EQ(GetFailedAssertCount_G(), before) << "turn " << turn;
        EXPECT_NEAR(got.GetArea().GetValue(), expected, 1e-6) << "turn " << turn;
    }
}
