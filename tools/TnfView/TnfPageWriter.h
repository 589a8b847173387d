// TnfPageWriter.h - the page of a board: one self-contained HTML text with the
// copper of every conductive layer as inline SVG and a little script for
// layers, zoom, pan and net names.
#pragma once

#include "tools/TnfView/TnfBoard.h"

#include <string>

namespace tnfview
{
// The whole page; fileName is shown in its title and header.
std::string WriteTnfPage_G(const TnfBoard& board, const std::string& fileName);

// The colour of a conductive layer, counted from the top, in a stack-up of
// count layers: red on top, blue on the bottom, distinct colours between.
const char* LayerColour_G(int layer, int count);

} // namespace tnfview
