// AString.cpp - comparison, formatting and conversion of the program's strings.
#include "core/lib/vellum/AString.h"

#include <algorithm>
#include <cstdio>
#include <cwchar>

namespace
{
void Widen(std::wstring& out, const char* text, size_t count)
{
    out.resize(count);
    for (size_t i = 0; i < count; ++i)
        out[i] = static_cast<wchar_t>(static_cast<unsigned char>(text[i]));
}

// Appends one conversion of the format to the result. spec holds the
// conversion as given ("%-8.3f"), without a length modifier.
void AppendNumber(AString& out, const std::string& spec, char conversion, va_list& args)
{
    char buffer[512];
    int n = 0;
    switch (conversion)
    {
    case 'd':
    case 'i':
        n = std::snprintf(buffer, sizeof buffer, (spec + 'd').c_str(), va_arg(args, int));
        break;
    case 'u':
    case 'x':
    case 'X':
        n = std::snprintf(buffer, sizeof buffer, (spec + conversion).c_str(), va_arg(args, unsigned));
        break;
    case 'c':
        out.push_back(static_cast<wchar_t>(va_arg(args, int)));
        return;
    default: // f e g E G
        n = std::snprintf(buffer, sizeof buffer, (spec + conversion).c_str(), va_arg(args, double));
        break;
    }
    if (n < 0)
        return;
    const size_t len = std::min(static_cast<size_t>(n), sizeof buffer - 1);
    for (size_t i = 0; i < len; ++i)
        out.push_back(static_cast<wchar_t>(static_cast<unsigned char>(buffer[i])));
}
} // namespace

AString::AString(const char* text)
{
    if (text)
        Widen(*this, text, std::char_traits<char>::length(text));
}

AString::AString(const char* text, size_t count)
{
    if (text)
        Widen(*this, text, count);
}

AString& AString::operator=(const wchar_t* text)
{
    return assign(text);
}
AString& AString::operator=(const char* text)
{
    return assign(text);
}

AString& AString::assign(const wchar_t* text)
{
    std::wstring::assign(text ? text : L"");
    return *this;
}

AString& AString::assign(const char* text)
{
    Widen(*this, text ? text : "", text ? std::char_traits<char>::length(text) : 0);
    return *this;
}

AString& AString::assign(size_t count, wchar_t ch)
{
    std::wstring::assign(count, ch);
    return *this;
}

AString AString::substr(size_t pos, size_t count) const
{
    if (pos >= size())
        return AString();
    return AString(std::wstring::substr(pos, count));
}

int AString::CompareView(std::wstring_view other) const
{
    const int c = std::wstring_view(*this).compare(other);
    return c < 0 ? -1 : (c > 0 ? 1 : 0);
}

int AString::CompareNoCaseView(std::wstring_view other) const
{
    const size_t n = std::min(size(), other.size());
    for (size_t i = 0; i < n; ++i)
    {
        const wchar_t a = FoldCase_G((*this)[i]);
        const wchar_t b = FoldCase_G(other[i]);
        if (a != b)
            return a < b ? -1 : 1;
    }
    return size() == other.size() ? 0 : (size() < other.size() ? -1 : 1);
}

AString& AString::Format(const wchar_t* format, ...)
{
    va_list args;
    va_start(args, format);
    FormatV(format, args);
    va_end(args);
    return *this;
}

AString& AString::FormatV(const wchar_t* format, va_list args)
{
    AString out;
    va_list ap;
    va_copy(ap, args);
    for (const wchar_t* p = format ? format : L""; *p;)
    {
        if (*p != L'%')
        {
            out.push_back(*p++);
            continue;
        }
        if (p[1] == L'%')
        {
            out.push_back(L'%');
            p += 2;
            continue;
        }
        // Collect flags, width and precision as 8-bit text for snprintf.
        std::string spec = "%";
        ++p;
        while (*p && std::wcschr(L"-+ #0123456789.", *p))
            spec.push_back(static_cast<char>(*p++));
        while (*p == L'l' || *p == L'h')
            ++p; // length modifiers: %ls is %s, %ld is read as int as everywhere in this program
        const wchar_t conversion = *p ? *p++ : L'\0';
        if (conversion == L's')
        {
            const wchar_t* text = va_arg(ap, const wchar_t*);
            AString value(text ? text : L"(null)");
            // Width, precision and left alignment of a text argument.
            size_t i = 1;
            bool left = false;
            for (; i < spec.size() && std::string_view("-+ #0").find(spec[i]) != std::string_view::npos; ++i)
                left = left || spec[i] == '-';
            size_t width = 0;
            for (; i < spec.size() && spec[i] >= '0' && spec[i] <= '9'; ++i)
                width = std::min<size_t>(width * 10 + static_cast<size_t>(spec[i] - '0'), 4096);
            if (i < spec.size() && spec[i] == '.')
            {
                size_t precision = 0;
                for (++i; i < spec.size() && spec[i] >= '0' && spec[i] <= '9'; ++i)
                    precision =
                        std::min<size_t>(precision * 10 + static_cast<size_t>(spec[i] - '0'), 1u << 30);
                if (precision < value.size())
                    value.resize(precision);
            }
            const size_t pad = width > value.size() ? width - value.size() : 0;
            if (!left)
                out.append(pad, L' ');
            out += value;
            if (left)
                out.append(pad, L' ');
        }
        else if (conversion && std::wcschr(L"diuxXcfeEgG", conversion))
            AppendNumber(out, spec, static_cast<char>(conversion), ap);
        else if (!conversion)
            break;
    }
    va_end(ap);
    swap(out);
    return *this;
}

bool AString::IsNumber(long& value, int base) const
{
    if (empty() || base < 2 || base > 36)
        return false;
    size_t i = 0;
    bool negative = false;
    if ((*this)[0] == L'-' || (*this)[0] == L'+')
    {
        negative = (*this)[0] == L'-';
        i = 1;
    }
    if (i == size())
        return false;
    unsigned long magnitude = 0;
    for (; i < size(); ++i)
    {
        const wchar_t ch = FoldCase_G((*this)[i]);
        int digit = -1;
        if (ch >= L'0' && ch <= L'9')
            digit = ch - L'0';
        else if (ch >= L'a' && ch <= L'z')
            digit = ch - L'a' + 10;
        if (digit < 0 || digit >= base)
            return false;
        const unsigned long next =
            magnitude * static_cast<unsigned long>(base) + static_cast<unsigned long>(digit);
        if (next / static_cast<unsigned long>(base) != magnitude)
            return false; // overflow
        magnitude = next;
    }
    constexpr unsigned long maxPositive = static_cast<unsigned long>(~0UL >> 1);
    if (negative ? magnitude > maxPositive + 1 : magnitude > maxPositive)
        return false;
    value = negative ? static_cast<long>(0UL - magnitude) : static_cast<long>(magnitude);
    return true;
}

bool AString::Match(const AString& pattern) const
{
    // Greedy matching with one backtrack point: the last "*" seen.
    size_t t = 0, p = 0, starP = npos, starT = 0;
    while (t < size())
    {
        if (p < pattern.size() && pattern[p] == L'*')
        {
            starP = p++;
            starT = t;
        }
        else if (p < pattern.size() && pattern[p] == (*this)[t])
        {
            ++p;
            ++t;
        }
        else if (starP != npos)
        {
            p = starP + 1;
            t = ++starT;
        }
        else
            return false;
    }
    while (p < pattern.size() && pattern[p] == L'*')
        ++p;
    return p == pattern.size();
}

AString AString::ToLower() const
{
    AString r(*this);
    for (auto& ch : r)
        ch = FoldCase_G(ch);
    return r;
}

AString AString::ToUpper() const
{
    AString r(*this);
    for (auto& ch : r)
        if (ch >= L'a' && ch <= L'z')
            ch = static_cast<wchar_t>(ch - 32);
    return r;
}

AString_const<char> AString::AsAnsi() const
{
    std::string out(size(), '\0');
    for (size_t i = 0; i < size(); ++i)
    {
        const auto unit = static_cast<unsigned long>((*this)[i]);
        out[i] = unit <= 0xFF ? static_cast<char>(static_cast<unsigned char>(unit)) : '?';
    }
    return AString_const<char>(std::move(out));
}

size_t AStringNoCaseHash::operator()(const std::wstring& text) const noexcept
{
    // FNV-1a over the folded code units.
    size_t h = 1469598103934665603ULL;
    for (wchar_t ch : text)
    {
        h ^= static_cast<size_t>(static_cast<unsigned long>(FoldCase_G(ch)));
        h *= 1099511628211ULL;
    }
    return h;
}

bool AStringNoCaseEqual::operator()(const std::wstring& a, const std::wstring& b) const noexcept
{
    if (a.size() != b.size())
        return false;
    for (size_t i = 0; i < a.size(); ++i)
        if (FoldCase_G(a[i]) != FoldCase_G(b[i]))
            return false;
    return true;
}
