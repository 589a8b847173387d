// Tests of the HKP lexing that every reader rests on, and of the file streams.
#include "core/lib/vellum/streamio/TokenStream.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <vector>

using io::CToken_istream;

namespace
{
std::vector<std::string> Tokens(const std::string& text)
{
    CToken_istream in(text);
    std::vector<std::string> out;
    while (!in.eof())
    {
        AString t;
        in >> t;
        out.push_back(t.AsAnsi().str());
    }
    return out;
}
} // namespace

TEST(TokenStream, KeywordsDotsSymbolsAndStrings)
{
    EXPECT_EQ(Tokens("..PADSTACK_TYPE PIN_SMD\n"),
              (std::vector<std::string>{".", ".", "PADSTACK_TYPE", "PIN_SMD"}));
    EXPECT_EQ(Tokens("XY (-1.5, 2e3)(3,4)"),
              (std::vector<std::string>{"XY", "(", "-1.5", ",", "2e3", ")", "(", "3", ",", "4", ")"}));
    EXPECT_EQ(Tokens(".NAME \"Round 20 (top)\" x=y"),
              (std::vector<std::string>{".", "NAME", "Round 20 (top)", "x", "=", "y"}));
    // A dot glued to a digit stays with it; the rest of the word comes apart.
    EXPECT_EQ(Tokens("..4_WEB_ROUND_THERMAL"), (std::vector<std::string>{".", ".4", "_WEB_ROUND_THERMAL"}));
    // Dots inside a word, and a single quote, are ordinary characters.
    EXPECT_EQ(Tokens("U1.A O'RING 0.5"), (std::vector<std::string>{"U1.A", "O'RING", "0.5"}));
}

TEST(TokenStream, NumbersNewLineAndEnd)
{
    CToken_istream in(std::string(".UNITS   th\r\n  ..WIDTH 12.5 junk\nabc 7 .25\n"));
    AString t;
    in >> t >> t;
    EXPECT_EQ(t, AString(L"UNITS"));
    AString rest;
    in.NewLine(rest);
    EXPECT_EQ(rest, AString(L"th\r")); // leading blanks gone, carriage return kept
    in >> t >> t >> t;
    EXPECT_EQ(t, AString(L"WIDTH"));
    double width = -1.0;
    in >> width;
    EXPECT_DOUBLE_EQ(width, 12.5);
    in.NewLine(); // "junk" costs its line
    double unchanged = 99.0;
    in >> unchanged; // "abc" holds no number: consumed, target unchanged
    EXPECT_DOUBLE_EQ(unchanged, 99.0);
    int seven = 0;
    in >> seven;
    EXPECT_EQ(seven, 7);
    const io::CAbstract_stream_pos mark = in.Tell();
    double quarter = 0.0;
    in >> quarter;
    EXPECT_DOUBLE_EQ(quarter, 0.25);
    EXPECT_TRUE(in.eof()); // only a line end is left
    in.Seek(mark);
    EXPECT_FALSE(in.eof());
    in >> quarter;
    t = L"kept";
    in >> t; // nothing left: the target stays
    EXPECT_EQ(t, AString(L"kept"));
    EXPECT_TRUE(in.eof());

    CToken_istream last(std::string("a\nlast line without end"));
    last.NewLine();
    last.NewLine(rest);
    EXPECT_EQ(rest, AString(L"last line without end"));
    EXPECT_TRUE(last.eof());
}

TEST(TokenStream, FilesInAndOutReplaceOnlyWhenComplete)
{
    const auto dir = std::filesystem::temp_directory_path() / "tnf_stream_test";
    std::filesystem::create_directories(dir);
    const std::string target = (dir / "out.tnf").string();
    {
        std::ofstream(target) << "old content\n";
        io::CToken_ostream out(LongFileName(AString(target.c_str())), 32);
        out.PutRaw("new content\n");
        // Until the stream is closed the old file stands untouched. (The
        // reader is closed again first: Windows replaces no file that is open.)
        {
            std::ifstream check(target);
            std::string line;
            std::getline(check, line);
            EXPECT_EQ(line, "old content");
        }
        out.Close();
    }
    {
        std::ifstream check(target);
        std::string line;
        std::getline(check, line);
        EXPECT_EQ(line, "new content");
    }
    EXPECT_FALSE(std::filesystem::exists(target + ".tmp"));

    CToken_istream in(LongFileName(AString(target.c_str())), 0);
    AString word;
    in >> word >> word;
    EXPECT_EQ(word, AString(L"content"));
    CToken_istream missing(LongFileName(AString((dir / "none.hkp").string().c_str())), 0);
    EXPECT_FALSE(missing.IsOpen());
    EXPECT_TRUE(missing.eof());
    std::filesystem::remove_all(dir);
}
