// GeomStl.h - helpers over standard containers of geometry values, and grown boxes of shapes.
//
// Intersection finders produce the same crossing several times (once from
// each edge that meets it, each time with its own rounding); these helpers
// fold such near-duplicates into one point before the topology is built.
#pragma once

#include "core/lib/vellum/Assert.h"
#include "lib/math/geometry/Box.h"

#include <vector>

namespace geom
{
// Merges points that lie within a circular distance tolerance of a kept point
// into the middle of the two, pass after pass, until a pass merges nothing.
std::vector<Point> MergeClosePoints_G(const std::vector<Point>& points, Unit tolerance);

// The points that the two lists have in common within a circular tolerance,
// each as the middle of the matching pair; a match close to points already
// found is folded into each of them instead of being added.
std::vector<Point> GetCommonPoints_G(const std::vector<Point>& pts1, const std::vector<Point>& pts2,
                                     Unit tolerance);

// The tight box of any shape, grown by a non-negative expansion: the search
// window for everything that may touch the shape within that tolerance.
template <class Shape> Box GetExpandedBBox_T(const Shape& shape, Unit expansion)
{
    VELLUM_ASSERT(expansion >= k_NullUnit);
    return shape.GetBBox().GetExpanded(base::GetMaxOf_T(expansion, k_NullUnit));
}

// The same on the cheaper loose box of shapes that have one (arcs).
template <class Shape> Box GetExpandedLooseBBox_T(const Shape& shape, Unit expansion)
{
    VELLUM_ASSERT(expansion >= k_NullUnit);
    return shape.GetLooseBBox().GetExpanded(base::GetMaxOf_T(expansion, k_NullUnit));
}
} // namespace geom
