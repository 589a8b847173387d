// Circle.cpp - area and containment of discs.
#include "lib/math/geometry/Circle.h"

#include "core/lib/vellum/Assert.h"
#include "lib/math/geometry/Arc.h"

namespace geom
{
Circle::Circle(const Point& center, Unit radius) : m_Center(center), m_Radius(radius)
{
    VELLUM_ASSERT(m_Radius >= k_Unit_0);
    if (!(m_Radius >= k_Unit_0))
        m_Radius = k_Unit_0;
}

Area Circle::GetArea() const
{
    return m_Radius * m_Radius * k_Pi;
}

bool Circle::IsPoint(Unit accuracy, Point* what_if_so) const
{
    return GetCircumference().IsPoint(accuracy, what_if_so);
}

bool Circle::Contains(const Point& p, Unit accuracy) const
{
    const Unit reach = m_Radius + accuracy;
    return m_Center.GetDistanceSquareTo(p) <= reach * reach;
}

bool Circle::Contains(const Box& box, Unit accuracy) const
{
    if (box.IsEmpty())
        return false;
    for (int i = 0; i < 4; ++i)
        if (!Contains(box.GetCorner(i), accuracy))
            return false;
    return true;
}

bool Circle::Contains(const Circle& circle, Unit accuracy) const
{
    const Unit reach = m_Radius + accuracy - circle.m_Radius;
    return reach >= k_Unit_0 && m_Center.GetDistanceSquareTo(circle.m_Center) <= reach * reach;
}

bool Circle::Contains(const Arc& arc, Unit accuracy) const
{
    // A disc is convex: the arc is inside when its ends are and no part of it
    // bulges out, which the corners of the arc's tight box would show only
    // approximately; the far point of its circle decides exactly.
    if (!Contains(arc.GetStart(), accuracy) || !Contains(arc.GetEnd(), accuracy))
        return false;
    if (arc.IsSegment(k_Unit_0, nullptr))
        return true;
    const Circumference c = arc.GetCircumference();
    if (c.GetCenter() == m_Center)
        return c.GetRadius() <= m_Radius + accuracy;
    const Point far = c.GetCenter() + (c.GetCenter() - m_Center).GetResized(c.GetRadius());
    if (!arc.IsInSpan(far, k_Unit_0))
        return true;
    return Contains(far, accuracy);
}
} // namespace geom
