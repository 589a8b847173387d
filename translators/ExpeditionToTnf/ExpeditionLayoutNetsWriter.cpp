// ExpeditionLayoutNetsWriter.cpp - the LayoutNets block: per net its traces,
// plane lines, vias and plane shapes with their voids.
//
// Every geometric item takes the next id of the file; an item that is not
// written takes none.
#include "translators/ExpeditionToTnf/ExpeditionToTnf.h"

using io::CBlock_func;
using io::CBlockPtr;

CBlockPtr ExpeditionToTnf::WriteLayoutNets(ElementList& elements)
{
    CBlockPtr block(L"LayoutNets");
    for (ExpeditionBaseElement* element : elements)
    {
        const ExpeditionLayoutNet* net = element->AsLayoutNet();
        if (!net)
            continue;
        CBlockPtr entry(L"LayoutNet");
        *entry << io::CBlock_named_value(L"Name", io::CBlock_value(net->m_Name));
        for (const ExpeditionTrace* trace : net->m_Traces)
        {
            if (!trace || trace->m_Vertices.size() < 2)
                continue;
            CBlock_func path(L"Path");
            path << ++m_NextShapeId;
            AddPathVertices(path, trace->m_Vertices, trace->m_Width);
            CBlock_func graphics(L"Graphics");
            graphics << trace->m_LayerName << path;
            *entry << graphics;
        }
        WritePlaneLines(*entry, *net);
        for (const ExpeditionVia* via : net->m_Vias)
        {
            if (!via)
                continue;
            CBlock_func item(L"Via");
            item << ++m_NextShapeId << via->m_FromLayer << via->m_ToLayer << via->m_X << via->m_Y
                 << via->m_PadStackName << 0;
            *entry << item;
        }
        WritePlaneShapes(*entry, *net);
        *block << entry;
    }
    return block;
}
