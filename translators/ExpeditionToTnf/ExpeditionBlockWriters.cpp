// ExpeditionBlockWriters.cpp - the parts of the writers that wait for the
// plane model of the nets.
#include "translators/ExpeditionToTnf/ExpeditionToTnf.h"

using io::CBlockPtr;

// The plane polygons of the nets come to the file with the planes of the job.
void ExpeditionToTnf::WritePlaneLines(io::CBlock& /*entry*/, const ExpeditionLayoutNet& /*net*/) {}
void ExpeditionToTnf::WritePlaneShapes(io::CBlock& /*entry*/, const ExpeditionLayoutNet& /*net*/) {}
