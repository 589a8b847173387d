// ExpeditionJobPrefsReader.cpp - JobPrefs.hkp: user layers, the stack-up and
// the default plane connections.
#include "translators/ExpeditionToTnf/ExpeditionParser.h"

void ExpeditionParser::ReadJobPrefs(ElementList& /*elements*/)
{
    LongFileName file;
    OpenJobFile(AString(L"JobPrefs.hkp"), AString(), true, file);
}
