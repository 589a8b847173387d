// ScanlineArea.h - an independent area oracle for contours of straight edges.
//
// The winding number of a closed polyline at a point, and the area of the
// points that a predicate on the winding numbers accepts, by scanlines: along
// each line the winding numbers change only where edges cross it, so each
// stretch between crossings is tested at its middle. No part of the geometry
// library is used.
#pragma once
#include "lib/math/geometry/Arc.h"

#include <algorithm>
#include <functional>
#include <vector>

namespace geom
{
struct RawEdge
{
    double x0, y0, x1, y1, h;
};

inline std::vector<Arc> ToArcs(const std::vector<RawEdge>& edges)
{
    std::vector<Arc> ret;
    for (const RawEdge& e : edges)
        ret.emplace_back(Point(e.x0, e.y0), Point(e.x1, e.y1), Unit(e.h));
    return ret;
}

// How often the straight-edged contour winds round (x, y).
inline int GetWinding(const std::vector<RawEdge>& c, double x, double y)
{
    int w = 0;
    for (const RawEdge& e : c)
    {
        if ((e.y0 <= y) == (e.y1 <= y))
            continue;
        const double xc = e.x0 + (y - e.y0) * (e.x1 - e.x0) / (e.y1 - e.y0);
        if (xc > x)
            w += e.y1 > e.y0 ? 1 : -1;
    }
    return w;
}

// The area of the points that `inside` accepts, by scanlines across the
// contours' edges: along each line the winding numbers change only at edge
// crossings, so each stretch between them is tested at its middle.
inline double GetScanlineArea(const std::vector<std::vector<RawEdge>>& contours,
                              const std::function<bool(double, double)>& inside, int lines)
{
    double y0 = 1e300, y1 = -1e300;
    for (const auto& c : contours)
        for (const RawEdge& e : c)
            y0 = std::min({y0, e.y0, e.y1}), y1 = std::max({y1, e.y0, e.y1});
    const double step = (y1 - y0) / lines;
    double area = 0;
    for (int i = 0; i < lines; ++i)
    {
        const double y = y0 + (i + 0.5) * step;
        std::vector<double> xs;
        for (const auto& c : contours)
            for (const RawEdge& e : c)
                if ((e.y0 <= y) != (e.y1 <= y))
                    xs.push_back(e.x0 + (y - e.y0) * (e.x1 - e.x0) / (e.y1 - e.y0));
        std::sort(xs.begin(), xs.end());
        for (size_t k = 1; k < xs.size(); ++k)
            if (inside((xs[k - 1] + xs[k]) / 2, y))
                area += (xs[k] - xs[k - 1]) * step;
    }
    return area;
}

} // namespace geom
