// ExpeditionUsedPads.cpp - pin reconciliation of placed components against
// their footprints, and the pads that the used padstacks refer to.
#include "core/lib/vellum/Assert.h"
#include "translators/ExpeditionToTnf/ExpeditionParser.h"

// A component may list a pin name twice where its footprint's pins were made
// unique ("1", "1_1"). The repeats take the footprint's names in order; the
// match is by form alone, so a genuine pin "1_A" counts as a repeat of "1".
void ExpeditionParser::RenameDuplicatePins(ExpeditionFootprint* footprint, std::vector<ExpeditionPin*>& pins)
{
    bool repeated = false;
    for (size_t i = 0; i < pins.size() && !repeated; ++i)
        for (size_t j = i + 1; j < pins.size() && !repeated; ++j)
            repeated = pins[i]->m_Name.CompareNoCase(pins[j]->m_Name) == 0;
    if (!repeated || !footprint)
        return;

    const std::vector<ExpeditionPin*>& fppins = footprint->m_Pins;
    VELLUM_ASSERT(fppins.size() == pins.size());
    std::set<AString> done; // with regard to case
    for (ExpeditionPin* pin : pins)
    {
        if (done.count(pin->m_Name))
            continue;
        const AString name = pin->m_Name; // the renaming below may change this pin's name
        done.insert(name);
        std::vector<ExpeditionPin*> duplicateNamePins;
        for (ExpeditionPin* other : pins)
            if (other->m_Name.CompareNoCase(name) == 0)
                duplicateNamePins.push_back(other);
        const AString pattern = name + L"_*";
        std::vector<ExpeditionPin*> matchingFpPins;
        for (ExpeditionPin* fp : fppins)
            if (fp->m_Name.CompareNoCase(name) == 0 || fp->m_Name.Match(pattern))
                matchingFpPins.push_back(fp);
        VELLUM_ASSERT(duplicateNamePins.size() == matchingFpPins.size());
        const size_t count = std::min(duplicateNamePins.size(), matchingFpPins.size());
        for (size_t k = 0; k < count; ++k)
            duplicateNamePins[k]->m_Name = matchingFpPins[k]->m_Name;
    }
}

// The component's pins in the footprint's order, where every footprint pin
// finds its pin; otherwise the component's own order.
void ExpeditionParser::OrderPins(const std::vector<ExpeditionPin*>& footprintPins,
                                 const std::vector<ExpeditionPin*>& pins,
                                 std::vector<ExpeditionPin*>& orderedPins)
{
    if (footprintPins.size() != pins.size())
    {
        orderedPins = pins;
        return;
    }
    orderedPins.clear();
    for (const ExpeditionPin* fp : footprintPins)
        for (ExpeditionPin* pin : pins)
            if (pin->m_Name.CompareNoCase(fp->m_Name) == 0)
            {
                orderedPins.push_back(pin);
                break;
            }
    VELLUM_ASSERT(orderedPins.size() == pins.size());
    if (orderedPins.size() != pins.size())
        orderedPins = pins;
}

// The pads in use are those of the used padstacks, the soldermask pads
// excepted; empty names are collected like any other.
void ExpeditionParser::CollectUsedPads(ElementList& elements)
{
    for (ExpeditionBaseElement* element : elements)
    {
        const ExpeditionPadStack* padStack = element->AsPadStack();
        if (!padStack || !m_UsedPadStacks.count(padStack->m_Name))
            continue;
        m_UsedPads.insert(padStack->m_TopPad);
        m_UsedPads.insert(padStack->m_BottomPad);
        m_UsedPads.insert(padStack->m_InternalPad);
        m_UsedPads.insert(padStack->m_ClearancePad);
        m_UsedPads.insert(padStack->m_ThermalPad);
        for (const auto& [layer, pad] : padStack->m_LayerPads)
            m_UsedPads.insert(pad);
    }
}
