// Polygon.cpp - construction of pad and trace shapes, region queries and point location.
//
// Shrinking and the splitting of a contour into simple loops live in
// PolygonLoops.cpp.
#include "lib/math/geometry/Polygon.h"

#include "core/lib/vellum/Assert.h"
#include "core/lib/vellum/Base.h"
#include "lib/math/geometry/GeomStl.h"

#include <cmath>
#include <cstdlib>

namespace geom
{
double GetQuarterCircleSagittaFactor_G()
{
    static const double factor = 1.0 - 1.0 / std::sqrt(2.0);
    return factor;
}

Polygon::Polygon() : PolyArc(k_Closed) {}

Polygon::Polygon(const PolyArc& chain, bool normalise) : PolyArc(chain)
{
    if (normalise)
        Normalise();
}

Polygon::Polygon(const std::vector<Arc>& arcs, bool normalise) : PolyArc(k_Closed, arcs)
{
    if (normalise)
        Normalise();
}

Polygon::Polygon(const std::vector<Point>& vertices, bool normalise) : PolyArc(k_Closed, vertices)
{
    if (normalise)
        Normalise();
}

Polygon::Polygon(const Circle& circle)
    : PolyArc(circle.GetRadius() > k_Unit_0 ? PolyArc(circle.GetCircumference(), k_CCW, k_Azimuth_0)
                                            : PolyArc(k_Closed, circle.GetCenter()))
{
}

Polygon::Polygon(const Segment& segment, Unit width) : PolyArc(k_Closed, segment)
{
    if (width == k_Unit_0)
        return;
    VELLUM_ASSERT(width > k_NullUnit);
    const Unit half = width.GetAbs() * 0.5;
    if (segment.GetStart().IsEqualTo(segment.GetEnd(), half))
    {
        // A trace shorter than its width (in the square sense of IsEqualTo) is
        // the round pad at its start.
        const Circle circle(segment.GetStart(), half);
        VELLUM_ASSERT(circle.GetRadius() >= k_Unit_0);
        *this = Polygon(circle);
        return;
    }
    const Vector n = segment.GetVector().GetPerpendicular(half);
    const Point& s = segment.GetStart();
    const Point& e = segment.GetEnd();
    Assign(k_Closed, {Arc(s + n, s - n, -half), Arc(s - n, e - n, k_Unit_0), Arc(e - n, e + n, -half),
                      Arc(e + n, s + n, k_Unit_0)});
}

Polygon::Polygon(const Box& box, Unit corner_radius) : PolyArc(k_Closed)
{
    if (box.IsEmpty())
        return;
    const Unit r = corner_radius;
    if (box.GetXRange().IsSingle() || box.GetYRange().IsSingle())
    {
        *this = Polygon(Segment(box.GetCorner(0), box.GetCorner(2)), r * 2.0);
        return;
    }
    if (r == k_Unit_0)
    {
        Assign(k_Closed, std::vector<Arc>{Arc(box.GetCorner(0), box.GetCorner(1), k_Unit_0),
                                          Arc(box.GetCorner(1), box.GetCorner(2), k_Unit_0),
                                          Arc(box.GetCorner(2), box.GetCorner(3), k_Unit_0),
                                          Arc(box.GetCorner(3), box.GetCorner(0), k_Unit_0)});
        return;
    }
    const Unit h = -(r * GetQuarterCircleSagittaFactor_G());
    const Unit x0 = box.GetMinX(), x1 = box.GetMaxX(), y0 = box.GetMinY(), y1 = box.GetMaxY();
    const Point p[8] = {Point(x1 + r, y1), Point(x1, y1 + r), Point(x0, y1 + r), Point(x0 - r, y1),
                        Point(x0 - r, y0), Point(x0, y0 - r), Point(x1, y0 - r), Point(x1 + r, y0)};
    std::vector<Arc> arcs;
    for (int i = 0; i < 8; ++i)
        arcs.push_back(Arc(p[i], p[(i + 1) % 8], i % 2 == 0 ? h : k_Unit_0));
    Assign(k_Closed, arcs);
}

void Polygon::Normalise()
{
    if (!empty() && GetOpenClosed() == k_Closed && GetSignedArea() < k_Area_0)
        *this = Polygon(GetReversed(), false);
}

// --- Queries ---

Area Polygon::GetArea() const
{
    if (empty())
        return k_Area_0;
    const Area ret = GetSignedArea();
    VELLUM_ASSERT(ret >= k_Area_0);
    return ret;
}

bool Polygon::IsSegment(Unit accuracy, Segment* what_if_so) const
{
    if (empty() || GetEdgeCount() != 2)
        return false;
    const Arc& a = GetFirstEdge();
    if (!a.IsSegment(k_Unit_0, nullptr) || !GetLastEdge().IsSegment(k_Unit_0, nullptr))
        return false;
    VELLUM_ASSERT(a.IsSegment(accuracy, what_if_so));
    return true;
}

bool Polygon::IsCircle(Unit accuracy, Circle* what_if_so) const
{
    Circumference circumference;
    if (empty() || !PolyArc::IsCircle(accuracy, &circumference))
        return false;
    if (what_if_so)
        *what_if_so = Circle(circumference.GetCenter(), circumference.GetRadius());
    return true;
}

bool Polygon::IsEqualTo(const Polygon& poly, Unit accuracy) const
{
    if (IsSharedWith(poly) || (empty() && poly.empty()))
        return true;
    if (!GetBBox().IsEqualTo(poly.GetBBox(), accuracy) || GetEdgeCount() != poly.GetEdgeCount())
        return false;
    const_iterator j = poly.begin();
    for (const_iterator i = begin(); i != end(); ++i, ++j)
        if (!i->IsEqualTo(*j, accuracy))
            return false;
    return true;
}

bool Polygon::operator<(const Polygon& poly) const
{
    if (GetEdgeCount() != poly.GetEdgeCount())
        return GetEdgeCount() < poly.GetEdgeCount();
    const Box box = GetBBox(), other_box = poly.GetBBox();
    if (box < other_box)
        return true;
    if (other_box < box)
        return false;
    if (GetOpenClosed() != poly.GetOpenClosed())
        return GetOpenClosed() < poly.GetOpenClosed();
    const_iterator j = poly.begin();
    for (const_iterator i = begin(); i != end(); ++i, ++j)
    {
        if (*i < *j)
            return true;
        if (*j < *i)
            return false;
    }
    return false;
}

bool Polygon::IntersectsWith(const Polygon& poly, Unit accuracy) const
{
    if (empty() || poly.empty() || !GetBBox().IntersectsWith(GetExpandedBBox_T(poly, accuracy)))
        return false;
    if (poly.IsPointInside(GetFirstPoint(), accuracy))
        return true;
    return PolyArc::IntersectsWith(static_cast<const PolyArc&>(poly), accuracy);
}

// --- Point location ---

namespace
{
Result_T<int> GetQuadrantSumWithFallback(const Polygon& polygon, const Point& p, Unit accuracy)
{
    Result_T<int> qi = polygon.GetQuadrantSum(p, accuracy);
    if (!qi.m_Success && accuracy > k_Unit_0)
        qi = polygon.GetQuadrantSum(p, k_Unit_0);
    return qi;
}

double GetRandomSign()
{
    return (std::rand() & 1) ? 1.0 : -1.0;
}
} // namespace

bool Polygon::IsPointInside(const Point& p, Unit accuracy) const
{
    VELLUM_ASSERT(accuracy >= k_Unit_0);
    if (empty() || !GetBBox().Contains(p, accuracy))
        return false;
    if (PolyArc::IntersectsWith(p, accuracy))
        return true;
    Result_T<int> qi = GetQuadrantSumWithFallback(*this, p, accuracy);
    // The walk is undecided when p lies on an axis through a vertex; a point
    // displaced by less than the noise of the coordinates is as good an answer.
    for (int round = 0; round < 100 && !(qi.m_Success && qi.m_Value % 4 == 0); ++round)
    {
        const Unit r = base::GetMaxOf_T(accuracy, GetEpsilon()) * 0.5;
        const Unit dx = r * base::GetRandomDouble_G() * GetRandomSign();
        const Unit dy = r * base::GetRandomDouble_G() * GetRandomSign();
        qi = GetQuadrantSumWithFallback(*this, p + Vector(dx, dy), accuracy);
    }
    VELLUM_ASSERT(qi.m_Success && qi.m_Value % 4 == 0);
    return qi.m_Value != 0;
}

PointRelation Polygon::GetRelation(const Point& p, Unit accuracy) const
{
    if (empty() || !GetBBox().Contains(p, accuracy))
        return k_PointOutside;
    if (PolyArc::IntersectsWith(p, accuracy))
        return k_PointOnBoundary;
    return IsPointInside(p, accuracy) ? k_PointInside : k_PointOutside;
}

PolygonRelation Polygon::GetRelation(const Polygon& poly, Unit accuracy) const
{
    if (empty() || poly.empty() || !GetBBox().IntersectsWith(GetExpandedBBox_T(poly, accuracy)))
        return k_NoIntersection;
    if (PolyArc::IntersectsWith(static_cast<const PolyArc&>(poly), accuracy))
        return k_Crossing;
    if (IsPointInside(poly.GetFirstPoint(), accuracy))
        return k_OtherInsideThis;
    if (poly.IsPointInside(GetFirstPoint(), accuracy))
        return k_ThisInsideOther;
    return k_NoIntersection;
}
} // namespace geom
