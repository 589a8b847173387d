// FileSystemPath.cpp - 8-bit paths for the file system library.
#include "core/lib/vellum/FileSystemPath.h"

#ifdef _WIN32
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>
#endif

std::filesystem::path ToFileSystemPath_G(const std::string& path)
{
#ifdef _WIN32
    // The library would read a narrow string in its own locale; fopen reads
    // it in the ANSI code page, and so does this.
    if (path.empty())
        return std::filesystem::path();
    const int size = static_cast<int>(path.size());
    const int wideSize = MultiByteToWideChar(CP_ACP, 0, path.data(), size, nullptr, 0);
    std::wstring wide(static_cast<size_t>(wideSize > 0 ? wideSize : 0), L'\0');
    if (wideSize > 0)
        MultiByteToWideChar(CP_ACP, 0, path.data(), size, wide.data(), wideSize);
    return std::filesystem::path(wide);
#else
    return std::filesystem::path(path);
#endif
}
