// Input files that aren't regular files, and temporary output files that are
// made under fresh names and never through a link.
#include "core/lib/vellum/SafeFiles.h"
#include "core/lib/vellum/streamio/TokenStream.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>

#ifndef _WIN32
#include <sys/stat.h>
#endif

namespace fs = std::filesystem;

namespace
{
fs::path FreshFolder(const char* name)
{
    const fs::path dir = fs::temp_directory_path() / name;
    fs::remove_all(dir);
    fs::create_directories(dir);
    return dir;
}

std::string Text(const fs::path& file)
{
    std::ifstream in(file, std::ios::binary);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

size_t CountEntries(const fs::path& dir)
{
    size_t n = 0;
    for ([[maybe_unused]] const auto& entry : fs::directory_iterator(dir))
        ++n;
    return n;
}
} // namespace

TEST(SafeFiles, TemporaryFilesHaveFreshNamesAndLeaveNothingBehind)
{
    const fs::path dir = FreshFolder("tnf_safe_files_out");
    const std::string target = (dir / "board.tnf").string();
    std::set<std::string> names;
    for (int i = 0; i < 3; ++i)
    {
        std::string path;
        std::FILE* file = io::CreateTemporaryFile_G(target, path);
        ASSERT_NE(file, nullptr);
        EXPECT_EQ(fs::path(path).parent_path(), dir);
        EXPECT_EQ(path.rfind(target, 0), 0u) << path;
        names.insert(path);
        std::fclose(file);
        fs::remove(path);
        io::ReleaseTemporaryFile_G(path);
    }
    EXPECT_EQ(names.size(), 3u);

    // A stream destroyed before Close drops its text: the old file stands.
    std::ofstream(target, std::ios::binary) << "old\n";
    {
        io::CToken_ostream out(LongFileName(AString(target.c_str())), 32);
        out.PutRaw("half of a new file");
    }
    EXPECT_EQ(Text(target), "old\n");
    EXPECT_EQ(CountEntries(dir), 1u);

    // A target that is a directory stays one, and no temporary file is left.
    const fs::path folder = dir / "folder.tnf";
    fs::create_directories(folder);
    {
        io::CToken_ostream out(LongFileName(AString(folder.string().c_str())), 32);
        out.PutRaw("text\n");
        out.Close();
    }
    EXPECT_TRUE(fs::is_directory(folder));
    EXPECT_EQ(CountEntries(dir), 2u);
    fs::remove_all(dir);
}

TEST(SafeFiles, OnlyRegularFilesAreRead)
{
    const fs::path dir = FreshFolder("tnf_safe_files_in");
    std::string data = "left over";
    EXPECT_FALSE(io::ReadRegularFile_G(dir.string(), data));
    EXPECT_TRUE(data.empty());
    EXPECT_FALSE(io::ReadRegularFile_G((dir / "missing").string(), data));
    std::ofstream(dir / "big.hkp") << std::string(100, 'x');
    EXPECT_FALSE(io::ReadRegularFile_G((dir / "big.hkp").string(), data, 99));
    EXPECT_TRUE(io::ReadRegularFile_G((dir / "big.hkp").string(), data, 100));
    EXPECT_EQ(data.size(), 100u);
    // A directory named like a job file gives a stream that is at its end.
    fs::create_directories(dir / "Layout.hkp");
    io::CToken_istream folder(LongFileName(AString((dir / "Layout.hkp").string().c_str())), 0);
    EXPECT_FALSE(folder.IsOpen());
    EXPECT_TRUE(folder.eof());
#ifndef _WIN32
    // A pipe with no writer would block an open for reading, and a device
    // such as /dev/zero never ends.
    const fs::path pipe = dir / "PDB.hkp";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_FALSE(io::ReadRegularFile_G(pipe.string(), data));
    EXPECT_FALSE(io::ReadRegularFile_G("/dev/zero", data));
#endif
    fs::remove_all(dir);
}

#ifndef _WIN32
// A link placed where the temporary file used to be made, pointing at an
// input file, is neither followed nor removed.
TEST(SafeFiles, ALinkAtTheOldTemporaryNameIsNotFollowed)
{
    const fs::path dir = FreshFolder("tnf_safe_files_link");
    std::ofstream(dir / "PDB.hkp") << "input\n";
    fs::create_symlink(dir / "PDB.hkp", dir / "out.tnf.tmp");
    {
        io::CToken_ostream out(LongFileName(AString((dir / "out.tnf").string().c_str())), 32);
        out.PutRaw("output\n");
        out.Close();
    }
    EXPECT_EQ(Text(dir / "PDB.hkp"), "input\n");
    EXPECT_EQ(Text(dir / "out.tnf"), "output\n");
    EXPECT_TRUE(fs::is_symlink(dir / "out.tnf.tmp"));
    EXPECT_EQ(CountEntries(dir), 3u);
    fs::remove_all(dir);
}
#endif
