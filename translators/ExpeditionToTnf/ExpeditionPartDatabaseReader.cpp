// ExpeditionPartDatabaseReader.cpp - PDB.hkp: part names and types, and the
// values and parasitics of capacitors, resistors and inductors.
//
// A part is closed when the next Number comes and at the end of the file.
// RefPrefix and the Type text are not cleared between parts, so a part that
// states neither carries over those of the part before it.
#include "translators/ExpeditionToTnf/ExpeditionDiagnostics.h"
#include "translators/ExpeditionToTnf/ExpeditionKeyword.h"
#include "translators/ExpeditionToTnf/ExpeditionParser.h"

struct ExpeditionPartWork
{
    AString m_Number;
    AString m_Value;
    AString m_ParasiticCapacitance;
    AString m_ParasiticResistance;
    AString m_ParasiticInductance;
    AString m_TopCell;    // read and dropped: the cell comes from the placed component
    AString m_BottomCell; // likewise
    AString m_AltCell;    // likewise
    AString m_RefPrefix;  // carried over
    AString m_Type;       // carried over
};

void ExpeditionParser::ReadPartDatabase()
{
    LongFileName file;
    OpenJobFile(AString(L"PDB.hkp"), AString(), true, file);
    io::CToken_istream stream(file, 0);
    ReadPartDatabase(stream);
}

void ExpeditionParser::ReadPartDatabase(io::CToken_istream& stream)
{
    const ExpeditionDiagnostics::FileScope reading(m_Diagnostics, stream);
    ExpeditionPartWork part;
    bool first = true;
    AString token;
    while (!stream.eof())
    {
        NextToken(stream, token);
        if (IsKeyword_G(token, L"Number"))
        {
            if (!first)
                ClosePart(part);
            stream >> part.m_Number;
            if (m_Diagnostics)
                m_Diagnostics->NameGiven(ExpeditionDiagnostics::k_PartDefined, part.m_Number, stream);
            part.m_Value.clear();
            part.m_ParasiticCapacitance.clear();
            part.m_ParasiticResistance.clear();
            part.m_ParasiticInductance.clear();
            part.m_TopCell.clear();
            part.m_BottomCell.clear();
            part.m_AltCell.clear();
            first = false;
        }
        else if (IsKeyword_G(token, L"Name"))
        {
            AString name;
            stream >> name;
            m_PartNames[part.m_Number] = name;
        }
        else if (IsKeyword_G(token, L"TopCell"))
            stream >> part.m_TopCell;
        else if (IsKeyword_G(token, L"BottomCell"))
            stream >> part.m_BottomCell;
        else if (IsKeyword_G(token, L"AltCell"))
            stream >> part.m_AltCell;
        else if (IsKeyword_G(token, L"RefPrefix"))
            stream >> part.m_RefPrefix;
        else if (IsKeyword_G(token, L"Prop"))
            ReadPartProperty(stream, part);
        else
            stream.NewLine();
    }
    if (!part.m_Value.empty())
        ClosePart(part);
}

// Prop "Name"="text": the part's type, its value with a unit letter, or a
// parasitic.
void ExpeditionParser::ReadPartProperty(io::CToken_istream& stream, ExpeditionPartWork& part)
{
    AString property, equals;
    stream >> property;
    if (IsKeyword_G(property, L"Type"))
    {
        stream >> equals >> part.m_Type;
        m_PartTypes[part.m_Number] = part.m_Type;
    }
    else if (IsKeyword_G(property, L"Value") && part.m_Value.empty())
    {
        stream >> equals >> part.m_Value;
        // Each test stands by itself; the letter is added without looking at
        // what the value already ends in.
        if (IsKeyword_G(part.m_RefPrefix, L"C") || IsKeyword_G(part.m_Type, L"Capacitance"))
            part.m_Value += L"F";
        if (IsKeyword_G(part.m_RefPrefix, L"R") || IsKeyword_G(part.m_Type, L"Resistance"))
            part.m_Value += L"Ohms";
        if (IsKeyword_G(part.m_RefPrefix, L"L") || IsKeyword_G(part.m_Type, L"Inductance"))
            part.m_Value += L"H";
    }
    else if (IsKeyword_G(property, L"Capacitance") || IsKeyword_G(property, L"Resistance") ||
             IsKeyword_G(property, L"Inductance"))
        stream >> equals >> part.m_Value; // replaces, with no unit letter
    else if (IsKeyword_G(property, L"Parasitic_Capacitance"))
        stream >> equals >> part.m_ParasiticCapacitance;
    else if (IsKeyword_G(property, L"Parasitic_Resistance"))
        stream >> equals >> part.m_ParasiticResistance;
    else if (IsKeyword_G(property, L"ParaSitic_Inductance"))
        stream >> equals >> part.m_ParasiticInductance;
    stream.NewLine();
}

void ExpeditionParser::ClosePart(ExpeditionPartWork& part)
{
    if (part.m_Value.empty())
        return; // parts without a value have no entry
    if (!IsKeyword_G(part.m_RefPrefix, L"C") && !IsKeyword_G(part.m_RefPrefix, L"R") &&
        !IsKeyword_G(part.m_RefPrefix, L"L"))
        return; // only the three passive prefixes count
    // A capacitor's capacitance is held in the parasitic field too.
    if (part.m_ParasiticCapacitance.empty() && IsKeyword_G(part.m_RefPrefix, L"C"))
        part.m_ParasiticCapacitance = part.m_Value;
    // An absent parasitic is one NUL character: it prints as nothing, yet a
    // consumer that tests its size sees it as present.
    const AString absent(1, L'\0');
    for (AString* parasitic :
         {&part.m_ParasiticCapacitance, &part.m_ParasiticResistance, &part.m_ParasiticInductance})
        if (parasitic->empty())
            *parasitic = absent;
    ExpeditionPartValues*& slot = m_PartValues[part.m_Number];
    delete slot;
    slot = new ExpeditionPartValues(part.m_Value, part.m_ParasiticCapacitance, part.m_ParasiticResistance,
                                    part.m_ParasiticInductance);
}
