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
    int level = 0;
    while (!stream.eof())
    {
        if (token.CompareNoCase(L"USER_DEFINED_LAYERS_SECTION") == 0)
        {
            ReadUserLayers(stream, token, elements);
            continue; // the token that ended the section is dispatched next
        }
        if (token.CompareNoCase(L"LAYER_STACKUP_SECTION") == 0)
        {
            ReadStackup(stream, token, factor, elements);
            continue;
        }
        if (token.CompareNoCase(L"PHYSICAL_LAYERS") == 0)
            stream >> m_PhysicalLayers;
        else if (token.CompareNoCase(L"UNITS") == 0 && level == k_OneDot)
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
        else if (stream.eof())
            break;
        else
        {
            if (m_Diagnostics)
                m_Diagnostics->SkippedLine(stream, token);
            stream.NewLine();
        }
        level = NextPlainToken(stream, token);
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

void ExpeditionParser::ReadUserLayers(io::CToken_istream& stream, AString& token, ElementList& elements)
{
    AString name;
    int number = 0; // not reset between layers: a layer without its own keeps the one before
    for (;;)
    {
        NextPlainToken(stream, token);
        if (token.CompareNoCase(L"USER_LAYER_NAME") != 0)
            return;
        stream >> name;
        NextPlainToken(stream, token);
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
        if (stream.eof())
            return;
    }
}

void ExpeditionParser::ReadStackup(io::CToken_istream& stream, AString& token, double factor,
                                   ElementList& elements)
{
    token.clear();
    NextPlainToken(stream, token);
    while (!stream.eof())
    {
        if (token.CompareNoCase(L"DIELECTRIC_LAYER") == 0)
            ReadDielectricLayer(stream, token, factor, elements);
        else if (token.CompareNoCase(L"PLANE_LAYER") == 0 || token.CompareNoCase(L"SIGNAL_LAYER") == 0)
            ReadConductiveLayer(stream, token, factor, elements);
        else if (token.CompareNoCase(L"ALLOW_BURIED_RESISTORS") == 0)
            return; // the top level skips this line as unknown
        else
        {
            stream.NewLine();
            NextPlainToken(stream, token);
        }
    }
}

void ExpeditionParser::ReadConductiveLayer(io::CToken_istream& stream, AString& token, double factor,
                                           ElementList& elements)
{
    const bool isPlane = token.CompareNoCase(L"PLANE_LAYER") == 0;
    AString description, planeNet, planeType(L"POSITIVE");
    int layerNumber = 0, conductiveNumber = 0;
    double dielectricConstant = 0.0, resistivity = 0.0, thickness = 0.0;

    stream >> layerNumber;
    NextToken(stream, token); // the level of this first keyword is not looked at
    int level = 0;
    while (!stream.eof() && !EndsStackupRecord(token))
    {
        if (token.CompareNoCase(L"PLANE_NET") == 0)
        {
            // The net and its sub-records; the keyword that ends them goes on
            // with its level in force.
            AString net, answer;
            stream >> net;
            for (;;)
            {
                level = NextToken(stream, token);
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
            if (level == k_OneDot)
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
        level = NextToken(stream, token);
        // A keyword of the section's own level ends the record.
        if (level == k_OneDot)
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

void ExpeditionParser::ReadDielectricLayer(io::CToken_istream& stream, AString& token, double factor,
                                           ElementList& elements)
{
    AString description, technology;
    int layerNumber = 0;
    double thickness = 0.0, dielectricConstant = 0.0;
    stream >> layerNumber;
    while (!stream.eof())
    {
        NextPlainToken(stream, token);
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
