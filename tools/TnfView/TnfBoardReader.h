// TnfBoardReader.h - a neutral file read into what the page shows.
#pragma once

#include "tools/TnfView/TnfBoard.h"

#include <string>

namespace tnfview
{
// Reads the text of a neutral file. False, with one sentence in error, for a
// text that is not a neutral file or that is cut short.
bool ParseTnfBoard_G(std::string text, TnfBoard& board, std::string& error);

// The same for a file; a file that cannot be read is an error too.
bool ReadTnfBoard_G(const std::string& path, TnfBoard& board, std::string& error);

} // namespace tnfview
