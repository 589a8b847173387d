// Stream.cpp - the text primitives of the output stream and the HKP lexer of
// the input stream.
#include "core/lib/vellum/streamio/Stream.h"

#include "core/lib/vellum/streamio/TokenStream.h"

#include <charconv>
#include <cmath>
#include <cstring>
#include <type_traits>

namespace io
{
namespace
{
constexpr size_t k_FlushSize = 1 << 20;

bool IsBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\f' || c == '\v';
}
bool IsSymbol(char c)
{
    return c == '(' || c == ')' || c == ',' || c == '=';
}
bool IsDigit(char c)
{
    return c >= '0' && c <= '9';
}

// Parses the longest number at the start of text; false if there is none.
// "nan", "inf" and numbers beyond the type's range are no numbers: a reader
// would carry them into lengths and on into conversions to integers. Nor is
// a double beyond 1e15, which no length, angle or count of a design comes
// near (a metre in nanometres is 1e9): the geometry squares and multiplies
// coordinates, and such numbers would overflow there.
template <class T> bool ParseNumber(std::string_view text, T& value)
{
    const char* first = text.data();
    const char* last = text.data() + text.size();
    if (first != last && *first == '+')
        ++first;
    T parsed{};
    const auto result = std::from_chars(first, last, parsed);
    if (result.ec != std::errc() || result.ptr == first)
        return false;
    if constexpr (std::is_floating_point_v<T>)
        if (!std::isfinite(parsed) || std::fabs(parsed) > 1e15)
            return false;
    value = parsed;
    return true;
}
} // namespace

bool CStreamio_object::read(CAbstract_istream& in)
{
    in.SetFail();
    return false;
}

// ---------------------------------------------------------------- output

int CAbstract_ostream::SetPrecision(int digits)
{
    const int old = m_Precision;
    m_Precision = digits < 1 ? 1 : (digits > 17 ? 17 : digits);
    return old;
}

void CAbstract_ostream::PutIndent()
{
    m_Buffer.append(static_cast<size_t>(m_Indent > 0 ? m_Indent : 0), '\t');
}

void CAbstract_ostream::PutRaw(std::string_view text)
{
    m_Buffer.append(text);
    if (m_Buffer.size() >= k_FlushSize)
        FlushBuffer();
}

void CAbstract_ostream::PutText(const AString& text)
{
    for (wchar_t unit : text)
    {
        const auto u = static_cast<unsigned long>(unit);
        m_Buffer.push_back(u <= 0xFF ? static_cast<char>(static_cast<unsigned char>(u)) : '?');
    }
    if (m_Buffer.size() >= k_FlushSize)
        FlushBuffer();
}

void CAbstract_ostream::PutQuoted(const AString& text)
{
    m_Buffer.push_back('\'');
    for (wchar_t unit : text)
    {
        if (unit == L'\'' || unit == L'\\')
            m_Buffer.push_back('\\');
        const auto u = static_cast<unsigned long>(unit);
        m_Buffer.push_back(u <= 0xFF ? static_cast<char>(static_cast<unsigned char>(u)) : '?');
    }
    m_Buffer.push_back('\'');
    if (m_Buffer.size() >= k_FlushSize)
        FlushBuffer();
}

void CAbstract_ostream::PutInt(int value)
{
    char buffer[16];
    const auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
    m_Buffer.append(buffer, result.ptr);
}

std::string FormatDouble_G(double value, int digits)
{
    if (value == 0.0)
        return "0";
    char buffer[64];
    const auto result =
        std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::general, digits);
    return std::string(buffer, result.ptr);
}

void CAbstract_ostream::PutDouble(double value)
{
    if (value == 0.0)
    {
        m_Buffer.push_back('0'); // also for -0.0
        return;
    }
    char buffer[64];
    const auto result =
        std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::general, m_Precision);
    m_Buffer.append(buffer, result.ptr);
}

void CAbstract_ostream::PutBool(bool value)
{
    m_Buffer.append(value ? "true" : "false");
}

void CAbstract_ostream::PutNewLine()
{
    m_Buffer.push_back('\n');
    if (m_Buffer.size() >= k_FlushSize)
        FlushBuffer();
}

void CAbstract_ostream::FlushBuffer()
{
    if (!m_Buffer.empty())
        Sink(m_Buffer.data(), m_Buffer.size());
    m_Buffer.clear();
}

// ----------------------------------------------------------------- input

bool CAbstract_istream::NextTokenText(std::string_view& text, bool& quoted)
{
    const size_t size = m_Data.size();
    const char* data = m_Data.data();
    size_t p = m_Pos;
    while (p < size && IsBlank(data[p]))
        ++p;
    quoted = false;
    if (p >= size)
    {
        m_Pos = size;
        return false;
    }
    const size_t start = p;
    const char c = data[p];
    if (c == '"')
    {
        // A double-quoted string is one token without its quotes; an
        // unterminated one ends at the line's end.
        size_t q = p + 1;
        while (q < size && data[q] != '"' && data[q] != '\n')
            ++q;
        text = std::string_view(data + p + 1, q - p - 1);
        quoted = true;
        m_Pos = (q < size && data[q] == '"') ? q + 1 : q;
        return true;
    }
    if (IsSymbol(c))
    {
        text = std::string_view(data + p, 1);
        m_Pos = p + 1;
        return true;
    }
    if (c == '.')
    {
        // The dots in front of a keyword come one by one; a dot followed at
        // once by a digit starts a number such as ".4".
        if (p + 1 < size && IsDigit(data[p + 1]))
        {
            size_t q = p + 1;
            while (q < size && IsDigit(data[q]))
                ++q;
            text = std::string_view(data + start, q - start);
            m_Pos = q;
            return true;
        }
        text = std::string_view(data + p, 1);
        m_Pos = p + 1;
        return true;
    }
    while (p < size && !IsBlank(data[p]) && !IsSymbol(data[p]) && data[p] != '"')
        ++p;
    text = std::string_view(data + start, p - start);
    m_Pos = p;
    return true;
}

CAbstract_istream& CAbstract_istream::operator>>(AString& token)
{
    std::string_view text;
    bool quoted = false;
    if (NextTokenText(text, quoted))
    {
        token.resize(text.size());
        for (size_t i = 0; i < text.size(); ++i)
            token[i] = static_cast<wchar_t>(static_cast<unsigned char>(text[i]));
    }
    return *this;
}

CAbstract_istream& CAbstract_istream::operator>>(CToken& token)
{
    std::string_view text;
    bool quoted = false;
    if (NextTokenText(text, quoted))
        token.Set(AString(text.data(), text.size()), quoted ? CToken::k_String : CToken::k_Word);
    return *this;
}

CAbstract_istream& CAbstract_istream::operator>>(double& value)
{
    std::string_view text;
    bool quoted = false;
    if (NextTokenText(text, quoted))
        ParseNumber(text, value);
    return *this;
}

CAbstract_istream& CAbstract_istream::operator>>(int& value)
{
    std::string_view text;
    bool quoted = false;
    if (NextTokenText(text, quoted) && !ParseNumber(text, value))
    {
        // "12.0" where a whole number is wanted still reads as 12.
        double d = 0.0;
        if (ParseNumber(text, d) && std::isfinite(d) && d > -2147483648.0 && d < 2147483648.0)
            value = static_cast<int>(d);
    }
    return *this;
}

CAbstract_istream& CAbstract_istream::operator>>(CStreamio_object& object)
{
    if (!object.read(*this))
        m_Fail = true;
    return *this;
}

void CAbstract_istream::NewLine()
{
    const void* nl =
        m_Pos < m_Data.size() ? std::memchr(m_Data.data() + m_Pos, '\n', m_Data.size() - m_Pos) : nullptr;
    m_Pos = nl ? static_cast<size_t>(static_cast<const char*>(nl) - m_Data.data()) + 1 : m_Data.size();
}

void CAbstract_istream::NewLine(AString& rest)
{
    size_t p = m_Pos;
    const size_t size = m_Data.size();
    while (p < size && (m_Data[p] == ' ' || m_Data[p] == '\t'))
        ++p;
    const void* nl = p < size ? std::memchr(m_Data.data() + p, '\n', size - p) : nullptr;
    const size_t end = nl ? static_cast<size_t>(static_cast<const char*>(nl) - m_Data.data()) : size;
    rest.resize(end - p);
    for (size_t i = p; i < end; ++i)
        rest[i - p] = static_cast<wchar_t>(static_cast<unsigned char>(m_Data[i]));
    m_Pos = nl ? end + 1 : size;
}

bool CAbstract_istream::eof() const
{
    const size_t size = m_Data.size();
    for (size_t p = m_Pos; p < size; ++p)
        if (!IsBlank(m_Data[p]))
            return false;
    return true;
}

} // namespace io
