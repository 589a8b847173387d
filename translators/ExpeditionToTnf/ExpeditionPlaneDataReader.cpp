// ExpeditionPlaneDataReader.cpp - the copper areas of Layout.hkp: conductive
// areas, obstructs, and the plane polygons that the layout tool generated.
#include "translators/ExpeditionToTnf/ExpeditionDiagnostics.h"
#include "translators/ExpeditionToTnf/ExpeditionKeyword.h"
#include "translators/ExpeditionToTnf/ExpeditionParser.h"
#include "translators/ExpeditionToTnf/ExpeditionReaderCursor.h"

#include <cfloat>

namespace
{
bool IsSkippedAreaLine(const AString& token)
{
    static const wchar_t* const words[] = {L"TEXT",          L"SHAPE_OPTIONS",       L"HATCH_SPACING",
                                           L"HATCH_WIDTH",   L"HATCH_METAL_PERCENT", L"DIMENSION_DATA",
                                           L"HATCH_PATTERN", L"TEXT_TYPE",           L"PID"};
    for (const wchar_t* w : words)
        if (IsKeyword_G(token, w))
            return true;
    return false;
}

} // namespace

// One CONDUCTIVE_AREA record. Hatching is not kept: a hatched area counts as
// solid. An area with the option PLANE gives nothing here, as its copper comes
// with the generated plane data; a teardrop keeps its rectangle or circle.
void ExpeditionParser::ReadConductiveAreaRecord(ExpeditionReaderCursor& at,
                                                std::vector<ExpeditionShapes*>& shapes, AString& netName)
{
    io::CToken_istream& stream = at.m_Stream;
    const AString& token = at.m_Token;
    const double factor = at.m_Factor;
    AString layer, option, word;
    bool teardrop = false;
    ExpeditionShapes* rectOrCircle = nullptr;
    ExpeditionShapes* polygon = nullptr;
    const auto replace = [](ExpeditionShapes*& slot, ExpeditionShapes* shape)
    {
        delete slot;
        slot = shape;
    };
    netName.clear();
    while (!at.AtEnd())
    {
        at.Next();
        if (IsKeyword_G(token, L"ROUTE_LYR"))
        {
            stream >> word;
            layer = LayerNameOfWord(word);
        }
        else if (IsKeyword_G(token, L"NETNAME"))
            stream >> netName;
        else if (IsKeyword_G(token, L"CONDUCTIVE_AREA_OPTIONS"))
        {
            stream >> option;
            if (IsKeyword_G(option, L"FIXED"))
            {
                stream >> word;
                teardrop = teardrop || IsKeyword_G(word, L"TEARDROP");
            }
        }
        else if (IsSkippedAreaLine(token))
            stream.NewLine();
        else if (IsKeyword_G(token, L"RECT_SHAPE"))
        {
            at.Next();
            if (IsKeyword_G(token, L"XY"))
            {
                double x1 = 0, y1 = 0, x2 = 0, y2 = 0;
                ReadCorners(stream, x1, y1, x2, y2);
                replace(rectOrCircle, new ExpeditionRectangle(layer, x1 * factor, y1 * factor, x2 * factor,
                                                              y2 * factor, 0.0));
            }
        }
        else if (IsKeyword_G(token, L"CIRCLE_SHAPE"))
        {
            double x = 0, y = 0, radius = 0;
            bool hasXY = false, hasRadius = false, leaveRecord = false;
            while (!at.AtEnd() && !(hasXY && hasRadius))
            {
                at.Next();
                if (at.m_Level < k_TwoDots)
                {
                    leaveRecord = true;
                    break;
                }
                if (IsKeyword_G(token, L"XY"))
                {
                    ReadCentre(stream, x, y);
                    hasXY = true;
                }
                else if (IsKeyword_G(token, L"RADIUS"))
                {
                    stream >> radius;
                    hasRadius = true;
                }
                else
                    stream.NewLine();
            }
            replace(rectOrCircle, new ExpeditionCircle(layer, x * factor, y * factor, radius * factor, 0.0));
            if (leaveRecord)
                break;
        }
        else if (IsKeyword_G(token, L"POLYLINE_SHAPE") || IsKeyword_G(token, L"POLYARC_SHAPE"))
        {
            std::vector<ExpeditionVertex*> vertices;
            if (IsKeyword_G(token, L"POLYLINE_SHAPE"))
                ReadPolyline(stream, vertices, factor);
            else
                ReadPolyarc(stream, vertices, factor);
            replace(polygon, new ExpeditionPolygon(layer, vertices, 0.0));
        }
        else
            break;
    }
    const bool plane = IsKeyword_G(option, L"PLANE");
    if (rectOrCircle && (teardrop || !plane))
        shapes.push_back(rectOrCircle);
    else
        delete rectOrCircle;
    if (polygon && !plane)
        shapes.push_back(polygon);
    else
        delete polygon;
}

// A list of CONDUCTIVE_AREA records, or of OBSTRUCT records, which all belong
// to the one net "VOIDNET". The shapes of each net are flushed when the next
// record or the end of the list comes; at the end of the file they are lost.
void ExpeditionParser::ReadConductiveAreas(ExpeditionReaderCursor at, int limit, bool obstructs,
                                           ElementList& elements)
{
    io::CToken_istream& stream = at.m_Stream;
    const AString& token = at.m_Token;
    const wchar_t* const keyword = obstructs ? L"OBSTRUCT" : L"CONDUCTIVE_AREA";
    std::vector<ExpeditionShapes*> shapes;
    AString netName(L"."); // no record yet
    at.m_Level = limit;
    const auto flush = [&]()
    {
        if (netName == L".")
            return;
        if (obstructs)
            AddShapesToNet(netName, shapes, elements);
        else
            FlushConductiveAreas(netName, shapes, elements);
        shapes.clear();
    };
    while (!at.AtEnd())
    {
        if (IsKeyword_G(token, keyword))
        {
            flush();
            AString name;
            if (obstructs)
                stream >> name; // the value on the OBSTRUCT line
            ReadConductiveAreaRecord(at, shapes, name);
            netName = obstructs ? AString(L"VOIDNET") : name;
            continue;
        }
        if (IsKeyword_G(token, L"UNITS"))
        {
            AString text;
            stream.NewLine(text);
            at.m_Factor = UnitFactor(text);
            at.Next();
            continue;
        }
        const bool ends = IsPlacedCellKeyword(token) || IsKeyword_G(token, L"NET") ||
                          (obstructs && IsKeyword_G(token, L"CONDUCTIVE_AREA")) || at.m_Level <= limit;
        if (ends && netName != L".")
        {
            flush();
            return;
        }
        stream.NewLine();
        at.Next();
    }
    DeleteOwned_G(shapes);
}

// A conductive area of a net that exists already adds plane shapes only; a new
// net takes the shapes as well.
void ExpeditionParser::FlushConductiveAreas(const AString& netName, std::vector<ExpeditionShapes*>& shapes,
                                            ElementList& elements)
{
    bool made = false;
    ExpeditionLayoutNet* net = GetOrMakeNet(netName, elements, {}, {}, shapes, made);
    AddConductiveShapesAsPlanes(*net, shapes);
    if (!made)
        DeleteOwned_G(shapes);
}

// GENERATED_DATA: the plane polygons the layout tool computed, one record per
// outline or void. With a Planes.hkp beside the layout, only the tie legs are
// taken from here.
void ExpeditionParser::ReadGeneratedData(ExpeditionReaderCursor at, bool hasPlanesFile)
{
    io::CToken_istream& stream = at.m_Stream;
    const AString& token = at.m_Token;
    AString layer, word;
    ExpeditionLayoutNet* net = nullptr;
    while (!at.AtEnd())
    {
        at.Next();
        if (IsKeyword_G(token, L"PLANE_LYR"))
        {
            stream >> word;
            layer = LayerNameOfWord(word);
        }
        else if (IsKeyword_G(token, L"DIMENSION"))
            return;
        else if (IsKeyword_G(token, L"PLANE_NET"))
        {
            stream >> word;
            net = FindNet(word);
            if (!net && m_Diagnostics)
                m_Diagnostics->AtToken(stream, "unresolved-net",
                                       "The generated plane data of net \"" +
                                           ExpeditionDiagnostics::Text(word) +
                                           "\" is left out: no net of that name has copper in the layout.");
        }
        else if (!hasPlanesFile && IsKeyword_G(token, L"RECT_PATH"))
            ReadGeneratedRectangle(at, net, layer);
        else if (!hasPlanesFile && IsKeyword_G(token, L"CIRCLE_PATH"))
            ReadGeneratedCircle(at, net, layer);
        else if (!hasPlanesFile && IsKeyword_G(token, L"POLYLINE_PATH"))
            ReadGeneratedPolyline(at, net, layer);
        else if (!hasPlanesFile &&
                 (IsKeyword_G(token, L"POLYARC_PATH") || IsKeyword_G(token, L"POLYARC_SHAPE")))
            ReadGeneratedPolyarc(at, net, layer, IsKeyword_G(token, L"POLYARC_PATH"));
        else if (hasPlanesFile && IsKeyword_G(token, L"APS_TIE_LEG"))
            ReadTieLeg(at, net, layer);
        // Any other token means nothing here, a value behind an unknown
        // keyword included.
    }
}

void ExpeditionParser::ReadGeneratedRectangle(ExpeditionReaderCursor& at, ExpeditionLayoutNet* net,
                                              const AString& layer)
{
    io::CToken_istream& stream = at.m_Stream;
    const AString& token = at.m_Token;
    const double factor = at.m_Factor;
    double width = 0.0;
    at.Next();
    if (IsKeyword_G(token, L"WIDTH"))
    {
        stream >> width;
        width *= factor;
        at.Next();
    }
    if (!IsKeyword_G(token, L"XY"))
        return;
    double x1 = 0, y1 = 0, x2 = 0, y2 = 0;
    ReadCorners(stream, x1, y1, x2, y2);
    GeneratedPlane plane;
    plane.m_Kind = GeneratedPlane::k_Box;
    plane.m_Points = {{std::min(x1, x2) * factor, std::min(y1, y2) * factor},
                      {std::max(x1, x2) * factor, std::max(y1, y2) * factor}};
    plane.m_Width = width;
    AddGeneratedPlane(net, layer, plane);
}

void ExpeditionParser::ReadGeneratedCircle(ExpeditionReaderCursor& at, ExpeditionLayoutNet* net,
                                           const AString& layer)
{
    io::CToken_istream& stream = at.m_Stream;
    const AString& token = at.m_Token;
    const double factor = at.m_Factor;
    double width = 0.0, radius = 0.0, x = 0.0, y = 0.0;
    bool hasXY = false, hasRadius = false;
    while (!at.AtEnd() && !(hasXY && hasRadius))
    {
        at.Next();
        if (IsKeyword_G(token, L"WIDTH"))
        {
            stream >> width;
            width *= factor;
        }
        else if (IsKeyword_G(token, L"XY"))
        {
            ReadCentre(stream, x, y);
            x *= factor;
            y *= factor;
            hasXY = true;
        }
        else if (IsKeyword_G(token, L"RADIUS"))
        {
            stream >> radius;
            radius *= factor;
            hasRadius = true;
        }
        else
            stream.NewLine();
    }
    GeneratedPlane plane;
    plane.m_Kind = GeneratedPlane::k_Circle;
    plane.m_Points = {{x, y}};
    plane.m_Radius = radius;
    plane.m_Width = width;
    AddGeneratedPlane(net, layer, plane);
}

// The points are read over the largest float, so that a pair the file leaves
// unreadable is recognised and dropped.
void ExpeditionParser::ReadGeneratedPolyline(ExpeditionReaderCursor& at, ExpeditionLayoutNet* net,
                                             const AString& layer)
{
    io::CToken_istream& stream = at.m_Stream;
    const AString& token = at.m_Token;
    const double factor = at.m_Factor;
    GeneratedPlane plane;
    plane.m_Kind = GeneratedPlane::k_Points;
    at.Next();
    if (IsKeyword_G(token, L"WIDTH"))
    {
        stream >> plane.m_Width;
        plane.m_Width *= factor;
    }
    // The point list as ReadPolyline finds it: behind the next XY keyword.
    while (!at.AtEnd())
    {
        at.Next();
        if (IsKeyword_G(token, L"XY"))
            break;
    }
    AString scratch;
    const double unread = 3.4028234663852886e38;
    while (!at.AtEnd())
    {
        stream >> scratch;
        if (scratch == L".")
            break;
        double x = unread, y = unread;
        stream >> x >> scratch >> y >> scratch;
        if (x == unread && y == unread)
            continue;
        plane.m_Points.push_back({x * factor, y * factor});
    }
    AddGeneratedPlane(net, layer, plane);
}

void ExpeditionParser::ReadGeneratedPolyarc(ExpeditionReaderCursor& at, ExpeditionLayoutNet* net,
                                            const AString& layer, bool withWidth)
{
    io::CToken_istream& stream = at.m_Stream;
    const AString& token = at.m_Token;
    const double factor = at.m_Factor;
    GeneratedPlane plane;
    plane.m_Kind = GeneratedPlane::k_Arcs;
    if (withWidth)
    {
        at.Next();
        if (IsKeyword_G(token, L"WIDTH"))
        {
            stream >> plane.m_Width;
            plane.m_Width *= factor;
        }
    }
    ReadXYRTriples(stream, plane.m_Triples, factor);
    if (withWidth) // the polyarc shape is read and dropped
        AddGeneratedPlane(net, layer, plane);
}

// A tie leg of a thermal connection: a two-point trace of the plane's net.
void ExpeditionParser::ReadTieLeg(ExpeditionReaderCursor& at, ExpeditionLayoutNet* net, const AString& layer)
{
    io::CToken_istream& stream = at.m_Stream;
    const AString& token = at.m_Token;
    const double factor = at.m_Factor;
    double width = 0.0;
    while (!at.AtEnd())
    {
        at.Next();
        if (IsKeyword_G(token, L"WIDTH"))
        {
            stream >> width;
            width *= factor;
        }
        else if (IsKeyword_G(token, L"XY"))
            break;
    }
    if (at.AtEnd())
        return;
    double x1 = 0, y1 = 0, x2 = 0, y2 = 0;
    ReadCorners(stream, x1, y1, x2, y2);
    if (m_Diagnostics)
        ++m_Diagnostics->InJob().m_Traces[ExpeditionDiagnostics::LayerKey(layer)];
    if (!net)
        return; // a tie leg of no known net has no owner
    net->m_Traces.push_back(new ExpeditionTrace(
        layer, AString(), AString(), width,
        {ExpeditionVertex(x1 * factor, y1 * factor, 0.0), ExpeditionVertex(x2 * factor, y2 * factor, 0.0)}));
}
