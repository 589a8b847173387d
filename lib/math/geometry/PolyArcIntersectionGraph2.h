// PolyArcIntersectionGraph2.h - the union of all entries of one collection on the intersection graph.
//
// A plane gathers pads, traces and fills that overlap freely; their union is
// the region covered by any of them. Every edge is cut where another entry's
// boundary meets it and kept only if it doesn't lie inside another entry;
// the kept pieces are walked with the union rules of the two-operand graph.
#pragma once

#include "lib/math/geometry/PolyArcIntersectionGraph.h"

namespace geom
{
class PolyArcIntersectionGraph2 : private PolyArcIntersectionGraph
{
public:
    PolyArcIntersectionGraph2(const PolygonCollection& pc, Unit accuracy);
    PolyArcIntersectionGraph2(const PolygonWithHolesCollection& pc, Unit accuracy);

    // The union of the entries; empty when the topology could not be built.
    PolygonWithHolesCollection GetResult();

    using PolyArcIntersectionGraph::GetEdges;
    using PolyArcIntersectionGraph::GetVertices;

private:
    void FillFrom(const PolygonWithHolesCollection& pc);

    bool m_Failed = false;
};
} // namespace geom
