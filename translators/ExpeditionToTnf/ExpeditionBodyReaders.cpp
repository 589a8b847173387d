// ExpeditionBodyReaders.cpp - the records that cells and the placed layout
// share: pins, graphics, texts, traces and vias, and the path records inside
// them.
//
// Each reader is entered with its keyword in the current token, reads its
// sub-lines by keyword, and leaves the keyword that ended the record in the
// token for its caller. Parameter lines are read by position: a path keyword
// expects its WIDTH line first, and a path without one loses its XY keyword to
// that test, so the point list of the next record in the file is taken. The
// layout tool always writes WIDTH, and the quirk is kept.
#include "translators/ExpeditionToTnf/ExpeditionDiagnostics.h"
#include "translators/ExpeditionToTnf/ExpeditionKeyword.h"
#include "translators/ExpeditionToTnf/ExpeditionParser.h"
#include "translators/ExpeditionToTnf/ExpeditionReaderCursor.h"

#include "core/lib/vellum/Assert.h"

#include <cstdlib>

namespace
{
// The drawing layer that a graphic keyword stands for.
AString GraphicLayer(const AString& keyword)
{
    if (IsKeyword_G(keyword, L"ASSEMBLY_OUTLINE"))
        return AString(L"ASSEMBLY_TOP");
    if (IsKeyword_G(keyword, L"SILKSCREEN_OUTLINE"))
        return AString(L"SILKSCREEN_TOP");
    if (IsKeyword_G(keyword, L"SOLDER_MASK"))
        return AString(L"SOLDERMASK_TOP");
    if (IsKeyword_G(keyword, L"SOLDER_PASTE"))
        return AString(L"SOLDERPASTE_TOP");
    if (IsKeyword_G(keyword, L"PLACEMENT_OUTLINE"))
        return AString(L"PLACEMENT_TOP");
    return AString(L"PLACEMENT");
}

// The layer of a text: the mounting-side words of silkscreen, assembly and
// soldermask all come to the top drawing layers; other words stay as they are.
AString TextLayer(const AString& word)
{
    static const wchar_t* const silkscreen[] = {L"MNT_LYR",
                                                L"OPP_LYR",
                                                L"SILKSCREEN_MNT_LYR",
                                                L"SILKSCREEN_OPP_LYR",
                                                L"SILKSCREEN_BOTH_TOP_BOTTOM",
                                                L"SILKSCREEN_BOTH_MNT_OPP"};
    static const wchar_t* const soldermask[] = {L"SOLDERMASK_MNT_LYR", L"SOLDERMASK_OPP_LYR",
                                                L"SOLDERMASK_BOTH_TOP_BOTTOM", L"SOLDERMASK_BOTH_MNT_OPP"};
    for (const wchar_t* w : silkscreen)
        if (IsKeyword_G(word, w))
            return AString(L"SILKSCREEN_TOP");
    if (IsKeyword_G(word, L"ASSEMBLY") || IsKeyword_G(word, L"ASSEMBLY_BOTH_TOP_BOTTOM"))
        return AString(L"ASSEMBLY_TOP");
    for (const wchar_t* w : soldermask)
        if (IsKeyword_G(word, w))
            return AString(L"SOLDERMASK_TOP");
    return word;
}
} // namespace

bool ExpeditionParser::ReadPathRecord(io::CToken_istream& stream, AString& token, PathRecord& path)
{
    const AString kind = token;
    path.m_HasXY = false;
    NextToken(stream, token);
    if (IsKeyword_G(token, L"WIDTH"))
        stream >> path.m_Width;
    if (IsKeyword_G(kind, L"POLYLINE_PATH"))
        ReadPolyline(stream, path.m_Vertices, 1.0);
    else if (IsKeyword_G(kind, L"POLYARC_PATH"))
        ReadPolyarc(stream, path.m_Vertices, 1.0);
    else if (IsKeyword_G(kind, L"RECT_PATH"))
    {
        NextToken(stream, token);
        if (IsKeyword_G(token, L"XY"))
        {
            ReadCorners(stream, path.m_X1, path.m_Y1, path.m_X2, path.m_Y2);
            path.m_HasXY = true;
        }
    }
    else if (IsKeyword_G(kind, L"CIRCLE_PATH"))
    {
        NextToken(stream, token);
        if (IsKeyword_G(token, L"XY"))
        {
            ReadCentre(stream, path.m_X1, path.m_Y1);
            path.m_HasXY = true;
        }
        NextToken(stream, token);
        if (IsKeyword_G(token, L"RADIUS"))
            stream >> path.m_Radius;
    }
    else
        return false;
    return true;
}

bool ExpeditionParser::IsPathKeyword(const AString& token)
{
    return IsKeyword_G(token, L"POLYLINE_PATH") || IsKeyword_G(token, L"POLYARC_PATH") ||
           IsKeyword_G(token, L"RECT_PATH") || IsKeyword_G(token, L"CIRCLE_PATH");
}

ExpeditionShapes* ExpeditionParser::MakePathShape(const AString& kind, const AString& layer, PathRecord& path,
                                                  double factor, bool filledPolygon)
{
    if (IsKeyword_G(kind, L"RECT_PATH"))
    {
        if (!path.m_HasXY)
            return nullptr;
        return new ExpeditionRectangle(layer, path.m_X1 * factor, path.m_Y1 * factor, path.m_X2 * factor,
                                       path.m_Y2 * factor, path.m_Width * factor);
    }
    if (IsKeyword_G(kind, L"CIRCLE_PATH"))
        return new ExpeditionCircle(layer, path.m_X1 * factor, path.m_Y1 * factor, path.m_Radius * factor,
                                    0.0);
    std::vector<ExpeditionVertex*> vertices;
    vertices.swap(path.m_Vertices);
    for (ExpeditionVertex* v : vertices)
    {
        v->x *= factor;
        v->y *= factor;
        v->arcHeight *= factor;
    }
    if (filledPolygon)
        return new ExpeditionPolygon(layer, vertices, path.m_Width * factor);
    return new ExpeditionPath(layer, path.m_Width * factor, vertices);
}

AString ExpeditionParser::LayerNameOfWord(const AString& word)
{
    const AString digits = word.substr(word.rfind(L'_', AString::npos) + 1, AString::npos);
    const int number = std::atoi(digits.AsAnsi().c_str());
    if (number >= 1 && static_cast<size_t>(number) <= m_LayerNames.size())
        return m_LayerNames[number];
    return GetMountLayerName(word);
}

void ExpeditionParser::ReadPinLines(ExpeditionReaderCursor at, bool placed, PinRecord& pin)
{
    io::CToken_istream& stream = at.m_Stream;
    const AString& token = at.m_Token;
    stream >> pin.m_Name;
    while (!at.AtEnd())
    {
        const int level = at.Next();
        if (IsKeyword_G(token, L"NETNAME"))
            stream >> pin.m_NetName;
        else if (IsKeyword_G(token, L"XY"))
            ReadXY(stream, pin.m_X, pin.m_Y);
        else if (IsKeyword_G(token, L"ROTATION"))
            stream >> pin.m_Rotation;
        else if (IsKeyword_G(token, L"PIN_OPTIONS"))
        {
            stream >> pin.m_Options;
            if (IsKeyword_G(pin.m_Options, L"OPP_SIDE"))
                m_OppSidePadStacks.insert(pin.m_PadStackName); // the name as read so far
        }
        else if (IsKeyword_G(token, L"PADSTACK"))
        {
            stream >> pin.m_PadStackName;
            if (m_Diagnostics && !placed)
                m_Diagnostics->NameGiven(ExpeditionDiagnostics::k_PadStackName, pin.m_PadStackName, stream);
        }
        else if (IsKeyword_G(token, L"TEXT") && level == k_ThreeDots)
        {
            AString attribute, value;
            stream >> attribute >> value;
            pin.m_Attributes.emplace_back(attribute, value);
        }
        else if (placed && IsKeyword_G(token, L"PID"))
            stream.NewLine();
        else
            break;
    }
    if (IsKeyword_G(pin.m_Options, L"OPP_SIDE"))
        pin.m_Rotation = 180.0 - pin.m_Rotation;
}

ExpeditionPin* ExpeditionParser::ReadCellPin(ExpeditionReaderCursor at)
{
    const double factor = at.m_Factor;
    PinRecord pin;
    ReadPinLines(at, false, pin);
    return new ExpeditionPin(pin.m_Name, pin.m_NetName, pin.m_PadStackName, pin.m_X * factor,
                             pin.m_Y * factor, pin.m_Rotation, pin.m_Options, pin.m_Attributes);
}

void ExpeditionParser::ReadGraphic(ExpeditionReaderCursor at, std::vector<ExpeditionShapes*>& shapes)
{
    io::CToken_istream& stream = at.m_Stream;
    AString& token = at.m_Token;
    const double factor = at.m_Factor;
    AString layer = GraphicLayer(token);
    AString scratch;
    ExpeditionShapes* shape = nullptr; // the last shape of the record is the one kept
    const auto keep = [&shape](ExpeditionShapes* made)
    {
        if (made)
        {
            delete shape;
            shape = made;
        }
    };
    while (!at.AtEnd())
    {
        const int level = at.Next();
        if (IsKeyword_G(token, L"RECT_SHAPE"))
        {
            at.Next();
            if (IsKeyword_G(token, L"XY"))
            {
                double x1 = 0, y1 = 0, x2 = 0, y2 = 0;
                ReadCorners(stream, x1, y1, x2, y2);
                keep(new ExpeditionRectangle(layer, x1 * factor, y1 * factor, x2 * factor, y2 * factor, 0.0));
            }
            at.Next();
            stream >> scratch;
        }
        else if (IsKeyword_G(token, L"CIRCLE_SHAPE"))
        {
            double x = 0, y = 0, radius = 0;
            at.Next();
            if (IsKeyword_G(token, L"XY"))
                ReadCentre(stream, x, y);
            at.Next();
            if (IsKeyword_G(token, L"RADIUS"))
                stream >> radius;
            at.Next();
            stream >> scratch;
            keep(new ExpeditionCircle(layer, x * factor, y * factor, radius * factor, 0.0));
        }
        else if (IsKeyword_G(token, L"POLYLINE_SHAPE") || IsKeyword_G(token, L"POLYARC_SHAPE"))
        {
            std::vector<ExpeditionVertex*> vertices;
            if (IsKeyword_G(token, L"POLYLINE_SHAPE"))
                ReadPolyline(stream, vertices, factor);
            else
                ReadPolyarc(stream, vertices, factor);
            keep(new ExpeditionPolygon(layer, vertices, 0.0));
            at.Next();
            stream >> scratch; // SHAPE_OPTIONS and its value
        }
        else if (IsPathKeyword(token))
        {
            const AString kind = token;
            PathRecord path;
            ReadPathRecord(stream, token, path);
            keep(MakePathShape(kind, layer, path, factor, false));
            DeleteOwned_G(path.m_Vertices);
        }
        else if (IsKeyword_G(token, L"DISPLAY_WIDTH") || IsKeyword_G(token, L"HEIGHT") ||
                 IsKeyword_G(token, L"UNDERSIDE_SPACE") || IsKeyword_G(token, L"SIDE"))
            stream >> scratch; // the side has no effect: no bottom-side layer is made here
        else if (IsKeyword_G(token, L"TEXT") && level == k_ThreeDots)
            stream.NewLine();
        else if (IsKeyword_G(token, L"USER_LYR"))
            stream >> layer;
        else
            break;
    }
    if (shape)
        shapes.push_back(shape);
}

void ExpeditionParser::ReadText(ExpeditionReaderCursor at, std::vector<ExpeditionText*>& texts,
                                std::vector<ExpeditionAttribute>& attributes)
{
    io::CToken_istream& stream = at.m_Stream;
    AString& token = at.m_Token;
    const double factor = at.m_Factor;
    AString text, next;
    stream >> text;
    const size_t textLine = m_Diagnostics ? stream.TokenLine() : 0;
    stream >> next;
    if (next != L".")
    {
        // "TEXT name value" on one line is an attribute; the value stays in
        // the token, where the caller meets it as an unknown keyword.
        attributes.emplace_back(text, next);
        token = next;
        return;
    }
    double x = 0.0, y = 0.0, rotation = 0.0, height = 0.0, strokeWidth = 0.001;
    AString textType, layerWord, horzJust, vertJust, font, options;
    while (!at.AtEnd())
    {
        at.Next();
        if (IsKeyword_G(token, L"XY"))
            ReadXY(stream, x, y);
        else if (IsKeyword_G(token, L"TEXT_TYPE"))
            stream >> textType;
        else if (IsKeyword_G(token, L"DISPLAY_ATTR"))
            continue; // its sub-lines follow and are read here too
        else if (IsKeyword_G(token, L"TEXT_LYR") || IsKeyword_G(token, L"USER_LYR"))
            stream >> layerWord;
        else if (IsKeyword_G(token, L"HORZ_JUST"))
            stream >> horzJust;
        else if (IsKeyword_G(token, L"VERT_JUST"))
            stream >> vertJust;
        else if (IsKeyword_G(token, L"HEIGHT"))
            stream >> height;
        else if (IsKeyword_G(token, L"WIDTH") || IsKeyword_G(token, L"STROKE_WIDTH"))
            stream >> strokeWidth;
        else if (IsKeyword_G(token, L"ROTATION"))
            stream >> rotation;
        else if (IsKeyword_G(token, L"FONT"))
            stream >> font;
        else if (IsKeyword_G(token, L"TEXT_OPTIONS"))
            stream.NewLine(options);
        else
            break;
    }
    if (m_Diagnostics && IsKeyword_G(textType, L"PARTNO"))
        m_Diagnostics->NameGiven(ExpeditionDiagnostics::k_PartNumber, text, stream, textLine);
    texts.push_back(new ExpeditionText(text, TextLayer(layerWord), textType, font, horzJust, vertJust,
                                       height * factor, rotation, strokeWidth * factor, x * factor,
                                       y * factor, options));
}

ExpeditionTrace* ExpeditionParser::ReadTrace(ExpeditionReaderCursor at, int limit, AString& netName)
{
    io::CToken_istream& stream = at.m_Stream;
    const AString& token = at.m_Token;
    const double factor = at.m_Factor;
    const bool free = limit > 0;
    double width = 0.0;
    AString layer, options, pathKind, scratch;
    std::vector<ExpeditionVertex> vertices;
    while (!at.AtEnd())
    {
        const int level = at.Next();
        if (IsKeyword_G(token, L"PID"))
            stream.NewLine();
        else if (IsKeyword_G(token, L"ROUTE_LYR"))
        {
            stream >> scratch;
            layer = LayerNameOfWord(scratch);
        }
        else if (IsKeyword_G(token, L"TRACE_OPTIONS"))
            stream.NewLine(options);
        else if (IsKeyword_G(token, L"POLYLINE_PATH") || IsKeyword_G(token, L"POLYARC_PATH"))
        {
            // Several paths of one record add up in one vertex list; the last
            // kind and width stand.
            pathKind = token;
            at.Next();
            if (at.Is(L"WIDTH"))
                stream >> width;
            if (IsKeyword_G(pathKind, L"POLYLINE_PATH"))
                ReadPolyline(stream, vertices, factor);
            else
                ReadPolyarc(stream, vertices, factor);
        }
        else if (IsKeyword_G(token, L"NETNAME"))
            stream >> (free ? netName : scratch); // in a net block the block names the net
        else if (IsKeyword_G(token, L"TEXT") && (level == k_ThreeDots || (free && level == k_TwoDots)))
            stream.NewLine();
        else if (IsKeyword_G(token, L"TEXT"))
            break;
        else if (free && IsKeyword_G(token, L"TEXT_TYPE"))
            stream.NewLine();
        else if (free && level > limit)
            stream.NewLine();
        else
            break;
    }
    return new ExpeditionTrace(layer, options, pathKind, width * factor, std::move(vertices));
}

ExpeditionVia* ExpeditionParser::ReadVia(ExpeditionReaderCursor at, AString& netName)
{
    io::CToken_istream& stream = at.m_Stream;
    const AString& token = at.m_Token;
    const double factor = at.m_Factor;
    double x = 0.0, y = 0.0;
    AString padStack, fromLayer, toLayer, word;
    while (!at.AtEnd())
    {
        if (at.Next() < k_ThreeDots)
            break;
        if (IsKeyword_G(token, L"XY"))
            ReadXY(stream, x, y);
        else if (IsKeyword_G(token, L"LAYER_PAIR"))
        {
            stream >> word;
            fromLayer = LayerNameOfWord(word);
            stream >> word;
            toLayer = LayerNameOfWord(word);
        }
        else if (IsKeyword_G(token, L"PADSTACK"))
        {
            stream >> padStack;
            if (m_Diagnostics)
                m_Diagnostics->NameGiven(ExpeditionDiagnostics::k_PadStackName, padStack, stream);
        }
        else if (IsKeyword_G(token, L"NETNAME"))
            stream >> netName;
        else
            stream.NewLine(); // VIA_OPTIONS and the like
    }
    m_UsedPadStacks.insert(padStack);
    return new ExpeditionVia(padStack, fromLayer, toLayer, x * factor, y * factor);
}

void ExpeditionParser::AddShapesToNet(const AString& netName, const std::vector<ExpeditionShapes*>& shapes,
                                      ElementList& elements)
{
    if (ExpeditionLayoutNet* net = FindElementNet(elements, netName))
    {
        net->m_Shapes.insert(net->m_Shapes.end(), shapes.begin(), shapes.end());
        return;
    }
    auto* net = new ExpeditionLayoutNet(netName, {}, {}, shapes);
    elements.push_back(net);
    m_Nets.push_back(net);
}

ExpeditionLayoutNet* ExpeditionParser::FindElementNet(const ElementList& elements, const AString& name)
{
    return m_ElementNetIndex.Find(
        elements, name, [](ExpeditionBaseElement* e) { return e->AsLayoutNet(); },
        [](ExpeditionLayoutNet* net) -> const AString& { return net->m_Name; });
}

bool ExpeditionParser::HasMultiLoopPad(const ExpeditionPadStack* padStack)
{
    VELLUM_ASSERT(padStack->GetPadStackName().CompareNoCase("SAPPHIRE-42_50+39-28"));
    // The pads of several loops, by name: a pad list can be long and this is
    // asked once per placed pin.
    for (; m_MultiLoopPadsScanned < m_Pads.size(); ++m_MultiLoopPadsScanned)
    {
        ExpeditionPad* pad =
            m_Pads[m_MultiLoopPadsScanned] ? m_Pads[m_MultiLoopPadsScanned]->AsPad() : nullptr;
        if (pad && pad->IsMultiLoop())
            m_MultiLoopPadNames.insert(pad->m_Name);
    }
    if (m_MultiLoopPadNames.empty())
        return false;
    for (const AString* name : {&padStack->m_TopPad, &padStack->m_BottomPad, &padStack->m_InternalPad})
        if (m_MultiLoopPadNames.count(*name))
            return true;
    return false;
}

bool ExpeditionParser::IsNegativeLayer(const AString& layerName)
{
    for (const auto& [number, layer] : m_Layers)
        if (layer && layer->m_Name.CompareNoCase(layerName) == 0 &&
            layer->m_PlaneType.CompareNoCase(L"Negative") == 0)
            return true;
    return false;
}
