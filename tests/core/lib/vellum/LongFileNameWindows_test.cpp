// Windows spellings of a path: drive letters, either separator, spaces. The
// program is given such paths on the command line and by the dialogs, and
// composes its own with "/".
#include "core/lib/vellum/FileSystemPath.h"
#include "core/lib/vellum/LongFileName.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>

#ifdef _WIN32
TEST(LongFileNameWindows, EverySpellingOfAPathFindsTheFile)
{
    const auto dir = std::filesystem::temp_directory_path() / "tnf lfn test";
    std::filesystem::remove_all(dir);
    std::filesystem::create_directories(dir / "job dir");
    std::ofstream(dir / "job dir" / "Cell.hkp") << ".FILETYPE CELL_LIBRARY\n";

    // The temporary directory as Windows gives it: "C:\users\...\Temp".
    const std::string native = dir.string();
    ASSERT_GE(native.size(), 3u);
    ASSERT_EQ(native[1], ':');
    std::string forward = native;
    for (char& c : forward)
        if (c == '\\')
            c = '/';
    std::string lowerDrive = native;
    lowerDrive[0] = static_cast<char>(lowerDrive[0] | 0x20);

    for (const std::string& base : {native, forward, lowerDrive})
    {
        EXPECT_EQ(LongFileName(AString((base + "/job dir/Cell.hkp").c_str())).Exists(), 1u) << base;
        EXPECT_EQ(LongFileName(AString((base + "\\job dir\\Cell.hkp").c_str())).Exists(), 1u) << base;
        // Windows finds a file whatever the case of its name.
        EXPECT_EQ(LongFileName(AString((base + "\\job dir/cell.hkp").c_str())).Exists(), 1u) << base;
        EXPECT_EQ(LongFileName(AString((base + "/job dir").c_str())).Exists(), 0u) << base;
        EXPECT_EQ(LongFileName(AString((base + "/job dir/Layout.hkp").c_str())).Exists(), 0u) << base;
    }
    std::filesystem::remove_all(dir);
}

TEST(LongFileNameWindows, ADriveLetterEndsTheDirectoryPart)
{
    LongFileName onDrive(AString(L"C:board.txt"));
    onDrive.ChangeExt(GetFileExtension(3));
    EXPECT_EQ(onDrive.GetPath(), AString(L"C:board.tnf"));
    EXPECT_EQ(onDrive.NameWithExt(), AString(L"board.tnf"));

    LongFileName mixed(AString(L"D:\\jobs.v2/my board"));
    mixed.ChangeExt(GetFileExtension(3));
    EXPECT_EQ(mixed.GetPath(), AString(L"D:\\jobs.v2/my board.tnf"));
    EXPECT_EQ(mixed.NameWithExt(), AString(L"my board.tnf"));
}
#endif
