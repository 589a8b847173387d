// TokenStream.h - the file streams of the program: HKP files in, the neutral
// file out.
//
// The input stream lexes from memory, through a window of a few megabytes
// that it moves along its file in large reads: a layout file of a gigabyte
// costs no more memory than a small one. The output stream collects
// text in a large buffer and writes it to a temporary file beside the target;
// only Close renames it into place, so an interrupted run never leaves a
// half-written neutral file behind. The temporary file has a random name, is
// created exclusively and is removed at every end that can be caught
// (SafeFiles.h); a stream destroyed unclosed drops its text.
#pragma once

#include "core/lib/vellum/LongFileName.h"
#include "core/lib/vellum/streamio/Stream.h"

#include <cstdio>
#include <string>

namespace io
{
// One lexical token with its kind.
class CToken
{
public:
    enum Kind
    {
        k_None,
        k_Word,   // a run of characters, a lone dot, or a symbol ( ) , =
        k_String, // a double-quoted string, delivered without its quotes
    };

    CToken() = default;
    void Set(AString text, Kind kind)
    {
        m_Text = std::move(text);
        m_Kind = kind;
    }
    Kind GetKind() const { return m_Kind; }
    bool Query(AString& text) const
    {
        text = m_Text;
        return m_Kind != k_None;
    }
    const AString& GetAString() const { return m_Text; }
    const wchar_t* ACharPtr() const { return m_Text.c_str(); }

private:
    AString m_Text;
    Kind m_Kind = k_None;
};

// The grammar of the text form; the streams use the default one.
class CToken_grammar
{
public:
    CToken_grammar() = default;
};

class CToken_ostream : public CAbstract_ostream
{
public:
    // Opens a temporary file beside the target; Close replaces the target.
    // Mode 32 is plain text; no other mode is in use.
    CToken_ostream(const LongFileName& file, int mode);
    ~CToken_ostream() override;

    // Flushes, closes and moves the finished text into place.
    void Close();
    // False if the file could not be created; nobody is obliged to ask.
    bool IsOpen() const { return m_File != nullptr; }

protected:
    void Sink(const char* data, size_t size) override;

private:
    std::string m_Target;
    std::string m_Temporary;
    std::FILE* m_File = nullptr;
};

// An output stream into memory, for the tests and for callers that want the
// text of a tree.
class CString_ostream : public CAbstract_ostream
{
public:
    const std::string& str()
    {
        FlushBuffer();
        return m_Text;
    }

protected:
    void Sink(const char* data, size_t size) override { m_Text.append(data, size); }

private:
    std::string m_Text;
};

// An input stream that can say where it is: the name of its file and the
// 1-based line of the token just read, or of the start of a record. Lines are
// counted only when somebody asks, from the nearest line already known, so a
// run that never asks pays nothing. A line ends at a line feed, at a carriage
// return before one, and at a carriage return alone (as an editor shows an
// old Macintosh file), so the line named is the one a person finds.
class CToken_istream : public CAbstract_istream
{
public:
    // The bytes of a file that a stream holds at a time.
    static constexpr size_t k_WindowBytes = size_t(4) << 20;

    // Opens the file; mode 0 is plain text. A file that cannot be read gives
    // an empty stream, which is at its end at once. window is the number of
    // bytes held at a time.
    CToken_istream(const LongFileName& file, int mode, size_t window = k_WindowBytes);
    // A stream over text held in memory, reported under the given name.
    explicit CToken_istream(std::string text, AString name = AString());
    // The same text seen through a window of the given bytes, as a file is
    // seen: the reading must come out the same, whatever the window.
    CToken_istream(std::string text, AString name, size_t window);
    bool IsOpen() const { return m_Open; }

    // The file's path, or the name given to a stream over text.
    const AString& GetName() const { return m_Name; }
    // The line of the byte at offset; offsets past the end give the last line.
    size_t LineOf(size_t offset) const;
    // The line of the last token read (the last byte that is no white space
    // before the read position); 1 before anything was read.
    size_t TokenLine() const { return LineOf(TokenEnd()); }
    // Remembers the last token read as the start of the record now being
    // read, and the line of that start.
    void MarkRecord() { m_RecordOffset = TokenEnd(); }
    size_t RecordLine() const { return LineOf(m_RecordOffset); }
    // The offset of the last token's last byte, 0 before anything was read.
    size_t TokenEnd() const;

private:
    size_t CountLineEnds(size_t from, size_t to) const;

    bool m_Open = false;
    AString m_Name;
    size_t m_RecordOffset = 0;
    // The last answer of LineOf: counting starts from there when it can.
    mutable size_t m_KnownOffset = 0;
    mutable size_t m_KnownLine = 1;
};

} // namespace io
