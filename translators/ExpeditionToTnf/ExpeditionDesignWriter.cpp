// ExpeditionDesignWriter.cpp - PhysicalDimensions: the board outline as a
// polygon and its cut-outs as Cut items, spanning the stack-up from the top
// conductor to the bottom one.
//
// Its ids go on from those of the layout nets, which are written first.
#include "translators/ExpeditionToTnf/ExpeditionToTnf.h"

#include "core/lib/vellum/Assert.h"
#include "lib/math/geometry/Circle.h"
#include "lib/math/geometry/Polygon.h"

#include <utility>

using io::CBlock_func;
using io::CBlockPtr;

io::CBlock_func ExpeditionToTnf::NewFunc(RepeatedName name)
{
    static const io::CBlock_ptr<io::CBlock_value> items[k_RepeatedNames] = {
        io::CBlock_ptr<io::CBlock_value>(new io::CBlock_value(AString(L"vertex"))),
        io::CBlock_ptr<io::CBlock_value>(new io::CBlock_value(AString(L"Arc"))),
        io::CBlock_ptr<io::CBlock_value>(new io::CBlock_value(AString(L"Graphics"))),
        io::CBlock_ptr<io::CBlock_value>(new io::CBlock_value(AString(L"Path"))),
        io::CBlock_ptr<io::CBlock_value>(new io::CBlock_value(AString(L"Via"))),
        io::CBlock_ptr<io::CBlock_value>(new io::CBlock_value(AString(L"Circle"))),
        io::CBlock_ptr<io::CBlock_value>(new io::CBlock_value(AString(L"Polygon")))};
    return CBlock_func(items[name]);
}

namespace
{
void AddPathVertex(CBlock_func& function, const ExpeditionVertex& v, double width)
{
    // The end and corner style of every line, held once for the whole file.
    static const io::CBlock_ptr<io::CBlock_value> round(new io::CBlock_value(AString(L"Round")));
    static const io::CBlock_ptr<io::CBlock_value> mitered(new io::CBlock_value(AString(L"Radiallymitered")));
    CBlock_func vertex = ExpeditionToTnf::NewFunc(ExpeditionToTnf::k_Vertex);
    vertex << v.x << v.y << width << width << round << mitered << width;
    function << std::move(vertex);
    if (v.arcHeight != 0.0)
    {
        CBlock_func arc = ExpeditionToTnf::NewFunc(ExpeditionToTnf::k_Arc);
        arc << v.arcHeight;
        function << std::move(arc);
    }
}
} // namespace

void ExpeditionToTnf::AddPathVertices(CBlock_func& function, const std::vector<ExpeditionVertex*>& vertices,
                                      double width)
{
    for (const ExpeditionVertex* v : vertices)
        AddPathVertex(function, *v, width);
}

void ExpeditionToTnf::AddPathVertices(CBlock_func& function, const std::vector<ExpeditionVertex>& vertices,
                                      double width)
{
    for (const ExpeditionVertex& v : vertices)
        AddPathVertex(function, v, width);
}

// The outline is always written as a polygon; a path or polygon with too few
// vertices uses its id and writes nothing.
void ExpeditionToTnf::WriteBoardOutline(io::CBlock& block, ExpeditionShapes& outline)
{
    CBlock_func polygon = ExpeditionToTnf::NewFunc(ExpeditionToTnf::k_Polygon);
    if (ExpeditionPath* path = outline.AsPath())
    {
        polygon << ++m_NextShapeId << path->m_Width;
        if (path->m_Vertices.size() < 2)
            return;
        AddVertices(polygon, path->m_Vertices);
    }
    else if (ExpeditionPolygon* shape = outline.AsPolygon())
    {
        polygon << ++m_NextShapeId << 0.0;
        if (shape->m_Vertices.size() < 3)
            return;
        AddVertices(polygon, shape->m_Vertices);
    }
    else if (ExpeditionRectangle* rect = outline.AsRectangle())
    {
        polygon << ++m_NextShapeId << rect->GetWidth();
        const double corners[4][2] = {{rect->m_X1, rect->m_Y1},
                                      {rect->m_X2, rect->m_Y1},
                                      {rect->m_X2, rect->m_Y2},
                                      {rect->m_X1, rect->m_Y2}};
        for (const auto& corner : corners)
        {
            CBlock_func vertex = ExpeditionToTnf::NewFunc(ExpeditionToTnf::k_Vertex);
            vertex << corner[0] << corner[1];
            polygon << std::move(vertex);
        }
    }
    else if (ExpeditionCircle* circle = outline.AsCircle())
    {
        polygon << ++m_NextShapeId << circle->GetWidth();
        // A round board: points every 20 degrees around, the last on the first.
        const geom::Polygon round(geom::Circle(geom::Point(circle->m_X, circle->m_Y), circle->m_Radius));
        for (const geom::Point& p : round.GetPoints(geom::Angle(20.0, geom::k_Degrees), true, 50))
        {
            CBlock_func vertex = ExpeditionToTnf::NewFunc(ExpeditionToTnf::k_Vertex);
            vertex << p.m_X.GetValue() << p.m_Y.GetValue();
            polygon << std::move(vertex);
        }
    }
    else
        return;
    block << polygon;
}

// A cut-out keeps its kind; one with too few vertices takes no id.
void ExpeditionToTnf::WriteBoardCut(io::CBlock& block, ExpeditionShapes& contour)
{
    CBlock_func shape = ExpeditionToTnf::NewFunc(ExpeditionToTnf::k_Polygon);
    if (ExpeditionPath* path = contour.AsPath())
    {
        if (path->m_Vertices.size() < 2)
            return;
        shape = CBlock_func(L"Path");
        shape << ++m_NextShapeId;
        AddPathVertices(shape, path->m_Vertices, path->m_Width);
    }
    else if (ExpeditionPolygon* polygon = contour.AsPolygon())
    {
        if (polygon->m_Vertices.size() < 3)
            return;
        shape << ++m_NextShapeId << 0.0;
        AddVertices(shape, polygon->m_Vertices);
    }
    else if (ExpeditionCircle* circle = contour.AsCircle())
    {
        shape = CBlock_func(L"Circle");
        shape << ++m_NextShapeId << circle->GetWidth() << circle->m_X << circle->m_Y
              << 2.0 * circle->m_Radius;
    }
    else if (ExpeditionRectangle* rect = contour.AsRectangle())
    {
        shape = CBlock_func(L"Rectangle");
        shape << ++m_NextShapeId << rect->GetWidth() << (rect->m_X1 + rect->m_X2) * 0.5
              << (rect->m_Y1 + rect->m_Y2) * 0.5 << rect->m_X2 - rect->m_X1 << rect->m_Y2 - rect->m_Y1 << 0;
    }
    else
        return;
    AString bottom;
    bottom.Format(L"SIGNAL_%d", m_PhysicalLayers);
    CBlock_func cut(L"Cut");
    cut << AString(L"SIGNAL_1") << bottom << shape;
    block << cut;
}

CBlockPtr ExpeditionToTnf::WritePhysicalDimensions(ElementList& elements)
{
    CBlockPtr block(L"PhysicalDimensions");
    for (ExpeditionBaseElement* element : elements)
    {
        const ExpeditionBoard* board = element->AsBoard();
        if (!board)
            continue;
        ExpeditionShapes* shapePtr = board->m_Outline;
        VELLUM_ASSERT(shapePtr);
        if (!shapePtr)
            break; // the block ends with what it has
        WriteBoardOutline(*block, *shapePtr);
        for (ExpeditionShapes* contour : board->m_Contours)
            if (contour)
                WriteBoardCut(*block, *contour);
    }
    return block;
}
