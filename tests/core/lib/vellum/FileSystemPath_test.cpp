// Paths given as 8-bit text reach the same file through the C library and
// through the file system library: a name with a byte above 127 and a space is
// written, replaced and found again.
#include "core/lib/vellum/FileSystemPath.h"
#include "core/lib/vellum/LongFileName.h"
#include "core/lib/vellum/streamio/TokenStream.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

TEST(FileSystemPath, EightBitNamesAreTheSameFileForEveryLibrary)
{
    const auto dir = std::filesystem::temp_directory_path() / "tnf_8bit_path_test";
    std::filesystem::remove_all(dir);
    std::filesystem::create_directories(dir);
    // "\x80 caf\xe9" is "€ café" in the Windows code page of western Europe,
    // where the euro sign is no Latin-1 character.
    const std::string target = dir.string() + "/\x80 caf\xe9 board.tnf";
    const LongFileName file(AString(target.c_str()));
    EXPECT_EQ(file.Exists(), 0u);

    for (const char* content : {"first\n", "second\n"})
    {
        io::CToken_ostream out(file, 32);
        out.PutRaw(content);
        out.Close();
        // The finished file is moved into place under the very same name.
        EXPECT_EQ(file.Exists(), 1u) << content;
        EXPECT_EQ(LongFileName(AString((target + ".tmp").c_str())).Exists(), 0u) << content;
        std::string read;
        if (std::FILE* f = std::fopen(target.c_str(), "rb"))
        {
            char buffer[64] = {};
            read.assign(buffer, std::fread(buffer, 1, sizeof buffer, f));
            std::fclose(f);
        }
        EXPECT_EQ(read, content);
    }
    EXPECT_TRUE(std::filesystem::exists(ToFileSystemPath_G(target)));
    std::filesystem::remove_all(dir);
}
