// ArcDistance.cpp - the shortest distance between two contour edges.
//
// Two curves that don't meet are nearest either at an end of one of them or
// on a common normal: for a line and a circle the normal through the centre,
// for two circles the line through both centres. Every candidate is a true
// distance between points of the two edges, so the least of them is the
// answer once a crossing (distance 0) has been ruled out.
#include "lib/math/geometry/ArcDistance.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <numbers>

namespace geom
{
namespace
{
struct XY
{
    double m_X;
    double m_Y;
};

XY operator-(XY a, XY b)
{
    return XY{a.m_X - b.m_X, a.m_Y - b.m_Y};
}
XY operator+(XY a, XY b)
{
    return XY{a.m_X + b.m_X, a.m_Y + b.m_Y};
}
XY operator*(XY a, double f)
{
    return XY{a.m_X * f, a.m_Y * f};
}
double Dot(XY a, XY b)
{
    return a.m_X * b.m_X + a.m_Y * b.m_Y;
}
double Cross(XY a, XY b)
{
    return a.m_X * b.m_Y - a.m_Y * b.m_X;
}
double Length(XY a)
{
    return std::hypot(a.m_X, a.m_Y);
}

// An edge in plain numbers: a segment from m_A to m_B, or an arc of the
// circle (m_C, m_R) from m_A to m_B turning counter-clockwise when m_Ccw.
struct Edge
{
    XY m_A;
    XY m_B;
    bool m_Straight = true;
    bool m_Full = false;
    XY m_C{};
    double m_R = 0;
    bool m_Ccw = true;
};

Edge MakeEdge(const Arc& arc)
{
    Edge e;
    e.m_A = XY{arc.GetStart().m_X.GetValue(), arc.GetStart().m_Y.GetValue()};
    e.m_B = XY{arc.GetEnd().m_X.GetValue(), arc.GetEnd().m_Y.GetValue()};
    if (arc.GetHeight() == k_Unit_0)
        return e;
    const Point c = arc.GetCenter();
    e.m_Straight = false;
    e.m_C = XY{c.m_X.GetValue(), c.m_Y.GetValue()};
    e.m_R = arc.GetRadius().GetValue();
    e.m_Ccw = arc.GetDirection() == k_CCW;
    e.m_Full = arc.GetStart() == arc.GetEnd();
    if (!(e.m_R > 0) || !std::isfinite(e.m_R))
        e.m_Straight = true; // a point edge, or an arc too flat for a centre
    return e;
}

// The angle swept from direction u to direction v in the arc's sense, in [0, 2 pi).
double SweepTo(const Edge& e, XY u, XY v)
{
    double t = std::atan2(Cross(u, v), Dot(u, v));
    if (!e.m_Ccw)
        t = -t;
    return t < 0 ? t + 2 * std::numbers::pi : t;
}

// Whether the direction d from the centre lies within the arc's span.
bool InSpan(const Edge& e, XY d)
{
    if (e.m_Full)
        return true;
    const XY from = e.m_A - e.m_C;
    return SweepTo(e, from, d) <= SweepTo(e, from, e.m_B - e.m_C);
}

double PointToSegment(XY p, XY a, XY b)
{
    const XY d = b - a;
    const double len2 = Dot(d, d);
    const double t = len2 > 0 ? std::clamp(Dot(p - a, d) / len2, 0.0, 1.0) : 0.0;
    return Length(p - (a + d * t));
}

double PointToEdge(XY p, const Edge& e)
{
    if (e.m_Straight)
        return PointToSegment(p, e.m_A, e.m_B);
    const XY d = p - e.m_C;
    if (Length(d) > 0 && InSpan(e, d))
        return std::fabs(Length(d) - e.m_R);
    return std::min(Length(p - e.m_A), Length(p - e.m_B));
}

// The points where a segment meets a circle of an arc edge, in the arc's span.
bool SegmentMeetsArc(XY a, XY b, const Edge& arc)
{
    const XY d = b - a, f = a - arc.m_C;
    const double qa = Dot(d, d), qb = 2 * Dot(f, d), qc = Dot(f, f) - arc.m_R * arc.m_R;
    if (!(qa > 0))
        return std::fabs(Length(f) - arc.m_R) == 0 && InSpan(arc, f);
    const double disc = qb * qb - 4 * qa * qc;
    if (disc < 0)
        return false;
    const double root = std::sqrt(disc);
    for (const double t : {(-qb - root) / (2 * qa), (-qb + root) / (2 * qa)})
        if (t >= 0 && t <= 1 && InSpan(arc, a + d * t - arc.m_C))
            return true;
    return false;
}

bool ArcsMeet(const Edge& p, const Edge& q)
{
    const XY d = q.m_C - p.m_C;
    const double dist = Length(d);
    if (dist == 0)
        return p.m_R == q.m_R && (InSpan(p, q.m_A - p.m_C) || InSpan(q, p.m_A - q.m_C));
    if (dist > p.m_R + q.m_R || dist < std::fabs(p.m_R - q.m_R))
        return false;
    const double along = (dist * dist + p.m_R * p.m_R - q.m_R * q.m_R) / (2 * dist);
    const double across = std::sqrt(std::max(0.0, p.m_R * p.m_R - along * along));
    const XY u = d * (1 / dist), n{-u.m_Y, u.m_X};
    for (const double s : {-1.0, 1.0})
    {
        const XY x = p.m_C + u * along + n * (s * across);
        if (InSpan(p, x - p.m_C) && InSpan(q, x - q.m_C))
            return true;
    }
    return false;
}

bool SegmentsMeet(XY a, XY b, XY c, XY d)
{
    const double d1 = Cross(b - a, c - a), d2 = Cross(b - a, d - a);
    const double d3 = Cross(d - c, a - c), d4 = Cross(d - c, b - c);
    return ((d1 > 0 && d2 < 0) || (d1 < 0 && d2 > 0)) && ((d3 > 0 && d4 < 0) || (d3 < 0 && d4 > 0));
}

bool EdgesMeet(const Edge& p, const Edge& q)
{
    if (p.m_Straight && q.m_Straight)
        return SegmentsMeet(p.m_A, p.m_B, q.m_A, q.m_B);
    if (p.m_Straight)
        return SegmentMeetsArc(p.m_A, p.m_B, q);
    if (q.m_Straight)
        return SegmentMeetsArc(q.m_A, q.m_B, p);
    return ArcsMeet(p, q);
}

// The points of an arc edge on the line through its centre along u.
void AddNormalPoints(const Edge& arc, XY u, const Edge& other, double& best)
{
    const double len = Length(u);
    if (!(len > 0))
        return;
    for (const double s : {-1.0, 1.0})
    {
        const XY d = u * (s * arc.m_R / len);
        if (InSpan(arc, d))
            best = std::min(best, PointToEdge(arc.m_C + d, other));
    }
}

double Distance(const Edge& p, const Edge& q)
{
    if (EdgesMeet(p, q))
        return 0;
    double best = std::min(
        {PointToEdge(p.m_A, q), PointToEdge(p.m_B, q), PointToEdge(q.m_A, p), PointToEdge(q.m_B, p)});
    if (!p.m_Straight && !q.m_Straight)
    {
        AddNormalPoints(p, q.m_C - p.m_C, q, best);
        AddNormalPoints(q, p.m_C - q.m_C, p, best);
    }
    else if (!p.m_Straight || !q.m_Straight)
    {
        const Edge& arc = p.m_Straight ? q : p;
        const Edge& line = p.m_Straight ? p : q;
        const XY d = line.m_B - line.m_A;
        AddNormalPoints(arc, XY{-d.m_Y, d.m_X}, line, best);
    }
    return best;
}
} // namespace

Unit GetDistance_G(const Arc& a, const Arc& b)
{
    return Unit(Distance(MakeEdge(a), MakeEdge(b)));
}

Unit GetDistance_G(const Point& p, const Arc& a)
{
    return Unit(PointToEdge(XY{p.m_X.GetValue(), p.m_Y.GetValue()}, MakeEdge(a)));
}
} // namespace geom
