// CircleSlice.h - the region between an arc and its chord.
//
// A contour of arcs encloses the polygon of its vertices plus, for each curved
// edge, the slice between the edge and its chord (counted negative where the
// edge bends inwards). Areas and point-in-contour tests both reduce to slices.
#pragma once

#include "lib/math/geometry/Arc.h"

namespace geom
{
class CircleSlice
{
public:
    explicit CircleSlice(const Arc& arc) : m_Arc(arc) {}

    const Arc& GetArc() const { return m_Arc; }
    Unit GetEpsilon() const { return m_Arc.GetEpsilon(); }

    // Signed: positive for a counter-clockwise arc, which bulges to the right
    // of its chord, so that it adds to the area of a counter-clockwise contour.
    // An arc flatter than the slice's epsilon counts as the triangle of its
    // ends and middle.
    Area GetArea() const;
    // Whether p lies strictly inside the slice: inside the circle and on the
    // arc's side of the chord.
    bool Contains(const Point& p) const;

private:
    Arc m_Arc;
};
} // namespace geom
