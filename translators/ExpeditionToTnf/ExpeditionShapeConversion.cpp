// ExpeditionShapeConversion.cpp - Expedition shapes to arc polygons and back.
//
// Shapes stay in the terms of the file until a plane, a pad outline or a board
// needs an area: then a path becomes the outline of its stroke, a polygon its
// contour with true arcs, a circle and a rectangle their contours.
#include "translators/ExpeditionToTnf/ExpeditionParser.h"

#include "core/lib/vellum/Assert.h"
#include "lib/math/geometry/Circle.h"
#include "lib/math/geometry/PolygonCollection.h"
#include "lib/math/geometry/PolygonWithHoles.h"
#include "lib/math/geometry/PolygonWithHolesCollection.h"

#include <cmath>

namespace
{
geom::Point PointOf(const ExpeditionVertex& v)
{
    return geom::Point(v.x, v.y);
}

// The edge from a vertex to the next: straight for an arc height of exactly
// 0.0, otherwise the arc of that sagitta (positive clockwise).
geom::Arc EdgeOf(const ExpeditionVertex& from, const ExpeditionVertex& to)
{
    if (from.arcHeight == 0.0)
        return geom::Arc(geom::Segment(PointOf(from), PointOf(to)));
    return geom::Arc(PointOf(from), PointOf(to), from.arcHeight);
}
} // namespace

std::optional<geom::Polygon> ExpeditionParser::ShapeToPolygon(ExpeditionShapes* shape)
{
    if (!shape)
        return std::nullopt;
    if (ExpeditionPath* path = shape->AsPath())
        return PathToPolygon(*path);
    if (ExpeditionPolygon* polygon = shape->AsPolygon())
    {
        const auto& v = polygon->m_Vertices;
        if (v.size() < 3)
            return std::nullopt;
        std::vector<geom::Arc> arcs;
        arcs.reserve(v.size());
        for (size_t i = 0; i < v.size(); ++i)
            arcs.push_back(EdgeOf(*v[i], *v[(i + 1) % v.size()]));
        return geom::Polygon(arcs, false);
    }
    if (ExpeditionCircle* circle = shape->AsCircle())
    {
        const double m_Radius = circle->m_Radius;
        VELLUM_ASSERT(m_Radius >= geom::k_Unit_0.GetValue());
        return geom::Polygon(geom::Circle(geom::Point(circle->m_X, circle->m_Y), circle->m_Radius));
    }
    if (ExpeditionRectangle* rect = shape->AsRectangle())
    {
        // The corners as they stand: a rectangle given right to left turns
        // the other way, and nothing normalises it here.
        return geom::Polygon(std::vector<geom::Point>{geom::Point(rect->m_X1, rect->m_Y1),
                                                      geom::Point(rect->m_X2, rect->m_Y1),
                                                      geom::Point(rect->m_X2, rect->m_Y2),
                                                      geom::Point(rect->m_X1, rect->m_Y2)},
                             false);
    }
    return std::nullopt;
}

// The outline of a stroke: a thick segment per straight edge, arcs cut into
// twelve chords first, all united; the largest outline of the union counts.
std::optional<geom::Polygon> ExpeditionParser::PathToPolygon(const ExpeditionPath& path)
{
    const auto& v = path.m_Vertices;
    if (v.size() < 2)
        return std::nullopt;
    double accuracy = 1e-06;
    std::vector<geom::Polygon> pieces;
    const auto addPiece = [&](const geom::Point& a, const geom::Point& b)
    {
        geom::Polygon piece(geom::Segment(a, b), path.m_Width);
        accuracy = std::max(accuracy, piece.GetEpsilon().GetValue());
        pieces.push_back(piece);
    };
    for (size_t i = 0; i + 1 < v.size(); ++i)
    {
        if (v[i]->arcHeight == 0.0)
        {
            addPiece(PointOf(*v[i]), PointOf(*v[i + 1]));
            continue;
        }
        const geom::Arc arc = EdgeOf(*v[i], *v[i + 1]);
        std::vector<geom::Point> chord;
        arc.GetPoints(12, true, chord);
        geom::Point previous = arc.GetStart();
        for (const geom::Point& p : chord)
        {
            addPiece(previous, p);
            previous = p;
        }
    }
    const std::vector<geom::PolygonWithHoles> united = UnitePolygons(pieces, accuracy);
    VELLUM_ASSERT(united.size() == 1);
    std::optional<geom::Polygon> largest;
    for (const geom::PolygonWithHoles& piece : united)
    {
        const geom::Polygon& outer = piece.GetPolygon();
        if (!largest || *largest < outer)
            largest = outer;
    }
    if (!largest || largest->empty())
        return std::nullopt;
    return largest;
}

// An Expedition shape of a polygon: a circle as a circle unless the caller
// wants every shape as vertices, otherwise one vertex per edge with its arc
// height, closed by a vertex on the last edge's end.
ExpeditionShapes* ExpeditionParser::ShapeFromPolygon(const geom::Polygon& polygon, const AString& layerName,
                                                     bool keepCircleAsPolygon)
{
    const double tolerance = m_Tolerance;
    geom::Circle circle;
    std::vector<geom::Arc> arcs = polygon.GetEdges();
    if (polygon.IsCircle(tolerance, &circle))
    {
        if (!keepCircleAsPolygon)
            return new ExpeditionCircle(layerName, circle.GetCenter().m_X.GetValue(),
                                        circle.GetCenter().m_Y.GetValue(), circle.GetRadius().GetValue(),
                                        0.0);
        std::vector<geom::Arc> arc_vec = arcs;
        VELLUM_ASSERT(arc_vec.size() == 1);
        if (!arc_vec.empty())
        {
            std::vector<geom::Point> points;
            arc_vec[0].GetPoints(5, true, points);
            // Split between the five points: four arcs of the circle.
            arcs.clear();
            const size_t pieces = points.size() - 1;
            for (size_t i = 1; i <= pieces; ++i)
                arcs.push_back(arc_vec[0].GetSubArc(static_cast<double>(i - 1) / static_cast<double>(pieces),
                                                    static_cast<double>(i) / static_cast<double>(pieces)));
        }
    }
    else if (arcs.size() < 2)
        return nullptr;

    std::vector<ExpeditionVertex*> vertices;
    const geom::Arc* last = nullptr;
    for (const geom::Arc& arc : arcs)
    {
        const double height = arc.GetHeight().GetValue();
        if (std::fabs(height) <= tolerance && arc.GetStart().IsEqualTo(arc.GetEnd(), tolerance))
            continue; // a degenerate edge
        vertices.push_back(new ExpeditionVertex(arc.GetStart().m_X.GetValue(), arc.GetStart().m_Y.GetValue(),
                                                std::fabs(height) <= tolerance ? 0.0 : height));
        last = &arc;
    }
    if (last)
        vertices.push_back(
            new ExpeditionVertex(last->GetEnd().m_X.GetValue(), last->GetEnd().m_Y.GetValue(), 0.0));
    return new ExpeditionPolygon(layerName, vertices, 0.0);
}
