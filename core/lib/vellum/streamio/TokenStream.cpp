// TokenStream.cpp - opening, buffering and closing the file streams.
#include "core/lib/vellum/streamio/TokenStream.h"

#include "core/lib/vellum/FileSystemPath.h"
#include "core/lib/vellum/SafeFiles.h"

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

CToken_istream::CToken_istream(const LongFileName& file, int /*mode*/) : m_Name(file.GetPath())
{
    // Only a regular file of sane size is read: a pipe or a device named
    // like a job file would block the run or fill the memory.
    std::string data;
    m_Open = ReadRegularFile_G(file.GetPath().AsAnsi().str(), data);
    SetData(std::move(data));
}

CToken_istream::CToken_istream(std::string text, AString name) : m_Open(true), m_Name(std::move(name))
{
    SetData(std::move(text));
}

namespace
{
// The line ends in [from, to) of the text: every line feed, and every
// carriage return that no line feed follows (the pair CR LF is one end,
// counted at its line feed).
size_t CountLineEnds(std::string_view text, size_t from, size_t to)
{
    size_t count = 0;
    const char* data = text.data();
    for (size_t i = from; i < to; ++i)
    {
        const char c = data[i];
        if (c == '\n' || (c == '\r' && (i + 1 >= text.size() || data[i + 1] != '\n')))
            ++count;
    }
    return count;
}
} // namespace

size_t CToken_istream::LineOf(size_t offset) const
{
    const std::string_view text = Data();
    if (offset > text.size())
        offset = text.size();
    // Counting on from the last answer serves the usual case, a reader that
    // asks again further down the file; a step back counts from the start.
    if (offset < m_KnownOffset)
    {
        m_KnownOffset = 0;
        m_KnownLine = 1;
    }
    m_KnownLine += CountLineEnds(text, m_KnownOffset, offset);
    m_KnownOffset = offset;
    return m_KnownLine;
}

size_t CToken_istream::TokenEnd() const
{
    const std::string_view text = Data();
    size_t p = Position();
    while (p > 0)
    {
        const char c = text[p - 1];
        if (c != ' ' && c != '\t' && c != '\r' && c != '\n' && c != '\f' && c != '\v')
            return p - 1;
        --p;
    }
    return 0;
}

} // namespace io
