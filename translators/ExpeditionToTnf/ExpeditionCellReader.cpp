// ExpeditionCellReader.cpp - Cell.hkp: the footprints of the job.
#include "translators/ExpeditionToTnf/ExpeditionParser.h"

void ExpeditionParser::ReadCells(ElementList& /*elements*/)
{
    LongFileName file;
    // The lower-case spelling of this one file is written out as it stands.
    OpenJobFile(AString(L"Cell.hkp"), AString(L"cell.hkp"), true, file);
}
