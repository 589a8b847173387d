// Arc.cpp - construction, derived circle, measures, boxes and positions of arcs.
//
// The predicates and intersections of arcs live in ArcIntersection.cpp.
#include "lib/math/geometry/Arc.h"

#include "core/lib/vellum/Assert.h"
#include "lib/math/geometry/ChordFrame.h"
#include "lib/math/geometry/Transformation.h"
#include "lib/math/geometry/Triangle.h"

#include <algorithm>
#include <cmath>
#include <tuple>

namespace geom
{
namespace
{
Direction GetOpposite(Direction direction)
{
    return direction == k_CW ? k_CCW : k_CW;
}

// 4 h^2 and the squared chord, the two numbers that classify an arc.
struct ArcSquares
{
    Area m_FourHeightSquare;
    Area m_ChordSquare;
};

ArcSquares GetSquares(const Point& start, const Point& end, Unit height)
{
    return ArcSquares{height * height * 4.0, start.GetDistanceSquareTo(end)};
}
} // namespace

Arc::Arc(const Circumference& circumference, Azimuth azimuth, Direction cw_ccw)
    : m_Start(circumference.GetCenter()), m_End(circumference.GetCenter())
{
    VELLUM_ASSERT(cw_ccw == k_CCW || cw_ccw == k_CW);
    const Unit r = circumference.GetRadius();
    if (r == k_Unit_0)
        return;
    m_Start = m_End = circumference.GetPointAt(azimuth);
    m_CenterAzimuth = azimuth.GetOpposite();
    m_Height = cw_ccw == k_CCW ? -(r * 2.0) : r * 2.0;
}

Arc::Arc(const Circumference& circumference, Azimuth start, Azimuth end, Direction cw_ccw)
    : m_Start(circumference.GetCenter()), m_End(circumference.GetCenter())
{
    VELLUM_ASSERT(cw_ccw == k_CW || cw_ccw == k_CCW);
    VELLUM_ASSERT(start != end);
    const Unit r = circumference.GetRadius();
    if (r == k_Unit_0)
        return;
    const Point start_point = circumference.GetPointAt(start), end_point = circumference.GetPointAt(end);
    VELLUM_ASSERT(start_point != end_point);
    m_Start = start_point;
    m_End = end_point;
    if (start_point == end_point)
    {
        // The two azimuths name one point: the whole circle from there.
        *this = Arc(circumference, start, cw_ccw);
        return;
    }
    const Point& center = circumference.GetCenter();
    const Direction turn = GetOrientation_G(start_point, end_point, center);
    Unit height;
    if (turn == k_NoDirection)
        height = r;
    else
    {
        // The short arc runs counter-clockwise exactly when the centre lies to
        // the left of the chord; the long one has the centre on its own side.
        const Unit d = Segment(start_point, end_point).GetMiddle().GetDistanceTo(center, k_InfiniteUnit);
        height = turn == cw_ccw ? r - d : r + d;
        VELLUM_ASSERT(height > k_NullUnit);
        if (!(height > k_NullUnit))
            height = k_NullUnit;
    }
    m_Height = cw_ccw == k_CCW ? -height : height;
}

Arc::Arc(const Point& start, const Point& middle, const Point& end) : m_Start(start), m_End(end)
{
    const Direction turn = GetOrientation_G(start, middle, end);
    if (turn == k_NoDirection)
        return;
    if (start != end)
    {
        // Three points nearly in line have their circle's centre far out,
        // where r - s of the constructor below cancels; the sagitta then
        // comes from the chord.
        const ChordFrame frame(Arc(start, end, Unit(1.0)));
        const Unit height = frame.GetSagittaThrough(middle);
        if (ChordFrame::IsFlat(Arc(start, end, height)))
        {
            m_Height = height;
            return;
        }
    }
    const Circumference circle = Triangle(start, middle, end).GetCircumscribedCircle();
    *this = Arc(Segment(start, end), turn, circle.GetCenter());
}

Arc::Arc(const Segment& chord, Direction cw_ccw, const Point& center)
    : m_Start(chord.GetStart()), m_End(chord.GetEnd())
{
    VELLUM_ASSERT(cw_ccw == k_CW || cw_ccw == k_CCW);
    if (m_Start == m_End)
    {
        VELLUM_ASSERT(!"We haven't expected full circles here in the past - code untested");
        const Unit r = center.GetDistanceTo(m_Start, k_InfiniteUnit);
        m_Height = cw_ccw == k_CCW ? -(r * 2.0) : r * 2.0;
        if (m_Height != k_Unit_0)
            m_CenterAzimuth = (center - m_Start).GetAzimuth();
        return;
    }
    const Unit r1 = center.GetDistanceTo(m_Start, k_InfiniteUnit),
               r2 = center.GetDistanceTo(m_End, k_InfiniteUnit);
    Unit r = (r1 + r2) * 0.5;
    const bool finite = std::isfinite(r1.GetValue()) && std::isfinite(r2.GetValue());
    const bool equal = finite && (r1 - r2).GetAbs() <= base::GetMaxOf_T(r1.GetAbs(), r2.GetAbs()) * 1e-10;
    const Unit chord_length = chord.GetLength();
    if (!equal)
    {
        // A centre that is not on the bisector: the caller's centre was computed
        // elsewhere (a file's arc centre); a small mismatch is normal, a large
        // one means the ends don't belong to this circle.
        const double ratio =
            std::fabs((r1 - r2).GetValue() * 0.5 * (r * 2.0).GetValue() / chord_length.GetValue()) /
            chord_length.GetValue();
        VELLUM_ASSERT(ratio < 0.333);
    }
    const Area q = chord.GetLengthSquare() * 0.25;
    if (q > r * r)
        r = q.GetSqrt();
    const Unit s = base::GetMaxOf_T(r * r - q, k_Area_0).GetSqrt();
    const Direction turn = GetOrientation_G(m_Start, m_End, center);
    // The centre lies on the arc's side of the chord: the arc is the long one.
    if ((turn == k_CCW && cw_ccw != k_CCW) || (turn != k_CCW && cw_ccw == k_CCW))
        m_Height = r + s;
    else
        m_Height = r - s;
    if (cw_ccw == k_CCW)
        m_Height = -m_Height;
}

Arc::Arc(const Segment& start_end_seg, Azimuth tangent_at_start)
    : m_Start(start_end_seg.GetStart()), m_End(start_end_seg.GetEnd())
{
    // clang-format off
    VELLUM_ASSERT(!start_end_seg.IsPoint (0, NULL));
    // clang-format on
    VELLUM_ASSERT(start_end_seg.GetLength() >= start_end_seg.GetEpsilon());
    const Vector tangent(tangent_at_start, 1.0);
    const Direction ccw = GetOrientation_G(m_Start, m_Start + tangent, m_End);
    VELLUM_ASSERT(ccw == k_CW || ccw == k_CCW);
    if (m_Start == m_End || (ccw != k_CW && ccw != k_CCW))
        return;
    const Line bisector = Line::GetPerpendicularBisector(start_end_seg);
    const Line normal(m_Start, Vector(-tangent.GetY(), tangent.GetX()));
    Point center = start_end_seg.GetMiddle();
    if (bisector.IntersectsWith(normal, k_Unit_0))
    {
        const Result_T<Point> meet = GetIntersection_G(bisector, normal);
        if (meet.m_Success)
            center = meet.m_Value;
    }
    *this = Arc(start_end_seg, ccw, center);
}

Arc::Arc(const Segment& chord, Unit radius, Direction cw_ccw, bool big)
    : m_Start(chord.GetStart()), m_End(chord.GetEnd())
{
    VELLUM_ASSERT(cw_ccw == k_CW || cw_ccw == k_CCW);
    if (m_Start == m_End)
    {
        VELLUM_ASSERT(!big);
        return;
    }
    const Unit s = base::GetMaxOf_T(radius * radius - chord.GetLengthSquare() * 0.25, k_Area_0).GetSqrt();
    m_Height = big ? radius + s : radius - s;
    if (cw_ccw == k_CCW)
        m_Height = -m_Height;
}

Direction Arc::GetDirection() const
{
    if (m_Height > k_Unit_0)
        return k_CW;
    if (m_Height < k_Unit_0)
        return k_CCW;
    return k_NoDirection;
}

bool Arc::IsCCW() const
{
    VELLUM_ASSERT(m_Height != k_Unit_0);
    return m_Height < k_Unit_0;
}

bool Arc::IsSegment(Unit accuracy, Segment* what_if_so) const
{
    if (m_Height.GetAbs() > accuracy)
        return false;
    if (what_if_so)
        *what_if_so = GetStartEndSegment();
    return true;
}

bool Arc::IsPoint(Unit accuracy, Point* what_if_so) const
{
    if (!IsSegment(accuracy, nullptr) || !m_Start.IsEqualTo(m_End, accuracy))
        return false;
    if (what_if_so)
        *what_if_so = m_Start;
    return true;
}

bool Arc::IsCircumference(Circumference* what_if_so) const
{
    if (m_Start != m_End)
        return false;
    if (what_if_so)
        *what_if_so = GetCircumference();
    return true;
}

bool Arc::IsBig() const
{
    const ArcSquares sq = GetSquares(m_Start, m_End, m_Height);
    return sq.m_FourHeightSquare > sq.m_ChordSquare;
}

Unit Arc::GetRadius() const
{
    if (m_Start == m_End)
        return m_Height.GetAbs() * 0.5;
    const Unit height = m_Height.GetAbs();
    VELLUM_ASSERT(height > 0);
    if (!(height > 0))
        return k_Unit_0;
    const ArcSquares sq = GetSquares(m_Start, m_End, m_Height);
    if (sq.m_FourHeightSquare == sq.m_ChordSquare)
        return height;
    // From the intersecting chords: (2r - h) h = (c / 2)^2.
    return (sq.m_ChordSquare / (height * 4.0) + height) * 0.5;
}

Circumference Arc::GetCircumference() const
{
    if (m_Start == m_End)
    {
        if (m_Height == k_Unit_0)
            return Circumference(m_Start, k_Unit_0);
        const Unit r = m_Height.GetAbs() * 0.5;
        return Circumference(m_Start + Vector(m_CenterAzimuth, r), r);
    }
    VELLUM_ASSERT(m_Height != k_NullUnit);
    if (m_Height == k_NullUnit)
        return Circumference(GetStartEndSegment().GetMiddle(), k_Unit_0);
    // Computed on the arc whose start sorts first, so that an edge and its
    // reverse find the same centre bit for bit.
    if (m_End < m_Start)
        return GetReversed().GetCircumference();
    const Unit h = m_Height.GetAbs();
    const Point middle = GetStartEndSegment().GetMiddle();
    const ArcSquares sq = GetSquares(m_Start, m_End, m_Height);
    if (sq.m_FourHeightSquare == sq.m_ChordSquare)
        return Circumference(middle, h);
    const Unit r = GetRadius();
    const Angle quarter = (m_Height > k_Unit_0) == IsBig() ? k_Degree_90 : -k_Degree_90;
    const Vector towards_center = (m_End - m_Start).GetRotated(quarter).GetResized((r - h).GetAbs());
    return Circumference(middle + towards_center, r);
}

Point Arc::GetMiddle() const
{
    if (m_End < m_Start)
        return GetReversed().GetMiddle();
    if (m_Start == m_End)
    {
        if (m_Height == k_Unit_0)
            return m_Start;
        const Point center = GetCenter();
        return center - (m_Start - center);
    }
    if (m_Height == k_Unit_0)
        return GetStartEndSegment().GetMiddle();
    return GetStartEndSegment().GetMiddle() + (m_End - m_Start).GetPerpendicular(m_Height);
}

Azimuth Arc::GetStartTangent() const
{
    if (m_Height == k_Unit_0)
        return (m_End - m_Start).GetAzimuth();
    VELLUM_ASSERT(!IsSegment(0, NULL));
    const Azimuth radial = (m_Start - GetCenter()).GetAzimuth();
    return IsCCW() ? radial + k_Degree_90 : radial - k_Degree_90;
}

Azimuth Arc::GetEndTangent() const
{
    if (m_Height == k_Unit_0)
        return (m_End - m_Start).GetAzimuth();
    VELLUM_ASSERT(!IsSegment(0, NULL));
    const Azimuth radial = (m_End - GetCenter()).GetAzimuth();
    return IsCCW() ? radial + k_Degree_90 : radial - k_Degree_90;
}

Angle Arc::GetAngle() const
{
    if (m_Height == k_Unit_0)
        return k_Angle_0;
    const bool ccw = m_Height < k_Unit_0;
    if (m_Start == m_End)
        return ccw ? k_Degree_360 : -k_Degree_360;
    const ArcSquares sq = GetSquares(m_Start, m_End, m_Height);
    if (sq.m_FourHeightSquare == sq.m_ChordSquare)
        return ccw ? k_Degree_180 : -k_Degree_180;
    if (!(sq.m_FourHeightSquare > sq.m_ChordSquare))
    {
        const Unit half_chord = GetStartEndSegment().GetLength() * 0.5;
        return Angle(-4.0 * GetAtan_G(m_Height / half_chord));
    }
    // The long arc: the half angle at the centre from the signed radius.
    const Unit r = (m_Height + sq.m_ChordSquare / (m_Height * 4.0)) * 0.5;
    const double cosine = std::clamp((r - m_Height) / r, -1.0, 1.0);
    const Angle angle = GetAcos_G(cosine) * 2.0;
    return ccw ? angle : -angle;
}

Unit Arc::GetLength() const
{
    if (m_Height == k_Unit_0)
        return GetStartEndSegment().GetLength();
    return GetRadius() * GetAngle().GetAbs().GetValue();
}

Box Arc::GetLooseBBox() const
{
    return Box(m_Start, m_End).GetExpanded(m_Height.GetAbs());
}

Box Arc::GetBBox() const
{
    const Box chord_box(m_Start, m_End);
    if (m_Height == k_Unit_0)
        return chord_box;
    if (m_Start == m_End)
        return GetCircumference().GetBBox();
    if (ChordFrame::IsFlat(*this))
        return ChordFrame(*this).GetBBox();
    const bool big = IsBig();
    // A short arc over an axis-parallel chord reaches farthest at its middle.
    if (!big && (m_Start.m_X == m_End.m_X || m_Start.m_Y == m_End.m_Y))
        return chord_box.GetHull(GetMiddle());
    const Circumference circle = GetCircumference();
    const Point& c = circle.GetCenter();
    const Unit r = circle.GetRadius();
    // The radii in the order in which the arc runs clockwise.
    const bool clockwise = m_Height > k_Unit_0;
    const int from = ((clockwise ? m_Start : m_End) - c).GetQuadrant();
    const int to = ((clockwise ? m_End : m_Start) - c).GetQuadrant();
    if (from == to)
        return big ? circle.GetBBox() : chord_box;
    Box box = chord_box;
    // Leaving a quadrant clockwise passes one extreme of the circle: east out
    // of the first, south out of the fourth, west out of the third, north out
    // of the second.
    for (int q = from; q != to; q = q == 1 ? 4 : q - 1)
    {
        switch (q)
        {
        case 1:
            box |= Point(c.m_X + r, c.m_Y);
            break;
        case 4:
            box |= Point(c.m_X, c.m_Y - r);
            break;
        case 3:
            box |= Point(c.m_X - r, c.m_Y);
            break;
        default:
            box |= Point(c.m_X, c.m_Y + r);
            break;
        }
    }
    return box;
}

bool Arc::IsEqualTo(const Arc& arc, Unit accuracy) const
{
    return m_Start.IsEqualTo(arc.m_Start, accuracy) && m_End.IsEqualTo(arc.m_End, accuracy) &&
           (m_Height - arc.m_Height).GetAbs() <= accuracy && m_CenterAzimuth == arc.m_CenterAzimuth;
}

bool Arc::IsSameDirection(const Arc& arc) const
{
    if (m_Height == k_Unit_0 || arc.m_Height == k_Unit_0)
        return (m_End - m_Start).GetScalarProductWith(arc.m_End - arc.m_Start) > k_Area_0;
    return (m_Height > k_Unit_0) == (arc.m_Height > k_Unit_0);
}

bool Arc::operator<(const Arc& arc) const
{
    const auto key = [](const Arc& a)
    {
        return std::make_tuple(a.m_Start.m_X.GetValue(), a.m_Start.m_Y.GetValue(), a.m_End.m_X.GetValue(),
                               a.m_End.m_Y.GetValue(), a.m_Height.GetValue(), a.m_CenterAzimuth.GetValue());
    };
    return key(*this) < key(arc);
}

double Arc::GetPosition(const Point& p, Unit accuracy) const
{
    if (p.IsEqualTo(m_Start, accuracy))
        return 0.0;
    if (p.IsEqualTo(m_End, accuracy))
        return 1.0;
    if (m_Height == k_Unit_0)
        return std::clamp(GetStartEndSegment().GetProjectionRate(p), 0.0, 1.0);
    if (ChordFrame::IsFlat(*this))
        return ChordFrame(*this).GetPosition(p);
    const Point center = GetCenter();
    if (p.IsEqualTo(center, accuracy))
        return 0.0;
    const Angle whole = GetAngle().GetAbs();
    const Angle to_p =
        (m_Start - center).GetAzimuth().GetAngleTo((p - center).GetAzimuth(), GetDirection()).GetAbs();
    if (to_p > whole)
        return p.GetDistanceSquareTo(m_Start) <= p.GetDistanceSquareTo(m_End) ? 0.0 : 1.0;
    return to_p / whole;
}

bool Arc::IsBefore(double ra1, double ra2)
{
    VELLUM_ASSERT(0.0 <= ra1);
    VELLUM_ASSERT(0.0 <= ra2);
    return ra1 < ra2;
}

Point Arc::GetPointAt(double position) const
{
    if (position == 0.0)
        return m_Start;
    if (position == 1.0)
        return m_End;
    if (m_Height == k_Unit_0)
        return m_Start + (m_End - m_Start) * position;
    if (ChordFrame::IsFlat(*this))
        return ChordFrame(*this).GetPointAt(position);
    const Point center = GetCenter();
    return center + (m_Start - center).GetRotated(GetAngle() * position);
}

Arc Arc::GetSubArc(double ra1, double ra2) const
{
    if (ra1 == 0.0 && ra2 == 1.0)
        return *this;
    if (ra1 == 1.0 && ra2 == 0.0)
        return GetReversed();
    if (ChordFrame::IsFlat(*this))
        return ChordFrame(*this).GetSubArc(ra1, ra2);
    const Point p1 = GetPointAt(ra1);
    if (ra1 == ra2)
        return Arc(p1, p1, k_Unit_0);
    const Point p2 = GetPointAt(ra2);
    if (m_Height == k_Unit_0)
        return Arc(p1, p2, k_Unit_0);
    const Direction direction = ra1 > ra2 ? GetOpposite(GetDirection()) : GetDirection();
    return Arc(Segment(p1, p2), direction, GetCenter());
}

Arc Arc::GetTransformed(const Transformation& transformation) const
{
    Unit height = m_Height * std::fabs(transformation.GetScale());
    if (transformation.IsMirror())
        height = -height;
    Arc ret(transformation.Apply(m_Start), transformation.Apply(m_End), height, m_CenterAzimuth);
    if (m_Start == m_End && m_Height != k_Unit_0)
        ret.m_CenterAzimuth = transformation.Apply(m_CenterAzimuth);
    return ret;
}

Arc Arc::GetAverage(const Arc& other, double rate) const
{
    VELLUM_ASSERT(0.0 <= rate && rate <= 1.0);
    const auto mix = [rate](Unit a, Unit b) { return a * (1.0 - rate) + b * rate; };
    // The interpolation of azimuths weighs its receiver by the rate, so it is
    // asked from the other arc's azimuth towards this one.
    return Arc(Point(mix(m_Start.m_X, other.m_Start.m_X), mix(m_Start.m_Y, other.m_Start.m_Y)),
               Point(mix(m_End.m_X, other.m_End.m_X), mix(m_End.m_Y, other.m_End.m_Y)),
               mix(m_Height, other.m_Height), other.m_CenterAzimuth.GetInterpolated(m_CenterAzimuth, rate));
}

void Arc::GetPoints(int count, bool last_point_too, std::vector<Point>& out) const
{
    const int minimum = last_point_too ? 1 : 0;
    VELLUM_ASSERT(count > (last_point_too ? 1 : 0));
    if (count <= minimum)
        count = minimum + 1;
    const int steps = count - minimum;
    out.push_back(m_Start);
    if (m_Height == k_Unit_0)
    {
        const Vector chord = m_End - m_Start;
        for (int i = 1; i < steps; ++i)
            out.push_back(m_Start + chord * (static_cast<double>(i) / steps));
    }
    else if (steps > 1)
    {
        const Angle step = steps == 2 ? GetAngle() * 0.5 : GetAngle() / steps;
        const double c = step.GetCos(), s = step.GetSin();
        const Point center = GetCenter();
        Vector v = m_Start - center;
        for (int i = 1; i < steps; ++i)
        {
            v = Vector(v.GetX() * c - v.GetY() * s, v.GetX() * s + v.GetY() * c);
            out.push_back(center + v);
        }
    }
    if (last_point_too)
        out.push_back(m_End);
}
} // namespace geom
