// BlockReader.cpp - reading a block tree back from its text form.
//
// The reader works on the input stream's memory with a lexer of its own: in
// block text a single quote starts a string, whereas in HKP files it is an
// ordinary character of a name. It never fails hard: damaged text ends the
// block where the damage starts, and nesting deeper than any real file is cut
// off, so no input can exhaust the stack.
#include "core/lib/vellum/streamio/Block.h"

#include <algorithm>
#include <charconv>
#include <cstring>

namespace io
{
namespace
{
constexpr int k_MaxDepth = 200;

bool IsSpace(char c)
{
    return c == ' ' || c == '\t' || c == '\r' || c == '\f' || c == '\v';
}
bool IsBlank(char c)
{
    return IsSpace(c) || c == '\n';
}

AString Widen(std::string_view text)
{
    return AString(text.data(), text.size());
}

// Classifies an unquoted value word: bool, whole number, double, or else the
// word itself as a string.
CBlock_value WordValue(std::string_view word)
{
    if (word == "true")
        return CBlock_value(true);
    if (word == "false")
        return CBlock_value(false);
    const char* first = word.data();
    const char* last = word.data() + word.size();
    if (first != last)
    {
        int whole = 0;
        auto r = std::from_chars(first, last, whole);
        if (r.ec == std::errc() && r.ptr == last)
            return CBlock_value(whole);
        double d = 0.0;
        const char* start = (*first == '+') ? first + 1 : first;
        r = std::from_chars(start, last, d);
        if (r.ec == std::errc() && r.ptr == last && start != last)
            return CBlock_value(d);
    }
    return CBlock_value(Widen(word));
}
} // namespace

class CBlockTextReader
{
public:
    explicit CBlockTextReader(CAbstract_istream& in) : m_In(in), m_Text(in.Data()), m_Pos(in.Position()) {}
    ~CBlockTextReader() { m_In.SetPosition(m_Pos); }

    // Finds "$begin 'name'" at the outer level (any name if name is empty)
    // and reads that block into block.
    bool ReadNamedBlock(CBlock& block)
    {
        for (;;)
        {
            SkipBlank();
            if (AtEnd())
                return false;
            if (!LooksAt("$begin"))
            {
                SkipLine();
                continue;
            }
            m_Pos += 6;
            AString name = ReadQuotedOrWord();
            if (!block.m_Name.empty() && name != block.m_Name)
            {
                SkipBlockBody(0);
                continue;
            }
            block.m_Name = name;
            return ReadBlockBody(block, 0);
        }
    }

    // Reads "name=value" at the current position.
    bool ReadNamedValue(const AString& name, CBlock_value& value)
    {
        SkipBlank();
        const AString head = ReadHead(false);
        SkipSpace();
        if (head != name || AtEnd() || m_Text[m_Pos] != '=')
            return false;
        ++m_Pos;
        value = ReadValue();
        return true;
    }

private:
    bool AtEnd() const { return m_Pos >= m_Text.size(); }
    bool LooksAt(std::string_view word) const { return m_Text.substr(m_Pos, word.size()) == word; }
    void SkipSpace()
    {
        while (!AtEnd() && IsSpace(m_Text[m_Pos]))
            ++m_Pos;
    }
    void SkipBlank()
    {
        while (!AtEnd() && IsBlank(m_Text[m_Pos]))
            ++m_Pos;
    }
    void SkipLine()
    {
        const size_t nl = m_Text.find('\n', m_Pos);
        m_Pos = nl == std::string_view::npos ? m_Text.size() : nl + 1;
    }

    // A single-quoted string from the current quote: its raw text (quotes and
    // escapes as they stand) and its value.
    void ReadQuoted(std::string_view& raw, AString& value)
    {
        const size_t start = m_Pos++;
        value.clear();
        while (!AtEnd() && m_Text[m_Pos] != '\'')
        {
            char c = m_Text[m_Pos++];
            if (c == '\\' && !AtEnd() && (m_Text[m_Pos] == '\'' || m_Text[m_Pos] == '\\'))
                c = m_Text[m_Pos++];
            value.push_back(static_cast<wchar_t>(static_cast<unsigned char>(c)));
        }
        if (!AtEnd())
            ++m_Pos;
        raw = m_Text.substr(start, m_Pos - start);
    }

    AString ReadQuotedOrWord()
    {
        SkipSpace();
        if (!AtEnd() && m_Text[m_Pos] == '\'')
        {
            std::string_view raw;
            AString value;
            ReadQuoted(raw, value);
            return value;
        }
        const size_t start = m_Pos;
        while (!AtEnd() && !IsBlank(m_Text[m_Pos]))
            ++m_Pos;
        return Widen(m_Text.substr(start, m_Pos - start));
    }

    // The name in front of "(" or "=": a quoted string kept with its quotes,
    // or the raw text up to a stop character, trailing blanks dropped. Inside
    // an argument list "," and ")" stop a name too.
    AString ReadHead(bool inArguments)
    {
        if (!AtEnd() && m_Text[m_Pos] == '\'')
        {
            std::string_view raw;
            AString value;
            ReadQuoted(raw, value);
            return Widen(raw);
        }
        const size_t start = m_Pos;
        while (!AtEnd())
        {
            const char c = m_Text[m_Pos];
            if (c == '(' || c == '=' || c == '\n' || (inArguments && (c == ',' || c == ')')))
                break;
            ++m_Pos;
        }
        size_t end = m_Pos;
        while (end > start && IsSpace(m_Text[end - 1]))
            --end;
        return Widen(m_Text.substr(start, end - start));
    }

    // A value behind "=" or as an argument: a quoted string or a word.
    CBlock_value ReadValue()
    {
        SkipSpace();
        if (!AtEnd() && m_Text[m_Pos] == '\'')
        {
            std::string_view raw;
            AString value;
            ReadQuoted(raw, value);
            return CBlock_value(value);
        }
        const size_t start = m_Pos;
        while (!AtEnd() && !IsBlank(m_Text[m_Pos]) && m_Text[m_Pos] != ',' && m_Text[m_Pos] != ')')
            ++m_Pos;
        return WordValue(m_Text.substr(start, m_Pos - start));
    }

    // Reads the arguments behind "(" up to the matching ")".
    void ReadArguments(CBlock_func& func, int depth)
    {
        for (;;)
        {
            SkipBlank();
            if (AtEnd())
                return;
            if (m_Text[m_Pos] == ')')
            {
                ++m_Pos;
                return;
            }
            const size_t argStart = m_Pos;
            ReadArgument(func, depth);
            SkipBlank();
            if (AtEnd())
                return;
            if (m_Text[m_Pos] == ',')
                ++m_Pos;
            else if (m_Text[m_Pos] != ')' && m_Pos == argStart)
                ++m_Pos; // damaged text: make progress
        }
    }

    void ReadArgument(CBlock_func& func, int depth)
    {
        const size_t start = m_Pos;
        const bool quoted = m_Text[m_Pos] == '\'';
        const AString head = ReadHead(true);
        SkipSpace();
        const char next = AtEnd() ? '\0' : m_Text[m_Pos];
        if (next == '(' && depth < k_MaxDepth)
        {
            ++m_Pos;
            CBlockFuncPtr nested(head);
            ReadArguments(*nested, depth + 1);
            func << nested;
        }
        else if (next == '=')
        {
            ++m_Pos;
            func << CBlock_named_value(head, ReadValue());
        }
        else
        {
            m_Pos = start;
            const CBlock_value value = ReadValue();
            AppendValue(func, value, quoted);
            if (next == '(')
                SkipLine(); // nesting too deep: drop the rest
        }
    }

    static void AppendValue(CBlock_func& func, const CBlock_value& value, bool quoted)
    {
        int i = 0;
        double d = 0.0;
        bool b = false;
        AString s;
        if (quoted || value.GetKind() == CBlock_value::k_String)
        {
            value.Query(s);
            func << s;
        }
        else if (value.GetKind() == CBlock_value::k_Int && value.Query(i))
            func << i;
        else if (value.GetKind() == CBlock_value::k_Double && value.Query(d))
            func << d;
        else if (value.Query(b))
            func << b;
    }

    // Reads items up to "$end"; the "$begin 'name'" line is behind us.
    bool ReadBlockBody(CBlock& block, int depth)
    {
        SkipLine();
        for (;;)
        {
            SkipBlank();
            if (AtEnd())
                return true;
            if (LooksAt("$end"))
            {
                // The name behind it may be a quoted text of several lines.
                m_Pos += 4;
                ReadQuotedOrWord();
                SkipLine();
                return true;
            }
            if (LooksAt("$begin"))
            {
                m_Pos += 6;
                CBlockPtr child(ReadQuotedOrWord());
                if (depth >= k_MaxDepth)
                {
                    SkipBlockBody(depth + 1);
                    continue;
                }
                ReadBlockBody(*child, depth + 1);
                block << child;
                continue;
            }
            ReadItem(block, depth);
        }
    }

    void ReadItem(CBlock& block, int depth)
    {
        const size_t start = m_Pos;
        const bool quoted = m_Text[m_Pos] == '\'';
        const AString head = ReadHead(false);
        SkipSpace();
        const char next = AtEnd() ? '\0' : m_Text[m_Pos];
        if (next == '(')
        {
            ++m_Pos;
            CBlockFuncPtr func(head);
            ReadArguments(*func, depth + 1);
            block << func;
        }
        else if (next == '=')
        {
            ++m_Pos;
            block << CBlock_named_value(head, ReadValue());
        }
        else
        {
            // A value on its own line.
            m_Pos = start;
            CBlock_value value = ReadValue();
            if (quoted && value.GetKind() != CBlock_value::k_String)
            {
                AString s;
                value.Query(s);
                value = CBlock_value(s);
            }
            block << value;
        }
        if (m_Pos == start)
            SkipLine();
    }

    // Passes over a block whose "$begin" has been read, with all it holds,
    // reading its items as they are, so that quoted texts of several lines
    // are passed over whole. Nesting too deep for the reader is cut off
    // line by line.
    void SkipBlockBody(int depth)
    {
        if (depth < 2 * k_MaxDepth)
        {
            CBlock scratch;
            ReadBlockBody(scratch, std::max(depth, k_MaxDepth));
            return;
        }
        SkipLine();
        int open = 1;
        while (!AtEnd() && open > 0)
        {
            SkipBlank();
            if (LooksAt("$begin"))
                ++open;
            else if (LooksAt("$end"))
                --open;
            SkipLine();
        }
    }

    CAbstract_istream& m_In;
    std::string_view m_Text;
    size_t m_Pos;
};

bool CBlock::read(CAbstract_istream& in)
{
    CBlockTextReader reader(in);
    return reader.ReadNamedBlock(*this);
}

bool ReadNamedValue_G(CAbstract_istream& in, const AString& name, CBlock_value& value)
{
    CBlockTextReader reader(in);
    return reader.ReadNamedValue(name, value);
}

} // namespace io
