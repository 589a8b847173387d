// ExpeditionNetlistWriter.cpp - the Netlist block (component instances with
// their properties, and nets as pins by reference designator and index) and
// the LayoutComponents block.
//
// A net names its pins as "refdes-pin"; here they become "refdes.index", the
// index counting the component's pins in order. Several pins of one name on a
// component all answer to that name, which is worth a warning.
#include "translators/ExpeditionToTnf/ExpeditionToTnf.h"

#include "translators/ExpeditionToTnf/ExpeditionDiagnostics.h"
#include "translators/ExpeditionToTnf/ExpeditionUserInterface.h"

#include <unordered_map>

using io::CBlock_func;
using io::CBlockPtr;

namespace
{

void AddTextProp(io::CBlock& properties, const wchar_t* name, const AString& value)
{
    CBlock_func prop(L"TextProp");
    prop << AString(name) << value;
    properties << prop;
}
} // namespace

// What pass 1 leaves for pass 2: per pin text its indices and its reference
// designator.
struct ExpeditionToTnf::NetlistPins
{
    struct Pin
    {
        std::vector<int> m_Indices;
        AString m_RefDes;
    };
    std::unordered_map<std::wstring, Pin> m_Pins;
};

// The part values by part number without regard to case, those of one number
// in the order of the part table: every component looks its number up, and a
// board has tens of thousands of them.
struct ExpeditionToTnf::PartValuesIndex
{
    explicit PartValuesIndex(const std::map<AString, ExpeditionPartValues*>& partValues)
    {
        for (const auto& [part, values] : partValues)
            if (values)
                m_Values[part].push_back(values);
    }
    std::unordered_map<AString, std::vector<const ExpeditionPartValues*>, AStringNoCaseHash,
                       AStringNoCaseEqual>
        m_Values;
};

CBlockPtr ExpeditionToTnf::WriteComponentProperties(const ExpeditionComponent& component,
                                                    const AString& partNumber,
                                                    const PartValuesIndex& partValues)
{
    CBlockPtr properties(L"Properties");
    AString value;
    for (const ExpeditionAttribute& attribute : component.m_Attributes)
        if (attribute.name.CompareNoCase(L"Value") == 0)
        {
            value = attribute.value;
            break;
        }
    if (!partNumber.empty())
        AddTextProp(*properties, L"PART_NUMBER", partNumber);
    const AString type = m_PartTypes[partNumber];
    if (!type.empty())
        AddTextProp(*properties, L"Type", type);
    bool matched = false;
    static const std::vector<const ExpeditionPartValues*> noValues;
    const auto found = partValues.m_Values.find(partNumber);
    for (const ExpeditionPartValues* values : found == partValues.m_Values.end() ? noValues : found->second)
    {
        matched = true;
        AddTextProp(*properties, L"Value", values->m_Value);
        AddTextProp(*properties, L"Parasitic_Capacitance", values->m_ParasiticCapacitance);
        AddTextProp(*properties, L"Parasitic_Resistance", values->m_ParasiticResistance);
        AddTextProp(*properties, L"Parasitic_Inductance", values->m_ParasiticInductance);
    }
    if (!matched && !value.empty())
        AddTextProp(*properties, L"Value", value);
    return properties;
}

void ExpeditionToTnf::WriteNetlist(ElementList& elements, io::CBlock_stream& layoutCell)
{
    // Each instance and net goes to the file as it is made; only the index of
    // the pins stays until the nets are written.
    io::CBlock_stream block(layoutCell, L"Netlist");
    NetlistPins pins;
    const PartValuesIndex partValues(m_PartValues);
    int counter = 0;
    int index = 0;
    for (ExpeditionBaseElement* element : elements)
    {
        const ExpeditionComponent* component = element->AsComponent();
        if (!component)
            continue;
        const AString refDes = RefDesOrNextFree(*component, true, counter);
        const AString partNumber = component->TextOfType(L"PARTNO", true);
        if (m_Diagnostics && !partNumber.empty() &&
            !m_Diagnostics->IsNameGiven(ExpeditionDiagnostics::k_PartDefined, partNumber))
            m_Diagnostics->Unresolved(ExpeditionDiagnostics::k_PartNumber, partNumber,
                                      "component " + ExpeditionDiagnostics::Text(refDes));
        CBlockPtr instance(L"Compinst");
        AString type;
        type.Format(L"Component%d", index++);
        CBlock_func function(refDes);
        function << type;
        *instance << function << WriteComponentProperties(*component, partNumber, partValues);
        block << instance;
        for (size_t p = 0; p < component->m_Pins.size(); ++p)
        {
            NetlistPins::Pin& pin = pins.m_Pins[refDes + L"-" + component->m_Pins[p]->m_Name];
            pin.m_Indices.push_back(static_cast<int>(p));
            pin.m_RefDes = refDes;
        }
    }
    WriteNets(elements, pins, block);
}

void ExpeditionToTnf::WriteNets(ElementList& elements, NetlistPins& pins, io::CBlock_stream& block)
{
    bool warned = false;
    for (ExpeditionBaseElement* element : elements)
    {
        const ExpeditionNetlist* netlist = element->AsNetlist();
        if (!netlist)
            continue;
        const AString name =
            netlist->m_Name.CompareNoCase(L"(net0)") == 0 ? AString(L"DUMMY") : netlist->m_Name;
        CBlockPtr net(L"Net");
        CBlock_func signal(name);
        signal << AString(L"Signal");
        *net << signal;
        for (const AString& text : netlist->m_Pins)
        {
            static const NetlistPins::Pin none;
            const auto found = pins.m_Pins.find(text);
            const NetlistPins::Pin& known = found == pins.m_Pins.end() ? none : found->second;
            if (m_Diagnostics && found == pins.m_Pins.end())
                m_Diagnostics->Unresolved(ExpeditionDiagnostics::k_NetPin, text,
                                          "net \"" + ExpeditionDiagnostics::Text(name) + "\"");
            AString refDes = known.m_RefDes;
            if (refDes.empty())
                refDes = text.substr(0, text.find(L'-', 0));
            const std::vector<int>& indices = known.m_Indices;
            if (indices.size() >= 2 && !warned)
            {
                warned = true;
                ExpeditionUi::ShowMessage_G(
                    AString(L"Duplicate Pins Warning"),
                    AString(L"Some of the components contain multiple pins with the same name\n"
                            L"You may want to set a unique name for each pin in these components\n"
                            L"and re-translate the design."));
            }
            for (int pinIndex : indices)
            {
                AString pin;
                pin.Format(L"%s.%d", refDes.c_str(), pinIndex);
                *net << io::CBlock_named_value(L"NetPin", io::CBlock_value(pin));
            }
        }
        block << net;
        if (m_Diagnostics)
            ++m_Diagnostics->InFile().m_Nets;
    }
}

CBlockPtr ExpeditionToTnf::WriteLayoutComponents(ElementList& elements)
{
    CBlockPtr block(L"LayoutComponents");
    // The layer of a component that names none: the first conductive layer.
    AString topLayer;
    for (ExpeditionBaseElement* element : elements)
        if (const ExpeditionLayer* layer = element->AsLayer(); layer && layer->m_ConductiveNumber == 1)
        {
            topLayer = layer->m_Name;
            break;
        }
    int counter = 0;
    for (ExpeditionBaseElement* element : elements)
    {
        const ExpeditionComponent* component = element->AsComponent();
        if (!component)
            continue;
        const AString refDes = RefDesOrNextFree(*component, false, counter);
        const AString layer = component->m_LayerName.empty() ? topLayer : component->m_LayerName.str();
        // A component on the far side has its rotation reflected, not its position.
        const double rotation = component->m_Mirrored ? 180.0 - component->m_Rotation : component->m_Rotation;
        CBlockPtr entry(L"LayoutComp");
        CBlock_func instance(L"LayoutCompInst");
        instance << layer << component->m_FootprintName << refDes << component->m_X + 0.0
                 << component->m_Y + 0.0 << rotation << component->m_Mirrored;
        *entry << instance;
        *block << entry;
    }
    return block;
}
