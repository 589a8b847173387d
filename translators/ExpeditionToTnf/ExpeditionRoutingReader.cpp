// ExpeditionRoutingReader.cpp - routing of Layout.hkp: net blocks with their
// traces, vias and conductive areas, free traces, and the vias of placed
// cells.
#include "translators/ExpeditionToTnf/ExpeditionDiagnostics.h"
#include "translators/ExpeditionToTnf/ExpeditionKeyword.h"
#include "translators/ExpeditionToTnf/ExpeditionParser.h"
#include "translators/ExpeditionToTnf/ExpeditionReaderCursor.h"

ExpeditionLayoutNet* ExpeditionParser::GetOrMakeNet(const AString& netName, ElementList& elements,
                                                    std::vector<ExpeditionTrace*> traces,
                                                    std::vector<ExpeditionVia*> vias,
                                                    std::vector<ExpeditionShapes*> shapes, bool& made)
{
    if (ExpeditionLayoutNet* net = FindElementNet(elements, netName))
    {
        made = false;
        return net;
    }
    auto* net = new ExpeditionLayoutNet(netName, traces, vias, shapes);
    m_Nets.push_back(net);
    elements.push_back(net);
    made = true;
    return net;
}

// A net block's routing goes to the net of its name, which is made if need be;
// its conductive areas become plane shapes of the net as well.
void ExpeditionParser::FlushNetBlock(const AString& netName, std::vector<ExpeditionTrace*>& traces,
                                     std::vector<ExpeditionVia*>& vias,
                                     std::vector<ExpeditionShapes*>& shapes, ElementList& elements)
{
    bool made = false;
    ExpeditionLayoutNet* net = GetOrMakeNet(netName, elements, traces, vias, shapes, made);
    if (!made)
    {
        net->m_Traces.insert(net->m_Traces.end(), traces.begin(), traces.end());
        net->m_Vias.insert(net->m_Vias.end(), vias.begin(), vias.end());
        net->m_Shapes.insert(net->m_Shapes.end(), shapes.begin(), shapes.end());
    }
    AddConductiveShapesAsPlanes(*net, shapes);
    traces.clear();
    vias.clear();
    shapes.clear();
}

void ExpeditionParser::ReadNetBlock(ExpeditionReaderCursor at, ElementList& elements)
{
    io::CToken_istream& stream = at.m_Stream;
    const AString& token = at.m_Token;
    std::vector<ExpeditionTrace*> traces;
    std::vector<ExpeditionVia*> vias;
    std::vector<ExpeditionShapes*> shapes;
    AString netName(L"."); // no net open yet
    at.m_Level = 0;
    while (!at.AtEnd())
    {
        if (IsKeyword_G(token, L"NET"))
        {
            if (netName != L".")
                FlushNetBlock(netName, traces, vias, shapes, elements);
            stream >> netName;
            if (m_Diagnostics)
                stream.MarkRecord();
            at.Next();
        }
        else if (IsKeyword_G(token, L"UNITS"))
        {
            AString text;
            stream.NewLine(text);
            at.m_Factor = UnitFactor(text); // for the caller too
            at.Next();
        }
        else if (IsPlacedCellKeyword(token) || at.m_Level == k_OneDot)
        {
            FlushNetBlock(netName, traces, vias, shapes, elements);
            return;
        }
        else if (IsKeyword_G(token, L"TRACE"))
        {
            AString ignored;
            traces.push_back(ReadTrace(at, 0, ignored));
            if (m_Diagnostics && traces.back())
                ++m_Diagnostics->InJob()
                      .m_Traces[ExpeditionDiagnostics::LayerKey(traces.back()->m_LayerName)];
        }
        else if (IsKeyword_G(token, L"VIA"))
        {
            AString ignored;
            vias.push_back(ReadVia(at, ignored));
            if (m_Diagnostics)
                ++m_Diagnostics->InJob().m_Vias;
        }
        else if (IsKeyword_G(token, L"CONDUCTIVE_AREA"))
        {
            AString ignored;
            ReadConductiveAreaRecord(at, shapes, ignored);
        }
        else
        {
            stream.NewLine();
            at.Next();
        }
    }
    // A net ended by the end of the file is not flushed: it is lost.
    if (m_Diagnostics && netName != L".")
        m_Diagnostics->AtRecord(stream, "record-lost-at-end",
                                "The net block of \"" + ExpeditionDiagnostics::Text(netName) +
                                    "\" runs to the end of the file and is lost with its " +
                                    std::to_string(traces.size()) + " traces, " +
                                    std::to_string(vias.size()) + " vias and " +
                                    std::to_string(shapes.size()) + " areas.");
    DeleteOwned_G(traces);
    DeleteOwned_G(vias);
    DeleteOwned_G(shapes);
}

void ExpeditionParser::ReadFreeTrace(ExpeditionReaderCursor at, int limit, ElementList& elements)
{
    io::CToken_istream& stream = at.m_Stream;
    AString netName;
    if (m_Diagnostics)
        stream.MarkRecord();
    ExpeditionTrace* trace = ReadTrace(at, limit, netName);
    if (m_Diagnostics && trace)
        ++m_Diagnostics->InJob().m_Traces[ExpeditionDiagnostics::LayerKey(trace->m_LayerName)];
    if (netName.empty())
    {
        if (m_Diagnostics)
            m_Diagnostics->AtRecord(stream, "trace-without-net",
                                    "A trace without NETNAME is left out: copper without a net.");
        delete trace; // a free trace without NETNAME is lost
        return;
    }
    bool made = false;
    ExpeditionLayoutNet* net = GetOrMakeNet(netName, elements, {trace}, {}, {}, made);
    if (!made)
        net->m_Traces.push_back(trace);
}

void ExpeditionParser::ReadPlacedVia(ExpeditionReaderCursor at)
{
    io::CToken_istream& stream = at.m_Stream;
    AString netName;
    if (m_Diagnostics)
        stream.MarkRecord();
    ExpeditionVia* via = ReadVia(at, netName);
    if (m_Diagnostics)
        ++m_Diagnostics->InJob().m_Vias;
    if (ExpeditionLayoutNet* net = FindNet(netName))
        net->m_Vias.push_back(via);
    else
    {
        if (m_Diagnostics)
            m_Diagnostics->AtRecord(stream, "unresolved-net",
                                    "A via on net \"" + ExpeditionDiagnostics::Text(netName) +
                                        "\" is left out: no net of that name has copper before it.");
        delete via;
    }
}
