// PolyArc.cpp - construction, iteration, measures and contact tests of arc chains.
//
// The walks that build new chains (quadrant sum, point list, joining, offset)
// live in PolyArcWalks.cpp.
#include "lib/math/geometry/PolyArc.h"

#include "core/lib/vellum/Assert.h"
#include "lib/math/geometry/CircleSlice.h"
#include "lib/math/geometry/GeomStl.h"
#include "lib/math/geometry/Triangle.h"

#include <algorithm>

namespace geom
{
bool IsPolyArcSequence_G(const std::vector<Arc>& arcs, OpenClosed mode)
{
    for (size_t i = 1; i < arcs.size(); ++i)
        if (arcs[i - 1].GetEnd() != arcs[i].GetStart())
            return false;
    return mode != k_Closed || arcs.empty() || arcs.back().GetEnd() == arcs.front().GetStart();
}

bool IsPolySegmentSequence_G(const std::vector<Segment>& segments, OpenClosed mode)
{
    for (size_t i = 1; i < segments.size(); ++i)
        if (segments[i - 1].GetEnd() != segments[i].GetStart())
            return false;
    return mode != k_Closed || segments.empty() || segments.back().GetEnd() == segments.front().GetStart();
}

bool ArcTouchesBox_G(const Arc& arc, const Box& box)
{
    if (box.IsEmpty() || !arc.GetBBox().IntersectsWith(box))
        return false;
    if (box.Contains(arc.GetStart()) || box.Contains(arc.GetEnd()))
        return true;
    if (box.GetXRange().IsSingle() && box.GetYRange().IsSingle())
        return arc.IntersectsWith(box.GetCenter(), k_Unit_0);
    // With both ends outside, the arc can only reach the box across its border.
    for (int i = 0; i < 4; ++i)
        if (arc.IntersectsWith(Segment(box.GetCorner(i), box.GetCorner(i + 1)), k_Unit_0))
            return true;
    return false;
}

// --- Iteration ---

void PolyArc::const_iterator::SkipUntouched(bool forward)
{
    if (m_Iterator.GetMode() != k_SkipOutside)
        return;
    while (m_Iterator.IsDereferenceable() && !ArcTouchesBox_G(*m_Iterator, m_Iterator.GetBox()))
    {
        if (forward)
            ++m_Iterator;
        else
            --m_Iterator;
    }
}

PolyArc::const_iterator& PolyArc::const_iterator::operator++()
{
    VELLUM_ASSERT(IsDereferenceable());
    if (!IsDereferenceable())
        return *this;
    ++m_Iterator;
    SkipUntouched(true);
    return *this;
}

PolyArc::const_iterator& PolyArc::const_iterator::operator--()
{
    VELLUM_ASSERT(IsDereferenceable());
    if (!IsDereferenceable())
        return *this;
    --m_Iterator;
    SkipUntouched(false);
    return *this;
}

PolyArc::const_iterator PolyArc::const_iterator::GetNextWrapped() const
{
    VELLUM_ASSERT(IsDereferenceable());
    if (!IsDereferenceable())
        return *this;
    const Tree& data = m_Data->m_Arcs;
    Tree::iterator next = m_Iterator;
    ++next;
    if (next == data.end())
    {
        VELLUM_ASSERT(m_Data->m_OpenClosed == k_Closed);
        if (m_Data->m_OpenClosed == k_Closed)
            next = data.begin();
    }
    return const_iterator(m_Data, Tree::range_iterator(&data, next.m_CurrentNode, k_NoFilter, Box()));
}

PolyArc::const_iterator PolyArc::const_iterator::GetPreviousWrapped() const
{
    VELLUM_ASSERT(IsDereferenceable());
    if (!IsDereferenceable())
        return *this;
    const Tree& data = m_Data->m_Arcs;
    const OpenClosed mode = m_Data->m_OpenClosed;
    VELLUM_ASSERT(mode == k_Closed || m_Iterator != data.begin());
    Tree::iterator prev = m_Iterator;
    if (prev == data.begin())
    {
        if (mode != k_Closed)
            return const_iterator(m_Data, Tree::range_iterator(&data, nullptr, k_NoFilter, Box()));
        prev = data.end();
    }
    --prev;
    return const_iterator(m_Data, Tree::range_iterator(&data, prev.m_CurrentNode, k_NoFilter, Box()));
}

// --- Construction ---

PolyArc::PolyArc(OpenClosed mode) : m_ImplRefCounter(new AvlPolyArcImplementation)
{
    m_ImplRefCounter->m_OpenClosed = mode;
}

PolyArc::PolyArc(OpenClosed mode, const std::vector<Arc>& arcs) : PolyArc(mode)
{
    VELLUM_ASSERT(IsPolyArcSequence_G(arcs, mode));
    m_ImplRefCounter->m_Arcs.Build(arcs);
}

PolyArc::PolyArc(OpenClosed mode, const std::vector<Point>& vertices) : PolyArc(mode)
{
    VELLUM_ASSERT(vertices.size() > 0);
    if (vertices.empty())
        return;
    std::vector<Arc> arcs;
    arcs.reserve(vertices.size());
    for (size_t i = 1; i < vertices.size(); ++i)
        arcs.push_back(Arc(vertices[i - 1], vertices[i], k_Unit_0));
    if ((mode == k_Closed && vertices.back() != vertices.front()) || vertices.size() == 1)
        arcs.push_back(Arc(vertices.back(), vertices.front(), k_Unit_0));
    m_ImplRefCounter->m_Arcs.Build(arcs);
}

PolyArc::PolyArc(OpenClosed mode, const std::vector<Segment>& segments) : PolyArc(mode)
{
    VELLUM_ASSERT(IsPolySegmentSequence_G(segments, mode));
    std::vector<Arc> arcs;
    arcs.reserve(segments.size());
    for (const Segment& s : segments)
        arcs.push_back(Arc(s));
    m_ImplRefCounter->m_Arcs.Build(arcs);
}

PolyArc::PolyArc(OpenClosed mode, const Arc& arc) : PolyArc(mode)
{
    std::vector<Arc> arcs{arc};
    if (mode == k_Closed && arc.GetStart() != arc.GetEnd())
        arcs.push_back(arc.GetReversed());
    m_ImplRefCounter->m_Arcs.Build(arcs);
}

PolyArc::PolyArc(OpenClosed mode, const Segment& segment) : PolyArc(mode, Arc(segment)) {}

PolyArc::PolyArc(OpenClosed mode, const Point& point) : PolyArc(mode, Arc(point, point, k_Unit_0)) {}

PolyArc::PolyArc(const Circumference& circumference, Direction direction, Azimuth azimuth)
    : PolyArc(k_Closed, Arc(circumference, azimuth, direction))
{
}

AvlPolyArcImplementation& PolyArc::MakeUnique()
{
    m_EndIterator = RefCounter_T<const_iterator>();
    if (m_ImplRefCounter.IsNull())
        m_ImplRefCounter = RefCounter_T<AvlPolyArcImplementation>(new AvlPolyArcImplementation);
    else if (!m_ImplRefCounter.IsUniqueOwner())
        m_ImplRefCounter.MakeUniqueOwner();
    return *m_ImplRefCounter;
}

void PolyArc::Assign(OpenClosed mode, const std::vector<Arc>& arcs)
{
    VELLUM_ASSERT(IsPolyArcSequence_G(arcs, mode));
    m_EndIterator = RefCounter_T<const_iterator>();
    m_ImplRefCounter = RefCounter_T<AvlPolyArcImplementation>(new AvlPolyArcImplementation);
    m_ImplRefCounter->m_OpenClosed = mode;
    m_ImplRefCounter->m_Arcs.Build(arcs);
}

void PolyArc::Append(const Arc& arc)
{
    if (GetOpenClosed() == k_Closed && !empty())
    {
        VELLUM_ASSERT(!"Cannot append to closed polyarc!");
        return;
    }
    VELLUM_ASSERT(empty() || GetLastVertex() == arc.GetStart());
    AvlPolyArcImplementation& data = MakeUnique();
    data.m_Arcs.PushBack(arc);
}

// --- Access ---

PolyArc::const_iterator PolyArc::begin() const
{
    if (m_ImplRefCounter.IsNull())
        return const_iterator();
    const Tree& data = m_ImplRefCounter->m_Arcs;
    return const_iterator(m_ImplRefCounter.Get(),
                          Tree::range_iterator(&data, data.GetFirstNode(), k_NoFilter, Box()));
}

PolyArc::const_iterator PolyArc::end() const
{
    if (m_ImplRefCounter.IsNull())
        return const_iterator();
    if (m_EndIterator.IsNull())
        m_EndIterator = RefCounter_T<const_iterator>(
            new const_iterator(m_ImplRefCounter.Get(),
                               Tree::range_iterator(&m_ImplRefCounter->m_Arcs, nullptr, k_NoFilter, Box())));
    return *m_EndIterator;
}

PolyArc::const_iterator PolyArc::begin(FilterMode mode, const Box& box) const
{
    if (m_ImplRefCounter.IsNull())
        return const_iterator();
    const_iterator ret(m_ImplRefCounter.Get(), m_ImplRefCounter->m_Arcs.BeginInRange(mode, box));
    ret.SkipUntouched(true);
    return ret;
}

PolyArc::const_iterator PolyArc::GetLast(FilterMode mode, const Box& box) const
{
    if (m_ImplRefCounter.IsNull())
        return const_iterator();
    const_iterator ret(m_ImplRefCounter.Get(), m_ImplRefCounter->m_Arcs.LastInRange(mode, box));
    ret.SkipUntouched(false);
    return ret;
}

PolyArc::const_iterator PolyArc::GetNth(int n) const
{
    VELLUM_ASSERT(!m_ImplRefCounter.IsNull());
    if (m_ImplRefCounter.IsNull())
        return const_iterator();
    const Tree& data = m_ImplRefCounter->m_Arcs;
    return const_iterator(
        m_ImplRefCounter.Get(),
        Tree::range_iterator(&data, data.GetNthIterator(n).m_CurrentNode, k_NoFilter, Box()));
}

std::vector<Arc> PolyArc::GetEdges() const
{
    std::vector<Arc> ret;
    if (m_ImplRefCounter.IsNull())
        return ret;
    ret.reserve(static_cast<size_t>(GetEdgeCount()));
    for (const Arc& a : m_ImplRefCounter->m_Arcs)
        ret.push_back(a);
    return ret;
}

namespace
{
const Arc k_PointArc;
}

const Arc& PolyArc::GetFirstEdge() const
{
    VELLUM_ASSERT(!empty());
    return empty() ? k_PointArc : *m_ImplRefCounter->m_Arcs.begin();
}

const Arc& PolyArc::GetLastEdge() const
{
    VELLUM_ASSERT(!empty());
    return empty() ? k_PointArc : m_ImplRefCounter->m_Arcs.GetLastNode()->m_Value;
}

const Point& PolyArc::GetFirstVertex() const
{
    return GetFirstEdge().GetStart();
}

const Point& PolyArc::GetLastVertex() const
{
    return GetLastEdge().GetEnd();
}

std::vector<Point> PolyArc::GetVertices() const
{
    std::vector<Point> ret;
    if (empty())
        return ret;
    ret.reserve(static_cast<size_t>(GetEdgeCount()) + 1);
    for (const Arc& a : m_ImplRefCounter->m_Arcs)
        ret.push_back(a.GetStart());
    if (GetOpenClosed() == k_Open)
        ret.push_back(GetLastVertex());
    return ret;
}

bool operator==(const PolyArc& a, const PolyArc& b)
{
    if (a.empty() || b.empty())
        return a.empty() && b.empty();
    if (a.GetOpenClosed() != b.GetOpenClosed() || a.GetEdgeCount() != b.GetEdgeCount())
        return false;
    return a.m_ImplRefCounter->m_Arcs == b.m_ImplRefCounter->m_Arcs;
}

// --- Measures ---

Area PolyArc::GetSignedArea() const
{
    VELLUM_ASSERT(GetOpenClosed() == k_Closed);
    Area ret = k_Area_0;
    if (empty())
        return ret;
    // A fan from the first vertex over the chords, plus the slices between
    // each curved edge and its chord.
    const Point& o = GetFirstVertex();
    for (const Arc& a : m_ImplRefCounter->m_Arcs)
    {
        if (a.GetHeight() != k_Unit_0)
            ret += CircleSlice(a).GetArea();
        ret += Triangle(o, a.GetStart(), a.GetEnd()).GetSignedArea();
    }
    return ret;
}

Direction PolyArc::GetDirection() const
{
    const Area area = GetSignedArea();
    if (area > k_Area_0)
        return k_CCW;
    if (area < k_Area_0)
        return k_CW;
    return k_NoDirection;
}

PolyArc PolyArc::GetReversed() const
{
    if (m_ImplRefCounter.IsNull())
        return PolyArc();
    std::vector<Arc> arcs;
    arcs.reserve(static_cast<size_t>(GetEdgeCount()));
    const Tree& data = m_ImplRefCounter->m_Arcs;
    for (Tree::iterator i = data.end(); i != data.begin();)
        arcs.push_back((--i)->GetReversed());
    return PolyArc(GetOpenClosed(), arcs);
}

bool PolyArc::HasCurvedEdge() const
{
    if (empty())
        return false;
    for (const Arc& a : m_ImplRefCounter->m_Arcs)
        if (!a.IsSegment(k_Unit_0, nullptr))
            return true;
    return false;
}

bool PolyArc::IsCircle(Unit accuracy, Circumference* what_if_so) const
{
    if (empty())
        return false;
    const Arc& first = GetFirstEdge();
    if (GetEdgeCount() == 1)
        return first.IsCircumference(what_if_so);
    if (GetOpenClosed() != k_Closed && !GetFirstVertex().IsEqualTo(GetLastVertex(), accuracy))
        return false;
    if (first.GetHeight() == k_Unit_0)
        return false;
    const Circumference circle = first.GetCircumference();
    const Direction direction = first.GetDirection();
    for (const Arc& a : m_ImplRefCounter->m_Arcs)
    {
        if (a.GetHeight() == k_Unit_0 || a.GetDirection() != direction)
            return false;
        const Circumference c = a.GetCircumference();
        if (!c.GetCenter().IsEqualTo(circle.GetCenter(), accuracy) ||
            (c.GetRadius() - circle.GetRadius()).GetAbs() > accuracy)
            return false;
    }
    if (what_if_so)
        *what_if_so = circle;
    return true;
}

// --- Contact ---

bool PolyArc::IntersectsWith(const Point& p, Unit accuracy) const
{
    VELLUM_ASSERT(accuracy >= k_Unit_0);
    if (empty() || !GetBBox().Contains(p, accuracy))
        return false;
    for (const_iterator i = begin(k_SkipOutside, Box(p).GetExpanded(accuracy)); i != end(); ++i)
        if (i->IntersectsWith(p, accuracy))
            return true;
    return false;
}

bool PolyArc::IntersectsWith(const Segment& segment, Unit accuracy) const
{
    VELLUM_ASSERT(accuracy >= k_Unit_0);
    const Box box = GetExpandedBBox_T(segment, accuracy);
    if (empty() || !GetBBox().IntersectsWith(box))
        return false;
    for (const_iterator i = begin(k_SkipOutside, box); i != end(); ++i)
        if (i->IntersectsWith(segment, accuracy))
            return true;
    return false;
}

bool PolyArc::IntersectsWith(const Arc& arc, Unit accuracy) const
{
    VELLUM_ASSERT(accuracy >= k_Unit_0);
    const Box box = GetExpandedBBox_T(arc, accuracy);
    if (empty() || !GetBBox().IntersectsWith(box))
        return false;
    for (const_iterator i = begin(k_SkipOutside, box); i != end(); ++i)
        if (i->IntersectsWith(arc, accuracy))
            return true;
    return false;
}

bool PolyArc::IntersectsWith(const PolyArc& other, Unit accuracy) const
{
    VELLUM_ASSERT(accuracy >= k_Unit_0);
    if (empty() || other.empty())
        return false;
    const Box box = GetExpandedBBox_T(other, accuracy);
    if (!GetBBox().IntersectsWith(box))
        return false;
    for (const_iterator i = begin(k_SkipOutside, box); i != end(); ++i)
        if (other.IntersectsWith(*i, accuracy))
            return true;
    return false;
}

std::vector<PolyArc::Intersection> PolyArc::GetIntersections(const PolyArc& other, Unit accuracy) const
{
    VELLUM_ASSERT(accuracy >= k_Unit_0);
    std::vector<Intersection> ret;
    if (empty() || other.empty())
        return ret;
    const Box box = GetExpandedBBox_T(other, accuracy);
    for (const_iterator i = begin(k_SkipOutside, box); i != end(); ++i)
    {
        const Box edge_box = GetExpandedBBox_T(*i, accuracy);
        for (const_iterator j = other.begin(k_SkipOutside, edge_box); j != other.end(); ++j)
        {
            const ArcIntersections found = i->GetIntersections(*j, accuracy);
            for (const Result_T<Arc>* r : {&found.first, &found.second})
                if (r->m_Success)
                    ret.push_back(Intersection{r->m_Value, i, j, i->IsSameDirection(*j)});
        }
    }
    return ret;
}
} // namespace geom
