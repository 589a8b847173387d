// AString.h - the program's one string type.
//
// Every text of a run, from a token of an Expedition file to a message box, is
// an AString: a standard wide string with the few operations the readers and
// writers lean on. An input file's bytes are widened one byte to one code unit
// and narrowed back the same way on output, so any byte sequence of a name in
// a design passes through the translator unchanged, whatever the platform's
// wchar_t width is.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <string>
#include <string_view>

// The owned 8-bit text that AsAnsi hands out; it lives as long as the value.
template <class CharT> class AString_const
{
public:
    explicit AString_const(std::basic_string<CharT> text) : m_Text(std::move(text)) {}
    const CharT* c_str() const { return m_Text.c_str(); }
    operator const CharT*() const { return m_Text.c_str(); }
    const std::basic_string<CharT>& str() const { return m_Text; }

private:
    std::basic_string<CharT> m_Text;
};

class AString : public std::wstring
{
public:
    using std::wstring::npos;

    AString() = default;
    AString(const AString&) = default;
    AString(AString&&) noexcept = default;
    AString(const std::wstring& text) : std::wstring(text) {}
    AString(std::wstring&& text) noexcept : std::wstring(std::move(text)) {}
    AString(const wchar_t* text) : std::wstring(text ? text : L"") {}
    AString(const wchar_t* text, size_t count) : std::wstring(text, count) {}
    // Widens 8-bit text byte by byte: file names, literals and file contents.
    AString(const char* text);
    AString(const char* text, size_t count);
    AString(size_t count, wchar_t ch) : std::wstring(count, ch) {}

    AString& operator=(const AString&) = default;
    AString& operator=(AString&&) noexcept = default;
    AString& operator=(const wchar_t* text);
    AString& operator=(const char* text);

    AString& assign(const wchar_t* text);
    AString& assign(const char* text);
    AString& assign(size_t count, wchar_t ch);

    // A count that runs past the end, npos too, stops at the end; a start past
    // the end gives an empty string instead of throwing.
    AString substr(size_t pos = 0, size_t count = npos) const;

    // 0 if equal; case counts. A null text is the empty text.
    int Compare(const AString& other) const { return CompareView(std::wstring_view(other)); }
    int Compare(const wchar_t* other) const { return CompareView(std::wstring_view(other ? other : L"")); }
    // 0 if equal without regard to the case of the letters A to Z. Readers
    // compare every keyword of a file this way, so a literal is compared as
    // it stands, without a string made of it.
    int CompareNoCase(const AString& other) const { return CompareNoCaseView(std::wstring_view(other)); }
    int CompareNoCase(const wchar_t* other) const
    {
        return CompareNoCaseView(std::wstring_view(other ? other : L""));
    }

    // printf-style formatting into this string, dropping its earlier text.
    // Conversions: %d %i %u %x %X %c %f %e %g %% with flags, width and
    // precision; %s and %ls take a zero-terminated wchar_t text.
    AString& Format(const wchar_t* format, ...);
    AString& FormatV(const wchar_t* format, va_list args);

    // True, with value set, if the whole text is a number of that base.
    bool IsNumber(long& value, int base) const;
    // Wildcard match of the whole text against a pattern in which "*" stands
    // for any run of characters; every other character stands for itself and
    // case counts.
    bool Match(const AString& pattern) const;

    AString ToLower() const;
    AString ToUpper() const;

    // 8-bit conversion: each code unit becomes one byte; units beyond 255 turn
    // into '?'.
    AString_const<char> AsAnsi() const;

    AString& operator+=(const AString& text)
    {
        append(text);
        return *this;
    }
    AString& operator+=(const wchar_t* text)
    {
        if (text)
            append(text);
        return *this;
    }
    AString& operator+=(wchar_t ch)
    {
        push_back(ch);
        return *this;
    }

    friend AString operator+(const AString& a, const AString& b)
    {
        AString r(a);
        r.append(b);
        return r;
    }
    friend AString operator+(const AString& a, const wchar_t* b)
    {
        AString r(a);
        if (b)
            r.append(b);
        return r;
    }
    friend AString operator+(const wchar_t* a, const AString& b) { return AString(a) + b; }
    friend AString operator+(const AString& a, wchar_t b)
    {
        AString r(a);
        r.push_back(b);
        return r;
    }

    friend bool operator==(const AString& a, const AString& b)
    {
        return static_cast<const std::wstring&>(a) == static_cast<const std::wstring&>(b);
    }
    friend bool operator==(const AString& a, const wchar_t* b)
    {
        return std::wstring_view(a) == std::wstring_view(b ? b : L"");
    }
    // Code-unit order: the order of every map and set of the program, so case
    // counts and 'Z' stands before 'a'.
    friend bool operator<(const AString& a, const AString& b)
    {
        return static_cast<const std::wstring&>(a) < static_cast<const std::wstring&>(b);
    }
    friend bool operator>(const AString& a, const AString& b) { return b < a; }
    friend bool operator<=(const AString& a, const AString& b) { return !(b < a); }
    friend bool operator>=(const AString& a, const AString& b) { return !(a < b); }

private:
    int CompareView(std::wstring_view other) const;
    int CompareNoCaseView(std::wstring_view other) const;
};

// Folds A-Z to a-z and leaves every other code unit alone.
inline wchar_t FoldCase_G(wchar_t ch)
{
    return (ch >= L'A' && ch <= L'Z') ? static_cast<wchar_t>(ch + 32) : ch;
}

// Hash and equality on the case-folded text, for indexes that answer the same
// way as a walk comparing names with CompareNoCase.
struct AStringNoCaseHash
{
    size_t operator()(const std::wstring& text) const noexcept;
};
struct AStringNoCaseEqual
{
    bool operator()(const std::wstring& a, const std::wstring& b) const noexcept;
};

template <> struct std::hash<AString>
{
    size_t operator()(const AString& text) const noexcept { return std::hash<std::wstring>()(text); }
};
