// ExpeditionLayoutNetsWriter.cpp - the LayoutNets block: per net its traces,
// plane lines, vias and plane shapes with their voids.
//
// Every geometric item takes the next id of the file; an item that is not
// written takes none.
#include "translators/ExpeditionToTnf/ExpeditionToTnf.h"

#include "translators/ExpeditionToTnf/ExpeditionDiagnostics.h"

#include "lib/math/geometry/Circle.h"
#include "lib/math/geometry/Circumference.h"

#include <cmath>
#include <utility>

using io::CBlock_func;

void ExpeditionToTnf::WriteLayoutNets(ElementList& elements, io::CBlock_stream& layout)
{
    io::CBlock_stream block(layout, L"LayoutNets");
    for (ExpeditionBaseElement* element : elements)
    {
        ExpeditionLayoutNet* net = element->AsLayoutNet();
        if (!net)
            continue;
        // The entry goes to the file item by item: the plane of a large board
        // has hundreds of thousands of voids, which are never held as a tree.
        io::CBlock_stream entry(block, L"LayoutNet");
        entry << io::CBlock_named_value(L"Name", io::CBlock_value(net->m_Name));
        for (const ExpeditionTrace* trace : net->m_Traces)
        {
            if (!trace || trace->m_Vertices.size() < 2)
                continue;
            CBlock_func path = ExpeditionToTnf::NewFunc(ExpeditionToTnf::k_Path);
            path << ++m_NextShapeId;
            AddPathVertices(path, trace->m_Vertices, trace->m_Width);
            CBlock_func graphics = ExpeditionToTnf::NewFunc(ExpeditionToTnf::k_Graphics);
            graphics << trace->m_LayerName << std::move(path);
            entry << graphics;
            if (m_Diagnostics)
                ++m_Diagnostics->InFile().m_Traces[ExpeditionDiagnostics::LayerKey(trace->m_LayerName)];
        }
        WritePlaneLines(entry, *net);
        for (const ExpeditionVia* via : net->m_Vias)
        {
            if (!via)
                continue;
            CBlock_func item = ExpeditionToTnf::NewFunc(ExpeditionToTnf::k_Via);
            item << ++m_NextShapeId << via->m_FromLayer << via->m_ToLayer << via->m_X << via->m_Y
                 << via->m_PadStackName << 0;
            entry << item;
            if (m_Diagnostics)
            {
                ++m_Diagnostics->InFile().m_Vias;
                CheckPadStackWritten(via->m_PadStackName, via->m_PadStackName,
                                     "a via of net \"" + ExpeditionDiagnostics::Text(net->m_Name) + "\"");
            }
        }
        WritePlaneShapes(entry, *net);
        entry.Close();
        // The net is in the file; nothing after this block asks for its copper.
        net->ReleaseCopper();
    }
}

namespace
{
// vertex(x, y) per edge start, with Arc(height) behind an edge that bulges;
// the last edge's end closes the outline only where asked.
void AddEdges(CBlock_func& polygon, const std::vector<geom::Arc>& edges, bool closed)
{
    for (const geom::Arc& edge : edges)
    {
        CBlock_func vertex = ExpeditionToTnf::NewFunc(ExpeditionToTnf::k_Vertex);
        vertex << edge.GetStart().m_X.GetValue() << edge.GetStart().m_Y.GetValue();
        polygon << std::move(vertex);
        if (!edge.IsSegment(edge.GetEpsilon(), nullptr))
        {
            CBlock_func arc = ExpeditionToTnf::NewFunc(ExpeditionToTnf::k_Arc);
            arc << edge.GetHeight().GetValue();
            polygon << std::move(arc);
        }
    }
    if (closed && !edges.empty())
    {
        CBlock_func vertex = ExpeditionToTnf::NewFunc(ExpeditionToTnf::k_Vertex);
        vertex << edges.back().GetEnd().m_X.GetValue() << edges.back().GetEnd().m_Y.GetValue();
        polygon << std::move(vertex);
    }
}

CBlock_func CircleItem(int id, double width, const geom::Circle& circle)
{
    CBlock_func item = ExpeditionToTnf::NewFunc(ExpeditionToTnf::k_Circle);
    item << id << width << circle.GetCenter().m_X.GetValue() << circle.GetCenter().m_Y.GetValue()
         << 2.0 * circle.GetRadius().GetValue();
    return item;
}
} // namespace

// Thin plane contours as paths through their vertices, without arcs.
void ExpeditionToTnf::WritePlaneLines(io::CBlock_stream& entry, const ExpeditionLayoutNet& net)
{
    for (const auto& [layer, lines] : net.m_PlaneLines)
        for (const ExpeditionPlanePolygon& line : lines)
        {
            CBlock_func path = ExpeditionToTnf::NewFunc(ExpeditionToTnf::k_Path);
            path << ++m_NextShapeId;
            for (const geom::Point& p : line.GetPolygon().GetVertices())
            {
                CBlock_func vertex = ExpeditionToTnf::NewFunc(ExpeditionToTnf::k_Vertex);
                vertex << p.m_X.GetValue() << p.m_Y.GetValue() << line.m_Width << line.m_Width
                       << AString(L"Round") << AString(L"Radiallymitered") << line.m_Width;
                path << std::move(vertex);
            }
            CBlock_func graphics = ExpeditionToTnf::NewFunc(ExpeditionToTnf::k_Graphics);
            graphics << layer << std::move(path);
            entry << graphics;
            if (m_Diagnostics)
                ++m_Diagnostics->InFile().m_PlaneOutlines[ExpeditionDiagnostics::LayerKey(layer)];
        }
}

// A shape with voids is always written, its outline open; one without voids
// is a circle, or a closed polygon unless it has collapsed to nothing.
void ExpeditionToTnf::WritePlaneShapes(io::CBlock_stream& entry, const ExpeditionLayoutNet& net)
{
    for (const auto& [layer, shapes] : net.m_PlaneShapes)
        for (const ExpeditionPlaneShape& shape : shapes)
        {
            if (m_Diagnostics)
            {
                ExpeditionDiagnostics::Counts& written = m_Diagnostics->InFile();
                const std::string key = ExpeditionDiagnostics::LayerKey(layer);
                written.m_PlaneVoids[key] += shape.m_Voids.size();
                ++written.m_PlaneOutlines[key];
            }
            if (!shape.m_Voids.empty())
            {
                WritePolygonWithVoids(entry, layer, shape);
                continue;
            }
            const double accuracy = 1e-08;
            geom::Circle circle;
            CBlock_func graphics = ExpeditionToTnf::NewFunc(ExpeditionToTnf::k_Graphics);
            graphics << layer;
            if (shape.m_Polygon.IsCircle(accuracy, &circle))
            {
                graphics << CircleItem(++m_NextShapeId, shape.m_Width, circle);
                entry << graphics;
                continue;
            }
            const geom::Box box = shape.m_Polygon.GetBBox();
            if (shape.m_Polygon.IsSegment(accuracy, nullptr) ||
                (box.GetWidth().GetValue() <= accuracy && box.GetHeight().GetValue() <= accuracy) ||
                std::fabs(shape.m_Polygon.GetArea().GetValue()) < accuracy)
            {
                if (m_Diagnostics)
                    --m_Diagnostics->InFile().m_PlaneOutlines[ExpeditionDiagnostics::LayerKey(layer)];
                continue; // collapsed: dropped, and it takes no id
            }
            CBlock_func polygon = ExpeditionToTnf::NewFunc(ExpeditionToTnf::k_Polygon);
            polygon << ++m_NextShapeId << shape.m_Width;
            AddEdges(polygon, shape.m_Polygon.GetEdges(), true);
            graphics << std::move(polygon);
            entry << graphics;
        }
}

void ExpeditionToTnf::WritePolygonWithVoids(io::CBlock_stream& entry, const AString& layer,
                                            const ExpeditionPlaneShape& shape)
{
    io::CBlock_stream block(entry, L"PolygonWithVoids");
    block << io::CBlock_named_value(L"Layer", io::CBlock_value(layer));
    CBlock_func outline = ExpeditionToTnf::NewFunc(ExpeditionToTnf::k_Polygon);
    outline << ++m_NextShapeId << shape.m_Width;
    const std::vector<geom::Arc> edges = shape.m_Polygon.GetEdges();
    if (edges.size() == 1)
    {
        // A whole circle: sixty points around it, no arcs.
        std::vector<geom::Point> points;
        edges[0].GetPoints(60, true, points);
        for (const geom::Point& p : points)
        {
            CBlock_func vertex = ExpeditionToTnf::NewFunc(ExpeditionToTnf::k_Vertex);
            vertex << p.m_X.GetValue() << p.m_Y.GetValue();
            outline << std::move(vertex);
        }
    }
    else
        AddEdges(outline, edges, false);
    block << outline;
    io::CBlock_stream voids(block, L"voids");
    for (const ExpeditionPlanePolygon& hole : shape.m_Voids)
    {
        // A contour of one edge is a circle when that edge is whole, as the
        // polygon of it would answer.
        geom::Circumference round;
        const std::optional<geom::Arc> single = hole.GetSingleEdge();
        if (single && single->IsCircumference(&round))
        {
            voids << CircleItem(++m_NextShapeId, hole.m_Width,
                                geom::Circle(round.GetCenter(), round.GetRadius()));
            continue;
        }
        geom::Circle circle;
        const geom::Polygon contour = hole.GetPolygon();
        if (contour.IsCircle(contour.GetEpsilon(), &circle))
        {
            voids << CircleItem(++m_NextShapeId, hole.m_Width, circle);
            continue;
        }
        CBlock_func polygon = ExpeditionToTnf::NewFunc(ExpeditionToTnf::k_Polygon);
        polygon << ++m_NextShapeId << hole.m_Width;
        AddEdges(polygon, contour.GetEdges(), false);
        voids << polygon;
    }
}
