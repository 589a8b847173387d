// ExpeditionJobPrefsReader.cpp - JobPrefs.hkp: user layers, the stack-up and
// the default plane connections.
//
// The stack-up is read record by record: a conductive layer (PLANE_LAYER or
// SIGNAL_LAYER) or a dielectric one, each ended by the next layer keyword.
// Conductive layers get their names here ("Top_1", "PLANE_2", "SIGNAL_3"),
// and every other file of the job refers to layers by those names or by the
// conductive number behind them.
#include "translators/ExpeditionToTnf/ExpeditionDiagnostics.h"
#include "translators/ExpeditionToTnf/ExpeditionKeyword.h"
#include "translators/ExpeditionToTnf/ExpeditionParser.h"
#include "translators/ExpeditionToTnf/ExpeditionReaderCursor.h"

namespace
{
// The keywords that end a stack-up record.
bool EndsStackupRecord(const AString& token)
{
    return token.CompareNoCase(L"DIELECTRIC_LAYER") == 0 || token.CompareNoCase(L"PLANE_LAYER") == 0 ||
           token.CompareNoCase(L"SIGNAL_LAYER") == 0 || token.CompareNoCase(L"ALLOW_BURIED_RESISTORS") == 0;
}

// A later record of the same kind replaces an earlier one, which is freed.
void ReplaceConnection(ExpeditionPlaneConnection*& connection, ExpeditionPlaneConnection* later)
{
    delete connection;
    connection = later;
}
} // namespace

void ExpeditionParser::ReadJobPrefs(ElementList& elements)
{
    LongFileName file;
    OpenJobFile(AString(L"JobPrefs.hkp"), AString(), true, file);
    io::CToken_istream stream(file, 0);
    ReadJobPrefs(stream, elements);
}

void ExpeditionParser::ReadJobPrefs(io::CToken_istream& stream, ElementList& elements)
{
    const ExpeditionDiagnostics::FileScope reading(m_Diagnostics, stream);
    double factor = 1.0;
    AString token; // empty at the start, so the first line is skipped
    ExpeditionReaderCursor at{stream, token, factor};
    while (!at.AtEnd())
    {
        if (at.Is(L"USER_DEFINED_LAYERS_SECTION"))
        {
            ReadUserLayers(at, elements);
            continue; // the token that ended the section is dispatched next
        }
        if (at.Is(L"LAYER_STACKUP_SECTION"))
        {
            ReadStackup(at, elements);
            continue;
        }
        if (token.CompareNoCase(L"PHYSICAL_LAYERS") == 0)
            stream >> m_PhysicalLayers;
        else if (at.Is(L"UNITS") && at.m_Level == k_OneDot)
        {
            AString text;
            stream.NewLine(text);
            factor = UnitFactor(text);
        }
        else if (token.CompareNoCase(L"TP_ASSIGNMENT_SECTION") == 0)
        {
            if (m_Diagnostics)
                m_Diagnostics->AtToken(stream, "section-cut-short",
                                       "Nothing from TP_ASSIGNMENT_SECTION to the end of the file is read.");
            return; // nothing in or behind this section is read
        }
        else if (token.CompareNoCase(L"DEFAULT_VIA_CONNECTIONS") == 0)
            ReplaceConnection(m_DefaultViaConnection, ReadPlaneConnection(stream, factor));
        else if (token.CompareNoCase(L"DEFAULT_THRU_PAD_CONNECTIONS") == 0)
            ReplaceConnection(m_DefaultThruPadConnection, ReadPlaneConnection(stream, factor));
        else if (token.CompareNoCase(L"DEFAULT_SMD_PAD_CONNECTIONS") == 0)
            ReplaceConnection(m_DefaultSmdPadConnection, ReadPlaneConnection(stream, factor));
        else if (at.AtEnd())
            break;
        else
        {
            if (m_Diagnostics)
                m_Diagnostics->SkippedLine(stream, token);
            stream.NewLine();
        }
        at.NextPlain();
    }
}

// Three keyword lines in any order: the tie-leg number and rotation options,
// whose values stay text, and a width behind any other keyword.
ExpeditionPlaneConnection* ExpeditionParser::ReadPlaneConnection(io::CToken_istream& stream, double factor)
{
    double width = 0.0;
    AString number, rotation, token;
    bool hasNumber = false, hasRotation = false;
    // The record is three lines of two dots. A keyword of one dot is the
    // next record of the file, which a shorter record takes as its own.
    bool cutShort = false;
    const auto next = [&]()
    {
        const int level = NextToken(stream, token);
        if (m_Diagnostics && level <= k_OneDot && !cutShort && !stream.eof())
        {
            cutShort = true;
            m_Diagnostics->AtToken(stream, "section-cut-short",
                                   "A default connection record of fewer than three lines reads on into " +
                                       ExpeditionDiagnostics::Text(token) +
                                       ", which is lost with the values on its line.");
        }
    };

    next();
    if (token.CompareNoCase(L"TIE_LEG_NUMBER_OPTION") == 0)
    {
        stream >> number;
        hasNumber = true;
    }
    else if (token.CompareNoCase(L"TIE_LEG_ROTATION_OPTION") == 0)
    {
        stream >> rotation;
        hasRotation = true;
    }
    else
        stream >> width;

    next();
    const bool numberSecond = token.CompareNoCase(L"TIE_LEG_NUMBER_OPTION") == 0;
    if (!numberSecond)
    {
        if (token.CompareNoCase(L"TIE_LEG_ROTATION_OPTION") == 0)
        {
            stream >> rotation;
            hasRotation = true;
        }
        else
            stream >> width;
        if (!hasNumber)
            next();
    }
    if (numberSecond || !hasNumber)
        stream >> number;
    if (!hasRotation)
    {
        next();
        stream >> rotation;
    }
    return new ExpeditionPlaneConnection(width * factor, 0.0, number, rotation);
}

void ExpeditionParser::ReadUserLayers(ExpeditionReaderCursor at, ElementList& elements)
{
    io::CToken_istream& stream = at.m_Stream;
    const AString& token = at.m_Token;
    AString name;
    int number = 0; // not reset between layers: a layer without its own keeps the one before
    for (;;)
    {
        at.NextPlain();
        if (token.CompareNoCase(L"USER_LAYER_NAME") != 0)
            return;
        stream >> name;
        at.NextPlain();
        if (token.CompareNoCase(L"USER_LAYER_NUMBER") == 0)
            stream >> number;
        else if (m_Diagnostics)
            m_Diagnostics->AtToken(stream, "section-cut-short",
                                   "User layer \"" + ExpeditionDiagnostics::Text(name) +
                                       "\" has no USER_LAYER_NUMBER: it takes the number before it, and the "
                                       "keyword " +
                                       ExpeditionDiagnostics::Text(token) + " behind it is lost.");
        elements.push_back(new ExpeditionLayer(name, AString(L"USER"), AString(L"USER"), number, -1, 0.0, 0.0,
                                               0.0, AString()));
        if (at.AtEnd())
            return;
    }
}

void ExpeditionParser::ReadStackup(ExpeditionReaderCursor at, ElementList& elements)
{
    io::CToken_istream& stream = at.m_Stream;
    AString& token = at.m_Token;
    token.clear();
    at.NextPlain();
    while (!at.AtEnd())
    {
        if (token.CompareNoCase(L"DIELECTRIC_LAYER") == 0)
            ReadDielectricLayer(at, elements);
        else if (token.CompareNoCase(L"PLANE_LAYER") == 0 || token.CompareNoCase(L"SIGNAL_LAYER") == 0)
            ReadConductiveLayer(at, elements);
        else if (token.CompareNoCase(L"ALLOW_BURIED_RESISTORS") == 0)
            return; // the top level skips this line as unknown
        else
        {
            stream.NewLine();
            at.NextPlain();
        }
    }
}

void ExpeditionParser::ReadConductiveLayer(ExpeditionReaderCursor& at, ElementList& elements)
{
    io::CToken_istream& stream = at.m_Stream;
    const AString& token = at.m_Token;
    const double factor = at.m_Factor;
    const bool isPlane = token.CompareNoCase(L"PLANE_LAYER") == 0;
    AString description, planeNet, planeType(L"POSITIVE");
    int layerNumber = 0, conductiveNumber = 0;
    double dielectricConstant = 0.0, resistivity = 0.0, thickness = 0.0;

    stream >> layerNumber;
    at.Next(); // the level of this first keyword is not looked at
    while (!at.AtEnd() && !EndsStackupRecord(token))
    {
        if (token.CompareNoCase(L"PLANE_NET") == 0)
        {
            // The net and its sub-records; the keyword that ends them goes on
            // with its level in force.
            AString net, answer;
            stream >> net;
            for (;;)
            {
                at.Next();
                if (token.CompareNoCase(L"PLANE_NET_CLEARANCE") == 0)
                    stream.NewLine();
                else if (token.CompareNoCase(L"USE_ROUTE_BORDER") == 0)
                {
                    stream >> answer;
                    if (answer.CompareNoCase(L"Yes") == 0)
                        planeNet = net;
                }
                else
                    break;
            }
            if (at.m_Level == k_OneDot)
                break;
            continue;
        }
        if (token.CompareNoCase(L"CONDUCTIVE_LAYER_NUMBER") == 0)
            stream >> conductiveNumber;
        else if (token.CompareNoCase(L"DIELECTRIC_CONSTANT") == 0)
            stream >> dielectricConstant;
        else if (token.CompareNoCase(L"LAYER_DESCRIPTION") == 0)
            stream >> description;
        else if (token.CompareNoCase(L"LAYER_RESISTIVITY") == 0)
        {
            stream >> resistivity;
            resistivity *= factor; // scaled as if it were a length
        }
        else if (token.CompareNoCase(L"LAYER_THICKNESS") == 0)
        {
            stream >> thickness;
            thickness *= factor;
        }
        else if (token.CompareNoCase(L"PLANE_TYPE") == 0)
            stream >> planeType;
        else
            stream.NewLine(); // LAYER_TECHNOLOGY and the like
        at.Next();
        // A keyword of the section's own level ends the record.
        if (at.m_Level == k_OneDot)
            break;
    }

    AString name;
    if (!description.empty())
        name.Format(L"%s_%d", description.c_str(), conductiveNumber);
    else
        name.Format(isPlane ? L"PLANE_%d" : L"SIGNAL_%d", conductiveNumber);
    if (!planeNet.empty())
        m_PlaneNets.emplace_back(planeNet, name);
    auto* layer = new ExpeditionLayer(name, AString(L"SIGNAL"), description, layerNumber, conductiveNumber,
                                      thickness, resistivity, dielectricConstant, planeType);
    elements.push_back(layer);
    m_LayerNames[conductiveNumber] = name;
    m_Layers[conductiveNumber] = layer;
}

void ExpeditionParser::ReadDielectricLayer(ExpeditionReaderCursor& at, ElementList& elements)
{
    io::CToken_istream& stream = at.m_Stream;
    const AString& token = at.m_Token;
    const double factor = at.m_Factor;
    AString description, technology;
    int layerNumber = 0;
    double thickness = 0.0, dielectricConstant = 0.0;
    stream >> layerNumber;
    while (!at.AtEnd())
    {
        at.NextPlain();
        if (EndsStackupRecord(token))
            break;
        if (token.CompareNoCase(L"DIELECTRIC_CONSTANT") == 0)
            stream >> dielectricConstant;
        else if (token.CompareNoCase(L"LAYER_DESCRIPTION") == 0)
            stream >> description;
        else if (token.CompareNoCase(L"LAYER_TECHNOLOGY") == 0)
            stream >> technology;
        else if (token.CompareNoCase(L"LAYER_THICKNESS") == 0)
        {
            stream >> thickness;
            thickness *= factor;
        }
        else
            stream.NewLine();
    }
    AString name;
    name.Format(L"Dielectric_%d", layerNumber);
    elements.push_back(new ExpeditionLayer(name, AString(L"DIELECTRIC"), description, layerNumber, -1,
                                           thickness, 0.0, dielectricConstant, AString()));
}
