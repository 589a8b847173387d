// Tests of the positions an input stream reports: lines under the three kinds
// of line end, long lines, records, and the name of a file.
#include "core/lib/vellum/streamio/TokenStream.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

using io::CToken_istream;

namespace
{
// The line of every token of the text, in order.
std::vector<size_t> TokenLines(const std::string& text)
{
    CToken_istream in(text);
    std::vector<size_t> lines;
    while (!in.eof())
    {
        AString token;
        in >> token;
        lines.push_back(in.TokenLine());
    }
    return lines;
}

// An independent count: split the text into lines as an editor would and
// give each token the index of its line.
std::vector<size_t> ExpectedLines(const std::string& text)
{
    std::vector<size_t> lines;
    size_t line = 1;
    bool inWord = false;
    for (size_t i = 0; i < text.size(); ++i)
    {
        const char c = text[i];
        const bool blank = c == ' ' || c == '\t' || c == '\r' || c == '\n';
        if (!blank && !inWord)
            lines.push_back(line);
        inWord = !blank;
        if (c == '\n' || (c == '\r' && !(i + 1 < text.size() && text[i + 1] == '\n')))
            ++line;
    }
    return lines;
}
} // namespace

TEST(TokenStreamLines, LineFeedCarriageReturnLineFeedAndCarriageReturnAlone)
{
    EXPECT_EQ(TokenLines(".A 1\n.B 2\n\n.C\n"), (std::vector<size_t>{1, 1, 1, 2, 2, 2, 4, 4}));
    EXPECT_EQ(TokenLines(".A 1\r\n.B 2\r\n\r\n.C\r\n"), (std::vector<size_t>{1, 1, 1, 2, 2, 2, 4, 4}));
    EXPECT_EQ(TokenLines(".A 1\r.B 2\r\r.C\r"), (std::vector<size_t>{1, 1, 1, 2, 2, 2, 4, 4}));
    // A mixture: CR LF, CR alone, LF, LF CR (two ends).
    EXPECT_EQ(TokenLines("a\r\nb\rc\nd\n\re"), (std::vector<size_t>{1, 2, 3, 4, 6}));
    // Before anything is read the stream is on line 1, also for empty text.
    CToken_istream empty{std::string()};
    EXPECT_EQ(empty.TokenLine(), 1u);
    EXPECT_EQ(empty.LineOf(100), 1u);
}

TEST(TokenStreamLines, AgreesWithAnIndependentCountOnRandomText)
{
    std::mt19937 random(17);
    const char alphabet[] = {'a', 'b', ' ', '\t', '\r', '\n', 'x'};
    for (int round = 0; round < 200; ++round)
    {
        std::string text;
        const int size = static_cast<int>(random() % 200);
        for (int i = 0; i < size; ++i)
            text += alphabet[random() % sizeof(alphabet)];
        EXPECT_EQ(TokenLines(text), ExpectedLines(text)) << "text of round " << round;
    }
}

TEST(TokenStreamLines, VeryLongLinesAndQuestionsOutOfOrder)
{
    std::string text = ".FIRST\n";
    text += std::string(3'000'000, 'x') + "\n";
    text += ".AFTER " + std::string(1'000'000, ' ') + "word\r\n.LAST";
    CToken_istream in(text);
    AString token;
    in >> token >> token;
    EXPECT_EQ(in.TokenLine(), 1u);
    in >> token;
    EXPECT_EQ(in.TokenLine(), 2u);
    in >> token >> token >> token;
    EXPECT_EQ(token, L"word");
    EXPECT_EQ(in.TokenLine(), 3u);
    // An earlier offset after a later one is answered right, as is the end.
    EXPECT_EQ(in.LineOf(0), 1u);
    EXPECT_EQ(in.LineOf(text.size()), 4u);
    EXPECT_EQ(in.LineOf(7), 2u);
}

TEST(TokenStreamLines, RecordStartAndSkippedLines)
{
    CToken_istream in(std::string(".PAD \"P1\"\n..SHAPE ROUND\n..DIAMETER 10\n.NEXT\n"),
                      AString(L"Padstack.hkp"));
    EXPECT_EQ(in.GetName(), L"Padstack.hkp");
    AString token;
    in >> token >> token;
    in.MarkRecord();
    in >> token;
    in.NewLine();
    in.NewLine();
    EXPECT_EQ(in.RecordLine(), 1u);
    // A skipped line counts as read: the last byte taken is on line 2.
    EXPECT_EQ(in.TokenLine(), 2u);
    in >> token >> token >> token;
    EXPECT_EQ(token, L"DIAMETER");
    EXPECT_EQ(in.TokenLine(), 3u);
    in.NewLine();
    in >> token >> token;
    EXPECT_EQ(token, L"NEXT");
    EXPECT_EQ(in.TokenLine(), 4u);
    EXPECT_EQ(in.RecordLine(), 1u);
}

TEST(TokenStreamLines, FileStreamCarriesItsPath)
{
    const auto path = std::filesystem::temp_directory_path() / "tokenstream_lines_test.hkp";
    {
        std::ofstream out(path, std::ios::binary);
        out << ".A\r\n.B\r\n";
    }
    CToken_istream in(LongFileName(AString(path.string().c_str())), 0);
    EXPECT_EQ(in.GetName().AsAnsi().str(), path.string());
    AString token;
    in >> token >> token >> token >> token;
    EXPECT_EQ(token, L"B");
    EXPECT_EQ(in.TokenLine(), 2u);
    std::filesystem::remove(path);
}
