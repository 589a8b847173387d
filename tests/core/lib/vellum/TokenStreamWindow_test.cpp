// Tests of the input stream that sees its file through a window: whatever the
// window's size, every call gives what the same call gives on the whole text
// in memory, also where a token, a line or a run of blanks crosses the
// window's edge and where a reader goes back to a place the window has left.
#include "core/lib/vellum/streamio/TokenStream.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <string>

using io::CToken_istream;

namespace
{
// A text of HKP-like pieces: dotted keywords, numbers, quoted strings (some
// left open), symbols, long words and long runs of blanks, under all three
// kinds of line end.
std::string RandomText(std::mt19937& random)
{
    static const char* const pieces[] = {".",       "..",     "...",  "PAD", "xy",
                                         " ",       "  ",     "\t",   "\n",  "\r\n",
                                         "\r",      "(",      ")",    ",",   "=",
                                         "\"a b\"", "\"open", "12.5", "-3",  ".4",
                                         ".x",      "1e3",    "\"\"", "\f",  "word.with.dots",
                                         "O'RING"};
    std::string text;
    const int count = static_cast<int>(random() % 60);
    for (int i = 0; i < count; ++i)
    {
        const unsigned choice = random() % 40;
        if (choice < sizeof(pieces) / sizeof(pieces[0]))
            text += pieces[choice];
        else if (choice < 35)
            text += std::string(1 + random() % 40, 'k');
        else
            text += std::string(1 + random() % 40, choice % 2 ? ' ' : '\n');
    }
    return text;
}

// Drives a stream by a seeded mix of the readers' calls and logs what each
// call gives, positions and lines included.
std::string Drive(CToken_istream& in, unsigned seed)
{
    std::mt19937 random(seed);
    std::ostringstream log;
    io::CAbstract_stream_pos mark = in.Tell();
    for (int step = 0; step < 400; ++step)
    {
        const bool atEnd = in.eof();
        log << step << (atEnd ? "E" : "-") << ' ';
        switch (random() % 8)
        {
        case 0:
        case 1:
        {
            AString token(L"unset");
            in >> token;
            log << token.AsAnsi().str();
            break;
        }
        case 2:
        {
            double d = -7.0;
            int n = -7;
            in >> d >> n;
            log << d << ',' << n;
            break;
        }
        case 3:
        {
            AString rest(L"unset");
            in.NewLine(rest);
            log << rest.AsAnsi().str();
            break;
        }
        case 4:
            in.NewLine();
            break;
        case 5:
        {
            io::CToken token;
            in >> token;
            log << token.GetAString().AsAnsi().str() << '/' << token.GetKind();
            break;
        }
        case 6:
            in.MarkRecord();
            mark = in.Tell();
            break;
        default:
            in.Seek(mark); // back to a place the window may have left
            break;
        }
        log << " @" << in.Tell().m_Offset << " L" << in.TokenLine() << " R" << in.RecordLine() << " T"
            << in.TokenEnd() << '\n';
        if (atEnd && step % 50 == 49)
            break;
    }
    log << "lines " << in.LineOf(0) << ' ' << in.LineOf(in.Size()) << ' ' << in.LineOf(in.Size() / 2);
    return log.str();
}
} // namespace

TEST(TokenStreamWindow, EveryWindowReadsAsTheWholeText)
{
    std::mt19937 random(4711);
    for (int round = 0; round < 300; ++round)
    {
        const std::string text = RandomText(random);
        const unsigned seed = static_cast<unsigned>(random());
        CToken_istream whole(text);
        const std::string expected = Drive(whole, seed);
        for (size_t window : {size_t(1), size_t(2), size_t(3), size_t(7), size_t(16), size_t(100)})
        {
            CToken_istream seen(text, AString(L"text.hkp"), window);
            ASSERT_EQ(Drive(seen, seed), expected) << "round " << round << ", window " << window;
        }
    }
}

TEST(TokenStreamWindow, AFileIsReadThroughItsWindowAndWholeOnRequest)
{
    const auto path = std::filesystem::temp_directory_path() / "tokenstream_window_test.hkp";
    std::string text;
    for (int i = 0; i < 2000; ++i)
        text += "..XY (" + std::to_string(i) + ", " + std::to_string(i * 0.5) + ")\r\n";
    text += "\"a string that runs past the window\" .LAST";
    {
        std::ofstream out(path, std::ios::binary);
        out << text;
    }
    for (size_t window : {size_t(5), size_t(64), size_t(4096)})
    {
        CToken_istream whole(text);
        CToken_istream file(LongFileName(AString(path.string().c_str())), 0, window);
        ASSERT_TRUE(file.IsOpen());
        EXPECT_EQ(Drive(file, 99), Drive(whole, 99)) << "window " << window;

        // Tokens all the way, then back to the start, which the window has
        // long left.
        CToken_istream again(LongFileName(AString(path.string().c_str())), 0, window);
        AString token;
        double x = 0.0, y = 0.0;
        for (int i = 0; i < 2000; ++i)
            again >> token >> token >> token >> token >> x >> token >> y >> token;
        EXPECT_EQ(x, 1999.0);
        EXPECT_EQ(y, 999.5);
        io::CToken t;
        again >> t >> token >> token;
        EXPECT_EQ(t.GetAString(), L"a string that runs past the window");
        EXPECT_EQ(t.GetKind(), io::CToken::k_String);
        EXPECT_EQ(token, L"LAST");
        EXPECT_EQ(again.TokenLine(), 2001u);
        EXPECT_TRUE(again.eof());
        again.Seek(io::CAbstract_stream_pos{});
        again >> token >> token >> token;
        EXPECT_EQ(token, L"XY");
        EXPECT_EQ(again.TokenLine(), 1u);
        // The whole text, asked for, is the file's.
        EXPECT_EQ(again.Data(), text);
        again >> token >> x;
        EXPECT_EQ(x, 0.0);
    }
    std::filesystem::remove(path);
}
