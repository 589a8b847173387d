// Polygon.h - a closed contour of arcs with the meaning of a region.
//
// Every copper shape of the translator is one of these: a round pad, a
// rounded box, a thick trace, an outline read from a design. Arcs survive
// construction, offsetting and the boolean operations; nothing is flattened
// unless a caller asks for points. A polygon adds no data to its chain: it is
// the chain read as the region it encloses. Region operations expect a
// normalised contour (counter-clockwise, positive area) and go through
// RemoveSelfIntersections for any that isn't.
#pragma once

#include "lib/math/geometry/PolyArc.h"

namespace geom
{
class Polygon;
class PolygonWithHoles;
class PolygonWithHolesCollection;

// How two regions lie, named from the receiver towards the argument.
enum PolygonRelation
{
    k_NoIntersection = 0,  // disjoint
    k_ThisInsideOther = 1, // the receiver lies inside the argument
    k_OtherInsideThis = 2, // the argument lies inside the receiver
    k_Crossing = 3,        // the boundaries meet
    k_RelationError = 4    // only behind a failed assertion
};

// How a point lies to a region.
enum PointRelation
{
    k_PointOutside = 0,
    k_PointInside = 2,
    k_PointOnBoundary = 3
};

class Polygon : public PolyArc
{
public:
    // An empty closed polygon with its own implementation.
    Polygon();
    Polygon(const Polygon& from) = default;
    Polygon& operator=(const Polygon& from) = default;
    // The chain as it is; with normalise, a clockwise contour is stored reversed.
    Polygon(const PolyArc& chain, bool normalise);
    Polygon(const std::vector<Arc>& arcs, bool normalise);
    // Straight edges between the points, closed as a PolyArc closes them.
    Polygon(const std::vector<Point>& vertices, bool normalise);
    // One counter-clockwise full circle from azimuth 0; a point edge for radius 0.
    explicit Polygon(const Circle& circle);
    // A trace of the given width along the segment, with half-circle caps.
    // Width 0 gives the two-edge chain of the segment and its reverse.
    Polygon(const Segment& segment, Unit width);
    // The box grown by the corner radius with quarter-circle corners; a box of
    // no height or width is the thick line of width 2 r.
    Polygon(const Box& box, Unit corner_radius);

    // No implementation, or no edges.
    bool empty() const { return PolyArc::empty(); }
    // The enclosed area of a normalised contour; 0 when empty.
    Area GetArea() const;
    const Point& GetFirstPoint() const { return GetFirstVertex(); }

    // Exactly two straight edges: a segment traced there and back. Writes it.
    bool IsSegment(Unit accuracy, Segment* what_if_so) const;
    // The contour is one circle within accuracy; writes the disc.
    bool IsCircle(Unit accuracy, Circle* what_if_so) const;
    using PolyArc::IsCircle;
    // The same implementation, or the same edges within accuracy in the same
    // stored order: a rotated or reversed contour doesn't match.
    bool IsEqualTo(const Polygon& poly, Unit accuracy) const;
    // A strict total order of polygons: edge count, box, mode, then edges.
    bool operator<(const Polygon& poly) const;

    // Whether the regions meet: the receiver's first point inside the
    // argument, or the contours in contact. An argument lying wholly inside
    // the receiver without contact is not found by this test.
    bool IntersectsWith(const Polygon& poly, Unit accuracy) const;
    using PolyArc::IntersectsWith;

    // Whether p lies inside or on the contour within accuracy. Where the walk
    // around p is undecided (p on an axis through a vertex), p is displaced by
    // small random amounts until it is decided.
    bool IsPointInside(const Point& p, Unit accuracy) const;
    PointRelation GetRelation(const Point& p, Unit accuracy) const;
    PolygonRelation GetRelation(const Polygon& poly, Unit accuracy) const;

    // The regions of this polygon minus the argument, or united with it.
    // Built on the intersection graph.
    PolygonWithHolesCollection Subtract(const Polygon& poly, Unit accuracy) const;
    PolygonWithHolesCollection Unite(const Polygon& poly, Unit accuracy) const;

    // The region shrunk by `by`: the contour offset inwards with the joint
    // mode, loops resolved when asked. A polygon narrower than `by` vanishes.
    PolygonWithHolesCollection Shrink(Unit by, Unit accuracy, bool resolve_loops, int joint_mode,
                                      Unit joint_value) const;
    // The region grown by `by`; a point polygon grows into a circle.
    PolygonWithHolesCollection Expand(Unit by, Unit accuracy, bool resolve_loops, int joint_mode,
                                      Unit joint_value) const;
    // The region grown by `by`, with the pockets that the growth closes
    // around kept as holes: a void grown into the material around it leaves
    // the copper of such a pocket in place.
    PolygonWithHolesCollection ExpandKeepingPockets(Unit by, Unit accuracy) const;

    // The simple loops of the contour: outlines as entries and, unless
    // drop_holes, clockwise loops as their holes. With keep_largest only the
    // largest outline stays. changed tells whether the contour was altered.
    PolygonWithHolesCollection RemoveSelfIntersections(Unit accuracy, bool keep_largest, bool drop_holes,
                                                       bool* changed) const;

    // The edges without point edges (at accuracy) and without an edge that
    // goes straight back along the previous one; changed tells if any went.
    static std::vector<Arc> RemoveDegenerateEdges(const std::vector<Arc>& arcs, Unit accuracy, bool* changed);
    // The points where edges of the chain meet other than at their shared
    // vertex, merged within accuracy and sorted.
    static std::vector<Point> GetSelfIntersectionPoints(const PolyArc& chain, Unit accuracy);
    // The regions of a set of simple closed loops: tiny loops dropped,
    // counter-clockwise loops outlines, clockwise loops holes placed in the
    // first outline that holds them.
    static PolygonWithHolesCollection AssembleLoops(const std::vector<PolyArc>& loops, Unit accuracy,
                                                    bool keep_largest, bool drop_holes);
    // Splits the closed chain at the crossing points and walks its simple
    // loops, then assembles them. Built on the intersection graph's loop walk.
    static PolygonWithHolesCollection ResolveSelfCrossings(const std::vector<Arc>& arcs,
                                                           const std::vector<Point>& crossings, Unit accuracy,
                                                           bool keep_largest, bool drop_holes);

private:
    void Normalise();
    // The accuracy an offset works at: the caller's, never below what the
    // coordinates hold.
    Unit GetWorkingAccuracy(Unit accuracy) const;
    PolygonWithHolesCollection ResolveOffset(const Result_T<std::vector<Arc>>& offset, Unit accuracy,
                                             bool resolve_loops) const;
};

// The quarter-circle corner: the sagitta of a quarter circle of radius 1,
// 1 - 1/sqrt(2).
double GetQuarterCircleSagittaFactor_G();
} // namespace geom
