// PolygonWithHoles.h - the general region: one outline and any number of holes.
//
// A plane with its voids, a pad with a drill clearance, a result of a
// subtraction: all are one outline with holes inside it. The holes are a
// collection, so that a question about a small area visits only the holes
// near it. The class keeps what it is given: that the holes lie inside the
// outline and apart from each other is the business of the operations that
// build regions.
#pragma once

#include "lib/math/geometry/PolygonCollection.h"

namespace geom
{
class PolygonWithHoles
{
public:
    PolygonWithHoles() = default;
    // The outline without holes.
    explicit PolygonWithHoles(const Polygon& outline) : m_Polygon(outline) {}
    // Both shared, not copied.
    PolygonWithHoles(const Polygon& outline, const PolygonCollection& holes)
        : m_Polygon(outline), m_Holes(holes)
    {
    }

    // Appends a hole; an empty polygon is ignored. The outline must be set.
    void AddHole(const Polygon& hole);

    const Polygon& GetPolygon() const { return m_Polygon; }
    const PolygonCollection& GetHoles() const { return m_Holes; }
    bool HasHoles() const { return !m_Holes.empty(); }
    bool empty() const { return m_Polygon.empty(); }

    // The outline's area less the holes' areas.
    Area GetArea() const;
    Box GetBBox() const { return m_Polygon.GetBBox(); }
    Unit GetEpsilon() const { return m_Polygon.GetEpsilon(); }

    // Inside the outline and not inside a hole; on the border of either is
    // on the boundary.
    PointRelation GetRelation(const Point& p, Unit accuracy) const;
    // The outline's relation, refined by the holes when the polygon lies
    // inside the outline.
    PolygonRelation GetRelation(const Polygon& poly, Unit accuracy) const;
    PolygonRelation GetRelation(const PolygonWithHoles& other, Unit accuracy) const;

    // Whether a loop can be a hole of this region: it touches the outline's
    // contour and doesn't lie wholly inside an existing hole. The graph asks
    // this for loops of zero area.
    bool IsHoleCandidate(const Polygon& loop, Unit accuracy) const;

    // Boolean operations on the intersection graph.
    PolygonWithHolesCollection Unite(const PolygonWithHoles& other, Unit accuracy) const;
    PolygonWithHolesCollection Intersect(const PolygonWithHoles& other, Unit accuracy) const;
    PolygonWithHolesCollection Intersect(const Polygon& poly, Unit accuracy) const;
    PolygonWithHolesCollection RemoveSelfIntersections(Unit accuracy) const;
    // The region shrunk by `by`: the outline shrunk, the holes grown and
    // taken away. Built on the intersection graph.
    PolygonWithHolesCollection Shrink(Unit by, Unit accuracy, bool resolve_loops, int joint_mode,
                                      Unit joint_value) const;
    // Hole-free polygons that tile the region.
    std::vector<Polygon> Decompose() const;

    // Outline and holes with adjacent edges joined within accuracy.
    PolygonWithHoles GetSimplified(Unit accuracy, bool* changed) const;

    friend bool operator==(const PolygonWithHoles& a, const PolygonWithHoles& b);

private:
    Polygon m_Polygon;
    PolygonCollection m_Holes;
};
} // namespace geom
