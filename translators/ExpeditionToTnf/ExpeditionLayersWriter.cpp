// ExpeditionLayersWriter.cpp - the Layers block: user layers, the five
// drawing layers of each side, and between them the stack-up from the top
// conductor to the bottom one.
#include "translators/ExpeditionToTnf/ExpeditionToTnf.h"

#include <map>

using io::CBlock_func;
using io::CBlockPtr;

namespace
{
void AddDrawingLayers(io::CBlock& block, const wchar_t* side, const wchar_t* const names[5])
{
    static const wchar_t* const kinds[5] = {L"Assembly", L"SilkScreen", L"SolderMask", L"SolderPaste",
                                            L"User"};
    for (int i = 0; i < 5; ++i)
    {
        CBlock_func layer(L"Layer");
        layer << AString(names[i]) << AString(kinds[i]) << AString(side);
        block << layer;
    }
}
} // namespace

CBlockPtr ExpeditionToTnf::WriteLayers(ElementList& elements)
{
    CBlockPtr block(L"Layers");

    // User layers, in list order, all on the top side.
    std::map<int, ExpeditionLayer*> stackup; // by layer number; the later of two wins
    for (ExpeditionBaseElement* element : elements)
    {
        ExpeditionLayer* layer = element->AsLayer();
        if (!layer)
            continue;
        if (layer->m_Type.CompareNoCase(L"User") == 0)
        {
            CBlock_func user(L"Layer");
            user << layer->m_Name << layer->m_Type << AString(L"Top");
            *block << user;
        }
        else
            stackup[layer->m_LayerNumber] = layer;
    }

    static const wchar_t* const top[5] = {L"ASSEMBLY_TOP", L"SILKSCREEN_TOP", L"SOLDERMASK_TOP",
                                          L"SOLDERPASTE_TOP", L"PLACEMENT_TOP"};
    static const wchar_t* const bottom[5] = {L"ASSEMBLY_BOTTOM", L"SILKSCREEN_BOTTOM", L"SOLDERMASK_BOTTOM",
                                             L"SOLDERPASTE_BOTTOM", L"PLACEMENT_BOTTOM"};
    AddDrawingLayers(*block, L"Top", top);

    // Dielectrics above the top conductor and everything below the bottom
    // conductor are left out.
    bool topSeen = false, bottomSeen = false;
    for (const auto& [number, layer] : stackup)
    {
        const bool signal = layer->m_Type.CompareNoCase(L"Signal") == 0;
        if ((!topSeen && !signal) || bottomSeen)
            continue;
        const wchar_t* kind = !signal                                              ? L"Dielectric"
                              : layer->m_PlaneType.CompareNoCase(L"POSITIVE") == 0 ? L"Signal"
                                                                                   : L"MetalizedSignal";
        const wchar_t* position = !topSeen                                        ? L"Top"
                                  : layer->m_ConductiveNumber == m_PhysicalLayers ? L"Bottom"
                                                                                  : L"neither";
        CBlock_func entry(L"StackupLayer");
        entry << layer->m_Name << AString(kind) << AString(position) << layer->m_Thickness
              << AString(signal ? L"copper" : L"FR4");
        *block << entry;
        if (layer->m_ConductiveNumber == 1)
            topSeen = true;
        else if (layer->m_ConductiveNumber == m_PhysicalLayers)
            bottomSeen = true;
    }

    AddDrawingLayers(*block, L"Bottom", bottom);
    return block;
}
