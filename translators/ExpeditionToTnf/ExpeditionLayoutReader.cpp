// ExpeditionLayoutReader.cpp - Layout.hkp: the placed design.
#include "translators/ExpeditionToTnf/ExpeditionParser.h"

void ExpeditionParser::ReadLayout(ElementList& /*elements*/)
{
    LongFileName file;
    OpenJobFile(AString(L"Layout.hkp"), AString(), true, file);
}
