// ExpeditionReaderCursor.h - where a reader stands in its file: the stream,
// the one keyword of look-ahead, the level of that keyword and the file's unit
// factor.
//
// A reader leaves the keyword that ended its record in the token, and its
// caller dispatches on it without reading on. The cursor carries that token
// with the level of the read that found it, so that a long reader takes one
// argument where it took four. The token and the factor stay the caller's:
// the cursor refers to them, and a units line read below changes the
// caller's factor too. Sub-readers that read on their own leave the level as
// it was, as the file's records expect (a stale level is part of the format):
// such a reader takes the cursor by value, and its reads move a level of its
// own. A reader that takes it by reference moves its caller's level as well.
#pragma once

#include "core/lib/vellum/AString.h"
#include "core/lib/vellum/streamio/TokenStream.h"
#include "translators/ExpeditionToTnf/ExpeditionKeyword.h"
#include "translators/ExpeditionToTnf/ExpeditionParser.h"

struct ExpeditionReaderCursor
{
    io::CToken_istream& m_Stream;
    AString& m_Token;
    double& m_Factor;
    int m_Level = 0; // of the last Next

    // The next keyword into the token; its level is kept and returned.
    int Next()
    {
        m_Level = ExpeditionParser::NextToken(m_Stream, m_Token);
        return m_Level;
    }
    // The plainer read, without the limit on dots, of the files whose top
    // level reads that way.
    int NextPlain()
    {
        m_Level = ExpeditionParser::NextPlainToken(m_Stream, m_Token);
        return m_Level;
    }
    bool Is(const wchar_t* keyword) const { return IsKeyword_G(m_Token, keyword); }
    bool AtEnd() const { return m_Stream.eof(); }
};
