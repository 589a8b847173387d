// Stream.cpp - the text primitives of the output stream and the HKP lexer of
// the input stream.
#include "core/lib/vellum/streamio/Stream.h"

#include "core/lib/vellum/streamio/TokenStream.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <type_traits>

namespace io
{
namespace
{
constexpr size_t k_FlushSize = 1 << 20;

// What a byte is to the lexer, looked up once per byte: the word scan asks
// three questions of every byte of a word.
enum : unsigned char
{
    k_Blank = 1,
    k_Symbol = 2,
    k_Quote = 4,
    k_EndsWord = k_Blank | k_Symbol | k_Quote
};
struct ByteClasses
{
    unsigned char m_Of[256] = {};
    constexpr ByteClasses()
    {
        for (const char c : {' ', '\t', '\r', '\n', '\f', '\v'})
            m_Of[static_cast<unsigned char>(c)] = k_Blank;
        for (const char c : {'(', ')', ',', '='})
            m_Of[static_cast<unsigned char>(c)] = k_Symbol;
        m_Of[static_cast<unsigned char>('"')] = k_Quote;
    }
};
constexpr ByteClasses k_Classes;

bool IsBlank(char c)
{
    return (k_Classes.m_Of[static_cast<unsigned char>(c)] & k_Blank) != 0;
}
bool IsSymbol(char c)
{
    return (k_Classes.m_Of[static_cast<unsigned char>(c)] & k_Symbol) != 0;
}
bool EndsWord(char c)
{
    return (k_Classes.m_Of[static_cast<unsigned char>(c)] & k_EndsWord) != 0;
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

namespace
{
// The powers of ten that a double holds exactly.
constexpr double k_Pow10[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                              1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

// The text of "%.{digits}g" for a value of no more than 14 digits, worked out
// in one scaling by an exact power of ten, or null where that scaling cannot
// tell the rounding for sure (near a half, near a power of ten, far out of
// range): the caller then asks the exact conversion. The scaled value is off
// the exact product by at most half a unit of its last binary place, so
// outside a margin of twice that the rounding to an integer is the exact
// one. Most coordinates of a layout end here: the general conversion with
// a precision costs several times the scaling.
char* FormatScaled(char* out, double value, int digits)
{
    const double magnitude = std::fabs(value);
    if (digits < 1 || digits > 14 || !(magnitude >= 1e-200 && magnitude <= 1e200))
        return nullptr;
    const double low = k_Pow10[digits - 1], high = k_Pow10[digits];
    int exponent = static_cast<int>(std::floor(std::log10(magnitude)));
    double scaled = 0.0;
    for (int attempt = 0;; ++attempt)
    {
        const int shift = digits - 1 - exponent;
        if (shift > 22 || shift < -22 || attempt > 2)
            return nullptr;
        scaled = shift >= 0 ? magnitude * k_Pow10[shift] : magnitude / k_Pow10[-shift];
        if (scaled < low)
            --exponent;
        else if (scaled >= high)
            ++exponent;
        else
            break;
    }
    const double margin = high * 0x1p-52;
    if (scaled < low + margin || scaled > high - 1.0)
        return nullptr; // the exponent or a carry into the next one is in doubt
    const double whole = std::floor(scaled);
    const double fraction = scaled - whole;
    if (std::fabs(fraction - 0.5) <= margin)
        return nullptr;
    auto rounded = static_cast<unsigned long long>(whole) + (fraction > 0.5 ? 1u : 0u);
    char figures[16];
    for (int i = digits - 1; i >= 0; --i, rounded /= 10)
        figures[i] = static_cast<char>('0' + rounded % 10);
    int count = digits;
    while (count > 1 && figures[count - 1] == '0')
        --count; // no trailing zeros, as %g leaves none
    if (value < 0.0)
        *out++ = '-';
    if (exponent < -4 || exponent >= digits)
    {
        *out++ = figures[0];
        if (count > 1)
        {
            *out++ = '.';
            out = std::copy(figures + 1, figures + count, out);
        }
        *out++ = 'e';
        *out++ = exponent < 0 ? '-' : '+';
        const int power = exponent < 0 ? -exponent : exponent;
        if (power >= 100)
            *out++ = static_cast<char>('0' + power / 100);
        *out++ = static_cast<char>('0' + power / 10 % 10);
        *out++ = static_cast<char>('0' + power % 10);
        return out;
    }
    if (exponent < 0)
    {
        *out++ = '0';
        *out++ = '.';
        out = std::fill_n(out, -exponent - 1, '0');
        return std::copy(figures, figures + count, out);
    }
    const int before = exponent + 1; // figures before the point
    if (count <= before)
    {
        out = std::copy(figures, figures + count, out);
        return std::fill_n(out, before - count, '0');
    }
    out = std::copy(figures, figures + before, out);
    *out++ = '.';
    return std::copy(figures + before, figures + count, out);
}

// "%.{digits}g" of a value that is not zero, into 64 bytes.
char* FormatGeneral(char* buffer, double value, int digits)
{
    if (char* end = FormatScaled(buffer, value, digits))
        return end;
    return std::to_chars(buffer, buffer + 64, value, std::chars_format::general, digits).ptr;
}
} // namespace

std::string FormatDouble_G(double value, int digits)
{
    if (value == 0.0)
        return "0";
    char buffer[64];
    return std::string(buffer, FormatGeneral(buffer, value, digits));
}

void CAbstract_ostream::PutDouble(double value)
{
    if (value == 0.0)
    {
        m_Buffer.push_back('0'); // also for -0.0
        return;
    }
    char buffer[64];
    m_Buffer.append(buffer, FormatGeneral(buffer, value, m_Precision));
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

void CAbstract_istream::SetData(std::string data)
{
    m_Window = std::move(data);
    m_WindowStart = 0;
    m_Size = m_Window.size();
    m_Source.reset();
    m_Pos = 0;
}

void CAbstract_istream::SetSource(std::unique_ptr<CText_source> source, size_t size, size_t window)
{
    m_Window.clear();
    m_WindowStart = 0;
    m_Size = size;
    m_Source = std::move(source);
    m_WindowBytes = window < 1 ? 1 : window;
    m_Pos = 0;
}

std::string_view CAbstract_istream::MoveView(size_t offset, size_t atLeast) const
{
    if (offset >= m_Size)
        return std::string_view();
    const size_t end = m_WindowStart + m_Window.size();
    const size_t wanted = atLeast < m_Size - offset ? offset + atLeast : m_Size;
    if (offset < m_WindowStart || wanted > end)
        Load(offset, wanted - offset);
    if (offset >= m_Size)
        return std::string_view(); // the file was shorter than it said
    return std::string_view(m_Window).substr(offset - m_WindowStart);
}

void CAbstract_istream::Load(size_t offset, size_t atLeast) const
{
    if (!m_Source)
        return; // a text held whole is all there is
    // A little of the text before the offset stays, so that the short steps
    // back of the readers (a named value that is not there, a look ahead of a
    // few lines) find it still in memory.
    const size_t behind = m_WindowBytes / 8;
    const size_t start = offset > behind ? offset - behind : 0;
    const size_t want = atLeast > m_WindowBytes ? atLeast : m_WindowBytes;
    const size_t stop = m_Size - offset > want ? offset + want : m_Size;
    const size_t end = m_WindowStart + m_Window.size();
    size_t have = start;
    if (start >= m_WindowStart && start < end)
    {
        // Moving forward: the bytes the old window shares with the new one
        // are kept, the rest is read.
        m_Window.erase(0, start - m_WindowStart);
        have = end;
        if (have > stop)
        {
            m_Window.resize(stop - start);
            have = stop;
        }
    }
    else
        m_Window.clear();
    m_WindowStart = start;
    if (have < stop)
    {
        const size_t kept = m_Window.size();
        m_Window.resize(kept + (stop - have));
        const size_t got = m_Source->Read(have, m_Window.data() + kept, stop - have);
        if (got < stop - have)
        {
            // The file has become shorter than it was: its text ends here.
            m_Window.resize(kept + got);
            m_Size = have + got;
        }
    }
    // A file that fits in the window is held whole from here on, and its
    // handle is let go at once: Windows neither removes nor replaces a file
    // that some stream still holds open, and most job files are small.
    if (m_WindowStart == 0 && m_Window.size() == m_Size)
        m_Source.reset();
}

std::string_view CAbstract_istream::Data() const
{
    if (m_Source)
    {
        std::string whole(m_Size, '\0');
        const size_t got = m_Size ? m_Source->Read(0, whole.data(), m_Size) : 0;
        whole.resize(got);
        m_Size = got;
        m_Window = std::move(whole);
        m_WindowStart = 0;
        m_Source.reset();
    }
    return m_Window;
}

namespace
{
// The length of the token at the start of text, which holds no blank in
// front. False if the text ends before the token can be told complete and
// more of it may follow (atEnd false). consumed may take a closing quote
// beside the token.
bool LexToken(std::string_view text, bool atEnd, std::string_view& token, size_t& consumed, bool& quoted)
{
    const size_t size = text.size();
    const char* data = text.data();
    const char c = data[0];
    quoted = false;
    if (c == '"')
    {
        // A double-quoted string is one token without its quotes; an
        // unterminated one ends at the line's end.
        size_t q = 1;
        while (q < size && data[q] != '"' && data[q] != '\n')
            ++q;
        if (q == size && !atEnd)
            return false;
        token = text.substr(1, q - 1);
        quoted = true;
        consumed = (q < size && data[q] == '"') ? q + 1 : q;
        return true;
    }
    if (IsSymbol(c))
    {
        token = text.substr(0, 1);
        consumed = 1;
        return true;
    }
    size_t p = 1;
    if (c == '.')
    {
        // The dots in front of a keyword come one by one; a dot followed at
        // once by a digit starts a number such as ".4".
        if (size < 2 && !atEnd)
            return false;
        if (size < 2 || !IsDigit(data[1]))
        {
            token = text.substr(0, 1);
            consumed = 1;
            return true;
        }
        while (p < size && IsDigit(data[p]))
            ++p;
    }
    else
        while (p < size && !EndsWord(data[p]))
            ++p;
    if (p == size && !atEnd)
        return false;
    token = text.substr(0, p);
    consumed = p;
    return true;
}
} // namespace

bool CAbstract_istream::NextTokenText(std::string_view& text, bool& quoted)
{
    // White space in front of a token is consumed, also where no token
    // follows.
    std::string_view rest;
    for (;;)
    {
        const std::string_view view = View(m_Pos, 1);
        if (view.empty())
        {
            m_Pos = m_Size;
            return false;
        }
        size_t i = 0;
        while (i < view.size() && IsBlank(view[i]))
            ++i;
        m_Pos += i;
        if (i < view.size())
        {
            rest = view.substr(i);
            break;
        }
    }
    // Most tokens are short; a longer one asks for a wider view until its
    // end is in sight. The view of the blanks serves when it reaches as far.
    size_t look = 64;
    for (;;)
    {
        const std::string_view view =
            rest.size() >= look || m_Pos + rest.size() >= m_Size ? rest : View(m_Pos, look);
        size_t consumed = 0;
        if (LexToken(view, m_Pos + view.size() >= m_Size, text, consumed, quoted))
        {
            m_Pos += consumed;
            return true;
        }
        look = view.size() * 2;
    }
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
    for (;;)
    {
        const std::string_view view = View(m_Pos, 1);
        if (view.empty())
        {
            m_Pos = m_Size;
            return;
        }
        const void* nl = std::memchr(view.data(), '\n', view.size());
        if (nl)
        {
            m_Pos += static_cast<size_t>(static_cast<const char*>(nl) - view.data()) + 1;
            return;
        }
        m_Pos += view.size();
    }
}

void CAbstract_istream::NewLine(AString& rest)
{
    rest.clear();
    bool leading = true;
    for (;;)
    {
        const std::string_view view = View(m_Pos, 1);
        if (view.empty())
        {
            m_Pos = m_Size;
            return;
        }
        size_t i = 0;
        if (leading)
        {
            while (i < view.size() && (view[i] == ' ' || view[i] == '\t'))
                ++i;
            leading = i == view.size();
        }
        const void* nl = std::memchr(view.data() + i, '\n', view.size() - i);
        const size_t end = nl ? static_cast<size_t>(static_cast<const char*>(nl) - view.data()) : view.size();
        const size_t old = rest.size();
        rest.resize(old + (end - i));
        for (size_t k = i; k < end; ++k)
            rest[old + k - i] = static_cast<wchar_t>(static_cast<unsigned char>(view[k]));
        if (nl)
        {
            m_Pos += end + 1;
            return;
        }
        m_Pos += view.size();
    }
}

bool CAbstract_istream::eof() const
{
    for (size_t p = m_Pos;;)
    {
        const std::string_view view = View(p, 1);
        if (view.empty())
            return true;
        for (char c : view)
            if (!IsBlank(c))
                return false;
        p += view.size();
    }
}

} // namespace io
