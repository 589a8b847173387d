// LongFileName.cpp - path parts and the existence test.
#include "core/lib/vellum/LongFileName.h"

#include "core/lib/vellum/FileSystemPath.h"

#include <filesystem>
#include <system_error>

namespace
{
size_t LastSeparator(const AString& path)
{
    const size_t slash = path.rfind(L'/');
    const size_t backslash = path.rfind(L'\\');
    if (slash == AString::npos && backslash == AString::npos)
    {
#ifdef _WIN32
        // "C:board.tnf" names a file in the current directory of drive C.
        if (path.size() > 1 && path[1] == L':')
            return 1;
#endif
        return AString::npos;
    }
    if (slash == AString::npos)
        return backslash;
    if (backslash == AString::npos)
        return slash;
    return std::max(slash, backslash);
}
} // namespace

unsigned LongFileName::Exists() const
{
    if (m_Path.empty())
        return 0;
    std::error_code error;
    const std::filesystem::path path = ToFileSystemPath_G(m_Path.AsAnsi().str());
    const auto status = std::filesystem::status(path, error);
    return !error && std::filesystem::exists(status) && !std::filesystem::is_directory(status) ? 1u : 0u;
}

void LongFileName::ChangeExt(const AString& extension)
{
    const size_t sep = LastSeparator(m_Path);
    const size_t nameStart = sep == AString::npos ? 0 : sep + 1;
    const size_t dot = m_Path.rfind(L'.');
    // A dot that leads the name (".profile") starts no extension.
    if (dot != AString::npos && dot > nameStart)
        m_Path.erase(dot);
    AString ext = extension;
    if (!ext.empty() && ext[0] == L'.')
        ext.erase(0, 1);
    m_Path += L'.';
    m_Path += ext;
}

AString LongFileName::NameWithExt() const
{
    const size_t sep = LastSeparator(m_Path);
    return sep == AString::npos ? m_Path : m_Path.substr(sep + 1);
}

AString GetFileExtension(int kind)
{
    return kind == 3 ? AString(L"tnf") : AString();
}
