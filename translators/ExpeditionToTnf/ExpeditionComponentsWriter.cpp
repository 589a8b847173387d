// ExpeditionComponentsWriter.cpp - the extra pins of split pads, and the
// Footprints and Components blocks.
//
// A pin whose pad was split into several loops got extra padstacks at the
// same place; each becomes a further pin "%s_XTRA_%d" (counted from 0) on the
// footprint, on every component of it, and in its net, so that the loops stay
// connected.
#include "translators/ExpeditionToTnf/ExpeditionToTnf.h"

#include "translators/ExpeditionToTnf/ExpeditionDiagnostics.h"

using io::CBlock_func;
using io::CBlockFuncPtr;
using io::CBlockPtr;

namespace
{

bool IsLetter(wchar_t ch)
{
    return (ch >= L'A' && ch <= L'Z') || (ch >= L'a' && ch <= L'z');
}

ExpeditionPin* CopyPin(const ExpeditionPin& pin, const AString& name, const AString& padStack)
{
    return new ExpeditionPin(name, pin.m_NetName, padStack, pin.m_X, pin.m_Y, pin.m_Rotation, pin.m_Options,
                             pin.m_Attributes);
}
} // namespace

AString ExpeditionToTnf::NextFreeRefDes(int& counter) const
{
    AString name;
    for (;;)
    {
        name.Format(L"U%d", counter);
        if (m_ReservedRefDes.empty() || !m_ReservedRefDes.count(name))
            return name;
        ++counter;
    }
}

AString ExpeditionToTnf::RefDesOrNextFree(const ExpeditionComponent& component, bool last, int& counter) const
{
    const AString refDes = component.TextOfType(L"REF_DES", last);
    if (!refDes.empty())
        return refDes;
    const AString free = NextFreeRefDes(counter);
    ++counter;
    return free;
}

AString ExpeditionToTnf::FindFootprintPadStack(const ElementList& elements, const AString& footprintName,
                                               const AString& pinName) const
{
    for (ExpeditionBaseElement* element : elements)
    {
        const ExpeditionFootprint* footprint = element->AsFootprint();
        if (!footprint || footprint->m_Name.CompareNoCase(footprintName) != 0)
            continue;
        for (const ExpeditionPin* pin : footprint->m_Pins)
            if (pin->m_Name.CompareNoCase(pinName) == 0)
                return pin->m_PadStackName;
    }
    return AString();
}

void ExpeditionToTnf::ExpandPins(ElementList& elements)
{
    if (m_PadStackExtras.empty())
        return; // no pad has further loops: nothing changes
    ExpandNetPins(elements);

    // The footprints in use get the extra pins behind their own.
    std::map<AString, std::vector<ExpeditionPin*>> newPins;
    for (ExpeditionBaseElement* element : elements)
    {
        ExpeditionFootprint* footprint = element->AsFootprint();
        if (!footprint || !m_UsedNames.count(footprint->m_Name))
            continue;
        std::vector<ExpeditionPin*> pins;
        for (const ExpeditionPin* pin : footprint->m_Pins)
        {
            const auto extras = m_PadStackExtras.find(pin->m_PadStackName);
            if (extras == m_PadStackExtras.end())
                continue;
            for (size_t i = 0; i < extras->second.size(); ++i)
            {
                AString name;
                name.Format(L"%s_XTRA_%d", pin->m_Name.c_str(), static_cast<int>(i));
                pins.push_back(CopyPin(*pin, name, extras->second[i]));
            }
        }
        if (pins.empty())
            continue;
        for (const ExpeditionPin* pin : pins)
            footprint->m_Pins.push_back(CopyPin(*pin, pin->m_Name, pin->m_PadStackName));
        // A footprint name seen twice keeps the later one's pins, as a map does.
        for (ExpeditionPin* old : newPins[footprint->m_Name])
            delete old;
        newPins[footprint->m_Name] = pins;
    }
    // ... and so do the components placed from them.
    for (ExpeditionBaseElement* element : elements)
    {
        ExpeditionComponent* component = element->AsComponent();
        if (!component)
            continue;
        const auto pins = newPins.find(component->m_FootprintName);
        if (pins == newPins.end())
            continue;
        for (const ExpeditionPin* pin : pins->second)
            component->m_Pins.push_back(CopyPin(*pin, pin->m_Name, pin->m_PadStackName));
    }
    for (auto& [name, pins] : newPins)
        for (ExpeditionPin* pin : pins)
            delete pin;
}

// Each net gets "refdes-pin_XTRA_i" for the extra pins of its pins.
void ExpeditionToTnf::ExpandNetPins(ElementList& elements)
{
    int counter = 1;
    for (ExpeditionBaseElement* element : elements)
    {
        const ExpeditionComponent* component = element->AsComponent();
        if (!component)
            continue;
        const AString refDes = RefDesOrNextFree(*component, false, counter);
        for (const ExpeditionPin* pin : component->m_Pins)
        {
            AString padStack = pin->m_PadStackName;
            if (padStack.empty())
                padStack = FindFootprintPadStack(elements, component->m_FootprintName, pin->m_Name);
            const auto extras = m_PadStackExtras.find(padStack);
            if (extras == m_PadStackExtras.end())
                continue;
            std::vector<AString> texts;
            for (size_t i = 0; i < extras->second.size(); ++i)
            {
                AString name;
                name.Format(L"%s_XTRA_%d", pin->m_Name.c_str(), static_cast<int>(i));
                texts.push_back(refDes + L"-" + name);
            }
            for (ExpeditionBaseElement* other : elements)
                if (ExpeditionNetlist* netlist = other->AsNetlist();
                    netlist && netlist->m_Name == pin->m_NetName)
                {
                    netlist->m_PinCount += static_cast<unsigned>(texts.size());
                    netlist->m_Pins.insert(netlist->m_Pins.end(), texts.begin(), texts.end());
                }
        }
    }
}

CBlockPtr ExpeditionToTnf::WriteFootprints(ElementList& elements)
{
    CBlockPtr block(L"Footprints");
    for (ExpeditionBaseElement* element : elements)
    {
        const ExpeditionFootprint* footprint = element->AsFootprint();
        if (!footprint || !m_UsedNames.count(footprint->m_Name))
            continue;
        CBlockPtr entry(footprint->m_Name);
        CBlockPtr pins(L"FpPins");
        for (const ExpeditionPin* pin : footprint->m_Pins)
        {
            AString padStack = pin->m_PadStackName;
            if (pin->m_Options.CompareNoCase(L"OPP_SIDE") == 0)
                padStack += L"_XMirrored";
            if (m_Diagnostics)
                CheckPadStackWritten(padStack, pin->m_PadStackName,
                                     "pin " + ExpeditionDiagnostics::Text(pin->m_Name) + " of cell \"" +
                                         ExpeditionDiagnostics::Text(footprint->m_Name) + "\"");
            CBlockPtr definition(L"FpPindef");
            CBlock_func fpPin(L"FpPin");
            fpPin << pin->m_Name << pin->m_X << pin->m_Y << padStack << pin->m_Rotation;
            *definition << fpPin << CBlockPtr(L"Properties");
            *pins << definition;
        }
        *entry << pins << CBlockPtr(L"Graphics");
        *block << entry;
        if (m_Diagnostics)
        {
            m_WrittenFootprints.insert(footprint->m_Name);
            ++m_Diagnostics->InFile().m_Footprints;
        }
    }
    return block;
}

// The leading letters of the reference designator; "U" without one.
AString ExpeditionToTnf::ComponentPrefix(const ExpeditionComponent& component)
{
    const AString refDes = component.TextOfType(L"REF_DES", false);
    size_t letters = 0;
    while (letters < refDes.size() && IsLetter(refDes[letters]))
        ++letters;
    return letters == 0 ? AString(L"U") : refDes.substr(0, letters);
}

CBlockPtr ExpeditionToTnf::WriteComponents(ElementList& elements)
{
    CBlockPtr block(L"Components");
    CBlockPtr board(L"ExpeditionBoard");
    CBlock_func boardDef(L"CompDef");
    boardDef << L"" << AString(L"ExpeditionBoard") << L"" << AString(L"U") << 1
             << AString(L"ExpeditionBoard");
    *board << boardDef;
    *block << board;
    int index = 0;
    for (ExpeditionBaseElement* element : elements)
    {
        const ExpeditionComponent* component = element->AsComponent();
        if (!component)
            continue;
        AString name;
        name.Format(L"Component%d", index++);
        CBlockPtr entry(name);
        CBlock_func definition(L"CompDef");
        definition << L"" << component->m_FootprintName << L"" << ComponentPrefix(*component) << 1;
        *entry << definition;
        for (const ExpeditionPin* pin : component->m_Pins)
        {
            CBlock_func terminal(L"Terminal");
            terminal << pin->m_Name << pin->m_Name << AString(L"A") << false;
            *entry << terminal;
        }
        *block << entry;
        if (m_Diagnostics)
        {
            ExpeditionDiagnostics::Counts& written = m_Diagnostics->InFile();
            ++written.m_Components;
            written.m_Pins += component->m_Pins.size();
            if (!m_WrittenFootprints.count(component->m_FootprintName))
                m_Diagnostics->Unresolved(ExpeditionDiagnostics::k_CellName, component->m_FootprintName,
                                          "component " + ExpeditionDiagnostics::Text(name));
        }
    }
    return block;
}
