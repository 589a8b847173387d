// ExpeditionKeyword.h - the one comparison of a token with a keyword.
//
// Expedition writes its keywords in upper case, but users and older versions
// don't always; every keyword of every file is compared without regard to
// case, and only the lone dot is compared as it stands.
#pragma once

#include "core/lib/vellum/AString.h"

inline bool IsKeyword_G(const AString& token, const wchar_t* keyword)
{
    return token.CompareNoCase(keyword) == 0;
}
