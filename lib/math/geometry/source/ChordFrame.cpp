// ChordFrame.cpp - points, crossings, boxes and offsets of nearly straight arcs.
//
// Everything is measured from the middle of the chord, where the numbers are
// as small as the arc itself: the far centre never enters. Radius and angle
// appear only as ratios (c / R = 2 c |h| / (c^2 + h^2)), which keep their
// digits however flat the arc.
#include "lib/math/geometry/ChordFrame.h"

#include <algorithm>
#include <cmath>

namespace geom
{
namespace
{
// The sagitta below this part of the chord makes an arc flat.
const double k_FlatRatio = 1.0 / 8000;

double Square(double v)
{
    return v * v;
}
} // namespace

ChordFrame::ChordFrame(const Arc& arc) : m_Arc(arc), m_Middle(arc.GetStartEndSegment().GetMiddle())
{
    const double dx = (arc.GetEnd().m_X - arc.GetStart().m_X).GetValue();
    const double dy = (arc.GetEnd().m_Y - arc.GetStart().m_Y).GetValue();
    const double length = std::hypot(dx, dy);
    if (length > 0)
    {
        m_Ux = dx / length;
        m_Uy = dy / length;
    }
    m_HalfChord = length * 0.5;
    m_Height = arc.GetHeight().GetValue();
}

bool ChordFrame::IsFlat(const Arc& arc)
{
    if (arc.GetStart() == arc.GetEnd() || arc.GetHeight() == k_Unit_0)
        return false;
    const double chord_square = arc.GetStart().GetDistanceSquareTo(arc.GetEnd()).GetValue();
    return std::isfinite(chord_square) &&
           Square(arc.GetHeight().GetValue()) < chord_square * Square(k_FlatRatio);
}

double ChordFrame::GetAlong(const Point& p) const
{
    return (p.m_X - m_Middle.m_X).GetValue() * m_Ux + (p.m_Y - m_Middle.m_Y).GetValue() * m_Uy;
}

double ChordFrame::GetAcross(const Point& p) const
{
    return (p.m_Y - m_Middle.m_Y).GetValue() * m_Ux - (p.m_X - m_Middle.m_X).GetValue() * m_Uy;
}

Point ChordFrame::ToWorld(double x, double y) const
{
    return Point(m_Middle.m_X + Unit(x * m_Ux - y * m_Uy), m_Middle.m_Y + Unit(x * m_Uy + y * m_Ux));
}

double ChordFrame::GetValue(const Point& p) const
{
    const double x = GetAlong(p), y = GetAcross(p);
    const double c = m_HalfChord, h = m_Height;
    // x^2 - c^2 as a product, which keeps its digits near the ends.
    return (h * ((x - c) * (x + c) + y * y) + (c - h) * (c + h) * y) / (c * c + h * h);
}

Unit ChordFrame::GetSagittaThrough(const Point& p) const
{
    // The circle x^2 + y^2 - 2 y0 y = c^2 through the ends and p; the
    // sagitta h solves h^2 - 2 y0 h - c^2 = 0, the root on p's side, taken
    // so that nothing cancels.
    const double x = GetAlong(p), y = GetAcross(p), c = m_HalfChord;
    if (y == 0)
        return k_Unit_0;
    const double y0 = ((x - c) * (x + c) + y * y) / (2 * y);
    const double root = std::hypot(y0, c);
    if (y > 0)
        return Unit(y0 >= 0 ? y0 + root : c * c / (root - y0));
    return Unit(y0 <= 0 ? y0 - root : -c * c / (root + y0));
}

bool ChordFrame::IsOnArc(const Point& p, Unit accuracy) const
{
    const Area accuracy_square = accuracy * accuracy;
    if (p.GetDistanceSquareTo(m_Arc.GetStart()) <= accuracy_square ||
        p.GetDistanceSquareTo(m_Arc.GetEnd()) <= accuracy_square)
        return true;
    // Beyond the chord's ends the nearest point of so flat an arc is an end.
    if (std::fabs(GetAlong(p)) > m_HalfChord)
        return false;
    return std::fabs(GetValue(p)) <= accuracy.GetValue();
}

bool ChordFrame::IsInSpan(const Point& p, Unit accuracy) const
{
    const Area accuracy_square = accuracy * accuracy;
    if (p.GetDistanceSquareTo(m_Arc.GetStart()) <= accuracy_square ||
        p.GetDistanceSquareTo(m_Arc.GetEnd()) <= accuracy_square)
        return true;
    return std::fabs(GetAlong(p)) <= m_HalfChord && std::fabs(GetAcross(p)) <= m_HalfChord;
}

bool ChordFrame::IsInSlice(const Point& p) const
{
    const double x = GetAlong(p);
    if (!(std::fabs(x) < m_HalfChord))
        return false;
    // On the arc's side of the chord, and inside the circle.
    const Direction side = GetOrientation_G(m_Arc.GetStart(), m_Arc.GetEnd(), p);
    if (side != (m_Height > 0 ? k_CCW : k_CW))
        return false;
    return m_Height * GetValue(p) < 0;
}

Box ChordFrame::GetBBox() const
{
    Box box(m_Arc.GetStart(), m_Arc.GetEnd());
    box |= m_Arc.GetMiddle();
    const double c = m_HalfChord, s = m_Height > 0 ? 1.0 : -1.0;
    const double radius = GetRadius();
    // The arc reaches farthest in a direction d where its outward normal is
    // d: at x = R (d . u), on the arc when that lies over the chord and d
    // points to the arc's side of the chord.
    const double directions[4][2] = {{1, 0}, {-1, 0}, {0, 1}, {0, -1}};
    for (const auto& d : directions)
    {
        const double along = d[0] * m_Ux + d[1] * m_Uy, across = d[1] * m_Ux - d[0] * m_Uy;
        if (across * s <= 0)
            continue;
        const double x = radius * along;
        if (!(std::fabs(x) <= c))
            continue;
        box |= ToWorld(x, GetHeightAt(x));
    }
    return box;
}

double ChordFrame::GetRadius() const
{
    return (m_HalfChord * m_HalfChord + m_Height * m_Height) / (2 * std::fabs(m_Height));
}

double ChordFrame::GetHeightAt(double x) const
{
    // h - (R - sqrt(R^2 - x^2)), the bracket written without cancellation.
    const double radius = GetRadius();
    const double drop = x * x / (radius + std::sqrt(std::max(0.0, (radius - x) * (radius + x))));
    return m_Height > 0 ? m_Height - drop : m_Height + drop;
}

double ChordFrame::GetPosition(const Point& p) const
{
    // x = R sin(theta), theta running over the swept angle from -half to +half.
    const double radius = GetRadius();
    const double half = std::asin(std::min(1.0, m_HalfChord / radius));
    const double theta = std::asin(std::clamp(GetAlong(p) / radius, -1.0, 1.0));
    return std::clamp(0.5 + theta / (2 * half), 0.0, 1.0);
}

Point ChordFrame::GetPointAt(double position) const
{
    if (position == 0.0)
        return m_Arc.GetStart();
    if (position == 1.0)
        return m_Arc.GetEnd();
    const double radius = GetRadius();
    const double half = std::asin(std::min(1.0, m_HalfChord / radius));
    const double x = radius * std::sin((position - 0.5) * 2 * half);
    return ToWorld(x, GetHeightAt(x));
}

Arc ChordFrame::GetSubArc(double ra1, double ra2) const
{
    const Point p1 = GetPointAt(ra1), p2 = GetPointAt(ra2);
    if (ra1 == ra2)
        return Arc(p1, p1, k_Unit_0);
    // A piece of the same circle: its sagitta from its own chord and the radius.
    const double radius = GetRadius();
    const double quarter_chord_square = p1.GetDistanceSquareTo(p2).GetValue() * 0.25;
    const double sagitta =
        quarter_chord_square / (radius + std::sqrt(std::max(0.0, radius * radius - quarter_chord_square)));
    const bool reversed = ra1 > ra2;
    return Arc(p1, p2, Unit((m_Height > 0) != reversed ? sagitta : -sagitta));
}

ChordFrame::Curve ChordFrame::GetOwnCurve() const
{
    const double c = m_HalfChord, h = m_Height, d = c * c + h * h;
    Curve ret;
    ret.m_A = h / d;
    ret.m_By = (c - h) * (c + h) / d;
    ret.m_K = -h * c * c / d;
    return ret;
}

ChordFrame::Curve ChordFrame::GetCurveOf(const Arc& arc) const
{
    Curve ret;
    if (IsFlat(arc) || arc.GetHeight() == k_Unit_0)
    {
        // The other arc's own F, moved into this frame.
        const ChordFrame other(arc);
        const double mx = GetAlong(other.m_Middle), my = GetAcross(other.m_Middle);
        // The other's left normal in this frame.
        const double nx = -other.m_Uy * m_Ux + other.m_Ux * m_Uy;
        const double ny = other.m_Ux * m_Ux + other.m_Uy * m_Uy;
        const double c = other.m_HalfChord, h = other.m_Height, d = c * c + h * h;
        const double straightness = (c - h) * (c + h) / d;
        ret.m_A = h / d;
        ret.m_Bx = (-2 * h * mx) / d + straightness * nx;
        ret.m_By = (-2 * h * my) / d + straightness * ny;
        const double dd = std::hypot(mx, my);
        ret.m_K = h * (dd - c) * (dd + c) / d - straightness * (nx * mx + ny * my);
        return ret;
    }
    const Circumference circle = arc.GetCircumference();
    const double r = circle.GetRadius().GetValue();
    const double cx = GetAlong(circle.GetCenter()), cy = GetAcross(circle.GetCenter());
    const double dc = std::hypot(cx, cy);
    ret.m_A = 1 / (2 * r);
    ret.m_Bx = -cx / r;
    ret.m_By = -cy / r;
    ret.m_K = (dc - r) * (dc + r) / (2 * r);
    return ret;
}

int ChordFrame::GetLineCrossings(const Curve& curve, double px, double py, double vx, double vy,
                                 Unit accuracy, double t[2], double slope[2]) const
{
    // The curve along p + t v: a t^2 + b t + k, whose value is about the
    // distance from the curve.
    const double a = curve.m_A;
    const double b = 2 * a * (px * vx + py * vy) + curve.m_Bx * vx + curve.m_By * vy;
    const double k = a * (px * px + py * py) + curve.m_Bx * px + curve.m_By * py + curve.m_K;
    const double tolerance = accuracy.GetValue();
    int count = 0;
    if (a == 0)
    {
        if (b == 0)
            return 0;
        t[count++] = -k / b;
    }
    else
    {
        const double discriminant = b * b - 4 * a * k;
        if (discriminant < 0)
        {
            // No crossing, but the line may pass within accuracy: a touch.
            const double at = -b / (2 * a);
            if (std::fabs(k - b * b / (4 * a)) > tolerance)
                return 0;
            t[count++] = at;
        }
        else
        {
            // The root near the frame from k / q, the far one (out where the
            // flat circle turns back) from q / a, neither by cancellation.
            const double q = -0.5 * (b + std::copysign(std::sqrt(discriminant), b));
            if (q != 0)
                t[count++] = k / q;
            t[count++] = q / a;
            if (count == 2 && std::fabs(t[0] - t[1]) <= tolerance)
            {
                t[0] = (t[0] + t[1]) * 0.5;
                count = 1;
            }
        }
    }
    for (int i = 0; i < count; ++i)
        slope[i] = 2 * a * t[i] + b;
    return count;
}

ArcIntersections ChordFrame::GetIntersections(const Segment& segment, Unit accuracy) const
{
    ArcIntersections ret;
    const double px = GetAlong(segment.GetStart()), py = GetAcross(segment.GetStart());
    const double ex = GetAlong(segment.GetEnd()), ey = GetAcross(segment.GetEnd());
    const double length = std::hypot(ex - px, ey - py);
    if (!(length > 0))
        return ret;
    double t[2], slope[2];
    const int count =
        GetLineCrossings(GetOwnCurve(), px, py, (ex - px) / length, (ey - py) / length, accuracy, t, slope);
    Result_T<Arc>* slot = &ret.first;
    const double tolerance = accuracy.GetValue();
    for (int i = 0; i < count; ++i)
    {
        if (!(t[i] >= -tolerance && t[i] <= length + tolerance))
            continue;
        const double f = std::clamp(t[i] / length, 0.0, 1.0);
        const Point p = ToWorld(px + (ex - px) * f, py + (ey - py) * f);
        if (slot == &ret.second && ret.first.m_Value.GetStart().IsEqualTo(p, accuracy))
            continue;
        *slot = {true, Arc(p, p, k_Unit_0)};
        slot = &ret.second;
    }
    return ret;
}

ArcIntersections ChordFrame::GetIntersections(const Arc& other, Unit accuracy) const
{
    ArcIntersections ret;
    const Curve f = GetOwnCurve(), g = GetCurveOf(other);
    // The radical line a_g F - a_f G = 0 holds both common points of the
    // circles; each circle is then crossed with it, and the one that it
    // crosses more steeply places the points.
    const double lx = g.m_A * f.m_Bx - f.m_A * g.m_Bx, ly = g.m_A * f.m_By - f.m_A * g.m_By;
    const double lk = g.m_A * f.m_K - f.m_A * g.m_K;
    const double norm = std::hypot(lx, ly);
    if (!(norm > 0) || !std::isfinite(norm))
        return ret;
    const double nx = lx / norm, ny = ly / norm, offset = lk / norm;
    // A line far from the chord holds no crossing near this arc.
    if (!(std::fabs(offset) <= 4 * m_HalfChord + accuracy.GetValue()))
        return ret;
    const double px = -offset * nx, py = -offset * ny, vx = -ny, vy = nx;
    double tf[2], sf[2], tg[2], sg[2];
    const int nf = GetLineCrossings(f, px, py, vx, vy, accuracy, tf, sf);
    const int ng = GetLineCrossings(g, px, py, vx, vy, accuracy, tg, sg);
    const auto steepness = [](int n, const double* s)
    {
        double ret = n == 0 ? -1.0 : std::fabs(s[0]);
        for (int i = 1; i < n; ++i)
            ret = std::min(ret, std::fabs(s[i]));
        return ret;
    };
    const bool use_f = steepness(nf, sf) >= steepness(ng, sg);
    const int n = use_f ? nf : ng;
    const double* t = use_f ? tf : tg;
    Result_T<Arc>* slot = &ret.first;
    for (int i = 0; i < n; ++i)
    {
        const double x = px + vx * t[i], y = py + vy * t[i];
        // Only crossings near this arc; the far ones are of no use to a caller.
        if (!(std::fabs(x) <= 2 * m_HalfChord && std::fabs(y) <= 2 * m_HalfChord))
            continue;
        const Point p = ToWorld(x, y);
        if (slot == &ret.second && ret.first.m_Value.GetStart().IsEqualTo(p, accuracy))
            continue;
        *slot = {true, Arc(p, p, k_Unit_0)};
        slot = &ret.second;
    }
    return ret;
}

Result_T<Arc> ChordFrame::GetOffset(Unit by, Unit accuracy) const
{
    Result_T<Arc> ret;
    const double c = m_HalfChord, h = m_Height, d = c * c + h * h, s = h > 0 ? 1.0 : -1.0;
    const double radius = d / (2 * std::fabs(h));
    const double change = by.GetValue();
    if (radius + change <= accuracy.GetValue())
        return ret;
    // The outward radii at the ends, (-+c, -y0) / R in the frame.
    const double rx = 2 * c * std::fabs(h) / d, ry = s * (c - h) * (c + h) / d;
    const Point start = ToWorld(-c - rx * change, ry * change);
    const Point end = ToWorld(c + rx * change, ry * change);
    // The same angle on a larger radius: the sagitta grows in proportion.
    const double height = h + change * h * 2 * std::fabs(h) / d;
    ret.m_Success = true;
    ret.m_Value = Arc(start, end, Unit(height));
    return ret;
}
} // namespace geom
