// PolyArcIntersectionGraph.h - the graph on which union, intersection, difference and subtraction of arc
// regions run.
//
// Two regions (polygons, regions with holes, or collections of them) are cut
// against each other: every edge is split where it meets the other operand's
// boundary, the pieces are classified as inside, outside or on the other
// operand, and the pieces of the wanted class are walked into closed loops.
// Counter-clockwise loops become outlines, clockwise ones holes. Arcs stay
// arcs: an edge is cut into sub-arcs of its own circle, never into chords.
// All tolerance is the caller's accuracy. A graph lives for one operation.
#pragma once

#include "lib/math/geometry/PolygonWithHolesCollection.h"

#include <functional>
#include <vector>

namespace geom
{
class PolyArcIntersectionGraph
{
public:
    // Where an edge lies relative to the other operand.
    enum InsideOther
    {
        k_InsideOtherEdge = 0,
        k_OutsideOtherEdge = 1,
        k_CommonEdge = 2,
        k_UnmatchedCommonEdge = 3 // transient, while common edges are paired
    };

    // What is extracted from the graph.
    enum Mode
    {
        k_Union = 0,
        k_Intersection = 1,
        k_SymmetricDifference = 2,
        k_Subtraction = 3 // the first operand minus the second
    };

    struct Vertex;

    // Sides of an edge, seen along it.
    static constexpr int k_Left = 1, k_Right = 2;

    struct Edge
    {
        Arc m_Arc;
        Vertex* m_StartVertex = nullptr;
        Vertex* m_EndVertex = nullptr;
        InsideOther m_InsideOther = k_OutsideOtherEdge;
        int m_Owner = 0; // 0 for the first operand, 1 for the second
        int m_Group = 0; // the contour group: the operand, or the entry of one collection
        bool m_Visited = false;
        // For a common edge that its own group runs along both ways, where
        // the group's own material lies beside it: k_Left and k_Right (a
        // slit of no width into it), none (a spike of no width out of it),
        // or one side (a corner folded onto its neighbour by snapping).
        int m_OwnSides = 0;
    };

    struct Vertex
    {
        Point m_Location;
        std::vector<Edge*> m_Outgoing;
        std::vector<Edge*> m_Incoming;
    };

    // A walked contour, with the vertices its arcs start at.
    struct Loop
    {
        std::vector<Arc> m_Arcs;
        std::vector<const Vertex*> m_Vertices;
        bool m_Closed = false;
    };

    // A closed contour of one operand, before splitting. The group tells
    // which contours may cross each other: only contours of different
    // groups are cut against each other.
    struct Contour
    {
        std::vector<Arc> m_Arcs;
        int m_Owner = 0;
        int m_Group = 0;
    };

    PolyArcIntersectionGraph(const Polygon& p1, const Polygon& p2, Unit accuracy);
    PolyArcIntersectionGraph(const PolygonWithHoles& p1, const PolygonWithHoles& p2, Unit accuracy);
    PolyArcIntersectionGraph(const PolygonWithHolesCollection& pp1, const PolygonWithHolesCollection& pp2,
                             Unit accuracy);
    PolyArcIntersectionGraph(const PolyArcIntersectionGraph&) = delete;
    PolyArcIntersectionGraph& operator=(const PolyArcIntersectionGraph&) = delete;

    // The regions of the mode. May be asked repeatedly; an impossible
    // topology gives an empty collection.
    PolygonWithHolesCollection GetResult(Mode mode);

    const std::vector<Edge>& GetEdges() const { return m_Edges; }
    const std::vector<Vertex>& GetVertices() const { return m_Vertices; }

    // Cuts closed contours at every point where a contour of another group
    // meets them within accuracy, and at the given extra points. Vertices
    // that lie within accuracy of each other or of another edge are made to
    // coincide bitwise, so that both sides of a crossing share one vertex.
    // Pieces that shrink to a point are dropped. Candidate edge pairs and
    // points are found through box trees, never by trying all pairs.
    static std::vector<Contour> SplitContours(const std::vector<Contour>& contours,
                                              const std::vector<Point>& extra_points, Unit accuracy);

protected:
    // How a point lies to the other operand of the given owner or group.
    using PointClassifier = std::function<PointRelation(const Point& p, const Contour& of, Unit accuracy)>;
    // How a point lies to the region of one contour group itself.
    using GroupClassifier = std::function<PointRelation(const Point& p, int group, Unit accuracy)>;

    explicit PolyArcIntersectionGraph(Unit accuracy) : m_CalcAccuracy(accuracy) {}

    // Splits, classifies by the classifier, keeps the edges keep accepts,
    // builds vertices and links, and merges common edges; own tells on
    // which sides of a doubled-back common edge its group's material lies.
    void Fill(const std::vector<Contour>& contours, const PointClassifier& classify,
              const std::function<bool(InsideOther)>& keep, const GroupClassifier& own);
    // The class of an edge by its start, end and middle.
    static InsideOther Classify(const Arc& arc, const Contour& of, const PointClassifier& classify,
                                Unit accuracy);
    // The entries in Hilbert order of their boxes, so that the collection's
    // tree prunes point queries well whatever order the caller built it in.
    static PolygonWithHolesCollection GetSpatiallySorted(const PolygonWithHolesCollection& c);
    void RecheckCommonEdges(const PointClassifier& classify,
                            const std::vector<const Contour*>& edge_contours);
    void MergeCommonEdges();
    void MarkDoubledBackEdges(const GroupClassifier& own);
    void PairCommonEdges(Mode mode);
    Loop Walk(Vertex* start, Mode mode);
    std::vector<Loop> WalkLoops(Mode mode);
    // Splices closed loops that share a vertex into one loop each; the
    // vertices are those of one vector starting at base_vertex.
    static std::vector<Loop> JoinLoopsAtVertices(const std::vector<Loop>& loops, const Vertex* base_vertex,
                                                 size_t vertex_count);
    PolygonWithHolesCollection Assemble(const std::vector<Loop>& loops);

    std::vector<Edge> m_Edges;
    std::vector<Vertex> m_Vertices;
    Unit m_CalcAccuracy;
    // Set for the union of one collection, whose filling reports a broken
    // topology on the debug print before it gives up.
    bool m_SingleCollection = false;
};

// The contours of an operand: outline as it is, holes reversed, so that the
// material always lies to the left.
void AppendContours_G(const PolygonWithHoles& region, int owner, int group, Unit accuracy,
                      std::vector<PolyArcIntersectionGraph::Contour>& out);
} // namespace geom
