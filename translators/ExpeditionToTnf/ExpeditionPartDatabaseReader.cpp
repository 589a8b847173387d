// ExpeditionPartDatabaseReader.cpp - PDB.hkp: part numbers, types and values.
#include "translators/ExpeditionToTnf/ExpeditionParser.h"

void ExpeditionParser::ReadPartDatabase()
{
    LongFileName file;
    OpenJobFile(AString(L"PDB.hkp"), AString(), true, file);
}
