// ArcDistance.h - the shortest distance between two contour edges.
//
// An offset contour is right only where it keeps its distance from the
// contour it came from; a loop of it that comes closer is no part of the
// shrunk region. This measures that distance exactly for straight edges and
// true arcs, without sampling points along them.
#pragma once

#include "lib/math/geometry/Arc.h"

namespace geom
{
// The shortest distance between a point of `a` and a point of `b`; 0 where
// they meet. Straight edges, arcs, full circles and point edges all count.
Unit GetDistance_G(const Arc& a, const Arc& b);
// The shortest distance from p to a point of the edge.
Unit GetDistance_G(const Point& p, const Arc& a);
} // namespace geom
