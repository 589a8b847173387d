// ExpeditionUniqueNames.h - the pin names of a cell made unique as they are
// read, in constant time per name.
//
// A name already taken (without regard to case) gets "_1", "_2" and so on,
// the lowest number that is free. A cell of thousands of pins of one name
// would make a search from 1 against the whole list cubic; the taken names
// sit in a hash set instead, and the search for a name goes on from where
// the last search for that name stopped: the names only ever grow in number,
// so a number found taken once stays taken.
#pragma once

#include "core/lib/vellum/AString.h"

#include <string>
#include <unordered_map>
#include <unordered_set>

class ExpeditionUniqueNames
{
public:
    // The name itself if it is free, otherwise "%s_%d" with the lowest free
    // number; the answer is taken from then on.
    AString Take(const AString& name);

private:
    std::unordered_set<std::wstring, AStringNoCaseHash, AStringNoCaseEqual> m_Taken;
    // Per name: the numbers below this one are all taken.
    std::unordered_map<std::wstring, int, AStringNoCaseHash, AStringNoCaseEqual> m_NextNumber;
};
