// Box.h - an axis-parallel rectangle: a horizontal and a vertical Range_T.
//
// Boxes are the cheap reject of every geometric predicate and the key by which
// the ordered containers find edges near a point. A box is empty when either
// range is empty; an empty box is the neutral element of the hull and what
// an empty shape reports.
#pragma once

#include "core/lib/vellum/Range_T.h"
#include "lib/containers/RangeElementBox_T.h"
#include "lib/math/geometry/Point.h"

namespace geom
{
using base::Range_T;
using UnitRange = Range_T<Unit>;

class Box
{
public:
    // The empty box.
    Box() = default;
    Box(const UnitRange& x_range, const UnitRange& y_range) : m_XRange(x_range), m_YRange(y_range) {}
    // The box spanned by two opposite corners, in any order.
    Box(const Point& a, const Point& b);
    // The single box of one point.
    explicit Box(const Point& p) : m_XRange(p.m_X, p.m_X), m_YRange(p.m_Y, p.m_Y) {}
    // The open quadrant (1 to 4, counter-clockwise from +x +y) at a point,
    // reaching k_InfiniteUnit on its open sides: where to search for edges that
    // may cross the quadrant's boundary rays.
    Box(const Point& p, int quadrant);
    Box(Unit min_x, Unit max_x, Unit min_y, Unit max_y) : m_XRange(min_x, max_x), m_YRange(min_y, max_y) {}

    bool IsEmpty() const { return m_XRange.IsEmpty() || m_YRange.IsEmpty(); }

    const UnitRange& GetXRange() const { return m_XRange; }
    const UnitRange& GetYRange() const { return m_YRange; }
    Unit GetMinX() const { return m_XRange.GetLower(); }
    Unit GetMaxX() const { return m_XRange.GetUpper(); }
    Unit GetMinY() const { return m_YRange.GetLower(); }
    Unit GetMaxY() const { return m_YRange.GetUpper(); }
    Unit GetWidth() const { return m_XRange.GetLength(); }
    Unit GetHeight() const { return m_YRange.GetLength(); }
    Point GetCenter() const { return Point(m_XRange.GetMiddle(), m_YRange.GetMiddle()); }
    // 0 for an empty box.
    Area GetArea() const;
    // Corner 0 (min x, min y), 1 (max x, min y), 2 (max x, max y), 3 (min x,
    // max y): counter-clockwise from the lower left. Other indices wrap.
    Point GetCorner(int index) const;

    // The noise level of the box's coordinates: 0 for an empty box, else the
    // Unit epsilon of the largest magnitude among its bounds and extents.
    Unit GetEpsilon() const;

    // Smallest box holding both; an empty operand leaves the other side.
    Box GetHull(const Box& other) const
    {
        return Box(m_XRange.GetHull(other.m_XRange), m_YRange.GetHull(other.m_YRange));
    }
    Box GetHull(const Point& p) const { return GetHull(Box(p)); }
    Box& operator|=(const Box& other) { return *this = GetHull(other); }
    Box& operator|=(const Point& p) { return *this = GetHull(p); }
    // Common part; empty when either range fails to meet.
    Box operator&(const Box& other) const;

    bool IntersectsWith(const Box& other) const
    {
        return m_XRange.IntersectsWith(other.m_XRange) && m_YRange.IntersectsWith(other.m_YRange);
    }
    // Whether the boxes meet when this one is grown by tolerance on all sides.
    bool IntersectsWith(const Box& other, Unit tolerance) const;
    bool Contains(const Point& p) const
    {
        return !IsEmpty() && m_XRange.Contains(p.m_X) && m_YRange.Contains(p.m_Y);
    }
    // Whether the point lies in the box grown by tolerance.
    bool Contains(const Point& p, Unit tolerance) const;
    bool Contains(const Box& other) const
    {
        return m_XRange.Contains(other.m_XRange) && m_YRange.Contains(other.m_YRange);
    }

    // Grows all four sides by a signed amount. An empty box and an amount of 0
    // return the box unchanged; a shrink by more than half the width or height
    // gives the empty box.
    Box GetExpanded(Unit amount) const;

    // Bounds pairwise within accuracy; two empty boxes are equal, an empty and
    // a non-empty one are not.
    bool IsEqualTo(const Box& other, Unit accuracy) const;
    // Width or height within accuracy of zero: a box of a line or a point.
    bool IsDegenerate(Unit accuracy) const;

    bool operator==(const Box& other) const = default;
    // The total order of the shape collections: a non-empty horizontal range
    // before an empty one, then lower and upper bound; then the same vertically.
    bool operator<(const Box& other) const;

private:
    UnitRange m_XRange;
    UnitRange m_YRange;
};

inline const Box k_EmptyBox;
// All usable coordinates, with room to spare below k_InfiniteUnit so that its
// width and height stay finite.
inline const Box k_BigBox(-k_InfiniteValue * 0.5, k_InfiniteValue * 0.5, -k_InfiniteValue * 0.5,
                          k_InfiniteValue * 0.5);
} // namespace geom

// A point in a range tree is indexed by the box of itself alone.
template <> struct base::RangeElementBox_T<geom::Point>
{
    static geom::Box Get(const geom::Point& value) { return geom::Box(value); }
};
