// FileSystemPath.h - an 8-bit path as the file system library takes it.
//
// The program keeps paths as 8-bit text (the bytes it was given, widened one
// to one in an AString) and opens files with the C library, which reads that
// text in the system's code page on Windows and as plain bytes elsewhere. The
// file system library has to see the same file, so it gets the path the same
// way.
#pragma once

#include <filesystem>
#include <string>

std::filesystem::path ToFileSystemPath_G(const std::string& path);
