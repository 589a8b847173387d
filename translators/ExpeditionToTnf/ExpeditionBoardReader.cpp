// ExpeditionBoardReader.cpp - the board outline with its contours, and the
// route outline, of Layout.hkp.
#include "translators/ExpeditionToTnf/ExpeditionKeyword.h"
#include "translators/ExpeditionToTnf/ExpeditionParser.h"
#include "translators/ExpeditionToTnf/ExpeditionReaderCursor.h"

#include "core/lib/vellum/Assert.h"

#include <cmath>
#include <cstdlib>

namespace
{
std::vector<ExpeditionVertex*> CopyVertices(const std::vector<ExpeditionVertex*>& vertices)
{
    std::vector<ExpeditionVertex*> copy;
    copy.reserve(vertices.size());
    for (const ExpeditionVertex* v : vertices)
        copy.push_back(new ExpeditionVertex(*v));
    return copy;
}

// The same shape on another layer, with vertices of its own.
ExpeditionShapes* CopyShapeOnLayer(ExpeditionShapes* shape, const AString& layer)
{
    if (ExpeditionPolygon* polygon = shape->AsPolygon())
        return new ExpeditionPolygon(layer, CopyVertices(polygon->m_Vertices), polygon->m_Width);
    if (ExpeditionRectangle* r = shape->AsRectangle())
        return new ExpeditionRectangle(layer, r->m_X1, r->m_Y1, r->m_X2, r->m_Y2, r->m_Width);
    if (ExpeditionCircle* c = shape->AsCircle())
        return new ExpeditionCircle(layer, c->m_X, c->m_Y, c->m_Radius, c->m_Width);
    if (ExpeditionPath* p = shape->AsPath())
        return new ExpeditionPath(layer, p->m_Width, CopyVertices(p->m_Vertices));
    return nullptr;
}
} // namespace

void ExpeditionParser::ReadBoard(ExpeditionReaderCursor at, ElementList& elements)
{
    io::CToken_istream& stream = at.m_Stream;
    AString& token = at.m_Token;
    const double factor = at.m_Factor;
    const AString board(L"Board");
    double originX = 0.0, originY = 0.0;
    double width = 0.0; // not reset: contours without WIDTH take the outline's
    ExpeditionShapes* outline = nullptr;
    std::vector<ExpeditionShapes*> contours;
    AString scratch;
    const auto readShape = [&](const AString& kind) -> ExpeditionShapes*
    {
        PathRecord path;
        path.m_Width = width;
        ReadPathRecord(stream, token, path);
        width = path.m_Width;
        ExpeditionShapes* shape = MakePathShape(kind, board, path, factor, false);
        DeleteOwned_G(path.m_Vertices);
        return shape;
    };

    while (!at.AtEnd())
    {
        if (IsKeyword_G(token, L"BOARD_ORIGIN"))
        {
            at.Next();
            if (IsKeyword_G(token, L"XY"))
            {
                stream >> scratch;
                if (scratch == L"(")
                    stream >> originX >> scratch >> originY >> scratch;
                else
                {
                    const double glued = std::atof(scratch.AsAnsi().c_str());
                    originX = std::isfinite(glued) ? glued : 0.0; // "nan" or "inf" is no number
                    stream >> scratch >> originY;
                }
            }
            at.Next();
        }
        else if (IsKeyword_G(token, L"BOARD_OUTLINE"))
        {
            at.Next();
            if (IsKeyword_G(token, L"GROUP_ID"))
            {
                stream >> scratch;
                at.Next();
            }
            if (IsPathKeyword(token))
            {
                if (ExpeditionShapes* shape = readShape(AString(token)))
                {
                    delete outline; // a second outline replaces the first
                    outline = shape;
                }
            }
            at.Next();
        }
        else if (IsKeyword_G(token, L"CONTOUR"))
        {
            stream >> scratch;
            while (!at.AtEnd())
            {
                at.Next();
                if (IsKeyword_G(token, L"COMP") || IsKeyword_G(token, L"HOLE") ||
                    IsKeyword_G(token, L"DIRECTION"))
                    stream >> scratch;
                else if (IsPathKeyword(token))
                {
                    if (ExpeditionShapes* shape = readShape(AString(token)))
                        contours.push_back(shape);
                }
                else
                    break;
            }
        }
        else if (IsKeyword_G(token, L"GROUP_ID"))
        {
            stream >> scratch;
            at.Next();
        }
        else if (IsKeyword_G(token, L"DIMENSION_DATA"))
            at.Next();
        else
            break;
    }
    ExpeditionShapes* shapePtr = outline;
    VELLUM_ASSERT(shapePtr);
    elements.push_back(new ExpeditionBoard(originX * factor, originY * factor, outline, contours));
}

void ExpeditionParser::ReadRouteOutline(ExpeditionReaderCursor at, ElementList& elements)
{
    io::CToken_istream& stream = at.m_Stream;
    AString& token = at.m_Token;
    const double factor = at.m_Factor;
    AString scratch;
    while (!at.AtEnd())
    {
        at.Next();
        ExpeditionShapes* shape = nullptr;
        if (IsPathKeyword(token))
        {
            const AString kind = token;
            PathRecord path;
            ReadPathRecord(stream, token, path);
            // The polyline kinds make a filled outline, not a path.
            shape = MakePathShape(kind, AString(), path, factor,
                                  IsKeyword_G(kind, L"POLYLINE_PATH") || IsKeyword_G(kind, L"POLYARC_PATH"));
            DeleteOwned_G(path.m_Vertices);
            if (!shape)
                continue;
        }
        else if (IsKeyword_G(token, L"GROUP_ID") || IsKeyword_G(token, L"DIMENSION_DATA"))
        {
            stream >> scratch;
            continue;
        }
        else if (at.m_Level < k_TwoDots)
            return;
        else
        {
            stream.NewLine();
            continue;
        }
        delete m_RouteBorder;
        m_RouteBorder = shape;
        // The plane nets that use the route border get it on their layers.
        for (const auto& [netName, layerName] : m_PlaneNets)
            if (ExpeditionShapes* copy = CopyShapeOnLayer(shape, layerName))
                AddShapesToNet(netName, {copy}, elements);
    }
}
