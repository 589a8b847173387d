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
