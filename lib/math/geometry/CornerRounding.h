// CornerRounding.h - rounding the corners of a chain of arcs with a radius.
//
// Expedition describes rounded-rectangle pads by their box and a corner radius;
// the reader builds the sharp outline and rounds it here. Each corner between
// two straight edges becomes an arc tangent to both; where the edges are too
// short for the radius, the tangent points meet halfway and the radius shrinks,
// so that a square rounded by half its width comes out as four quarter circles.
#pragma once

#include "lib/math/geometry/Arc.h"

#include <vector>

namespace geom
{
// Rounds every corner between two straight edges of the chain (and, for a
// closed chain, the corner between the last and the first edge). Straight
// edges that shrink below accuracy are removed, their two tangent points joined
// at their middle. Corners at curved edges, collinear joints and spikes stay
// as they are. The chain must be a sequence: each edge starts where the
// previous one ends.
std::vector<Arc> RoundCorners_G(const std::vector<Arc>& arcs, Unit radius, Unit accuracy, bool closed);
} // namespace geom
