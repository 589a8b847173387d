// TokenStream.cpp - opening, buffering and closing the file streams.
#include "core/lib/vellum/streamio/TokenStream.h"

#include "core/lib/vellum/FileSystemPath.h"

#include <filesystem>
#include <system_error>

namespace io
{
CToken_ostream::CToken_ostream(const LongFileName& file, int /*mode*/)
    : m_Target(file.GetPath().AsAnsi().str()), m_Temporary(m_Target + ".tmp")
{
    m_File = std::fopen(m_Temporary.c_str(), "wb");
}

CToken_ostream::~CToken_ostream()
{
    Close();
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
}

CToken_istream::CToken_istream(const LongFileName& file, int /*mode*/)
{
    std::string data;
    if (std::FILE* f = std::fopen(file.GetPath().AsAnsi().c_str(), "rb"))
    {
        m_Open = true;
        // Large blocks: the layout files of big boards run to hundreds of MB.
        constexpr size_t k_Block = 1 << 22;
        size_t used = 0;
        for (;;)
        {
            data.resize(used + k_Block);
            const size_t n = std::fread(data.data() + used, 1, k_Block, f);
            used += n;
            if (n < k_Block)
                break;
        }
        data.resize(used);
        std::fclose(f);
    }
    SetData(std::move(data));
}

CToken_istream::CToken_istream(std::string text) : m_Open(true)
{
    SetData(std::move(text));
}

} // namespace io
