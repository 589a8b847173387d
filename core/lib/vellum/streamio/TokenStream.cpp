// TokenStream.cpp - opening, buffering and closing the file streams.
#include "core/lib/vellum/streamio/TokenStream.h"

#include "core/lib/vellum/FileSystemPath.h"
#include "core/lib/vellum/SafeFiles.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <system_error>

namespace io
{
CToken_ostream::CToken_ostream(const LongFileName& file, int /*mode*/)
    : m_Target(file.GetPath().AsAnsi().str())
{
    m_File = CreateTemporaryFile_G(m_Target, m_Temporary);
}

// A stream that was never closed holds an unfinished text: it is dropped, and
// the target stays as it was.
CToken_ostream::~CToken_ostream()
{
    if (!m_File)
        return;
    std::fclose(m_File);
    m_File = nullptr;
    std::error_code error;
    std::filesystem::remove(ToFileSystemPath_G(m_Temporary), error);
    ReleaseTemporaryFile_G(m_Temporary);
}

void CToken_ostream::Sink(const char* data, size_t size)
{
    if (m_File)
        std::fwrite(data, 1, size, m_File);
}

void CToken_ostream::Close()
{
    if (!m_File)
        return;
    FlushBuffer();
    const bool written = std::fflush(m_File) == 0 && !std::ferror(m_File);
    std::fclose(m_File);
    m_File = nullptr;
    std::error_code error;
    if (written)
        std::filesystem::rename(ToFileSystemPath_G(m_Temporary), ToFileSystemPath_G(m_Target), error);
    if (!written || error)
        std::filesystem::remove(ToFileSystemPath_G(m_Temporary), error);
    ReleaseTemporaryFile_G(m_Temporary);
}

namespace
{
// A regular file, read at the offsets the stream asks for.
class CFile_source : public CText_source
{
public:
    explicit CFile_source(std::FILE* file) : m_File(file) {}
    ~CFile_source() override { std::fclose(m_File); }
    CFile_source(const CFile_source&) = delete;
    CFile_source& operator=(const CFile_source&) = delete;

    size_t Read(size_t offset, char* buffer, size_t count) override
    {
        // Reading on from where the last read ended needs no seek.
        size_t got = 0;
        if (offset == m_Next)
            got = std::fread(buffer, 1, count, m_File);
        else
            got = ReadFileAt_G(m_File, offset, buffer, count);
        m_Next = offset + got;
        return got;
    }

private:
    std::FILE* m_File;
    size_t m_Next = 0;
};

// Text in memory, handed out as if it were a file.
class CString_source : public CText_source
{
public:
    explicit CString_source(std::string text) : m_Text(std::move(text)) {}
    size_t Read(size_t offset, char* buffer, size_t count) override
    {
        if (offset >= m_Text.size())
            return 0;
        const size_t n = std::min(count, m_Text.size() - offset);
        std::memcpy(buffer, m_Text.data() + offset, n);
        return n;
    }

private:
    std::string m_Text;
};
} // namespace

CToken_istream::CToken_istream(const LongFileName& file, int /*mode*/, size_t window) : m_Name(file.GetPath())
{
    // Only a regular file of sane size is read: a pipe or a device named
    // like a job file would block the run or fill the memory.
    std::uint64_t size = 0;
    std::FILE* opened = OpenRegularFile_G(file.GetPath().AsAnsi().str(), size);
    m_Open = opened != nullptr;
    if (opened)
        SetSource(std::make_unique<CFile_source>(opened), static_cast<size_t>(size), window);
}

CToken_istream::CToken_istream(std::string text, AString name) : m_Open(true), m_Name(std::move(name))
{
    SetData(std::move(text));
}

CToken_istream::CToken_istream(std::string text, AString name, size_t window)
    : m_Open(true), m_Name(std::move(name))
{
    const size_t size = text.size();
    SetSource(std::make_unique<CString_source>(std::move(text)), size, window);
}

namespace
{
bool IsWhite(char c)
{
    return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\f' || c == '\v';
}
} // namespace

// The line ends in [from, to): every line feed, and every carriage return
// that no line feed follows (the pair CR LF is one end, counted at its line
// feed).
size_t CToken_istream::CountLineEnds(size_t from, size_t to) const
{
    size_t count = 0;
    for (size_t p = from; p < to;)
    {
        const std::string_view view = View(p, to - p);
        if (view.empty())
            break;
        const size_t n = std::min(view.size(), to - p);
        const char* data = view.data();
        for (size_t i = 0; i < n; ++i)
            if (data[i] == '\n')
                ++count;
            else if (data[i] == '\r')
            {
                // The byte behind may lie past this view.
                const size_t next = p + i + 1;
                const bool lineFeedFollows =
                    next < Size() && (i + 1 < view.size() ? data[i + 1] == '\n' : ByteAt(next) == '\n');
                if (!lineFeedFollows)
                    ++count;
                if (i + 1 >= view.size())
                    break; // ByteAt may have moved the window
            }
        p += n;
    }
    return count;
}

size_t CToken_istream::LineOf(size_t offset) const
{
    if (offset > Size())
        offset = Size();
    // Counting on from the last answer serves the usual case, a reader that
    // asks again further down the file; a step back counts from the start.
    if (offset < m_KnownOffset)
    {
        m_KnownOffset = 0;
        m_KnownLine = 1;
    }
    m_KnownLine += CountLineEnds(m_KnownOffset, offset);
    m_KnownOffset = offset;
    return m_KnownLine;
}

size_t CToken_istream::TokenEnd() const
{
    size_t p = Position();
    while (p > 0)
    {
        const size_t from = p > 4096 ? p - 4096 : 0;
        const std::string_view view = View(from, p - from);
        for (size_t i = p - from; i > 0; --i)
            if (!IsWhite(view[i - 1]))
                return from + i - 1;
        p = from;
    }
    return 0;
}

} // namespace io
