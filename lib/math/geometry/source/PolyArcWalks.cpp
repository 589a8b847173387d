// PolyArcWalks.cpp - walks along a chain: quadrant sum, point list, joining of edges, offset.
#include "lib/math/geometry/PolyArc.h"

#include "core/lib/vellum/Assert.h"
#include "lib/math/geometry/ChordFrame.h"
#include "lib/math/geometry/CircleSlice.h"

#include <algorithm>
#include <cmath>

namespace geom
{
// --- Quadrant sum ---

namespace
{
// The quarter turns of a straight chord around the origin: the quadrant
// difference the short way. Opposite quadrants are told apart by the side on
// which the chord passes; a chord through the origin has no answer.
Result_T<int> GetChordQuadrantSum(const Vector& from, const Vector& to, int q1, int q2)
{
    Result_T<int> ret;
    const int diff = ((q2 - q1) % 4 + 4) % 4;
    ret.m_Success = true;
    if (diff == 1)
        ret.m_Value = 1;
    else if (diff == 3)
        ret.m_Value = -1;
    else if (diff == 2)
    {
        const Area turn = from.GetVectorProductWith(to);
        ret.m_Success = turn != k_Area_0;
        ret.m_Value = turn > k_Area_0 ? 2 : -2;
    }
    return ret;
}
} // namespace

Result_T<int> PolyArc::GetEdgeQuadrantSum(const Arc& edge, const Point& p, Unit accuracy)
{
    Result_T<int> ret;
    if (edge.IntersectsWith(p, accuracy))
        return ret;
    const Vector shift = k_Point_0 - p;
    const Arc arc(edge.GetStart() + shift, edge.GetEnd() + shift, edge.GetHeight(), edge.GetCenterAzimuth());
    const Vector from = arc.GetStart() - k_Point_0;
    const Vector to = arc.GetEnd() - k_Point_0;
    const int q1 = from.GetQuadrant(accuracy);
    const int q2 = to.GetQuadrant(accuracy);
    if (q1 == -1 || q2 == -1)
        return ret;
    if (q1 == q2 && accuracy > k_Unit_0 && !arc.GetBBox().Contains(k_Point_0, accuracy))
    {
        ret.m_Success = true;
        return ret;
    }
    if (arc.GetStartEndSegment().IntersectsWith(k_Point_0, accuracy))
    {
        // The chord runs through the point but the arc doesn't: the arc goes
        // half way round it.
        ret.m_Success = true;
        ret.m_Value = arc.GetDirection() == k_CCW ? 2 : -2;
        return ret;
    }
    const Result_T<int> as_segment = GetChordQuadrantSum(from, to, q1, q2);
    VELLUM_ASSERT(as_segment.m_Success);
    ret.m_Success = true;
    ret.m_Value = as_segment.m_Value;
    // An arc passes the point on the other side of its chord when the point
    // lies in the slice between them: one whole turn more.
    if (arc.GetHeight() != k_Unit_0 && CircleSlice(arc).Contains(k_Point_0))
        ret.m_Value += arc.GetDirection() == k_CCW ? 4 : -4;
    VELLUM_ASSERT(-4 <= ret.m_Value && ret.m_Value <= 4);
    return ret;
}

Result_T<int> PolyArc::GetQuadrantSum(const Point& p, Unit accuracy) const
{
    VELLUM_ASSERT(accuracy >= k_Unit_0);
    VELLUM_ASSERT(!empty());
    Result_T<int> ret;
    if (empty())
        return ret;
    if (accuracy > k_Unit_0 && !GetBBox().Contains(p, accuracy))
    {
        ret.m_Success = true;
        return ret;
    }
    int quadrant = (GetFirstVertex() - p).GetQuadrant(accuracy);
    if (quadrant == -1)
        return ret;
    // Edges whose boxes stay inside the quadrant of the current vertex turn
    // nothing around p and are passed by whole subtrees at a time.
    int sum = 0;
    for (const_iterator i = begin(base::k_SkipInside, Box(p, quadrant).GetExpanded(-accuracy)); i != end();)
    {
        const Result_T<int> edge = GetEdgeQuadrantSum(*i, p, accuracy);
        if (!edge.m_Success)
            return ret;
        sum += edge.m_Value;
        quadrant = (i->GetEnd() - p).GetQuadrant(accuracy);
        if (quadrant == -1)
            return ret;
        i.SetBox(Box(p, quadrant).GetExpanded(-accuracy));
        ++i;
    }
    ret.m_Success = true;
    ret.m_Value = sum;
    return ret;
}

// --- Point list ---

std::vector<Point> PolyArc::GetPoints(Angle angle_step, bool last_point_too, int max_count) const
{
    VELLUM_ASSERT(angle_step > k_Degree_0 && angle_step <= k_Degree_360);
    VELLUM_ASSERT(!empty());
    if (max_count < 0)
        throw k_NegativeCount;
    std::vector<Point> ret;
    if (empty() || !(angle_step > k_Degree_0))
        return ret;
    for (const Arc& a : m_ImplRefCounter->m_Arcs)
    {
        const int limit = max_count - static_cast<int>(ret.size());
        if (limit <= 0)
            break;
        int count = 1;
        if (a.GetHeight() != k_Unit_0)
        {
            const Angle max_arc_angle = angle_step;
            VELLUM_ASSERT(max_arc_angle > k_Angle_0);
            // Bounded before the conversion: a tiny step or an arc of no
            // number would leave the integers.
            const double steps = std::ceil(a.GetAngle().GetAbs() / max_arc_angle);
            count = steps >= 1.0 ? static_cast<int>(std::min(steps, static_cast<double>(limit))) : 1;
        }
        a.GetPoints(std::min(count, limit), false, ret);
    }
    if (GetOpenClosed() == k_Open)
    {
        if (last_point_too && static_cast<int>(ret.size()) < max_count)
            ret.push_back(GetLastVertex());
    }
    else if (last_point_too && !ret.empty() && ret.back() != ret.front() &&
             static_cast<int>(ret.size()) < max_count)
        ret.push_back(ret.front());
    return ret;
}

// --- Joining adjacent edges ---

namespace
{
// How far p lies from the arc.
Unit GetDistanceToArc(const Arc& arc, const Point& p)
{
    if (arc.GetHeight() == k_Unit_0)
        return arc.GetStartEndSegment().GetDistanceTo(p, k_InfiniteUnit);
    if (ChordFrame::IsFlat(arc))
    {
        const ChordFrame frame(arc);
        if (std::fabs(frame.GetAlong(p)) <= frame.GetHalfChord())
            return Unit(std::fabs(frame.GetValue(p)));
        return std::min(p.GetDistanceTo(arc.GetStart(), k_InfiniteUnit),
                        p.GetDistanceTo(arc.GetEnd(), k_InfiniteUnit));
    }
    const Circumference circle = arc.GetCircumference();
    const Unit radial = (p.GetDistanceTo(circle.GetCenter(), k_InfiniteUnit) - circle.GetRadius()).GetAbs();
    if (arc.IsInSpan(circle.GetNearestPoint(p), k_Unit_0))
        return radial;
    return std::min(p.GetDistanceTo(arc.GetStart(), k_InfiniteUnit),
                    p.GetDistanceTo(arc.GetEnd(), k_InfiniteUnit));
}
} // namespace

ArcMerge MergeArcs_G(const Arc& a1, const Arc& a2, Unit tolerance)
{
    VELLUM_ASSERT(a1.GetEnd() == a2.GetStart());
    VELLUM_ASSERT(a1.GetHeight().GetAbs() < k_InfiniteUnit);
    VELLUM_ASSERT(a2.GetHeight().GetAbs() < k_InfiniteUnit);
    ArcMerge ret;
    const Point& shared = a1.GetEnd();
    const Point& start = a1.GetStart();
    const Point& end = a2.GetEnd();
    // A merge of a closed pair would leave a point where there was a loop.
    if (start == end || start == shared || shared == end)
        return ret;
    if (a1.GetHeight() == k_Unit_0 && a2.GetHeight() == k_Unit_0)
    {
        const Segment joined(start, end);
        if (!(shared - start).IsSameDirection(end - shared) || !joined.IntersectsWith(shared, tolerance))
            return ret;
        ret.m_Success = true;
        ret.m_Arc = Arc(joined);
        ret.m_Deviation = joined.GetDistanceTo(shared, k_InfiniteUnit);
        return ret;
    }
    const Arc candidate(start, shared, end);
    VELLUM_ASSERT(candidate.GetHeight().GetAbs() < k_InfiniteUnit);
    if (!(candidate.GetHeight().GetAbs() < k_InfiniteUnit))
        return ret;
    const Point m1 = a1.GetMiddle(), m2 = a2.GetMiddle();
    if (!candidate.IntersectsWith(shared, tolerance) || !candidate.IntersectsWith(m1, tolerance) ||
        !candidate.IntersectsWith(m2, tolerance))
        return ret;
    ret.m_Success = true;
    ret.m_Arc = candidate;
    ret.m_Deviation = std::max({GetDistanceToArc(candidate, shared), GetDistanceToArc(candidate, m1),
                                GetDistanceToArc(candidate, m2)});
    return ret;
}

namespace
{
bool HasMergeablePair(const std::vector<Arc>& arcs, OpenClosed open_closed, Unit accuracy)
{
    for (size_t i = 1; i < arcs.size(); ++i)
        if (MergeArcs_G(arcs[i - 1], arcs[i], accuracy).m_Success)
            return true;
    return open_closed == k_Closed && arcs.size() > 2 &&
           MergeArcs_G(arcs.back(), arcs.front(), accuracy).m_Success;
}
} // namespace

Result_T<std::vector<Arc>> JoinAdjacentArcs_G(const std::vector<Arc>& arcs, OpenClosed open_closed,
                                              Unit accuracy)
{
    VELLUM_ASSERT(IsPolyArcSequence_G(arcs, open_closed));
    Result_T<std::vector<Arc>> ret;
    if (arcs.size() < 2 || !HasMergeablePair(arcs, open_closed, accuracy))
    {
        ret.m_Value = arcs;
        return ret;
    }
    ret.m_Value.reserve(arcs.size());
    Arc cur_arc = arcs.front();
    Unit budget = accuracy;
    for (auto i = arcs.begin() + 1; i != arcs.end(); ++i)
    {
        VELLUM_ASSERT(cur_arc.GetEnd() == i->GetStart());
        if (budget >= k_Unit_0)
        {
            const ArcMerge merged = MergeArcs_G(cur_arc, *i, accuracy);
            if (merged.m_Success)
            {
                cur_arc = merged.m_Arc;
                ret.m_Success = true;
                budget -= merged.m_Deviation;
                continue;
            }
        }
        VELLUM_ASSERT(ret.m_Value.empty() || ret.m_Value.back().GetEnd() == cur_arc.GetStart());
        ret.m_Value.push_back(cur_arc);
        cur_arc = *i;
        budget = accuracy;
    }
    ret.m_Value.push_back(cur_arc);
    if (open_closed == k_Closed && ret.m_Value.size() > 1)
    {
        const ArcMerge merged = MergeArcs_G(ret.m_Value.back(), ret.m_Value.front(), accuracy);
        if (merged.m_Success)
        {
            ret.m_Value.front() = merged.m_Arc;
            ret.m_Value.pop_back();
            ret.m_Success = true;
        }
    }
    VELLUM_ASSERT(IsPolyArcSequence_G(ret.m_Value, open_closed));
    return ret;
}

PolyArc PolyArc::GetSimplified(Unit accuracy, bool* changed) const
{
    if (changed)
        *changed = false;
    if (empty())
        return *this;
    const OpenClosed mode = GetOpenClosed();
    const Result_T<std::vector<Arc>> done = JoinAdjacentArcs_G(GetEdges(), mode, accuracy);
    VELLUM_ASSERT(IsPolyArcSequence_G(done.m_Value, mode));
    if (!done.m_Success)
        return *this;
    if (changed)
        *changed = true;
    return PolyArc(mode, done.m_Value);
}

// --- Offset ---

Result_T<Arc> GetOffsetArc_G(const Arc& arc, Unit by, Unit accuracy)
{
    Result_T<Arc> ret;
    if (arc.IsSegment(accuracy, nullptr))
    {
        const Vector chord = arc.GetEnd() - arc.GetStart();
        if (chord.IsNull())
            return ret;
        const Vector right = chord.GetPerpendicular(-by);
        ret.m_Success = true;
        ret.m_Value = Arc(arc.GetStart() + right, arc.GetEnd() + right, k_Unit_0);
        return ret;
    }
    const Direction direction = arc.GetDirection();
    if (ChordFrame::IsFlat(arc))
        return ChordFrame(arc).GetOffset(direction == k_CW ? -by : by, accuracy);
    const Circumference circle = arc.GetCircumference();
    const Unit radius = direction == k_CW ? circle.GetRadius() - by : circle.GetRadius() + by;
    if (radius <= accuracy)
        return ret;
    const Circumference moved(circle.GetCenter(), radius);
    ret.m_Success = true;
    if (arc.GetStart() == arc.GetEnd())
    {
        const Azimuth at = arc.GetCenterAzimuth().GetOpposite();
        ret.m_Value = Arc(moved, at, direction);
        return ret;
    }
    const Azimuth from = (arc.GetStart() - circle.GetCenter()).GetAzimuth();
    const Azimuth to = (arc.GetEnd() - circle.GetCenter()).GetAzimuth();
    ret.m_Value = from == to ? Arc(moved, from, direction) : Arc(moved, from, to, direction);
    return ret;
}

namespace
{
Arc WithEnd(const Arc& a, const Point& end)
{
    return Arc(a.GetStart(), end, a.GetHeight(), a.GetCenterAzimuth());
}

Arc WithStart(const Arc& a, const Point& start)
{
    return Arc(start, a.GetEnd(), a.GetHeight(), a.GetCenterAzimuth());
}

// Joint mode 0: one edge leaving the first offset edge along its tangent to
// the start of the next, straight when the gap lies on that tangent. The
// corner is rounded without a parameter.
Arc GetTangentConnection(const Arc& first, const Point& to, Unit accuracy)
{
    const Segment chord(first.GetEnd(), to);
    const Azimuth tangent = first.GetEndTangent();
    const Area turn = chord.GetVector().GetVectorProductWith(Vector(tangent, 1.0));
    if (turn.GetAbs().GetValue() < accuracy.GetValue())
        return Arc(chord);
    return Arc(chord, tangent);
}

// Closes the corner between two offset edges. Returns the connecting edge
// when one is needed; first and second may be trimmed or moved to meet.
Result_T<Arc> RebuildJoint(Arc& first, Arc& second, Unit accuracy)
{
    Result_T<Arc> connection;
    if (first.GetEnd().IsEqualTo(second.GetStart(), accuracy))
    {
        const Point middle = GetMiddle_G(first.GetEnd(), second.GetStart());
        first = WithEnd(first, middle);
        second = WithStart(second, middle);
        return connection;
    }
    // Where the offset edges cross, both are cut back to the crossing nearest
    // to the gap between them.
    const ArcIntersections found = first.GetIntersections(second, accuracy);
    const Point gap = GetMiddle_G(first.GetEnd(), second.GetStart());
    const Result_T<Arc>* best = nullptr;
    for (const Result_T<Arc>* r : {&found.first, &found.second})
        if (r->m_Success && r->m_Value.IsPoint(k_Unit_0, nullptr) &&
            (!best || r->m_Value.GetStart().GetDistanceSquareTo(gap) <
                          best->m_Value.GetStart().GetDistanceSquareTo(gap)))
            best = r;
    if (best)
    {
        const Point x = best->m_Value.GetStart();
        const Arc head = first.GetSubArc(0.0, first.GetPosition(x, accuracy));
        const Arc tail = second.GetSubArc(second.GetPosition(x, accuracy), 1.0);
        first = Arc(first.GetStart(), x, head.GetHeight(), head.GetCenterAzimuth());
        second = Arc(x, second.GetEnd(), tail.GetHeight(), tail.GetCenterAzimuth());
        return connection;
    }
    connection.m_Success = true;
    connection.m_Value = GetTangentConnection(first, second.GetStart(), accuracy);
    return connection;
}
} // namespace

Result_T<std::vector<Arc>> PolyArc::GetOffset(Unit by, Unit accuracy, int joint_mode, Unit joint_value) const
{
    VELLUM_ASSERT(joint_mode == 0);
    (void)joint_value;
    Result_T<std::vector<Arc>> ret;
    if (empty())
        return ret;
    const OpenClosed open_or_closed = GetOpenClosed();
    std::vector<Arc> moved;
    moved.reserve(static_cast<size_t>(GetEdgeCount()));
    for (const Arc& a : m_ImplRefCounter->m_Arcs)
    {
        const Result_T<Arc> offset = GetOffsetArc_G(a, by, accuracy);
        if (offset.m_Success)
            moved.push_back(offset.m_Value);
    }
    if (moved.empty())
        return ret;
    ret.m_Success = true;
    if (moved.size() == 1 && moved.front().GetStart().IsEqualTo(moved.front().GetEnd(), accuracy))
    {
        const Arc& only = moved.front();
        ret.m_Value.push_back(only.GetStart() == only.GetEnd() || open_or_closed == k_Open
                                  ? only
                                  : WithEnd(only, only.GetStart()));
        return ret;
    }
    const size_t n = moved.size();
    const size_t joints = open_or_closed == k_Closed ? n : n - 1;
    std::vector<Result_T<Arc>> connections(n);
    if (n == 1 && open_or_closed == k_Closed)
    {
        // One open edge left of a closed chain: the joint closes it on itself.
        connections[0].m_Success = true;
        connections[0].m_Value = GetTangentConnection(moved[0], moved[0].GetStart(), accuracy);
    }
    else
        for (size_t k = 0; k < joints; ++k)
            connections[k] = RebuildJoint(moved[k], moved[(k + 1) % n], accuracy);
    ret.m_Value.reserve(2 * n);
    for (size_t k = 0; k < n; ++k)
    {
        ret.m_Value.push_back(moved[k]);
        if (connections[k].m_Success)
            ret.m_Value.push_back(connections[k].m_Value);
    }
    VELLUM_ASSERT(IsPolyArcSequence_G(ret.m_Value, open_or_closed));
    return ret;
}
} // namespace geom
