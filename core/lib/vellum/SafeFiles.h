// SafeFiles.h - the program's files opened so that hostile surroundings can't
// turn them against it: input files that are regular files of bounded size,
// and an output written under a fresh, unguessable name beside its target.
//
// A name such as "board.tnf.tmp" can be foreseen, and a link placed there
// beforehand would make the run overwrite whatever the link points to. The
// temporary file is therefore created exclusively, under a random name, and
// never through a link. Until it is moved into place or removed it is
// registered, and an end of the program through exit or through one of the
// signals SIGINT, SIGTERM, SIGHUP and SIGABRT removes it.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

namespace io
{
// The most bytes one input file may have; bigger files are not read.
constexpr std::uint64_t k_MostInputBytes = std::uint64_t(8) << 30;

// Reads the whole of a regular file into data. False, with data empty, for a
// file that is missing, can't be read, isn't a regular file (a directory, a
// pipe, a device) or is larger than limit. Never blocks on a pipe.
bool ReadRegularFile_G(const std::string& path, std::string& data, std::uint64_t limit = k_MostInputBytes);

// Opens a regular file for reading in binary mode, under the same conditions
// as ReadRegularFile_G, and gives its size. Null for a file that is missing,
// can't be read, isn't a regular file or is larger than limit.
std::FILE* OpenRegularFile_G(const std::string& path, std::uint64_t& size,
                             std::uint64_t limit = k_MostInputBytes);

// Reads count bytes at offset of a file opened by OpenRegularFile_G into
// buffer; returns the number of bytes read, fewer at the file's end.
size_t ReadFileAt_G(std::FILE* file, std::uint64_t offset, char* buffer, size_t count);

// Creates a new file for writing in the folder of target, under a name made
// of the target's name and a random part. Null, with path empty, if none
// could be made. The file is registered for removal at an abnormal end.
std::FILE* CreateTemporaryFile_G(const std::string& target, std::string& path);

// The temporary file at path is finished with (moved into place, or
// removed): it is no longer removed at an abnormal end.
void ReleaseTemporaryFile_G(const std::string& path);
} // namespace io
