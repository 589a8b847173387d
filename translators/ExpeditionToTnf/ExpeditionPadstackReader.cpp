// ExpeditionPadstackReader.cpp - Padstack.hkp: holes, padstacks and pads.
//
// Every parameterised pad form of Expedition ends here as a circle, a
// rectangle or a polygon centred on the origin. Lengths before the first
// units line are taken as zero in this file. A custom pad is the union of
// its shapes; if they fall apart into separate pieces, the pad is split into
// one pad per shape, "%s_UNCONN_%d", and the further ones hang on the first.
#include "translators/ExpeditionToTnf/ExpeditionDiagnostics.h"
#include "translators/ExpeditionToTnf/ExpeditionKeyword.h"
#include "translators/ExpeditionToTnf/ExpeditionParser.h"
#include "translators/ExpeditionToTnf/ExpeditionReaderCursor.h"

#include "core/lib/vellum/Assert.h"
#include "lib/math/geometry/Box.h"
#include "lib/math/geometry/CornerRounding.h"
#include "lib/math/geometry/PolygonCollection.h"
#include "lib/math/geometry/PolygonWithHoles.h"

#include <algorithm>

namespace
{
bool IsThermalKeyword(const AString& token)
{
    static const wchar_t* const words[] = {L"4_WEB_ROUND_THERMAL",  L"4_WEB_ROUND_THERMAL_45",
                                           L"2_WEB_ROUND_THERMAL",  L"2_WEB_ROUND_THERMAL_45",
                                           L"4_WEB_SQUARE_THERMAL", L"4_WEB_SQUARE_THERMAL_45",
                                           L"ROUND_DONUT",          L"SQUARE_DONUT"};
    for (const wchar_t* w : words)
        if (IsKeyword_G(token, w))
            return true;
    return false;
}

// One parameter line: its keyword is passed over unread, the number behind it
// is taken.
double ReadParameter(io::CToken_istream& stream)
{
    AString keyword;
    ExpeditionParser::NextPlainToken(stream, keyword);
    double value = 0.0;
    stream >> value;
    return value;
}

std::vector<ExpeditionVertex*> Outline(std::initializer_list<std::pair<double, double>> points)
{
    std::vector<ExpeditionVertex*> vertices;
    for (const auto& [x, y] : points)
        vertices.push_back(new ExpeditionVertex(x, y, 0.0));
    return vertices;
}

ExpeditionRectangle* CentredRectangle(double width, double height)
{
    return new ExpeditionRectangle(AString(), -width * 0.5, -height * 0.5, width * 0.5, height * 0.5, 0.0);
}

const wchar_t* ShapeNameOf(ExpeditionShapes* shape, const wchar_t* otherwise)
{
    if (!shape)
        return otherwise;
    if (shape->AsPath() || shape->AsPolygon())
        return L"POLYGON";
    if (shape->AsCircle())
        return L"Circle";
    if (shape->AsRectangle())
        return L"Rectangle";
    return otherwise;
}
} // namespace

// The pad being read.
struct ExpeditionParser::PadWork
{
    AString m_PadType;
    AString m_ShapeName;
    ExpeditionShapes* m_Shape = nullptr;
    double m_TieLegWidth = 0.0;
    double m_ThermalClearance = 0.0;
    double m_OffsetX = 0.0;
    double m_OffsetY = 0.0;
    // A custom pad's shapes as read, and its working values.
    std::vector<ExpeditionShapes*> m_Custom;
    bool m_Unconnected = false;
    double m_X1 = 0.0, m_Y1 = 0.0, m_X2 = 0.0, m_Y2 = 0.0, m_Radius = 0.0, m_CircleWidth = 0.0;

    void SetShape(ExpeditionShapes* shape)
    {
        delete m_Shape; // a later shape keyword replaces the earlier one
        m_Shape = shape;
    }
};

void ExpeditionParser::ReadPadstacks(ElementList& elements)
{
    LongFileName file;
    OpenJobFile(AString(L"Padstack.hkp"), AString(), true, file);
    io::CToken_istream stream(file, 0);
    ReadPadstacks(stream, elements);
}

void ExpeditionParser::ReadPadstacks(io::CToken_istream& stream, ElementList& elements)
{
    const ExpeditionDiagnostics::FileScope reading(m_Diagnostics, stream);
    double factor = 0.0; // deliberately zero until the first units line
    bool databaseUnits = false;
    AString token;
    ExpeditionReaderCursor at{stream, token, factor};
    while (!at.AtEnd())
    {
        if (at.Is(L"PAD"))
            ReadPadRecord(at, elements);
        else if (at.Is(L"HOLE"))
            ReadHoleRecord(at, elements);
        else if (at.Is(L"PADSTACK"))
            ReadPadStackRecord(at, elements);
        else
        {
            // The level stays that of the last top-level keyword behind a
            // record, so a units line that ends a record counts after a
            // record of level 2.
            AString text;
            if (at.Is(L"UNITS") && at.m_Level == k_OneDot && !databaseUnits)
            {
                stream.NewLine(text);
                factor = UnitFactor(text);
            }
            else if (at.Is(L"OUTPUT_IN_DB_UNITS") && at.m_Level == k_OneDot)
            {
                stream.NewLine(text);
                factor = UnitFactor(text);
                databaseUnits = true;
            }
            else
            {
                if (m_Diagnostics)
                    m_Diagnostics->SkippedLine(stream, token);
                stream.NewLine();
            }
            token.clear();
            at.NextPlain();
        }
    }
}

void ExpeditionParser::ReadHoleRecord(ExpeditionReaderCursor at, ElementList& elements)
{
    io::CToken_istream& stream = at.m_Stream;
    const AString& token = at.m_Token;
    const double factor = at.m_Factor;
    AString name, shape;
    double diameter = 0.0, slotLength = 0.0;
    stream >> name;
    while (!at.AtEnd())
    {
        at.NextPlain();
        if (IsKeyword_G(token, L"HOLE") || IsKeyword_G(token, L"UNITS") || IsKeyword_G(token, L"PADSTACK") ||
            IsKeyword_G(token, L"PAD"))
            break;
        if (IsKeyword_G(token, L"ROUND") || IsKeyword_G(token, L"SQUARE"))
        {
            diameter = ReadParameter(stream);
            shape = L"Circle"; // a square hole stands as a round one of that size
        }
        else if (IsKeyword_G(token, L"SLOT"))
        {
            diameter = ReadParameter(stream);
            slotLength = ReadParameter(stream);
            shape = L"Circle";
        }
        else
            stream.NewLine();
    }
    elements.push_back(new ExpeditionPadHole(name, shape, diameter * factor, slotLength * factor, 0.0, 0.0,
                                             {}, AString(), AString()));
}

void ExpeditionParser::ReadPadStackRecord(ExpeditionReaderCursor at, ElementList& elements)
{
    io::CToken_istream& stream = at.m_Stream;
    const AString& token = at.m_Token;
    const double factor = at.m_Factor;
    AString name, type, technology, options, topPad, internalPad, bottomPad, topMask, bottomMask, clearance,
        thermal, hole, scratch;
    bool hasTop = false, hasInternal = false, hasBottom = false;
    std::map<int, AString> layerPads;
    double offsetX = 0.0, offsetY = 0.0;
    stream >> name;
    // A HOLE behind a padstack is an unknown line of it, and so is the rest
    // of that hole record: such a hole never comes to exist.
    while (!at.AtEnd())
    {
        at.NextPlain();
        if (IsKeyword_G(token, L"PADSTACK") || IsKeyword_G(token, L"UNITS") || IsKeyword_G(token, L"PAD"))
            break;
        if (IsKeyword_G(token, L"PADSTACK_TYPE"))
            stream >> type;
        else if (IsKeyword_G(token, L"TECHNOLOGY"))
            stream >> technology;
        else if (IsKeyword_G(token, L"TECHNOLOGY_OPTIONS"))
        {
            // Cut where the field's earlier value had its carriage return.
            AString line;
            stream.NewLine(line);
            options = line.substr(0, options.find(L'\r', 0));
        }
        else if (IsKeyword_G(token, L"LAYER"))
        {
            int number = 0;
            stream >> number;
            NextToken(stream, scratch); // the keyword behind the number is not looked at
            stream >> layerPads[number];
            if (m_Diagnostics)
                m_Diagnostics->NameGiven(ExpeditionDiagnostics::k_PadName, layerPads[number], stream);
        }
        else if (IsKeyword_G(token, L"TOP_PAD") && !hasTop)
        {
            stream >> topPad;
            if (m_Diagnostics)
                m_Diagnostics->NameGiven(ExpeditionDiagnostics::k_PadName, topPad, stream);
            hasTop = true;
        }
        else if (IsKeyword_G(token, L"INTERNAL_PAD") && !hasInternal)
        {
            stream >> internalPad;
            if (m_Diagnostics)
                m_Diagnostics->NameGiven(ExpeditionDiagnostics::k_PadName, internalPad, stream);
            hasInternal = true;
        }
        else if (IsKeyword_G(token, L"BOTTOM_PAD") && !hasBottom)
        {
            stream >> bottomPad;
            if (m_Diagnostics)
                m_Diagnostics->NameGiven(ExpeditionDiagnostics::k_PadName, bottomPad, stream);
            hasBottom = true;
        }
        else if (IsKeyword_G(token, L"TOP_SOLDERMASK_PAD"))
            stream >> topMask;
        else if (IsKeyword_G(token, L"BOTTOM_SOLDERMASK_PAD"))
            stream >> bottomMask;
        else if (IsKeyword_G(token, L"CLEARANCE_PAD"))
            stream >> clearance;
        else if (IsKeyword_G(token, L"THERMAL_PAD"))
            stream >> thermal;
        else if (IsKeyword_G(token, L"HOLE_NAME"))
            stream >> hole;
        else if (IsKeyword_G(token, L"OFFSET"))
        {
            stream >> scratch >> offsetX >> scratch >> offsetY;
            stream.NewLine();
        }
        else
            stream.NewLine();
    }
    VELLUM_ASSERT(name.CompareNoCase("SAPPHIRE39-28+VIA"));
    auto* padStack = new ExpeditionPadStack(name, type, technology, options, topPad, internalPad, bottomPad,
                                            topMask, bottomMask, clearance, thermal, hole, layerPads,
                                            offsetX * factor, offsetY * factor);
    elements.push_back(padStack);
    m_PadStacks.push_back(padStack);
}

void ExpeditionParser::ReadPadRecord(ExpeditionReaderCursor at, ElementList& elements)
{
    io::CToken_istream& stream = at.m_Stream;
    const AString& token = at.m_Token;
    const double factor = at.m_Factor;
    AString name, scratch;
    stream >> name;
    if (m_Diagnostics)
        m_Diagnostics->NameGiven(ExpeditionDiagnostics::k_PadDefined, name, stream);
    PadWork pad;
    while (!at.AtEnd())
    {
        at.Next();
        if (IsKeyword_G(token, L"PAD") || IsKeyword_G(token, L"UNITS") || IsKeyword_G(token, L"HOLE") ||
            IsKeyword_G(token, L"PADSTACK"))
            break;
        if (ReadPadShape(stream, token, factor, pad))
            continue;
        if (IsKeyword_G(token, L"CUSTOM"))
            ReadCustomPad(at, pad);
        else if (IsKeyword_G(token, L"OFFSET"))
        {
            stream >> scratch >> pad.m_OffsetX >> scratch >> pad.m_OffsetY;
            stream.NewLine();
        }
        else if (IsKeyword_G(token, L"TIE_LEG_WIDTH"))
            stream >> pad.m_TieLegWidth;
        else if (IsKeyword_G(token, L"THERMAL_CLEARANCE"))
            stream >> pad.m_ThermalClearance;
        else
            stream.NewLine();
    }
    MakePads(name, factor, pad, elements);
}

// The parameterised forms; false if the keyword is none of them.
bool ExpeditionParser::ReadPadShape(io::CToken_istream& stream, const AString& keyword, double s,
                                    PadWork& pad)
{
    const auto family = [&](const wchar_t* type)
    {
        pad.m_PadType = type ? AString(type) : keyword;
        pad.m_ShapeName = pad.m_PadType;
    };
    if (IsKeyword_G(keyword, L"ROUND") || IsThermalKeyword(keyword))
    {
        // A thermal or donut is a solid circle; its pattern is not kept.
        const double d = ReadParameter(stream);
        family(L"Circle");
        pad.SetShape(new ExpeditionCircle(AString(), 0.0, 0.0, d * s * 0.5, 0.0));
    }
    else if (IsKeyword_G(keyword, L"SQUARE"))
    {
        const double d = ReadParameter(stream);
        family(nullptr); // the keyword as the file spells it
        pad.SetShape(CentredRectangle(d * s, d * s));
    }
    else if (IsKeyword_G(keyword, L"RECTANGLE") || IsKeyword_G(keyword, L"OBLONG") ||
             IsKeyword_G(keyword, L"ROUND_FINGER"))
    {
        const double w = ReadParameter(stream);
        const double h = ReadParameter(stream);
        family(IsKeyword_G(keyword, L"ROUND_FINGER") ? L"BULLET"
                                                     : nullptr); // an oblong's round ends are in its name
        pad.SetShape(CentredRectangle(w * s, h * s));
    }
    else if (IsKeyword_G(keyword, L"OCTAGON"))
    {
        // Corners cut at a third of the width: not a regular octagon.
        const double d = ReadParameter(stream);
        const double a = d * s * 0.5, b = d * s / 6.0;
        family(L"POLYGON");
        pad.SetShape(new ExpeditionPolygon(
            AString(),
            Outline({{-b, -a}, {b, -a}, {a, -b}, {a, b}, {b, a}, {-b, a}, {-a, b}, {-a, -b}, {-b, -a}}),
            0.0));
    }
    else if (IsKeyword_G(keyword, L"ELONGATED_OCTAGON") || IsKeyword_G(keyword, L"OCTAGONAL_FINGER"))
    {
        const double W = ReadParameter(stream) * s;
        const double H = ReadParameter(stream) * s;
        family(L"POLYGON");
        if (IsKeyword_G(keyword, L"ELONGATED_OCTAGON"))
            pad.SetShape(new ExpeditionPolygon(AString(),
                                               Outline({{-W / 6, -H / 2},
                                                        {W / 6, -H / 2},
                                                        {W / 2, -H / 6},
                                                        {W / 2, H / 6},
                                                        {W / 6, H / 2},
                                                        {-W / 6, H / 2},
                                                        {-W / 2, H / 6},
                                                        {-W / 2, -H / 6},
                                                        {-W / 6, -H / 2}}),
                                               0.0));
        else // square on the left, cut on the right
            pad.SetShape(new ExpeditionPolygon(AString(),
                                               Outline({{-W / 2, -H / 2},
                                                        {W / 3, -H / 2},
                                                        {W / 2, -H / 6},
                                                        {W / 2, H / 6},
                                                        {W / 3, H / 2},
                                                        {-W / 2, H / 2},
                                                        {-W / 2, -H / 2}}),
                                               0.0));
    }
    else if (IsKeyword_G(keyword, L"CHAMFERED_RECTANGLE"))
    {
        const double W = ReadParameter(stream) * s;
        const double H = ReadParameter(stream) * s;
        const double c = ReadParameter(stream); // the chamfer as it stands, without the unit factor
        family(L"POLYGON");
        pad.SetShape(new ExpeditionPolygon(AString(),
                                           Outline({{c - W / 2, -H / 2},
                                                    {W / 2 - c, -H / 2},
                                                    {W / 2, c - H / 2},
                                                    {W / 2, H / 2 - c},
                                                    {W / 2 - c, H / 2},
                                                    {c - W / 2, H / 2},
                                                    {-W / 2, H / 2 - c},
                                                    {-W / 2, c - H / 2},
                                                    {c - W / 2, -H / 2}}),
                                           0.0));
    }
    else if (IsKeyword_G(keyword, L"RADIUS_CORNER_RECTANGLE"))
    {
        const double w = ReadParameter(stream) * s;
        const double h = ReadParameter(stream) * s;
        const double r = ReadParameter(stream) * s;
        family(L"POLYGON");
        const geom::Polygon box(geom::Box(-w / 2, w / 2, -h / 2, h / 2), 0.0);
        const std::vector<geom::Arc> rounded = geom::RoundCorners_G(box.GetEdges(), r, r * 0.5, true);
        // A radius of half the width can round the box into a circle.
        pad.SetShape(ShapeFromPolygon(geom::Polygon(rounded, false), AString(), false));
    }
    else
        return false;
    return true;
}

// CUSTOM: shapes up to TIMESTAMP or PAD_OPTIONS, the only end marks of a
// custom outline; the value behind the mark is then an unknown keyword.
void ExpeditionParser::ReadCustomPad(ExpeditionReaderCursor& at, PadWork& pad)
{
    const AString& token = at.m_Token;
    pad.m_PadType = token;
    pad.m_X1 = pad.m_Y1 = pad.m_X2 = pad.m_Y2 = pad.m_Radius = pad.m_CircleWidth = 0.0;
    while (!at.AtEnd() && !IsKeyword_G(token, L"TIMESTAMP") && !IsKeyword_G(token, L"PAD_OPTIONS"))
        AddCustomShape(at, pad);
    FinishCustomPad(pad);
}

void ExpeditionParser::AddCustomShape(ExpeditionReaderCursor& at, PadWork& pad)
{
    io::CToken_istream& stream = at.m_Stream;
    const AString& token = at.m_Token;
    const double s = at.m_Factor;
    AString scratch;
    double width = 0.0;
    if (IsKeyword_G(token, L"CIRCLE_SHAPE"))
    {
        pad.m_ShapeName = L"Circle";
        at.Next();
        while (at.m_Level > k_ThreeDots && !at.AtEnd())
        {
            if (IsKeyword_G(token, L"XY"))
                stream >> scratch >> pad.m_X1 >> scratch >> pad.m_Y1 >> scratch;
            else if (IsKeyword_G(token, L"RADIUS"))
                stream >> pad.m_Radius;
            else
                stream >> scratch;
            at.Next();
        }
        // The width of an earlier CIRCLE_PATH of the record is taken up here.
        pad.m_Custom.push_back(new ExpeditionCircle(AString(), pad.m_X1 * s, pad.m_Y1 * s, pad.m_Radius * s,
                                                    pad.m_CircleWidth * s));
        return; // it has read its next keyword
    }
    if (IsKeyword_G(token, L"CIRCLE_PATH"))
    {
        pad.m_ShapeName = L"Circle";
        at.Next();
        if (IsKeyword_G(token, L"WIDTH"))
            stream >> pad.m_CircleWidth;
        at.Next();
        if (IsKeyword_G(token, L"XY"))
            stream >> scratch >> pad.m_X1 >> scratch >> pad.m_Y1 >> scratch;
        at.Next();
        if (IsKeyword_G(token, L"RADIUS"))
            stream >> pad.m_Radius;
        pad.m_Custom.push_back(
            new ExpeditionCircle(AString(), pad.m_X1 * s, pad.m_Y1 * s, pad.m_Radius * s, 0.0));
    }
    else if (IsKeyword_G(token, L"RECT_PATH") || IsKeyword_G(token, L"RECT_SHAPE"))
    {
        const bool filled = IsKeyword_G(token, L"RECT_SHAPE");
        pad.m_ShapeName = L"Rectangle";
        at.Next();
        if (!filled && IsKeyword_G(token, L"WIDTH"))
        {
            stream >> width;
            at.Next();
        }
        else if (!filled)
            at.Next();
        if (IsKeyword_G(token, L"XY"))
        {
            stream >> scratch >> pad.m_X1 >> scratch >> pad.m_Y1 >> scratch >> scratch >> pad.m_X2 >>
                scratch >> pad.m_Y2 >> scratch;
            pad.m_Custom.push_back(new ExpeditionRectangle(
                AString(), pad.m_X1 * s, pad.m_Y1 * s, pad.m_X2 * s, pad.m_Y2 * s, filled ? 0.0 : width * s));
            // The pad's offset counteracts where the corners put the rectangle.
            pad.m_OffsetX = -(pad.m_X1 + pad.m_X2) / 2.0;
            pad.m_OffsetY = -(pad.m_Y1 + pad.m_Y2) / 2.0;
        }
        if (filled)
        {
            at.Next();
            stream >> scratch; // the line behind it
        }
    }
    else if (IsKeyword_G(token, L"POLYLINE_PATH") || IsKeyword_G(token, L"POLYARC_PATH"))
    {
        const bool arcs = IsKeyword_G(token, L"POLYARC_PATH");
        pad.m_ShapeName = L"POLYGON";
        at.Next();
        if (IsKeyword_G(token, L"WIDTH"))
            stream >> width;
        std::vector<ExpeditionVertex*> vertices;
        if (arcs)
            ReadPolyarc(stream, vertices, s);
        else
            ReadPolyline(stream, vertices, s);
        if (width >= 1e-08)
        {
            // A stroke: its outline is the shape.
            ExpeditionPath path(AString(), width * s, vertices);
            const std::optional<geom::Polygon> outline = PathToPolygon(path);
            ExpeditionShapes* shape = outline ? ShapeFromPolygon(*outline, AString(), false) : nullptr;
            if (!shape && arcs)
                return; // dropped, and the loop goes on without reading on
            if (shape)
                pad.m_Custom.push_back(shape);
        }
        else // a path without width is a closed outline
            pad.m_Custom.push_back(new ExpeditionPolygon(AString(), vertices, 0.0));
    }
    else if (IsKeyword_G(token, L"POLYLINE_SHAPE") || IsKeyword_G(token, L"POLYARC_SHAPE"))
    {
        pad.m_ShapeName = L"POLYGON";
        std::vector<ExpeditionVertex*> vertices;
        if (IsKeyword_G(token, L"POLYARC_SHAPE"))
            ReadPolyarc(stream, vertices, s);
        else
            ReadPolyline(stream, vertices, s);
        pad.m_Custom.push_back(new ExpeditionPolygon(AString(), vertices, 0.0));
    }
    else
        stream.NewLine();
    at.Next();
}

// Several shapes are united: one piece makes the pad's outline, pieces that
// fall apart make an unconnected pad of the shapes as read.
void ExpeditionParser::FinishCustomPad(PadWork& pad)
{
    std::vector<ExpeditionShapes*>& shapes = pad.m_Custom;
    if (shapes.size() >= 2)
    {
        std::vector<geom::Polygon> polygons;
        for (ExpeditionShapes* shape : shapes)
            if (std::optional<geom::Polygon> polygon = ShapeToPolygon(shape))
                polygons.push_back(*polygon);
        const geom::PolygonCollection collection(polygons);
        const double accuracy = std::max(m_Tolerance, collection.GetEpsilon().GetValue());
        const std::vector<geom::PolygonWithHoles> pieces = UnitePolygons(polygons, accuracy);
        if (pieces.size() >= 2)
        {
            pad.m_Unconnected = true;
            return;
        }
        ExpeditionShapes* united =
            pieces.size() == 1 ? ShapeFromPolygon(pieces[0].GetPolygon(), AString(), false) : nullptr;
        VELLUM_ASSERT(united || pieces.empty());
        if (!united)
        {
            united = shapes[0];
            shapes.erase(shapes.begin());
        }
        DeleteOwned_G(shapes);
        pad.SetShape(united);
    }
    else if (shapes.size() == 1)
    {
        pad.SetShape(shapes[0]);
        shapes.clear();
    }
    pad.m_ShapeName = ShapeNameOf(pad.m_Shape, pad.m_ShapeName.c_str());
}

void ExpeditionParser::MakePads(const AString& name, double s, PadWork& pad, ElementList& elements)
{
    if (!pad.m_Unconnected)
    {
        ExpeditionShapes* shapePtr = pad.m_Shape;
        VELLUM_ASSERT(shapePtr);
        auto* made =
            new ExpeditionPad(name, pad.m_PadType, pad.m_ShapeName, pad.m_Shape, pad.m_TieLegWidth * s,
                              pad.m_ThermalClearance * s, pad.m_OffsetX * s, pad.m_OffsetY * s);
        elements.push_back(made);
        m_Pads.push_back(made);
        return;
    }
    delete pad.m_Shape;
    std::vector<ExpeditionPad*> loops;
    AString shapeName = pad.m_ShapeName;
    for (size_t i = 0; i < pad.m_Custom.size(); ++i)
    {
        ExpeditionShapes* shape = pad.m_Custom[i];
        if (shape && shape->AsPath())
        {
            shapeName = L"POLYGON";
            if (std::optional<geom::Polygon> polygon = ShapeToPolygon(shape))
                if (ExpeditionShapes* outline = ShapeFromPolygon(*polygon, AString(), false))
                {
                    delete shape;
                    shape = outline;
                }
        }
        else
            shapeName = ShapeNameOf(shape, shapeName.c_str());
        AString padName = name;
        if (i > 0)
            padName.Format(L"%s_UNCONN_%d", name.c_str(), static_cast<int>(i));
        auto* made = new ExpeditionPad(padName, pad.m_PadType, shapeName, shape, pad.m_TieLegWidth * s,
                                       i == 0 ? pad.m_ThermalClearance * s : 0.0, pad.m_OffsetX * s,
                                       pad.m_OffsetY * s);
        m_Pads.push_back(made);
        if (i == 0)
            elements.push_back(made);
        else if (shape)
            loops.push_back(made);
        else
            m_LoosePads.push_back(made);
    }
    // A pad defined twice keeps the loops of its last definition; those of
    // the earlier one are held with the loose pads, so that they are freed.
    std::vector<ExpeditionPad*>& held = m_PadLoops[name];
    m_LoosePads.insert(m_LoosePads.end(), held.begin(), held.end());
    held = std::move(loops);
}
