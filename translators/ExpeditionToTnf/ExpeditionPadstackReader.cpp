// ExpeditionPadstackReader.cpp - Padstack.hkp: holes, padstacks and pads.
#include "translators/ExpeditionToTnf/ExpeditionParser.h"

void ExpeditionParser::ReadPadstacks(ElementList& /*elements*/)
{
    LongFileName file;
    OpenJobFile(AString(L"Padstack.hkp"), AString(), true, file);
}
