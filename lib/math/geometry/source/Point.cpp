// Point.cpp - distances, rounding, middles, orientation and the point-list helpers.
#include "lib/math/geometry/Point.h"

#include "core/lib/vellum/Assert.h"

#include <cmath>

namespace geom
{
Unit Point::GetDistanceTo(const Point& other, Unit cur_distance) const
{
    VELLUM_ASSERT(cur_distance >= k_NullUnit);
    const Area square = GetDistanceSquareTo(other);
    if (square >= cur_distance * cur_distance)
        return cur_distance;
    return Vector(*this, other).GetLength();
}

Point Point::GetRounded(Unit c) const
{
    VELLUM_ASSERT(c >= 0);
    return Point(m_X.GetRounded(c), m_Y.GetRounded(c));
}

Point GetMiddle_G(const Point& a, const Point& b)
{
    return Point((a.m_X + b.m_X) * 0.5, (a.m_Y + b.m_Y) * 0.5);
}

Point GetMiddle_G(const Point& a, const Point& b, const Point& c)
{
    return Point((a.m_X + b.m_X + c.m_X) * 0.3333333333333333, (a.m_Y + b.m_Y + c.m_Y) * 0.3333333333333333);
}

Point GetMiddle_G(const Point& a, const Point& b, const Point& c, const Point& d)
{
    return Point((a.m_X + b.m_X + c.m_X + d.m_X) * 0.25, (a.m_Y + b.m_Y + c.m_Y + d.m_Y) * 0.25);
}

Direction GetOrientation_G(const Point& a, const Point& b, const Point& c)
{
    const Area product = (b - a).GetVectorProductWith(c - a);
    if (product < k_Area_0)
        return k_CW;
    if (product > k_Area_0)
        return k_CCW;
    return k_NoDirection;
}

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

std::vector<Point> MergeClosePoints_G(const std::vector<Point>& pts, Unit tolerance)
{
    const Area tolerance_square = tolerance * tolerance;
    std::vector<Point> current = pts, ret;
    // A merge moves the kept point, which may bring it within reach of another
    // kept point: repeat until a pass changes nothing. Each merging pass
    // shortens the list, so this ends.
    while (MergeOnce(current, tolerance_square, ret))
    {
        VELLUM_ASSERT(ret.size() < current.size());
        current.swap(ret);
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
