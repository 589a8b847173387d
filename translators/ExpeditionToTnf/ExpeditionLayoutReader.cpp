// ExpeditionLayoutReader.cpp - Layout.hkp: the top-level loop of the placed
// and routed design, and the placed cells with their netlist entries.
//
// The placed-cell reader keeps some values from one cell to the next (layer
// number, position, rotation, side), as the file leaves them out where they
// do not change; a second component without XY stands where the first stood.
#include "translators/ExpeditionToTnf/ExpeditionDiagnostics.h"
#include "translators/ExpeditionToTnf/ExpeditionKeyword.h"
#include "translators/ExpeditionToTnf/ExpeditionParser.h"
#include "translators/ExpeditionToTnf/ExpeditionReaderCursor.h"

#include "core/lib/vellum/Assert.h"

#include <cstdlib>

namespace
{
const wchar_t* const k_NoLayer = L"Tarvex_Dummy";

// The reference designator among a placed cell's texts, for reports; "(no
// REF_DES text)" without one.
AString ReferenceDesignatorOf(const std::vector<ExpeditionText*>& texts)
{
    for (const ExpeditionText* text : texts)
        if (IsKeyword_G(text->m_TextType, L"REF_DES"))
            return text->m_Text;
    return AString(L"(no REF_DES text)");
}
} // namespace

bool ExpeditionParser::IsPlacedCellKeyword(const AString& token)
{
    static const wchar_t* const keywords[] = {L"DRAWING_CELL",
                                              L"PACKAGE_CELL",
                                              L"REUSABLE_CIRCUIT_CELL",
                                              L"MECHANICAL_CELL",
                                              L"DRAWING_CELL_FROM_LIB",
                                              L"PACKAGE_CELL_FROM_LIB",
                                              L"REUSABLE_CIRCUIT_CELL_FROM_LIB",
                                              L"MECHANICAL_CELL_FROM_LIB"};
    for (const wchar_t* k : keywords)
        if (IsKeyword_G(token, k))
            return true;
    return false;
}

void ExpeditionParser::ReadLayout(ElementList& elements)
{
    const bool hasPlanesFile = LongFileName(m_Directory + L"/Planes.hkp").Exists() != 0;
    LongFileName file;
    OpenJobFile(AString(L"Layout.hkp"), AString(), true, file);
    io::CToken_istream stream(file, 0);
    ReadLayout(stream, elements, hasPlanesFile);
}

void ExpeditionParser::ReadLayout(io::CToken_istream& stream, ElementList& elements, bool hasPlanesFile)
{
    const ExpeditionDiagnostics::FileScope reading(m_Diagnostics, stream);
    double factor = 1.0;
    AString token;
    // The records below read on with cursors of their own: the level here
    // stays that of the last keyword this loop read itself.
    ExpeditionReaderCursor at{stream, token, factor};
    PlacementState placement;
    while (!at.AtEnd())
    {
        if (at.Is(L"NET"))
            ReadNetBlock(at, elements);
        else if (at.Is(L"CONDUCTIVE_AREA"))
            ReadConductiveAreas(at, at.m_Level, false, elements);
        else if (IsPlacedCellKeyword(token))
            ReadPlacedCells(at, placement, elements);
        else if (at.Is(L"BOARD_ORIGIN") || at.Is(L"BOARD_OUTLINE") || at.Is(L"CONTOUR"))
            ReadBoard(at, elements);
        else if (at.Is(L"ROUTE_OUTLINE"))
            ReadRouteOutline(at, elements);
        else if (at.Is(L"UNITS") && at.m_Level == k_OneDot)
        {
            AString text;
            stream.NewLine(text);
            factor = UnitFactor(text);
            m_LayoutUnitFactor = factor;
            at.Next();
        }
        else if (at.Is(L"TRACE") && at.m_Level == k_OneDot)
            ReadFreeTrace(at, k_OneDot, elements);
        else if (at.Is(L"OBSTRUCT") && at.m_Level == k_OneDot)
            ReadConductiveAreas(at, k_OneDot, true, elements);
        else if (at.Is(L"GENERATED_DATA"))
            ReadGeneratedData(at, hasPlanesFile);
        else
        {
            if (m_Diagnostics)
                m_Diagnostics->SkippedLine(stream, token);
            stream.NewLine();
            at.Next();
        }
    }
}

// Reads placed cells until the board records begin.
void ExpeditionParser::ReadPlacedCells(ExpeditionReaderCursor at, PlacementState& state,
                                       ElementList& elements)
{
    io::CToken_istream& stream = at.m_Stream;
    while (!at.AtEnd())
    {
        if (!IsPlacedCellKeyword(at.m_Token))
        {
            if (at.Is(L"BOARD_ORIGIN") || at.Is(L"BOARD_OUTLINE"))
                return;
            stream.NewLine();
            at.Next();
            continue;
        }
        PlacedCellRecord cell;
        stream >> cell.m_CellName;
        if (m_Diagnostics)
        {
            stream.MarkRecord();
            m_Diagnostics->NameGiven(ExpeditionDiagnostics::k_CellName, cell.m_CellName, stream);
        }
        at.Next();
        if (at.Is(L"PID"))
        {
            stream.NewLine();
            at.Next();
        }
        if (at.Is(L"XY"))
            ReadXY(stream, state.m_X, state.m_Y);
        at.Next();
        if (at.Is(L"Rotation"))
            stream >> state.m_Rotation;
        at.Next();
        ReadPlacedCellBody(at, state, cell, elements);
        if (m_Diagnostics && !IsKeyword_G(cell.m_Options, L"NOT_PLACED"))
            m_Diagnostics->ComponentInJob(cell.m_Pins);
        const size_t missingBefore = m_MissingCells.size();
        const AString referenceDesignator = m_Diagnostics ? ReferenceDesignatorOf(cell.m_Texts) : AString();
        MakeComponent(cell, state, at.m_Factor, elements);
        if (m_Diagnostics && m_MissingCells.size() > missingBefore)
            m_Diagnostics->AtRecord(stream, "missing-cell",
                                    "Component " + ExpeditionDiagnostics::Text(referenceDesignator) +
                                        " is left out: its cell \"" +
                                        ExpeditionDiagnostics::Text(cell.m_CellName) +
                                        "\" is not in Cell.hkp.");
    }
}

// The lines of a placed cell behind its rotation. The level is that of the
// last keyword this loop read itself: the sub-readers leave it stale.
void ExpeditionParser::ReadPlacedCellBody(ExpeditionReaderCursor& at, PlacementState& state,
                                          PlacedCellRecord& cell, ElementList& elements)
{
    io::CToken_istream& stream = at.m_Stream;
    AString& token = at.m_Token;
    AString word;
    while (!at.AtEnd())
    {
        if (at.Is(L"PLACEMENT_LYR"))
        {
            stream >> word;
            state.m_LayerNumber =
                std::atoi(word.substr(word.rfind(L'_', AString::npos) + 1).AsAnsi().c_str());
            state.m_LayerName =
                (state.m_LayerNumber >= 1 && static_cast<size_t>(state.m_LayerNumber) <= m_LayerNames.size())
                    ? m_LayerNames[state.m_LayerNumber]
                    : GetMountLayerName(word);
            at.Next();
        }
        else if (at.Is(L"FACEMENT"))
        {
            stream >> word;
            state.m_Mirrored = word.CompareNoCase(L"TOP") != 0;
            at.Next();
        }
        else if (at.Is(L"COMPONENT_OPTIONS"))
        {
            stream >> cell.m_Options;
            at.Next();
        }
        else if (at.Is(L"PIN"))
            ReadPlacedPin(at, state, cell.m_Pins);
        else if (at.Is(L"VIA"))
            ReadPlacedVia(at);
        else if (at.Is(L"PLACEMENT_OUTLINE") || at.Is(L"ASSEMBLY_OUTLINE") || at.Is(L"SILKSCREEN_OUTLINE") ||
                 at.Is(L"GRAPHIC"))
            ReadGraphic(at, cell.m_Shapes);
        else if (at.Is(L"TEXT"))
            ReadText(at, cell.m_Texts, cell.m_Attributes);
        else if (at.Is(L"TRACE"))
            ReadFreeTrace(at, k_TwoDots, elements);
        else if (at.Is(L"CONDUCTIVE_AREA"))
            ReadConductiveAreas(at, k_TwoDots, false, elements);
        else if (IsPlacedCellKeyword(token) || at.Is(L"BOARD_ORIGIN") || at.Is(L"BOARD_OUTLINE") ||
                 at.m_Level == k_OneDot)
            return;
        else
        {
            stream.NewLine();
            at.Next();
        }
    }
}

// A placed pin: the footprint's pin as the layout gives it, with its net.
void ExpeditionParser::ReadPlacedPin(ExpeditionReaderCursor at, const PlacementState& state,
                                     std::vector<ExpeditionPin*>& pins)
{
    const double factor = at.m_Factor;
    PinRecord pin;
    ReadPinLines(at, true, pin);
    const AString& padStackName = pin.m_PadStackName;
    if (padStackName.empty())
        return; // no padstack, no pin, and no net connection
    const ExpeditionPadStack* padStack = m_PadStackListIndex.Find(
        m_PadStacks, padStackName, [](ExpeditionPadStack* p) { return p; },
        [](ExpeditionPadStack* p) -> const AString& { return p->m_Name; });
    if (!padStack || !HasMultiLoopPad(padStack))
    {
        pins.push_back(new ExpeditionPin(pin.m_Name, pin.m_NetName, padStackName, pin.m_X * factor,
                                         pin.m_Y * factor, pin.m_Rotation, pin.m_Options, pin.m_Attributes));
        return;
    }
    // A pin on a pad of several loops puts its pads into the net's plane
    // shapes instead of becoming a pin.
    AddMultiLoopPinShapes(pin.m_NetName, *padStack, pin.m_X * factor, pin.m_Y * factor, state, factor);
}

void ExpeditionParser::MakeComponent(PlacedCellRecord& cell, PlacementState& state, double factor,
                                     ElementList& elements)
{
    AString cellName = cell.m_CellName;
    std::vector<ExpeditionPin*>& pins = cell.m_Pins;
    std::vector<ExpeditionShapes*>& shapes = cell.m_Shapes;
    std::vector<ExpeditionText*>& texts = cell.m_Texts;
    std::vector<ExpeditionAttribute>& attributes = cell.m_Attributes;
    const bool notPlaced = IsKeyword_G(cell.m_Options, L"NOT_PLACED");
    if (!m_CellPadStacks.count(cellName) || notPlaced)
    {
        if (!notPlaced)
            m_MissingCells.push_back(cellName);
        DeleteOwned_G(pins);
        DeleteOwned_G(shapes);
        DeleteOwned_G(texts);
        return;
    }
    if (state.m_LayerName == k_NoLayer)
        state.m_LayerName = m_LayerNames[1];
    if (state.m_LayerName != GetTopLayerName() && state.m_LayerName != GetBottomLayerName())
        cellName = GetInnerLayerFootprintName(elements, cellName, state.m_LayerNumber);

    ExpeditionFootprint* footprint = FindFootprint(elements, cellName);
    RenameDuplicatePins(footprint, pins);
    std::vector<ExpeditionPin*> orderedPins;
    OrderPins(footprint ? footprint->m_Pins : std::vector<ExpeditionPin*>(), pins, orderedPins);
    auto* component = new ExpeditionComponent(cellName, state.m_LayerName, AString(), state.m_X * factor,
                                              state.m_Y * factor, state.m_Rotation, state.m_Mirrored,
                                              orderedPins, shapes, texts, attributes);
    elements.push_back(component);
    m_UsedNames.insert(cellName);
    state.m_LayerName = k_NoLayer;
    for (const AString& padStack : m_CellPadStacks[cellName])
        m_UsedPadStacks.insert(padStack);
    AddNetlistEntries(*component, elements);
    pins.clear();
    shapes.clear();
    texts.clear();
    attributes.clear();
}

// Each pin with a net adds "refdes-pin" to that net's netlist entry, once.
void ExpeditionParser::AddNetlistEntries(const ExpeditionComponent& component, ElementList& elements)
{
    const ExpeditionText* refDes = component.FindText(L"REF_DES", false);
    if (!refDes)
        return;
    for (const ExpeditionPin* pin : component.m_Pins)
    {
        if (pin->m_NetName.empty())
            continue;
        const AString connection = refDes->m_Text + L"-" + pin->m_Name;
        ExpeditionNetlist* netlist = m_NetlistIndex.Find(
            elements, pin->m_NetName, [](ExpeditionBaseElement* e) { return e->AsNetlist(); },
            [](ExpeditionNetlist* n) -> const AString& { return n->m_Name; });
        if (!netlist)
        {
            elements.push_back(new ExpeditionNetlist(pin->m_NetName, 1, {connection}));
            continue;
        }
        // Each connection once, without regard to case; a set per net keeps
        // this from growing with the square of a large net's pins.
        auto& connections = m_NetlistConnections[netlist];
        if (connections.empty())
            connections.insert(netlist->m_Pins.begin(), netlist->m_Pins.end());
        const bool present = !connections.insert(connection).second;
        if (!present)
        {
            ++netlist->m_PinCount;
            netlist->m_Pins.push_back(connection);
        }
    }
}
