// Box.cpp - construction, expansion, comparison and ordering of boxes.
#include "lib/math/geometry/Box.h"

#include "core/lib/vellum/Assert.h"

#include <initializer_list>

namespace geom
{
Box::Box(const Point& a, const Point& b)
    : m_XRange(base::GetMinOf_T(a.m_X, b.m_X), base::GetMaxOf_T(a.m_X, b.m_X)),
      m_YRange(base::GetMinOf_T(a.m_Y, b.m_Y), base::GetMaxOf_T(a.m_Y, b.m_Y))
{
}

Box::Box(const Point& p, int quadrant)
{
    const UnitRange plus_x(p.m_X, k_InfiniteUnit), minus_x(-k_InfiniteUnit, p.m_X);
    const UnitRange plus_y(p.m_Y, k_InfiniteUnit), minus_y(-k_InfiniteUnit, p.m_Y);
    switch (quadrant)
    {
    case 1:
        *this = Box(plus_x, plus_y);
        break;
    case 2:
        *this = Box(minus_x, plus_y);
        break;
    case 3:
        *this = Box(minus_x, minus_y);
        break;
    case 4:
        *this = Box(plus_x, minus_y);
        break;
    default:
        VELLUM_ASSERT(!"This should never happen!");
        break;
    }
}

Area Box::GetArea() const
{
    if (IsEmpty())
        return k_Area_0;
    return GetWidth() * GetHeight();
}

Point Box::GetCorner(int index) const
{
    switch (((index % 4) + 4) % 4)
    {
    case 0:
        return Point(GetMinX(), GetMinY());
    case 1:
        return Point(GetMaxX(), GetMinY());
    case 2:
        return Point(GetMaxX(), GetMaxY());
    default:
        return Point(GetMinX(), GetMaxY());
    }
}

Unit Box::GetEpsilon() const
{
    if (IsEmpty())
        return k_Unit_0;
    Unit largest = GetMinX().GetAbs();
    for (Unit u : {GetMaxX().GetAbs(), GetMinY().GetAbs(), GetMaxY().GetAbs(), GetWidth(), GetHeight()})
        largest = base::GetMaxOf_T(largest, u);
    return largest.GetEpsilon();
}

Box Box::operator&(const Box& other) const
{
    const UnitRange x = m_XRange & other.m_XRange, y = m_YRange & other.m_YRange;
    if (x.IsEmpty() || y.IsEmpty())
        return k_EmptyBox;
    return Box(x, y);
}

bool Box::IntersectsWith(const Box& other, Unit tolerance) const
{
    if (IsEmpty() || other.IsEmpty())
        return false;
    return m_XRange.GetExpanded(tolerance).IntersectsWith(other.m_XRange) &&
           m_YRange.GetExpanded(tolerance).IntersectsWith(other.m_YRange);
}

bool Box::Contains(const Point& p, Unit tolerance) const
{
    if (IsEmpty())
        return false;
    return m_XRange.GetExpanded(tolerance).Contains(p.m_X) && m_YRange.GetExpanded(tolerance).Contains(p.m_Y);
}

Box Box::GetExpanded(Unit amount) const
{
    if (IsEmpty() || amount == k_Unit_0)
        return *this;
    if (amount < k_Unit_0 && ((amount * -2.0) > GetWidth() || (amount * -2.0) > GetHeight()))
        return k_EmptyBox;
    const UnitRange dx = m_XRange.GetExpanded(amount), dy = m_YRange.GetExpanded(amount);
    VELLUM_ASSERT(!dx.IsEmpty() && !dy.IsEmpty());
    return Box(dx, dy);
}

bool Box::IsEqualTo(const Box& other, Unit accuracy) const
{
    if (IsEmpty() || other.IsEmpty())
        return IsEmpty() && other.IsEmpty();
    return (GetMinX() - other.GetMinX()).GetAbs() <= accuracy &&
           (GetMaxX() - other.GetMaxX()).GetAbs() <= accuracy &&
           (GetMinY() - other.GetMinY()).GetAbs() <= accuracy &&
           (GetMaxY() - other.GetMaxY()).GetAbs() <= accuracy;
}

bool Box::IsDegenerate(Unit accuracy) const
{
    if (IsEmpty())
        return true;
    return GetWidth() <= accuracy || GetHeight() <= accuracy;
}

namespace
{
// -1, 0, 1 for less, tie, greater in the collections' order of ranges.
int CompareRanges(const UnitRange& a, const UnitRange& b)
{
    const bool a_empty = a.IsEmpty(), b_empty = b.IsEmpty();
    if (a_empty != b_empty)
        return a_empty ? 1 : -1;
    if (a_empty)
        return 0;
    if (a.GetLower() < b.GetLower())
        return -1;
    if (b.GetLower() < a.GetLower())
        return 1;
    if (a.GetUpper() < b.GetUpper())
        return -1;
    if (b.GetUpper() < a.GetUpper())
        return 1;
    return 0;
}
} // namespace

bool Box::operator<(const Box& other) const
{
    const int x = CompareRanges(m_XRange, other.m_XRange);
    if (x != 0)
        return x < 0;
    return CompareRanges(m_YRange, other.m_YRange) < 0;
}
} // namespace geom
