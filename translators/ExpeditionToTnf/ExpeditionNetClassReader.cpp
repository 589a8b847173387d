// ExpeditionNetClassReader.cpp - NetClass.hkp: the clearance rules.
#include "translators/ExpeditionToTnf/ExpeditionParser.h"

void ExpeditionParser::ReadNetClasses()
{
    LongFileName file;
    OpenJobFile(AString(L"NetClass.hkp"), AString(), false, file);
}
