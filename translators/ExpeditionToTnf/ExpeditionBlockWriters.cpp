// ExpeditionBlockWriters.cpp - the writers whose blocks are not yet filled
// from the model: each returns its block, empty, at its place in the tree.
#include "translators/ExpeditionToTnf/ExpeditionToTnf.h"

using io::CBlockPtr;

void ExpeditionToTnf::ExpandPins(ElementList& /*elements*/) {}
CBlockPtr ExpeditionToTnf::WriteFootprints(ElementList& /*elements*/)
{
    return CBlockPtr(L"Footprints");
}
CBlockPtr ExpeditionToTnf::WriteComponents(ElementList& /*elements*/)
{
    return CBlockPtr(L"Components");
}
CBlockPtr ExpeditionToTnf::WriteNetlist(ElementList& /*elements*/)
{
    return CBlockPtr(L"Netlist");
}
CBlockPtr ExpeditionToTnf::WriteLayoutComponents(ElementList& /*elements*/)
{
    return CBlockPtr(L"LayoutComponents");
}
CBlockPtr ExpeditionToTnf::WriteLayoutNets(ElementList& /*elements*/)
{
    return CBlockPtr(L"LayoutNets");
}
CBlockPtr ExpeditionToTnf::WritePhysicalDimensions(ElementList& /*elements*/)
{
    return CBlockPtr(L"PhysicalDimensions");
}
