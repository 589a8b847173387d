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

#include <string>
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
// designator. A large board has hundreds of thousands of pins, so the texts
// are held as bytes, the designators once per component, and the one index
// that nearly every pin has in place.
struct ExpeditionToTnf::NetlistPins
{
    struct Pin
    {
        size_t m_RefDes = 0; // in m_RefDesTexts
        int m_First = -1;    // the first index, -1 for none
        std::vector<int> m_More;
    };
    // The text as bytes, one to a code unit; a code unit beyond a byte, which
    // no file gives but a program could, becomes a marker byte and its four
    // bytes, so that two texts are equal as keys only when they are equal.
    static void AppendKey(std::string& key, const AString& text)
    {
        for (wchar_t ch : text)
        {
            const auto unit = static_cast<unsigned long>(ch);
            if (unit < 0xFF)
            {
                key.push_back(static_cast<char>(unit));
                continue;
            }
            key.push_back(static_cast<char>(0xFF));
            for (int shift = 24; shift >= 0; shift -= 8)
                key.push_back(static_cast<char>((unit >> shift) & 0xFF));
        }
    }
    static std::string Key(const AString& text)
    {
        std::string key;
        key.reserve(text.size());
        AppendKey(key, text);
        return key;
    }
    std::unordered_map<std::string, Pin> m_Pins;
    std::vector<AString> m_RefDesTexts;
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
    size_t pinCount = 0;
    for (ExpeditionBaseElement* element : elements)
        if (const ExpeditionComponent* component = element->AsComponent())
            pinCount += component->m_Pins.size();
    pins.m_Pins.reserve(pinCount);
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
        pins.m_RefDesTexts.push_back(refDes);
        std::string key;
        for (size_t p = 0; p < component->m_Pins.size(); ++p)
        {
            key.clear();
            NetlistPins::AppendKey(key, refDes);
            key.push_back('-');
            NetlistPins::AppendKey(key, component->m_Pins[p]->m_Name);
            NetlistPins::Pin& pin = pins.m_Pins[key];
            if (pin.m_First < 0)
                pin.m_First = static_cast<int>(p);
            else
                pin.m_More.push_back(static_cast<int>(p));
            pin.m_RefDes = pins.m_RefDesTexts.size() - 1;
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
            const auto found = pins.m_Pins.find(NetlistPins::Key(text));
            const NetlistPins::Pin* known = found == pins.m_Pins.end() ? nullptr : &found->second;
            AString refDes = known ? pins.m_RefDesTexts[known->m_RefDes] : AString();
            if (m_Diagnostics && !known)
                m_Diagnostics->Unresolved(ExpeditionDiagnostics::k_NetPin, text,
                                          "net \"" + ExpeditionDiagnostics::Text(name) + "\"");
            if (refDes.empty())
                refDes = text.substr(0, text.find(L'-', 0));
            const size_t count = known && known->m_First >= 0 ? 1 + known->m_More.size() : 0;
            if (count >= 2 && !warned)
            {
                warned = true;
                ExpeditionUi::ShowMessage_G(
                    AString(L"Duplicate Pins Warning"),
                    AString(L"Some of the components contain multiple pins with the same name\n"
                            L"You may want to set a unique name for each pin in these components\n"
                            L"and re-translate the design."));
            }
            for (size_t i = 0; i < count; ++i)
            {
                // "refdes.index", as %s.%d prints it: the designator up to a
                // NUL that a hostile file may have put in it.
                AString pin(refDes.c_str());
                pin += L'.';
                pin += std::to_wstring(i == 0 ? known->m_First : known->m_More[i - 1]);
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
