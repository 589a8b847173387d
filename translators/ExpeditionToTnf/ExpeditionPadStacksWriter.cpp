// ExpeditionPadStacksWriter.cpp - the PadStacks block: per used padstack its
// hole and the pad on each layer, the mirrored variant of surface padstacks
// placed on the far side, and the extra padstacks that carry the further
// loops of split pads.
//
// Pads and holes are found by exact name. A pad moved against its padstack
// by (a, b) moves the padstack's reference by (-a, -b), so offsets cancel.
#include "translators/ExpeditionToTnf/ExpeditionToTnf.h"

#include "translators/ExpeditionToTnf/ExpeditionDiagnostics.h"

#include <algorithm>
#include <unordered_map>

using io::CBlock_func;
using io::CBlockFuncPtr;
using io::CBlockPtr;

namespace
{
bool Is(const AString& text, const wchar_t* word)
{
    return text.CompareNoCase(word) == 0;
}
} // namespace

// Pads and holes by exact name, each name's elements in list order.
struct ExpeditionToTnf::PadStackLookup
{
    std::unordered_map<std::wstring, std::vector<std::pair<size_t, ExpeditionPad*>>> m_Pads;
    std::unordered_map<std::wstring, std::vector<ExpeditionPadHole*>> m_Holes;

    explicit PadStackLookup(const ElementList& elements)
    {
        for (size_t i = 0; i < elements.size(); ++i)
        {
            if (ExpeditionPad* pad = elements[i]->AsPad())
                m_Pads[pad->m_Name].emplace_back(i, pad);
            else if (ExpeditionPadHole* hole = elements[i]->AsPadHole())
                m_Holes[hole->m_Name].push_back(hole);
        }
    }

    // The pads of any of the names, in list order, each once.
    std::vector<ExpeditionPad*> PadsNamed(std::initializer_list<const AString*> names) const
    {
        std::vector<std::pair<size_t, ExpeditionPad*>> found;
        std::vector<const AString*> seen;
        for (const AString* name : names)
        {
            if (std::any_of(seen.begin(), seen.end(), [name](const AString* s) { return *s == *name; }))
                continue;
            seen.push_back(name);
            const auto it = m_Pads.find(*name);
            if (it != m_Pads.end())
                found.insert(found.end(), it->second.begin(), it->second.end());
        }
        std::sort(found.begin(), found.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
        std::vector<ExpeditionPad*> pads;
        for (const auto& entry : found)
            pads.push_back(entry.second);
        return pads;
    }
};

// Hole(D) for a round hole, Hole(Rectangle(D, L)) for a slot; a hole of equal
// non-zero size and length lets the search go on.
CBlockFuncPtr ExpeditionToTnf::MakeHoleItem(const ExpeditionPadStack& padStack, const PadStackLookup& lookup)
{
    CBlockFuncPtr hole(L"Hole");
    const auto holes = lookup.m_Holes.find(padStack.m_HoleName);
    if (holes == lookup.m_Holes.end())
        return hole;
    for (const ExpeditionPadHole* candidate : holes->second)
    {
        const double diameter = candidate->m_Diameter;
        const double length = candidate->m_SlotLength;
        if (length == 0.0)
        {
            *hole << diameter;
            break;
        }
        if (diameter != length)
        {
            CBlock_func rectangle(L"Rectangle");
            rectangle << diameter << length;
            *hole << rectangle;
            break;
        }
        if (diameter == 0.0)
            break;
    }
    return hole;
}

CBlockFuncPtr ExpeditionToTnf::MakeLayerItem(const ExpeditionPadStack& padStack, const wchar_t* label,
                                             int layer, const PadStackLookup& lookup, bool& hasLoops,
                                             std::vector<PadStackLayerEntry*>& slots)
{
    CBlockFuncPtr item(label);
    CBlockFuncPtr thermal(L"Thermal");
    CBlockFuncPtr nonConnect(L"NonConnect");
    const bool top = std::wstring_view(label) == L"Top";
    const bool bottom = std::wstring_view(label) == L"Bottom";
    AString padName = top ? padStack.m_TopPad : bottom ? padStack.m_BottomPad : padStack.m_InternalPad;
    if (!top && !bottom)
    {
        const auto layerPad = padStack.m_LayerPads.find(layer);
        if (layerPad != padStack.m_LayerPads.end())
            padName = layerPad->second;
    }
    const bool onPlane = m_LayerNames[layer].substr(0, 5) == L"PLANE";

    double offsetX = 0.0, offsetY = 0.0, thermalClearance = 0.0;
    bool clearanceSeen = false;
    for (ExpeditionPad* pad : lookup.PadsNamed({&padName, &padStack.m_ThermalPad, &padStack.m_ClearancePad}))
    {
        bool decided = false;
        if (pad->m_Name == padName)
        {
            offsetX = -pad->m_OffsetX;
            offsetY = -pad->m_OffsetY;
            decided = true;
        }
        // On an inner layer one pad may play two roles; on the outer layers
        // the first role decides.
        if ((!decided || (!top && !bottom)) && pad->m_Name == padStack.m_ThermalPad && onPlane)
        {
            thermalClearance = pad->m_ThermalClearance;
            decided = true;
        }
        if ((!decided || (!top && !bottom)) && pad->m_Name == padStack.m_ClearancePad)
        {
            *nonConnect << pad->m_Name << -pad->m_OffsetX << -pad->m_OffsetY << 0.0;
            clearanceSeen = true;
        }
    }
    if (clearanceSeen)
        *nonConnect << thermalClearance;
    if (m_Diagnostics && !padName.empty() && !lookup.m_Pads.count(padName))
        m_Diagnostics->Unresolved(ExpeditionDiagnostics::k_PadName, padName,
                                  "padstack \"" + ExpeditionDiagnostics::Text(padStack.m_Name) + "\"");
    if (padName == L"")
        padName = L"NULLPAD";
    const double x = padStack.m_OffsetX + offsetX;
    const double y = padStack.m_OffsetY + offsetY;
    PadStackLayerEntry* slot = nullptr;
    if (m_PadLoops.count(padName))
    {
        hasLoops = true;
        slot = new PadStackLayerEntry(padName, AString(label), x, y, 0.0, thermal, nonConnect);
    }
    slots.push_back(slot);
    *item << padName << x << y << 0.0 << thermal << nonConnect;
    return item;
}

CBlockPtr ExpeditionToTnf::WritePadStacks(ElementList& elements)
{
    CBlockPtr block(L"PadStacks");
    const PadStackLookup lookup(elements);
    for (ExpeditionBaseElement* element : elements)
    {
        const ExpeditionPadStack* padStack = element->AsPadStack();
        if (!padStack || !m_UsedPadStacks.count(padStack->m_Name))
            continue;
        CBlockPtr entry(padStack->m_Name);
        bool hasLoops = false;
        std::vector<PadStackLayerEntry*> slots;
        const AString& type = padStack->m_PadStackType;
        if (Is(type, L"FIDUCIAL"))
        {
            *entry << MakeHoleItem(*padStack, lookup);
            *entry << MakeLayerItem(*padStack, L"Top", 1, lookup, hasLoops, slots);
            CBlock_func templ(L"Template");
            templ << L"NULLPAD" << padStack->m_OffsetX << padStack->m_OffsetY << 0.0;
            *entry << templ;
            *entry << MakeLayerItem(*padStack, L"Bottom", m_PhysicalLayers, lookup, hasLoops, slots);
        }
        else if (Is(type, L"MOUNTING_HOLE") || Is(type, L"PIN_THROUGH") || Is(type, L"Via"))
        {
            *entry << MakeHoleItem(*padStack, lookup);
            *entry << MakeLayerItem(*padStack, L"Top", 1, lookup, hasLoops, slots);
            for (int layer = 2; layer <= m_PhysicalLayers - 1; ++layer)
                *entry << MakeLayerItem(*padStack, L"Signal", layer, lookup, hasLoops, slots);
            *entry << MakeLayerItem(*padStack, L"Bottom", m_PhysicalLayers, lookup, hasLoops, slots);
        }
        else if (Is(type, L"PIN_SMD"))
            *entry << MakeLayerItem(*padStack, L"Top", 1, lookup, hasLoops, slots);
        *block << entry;
        StoreLayerSlots(padStack->m_Name, hasLoops, slots);
        if (m_Diagnostics)
        {
            m_WrittenPadStacks.insert(padStack->m_Name);
            ++m_Diagnostics->InFile().m_PadStacks;
        }

        if (m_OppSidePadStacks.count(padStack->m_Name) && Is(type, L"PIN_SMD"))
        {
            *block << WriteMirroredPadStack(*padStack, lookup);
            if (m_Diagnostics)
                m_WrittenPadStacks.insert(padStack->m_Name + L"_XMirrored");
        }
    }
    WriteExtraPadStacks(*block);
    return block;
}

void ExpeditionToTnf::StoreLayerSlots(const AString& name, bool hasLoops,
                                      std::vector<PadStackLayerEntry*>& slots)
{
    if (hasLoops)
        m_PadStackLayers[name] = slots;
    else
        for (PadStackLayerEntry* slot : slots)
            delete slot;
}

// A name that refers to a padstack of the file: one the writer has not
// written is reported under the name as its record gave it.
void ExpeditionToTnf::CheckPadStackWritten(const AString& padStack, const AString& name,
                                           const std::string& askedBy)
{
    if (m_Diagnostics && !m_WrittenPadStacks.count(padStack))
        m_Diagnostics->Unresolved(ExpeditionDiagnostics::k_PadStackName, name, askedBy);
}

// A surface padstack placed on the opposite side: its pad on the bottom.
CBlockPtr ExpeditionToTnf::WriteMirroredPadStack(const ExpeditionPadStack& padStack,
                                                 const PadStackLookup& lookup)
{
    const AString name = padStack.m_Name + L"_XMirrored";
    CBlockPtr mirrored(name);
    std::vector<PadStackLayerEntry*> slots(static_cast<size_t>(std::max(m_PhysicalLayers - 1, 0)), nullptr);
    bool hasLoops = false;
    *mirrored << MakeLayerItem(padStack, L"Bottom", m_PhysicalLayers, lookup, hasLoops, slots);
    StoreLayerSlots(name, hasLoops, slots);
    return mirrored;
}

// Each further loop of a split pad gets a padstack of its own at the same
// place, "%s_XTRA_%d", numbered from 1, behind all regular padstacks.
void ExpeditionToTnf::WriteExtraPadStacks(io::CBlock& block)
{
    for (const auto& [name, slots] : m_PadStackLayers)
    {
        size_t most = 0;
        for (const PadStackLayerEntry* slot : slots)
            if (slot)
            {
                const auto loops = m_PadLoops.find(slot->m_PadName);
                if (loops != m_PadLoops.end())
                    most = std::max(most, loops->second.size());
            }
        if (most == 0)
            continue;
        std::vector<AString> extras;
        for (size_t k = 1; k <= most; ++k)
        {
            AString extraName;
            extraName.Format(L"%s_XTRA_%d", name.c_str(), static_cast<int>(k));
            CBlockPtr extra(extraName);
            for (size_t j = 0; j < slots.size(); ++j)
                extra->Add(io::CBlock_ptr<io::CBlock_item>(MakeExtraLayerItem(slots, j, k).Item()));
            block << extra;
            extras.push_back(extraName);
            if (m_Diagnostics)
                m_WrittenPadStacks.insert(extraName);
        }
        m_PadStackExtras[name] = extras;
    }
}

CBlockFuncPtr ExpeditionToTnf::MakeExtraLayerItem(const std::vector<PadStackLayerEntry*>& slots, size_t j,
                                                  size_t k)
{
    const PadStackLayerEntry* slot = slots[j];
    if (slot)
    {
        const auto loops = m_PadLoops.find(slot->m_PadName);
        if (loops != m_PadLoops.end() && loops->second.size() >= k && loops->second[k - 1] &&
            loops->second[k - 1]->AsPad())
        {
            CBlockFuncPtr item(slot->m_LayerLabel);
            *item << loops->second[k - 1]->AsPad()->m_Name << slot->m_X << slot->m_Y << slot->m_Rotation
                  << slot->m_Thermal << slot->m_NonConnect;
            return item;
        }
    }
    CBlockFuncPtr item(j == 0 ? L"Top" : j + 1 == slots.size() ? L"Bottom" : L"Signal");
    *item << L"NULLPAD" << 0 << 0 << 0;
    return item;
}
