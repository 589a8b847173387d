// Arc.h - the one edge type of every contour: two ends and a signed sagitta.
//
// A straight edge is an Arc of height 0 and a full circle is an Arc whose ends
// coincide. The height is the distance from the middle of the chord to the
// middle of the arc, positive for a clockwise arc and negative for a
// counter-clockwise one; the middle of the arc lies at the chord's middle plus
// the chord's left normal times the height. Centre and radius are derived,
// never stored, so that a contour keeps its vertices exact through every
// operation. For a full circle |height| is the diameter and m_CenterAzimuth,
// the direction from the start to the centre, places the circle.
#pragma once

#include "lib/math/geometry/Circumference.h"

#include <utility>
#include <vector>

namespace geom
{
class Transformation;

class Arc
{
public:
    // The point arc at the origin.
    Arc() = default;
    // Stored as they stand; the azimuth matters only when start == end.
    Arc(const Point& start, const Point& end, Unit height, Azimuth center_azimuth = k_Azimuth_0)
        : m_Start(start), m_End(end), m_Height(height), m_CenterAzimuth(center_azimuth)
    {
    }
    // A straight edge along the segment.
    explicit Arc(const Segment& segment) : m_Start(segment.GetStart()), m_End(segment.GetEnd()) {}
    // The full circle that starts at the circumference's point in the direction
    // of the azimuth; a circumference of radius 0 gives a point arc.
    Arc(const Circumference& circumference, Azimuth azimuth, Direction cw_ccw);
    // The part of the circumference from one azimuth to the other, running in
    // the direction given.
    Arc(const Circumference& circumference, Azimuth start, Azimuth end, Direction cw_ccw);
    // The arc from start through middle to end; straight if the three are collinear.
    Arc(const Point& start, const Point& middle, const Point& end);
    // The arc on the chord around the given centre, running in the direction
    // given. A centre off the bisector is reported when far off, and the radius
    // is taken as the mean of its distances to the ends.
    Arc(const Segment& chord, Direction cw_ccw, const Point& center);
    // The arc on the chord that leaves its start along the tangent.
    Arc(const Segment& start_end_seg, Azimuth tangent_at_start);
    // The arc of a radius on the chord: the short one, or with big the long one.
    Arc(const Segment& chord, Unit radius, Direction cw_ccw, bool big);

    const Point& GetStart() const { return m_Start; }
    const Point& GetEnd() const { return m_End; }
    Unit GetHeight() const { return m_Height; }
    Azimuth GetCenterAzimuth() const { return m_CenterAzimuth; }

    // k_CW for a positive height, k_CCW for a negative one, else k_NoDirection.
    Direction GetDirection() const;
    bool IsCCW() const;
    // |height| <= accuracy; writes the chord when asked.
    bool IsSegment(Unit accuracy, Segment* what_if_so) const;
    // A segment within accuracy whose ends are IsEqualTo within accuracy;
    // writes the start when asked.
    bool IsPoint(Unit accuracy, Point* what_if_so) const;
    // The ends coincide exactly (a full circle, or a point arc); writes the
    // circumference when asked.
    bool IsCircumference(Circumference* what_if_so) const;
    // Longer than half its circle: 4 h^2 > chord^2.
    bool IsBig() const;

    Circumference GetCircumference() const;
    Point GetCenter() const { return GetCircumference().GetCenter(); }
    Unit GetRadius() const;
    // The point halfway along the arc, the same bits for an arc and its reverse.
    Point GetMiddle() const;
    Segment GetStartEndSegment() const { return Segment(m_Start, m_End); }
    Arc GetReversed() const { return Arc(m_End, m_Start, -m_Height, m_CenterAzimuth); }
    // Direction of travel at the start and at the end.
    Azimuth GetStartTangent() const;
    Azimuth GetEndTangent() const;
    // The swept angle, positive counter-clockwise.
    Angle GetAngle() const;
    Unit GetLength() const;
    Box GetBBox() const;
    // The chord's box grown by |height|: cheap and always holding the arc.
    Box GetLooseBBox() const;
    Unit GetEpsilon() const { return GetLooseBBox().GetEpsilon(); }

    // Exact equality of all fields.
    friend bool operator==(const Arc& a, const Arc& b)
    {
        return a.m_Start == b.m_Start && a.m_End == b.m_End && a.m_Height == b.m_Height &&
               a.m_CenterAzimuth == b.m_CenterAzimuth;
    }
    friend bool operator!=(const Arc& a, const Arc& b) { return !(a == b); }
    // Ends and height within accuracy, the azimuth exactly.
    bool IsEqualTo(const Arc& arc, Unit accuracy) const;
    bool IsSameDirection(const Arc& arc) const;
    // Start x, start y, end x, end y, height, azimuth, lexicographically.
    bool operator<(const Arc& arc) const;

    // Where a point of the arc lies along it: 0 at the start, 1 at the end,
    // the fraction of the swept angle between. Points off the span give the
    // nearer end.
    double GetPosition(const Point& p, Unit accuracy) const;
    // Whether position ra1 comes before ra2.
    static bool IsBefore(double ra1, double ra2);
    // The point at a position along the arc; exact ends at 0 and 1.
    Point GetPointAt(double position) const;
    // The piece between two positions, reversed when the first exceeds the second.
    Arc GetSubArc(double ra1, double ra2) const;
    Arc GetTransformed(const Transformation& transformation) const;
    // Each number moved from this arc towards the other by the rate.
    Arc GetAverage(const Arc& other, double rate) const;

    // Appends count points along the arc (the end too if last_point_too), the
    // last of them bitwise equal to the end.
    void GetPoints(int count, bool last_point_too, std::vector<Point>& out) const;

    // Whether p lies on the arc within accuracy.
    bool IntersectsWith(const Point& p, Unit accuracy) const;
    // Whether a point of the arc's circle, seen from the centre, falls into
    // the arc's angular span.
    bool IsInSpan(const Point& p, Unit accuracy) const;
    bool IntersectsWith(const Segment& segment, Unit accuracy) const;
    bool IntersectsWith(const Circumference& circumference, Unit accuracy) const;
    bool IntersectsWith(const Arc& arc, Unit accuracy) const;

    // The common points (point arcs) or common pieces of two arcs.
    std::pair<Result_T<Arc>, Result_T<Arc>> GetIntersections(const Arc& arc, Unit accuracy) const;
    std::pair<Result_T<Arc>, Result_T<Arc>> GetIntersections(const Circumference& circumference,
                                                             Unit accuracy) const;

private:
    Point m_Start;
    Point m_End;
    Unit m_Height;
    Azimuth m_CenterAzimuth;
};

// An empty result pair.
using ArcIntersections = std::pair<Result_T<Arc>, Result_T<Arc>>;
} // namespace geom
