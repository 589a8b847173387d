// ExpeditionUsedPads.cpp - pin reconciliation of placed components against
// their footprints, and the pads that the used padstacks refer to.
#include "core/lib/vellum/Assert.h"
#include "translators/ExpeditionToTnf/ExpeditionParser.h"

#include <algorithm>
#include <set>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace
{
using PinGroups = std::unordered_map<std::wstring, std::set<size_t>, AStringNoCaseHash, AStringNoCaseEqual>;

// The footprint's pins that a repeated name takes, in the footprint's order:
// those of the same name without regard to case, and those that match the
// name followed by "_*". Without a "*" in the name the pattern is a plain
// prefix, found in the sorted names; a name with one is matched pin by pin.
std::vector<ExpeditionPin*> MatchingFootprintPins(const AString& name,
                                                  const std::vector<ExpeditionPin*>& fppins,
                                                  const PinGroups& fpGroups,
                                                  const std::vector<std::pair<AString, size_t>>& sortedNames)
{
    std::vector<size_t> found;
    const auto same = fpGroups.find(name);
    if (same != fpGroups.end())
        found.assign(same->second.begin(), same->second.end());
    const AString prefix = name + L"_";
    if (name.find(L'*', 0) == AString::npos)
    {
        auto it = std::lower_bound(sortedNames.begin(), sortedNames.end(), std::make_pair(prefix, size_t(0)));
        for (; it != sortedNames.end() && it->first.compare(0, prefix.size(), prefix) == 0; ++it)
            found.push_back(it->second);
    }
    else
    {
        const AString pattern = prefix + L"*";
        for (size_t i = 0; i < fppins.size(); ++i)
            if (fppins[i]->m_Name.CompareNoCase(name) != 0 && fppins[i]->m_Name.Match(pattern))
                found.push_back(i);
    }
    std::sort(found.begin(), found.end());
    std::vector<ExpeditionPin*> pins;
    pins.reserve(found.size());
    for (size_t i : found)
        pins.push_back(fppins[i]);
    return pins;
}
} // namespace

// A component may list a pin name twice where its footprint's pins were made
// unique ("1", "1_1"). The repeats take the footprint's names in order; the
// match is by form alone, so a genuine pin "1_A" counts as a repeat of "1".
// Pins are grouped by name without regard to case, and the groups follow the
// renaming, so that each name costs what its own pins cost, not a walk of
// the whole component.
void ExpeditionParser::RenameDuplicatePins(ExpeditionFootprint* footprint, std::vector<ExpeditionPin*>& pins)
{
    PinGroups groups;
    bool repeated = false;
    for (size_t i = 0; i < pins.size(); ++i)
    {
        std::set<size_t>& group = groups[pins[i]->m_Name];
        group.insert(i);
        repeated = repeated || group.size() > 1;
    }
    if (!repeated || !footprint)
        return;

    const std::vector<ExpeditionPin*>& fppins = footprint->m_Pins;
    VELLUM_ASSERT(fppins.size() == pins.size());
    PinGroups fpGroups;
    std::vector<std::pair<AString, size_t>> sortedNames;
    sortedNames.reserve(fppins.size());
    for (size_t i = 0; i < fppins.size(); ++i)
    {
        fpGroups[fppins[i]->m_Name].insert(i);
        sortedNames.emplace_back(fppins[i]->m_Name, i);
    }
    std::sort(sortedNames.begin(), sortedNames.end());

    std::set<AString> done; // with regard to case
    for (ExpeditionPin* pin : pins)
    {
        if (done.count(pin->m_Name))
            continue;
        const AString name = pin->m_Name; // the renaming below may change this pin's name
        done.insert(name);
        std::vector<size_t> duplicateNamePins;
        const auto group = groups.find(name);
        if (group != groups.end())
            duplicateNamePins.assign(group->second.begin(), group->second.end());
        const std::vector<ExpeditionPin*> matchingFpPins =
            MatchingFootprintPins(name, fppins, fpGroups, sortedNames);
        VELLUM_ASSERT(duplicateNamePins.size() == matchingFpPins.size());
        const size_t count = std::min(duplicateNamePins.size(), matchingFpPins.size());
        for (size_t k = 0; k < count; ++k)
        {
            const size_t index = duplicateNamePins[k];
            ExpeditionPin* renamed = pins[index];
            auto from = groups.find(renamed->m_Name);
            from->second.erase(index);
            if (from->second.empty())
                groups.erase(from);
            renamed->m_Name = matchingFpPins[k]->m_Name;
            groups[renamed->m_Name].insert(index);
        }
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
    // The first pin of each name, without regard to case.
    std::unordered_map<std::wstring, ExpeditionPin*, AStringNoCaseHash, AStringNoCaseEqual> firstOfName;
    for (ExpeditionPin* pin : pins)
        firstOfName.emplace(pin->m_Name, pin);
    orderedPins.clear();
    for (const ExpeditionPin* fp : footprintPins)
    {
        const auto found = firstOfName.find(fp->m_Name);
        if (found != firstOfName.end())
            orderedPins.push_back(found->second);
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
