// GeomStl.cpp - merging of close points and the common points of two lists.
#include "lib/math/geometry/GeomStl.h"

namespace geom
{
namespace
{
// One pass of the merge; tells whether anything was merged.
bool MergeOnce(const std::vector<Point>& pts, Area tolerance_square, std::vector<Point>& ret)
{
    bool merged = false;
    ret.clear();
    ret.reserve(pts.size());
    for (const Point& p : pts)
    {
        bool found = false;
        for (Point& kept : ret)
        {
            if (tolerance_square >= kept.GetDistanceSquareTo(p))
            {
                kept = GetMiddle_G(kept, p);
                found = merged = true;
                break;
            }
        }
        if (!found)
            ret.push_back(p);
    }
    return merged;
}
} // namespace

std::vector<Point> MergeClosePoints_G(const std::vector<Point>& points, Unit tolerance)
{
    const Area tolerance_square = tolerance * tolerance;
    std::vector<Point> pts = points, ret;
    // A merge moves the kept point, which may bring it within reach of another
    // kept point: repeat until a pass changes nothing. Each merging pass
    // shortens the list, so this ends.
    while (MergeOnce(pts, tolerance_square, ret))
    {
        VELLUM_ASSERT(ret.size() < pts.size());
        pts.swap(ret);
    }
    return ret;
}

std::vector<Point> GetCommonPoints_G(const std::vector<Point>& pts1, const std::vector<Point>& pts2,
                                     Unit tolerance)
{
    const Area tolerance_square = tolerance * tolerance;
    std::vector<Point> ret;
    for (const Point& a : pts1)
    {
        for (const Point& b : pts2)
        {
            if (a.GetDistanceSquareTo(b) > tolerance_square)
                continue;
            const Point middle = GetMiddle_G(a, b);
            bool found = false;
            for (Point& kept : ret)
            {
                if (kept.GetDistanceSquareTo(middle) <= tolerance_square)
                {
                    kept = GetMiddle_G(kept, middle);
                    found = true;
                }
            }
            if (!found)
                ret.push_back(middle);
        }
    }
    return ret;
}
} // namespace geom
