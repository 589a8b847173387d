// ExpeditionNetClassReader.cpp - NetClass.hkp: the clearance rules of the
// "(Master)" net class scheme, first rule set only, and the look-up of a
// layer's clearances.
//
// The working values are never reset, so a subrule inherits every clearance
// it does not state from the subrule before it, whatever its layer.
#include "translators/ExpeditionToTnf/ExpeditionDiagnostics.h"
#include "translators/ExpeditionToTnf/ExpeditionKeyword.h"
#include "translators/ExpeditionToTnf/ExpeditionParser.h"
#include "translators/ExpeditionToTnf/ExpeditionReaderCursor.h"

namespace
{
// The fourteen clearance keywords and the working value each feeds. The two
// plane-to-pad words share one value; the mask words feed values nobody reads.
enum Clearance
{
    k_TraceToTrace,
    k_TraceToPad,
    k_TraceToVia,
    k_ViaToVia,
    k_ViaToPad,
    k_PadToPad,
    k_PlaneToPad,
    k_PlaneToVia,
    k_PlaneToPlane,
    k_MaskToPlane,
    k_MaskToPad,
    k_MaskToTrace,
    k_MaskToVia,
    k_ClearanceCount
};

struct ClearanceKeyword
{
    const wchar_t* m_Keyword;
    Clearance m_Value;
};

const ClearanceKeyword k_ClearanceKeywords[] = {
    {L"TRACE_TO_TRACE", k_TraceToTrace}, {L"TRACE_TO_PAD", k_TraceToPad},   {L"TRACE_TO_VIA", k_TraceToVia},
    {L"VIA_TO_VIA", k_ViaToVia},         {L"VIA_TO_PAD", k_ViaToPad},       {L"PAD_TO_PAD", k_PadToPad},
    {L"PLANE_TO_TRACE", k_PlaneToPad},   {L"PLANE_TO_PAD", k_PlaneToPad},   {L"PLANE_TO_VIA", k_PlaneToVia},
    {L"PLANE_TO_PLANE", k_PlaneToPlane}, {L"MASK_TO_PLANE", k_MaskToPlane}, {L"MASK_TO_PAD", k_MaskToPad},
    {L"MASK_TO_TRACE", k_MaskToTrace},   {L"MASK_TO_VIA", k_MaskToVia},
};

const ClearanceKeyword* FindClearanceKeyword(const AString& token)
{
    for (const ClearanceKeyword& k : k_ClearanceKeywords)
        if (token.CompareNoCase(k.m_Keyword) == 0)
            return &k;
    return nullptr;
}
} // namespace

void ExpeditionParser::ReadNetClasses()
{
    LongFileName file;
    if (!OpenJobFile(AString(L"NetClass.hkp"), AString(), false, file))
        return;
    io::CToken_istream stream(file, 0);
    ReadNetClasses(stream);
}

void ExpeditionParser::ReadNetClasses(io::CToken_istream& stream)
{
    const ExpeditionDiagnostics::FileScope reading(m_Diagnostics, stream);
    double factor = 1.0;
    double values[k_ClearanceCount] = {};
    AString token;
    ExpeditionReaderCursor at{stream, token, factor};
    // Token by token: values are tested as keywords too, and no line is skipped.
    while (!at.AtEnd())
    {
        at.Next();
        if (at.Is(L"UNITS") && at.m_Level == k_OneDot)
        {
            AString text;
            stream.NewLine(text);
            factor = UnitFactor(text);
        }
        else if (token.CompareNoCase(L"NET_CLASS_SCHEME") == 0)
        {
            stream >> token;
            if (token.CompareNoCase(L"(Master)") == 0)
                ReadMasterScheme(at, values);
        }
    }
}

// The rule sets of the master scheme. A keyword of two dots ends a subrule;
// when it is the next CLEARANCE_RULE_SET, the name behind it ends the scheme,
// so only the first rule set gives rules.
void ExpeditionParser::ReadMasterScheme(ExpeditionReaderCursor& at, double values[])
{
    io::CToken_istream& stream = at.m_Stream;
    AString& token = at.m_Token;
    const double factor = at.m_Factor;
    AString layerName;
    while (!at.AtEnd())
    {
        if (token.CompareNoCase(L"SUBRULE") != 0)
            at.Next();
        if (token.CompareNoCase(L"CLEARANCE_RULE_SET") == 0)
        {
            stream >> token; // its name, no keyword
            continue;
        }
        if (token.CompareNoCase(L"SUBRULE") != 0)
            return;

        token.clear();
        at.m_Level = k_ThreeDots;
        while (!at.AtEnd())
        {
            if (token.CompareNoCase(L"SUBRULE") == 0 || token.CompareNoCase(L"NET_CLASS") == 0 ||
                at.m_Level == k_TwoDots)
                break;
            at.Next();
            if (token.CompareNoCase(L"LAYER_NUM") == 0)
            {
                int number = 0;
                stream >> number;
                layerName = m_LayerNames[number];
            }
            else if (const ClearanceKeyword* keyword = FindClearanceKeyword(token))
                stream >> values[keyword->m_Value];
        }
        m_ClearanceRules.push_back(new ExpeditionClearanceRule(
            layerName, values[k_TraceToTrace] * factor, values[k_TraceToPad] * factor,
            values[k_TraceToVia] * factor, values[k_ViaToVia] * factor, values[k_ViaToPad] * factor, 0.0,
            values[k_PadToPad] * factor, values[k_PlaneToPad] * factor, values[k_PlaneToVia] * factor,
            values[k_PlaneToPlane] * factor));
    }
}

const ExpeditionClearanceRule* ExpeditionParser::FindClearanceRule(const AString& layerName) const
{
    for (const ExpeditionClearanceRule* rule : m_ClearanceRules)
        if (rule->m_LayerName.CompareNoCase(layerName) == 0)
            return rule;
    return nullptr;
}

double ExpeditionParser::GetPadClearance(const AString& layerName) const
{
    const ExpeditionClearanceRule* rule = FindClearanceRule(layerName);
    if (!rule)
        return k_DefaultClearance;
    if (rule->m_PadToPad != 0.0)
        return rule->m_PadToPad;
    if (rule->m_TraceToTrace != 0.0)
        return rule->m_TraceToTrace;
    if (rule->m_PlaneToPlane != 0.0)
        return rule->m_PlaneToPlane;
    return k_DefaultClearance;
}

double ExpeditionParser::GetPlaneClearance(const AString& layerName) const
{
    const ExpeditionClearanceRule* rule = FindClearanceRule(layerName);
    if (!rule)
        return k_DefaultClearance;
    if (rule->m_PlaneToPlane != 0.0)
        return rule->m_PlaneToPlane;
    if (rule->m_TraceToTrace != 0.0)
        return rule->m_TraceToTrace;
    const double pad = GetPadClearance(layerName);
    return pad != 0.0 ? pad : k_DefaultClearance;
}
