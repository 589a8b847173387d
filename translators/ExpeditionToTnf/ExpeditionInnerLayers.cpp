// ExpeditionInnerLayers.cpp - footprint and padstack variants for components
// mounted on an inner layer of the board.
//
// A component inside the board has only its pins there, on padstacks whose
// pads are moved down the stack-up to its layer. The variants are named
// "%s_Layer_%d" and made once: a second component on the same layer finds the
// first one's variant by name.
#include "translators/ExpeditionToTnf/ExpeditionParser.h"

ExpeditionPadStack* ExpeditionParser::GetInnerLayerPadStack(ElementList& elements, const AString& sourceName,
                                                            int layer)
{
    AString name;
    name.Format(L"%s_Layer_%d", sourceName.c_str(), layer);
    if (ExpeditionPadStack* existing = FindPadStack(elements, name))
        return existing;
    const ExpeditionPadStack* source = FindPadStack(elements, sourceName);
    if (!source)
        return nullptr;
    std::map<int, AString> layerPads;
    for (const auto& [number, pad] : source->m_LayerPads)
        layerPads[number + layer - 1] = pad;
    if (source->m_LayerPads.empty())
    {
        const AString& pad = !source->m_TopPad.empty() ? source->m_TopPad : source->m_InternalPad;
        if (!pad.empty())
            layerPads[layer] = pad;
    }
    auto* variant = new ExpeditionPadStack(
        name, AString(L"PIN_THROUGH"), source->m_Technology, source->m_TechnologyOptions, AString(),
        source->m_InternalPad, AString(), source->m_TopSolderMaskPad, source->m_BottomSolderMaskPad,
        source->m_ClearancePad, source->m_ThermalPad, source->m_HoleName, layerPads, source->m_OffsetX,
        source->m_OffsetY);
    elements.push_back(variant);
    m_PadStacks.push_back(variant);
    m_UsedPadStacks.insert(name);
    return variant;
}

AString ExpeditionParser::GetInnerLayerFootprintName(ElementList& elements, const AString& cellName,
                                                     int layer)
{
    AString name;
    name.Format(L"%s_Layer_%d", cellName.c_str(), layer);
    if (FindFootprint(elements, name))
        return name;
    const ExpeditionFootprint* cell = FindFootprint(elements, cellName);
    if (!cell)
        return name;
    std::vector<ExpeditionPin*> pins;
    for (const ExpeditionPin* pin : cell->m_Pins)
    {
        const ExpeditionPadStack* variant = GetInnerLayerPadStack(elements, pin->m_PadStackName, layer);
        pins.push_back(new ExpeditionPin(pin->m_Name, pin->m_NetName,
                                         variant ? variant->m_Name : pin->m_PadStackName.str(), pin->m_X,
                                         pin->m_Y, pin->m_Rotation, pin->m_Options, pin->m_Attributes));
    }
    elements.push_back(new ExpeditionFootprint(name, cell->m_PackageGroup, cell->m_MountType,
                                               cell->m_NumberLayers, pins, {}, {}, {}, {}));
    return name;
}
