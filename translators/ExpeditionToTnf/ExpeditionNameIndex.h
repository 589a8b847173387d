// ExpeditionNameIndex.h - look-up of an element by name, without regard to
// case, that answers as a walk through the list would: the first match in
// list order.
//
// The readers look names up once per record, and on a big board a walk per
// look-up makes the reading quadratic. The index takes in the entries that
// were appended since the last look-up, keeping the first element of each
// name, so the lists can keep growing while they are searched. It relies on
// the lists being append-only, as the element list and the parser's vectors
// are.
#pragma once

#include "core/lib/vellum/AString.h"

#include <string>
#include <unordered_map>

template <class T> class ExpeditionNameIndex
{
public:
    // Finds the first entry of list for which select answers an element
    // whose name (by nameOf) equals name without regard to case.
    template <class List, class Select, class NameOf>
    T* Find(const List& list, const AString& name, Select select, NameOf nameOf)
    {
        if (&list != m_Source || list.size() < m_Indexed)
        {
            m_Map.clear();
            m_Indexed = 0;
            m_Source = &list;
        }
        for (; m_Indexed < list.size(); ++m_Indexed)
            if (T* element = list[m_Indexed] ? select(list[m_Indexed]) : nullptr)
                m_Map.emplace(nameOf(element), element);
        const auto found = m_Map.find(name);
        return found == m_Map.end() ? nullptr : found->second;
    }

private:
    std::unordered_map<std::wstring, T*, AStringNoCaseHash, AStringNoCaseEqual> m_Map;
    size_t m_Indexed = 0;
    const void* m_Source = nullptr;
};
