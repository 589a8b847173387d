// ExpeditionUniqueNames.cpp - unique pin names within a cell.
#include "translators/ExpeditionToTnf/ExpeditionUniqueNames.h"

AString ExpeditionUniqueNames::Take(const AString& name)
{
    if (m_Taken.insert(name).second)
        return name;
    int& next = m_NextNumber.try_emplace(name, 1).first->second;
    AString candidate;
    for (;; ++next)
    {
        candidate.Format(L"%s_%d", name.c_str(), next);
        if (m_Taken.insert(candidate).second)
            break;
    }
    ++next;
    return candidate;
}
