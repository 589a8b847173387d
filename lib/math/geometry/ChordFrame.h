// ChordFrame.h - a nearly straight arc seen from the middle of its chord.
//
// An arc whose sagitta is a tiny part of its chord (a long board edge drawn
// as an arc, a trace bent by a rounding error) has its centre far away:
// measured from there, its points, crossings and distances lose exactly the
// digits that matter, and a crossing near the arc is lost or a point on its
// middle is missed. In the frame of the chord (x along the chord from its
// middle, y along the left normal, c the half chord, h the signed sagitta)
// the arc's circle is the zero set of
//   F(x, y) = (h (x^2 + y^2 - c^2) + (c^2 - h^2) y) / (c^2 + h^2),
// which becomes the chord's line y = 0 as the arc straightens and is the
// signed distance from the circle to within |h| / c near the chord. Such
// arcs are measured, cut and boxed here, from F alone.
#pragma once
#include "lib/math/geometry/Arc.h"

namespace geom
{
class ChordFrame
{
public:
    explicit ChordFrame(const Arc& arc);

    // Whether the arc is flat enough for its centre to be a poor reference:
    // a sagitta below 1/8000 of the chord, a radius above about a thousand
    // chords. Straight edges and full circles are not.
    static bool IsFlat(const Arc& arc);

    double GetHalfChord() const { return m_HalfChord; }
    // The coordinates of p in the frame.
    double GetAlong(const Point& p) const;
    double GetAcross(const Point& p) const;
    // F at p: about the distance from the arc's circle, positive on the side
    // of the chord's left normal when the sagitta is positive.
    double GetValue(const Point& p) const;

    // The signed sagitta of the arc on this chord through p, which lies off
    // the chord's line.
    Unit GetSagittaThrough(const Point& p) const;
    // Whether p lies on the arc within accuracy.
    bool IsOnArc(const Point& p, Unit accuracy) const;
    // Whether p, a point near the arc's circle, lies over the chord (or
    // within accuracy of an end).
    bool IsInSpan(const Point& p, Unit accuracy) const;
    // Whether p lies strictly between the chord and the arc.
    bool IsInSlice(const Point& p) const;
    // The tight box of the arc.
    Box GetBBox() const;
    // Positions along the arc as the arc's own: the fraction of the swept
    // angle, 0 at the start and 1 at the end.
    double GetPosition(const Point& p) const;
    Point GetPointAt(double position) const;
    // The piece between two positions, reversed when the first exceeds the
    // second.
    Arc GetSubArc(double ra1, double ra2) const;

    // The points where the arc's circle meets a segment or another arc's
    // circle within accuracy, near this arc; the caller checks the spans.
    ArcIntersections GetIntersections(const Segment& segment, Unit accuracy) const;
    ArcIntersections GetIntersections(const Arc& other, Unit accuracy) const;

    // The arc moved outwards from its centre by `by` (inwards when negative):
    // the same angle on a radius larger by `by`; fails when the radius would
    // fall to `accuracy` or below.
    Result_T<Arc> GetOffset(Unit by, Unit accuracy) const;

private:
    // A circle or line a |q|^2 + b . q + k = 0 in the frame's coordinates q,
    // scaled so that its gradient is about 1 on the curve.
    struct Curve
    {
        double m_A = 0, m_Bx = 0, m_By = 0, m_K = 0;
    };
    Curve GetOwnCurve() const;
    Curve GetCurveOf(const Arc& arc) const;
    Point ToWorld(double x, double y) const;
    double GetRadius() const;
    // The height of the arc's circle over the chord at x.
    double GetHeightAt(double x) const;
    // The points of the curve on the line through (px, py) with the unit
    // direction (vx, vy), with their parameters; count 0, 1 or 2.
    int GetLineCrossings(const Curve& curve, double px, double py, double vx, double vy, Unit accuracy,
                         double t[2], double slope[2]) const;

    Arc m_Arc;
    Point m_Middle;
    double m_Ux = 1, m_Uy = 0; // unit chord direction
    double m_HalfChord = 0;
    double m_Height = 0;
};
} // namespace geom
