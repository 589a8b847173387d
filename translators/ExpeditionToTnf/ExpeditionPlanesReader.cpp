// ExpeditionPlanesReader.cpp - plane copper into the nets: the generated
// plane records of Layout.hkp, conductive areas, and Planes.hkp, the plane
// polygons in block form, each block an outline with its cut-outs; and the
// completion of the nets once all plane data is in.
#include "translators/ExpeditionToTnf/ExpeditionDiagnostics.h"
#include "translators/ExpeditionToTnf/ExpeditionKeyword.h"
#include "translators/ExpeditionToTnf/ExpeditionParser.h"

#include "core/lib/vellum/Assert.h"
#include "lib/math/geometry/Box.h"
#include "lib/math/geometry/Circle.h"
#include "lib/math/geometry/PolygonWithHoles.h"
#include "lib/math/geometry/PolygonWithHolesCollection.h"

#include <cmath>
#include <memory>

namespace
{
// The arcs of an XYR list: a triple behind which stands a centre makes an arc
// to the triple after the centre, any other a straight edge to the next one;
// the list closes on its first triple.
std::vector<geom::Arc> ArcsOfTriples(const std::vector<ExpeditionParser::XYRTriple>& t)
{
    std::vector<geom::Arc> arcs;
    for (size_t i = 0; i < t.size();)
    {
        const geom::Point from(t[i].x, t[i].y);
        if (i + 1 < t.size() && t[i + 1].r != 0.0)
        {
            const auto& to = i + 2 < t.size() ? t[i + 2] : t[0];
            arcs.emplace_back(geom::Segment(from, geom::Point(to.x, to.y)),
                              t[i + 1].r > 0.0 ? geom::k_CCW : geom::k_CW,
                              geom::Point(t[i + 1].x, t[i + 1].y));
            i += 2;
        }
        else
        {
            const auto& to = i + 1 < t.size() ? t[i + 1] : t[0];
            arcs.emplace_back(geom::Segment(from, geom::Point(to.x, to.y)));
            i += 1;
        }
    }
    return arcs;
}
} // namespace

void ExpeditionParser::AddGeneratedPlane(ExpeditionLayoutNet* net, const AString& layer,
                                         const GeneratedPlane& plane)
{
    if (m_Diagnostics)
        ++m_Diagnostics->InJob().m_PlaneContours[ExpeditionDiagnostics::LayerKey(layer)];
    if (!net)
        return; // a plane of no known net adds nothing
    geom::Polygon polygon;
    switch (plane.m_Kind)
    {
    case GeneratedPlane::k_Box:
        polygon = geom::Polygon(geom::Box(plane.m_Points[0].first, plane.m_Points[1].first,
                                          plane.m_Points[0].second, plane.m_Points[1].second),
                                0.0);
        break;
    case GeneratedPlane::k_Circle:
    {
        const double m_Radius = plane.m_Radius;
        VELLUM_ASSERT(m_Radius >= geom::k_Unit_0.GetValue());
        polygon = geom::Polygon(
            geom::Circle(geom::Point(plane.m_Points[0].first, plane.m_Points[0].second), m_Radius));
        break;
    }
    case GeneratedPlane::k_Points:
    {
        std::vector<geom::Point> points;
        for (const auto& [x, y] : plane.m_Points)
            points.emplace_back(x, y);
        polygon = geom::Polygon(points, true);
        if (points.size() < 3)
        {
            net->AddPlaneLine(ExpeditionPlanePolygon(polygon, plane.m_Width), layer);
            return;
        }
        break;
    }
    case GeneratedPlane::k_Arcs:
        polygon = geom::Polygon(ArcsOfTriples(plane.m_Triples), true);
        break;
    }
    net->AddPlaneOutline(polygon, plane.m_Width, layer, IsNegativeLayer(layer));
}

void ExpeditionParser::AddConductiveShapesAsPlanes(ExpeditionLayoutNet& net,
                                                   const std::vector<ExpeditionShapes*>& shapes)
{
    for (ExpeditionShapes* shape : shapes)
    {
        if (m_Diagnostics)
            ++m_Diagnostics->InJob().m_PlaneContours[ExpeditionDiagnostics::LayerKey(shape->GetLayerName())];
        if (const std::optional<geom::Polygon> polygon = ShapeToPolygon(shape))
            net.AddPlaneShape(ExpeditionPlaneShape(*polygon, shape->GetWidth(), {}), shape->GetLayerName());
    }
}

// A pin on a pad of several loops becomes plane copper of its net: no reader
// makes such pads, so this stands for completeness of the pin reader.
void ExpeditionParser::AddMultiLoopPinShapes(const AString& netName, const ExpeditionPadStack& padStack,
                                             double x, double y, const PlacementState& state,
                                             double /*factor*/)
{
    ExpeditionLayoutNet* net = FindNet(netName);
    std::unique_ptr<ExpeditionLayoutNet> alone;
    if (!net)
    {
        alone = std::make_unique<ExpeditionLayoutNet>(netName, std::vector<ExpeditionTrace*>(),
                                                      std::vector<ExpeditionVia*>(),
                                                      std::vector<ExpeditionShapes*>());
        net = alone.get();
    }
    // The pin's place, turned with the component and moved to it.
    const double angle = state.m_Rotation * 3.14159265358979323846 / 180.0;
    const geom::Vector move(state.m_X + x * std::cos(angle) - y * std::sin(angle),
                            state.m_Y + x * std::sin(angle) + y * std::cos(angle));
    const auto addPad = [&](const AString& padName, const AString& layer)
    {
        ExpeditionPad* pad = FindPad(padName);
        if (!pad)
            return;
        std::vector<ExpeditionShapes*> loops{pad->m_Shape};
        if (pad->IsMultiLoop())
            static_cast<ExpeditionMultiLoopPad*>(pad)->GetLoops(loops);
        for (ExpeditionShapes* loop : loops)
            if (const std::optional<geom::Polygon> polygon = ShapeToPolygon(loop))
            {
                std::vector<geom::Arc> moved;
                for (const geom::Arc& arc : polygon->GetEdges())
                    moved.emplace_back(arc.GetStart() + move, arc.GetEnd() + move, arc.GetHeight());
                net->AddPlaneShape(ExpeditionPlaneShape(geom::Polygon(moved, false), 0.0, {}), layer);
            }
    };
    addPad(padStack.m_TopPad, state.m_Mirrored ? GetBottomLayerName() : GetTopLayerName());
    addPad(padStack.m_BottomPad, state.m_Mirrored ? GetTopLayerName() : GetBottomLayerName());
}

void ExpeditionParser::CompleteNets()
{
    for (ExpeditionLayoutNet* net : m_Nets)
    {
        net->ResolvePlaneVoids();
        net->ResolvePlaneLines();
    }
}

namespace
{
// The contour of a plane block or a cut-out, edge by edge: a Seg ends an edge
// at its point, straight or along the Arc given before it. An item of no
// known kind ends an edge where the last Seg stood.
struct ContourWalk
{
    double m_Factor;
    bool m_First = true;
    geom::Point m_Previous, m_Current;
    bool m_ArcPending = false;
    geom::Point m_Centre;
    double m_Radius = 0.0;
    std::vector<geom::Arc> m_Arcs;

    explicit ContourWalk(double factor) : m_Factor(factor) {}

    void Edge()
    {
        if (m_ArcPending)
            m_Arcs.emplace_back(geom::Segment(m_Previous, m_Current),
                                m_Radius > 0.0 ? geom::k_CCW : geom::k_CW, m_Centre);
        else
            m_Arcs.emplace_back(geom::Segment(m_Previous, m_Current));
        m_ArcPending = false;
        m_Previous = m_Current;
    }
    // Seg, Arc and anything unknown; false for the other names.
    bool Take(io::CBlock_item* item)
    {
        auto* func = dynamic_cast<io::CBlock_func*>(item);
        if (func && IsKeyword_G(func->Name(), L"Seg"))
        {
            double x = 0.0, y = 0.0;
            *func >> x >> y;
            m_Current = geom::Point(x * m_Factor, y * m_Factor);
            if (m_First)
            {
                m_First = false;
                m_Previous = m_Current;
                return true;
            }
            Edge();
            return true;
        }
        if (func && IsKeyword_G(func->Name(), L"Arc"))
        {
            double x = 0.0, y = 0.0, r = 0.0;
            *func >> x >> y >> r;
            m_Centre = geom::Point(x * m_Factor, y * m_Factor);
            m_Radius = r * m_Factor;
            m_ArcPending = true;
            return true;
        }
        return false;
    }
};
} // namespace

namespace
{
// The lines of the blocks inside the file's Planes block, in the order of
// the file, for reports: the block reader keeps no positions.
std::vector<size_t> PlaneBlockLines(const io::CToken_istream& stream)
{
    std::vector<size_t> lines;
    const std::string_view text = stream.Data();
    int depth = 0;
    bool inPlanes = false;
    for (size_t start = 0; start < text.size();)
    {
        size_t end = text.find('\n', start);
        if (end == std::string_view::npos)
            end = text.size();
        std::string_view line = text.substr(start, end - start);
        const size_t first = line.find_first_not_of(" \t\r");
        line = first == std::string_view::npos ? std::string_view() : line.substr(first);
        if (line.substr(0, 6) == "$begin")
        {
            ++depth;
            if (depth == 1)
                inPlanes = line.find("'Planes'") != std::string_view::npos;
            else if (depth == 2 && inPlanes)
                lines.push_back(stream.LineOf(start));
        }
        else if (line.substr(0, 4) == "$end" && depth > 0)
        {
            --depth;
            if (depth == 0 && inPlanes)
                break;
        }
        start = end + 1;
    }
    return lines;
}
} // namespace

bool ExpeditionParser::ReadPlanes(double factor)
{
    // This file is looked for under this one spelling only.
    const LongFileName file(m_Directory + L"/Planes.hkp");
    if (!file.Exists())
        return false;
    io::CToken_istream stream(file, 0);
    ReadPlanes(stream, factor);
    return true;
}

void ExpeditionParser::ReadPlanes(io::CToken_istream& stream, double factor)
{
    const ExpeditionDiagnostics::FileScope reading(m_Diagnostics, stream);
    io::CBlock planes(L"Planes");
    stream >> planes;
    const std::vector<size_t> blockLines = m_Diagnostics ? PlaneBlockLines(stream) : std::vector<size_t>();
    size_t blocks = 0;
    for (auto it = planes.begin(); it != planes.end(); ++it)
    {
        io::CBlock_item* bit = planes.Item(it).Item();
        VELLUM_ASSERT(bit);
        if (auto* block = dynamic_cast<io::CBlock*>(bit))
        {
            if (m_Diagnostics)
                m_Diagnostics->SetLineHint(blocks < blockLines.size() ? blockLines[blocks] : 0);
            ++blocks;
            ReadPlaneBlock(*block, factor);
        }
    }
}

void ExpeditionParser::ReadPlaneBlock(io::CBlock& block, double factor)
{
    // Blocks of the placeholder kind carry no copper.
    if (block.FindNamedValue(L"DUMMY_APS"))
    {
        int dummy = 0;
        if (block.FindNamedValue(L"DUMMY_APS")->Value().Query(dummy))
            return;
    }
    ExpeditionLayoutNet* net = nullptr;
    int layerNumber = 0;
    double width = 0.0;
    ContourWalk walk(factor);
    std::vector<geom::Polygon> cutouts;
    for (auto it = block.begin(); it != block.end(); ++it)
    {
        io::CBlock_item* bit = block.Item(it).Item();
        VELLUM_ASSERT(bit);
        if (!bit || walk.Take(bit))
            continue;
        auto* func = dynamic_cast<io::CBlock_func*>(bit);
        auto* inner = dynamic_cast<io::CBlock*>(bit);
        if (func && IsKeyword_G(func->Name(), L"Net"))
        {
            AString name;
            *func >> name;
            net = FindNet(name);
        }
        else if (func && IsKeyword_G(func->Name(), L"Layer"))
        {
            AString text;
            *func >> text;
            long number = 0;
            if (text.IsNumber(number, 10))
                layerNumber = static_cast<int>(number);
        }
        else if (func && IsKeyword_G(func->Name(), L"width"))
        {
            *func >> width;
            width *= factor;
        }
        else if (inner && IsKeyword_G(inner->Name(), L"Cutouts"))
        {
            for (auto c = inner->begin(); c != inner->end(); ++c)
            {
                io::CBlock_item* cit = inner->Item(c).Item();
                VELLUM_ASSERT(cit);
                if (auto* contour = dynamic_cast<io::CBlock*>(cit))
                    cutouts.push_back(ReadPlaneCutout(*contour, factor));
            }
        }
        else
            walk.Edge();
    }
    if (m_Diagnostics)
    {
        const auto named = m_LayerNames.find(layerNumber);
        const AString layer = named == m_LayerNames.end() ? AString() : named->second;
        m_Diagnostics->InJob().m_PlaneContours[ExpeditionDiagnostics::LayerKey(layer)] += 1 + cutouts.size();
    }
    const geom::Polygon outline(walk.m_Arcs, true);
    if (outline.IsSegment(1e-08, nullptr) || outline.GetBBox().IsDegenerate(1e-08))
        return;
    if (!net && m_Diagnostics)
        m_Diagnostics->AtPosition("unresolved-net",
                                  "Plane block '" + ExpeditionDiagnostics::Text(block.Name()) +
                                      "' is left out: its net has no copper in the layout.");
    const AString layerName = m_LayerNames[layerNumber];
    const bool negative = IsNegativeLayer(layerName);
    std::vector<ExpeditionPlanePolygon> voids;
    if (!negative || std::fabs(width) < 2.220446049250313e-16)
    {
        for (const geom::Polygon& cutout : cutouts)
            voids.emplace_back(cutout, width);
        if (net)
            net->AddPlaneShape(ExpeditionPlaneShape(outline, negative ? 0.0 : width, voids), layerName);
        return;
    }
    // On a negative layer the pen's width is worked into each contour. A
    // contour thinner than the pen stays as drawn; of a contour that the
    // shrink cuts apart only the first piece is kept.
    size_t unshrunk = 0, droppedPieces = 0;
    const auto shrunk = [width, &unshrunk, &droppedPieces](const geom::Polygon& polygon)
    {
        const auto pieces = polygon.Shrink(width * 0.5, 1e-08, true, 0, 0.0).GetPolygonsWithHoles();
        unshrunk += pieces.empty() ? 1 : 0;
        droppedPieces += pieces.size() > 1 ? pieces.size() - 1 : 0;
        return pieces.empty() ? polygon : pieces.front().GetPolygon();
    };
    for (const geom::Polygon& cutout : cutouts)
        voids.emplace_back(shrunk(cutout), 0.0);
    if (net)
        net->AddPlaneShape(ExpeditionPlaneShape(shrunk(outline), 0.0, voids), layerName);
    if (!m_Diagnostics || !net)
        return;
    const std::string where = "Plane block '" + ExpeditionDiagnostics::Text(block.Name()) +
                              "' on negative layer " + ExpeditionDiagnostics::Text(layerName) + ": ";
    if (unshrunk > 0)
        m_Diagnostics->AtPosition(
            "negative-plane-unshrunk",
            where + std::to_string(unshrunk) +
                " contours thinner than the pen are kept as drawn, without the pen width.");
    if (droppedPieces > 0)
        m_Diagnostics->AtPosition("plane-dropped",
                                  where + std::to_string(droppedPieces) +
                                      " pieces that the pen width cuts off a contour are dropped.");
}

geom::Polygon ExpeditionParser::ReadPlaneCutout(io::CBlock& contour, double factor)
{
    ContourWalk walk(factor);
    for (auto it = contour.begin(); it != contour.end(); ++it)
    {
        io::CBlock_item* bit = contour.Item(it).Item();
        VELLUM_ASSERT(bit);
        if (!bit || walk.Take(bit))
            continue;
        auto* func = dynamic_cast<io::CBlock_func*>(bit);
        if (func && IsKeyword_G(func->Name(), L"circle"))
        {
            // A round cut-out; edges before it are lost.
            double x = 0.0, y = 0.0, m_Radius = 0.0;
            *func >> x >> y >> m_Radius;
            VELLUM_ASSERT(m_Radius >= geom::k_Unit_0.GetValue());
            return geom::Polygon(geom::Circle(geom::Point(x * factor, y * factor), m_Radius * factor));
        }
        if (func && IsKeyword_G(func->Name(), L"width"))
        {
            double dropped = 0.0;
            *func >> dropped;
            continue;
        }
        walk.Edge();
    }
    return geom::Polygon(walk.m_Arcs, true);
}
