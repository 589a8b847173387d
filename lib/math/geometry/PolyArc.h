// PolyArc.h - a chain of arc edges, open or closed: the contour beneath every shape.
//
// The edges are kept as a sequence in a range tree, so that one structure
// answers both "the n-th edge" and "the edges near this box" in logarithmic
// time; the boolean operations live on the second question. A chain is a
// copy-on-write value: copies share the tree until one of them is written.
// Edges are stored without gaps: each edge's end is bitwise the next edge's
// start (and, when closed, the last end is the first start), which is what
// lets the tree hold only edges and no separate vertices.
#pragma once

#include "core/lib/vellum/RefCounter_T.h"
#include "lib/containers/RangeAvlTree.h"
#include "lib/math/geometry/Arc.h"
#include "lib/math/geometry/Circle.h"

#include <vector>

namespace geom
{
// The range tree's filters, named as the shapes name them.
using base::FilterMode;
using base::k_NoFilter;
using base::k_SkipOutside;

// Whether a chain comes back to its start.
enum OpenClosed
{
    k_Open = 0,
    k_Closed = 1
};

// Each edge ends exactly where the next begins; when closed, the last ends
// exactly where the first begins. An empty vector is a valid chain.
bool IsPolyArcSequence_G(const std::vector<Arc>& arcs, OpenClosed mode);
bool IsPolySegmentSequence_G(const std::vector<Segment>& segments, OpenClosed mode);

// Whether the arc touches the box (its inside or its border), exactly.
bool ArcTouchesBox_G(const Arc& arc, const Box& box);

// The result of merging two consecutive edges into one: the new edge, and how
// far the removed middle vertex and the old edges' middles lie from it.
struct ArcMerge
{
    bool m_Success = false;
    Arc m_Arc;
    Unit m_Deviation;
};

// Merges a1 and a2 (a1 ends where a2 starts) into one edge when the shared
// vertex and both middles lie within tolerance of the edge through their
// outer ends. Two straight edges merge only when the turn does not reverse,
// so that a spike stays.
ArcMerge MergeArcs_G(const Arc& a1, const Arc& a2, Unit tolerance);

// Joins consecutive edges of a chain that together stay within accuracy of a
// single arc. m_Success reports whether anything changed; without a change
// the input is returned as it is. The deviation accumulated along one merged
// edge is bounded by a budget of accuracy, so that a long run of slightly
// bent edges cannot drift away from the original contour.
Result_T<std::vector<Arc>> JoinAdjacentArcs_G(const std::vector<Arc>& arcs, OpenClosed open_closed,
                                              Unit accuracy);

// The edge moved sideways by a signed distance, positive to the right of the
// direction of travel. A curved edge keeps its centre and changes its radius;
// it vanishes (m_Success false) when the radius falls to accuracy or below.
// A point edge has no side and vanishes too.
Result_T<Arc> GetOffsetArc_G(const Arc& arc, Unit by, Unit accuracy);

// The storage of a chain, shared between copies.
struct AvlPolyArcImplementation
{
    OpenClosed m_OpenClosed = k_Closed;
    base::RangeAvlTree<Arc> m_Arcs;
};

class PolyArc
{
public:
    using Tree = base::RangeAvlTree<Arc>;

    // A position in the chain, optionally filtered by a query box: with
    // k_SkipOutside only edges that touch the box, with base::k_SkipInside
    // only edges whose tight box is not wholly inside it. Positions stay valid
    // until the chain is written.
    class const_iterator
    {
    public:
        using iterator_category = std::bidirectional_iterator_tag;
        using value_type = Arc;
        using difference_type = std::ptrdiff_t;
        using pointer = const Arc*;
        using reference = const Arc&;

        const_iterator() = default;

        const Arc& operator*() const { return *m_Iterator; }
        const Arc* operator->() const { return &*m_Iterator; }
        // The next edge that passes the filter.
        const_iterator& operator++();
        const_iterator operator++(int)
        {
            const_iterator old = *this;
            ++*this;
            return old;
        }
        // The previous edge that passes the filter.
        const_iterator& operator--();

        // The next and the previous edge, unfiltered; a closed chain wraps
        // from the last edge to the first and back, an open one ends.
        const_iterator GetNextWrapped() const;
        const_iterator GetPreviousWrapped() const;

        bool IsDereferenceable() const { return m_Data && m_Iterator.IsDereferenceable(); }
        int GetIndex() const { return m_Iterator.GetIndex(); }
        FilterMode GetMode() const { return m_Iterator.GetMode(); }
        const Box& GetBox() const { return m_Iterator.GetBox(); }
        // A new query box for the following steps: the quadrant walk moves it
        // as it follows the contour around the point.
        void SetBox(const Box& box) { m_Iterator.SetBox(box); }
        const Tree::range_iterator& GetTreeIterator() const { return m_Iterator; }

        friend bool operator==(const const_iterator& a, const const_iterator& b)
        {
            return a.m_Iterator.m_CurrentNode == b.m_Iterator.m_CurrentNode;
        }
        friend bool operator!=(const const_iterator& a, const const_iterator& b) { return !(a == b); }

    private:
        friend class PolyArc;
        const_iterator(const AvlPolyArcImplementation* data, const Tree::range_iterator& i)
            : m_Data(data), m_Iterator(i)
        {
        }
        // Moves on while the edge fails the exact test of k_SkipOutside.
        void SkipUntouched(bool forward);

        const AvlPolyArcImplementation* m_Data = nullptr;
        Tree::range_iterator m_Iterator;
    };
    using iterator = const_iterator;

    // One meeting of two chains: the common point (a point arc) or common
    // piece, the two edges, and whether those edges run the same way.
    struct Intersection
    {
        Arc m_Intersection;
        const_iterator m_This;
        const_iterator m_Other;
        bool m_SameDirection = false;
    };

    // A null chain: empty, without an implementation.
    PolyArc() = default;
    // An empty chain with an implementation.
    explicit PolyArc(OpenClosed mode);
    // The edges as given; they must form a sequence of that mode.
    PolyArc(OpenClosed mode, const std::vector<Arc>& arcs);
    // Straight edges between consecutive points. A closed chain gets a closing
    // edge when the last point differs from the first, and a single point
    // always gets one (the point edge).
    PolyArc(OpenClosed mode, const std::vector<Point>& vertices);
    PolyArc(OpenClosed mode, const std::vector<Segment>& segments);
    // One edge; a closed chain of an edge with distinct ends returns along its
    // reverse.
    PolyArc(OpenClosed mode, const Arc& arc);
    PolyArc(OpenClosed mode, const Segment& segment);
    // A single point edge.
    PolyArc(OpenClosed mode, const Point& point);
    // A closed full circle starting at the azimuth; a point edge for radius 0.
    PolyArc(const Circumference& circumference, Direction direction, Azimuth azimuth);

    // Copies share the implementation; the cached end position isn't copied.
    PolyArc(const PolyArc& from) : m_ImplRefCounter(from.m_ImplRefCounter) {}
    PolyArc& operator=(const PolyArc& from)
    {
        if (this != &from)
        {
            m_ImplRefCounter = from.m_ImplRefCounter;
            m_EndIterator = RefCounter_T<const_iterator>();
        }
        return *this;
    }
    ~PolyArc() = default;

    bool empty() const { return m_ImplRefCounter.IsNull() || m_ImplRefCounter->m_Arcs.empty(); }
    int GetEdgeCount() const { return m_ImplRefCounter.IsNull() ? 0 : m_ImplRefCounter->m_Arcs.GetCount(); }
    int size() const { return GetEdgeCount(); }
    // A null chain counts as closed, the mode of every region.
    OpenClosed GetOpenClosed() const
    {
        return m_ImplRefCounter.IsNull() ? k_Closed : m_ImplRefCounter->m_OpenClosed;
    }
    Box GetBBox() const
    {
        return m_ImplRefCounter.IsNull() ? k_EmptyBox : m_ImplRefCounter->m_Arcs.GetBBox();
    }
    Unit GetEpsilon() const { return GetBBox().GetEpsilon(); }
    // Whether two chains share one implementation.
    bool IsSharedWith(const PolyArc& other) const
    {
        return !m_ImplRefCounter.IsNull() && m_ImplRefCounter.Get() == other.m_ImplRefCounter.Get();
    }

    const_iterator begin() const;
    const_iterator end() const;
    // The first edge that passes the filter on the box.
    const_iterator begin(FilterMode mode, const Box& box) const;
    // The last edge that passes the filter on the box.
    const_iterator GetLast(FilterMode mode, const Box& box) const;
    const_iterator GetNth(int n) const;

    std::vector<Arc> GetEdges() const;
    const Arc& GetFirstEdge() const;
    const Arc& GetLastEdge() const;
    const Point& GetFirstVertex() const;
    const Point& GetLastVertex() const;
    // The starts of all edges, plus the last end for an open chain.
    std::vector<Point> GetVertices() const;

    // Both null or empty, or the same mode and the same edges exactly.
    friend bool operator==(const PolyArc& a, const PolyArc& b);
    friend bool operator!=(const PolyArc& a, const PolyArc& b) { return !(a == b); }

    // The area enclosed, positive for a counter-clockwise contour; closed
    // chains only.
    Area GetSignedArea() const;
    // k_CCW for positive area, k_CW for negative, k_NoDirection for none.
    Direction GetDirection() const;
    // The reversed edges in reverse order, same mode.
    PolyArc GetReversed() const;

    // Contact within accuracy with a point, a segment, an arc or a chain.
    bool IntersectsWith(const Point& p, Unit accuracy) const;
    bool IntersectsWith(const Segment& segment, Unit accuracy) const;
    bool IntersectsWith(const Arc& arc, Unit accuracy) const;
    bool IntersectsWith(const PolyArc& other, Unit accuracy) const;
    // Every meeting of an edge of this chain with an edge of the other. Pairs
    // are found through the subtree boxes, never by trying all pairs.
    std::vector<Intersection> GetIntersections(const PolyArc& other, Unit accuracy) const;

    // Whether the chain traces one circle within accuracy: every edge curved,
    // turning the same way, on the same centre and radius, and the chain
    // closing. Writes the circle when asked.
    bool IsCircle(Unit accuracy, Circumference* what_if_so) const;
    // Any edge not exactly straight.
    bool HasCurvedEdge() const;

    // The quarter turns the contour makes around p: a multiple of 4 on
    // success, 0 meaning outside. Fails when p lies on the contour within
    // accuracy, or when a vertex lies within accuracy of an axis through p
    // (the caller then retries with a displaced point). Edges that stay in
    // one quadrant around p are skipped through the subtree boxes, so that
    // a long contour costs roughly the edges near the two axes through p.
    Result_T<int> GetQuadrantSum(const Point& p, Unit accuracy) const;
    // The quadrant count of one edge around p.
    static Result_T<int> GetEdgeQuadrantSum(const Arc& edge, const Point& p, Unit accuracy);

    // Points along the chain, no edge stepping more than angle_step; straight
    // edges give their start only. At most max_count points; a negative count
    // throws geom::Exception. last_point_too keeps an open chain's last point,
    // and repeats a closed chain's first point at its end.
    std::vector<Point> GetPoints(Angle angle_step, bool last_point_too, int max_count) const;

    // The chain with adjacent edges joined within accuracy; changed, when
    // given, says whether anything was joined.
    PolyArc GetSimplified(Unit accuracy, bool* changed) const;
    // The chain moved sideways by `by` (positive to the right of travel),
    // with the corners rebuilt by the joint mode. Only mode 0 exists: a gap
    // between two offset edges is closed by an arc tangent to the first.
    // m_Success is false when every edge vanished.
    Result_T<std::vector<Arc>> GetOffset(Unit by, Unit accuracy, int joint_mode, Unit joint_value) const;

    // Appends an edge at the end of an open chain; it must start where the
    // chain ends.
    void Append(const Arc& arc);

protected:
    // Gives this chain a tree of its own before a write.
    AvlPolyArcImplementation& MakeUnique();
    // Replaces the whole content.
    void Assign(OpenClosed mode, const std::vector<Arc>& arcs);

    RefCounter_T<AvlPolyArcImplementation> m_ImplRefCounter;
    mutable RefCounter_T<const_iterator> m_EndIterator;
};
} // namespace geom
