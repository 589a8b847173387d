// ExpeditionUsedPads.cpp - the pads that the used padstacks refer to.
#include "translators/ExpeditionToTnf/ExpeditionParser.h"

void ExpeditionParser::CollectUsedPads(ElementList& /*elements*/) {}
