// Stream.h - the abstract text streams of namespace io.
//
// An output stream turns objects into text: the block tree of a neutral file
// writes itself through the few primitives below (indentation, quoted
// strings, numbers with the stream's precision). An input stream hands out
// tokens of the HKP grammar, lines, and block trees from a text that it holds
// whole or sees through a window that slides over a file; positions are byte
// offsets of the text, so Tell and Seek are free.
#pragma once

#include "core/lib/vellum/AString.h"

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace io
{
class CAbstract_ostream;
class CAbstract_istream;
class CToken;

// A remembered place in an input stream.
struct CAbstract_stream_pos
{
    size_t m_Offset = 0;
};

// Anything that can be put on a stream or taken from one.
class CStreamio_object
{
public:
    virtual ~CStreamio_object() = default;
    virtual void write(CAbstract_ostream& out) const = 0;
    // Reads the object from the stream; false when the text does not hold it.
    virtual bool read(CAbstract_istream& in);
};

class CAbstract_ostream
{
public:
    CAbstract_ostream() = default;
    CAbstract_ostream(const CAbstract_ostream&) = delete;
    CAbstract_ostream& operator=(const CAbstract_ostream&) = delete;
    virtual ~CAbstract_ostream() = default;

    CAbstract_ostream& operator<<(const CStreamio_object& object)
    {
        object.write(*this);
        return *this;
    }

    // Significant digits of a double from now on; returns the earlier setting.
    int SetPrecision(int digits);
    int GetPrecision() const { return m_Precision; }

    // Text primitives for the objects that write themselves.
    void PutIndent();
    void PutRaw(std::string_view text);
    void PutText(const AString& text); // narrowed one code unit to one byte
    void PutQuoted(const AString& text);
    void PutInt(int value);
    void PutDouble(double value);
    void PutBool(bool value);
    void PutNewLine();
    void Indent(int delta) { m_Indent += delta; }

protected:
    // Hands buffered text to the sink; called when the buffer is large and on
    // flushing.
    virtual void Sink(const char* data, size_t size) = 0;
    void FlushBuffer();

private:
    std::string m_Buffer;
    int m_Precision = 6;
    int m_Indent = 0;
};

// Formats a double with the given number of significant digits, the shortest
// of fixed and exponent form as printf's %g would, with a dot whatever the
// locale. A negative zero is written as 0.
std::string FormatDouble_G(double value, int digits);

// Where an input stream's text comes from when it is not held whole: a file,
// read piece by piece at the offsets the stream asks for.
class CText_source
{
public:
    virtual ~CText_source() = default;
    // Copies up to count bytes from offset into buffer; returns how many it
    // copied, fewer only at the end of the text.
    virtual size_t Read(size_t offset, char* buffer, size_t count) = 0;
};

class CAbstract_istream
{
public:
    CAbstract_istream(const CAbstract_istream&) = delete;
    CAbstract_istream& operator=(const CAbstract_istream&) = delete;
    virtual ~CAbstract_istream() = default;

    // The next token of the HKP grammar, white space (line ends included)
    // skipped. At the end of the text the target stays as it was.
    CAbstract_istream& operator>>(AString& token);
    CAbstract_istream& operator>>(CToken& token);
    // The next token converted; a token that holds no number is consumed and
    // leaves the target as it was.
    CAbstract_istream& operator>>(double& value);
    CAbstract_istream& operator>>(int& value);
    // Reads an object (a block) from the stream.
    CAbstract_istream& operator>>(CStreamio_object& object);

    // Skips the rest of the current line.
    void NewLine();
    // The rest of the current line without its leading blanks, a carriage
    // return before the line feed kept; moves to the next line.
    void NewLine(AString& rest);

    // True once nothing but white space is left.
    bool eof() const;
    bool AtEof() const { return eof(); }
    bool fail() const { return m_Fail; }
    bool good() const { return !m_Fail && !eof(); }
    void SetFail() { m_Fail = true; }
    void ClearFail() { m_Fail = false; }

    CAbstract_stream_pos Tell() const { return CAbstract_stream_pos{m_Pos}; }
    void Seek(const CAbstract_stream_pos& pos) { SetPosition(pos.m_Offset); }

    // The whole text, for the block-text reader and for checks of a file as a
    // whole. A stream that reads through a window takes its whole text into
    // memory at the first call and keeps it.
    std::string_view Data() const;
    size_t Position() const { return m_Pos; }
    void SetPosition(size_t pos) { m_Pos = pos < m_Size ? pos : m_Size; }
    // The length of the text in bytes.
    size_t Size() const { return m_Size; }

protected:
    CAbstract_istream() = default;
    // The text, held whole.
    void SetData(std::string data);
    // The text of size bytes from a source, seen through a window of about
    // window bytes that moves along with the reading. Going back to a place
    // that has left the window reads it again.
    void SetSource(std::unique_ptr<CText_source> source, size_t size, size_t window);

    // The text from offset on, at least atLeast bytes of it unless the text
    // ends before; empty at the end. The view holds until the next call.
    std::string_view View(size_t offset, size_t atLeast) const
    {
        // Nearly every call finds its bytes in the window.
        const size_t end = m_WindowStart + m_Window.size();
        if (offset >= m_WindowStart && offset < end && (end - offset >= atLeast || end == m_Size))
            return std::string_view(m_Window.data() + (offset - m_WindowStart), end - offset);
        return MoveView(offset, atLeast);
    }
    // The byte at offset; offset must lie before the end.
    char ByteAt(size_t offset) const { return View(offset, 1)[0]; }

private:
    // Finds the next token and returns its bytes; false at the end.
    bool NextTokenText(std::string_view& text, bool& quoted);
    // View where the window has to move first.
    std::string_view MoveView(size_t offset, size_t atLeast) const;
    // Moves the window so that it holds [offset, offset + atLeast).
    void Load(size_t offset, size_t atLeast) const;

    // The text held, or the window: the bytes from m_WindowStart on.
    mutable std::string m_Window;
    mutable size_t m_WindowStart = 0;
    mutable size_t m_Size = 0;
    mutable std::unique_ptr<CText_source> m_Source; // null once the text is held whole
    size_t m_WindowBytes = 0;
    size_t m_Pos = 0;
    bool m_Fail = false;
};

} // namespace io
