// ExpeditionKeyword.h - the one comparison of a token with a keyword.
//
// Expedition writes its keywords in upper case, but users and older versions
// don't always; every keyword of every file is compared without regard to
// case, and only the lone dot is compared as it stands.
#pragma once

#include "core/lib/vellum/AString.h"

// The level of a keyword is the number of reads it took to get past its
// dots: ".UNITS" is read as ".", "UNITS" and has level 2.
constexpr int k_OneDot = 2;    // ".KEYWORD": a record or setting of the file
constexpr int k_TwoDots = 3;   // "..KEYWORD": a part of a record
constexpr int k_ThreeDots = 4; // "...KEYWORD": a field of a part

// The same answer as CompareNoCase, walked against the keyword's end instead
// of its measured length: most tokens a reader dispatches on differ from the
// keyword in their first character, and cost one comparison.
inline bool IsKeyword_G(const AString& token, const wchar_t* keyword)
{
    if (!keyword)
        return token.empty();
    const size_t size = token.size();
    size_t i = 0;
    for (; i < size; ++i)
        if (keyword[i] == L'\0' || FoldCase_G(token[i]) != FoldCase_G(keyword[i]))
            return false;
    return keyword[i] == L'\0';
}
